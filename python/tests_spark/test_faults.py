"""Lost shards are rebuilt during a run, and a run that died can be resumed."""

import logging
import re
import threading
import time
import types

import pytest
from tables import arrow, assert_same, both, frame, random_rows

import quarvis
import quarvis.spark
import quarvis.spark._jobs

RUN = {"min_count": 3, "window": 6}
LAYOUT = {"partitions": 4, "shard_bytes": 900}
STAGES = ["shards of histories", "sets of 2 items", "sets of 3 items and rules of 2 items",
          "sets of 4 items and rules of 3 items"]


class Killer:
    """Kills an executor when a stage begins, and again while it runs."""

    def __init__(self, cluster, stage):
        self.killed = []
        self._cluster = cluster
        self._stage = stage

    def __call__(self, step, done, total):
        if step.partition(", block")[0] == self._stage and done == 0:
            self.killed.append(self._cluster.kill_executor())
            threading.Thread(target=self._again, daemon=True).start()

    def _again(self):
        time.sleep(1.0)
        self.killed.append(self._cluster.kill_executor())


@pytest.mark.parametrize("stage", [
    pytest.param(stage, marks=[pytest.mark.slow] if stage != STAGES[1] else []) for stage in STAGES
])
def test_an_executor_is_killed(spark, cluster, stage):
    killer = Killer(cluster, stage)
    mined, expected = both(
        spark, random_rows(6), cluster={**LAYOUT, "progress": killer}, **RUN
    )
    assert any(killer.killed)
    assert_same(mined, expected)
    mined.unpersist()


@pytest.mark.slow
def test_executors_are_killed_after_the_run(spark, cluster):
    mined, expected = both(spark, random_rows(6), cluster=LAYOUT, **RUN)
    assert cluster.kill_executor() is not None
    rule = expected.to_arrow().slice(0, 1).to_pylist()[0]
    assert repr(mined.explain(rule)) == repr(expected.explain(rule))
    mined.unpersist()


class Died(Exception):
    pass


def died_at(stage):
    def progress(step, done, total):
        if step == stage:
            raise Died

    return progress


def test_a_run_that_died_goes_on(spark, tmp_path, caplog):
    rows = random_rows(6)
    folder = str(tmp_path / "kept")
    with pytest.raises(Died):
        both(spark, rows, cluster={"checkpoint": folder, "progress": died_at(STAGES[3])}, **RUN)
    steps = []
    with caplog.at_level(logging.INFO, "quarvis.spark"):
        mined, expected = both(
            spark, rows[::-1], partitions=5, cluster={
                "checkpoint": folder, "progress": lambda step, done, total: steps.append(step),
            }, **RUN,
        )
    assert_same(mined, expected)
    assert STAGES[3] in steps
    assert not {STAGES[1], STAGES[2]} & set(steps)
    assert f"goes on from sets of 3 items in {folder}" in caplog.messages


def test_a_checkpoint_has_the_levels_and_no_histories(spark, tmp_path):
    folder = tmp_path / "kept"
    mined, _ = both(spark, random_rows(6), cluster={"checkpoint": str(folder)}, **RUN)
    levels = spark.read.parquet(str(folder / "levels")).toArrow()
    # One state for each size from 2 on, and one after the level without any sets and rules.
    assert sorted(levels["number"].to_pylist()) == list(range(1, levels.num_rows + 1))
    assert levels.num_rows in (mined._run.size - 1, mined._run.size)
    assert levels.column_names == ["number", "settings", "state"]
    last = max(levels.to_pylist(), key=lambda row: row["number"])
    assert last["state"] == mined._run.to_bytes()
    mined.unpersist()


def test_a_checkpoint_of_other_data_is_refused(spark, tmp_path):
    rows = random_rows(6, rows=60)
    folder = str(tmp_path / "kept")
    both(spark, rows, cluster={"checkpoint": folder}, **RUN)
    # The data have the same number of rows and items, but one time differs.
    who, when, what = rows[0]
    for others, settings, named in (
        ([(who, (when + 1) % 30, what), *rows[1:]], RUN, "data="),
        (rows, {**RUN, "window": 7}, "window=6 (here 7)"),
    ):
        with pytest.raises(quarvis.DataError, match=re.escape(named)):
            both(spark, others, cluster={"checkpoint": folder}, **settings)


@pytest.mark.parametrize(("bound", "settings"), [
    ("500 bytes at the driver", {"driver_bytes": 500}),
    ("500 bytes at the driver", {"budget": quarvis.Budget(bytes=500)}),
    ("10 item sets", {"budget": quarvis.Budget(sets=10)}),
])
def test_bounds_end_a_run(spark, bound, settings):
    rows = random_rows(6)
    columns = {"entity": "who", "time": "when", "items": "what", **RUN}
    with pytest.raises(quarvis.BudgetExceeded) as error:
        quarvis.spark.mine(frame(spark, rows), **columns, **settings)
    # The complete levels, as found by one machine.
    sets = quarvis.mine(arrow(rows), **columns).item_sets.to_pylist()
    sizes = range(1, len(error.value.item_sets) + 1)
    counts = [row["count"] for row in sets if len(row["items"]) in sizes]
    levels = tuple(sum(len(row["items"]) == size for row in sets) for size in sizes)
    least = next(c for c in range(max(counts) + 2)
                 if 2 * sum(count >= c for count in counts) <= len(counts))
    assert sum(levels) > 0
    assert (error.value.item_sets, error.value.min_count) == (levels, least)
    assert str(error.value) == (
        f"the budget of {bound} is exceeded at min_count=3; {sum(levels)} item sets of up to "
        f"{len(levels)} items were found so far, of which at most half have a count of {least}: "
        f"try min_count={least}, or max_items=2"
    )


@pytest.mark.parametrize(("least", "given"), [
    ({"min_count": 3}, "min_count=3"),
    ({"min_support": 0.1}, "min_support=0.1"),
])
def test_time_ends_a_run(spark, least, given):
    with pytest.raises(quarvis.BudgetExceeded) as error:
        quarvis.spark.mine(
            frame(spark, random_rows(6)), entity="who", time="when", items="what", **least,
            budget=quarvis.Budget(seconds=0.01),
        )
    assert str(error.value) == (
        f"the budget of 0.01 seconds is exceeded at {given}; the search had not begun: allow more "
        "time"
    )
    assert (error.value.item_sets, error.value.min_count) == ((), None)


def test_time_ends_a_run_in_the_middle(spark, monkeypatch):
    """A run that has counted some levels suggests a count to try."""
    passed = [0.0]
    monkeypatch.setattr(
        quarvis.spark._jobs, "clock",
        types.SimpleNamespace(monotonic=lambda: time.monotonic() + passed[0]),
    )

    def progress(step, done, total):
        if step == STAGES[2]:
            passed[0] = 7200.0

    with pytest.raises(quarvis.BudgetExceeded) as error:
        quarvis.spark.mine(
            frame(spark, random_rows(6)), entity="who", time="when", items="what", **RUN,
            progress=progress, budget=quarvis.Budget(seconds=3600),
        )
    assert len(error.value.item_sets) == 2
    assert error.value.min_count > RUN["min_count"]
    assert f"3600 seconds is exceeded at min_count=3; {sum(error.value.item_sets)} item sets" in (
        str(error.value)
    )
    assert f"try min_count={error.value.min_count}, or max_items=2" in str(error.value)
