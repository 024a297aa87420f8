"""Every kind of frame gives the same bytes as the tool's files."""

import datetime

import duckdb
import hypothesis
import pandas as pd
import polars as pl
import pyarrow as pa
import pytest
from hypothesis import strategies as st
from strategies import rows, transaction_file

import quarvis

EPOCH = datetime.date(1969, 12, 28)  # some dates are before 1970


def arrow(data, times):
    who, when, what = zip(*data, strict=True)
    return pa.table({"who": who, "when": times(when), "what": what})


def integers(when):
    return pa.array(when, pa.int16())


def dates(when):
    return pa.array([EPOCH + datetime.timedelta(t) for t in when])


def zoned(when):
    noon = datetime.datetime(1969, 12, 28, 12, tzinfo=datetime.UTC)
    return pa.array(
        [noon + datetime.timedelta(t) for t in when], pa.timestamp("us", "America/New_York")
    )


def nanoseconds(when):
    return pa.array([t * 86400 * 10**9 + 7 for t in when], pa.timestamp("ns"))


def chunked(table):
    return pa.concat_tables([table.slice(0, 3), table.slice(3, 1), table.slice(4)])


def sliced(table):
    return pa.concat_tables([table, table]).slice(table.num_rows)


def categorical(table):
    for name in ("who", "what"):
        at = table.column_names.index(name)
        table = table.set_column(at, name, table.column(name).dictionary_encode())
    return table


def large(table):
    at = table.column_names.index("what")
    return table.set_column(at, "what", table.column("what").cast(pa.large_string()))


FRAMES = {
    "pyarrow": lambda table: table,
    "pandas": lambda table: table.to_pandas(),
    "pandas-arrow": lambda table: table.to_pandas(types_mapper=pd.ArrowDtype),
    "pandas-objects": lambda table: table.to_pandas().astype({"what": object}),
    "pandas-categories": lambda table: table.to_pandas().astype({"what": "category"}),
    "polars": pl.from_arrow,
    "polars-lazy": lambda table: pl.from_arrow(table).lazy(),
    "polars-categories": lambda table: pl.from_arrow(table).cast({"what": pl.Categorical}),
    "duckdb": duckdb.from_arrow,
    "chunked": chunked,
    "sliced": sliced,
    "categorical": categorical,
    "large-strings": large,
    "string-views": lambda table: pl.from_arrow(table).to_arrow(
        compat_level=pl.CompatLevel.newest()
    ),
    "batch": lambda table: table.combine_chunks().to_batches()[0],
    "reader": lambda table: table.to_reader(),
}
TIMES = {"integers": integers, "dates": dates, "zoned": zoned, "nanoseconds": nanoseconds}


@pytest.mark.parametrize("frame", FRAMES)
@hypothesis.given(data=rows(), window=st.integers(1, 4), times=st.sampled_from(list(TIMES)))
@hypothesis.settings(
    max_examples=12, deadline=None,
    suppress_health_check=[hypothesis.HealthCheck.function_scoped_fixture],
)
def test_frame_gives_bytes_of_tool(frame, data, window, times, tool, tmp_path, written):
    expected = tool(
        transaction_file(tmp_path / "in.tsv", data), tmp_path, "-c", "2", "-w", str(window)
    )
    mined = quarvis.mine(
        FRAMES[frame](arrow(data, TIMES[times])), entity="who", time="when", items="what",
        min_count=2, window=window if times == "integers" else f"{window}d", splits="runs",
    )
    assert written(mined) == expected


@pytest.mark.filterwarnings("ignore")  # Modin's warnings about its workers and conversions
@pytest.mark.parametrize("times", [integers, dates])
def test_modin_frame_gives_bytes_of_tool(times, tool, tmp_path, written):
    modin = pytest.importorskip("modin.pandas")
    data = [(f"u{i % 7}", i % 5, f"item {i * i % 11}") for i in range(200)]
    expected = tool(transaction_file(tmp_path / "in.tsv", data), tmp_path, "-c", "2", "-w", "3")
    frame = modin.DataFrame(arrow(data, times).to_pandas())
    mined = quarvis.mine(
        frame, entity="who", time="when", items="what", min_count=2,
        window=3 if times is integers else "3d", splits="runs",
    )
    assert len(mined) > 10
    assert written(mined) == expected
    assert isinstance(mined.rules, modin.DataFrame)
    assert list(mined.rules["count"]) == mined.to_arrow().column("count").to_pylist()
    sets = quarvis.mine(
        modin.DataFrame({"a": [True, True, False], "b": [True, False, False]}),
        items=["a", "b"], min_count=1, rules=False,
    ).item_sets
    assert [list(items) for items in sets["items"]] == [["a", "b"], ["a"], ["b"]]


@hypothesis.given(data=rows(), lists=st.sampled_from([pa.list_, pa.large_list]))
@hypothesis.settings(
    max_examples=30, deadline=None,
    suppress_health_check=[hypothesis.HealthCheck.function_scoped_fixture],
)
def test_lists_give_bytes_of_tool(data, lists, tool, tmp_path, written):
    expected = tool(transaction_file(tmp_path / "in.tsv", data), tmp_path, "-c", "2")
    together = {}
    for who, when, what in data:
        together.setdefault((who, when), []).append(what)
    who, when = zip(*together, strict=True)
    table = pa.table({
        "who": who, "when": when,
        "what": pa.array(list(together.values()), lists(pa.string())),
    })
    for frame in (table, table.to_pandas(), pl.from_arrow(table), chunked(table)):
        mined = quarvis.mine(
            frame, entity="who", time="when", items="what", min_count=2, splits="runs"
        )
        assert written(mined) == expected


@pytest.mark.parametrize(
    ("frame", "kind"),
    [("pandas", pd.DataFrame), ("polars", pl.DataFrame), ("polars-lazy", pl.DataFrame),
     ("pyarrow", pa.Table), ("duckdb", duckdb.DuckDBPyRelation), ("reader", pa.Table)],
)
def test_results_are_of_library_of_input(frame, kind):
    table = arrow([("u", 1, "a"), ("u", 2, "b"), ("v", 1, "a"), ("v", 2, "b")], integers)
    mined = quarvis.mine(
        FRAMES[frame](table), entity="who", time="when", items="what", min_count=2
    )
    assert isinstance(mined.rules, kind)
    assert isinstance(mined.item_sets, kind)
    assert mined.to_arrow().select(["antecedents", "consequents", "count"]).to_pylist() == [
        {"antecedents": ["a"], "consequents": ["b"], "count": 2}
    ]


def test_rules_survive_parquet(tmp_path):
    table = arrow([("u", 1, "a"), ("u", 2, "b"), ("v", 1, "a"), ("v", 2, "b")], integers)
    rules = quarvis.mine(
        table.to_pandas(), entity="who", time="when", items="what", min_count=2
    ).rules
    rules.to_parquet(tmp_path / "rules.parquet")
    again = pd.read_parquet(tmp_path / "rules.parquet")
    assert [list(side) for side in again["antecedents"]] == [["a"]]
    assert list(again["count"]) == [2]


def test_what_is_no_frame_is_refused():
    with pytest.raises(TypeError, match="data is a int, not a data frame"):
        quarvis.Histories(3, entity="a", time="b", items="c")
