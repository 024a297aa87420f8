"""The test of the order in a cluster: counts the rules again on permuted shards."""

from __future__ import annotations

from collections.abc import Callable, Iterator
from typing import Any

import numpy as np

from quarvis import _engine
from quarvis.spark import _work
from quarvis.spark._jobs import Jobs
from quarvis.spark._shards import Shards

#: The difference between the seeds of successive permutations; odd, so that all seeds differ.
_SEED_STEP = 0x9E3779B97F4A7C15

#: The layout of the tally of a rule.
TALLY = np.dtype([
    ("split", "<u8"), ("set", "<u4"), ("met", "<u4"), ("counted", "<u4"), ("unused", "<u4")
])

#: The most bytes that the states of a job's data sets take in a task.
_STATE_BYTES = 2**26

_MOST_OF_JOB = 32

Side = tuple[int, ...]
Rule = tuple[Side, Side]
First = dict[tuple[int, int], int]


class Order:
    """Counts the rules on data sets: number 0 is the data, the others are permutations of it."""

    def __init__(
        self, jobs: Jobs, shards: Shards, run: _engine.LevelRun, masks: tuple[Any, Any] | None,
        sets: int, seed: int, progress: Callable[[str, int, int], object] | None,
    ) -> None:
        self._jobs = jobs
        self._shards = shards
        self._run = run
        self._masks = masks
        self._progress = progress or (lambda step, done, total: None)
        self._base = run.without_rules().to_bytes()
        self._seeds = [None if i == 0 else (seed + i * _SEED_STEP) % 2**64 for i in range(sets)]
        each = max(1, min(_MOST_OF_JOB, _STATE_BYTES // max(len(self._base), 1)))
        self._batches = [range(i, min(i + each, sets)) for i in range(0, sets, each)]

    def tested(self, rules: list[Rule], observed: Any) -> dict[str, Any]:
        """Return `p`, `p_max`, `mean` and `deviation` by rule, as `quarvis._engine.test_order`."""
        listed = self._listed()
        known = self._sides(listed)
        sums, squares = self._sums(known)
        number = {rule: place for place, rule in enumerate(known)}
        sets = float(len(self._seeds))
        mean = sums.astype(np.float64) / sets
        square = squares.astype(np.float64) / sets
        deviation = np.sqrt(np.maximum(0.0, square - mean * mean))

        def statistic(places: Any, counts: Any) -> Any:
            far = np.zeros(len(places))
            some = deviation[places] > 0
            far[some] = np.maximum(
                0.0, (counts[some].astype(np.float64) - mean[places[some]])
                / deviation[places[some]]
            )
            return far

        by_set = [
            (np.array([number[rule] for rule in counts], np.int64),
             np.array(list(counts.values()), np.uint32))
            for counts in self._by_rule(listed)
        ]
        in_data = np.zeros(len(known), np.uint32)
        in_data[by_set[0][0]] = by_set[0][1]
        at_least = np.zeros(len(known), np.int64)
        maxima = []
        for places, counts in by_set:
            np.add.at(at_least, places[counts >= in_data[places]], 1)
            maxima.append(max(statistic(places, counts), default=0.0))
        ascending = np.sort(np.array(maxima))
        places = np.array([number[rule] for rule in rules], np.int64)
        far = statistic(places, np.asarray(observed))
        return {
            "p": at_least[places] / sets,
            "p_max": (len(ascending) - np.searchsorted(ascending, far, "left")) / sets,
            "mean": mean[places],
            "deviation": deviation[places],
        }

    def _listed(self) -> list[list[Any]]:
        """Return the tallies of rules met often enough, by data set and by size from 2 on."""
        fed: list[list[bytes]] = [[] for _ in self._seeds]
        for size in range(2, self._run.size + 1):
            name = f"permuted rules of {size} items"
            for number, batch in enumerate(self._batches):
                self._progress(name, number, len(self._batches))
                # If a size has no rule, the next size has none either.
                going = [i for i in batch if size == 2 or fed[i][-1]]
                if not going:
                    continue
                work = tally_orders(
                    f"{name}, batch {number + 1} of {len(self._batches)}", self._base,
                    self._run.set_count(1), self._shards.first,
                    {i: (self._seeds[i], fed[i]) for i in going},
                )
                for i in going:
                    fed[i] = [*fed[i], b""]
                for _, key, data in self._jobs.summed(
                    self._shards.frame, work, len(going), name, self._run.min_count
                ):
                    fed[key][-1] = data
        return [[np.frombuffer(data, TALLY) for data in sizes] for sizes in fed]

    def _by_rule(self, listed: list[list[Any]]) -> Iterator[dict[Rule, int]]:
        """Yield, for each data set, the rules that are listed in it and their counts."""
        for sizes in listed:
            counts: dict[Rule, int] = {}
            for size, tallies in enumerate(sizes, 2):
                often = tallies[tallies["counted"] >= max(self._run.min_count, 1)]
                rules = self._rules(size, often)
                counts.update(
                    (rule, int(count)) for rule, count in zip(rules, often["counted"], strict=True)
                    if self._allows(rule)
                )
            yield counts

    def _sides(self, listed: list[list[Any]]) -> list[Rule]:
        """Return the rules that are listed in any data set."""
        known: dict[Rule, None] = {}
        for counts in self._by_rule(listed):
            known.update(dict.fromkeys(counts))
        return list(known)

    def _rules(self, size: int, tallies: Any) -> list[Rule]:
        lists = self._run.sides(size, tallies.tobytes())
        sides = []
        for offsets, ranks in lists:
            numbers = ranks.tolist()
            sides.append([
                tuple(numbers[offsets[i] : offsets[i + 1]]) for i in range(len(offsets) - 1)
            ])
        return list(zip(*sides, strict=True))

    def _allows(self, rule: Rule) -> bool:
        if self._masks is None:
            return True
        return all(bool(mask[list(side)].all())
                   for mask, side in zip(self._masks, rule, strict=True))

    def _sums(self, rules: list[Rule]) -> tuple[Any, Any]:
        """Return, for each rule, the sum of its counts over the data sets, and of their squares."""
        sums = np.zeros(len(rules), np.uint64)
        squares = np.zeros(len(rules), np.uint64)
        if not rules:
            return sums, squares
        name = "means of permuted rules"
        for number, batch in enumerate(self._batches):
            self._progress(name, number, len(self._batches))
            work = count_orders(
                f"{name}, batch {number + 1} of {len(self._batches)}", self._base,
                self._shards.first, {i: self._seeds[i] for i in batch}, self._run.window,
                [_lists([rule[side] for rule in rules]) for side in (0, 1)],
            )
            for _, _, data in self._jobs.summed(
                self._shards.frame, work, len(batch), name, None
            ):
                counts = np.frombuffer(data, np.uint32).astype(np.uint64)
                sums += counts
                squares += counts * counts
        return sums, squares


def _lists(sides: list[Side]) -> tuple[Any, Any]:
    offsets = np.cumsum([0, *map(len, sides)], dtype=np.int64)
    return offsets, np.array([rank for side in sides for rank in side], np.uint32)


def _data_set(data: bytes, run: _engine.LevelRun, seed: int | None, first: int) -> Any:
    shard = _engine.shard(data)
    return shard if seed is None else _engine.shuffled_shard(shard, run, seed, first)


def tally_orders(
    name: str, base: bytes, items: int, first: First,
    sets: dict[int, tuple[int | None, list[bytes]]],
) -> _work.Work:
    """Return the work that tallies the rules of the next size; each data set is a key."""

    def tally(batches: _work.Batches) -> _work.Batches:
        runs = {}
        for key, (_, fed) in sets.items():
            runs[key] = _engine.LevelRun.from_bytes(base)
            for tallies in fed:
                runs[key].add_rules(tallies)
        sums = {key: _engine.TallySum() for key in sets}
        for place, number, data in _work.cells(batches, "partition", "number", "shard"):
            for key, (seed, _) in sets.items():
                shard = _data_set(data, runs[key], seed, first[place, number])
                sums[key].add(_engine.ShardWork(shard, runs[key]).tally_rules((0, items, 0)))
        yield from _work.sums((_work.TALLIES, key, total.to_bytes()) for key, total in sums.items())

    return _work.named(tally, name)


def count_orders(
    name: str, base: bytes, first: First, sets: dict[int, int | None], window: int,
    sides: list[tuple[Any, Any]],
) -> _work.Work:
    """Return the work that counts rules; each data set is a key."""

    def count(batches: _work.Batches) -> _work.Batches:
        run = _engine.LevelRun.from_bytes(base)
        sums = {key: np.zeros(len(sides[0][0]) - 1, np.uint32) for key in sets}
        for place, number, data in _work.cells(batches, "partition", "number", "shard"):
            for key, seed in sets.items():
                shard = _data_set(data, run, seed, first[place, number])
                sums[key] += _engine.count_rules(shard, window, *sides[0], *sides[1])
        yield from _work.sums((_work.COUNTS, key, total.tobytes()) for key, total in sums.items())

    return _work.named(count, name)
