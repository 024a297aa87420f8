"""The results of a run in a cluster, as Spark frames."""

from __future__ import annotations

import os
from dataclasses import dataclass
from functools import cached_property
from types import SimpleNamespace
from typing import Any

import numpy as np
import pyarrow as pa

import quarvis.mined as local
from quarvis import _engine
from quarvis._columns import string_buffers
from quarvis._progress import Progress, progress_of
from quarvis._times import TimeScale, Window
from quarvis.errors import DataError
from quarvis.explanation import Explanation
from quarvis.spark import _questions, _work
from quarvis.spark._jobs import Jobs
from quarvis.spark._levels import sets_found
from quarvis.spark._rows import Source
from quarvis.spark._shards import Shards

PathLike = str | os.PathLike[str]

#: The most rules or sets that the driver turns into rows; beyond it, executors do.
ROWS_AT_DRIVER = 100_000

#: The number of rules or sets in each partition that executors make.
_ROWS_OF_PART = 250_000


@dataclass(frozen=True)
class Setup:
    """The data and the settings of a run."""

    jobs: Jobs
    source: Source
    drops: bool
    shards: Shards
    names: pa.Array
    scale: TimeScale
    window: Window
    splits: str
    options: _engine.Options
    thresholds: tuple[float, float, float]
    sides: _work.Sides | None
    wants_rules: bool

    @property
    def has_times(self) -> bool:
        """Whether the histories have times, so that rules have an order."""
        return self.scale.type is not None


