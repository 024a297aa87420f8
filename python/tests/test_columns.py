"""Entities and items of every type, missing values, and refused columns."""

import re

import pandas as pd
import pyarrow as pa
import pytest

import quarvis


def sets(mined):
    return {tuple(s["items"]): s["count"] for s in pa.table(mined.item_sets).to_pylist()}


def mine(table, entity="who", items="what", **arguments):
    return quarvis.mine(table, entity=entity, items=items, min_count=1, **arguments)


@pytest.mark.parametrize(
    ("items", "names"),
    [
        (pa.array([1, -2, 1]), {("1",): 2, ("-2",): 1}),
        (pa.array([1.0, 2.0, 1.0]), {("1",): 2, ("2",): 1}),
        (pa.array([True, False, True]), {("true",): 2, ("false",): 1}),
        (pa.array(["a", "b", "a"]).dictionary_encode(), {("a",): 2, ("b",): 1}),
        (pa.array(["a", "b", "a"], pa.large_string()), {("a",): 2, ("b",): 1}),
        (pa.array(["a", "b", "a"]).cast(pa.string_view()), {("a",): 2, ("b",): 1}),
    ],
)
def test_items_are_text(items, names):
    table = pa.table({"who": [1, 2, 3], "what": items})
    assert sets(mine(table)) == names


def test_entities_may_be_whole_floating_point_numbers():
    # pandas stores customers like this when some are missing.
    frame = pd.DataFrame({"who": [17850.0, 17850.0, 4.0], "what": ["a", "b", "a"]})
    assert sets(mine(pa.Table.from_pandas(frame))) == {("a",): 2, ("a", "b"): 1, ("b",): 1}


@pytest.mark.parametrize(
    ("column", "values", "message"),
    [
        ("who", [1.5, 2.0], "column 'who' has fractions ("),
        ("what", [1.5, 2.0], "column 'what' has fractions ("),
        ("what", [b"a", b"b"], "column 'what' has items as binary: convert them to text"),
        ("what", [{"a": 1}, {"a": 2}], "column 'what' has items as struct<a: int64>: convert"),
    ],
)
def test_columns_that_are_refused(column, values, message):
    table = pa.table({"who": ["u", "v"], "what": ["a", "b"]})
    table = table.set_column(table.column_names.index(column), column, pa.array(values))
    with pytest.raises(quarvis.DataError, match=f"^{re.escape(message)}"):
        mine(table)


def test_unknown_column_is_answered_with_those_there():
    with pytest.raises(quarvis.DataError) as error:
        mine(pa.table({"a": [1], "b": [2]}), entity="who", items="b")
    assert str(error.value) == "there is no column 'who'; the columns are 'a', 'b'"


def test_mixed_types_are_named_by_column():
    frame = pd.DataFrame({"who": ["u", 3], "what": ["a", "b"]}, dtype=object)
    with pytest.raises(quarvis.DataError, match="^column 'who' mixes types "):
        mine(frame)


LACKING = {
    "who": pa.table({"who": ["u", None, "w", ""], "when": [1, 2, 3, 4], "what": list("abcd")}),
    "when": pa.table({"who": list("uvwx"), "when": [1, None, 3, None], "what": list("abcd")}),
    "what": pa.table({"who": list("uvwx"), "when": [1, 2, 3, 4], "what": ["a", "", "c", None]}),
}
ROLES = {"who": "entity", "when": "time", "what": "item"}


@pytest.mark.parametrize("column", LACKING)
def test_missing_values_are_an_error(column):
    with pytest.raises(quarvis.DataError) as error:
        quarvis.Histories(LACKING[column], entity="who", time="when", items="what")
    assert str(error.value) == (
        f"column {column!r} lacks the {ROLES[column]} in 2 of 4 rows, the first ones are 1, 3 "
        "(counted from 0): fill them in, or leave them out with missing='drop'"
    )


@pytest.mark.parametrize("column", LACKING)
def test_missing_values_can_be_dropped(column):
    histories = quarvis.Histories(
        LACKING[column], entity="who", time="when", items="what", missing="drop"
    )
    report = histories.report()
    assert (report.rows, report.entities, report.dropped) == (2, 2, {column: 2})
    assert f"dropped       2 rows without {column!r}" in str(report)
    assert sets(quarvis.mine(histories, min_count=1)) == {("a",): 1, ("c",): 1}


