"""What the subcommands share: one-line errors, progress, outputs and common options."""

from __future__ import annotations

import datetime
import math
import operator
import re
import sys
import warnings
from collections.abc import Callable, Iterator, Sequence
from contextlib import contextmanager
from pathlib import Path
from typing import Any, TypeVar

import click

import quarvis
from quarvis.histories import Histories
from quarvis.mined import Mined
from quarvis.writing import FORMATS, require_format, write_table

Command = TypeVar("Command", bound=Callable[..., Any])

#: The formats of rules and item sets, including that of the tool.
RULE_FORMATS = (*FORMATS, ".tsv")

_WIDTH = 30
_TRANSACTION_FILES = (".tsv", ".txt", "")


@contextmanager
def one_line_errors() -> Iterator[None]:
    """Print each error and warning of the package in one line, without a traceback."""
    with warnings.catch_warnings():
        warnings.simplefilter("always", quarvis.QuarvisWarning)
        warnings.showwarning = _show_warning
        try:
            yield
        except MemoryError:
            raise click.ClickException("there is not enough memory; try --budget-bytes") from None
        except quarvis.QuarvisError as error:
            raise click.ClickException(str(error)) from None
        except OSError as error:
            name = f"{error.filename}: " if error.filename else ""
            raise click.ClickException(f"{name}{error.strerror or error}") from None


def _show_warning(message: Any, *_: Any, **__: Any) -> None:
    click.echo(f"Warning: {message}", err=True)


class Progress:
    """Shows progress on standard error: a bar on a terminal, otherwise a line for each step."""

    def __init__(self) -> None:
        self._step = ""
        self._is_terminal = sys.stderr.isatty()

    def __call__(self, step: str, done: int, total: int) -> None:
        """Show that `done` of `total` tasks of a step are done."""
        if self._is_terminal:
            filled = _WIDTH * done // max(total, 1)
            bar = "#" * filled + "-" * (_WIDTH - filled)
            click.echo(f"\r{step:<12} [{bar}] {done:,}/{total:,}\x1b[K", nl=False, err=True)
        elif step != self._step:
            click.echo(f"{step}: {total:,} to do", err=True)
        self._step = step

    def end(self) -> None:
        """Clear the bar."""
        if self._is_terminal and self._step:
            click.echo("\r\x1b[K", nl=False, err=True)


def check_output(path: Path | None, force: bool, formats: Sequence[str] = ()) -> None:
    """Refuse an output file that exists or could not be written, before any work is done.

    `formats` lists the allowed endings of the name; if it is empty, any ending is allowed.
    """
    if path is None:
        return
    if formats:
        require_format(path, formats)
    if path.is_file() and not force:
        raise click.ClickException(f"{path} already exists: --force replaces it")
    if not path.parent.is_dir():
        raise click.ClickException(f"{path}: there is no folder {path.parent}")


def write_rules(mined: Mined, path: Path) -> None:
    """Write the rules in the format of the ending; .tsv is the tool's rules file."""
    if path.suffix.lower() == ".tsv":
        mined.write_tsv(path)
    else:
        write_table(mined.to_arrow(), path)


def data_options(command: Command) -> Command:
    """Add the options for reading the input."""
    for option in reversed((
        click.option("--entity", metavar="COLUMN", help="Column of the entities."),
        click.option("--time", metavar="COLUMN", help="Column of the times."),
        click.option("--items", metavar="COLUMN", multiple=True,
                     help="Column of the items; several columns give items \"column=value\"."),
        click.option("--drop-missing", is_flag=True,
                     help="Leave out rows that lack an entity, a time or an item."),
        click.option("--where", metavar="COND", multiple=True,
                     help="Read only rows that meet this condition, such as \"Quantity>0\"; "
                     "text may be in quotes."),
        click.option("--delimiter", metavar="SIGN", help="Character between cells of text."),
        click.option("--time-format", metavar="FORMAT", help="Format of times (strptime)."),
    )):
        command = option(command)
    return command


