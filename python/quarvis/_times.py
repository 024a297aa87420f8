"""Times as the engine counts them: whole numbers, starting from 0 at the first time."""

from __future__ import annotations

import datetime
import re
from dataclasses import dataclass
from typing import Any

import numpy as np
import pyarrow as pa
import pyarrow.compute as pc

from quarvis.errors import DataError

Window = str | int | datetime.timedelta | np.timedelta64 | None

_NANOSECONDS = {"s": 10**9, "ms": 10**6, "us": 10**3, "ns": 1}
_UNIT_NAMES = {86400 * 10**9: "days", 10**9: "seconds", 10**6: "milliseconds"}
_UNIT_NAMES |= {10**3: "microseconds", 1: "nanoseconds"}
_WINDOW_UNITS = {
    "w": 7 * 86400 * 10**9,
    "d": 86400 * 10**9,
    "h": 3600 * 10**9,
    "min": 60 * 10**9,
    **_NANOSECONDS,
}
_WINDOW = re.compile(r"\s*(\d+)\s*(w|d|h|min|s|ms|us|ns)\s*")
_UNSIGNED = pa.uint64()
_LARGEST = 2**64 - 1


@dataclass(frozen=True)
class TimeScale:
    """The conversion between the times of a column and those of the engine.

    An engine time of `t` is the column's value `origin + t * step`. A unit of the column is
    `nanoseconds` long; None means integers in a unit that only the caller knows.
    """

    type: pa.DataType | None  #: The type of the column; None without times.
    origin: int = 0
    step: int = 1
    nanoseconds: int | None = None
    last: int = 0  #: The greatest engine time.

    @property
    def unit(self) -> str:
        """The unit of the column, in words."""
        return "none" if self.type is None else self._unit(1)

    def _unit(self, step: int) -> str:
        return "numbers" if self.nanoseconds is None else _UNIT_NAMES[self.nanoseconds * step]

    def window(self, window: Window) -> int:
        """Return a window in the unit of the engine; 0 means the whole past.

        A window that is not a whole number of units is rounded down. That changes nothing, since
        the difference of two times is always a whole number of units.
        """
        if window is None:
            return 0
        if self.type is None:
            raise DataError("a window needs times: name the column of the times (time=...)")
        if self.nanoseconds is None:
            units = _number(window)
        else:
            units = _nanoseconds(window) // (self.nanoseconds * self.step)
        if units == 0:
            raise DataError(
                f"window={window!r} is shorter than a unit of the times ({self._unit(self.step)}"
                "), so nothing could lie within it: give a longer one, or None for the whole past"
            )
        return min(units, _LARGEST)

    def decode(self, times: np.ndarray[Any, Any], missing: np.ndarray[Any, Any]) -> pa.Array:
        """Return engine times as values of the column's type; null where `missing`."""
        assert self.type is not None
        numbers = times * np.uint64(self.step) + np.uint64(self.origin % 2**64)
        if pa.types.is_unsigned_integer(self.type):
            return pa.array(numbers, mask=missing).cast(self.type)
        signed = pa.array(numbers.view(np.int64), mask=missing)
        if pa.types.is_date32(self.type):
            return signed.cast(pa.int32()).cast(self.type)
        return signed.cast(self.type)

    def decode_lengths(self, lengths: np.ndarray[Any, Any], missing: np.ndarray[Any, Any]) -> Any:
        """Return lengths of time: durations for dates and timestamps, otherwise numbers."""
        if self.nanoseconds is None:
            return pa.array(lengths, pa.uint64(), mask=missing).cast(pa.int64())
        if self.type is not None and pa.types.is_date32(self.type):
            seconds = lengths.astype(np.int64) * 86400
            return pa.array(seconds, pa.int64(), mask=missing).cast(pa.duration("s"))
        assert self.type is not None
        ticks = lengths.astype(np.int64) * self.step
        return pa.array(ticks, pa.int64(), mask=missing).cast(pa.duration(self.type.unit))

    def value(self, time: int) -> Any:
        """Return an engine time as a Python object."""
        return self.decode(np.array([time], np.uint64), np.array([False]))[0].as_py()

    def encode(self, value: Any) -> int:
        """Return a point in time as an engine time; negative before the first time."""
        assert self.type is not None
        scalar = pa.scalar(value, self.type)
        number = int(scalar.value if hasattr(scalar, "value") else scalar.as_py())
        return (number - self.origin) // self.step


