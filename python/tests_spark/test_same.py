"""The cluster finds what one machine finds, to the last bit."""

import pytest
from tables import arrow, assert_same, both, random_rows, sorted_rows

import quarvis.spark.mined

SETTINGS = [
    {"min_count": 5, "window": 4},
    {"min_count": 2, "splits": "runs", "max_items": 3},
    {"min_support": 0.2, "window": 10, "min_confidence": 0.3, "min_lift": 0.9},
    {"min_count": 3, "window": 7, "antecedents": ["b*", "é"], "consequents": "[ab]*"},
    {"min_count": 100},
]

#: One partition with one shard; and more partitions than entities, so that some are empty, with
#: shards of a few rows and blocks of a few candidates, so that a level takes several jobs.
CLUSTERS = [
    {"partitions": 1},
    {"partitions": 9, "shard_bytes": 150, "block_bytes": 80, "tasks": 3},
]


@pytest.mark.parametrize(("layout", "seed"), [
    pytest.param(layout, seed, id=f"{name}-{seed}",
                 marks=[pytest.mark.slow] if name == "many" and seed in (1, 2) else [])
    for name, layout, seeds in zip(("one", "many"), CLUSTERS, ((1,), range(5)), strict=True)
    for seed in seeds
])
def test_random_tables(spark, tmp_path, seed, layout):
    items = ("b", "bb", "a b", "é", "x", "{y}")[: 4 + seed % 3]
    rows = random_rows(seed, entities=8 + 20 * (seed % 2), items=items)
    mined, expected = both(spark, rows, partitions=1 + seed, cluster=layout, **SETTINGS[seed])
    assert_same(mined, expected, tmp_path)
    assert (len(expected) > 0) == (seed != 4)
    if layout["partitions"] > 1:
        filled = mined._setup.shards.frame.select("partition").distinct().count()
        assert filled < layout["partitions"] or seed % 2 == 1
    assert sorted_rows(mined.rules.toArrow()) == sorted_rows(
        quarvis.spark.mined.spark_table(expected.to_arrow())
    )
    mined.unpersist()


def test_answers(spark):
    mined, expected = both(
        spark, random_rows(9), cluster={"shard_bytes": 600, "partitions": 3}, min_count=4, window=5,
    )
    assert_same(mined, expected)
    first = expected.to_arrow().slice(0, 1).to_pylist()[0]
    rare = (["b"], ["{y}", "x", "\u4e2d", "bb"])
    for rule in (first, rare):
        ours, theirs = mined.explain(rule), expected.explain(rule)
        assert repr(ours) == repr(theirs)
        assert sorted_rows(ours.histories.toArrow().drop_columns("entity")) == sorted_rows(
            quarvis.spark.mined.spark_table(theirs.histories).drop_columns("entity")
        )
    tested = mined.test_order(permutations=7, seed=11).toArrow()
    theirs = expected.test_order(permutations=7, seed=11)
    assert tested.num_rows == len(expected) > 0
    for name in ("expected", "deviation", "p_value", "p_adjusted", "q_value"):
        assert tested.column(name).to_pylist() == theirs.column(name).to_pylist()
    with pytest.raises(quarvis.DataError, match="no history has the item 'tea'"):
        mined.explain((["tea"], ["b"]))


def test_the_collected_object_answers_as_the_local_one(spark):
    rows = random_rows(9)
    mined, expected = both(spark, rows, partitions=2, min_count=4, window=5)
    collected = mined.collect()
    some = {"min_lift": 0.9, "consequents": "b*"}
    ours, theirs = collected.filter(**some).top(9), expected.filter(**some).top(9)
    assert 0 < len(ours) == len(theirs) < len(expected)
    later = quarvis.Histories(arrow(rows[:150]), entity="who", time="when", items="what")
    for answer in (
        lambda result: result.rules, lambda result: result.measures("fisher"),
        lambda result: result.closed(), lambda result: result.maximal(),
        lambda result: result.non_redundant().rules,
        lambda result: result.match(later, now=20),
        lambda result: result.test_order(permutations=3, seed=2),
    ):
        assert answer(ours).num_rows > 0
        assert answer(ours).equals(answer(theirs))
    assert collected.summary() == expected.summary()
    for ask in (ours.lags, ours.view):
        with pytest.raises(quarvis.DataError, match=r"^lags need the histories") as error:
            ask()
        assert "mine a sample of the entities with quarvis.mine, or ask explain for one rule" in (
            str(error.value)
        )
    mined.unpersist()


def test_items_that_are_rare_in_histories_only(spark):
    """An item with many rows but few histories has a code, but does not affect permutations."""
    rows = [*random_rows(3), *(("e0", when, "often") for when in range(30))]
    mined, expected = both(spark, rows, min_count=5, window=3)
    assert_same(mined, expected)
    tested = mined.test_order(permutations=5, seed=1).toArrow()
    assert tested.column("expected").to_pylist() == expected.test_order(
        permutations=5, seed=1
    ).column("expected").to_pylist()
    assert repr(mined.explain((["often"], ["b"]))) == repr(expected.explain((["often"], ["b"])))


def test_rules_that_executors_write(spark, tmp_path, monkeypatch):
    rows = random_rows(5)
    monkeypatch.setattr(quarvis.spark.mined, "ROWS_AT_DRIVER", 0)
    monkeypatch.setattr(quarvis.spark.mined, "_ROWS_OF_PART", 7)
    mined, expected = both(spark, rows, min_count=4, window=5, min_confidence=0.2)
    mined.write(tmp_path / "rules", tmp_path / "sets")
    for name, table in (("rules", expected.to_arrow()), ("sets", expected.item_sets)):
        written = spark.read.parquet(str(tmp_path / name)).toArrow()
        assert len(list((tmp_path / name).glob("*.parquet"))) > 1
        assert sorted_rows(written) == sorted_rows(quarvis.spark.mined.spark_table(table))


@pytest.mark.slow
def test_a_history_much_larger_than_a_shard(spark):
    rows = [("big", 3 * when % 4001, f"i{when % 7}") for when in range(60_000)]
    rows += random_rows(2, rows=300, items=("i0", "i1", "i2"))
    mined, expected = both(
        spark, rows, cluster={"shard_bytes": 1000, "partitions": 4}, min_count=1, window=3,
        max_items=3,
    )
    assert_same(mined, expected)
