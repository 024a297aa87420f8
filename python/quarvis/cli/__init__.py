"""The command ``quarvis``, a front end of the package's functions."""

from quarvis.cli.commands import main

__all__ = ["main"]
