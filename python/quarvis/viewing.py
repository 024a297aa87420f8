"""Makes a self-contained page that shows rules."""

from __future__ import annotations

import errno
import html
import os
from dataclasses import replace
from pathlib import Path
from typing import TYPE_CHECKING, Any, Literal

import numpy as np
import pyarrow as pa

from quarvis import _engine
from quarvis._times import TimeScale, Window
from quarvis._view import _files
from quarvis._view._histories import PageHistories, pack
from quarvis._view._page import About, TimeUnit, Words, render
from quarvis._view._rules import PageRules, RulesBuilder
from quarvis.errors import DataError
from quarvis.histories import Histories
from quarvis.reading import read_transactions
from quarvis.writing import write_whole

if TYPE_CHECKING:
    from quarvis.mined import Mined

PathLike = str | os.PathLike[str]
Unit = Literal["days", "hours", "minutes", "seconds", "milliseconds"]

MOST_OCCURRENCES = 1_000_000
"""The most occurrences of items in the histories of a page. Beyond it, the page has a random sample
of the histories."""

_UNITS: dict[str, float] = {
    "days": 86400.0, "hours": 3600.0, "minutes": 60.0, "seconds": 1.0, "milliseconds": 1e-3,
}
_PROVED = 25  # the number of rules that `_prove` counts again


class View:
    """A page that shows rules: one HTML file that loads nothing from a network.

    It displays itself in a notebook; `save` writes it.
    """

    def __init__(self, text: str) -> None:
        self._text = text

    @property
    def html(self) -> str:
        """The page as text."""
        return self._text

    def save(self, path: PathLike, *, force: bool = False) -> None:
        """Write the page.

        Parameters
        ----------
        path : path
            The file to write.
        force : bool
            Whether to replace an existing file.

        Raises
        ------
        FileExistsError
            When the file exists and `force` is False.
        OSError
            When the file cannot be written.
        """
        if not force and Path(path).exists():
            raise FileExistsError(errno.EEXIST, os.strerror(errno.EEXIST), os.fspath(path))
        write_whole(Path(path), lambda file: file.write(self._text.encode()))

    def __repr__(self) -> str:
        return f"<quarvis.View: {len(self._text.encode()):,} bytes>"

    def _repr_html_(self) -> str:
        # A sandboxed frame has an opaque origin, so the page cannot access the notebook.
        return (
            f'<iframe srcdoc="{html.escape(self._text)}" title="Rules" width="100%" height="900" '
            'sandbox="allow-scripts allow-downloads allow-modals" style="border:0"></iframe>'
        )


def view(
    rules: PathLike,
    *,
    item_sets: PathLike | None = None,
    histories: PathLike | Histories | None = None,
    window: Window | Literal["unknown"] = "unknown",
    unit: Unit | None = None,
    dates: bool = False,
    title: str | None = None,
    noun: str = "history",
    nouns: str | None = None,
    verb: str = "had",
    names: bool = True,
) -> View:
    """Make a page from a file of rules.

    Parameters
    ----------
    rules : path
        The tool's rules file or, with the ending .parquet, the rules of a `Mined`.
    item_sets : path, optional
        The tool's item-set file. With it, names that contain commas are read correctly.
    histories : path or Histories, optional
        The histories that the rules were mined from: the tool's transaction file, or an object. The
        page then has lags, reverse counts and examples. Requires `window`.
    window : str, int, timedelta or None
        The window of the run: a length of time, or a number in the unit of the times; None means
        the whole past. A file of rules does not contain it.
    unit : str, optional
        The unit of integer times.
    dates : bool
        Whether integer times count from the beginning of 1970 (UTC); needs `unit`.
    title : str, optional
        The title of the page; by default made from the name of the file.
    noun, nouns, verb : str
        The words of the sentences on the page: one "customer", several "customers", who "bought".
        `nouns` is by default `noun` with an "s".
    names : bool
        Whether the page names the entities of its histories; otherwise it numbers them.

    Returns
    -------
    View
        The page.

    Raises
    ------
    DataError
        When a file does not have its format, when an argument is missing or out of range, or when
        the counts of the rules do not agree with the histories.
    OSError
        When a file cannot be read.
    """
    _check_unit(unit, dates)
    if histories is not None and window == "unknown":
        raise DataError("histories need the window of the run: give window, None for none")
    table = _read_rules(rules, item_sets)
    if histories is not None and not isinstance(histories, Histories):
        histories = read_transactions(histories)
    scale = TimeScale(None) if histories is None else histories._columns.scale
    time = _unit_of(scale, unit, dates)
    units = None if window == "unknown" else _window_units(window, scale, unit)
    packed = None
    if histories is not None and units is not None:
        _prove(table, histories, units)
        table = replace(table, total=len(histories), approximate=False)
        packed = pack(histories, table, names=names, most=MOST_OCCURRENCES)
    about = About(
        title=title or f"Rules of {Path(rules).name}",
        words=_words(noun, nouns, verb),
        time=time,
        window=units if table.count is not None else None,
        notes=_notes(table),
    )
    return View(render(table, about, packed))


