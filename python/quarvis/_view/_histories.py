"""Packs histories for the page, with only the items that occur in its rules."""

from __future__ import annotations

from dataclasses import dataclass
from typing import Any

import numpy as np

from quarvis._view._rules import Numbers, PageRules
from quarvis.histories import Histories


@dataclass(frozen=True)
class PageHistories:
    """Histories, each with its transactions in ascending time."""

    begin: Numbers  #: The first transaction of each history; the last entry is the end.
    times: Numbers  #: The time of each transaction.
    item_begin: Numbers  #: The first item of each transaction; the last entry is the end.
    items: Numbers  #: Items, as places in the items of the rules.
    names: list[str]  #: The names of the entities; empty when they are left out.
    sampled_from: int | None  #: The number of histories that these are a sample of.


def pack(
    histories: Histories, rules: PageRules, *, names: bool, most: int, seed: int = 0
) -> PageHistories:
    """Return the histories that have any item of the rules.

    Parameters
    ----------
    histories : Histories
        The histories that the rules were mined from.
    rules : PageRules
        The rules of the page.
    names : bool
        Whether to include the names of the entities.
    most : int
        The most occurrences of items. Beyond it, a random sample of whole histories is returned.
    seed : int
        The seed of the sample.
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
    """Return the place of each code's name in `wanted`, or -1; the last entry is for no item."""
    place = {name: number for number, name in enumerate(wanted)}
    return np.array([*(place.get(name, -1) for name in names), -1], np.int64)


def _drawn(rows: Numbers, most: int, seed: int) -> tuple[Numbers, int | None]:
    if rows.shape[1] <= most:
        return rows, None
    entities, sizes = np.unique(rows[0], return_counts=True)
    order = np.random.default_rng(seed).permutation(len(entities))
    some = order[np.cumsum(sizes[order]) <= most]
    return rows[:, np.isin(rows[0], entities[some])], len(entities)
