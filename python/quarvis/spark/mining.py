"""The run in a cluster: from a frame of Spark to item sets and rules."""

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

#: Rows of a partition of shards, and the most partitions where the session does not ask for more.
_ROWS_PER_PARTITION, _MOST_PARTITIONS = 500_000, 10_000

#: Of a shard: enough for the dictionary to be a small part, and little beside an executor.
_SHARD_BYTES, _SHARD_BYTES_PER_ITEM = 8 * 2**20, 64

#: Sums that are added up in one place; a block has eight of them at least.
_KEY_BYTES = 2**20


@dataclass(frozen=True)
class _Dictionary:
    """The items that may be frequent, by code, in the byte order of their names."""

    names: pa.Array
    codes: Any  #: The same as a frame of Spark: item, code.


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
    """Find the frequent item sets and the rules of a frame of Spark, in its cluster.

    What is found is what `quarvis.mine` finds in the same rows, whatever their order and however
    they are partitioned. It takes the same arguments but `threads`, and these besides.

    Parameters
    ----------
    data : pyspark.sql.DataFrame
        Of a classic session or of Spark Connect.
    entity, time, items, missing
        As for `quarvis.Histories`.
    min_count, min_support, window, max_items, min_confidence, min_lift, max_conviction, splits,
    antecedents, consequents, rules, progress
        As for `quarvis.mine`.
    budget : Budget, optional
        `seconds` and `sets` as for `quarvis.mine`; `bytes` bounds the sets and rules at the driver,
        as `driver_bytes` does, and the lesser one holds.
    checkpoint : str, optional
        A folder that the cluster can write. A run that died goes on from its last whole level when
        it is started again with the same data and settings.
    partitions : int, optional
        Of the histories; by default one for each 500,000 rows, but at most 10,000, or
        ``spark.sql.shuffle.partitions`` where that is more.
    tasks : int, optional
        In how many tasks a level is counted. By default there are as many as cores, or one for each
        partition by Spark Connect, which does not tell of cores. Fewer shuffle less.
    shard_bytes : int, optional
        What a shard of histories takes, about; by default 8 MiB, or 64 bytes for each item that may
        be frequent where that is more. A history is in one shard, however long it is.
    block_bytes : int
        The sums that a task holds at a time; the candidates of a level take more jobs when they
        need more.
    driver_bytes : int
        What the sets and rules may take at the driver, 20 bytes a set and 32 a rule, and those of
        the level that is counted.

    Returns
    -------
    Mined
        `rules` and `item_sets` as frames of Spark.

    Raises
    ------
    DataError
        For arguments that do not fit the data, and a checkpoint of other ones.
    BudgetExceeded
        When the run reached a bound of the budget or `driver_bytes`.
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
    """Give the run, or the one that is kept in the folder, and what is to be done after a level."""
    if folder is None:
        return run, lambda run: None
    checkpoint = Checkpoint(jobs.session, folder, settings)
    kept = checkpoint.last()
    if kept is not None:
        log.info("goes on from sets of %d items in %s", kept.size, folder)
    return kept or run, checkpoint.keep


def _searched(options: _engine.Options, sides: _work.Sides | None) -> _engine.Options:
    """Give the options of the search: with sides, the thresholds hold only afterwards."""
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
    """Number the items of as many rows as an item needs histories."""
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
    # A pattern may match items that are rare, and is none of no item then.
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
            f"{once:,} of {shards.histories:,} entities have one time only, so nothing can follow "
            "anything there: is the entity the right column?"
        )

