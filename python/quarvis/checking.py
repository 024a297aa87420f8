"""Checks files for content that is not read as intended."""

from __future__ import annotations

import os
import re
from collections.abc import Iterator
from dataclasses import dataclass, field
from pathlib import Path

from quarvis._check_table import check_table
from quarvis._findings import Finding, Findings

_LARGEST = 2**32 - 1
_SIGNS = {b",": "a comma", b"{": "a brace", b"}": "a brace", b" => ": '" => "'}
_PLAIN = re.compile(rb"[0-9]+")
_DATE = re.compile(rb"[0-9]{4}-[0-9]{2}-[0-9]{2}([ T].*)?|[0-9]{1,2}[./][0-9]{1,2}[./][0-9]{2,4}.*")
_MARKS = {b"\xef\xbb\xbf": "UTF-8", b"\xff\xfe": "UTF-16", b"\xfe\xff": "UTF-16"}


def check(path: str | os.PathLike[str]) -> Findings:
    """Report what the command-line tool would not read as intended.

    A file whose header has tabs is checked as a transaction file, line by line: for short rows,
    leading tabs, times that are too great or not plain numbers, CR LF, quotes that swallow rows,
    bytes of 0xFF, a missing or a second header, empty lines, and items whose text is ambiguous in
    the tool's files. Other delimited text is checked by column instead, for problems with
    `read_csv` and for what the report would list as wrong.

    Parameters
    ----------
    path : path
        The file; it is read once and not changed.

    Returns
    -------
    Findings
        True if anything was found; readable when printed. It keeps the first places of each kind
        and the number of all.

    Raises
    ------
    OSError
        When the file cannot be read.
    """
    data = Path(path).read_bytes()
    findings = Findings(os.fspath(path))
    if not data:
        findings.add("empty", 1, 1, "the file is empty")
        return findings
    for mark, name in _MARKS.items():
        if data.startswith(mark):
            findings.add(
                "byte-order mark", 1, 1,
                f"a byte-order mark of {name} begins the header"
                + ("" if name == "UTF-8" else "; the tool reads UTF-8 alone"),
            )
    header = data.split(b"\n", 1)[0]
    if b"\t" not in header and (
        b"," in header or b";" in header or data.startswith((b"\xff\xfe", b"\xfe\xff"))
    ):
        findings.add("no tabs", 1, 1, "the header has no tab: the tool reads each line as one cell")
        check_table(path, data, findings)
        return findings
    _Rows(data, findings).check()
    return findings


