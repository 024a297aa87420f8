"""Columns as codes: the distinct values, and for each row the number of its value."""

from __future__ import annotations

from dataclasses import dataclass
from typing import Any

import numpy as np
import pyarrow as pa
import pyarrow.compute as pc

from quarvis.errors import DataError

CodeArray = np.ndarray[Any, np.dtype[np.uint32]]


@dataclass(frozen=True)
class Codes:
    """A column as numbers: row i has the value `values[codes[i]]`."""

    codes: CodeArray
    values: pa.Array


def decoded(column: pa.ChunkedArray) -> pa.ChunkedArray:
    """Return the column in a plain layout: no dictionary, view or run-end encoding."""
    kind = column.type
    if pa.types.is_dictionary(kind):
        return decoded(column.cast(kind.value_type))
    if pa.types.is_run_end_encoded(kind):
        return decoded(pc.run_end_decode(column))
    if str(kind) == "string_view":
        return column.cast(pa.large_string())
    if isinstance(kind, pa.BaseExtensionType):
        return decoded(pa.chunked_array([chunk.storage for chunk in column.chunks],
                                        kind.storage_type))
    return column


def whole(column: pa.ChunkedArray, name: str) -> pa.ChunkedArray:
    """Return a floating-point column as integers, and any other column unchanged.

    Libraries that cannot represent a missing integer store such columns as floating-point numbers.
    Raises `DataError` when a value has a fraction.
    """
    if not pa.types.is_floating(column.type):
        return column
    try:
        return column.cast(pa.int64())
    except pa.ArrowInvalid as error:
        raise DataError(
            f"column {name!r} has fractions ({error}), which cannot name anything: convert it to "
            "text or to integers"
        ) from error


def encode(column: pa.ChunkedArray) -> Codes:
    """Encode a column that has no missing values."""
    if len(column) == 0:
        return Codes(np.empty(0, np.uint32), pa.array([], column.type))
    if column.num_chunks == 1:
        one = column.chunk(0).dictionary_encode()
        return Codes(one.indices.to_numpy().view(np.uint32), one.dictionary)
    encoded = column.dictionary_encode().unify_dictionaries()
    codes = [chunk.indices.to_numpy(zero_copy_only=False) for chunk in encoded.chunks]
    return Codes(np.concatenate(codes).astype(np.uint32, copy=False), encoded.chunk(0).dictionary)


def require_names(kind: pa.DataType, name: str) -> None:
    """Raise `DataError` for a type whose values cannot name items."""
    if pa.types.is_binary(kind) or pa.types.is_large_binary(kind) or pa.types.is_nested(kind):
        raise DataError(f"column {name!r} has items as {kind}: convert them to text")


def as_names(values: pa.Array) -> pa.Array:
    """Return the values as large strings, formatted by Arrow."""
    return values if pa.types.is_large_string(values.type) else values.cast(pa.large_string())


def string_buffers(
    values: pa.Array,
) -> tuple[np.ndarray[Any, np.dtype[np.int64]], np.ndarray[Any, np.dtype[np.uint8]]]:
    """Return the offsets and the bytes of an array of large strings without missing values."""
    if len(values) == 0:
        return np.zeros(1, np.int64), np.empty(0, np.uint8)
    _, offsets, data = values.buffers()
    numbers = np.frombuffer(offsets, np.int64)[values.offset : values.offset + len(values) + 1]
    text = np.empty(0, np.uint8) if data is None else np.frombuffer(data, np.uint8)
    return numbers, text


def names_of(
    offsets: np.ndarray[Any, np.dtype[np.int64]], text: np.ndarray[Any, np.dtype[np.uint8]]
) -> pa.Array:
    """Return strings made from offsets and bytes; invalid UTF-8 becomes U+FFFD."""
    raw = text.tobytes()
    try:
        raw.decode()
    except UnicodeDecodeError:
        parts = [raw[offsets[i] : offsets[i + 1]] for i in range(len(offsets) - 1)]
        return pa.array([part.decode(errors="replace") for part in parts], pa.large_string())
    return pa.LargeStringArray.from_buffers(
        len(offsets) - 1, pa.py_buffer(offsets), pa.py_buffer(raw)
    )


def lists_of(
    lists: tuple[np.ndarray[Any, np.dtype[np.int64]], CodeArray], names: pa.Array
) -> pa.Array:
    """Return lists of names made from lists of codes, given as offsets and values."""
    offsets, codes = lists
    values = names.take(pa.array(codes))
    if len(codes) < 2**31 and values.nbytes < 2**31:
        return pa.ListArray.from_arrays(
            pa.array(offsets.astype(np.int32)), values.cast(pa.string())
        )
    return pa.LargeListArray.from_arrays(pa.array(offsets), values)
