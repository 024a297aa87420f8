"""Runs the command as ``python -m quarvis.cli``."""

from quarvis.cli.commands import main

main()
