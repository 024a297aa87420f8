"""The work of the executors: they build shards of histories and count on them.

The public functions that return `Work` return a function for `mapInArrow`, from record batches to
record batches. It has a readable name, which Spark's UI shows. A batch holds one shard.
"""

from __future__ import annotations

from collections.abc import Callable, Iterator
from dataclasses import dataclass
from typing import Any

import numpy as np
import pyarrow as pa
import pyarrow.compute as pc

from quarvis import _engine

Batches = Iterator[pa.RecordBatch]
Work = Callable[[Batches], Batches]

#: A shard: where it was built, what it contains, and its bytes. `entities` is an Arrow stream;
#: `whole` is a shard of all histories for runs with patterns for the sides, otherwise empty.
SHARD = pa.schema([
    ("partition", pa.int32()), ("number", pa.int32()), ("histories", pa.int64()),
    ("with_times", pa.int64()), ("rows", pa.int64()), ("entities", pa.binary()),
    ("shard", pa.binary()), ("whole", pa.binary()),
])
SHARD_DDL = (
    "partition int, number int, histories bigint, with_times bigint, rows bigint, "
    "entities binary, shard binary, whole binary"
)

#: Numbers to be summed over the shards. Rows with the same kind and key are added up.
SUM = pa.schema([("kind", pa.int32()), ("key", pa.int32()), ("data", pa.binary())])
SUM_DDL = "kind int, key int, data binary"

#: The kinds of sums: counts by place, and tallies of rules.
COUNTS, TALLIES = 0, 1

Block = tuple[int, int, int]


@dataclass(frozen=True)
class Sides:
    """The items that may be on each side of a rule: one byte per code, 1 if allowed."""

    left: bytes
    right: bytes

    def masks(self) -> tuple[Any, Any]:
        """Return both as boolean arrays."""
        return np.frombuffer(self.left, bool), np.frombuffer(self.right, bool)


def named(work: Work, name: str) -> Work:
    """Set the name of a function that Spark's UI shows."""
    work.__name__ = name
    return work


# Shards.


