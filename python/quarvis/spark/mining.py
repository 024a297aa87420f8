"""Mines in a cluster: from a Spark frame to item sets and rules."""

from __future__ import annotations

import math
import time as clock
from collections.abc import Callable, Sequence
from dataclasses import dataclass
from typing import Any

import numpy as np
import pyarrow as pa
import pyspark.sql.functions as F  # noqa: N812 (as everybody calls it)

from quarvis import _engine
from quarvis._arguments import threshold
from quarvis._patterns import matching
from quarvis._progress import Progress, progress_of
from quarvis._times import TimeScale, Window
from quarvis._warn import warn
from quarvis.errors import DataError
from quarvis.histories import Missing
from quarvis.mining import (
    Budget,
    Splits,
    _max_size,
    _splits,
    checked_budget,
    exceeded,
    least_count,
)
from quarvis.spark import _rows, _work
from quarvis.spark._checkpoint import Checkpoint
from quarvis.spark._jobs import Jobs, OutOfTime, log
from quarvis.spark._levels import Limits, count_levels, sets_found
from quarvis.spark._shards import Shards
from quarvis.spark.mined import Mined, Setup

#: The rows of a partition of shards, and the most partitions unless the session asks for more.
_ROWS_PER_PARTITION, _MOST_PARTITIONS = 500_000, 10_000

#: The size of a shard: large compared to its dictionary, small compared to an executor's memory.
_SHARD_BYTES, _SHARD_BYTES_PER_ITEM = 8 * 2**20, 64

#: The most bytes of the sums that one task adds up; at most an eighth of a block.
_KEY_BYTES = 2**20


@dataclass(frozen=True)
class _Dictionary:
    """The items that may be frequent, by code. Codes are in the byte order of the names."""

    names: pa.Array
    codes: Any  #: The same as a Spark frame with the columns `item` and `code`.


