"""Item sets of the same baskets by quarvis and by peers, in one run.

    build/venv/bin/pip install -c python/constraints.txt efficient-apriori mlxtend rusket
    build/venv/bin/python bench/python_peers.py [--record] [-r RUNS] [-n HISTORIES] [FILE ...]

A FILE is a transaction file, of which each entity is a basket; generated baskets come besides. Each
library runs in a process of its own, in one thread, and begins with the baskets in the form that it
takes: a list of tuples, or a frame of truth values, or, for quarvis, a list column. Told are the
median, the least and the greatest of the seconds of the processor, the median of those on the wall
clock, and by how much the peak of the resident memory exceeds what the process had when it began to
mine. All must find as many sets, of the same total count. With --record all that is printed goes to
bench/python_peers.md, once every library has ended.
"""

from __future__ import annotations

import argparse
import importlib.metadata
import json
import os
import pickle
import platform
import statistics
import subprocess
import sys
import tempfile
import threading
import time
import warnings
from collections.abc import Callable
from pathlib import Path
from typing import Any

LIBRARIES = ("quarvis", "mlxtend", "efficient-apriori", "rusket")
LIMIT = 300  # seconds for a run


def baskets_of(source: str) -> list[tuple[str, ...]]:
    """Read the baskets of a transaction file, or generate some."""
    import numpy as np

    if not source.isdecimal():
        baskets: dict[str, set[str]] = {}
        with open(source, encoding="utf-8") as file:
            next(file)
            for line in file:
                entity, _, *items = line.rstrip("\n").split("\t")
                baskets.setdefault(entity, set()).update(item for item in items if item)
        return [tuple(sorted(items)) for items in baskets.values()]
    draws = np.random.default_rng(1)
    patterns = [draws.choice(500, draws.integers(2, 6), replace=False) for _ in range(200)]
    weights = 1 / np.arange(1, 201)
    chosen = draws.choice(200, (int(source), 3), p=weights / weights.sum())
    noise = draws.integers(0, 500, (int(source), 3))
    return [
        tuple(sorted({f"item {i}" for i in {*extra, *(i for p in row for i in patterns[p])}}))
        for row, extra in zip(chosen, noise, strict=True)
    ]


def truth_values(baskets: list[tuple[str, ...]]) -> Any:
    """Give the baskets as a frame with a column for each item."""
    import numpy as np
    import pandas as pd

    names = sorted({item for basket in baskets for item in basket})
    place = {name: i for i, name in enumerate(names)}
    table = np.zeros((len(baskets), len(names)), bool)
    for row, basket in enumerate(baskets):
        table[row, [place[item] for item in basket]] = True
    return pd.DataFrame(table, columns=names)


def prepare(library: str, baskets: list[tuple[str, ...]], least: int) -> Callable[[], list[int]]:
    """Give a call that mines the baskets and gives the counts of all sets."""
    support = (least - 0.5) / len(baskets)  # between two counts, so that nothing is rounded away
    if library == "quarvis":
        import pyarrow as pa

        import quarvis

        table = pa.table({"items": pa.array(baskets, pa.list_(pa.string()))})
        return lambda: quarvis.mine(
            table, items="items", min_count=least, rules=False, threads=1
        ).item_sets.column("count").to_pylist()
    if library == "efficient-apriori":
        from efficient_apriori import itemsets_from_transactions

        def levels() -> list[int]:
            found, _ = itemsets_from_transactions(baskets, support, max_length=10**6)
            return [count for level in found.values() for count in level.values()]

        return levels
    frame = truth_values(baskets)
    module: Any
    if library == "mlxtend":
        from mlxtend.frequent_patterns import fpgrowth as module
    else:
        from rusket import fpgrowth as module
    return lambda: [
        round(share * len(baskets))
        for share in module(frame, support, use_colnames=True)["support"]
    ]


def resident() -> int:
    """Give the resident memory in bytes."""
    with open("/proc/self/statm") as file:
        return int(file.read().split()[1]) * os.sysconf("SC_PAGESIZE")


def run_one(library: str, source: str, least: int, runs: int) -> None:
    """Mine in this process and print what was measured."""
    warnings.simplefilter("ignore")
    # What loads at the first use is no memory of the work.
    prepare(library, [("a", "b"), ("a",)] * 3, 2)()
    # Unpickled, they leave no freed memory behind that a library would work in unseen.
    with open(source, "rb") as file:
        mine = prepare(library, pickle.load(file), least)
    wall: list[float] = []
    processor: list[float] = []
    before = resident()
    peak = before
    ended = threading.Event()

    def watch() -> None:
        nonlocal peak
        while not ended.wait(0.002):
            peak = max(peak, resident())

    watcher = threading.Thread(target=watch)
    watcher.start()
    for _ in range(runs):
        begin = time.perf_counter(), time.process_time()
        counts = mine()
        wall.append(time.perf_counter() - begin[0])
        processor.append(time.process_time() - begin[1])
        peak = max(peak, resident())
    ended.set()
    watcher.join()
    print(json.dumps({
        "seconds": statistics.median(processor), "least": min(processor),
        "greatest": max(processor), "wall": statistics.median(wall), "bytes": peak - before,
        "sets": len(counts), "total": sum(counts),
    }))


