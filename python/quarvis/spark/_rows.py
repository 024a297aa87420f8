"""Turns a Spark frame into rows of entity, time and code, by Spark expressions only."""

from __future__ import annotations

import functools
from collections.abc import Sequence
from dataclasses import dataclass
from typing import Any

import pyarrow as pa
import pyspark.sql.functions as F  # noqa: N812 (as everybody calls it)
from pyspark.sql import types as T  # noqa: N812

from quarvis._times import TimeScale
from quarvis.errors import DataError

#: Flags of the column `lacks`: what a row lacks, or that a name has a fraction.
NO_ENTITY, NO_TIME, NO_ITEM, FRACTION = 1, 2, 4, 8

_MICROSECONDS = (10**6, 10**3)


@dataclass(frozen=True)
class Source:
    """Rows of one item each, with the columns `entity`, `time`, `item`, `lacks` and `first`.

    `lacks` is a sum of the flags, and `first` marks one row for each row of the input.
    """

    rows: Any
    time: TimeScale  #: Its origin, step and last time are not set.
    names: dict[int, str]  #: For each flag of something missing, the column.


@dataclass(frozen=True)
class Facts:
    """The result of one pass over all rows."""

    rows: int
    dropped: dict[str, int]
    scale: TimeScale
    digest: str  #: A digest of all rows, independent of their order; empty when not requested.


def source_of(
    frame: Any, entity: str | None, time: str | None, items: str | Sequence[str]
) -> Source:
    """Return the rows of a frame.

    Raises
    ------
    DataError
        When a column is missing or has an unsuitable type.
    """
    columns = [items] if isinstance(items, str) else list(items)
    if not columns:
        raise DataError("items names no column")
    types = {field.name: field.dataType for field in frame.schema.fields}
    for name in (entity, time, *columns):
        if name is not None and name not in types:
            shown = ", ".join(repr(other) for other in list(types)[:20])
            raise DataError(f"there is no column {name!r}; the columns are {shown}")
    lacks = [F.lit(0)]
    if entity is None:
        who = F.monotonically_increasing_id()
    else:
        who, missing, broken = _value(_column(entity), types[entity], entity)
        lacks += [_flag(missing, NO_ENTITY), _flag(broken, FRACTION)]
    when, scale = (F.lit(0).cast("bigint"), TimeScale(None)) if time is None else _time(
        time, types[time]
    )
    if time is not None:
        lacks.append(_flag(_column(time).isNull(), NO_TIME))
    names = {NO_ENTITY: entity, NO_TIME: time, NO_ITEM: columns[0]}
    what, is_list, item_lacks = (
        _one(columns[0], types[columns[0]]) if isinstance(items, str)
        else _several(columns, types)
    )
    lacks += item_lacks
    table = frame.select(
        who.alias("entity"), when.alias("time"), what.alias("item"),
        functools.reduce(lambda a, b: a.bitwiseOR(b), lacks).alias("lacks"),
    )
    if is_list:
        table = table.select(
            "entity", "time", "lacks", F.posexplode_outer("item").alias("place", "item")
        ).select(
            "entity", "time", "item", "lacks",
            F.coalesce(F.col("place") == 0, F.lit(True)).alias("first"),
        )
    else:
        table = table.withColumn("first", F.lit(True))
    return Source(table, scale, {key: name for key, name in names.items() if name is not None})


def _column(name: str) -> Any:
    return F.col("`" + name.replace("`", "``") + "`")


def _flag(condition: Any, number: int) -> Any:
    return F.when(condition, number).otherwise(0)


def _value(column: Any, kind: T.DataType, name: str) -> tuple[Any, Any, Any]:
    """Return a column as names, whether a value is missing, and whether it has a fraction."""
    if isinstance(kind, T.FloatType | T.DoubleType):
        missing = column.isNull() | F.isnan(column)
        broken = ~missing & (F.floor(column) != column)
        return F.when(~missing, column).cast("bigint"), missing, broken
    if isinstance(kind, T.StringType):
        return column, column.isNull() | (column == ""), F.lit(False)
    if isinstance(kind, T.BinaryType | T.ArrayType | T.MapType | T.StructType):
        raise DataError(
            f"column {name!r} has values as {kind.simpleString()}: convert them to text"
        )
    return column, column.isNull(), F.lit(False)


