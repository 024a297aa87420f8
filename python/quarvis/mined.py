"""What a run found, and what can be asked of it."""

from __future__ import annotations

import errno
import html
import os
from collections.abc import Sequence
from dataclasses import dataclass
from functools import cached_property
from typing import TYPE_CHECKING, Any, Literal

import numpy as np
import pyarrow as pa
import pyarrow.compute

from quarvis import _engine
from quarvis._arguments import draws, threshold, whole_number
from quarvis._columns import lists_of, names_of
from quarvis._patterns import matching
from quarvis._progress import Progress, progress_of
from quarvis._times import Window
from quarvis.errors import DataError
from quarvis.explanation import Explanation, explain
from quarvis.histories import Histories
from quarvis.measures import MEASURES, Counts, arrays, benjamini_hochberg

if TYPE_CHECKING:
    from quarvis.viewing import View

PathLike = str | os.PathLike[str]
Places = np.ndarray[Any, np.dtype[np.int64]]


@dataclass(frozen=True)
class Run:
    """What was mined, and how."""

    histories: Histories
    options: _engine.Options
    window: Window
    splits: str
    thresholds: tuple[float, float, float]
    wants_rules: bool = True

    @property
    def has_times(self) -> bool:
        """Whether rules have an order."""
        return self.histories._columns.scale.type is not None


