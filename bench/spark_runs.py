"""A cluster of two executors of one core on this machine, and what the log tells of a run in it."""

import logging
import os
import re
import sys
import time

SETTINGS = {
    "spark.ui.port": "0",
    "spark.ui.showConsoleProgress": "false",
    "spark.driver.host": "localhost",
    "spark.driver.bindAddress": "127.0.0.1",
    "spark.driver.memory": "1g",
    "spark.executor.memory": "1g",
    "spark.sql.shuffle.partitions": "64",
    "spark.sql.execution.arrow.pyspark.enabled": "true",
}


def started(master, name, folder, **settings):
    """Start the cluster, with its files in a folder; give the session and the seconds it took.

    A setting such as `spark.driver.memory` has underscores for its points.
    """
    from pyspark.sql import SparkSession

    os.environ["PYSPARK_PYTHON"] = sys.executable
    began = time.monotonic()
    builder = SparkSession.builder.master(master).appName(name)
    more = {key.replace("_", "."): value for key, value in settings.items()}
    for key, value in {**SETTINGS, **more, "spark.local.dir": folder}.items():
        builder = builder.config(key, value)
    session = builder.getOrCreate()
    session.sparkContext.setLogLevel("ERROR")
    session.range(1).count()
    return session, round(time.monotonic() - began, 1)


def rows_of(path):
    """Give the rows of a transaction file; items that a row lacks are nulls."""
    import numpy as np
    import pyarrow as pa

    import quarvis

    columns = quarvis.read_transactions(path)._columns
    names = pa.concat_arrays([columns.item_names, pa.nulls(1, pa.large_string())])
    codes = np.minimum(columns.items, np.uint32(len(names) - 1))
    entities = columns.entities
    return pa.table({
        "who": entities.values.cast(pa.string()).take(pa.array(entities.codes)),
        "at": pa.array(columns.times.astype(np.int64)),
        "what": names.take(pa.array(codes)).cast(pa.string()),
    })


def fpgrowth(frame, least, confidence=0.8):
    """Give the model of Spark's FPGrowth for the items `what` of each `who` at a least count."""
    import pyspark.sql.functions as F
    from pyspark.ml.fpm import FPGrowth

    baskets = frame.groupBy("who").agg(F.collect_set("what").alias("items"))
    # The share is a hair less than the count, which rounding would raise otherwise.
    share = (least - 0.5) / baskets.count()
    return FPGrowth(itemsCol="items", minSupport=share, minConfidence=confidence).fit(baskets)


class Log(logging.Handler):
    """The lines of the log of a run, from `begin` to `end`."""

    def __init__(self):
        super().__init__()
        self.lines = []
        self._logger = logging.getLogger("quarvis.spark")

    def begin(self):
        self._logger.setLevel(logging.INFO)
        self._logger.addHandler(self)

    def end(self):
        self._logger.removeHandler(self)

    def emit(self, record):
        self.lines.append(record.getMessage())

    def sum(self, pattern):
        """Sum what the group of a pattern has in all lines."""
        found = [re.search(pattern, line) for line in self.lines]
        return sum(float(match[1].replace(",", "")) for match in found if match)

    def seconds(self):
        """Give the seconds of each step."""
        levels = self.sum(r"jobs, ([\d.]+) s") - self.sum(r"^done.* ([\d.]+) s")
        return {
            "facts": self.sum(r"may be frequent; ([\d.]+) s"),
            "shards": self.sum(r"histories in \d+ shards; ([\d.]+) s"),
            "levels": round(levels, 1),
        }