def test_all_rows_may_be_missing():
    table = pa.table({
        "who": pa.array([None, None], pa.string()), "when": [1, 2], "what": ["a", "b"],
    })
    histories = quarvis.Histories(
        table, entity="who", time="when", items="what", missing="drop"
    )
    assert len(histories) == 0
    mined = quarvis.mine(histories, min_count=1, window=1)
    assert len(mined) == 0
    assert sets(mined) == {}


@pytest.mark.parametrize("rows", [0, 1])
def test_few_rows(rows, tmp_path):
    table = pa.table({"who": ["u"], "when": [1], "what": ["a"]}).slice(0, rows)
    mined = quarvis.mine(table, entity="who", time="when", items="what", min_count=1)
    assert sets(mined) == ({("a",): 1} if rows else {})
    mined.write_tsv(tmp_path / "rules", tmp_path / "sets")
    assert (tmp_path / "sets").read_bytes() == b"Count\tItem Set\n" + b"1\t{a}\n" * rows
    assert quarvis.Histories(table, entity="who", time="when", items="what").report().rows == rows


def test_lists_may_be_empty_and_lack_items():
    lists = pa.array([["a", "b"], [], None, ["a", None]])
    table = pa.table({"what": lists})
    with pytest.raises(quarvis.DataError, match="lacks the item in 2 of 4 rows"):
        mine(table, entity=None)
    mined = mine(table, entity=None, missing="drop")
    assert sets(mined) == {("a",): 1, ("a", "b"): 1, ("b",): 1}
    assert mined.item_sets.to_pylist()[0]["support"] == 0.5  # the empty basket counts as a history


def test_several_columns():
    table = pa.table({
        "color": ["red", None, "blue"], "size": [4, 4, None], "sale": [True, False, None],
    })
    mined = mine(table, entity=None, items=["color", "size", "sale"])
    assert sets(mined) == {
        ("color=blue",): 1, ("color=red",): 1, ("sale",): 1, ("size=4",): 2,
        ("color=red", "sale"): 1, ("color=red", "size=4"): 1, ("sale", "size=4"): 1,
        ("color=red", "sale", "size=4"): 1,
    }


def test_baskets():
    mined = quarvis.mine(quarvis.from_baskets([("a", "b"), ["b", "b"], set()]), min_count=1)
    assert sets(mined) == {("a",): 1, ("a", "b"): 1, ("b",): 2}
    assert mined.to_arrow().select(["antecedents", "consequents", "confidence"]).to_pylist() == [
        {"antecedents": ["a"], "consequents": ["b"], "confidence": 1.0},
        {"antecedents": ["b"], "consequents": ["a"], "confidence": 0.5},
    ]


def test_plain_baskets_have_no_file_of_the_tool(tmp_path):
    mined = quarvis.mine(quarvis.from_baskets([("a", "b")]), min_count=1)
    with pytest.raises(quarvis.DataError, match="these histories have no times"):
        mined.write_tsv(tmp_path / "rules")


def test_names_that_differ_in_case_or_blanks_only_warn():
    table = pa.table({"who": ["u", "u"], "when": [1, 2], "what": ["Red  bag", "red bag "]})
    with pytest.warns(quarvis.QuarvisWarning) as warned:
        quarvis.Histories(table, entity="who", time="when", items="what")
    assert [str(w.message) for w in warned] == [
        "1 item names differ from others only in case or blanks: 'Red  bag' and 'red bag '"
    ]
    assert warned[0].filename == __file__


@pytest.mark.parametrize(("once", "warns"), [(1, True), (0, False)])
def test_entities_with_one_time_only_warn(once, warns, recwarn):
    table = pa.table({
        "who": ["u", "u", "v", "v", "w", "w"], "when": [1, 2, 1, 2, 1, 2 - once],
        "what": list("abcdef"),
    })
    quarvis.Histories(table, entity="who", time="when", items="what")
    assert [str(w.message) for w in recwarn] == warns * [
        "1 of 3 entities have only one time, so nothing can follow anything there: is the entity "
        "the right column?"
    ]


@pytest.mark.parametrize(
    ("arguments", "message"),
    [
        ({}, "give min_count=... (histories) or min_support=... (their share): the number of item "
             "sets explodes as it falls, so begin high"),
        ({"min_count": 2**32}, "min_count=4294967296: there cannot be as many histories"),
        ({"min_count": 1, "antecedents": "x*"}, "antecedents='x*' matches no item"),
        ({"min_count": 1, "entity": "who"},
         "entity, time and items name columns of a frame, but data is a Histories"),
    ],
)
def test_arguments_that_are_refused(shop, arguments, message):
    with pytest.raises(quarvis.DataError) as error:
        quarvis.mine(shop, **arguments)
    assert str(error.value) == message
