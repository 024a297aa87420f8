"""What Spark and the system tell of the processes of a cluster on this machine while it runs."""

import json
import os
import re
import threading
import urllib.request
from pathlib import Path

#: The Python of the driver, its Java, the Java of the executors, and the Python below it.
ROLES = ("driver", "driver_jvm", "executors", "workers")


def sizes():
    """Return the bytes that the processes of this run have now, by role.

    A page that several processes share counts in each with its part.
    """
    processes = {}
    for folder in Path("/proc").glob("[0-9]*"):
        try:
            parent = int((folder / "stat").read_text().rpartition(")")[2].split()[1])
            command = (folder / "cmdline").read_bytes()
        except (OSError, ValueError):
            continue
        processes[int(folder.name)] = (parent, command)
    told = dict.fromkeys(ROLES, 0)
    for pid in processes:
        role = _role(pid, processes)
        if role is not None:
            told[role] += _size(pid)
    return told


def _size(pid):
    try:
        memory = Path(f"/proc/{pid}/smaps_rollup").read_text()
    except OSError:
        return 0
    pss = re.search(r"^Pss: +(\d+)", memory, re.M)
    return int(pss[1]) * 1024 if pss else 0


def _role(pid, processes):
    """Return the role of a process, or None if it is not of this run."""
    if pid == os.getpid():
        return "driver"
    role = "driver_jvm" if b"java" in processes[pid][1] else None
    at = pid
    while at in processes and at != os.getpid():
        if b"CoarseGrainedExecutorBackend" in processes[at][1]:
            role = "executors" if at == pid else "workers"
        at = processes[at][0]
    return role if at == os.getpid() else None


class Memory(threading.Thread):
    """The most memory that the processes of this run have, looked at four times a second.

    Attributes
    ----------
    most : dict
        The most bytes of each role.
    total : int
        The most bytes of all roles together.
    """

    def __init__(self):
        super().__init__(daemon=True)
        self.most = dict.fromkeys(ROLES, 0)
        self.total = 0
        self._end = threading.Event()
        self._lock = threading.Lock()

    def __enter__(self):
        self.start()
        return self

    def __exit__(self, *error):
        self._end.set()
        self.join()

    def run(self):
        while not self._end.wait(0.25):
            self.look()

    def look(self):
        """Look now, besides."""
        now = sizes()
        with self._lock:
            self.most = {role: max(self.most[role], now[role]) for role in ROLES}
            self.total = max(self.total, sum(now.values()))


def told_by_spark(session, what):
    """Return what Spark's interface for monitoring tells of the "jobs" or "stages" so far."""
    context = session.sparkContext
    url = f"{context.uiWebUrl}/api/v1/applications/{context.applicationId}/{what}"
    with urllib.request.urlopen(url) as answer:
        return json.load(answer)
