"""Jobs of a run: their names in the pages of Spark, their end by Ctrl-C, and the time they have."""

from __future__ import annotations

import contextlib
import logging
import signal
import threading
import time as clock
import uuid
from collections.abc import Callable, Iterator
from typing import Any

from quarvis.spark import _work

log = logging.getLogger("quarvis.spark")

_ROWS_PER_BATCH = "spark.sql.execution.arrow.maxRecordsPerBatch"


class OutOfTime(Exception):
    """The seconds of the budget are over."""


class Jobs:
    """Runs jobs in a session, classic or Connect, one after the other.

    Parameters
    ----------
    session : SparkSession
        Whose configuration is changed while a job counts on shards, and put back afterwards.
    seconds : float, optional
        What all jobs together may take.
    tasks : int, optional
        In how many tasks shards are counted; by default as many as there are cores, where Spark
        tells that, else one for each partition of the shards.
    progress : callable, optional
        Gets (step, done, all) before each job.
    """

    def __init__(
        self, session: Any, seconds: float | None = None, tasks: int | None = None,
        progress: Callable[[str, int, int], object] | None = None,
    ) -> None:
        self.session = session
        self.count = 0
        self._progress = progress
        self._tag = f"quarvis-{uuid.uuid4().hex[:12]}"
        self._context = None if _is_connect(session) else session.sparkContext
        self._interrupted = threading.Event()
        self._until = None if seconds is None else clock.monotonic() + seconds
        if tasks is None and self._context is not None:
            tasks = self._context.defaultParallelism
        self.tasks = tasks

    def tell(self, step: str, done: int, total: int) -> None:
        """Tell how far the run is."""
        if self._progress is not None:
            self._progress(step, done, total)

    @contextlib.contextmanager
    def interruptible(self) -> Iterator[None]:
        """Have Ctrl-C cancel the job at hand, and then raise `KeyboardInterrupt`.

        The signal comes in the middle of a talk with Spark, where an exception would break the
        connection; so the handler only has another thread cancel what runs under the tag. In other
        threads than the main one signals are not heeded.
        """
        if threading.current_thread() is not threading.main_thread():
            yield
            return
        ended = threading.Event()

        def cancel() -> None:
            # A job that has not begun yet is none that can be cancelled.
            while not ended.wait(0.2):
                with contextlib.suppress(Exception):
                    self.session.interruptTag(self._tag)

        def handle(number: int, frame: object) -> None:
            if not self._interrupted.is_set():
                self._interrupted.set()
                threading.Thread(target=cancel, daemon=True).start()

        old = signal.signal(signal.SIGINT, handle)
        try:
            yield
        finally:
            ended.set()
            signal.signal(signal.SIGINT, old)
            self._interrupted.clear()

    def _heed(self) -> None:
        if self._interrupted.is_set():
            raise KeyboardInterrupt

    @contextlib.contextmanager
    def named(self, name: str, batch: int | None = None) -> Iterator[None]:
        """Run jobs under a name; `batch` rows cross to Python at a time.

        Raises
        ------
        OutOfTime
            When the time is over, also in the middle of a job.
        """
        self.count += 1
        session = self.session
        expired = threading.Event()
        timer = self._timer(expired)
        kept = session.conf.get(_ROWS_PER_BATCH, None)
        old = None
        if self._context is not None:
            old = self._context.getLocalProperty("spark.job.description")
            self._context.setJobDescription(f"quarvis: {name}")
        session.addTag(self._tag)
        if batch is not None:
            session.conf.set(_ROWS_PER_BATCH, str(batch))
        try:
            self._heed()
            yield
            self._heed()
        except BaseException as error:
            if self._interrupted.is_set():
                raise KeyboardInterrupt from None
            if expired.is_set():
                raise OutOfTime from error
            with contextlib.suppress(Exception):
                session.interruptTag(self._tag)
            raise
        finally:
            if timer is not None:
                timer.cancel()
            with contextlib.suppress(Exception):
                self._restore(kept if batch is not None else None, batch is not None, old)

    def _restore(self, rows: str | None, was_set: bool, description: str | None) -> None:
        self.session.removeTag(self._tag)
        if was_set:
            if rows is None:
                self.session.conf.unset(_ROWS_PER_BATCH)
            else:
                self.session.conf.set(_ROWS_PER_BATCH, rows)
        if self._context is not None:
            self._context.setLocalProperty("spark.job.description", description)

    def _timer(self, expired: threading.Event) -> threading.Timer | None:
        if self._until is None:
            return None
        left = self._until - clock.monotonic()
        if left <= 0:
            raise OutOfTime

        def expire() -> None:
            expired.set()
            with contextlib.suppress(Exception):
                self.session.interruptTag(self._tag)

        timer = threading.Timer(left, expire)
        timer.daemon = True
        timer.start()
        return timer

    def summed(
        self, shards: Any, work: _work.Work, keys: int, name: str, least: int | None
    ) -> list[tuple[int, int, bytes]]:
        """Have the work done on all shards and give its sums, by kind and key.

        Each task sums over its shards before anything is shuffled, and each key is summed in one
        place. What has not the least count does not come back.
        """
        adders = max(1, min(keys, self.tasks or keys))
        parts = shards if self.tasks is None else shards.coalesce(self.tasks)
        sums = (
            parts.mapInArrow(work, _work.SUM_DDL)
            .repartition(adders, "key").sortWithinPartitions("kind", "key")
            .mapInArrow(_work.add_up(f"sums of {name}", least), _work.SUM_DDL)
        )
        with self.named(name, batch=1):
            table = sums.toArrow()
        rows = zip(*(table.column(i).to_pylist() for i in range(3)), strict=True)
        return sorted(rows, key=lambda row: row[:2])


def _is_connect(session: Any) -> bool:
    return type(session).__module__.startswith("pyspark.sql.connect")
