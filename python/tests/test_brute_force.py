"""The rules, sets and measures agree with their definitions."""

import math

import brute
import hypothesis
import pyarrow as pa
import pytest
from hypothesis import strategies as st
from strategies import rows

import quarvis

SETTINGS = hypothesis.settings(max_examples=60, deadline=None)


def histories(data):
    who, when, what = zip(*data, strict=True)
    table = pa.table({"who": who, "when": pa.array(when), "what": what})
    return quarvis.Histories(table, entity="who", time="when", items="what")


def found(mined):
    return {
        (tuple(r["antecedents"]), tuple(r["consequents"])): r for r in mined.to_arrow().to_pylist()
    }


@hypothesis.given(
    data=rows(), min_count=st.integers(1, 3), window=st.none() | st.integers(1, 5),
    kind=st.sampled_from(["all", "runs"]), threads=st.sampled_from([1, 3]),
)
@SETTINGS
def test_rules_and_sets(data, min_count, window, kind, threads):
    plain = brute.histories_of(data)
    mined = quarvis.mine(
        histories(data), min_count=min_count, window=window, splits=kind, threads=threads
    )
    sets = {tuple(s["items"]): s["count"] for s in mined.item_sets.to_pylist()}
    assert sets == {tuple(s): n for s, n in brute.frequent(plain, min_count).items()}
    rules = found(mined)
    assert {r: row["count"] for r, row in rules.items()} == brute.rules(
        plain, min_count, window, kind
    )
    total = len(plain)
    for (antecedent, consequent), row in rules.items():
        union = len(brute.holding(plain, antecedent + consequent))
        left = len(brute.holding(plain, antecedent))
        right = len(brute.holding(plain, consequent))
        assert (row["union_count"], row["antecedent_count"], row["consequent_count"]) == (
            union, left, right
        )
        close = pytest.approx
        assert row["support"] == close(union / total)
        assert row["confidence"] == close(union / left)
        assert row["lift"] == close(union * total / (left * right))
        assert row["reverse_confidence"] == close(union / right)
        assert row["ordered_support"] == close(row["count"] / total)
        assert row["ordered_confidence"] == close(row["count"] / left)
        assert row["ordered_lift"] == close(row["count"] * total / (left * right))
        assert row["certainty_odds"] == (
            math.inf if union == right else close(union / (right - union))
        )
        assert row["conviction"] == (
            math.inf if union == left else close((1 - right / total) / (1 - union / left))
        )


@hypothesis.given(
    data=rows(), min_count=st.integers(1, 3), window=st.none() | st.integers(1, 5),
    kind=st.sampled_from(["all", "runs"]), timed=st.booleans(),
    antecedents=st.none() | st.lists(st.sampled_from(["b", "b*", "a*", "?"]), min_size=1),
    consequents=st.none() | st.lists(st.sampled_from(["b", "bb", "[ab]*"]), min_size=1),
)
@SETTINGS
def test_sides_are_those_of_all_rules(
    data, min_count, window, kind, timed, antecedents, consequents
):
    data = [*data, ("u", 1, "b"), ("u", 2, "bb"), ("v", 1, "a b"), ("v", 1, "b")]
    table = histories(data)
    if not timed:
        who, _, what = zip(*data, strict=True)
        table = quarvis.Histories(
            pa.table({"who": who, "what": what}), entity="who", time=None, items="what"
        )
        window = None
    from fnmatch import fnmatchcase

    def on(side, patterns):
        return patterns is None or all(
            any(fnmatchcase(item, p) for p in patterns) for item in side
        )

    arguments = {"min_count": min_count, "window": window, "splits": kind, "min_confidence": 0.5}
    every = found(quarvis.mine(table, **arguments))
    some = found(
        quarvis.mine(table, antecedents=antecedents, consequents=consequents, **arguments)
    )
    assert list(some.items()) == [
        (rule, row) for rule, row in every.items()
        if on(rule[0], antecedents) and on(rule[1], consequents)
    ]


@hypothesis.given(data=rows(), min_count=st.integers(1, 3))
@SETTINGS
def test_plain_baskets(data, min_count):
    plain = brute.histories_of([(e, 0, i) for e, _, i in data])
    who, _, what = zip(*data, strict=True)
    mined = quarvis.mine(
        pa.table({"who": who, "what": what}), entity="who", items="what", min_count=min_count
    )
    assert "count" not in mined.rules.column_names
    expected = {}
    for items, count in brute.frequent(plain, min_count).items():
        for split in brute.splits(items, "all"):
            expected[split] = count
    assert {r: row["union_count"] for r, row in found(mined).items()} == expected


@pytest.mark.parametrize("support", [0.0, 0.25, 0.3, 0.375, 1.0])
def test_least_support_is_a_share_of_histories(shop, support):
    mined = quarvis.mine(shop, min_support=support)
    for row in mined.item_sets.to_pylist():
        assert row["support"] >= support
    least = math.ceil(support * 8 - 1e-9)
    assert mined.item_sets.equals(quarvis.mine(shop, min_count=max(least, 1)).item_sets)


def test_example_by_hand(shop, written):
    mined = quarvis.mine(shop, min_count=2, window=2, splits="runs")
    assert written(mined) == [
        b"Rule\tCount\tA union S\tSupport\tConfidence\tLift\tConviction\tProbability\tCertainty\n"
        b"bread => butter\t2\t5\t0.25\t0.833333\t1.11111\t1.5\t0.833333\t5\n",
        b"Count\tItem Set\n5\t{bread,butter}\n6\t{bread}\n2\t{butter,jam}\n6\t{butter}\n2\t{jam}\n",
    ]
    assert repr(mined) == "<quarvis.Mined: 1 rules, 5 item sets>"
    assert mined.summary() == (
        "histories    8\n"
        "least count  2\n"
        "window       2\n"
        "item sets    5, 3 of 1, 2 of 2\n"
        "rules        1"
    )


@pytest.mark.parametrize(
    ("thresholds", "rules"),
    [({"min_confidence": 5 / 6}, 1), ({"min_confidence": 0.84}, 0), ({"min_lift": 1.2}, 0),
     ({"max_conviction": 1.4}, 0), ({"max_conviction": 1.51}, 1)],
)
def test_thresholds(shop, thresholds, rules):
    assert len(quarvis.mine(shop, min_count=2, window=2, **thresholds)) == rules


@pytest.mark.parametrize("timed", [True, False])
def test_item_sets_alone(shop, timed):
    data = shop if timed else quarvis.from_baskets([("a", "b"), ("a",), ("a", "b", "c")])
    both = quarvis.mine(data, min_count=1)
    sets = quarvis.mine(data, min_count=1, rules=False)
    assert len(both) > 0
    assert len(sets) == 0
    assert sets.rules.num_rows == 0
    assert sets.item_sets.equals(both.item_sets)
    assert sets.closed().equals(both.closed())
