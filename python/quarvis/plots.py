"""Plots rules as Altair charts; requires the extra ``quarvis[plots]``.

>>> chart = quarvis.plots.scatter(mined)
>>> quarvis.plots.save(chart, "rules.svg")
"""

from __future__ import annotations

import io
import os
from pathlib import Path
from typing import Any

import numpy as np
import pyarrow as pa

from quarvis._frames import to_table
from quarvis.errors import DataError
from quarvis.explanation import sides_of
from quarvis.mined import Mined
from quarvis.writing import require_format, write_whole

_MOST_POINTS = 1000
_BINS = 40
#: The endings of file names that `save` supports.
FORMATS = (".svg", ".png", ".html")


def scatter(mined: Mined, *, x: str = "support", y: str = "confidence", color: str = "lift") -> Any:
    """Draw a point for each rule.

    With more than 1,000 rules, only the 1,000 with the greatest values of `color` are points. They
    are drawn over squares that show how many of all rules lie there.

    Parameters
    ----------
    mined : Mined
        The rules.
    x, y, color : str
        The columns or measures to draw.

    Returns
    -------
    altair.Chart or altair.LayerChart
    """
    alt = _altair()
    places = mined._places
    values = {name: mined._values(name)[places] for name in dict.fromkeys((x, y, color))}
    top = mined.top(_MOST_POINTS, by=color)
    shown = {name: mined._values(name)[top._places] for name in values}
    many = len(mined) > _MOST_POINTS
    points = alt.Chart(_data({**shown, "rule": _texts(top)})).mark_circle(
        opacity=0.8, size=16 if many else 36
    ).encode(
        x=alt.X(f"{x}:Q", title=_title(x), axis=alt.Axis(tickCount=6)),
        y=alt.Y(f"{y}:Q", title=_title(y)), color=_color(color),
        tooltip=["rule:N", *(alt.Tooltip(f"{name}:Q", format=".3g") for name in values)],
    )
    if not many:
        return points.properties(width=480, height=360)
    finite = np.isfinite(values[x]) & np.isfinite(values[y])
    counts, x_edges, y_edges = np.histogram2d(values[x][finite], values[y][finite], _BINS)
    columns, rows = np.nonzero(counts)
    squares = alt.Chart(_data({
        "x": x_edges[columns], "x2": x_edges[columns + 1], "y": y_edges[rows],
        "y2": y_edges[rows + 1], "rules": counts[columns, rows],
    })).mark_rect().encode(
        x=alt.X("x:Q", title=_title(x)), x2="x2:Q", y=alt.Y("y:Q", title=_title(y)), y2="y2:Q",
        color=alt.Color("rules:Q", scale=alt.Scale(type="log", range=["#ececec", "#8f8f8f"])),
        tooltip=[alt.Tooltip("rules:Q", format=",.0f")],
    )
    return (squares + points).resolve_scale(color="independent").properties(width=480, height=360)