def mining_options(command: Command) -> Command:
    """Add the options of a run."""
    for option in reversed((
        click.option("-c", "--min-count", type=click.IntRange(1),
                     help="Least count of an item set and of a rule, in histories."),
        click.option("-s", "--min-support", type=click.FloatRange(0, 1),
                     help="The same as a share of all histories."),
        click.option("-w", "--window", help="Length of time such as 30d, or a number."),
        click.option("--max-items", type=click.IntRange(2), help="Greatest number of items."),
        click.option("--min-confidence", type=float, default=0.0, help="Least confidence."),
        click.option("--min-lift", type=float, default=0.0, help="Least lift."),
        click.option("--max-conviction", type=float, default=math.inf,
                     help="Greatest conviction."),
        click.option("--splits", type=click.Choice(["all", "runs"]), default="all",
                     show_default=True, help="Which rules are proposed from a set."),
        click.option("--antecedents", metavar="PATTERN", multiple=True,
                     help="Pattern for the items of the left side."),
        click.option("--consequents", metavar="PATTERN", multiple=True,
                     help="Pattern for the items of the right side."),
        click.option("--threads", type=click.IntRange(1), help="Number of threads."),
        click.option("--budget-seconds", type=click.FloatRange(0, min_open=True),
                     help="Limit of the run's time, in seconds."),
        click.option("--budget-sets", type=click.IntRange(1), help="Limit of item sets."),
        click.option("--budget-bytes", type=click.IntRange(1), help="Limit of memory, in bytes."),
    )):
        command = option(command)
    return command


def read_input(path: Path, options: dict[str, Any]) -> Histories:
    """Read the input, and remove the options for reading from `options`."""
    entity, time, items = (options.pop(name) for name in ("entity", "time", "items"))
    where = options.pop("where")
    drop = options.pop("drop_missing")
    text = {name: options.pop(name) for name in ("delimiter", "time_format")}
    text = {name: value for name, value in text.items() if value is not None}
    if not items:
        if entity or time or drop or where or text or (
            path.suffix.lower() not in _TRANSACTION_FILES
        ):
            raise click.UsageError("--items must name the column of the items of such a file")
        return quarvis.read_transactions(path)
    return quarvis.read(
        path, entity=entity, time=time, items=items[0] if len(items) == 1 else list(items),
        missing="drop" if drop else "error", where=_condition(where), **text,
    )


def run(histories: Histories, options: dict[str, Any]) -> Mined:
    """Mine with the options of `mining_options`."""
    budget = quarvis.Budget(*(
        options.pop(f"budget_{name}", None) for name in ("seconds", "sets", "bytes")
    ))
    window = options.pop("window")
    if window is not None and histories._columns.scale.nanoseconds is None:
        window = int(window) if window.isdecimal() else window
    for side in ("antecedents", "consequents"):
        options[side] = list(options[side]) or None
    progress = Progress()
    try:
        return quarvis.mine(
            histories, window=window, budget=budget, progress=progress, **options
        )
    finally:
        progress.end()


def _condition(texts: tuple[str, ...]) -> Any:
    """Return conditions such as "Quantity>0" as one expression: all must hold."""
    import pyarrow.compute as pc

    signs = {">=": operator.ge, "<=": operator.le, "!=": operator.ne, ">": operator.gt,
             "<": operator.lt, "=": operator.eq}
    expression = None
    for text in texts:
        match = re.fullmatch(r"(.+?)\s*(>=|<=|!=|>|<|=)\s*(.*)", text)
        if not match:
            raise click.UsageError(f"--where {text!r}: write COLUMN>VALUE, or <, =, !=, >=, <=")
        column, sign, value = match.groups()
        each = signs[sign](pc.field(column), _value(value))
        expression = each if expression is None else expression & each
    return expression


def _value(text: str) -> float | str | datetime.date:
    """Return the value of a condition: a number, a date, or text, which may be quoted."""
    if re.fullmatch(r"-?\d+(\.\d+)?", text):
        return float(text)
    if re.fullmatch(r"\d{4}-\d\d-\d\d", text):
        try:
            return datetime.date.fromisoformat(text)
        except ValueError:
            raise click.UsageError(f"--where: {text} is not a date") from None
    is_quoted = len(text) > 1 and text[0] == text[-1] and text[0] in "\"'"
    return text[1:-1] if is_quoted else text