def view_mined(
    mined: Mined, *, title: str, noun: str, nouns: str | None, verb: str, unit: Unit | None,
    dates: bool, histories: bool, names: bool,
) -> View:
    """Make a page from the result of a run; see `Mined.view`."""
    _check_unit(unit, dates)
    run = mined._run
    table = _rules_of(mined)
    packed: PageHistories | None = None
    if run.has_times and len(mined):
        lags = _engine.lags(
            mined._found, mined._places, run.options.window, run.options.threads, _engine.Watch()
        )
        table.extra.update(
            reverseCount=lags["reverse_count"], lagLeast=lags["least"], lagMedian=lags["median"],
            lag90=lags["percentile90"], lagGreatest=lags["greatest"],
        )
        if histories:
            packed = pack(run.histories, table, names=names, most=MOST_OCCURRENCES)
    about = About(
        title=title,
        words=_words(noun, nouns, verb),
        time=_unit_of(run.histories._columns.scale, unit, dates),
        window=run.options.window if run.has_times else None,
        min_count=run.options.min_count,
    )
    return View(render(table, about, packed))


def _words(noun: str, nouns: str | None, verb: str) -> Words:
    return Words(noun, nouns or ("histories" if noun == "history" else f"{noun}s"), verb)


def _check_unit(unit: Unit | None, dates: bool) -> None:
    if unit is not None and unit not in _UNITS:
        raise DataError(f"unit={unit!r}: give one of {', '.join(_UNITS)}")
    if dates and unit is None:
        raise DataError("dates=True needs the unit that times count in: give unit")


def _unit_of(scale: TimeScale, unit: Unit | None, dates: bool) -> TimeUnit:
    """Return the meaning of the times on the page, which are engine times."""
    if scale.nanoseconds is not None:
        seconds = scale.nanoseconds / 1e9
        return TimeUnit(seconds * scale.step, scale.origin * seconds)
    if unit is None:
        return TimeUnit(first=scale.origin)
    origin = scale.origin * _UNITS[unit] if dates else None
    return TimeUnit(_UNITS[unit], origin, scale.origin)


def _window_units(window: Window, scale: TimeScale, unit: Unit | None) -> int:
    """Return a window in units of the times; 0 means the whole past."""
    if window is None:
        return 0
    if isinstance(window, int) and not isinstance(window, bool) and window >= 0:
        return window
    if scale.nanoseconds is None and unit is not None:
        scale = TimeScale(pa.int64(), nanoseconds=round(_UNITS[unit] * 1e9))
    return scale.window(window)


def _notes(table: PageRules) -> tuple[str, ...]:
    if not table.approximate:
        return ()
    return (
        "The file has measures with six digits, so several numbers of histories are possible; "
        "the page shows one of them.",
    )


def _read_rules(path: PathLike, item_sets: PathLike | None) -> PageRules:
    if os.fspath(path).endswith(".parquet"):
        return _from_table(os.fspath(path))
    sets = None if item_sets is None else _files.read_item_sets(item_sets)
    return _files.read_rules(path, sets)