def _name(column: Any, kind: T.DataType, name: str) -> tuple[Any, Any, Any]:
    """Return the same for names of items, as text."""
    if isinstance(kind, T.TimestampType | T.TimestampNTZType):
        raise DataError(f"column {name!r} has items as {kind.simpleString()}: convert them to text")
    value, missing, broken = _value(column, kind, name)
    return value.cast("string"), missing, broken


def _one(name: str, kind: T.DataType) -> tuple[Any, bool, list[Any]]:
    column = _column(name)
    if not isinstance(kind, T.ArrayType):
        value, missing, broken = _name(column, kind, name)
        return value, False, [_flag(missing, NO_ITEM), _flag(broken, FRACTION)]
    inner = kind.elementType

    def part(place: int) -> Any:
        return lambda element: _name(element, inner, name)[place]

    missing = column.isNull() | F.coalesce(F.exists(column, part(1)), F.lit(False))
    broken = F.coalesce(F.exists(column, part(2)), F.lit(False))
    return (
        F.transform(column, part(0)), True, [_flag(missing, NO_ITEM), _flag(broken, FRACTION)]
    )


def _several(names: Sequence[str], types: dict[str, T.DataType]) -> tuple[Any, bool, list[Any]]:
    cells = []
    lacks = []
    for name in names:
        column, kind = _column(name), types[name]
        if isinstance(kind, T.ArrayType):
            raise DataError(f"column {name!r} has lists: give it alone as items={name!r}")
        if isinstance(kind, T.BooleanType):
            cells.append(F.when(column, F.lit(name)))
            continue
        value, missing, broken = _name(column, kind, name)
        cells.append(F.when(~missing, F.concat(F.lit(f"{name}="), value)))
        lacks.append(_flag(broken, FRACTION))
    return F.array_compact(F.array(*cells)), True, [F.greatest(*lacks, F.lit(0), F.lit(0))]


def _time(name: str, kind: T.DataType) -> tuple[Any, TimeScale]:
    column = _column(name)
    if isinstance(kind, T.IntegralType):
        arrow = {1: pa.int8(), 2: pa.int16(), 4: pa.int32(), 8: pa.int64()}[
            {"tinyint": 1, "smallint": 2, "int": 4, "bigint": 8}[kind.simpleString()]
        ]
        return column.cast("bigint"), TimeScale(arrow)
    if isinstance(kind, T.DateType):
        return F.unix_date(column).cast("bigint"), TimeScale(
            pa.date32(), nanoseconds=86400 * 10**9
        )
    if isinstance(kind, T.TimestampType):
        return F.unix_micros(column), TimeScale(pa.timestamp("us", "UTC"), nanoseconds=1000)
    if isinstance(kind, T.TimestampNTZType):
        quoted = "`" + name.replace("`", "``") + "`"
        elapsed = f"timestampdiff(MICROSECOND, TIMESTAMP_NTZ'1970-01-01 00:00:00', {quoted})"
        return F.expr(elapsed), TimeScale(pa.timestamp("us"), nanoseconds=1000)
    if isinstance(kind, T.FractionalType):
        raise DataError(
            f"column {name!r} has times as {kind.simpleString()}, which may be rounded: convert "
            "them to integers or timestamps"
        )
    if isinstance(kind, T.StringType):
        raise DataError(
            f"column {name!r} has times as text: convert them to timestamps first (to_timestamp)"
        )
    raise DataError(
        f"column {name!r} has times as {kind.simpleString()}: give integers, dates or timestamps"
    )


