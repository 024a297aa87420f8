"""Questions about a finished run in a cluster: sides, explanations and tests of the order."""

from __future__ import annotations

from collections.abc import Callable, Iterator
from typing import TYPE_CHECKING, Any

import numpy as np
import pyarrow as pa
import pyarrow.compute as pc
import pyspark.sql.functions as F  # noqa: N812 (as everybody calls it)

from quarvis import _engine
from quarvis._arguments import draws
from quarvis._times import TimeScale
from quarvis.errors import DataError
from quarvis.explanation import REASONS, Explanation, sides_of
from quarvis.spark import _rows, _work
from quarvis.spark._order import Order

if TYPE_CHECKING:
    from quarvis.spark.mined import Collected, Setup

Lists = tuple[Any, Any]


# Rules with certain items on a side.


def with_sides(setup: Setup, found: _engine.Found) -> _engine.Found:
    """Count the sides of rules in all histories, and return the rules that then pass."""
    assert setup.sides is not None
    watch = _engine.Watch()
    columns = found.rules(watch)
    sides = [_keys(columns[name]) for name in ("antecedents", "consequents")]
    distinct = sorted({key for side in sides for key in side})
    counts = np.zeros(len(distinct), np.uint32)
    if distinct:
        offsets = np.cumsum([0, *map(len, distinct)], dtype=np.int64)
        ranks = np.array([rank for key in distinct for rank in key], np.uint32)
        name = "histories of sides of rules"
        for _, _, data in setup.jobs.summed(
            setup.shards.frame, count_sets(name, offsets, ranks), 1, name, None
        ):
            counts = np.frombuffer(data, np.uint32)
    place = {key: number for number, key in enumerate(distinct)}
    by_rule = [counts[[place[key] for key in side]].astype(np.uint32) for side in sides]
    left, right = (mask.astype(np.uint8) for mask in setup.sides.masks())
    return found.with_counted_sides(
        left, right, by_rule[0], by_rule[1], setup.shards.histories, *setup.thresholds, watch
    )


def _keys(lists: Lists) -> list[tuple[int, ...]]:
    offsets, ranks = lists
    numbers = ranks.tolist()
    return [tuple(numbers[offsets[i] : offsets[i + 1]]) for i in range(len(offsets) - 1)]


def count_sets(name: str, offsets: Any, ranks: Any) -> _work.Work:
    """Return the work that counts, among all histories, those that hold each set."""

    def count(batches: _work.Batches) -> _work.Batches:
        total = np.zeros(len(offsets) - 1, np.uint32)
        for (data,) in _work.cells(batches, "whole"):
            total += _engine.count_sets(_engine.shard(data), offsets, ranks)
        yield from _work.sums(iter([(_work.COUNTS, 0, total.tobytes())]))

    return _work.named(count, name)


# Explanations.


def explain(setup: Setup, rule: Any) -> Explanation:
    """Explain a rule, whether it was found or not."""
    if not setup.has_times:
        raise DataError("these histories have no times, so nothing follows anything")
    sides = sides_of(rule)
    shards, names = _shards_with(setup, [item for side in sides for item in side])
    ranks = [np.array([names[item] for item in side], np.uint32) for side in sides]
    name = f"explanation of {len(sides[0])} => {len(sides[1])} items"
    sums = setup.jobs.summed(
        shards, explain_counts(name, ranks, setup.options.window), 1, name, None
    )
    counts = np.frombuffer(sums[0][2], np.uint32) if sums else np.zeros(2 + len(REASONS))
    kind = setup.source.rows.schema["entity"].dataType.simpleString()
    time, length = _time_types(setup.scale)
    table = shards.mapInArrow(
        explain_histories(name, ranks, setup.options.window, setup.scale),
        f"entity {kind}, counts boolean, antecedent_time {time}, consequent_time {time}, "
        f"lag {length}, reason string",
    )
    numbers = [int(count) for count in counts]
    return Explanation(
        *sides, numbers[0], numbers[1], table, dict(zip(REASONS, numbers[2:], strict=True))
    )


