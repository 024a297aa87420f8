import os
import subprocess
from pathlib import Path

import pytest

import quarvis

ROOT = Path(__file__).resolve().parents[2]


def pytest_configure(config):
    # Small tables cause warnings; only the tests of the warnings expect them.
    config.addinivalue_line("filterwarnings", "ignore::quarvis.QuarvisWarning")


def _tool_path():
    named = os.environ.get("QUARVIS_TOOL")
    paths = [Path(named)] if named else sorted(ROOT.glob("build/*/bin/quarvis-rules"))
    for path in paths:
        if path.is_file():
            return path
    return None


@pytest.fixture(scope="session")
def tool():
    """Run the command-line tool on a file and return the bytes of both result files."""
    path = _tool_path()
    if path is None:
        pytest.fail("no quarvis-rules: build it, or name it by QUARVIS_TOOL")

    def run(transactions, folder, *options):
        files = [folder / "tool-rules.tsv", folder / "tool-sets.tsv"]
        subprocess.run([path, *options, transactions, *files], check=True, capture_output=True)
        return [file.read_bytes() for file in files]

    return run


@pytest.fixture
def written(tmp_path):
    """Write a result and return the bytes of both files."""

    def write(mined):
        files = [tmp_path / "rules.tsv", tmp_path / "sets.tsv"]
        mined.write_tsv(*files)
        return [file.read_bytes() for file in files]

    return write


#: Eight customers, evaluated by hand: bread => butter counts for ann and bob within 2 days.
SHOP = [
    ("ann", 1, "bread"), ("ann", 3, "butter"), ("bob", 2, "bread"), ("bob", 4, "butter"),
    ("bob", 4, "jam"), ("cid", 1, "butter"), ("cid", 2, "bread"), ("dee", 5, "bread"),
    ("dee", 5, "butter"), ("eve", 1, "bread"), ("eve", 9, "butter"), ("fay", 4, "butter"),
    ("fay", 4, "jam"), ("gus", 2, "bread"), ("hal", 7, "tea"),
]


@pytest.fixture
def shop():
    import pyarrow as pa

    who, day, product = zip(*SHOP, strict=True)
    table = pa.table({"who": who, "day": pa.array(day, pa.int32()), "product": product})
    return quarvis.Histories(table, entity="who", time="day", items="product")
