"""The command ``quarvis``, over the functions of the package."""

from quarvis.cli.commands import main

__all__ = ["main"]