def build_shards(items: int, shard_bytes: int, sides: Sides | None) -> Work:
    """Return the work that builds shards from rows of entity, time and code, sorted by entity.

    A shard ends with the entity at which it reaches `shard_bytes`, at 12 bytes per row.
    """

    def build(batches: Batches) -> Batches:
        from pyspark import TaskContext

        context = TaskContext.get()
        place = 0 if context is None else context.partitionId()
        most = max(shard_bytes // 12, 1)
        number = 0
        held: list[pa.RecordBatch] = []
        rows = 0
        looked_at = most
        for batch in batches:
            held.append(batch)
            rows += batch.num_rows
            if rows < looked_at:
                continue
            table = pa.Table.from_batches(held)
            ends = np.flatnonzero(_begins(_one_array(table.column(0))))
            # The last history may continue in the next batch.
            start = 0
            while ends[-1] - start >= most:
                end = int(ends[np.searchsorted(ends, start + most)])
                yield _shard(table.slice(start, end - start), place, number, items, sides)
                number += 1
                start = end
            held = table.slice(start).combine_chunks().to_batches()
            rows -= start
            # If a history is larger than a shard, not every batch triggers another search.
            looked_at = most if start else max(most, 2 * rows)
        if rows:
            yield _shard(pa.Table.from_batches(held), place, number, items, sides)

    return named(build, "shards of histories")


def _one_array(column: pa.ChunkedArray) -> pa.Array:
    array = column.combine_chunks()
    return pa.concat_arrays(array.chunks) if isinstance(array, pa.ChunkedArray) else array


def _begins(entities: pa.Array) -> Any:
    """Return, for each row, whether an entity begins there."""
    begins = np.ones(len(entities), bool)
    if len(entities) > 1:
        others = pc.not_equal(entities.slice(1), entities.slice(0, len(entities) - 1))
        begins[1:] = others.to_numpy(zero_copy_only=False)
    return begins


def _shard(
    table: pa.Table, place: int, number: int, items: int, sides: Sides | None
) -> pa.RecordBatch:
    column = _one_array(table.column(0))
    size = len(column)
    begins = _begins(column)
    entities = (np.cumsum(begins) - 1).astype(np.uint32)
    first = np.flatnonzero(begins)
    values = column.take(pa.array(first))
    times = table.column(1).to_numpy().astype(np.uint64)
    if size == 0 or times.max() < 2**32:
        times = times.astype(np.uint32)
    codes = _codes(table.column(2))
    least, most = np.minimum.reduceat(times, first), np.maximum.reduceat(times, first)
    histories = len(first)

    names = _code_names(items)
    shard = _rows(entities, times, codes, histories, names)
    whole = b""
    if sides is not None:
        left, right = sides.masks()
        known = codes != _engine.NO_ITEM
        code = np.where(known, codes, 0)
        on_left, on_right = np.zeros(histories, bool), np.zeros(histories, bool)
        if items:
            on_left[entities[known & left[code]]] = True
            on_right[entities[known & right[code]]] = True
            known &= (left | right)[code]
        whole = _engine.shard_bytes(
            _rows(entities[known], times[known], codes[known], histories, names)
        )
        known &= (on_left & on_right)[entities]
        shard = _rows(entities[known], times[known], codes[known], histories, names)
    return pa.record_batch([
        pa.array([place], pa.int32()), pa.array([number], pa.int32()),
        pa.array([histories], pa.int64()), pa.array([int((least != most).sum())], pa.int64()),
        pa.array([size], pa.int64()), pa.array([_stream(values)], pa.binary()),
        pa.array([_engine.shard_bytes(shard)], pa.binary()), pa.array([whole], pa.binary()),
    ], schema=SHARD)


def _codes(column: pa.ChunkedArray) -> Any:
    missing = column.is_null().to_numpy()
    codes = column.fill_null(0).to_numpy().astype(np.uint32)
    codes[missing] = _engine.NO_ITEM
    return codes


def _code_names(items: int) -> tuple[Any, Any]:
    """Return names of four bytes in the order of the codes, as offsets and bytes."""
    codes = np.arange(items, dtype=">u4").view(np.uint8)
    return np.arange(items + 1, dtype=np.int64) * 4, codes


def _rows(entities: Any, times: Any, codes: Any, histories: int, names: tuple[Any, Any]) -> Any:
    return _engine.Rows(
        np.ascontiguousarray(entities), np.ascontiguousarray(times), np.ascontiguousarray(codes),
        histories, *names,
    ).shard()


def _stream(values: pa.Array) -> bytes:
    sink = pa.BufferOutputStream()
    with pa.ipc.new_stream(sink, pa.schema([("entity", values.type)])) as writer:
        writer.write_batch(pa.record_batch([values], ["entity"]))
    return bytes(sink.getvalue().to_pybytes())


def entities_of(stream: bytes) -> pa.ChunkedArray:
    """Return the entities of a shard, by the number of the history in the shard."""
    return pa.ipc.open_stream(stream).read_all().column(0)


# Counts.


def cells(batches: Batches, *names: str) -> Iterator[tuple[Any, ...]]:
    """Yield the named cells of one row at a time, so that only one shard is in memory."""
    for batch in batches:
        columns = [batch.column(batch.schema.get_field_index(name)) for name in names]
        for row in range(batch.num_rows):
            yield tuple(column[row].as_py() for column in columns)


def sums(parts: Iterator[tuple[int, int, bytes]]) -> Batches:
    for kind, key, data in parts:
        yield pa.record_batch([
            pa.array([kind], pa.int32()), pa.array([key], pa.int32()), pa.array([data], pa.binary())
        ], schema=SUM)


def count_items(name: str) -> Work:
    """Return the work that counts the histories that hold each item."""

    def count(batches: Batches) -> Batches:
        total = None
        for (data,) in cells(batches, "shard"):
            counts = _engine.shard(data).counts()
            total = counts if total is None else total + counts
        if total is not None:
            yield from sums(iter([(COUNTS, 0, total.tobytes())]))

    return named(count, name)


def count_level(
    name: str, for_sets: bytes | None, set_blocks: list[tuple[int, Block]],
    for_rules: bytes | None, rule_blocks: list[tuple[int, Block]],
) -> Work:
    """Return the work that counts blocks of candidates and tallies blocks of rules, by key."""

    def count(batches: Batches) -> Batches:
        sets = None if for_sets is None else _engine.LevelRun.from_bytes(for_sets)
        rules = None if for_rules is None else _engine.LevelRun.from_bytes(for_rules)
        counts = {key: np.zeros(block[2], np.uint32) for key, block in set_blocks}
        tallies = {key: _engine.TallySum() for key, _ in rule_blocks}
        for (data,) in cells(batches, "shard"):
            shard = _engine.shard(data)
            del data
            if sets is not None:
                work = _engine.ShardWork(shard, sets)
                for key, block in set_blocks:
                    work.count_candidates(block, counts[key])
            if rules is not None:
                work = _engine.ShardWork(shard, rules)
                for key, block in rule_blocks:
                    tallies[key].add(work.tally_rules(block))
        yield from sums((COUNTS, key, total.tobytes()) for key, total in counts.items())
        yield from sums((TALLIES, key, added.to_bytes()) for key, added in tallies.items())

    return named(count, name)


def add_up(name: str, least: int | None) -> Work:
    """Return the work that adds up rows sorted by kind and key.

    It drops numbers below `least`, unless that is None. The remaining counts are written as all
    places followed by all counts.
    """

    def finished(kind: int, total: Any) -> bytes:
        if kind == TALLIES:
            data = total.to_bytes()
            return bytes(data if least is None else _engine.frequent_tallies(data, least))
        if least is None:
            return bytes(total.tobytes())
        places = np.flatnonzero(total >= least).astype(np.uint32)
        return bytes(places.tobytes() + total[places].astype(np.uint32).tobytes())

    def add(batches: Batches) -> Batches:
        at: tuple[int, int] | None = None
        total: Any = None
        for kind, key, data in cells(batches, "kind", "key", "data"):
            if at != (kind, key):
                if at is not None:
                    yield from sums(iter([(*at, finished(at[0], total))]))
                at = (kind, key)
                total = _engine.TallySum() if kind == TALLIES else None
            if kind == TALLIES:
                total.add(data)
            else:
                more = np.frombuffer(data, np.uint32)
                total = more.copy() if total is None else np.add(total, more, out=total)
        if at is not None:
            yield from sums(iter([(*at, finished(at[0], total))]))

    return named(add, name)


def frequent(data: bytes) -> tuple[Any, Any]:
    """Return the places and the counts that `add_up` kept."""
    numbers = np.frombuffer(data, np.uint32)
    half = len(numbers) // 2
    return numbers[:half], numbers[half:]
