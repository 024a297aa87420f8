"""Mines histories: from rows to item sets and rules."""

from __future__ import annotations

import math
import os
import sys
from collections.abc import Sequence
from dataclasses import dataclass
from typing import Any, Literal

from quarvis import _engine
from quarvis._arguments import is_number, threshold, whole_number
from quarvis._progress import Progress, progress_of
from quarvis._sides import Sides
from quarvis._times import Window
from quarvis._warn import warn
from quarvis.errors import BudgetExceeded, DataError
from quarvis.histories import Histories, Missing
from quarvis.mined import Mined, Run

Splits = Literal["all", "runs"]


@dataclass(frozen=True)
class Budget:
    """Limits of a run; None means no limit.

    Parameters
    ----------
    seconds : float, optional
        The wall-clock time of the run, in seconds; greater than 0.
    sets : int, optional
        The number of frequent item sets of all sizes together; at least 1. The run ends as soon as
        it finds one more, even in the middle of a size.
    bytes : int, optional
        The memory in bytes, beside the histories; at least 1. The engine counts its own copy of the
        histories, 28 bytes per item set and 144 bytes per rule. Frames of results do not count.

    Raises
    ------
    DataError
        When a limit is out of range.
    """

    seconds: float | None = None
    sets: int | None = None
    bytes: int | None = None

    def __post_init__(self) -> None:
        seconds = self.seconds
        if seconds is not None and not (is_number(seconds) and 0 < seconds < math.inf):
            raise DataError(f"seconds={seconds!r}: give a number greater than 0, or None")
        for name, bound in (("sets", self.sets), ("bytes", self.bytes)):
            if bound is not None:
                whole_number(name, bound, 1, "give a whole number from 1 on, or None")


def mine(
    data: Any,
    *,
    entity: str | None = None,
    time: str | None = None,
    items: str | Sequence[str] | None = None,
    min_count: int | None = None,
    min_support: float | None = None,
    window: Window = None,
    max_items: int | None = None,
    min_confidence: float = 0.0,
    min_lift: float = 0.0,
    max_conviction: float = math.inf,
    splits: Splits = "all",
    antecedents: Sequence[str] | str | None = None,
    consequents: Sequence[str] | str | None = None,
    rules: bool = True,
    threads: int | None = None,
    progress: Progress = False,
    budget: Budget | None = None,
    missing: Missing = "error",
) -> Mined:
    """Find the frequent item sets and the rules of histories.

    A rule "A => S" counts in a history when one of its transactions has all of S and not all of A,
    every item of A occurred earlier within the window, and no item of S did.

    Parameters
    ----------
    data : Histories or frame
        The histories, or a frame together with `entity`, `time` and `items`.
    entity, time, items, missing
        As for `Histories`; only when `data` is a frame.
    min_count : int, optional
        The least number of histories that hold a frequent item set, and the least count of a rule;
        at least 1.
    min_support : float, optional
        The same as a share of all histories, from 0 to 1. Give `min_count` or `min_support`; if
        both are given, the greater number applies.
    window : str, int, timedelta or None
        The longest time from an antecedent to the consequents, and the time during which the
        consequents must not have occurred before. For dates a length of time such as "30d" or
        "36h", or a timedelta; for integer times a number in their unit. The window includes a time
        of exactly this length. None means the whole past.
    max_items : int, optional
        The greatest number of items of a set, and so of both sides of a rule together; at least 2.
    min_confidence, min_lift, max_conviction : float
        The thresholds of a rule; inclusive.
    splits : {"all", "runs"}
        The rules that are proposed from an item set. "all" proposes every way to split it in two.
        "runs" proposes what the command-line tool does: only antecedents that are contiguous among
        the sorted items.
    antecedents, consequents : str or sequence of str, optional
        Names of items, or patterns such as ``"BAG *"``. Every item of that side of a rule must
        match one of them. Item sets that no such rule can come from are not searched, so
        `Mined.item_sets` has only sets with items for both sides.
    rules : bool
        False finds only the item sets.
    threads : int, optional
        The number of threads; by default one for each core that this process may use. The result
        does not depend on it.
    progress : bool or callable
        True prints the progress to standard error. A callable is called with (step, done, all), at
        most ten times a second.
    budget : Budget, optional
        The limits of the run.

    Returns
    -------
    Mined
        The rules and the item sets.

    Raises
    ------
    DataError
        When an argument does not fit the data.
    BudgetExceeded
        When the run exceeds its budget. The error tells how far the run came, and a minimum count
        to try next.
    KeyboardInterrupt
        Within a tenth of a second after Ctrl-C.

    Warns
    -----
    QuarvisWarning
        When the window is longer than the data.
    """
    histories = _histories_of(data, entity, time, items, missing)
    scale = histories._columns.scale
    options = _engine.Options()
    options.min_count = least_count(min_count, min_support, len(histories))
    options.max_size = _max_size(max_items)
    options.window = scale.window(window)
    options.splits = _splits(splits)
    options.threads = _threads(threads)
    if window is not None and options.window > scale.last:
        warn(
            f"window={window!r} is longer than the data, which span "
            f"{scale.value(0)} to {scale.value(scale.last)}: it has no effect"
        )
    thresholds = (
        threshold("min_confidence", min_confidence), threshold("min_lift", min_lift),
        threshold("max_conviction", max_conviction),
    )
    sides = Sides(antecedents, consequents)
    run = Run(histories, options, window, splits, thresholds, rules)
    budget = checked_budget(budget)
    watch = _watch(progress, budget)
    try:
        return sides.mine(run, watch)
    except _engine.BudgetExceeded as error:
        raise _exceeded(error, budget, options.min_count) from None
    finally:
        if progress is True:
            print(file=sys.stderr)


