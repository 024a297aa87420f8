"""Checks of arguments before they are used."""

from __future__ import annotations

import math
from numbers import Real
from typing import Any

from quarvis.errors import DataError


def whole_number(name: str, value: Any, least: int, remedy: str = "") -> int:
    """Return `value` as an integer of at least `least`; a float such as 5.0 counts as whole.

    Raises
    ------
    DataError
        For any other value. The message ends with `remedy`, or else names the least number.
    """
    is_whole = is_number(value) and math.isfinite(value) and value == int(value)
    if not is_whole or value < least:
        raise DataError(
            f"{name}={value!r}: {remedy or f'give a whole number from {least} on'}"
        )
    return int(value)


def draws(permutations: Any, seed: Any) -> tuple[int, int]:
    """Return the number of permutations of a test and its seed, as integers.

    Raises
    ------
    DataError
        For fewer than one permutation, or a seed that does not fit in 64 bits.
    """
    number = whole_number("permutations", permutations, 1)
    remedy = "give a whole number from 0 to 2^64 - 1"
    seed = whole_number("seed", seed, 0, remedy)
    if seed >= 2**64:
        raise DataError(f"seed={seed!r}: {remedy}")
    return number, seed


def threshold(name: str, value: Any) -> float:
    """Return a bound of a measure as a float, possibly infinite.

    Raises
    ------
    DataError
        When `value` is not a number, or is NaN, which no measure would pass.
    """
    if not is_number(value) or math.isnan(value):
        raise DataError(f"{name}={value!r}: give a number")
    return float(value)


def is_number(value: Any) -> bool:
    """Return whether a value is a real number; a bool is not."""
    return isinstance(value, Real) and not isinstance(value, bool)
