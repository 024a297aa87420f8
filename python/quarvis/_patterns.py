"""Names of items, and patterns of them."""

from __future__ import annotations

import fnmatch
import re
from collections.abc import Sequence
from typing import Any

import numpy as np

from quarvis.errors import DataError

Mask = np.ndarray[Any, np.dtype[np.bool_]]


def matching(names: Sequence[str], patterns: Sequence[str] | str | None, side: str) -> Mask:
    """Tell which of the names match one of the patterns; None matches all.

    A name matches itself, whatever signs it has, and a pattern as in file names: `*` is any text,
    `?` any sign, `[ab]` one of these.

    Raises
    ------
    DataError
        For a pattern that no name matches.
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
