"""Histories: who had which items when."""

from __future__ import annotations

from collections.abc import Iterable, Sequence
from dataclasses import dataclass
from functools import cached_property
from typing import Any, Literal

import numpy as np
import pyarrow as pa

from quarvis import _engine
from quarvis._columns import CodeArray, Codes, decoded, encode, whole
from quarvis._frames import to_native, to_table
from quarvis._items import engine_names, missing_items, one_column, several_columns
from quarvis._report import Report, looks_wrong
from quarvis._times import TimeScale, missing_or_nan, read_times
from quarvis._warn import warn
from quarvis.errors import DataError

Missing = Literal["error", "drop"]


@dataclass(frozen=True)
class Columns:
    """Rows of one item each, as numbers, and what the numbers mean."""

    entities: Codes
    times: Any  #: An array of numpy.uint32 or numpy.uint64.
    scale: TimeScale
    items: CodeArray
    item_names: pa.Array  #: Valid UTF-8 for display; `engine_names` has the original bytes.
    engine_names: tuple[Any, Any]
    rows: int  #: The number of input rows, without those that were dropped.
    dropped: dict[str, int]
    kind: str  #: The library whose frames results are returned as.


class Histories:
    """The histories of a table: the items of each entity at each point in time.

    Rows of the same entity and time form one transaction. Rows may come in any order and may
    repeat.

    Parameters
    ----------
    data : frame
        A frame of pandas, Polars, PyArrow, DuckDB or Modin, or any object that narwhals supports or
        that has the Arrow PyCapsule interface.
    entity : str or None
        The column of the entities: text, integers or dates. None if each row is a history of its
        own, as in a table of baskets.
    time : str or None
        The column of the times: dates, timestamps with or without a time zone, or integers in any
        unit. None if there are no times; rules then have no order (plain baskets).
    items : str or sequence of str
        One column with an item or a list of items in each row; or several columns, in which a cell
        is the item "column=value". In a column of booleans, True is the item "column". With several
        columns, a cell without a value gives no item.
    missing : {"error", "drop"}
        What to do with rows that lack an entity, a time or an item. Null, NaN and empty text count
        as missing. "error" raises `DataError`; "drop" leaves the rows out and counts them in the
        report.

    Raises
    ------
    DataError
        When the data cannot be mined as they are. The message says how to fix it.
    TypeError
        When `data` is not a frame.

    Warns
    -----
    QuarvisWarning
        When a third of the entities or more have only one time, or when names differ only in case
        or blanks.

    Notes
    -----
    Nothing is rounded: times given as floating-point numbers or as text are refused. Timestamps
    with a time zone are points in time, so a day is always 24 hours, even when clocks change.
    Timestamps without a zone are used as they are. The histories keep 12 or 16 bytes per row and
    the names, but not the frame.
    """

    def __init__(
        self,
        data: Any,
        *,
        entity: str | None,
        time: str | None,
        items: str | Sequence[str],
        missing: Missing = "error",
    ) -> None:
        if missing not in ("error", "drop"):
            raise DataError(f"missing={missing!r}: give 'error' or 'drop'")
        for role, name in (("entity", entity), ("time", time)):
            if name is not None and not isinstance(name, str):
                raise DataError(f"{role}={name!r}: give the name of one column, or None")
        self._columns = _read_columns(data, entity, time, items, missing)
        self._index: tuple[int, _engine.Index] | None = None
        self._left_out = 0
        for remark in self._remarks:
            warn(remark)

    @classmethod
    def _of(cls, columns: Columns) -> Histories:
        histories = cls.__new__(cls)
        histories._columns = columns
        histories._index = None
        histories._left_out = 0
        for remark in histories._remarks:
            warn(remark)
        return histories

    @cached_property
    def _rows(self) -> _engine.Rows:
        columns = self._columns
        return _engine.Rows(
            columns.entities.codes, columns.times, columns.items, len(columns.entities.values),
            *columns.engine_names,
        )

    @cached_property
    def _remarks(self) -> list[str]:
        return looks_wrong(self._columns)

    def _index_of(self, min_count: int, watch: _engine.Watch) -> _engine.Index:
        known = self._index
        if known is None or known[0] != min_count:
            self._index = known = None  # frees the old index before the new one is built
            self._index = known = (min_count, self._rows.index(min_count, watch))
        return known[1]

    def __len__(self) -> int:
        """Return the number of histories."""
        return len(self._columns.entities.values)

    def __repr__(self) -> str:
        return f"<quarvis.Histories: {len(self):,} of {self._columns.rows:,} rows>"

    def _repr_html_(self) -> str:
        return self.report()._repr_html_()

    def report(self) -> Report:
        """Report what was read, what was dropped and what looks wrong.

        Returns
        -------
        Report
            Readable when printed; the numbers are its attributes.
        """
        columns = self._columns
        scale = columns.scale
        has_times = scale.type is not None and len(columns.times) > 0
        return Report(
            rows=columns.rows,
            entities=len(self),
            transactions=self._rows.index(
                max(len(self), 1), _engine.Watch()
            ).transaction_count,
            items=len(columns.item_names),
            first=scale.value(0) if has_times else None,
            last=scale.value(scale.last) if has_times else None,
            unit=scale.unit,
            dropped=dict(columns.dropped),
            left_out=self._left_out,
            remarks=tuple(self._remarks),
        )

    def _frame(self, table: pa.Table) -> Any:
        return to_native(table, self._columns.kind)