def by_item(source: Source, drops: bool, digest: bool) -> Any:
    """Return a row for each item, with its number of rows and partial sums for `facts_of`."""
    first = F.col("first").cast("bigint")
    kept = F.col("lacks") == 0 if drops else F.lit(True)
    time = F.when(kept, F.col("time"))
    sums = [
        F.count(F.when(kept, 1)).alias("n"),
        F.sum(F.when(kept, first).otherwise(0)).alias("rows"),
        F.sum(first).alias("all_rows"),
        F.min(time).alias("first_time"), F.max(time).alias("last_time"),
        *(F.sum(F.when(F.col("lacks").bitwiseAND(F.lit(flag)) != 0, first).otherwise(0))
          .alias(f"lacks_{flag}") for flag in (NO_ENTITY, NO_TIME, NO_ITEM, FRACTION)),
    ]
    for step in _MICROSECONDS:
        rest = F.pmod(time, F.lit(step))
        sums += [F.min(rest).alias(f"least_{step}"), F.max(rest).alias(f"most_{step}")]
    if digest:
        code = F.xxhash64("entity", "time", "item")
        sums += [
            F.bit_xor(F.when(kept, code)).alias("mixed"),
            F.sum(F.when(kept, F.pmod(code, F.lit(2**31 - 1)))).alias("summed"),
        ]
    return source.rows.groupBy("item").agg(*sums)


def facts_of(grouped: Any, source: Source, drops: bool, digest: bool) -> Facts:
    """Combine the rows of `by_item` into the facts about all rows.

    Raises
    ------
    DataError
        When rows lack a value and are not to be dropped, or have fractions as names.
    """
    sums = ["rows", "all_rows", *(f"lacks_{flag}" for flag in (NO_ENTITY, NO_TIME, NO_ITEM,
                                                              FRACTION))]
    asked = [F.sum(name).alias(name) for name in sums]
    asked += [F.min("first_time").alias("first_time"), F.max("last_time").alias("last_time")]
    for step in _MICROSECONDS:
        asked += [F.min(f"least_{step}").alias(f"least_{step}"),
                  F.max(f"most_{step}").alias(f"most_{step}")]
    if digest:
        asked += [F.bit_xor("mixed").alias("mixed"), F.sum("summed").alias("summed")]
    known = grouped.agg(*asked).collect()[0].asDict()
    if known[f"lacks_{FRACTION}"]:
        raise DataError(
            f"{known[f'lacks_{FRACTION}']:,} rows have fractions as an entity or an item, which "
            "cannot name anything: convert them to text or to integers"
        )
    dropped = {}
    for flag, role in ((NO_ENTITY, "entity"), (NO_TIME, "time"), (NO_ITEM, "item")):
        count = known[f"lacks_{flag}"] or 0
        if count == 0:
            continue
        name = source.names[flag]
        if not drops:
            raise DataError(
                f"column {name!r} lacks the {role} in {count:,} of {known['all_rows']:,} rows: "
                "fill them in, or leave them out with missing='drop'"
            )
        dropped[name] = count
    text = f"{known['mixed']}/{known['summed']}/{known['rows']}" if digest else ""
    return Facts(known["rows"] or 0, dropped, _scale(source.time, known), text)


def _scale(scale: TimeScale, known: dict[str, Any]) -> TimeScale:
    if scale.type is None or known["first_time"] is None:
        return scale
    origin = known["first_time"]
    last = known["last_time"] - origin
    step = 1
    if scale.nanoseconds is not None and last > 2**32 - 1:
        step = next(
            (s for s in _MICROSECONDS if known[f"least_{s}"] == known[f"most_{s}"]), 1
        )
    return TimeScale(scale.type, origin, step, scale.nanoseconds, last // step)


def coded(source: Source, drops: bool, scale: TimeScale, codes: Any) -> Any:
    """Return the rows to ship: entity, time and code; the code of a rare item is null."""
    rows = source.rows
    if drops:
        rows = rows.where(F.col("lacks") == 0)
    since = F.expr(f"(time - ({scale.origin}L)) div {scale.step}L")
    return rows.select("entity", since.alias("time"), "item").join(
        F.broadcast(codes), "item", "left"
    ).select("entity", "time", "code")
