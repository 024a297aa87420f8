"""Clusters of processes on this machine, whose executors can be killed."""

import os
import re
import signal
import socket
import subprocess
import time
from pathlib import Path

#: The memory of an executor; enough for small tables.
MEMORY_MB = 640

#: The tests are too short for an optimising compiler to pay off.
_JAVA = "-XX:TieredStopAtLevel=1 -XX:+UseSerialGC -Xss512k"

SETTINGS = {
    "spark.driver.extraJavaOptions": _JAVA,
    "spark.executor.extraJavaOptions": _JAVA,
    "spark.ui.enabled": "true",
    "spark.ui.port": "0",
    "spark.ui.showConsoleProgress": "false",
    "spark.driver.host": "localhost",
    "spark.driver.bindAddress": "127.0.0.1",
    "spark.driver.memory": "640m",
    "spark.executor.memory": f"{MEMORY_MB}m",
    "spark.sql.shuffle.partitions": "4",
    "spark.default.parallelism": "2",
    # Timeouts are long, since a slow machine is not a lost one. Killed executors are noticed
    # anyway, since they close their connections.
    "spark.network.timeout": "600s",
    "spark.deploy.maxExecutorRetries": "-1",
    "spark.task.maxFailures": "8",
    "spark.stage.maxConsecutiveAttempts": "20",
}


class Processes:
    """Return the executors among the descendants of this process or of given ones."""

    def __init__(self, *roots):
        self._roots = {os.getpid(), *roots}

    def executors(self):
        parents = {}
        found = []
        for folder in Path("/proc").glob("[0-9]*"):
            try:
                stat = (folder / "stat").read_text()
                command = (folder / "cmdline").read_bytes()
            except OSError:
                continue
            parents[int(folder.name)] = int(stat.rpartition(")")[2].split()[1])
            if b"CoarseGrainedExecutorBackend" in command:
                found.append(int(folder.name))
        return sorted(pid for pid in found if self._descends(pid, parents))

    def _descends(self, pid, parents):
        while pid > 1:
            if pid in self._roots:
                return True
            pid = parents.get(pid, 0)
        return False


class Cluster:
    """A session and the executors behind it."""

    def __init__(self, session, processes):
        self.session = session
        self._processes = processes

    def kill_executor(self):
        """Kill an executor and return it; None if there is none at the moment."""
        executors = self._processes.executors()
        if not executors:
            return None
        os.kill(executors[0], signal.SIGKILL)
        return executors[0]

    def stop(self):
        self.session.stop()


def local_cluster(folder):
    return Cluster(session_of("local-cluster[2,1,1024]", folder), Processes())


def connect(folder):
    from pyspark.sql import SparkSession

    builder = SparkSession.builder.remote("local-cluster[2,1,1024]")
    for name, value in _settings(folder).items():
        builder = builder.config(name, value)
    session = builder.getOrCreate()
    return Cluster(session, Processes())


class Standalone(Cluster):
    """A master and two workers, each in its own process."""

    def __init__(self, folder):
        self._daemons = []
        port = _free_port()
        self._start(folder, "master", "org.apache.spark.deploy.master.Master", "--host",
                    "localhost", "--port", str(port), "--webui-port", "0")
        url = f"spark://localhost:{port}"
        _wait_for(folder / "master.log", "I have been elected leader|Starting Spark master")
        for worker in ("worker-1", "worker-2"):
            self._start(folder, worker, "org.apache.spark.deploy.worker.Worker", "--host",
                        "localhost", "--cores", "1", "--memory", "1g", "--webui-port", "0",
                        "--work-dir", str(folder / worker), url)
            _wait_for(folder / f"{worker}.log", "Successfully registered with master")
        processes = Processes(*(daemon.pid for daemon in self._daemons))
        super().__init__(session_of(url, folder), processes)

    def _start(self, folder, name, what, *arguments):
        import pyspark

        home = Path(pyspark.__file__).parent
        environment = {**os.environ, "SPARK_HOME": str(home), "SPARK_DAEMON_MEMORY": "256m",
                       "SPARK_LOCAL_IP": "127.0.0.1", "SPARK_DAEMON_JAVA_OPTS": _JAVA}
        with (folder / f"{name}.log").open("wb") as log:
            self._daemons.append(subprocess.Popen(
                [home / "bin" / "spark-class", what, *arguments], stdout=log, stderr=log,
                env=environment,
            ))

    def stop(self):
        super().stop()
        for daemon in reversed(self._daemons):
            daemon.terminate()
            daemon.wait(30)


CLUSTERS = {"local-cluster": local_cluster, "standalone": Standalone, "connect": connect}


def _settings(folder):
    return {**SETTINGS, "spark.local.dir": str(folder / "local"),
            "spark.sql.warehouse.dir": str(folder / "warehouse")}


def session_of(master, folder):
    from pyspark.sql import SparkSession

    builder = SparkSession.builder.master(master).appName("tests")
    for name, value in _settings(folder).items():
        builder = builder.config(name, value)
    session = builder.getOrCreate()
    session.sparkContext.setLogLevel("OFF")
    return session


def _free_port():
    with socket.socket() as probe:
        probe.bind(("127.0.0.1", 0))
        return probe.getsockname()[1]


def _wait_for(log, pattern):
    for _ in range(600):
        if log.exists() and re.search(pattern, log.read_text()):
            return
        time.sleep(0.1)
    raise AssertionError(f"{pattern!r} does not come up in:\n{log.read_text()}")
