"""The histories of a run, kept in the cluster as shards."""

from __future__ import annotations

import time as clock
from typing import Any

import numpy as np
from pyspark import StorageLevel

from quarvis.spark import _work
from quarvis.spark._jobs import Jobs, log


class Shards:
    """Shards of histories, kept in the memory and on the disks of the executors.

    Rows are shuffled once, by ranges of entities, so each history is in one shard. Spark rebuilds
    lost shards from the rows. Histories are numbered in the order of their entities.

    Attributes
    ----------
    frame : DataFrame
        A row for each shard, see `_work.SHARD`.
    histories, with_times : int
        The number of all histories, and of those with more than one time.
    first : dict
        The number of the first history of a shard, by the shard's partition and number.
    counts : numpy.ndarray
        The number of histories that hold each item, by code.
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
        """Release the shards on the executors."""
        self.frame.unpersist()
