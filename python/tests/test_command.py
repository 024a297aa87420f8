"""The command ``quarvis``, run as users do."""

import json
import os
import pty
import signal
import subprocess
import sys

import pyarrow.csv
import pyarrow.parquet
import pytest
from conftest import SHOP
from test_runs import large

import quarvis

COMMAND = [sys.executable, "-m", "quarvis.cli"]
ROLES = ["--entity", "who", "--time", "day", "--items", "product"]


def run(*arguments, status=0):
    done = subprocess.run(
        [*COMMAND, *map(str, arguments)], capture_output=True, text=True, timeout=120
    )
    assert done.returncode == status, done.stderr
    assert "Traceback" not in done.stderr
    return done


@pytest.fixture
def csv_file(tmp_path):
    path = tmp_path / "shop.csv"
    lines = ["who,day,product", *(f"{who},2020-03-{day:02},{what}" for who, day, what in SHOP)]
    path.write_text("\r\n".join(lines) + "\r\n", newline="")
    return path


def test_prepare_writes_what_the_tool_reads(csv_file, tmp_path, tool):
    prepared = tmp_path / "shop.tsv"
    done = run("prepare", csv_file, prepared, *ROLES)
    assert "times of file days since 1970" in done.stderr
    assert prepared.read_text().splitlines()[:2] == ["entity\ttime\titems", "ann\t18322\tbread"]
    rules, _ = tool(prepared, tmp_path, "-c", "2", "-w", "2")
    assert rules.splitlines()[1].startswith(b"bread => butter\t2\t5\t0.25")
    assert run("check", prepared).stdout == f"{prepared}: nothing found\n"


def test_check_has_a_status(csv_file):
    done = run("check", csv_file, status=1)
    assert "dates: the tool reads only their year" in done.stdout


@pytest.mark.parametrize("ending", ["parquet", "arrow", "csv", "json", "jsonl", "tsv"])
def test_mine_and_rank(ending, csv_file, tmp_path):
    rules = tmp_path / f"rules.{ending}"
    sets = tmp_path / f"sets.{ending}"
    done = run("mine", csv_file, rules, "--item-sets", sets, *ROLES, "-c", "2", "-w", "2d")
    assert "rules        1\n" in done.stderr
    assert sets.stat().st_size > 0
    shown = run("rank", rules, "--by", "lift").stdout.splitlines()
    assert shown[0].split() == ["lift", "confidence", "count", "rule"]
    assert shown[1] == "1.111      0.8333      2  bread => butter"


def test_mine_keeps_lists(csv_file, tmp_path):
    run("mine", csv_file, tmp_path / "r.parquet", *ROLES, "-c", "1")
    run("mine", csv_file, tmp_path / "r.csv", *ROLES, "-c", "1")
    table = pyarrow.parquet.read_table(tmp_path / "r.parquet")
    texts = pyarrow.csv.read_csv(tmp_path / "r.csv").column("consequents").to_pylist()
    assert list(map(json.loads, texts)) == table.column("consequents").to_pylist()


def test_transaction_files_need_no_columns(tmp_path, tool):
    path = tmp_path / "shop.tsv"
    path.write_text("who\tday\tproducts\n" + "".join(f"{w}\t{d}\t{p}\n" for w, d, p in SHOP))
    run("mine", path, tmp_path / "r.tsv", "--item-sets", tmp_path / "s.tsv", "-c", "1", "-w", "5",
        "--splits", "runs")
    expected = tool(path, tmp_path, "-c", "1", "-w", "5")
    assert [(tmp_path / n).read_bytes() for n in ("r.tsv", "s.tsv")] == expected


def test_explain(csv_file, tmp_path):
    output = tmp_path / "why.csv"
    done = run("explain", csv_file, "bread => butter", *ROLES, "-w", "2d", "-o", output)
    assert done.stdout.startswith("bread => butter: counts in 2, the reverse rule in 1\n")
    table = pyarrow.csv.read_csv(output)
    assert table.column("lag").to_pylist()[:2] == [172800, 172800]  # seconds


@pytest.mark.parametrize(
    "kind",
    [["scatter"], ["graph"], ["lags", "--rule", "bread => butter"], ["item", "--item", "jam"]],
)
def test_plot(kind, csv_file, tmp_path):
    run("plot", csv_file, tmp_path / "p.svg", *ROLES, "-c", "1", "--kind", *kind)
    assert (tmp_path / "p.svg").read_text().startswith("<svg")


def test_files_are_not_replaced_without_force(csv_file, tmp_path):
    rules = tmp_path / "rules.parquet"
    rules.write_text("precious")
    done = run("mine", csv_file, rules, *ROLES, "-c", "2", status=1)
    assert done.stderr == f"Error: {rules} already exists: --force replaces it\n"
    assert rules.read_text() == "precious"
    run("mine", csv_file, rules, *ROLES, "-c", "2", "--force")
    assert pyarrow.parquet.read_table(rules).num_rows == 1


