"""Wrong arguments are refused in one line that says how to fix them."""

import datetime
import math
import re

import pandas as pd
import pytest

import quarvis


def refusal(call):
    with pytest.raises(quarvis.DataError) as error:
        call()
    return str(error.value)


@pytest.mark.parametrize(
    ("argument", "value", "remedy"),
    [
        ("min_count", "5", "give a whole number from 1 on"),
        ("min_count", 2.5, "give a whole number from 1 on"),
        ("min_count", True, "give a whole number from 1 on"),
        ("min_count", 0, "give a whole number from 1 on"),
        ("min_count", math.nan, "give a whole number from 1 on"),
        ("max_items", 1, "give a whole number from 2 on, since a rule has at least two items"),
        ("max_items", 2.5, "give a whole number from 2 on, since a rule has at least two items"),
        ("threads", 0, "give a whole number from 1 on"),
        ("threads", math.inf, "give a whole number from 1 on"),
        ("min_support", "0.1", "give a share from 0 to 1"),
        ("min_support", 1.5, "give a share from 0 to 1"),
        ("min_confidence", "0.5", "give a number"),
        ("min_lift", math.nan, "give a number"),
        ("max_conviction", None, "give a number"),
        ("budget", 10, "give a quarvis.Budget, such as quarvis.Budget(seconds=10)"),
        ("progress", "yes", "give True, False or a callable"),
        ("splits", "each", "give 'all' or 'runs'"),
    ],
)
def test_argument_of_mine(argument, value, remedy, shop):
    arguments = {"min_count": 2, argument: value}
    assert refusal(lambda: quarvis.mine(shop, **arguments)) == f"{argument}={value!r}: {remedy}"


def test_numbers_that_are_whole_are_taken(shop):
    mined = quarvis.mine(shop, min_count=2.0, max_items=2**40, threads=1.0)
    assert mined.to_arrow().equals(quarvis.mine(shop, min_count=2).to_arrow())


@pytest.mark.parametrize(
    ("call", "message"),
    [
        (lambda m: m.top(-1), "n=-1: give a whole number from 0 on"),
        (lambda m: m.top(1.5), "n=1.5: give a whole number from 0 on"),
        (lambda m: m.filter(min_lift=math.nan), "min_lift=nan: give a number"),
        (lambda m: m.filter(max_lift="2"), "max_lift='2': give a number"),
        (lambda m: m.lags(threads=0), "threads=0: give a whole number from 1 on"),
        (lambda m: m.test_order(permutations=0), "permutations=0: give a whole number from 1 on"),
        (lambda m: m.test_order(permutations=1.5),
         "permutations=1.5: give a whole number from 1 on"),
        (lambda m: m.test_order(seed=-1), "seed=-1: give a whole number from 0 to 2^64 - 1"),
        (lambda m: m.test_order(seed=2**64),
         f"seed={2**64}: give a whole number from 0 to 2^64 - 1"),
    ],
)
def test_argument_of_a_question(call, message, shop):
    mined = quarvis.mine(shop, min_count=2)
    assert refusal(lambda: call(mined)) == message


@pytest.mark.parametrize("call", [
    lambda m: m.top(2, by="sup"), lambda m: m.filter(min_sup=2), lambda m: m.non_redundant("sup"),
])
def test_unknown_column_is_answered_with_those_there_are(call, shop):
    message = refusal(lambda: call(quarvis.mine(shop, min_count=2)))
    assert message.startswith("there is no column or measure 'sup'; there are count, ")
    assert {"lift", "antecedent_count", "zhang", "fisher_holm"} <= set(re.findall(r"\w+", message))


def test_column_names_that_are_none():
    frame = pd.DataFrame({"who": ["u"], "when": [1], "what": ["a"]})
    for role, value in (("entity", ["who"]), ("time", 1)):
        names = {"entity": "who", "time": "when", "items": "what", role: value}
        assert refusal(lambda names=names: quarvis.Histories(frame, **names)) == (
            f"{role}={value!r}: give the name of one column, or None"
        )
    with pytest.raises(TypeError, match="data is a Series, not a data frame"):
        quarvis.Histories(frame["who"], entity="who", time=None, items="who")


def test_window_shorter_than_the_distance_of_all_times():
    # The times are whole seconds in microseconds and need more than 32 bits.
    when = pd.to_datetime(["2010-12-01", "2010-12-02"]).astype("datetime64[us]")
    frame = pd.DataFrame({"who": ["u", "u"], "when": when, "what": ["a", "b"]})
    window = datetime.timedelta(milliseconds=999)
    assert refusal(lambda: quarvis.mine(
        frame, entity="who", time="when", items="what", min_count=1, window=window
    )) == (
        f"window={window!r} is shorter than a unit of the times (seconds), so nothing could lie "
        "within it: give a longer one, or None for the whole past"
    )
