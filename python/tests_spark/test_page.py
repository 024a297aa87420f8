"""The program in the documentation runs."""

import datetime
import re
from pathlib import Path

PAGE = Path(__file__).resolve().parents[2] / "docs" / "scale.md"


def test_the_program_of_the_page_runs(spark, tmp_path, monkeypatch, capsys):
    monkeypatch.chdir(tmp_path)
    rows = [(7, datetime.date(2024, 1, 2), "printer"), (7, datetime.date(2024, 1, 20), "ink"),
            (8, datetime.date(2024, 1, 5), "printer"), (8, datetime.date(2024, 1, 30), "ink"),
            (9, datetime.date(2024, 1, 5), "printer"), (9, datetime.date(2024, 3, 30), "ink")]
    frame = spark.createDataFrame(rows, "customer int, day date, product string")
    (program,) = re.findall(r"^```python\n(.*?)^```", PAGE.read_text(), re.M | re.S)
    exec(compile(program, str(PAGE), "exec"), {"frame": frame})
    shown = capsys.readouterr().out
    assert "[printer]" in shown
    assert "printer => ink: counts in 2, the reverse rule in 0\n       1  too late" in shown
    assert (tmp_path / "rules.tsv").read_text().count("printer") == 1
    assert (tmp_path / "item-sets.tsv").stat().st_size > 0