@dataclass
class _Rows:
    """The rows of a transaction file."""

    data: bytes
    findings: Findings
    items: dict[bytes, tuple[int, int]] = field(default_factory=dict)

    def check(self) -> None:
        """Check every line."""
        lines = self.data.split(b"\n")
        ends_with_line_feed = lines[-1] == b""
        if ends_with_line_feed:
            lines.pop()
        self._check_header(lines[0])
        for number, line in self._lines(lines):
            self._check_line(number, line, lines[0])
        if len(lines) > 1 and lines[-1] == b"":
            self.findings.add(
                "empty line", len(lines), 1,
                "the last line is empty: it reads as an entity without a name",
            )
        self._check_items()

    def _check_header(self, line: bytes) -> None:
        cells = line.rstrip(b"\r").split(b"\t")
        if len(cells) > 1 and _PLAIN.fullmatch(cells[1]):
            self.findings.add(
                "no header", 1, 2,
                f"the first line has the time {_text(cells[1])}, but is read as a header and lost",
            )

    def _lines(self, lines: list[bytes]) -> Iterator[tuple[int, bytes]]:
        """Yield each row as the number and text of its first line; a quote may span lines."""
        number = 2
        while number <= len(lines):
            line = lines[number - 1]
            first = number
            if b'"' in line:
                column, opened = _open_quote(line)
                if opened:
                    last = number + 1
                    while last <= len(lines) and b'"' not in lines[last - 1]:
                        last += 1
                    until = f"line {last}" if last <= len(lines) else "the end of the file"
                    self.findings.add(
                        "open quote", number, column,
                        f"a quote opens a cell that continues to {until}: the lines between are "
                        "not read as rows",
                    )
                    number = last
            yield first, line
            number += 1

    def _check_line(self, number: int, line: bytes, header: bytes) -> None:
        add = self.findings.add
        if line.endswith(b"\r"):
            add("CR LF", number, len(line.split(b"\t")),
                "the line ends in CR LF: the carriage return joins it to the next one")
            line = line[:-1]
        if b"\xff" in line:
            column = line[: line.index(b"\xff")].count(b"\t") + 1
            add("byte 0xFF", number, column, "the byte 0xFF breaks its cell; UTF-8 never has it")
        if not line:
            return
        if line == header.rstrip(b"\r"):
            add("second header", number, 1, "the header is repeated and reads as a row")
            return
        if line[0] == 9:
            add("leading tab", number, 1,
                "the row begins with a tab: its first cell is lost, and the second one is the "
                "entity")
            return
        cells = line.split(b"\t")
        if len(cells) == 1:
            add("short row", number, 1,
                "the row has one cell: it takes its time from the next row, which is lost")
            return
        if not _PLAIN.fullmatch(cells[1]) or len(cells[1]) > 9:
            self._check_time(number, cells[1])
        for column, item in enumerate(cells[2:], 3):
            if item and item not in self.items:
                self.items[item] = (number, column)

    def _check_time(self, number: int, cell: bytes) -> None:
        if _PLAIN.fullmatch(cell):
            if int(cell) > _LARGEST:
                kind = ", like most milliseconds" if 10**12 <= int(cell) < 10**13 else ""
                self.findings.add(
                    "great time", number, 2,
                    f"the time {_text(cell)} does not fit in 32 bits{kind}: divide it",
                )
            return
        if _DATE.fullmatch(cell):
            digits = re.match(rb"[0-9]+", cell)
            assert digits
            self.findings.add(
                "date", number, 2,
                f"the time {_text(cell)} is a date and reads as {digits[0].decode()}: write the "
                "times as numbers (quarvis prepare)",
            )
            return
        self.findings.add(
            "odd time", number, 2,
            f"the time {_text(cell)} is not a plain number and reads as {_read_time(cell)}",
        )

    def _check_items(self) -> None:
        for item, (line, column) in self.items.items():
            signs = [name for sign, name in _SIGNS.items() if sign in item]
            if signs:
                self.findings.add(
                    "ambiguous item", line, column,
                    f"the item {_text(item)} has {' and '.join(dict.fromkeys(signs))}, which the "
                    "tool's files do not quote",
                )
            if item != item.strip():
                self.findings.add(
                    "blanks", line, column,
                    f"the item {_text(item)} has blanks at an end, which make it a different item",
                )


def _open_quote(line: bytes) -> tuple[int, bool]:
    """Find a cell whose quote is not closed in the line.

    Returns the column of the cell, from 1, and whether there is one.
    """
    begin = 0
    column = 1
    while begin <= len(line):
        if line[begin : begin + 1] == b'"':
            end = line.find(b'"', begin + 1)
            if end < 0:
                return column, True
            begin = end + 1
        tab = line.find(b"\t", begin)
        if tab < 0:
            break
        begin = tab + 1
        column += 1
    return column, False


def _read_time(cell: bytes) -> int:
    """Return the time that the tool reads from a cell: a sign and the digits after it."""
    match = re.match(rb"([+-]?)([0-9]+)", cell)
    if not match:
        return 0
    number = int(match[2]) % 2**32
    return (2**32 - number) % 2**32 if match[1] == b"-" else number


def _text(cell: bytes) -> str:
    return repr(cell.decode(errors="replace"))


__all__ = ["Finding", "Findings", "check"]
