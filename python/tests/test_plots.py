"""Plots: their content, and saving them to files."""

import json

import numpy as np
import pyarrow as pa
import pytest

import quarvis
from quarvis import plots


@pytest.fixture(scope="module")
def many():
    """Return a result with more than 10,000 rules."""
    draws = np.random.default_rng(3)
    rows = 6000
    table = pa.table({
        "who": draws.integers(0, 300, rows), "when": draws.integers(0, 40, rows),
        "what": draws.integers(0, 20, rows),
    })
    mined = quarvis.mine(table, entity="who", time="when", items="what", min_count=13)
    assert len(mined) > 10_000
    return mined


def values(chart):
    """Return the rows of each layer."""
    spec = chart.to_dict()
    data = [layer.get("data", spec.get("data")) for layer in spec.get("layer", [spec])]
    return [d["values"] if "values" in d else spec["datasets"][d["name"]] for d in data]


def test_scatter_has_a_point_for_each_rule(shop):
    mined = quarvis.mine(shop, min_count=1)
    (points,) = values(plots.scatter(mined))
    assert len(points) == len(mined)
    rules = {p["rule"] for p in points}
    assert "bread => butter" in rules


def test_scatter_of_many_rules_counts_them_in_squares(many):
    squares, points = values(plots.scatter(many))
    assert sum(s["rules"] for s in squares) == len(many)
    assert len(squares) <= 1600
    assert len(points) == 1000


def test_graph_shows_the_best_rules(many):
    lines = values(plots.graph(many, rules=10))[0]
    best = many.top(10, by="lift").to_arrow().to_pylist()
    pairs = {f"{a} => {s}" for r in best for a in r["antecedents"] for s in r["consequents"]}
    assert {line["rule"] for line in lines} == pairs


def test_graph_has_a_row_for_each_item(shop):
    lines, *sides = values(plots.graph(quarvis.mine(shop, min_count=1)))
    for side, points in enumerate((sides[0], sides[2])):
        names = {line["rule"].split(" => ")[side] for line in lines}
        assert {point["item"] for point in points} == names
        assert len({point["y"] for point in points}) == len(names)
        ends = {(line["rule"].split(" => ")[side], line["y2" if side else "y"]) for line in lines}
        assert ends == {(point["item"], point["y"]) for point in points}


def test_sides_of_a_graph_are_ordered_by_their_neighbours():
    edges = [("a", "z"), ("b", "y"), ("b", "x"), ("c", "x")]
    left, right = plots._sides_of_graph(edges)
    places = [(left.index(a), right.index(s)) for a, s in edges]
    crossings = [(p, q) for p in places for q in places if p[0] < q[0] and p[1] > q[1]]
    assert crossings == []


def test_lags_count_the_histories(shop):
    mined = quarvis.mine(shop, min_count=2)
    chart = plots.lags(mined, ("bread", "butter"))
    assert values(chart) == [[  # after 2, 2 and 8 days
        {"from": float(lag), "to": lag + 1.0, "histories": {2: 2, 8: 1}.get(lag, 0)}
        for lag in range(2, 9)
    ]]
    spec = chart.to_dict()
    assert spec["title"] == "bread => butter"
    assert spec["encoding"]["y2"] == {"datum": 0}  # bars start at the axis


@pytest.mark.parametrize("most", [3, 40, 41, 79, 1000])
def test_ends_of_bars_are_whole_numbers(most):
    lags = np.arange(1.0, most + 1)
    ends = plots._bins(lags)
    assert len(ends) <= 42
    assert (ends == ends.astype(int)).all()
    assert len(set(np.diff(ends))) == 1
    heights, _ = np.histogram(lags, ends)
    assert heights.sum() == most
    assert set(heights[1:-2]) <= {ends[1] - ends[0]}


def test_lags_that_are_no_whole_days():
    start = np.datetime64("2024-01-01T00:00", "s")
    hours = [np.timedelta64(h, "h") for h in (0, 6, 0, 36)]
    table = pa.table({
        "who": ["u", "u", "v", "v"], "when": np.array([start + h for h in hours]),
        "what": ["a", "b", "a", "b"],
    })
    mined = quarvis.mine(table, entity="who", time="when", items="what", min_count=1)
    (bars,) = values(plots.lags(mined, ("a", "b")))
    assert [bar["from"] for bar in bars if bar["histories"]] == [0.25, bars[-1]["from"]]
    assert bars[-1]["to"] == 1.5


def test_rules_of_an_item(shop):
    (bars,) = values(plots.rules_of(quarvis.mine(shop, min_count=1), "jam"))
    assert bars
    assert all("jam" in bar["rule"] for bar in bars)
    with pytest.raises(quarvis.DataError):
        plots.rules_of(quarvis.mine(shop, min_count=1), "tea")


@pytest.mark.parametrize("kind", ["scatter", "graph", "rules_of"])
@pytest.mark.parametrize(
    ("ending", "begin"), [("svg", b"<svg"), ("png", b"\x89PNG"), ("html", b"<!DOCTYPE html>")]
)
def test_files(kind, ending, begin, many, tmp_path):
    path = tmp_path / f"plot.{ending}"
    chart = plots.rules_of(many, "3") if kind == "rules_of" else getattr(plots, kind)(many)
    plots.save(chart, path)
    content = path.read_bytes()
    assert content.lstrip().startswith(begin)
    assert b"cdn.jsdelivr" not in content[:2000]
    json.dumps(chart.to_dict())


def test_unknown_ending(shop, tmp_path):
    with pytest.raises(quarvis.DataError, match=r"name the file \.svg, \.png or \.html$"):
        plots.save(plots.scatter(quarvis.mine(shop, min_count=2)), tmp_path / "plot.gif")
