"""Files of every format."""

import bz2
import gzip
import lzma

import pyarrow as pa
import pyarrow.compute as pc
import pyarrow.feather
import pyarrow.parquet
import pytest
from conftest import SHOP
from hypothesis import HealthCheck, given, settings
from hypothesis import strategies as st

import quarvis

ROLES = {"entity": "who", "time": "day", "items": "product"}


def rules(histories, window=2):
    mined = quarvis.mine(histories, min_count=2, window=window)
    return mined.to_arrow().select(["antecedents", "consequents", "count"]).to_pylist()


EXPECTED = [{"antecedents": ["bread"], "consequents": ["butter"], "count": 2}]
LINES = [("who", "day", "product"), *SHOP]


def text(delimiter=",", end="\n", lines=LINES, quote=False):
    cell = '"{}"'.format if quote else str
    return "".join(delimiter.join(cell(c) for c in line) + end for line in lines)


DATED = [LINES[0], *((who, f"1969-12-{28 + day:02}" if day < 4 else f"1970-01-{day - 3:02}", what)
                     for who, day, what in SHOP)]
FILES = {
    "plain.csv": text().encode(),
    "crlf.csv": text(end="\r\n").encode(),
    "quoted.csv": text(quote=True).encode(),
    "marked.csv": text().encode("utf-8-sig"),
    "utf16.csv": text(end="\r\n").encode("utf-16"),
    "tabs.tsv": text("\t").encode(),
    "packed.csv.gz": gzip.compress(text().encode()),
    "packed.csv.bz2": bz2.compress(text().encode()),
    "lines.jsonl": b"".join(
        b'{"who": "%s", "day": %d, "product": "%s"}\n' % (who.encode(), day, what.encode())
        for who, day, what in SHOP
    ),
}


@pytest.mark.parametrize("name", FILES)
def test_text(name, tmp_path):
    path = tmp_path / name
    path.write_bytes(FILES[name])
    assert rules(quarvis.read(path, **ROLES)) == EXPECTED


def test_dates_in_iso_notation(tmp_path):
    path = tmp_path / "dated.csv"
    path.write_text(text(lines=DATED, end="\r\n"))
    histories = quarvis.read_csv(path, **ROLES)
    assert rules(histories, "2d") == EXPECTED
    assert histories.report().unit in ("days", "seconds")


def test_dates_in_other_notation(tmp_path):
    path = tmp_path / "dated.csv"
    lines = [LINES[0], *((who, f"{day:02}.03.2020 10:30", what) for who, day, what in SHOP)]
    path.write_text(text(";", lines=lines))
    with pytest.raises(quarvis.DataError, match="has times as text"):
        quarvis.read_csv(path, **ROLES, delimiter=";")
    histories = quarvis.read_csv(path, **ROLES, delimiter=";", time_format="%d.%m.%Y %H:%M")
    assert rules(histories, "2d") == EXPECTED


@pytest.mark.parametrize("name", ["shop.parquet", "shop.feather"])
def test_columnar(name, tmp_path):
    table = pa.table(dict(zip(LINES[0], map(list, zip(*SHOP, strict=True)), strict=True)))
    table = table.append_column("other", pa.nulls(table.num_rows))
    write = {"shop.parquet": pa.parquet.write_table, "shop.feather": pa.feather.write_feather}
    write[name](table, tmp_path / name)
    assert rules(quarvis.read(tmp_path / name, **ROLES)) == EXPECTED
    only = quarvis.read(tmp_path / name, **ROLES, where=pc.field("who") != "bob")
    assert len(only) == 7
    with pytest.raises(quarvis.DataError, match="there is no column 'Who'; the columns are 'who'"):
        quarvis.read(tmp_path / name, entity="Who", time="day", items="product")


def test_text_keeps_zeros_and_empty_cells_are_missing(tmp_path):
    path = tmp_path / "codes.csv"
    path.write_text('who,day,product\n007,1,01\n7,1,01\n"",1,02\n')
    with pytest.raises(quarvis.DataError, match="column 'who' lacks the entity in 1 of 3 rows"):
        quarvis.read_csv(path, **ROLES)
    histories = quarvis.read_csv(path, **ROLES, missing="drop")
    mined = quarvis.mine(histories, min_count=1)
    assert mined.item_sets.select(["items", "count"]).to_pylist() == [{"items": ["01"], "count": 2}]


def test_quoted_cells_may_hold_anything(tmp_path):
    path = tmp_path / "odd.csv"
    path.write_text('who,day,product\nu,1,"a ""b"", c\nd"\n')
    mined = quarvis.mine(quarvis.read_csv(path, **ROLES), min_count=1)
    assert mined.item_sets.column("items").to_pylist() == [['a "b", c\nd']]


