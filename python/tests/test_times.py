"""Times of every type, and their windows."""

import datetime
import re

import numpy as np
import pandas as pd
import pyarrow as pa
import pytest

import quarvis

UTC = datetime.UTC


def pair(first, second, kind=None):
    """Return three histories, each with an "a" and then a "b" at these times."""
    when = pa.array([first, second] * 3, kind)
    return quarvis.Histories(
        pa.table({"who": ["u", "u", "v", "v", "w", "w"], "when": when, "what": ["a", "b"] * 3}),
        entity="who", time="when", items="what",
    )


def follows(histories, window):
    """Return whether b follows a within the window in all three histories."""
    rules = quarvis.mine(histories, min_count=1, window=window).to_arrow().to_pylist()
    counts = {(r["antecedents"][0], r["consequents"][0]): r["count"] for r in rules}
    assert counts in ({}, {("a", "b"): 3})
    return bool(counts)


DAY = datetime.date


@pytest.mark.parametrize(
    ("first", "second", "kind", "within", "beyond"),
    [
        (5, 9, pa.int8(), 4, 3),
        (-5, -1, pa.int64(), np.int64(4), 3),
        (0, 2**64 - 1, pa.uint64(), 2**64 - 1, 2**64 - 2),
        (-(2**63), 2**63 - 1, pa.int64(), 2**64 - 1, 2**64 - 2),
        (DAY(1969, 12, 30), DAY(1970, 1, 2), None, "3d", "2d"),
        (DAY(2020, 2, 28), DAY(2020, 3, 1), None, "2d", "47h"),
        (DAY(1600, 1, 1), DAY(2400, 1, 1), None, "292194d", "292193d"),
        (DAY(2020, 1, 1), DAY(2020, 1, 15), None, "2w", "1w 6d 23h"),
        (DAY(2020, 1, 1), DAY(2020, 1, 3), pa.date64(), datetime.timedelta(2), "1d"),
        (datetime.datetime(2020, 1, 1), datetime.datetime(2020, 1, 2, 0, 0, 0, 1), None,
         datetime.timedelta(days=1, microseconds=1), "1d"),
        (datetime.datetime(1960, 1, 1), datetime.datetime(1960, 1, 1, 12), pa.timestamp("ns"),
         pd.Timedelta("12h"), np.timedelta64(719, "m")),
        (datetime.datetime(1950, 1, 1), datetime.datetime(2100, 1, 1), pa.timestamp("ms"),
         "54787d", "54786d"),
        (datetime.datetime(2020, 1, 1), datetime.datetime(2020, 1, 1, 0, 0, 1), pa.timestamp("s"),
         "1s", None),
    ],
)
def test_window_is_inclusive(first, second, kind, within, beyond):
    histories = pair(first, second, kind)
    assert follows(histories, within)
    assert follows(histories, None)
    if beyond is not None:
        assert not follows(histories, beyond)


def test_day_of_changing_clocks_has_its_true_length():
    # On 29 March 2020 the clocks of Berlin skipped an hour, so noon to noon took 23 hours.
    noons = [datetime.datetime(2020, 3, 28, 11, tzinfo=UTC),
             datetime.datetime(2020, 3, 29, 10, tzinfo=UTC)]
    zoned = pair(*noons, pa.timestamp("s", "Europe/Berlin"))
    assert follows(zoned, "23h")
    assert not follows(zoned, "22h")
    plain = [datetime.datetime(2020, 3, day, 12) for day in (28, 29)]
    assert not follows(pair(*plain, pa.timestamp("s")), "23h")


@pytest.mark.parametrize(
    ("window", "message"),
    [
        (30, "window=30, but the times are dates: give a length of time such as '30d' or a "
             "timedelta"),
        ("30 days", "window='30 days' is not a length of time: write a number and one of w, d, h, "
                    "min, s, ms, us, ns, such as '30d' or '36h'"),
        ("", "window='' is not a length of time: write a number and one of w, d, h, min, s, ms, "
             "us, ns, such as '30d' or '36h'"),
        ("12h", "window='12h' is shorter than a unit of the times (days), so nothing could lie "
                "within it: give a longer one, or None for the whole past"),
        (datetime.timedelta(-1), "window=datetime.timedelta(days=-1) is negative"),
        (np.timedelta64(1, "M"), "window=np.timedelta64(1,'M') has no fixed length: give days"),
    ],
)
def test_window_of_dates_that_is_refused(window, message):
    with pytest.raises(quarvis.DataError) as error:
        follows(pair(DAY(2020, 1, 1), DAY(2020, 1, 2)), window)
    assert str(error.value) == message


@pytest.mark.parametrize(
    ("window", "message"),
    [
        ("30d", "window='30d', but the times are numbers: give a whole number in their unit"),
        (1.5, "window=1.5, but the times are numbers: give a whole number in their unit"),
        (-1, "window=-1 is negative"),
        (0, "window=0 is shorter than a unit of the times (numbers), so nothing could lie within "
            "it: give a longer one, or None for the whole past"),
    ],
)
def test_window_of_numbers_that_is_refused(window, message):
    with pytest.raises(quarvis.DataError) as error:
        follows(pair(1, 2), window)
    assert str(error.value) == message


def test_window_without_times_is_refused():
    table = pa.table({"who": ["u"], "what": ["a"]})
    with pytest.raises(quarvis.DataError, match="a window needs times: name the column"):
        quarvis.mine(table, entity="who", items="what", min_count=1, window=3)


def test_window_longer_than_data_warns():
    with pytest.warns(quarvis.QuarvisWarning) as warned:
        follows(pair(DAY(2020, 1, 1), DAY(2020, 1, 5)), "5d")
    assert [str(w.message) for w in warned] == [
        "window='5d' is longer than the data, which span 2020-01-01 to 2020-01-05: it has no effect"
    ]
    assert warned[0].filename == __file__


@pytest.mark.parametrize(
    ("times", "message"),
    [
        (["2020-01-01", "x"], "column 'when' has times as text: convert them to timestamps first "
         "(pandas: pd.to_datetime, Polars: str.to_datetime), or read the file with "
         "time_format=..."),
        ([1.0, 2.5], "column 'when' has times as double, which may be rounded: convert them to "
         "integers or timestamps"),
        ([True, False], "column 'when' has times as bool: give integers, dates or timestamps"),
    ],
)
def test_times_that_are_refused(times, message):
    table = pa.table({"who": ["u", "v"], "when": times, "what": ["a", "b"]})
    with pytest.raises(quarvis.DataError, match=f"^{re.escape(message)}$"):
        quarvis.Histories(table, entity="who", time="when", items="what")


@pytest.mark.parametrize(
    ("first", "second", "kind", "unit"),
    [
        (DAY(1969, 12, 30), DAY(1970, 1, 2), None, "days"),
        (datetime.datetime(1950, 1, 1), datetime.datetime(2100, 1, 1), pa.timestamp("ns"),
         "nanoseconds"),
        (datetime.datetime(2020, 1, 1, tzinfo=UTC), datetime.datetime(2020, 1, 2, tzinfo=UTC),
         pa.timestamp("us", "UTC"), "microseconds"),
        (-7, 9, pa.int32(), "numbers"),
        (0, 2**64 - 1, pa.uint64(), "numbers"),
    ],
)
def test_report_tells_span_in_values_of_column(first, second, kind, unit):
    report = pair(first, second, kind).report()
    assert (report.first, report.last, report.unit) == (first, second, unit)
    assert (report.rows, report.entities, report.transactions, report.items) == (6, 3, 6, 2)
