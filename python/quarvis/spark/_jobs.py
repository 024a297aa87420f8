"""The Spark jobs of a run: their names in Spark's UI, interruption by Ctrl-C, and time limit."""

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
    """The time of the budget is exceeded."""


class Jobs:
    """Runs jobs in a session, classic or Spark Connect, one after the other.

    Parameters
    ----------
    session : SparkSession
        The session. Its configuration is changed while a job counts on shards, then restored.
    seconds : float, optional
        The limit of the time of all jobs together.
    tasks : int, optional
        The number of tasks that count on the shards. By default the number of cores, if Spark
        reports it, otherwise one for each partition of the shards.
    progress : callable, optional
        Called with (step, done, all) before each job.
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
        """Report the progress of the run."""
        if self._progress is not None:
            self._progress(step, done, total)

    @contextlib.contextmanager
    def interruptible(self) -> Iterator[None]:
        """Make Ctrl-C cancel the current job and then raise `KeyboardInterrupt`.

        An exception raised in the handler could break the connection in the middle of an exchange
        with Spark. So the handler only starts a thread that cancels the jobs under the tag. Signals
        are handled only in the main thread.
        """
        if threading.current_thread() is not threading.main_thread():
            yield
            return
        ended = threading.Event()

        def cancel() -> None:
            # A job that has not started yet cannot be cancelled, so this is tried repeatedly.
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
        """Run jobs under a name; Spark passes `batch` rows at a time to Python.

        Raises
        ------
        OutOfTime
            When the time limit is reached, even in the middle of a job.
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
        """Do the work on all shards; return its sums as (kind, key, bytes), sorted.

        Each task sums over its shards before anything is shuffled. Then each key is summed by one
        task. Counts below `least` are not returned.
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