def test_cells_of_several_items(tmp_path):
    path = tmp_path / "lists.csv"
    path.write_text("who,day,product\nu,1,a;b\nv,1,b\n")
    histories = quarvis.read_csv(path, **ROLES, list_delimiter=";")
    mined = quarvis.mine(histories, min_count=1)
    assert mined.item_sets.column("count").to_pylist() == [1, 1, 2]


def test_rows_can_be_chosen(tmp_path):
    path = tmp_path / "signed.csv"
    path.write_text("who,day,product,pieces\nu,1,a,1\nu,2,b,-1\n")
    histories = quarvis.read_csv(path, **ROLES, where=pc.field("pieces") > 0)
    assert histories.report().items == 1


def test_broken_text_is_named(tmp_path):
    path = tmp_path / "short.csv"
    path.write_text("who,day,product\nu,1\n")
    with pytest.raises(quarvis.DataError, match=r"short\.csv: CSV parse error: "):
        quarvis.read_csv(path, **ROLES)


def test_ending_that_tells_no_format(tmp_path):
    path = tmp_path / "shop.xz"
    path.write_bytes(lzma.compress(b""))
    with pytest.raises(quarvis.DataError, match="the ending of .* is unknown"):
        quarvis.read(path, **ROLES)


@pytest.mark.parametrize("reader", [quarvis.read, quarvis.read_csv])
def test_no_file(reader, tmp_path):
    with pytest.raises(FileNotFoundError):
        reader(tmp_path / "none.csv", **ROLES)


def test_no_transaction_file(tmp_path):
    with pytest.raises(FileNotFoundError):
        quarvis.read_transactions(tmp_path / "none.tsv")


BYTES = st.binary(max_size=60) | st.lists(
    st.sampled_from([b"u", b"v", b"1", b"12x", b"-1", b"99999999999", b"a", b"b", b"\t", b"\t",
                     b"\n", b"\n", b'"', b"\r", b"\xff", b"\xc3", b"", b" "]),
    max_size=40,
).map(b"".join)


@given(head=st.just(b"h\n"), body=BYTES, window=st.integers(1, 9))
@settings(
    max_examples=150, deadline=None, suppress_health_check=[HealthCheck.function_scoped_fixture]
)
def test_transaction_files_read_as_the_tool_reads(head, body, window, tool, tmp_path, written):
    path = tmp_path / "in.tsv"
    path.write_bytes(head + body)
    expected = tool(path, tmp_path, "-c", "1", "-w", str(window), "-o", "3")
    histories = quarvis.read_transactions(path)
    mined = quarvis.mine(histories, min_count=1, window=window, splits="runs", max_items=4)
    assert written(mined) == expected
    mined.rules.to_pylist()
    histories.report()


@pytest.mark.parametrize(
    ("name", "content", "begin", "end"),
    [
        ("f.csv", "who,when,what\nu,1,\u00e4\n".encode("latin-1"), "",
         "; if it is not UTF-8, give its encoding=..., such as 'latin-1'"),
        ("f.csv", b"who;when;what\nu;1;a\n",
         "the header is one cell, 'who;when;what': give delimiter=';'", ""),
        ("f.tsv", b"who,when,what\nu,1,a\n",
         "the header is one cell, 'who,when,what': give delimiter=','", ""),
        ("f.csv.gz", b"who,when,what\nu,1,a\n", "zlib", ""),
        ("f.json", b'[{"who": "u", "when": 1, "what": "a"}]', "JSON parse error",
         "; each line must be an object"),
        ("f.parquet", b"none", "", "; is it a Parquet file?"),
        ("f.arrow", b"none", "", "; is it an Arrow file?"),
    ],
)
def test_files_that_are_none_of_their_format(name, content, begin, end, tmp_path):
    path = tmp_path / name
    path.write_bytes(content)
    with pytest.raises(quarvis.DataError) as error:
        quarvis.read(path, entity="who", time="when", items="what")
    message = str(error.value)  # the middle of it comes from Arrow
    assert message.startswith(f"{path}: {begin}")
    assert message.endswith(end)
    assert "\n" not in message


def test_header_alone(tmp_path):
    path = tmp_path / "f.csv"
    path.write_text("who,when,what\n")
    histories = quarvis.read_csv(path, entity="who", time="when", items="what")
    assert (len(histories), histories.report().rows) == (0, 0)
    assert len(quarvis.mine(histories, min_count=1)) == 0
