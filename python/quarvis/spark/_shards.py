"""The histories of a run in the cluster, as shards."""

from __future__ import annotations

import time as clock
from typing import Any

import numpy as np
from pyspark import StorageLevel

from quarvis.spark import _work
from quarvis.spark._jobs import Jobs, log


class Shards:
    """Shards of histories, kept in the memory and on the disks of the executors.

    Rows are shipped once, by ranges of entities, so that a history is in one shard. What is lost
    is built again by Spark from the rows. Histories are numbered by the order of their entities.

    Attributes
    ----------
    frame : DataFrame
        A row for each shard, see `_work.SHARD`.
    histories, with_times : int
        All histories, and those with several times.
    first : dict
        By partition and number of a shard: the number of its first history.
    counts : numpy.ndarray
        By code: the histories that the item is in.
    """

    def __init__(
        self, jobs: Jobs, rows: Any, items: int, has_entities: bool, partitions: int,
        shard_bytes: int, sides: _work.Sides | None,
    ) -> None:
        began = clock.monotonic()
        if has_entities:
            rows = rows.repartitionByRange(partitions, "entity").sortWithinPartitions("entity")
        self._jobs = jobs
        self.frame = rows.mapInArrow(
            _work.build_shards(items, shard_bytes, sides), _work.SHARD_DDL
        ).persist(StorageLevel.MEMORY_AND_DISK)
        try:
            jobs.tell("shards of histories", 0, 1)
            with jobs.named("shards of histories"):
                known = self.frame.select(
                    "partition", "number", "histories", "with_times"
                ).orderBy("partition", "number").toArrow()
            jobs.tell("shards of histories", 1, 1)
            columns = [known.column(i).to_numpy() for i in range(4)]
            starts = np.cumsum(columns[2]) - columns[2]
            self.first = {
                (int(p), int(n)): int(first)
                for p, n, first in zip(columns[0], columns[1], starts, strict=True)
            }
            self.histories = int(columns[2].sum())
            self.with_times = int(columns[3].sum())
            self.counts = np.zeros(items, np.uint32)
            name = "histories of items"
            for _, _, data in jobs.summed(self.frame, _work.count_items(name), 1, name, None):
                self.counts = np.frombuffer(data, np.uint32)
        except BaseException:
            self.unpersist()
            raise
        log.info(
            "%s histories in %d shards; %.1f s", f"{self.histories:,}", len(self.first),
            clock.monotonic() - began,
        )

    def unpersist(self) -> None:
        """Give back what the executors keep."""
        self.frame.unpersist()