class Mined:
    """The rules and the item sets of a run in a cluster; returned by `mine`.

    The executors keep the shards of the histories until `unpersist`, so questions need not read the
    rows again.
    """

    def __init__(self, setup: Setup, run: _engine.LevelRun) -> None:
        self._setup = setup
        self._run = run

    @cached_property
    def rules(self) -> Any:
        """The rules as a Spark frame, with the columns of `quarvis.Mined.rules`.

        Counts are 64-bit integers. The rows have no order.
        """
        if self._is_small(self._run.rule_count):
            return self._frame(self.collect().to_arrow())
        return self._in_parts("rules", self._run.rule_count)

    @cached_property
    def item_sets(self) -> Any:
        """The frequent item sets as a Spark frame: `items`, `count` and `support`."""
        sets = sets_found(self._run)
        if self._is_small(sets):
            return self._frame(self.collect().item_sets)
        return self._in_parts("item_sets", sets)

    def collect(self) -> Collected:
        """Bring the results into this process, as an object like that of `quarvis.mine`.

        Its frames are PyArrow tables. Questions that need the histories still run in the cluster.
        """
        return self._collected

    @cached_property
    def _collected(self) -> Collected:
        setup = self._setup
        parts = Parts.of(setup)
        found = parts.found(self._run)
        if setup.sides is not None:
            found = _questions.with_sides(setup, found)
        return Collected(parts.local_run(setup.options, setup.window), found, cluster=self)

    def explain(self, rule: Any) -> Explanation:
        """Explain in which of the histories with all items of a rule it counts, and why not else.

        The same as `quarvis.Mined.explain`, but `histories` is a Spark frame.
        """
        with self._setup.jobs.interruptible():
            return _questions.explain(self._setup, rule)

    def test_order(
        self, *, permutations: int = 999, seed: int = 0, progress: Progress = False
    ) -> Any:
        """Test whether the consequents follow more often than a random order would explain.

        The same as `quarvis.Mined.test_order`, but the result is a Spark frame. The numbers equal
        those of one machine for the same rows sorted by entity, since the permutation of a history
        depends on its number.
        """
        tested = self._tested(self.collect(), permutations, seed, progress)
        return self._frame(tested)

    def _tested(
        self, collected: Collected, permutations: int, seed: int, progress: Progress
    ) -> pa.Table:
        with self._setup.jobs.interruptible():
            return _questions.test_order(
                self._setup, self._run, collected, permutations, seed, progress_of(progress)
            )

    def write(self, rules: PathLike, item_sets: PathLike | None = None) -> None:
        """Write the rules and the item sets as Parquet files, from the executors.

        Parameters
        ----------
        rules, item_sets : path
            A folder for each, as a path or URL of Spark; an existing folder is replaced. Without
            `item_sets`, only the rules are written.
        """
        self.rules.write.mode("overwrite").parquet(os.fspath(rules))
        if item_sets is not None:
            self.item_sets.write.mode("overwrite").parquet(os.fspath(item_sets))

    def unpersist(self) -> None:
        """Release the shards on the executors; later questions build them again."""
        self._setup.shards.unpersist()

    def __len__(self) -> int:
        """Return the number of rules."""
        return len(self.collect())

    def __repr__(self) -> str:
        return f"<quarvis.spark.Mined: {self._run.rule_count:,} rules before thresholds>"

    def _is_small(self, rows: int) -> bool:
        return (
            rows <= ROWS_AT_DRIVER or self._setup.sides is not None or not self._setup.has_times
        )

    def _frame(self, table: pa.Table) -> Any:
        plain = spark_table(table)
        return self._setup.jobs.session.createDataFrame(plain, _ddl(plain.schema))

    def _in_parts(self, what: str, rows: int) -> Any:
        parts = -(-rows // _ROWS_OF_PART)
        some = Parts.of(self._setup)
        empty = some.rows(_empty_run(self._setup), what, 0, 1)
        work = make_rows(some, bytes(self._run.to_bytes()), what, parts)
        session = self._setup.jobs.session
        return session.range(0, parts, 1, parts).mapInArrow(work, _ddl(empty.schema))


@dataclass(frozen=True)
class Parts:
    """What executors need to turn the results of a run into rows."""

    names: pa.Array
    counts: Any
    histories: int
    scale: TimeScale
    splits: str
    thresholds: tuple[float, float, float]
    wants_rules: bool

    @classmethod
    def of(cls, setup: Setup) -> Parts:
        """Return the parts of a run."""
        return cls(
            setup.names, setup.shards.counts, setup.shards.histories, setup.scale, setup.splits,
            setup.thresholds, setup.wants_rules,
        )

    def found(self, run: _engine.LevelRun, first: int = 0, most: int = 2**62) -> _engine.Found:
        """Return the results of the run; of the rules, `most` from number `first` on."""
        index = _engine.items(*string_buffers(self.names), self.counts, 0)
        found = run.found(index, self.histories, first, most)
        if self.scale.type is None and self.wants_rules:
            splits = _engine.Splits.ALL if self.splits == "all" else _engine.Splits.RUNS
            found = found.with_basket_rules(
                self.histories, splits, *self.thresholds, _engine.Watch()
            )
        return found

    def local_run(self, options: _engine.Options, window: Window) -> local.Run:
        """Return the settings of the run in the form of a run on one machine."""
        return local.Run(
            _Counted(self.histories, self.scale, self.names),  # type: ignore[arg-type]
            options, window, self.splits, self.thresholds, self.wants_rules,
        )

    def rows(self, run: _engine.LevelRun, what: str, part: int, parts: int) -> pa.Table:
        """Return one of `parts` parts of the rules or of the sets."""
        number = run.rule_count
        first, end = (number * (part + i) // parts for i in (0, 1))
        found = self.found(run, first, end - first)
        made = local.Mined(self.local_run(_engine.Options(), None), found)
        if what == "rules":
            return spark_table(made.to_arrow())
        sets = made._item_set_table
        begin, end = (sets.num_rows * (part + i) // parts for i in (0, 1))
        return spark_table(sets.slice(begin, end - begin))


def make_rows(some: Parts, state: bytes, what: str, parts: int) -> _work.Work:
    """Return the work that makes rows of rules or of sets, one or more parts per task."""

    def make(batches: _work.Batches) -> _work.Batches:
        run = _engine.LevelRun.from_bytes(state)
        for batch in batches:
            for part in batch.column(0).to_pylist():
                yield from some.rows(run, what, part, parts).to_batches(max_chunksize=10_000)

    return _work.named(make, f"rows of {what.replace('_', ' ')}")


class _Counted:
    """Stands in for histories that are in the cluster: has their number, times scale and items."""

    def __init__(self, number: int, scale: TimeScale, names: pa.Array) -> None:
        self._number = number
        self._columns = SimpleNamespace(scale=scale, item_names=names, kind="pyarrow")

    def __len__(self) -> int:
        return self._number

    def _frame(self, table: pa.Table) -> pa.Table:
        return table


class Collected(local.Mined):
    """The results of a run in a cluster, in this process; see `quarvis.Mined`."""

    def __init__(
        self, run: local.Run, found: _engine.Found, places: local.Places | None = None,
        *, cluster: Mined,
    ) -> None:
        super().__init__(run, found, places)
        self._cluster = cluster

    def explain(self, rule: Any) -> Explanation:
        """The same as `quarvis.spark.Mined.explain`; runs in the cluster."""
        return self._cluster.explain(rule)

    def test_order(
        self, *, permutations: int = 999, seed: int = 0, threads: int | None = None,
        progress: Progress = False,
    ) -> Any:
        """The same as `quarvis.spark.Mined.test_order` for these rules, as a PyArrow table.

        Runs in the cluster. `threads` has no effect: the test uses the tasks of the run.
        """
        return self._cluster._tested(self, permutations, seed, progress)

    def lags(self, *, threads: int | None = None) -> Any:
        """Raise `DataError`: lags need the histories, which are in the cluster."""
        raise DataError(
            "lags need the histories, which are in the cluster: mine a sample of the entities with "
            "quarvis.mine, or ask explain for one rule"
        )

    def view(self, **settings: Any) -> Any:
        """Raise `DataError`: the page shows lags, which need the histories."""
        self.lags()

    def _selected(self, places: local.Places) -> Collected:
        return Collected(self._run, self._found, places, cluster=self._cluster)


def spark_table(table: pa.Table) -> pa.Table:
    """Return the table with types that Spark supports, which has no unsigned integers."""
    for place, field in enumerate(table.schema):
        if pa.types.is_unsigned_integer(field.type):
            table = table.set_column(place, field.name, table.column(place).cast(pa.int64()))
        elif pa.types.is_list(field.type) or pa.types.is_large_list(field.type):
            plain = table.column(place).cast(pa.list_(pa.string()))
            table = table.set_column(place, field.name, plain)
    return table


def _ddl(schema: pa.Schema) -> str:
    kinds = {"int64": "bigint", "double": "double"}
    return ", ".join(
        f"{field.name} {kinds.get(str(field.type), 'array<string>')}" for field in schema
    )


def _empty_run(setup: Setup) -> _engine.LevelRun:
    return _engine.LevelRun(np.zeros(len(setup.names), np.uint32), setup.options)