def read_times(
    column: pa.ChunkedArray, name: str
) -> tuple[np.ndarray[Any, np.dtype[np.uint32 | np.uint64]], TimeScale]:
    """Return the engine times of a column without missing values, and their scale.

    Raises
    ------
    DataError
        When the column does not have integers, dates or timestamps.
    """
    kind = column.type
    if pa.types.is_date64(kind):
        column, kind = column.cast(pa.date32()), pa.date32()
    if pa.types.is_null(kind) and len(column) == 0:  # the file has only a header
        column, kind = column.cast(pa.int64()), pa.int64()
    nanoseconds = None
    if pa.types.is_integer(kind):
        whole = column.cast(_UNSIGNED if pa.types.is_unsigned_integer(kind) else pa.int64())
    elif pa.types.is_date32(kind):
        whole, nanoseconds = column.cast(pa.int32()).cast(pa.int64()), 86400 * 10**9
    elif pa.types.is_timestamp(kind):
        whole, nanoseconds = column.cast(pa.int64()), _NANOSECONDS[kind.unit]
    else:
        raise DataError(_refusal(kind, name))
    numbers = _numpy(whole)
    if len(numbers) == 0:
        return np.empty(0, np.uint32), TimeScale(kind, nanoseconds=nanoseconds)
    origin = int(numbers.min())
    since = numbers.view(np.uint64) - np.uint64(origin % 2**64)
    step = 1
    if nanoseconds is not None and since.max() > 2**32 - 1:
        step = next(
            (s // nanoseconds for s in (10**9, 10**6, 10**3)
             if s > nanoseconds and not np.any(since % np.uint64(s // nanoseconds))),
            1,
        )
        since //= np.uint64(step)
    last = int(since.max())
    narrow = since.astype(np.uint32) if last < 2**32 else since
    return narrow, TimeScale(kind, origin, step, nanoseconds, last)


def _numpy(column: pa.ChunkedArray) -> np.ndarray[Any, Any]:
    kind = column.type.to_pandas_dtype()
    chunks = [chunk.to_numpy(zero_copy_only=False) for chunk in column.chunks]
    return np.concatenate(chunks).astype(kind, copy=False) if chunks else np.empty(0, kind)


def _refusal(kind: pa.DataType, name: str) -> str:
    if pa.types.is_floating(kind) or pa.types.is_decimal(kind):
        return (
            f"column {name!r} has times as {kind}, which may be rounded: convert them to integers "
            "or timestamps"
        )
    if pa.types.is_string(kind) or pa.types.is_large_string(kind):
        return (
            f"column {name!r} has times as text: convert them to timestamps first (pandas: "
            f"pd.to_datetime, Polars: str.to_datetime), or read the file with time_format=..."
        )
    return f"column {name!r} has times as {kind}: give integers, dates or timestamps"


def _number(window: Window) -> int:
    if isinstance(window, bool) or not isinstance(window, int | np.integer):
        raise DataError(
            f"window={window!r}, but the times are numbers: give a whole number in their unit"
        )
    if window < 0:
        raise DataError(f"window={window!r} is negative")
    return int(window)


def _nanoseconds(window: Window) -> int:
    if isinstance(window, str):
        total = 0
        rest = window
        while match := _WINDOW.match(rest):
            total += int(match[1]) * _WINDOW_UNITS[match[2]]
            rest = rest[match.end() :]
        if rest or not window.strip():
            raise DataError(
                f"window={window!r} is not a length of time: write a number and one of "
                f"{', '.join(_WINDOW_UNITS)}, such as '30d' or '36h'"
            )
        return total
    if isinstance(window, np.timedelta64):
        unit, count = np.datetime_data(window.dtype)
        if unit in ("Y", "M", "generic"):
            raise DataError(f"window={window!r} has no fixed length: give days")
        number = int(window.astype(np.int64)) * count
        nanoseconds = number * _WINDOW_UNITS[{"W": "w", "D": "d", "m": "min"}.get(unit, unit)]
    elif isinstance(window, datetime.timedelta):
        nanoseconds = (window.days * 86400 + window.seconds) * 10**9 + window.microseconds * 1000
        nanoseconds += getattr(window, "nanoseconds", 0)  # pandas only
    else:
        raise DataError(
            f"window={window!r}, but the times are dates: give a length of time such as '30d' or "
            "a timedelta"
        )
    if nanoseconds < 0:
        raise DataError(f"window={window!r} is negative")
    return nanoseconds


def missing_or_nan(column: pa.ChunkedArray) -> pa.ChunkedArray:
    """Return where a column lacks a value: null, NaN or empty text."""
    if pa.types.is_floating(column.type):
        return pc.is_null(column, nan_is_null=True)
    null = pc.is_null(column)
    if pa.types.is_string(column.type) or pa.types.is_large_string(column.type):
        return pc.or_(null, pc.fill_null(pc.equal(column, ""), False))
    return null