def least_count(min_count: int | None, min_support: float | None, histories: int) -> int:
    """Return the least count that satisfies both arguments; at least 1.

    Raises
    ------
    DataError
        When both are None, or one is out of range.
    """
    if min_count is None and min_support is None:
        raise DataError(
            "give min_count=... (histories) or min_support=... (their share): the number of item "
            "sets explodes as it falls, so begin high"
        )
    least = 1
    if min_count is not None:
        least = whole_number("min_count", min_count, 1)
    if min_support is not None:
        if not is_number(min_support) or not 0 <= min_support <= 1:
            raise DataError(f"min_support={min_support!r}: give a share from 0 to 1")
        count = math.ceil(min_support * histories)
        # The product is rounded, so its neighbours are also tried.
        count = next(c for c in range(max(count - 1, 0), count + 2)
                     if c >= min_support * histories or c / max(histories, 1) >= min_support)
        least = max(least, count)
    if least > 2**32 - 1:
        raise DataError(f"min_count={least}: there cannot be as many histories")
    return least


def _histories_of(
    data: Any, entity: str | None, time: str | None, items: str | Sequence[str] | None,
    missing: Missing,
) -> Histories:
    if isinstance(data, Histories):
        if entity is not None or time is not None or items is not None:
            raise DataError(
                "entity, time and items name columns of a frame, but data is a Histories"
            )
        return data
    if items is None:
        raise DataError("items=... must name the column of the items")
    return Histories(data, entity=entity, time=time, items=items, missing=missing)


def _max_size(max_items: int | None) -> int:
    if max_items is None:
        return 0
    size = whole_number("max_items", max_items, 2,
                        "give a whole number from 2 on, since a rule has at least two items")
    return min(size, 2**32 - 1)


def _splits(splits: str) -> _engine.Splits:
    if splits not in ("all", "runs"):
        raise DataError(f"splits={splits!r}: give 'all' or 'runs'")
    return _engine.Splits.ALL if splits == "all" else _engine.Splits.RUNS


def _threads(threads: int | None) -> int:
    if threads is None:
        return len(os.sched_getaffinity(0)) if hasattr(os, "sched_getaffinity") else 1
    return whole_number("threads", threads, 1)


def _watch(progress: Progress, budget: Budget) -> _engine.Watch:
    return _engine.Watch(
        progress_of(progress), math.ceil((budget.seconds or 0) * 1e9), int(budget.sets or 0),
        int(budget.bytes or 0),
    )


def _exceeded(error: _engine.BudgetExceeded, budget: Budget, min_count: int) -> BudgetExceeded:
    _, limit, levels, advised = error.args
    bound = {
        _engine.Limit.TIME: f"{budget.seconds or 0:g} seconds",
        _engine.Limit.SETS: f"{budget.sets or 0:,} item sets",
        _engine.Limit.BYTES: f"{budget.bytes or 0:,} bytes",
    }[limit]
    return exceeded(bound, f"min_count={min_count}", levels, advised)


def exceeded(bound: str, at: str, levels: Sequence[int], advised: int) -> BudgetExceeded:
    """Return the error of a run that exceeded a limit of its budget.

    Parameters
    ----------
    bound : str
        The limit, with its unit.
    at : str
        The least count, as the caller gave it.
    levels : sequence of int
        The number of item sets found of each size, from 1 on; empty before the search.
    advised : int
        A minimum count that at most half of these sets reach.
    """
    if levels:
        came = (
            f"{sum(levels):,} item sets of up to {len(levels)} items were found so far, of which "
            f"at most half have a count of {advised}: try min_count={advised}, or max_items=2"
        )
    else:
        came = "the search had not begun: allow more time"
    return BudgetExceeded(
        f"the budget of {bound} is exceeded at {at}; {came}",
        tuple(levels), advised if levels else None,
    )


def checked_budget(budget: Budget | None) -> Budget:
    """Return the budget; for None, one without limits.

    Raises
    ------
    DataError
        When `budget` is neither None nor a `Budget`.
    """
    if budget is None:
        return Budget()
    if not isinstance(budget, Budget):
        raise DataError(
            f"budget={budget!r}: give a quarvis.Budget, such as quarvis.Budget(seconds=10)"
        )
    return budget
