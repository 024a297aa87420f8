"""Runs that find only rules with certain items on a side."""

from __future__ import annotations

from collections.abc import Sequence
from typing import Any

import numpy as np

from quarvis import _engine
from quarvis._patterns import Mask, matching
from quarvis.mined import Mined, Run


class Sides:
    """The patterns that both sides of a rule must match; None for a side allows every item."""

    def __init__(
        self, antecedents: Sequence[str] | str | None, consequents: Sequence[str] | str | None
    ) -> None:
        self.antecedents = antecedents
        self.consequents = consequents

    def mine(self, run: Run, watch: _engine.Watch) -> Mined:
        """Mine the histories of the run for the rules whose sides match."""
        if self.antecedents is None and self.consequents is None:
            index = run.histories._index_of(run.options.min_count, watch)
            return Mined(run, _find(run, index, run.thresholds, watch))
        return self._mine_some(run, watch)

    def _mine_some(self, run: Run, watch: _engine.Watch) -> Mined:
        """Search only matching items, only in histories with a matching item for each side.

        A set with items for both sides cannot occur in any other history, so its count is exact.
        The counts of the sides are then taken from all histories, and the thresholds are applied
        last.
        """
        columns = run.histories._columns
        names = columns.item_names.to_pylist()
        left = matching(names, self.antecedents, "antecedents")
        right = matching(names, self.consequents, "consequents")

        known = columns.items != _engine.NO_ITEM
        code = np.where(known, columns.items, 0)
        on_left = np.zeros(len(run.histories), bool)
        on_right = np.zeros(len(run.histories), bool)
        if len(names):
            on_left[columns.entities.codes[known & left[code]]] = True
            on_right[columns.entities.codes[known & right[code]]] = True
            keep = known & (left | right)[code]
        else:
            keep = known
        all_rows = _rows_of(columns, keep)
        some_rows = _rows_of(columns, keep & (on_left & on_right)[columns.entities.codes])

        count = run.options.min_count
        found = _find(run, some_rows.index(count, watch), (0.0, 0.0, np.inf), watch)
        rank_names = found.index.names()
        by_name = {bytes_: place for place, bytes_ in enumerate(_texts(*columns.engine_names))}
        codes = np.array([by_name[text] for text in _texts(*rank_names)], np.int64)
        marks = [mask[codes].astype(np.uint8) for mask in (left, right)]
        index = all_rows.index(count, watch)
        return Mined(run, found.with_sides(index, marks[0], marks[1], *run.thresholds, watch))


def _find(
    run: Run, index: _engine.Index, thresholds: tuple[float, float, float], watch: _engine.Watch
) -> _engine.Found:
    """Mine the index; without times, derive the rules from the item sets alone."""
    confidence, lift, conviction = thresholds
    if not run.wants_rules:
        return _engine.mine_item_sets(index, run.options, watch)
    if run.histories._columns.scale.type is None:
        found = _engine.mine_item_sets(index, run.options, watch)
        return found.with_basket_rules(
            len(run.histories), run.options.splits, confidence, lift, conviction, watch
        )
    run.options.set_thresholds(0.0, confidence, lift, conviction)
    return _engine.mine(index, run.options, watch)


def _rows_of(columns: Any, keep: Mask) -> _engine.Rows:
    return _engine.Rows(
        columns.entities.codes[keep], columns.times[keep], columns.items[keep],
        len(columns.entities.values), *columns.engine_names,
    )


def _texts(offsets: Any, text: Any) -> list[bytes]:
    raw = text.tobytes()
    return [raw[offsets[i] : offsets[i + 1]] for i in range(len(offsets) - 1)]
