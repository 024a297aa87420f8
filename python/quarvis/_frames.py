"""Converts frames of any library to Arrow tables, and tables back to frames of that library."""

from __future__ import annotations

from collections.abc import Sequence
from typing import Any

import narwhals as nw
import pyarrow as pa

from quarvis.errors import DataError

#: The libraries whose frames results can be returned as; "pyarrow" stands for all others.
KINDS = ("pandas", "polars", "modin", "duckdb", "pyarrow")


def to_table(data: Any, columns: Sequence[str]) -> tuple[pa.Table, str]:
    """Return the columns of a frame as an Arrow table, and the kind of the frame.

    Accepts any frame that narwhals supports and any object with the Arrow PyCapsule interface.
    Values are not copied if the library stores them in the Arrow layout.

    Raises
    ------
    TypeError
        When `data` is not a frame.
    DataError
        When a column is missing, occurs twice or mixes types.
    """
    if isinstance(data, pa.Table | pa.RecordBatch):
        return _selected(_as_table(data), columns), "pyarrow"
    frame = nw.from_native(data, pass_through=True)
    if isinstance(frame, nw.LazyFrame):
        _require(columns, frame.collect_schema().names())
        kind = frame.implementation.value
        return _plain(frame.select(*columns).collect("pyarrow").to_native(), columns), _known(kind)
    if isinstance(frame, nw.DataFrame):
        _require(columns, frame.columns)
        kind = _known(frame.implementation.value)
        return _plain(_arrow_of(frame, columns), columns), kind
    if hasattr(data, "__arrow_c_stream__") or hasattr(data, "__arrow_c_array__"):
        try:
            table = pa.table(data)
        except pa.ArrowInvalid:  # a column alone
            pass
        else:
            return _selected(table, columns), "pyarrow"
    raise TypeError(
        f"data is a {type(data).__name__}, not a data frame: give a frame of pandas, Polars, "
        "PyArrow, DuckDB or Modin, or anything with the Arrow PyCapsule interface, or read a file "
        "with quarvis.read_csv, read_parquet or read_transactions"
    )


def to_native(table: pa.Table, kind: str) -> Any:
    """Return the table as a frame of the library `kind`."""
    if kind == "pandas":
        return table.to_pandas()
    if kind == "polars":
        import polars

        return polars.from_arrow(table)
    if kind == "modin":
        import modin.pandas

        return modin.pandas.DataFrame(table.to_pandas())
    if kind == "duckdb":
        import duckdb

        return duckdb.from_arrow(table)
    return table


def _known(kind: str) -> str:
    return kind if kind in KINDS else "pyarrow"


def _as_table(data: pa.Table | pa.RecordBatch) -> pa.Table:
    return data if isinstance(data, pa.Table) else pa.Table.from_batches([data])


def _selected(table: pa.Table, columns: Sequence[str]) -> pa.Table:
    _require(columns, table.column_names)
    return _plain(table, columns)


def _plain(table: pa.Table, columns: Sequence[str]) -> pa.Table:
    for name in columns:
        if table.column_names.count(name) > 1:
            raise DataError(f"there are several columns {name!r}: rename all but one")
    return table.select(list(columns)).replace_schema_metadata(None)


def _require(columns: Sequence[str], there: Sequence[str]) -> None:
    for name in columns:
        if name not in there:
            raise DataError(f"there is no column {name!r}; the columns are {_listed(there)}")


def _listed(names: Sequence[str]) -> str:
    shown = [repr(name) for name in names[:20]]
    return ", ".join(shown) + (", ..." if len(names) > len(shown) else "")


def _arrow_of(frame: nw.DataFrame[Any], columns: Sequence[str]) -> pa.Table:
    selected = frame.select(*dict.fromkeys(columns))
    try:
        return selected.to_arrow()
    except (pa.ArrowInvalid, pa.ArrowTypeError) as error:
        for name in columns:
            try:
                frame.select(name).to_arrow()
            except (pa.ArrowInvalid, pa.ArrowTypeError):
                raise DataError(
                    f"column {name!r} mixes types ({error}): make all its values of one type, for "
                    "example text"
                ) from error
        raise