def from_baskets(baskets: Iterable[Iterable[str]]) -> Histories:
    """Make one history from each basket, without times.

    Parameters
    ----------
    baskets : iterable of iterables of str
        The items of each basket. An item may occur twice, and a basket may be empty.

    Returns
    -------
    Histories
        Its frames of results are PyArrow tables.
    """
    lists = pa.array((list(basket) for basket in baskets), pa.large_list(pa.large_string()))
    return Histories(pa.table({"items": lists}), entity=None, time=None, items="items")


def _read_columns(
    data: Any, entity: str | None, time: str | None, items: str | Sequence[str], missing: Missing
) -> Columns:
    item_columns = [items] if isinstance(items, str) else list(items)
    if not item_columns:
        raise DataError("items names no column")
    table, kind = to_table(data, list(dict.fromkeys(
        name for name in (entity, time, *item_columns) if name is not None
    )))
    one = item_columns[0] if isinstance(items, str) else None
    table, dropped = _without_missing(table, entity, time, one, missing)

    rows = several_columns(table, item_columns) if one is None else one_column(
        table.column(one), one
    )
    if entity is None:
        numbers = np.arange(table.num_rows, dtype=np.uint32)
        entities = Codes(numbers, pa.array(np.arange(table.num_rows, dtype=np.int64)))
    else:
        entities = encode(whole(decoded(table.column(entity)), entity))
    if time is None:
        times: Any = np.zeros(table.num_rows, np.uint32)
        scale = TimeScale(None)
    else:
        times, scale = read_times(decoded(table.column(time)), time)
    if rows.parents is not None:
        entities = Codes(entities.codes[rows.parents], entities.values)
        times = times[rows.parents]
    columns = Columns(
        entities, times, scale, rows.codes, rows.names, engine_names(rows.names), table.num_rows,
        dropped, kind,
    )
    # The allocator still holds the memory of intermediate columns, which may be several times as
    # much as the result needs.
    pa.default_memory_pool().release_unused()
    return columns


def _without_missing(
    table: pa.Table, entity: str | None, time: str | None, items: str | None, missing: Missing
) -> tuple[pa.Table, dict[str, int]]:
    """Return the complete rows, and for each column the number of rows that lack its value."""
    lacking = np.zeros(table.num_rows, bool)
    dropped: dict[str, int] = {}
    for role, name in (("entity", entity), ("time", time), ("item", items)):
        if name is None:
            continue
        column = table.column(name)
        tell = missing_items if role == "item" else _missing_values
        mask = tell(column).to_numpy(zero_copy_only=False)
        count = int(mask.sum())
        if count == 0:
            continue
        if missing == "error":
            first = ", ".join(str(row) for row in np.flatnonzero(mask)[:3])
            raise DataError(
                f"column {name!r} lacks the {role} in {count:,} of {table.num_rows:,} rows, the "
                f"first ones are {first} (counted from 0): fill them in, or leave them out with "
                "missing='drop'"
            )
        dropped[name] = count
        lacking |= mask
    if not dropped:
        return table, dropped
    return table.filter(pa.array(~lacking)), dropped


def _missing_values(column: pa.ChunkedArray) -> pa.ChunkedArray:
    return missing_or_nan(decoded(column))


__all__ = ["Columns", "Histories", "Missing", "from_baskets"]