def _shards_with(setup: Setup, items: list[str]) -> tuple[Any, dict[str, int]]:
    """Return shards that have the items, and the codes of the items.

    The shards of the run have only items that may be frequent. If that is not enough, new shards
    are built from the rows of these items.
    """
    codes = pc.index_in(pa.array(items, pa.large_string()), setup.names)
    if setup.sides is None and codes.null_count == 0:
        return setup.shards.frame, dict(zip(items, codes.to_pylist(), strict=True))
    source = setup.source
    rows = source.rows.where(F.col("item").isin(items))
    some = _rows.Source(rows, source.time, source.names)
    with setup.jobs.named("items of a rule"):
        there = {row["item"] for row in rows.select("item").distinct().collect()}
    for item in items:
        if item not in there:
            raise DataError(f"no history has the item {item!r}")
    known = sorted(items, key=str.encode)
    table = pa.table({
        "item": pa.array(known, pa.string()), "code": pa.array(range(len(known)), pa.int32())
    })
    dictionary = setup.jobs.session.createDataFrame(table, "item string, code int")
    coded = _rows.coded(some, setup.drops, setup.scale, dictionary)
    shards = coded.repartition("entity").sortWithinPartitions("entity").mapInArrow(
        _work.build_shards(len(known), 2**25, None), _work.SHARD_DDL
    )
    return shards, {item: code for code, item in enumerate(known)}


def _time_types(scale: TimeScale) -> tuple[str, str]:
    assert scale.type is not None
    if scale.nanoseconds is None:
        kinds = {"int8": "tinyint", "int16": "smallint", "int32": "int", "int64": "bigint"}
        return kinds[str(scale.type)], "bigint"
    if pa.types.is_date32(scale.type):
        return "date", "interval day to second"
    return ("timestamp" if scale.type.tz else "timestamp_ntz"), "interval day to second"


def explain_counts(name: str, ranks: list[Any], window: int) -> _work.Work:
    """Count the histories that count, those of the reverse rule, and those of each reason."""

    def count(batches: _work.Batches) -> _work.Batches:
        total = np.zeros(2 + len(REASONS), np.uint32)
        for (data,) in _work.cells(batches, "shard"):
            columns = _engine.explain(_engine.shard(data), ranks[0], ranks[1], window)
            missed = columns["miss"][columns["counts"] == 0]
            total[:2] += np.array([columns["count"], columns["reverse_count"]], np.uint32)
            total[2:] += np.bincount(missed, minlength=len(REASONS)).astype(np.uint32)
        yield from _work.sums(iter([(_work.COUNTS, 0, total.tobytes())]))

    return _work.named(count, name)


def explain_histories(
    name: str, ranks: list[Any], window: int, scale: TimeScale
) -> _work.Work:
    """Return the work that makes a row for each history that holds all items."""

    def tell(batches: _work.Batches) -> Iterator[pa.RecordBatch]:
        for data, entities in _work.cells(batches, "shard", "entities"):
            columns = _engine.explain(_engine.shard(data), ranks[0], ranks[1], window)
            if len(columns["history"]) == 0:
                continue
            counts = columns["counts"].astype(bool)
            lag = scale.decode_lengths(columns["time"] - columns["complete"], ~counts)
            if pa.types.is_duration(lag.type):
                lag = lag.cast(pa.duration("us"))
            yield from pa.table({
                "entity": _work.entities_of(entities).take(pa.array(columns["history"])),
                "counts": counts,
                "antecedent_time": scale.decode(columns["complete"], ~counts),
                "consequent_time": scale.decode(columns["time"], ~counts),
                "lag": lag,
                "reason": pa.array(REASONS).take(
                    pa.array(columns["miss"].astype(np.int8), mask=counts)
                ),
            }).to_batches(max_chunksize=10_000)

    return _work.named(tell, name)


# Tests of the order.


def test_order(
    setup: Setup, run: _engine.LevelRun, collected: Collected, permutations: int, seed: int,
    progress: Callable[[str, int, int], object] | None,
) -> pa.Table:
    """Permute the times and count again in the cluster; return a table with a row per rule."""
    if not setup.has_times:
        raise DataError("these histories have no times, so nothing follows anything")
    permutations, seed = draws(permutations, seed)
    masks = None if setup.sides is None else setup.sides.masks()
    order = Order(setup.jobs, setup.shards, run, masks, permutations + 1, seed, progress)
    columns = collected._rule_columns
    rules = list(zip(_keys(columns["antecedents"]), _keys(columns["consequents"]), strict=True))
    tested = order.tested(rules, columns["count"])
    tested["proposed"] = float(sum(
        (2.0**k - 2 if setup.splits == "all" else k * (k + 1) / 2 - 1) * run.set_count(k)
        for k in range(2, run.size + 1)
    ))
    return collected._order_table(tested)
