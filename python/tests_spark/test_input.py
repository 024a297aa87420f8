"""Columns of all types are read as on one machine, and errors say how to fix them."""

import datetime
import re

import pyarrow as pa
import pytest
from tables import assert_same, random_rows

import quarvis
import quarvis.spark

START = datetime.datetime(2024, 3, 1, 12)


def mined_both(spark, ddl, rows, kinds, **settings):
    """Mine the rows in both ways; `kinds` are the Arrow types that are not inferred."""
    names = [column.split()[0] for column in ddl.split(", ")]
    columns = {
        name: pa.array([row[i] for row in rows], kinds.get(name)) for i, name in enumerate(names)
    }
    mined = quarvis.spark.mine(spark.createDataFrame(rows, ddl), **settings)
    return mined, quarvis.mine(pa.table(columns), **settings)


@pytest.mark.parametrize(("ddl", "kind", "window", "of"), [
    ("date", pa.date32(), "5d", lambda t: (START + datetime.timedelta(days=t)).date()),
    ("timestamp", pa.timestamp("us", "UTC"), "90min",
     lambda t: (START + datetime.timedelta(minutes=17 * t)).replace(tzinfo=datetime.UTC)),
    ("timestamp_ntz", pa.timestamp("us"), "1h 30min",
     lambda t: START + datetime.timedelta(minutes=17 * t)),
    ("timestamp_ntz", pa.timestamp("us"), "2us",
     lambda t: START + datetime.timedelta(days=40 * (t % 3), microseconds=t)),
    ("bigint", pa.int64(), 2**40, lambda t: -(2**62) + t * 2**39),
    ("smallint", pa.int16(), 3, lambda t: t - 20),
])
def test_times(spark, ddl, kind, window, of):
    rows = sorted((who, of(when), what) for who, when, what in random_rows(1, rows=150))
    mined, expected = mined_both(
        spark, f"who string, at {ddl}, what string", rows, {"at": kind},
        entity="who", time="at", items="what", min_count=3, window=window, max_items=2,
    )
    assert_same(mined, expected)
    rule = (["b"], ["x"])
    assert repr(mined.explain(rule)) == repr(expected.explain(rule))
    first = mined.explain(rule).histories.where("counts").orderBy("entity").limit(1).toArrow()
    theirs = [row for row in expected.explain(rule).histories.to_pylist() if row["counts"]]
    assert first.num_rows == min(1, len(theirs))
    for row in first.to_pylist():
        assert row["lag"] == next(t["lag"] for t in theirs if t["entity"] == row["entity"])


def test_lists_of_items_without_entities_and_times(spark):
    rows = [(["b", "x"],), (["b", "x", "y"],), ([],), (["y"],), (["b", "b"],)]
    mined, expected = mined_both(
        spark, "basket array<string>", rows, {}, items="basket", min_count=2,
    )
    assert_same(mined, expected)
    assert len(expected) == 2
    with pytest.raises(quarvis.DataError, match="these histories have no times"):
        mined.explain((["b"], ["x"]))


def test_several_columns(spark):
    rows = [("u", 1, "flu", True, 3.0), ("u", 2, None, False, 4.0), ("v", 1, "flu", None, None),
            ("v", 3, "", True, 4.0), ("w", 1, "cold", True, 3.0), ("w", 4, "flu", False, 4.0)]
    mined, expected = mined_both(
        spark, "who string, at int, sign string, fever boolean, grade double", rows,
        {"at": pa.int32()}, entity="who", time="at", items=["sign", "fever", "grade"], min_count=2,
    )
    assert_same(mined, expected)
    names = {item for row in expected.item_sets.to_pylist() for item in row["items"]}
    assert names == {"sign=flu", "fever", "grade=3", "grade=4"}


def test_rows_that_lack_something_are_dropped(spark):
    rows = [*random_rows(4, rows=120), (None, 1, "b"), ("e1", None, "b"), ("e1", 2, None),
            ("", 4, "b"), ("e2", 5, "")]
    mined, expected = mined_both(
        spark, "who string, at int, what string", rows, {"at": pa.int32()},
        entity="who", time="at", items="what", min_count=3, missing="drop",
    )
    assert_same(mined, expected)


def test_no_rows(spark):
    mined = quarvis.spark.mine(
        spark.createDataFrame([], "who string, at int, what string"),
        entity="who", time="at", items="what", min_count=1, window=3,
    )
    assert len(mined) == 0
    assert mined.rules.columns[:3] == ["antecedents", "consequents", "count"]
    assert mined.item_sets.count() == 0


TABLE = ("who string, at int, text string, day double, what string, tags map<string,string>",
         [("u", 1, "1 May", 1.5, "b", None), ("u", 2, "2 May", 2.0, None, None)])


@pytest.mark.parametrize(("settings", "message"), [
    ({"items": "wat"}, "there is no column 'wat'; the columns are 'who', 'at', 'text', 'day', "
                       "'what', 'tags'"),
    ({"items": []}, "items names no column"),
    ({"time": "text"}, "column 'text' has times as text: convert them to timestamps first "
                       "(to_timestamp)"),
    ({"time": "day"}, "column 'day' has times as double, which may be rounded: convert them to "
                      "integers or timestamps"),
    ({"items": "tags"}, "column 'tags' has values as map<string,string>: convert them to text"),
    ({"items": "what"}, "column 'what' lacks the item in 1 of 2 rows: fill them in, or leave them "
                        "out with missing='drop'"),
    ({"items": "day"}, "1 rows have fractions as an entity or an item, which cannot name anything: "
                       "convert them to text or to integers"),
    ({"min_count": None}, "give min_count=... (histories) or min_support=... (their share): the "
                          "number of item sets explodes as it falls, so begin high"),
    ({"window": "3d"}, "window='3d', but the times are numbers: give a whole number in their unit"),
    ({"antecedents": "tea*"}, "antecedents='tea*' matches no item"),
    ({"missing": "keep"}, "missing='keep': give 'error' or 'drop'"),
    ({"min_lift": "1"}, "min_lift='1': give a number"),
    ({"budget": 10}, "budget=10: give a quarvis.Budget, such as quarvis.Budget(seconds=10)"),
])
def test_errors_tell_the_remedy(spark, settings, message):
    frame = spark.createDataFrame(TABLE[1], TABLE[0])
    with pytest.raises(quarvis.DataError, match=re.escape(message) + "$"):
        quarvis.spark.mine(
            frame, **{"entity": "who", "time": "at", "items": "text", "min_count": 1} | settings
        )
