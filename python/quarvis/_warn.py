"""Warnings that point at the line of the user's code."""

import inspect
import os
import warnings

from quarvis.errors import QuarvisWarning

_HERE = os.path.dirname(__file__) + os.sep


def warn(message: str) -> None:
    """Issue a warning at the first caller outside the package."""
    level = 1
    frame = inspect.currentframe()
    while frame is not None and frame.f_code.co_filename.startswith(_HERE):
        frame = frame.f_back
        level += 1
    warnings.warn(message, QuarvisWarning, stacklevel=level)
