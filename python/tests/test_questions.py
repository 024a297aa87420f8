"""Questions about rules: explanations, lags, matches and selections."""

import datetime

import brute
import hypothesis
import numpy as np
import pandas as pd
import polars as pl
import pyarrow as pa
import pytest
from hypothesis import strategies as st
from strategies import rows
from test_brute_force import histories

import quarvis

SETTINGS = hypothesis.settings(max_examples=80, deadline=None)
WINDOWS = st.none() | st.integers(1, 5)


def mined_of(data, **arguments):
    return quarvis.mine(histories(data), min_count=1, **arguments)


def sides(row):
    return tuple(row["antecedents"]), tuple(row["consequents"])


@hypothesis.given(data=rows(), window=WINDOWS)
@SETTINGS
def test_explanations(data, window):
    plain = brute.histories_of(data)
    mined = mined_of(data, window=window, max_items=3)
    for row in mined.to_arrow().to_pylist()[:10]:
        for antecedent, consequent in (sides(row), sides(row)[::-1]):
            explanation = mined.explain((list(antecedent), list(consequent)))
            found = {}
            for each in explanation.histories.to_pylist():
                found[each["entity"]] = each
            assert set(found) == brute.holding(plain, antecedent + consequent)
            counted = 0
            for entity, each in found.items():
                history = plain[entity]
                time = brute.counted_at(history, antecedent, consequent, window)
                assert each["counts"] == (time is not None)
                assert each["consequent_time"] == time
                if time is None:
                    assert each["reason"] == brute.why_not(
                        history, antecedent, consequent, window
                    )
                    assert each["lag"] is None
                else:
                    counted += 1
                    complete = brute.completed_at(history, antecedent, time)
                    assert each["reason"] is None
                    assert (each["antecedent_time"], each["lag"]) == (complete, time - complete)
            assert explanation.count == counted
            assert sum(explanation.reasons.values()) == len(found) - counted
            reverse = mined.explain((list(consequent), list(antecedent)))
            assert explanation.reverse_count == reverse.count


@hypothesis.given(data=rows(max_size=60), window=WINDOWS, threads=st.sampled_from([1, 3]))
@SETTINGS
def test_lags(data, window, threads):
    plain = brute.histories_of(data)
    mined = mined_of(data, window=window, max_items=4)
    table = mined.lags(threads=threads).to_pylist()
    assert len(table) == len(mined)
    for row, lag in zip(mined.to_arrow().to_pylist(), table, strict=True):
        antecedent, consequent = sides(row)
        every = brute.lags(plain, antecedent, consequent, window)
        assert len(every) == row["count"]
        share = len(every)

        def least_for(part, every=every, share=share):
            return next(v for i, v in enumerate(every, 1) if i >= part * share / 10)

        assert lag == {
            "antecedents": row["antecedents"], "consequents": row["consequents"],
            "count": len(every), "least": every[0], "median": least_for(5),
            "percentile_90": least_for(9),
            "greatest": every[-1],
            "reverse_count": len(brute.lags(plain, consequent, antecedent, window)),
        }


@hypothesis.given(data=rows(), new=rows(), window=WINDOWS, now=st.none() | st.integers(0, 12))
@SETTINGS
def test_matches(data, new, window, now):
    mined = mined_of(data, window=window, max_items=3)
    instant = max(t for _, t, _ in new) if now is None else now
    expected = []
    plain = brute.histories_of(new)
    for entity, history in plain.items():
        seen = brute.recent(history, instant + 1, None if window is None else window + 1)
        for place, row in enumerate(mined.to_arrow().to_pylist()):
            antecedent, consequent = sides(row)
            if set(antecedent) <= seen and not seen & set(consequent):
                since = brute.completed_at(history, antecedent, instant + 1)
                expected.append((entity, antecedent, consequent, since, place))
    found = [
        (r["entity"], *sides(r), r["antecedent_time"], r["rule"])
        for r in mined.match(histories(new), now=now).to_pylist()
    ]
    assert sorted(found) == sorted(expected)
    assert [f[-1] for f in found if f[0] == found[0][0]] == sorted(
        f[-1] for f in found if f[0] == found[0][0]
    ) if found else True


