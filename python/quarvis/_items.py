"""Reads items from one column of items or of lists of items, or from several columns."""

from __future__ import annotations

from collections.abc import Sequence

import numpy as np
import pyarrow as pa
import pyarrow.compute as pc

from quarvis import _engine
from quarvis._columns import (
    CodeArray,
    as_names,
    decoded,
    encode,
    require_names,
    string_buffers,
    whole,
)
from quarvis._times import missing_or_nan
from quarvis.errors import DataError


class ItemRows:
    """Rows of one item each.

    Attributes
    ----------
    parents : numpy.ndarray or None
        For each row, the row of the frame that it comes from. None when the two are the same.
    codes : numpy.ndarray
        For each row, the place of its item in `names`, or `NO_ITEM`.
    names : pyarrow.Array
        The distinct names of the items, as large strings.
    """

    def __init__(
        self, parents: np.ndarray[tuple[int], np.dtype[np.int64]] | None, codes: CodeArray,
        names: pa.Array,
    ) -> None:
        self.parents = parents
        self.codes = codes
        self.names = names


def is_list(kind: pa.DataType) -> bool:
    """Return whether a column of this type has a list in each row."""
    return bool(
        pa.types.is_list(kind) or pa.types.is_large_list(kind) or pa.types.is_fixed_size_list(kind)
        or str(kind).startswith(("list_view", "large_list_view"))
    )


def missing_items(column: pa.ChunkedArray) -> pa.ChunkedArray:
    """Return which rows lack an item: the value is missing, or one in its list is."""
    if not is_list(column.type):
        return missing_or_nan(decoded(column))
    missing = pc.is_null(column).to_numpy().copy()
    lists = _one_list_array(column)
    inner = missing_or_nan(decoded(pa.chunked_array([pc.list_flatten(lists)])))
    parents = pc.list_parent_indices(lists).to_numpy(zero_copy_only=False)
    missing[parents[inner.to_numpy()]] = True
    return pa.chunked_array([pa.array(missing)])


def one_column(column: pa.ChunkedArray, name: str) -> ItemRows:
    """Return the items of a column of items or of lists of items, none of them missing."""
    if not is_list(column.type):
        codes, names = _coded(decoded(column), name)
        return ItemRows(None, codes, names)
    lists = _one_list_array(column)
    parents = pc.list_parent_indices(lists).to_numpy(zero_copy_only=False).astype(np.int64)
    flat = decoded(pa.chunked_array([pc.list_flatten(lists)]))
    codes, names = _coded(flat, name)
    return _with_empty_rows(len(column), parents, codes, names)


def several_columns(table: pa.Table, columns: Sequence[str]) -> ItemRows:
    """Return the items "column=value" of several columns.

    In a column of booleans, True is the item "column". A cell without a value gives no item.
    """
    parts: list[CodeArray] = []
    parents: list[np.ndarray[tuple[int], np.dtype[np.int64]]] = []
    names: list[pa.Array] = []
    first = 0
    for name in columns:
        column = decoded(table.column(name))
        if is_list(column.type):
            raise DataError(f"column {name!r} has lists: give it alone as items={name!r}")
        there = pc.invert(missing_or_nan(column))
        if pa.types.is_boolean(column.type):
            there = pc.and_(there, pc.fill_null(column, False))
        rows = np.flatnonzero(there.to_numpy())
        if len(rows) == 0:
            continue
        if pa.types.is_boolean(column.type):
            codes: CodeArray = np.zeros(len(rows), np.uint32)
            values = pa.array([name], pa.large_string())
        else:
            codes, texts = _coded(column.filter(there), name)
            prefix = pa.scalar(f"{name}=", pa.large_string())
            values = pc.binary_join_element_wise(prefix, texts, pa.scalar("", pa.large_string()))
        parts.append(codes + np.uint32(first))
        parents.append(rows)
        names.append(values)
        first += len(values)
    none = np.empty(0, np.uint32)
    all_names = pa.concat_arrays(names) if names else pa.array([], pa.large_string())
    codes, all_names = _named(np.concatenate([none, *parts]), all_names)
    return _with_empty_rows(
        table.num_rows, np.concatenate([np.empty(0, np.int64), *parents]), codes, all_names
    )


def _one_list_array(column: pa.ChunkedArray) -> pa.Array:
    kind = column.type
    if column.num_chunks == 1 and (pa.types.is_list(kind) or pa.types.is_large_list(kind)):
        return column.chunk(0)
    # Combined chunks may have more values than 32-bit offsets can count.
    combined = column.cast(pa.large_list(kind.value_type)).combine_chunks()
    return combined if isinstance(combined, pa.Array) else pa.concat_arrays(combined.chunks)


def _coded(column: pa.ChunkedArray, name: str) -> tuple[CodeArray, pa.Array]:
    """Encode the items of a plain column without missing values; also return their names."""
    if pa.types.is_null(column.type):
        return np.empty(0, np.uint32), pa.array([], pa.large_string())
    require_names(column.type, name)
    encoded = encode(whole(column, name))
    return _named(encoded.codes, as_names(encoded.values))


def _named(codes: CodeArray, names: pa.Array) -> tuple[CodeArray, pa.Array]:
    """Make the names distinct: different values may have the same text."""
    again = encode(pa.chunked_array([names]))
    if len(again.values) == len(names):
        return codes, names
    return again.codes[codes], again.values


def _with_empty_rows(
    rows: int, parents: np.ndarray[tuple[int], np.dtype[np.int64]], codes: CodeArray,
    names: pa.Array,
) -> ItemRows:
    has_item = np.zeros(rows, bool)
    has_item[parents] = True
    empty = np.flatnonzero(~has_item)
    if len(empty) == 0:
        return ItemRows(parents, codes, names)
    none = np.full(len(empty), _engine.NO_ITEM, np.uint32)
    return ItemRows(np.concatenate([parents, empty]), np.concatenate([codes, none]), names)


def engine_names(
    names: pa.Array,
) -> tuple[np.ndarray[tuple[int], np.dtype[np.int64]], np.ndarray[tuple[int], np.dtype[np.uint8]]]:
    """Return names as the engine takes them: offsets and bytes."""
    return string_buffers(as_names(names))
