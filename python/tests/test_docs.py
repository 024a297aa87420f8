"""The programs in the documentation run."""

import re
import shutil

import pandas
import pytest
from conftest import ROOT

import quarvis

PAGE = ROOT / "docs" / "python.md"


@pytest.mark.skipif(not PAGE.is_file(), reason="the wheel comes without the pages")
def test_programs_of_the_page_run(tmp_path, monkeypatch, capsys):
    monkeypatch.chdir(tmp_path)
    programs = re.findall(r"^```python\n(.*?)^```", PAGE.read_text(), re.M | re.S)
    assert len(programs) >= 9
    names = {}
    for program in programs:
        exec(compile(program, str(PAGE), "exec"), names)
    assert "counts in 2, the reverse rule in 1" in capsys.readouterr().out
    for file in ("rules.tsv", "rules.svg", "graph.html", "lags.png", "butter.svg"):
        assert (tmp_path / file).stat().st_size > 0


@pytest.mark.skipif(not PAGE.is_file(), reason="the wheel comes without the pages")
@pytest.mark.filterwarnings("ignore")  # warnings of the other packages
@pytest.mark.parametrize("peer", ["prefixspan", "pyspark"])
def test_comparison_with_peer_runs(peer):
    pytest.importorskip(peer)
    if peer == "pyspark" and shutil.which("java") is None:
        pytest.skip("needs Java")
    (program,) = re.findall(rf"^```python {peer}\n(.*?)^```", PAGE.read_text(), re.M | re.S)
    exec(compile(program, str(PAGE), "exec"), {"quarvis": quarvis, "pd": pandas})


@pytest.mark.skipif(not PAGE.is_file(), reason="the wheel comes without the pages")
def test_columns_of_the_page_are_those_of_the_rules(shop):
    table = PAGE.read_text().split("| column | value |")[1].split("\n\n")[0]
    named = {name for cell in re.findall(r"^\| (`.*?) \|", table, re.M)
             for name in re.findall(r"`(\w+)`", cell)}
    rules = quarvis.mine(shop, min_count=2).to_arrow()
    assert named == set(rules.column_names) - {"antecedents", "consequents"}
