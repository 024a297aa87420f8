"""The data of the page of rules. The page itself is tested in a browser, in view/tests."""

import base64
import json
import re
import subprocess
import sys
import zlib

import numpy as np
import pyarrow.parquet
import pytest
from conftest import SHOP

import quarvis
from quarvis._view._counts import Written, recover
from quarvis._view._page import script_json, template
from quarvis._view._texts import is_list, split_rule

TYPES = {"u8": np.uint8, "u16": np.uint16, "u32": np.uint32, "f64": np.float64}
SHOP_RULES = (
    "Rule\tCount\tA union S\tSupport\tConfidence\tLift\tConviction\tProbability\tCertainty\n"
    "bread => butter\t2\t5\t0.25\t0.833333\t1.11111\t1.5\t0.833333\t5\n"
)


def data_of(view):
    """Return the data of a page, decoded as the page does."""
    text = re.search(r'<script type="application/json" id="data">(.*?)</script>', view.html, re.S)
    data = json.loads(text[1])
    block = zlib.decompress(base64.b64decode(data.pop("bytes")))
    columns, begin = {}, 0
    for name, kind, length in data.pop("columns"):
        columns[name] = np.frombuffer(block, TYPES[kind], length, begin)
        begin += -(-columns[name].nbytes // 8) * 8
    assert begin == len(block)
    return data, columns


def rules_of(view):
    """Return the rules of a page as text with n(A), n(S), n(A u S) and the count."""
    data, columns = data_of(view)

    def side(place):
        begin, end = columns["setBegin"][place : place + 2]
        return tuple(data["items"][item] for item in columns["setItems"][begin:end])

    return {
        (side(a), side(s)): (
            int(columns["setCount"][a]), int(columns["setCount"][s]), int(union), int(count)
        )
        for a, s, union, count in zip(
            columns["antecedent"], columns["consequent"], columns["unionCount"], columns["count"],
            strict=True,
        )
    }


@pytest.fixture
def shop_files(tmp_path):
    rules = tmp_path / "rules.tsv"
    rules.write_text(SHOP_RULES)
    histories = tmp_path / "shop.tsv"
    rows = {}
    for who, day, what in SHOP:
        rows.setdefault((who, day), []).append(what)
    histories.write_text("who\tday\twhat\n" + "".join(
        "\t".join([who, str(day), *what]) + "\n" for (who, day), what in rows.items()
    ))
    return rules, histories


def test_counts_come_back_from_measures_of_six_digits(shop_files):
    view = quarvis.view(shop_files[0])
    data, _ = data_of(view)
    assert (data["total"], data["approximate"], data["window"]) == (8, False, None)
    assert rules_of(view) == {(("bread",), ("butter",)): (6, 6, 5, 2)}


def test_the_file_and_the_result_make_the_same_rules(shop, tmp_path):
    mined = quarvis.mine(shop, min_count=1, window=2, splits="runs")
    mined.write_tsv(tmp_path / "rules.tsv", tmp_path / "sets.tsv")
    of_file = quarvis.view(tmp_path / "rules.tsv", item_sets=tmp_path / "sets.tsv")
    assert rules_of(of_file) == rules_of(mined.view())
    assert data_of(of_file)[0]["itemSets"] == data_of(mined.view())[0]["itemSets"]

    pyarrow.parquet.write_table(mined.to_arrow(), tmp_path / "rules.parquet")
    of_parquet = quarvis.view(tmp_path / "rules.parquet")
    assert rules_of(of_parquet) == rules_of(mined.view())
    assert data_of(of_parquet)[0]["total"] == len(shop)


def test_counts_come_back_for_many_histories():
    rng = np.random.default_rng(1)
    total = 123_457
    a, s = rng.integers(2_000, 60_000, (2, 400))
    union = (np.minimum(a, s) * rng.uniform(0.1, 1, 400)).astype(np.int64)
    count = (union * rng.uniform(0.5, 1, 400)).astype(np.int64)

    def written(values):
        return np.array([float(f"{value:.6g}") for value in values])

    with np.errstate(divide="ignore"):
        columns = Written(
            np.arange(400), np.arange(400, 800), count.astype(float), union.astype(float),
            written(count / total), written(union / a), written(total * union / (a * s)),
            written((1 - s / total) / (1 - union / a)), written(union / s),
            written(union / (s - union)),
        )
    counts = recover(columns, 800, {})
    assert (counts.total, counts.wrong) == (total, None)
    assert counts.sets.tolist() == [*a, *s]


def test_measures_that_do_not_fit_are_refused(shop_files):
    rules, _ = shop_files
    rules.write_text(SHOP_RULES.replace("1.11111", "1.5"))
    with pytest.raises(quarvis.DataError, match=r"measures in line 2 do not fit together"):
        quarvis.view(rules)


@pytest.mark.parametrize(("text", "message"), [
    ("", "its first line is not"),
    ("Count\tItem Set\n", "its first line is not"),
    (SHOP_RULES + "tea => milk\t1\n", "line 3 is not a rule and eight numbers"),
    (SHOP_RULES.replace(" => ", " "), "line 2 has no ' => '"),
])
def test_what_is_no_rules_file_is_refused(text, message, tmp_path):
    path = tmp_path / "rules.tsv"
    path.write_text(text)
    with pytest.raises(quarvis.DataError, match=message):
        quarvis.view(path)


@pytest.mark.parametrize(("text", "known", "sides"), [
    ("a => b", (), (("a",), ("b",))),
    ("{a,b} => c", (), (("a", "b"), ("c",))),
    ("{a, red,b} => c", (), (("a, red", "b"), ("c",))),
    ("{x,y,z} => c", ("x,y", "z", "c"), (("x,y", "z"), ("c",))),
    ("a => b => c", ("a => b", "c"), (("a => b",), ("c",))),
    ("{braces} => c", (), (("{braces}",), ("c",))),
    ("{p,q} => c", ("{p,q}", "c"), (("{p,q}",), ("c",))),
    ("no rule", (), None),
])
def test_sides_are_read_back(text, known, sides):
    assert split_rule(text, frozenset(known)) == sides


def test_a_name_with_a_comma_is_no_list():
    assert is_list("a,b", {"a", "b"})
    assert not is_list("a,b", {"a"})
    assert not is_list("a,b", {"a,b"})


def test_names_with_commas_come_from_the_item_sets(tool, tmp_path):
    histories = tmp_path / "histories.tsv"
    names = ["tea, green", "tea", "green", "{x}", "a => b"]
    histories.write_text("who\ttime\twhat\n" + "".join(
        f"{who}\t{time}\t{name}\n" for who in range(3) for time, name in enumerate(names)
    ))
    rules, sets = tool(histories, tmp_path, "-c", "3")
    (tmp_path / "rules.tsv").write_bytes(rules)
    (tmp_path / "sets.tsv").write_bytes(sets)
    view = quarvis.view(tmp_path / "rules.tsv", item_sets=tmp_path / "sets.tsv")
    mined = quarvis.mine(quarvis.read_transactions(histories), min_count=3, splits="runs")
    assert set(data_of(view)[0]["items"]) == set(names)
    assert rules_of(view) == rules_of(mined.view())


def test_histories_go_into_the_page(shop_files):
    rules, histories = shop_files
    view = quarvis.view(rules, histories=histories, window=2, unit="days", noun="customer")
    data, columns = data_of(view)
    assert data["words"] == {"entity": "customer", "entities": "customers", "verb": "had"}
    assert data["time"] == {"seconds": 86400.0, "origin": None, "first": 1,
                            "unit": "units of time"}
    # Hal had only tea, which is in no rule.
    assert data["entities"] == ["ann", "bob", "cid", "dee", "eve", "fay", "gus"]
    assert np.diff(columns["historyBegin"]).tolist() == [2, 2, 2, 1, 2, 1, 1]
    assert data["sampledFrom"] is None
    assert data_of(quarvis.view(rules, histories=histories, window=2, names=False))[0][
        "entities"] == []


@pytest.mark.parametrize(("window", "message"), [
    (9, "counts in 2 histories according to the rules, but in 3 with these histories"),
    ("unknown", "histories need the window of the run"),
])
def test_histories_of_another_run_are_refused(window, message, shop_files):
    rules, histories = shop_files
    with pytest.raises(quarvis.DataError, match=message):
        quarvis.view(rules, histories=histories, window=window)


def test_histories_beyond_a_number_are_drawn(shop, monkeypatch):
    monkeypatch.setattr("quarvis.viewing.MOST_OCCURRENCES", 8)
    data, columns = data_of(quarvis.mine(shop, min_count=2).view())
    assert data["sampledFrom"] > len(data["entities"]) > 0
    assert len(columns["transactionItems"]) <= 8


def test_lags_and_reverse_counts_of_a_run(shop):
    mined = quarvis.mine(shop, min_count=2, window=2)
    _, columns = data_of(mined.view())
    lags = mined.lags()
    assert columns["lagMedian"].tolist() == lags["median"].to_pylist()
    assert columns["reverseCount"].tolist() == lags["reverse_count"].to_pylist()


def test_dates_of_a_run():
    table = pyarrow.table({
        "who": ["a", "a", "b", "b"],
        "when": pyarrow.array([19000, 19003, 19001, 19002], pyarrow.date32()),
        "what": ["x", "y", "x", "y"],
    })
    data, columns = data_of(
        quarvis.mine(table, entity="who", time="when", items="what", min_count=2,
                     window="30d").view()
    )
    assert data["time"] == {"seconds": 86400.0, "origin": 19000 * 86400.0, "first": 0,
                            "unit": "units of time"}
    assert (data["window"], columns["transactionTime"].tolist()) == (30, [0, 3, 1, 2])


def test_baskets_have_no_order():
    baskets = quarvis.from_baskets([["a", "b"], ["a", "b"], ["a"]])
    data, columns = data_of(quarvis.mine(baskets, min_count=2).view())
    assert data["ordered"] is False
    assert "count" not in columns
    assert "historyBegin" not in columns


@pytest.mark.parametrize("name", [
    "</script><script>alert(1)</script>", "<!--<script>", "\u2028", "\ud800", "é\0", "😀",
])
def test_names_cannot_leave_their_element(name):
    text = script_json([name])
    assert "<" not in text
    assert "\u2028" not in text
    assert json.loads(text) == [name.replace("\ud800", "\ufffd")]
    text.encode()


def test_the_template_forbids_the_network():
    policy = re.search(r'Content-Security-Policy" content="([^"]*)"', template())[1]
    parts = dict(part.split(" ", 1) for part in policy.split("; "))
    assert parts["default-src"] == "'none'"
    assert parts["img-src"] == "blob:"
    assert re.fullmatch(r"'sha256-[\w+/]{43}='", parts["script-src"])
    assert "connect-src" not in parts
    assert not re.search(r'(src|href)="?(https?:)?//', template())


def test_no_rules_make_a_page(tmp_path):
    path = tmp_path / "rules.tsv"
    path.write_text(SHOP_RULES.splitlines()[0] + "\n")
    data, columns = data_of(quarvis.view(path))
    assert (data["total"], len(columns["antecedent"])) == (0, 0)


def test_the_page_of_a_result_is_saved_once(shop, tmp_path):
    view = quarvis.mine(shop, min_count=2).view()
    path = tmp_path / "rules.html"
    view.save(path)
    assert path.read_text(encoding="utf-8") == view.html
    with pytest.raises(FileExistsError):
        view.save(path)
    view.save(path, force=True)
    assert "srcdoc=" in view._repr_html_()


def run(*arguments, status=0):
    done = subprocess.run([sys.executable, "-m", "quarvis.cli", "view", *map(str, arguments)],
                          capture_output=True, text=True, timeout=120)
    assert done.returncode == status, done.stderr
    assert "Traceback" not in done.stderr
    return done.stderr


def test_the_command_makes_the_page(shop_files, tmp_path):
    rules, histories = shop_files
    page = tmp_path / "rules.html"
    options = ["-o", page, "--histories", histories, "-w", "2", "--unit", "days"]
    run(rules, *options, "--noun", "customer", "--verb", "bought")
    assert '"entity":"customer","entities":"customers","verb":"bought"' in page.read_text()
    assert "--force replaces it" in run(rules, *options, status=1)
    run(rules, *options, "--force")
    told = run(rules, "-o", tmp_path / "other.html", "--histories", histories, status=1)
    assert told.splitlines()[-1] == (
        "Error: histories need the window of the run: give window, None for none"
    )
