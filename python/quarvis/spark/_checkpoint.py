"""Checkpoints: the state of a run in a folder that Spark can access, for resuming it."""

from __future__ import annotations

import json
from typing import Any

from quarvis import _engine
from quarvis.errors import DataError

_DDL = "number int, settings string, state binary"


class Checkpoint:
    """The states of a run after each level, as rows of Parquet files; no file is ever partial.

    Parameters
    ----------
    session : SparkSession
    folder : str
        A path or a URL that the cluster can read and write.
    settings : dict
        Everything that the run depends on, including a digest of the data.
    """

    def __init__(self, session: Any, folder: str, settings: dict[str, Any]) -> None:
        self._session = session
        self._folder = folder.rstrip("/")
        self._path = f"{self._folder}/levels"
        self._number = 0
        self._settings = json.dumps(settings, sort_keys=True, default=str)

    def last(self) -> _engine.LevelRun | None:
        """Return the state after the last complete level, or None.

        Raises
        ------
        DataError
            When the folder has a run with other data or settings.
        """
        from pyspark.errors import AnalysisException

        try:
            levels = self._session.read.schema(_DDL).parquet(self._path)
            number = levels.agg({"number": "max"}).collect()[0][0]
        except AnalysisException:
            return None
        if number is None:
            return None
        row = levels.where(levels["number"] == number).collect()[0]
        self._check(row["settings"])
        self._number = number
        return _engine.LevelRun.from_bytes(bytes(row["state"]))

    def keep(self, run: _engine.LevelRun) -> None:
        """Write the state after a level."""
        self._number += 1
        self._session.createDataFrame(
            [(self._number, self._settings, bytearray(run.to_bytes()))], _DDL
        ).coalesce(1).write.mode("append").parquet(self._path)

    def _check(self, text: str) -> None:
        if text == self._settings:
            return
        there, here = json.loads(text), json.loads(self._settings)
        others = ", ".join(
            f"{name}={there.get(name)!r} (here {here.get(name)!r})"
            for name in sorted({*there, *here}) if there.get(name) != here.get(name)
        )
        raise DataError(
            f"checkpoint={self._folder!r} has a run of other data or settings: {others}; name "
            "another folder, or remove this one"
        )
