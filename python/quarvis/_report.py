"""The report about the data that were read."""

from __future__ import annotations

import html
from dataclasses import dataclass
from itertools import pairwise
from typing import TYPE_CHECKING, Any

import numpy as np
import pyarrow as pa
import pyarrow.compute as pc

from quarvis._columns import encode

if TYPE_CHECKING:
    from quarvis.histories import Columns


@dataclass(frozen=True)
class Report:
    """What was read, what was dropped and what looks wrong.

    Attributes
    ----------
    rows : int
        The number of input rows that were read, without those that were dropped.
    entities : int
        The number of histories.
    transactions : int
        The number of distinct pairs of entity and time.
    items : int
        The number of distinct items.
    first, last : object
        The earliest and the latest time, in the type of the column; None without times.
    unit : str
        The unit of the times: "days", "seconds" and so on; "numbers" for integers, "none" without
        times.
    dropped : dict of str to int
        For each column, the number of rows dropped because they lack its value. A row that lacks
        several values counts for each.
    left_out : int
        The number of rows of the file that ``where=...`` excludes.
    remarks : tuple of str
        One sentence for each thing that looks wrong.
    """

    rows: int
    entities: int
    transactions: int
    items: int
    first: Any
    last: Any
    unit: str
    dropped: dict[str, int]
    left_out: int
    remarks: tuple[str, ...]

    def _lines(self) -> list[tuple[str, str]]:
        lines = [
            ("rows", f"{self.rows:,}"),
            ("entities", f"{self.entities:,}"),
            ("transactions", f"{self.transactions:,}"),
            ("items", f"{self.items:,}"),
        ]
        if self.unit != "none":
            lines.append(("times", f"{self.first} to {self.last}, in {self.unit}"))
        for column, count in self.dropped.items():
            lines.append(("dropped", f"{count:,} rows without {column!r}"))
        if self.left_out:
            lines.append(("left out", f"{self.left_out:,} rows that where=... excludes"))
        lines += [("looks wrong", remark) for remark in self.remarks]
        return lines

    def __str__(self) -> str:
        return "\n".join(f"{name:<13} {text}" for name, text in self._lines())

    __repr__ = __str__

    def _repr_html_(self) -> str:
        rows = "".join(
            f"<tr><th>{html.escape(name)}</th><td>{html.escape(text)}</td></tr>"
            for name, text in self._lines()
        )
        return f"<table>{rows}</table>"


def looks_wrong(columns: Columns) -> list[str]:
    """Return a sentence for each thing in the data that may not be intended."""
    remarks = []
    entities = len(columns.entities.values)
    if columns.scale.type is not None and entities > 0:
        once = entities - _with_several_times(columns)
        if once * 3 >= entities:
            remarks.append(
                f"{once:,} of {entities:,} entities have only one time, so nothing can follow "
                "anything there: is the entity the right column?"
            )
    alike = _alike(columns.item_names)
    if alike:
        shown = "; ".join(" and ".join(repr(name) for name in names) for names in alike[:3])
        remarks.append(
            f"{len(alike):,} item names differ from others only in case or blanks: {shown}"
        )
    return remarks


def _with_several_times(columns: Columns) -> int:
    codes = columns.entities.codes
    one = np.zeros(len(columns.entities.values), columns.times.dtype)
    one[codes] = columns.times
    several = np.zeros(len(one), bool)
    several[codes[columns.times != one[codes]]] = True
    return int(several.sum())


def _alike(names: pa.Array) -> list[list[str]]:
    """Return groups of names that differ only in case and blanks."""
    plain = pc.utf8_trim_whitespace(pc.utf8_lower(names))
    plain = pc.replace_substring_regex(plain, r"\s+", " ")
    groups = encode(pa.chunked_array([plain])).codes
    order = np.argsort(groups, kind="stable")
    ordered = groups[order].astype(np.int64)
    bounds = np.append(np.flatnonzero(np.diff(ordered, prepend=-1)), len(order))
    return [
        sorted(names[int(row)].as_py() for row in order[start:end])
        for start, end in pairwise(bounds)
        if end - start > 1
    ]
