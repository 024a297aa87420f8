"""Renders the page: inserts the data into the template.

The data are a JSON object in an inert script element. All columns are packed into one block of
bytes, little-endian, each column at a multiple of 8 bytes. The block is compressed by deflate and
encoded in base64.
"""

from __future__ import annotations

import base64
import json
import zlib
from dataclasses import dataclass, field
from importlib import resources
from typing import Any

from quarvis._view._histories import PageHistories
from quarvis._view._rules import Numbers, PageRules

_FORMAT = 1
_PLACE = "@@DATA@@"


@dataclass(frozen=True)
class Words:
    """The words of the sentences on the page."""

    entity: str = "history"  #: One history.
    entities: str = "histories"  #: Several histories.
    verb: str = "had"  #: What entities did with items, in the past tense.


@dataclass(frozen=True)
class TimeUnit:
    """The meaning of the times on the page."""

    seconds: float | None = None  #: The length of a unit in seconds; None when it is unknown.
    origin: float | None = None  #: Time 0 in seconds since 1970-01-01 UTC; None without dates.
    first: int = 0  #: The value in the data that time 0 stands for.
    unit: str = "units of time"  #: The unit in words, plural; used without `seconds`.


@dataclass(frozen=True)
class About:
    """The title, the words and the settings that the page shows besides the rules."""

    title: str = "Rules"
    words: Words = field(default_factory=Words)
    time: TimeUnit = field(default_factory=TimeUnit)
    window: int | None = None  #: In units of time; 0 means the whole past, None unknown.
    min_count: int | None = None
    notes: tuple[str, ...] = ()  #: Remarks of one sentence each.


def render(rules: PageRules, about: About, histories: PageHistories | None = None) -> str:
    """Return the page as self-contained HTML.

    No name can become markup: the JSON contains no ``<``, and the page inserts names as text nodes.
    """
    columns = _rule_columns(rules)
    if histories is not None:
        columns |= _history_columns(histories)
    types, packed = _pack(columns)
    data = {
        "format": _FORMAT,
        "title": about.title,
        "words": vars(about.words),
        "total": rules.total,
        "approximate": rules.approximate,
        "ordered": rules.count is not None,
        "notes": list(about.notes),
        "minCount": about.min_count,
        "itemSets": rules.item_sets,
        "window": about.window,
        "time": vars(about.time),
        "sampledFrom": None if histories is None else histories.sampled_from,
        "items": rules.items,
        "entities": [] if histories is None else histories.names,
        "columns": types,
        "bytes": packed,
    }
    head, place, tail = template().partition(_PLACE)
    assert place, "the template has no place for the data"
    return head + script_json(data) + tail


def template() -> str:
    """Return the page without data, as built from the sources in view/."""
    return resources.files("quarvis._view").joinpath("template.html").read_text(encoding="utf-8")


def script_json(data: Any) -> str:
    """Return JSON that is safe in a script element: it can neither close it nor open another."""
    text = json.dumps(data, ensure_ascii=False, separators=(",", ":"), allow_nan=False)
    # A lone surrogate has no encoding in UTF-8, so it is replaced.
    text = text.encode("utf-16", "surrogatepass").decode("utf-16", "replace")
    return text.replace("<", "\\u003c").replace("\u2028", "\\u2028").replace("\u2029", "\\u2029")


def _rule_columns(rules: PageRules) -> dict[str, Numbers]:
    columns = {
        "setBegin": rules.set_begin,
        "setItems": rules.set_items,
        "setCount": rules.set_count,
        "antecedent": rules.antecedent,
        "consequent": rules.consequent,
        "unionCount": rules.union_count,
        "itemCount": rules.item_count,
    }
    if rules.count is not None:
        columns["count"] = rules.count
    return columns | rules.extra


def _history_columns(histories: PageHistories) -> dict[str, Numbers]:
    return {
        "historyBegin": histories.begin,
        "transactionTime": histories.times,
        "transactionBegin": histories.item_begin,
        "transactionItems": histories.items,
    }


def _pack(columns: dict[str, Numbers]) -> tuple[list[tuple[str, str, int]], str]:
    types = []
    block = bytearray()
    for name, column in columns.items():
        kind = _kind(column)
        types.append((name, kind, len(column)))
        block += column.astype(f"<{kind[0]}{int(kind[1:]) // 8}").tobytes()
        block += bytes(-len(block) % 8)
    return types, base64.b64encode(zlib.compress(bytes(block), 9)).decode("ascii")


def _kind(column: Numbers) -> str:
    """Return the smallest type that holds a column; whole numbers up to 2^53 stay exact."""
    most = int(column.max()) if len(column) and column.dtype.kind in "ui" else 0
    if column.dtype.kind == "f" or most >= 2**32:
        return "f64"
    return next(kind for kind in ("u8", "u16", "u32") if most < 2 ** int(kind[1:]))
