"""What callers pass, checked before anything is made of it."""

from __future__ import annotations

import math
from numbers import Real
from typing import Any

from quarvis.errors import DataError


def whole_number(name: str, value: Any, least: int, remedy: str = "") -> int:
    """Give a whole number from `least` on; one of another type, such as 5.0, may be whole, too.

    Raises
    ------
    DataError
        For anything else; the message has the remedy, by default the least number.
    """
    is_whole = is_number(value) and math.isfinite(value) and value == int(value)
    if not is_whole or value < least:
        raise DataError(
            f"{name}={value!r}: {remedy or f'give a whole number from {least} on'}"
        )
    return int(value)


def draws(permutations: Any, seed: Any) -> tuple[int, int]:
    """Give the number of permutations of a test and its seed.

    Raises
    ------
    DataError
        For less than one permutation, and for a seed beyond 64 bits.
    """
    number = whole_number("permutations", permutations, 1)
    remedy = "give a whole number from 0 to 2^64 - 1"
    seed = whole_number("seed", seed, 0, remedy)
    if seed >= 2**64:
        raise DataError(f"seed={seed!r}: {remedy}")
    return number, seed


def threshold(name: str, value: Any) -> float:
    """Give a bound of a measure, which may be infinite.

    Raises
    ------
    DataError
        For what is no number, and for NaN, which nothing would pass.
    """
    if not is_number(value) or math.isnan(value):
        raise DataError(f"{name}={value!r}: give a number")
    return float(value)


def is_number(value: Any) -> bool:
    """Tell whether a value is a real number; truth values are none."""
    return isinstance(value, Real) and not isinstance(value, bool)
