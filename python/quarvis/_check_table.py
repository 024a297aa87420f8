"""Checks a file of delimited text column by column."""

from __future__ import annotations

import csv
import io
import os
import re

from quarvis._findings import Findings

_ISO_DATE = re.compile(r"\d{4}-\d{2}-\d{2}([ T].*)?")
_OTHER_DATE = re.compile(r"\d{1,2}[./]\d{1,2}[./]\d{2,4}( .*)?")
_NUMBER = re.compile(r"-?\d+(\.\d+)?")
_LETTER_AND_DIGITS = re.compile(r"[A-Za-z]\d+")


class _Column:
    """Counts of the kinds of cells in a column, and the lines of odd ones."""

    def __init__(self) -> None:
        self.cells = 0
        self.empty: list[int] = []
        self.dates = 0
        self.other_dates = 0
        self.numbers = 0
        self.negative: list[int] = []
        self.lettered: list[int] = []

    def add(self, cell: str, line: int) -> None:
        self.cells += 1
        if not cell:
            self.empty.append(line)
        elif _NUMBER.fullmatch(cell):
            self.numbers += 1
            if cell[0] == "-":
                self.negative.append(line)
        elif _ISO_DATE.fullmatch(cell):
            self.dates += 1
        elif _OTHER_DATE.fullmatch(cell):
            self.other_dates += 1
        elif _LETTER_AND_DIGITS.fullmatch(cell):
            self.lettered.append(line)


def check_table(path: str | os.PathLike[str], data: bytes, findings: Findings) -> None:
    """Add the findings for a file of delimited text with a header."""
    encoding = "utf-16" if data.startswith((b"\xff\xfe", b"\xfe\xff")) else "utf-8-sig"
    text = data.decode(encoding, errors="replace")
    header = text.split("\n", 1)[0]
    delimiter = max(",;|\t", key=header.count)
    ends = text.count("\r\n")
    if ends:
        findings.add("CR LF", 1, 1, f"{ends:,} lines end in CR LF")
    reader = csv.reader(io.StringIO(text, newline=""), delimiter=delimiter)
    names = next(reader)
    columns = [_Column() for _ in names]
    for row in reader:
        line = reader.line_num
        if not row:
            findings.add("empty line", line, 1, "the line is empty")
            continue
        if row == names:
            findings.add("second header", line, 1, "the header is repeated and reads as a row")
            continue
        if len(row) != len(names):
            findings.add(
                "cells", line, len(row), f"the row has {len(row)} cells, the header {len(names)}"
            )
        for column, cell in zip(columns, row, strict=False):
            column.add(cell, line)
    if '"' in text:
        findings.add("quotes", 1, 1, "cells are quoted: the tool does not undo doubled quotes")
    for place, (name, column) in enumerate(zip(names, columns, strict=True), 1):
        _tell(name, place, column, findings)


def _tell(name: str, place: int, column: _Column, findings: Findings) -> None:
    filled = column.cells - len(column.empty)
    if column.empty:
        findings.add(
            "missing", column.empty[0], place,
            f"column {name!r} is empty in {len(column.empty):,} of {column.cells:,} rows: as "
            "entities they would all be the same one (missing='drop' leaves them out)",
        )
    if column.dates:
        findings.add(
            "date", 1, place,
            f"column {name!r} has {column.dates:,} dates: the tool reads only their year; "
            "read_csv reads them as dates",
        )
    if column.other_dates:
        findings.add(
            "date", 1, place,
            f"column {name!r} has {column.other_dates:,} dates whose format needs time_format=...",
        )
    if column.negative and len(column.negative) * 2 < column.numbers:
        findings.add(
            "negative", column.negative[0], place,
            f"column {name!r} is negative in {len(column.negative):,} rows: were they cancelled? "
            "(where=... leaves them out)",
        )
    if column.lettered and len(column.lettered) * 2 < filled and column.numbers * 2 > filled:
        findings.add(
            "lettered", column.lettered[0], place,
            f"column {name!r} has a letter before the number in {len(column.lettered):,} rows: "
            "were they cancelled?",
        )
