"""Tables for the cluster and for one machine, and the comparison of the results."""

import random

import pyarrow as pa

import quarvis
import quarvis.spark

ITEMS = ("b", "bb", "a b", "é", "x", "{y}", "\u4e2d")


def random_rows(seed, rows=400, entities=40, times=30, items=ITEMS):
    """Return rows of text, integer and text; some entities have many more than others."""
    draw = random.Random(seed)
    return [
        (f"e{int(entities * draw.random() ** 3)}", draw.randrange(times), draw.choice(items))
        for _ in range(rows)
    ]


def arrow(rows, kind=None):
    """Return the rows sorted by entity, the order in which a cluster numbers histories."""
    who, when, what = zip(*sorted(rows), strict=True)
    return pa.table({"who": who, "when": pa.array(when, kind or pa.int32()), "what": what})


def frame(spark, rows, partitions=3):
    return spark.createDataFrame(rows, "who string, when int, what string").repartition(partitions)


def both(spark, rows, partitions=3, cluster=None, **settings):
    """Return the results of the cluster and of one machine."""
    columns = {"entity": "who", "time": "when", "items": "what"}
    mined = quarvis.spark.mine(
        frame(spark, rows, partitions), **columns, **settings, **(cluster or {})
    )
    return mined, quarvis.mine(arrow(rows), **columns, **settings)


def sorted_rows(table):
    return sorted(map(str, table.to_pylist()))


def assert_same(mined, expected, tmp_path=None):
    """Assert that rules and sets are the same, also byte by byte in files."""
    collected = mined.collect()
    assert collected.to_arrow().equals(expected.to_arrow())
    assert collected.item_sets.equals(expected.item_sets)
    if tmp_path is not None:
        for name, result in (("cluster", collected), ("local", expected)):
            result.write_tsv(tmp_path / f"{name}-rules", tmp_path / f"{name}-sets")
        for what in ("rules", "sets"):
            files = [(tmp_path / f"{name}-{what}").read_bytes() for name in ("cluster", "local")]
            assert files[0] == files[1]