@pytest.mark.parametrize(
    ("arguments", "status", "message"),
    [
        (["check", "none.csv"], 1, "Error: none.csv: No such file or directory\n"),
        (["mine", "{csv}", "r.xyz", *ROLES, "-c", "2"], 1,
         "Error: the ending of 'r.xyz' is unknown: name the file .parquet, .arrow, .csv, "
         ".json, .jsonl or .tsv\n"),
        (["mine", "{csv}", "r.csv", "--entity", "Who", "--items", "product", "-c", "2"], 1,
         "Error: there is no column 'Who'; the columns are 'who', 'day', 'product'\n"),
        (["mine", "{csv}", "r.csv", *ROLES], 1,
         "Error: give min_count=... (histories) or min_support=... (their share): the number of "
         "item sets explodes as it falls, so begin high\n"),
        (["mine", "{csv}", "missing/r.csv", *ROLES, "-c", "2"], 1,
         "Error: missing/r.csv: there is no folder missing\n"),
        (["mine", "{csv}", "r.csv", "--item-sets", "s", *ROLES, "-c", "2"], 1,
         "Error: the ending of 's' is unknown: name the file .parquet, .arrow, .csv, .json, "
         ".jsonl or .tsv\n"),
        (["plot", "{csv}", "p.gif", *ROLES, "-c", "2"], 1,
         "Error: the ending of 'p.gif' is unknown: name the file .svg, .png or .html\n"),
        (["explain", "{csv}", "jam => tea", *ROLES, "-o", "why.tsv"], 1,
         "Error: the ending of 'why.tsv' is unknown: name the file .parquet, .arrow, .csv, "
         ".json or .jsonl\n"),
        (["rank", "{csv}"], 1,
         "Error: {csv} has no columns antecedents and consequents: is it a rules file?\n"),
    ],
)
def test_errors_are_one_line(arguments, status, message, csv_file, tmp_path, monkeypatch):
    monkeypatch.chdir(tmp_path)
    done = run(*(a.format(csv=csv_file) for a in arguments), status=status)
    errors = [line for line in done.stderr.splitlines(True) if line.startswith("Error: ")]
    assert len(errors) == 1
    assert errors[0].endswith(message.format(csv=csv_file))


@pytest.mark.parametrize(
    ("condition", "rows"),
    [("day>=2020-03-05", 4), ("who=ann", 2), ("who='ann'", 2), ('product!="bread"', 9)],
)
def test_where(condition, rows, csv_file, tmp_path):
    done = run("prepare", csv_file, tmp_path / "t.tsv", *ROLES, "--where", condition)
    assert f"rows          {rows}\n" in done.stderr
    assert f"left out      {15 - rows} rows" in done.stderr


@pytest.mark.parametrize("condition", ["Day > 1", "who > 1", "day > 1"])
def test_where_that_does_not_fit(condition, csv_file, tmp_path):
    output = tmp_path / "t.tsv"
    done = run("prepare", csv_file, output, *ROLES, "--where", condition, status=1)
    (line,) = done.stderr.splitlines()  # the reason in it comes from Arrow
    assert line.startswith(f"Error: where=({condition}) does not fit the columns of the file: ")
    assert not output.exists()


@pytest.mark.parametrize("ending", ["tsv", "csv"])
def test_full_disk_is_an_error(ending, csv_file, tmp_path):
    if not os.path.exists("/dev/full"):
        pytest.skip("needs /dev/full")
    full = tmp_path / f"full.{ending}"
    full.symlink_to("/dev/full")
    done = run("mine", csv_file, full, *ROLES, "-c", "1", status=1)
    last = done.stderr.splitlines()[-1]
    assert last.startswith(f"Error: {full}: ")
    assert last.endswith("No space left on device")


def test_warnings_are_one_line(csv_file, tmp_path):
    done = run("mine", csv_file, tmp_path / "r.csv", *ROLES, "-c", "2", "-w", "300d")
    assert "Warning: window='300d' is longer than the data, which span " in done.stderr


@pytest.fixture(scope="module")
def long_input(tmp_path_factory):
    path = tmp_path_factory.mktemp("long") / "long.tsv"
    from quarvis.writing import write_transactions

    write_transactions(large(), path)
    return path


def test_interrupt_ends_without_traceback(long_input, tmp_path):
    process = subprocess.Popen(
        [*COMMAND, "mine", long_input, tmp_path / "r.csv", "-c", "2"],
        stderr=subprocess.PIPE, text=True,
    )
    begun = process.stderr.readline()
    process.send_signal(signal.SIGINT)
    _, errors = process.communicate(timeout=120)
    assert "to do" in begun
    assert process.returncode == 130
    assert errors.endswith("Interrupted\n")
    assert "Traceback" not in errors
    assert list(tmp_path.iterdir()) == []


MANY_SETS = ("--budget-sets", "20000000")  # enough that progress is shown before the end


def test_budget_is_told(long_input, tmp_path):
    done = run("mine", long_input, tmp_path / "r.csv", "-c", "2", "--budget-seconds", "1", status=1)
    assert "Error: the budget of 1 seconds is exceeded at min_count=2; " in done.stderr


def test_progress_is_told_in_lines(long_input, tmp_path):
    done = run("mine", long_input, tmp_path / "r.csv", "-c", "2", *MANY_SETS, status=1)
    assert "item sets: 60 to do\n" in done.stderr
    assert "Error: the budget of 20,000,000 item sets is exceeded" in done.stderr


def test_progress_is_a_bar_on_a_terminal(long_input, tmp_path):
    terminal, other = pty.openpty()
    process = subprocess.Popen(
        [*COMMAND, "mine", long_input, tmp_path / "r.csv", "-c", "2", *MANY_SETS], stderr=other
    )
    process.wait(timeout=120)
    os.close(other)
    shown = b""
    while True:
        try:
            part = os.read(terminal, 65536)
        except OSError:
            break
        if not part:
            break
        shown += part
    os.close(terminal)
    assert b"\ritem sets    [" in shown


def test_version():
    assert run("--version").stdout == f"quarvis, version {quarvis.__version__}\n"