@hypothesis.given(data=rows(max_size=60), by=st.sampled_from(["confidence", "count"]))
@SETTINGS
def test_non_redundant(data, by):
    mined = mined_of(data)
    every = mined.to_arrow().to_pylist()
    kept = [
        row for row in every
        if not any(
            other["consequents"] == row["consequents"]
            and set(other["antecedents"]) < set(row["antecedents"])
            and other[by] >= row[by]
            for other in every
        )
    ]
    assert mined.non_redundant(by).to_arrow().to_pylist() == kept


@hypothesis.given(data=rows(max_size=60), least=st.integers(1, 3))
@SETTINGS
def test_closed_and_maximal(data, least):
    mined = quarvis.mine(histories(data), min_count=least)
    every = {frozenset(s["items"]): s["count"] for s in mined.item_sets.to_pylist()}
    closed = {s for s, n in every.items() if not any(s < t and every[t] == n for t in every)}
    maximal = {s for s in every if not any(s < t for t in every)}
    assert {frozenset(s["items"]) for s in mined.closed().to_pylist()} == closed
    assert {frozenset(s["items"]) for s in mined.maximal().to_pylist()} == maximal


def test_closed_and_maximal_of_large_sets():
    draws = np.random.default_rng(3)
    baskets = [[f"{i:02}" for i in range(14) if draws.random() < 0.75] for _ in range(40)]
    mined = quarvis.mine(quarvis.from_baskets(baskets), min_count=4, rules=False)
    every = {frozenset(s["items"]): s["count"] for s in mined.item_sets.to_pylist()}
    assert max(len(s) for s in every) >= 9
    # A set that is contained in a larger one is also contained in one with one item more.
    above = {
        s: [every.get(s | {item}, 0) for item in {f"{i:02}" for i in range(14)} - s] for s in every
    }
    closed = [s["items"] for s in mined.closed().to_pylist()]
    assert {frozenset(s) for s in closed} == {s for s, n in every.items() if n not in above[s]}
    maximal = [s["items"] for s in mined.maximal().to_pylist()]
    assert {frozenset(s) for s in maximal} == {s for s in every if not any(above[s])}
    order = {tuple(s["items"]): place for place, s in enumerate(mined.item_sets.to_pylist())}
    for sets in (closed, maximal):
        assert [order[tuple(s)] for s in sets] == sorted(order[tuple(s)] for s in sets)


@hypothesis.given(data=rows(max_size=60), n=st.integers(0, 5))
@SETTINGS
def test_filter_and_top(data, n):
    data = [*data, ("u", 1, "b"), ("u", 2, "a b"), ("u", 3, "é")]  # items that the patterns match
    mined = mined_of(data)
    every = mined.to_arrow().to_pylist()
    some = mined.filter(
        min_lift=0.9, max_union_count=3, antecedents="b*", consequents=["a*", "é"],
    )
    assert some.to_arrow().to_pylist() == [
        r for r in every
        if r["lift"] >= 0.9 and r["union_count"] <= 3
        and all(i.startswith("b") for i in r["antecedents"])
        and all(i.startswith("a") or i == "é" for i in r["consequents"])
    ]
    touching = [r for r in every if "b" in r["antecedents"] + r["consequents"]]
    assert mined.filter(contains="b").to_arrow().to_pylist() == touching
    top = mined.top(n, by="confidence").to_arrow().to_pylist()
    assert top == sorted(every, key=lambda r: -r["confidence"])[:n]


def test_selection_is_written_with_its_lines(shop, written):
    mined = quarvis.mine(shop, min_count=1, window=9, splits="runs")
    rules, sets = written(mined)
    some = mined.filter(contains="bread").top(1, by="count")
    assert len(some) == 1
    kept, same = written(some)
    assert same == sets
    assert kept == b"".join(
        line for line in rules.splitlines(True)
        if line.startswith((b"Rule\t", b"bread => butter\t"))
    )


