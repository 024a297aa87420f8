"""The findings of a check, line by line."""

import datetime
import re

import pyarrow.compute as pc
import pytest
from conftest import SHOP

import quarvis
from quarvis.checking import _read_time

CLEAN = "who\twhen\twhat\nu\t1\ta\tb\nv\t2\tc\n"


def found(tmp_path, data):
    path = tmp_path / "f.tsv"
    path.write_bytes(data if isinstance(data, bytes) else data.encode())
    findings = quarvis.check(path)
    return [f"{f.line}:{f.column}: {f.text}" for f in findings]


def test_nothing_is_found_in_a_clean_file(tmp_path):
    path = tmp_path / "clean.tsv"
    path.write_text(CLEAN)
    findings = quarvis.check(path)
    assert not findings
    assert str(findings) == f"{path}: nothing found"


@pytest.mark.parametrize(
    ("data", "expected"),
    [
        ("", ["1:1: the file is empty"]),
        (CLEAN + "w\n", ["4:1: the row has one cell: it takes its time from the next row, which is "
                         "lost"]),
        (CLEAN + "\tw\t3\ta\n", ["4:1: the row begins with a tab: its first cell is lost, and the "
                                 "second one is the entity"]),
        (CLEAN + "w\t2020-03-01\ta\n", [
            "4:2: the time '2020-03-01' is a date and reads as 2020: write the times as numbers "
            "(quarvis prepare)"]),
        (CLEAN + "w\t12x\ta\n", ["4:2: the time '12x' is not a plain number and reads as 12"]),
        (CLEAN + "w\t-1\ta\n", [
            "4:2: the time '-1' is not a plain number and reads as 4294967295"]),
        (CLEAN + "w\tnoon\ta\n", ["4:2: the time 'noon' is not a plain number and reads as 0"]),
        (CLEAN + "w\t4294967296\ta\n", [
            "4:2: the time '4294967296' does not fit in 32 bits: divide it"]),
        (CLEAN + "w\t1583020800000\ta\n", [
            "4:2: the time '1583020800000' does not fit in 32 bits, like most milliseconds: divide "
            "it"]),
        (CLEAN + "w\t4294967295\ta\n", []),
        (CLEAN + "w\t3\ta\r\n", [
            "4:3: the line ends in CR LF: the carriage return joins it to the next one"]),
        (CLEAN + 'w\t3\t"a\nx\t4\tb\ny\t5\tc"\n', [
            "4:3: a quote opens a cell that continues to line 6: the lines between are not read as "
            "rows"]),
        (CLEAN + 'w\t3\tb\t"a\n', [
            "4:4: a quote opens a cell that continues to the end of the file: the lines between "
            "are not read as rows"]),
        (CLEAN + 'w\t3\t"a"\n', []),
        (CLEAN.encode() + b"w\t3\ta\xff\n", [
            "4:3: the byte 0xFF breaks its cell; UTF-8 never has it"]),
        (CLEAN + "who\twhen\twhat\n", ["4:1: the header is repeated and reads as a row"]),
        ("u\t1\ta\nv\t2\tb\n", ["1:2: the first line has the time '1', but is read as a header and "
                                "lost"]),
        (CLEAN + "\n", ["4:1: the last line is empty: it reads as an entity without a name"]),
        (CLEAN + "w\t3\ta,b\tx => y\t{z}\n", [
            "4:3: the item 'a,b' has a comma, which the tool's files do not quote",
            "4:4: the item 'x => y' has \" => \", which the tool's files do not quote",
            "4:5: the item '{z}' has a brace, which the tool's files do not quote"]),
        (CLEAN + "w\t3\ta \n", [
            "4:3: the item 'a ' has blanks at an end, which make it a different item"]),
        (CLEAN.encode("utf-8-sig"), ["1:1: a byte-order mark of UTF-8 begins the header"]),
    ],
)
def test_finding(data, expected, tmp_path):
    assert found(tmp_path, data) == expected


def test_many_of_a_kind_are_counted(tmp_path):
    path = tmp_path / "crlf.tsv"
    path.write_text(CLEAN.replace("\n", "\r\n") * 3)
    findings = quarvis.check(path)
    assert findings.counts["CR LF"] == 8
    assert len([f for f in findings if f.kind == "CR LF"]) == 3
    assert f"{path}: CR LF: 5 more" in str(findings)


@pytest.mark.parametrize("cell", [b"12x", b"-1", b"+7", b" 5", b"x", b"", b"-", b"007"])
def test_times_read_as_the_tool_reads_them(cell, tmp_path):
    path = tmp_path / "t.tsv"
    path.write_bytes(b"h\nu\t" + cell + b"\ta\n")
    assert quarvis.read_transactions(path).report().first == _read_time(cell)


def test_shop_export_with_every_trouble(tmp_path):
    """Find ISO dates, CR LF, quotes, missing customers and cancelled rows; rules stay the same."""
    start = datetime.date(2011, 1, 1)
    lines = ["Invoice,Customer,InvoiceDate,Description,Quantity"]
    for number, (who, day, what) in enumerate(SHOP):
        date = start + datetime.timedelta(day)
        lines.append(f'5{number:02},{who},{date} 08:26:00,"{what}",1')
        lines.append(f'5{number:02},,{date} 08:26:00,"{what}",1')
    lines.insert(5, 'C590,cid,2011-01-09 09:00:00,"jam",-1')
    path = tmp_path / "shop.csv"
    path.write_text("\r\n".join(lines) + "\r\n", newline="")

    findings = quarvis.check(path)
    assert set(findings.counts) == {
        "no tabs", "CR LF", "quotes", "missing", "date", "negative", "lettered"
    }
    told = str(findings)
    for words in (
        "32 lines end in CR LF", "column 'Customer' is empty in 15 of 31 rows",
        "column 'InvoiceDate' has 31 dates", "column 'Quantity' is negative in 1 rows",
        "column 'Invoice' has a letter before the number in 1 rows",
    ):
        assert words in told

    roles = {"entity": "Customer", "time": "InvoiceDate", "items": "Description"}
    with pytest.raises(quarvis.DataError, match=re.escape("lacks the entity in 15 of 31 rows")):
        quarvis.read_csv(path, **roles)
    histories = quarvis.read_csv(path, **roles, missing="drop", where=pc.field("Quantity") > 0)
    assert (histories.report().dropped, histories.report().left_out) == ({"Customer": 15}, 1)
    assert "\nleft out      1 rows that where=... excludes\n" in f"{histories.report()}\n"
    rules = quarvis.mine(histories, min_count=2, window="2d").to_arrow()
    assert rules.select(["antecedents", "consequents", "count"]).to_pylist() == [
        {"antecedents": ["bread"], "consequents": ["butter"], "count": 2}
    ]


def test_no_file(tmp_path):
    with pytest.raises(FileNotFoundError):
        quarvis.check(tmp_path / "none")