class Page:
    """What is printed, for the record."""

    def __init__(self) -> None:
        self.lines: list[str] = []

    def add(self, *lines: str) -> None:
        """Print lines and keep them."""
        print(*lines, sep="\n", flush=True)
        self.lines += lines


def measured(library: str, source: str, least: int, runs: int) -> dict[str, Any] | str:
    """Mine in a process of its own; the figures, or why there are none."""
    environment = {**os.environ, "RAYON_NUM_THREADS": "1", "OMP_NUM_THREADS": "1"}
    try:
        done = subprocess.run(
            [sys.executable, __file__, "--one", library, source, str(least), str(runs)],
            capture_output=True, text=True, env=environment, timeout=LIMIT,
        )
    except subprocess.TimeoutExpired:
        return f"over {LIMIT} s"
    if done.returncode != 0:
        return f"failed: {done.stderr.strip().splitlines()[-1]}"
    figures: dict[str, Any] = json.loads(done.stdout.splitlines()[-1])
    return figures


def compare(page: Page, name: str, source: str, least: int, runs: int) -> list[str]:
    """Run every library on the baskets of a file; what quarvis loses to which one."""
    page.add(
        "", f"## {name}, sets in {least} baskets or more", "",
        "| library | processor, s | least..greatest | wall, s | memory, MB | sets |",
        "|---|---:|---:|---:|---:|---:|",
    )
    ours: dict[str, Any] = {}
    losses: list[str] = []
    for library in LIBRARIES:
        figures = measured(library, source, least, runs)
        if isinstance(figures, str):
            page.add(f"| {library} | {figures} | | | | |")
            continue
        page.add(
            f"| {library} | {figures['seconds']:.3f} | "
            f"{figures['least']:.3f}..{figures['greatest']:.3f} | {figures['wall']:.3f} | "
            f"{figures['bytes'] / 1e6:.1f} | {figures['sets']:,} |"
        )
        ours = ours or figures
        if (figures["sets"], figures["total"]) != (ours["sets"], ours["total"]):
            sys.exit(f"{library} finds other sets than quarvis")
        for figure, word in (("seconds", "slower"), ("bytes", "larger")):
            if ours[figure] > figures[figure]:
                losses.append(f"{word} than {library} ({name}, {least})")
    return losses


def main() -> None:
    """Compare on generated baskets and on those of the files."""
    if sys.argv[1:2] == ["--one"]:
        run_one(sys.argv[2], sys.argv[3], int(sys.argv[4]), int(sys.argv[5]))
        return
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0] if __doc__ else None)
    parser.add_argument("--record", action="store_true", help="write bench/python_peers.md")
    parser.add_argument("-r", type=int, default=3, metavar="RUNS", help="runs of each")
    parser.add_argument("-n", type=int, default=20_000, metavar="BASKETS", help="to generate")
    parser.add_argument("file", nargs="*", help="transaction files")
    arguments = parser.parse_args()
    page = Page()
    page.add(
        "# Beside libraries of Python", "",
        "Written by `bench/python_peers.py --record`, whose head tells what is measured.", "",
        f"    {platform.platform()}, Python {platform.python_version()}",
        *(f"    {name} {importlib.metadata.version(name)}" for name in LIBRARIES),
        f"    load {os.getloadavg()[0]:.1f}, {arguments.r} runs",
    )
    cases = [(str(arguments.n), share) for share in (0.02, 0.005)]
    cases += [(file, share) for file in arguments.file for share in (0.05, 0.03)]
    losses: list[str] = []
    with tempfile.TemporaryDirectory() as folder:
        for source, share in cases:
            baskets = baskets_of(source)
            path = os.path.join(folder, "baskets")
            with open(path, "wb") as file:
                pickle.dump(baskets, file)
            name = "generated" if source.isdecimal() else Path(source).stem
            name = f"{name}, {len(baskets):,} baskets"
            least = max(round(len(baskets) * share), 2)
            losses += compare(page, name, path, least, arguments.r)
    if losses:
        page.add("", "quarvis is", "", *(f"- {loss}" for loss in losses))
    else:
        page.add("", "quarvis is slower or larger than none.")
    if arguments.record:
        Path(__file__).with_suffix(".md").write_text("\n".join(page.lines) + "\n")


if __name__ == "__main__":
    main()