def test_explanation_by_hand(shop):
    explanation = quarvis.mine(shop, min_count=2, window=2).explain(("bread", "butter"))
    assert repr(explanation) == (
        "bread => butter: counts in 2, the reverse rule in 1\n"
        "       1  other order\n"
        "       1  same time\n"
        "       1  too late"
    )
    reasons = {r["entity"]: r["reason"] for r in explanation.histories.to_pylist()}
    assert reasons == {"ann": None, "bob": None, "cid": "other order", "dee": "same time",
                       "eve": "too late"}


@pytest.mark.parametrize("library", ["pandas", "polars", "pyarrow"])
def test_rows_of_frames_are_rules(shop, library):
    mined = quarvis.mine(shop, min_count=2, window=2)
    table = mined.to_arrow()
    row = {
        "pandas": lambda: table.to_pandas().iloc[0],
        "polars": lambda: pl.from_arrow(table).row(0, named=True),
        "pyarrow": lambda: table.to_pylist()[0],
    }[library]()
    assert mined.explain(row).count == 2
    assert mined.explain(next(table.to_pandas().itertuples())).count == 2


@pytest.mark.parametrize(
    ("rule", "message"),
    [
        (3, "3 is not a rule: give a pair of item lists, or a row of a frame of rules"),
        ((["bread"], []), "a rule has items on both sides"),
        ((["bread"], ["bread"]), "an item comes twice in the rule"),
        ((["bread"], ["cake"]), "no history has the item 'cake'"),
    ],
)
def test_what_is_no_rule(shop, rule, message):
    with pytest.raises(quarvis.DataError) as error:
        quarvis.mine(shop, min_count=2).explain(rule)
    assert str(error.value) == message


def test_infrequent_items_can_be_explained(shop):
    assert quarvis.mine(shop, min_count=3).explain(("bread", "jam")).count == 1  # bob


@pytest.mark.parametrize(
    ("kind", "unit"),
    [(pa.date32(), "s"), (pa.timestamp("ms", "UTC"), "ms"), (pa.timestamp("ns"), "ns")],
)
def test_lags_of_dates_are_durations(kind, unit):
    days = pa.array([datetime.date(1969, 12, 31), datetime.date(1970, 1, 3)] * 2).cast(kind)
    table = pa.table({"who": ["u", "u", "v", "v"], "when": days, "what": ["a", "b"] * 2})
    mined = quarvis.mine(table, entity="who", time="when", items="what", min_count=2)
    assert mined.lags().schema.field("median").type == pa.duration(unit)
    three = datetime.timedelta(days=3)
    assert [v.as_py() for v in mined.lags().column("median").cast(pa.duration("us"))] == [three]
    explained = mined.explain(("a", "b")).histories
    assert explained.column("consequent_time").combine_chunks().equals(days.take([1, 3]))
    now = mined.match(
        quarvis.Histories(table.slice(0, 1), entity="who", time="when", items="what"),
        now=datetime.date(1970, 1, 2),
    ) if kind == pa.date32() else None
    if now is not None:
        assert now.column("antecedent_time").to_pylist() == [datetime.date(1969, 12, 31)]


@pytest.mark.parametrize("ask", [
    lambda mined: mined.explain(("a", "b")), lambda mined: mined.lags(),
    lambda mined: mined.measures("ordered_lift"), lambda mined: mined.top(1, by="count"),
])
def test_baskets_have_no_order(ask):
    with pytest.raises(quarvis.DataError):
        ask(quarvis.mine(quarvis.from_baskets([("a", "b")]), min_count=1))


def test_frames_of_answers_are_of_library_of_input():
    frame = pd.DataFrame({"who": ["u", "u"], "when": [1, 2], "what": ["a", "b"]})
    mined = quarvis.mine(frame, entity="who", time="when", items="what", min_count=1)
    for answer in (mined.lags(), mined.explain(("a", "b")).histories, mined.measures("zhang"),
                   mined.closed(), quarvis.measures.compute(mined, "phi")):
        assert isinstance(answer, pd.DataFrame)
