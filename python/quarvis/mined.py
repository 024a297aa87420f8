"""What a run found, and what can be asked of it."""

from __future__ import annotations

import errno
import html
import os
from collections.abc import Sequence
from dataclasses import dataclass
from functools import cached_property
from typing import Any

import numpy as np
import pyarrow as pa

from quarvis import _engine
from quarvis._columns import lists_of, names_of
from quarvis._times import Window
from quarvis.errors import DataError
from quarvis.histories import Histories

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
        sizes = np.diff(self._set_columns["items"][0])
        lines = [
            ("histories", f"{len(self._run.histories):,}"),
            ("least count", f"{options.min_count:,}"),
            ("window", "the whole past" if self._run.window is None else f"{self._run.window}"),
            ("item sets", f"{len(sizes):,}" + "".join(
                f", {count:,} of {size}"
                for size, count in enumerate(np.bincount(sizes)) if count and size
            )),
            ("rules", f"{len(self):,}"),
        ]
        if not self._run.has_times:
            lines[2] = ("times", "none, so rules have no order")
        return "\n".join(f"{name:<12} {text}" for name, text in lines)

    def __repr__(self) -> str:
        sets = len(self._set_columns["count"])
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

    @cached_property
    def _names(self) -> pa.Array:
        return names_of(*self._found.index.names())

    @cached_property
    def _rule_columns(self) -> dict[str, Any]:
        return self._found.rules()

    @cached_property
    def _set_columns(self) -> dict[str, Any]:
        return self._found.item_sets()

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

    @cached_property
    def _item_set_table(self) -> pa.Table:
        columns = self._set_columns
        return pa.table({
            "items": lists_of(columns["items"], self._names),
            "count": columns["count"],
            "support": columns["count"] / float(max(len(self._run.histories), 1)),
        })


def _cell(value: Any) -> str:
    if isinstance(value, Sequence) and not isinstance(value, str):
        return ", ".join(str(item) for item in value)
    return f"{value:.4g}" if isinstance(value, float) else str(value)
