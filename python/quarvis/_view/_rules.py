"""Packs rules for the page: columns of numbers that refer to tables of items and of sides."""

from __future__ import annotations

from dataclasses import dataclass, field
from typing import Any

import numpy as np

Numbers = np.ndarray[Any, np.dtype[Any]]


@dataclass(frozen=True)
class PageRules:
    """The rules of a page. n(X) is the number of histories that hold all items of X."""

    total: int  #: N, the number of all histories.
    items: list[str]
    set_begin: Numbers  #: The begin of each side in `set_items`; the last entry is the end.
    set_items: Numbers  #: Places in `items`; those of a side are in ascending order of names.
    set_count: Numbers  #: n(X) of each side.
    antecedent: Numbers  #: The side of each rule, as a place.
    consequent: Numbers
    union_count: Numbers  #: n(A u S) of each rule.
    count: Numbers | None  #: The count in order, within the window; None without times.
    item_count: Numbers  #: n of each item; 0 if unknown.
    approximate: bool = False  #: Whether the counts were recovered and other counts are possible.
    item_sets: int | None = None  #: The number of frequent item sets, if known.
    extra: dict[str, Numbers] = field(default_factory=dict)  #: Further columns, by rule.

    def __len__(self) -> int:
        """Return the number of rules."""
        return len(self.antecedent)


class RulesBuilder:
    """Numbers items and sides in the order in which they first occur."""

    def __init__(self) -> None:
        self._items: dict[str, int] = {}
        self._sides: dict[tuple[str, ...], int] = {}

    @property
    def sides(self) -> list[tuple[str, ...]]:
        """The distinct sides, in the order of their numbers."""
        return list(self._sides)

    def side(self, items: tuple[str, ...]) -> int:
        """Return the number of a side; a new side gets the next one."""
        found = self._sides.get(items)
        if found is None:
            found = self._sides[items] = len(self._sides)
            for item in items:
                self._items.setdefault(item, len(self._items))
        return found

    def build(
        self, *, item_counts: dict[str, int] | None = None, set_counts: Numbers, **columns: Any
    ) -> PageRules:
        """Return the rules; `columns` are the remaining attributes of `PageRules`."""
        lengths = [len(side) for side in self._sides]
        counts = np.zeros(len(self._items), np.int64)
        for place, side in enumerate(self._sides):
            if len(side) == 1:
                counts[self._items[side[0]]] = set_counts[place]
        for name, count in (item_counts or {}).items():
            if name in self._items:
                counts[self._items[name]] = count
        return PageRules(
            items=list(self._items),
            set_begin=np.concatenate([[0], np.cumsum(lengths, dtype=np.int64)]),
            set_items=np.array(
                [self._items[item] for side in self._sides for item in side], np.int64
            ),
            set_count=set_counts,
            item_count=counts,
            **columns,
        )
