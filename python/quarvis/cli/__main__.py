"""Run the command by ``python -m quarvis.cli``."""

from quarvis.cli.commands import main

main()
