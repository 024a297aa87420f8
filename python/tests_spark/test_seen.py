"""What users see of a run: its job names in Spark's UI, its log, and its cancellation."""

import json
import logging
import re
import signal
import subprocess
import sys
import threading
import urllib.request

import pytest
from tables import both, frame, random_rows

import quarvis.spark

RUN = {"min_count": 3, "window": 6}


@pytest.mark.on("local-cluster", "standalone")
def test_pages_of_spark_tell_what_runs(spark):
    mined, _ = both(spark, random_rows(6), cluster={"block_bytes": 40}, **RUN)
    context = spark.sparkContext
    place = f"{context.uiWebUrl}/api/v1/applications/{context.applicationId}"

    def asked(what):
        with urllib.request.urlopen(f"{place}/{what}") as answer:
            return json.load(answer)

    told = {job.get("description", "") for job in asked("jobs")}
    for name in ("items and times", "shards of histories", "sets of 2 items, block 1 of 3",
                 "sets of 2 items, block 2 of 3"):
        assert f"quarvis: {name}" in told
    plans = " ".join(q["planDescription"] for q in asked("sql?length=1000&planDescription=true"))
    for name in ("sets of 2 items, block 2 of 3", "sums of sets of 2 items, block 2 of 3"):
        assert name in plans
    assert context.getLocalProperty("spark.job.description") is None
    mined.unpersist()


def test_a_level_is_a_line_of_the_log(spark, caplog):
    with caplog.at_level(logging.INFO, "quarvis.spark"):
        _, expected = both(spark, random_rows(6), **RUN)
    sets = [len(row["items"]) for row in expected.item_sets.to_pylist()]
    lines = [line for line in caplog.messages if line.startswith("sets of")]
    for size in range(2, max(sets) + 1):
        line = next(line for line in lines if line.startswith(f"sets of {size} items"))
        found = int(re.search(r"candidates, ([\d,]+) sets", line)[1].replace(",", ""))
        assert found == sets.count(size)
    assert len(lines) in (max(sets) - 1, max(sets))
    assert caplog.messages[-1].startswith(f"done: {len(sets):,} sets, ")


def test_settings_of_the_session_are_as_before(spark):
    name = "spark.sql.execution.arrow.maxRecordsPerBatch"
    spark.conf.set(name, "77")
    both(spark, random_rows(1, rows=50), **RUN)
    assert spark.conf.get(name) == "77"
    spark.conf.unset(name)


def test_cancelling_the_jobs_ends_the_run(spark):
    """Cancel a job, as a user does in Spark's UI."""

    over = threading.Event()
    canceller = threading.Thread(target=lambda: cancel(), daemon=True)

    def progress(step, done, total):
        if step == "sets of 2 items" and done == 0:
            canceller.start()

    def cancel():
        # A job that has not started yet cannot be cancelled.
        while not over.wait(0.2):
            spark.interruptAll()

    with pytest.raises(Exception, match=r"(?i)cancel|interrupt"):
        quarvis.spark.mine(
            frame(spark, random_rows(6)), entity="who", time="when", items="what",
            progress=progress, **RUN,
        )
    over.set()
    canceller.join()


SCRIPT = """
import sys
sys.path.insert(0, {here!r})
from clusters import session_of
from tables import frame, random_rows
import pathlib, quarvis.spark
session = session_of("local[1]", pathlib.Path({folder!r}))
def progress(step, done, total):
    print(step, flush=True)
rows = frame(session, random_rows(6))
try:
    while True:
        quarvis.spark.mine(rows, entity="who", time="when", items="what", min_count=3,
                           progress=progress)
except KeyboardInterrupt:
    running = session.sparkContext.statusTracker().getActiveJobsIds()
    print("interrupted", list(running), flush=True)
"""


@pytest.mark.slow
@pytest.mark.on("local-cluster")
def test_ctrl_c_ends_the_run_and_its_job(tmp_path):
    here = __file__.rpartition("/")[0]
    process = subprocess.Popen(
        [sys.executable, "-c", SCRIPT.format(here=here, folder=str(tmp_path))],
        stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True,
    )
    lines = []
    for line in process.stdout:
        lines.append(line.strip())
        if lines.count("sets of 3 items and rules of 2 items") == 1 and "interrupted" not in line:
            process.send_signal(signal.SIGINT)
            break
    out, err = process.communicate(timeout=120)
    assert "interrupted []" in out, err
