"""Writes files of histories and of tables, completely or not at all."""

from __future__ import annotations

import json
import os
import tempfile
from collections.abc import Callable, Sequence
from pathlib import Path
from typing import TYPE_CHECKING, Any, BinaryIO

import numpy as np
import pyarrow as pa
import pyarrow.compute as pc

from quarvis import _engine
from quarvis.errors import DataError

if TYPE_CHECKING:
    from quarvis.histories import Histories

PathLike = str | os.PathLike[str]

#: Matches names that a transaction file cannot hold, since they would be read differently.
_UNWRITABLE = "^\"|[\t\n\r]"


#: The endings of file names that `write_table` supports.
FORMATS = (".parquet", ".arrow", ".csv", ".json", ".jsonl")


def write_whole(path: PathLike, write: Callable[[BinaryIO], object]) -> None:
    """Write a temporary file in the same folder and rename it, so `path` is never half written.

    A path that exists but is not a regular file, such as a device, is written directly. Any
    `OSError` names the file.
    """
    target = Path(path)
    try:
        _write_whole(target, write)
    except OSError as error:
        if error.errno is None:
            raise
        raise type(error)(error.errno, error.strerror, os.fspath(target)) from error


def _write_whole(target: Path, write: Callable[[BinaryIO], object]) -> None:
    if target.exists() and not target.is_file():
        with target.open("wb") as file:
            write(file)
        return
    handle, name = tempfile.mkstemp(prefix=f".{target.name}.", dir=target.parent)
    try:
        with os.fdopen(handle, "wb") as file:
            write(file)
        umask = os.umask(0)
        os.umask(umask)
        os.chmod(name, 0o666 & ~umask)
        os.replace(name, target)
    except BaseException:
        os.unlink(name)
        raise


def write_transactions(histories: Histories, path: PathLike) -> str:
    """Write a transaction file of the command-line tool, one row per item.

    Times are the numbers of the column if these fit in 32 bits; for dates, these are days or
    seconds and so on since 1970. Otherwise times count from the first time on.

    Returns
    -------
    str
        The unit and the origin of the times in the file, in words.

    Raises
    ------
    DataError
        When the histories have no times, when such a file cannot hold a name, or when the times
        span more than 32 bits.
    OSError
        When the file cannot be written.
    """
    columns = histories._columns
    scale = columns.scale
    if scale.type is None:
        raise DataError("a transaction file needs times: name their column (time=...)")
    entities = columns.entities.values.cast(pa.large_string())
    for role, names in (("entity", entities), ("item", columns.item_names)):
        bad = pc.match_substring_regex(names, _UNWRITABLE)
        if pc.any(bad).as_py():
            name = names.filter(bad)[0].as_py()
            raise DataError(
                f"a transaction file cannot hold the {role} {name!r}: it begins with a quote, or "
                "has a tab or a line end"
            )
    if scale.last > 2**32 - 1:
        raise DataError(f"the times, in {scale.unit}, span more than 32 bits can hold")
    fits = scale.step == 1 and scale.origin >= 0 and scale.origin + scale.last < 2**32
    times = columns.times.astype(np.uint64) + np.uint64(scale.origin if fits else 0)
    names = pa.concat_arrays([columns.item_names, pa.nulls(1, pa.large_string())])
    codes = np.where(columns.items == _engine.NO_ITEM, len(names) - 1, columns.items)
    lines = pc.binary_join_element_wise(
        entities.take(pa.array(columns.entities.codes)), pa.array(times).cast(pa.large_string()),
        names.take(pa.array(codes)), pa.scalar("\t", pa.large_string()), null_handling="skip",
    )
    ended = pc.binary_join_element_wise(
        lines, pa.scalar("\n", pa.large_string()), pa.scalar("", pa.large_string())
    )

    def write(file: BinaryIO) -> None:
        file.write(b"entity\ttime\titems\n")
        for chunk in pa.chunked_array([ended]).chunks:
            if len(chunk):
                _, offsets, text = chunk.buffers()
                bounds = np.frombuffer(offsets, np.int64)[chunk.offset :]
                file.write(memoryview(text)[bounds[0] : bounds[len(chunk)]])

    write_whole(path, write)
    unit = scale.unit
    if scale.step != 1:
        unit = {10**9: "seconds", 10**6: "milliseconds", 10**3: "microseconds"}[
            scale.step * (scale.nanoseconds or 1)
        ]
    if unit == "numbers":
        return "numbers as in the input" if fits else f"numbers from {scale.origin} on"
    return f"{unit} since 1970" if fits else f"{unit} since {scale.value(0)}"


def write_table(table: pa.Table, path: PathLike) -> None:
    """Write a table in the format of the name's ending, one of `FORMATS`.

    In CSV, lists are written as JSON and durations as seconds. Raises `DataError` for any other
    ending, and `OSError` when the file cannot be written.
    """
    import pyarrow.csv
    import pyarrow.feather
    import pyarrow.parquet

    require_format(path, FORMATS)
    writers: dict[str, Callable[[BinaryIO], object]] = {
        ".parquet": lambda file: pyarrow.parquet.write_table(table, file),
        ".arrow": lambda file: pyarrow.feather.write_feather(table, file),
        ".csv": lambda file: pyarrow.csv.write_csv(_flat(table), file),
        ".json": lambda file: file.write(_json(table, "[\n", ",\n", "\n]\n")),
        ".jsonl": lambda file: file.write(_json(table, "", "\n", "\n")),
    }
    write_whole(path, writers[Path(path).suffix.lower()])


def require_format(path: PathLike, formats: Sequence[str]) -> None:
    """Raise `DataError` for a name whose ending is not in `formats`."""
    if Path(path).suffix.lower() not in formats:
        raise DataError(
            f"the ending of {os.fspath(path)!r} is unknown: name the file "
            f"{', '.join(formats[:-1])} or {formats[-1]}"
        )


def _flat(table: pa.Table) -> pa.Table:
    for place, field in enumerate(table.schema):
        if pa.types.is_nested(field.type):
            texts = [json.dumps(value, ensure_ascii=False)
                     for value in table.column(place).to_pylist()]
            table = table.set_column(place, field.name, pa.array(texts, pa.string()))
        elif pa.types.is_duration(field.type):
            table = table.set_column(place, field.name, _seconds(table.column(place)))
    return table


def _seconds(column: pa.ChunkedArray) -> pa.ChunkedArray:
    ticks = {"s": 1, "ms": 10**3, "us": 10**6, "ns": 10**9}[column.type.unit]
    return pc.divide(column.cast(pa.int64()).cast(pa.float64()), float(ticks))


def _json(table: pa.Table, begin: str, between: str, end: str) -> bytes:
    rows = (json.dumps(row, ensure_ascii=False, default=_plain) for row in table.to_pylist())
    text = between.join(rows)
    return (begin + text + (end if text or begin else "")).encode()


def _plain(value: Any) -> Any:
    if hasattr(value, "total_seconds"):
        return value.total_seconds()
    return value.isoformat() if hasattr(value, "isoformat") else str(value)
