"""The types that type checkers see in the package."""

import subprocess
import sys
from pathlib import Path

import pytest

import quarvis

SAMPLE = Path(__file__).parent / "typing" / "sample.py"


def test_mypy_agrees_with_the_sample():
    done = subprocess.run(
        [sys.executable, "-m", "mypy", "--strict", "--config-file=", str(SAMPLE)],
        capture_output=True, text=True,
    )
    assert done.stdout == "Success: no issues found in 1 source file\n"


def test_pyright_agrees_with_the_sample(tmp_path):
    config = tmp_path / "pyrightconfig.json"
    config.write_text(
        f'{{"include": ["{SAMPLE}"], "typeCheckingMode": "strict",'
        f'"enableTypeIgnoreComments": true, "pythonPath": "{sys.executable}"}}'
    )
    done = subprocess.run(
        [sys.executable, "-m", "pyright", "-p", str(config), "--pythonpath", sys.executable],
        capture_output=True, text=True,
    )
    assert "0 errors" in done.stdout, done.stdout


def test_stub_of_the_engine_is_generated(tmp_path):
    package = Path(quarvis.__file__).parent
    stub = tmp_path / "_engine.pyi"
    subprocess.run(
        [sys.executable, "-m", "nanobind.stubgen", "-q", "-m", "quarvis._engine", "-o", stub],
        check=True,
    )
    assert stub.read_text() == (package / "_engine.pyi").read_text()


def test_optional_libraries_stay_unimported():
    script = (
        "import sys, quarvis; "
        "sys.exit([m for m in ('pandas', 'polars', 'duckdb', 'altair', 'scipy', 'matplotlib') "
        "if m in sys.modules] or 0)"
    )
    done = subprocess.run([sys.executable, "-c", script], capture_output=True, text=True)
    assert (done.returncode, done.stderr) == (0, "")


@pytest.mark.parametrize("name", quarvis.__all__)
def test_everything_public_is_documented(name):
    assert getattr(quarvis, name).__doc__
