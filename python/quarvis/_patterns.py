"""Matches names of items against patterns."""

from __future__ import annotations

import fnmatch
import re
from collections.abc import Sequence
from typing import Any

import numpy as np

from quarvis.errors import DataError

Mask = np.ndarray[Any, np.dtype[np.bool_]]


def matching(names: Sequence[str], patterns: Sequence[str] | str | None, side: str) -> Mask:
    """Return which of the names match one of the patterns; None matches all.

    A pattern that equals a name matches that name only, whatever characters it has. Any other
    pattern is read like a file name pattern: `*` stands for any text, `?` for any character and
    `[ab]` for one of those listed.

    Raises
    ------
    DataError
        For a pattern that no name matches. `side` names the argument in the message.
    """
    if patterns is None:
        return np.ones(len(names), bool)
    given = [patterns] if isinstance(patterns, str) else list(patterns)
    places: dict[str, list[int]] = {}
    for place, name in enumerate(names):
        places.setdefault(name, []).append(place)
    mask = np.zeros(len(names), bool)
    for pattern in given:
        found = places.get(pattern)
        if found is None:
            matches = re.compile(fnmatch.translate(pattern)).match
            found = [place for place, name in enumerate(names) if matches(name)]
        if not found:
            raise DataError(f"{side}={pattern!r} matches no item")
        mask[found] = True
    return mask