class Mined:
    """The rules and the item sets of a run; made by `mine`.

    Selections such as `filter` and `top` give another `Mined` with some of the rules, so that they
    can be chained. Frames are those of the library of the input; for files they are PyArrow tables.
    """

    def __init__(self, run: Run, found: _engine.Found, places: Places | None = None) -> None:
        self._run = run
        self._found = found
        self._places = np.arange(found.rule_count) if places is None else places

    # What was found.

    @cached_property
    def rules(self) -> Any:
        """The rules as a frame, in the order of the tool's rules file unless `top` ordered them.

        `antecedents` and `consequents` are lists of items. Counts are numbers of histories, and
        n(X) is the number of those that hold all of X at whatever times:

        - `count`: those in which the consequents newly follow the antecedents within the window;
          `ordered_support`, `ordered_confidence` and `ordered_lift` are count / N,
          count / n(A) and N count / (n(A) n(S));
        - `support`, n(A u S) / N; `confidence`; `lift`; `conviction`; `reverse_confidence`,
          n(A u S) / n(S); `certainty_odds`, n(A u S) / (n(S) - n(A u S));
        - `union_count`, `antecedent_count` and `consequent_count`: n(A u S), n(A) and n(S).

        Without times there is no order, and the columns that need it are left out.
        """
        return self._run.histories._frame(self.to_arrow())

    @cached_property
    def item_sets(self) -> Any:
        """All frequent item sets as a frame, in the order of the tool's item-set file.

        `items` is a list, `count` the number of histories that hold them, `support` its share.
        """
        return self._run.histories._frame(self._item_set_table)

    def to_arrow(self) -> pa.Table:
        """Give the rules as a PyArrow table, whatever the library of the input."""
        return self._table

    def __len__(self) -> int:
        """The number of rules."""
        return len(self._places)

    def summary(self) -> str:
        """Tell in a few lines what was mined and found."""
        options = self._run.options
        sizes = self._found.set_counts()
        lines = [
            ("histories", f"{len(self._run.histories):,}"),
            ("least count", f"{options.min_count:,}"),
            ("window", "the whole past" if self._run.window is None else f"{self._run.window}"),
            ("item sets", f"{sum(sizes):,}" + "".join(
                f", {count:,} of {size}" for size, count in enumerate(sizes, 1) if count
            )),
            ("rules", f"{len(self):,}"),
        ]
        if not self._run.has_times:
            lines[2] = ("times", "none, so rules have no order")
        return "\n".join(f"{name:<12} {text}" for name, text in lines)

    def __repr__(self) -> str:
        sets = self._found.set_count
        return f"<quarvis.Mined: {len(self):,} rules, {sets:,} item sets>"

    def _repr_html_(self) -> str:
        shown = self._table.select(self._table.column_names[:8]).slice(0, 10)
        head = "".join(f"<th>{html.escape(name)}</th>" for name in shown.column_names)
        body = "".join(
            "<tr>" + "".join(f"<td>{html.escape(_cell(value))}</td>" for value in row.values())
            + "</tr>"
            for row in shown.to_pylist()
        )
        return (
            f"<pre>{html.escape(self.summary())}</pre>"
            f"<table><tr>{head}</tr>{body}</table>"
        )

    # Selections, which give a run with some of the rules.

    def filter(
        self,
        *,
        antecedents: Sequence[str] | str | None = None,
        consequents: Sequence[str] | str | None = None,
        contains: Sequence[str] | str | None = None,
        **bounds: float,
    ) -> Mined:
        """Give the rules that pass.

        Parameters
        ----------
        antecedents, consequents : str or sequence of str, optional
            Names or patterns of items; every item of that side must match one.
        contains : str or sequence of str, optional
            Names or patterns of items; some item of either side must match one.
        **bounds : float
            `min_` or `max_` and the name of a column or of a measure, such as ``min_lift=2`` or
            ``max_fisher_holm=0.05``; inclusive, and a NaN passes none.
        """
        keep = np.ones(self._found.rule_count, bool)
        for bound, value in bounds.items():
            kind, _, name = bound.partition("_")
            if kind not in ("min", "max"):
                raise DataError(f"{bound}=...: bounds begin with min_ or max_")
            values = self._values(name)
            keep &= values >= threshold(bound, value) if kind == "min" else (
                values <= threshold(bound, value)
            )
        for side, patterns in (("antecedents", antecedents), ("consequents", consequents)):
            if patterns is not None:
                keep &= self._all_in(side, self._matching(patterns, side))
        if contains is not None:
            mask = self._matching(contains, "contains")
            keep &= ~(self._all_in("antecedents", ~mask) & self._all_in("consequents", ~mask))
        return self._selected(self._places[keep[self._places]])

    def top(self, n: int, by: str = "lift", *, ascending: bool = False) -> Mined:
        """Give the first `n` rules by a column or a measure, the greatest values first.

        Rules of equal values keep their order; a NaN comes last.
        """
        n = whole_number("n", n, 0)
        values = self._values(by)[self._places]
        order = np.argsort(values if ascending else -values, kind="stable")
        return self._selected(self._places[order[:n]])

    def non_redundant(self, by: str = "confidence") -> Mined:
        """Leave out rules that a more general one makes superfluous.

        A rule is left out when these rules have another one with the same consequents, whose
        antecedents are some, but not all, of its own, and whose value of `by` (a column or a
        measure, greater is better) is at least as great.
        """
        watch = _engine.Watch()
        marks = _engine.redundant(self._found, self._places, self._values(by), watch)
        return self._selected(self._places[marks == 0])

    def closed(self) -> Any:
        """Give the item sets that no set found extends by an item with as many histories.

        A frame like `item_sets`. With `max_items`, larger sets are not known and do not count.
        """
        return self._some_sets("not_closed")

    def maximal(self) -> Any:
        """Give the item sets that no set found extends; a frame like `item_sets`."""
        return self._some_sets("not_maximal")

    # Questions.

    def explain(self, rule: Any) -> Explanation:
        """Tell how each history with all items of a rule counts for it, or why it does not.

        Parameters
        ----------
        rule : pair of item lists, or row
            ``(["bread"], ["butter"])``, or a row of a frame of rules: a dictionary, a Series, a
            named tuple. The rule need not have been found.

        Raises
        ------
        DataError
            For what is no rule, for items that nobody has, and without times.
        """
        return explain(self._run, self._found.index, rule)

    def lags(self, *, threads: int | None = None) -> Any:
        """Tell how long the consequents take to follow, for every rule at once.

        The lag of a history is the time of the first transaction in which the rule counts less the
        time at which the last antecedent had occurred before.

        Returns
        -------
        frame
            A row for each rule: `antecedents`, `consequents`, `count`; `least`, `median` and
            `percentile_90`, the least lags that half and nine tenths of the histories do not
            exceed, `greatest`, and `reverse_count`, the count of the rule with its sides exchanged.
            Lags are durations, or numbers in the unit of integer times.
        """
        if not self._run.has_times:
            raise DataError("nothing follows anything here: these histories have no times")
        watch = _engine.Watch()
        columns = _engine.lags(
            self._found, self._places, self._run.options.window, self._threads(threads), watch,
        )
        scale = self._run.histories._columns.scale
        none = np.zeros(len(self._places), bool)
        names = {"least": "least", "median": "median", "percentile90": "percentile_90",
                 "greatest": "greatest"}
        table = self._table.select(["antecedents", "consequents", "count"])
        for old, new in names.items():
            table = table.append_column(new, scale.decode_lengths(columns[old], none))
        table = table.append_column("reverse_count", pa.array(columns["reverse_count"]))
        return self._run.histories._frame(table)

    def measures(self, *names: str) -> Any:
        """Give the rules with further measures as columns; without names all of them.

        See `quarvis.measures` for what there is.
        """
        table = self._table
        for name, values in arrays(self._counts, names or None).items():
            if name not in table.column_names:
                table = table.append_column(name, pa.array(values[self._places]))
        return self._run.histories._frame(table)

    def test_order(
        self, *, permutations: int = 999, seed: int = 0, threads: int | None = None,
        progress: Progress = False,
    ) -> Any:
        """Test whether the consequents follow more often than order by chance explains.

        The times are permuted among the transactions of each history, each order equally likely,
        and the rules recounted. What goes together stays as it is; only the order is lost.

        Parameters
        ----------
        permutations : int
            How many; the least p-value is 1 / (permutations + 1).
        seed : int
            Of the draws, from 0 to 2^64 - 1. The same seed gives the same result, with any number
            of threads.
        threads, progress
            As for `mine`.

        Returns
        -------
        frame
            A row for each rule: `antecedents`, `consequents`, `count`; `expected`, its mean over
            the data and all permutations, and `deviation`, the standard deviation; `p_value`, the
            share of these in which the rule counts at least as often; `p_adjusted`, the share in
            which any rule that can be proposed of the item sets stands out at least as far, which
            bounds the chance of one false find or more among all of them (Westfall and Young 1993,
            maximum statistic, single step); and `q_value`, `p_value` corrected for the share of
            false finds (Benjamini and Hochberg 1995) over everything proposed.

        Notes
        -----
        The statistic is the distance from the mean in standard deviations, for rules that have the
        least count. Selections such as `filter` do not make the family smaller. It takes about as
        long as counting the rules so many times.
        """
        if not self._run.has_times:
            raise DataError("nothing follows anything here: these histories have no times")
        permutations, seed = draws(permutations, seed)
        watch = _engine.Watch(progress_of(progress))
        columns = _engine.test_order(
            self._found, self._run.options, permutations, seed, self._threads(threads), watch,
        )
        return self._run.histories._frame(self._order_table(columns))

    def match(self, histories: Histories, *, now: Any = None) -> Any:
        """Tell which rules are met in other histories: what may follow next, and for whom.

        A rule is met when every antecedent occurred at `now` or before it, within the window, and
        no consequent did.

        Parameters
        ----------
        histories : Histories
            With times of the same kind as those that were mined.
        now : optional
            A point in time, as the column of the times has them; by default the last one of
            `histories`. Later rows do not count.

        Returns
        -------
        frame
            `entity`, `antecedents`, `consequents`, `antecedent_time` at which the last antecedent
            occurred, and `rule`, the place of the rule in `rules`; by entity and rule.
        """
        columns = histories._columns
        scale = columns.scale
        if not self._run.has_times or scale.type is None:
            raise DataError("match needs times on both sides")
        window = scale.window(self._run.window)
        instant = scale.last if now is None else scale.encode(now)
        ranks = pa.compute.index_in(columns.item_names, self._names)
        known = np.append(ranks.is_valid().to_numpy(zero_copy_only=False), False)
        numbers = np.append(ranks.fill_null(0).to_numpy().astype(np.uint32), np.uint32(0))
        code = np.minimum(columns.items, np.uint32(len(columns.item_names)))
        keep = known[code] & (instant >= 0)
        met = _engine.match(
            self._found, self._places, columns.entities.codes[keep],
            columns.times[keep].astype(np.uint64), numbers[code[keep]], max(instant, 0), window,
            _engine.Watch(),
        )
        rules = self._table.take(pa.array(met["place"]))
        none = np.zeros(len(met["place"]), bool)
        return self._run.histories._frame(pa.table({
            "entity": columns.entities.values.take(pa.array(met["history"])),
            "antecedents": rules.column("antecedents"),
            "consequents": rules.column("consequents"),
            "antecedent_time": scale.decode(met["complete"], none),
            "rule": met["place"],
        }))

    def view(
        self,
        *,
        title: str = "Rules",
        noun: str = "history",
        nouns: str | None = None,
        verb: str = "had",
        unit: Literal["days", "hours", "minutes", "seconds", "milliseconds"] | None = None,
        dates: bool = False,
        histories: bool = True,
        names: bool = True,
    ) -> View:
        """Make a page of the rules that opens anywhere: one file, nothing from a network.

        It shows all rules in an overview and a table, tells each in plain words, and has lags and
        the counts of the reverse rules.

        Parameters
        ----------
        title : str
            Of the page.
        noun, nouns, verb : str
            The words of its sentences: one "customer", several "customers", who "bought".
        unit : str, optional
            The unit of times that are numbers.
        dates : bool
            Whether such times count from the beginning of 1970 (UTC); needs `unit`.
        histories : bool
            Whether the page has the histories, so that it shows histograms of lags and examples.
            Of more than a million occurrences of items, whole histories are drawn at random.
        names : bool
            Whether it names the entities; else they are numbered.

        Returns
        -------
        View
            It shows itself in a notebook; ``view.save("rules.html")`` writes it.
        """
        from quarvis.viewing import view_mined

        return view_mined(
            self, title=title, noun=noun, nouns=nouns, verb=verb, unit=unit, dates=dates,
            histories=histories, names=names,
        )

    # Files.

    def write_tsv(self, rules: PathLike, item_sets: PathLike | None = None) -> None:
        """Write the files of the command-line tool.

        With ``splits="runs"`` and the same settings they have the bytes that the tool writes for
        the same data. The rules are written in the order of the file, whatever `top` made of it.

        Parameters
        ----------
        rules : path
            Where the rules go; what is there is replaced.
        item_sets : path, optional
            Where the item sets go; None writes none.

        Raises
        ------
        OSError
            When a file cannot be opened or written.
        DataError
            When the histories have no times, so that the rules are none of the tool.
        """
        if not self._run.has_times:
            raise DataError("the tool's rules have an order, and these histories have no times")
        keep = np.zeros(self._found.rule_count, np.uint8)
        keep[self._places] = 1
        self._write(rules, True, None if keep.all() else keep)
        if item_sets is not None:
            self._write(item_sets, False, None)

    def _write(self, path: PathLike, rules: bool, keep: Any) -> None:
        name = os.fspath(path)
        try:
            self._found.write(name, rules, keep)
        except OSError as error:
            number = error.errno or errno.EIO
            raise OSError(number, os.strerror(number), name) from None

    # Tables.

    def _order_table(self, columns: dict[str, Any]) -> pa.Table:
        """Give the columns of a test of the order, of which there is one value a rule found."""
        q_values = benjamini_hochberg(columns["p"], int(columns["proposed"]))
        table = self._table.select(["antecedents", "consequents", "count"])
        for name, values in (
            ("expected", columns["mean"]), ("deviation", columns["deviation"]),
            ("p_value", columns["p"]), ("p_adjusted", columns["p_max"]), ("q_value", q_values),
        ):
            table = table.append_column(name, pa.array(values[self._places]))
        return table

    @cached_property
    def _names(self) -> pa.Array:
        return names_of(*self._found.index.names())

    @cached_property
    def _rule_columns(self) -> dict[str, Any]:
        return self._found.rules(_engine.Watch())

    @cached_property
    def _table(self) -> pa.Table:
        columns = self._rule_columns
        table = pa.table({
            "antecedents": lists_of(columns["antecedents"], self._names),
            "consequents": lists_of(columns["consequents"], self._names),
            **self._measures(),
        })
        if len(self._places) == table.num_rows and np.array_equal(
            self._places, np.arange(table.num_rows)
        ):
            return table
        return table.take(pa.array(self._places))

    def _measures(self) -> dict[str, Any]:
        columns = self._rule_columns
        counts = {
            name: columns[name].astype(np.float64)
            for name in ("count", "union_count", "antecedent_count", "consequent_count")
        }
        total = float(len(self._run.histories))
        ordered = {}
        if self._run.has_times:
            confidence = counts["count"] / counts["antecedent_count"]
            ordered = {
                "count": columns["count"],
                "ordered_support": columns["support"],
                "ordered_confidence": confidence,
                "ordered_lift": total * counts["count"]
                / (counts["antecedent_count"] * counts["consequent_count"]),
            }
        return {
            **ordered,
            "support": counts["union_count"] / total,
            "confidence": columns["confidence"],
            "lift": columns["lift"],
            "conviction": columns["conviction"],
            "reverse_confidence": columns["probability"],
            "certainty_odds": columns["certainty"],
            "union_count": columns["union_count"],
            "antecedent_count": columns["antecedent_count"],
            "consequent_count": columns["consequent_count"],
        }

    def _threads(self, threads: int | None) -> int:
        return self._run.options.threads if threads is None else whole_number("threads", threads, 1)

    def _selected(self, places: Places) -> Mined:
        return Mined(self._run, self._found, places)

    def _values(self, name: str) -> Any:
        """A column or a measure of all rules that were found."""
        own = self._measures()
        if name in own:
            return np.asarray(own[name], np.float64)
        if name not in MEASURES:
            raise DataError(
                f"there is no column or measure {name!r}; there are "
                + ", ".join(dict.fromkeys((*own, *MEASURES)))
            )
        return arrays(self._counts, [name])[name]

    @cached_property
    def _counts(self) -> Counts:
        columns = self._rule_columns
        a, s, u, ordered = (
            columns[name].astype(np.float64)
            for name in ("antecedent_count", "consequent_count", "union_count", "count")
        )
        n = float(len(self._run.histories))
        return Counts(n, a, s, u, ordered if self._run.has_times else None)

    def _matching(self, patterns: Sequence[str] | str, role: str) -> Any:
        return matching(self._names.to_pylist(), patterns, role)

    def _all_in(self, side: str, mask: Any) -> Any:
        """By rule: whether all items of the side are marked, by rank."""
        offsets, ranks = self._rule_columns[side]
        if len(offsets) == 1:
            return np.ones(0, bool)
        return np.logical_and.reduceat(mask[ranks], offsets[:-1])

    def _some_sets(self, mark: str) -> Any:
        keep = (self._found.extensions(_engine.Watch())[mark] == 0).astype(np.uint8)
        return self._run.histories._frame(self._sets_table(keep))

    @cached_property
    def _item_set_table(self) -> pa.Table:
        return self._sets_table(None)

    def _sets_table(self, keep: Any) -> pa.Table:
        columns = self._found.item_sets(keep, _engine.Watch())
        return pa.table({
            "items": lists_of(columns["items"], self._names),
            "count": columns["count"],
            "support": columns["count"] / float(max(len(self._run.histories), 1)),
        })


def _cell(value: Any) -> str:
    if isinstance(value, Sequence) and not isinstance(value, str):
        return ", ".join(str(item) for item in value)
    return f"{value:.4g}" if isinstance(value, float) else str(value)
