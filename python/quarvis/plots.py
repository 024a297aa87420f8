"""Plots of rules, as Altair charts; needs the extra ``quarvis[plots]``.

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
from quarvis.writing import write_whole

_MOST_POINTS = 1000
_BINS = 40
_FORMATS = (".svg", ".png", ".html")


def scatter(mined: Mined, *, x: str = "support", y: str = "confidence", color: str = "lift") -> Any:
    """Draw a point for each rule.

    Of more than 1,000 rules the others are counted in squares, and the 1,000 with the greatest
    value of `color` are points above them.

    Parameters
    ----------
    mined : Mined
        The rules.
    x, y, color : str
        Columns or measures.

    Returns
    -------
    altair.Chart or altair.LayerChart
    """
    alt = _altair()
    places = mined._places
    values = {name: mined._values(name)[places] for name in dict.fromkeys((x, y, color))}
    top = mined.top(_MOST_POINTS, by=color)
    shown = {name: mined._values(name)[top._places] for name in values}
    points = alt.Chart(_data({**shown, "rule": _texts(top)})).mark_circle(opacity=0.7).encode(
        x=alt.X(f"{x}:Q", title=_title(x)), y=alt.Y(f"{y}:Q", title=_title(y)),
        color=alt.Color(f"{color}:Q", title=_title(color), scale=alt.Scale(scheme="viridis")),
        tooltip=["rule:N", *(alt.Tooltip(f"{name}:Q", format=".3g") for name in values)],
    )
    if len(mined) <= _MOST_POINTS:
        return points.properties(width=480, height=360)
    finite = np.isfinite(values[x]) & np.isfinite(values[y])
    counts, x_edges, y_edges = np.histogram2d(values[x][finite], values[y][finite], _BINS)
    columns, rows = np.nonzero(counts)
    squares = alt.Chart(_data({
        "x": x_edges[columns], "x2": x_edges[columns + 1], "y": y_edges[rows],
        "y2": y_edges[rows + 1], "rules": counts[columns, rows],
    })).mark_rect().encode(
        x=alt.X("x:Q", title=_title(x)), x2="x2:Q", y=alt.Y("y:Q", title=_title(y)), y2="y2:Q",
        color=alt.Color("rules:Q", scale=alt.Scale(type="log", scheme="greys")),
        tooltip=[alt.Tooltip("rules:Q", format=",.0f")],
    )
    return (squares + points).resolve_scale(color="independent").properties(width=480, height=360)


def graph(mined: Mined, *, by: str = "lift", rules: int = 50) -> Any:
    """Draw items, with a line from each antecedent to each consequent of the best rules.

    Parameters
    ----------
    mined : Mined
        The rules.
    by : str
        The column or measure of which the rules have the greatest values.
    rules : int
        How many rules to draw; more are hardly readable.

    Returns
    -------
    altair.LayerChart
        Items stand on a circle, in the order of their names. Lines thicken towards the consequent.
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
    items = sorted({item for edge in edges for item in edge})
    angle = {item: 2 * np.pi * place / len(items) for place, item in enumerate(items)}
    at = {item: (np.sin(a), np.cos(a)) for item, a in angle.items()}
    # Half a line is drawn thin and the other half thick, so that it tells its direction.
    halves: list[dict[str, Any]] = []
    for (a, s), value in edges.items():
        (x, y), (x2, y2) = at[a], at[s]
        for begin, end, width in ((0.0, 0.5, 1), (0.5, 1.0, 3)):
            halves.append({
                "x": x + begin * (x2 - x), "y": y + begin * (y2 - y), "x2": x + end * (x2 - x),
                "y2": y + end * (y2 - y), "width": width, by: value, "rule": f"{a} => {s}",
            })
    axis = {"axis": None, "scale": alt.Scale(domain=[-1.9, 1.9])}
    lines = alt.Chart(alt.Data(values=halves)).mark_rule(opacity=0.6).encode(
        x=alt.X("x:Q", **axis), y=alt.Y("y:Q", **axis), x2="x2:Q", y2="y2:Q",
        color=alt.Color(f"{by}:Q", title=_title(by), scale=alt.Scale(scheme="viridis")),
        strokeWidth=alt.StrokeWidth("width:Q", scale=None),
        tooltip=["rule:N", alt.Tooltip(f"{by}:Q", format=".3g")],
    )
    layers = [lines]
    for is_right in (True, False):
        side = [
            {"x": at[i][0], "y": at[i][1], "item": i} for i in items
            if (at[i][0] >= 0) == is_right
        ]
        base = alt.Chart(alt.Data(values=side)).encode(
            x=alt.X("x:Q", **axis), y=alt.Y("y:Q", **axis)
        )
        layers.append(base.mark_circle(size=40, color="black").encode(tooltip="item:N"))
        layers.append(base.mark_text(
            align="left" if is_right else "right", dx=8 if is_right else -8, fontSize=9, limit=170
        ).encode(text="item:N"))
    return alt.layer(*layers).properties(width=720, height=720)


def lags(mined: Mined, rule: Any) -> Any:
    """Draw how long the consequents of a rule take to follow, over the histories that count.

    Returns
    -------
    altair.Chart
        Lags are days for dates and timestamps, else numbers in the unit of the times.
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
    heights, edges = np.histogram(values, min(_BINS, max(len(np.unique(values)), 1)))
    left, right = sides_of(rule)
    return alt.Chart(_data({
        "from": edges[:-1], "to": edges[1:], "histories": heights
    })).mark_bar().encode(
        x=alt.X("from:Q", title="lag in days" if days else "lag"), x2="to:Q",
        y=alt.Y("histories:Q", title="histories"), tooltip=["from:Q", "to:Q", "histories:Q"],
    ).properties(width=480, height=300, title=_rule(left, right))


def rules_of(mined: Mined, item: str, *, by: str = "lift", rules: int = 30) -> Any:
    """Draw the best rules that have an item, as bars.

    Returns
    -------
    altair.Chart
    """
    alt = _altair()
    best = mined.filter(contains=item).top(rules, by=by)
    if len(best) == 0:
        raise DataError(f"no rule has the item {item!r}")
    values = mined._values(by)[best._places]
    texts = _texts(best)
    return alt.Chart(_data({"rule": texts, by: values})).mark_bar().encode(
        y=alt.Y("rule:N", sort=texts, title=None, axis=alt.Axis(labelLimit=420)),
        x=alt.X(f"{by}:Q", title=_title(by)),
        tooltip=["rule:N", alt.Tooltip(f"{by}:Q", format=".3g")],
    ).properties(width=360, height=alt.Step(16), title=f"Rules of {item}")


def save(chart: Any, path: str | os.PathLike[str]) -> None:
    """Write a chart as .svg, .png or .html; the page needs no network.

    Raises
    ------
    DataError
        For another ending.
    OSError
        When the file cannot be written.
    """
    kind = Path(path).suffix.lower()
    if kind not in _FORMATS:
        raise DataError(f"the ending of {os.fspath(path)!r} is none of {', '.join(_FORMATS)}")
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
