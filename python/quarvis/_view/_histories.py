"""Histories as the page has them: only the items that occur in its rules."""

from __future__ import annotations

from dataclasses import dataclass
from typing import Any

import numpy as np

from quarvis._view._rules import Numbers, PageRules
from quarvis.histories import Histories


@dataclass(frozen=True)
class PageHistories:
    """Histories, each with its transactions in the order of time."""

    begin: Numbers  #: By history, and the end of the last: its first transaction.
    times: Numbers  #: By transaction.
    item_begin: Numbers  #: By transaction, and the end of the last: its first item.
    items: Numbers  #: Places in the items of the rules.
    names: list[str]  #: Of the entities; empty when they are left out.
    sampled_from: int | None  #: Of how many histories these were drawn.


def pack(
    histories: Histories, rules: PageRules, *, names: bool, most: int, seed: int = 0
) -> PageHistories:
    """Give the histories that have any item of the rules.

    Parameters
    ----------
    histories : Histories
        What the rules were mined from.
    rules : PageRules
        The rules of the page.
    names : bool
        Whether the page has the names of the entities.
    most : int
        The most occurrences of items; beyond it, whole histories are drawn at random.
    seed : int
        Of the draw.
    """
    columns = histories._columns
    place_of = _places(columns.item_names.to_pylist(), rules.items)
    code = np.minimum(columns.items, len(place_of) - 1)
    keep = np.flatnonzero(place_of[code] >= 0)
    rows = np.stack([
        columns.entities.codes[keep].astype(np.int64),
        columns.times[keep].astype(np.int64),
        place_of[code[keep]],
    ])
    rows = rows[:, np.lexsort((rows[2], rows[1], rows[0]))]
    if rows.shape[1]:
        rows = rows[:, np.concatenate([[True], np.any(np.diff(rows), axis=0)])]
    rows, sampled_from = _drawn(rows, most, seed)

    history, item_history = np.unique(rows[0], return_inverse=True)
    first = np.ones(rows.shape[1], bool)
    first[1:] = np.any(np.diff(rows[:2]), axis=0)
    starts = np.flatnonzero(first)
    begin = np.searchsorted(item_history[starts], np.arange(len(history) + 1))
    return PageHistories(
        begin=begin,
        times=rows[1][starts],
        item_begin=np.append(starts, rows.shape[1]),
        items=rows[2],
        names=[str(columns.entities.values[int(code)]) for code in history] if names else [],
        sampled_from=sampled_from,
    )


def _places(names: list[Any], wanted: list[str]) -> Numbers:
    """By code of the histories, and for no item at the end: the place among the wanted, or -1."""
    place = {name: number for number, name in enumerate(wanted)}
    return np.array([*(place.get(name, -1) for name in names), -1], np.int64)


def _drawn(rows: Numbers, most: int, seed: int) -> tuple[Numbers, int | None]:
    if rows.shape[1] <= most:
        return rows, None
    entities, sizes = np.unique(rows[0], return_counts=True)
    order = np.random.default_rng(seed).permutation(len(entities))
    some = order[np.cumsum(sizes[order]) <= most]
    return rows[:, np.isin(rows[0], entities[some])], len(entities)
