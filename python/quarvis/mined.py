"""The results of a run: rules, item sets, and questions about them."""

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
    """The histories and the settings of a run."""

    histories: Histories
    options: _engine.Options
    window: Window
    splits: str
    thresholds: tuple[float, float, float]
    wants_rules: bool = True

    @property
    def has_times(self) -> bool:
        """Whether the histories have times, so that rules have an order."""
        return self.histories._columns.scale.type is not None


class Mined:
    """The rules and the item sets of a run; returned by `mine`.

    Selections such as `filter` and `top` return another `Mined` with some of the rules, so they can
    be chained. Frames belong to the library of the input; for files they are PyArrow tables.
    """

    def __init__(self, run: Run, found: _engine.Found, places: Places | None = None) -> None:
        self._run = run
        self._found = found
        self._places = np.arange(found.rule_count) if places is None else places

    # Results.

    @cached_property
    def rules(self) -> Any:
        """The rules as a frame, in the order of the tool's rules file unless `top` ordered them.

        `antecedents` and `consequents` are lists of items. All counts are numbers of histories.
        A is the set of antecedents, S that of consequents, N the number of all histories, and n(X)
        the number of histories that hold all items of X, at any times.

        - `count` is the number of histories in which the consequents newly follow the antecedents
          within the window. `ordered_support`, `ordered_confidence` and `ordered_lift` are
          count / N, count / n(A) and N count / (n(A) n(S)).
        - `support` is n(A u S) / N, `confidence` n(A u S) / n(A), `lift` N n(A u S) / (n(A) n(S))
          and `conviction` (1 - n(S) / N) / (1 - confidence); `reverse_confidence` is
          n(A u S) / n(S), and `certainty_odds` n(A u S) / (n(S) - n(A u S)).
        - `union_count`, `antecedent_count` and `consequent_count` are n(A u S), n(A) and n(S).

        Without times, the columns of the first group are left out.
        """
        return self._run.histories._frame(self.to_arrow())

    @cached_property
    def item_sets(self) -> Any:
        """All frequent item sets as a frame, in the order of the tool's item-set file.

        `items` is a list of items, `count` the number of histories that hold all of them, and
        `support` that number as a share of all histories.
        """
        return self._run.histories._frame(self._item_set_table)

    def to_arrow(self) -> pa.Table:
        """Return the rules as a PyArrow table, whatever the library of the input."""
        return self._table

    def __len__(self) -> int:
        """Return the number of rules."""
        return len(self._places)

    def summary(self) -> str:
        """Return a few lines about the settings and the results."""
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

    # Selections: results with some of the rules.

    def filter(
        self,
        *,
        antecedents: Sequence[str] | str | None = None,
        consequents: Sequence[str] | str | None = None,
        contains: Sequence[str] | str | None = None,
        **bounds: float,
    ) -> Mined:
        """Select the rules that pass all given conditions.

        Parameters
        ----------
        antecedents, consequents : str or sequence of str, optional
            Names or patterns of items. Every item of that side must match one of them.
        contains : str or sequence of str, optional
            Names or patterns of items. At least one item of the rule must match one of them.
        **bounds : float
            `min_` or `max_` followed by the name of a column or measure, such as ``min_lift=2`` or
            ``max_fisher_holm=0.05``. Bounds are inclusive, and a NaN fails.

        Returns
        -------
        Mined
            The selected rules.

        Raises
        ------
        DataError
            For an unknown column or measure, and for a pattern that matches no item.
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
        """Select the `n` rules with the greatest values of a column or measure, greatest first.

        With `ascending`, the least values come first. Rules with equal values keep their order; a
        NaN comes last.
        """
        n = whole_number("n", n, 0)
        values = self._values(by)[self._places]
        order = np.argsort(values if ascending else -values, kind="stable")
        return self._selected(self._places[order[:n]])

    def non_redundant(self, by: str = "confidence") -> Mined:
        """Leave out rules that a more general rule makes redundant.

        A rule is left out when these rules contain a second one with the same consequents, with
        fewer antecedents that all belong to the first, and with a value of `by` at least as great.
        `by` is a column or measure for which greater is better.
        """
        watch = _engine.Watch()
        marks = _engine.redundant(self._found, self._places, self._values(by), watch)
        return self._selected(self._places[marks == 0])

    def closed(self) -> Any:
        """Return the closed item sets: no set with one item more has the same count.

        A frame like `item_sets`. Only sets that were found are compared; with `max_items`, larger
        sets are unknown.
        """
        return self._some_sets("not_closed")

    def maximal(self) -> Any:
        """Return the maximal item sets: no set found has one item more. Like `item_sets`."""
        return self._some_sets("not_maximal")

    # Questions.

    def explain(self, rule: Any) -> Explanation:
        """Explain in which of the histories with all items of a rule it counts, and why not else.

        Parameters
        ----------
        rule : pair of item lists, or row
            For example ``(["bread"], ["butter"])``; or a row of a frame of rules, as a dictionary,
            a Series or a named tuple. The rule need not have been found.

        Raises
        ------
        DataError
            When `rule` is not a rule, when no history has one of its items, or when the histories
            have no times.
        """
        return explain(self._run, self._found.index, rule)

    def lags(self, *, threads: int | None = None) -> Any:
        """Return, for every rule, how long the consequents take to follow.

        The lag in a history is the time of the first transaction that counts for the rule, minus
        the time of the last antecedent before it.

        Parameters
        ----------
        threads : int, optional
            As for `mine`; by default the number of the run.

        Returns
        -------
        frame
            A row for each rule, in the order of `rules`: `antecedents`, `consequents` and `count`;
            the lags `least`, `median`, `percentile_90` and `greatest`; and `reverse_count`, the
            count of the rule with its sides exchanged. `median` and `percentile_90` are the least
            lags that half and nine tenths of the histories do not exceed. Lags are durations, or
            numbers in the unit of integer times.

        Raises
        ------
        DataError
            When the histories have no times.
        """
        if not self._run.has_times:
            raise DataError("these histories have no times, so nothing follows anything")
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
        """Return the rules with further measures as columns; without names, with all of them.

        `quarvis.measures.MEASURES` lists the measures.
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
        """Test whether the consequents follow more often than a random order would explain.

        The times are permuted among the transactions of each history, each permutation equally
        likely, and the rules are counted again. Items that occur together still do; only their
        order is random.

        Parameters
        ----------
        permutations : int
            The number of permutations. The least possible p-value is 1 / (permutations + 1).
        seed : int
            The seed of the random permutations, from 0 to 2^64 - 1. The same seed gives the same
            result, with any number of threads.
        threads, progress
            As for `mine`.

        Returns
        -------
        frame
            A row for each rule: `antecedents`, `consequents`, `count`, and these columns, each over
            the data and all permutations together:

            - `expected`, the mean of the count, and `deviation`, its standard deviation;
            - `p_value`, the share in which the rule counts at least as often as in the data;
            - `p_adjusted`, the share in which any rule that can be proposed from the item sets
              deviates at least as far. It bounds the probability of one or more false positives
              among all these rules (Westfall and Young 1993, single-step maxT);
            - `q_value`, `p_value` corrected for the false discovery rate over all proposed rules
              (Benjamini and Hochberg 1995).

        Raises
        ------
        DataError
            When the histories have no times, and for an argument out of range.

        Notes
        -----
        The statistic is the distance of the count from its mean in standard deviations, for rules
        that reach the least count, and otherwise 0. Selections such as `filter` do not reduce the
        number of rules that `p_adjusted` and `q_value` correct for. The test takes about
        `permutations` times as long as counting the rules.
        """
        if not self._run.has_times:
            raise DataError("these histories have no times, so nothing follows anything")
        permutations, seed = draws(permutations, seed)
        watch = _engine.Watch(progress_of(progress))
        columns = _engine.test_order(
            self._found, self._run.options, permutations, seed, self._threads(threads), watch,
        )
        return self._run.histories._frame(self._order_table(columns))

    def match(self, histories: Histories, *, now: Any = None) -> Any:
        """Apply the rules to other histories: what may follow next, and for whom.

        A rule matches a history when every antecedent occurred at `now` or before, within the
        window, and no consequent did.

        Parameters
        ----------
        histories : Histories
            Histories with times of the same kind as those that were mined.
        now : optional
            A point in time, in the type of the time column; by default the latest time of
            `histories`. Later rows are ignored.

        Returns
        -------
        frame
            A row for each entity and rule that matches, in this order: `entity`; `antecedents`;
            `consequents`; `antecedent_time`, the time of the last antecedent; and `rule`, the place
            of the rule in `rules`, from 0.

        Raises
        ------
        DataError
            When either of the histories has no times.
        """
        columns = histories._columns
        scale = columns.scale
        if not self._run.has_times or scale.type is None:
            raise DataError("match needs histories with times, both mined and given")
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
        """Make a page that shows the rules: one HTML file that loads nothing from a network.

        The page shows all rules in an overview and a table, explains each in plain words, and gives
        lags and the counts of the reverse rules.

        Parameters
        ----------
        title : str
            The title of the page.
        noun, nouns, verb : str
            The words of the sentences on the page: one "customer", several "customers", who
            "bought". `nouns` is by default `noun` with an "s".
        unit : str, optional
            The unit of times that are integers.
        dates : bool
            Whether integer times count from the beginning of 1970 (UTC); needs `unit`.
        histories : bool
            Whether the page includes the histories, for histograms of lags and for examples. Beyond
            a million occurrences of items, it includes a random sample of whole histories.
        names : bool
            Whether the page names the entities; otherwise it numbers them.

        Returns
        -------
        View
            Displays itself in a notebook; ``view.save("rules.html")`` writes it.

        Raises
        ------
        DataError
            For an unknown `unit`, and for `dates` without `unit`.
        """
        from quarvis.viewing import view_mined

        return view_mined(
            self, title=title, noun=noun, nouns=nouns, verb=verb, unit=unit, dates=dates,
            histories=histories, names=names,
        )

    # Files.

    def write_tsv(self, rules: PathLike, item_sets: PathLike | None = None) -> None:
        """Write the rules, and optionally the item sets, in the formats of the command-line tool.

        With ``splits="runs"`` and the same settings, the files have the same bytes as those that
        the tool writes for the same data. Rules are written in the order of the tool's rules file,
        even if `top` reordered them.

        Parameters
        ----------
        rules : path
            The rules file; an existing file is replaced.
        item_sets : path, optional
            The item-set file, likewise. None writes none.

        Raises
        ------
        OSError
            When a file cannot be opened or written.
        DataError
            When the histories have no times: the tool's rules need an order.
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
        """Return the result of `test_order` for these rules; `columns` are of all rules found."""
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
        """Return a column or a measure of all rules that were found, selected or not."""
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
        """Return, for each rule found, whether `mask`, by rank, marks all items of the side."""
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