def graph(mined: Mined, *, by: str = "lift", rules: int = 50) -> Any:
    """Draw the best rules as a graph: a line from each antecedent to each consequent.

    Parameters
    ----------
    mined : Mined
        The rules.
    by : str
        The column or measure that ranks the rules, greatest first.
    rules : int
        The number of rules to draw; more than the default are hard to read.

    Returns
    -------
    altair.LayerChart
        Antecedents are on the left and consequents on the right, each near the items it is joined
        to. An item that is both appears on both sides. If several rules join the same two items,
        the line shows the greatest value.
    """
    alt = _altair()
    best = mined.top(rules, by=by)
    table = best.to_arrow()
    values = mined._values(by)[best._places]
    edges: dict[tuple[str, str], float] = {}
    for left, right, value in zip(
        table.column("antecedents").to_pylist(), table.column("consequents").to_pylist(),
        values.tolist(), strict=True,
    ):
        for a in left:
            for s in right:
                edges[a, s] = max(value, edges.get((a, s), value))
    sides = _sides_of_graph(list(edges))
    rows = max(len(sides[0]), len(sides[1]), 1)
    # Spreads the shorter side over the height of the longer one.
    heights = [
        {item: (place + 0.5) * rows / len(side) for place, item in enumerate(side)}
        for side in sides
    ]
    lines = alt.Chart(_data({
        "x": [0] * len(edges), "x2": [1] * len(edges),
        "y": [heights[0][a] for a, _ in edges], "y2": [heights[1][s] for _, s in edges],
        by: list(edges.values()), "rule": [f"{a} => {s}" for a, s in edges],
    })).mark_rule(opacity=0.7, strokeWidth=1.5).encode(
        x=alt.X("x:Q", axis=None, scale=alt.Scale(domain=[0, 1], nice=False)), x2="x2:Q",
        y=alt.Y("y:Q", axis=None, scale=alt.Scale(domain=[rows, 0], nice=False)), y2="y2:Q",
        color=_color(by, orient="top"), tooltip=["rule:N", alt.Tooltip(f"{by}:Q", format=".3g")],
    )
    layers = [lines]
    for x, side in enumerate(heights):
        base = alt.Chart(_data({
            "x": [x] * len(side), "y": list(side.values()), "item": list(side),
        })).encode(x="x:Q", y="y:Q", tooltip="item:N")
        layers.append(base.mark_circle(size=36, color="black", opacity=1))
        layers.append(base.mark_text(
            align="left" if x else "right", dx=8 if x else -8, fontSize=10, limit=300
        ).encode(text="item:N"))
    return alt.layer(*layers).properties(
        width=320, height=15 * rows, view=alt.ViewBackground(stroke=None)
    )


def lags(mined: Mined, rule: Any) -> Any:
    """Draw a histogram of the lags of a rule, over the histories in which it counts.

    Parameters
    ----------
    mined : Mined
        The run.
    rule : pair of item lists, or row
        As for `Mined.explain`.

    Returns
    -------
    altair.Chart
        Lags are in days for dates and timestamps, otherwise in the unit of the times. A bar counts
        the lags from its left edge up to, but not including, its right edge; the last bar includes
        its right edge. If all lags are whole numbers, so are the edges.
    """
    alt = _altair()
    explanation = mined.explain(rule)
    scale = mined._run.histories._columns.scale
    table, _ = to_table(explanation.histories, ["counts", "lag"])
    counted = table.filter(table.column("counts")).column("lag")
    days = scale.nanoseconds is not None
    if days:
        nanoseconds = counted.cast(pa.duration("ns")).cast(pa.int64()).to_numpy()
        values = nanoseconds / (86400 * 10**9)
    else:
        values = counted.cast(pa.float64()).to_numpy()
    heights, edges = np.histogram(values, _bins(values))
    left, right = sides_of(rule)
    return alt.Chart(_data({
        "from": edges[:-1], "to": edges[1:], "histories": heights
    })).mark_bar().encode(
        x=alt.X("from:Q", title="lag in days" if days else "lag"), x2="to:Q",
        y=alt.Y("histories:Q", title="histories", axis=alt.Axis(tickMinStep=1)),
        y2=alt.Y2Datum(0), tooltip=["from:Q", "to:Q", "histories:Q"],
    ).properties(width=480, height=300, title=_rule(left, right))


def rules_of(mined: Mined, item: str, *, by: str = "lift", rules: int = 30) -> Any:
    """Draw the best rules that contain an item, as bars.

    Parameters
    ----------
    mined : Mined
        The rules.
    item : str
        The name of the item, or a pattern.
    by : str
        The column or measure that ranks the rules, greatest first.
    rules : int
        The number of rules to draw.

    Returns
    -------
    altair.Chart

    Raises
    ------
    DataError
        When no rule has the item.
    """
    alt = _altair()
    best = mined.filter(contains=item).top(rules, by=by)
    if len(best) == 0:
        raise DataError(f"no rule has the item {item!r}")
    values = mined._values(by)[best._places]
    texts = _texts(best)
    return alt.Chart(_data({"rule": texts, by: values})).mark_bar().encode(
        y=alt.Y("rule:N", sort=texts, title=None, axis=alt.Axis(labelLimit=640)),
        x=alt.X(f"{by}:Q", title=_title(by)),
        tooltip=["rule:N", alt.Tooltip(f"{by}:Q", format=".3g")],
    ).properties(width=300, height=alt.Step(16), title=f"Rules of {item}")


