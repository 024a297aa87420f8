"""The run: from histories to item sets and rules."""

from __future__ import annotations

import math
import os
import sys
import time as clock
from collections.abc import Sequence
from dataclasses import dataclass
from typing import Any, Literal

from quarvis import _engine
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
    """What a run may take; None is no bound.

    Parameters
    ----------
    seconds : float, optional
        Time of the run, on the wall clock.
    sets : int, optional
        Item sets of all sizes together; looked at as soon as all sets of a size are known.
    bytes : int, optional
        Growth of the memory of the process; looked at fifty times a second.
    """

    seconds: float | None = None
    sets: int | None = None
    bytes: int | None = None


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
        The histories, or a frame and the names of its columns.
    entity, time, items, missing
        As for `Histories`; only when `data` is a frame.
    min_count : int, optional
        The least number of histories that hold an item set, and that a rule counts in; at least 1.
    min_support : float, optional
        The same as a share of all histories, from 0 to 1. One of both must be given; of both, the
        greater number holds.
    window : str, int, timedelta or None
        How long before the consequents the antecedents may lie, and for how long the consequents
        must not have occurred: for dates a length of time such as "30d" or "36h" or a timedelta,
        for integers a number in their unit. A length of exactly the window is within it. None is
        the whole past.
    max_items : int, optional
        The greatest number of items of a set, and so of both sides of a rule together; at least 2.
    min_confidence, min_lift, max_conviction : float
        What a rule must have; inclusive.
    splits : {"all", "runs"}
        Which rules are proposed of a set: every way to cut it in two, or what the command-line tool
        proposes, whose antecedents are runs of neighbours among the sorted items.
    antecedents, consequents : str or sequence of str, optional
        Names of items, or patterns of them (``"BAG *"``): every item of that side of a rule
        must match one. What cannot be part of such a rule is not searched; the item sets are then
        those alone that have an item for either side.
    rules : bool
        False finds the item sets alone.
    threads : int, optional
        Threads that share the run; by default one for each core that this process may use. The
        result does not depend on it.
    progress : bool or callable
        True prints to standard error; a callable gets (step, done, all) ten times a second at most.
    budget : Budget, optional
        What the run may take.

    Returns
    -------
    Mined
        The rules, the item sets and what can be asked of them.

    Raises
    ------
    DataError
        For arguments that do not fit the data.
    BudgetExceeded
        When the run reached a bound of the budget; it tells how far the run came.
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
    thresholds = (min_confidence, min_lift, max_conviction)
    sides = Sides(antecedents, consequents)
    run = Run(histories, options, window, splits, thresholds, rules)
    watch = _watch(progress, budget)
    try:
        return sides.mine(run, watch)
    except _engine.OutOfBudget:
        assert budget is not None
        raise _exceeded(run, watch, budget) from None
    finally:
        if progress is True:
            print(file=sys.stderr)


def least_count(min_count: int | None, min_support: float | None, histories: int) -> int:
    """Give the least count that both arguments ask for."""
    if min_count is None and min_support is None:
        raise DataError(
            "give min_count=... (histories) or min_support=... (their share): the number of item "
            "sets explodes as it falls, so begin high"
        )
    least = 1
    if min_count is not None:
        if isinstance(min_count, bool) or min_count != int(min_count) or min_count < 1:
            raise DataError(f"min_count={min_count!r}: give a whole number from 1 on")
        least = int(min_count)
    if min_support is not None:
        if not 0 <= min_support <= 1:
            raise DataError(f"min_support={min_support!r}: give a share from 0 to 1")
        count = math.ceil(min_support * histories)
        # The product is rounded, so its neighbours are looked at, too.
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
            raise DataError("entity, time and items name columns of a frame; data has histories")
        return data
    if items is None:
        raise DataError("items=... must name the column of the items")
    return Histories(data, entity=entity, time=time, items=items, missing=missing)


def _max_size(max_items: int | None) -> int:
    if max_items is None:
        return 0
    if max_items < 2:
        raise DataError(f"max_items={max_items!r}: a rule has two items at least")
    return int(max_items)


def _splits(splits: str) -> _engine.Splits:
    if splits not in ("all", "runs"):
        raise DataError(f"splits={splits!r}: give 'all' or 'runs'")
    return _engine.Splits.ALL if splits == "all" else _engine.Splits.RUNS


def _threads(threads: int | None) -> int:
    if threads is None:
        return len(os.sched_getaffinity(0)) if hasattr(os, "sched_getaffinity") else 1
    if threads < 1:
        raise DataError(f"threads={threads!r}: a run needs one at least")
    return int(threads)


def _watch(progress: Progress, budget: Budget | None) -> _engine.Watch:
    budget = budget or Budget()
    return _engine.Watch(
        progress_of(progress), budget.seconds or 0.0, budget.sets or 0, budget.bytes or 0
    )


def _exceeded(run: Run, watch: _engine.Watch, budget: Budget) -> BudgetExceeded:
    bound = {
        _engine.Bound.SECONDS: f"{budget.seconds:g} seconds" if budget.seconds else "",
        _engine.Bound.SETS: f"{budget.sets:,} item sets" if budget.sets else "",
        _engine.Bound.BYTES: f"{budget.bytes:,} bytes" if budget.bytes else "",
    }[watch.bound]
    came = (
        f"all {watch.sets:,} item sets of up to {watch.size} items were found"
        if watch.size else "no item sets were found yet"
    )
    count = _count_to_try(run, budget)
    remedy = (
        f"the item sets for min_count={count} were found at once: try that"
        if count is not None else "try a much greater min_count, or max_items=2"
    )
    return BudgetExceeded(
        f"the run reached its budget of {bound} at min_count={run.options.min_count}; {came}; "
        f"{remedy}",
        watch.size, watch.sets, count,
    )


def _count_to_try(run: Run, budget: Budget) -> int | None:
    """Search at greater counts, briefly, for one at which the search ends."""
    until = clock.monotonic() + min(1.0, (budget.seconds or 2.0) / 2)
    options = _engine.Options()
    options.max_size = run.options.max_size
    options.threads = run.options.threads
    count = run.options.min_count
    while clock.monotonic() < until and count <= len(run.histories):
        count *= 2
        options.min_count = count
        left = max(until - clock.monotonic(), 0.01)
        watch = _engine.Watch(None, left, budget.sets or 0, budget.bytes or 0)
        try:
            _engine.mine_item_sets(run.histories._rows.index(count, watch), options, watch)
        except _engine.OutOfBudget:
            continue
        return count
    return None