def _from_table(name: str) -> PageRules:
    import pyarrow.parquet

    needed = ["antecedents", "consequents", "union_count", "antecedent_count", "consequent_count",
              "support"]
    table = pyarrow.parquet.read_table(name)
    lacking = [column for column in needed if column not in table.column_names]
    if lacking:
        raise DataError(f"{name} is not a file of rules: it lacks the column {lacking[0]!r}")
    builder = RulesBuilder()
    sides = {}
    for column in ("antecedents", "consequents"):
        sides[column] = np.array(
            [builder.side(tuple(items)) for items in table.column(column).to_pylist()], np.int64
        )
    numbers = {
        column: table.column(column).to_numpy()
        for column in (*needed[2:], "count") if column in table.column_names
    }
    set_counts = np.zeros(len(builder.sides), np.int64)
    set_counts[sides["antecedents"]] = numbers["antecedent_count"]
    set_counts[sides["consequents"]] = numbers["consequent_count"]
    rounded = numbers["union_count"] / numbers["support"]
    return builder.build(
        total=round(float(rounded[0])) if len(rounded) else 0,
        set_counts=set_counts,
        antecedent=sides["antecedents"],
        consequent=sides["consequents"],
        union_count=numbers["union_count"],
        count=numbers.get("count"),
    )


def _rules_of(mined: Mined) -> PageRules:
    columns = mined._rule_columns
    places = mined._places
    sides: dict[bytes, int] = {}
    members: list[Any] = []
    chosen: dict[str, Any] = {}
    for column in ("antecedents", "consequents"):
        offsets, ranks = columns[column]
        raw = np.ascontiguousarray(ranks, np.uint32)
        ids = np.empty(len(places), np.int64)
        for at, place in enumerate(places):
            side = raw[offsets[place] : offsets[place + 1]]
            ids[at] = sides.setdefault(side.tobytes(), len(sides))
            if len(sides) > len(members):
                members.append(side)
        chosen[column] = ids
    set_counts = np.zeros(len(sides), np.int64)
    set_counts[chosen["antecedents"]] = columns["antecedent_count"][places]
    set_counts[chosen["consequents"]] = columns["consequent_count"][places]
    flat = np.concatenate(members) if members else np.empty(0, np.uint32)
    ranks, set_items = np.unique(flat, return_inverse=True)
    return PageRules(
        total=len(mined._run.histories),
        items=mined._names.take(pa.array(ranks)).to_pylist(),
        set_begin=np.cumsum([0, *(len(side) for side in members)]),
        set_items=set_items,
        set_count=set_counts,
        antecedent=chosen["antecedents"],
        consequent=chosen["consequents"],
        union_count=columns["union_count"][places],
        count=columns["count"][places] if mined._run.has_times else None,
        item_count=mined._found.index.counts()[ranks],
        item_sets=mined._found.set_count,
    )


def _prove(table: PageRules, histories: Histories, window: int) -> None:
    """Count some rules again in the histories; raise `DataError` when a count differs.

    With a different window or file, the page would show lags that do not belong to its rules.
    """
    if len(histories) != table.total and not table.approximate and len(table):
        raise DataError(
            f"the rules come from {table.total:,} histories, but there are {len(histories):,}: "
            "give the histories that the rules were mined from"
        )
    if table.count is None or not len(table):
        return
    index = histories._index_of(1, _engine.Watch())
    names = {name: rank for rank, name in enumerate(_rank_names(index))}
    for rule in np.linspace(0, len(table) - 1, min(_PROVED, len(table))).astype(int):
        sides = [
            [table.items[item] for item in table.set_items[
                table.set_begin[side] : table.set_begin[side + 1]]]
            for side in (table.antecedent[rule], table.consequent[rule])
        ]
        unknown = [item for side in sides for item in side if item not in names]
        if unknown:
            raise DataError(
                f"no history has the item {unknown[0]!r}: give the histories that the rules "
                "were mined from, or the item-set file when the name has a comma"
            )
        ranks = [np.array([names[item] for item in side], np.uint32) for side in sides]
        found = int(_engine.explain(index, ranks[0], ranks[1], window)["count"])
        if found != table.count[rule]:
            text = " => ".join(", ".join(side) for side in sides)
            raise DataError(
                f"{text} counts in {int(table.count[rule]):,} histories according to the rules, "
                f"but in {found:,} with these histories and a window of {window:,} units: give "
                "the window of the run"
            )


def _rank_names(index: _engine.Index) -> list[str]:
    from quarvis._columns import names_of

    names: list[str] = names_of(*index.names()).to_pylist()
    return names