def save(chart: Any, path: str | os.PathLike[str]) -> None:
    """Write a chart as .svg, .png or .html; the .html page needs no network.

    Raises
    ------
    DataError
        For any other ending.
    OSError
        When the file cannot be written.
    """
    kind = Path(path).suffix.lower()
    require_format(path, FORMATS)
    options: dict[str, Any] = {"inline": True} if kind == ".html" else {}
    if kind == ".png":
        file: Any = io.BytesIO()
        options["scale_factor"] = 2
    else:
        file = io.StringIO()
    chart.save(file, format=kind[1:], **options)
    content = file.getvalue()
    write_whole(path, lambda out: out.write(
        content if isinstance(content, bytes) else content.encode()
    ))


def _altair() -> Any:
    try:
        import altair
    except ImportError as error:
        raise DataError("plots need Altair: pip install 'quarvis[plots]'") from error
    return altair


def _data(columns: dict[str, Any]) -> Any:
    names = list(columns)
    rows = zip(*(np.asarray(columns[name]).tolist() for name in names), strict=True)
    return _altair().Data(values=[
        {name: None if isinstance(v, float) and not np.isfinite(v) else v
         for name, v in zip(names, row, strict=True)}
        for row in rows
    ])


def _color(name: str, **legend: Any) -> Any:
    alt = _altair()
    return alt.Color(
        f"{name}:Q", title=_title(name), scale=alt.Scale(scheme="plasma"),
        legend=alt.Legend(**legend),
    )


def _bins(values: Any) -> Any:
    """Return the number of bars or, if all values are whole, the edges of up to 40 bars."""
    if len(values) == 0 or (values != np.floor(values)).any():
        return _BINS
    width = int(np.ceil((values.max() - values.min() + 1) / _BINS))
    begin = np.floor(values.min() / width) * width
    return np.arange(begin, values.max() + width + 1, width)


def _sides_of_graph(edges: list[tuple[str, str]]) -> tuple[list[str], list[str]]:
    """Return the items of both sides, ordered so that few lines cross.

    Sorts each side in turn by the mean place of its neighbours on the other: Sugiyama, Tagawa,
    Toda, Methods for Visual Understanding of Hierarchical System Structures, 1981.
    """
    left, right = (sorted({edge[side] for edge in edges}) for side in (0, 1))
    for turn in range(8):
        ordered, fixed = (left, right) if turn % 2 == 0 else (right, left)
        place = {item: at / len(fixed) for at, item in enumerate(fixed)}
        near: dict[str, list[float]] = {item: [] for item in ordered}
        for a, s in edges:
            own, other = (a, s) if turn % 2 == 0 else (s, a)
            near[own].append(place[other])
        ordered.sort(key=lambda item: (sum(near[item]) / len(near[item]), item))
    return left, right


def _title(name: str) -> str:
    return name.replace("_", " ")


def _rule(left: list[str], right: list[str]) -> str:
    def side(items: list[str]) -> str:
        return items[0] if len(items) == 1 else "{" + ",".join(items) + "}"

    return f"{side(left)} => {side(right)}"


def _texts(mined: Mined) -> list[str]:
    table = mined.to_arrow()
    return [
        _rule(left, right)
        for left, right in zip(
            table.column("antecedents").to_pylist(), table.column("consequents").to_pylist(),
            strict=True,
        )
    ]


__all__ = ["graph", "lags", "rules_of", "save", "scatter"]
