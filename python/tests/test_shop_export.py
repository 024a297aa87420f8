"""A messy export of a shop gives the same rules as the clean table."""

import csv
import datetime
import os
from pathlib import Path

import numpy as np
import pyarrow.compute as pc
import pytest

import quarvis

EPOCH = datetime.date(1970, 1, 1)
ROLES = {"entity": "CustomerID", "time": "InvoiceDate", "items": "Description"}


def lines_of(folder):
    """Return rows of customer, day and item; the customer of a guest is "guest-..."."""
    if folder is not None:
        with open(folder / "online_retail_lines.tsv", encoding="utf-8") as file:
            next(file)
            for line in file:
                who, day, item = line.rstrip("\n").split("\t")
                yield who, int(day), item
        return
    draws = np.random.default_rng(7)
    for customer in range(400):
        guest = "guest-" if customer % 4 == 0 else ""
        for visit in np.sort(draws.integers(14_900, 15_200, 6)):
            for number in draws.choice(30, 4, replace=False):
                yield f"{guest}{customer}", int(visit), f'No. {number}, "blue" {number % 3}'


def write_export(path, clean, lines):
    """Write the lines as a shop exports them, and those of its customers as a clean table.

    Gives the numbers of the rows, of those without customer and of those that were cancelled.
    """
    rows = guests = cancelled = 0
    with (open(path, "w", encoding="utf-8", newline="") as file,
          open(clean, "w", encoding="utf-8", newline="") as table):
        table.write("customer\tday\titem\n")
        export = csv.writer(file, lineterminator="\r\n", quoting=csv.QUOTE_ALL)
        export.writerow(["InvoiceNo", "Description", "Quantity", "InvoiceDate", "CustomerID"])
        for number, (who, day, item) in enumerate(lines):
            is_guest = who.startswith("guest-")
            customer = "" if is_guest else who
            moment = f"{EPOCH + datetime.timedelta(day)} 08:26:00"
            export.writerow([536365 + number, item, 6, moment, customer])
            rows += 1
            guests += is_guest
            if not is_guest:
                table.write(f"{who}\t{day}\t{item}\n")
            if number % 40 == 0:  # a returned item, which is not a purchase
                later = f"{EPOCH + datetime.timedelta(day + 9)} 17:01:00"
                export.writerow([f"C{536365 + number}", "POSTAGE BACK", -6, later, customer])
                rows += 1
                guests += is_guest
                cancelled += 1
    return rows, guests, cancelled


#: The folder of real histories, if there is one.
REAL = Path(os.environ.get("QUARVIS_DATA", "/nowhere"))
SOURCES = ["generated"] + ["real"] * (REAL / "online_retail_lines.tsv").is_file()


@pytest.fixture(scope="module", params=SOURCES)
def export(request, tmp_path_factory):
    target = tmp_path_factory.mktemp("export")
    files = target / "export.csv", target / "clean.tsv"
    lines = lines_of(REAL if request.param == "real" else None)
    return *files, *write_export(*files, lines), 15 if request.param == "real" else 3


def test_export_gives_rules_of_clean_table(export, tool, tmp_path, written):
    path, clean, rows, guests, cancelled, least = export
    expected = tool(clean, tmp_path, "-c", str(least), "-w", "30", "-o", "2")
    assert expected[0].count(b"\n") > 20
    histories = quarvis.read_csv(path, **ROLES, missing="drop", where=pc.field("Quantity") > 0)
    mined = quarvis.mine(
        histories, min_count=least, window="30d", max_items=3, splits="runs"
    )
    assert written(mined) == expected
    report = histories.report()
    assert report.left_out == cancelled
    assert report.dropped == {"CustomerID": guests - _cancelled_guests(path)}
    assert report.rows == rows - cancelled - report.dropped["CustomerID"]
    assert report.unit == "seconds"
    assert f"{report.dropped['CustomerID']:,} rows without 'CustomerID'" in str(report)
    assert f"{cancelled:,} rows that where=... excludes" in str(report)


def _cancelled_guests(path):
    with open(path, encoding="utf-8", newline="") as file:
        return sum(row["InvoiceNo"][0] == "C" and not row["CustomerID"]
                   for row in csv.DictReader(file))


def test_check_names_each_trouble(export):
    path, _, rows, guests, cancelled, _ = export
    findings = quarvis.check(path)
    assert set(findings.counts) == {
        "no tabs", "CR LF", "quotes", "missing", "date", "negative", "lettered"
    }
    told = str(findings)
    for words in (
        f"{rows + 1:,} lines end in CR LF",
        "cells are quoted: the tool does not undo doubled quotes",
        f"column 'CustomerID' is empty in {guests:,} of {rows:,} rows",
        f"column 'InvoiceDate' has {rows:,} dates",
        f"column 'Quantity' is negative in {cancelled:,} rows",
        f"column 'InvoiceNo' has a letter before the number in {cancelled:,} rows",
    ):
        assert words in told


def test_missing_customers_are_an_error_first(export):
    path, _, rows, guests, *_ = export
    with pytest.raises(quarvis.DataError) as error:
        quarvis.read_csv(path, **ROLES)
    message = str(error.value)
    assert f"column 'CustomerID' lacks the entity in {guests:,} of {rows:,} rows" in message