def mine(
    data: Any,
    *,
    entity: str | None = None,
    time: str | None = None,
    items: str | Sequence[str],
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
    progress: Progress = False,
    budget: Budget | None = None,
    missing: Missing = "error",
    checkpoint: str | None = None,
    partitions: int | None = None,
    tasks: int | None = None,
    shard_bytes: int | None = None,
    block_bytes: int = 64 * 2**20,
    driver_bytes: int = 2**30,
) -> Mined:
    """Find the frequent item sets and the rules of a Spark frame, in its cluster.

    The results are the same as those of `quarvis.mine` for the same rows, whatever their order and
    partitions.

    Parameters
    ----------
    data : pyspark.sql.DataFrame
        A frame of a classic session or of Spark Connect.
    entity, time, items, missing
        As for `quarvis.Histories`.
    min_count, min_support, window, max_items, min_confidence, min_lift, max_conviction, splits,
    antecedents, consequents, rules, progress
        As for `quarvis.mine`.
    budget : Budget, optional
        `seconds` and `sets` are as for `quarvis.mine`. `bytes` limits the sets and rules at the
        driver, like `driver_bytes`; the smaller limit applies.
    checkpoint : str, optional
        A folder that the cluster can write. A run that ended early resumes after its last complete
        level when it is started again with the same data and settings.
    partitions : int, optional
        The number of partitions of the histories. By default one for each 500,000 rows, but at most
        10,000 or ``spark.sql.shuffle.partitions``, whichever is greater.
    tasks : int, optional
        The number of tasks that count a level. By default the number of cores or, in Spark Connect,
        which does not report cores, one for each partition. Fewer tasks shuffle less.
    shard_bytes : int, optional
        The approximate size of a shard of histories, in bytes. By default 8 MiB or 64 bytes for
        each item that may be frequent, whichever is greater. A history is always in one shard,
        however long it is.
    block_bytes : int
        The most bytes of sums that a task holds at a time. A level whose candidates need more takes
        several jobs.
    driver_bytes : int
        The most bytes of sets and rules at the driver: 20 bytes per set, 16 per rule that is met
        often enough and 24 more if it also counts often enough, plus those of the level that is
        being counted.

    Returns
    -------
    Mined
        Its `rules` and `item_sets` are Spark frames.

    Raises
    ------
    DataError
        When an argument does not fit the data, or when the checkpoint belongs to other data or
        settings.
    BudgetExceeded
        When the run exceeds a limit of the budget or `driver_bytes`.
    """
    began = clock.monotonic()
    session = data.sparkSession
    if missing not in ("error", "drop"):
        raise DataError(f"missing={missing!r}: give 'error' or 'drop'")
    least_count(min_count, min_support, 0)
    budget = checked_budget(budget)
    thresholds = (
        threshold("min_confidence", min_confidence), threshold("min_lift", min_lift),
        threshold("max_conviction", max_conviction),
    )
    jobs = Jobs(session, budget.seconds, tasks, progress_of(progress))
    options = _engine.Options()
    options.max_size = _max_size(max_items)
    options.splits = _splits(splits)
    options.set_thresholds(0.0, *thresholds)
    source = _rows.source_of(data, entity, time, items)
    drops = missing == "drop"
    grouped = _rows.by_item(source, drops, checkpoint is not None).persist()
    shards = run = None
    try:
        with jobs.interruptible():
            with jobs.named("items and times"):
                facts = _rows.facts_of(grouped, source, drops, checkpoint is not None)
                options.window = facts.scale.window(window)
                _tell_of_window(window, options.window, facts.scale)
                least = _least(jobs, source, drops, min_count, min_support)
                options.min_count = least
                dictionary = _dictionary_of(session, grouped, least)
            log.info(
                "%s rows, %s items that may be frequent; %.1f s", f"{facts.rows:,}",
                f"{len(dictionary.names):,}", clock.monotonic() - began,
            )
            sides = _sides_of(grouped, dictionary, antecedents, consequents, jobs)
            rows = _rows.coded(source, drops, facts.scale, dictionary.codes)
            shards = Shards(
                jobs, rows, len(dictionary.names), entity is not None,
                partitions or _partitions(session, facts.rows),
                shard_bytes or max(_SHARD_BYTES, _SHARD_BYTES_PER_ITEM * len(dictionary.names)),
                sides,
            )
            _tell_of_single_times(shards, facts.scale)
            setup = Setup(
                jobs, source, drops, shards, dictionary.names, facts.scale, window, splits, options,
                thresholds, sides, rules,
            )
            run = _engine.LevelRun(shards.counts, _searched(options, sides))
            limits = Limits(
                block_bytes, min(_KEY_BYTES, max(block_bytes // 8, 1)),
                min(driver_bytes, budget.bytes or driver_bytes), budget.sets,
            )
            run, done = _begun(jobs, run, checkpoint, {
                "data": facts.digest, "entity": entity, "time": time, "items": items,
                "histories": shards.histories, "min_count": least, "window": options.window,
                "max_items": max_items, "splits": splits, "min_confidence": min_confidence,
                "min_lift": min_lift, "max_conviction": max_conviction, "antecedents": antecedents,
                "consequents": consequents, "rules": rules, "missing": missing,
            })
            count_levels(jobs, shards.frame, run, rules and time is not None, limits, done)
            log.info(
                "done: %s sets, %s rules; %d jobs, %.1f s",
                f"{sets_found(run):,}", f"{run.rule_count:,}",
                jobs.count, clock.monotonic() - began,
            )
            return Mined(setup, run)
    except OutOfTime:
        if shards is not None:
            shards.unpersist()
        given = f"min_support={min_support}" if min_count is None else f"min_count={min_count}"
        raise exceeded(
            f"{budget.seconds:g} seconds", given, *(([], 0) if run is None else run.reach())
        ) from None
    except BaseException:
        if shards is not None:
            shards.unpersist()
        raise
    finally:
        grouped.unpersist()


def _begun(
    jobs: Jobs, run: _engine.LevelRun, folder: str | None, settings: dict[str, Any]
) -> tuple[_engine.LevelRun, Callable[[_engine.LevelRun], object]]:
    """Return the run, or the one saved in the folder, and the function to call after a level."""
    if folder is None:
        return run, lambda run: None
    checkpoint = Checkpoint(jobs.session, folder, settings)
    kept = checkpoint.last()
    if kept is not None:
        log.info("goes on from sets of %d items in %s", kept.size, folder)
    return kept or run, checkpoint.keep


def _searched(options: _engine.Options, sides: _work.Sides | None) -> _engine.Options:
    """Return the options of the search; with sides, the thresholds are applied only afterwards."""
    if sides is not None:
        options.set_thresholds(0.0, 0.0, 0.0, math.inf)
    return options


def _least(
    jobs: Jobs, source: _rows.Source, drops: bool, min_count: int | None,
    min_support: float | None,
) -> int:
    if min_support is None:
        return least_count(min_count, None, 0)
    rows = source.rows.where(F.col("lacks") == 0) if drops else source.rows
    return least_count(min_count, min_support, rows.select("entity").distinct().count())


def _dictionary_of(session: Any, grouped: Any, least: int) -> _Dictionary:
    """Number the items that have at least `least` rows; any other item is in fewer histories."""
    frequent = grouped.where(F.col("item").isNotNull() & (F.col("n") >= F.lit(least)))
    texts = frequent.select("item").toArrow().column(0).to_pylist()
    names = sorted(texts, key=str.encode)
    table = pa.table({
        "item": pa.array(names, pa.string()), "code": pa.array(range(len(names)), pa.int32())
    })
    return _Dictionary(
        pa.array(names, pa.large_string()),
        session.createDataFrame(table, "item string, code int"),
    )


def _sides_of(
    grouped: Any, dictionary: _Dictionary, antecedents: Sequence[str] | str | None,
    consequents: Sequence[str] | str | None, jobs: Jobs,
) -> _work.Sides | None:
    if antecedents is None and consequents is None:
        return None
    # A pattern may match only rare items. So it is matched against all names, not just frequent
    # ones, before an error says that it matches no item.
    with jobs.named("names of items"):
        table = grouped.where(F.col("item").isNotNull()).select("item").toArrow()
    names = table.column(0).to_pylist()
    masks = []
    for patterns, side in ((antecedents, "antecedents"), (consequents, "consequents")):
        allowed = {name for name, is_matched in zip(names, matching(names, patterns, side),
                                                    strict=True) if is_matched}
        masks.append(np.array([name in allowed for name in dictionary.names.to_pylist()], bool))
    return _work.Sides(masks[0].tobytes(), masks[1].tobytes())


def _partitions(session: Any, rows: int) -> int:
    most = max(_MOST_PARTITIONS, int(session.conf.get("spark.sql.shuffle.partitions")))
    return max(1, min(most, -(-rows // _ROWS_PER_PARTITION)))


def _tell_of_window(window: Window, length: int, scale: TimeScale) -> None:
    if window is not None and length > scale.last:
        warn(
            f"window={window!r} is longer than the data, which span "
            f"{scale.value(0)} to {scale.value(scale.last)}: it has no effect"
        )


def _tell_of_single_times(shards: Shards, scale: TimeScale) -> None:
    once = shards.histories - shards.with_times
    if scale.type is not None and shards.histories > 0 and once * 3 >= shards.histories:
        warn(
            f"{once:,} of {shards.histories:,} entities have only one time, so nothing can follow "
            "anything there: is the entity the right column?"
        )

