"""Recovers numbers of histories from measures that were written with six digits."""

from __future__ import annotations

from dataclasses import dataclass
from typing import Any

import numpy as np

Floats = np.ndarray[Any, np.dtype[np.float64]]
Places = np.ndarray[Any, np.dtype[np.int64]]

_DIGITS = 6
_TOLERANCE = 1e-4  # the relative error allowed between the written lift and that of the counts


@dataclass(frozen=True)
class Written:
    """The columns of a rules file, by rule. A side is given as its place among distinct sides."""

    antecedent: Places
    consequent: Places
    count: Floats
    union: Floats
    support: Floats
    confidence: Floats
    lift: Floats
    conviction: Floats
    probability: Floats
    certainty: Floats


@dataclass(frozen=True)
class Counts:
    """Numbers of histories recovered from the measures."""

    total: int  #: N, the number of all histories.
    sets: Places  #: n(X), by side.
    approximate: bool  #: Whether other numbers would give the same digits.
    wrong: int | None  #: A rule whose measures cannot come from any counts, if there is one.


def recover(written: Written, sides: int, known: dict[int, int]) -> Counts:
    """Recover N, and n(X) of each side.

    A rounded measure gives a lower and an upper bound of a whole number: N = Count / Support,
    n(A) = n(A u S) / Confidence, n(S) = n(A u S) / Probability. With up to some hundred thousand
    histories, the bounds of all rules together leave only one number.

    Parameters
    ----------
    written : Written
        The columns of the file.
    sides : int
        The number of distinct sides.
    known : dict
        n(X) by side, for the sides for which it is known.
    """
    if len(written.count) == 0:
        return Counts(0, np.zeros(sides, np.int64), False, None)
    low, high = np.zeros(sides), np.full(sides, np.inf)
    for place, measure in ((written.antecedent, written.confidence),
                           (written.consequent, written.probability)):
        least, greatest = _quotient(written.union, measure)
        np.maximum.at(low, place, least)
        np.minimum.at(high, place, greatest)
    for side, count in known.items():
        low[side] = high[side] = count
    sets, several, none = _whole(low, high)

    least, greatest = _quotient(written.count, written.support)
    total, some, nothing = _whole(np.array([least.max()]), np.array([greatest.min()]))
    wrong = np.flatnonzero(
        none[written.antecedent] | none[written.consequent] | _misfit(written, sets, total[0])
    )
    if nothing[0] and len(wrong) == 0:
        wrong = np.array([int(np.argmax(least))])
    return Counts(
        int(total[0]), sets, bool(some[0] or several.any()),
        int(wrong[0]) if len(wrong) else None,
    )


def _quotient(number: Floats, measure: Floats) -> tuple[Floats, Floats]:
    """Return the lower and upper bounds of `number` / `measure` for a rounded measure."""
    with np.errstate(divide="ignore", invalid="ignore"):
        half = 0.5 * 10.0 ** (np.floor(np.log10(measure)) - (_DIGITS - 1))
        least = number / (measure + half)
        greatest = number / (measure - half)
    useful = (measure > 0) & np.isfinite(measure) & (number > 0)
    return np.where(useful, least, 0.0), np.where(useful, greatest, np.inf)


def _whole(low: Floats, high: Floats) -> tuple[Places, Any, Any]:
    """Return a whole number between the bounds, and whether there are several or none."""
    first = np.ceil(low * (1 - 1e-12))
    last = np.floor(high * (1 + 1e-12))
    none = first > last
    several = (last > first) & np.isfinite(last)
    middle = np.where(np.isfinite(last), np.floor((first + last) / 2), first)
    return np.where(none, first, middle).astype(np.int64), several | ~np.isfinite(last), none


def _misfit(written: Written, sets: Places, total: int) -> Any:
    a, s = sets[written.antecedent], sets[written.consequent]
    with np.errstate(divide="ignore", invalid="ignore"):
        lift = total * written.union / (a * s)
        off = np.abs(lift - written.lift) > _TOLERANCE * np.abs(written.lift)
    return off & (written.union > 0) & np.isfinite(written.lift)
