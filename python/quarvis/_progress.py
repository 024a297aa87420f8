"""Reports the progress of a run."""

from __future__ import annotations

import sys
from collections.abc import Callable

from quarvis.errors import DataError

Progress = bool | Callable[[str, int, int], object]


def progress_of(progress: Progress) -> Callable[[str, int, int], object] | None:
    """Return the callable that the engine calls; for True, one that prints to standard error."""
    if isinstance(progress, bool):
        return _print_progress if progress else None
    if not callable(progress):
        raise DataError(f"progress={progress!r}: give True, False or a callable")
    return progress


def _print_progress(step: str, done: int, total: int) -> None:
    print(f"\r{step}: {done:,} of {total:,}", end="", file=sys.stderr, flush=True)
