"""The test of the order: its definition, and simulations of its error rates."""

import itertools

import brute
import numpy as np
import pyarrow as pa
import pytest

import quarvis


def table_of(who, when, what):
    table = pa.table({"who": who, "when": when, "what": what})
    return quarvis.Histories(table, entity="who", time="when", items="what")


def without_order(seed, histories=60, items=6, length=6):
    """Return histories with one random item at each time; popular items are likelier."""
    draws = np.random.default_rng(seed)
    who = np.repeat(np.arange(histories), length)
    when = np.concatenate([draws.choice(30, length, replace=False) for _ in range(histories)])
    weights = np.arange(1, items + 1) / (items * (items + 1) / 2)
    return who, when, draws.choice(items, len(who), p=weights)


def rows(frame):
    return {
        (tuple(r["antecedents"]), tuple(r["consequents"])): r for r in frame.to_pylist()
    }


@pytest.mark.parametrize("window", [None, 10])
def test_share_of_false_finds_without_order(window):
    runs = 200
    finds = 0
    for seed in range(runs):
        mined = quarvis.mine(
            table_of(*without_order(seed)), min_count=8, window=window, max_items=3, threads=1
        )
        assert len(mined) > 10
        p = mined.test_order(permutations=59, seed=seed, threads=1).column("p_adjusted")
        finds += min(p.to_pylist()) <= 0.05
    # At most a twentieth may be false finds; three binomial standard deviations are allowed more.
    assert finds <= 0.05 * runs + 3 * np.sqrt(0.05 * 0.95 * runs)
    assert finds > 0  # a test that never finds anything would be useless


def test_planted_order_is_found():
    for seed in range(10):
        draws = np.random.default_rng(100 + seed)
        who, when, what = without_order(seed)
        what = what.astype(object)
        for history in range(30):
            # In half of the histories, 8 follows 7 after two days.
            start = draws.integers(0, 28)
            who = np.append(who, [history, history])
            when = np.append(when, [40 + start, 42 + start])
            what = np.append(what, [7, 8])
        mined = quarvis.mine(
            table_of(who, when, [str(x) for x in what]), min_count=8, window=5, max_items=2
        )
        found = rows(mined.test_order(permutations=199, seed=seed))
        assert found[("7",), ("8",)]["p_adjusted"] == 1 / 200
        assert found[("7",), ("8",)]["p_value"] == 1 / 200
        others = [r["p_adjusted"] for rule, r in found.items() if "8" not in rule[1]]
        assert min(others, default=1) > 1 / 200


def test_exact_distribution():
    # Three transactions have six orders, all equally likely; a is before b in three of them.
    who = [h for h in range(40) for _ in range(3)]
    mined = quarvis.mine(
        table_of(who, [1, 2, 3] * 40, ["a", "b", "c"] * 40), min_count=1, max_items=2
    )
    found = rows(mined.test_order(permutations=2000, seed=3))
    orders = list(itertools.permutations([{"a"}, {"b"}, {"c"}]))
    share = sum(
        brute.counted_at(dict(enumerate(order)), ["a"], ["b"], None) is not None
        for order in orders
    ) / len(orders)
    row = found[("a",), ("b",)]
    assert row["count"] == 40
    assert row["expected"] == pytest.approx(40 * share, abs=5 * np.sqrt(40 * 0.25 / 2000))
    assert row["deviation"] == pytest.approx(np.sqrt(40 * share * (1 - share)), rel=0.1)
    assert row["p_value"] == row["p_adjusted"] == 1 / 2001


def test_result_depends_on_seed_and_not_on_threads():
    mined = quarvis.mine(table_of(*without_order(1)), min_count=5, max_items=3)
    one = mined.test_order(permutations=50, seed=2, threads=1)
    assert one.num_rows > 20
    assert mined.test_order(permutations=50, seed=2, threads=3).equals(one)
    assert not mined.test_order(permutations=50, seed=3).equals(one)


def test_p_values_are_shares_of_all_data_sets():
    mined = quarvis.mine(table_of(*without_order(4)), min_count=3, max_items=2)
    table = mined.test_order(permutations=19, seed=1).to_pandas()
    assert len(table) > 5
    for name in ("p_value", "p_adjusted"):
        assert np.allclose(table[name] * 20 % 1, 0, atol=1e-9)
        assert table[name].between(1 / 20, 1).all()
    assert (table["q_value"] >= table["p_value"]).all()


def test_selections_keep_the_family():
    mined = quarvis.mine(table_of(*without_order(4)), min_count=3, max_items=2)
    every = mined.test_order(permutations=19, seed=1).to_pylist()
    some = mined.top(3, by="count").test_order(permutations=19, seed=1).to_pylist()
    assert len(some) == 3
    assert all(row in every for row in some)


def test_sides_are_a_family_of_their_own():
    histories = table_of(*without_order(4))
    some = quarvis.mine(histories, min_count=3, max_items=2, consequents=["5"], antecedents="[1-4]")
    found = rows(some.test_order(permutations=19, seed=1))
    assert found
    assert all(rule[1] == ("5",) for rule in found)
