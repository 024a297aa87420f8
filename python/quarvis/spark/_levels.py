"""The level loop: sends candidates to the executors, gets sums back, makes the next level."""

from __future__ import annotations

import time as clock
from collections.abc import Callable
from dataclasses import dataclass
from typing import Any

import numpy as np

from quarvis import _engine
from quarvis.mining import exceeded
from quarvis.spark import _work
from quarvis.spark._jobs import Jobs, log

#: The bytes of a candidate and of a rule in a sum.
_COUNT_BYTES, _TALLY_BYTES = 4, 24


@dataclass(frozen=True)
class Limits:
    """The limits of a level.

    Attributes
    ----------
    block_bytes : int
        The most bytes of sums that a task holds; a level that needs more takes several jobs.
    key_bytes : int
        The most bytes of the sums that are added up by one task.
    driver_bytes : int
        The most bytes of sets and rules at the driver.
    sets : int or None
        The most item sets of all sizes together.
    """

    block_bytes: int
    key_bytes: int
    driver_bytes: int
    sets: int | None = None


def sets_found(run: _engine.LevelRun) -> int:
    """Return the number of item sets of all sizes."""
    return sum(run.set_count(size) for size in range(1, run.size + 1))


def count_levels(
    jobs: Jobs, shards: Any, run: _engine.LevelRun, wants_rules: bool, limits: Limits,
    done: Callable[[_engine.LevelRun], object] = lambda run: None,
) -> None:
    """Find all sets, counting the rules of each size in the same jobs as the next larger sets.

    Calls `done` after each level.

    Raises
    ------
    BudgetExceeded
        When a level exceeds the limits.
    """
    while run.has_candidates or (wants_rules and run.rule_size):
        _count_level(jobs, shards, run, wants_rules, limits)
        done(run)


def _count_level(
    jobs: Jobs, shards: Any, run: _engine.LevelRun, wants_rules: bool, limits: Limits
) -> None:
    began = clock.monotonic()
    most = max(limits.key_bytes // _COUNT_BYTES, 1)
    sets = run.candidates(most) if run.has_candidates else []
    rule_size = run.rule_size if wants_rules else 0
    rules = run.rules(max(limits.key_bytes // _TALLY_BYTES, 1)) if rule_size else []
    set_jobs = _packed(sets, _COUNT_BYTES, limits.block_bytes)
    rule_jobs = _packed(rules, _TALLY_BYTES, limits.block_bytes)
    size = run.size + 1
    kept: dict[int, tuple[Any, Any]] = {}
    tallies: dict[int, bytes] = {}
    number = max(len(set_jobs), len(rule_jobs))
    for job in range(number):
        name = _name_of(size if sets else 0, rule_size, job, number)
        jobs.tell(name, job, number)
        set_blocks = set_jobs[job] if job < len(set_jobs) else []
        rule_blocks = rule_jobs[job] if job < len(rule_jobs) else []
        for_sets = None
        if set_blocks:
            blocks = [block for _, block in set_blocks]
            for_sets = run.bytes_for_candidates((blocks[0][0], blocks[-1][1], 0))
        work = _work.count_level(
            name, for_sets, set_blocks, run.bytes_for_rules() if rule_blocks else None, rule_blocks
        )
        keys = len(set_blocks) + len(rule_blocks)
        for kind, key, data in jobs.summed(shards, work, keys, name, run.min_count):
            if kind == _work.TALLIES:
                tallies[key] = data
            else:
                kept[key] = _work.frequent(data)
        _check_bytes(run, sum(8 * len(places) for places, _ in kept.values())
                     + sum(map(len, tallies.values())), limits)
    nothing = (np.empty(0, np.uint32), np.empty(0, np.uint32))
    if rule_size:
        run.add_rules(b"".join(tallies.get(key, b"") for key in range(len(rules))))
    if sets:
        run.add_level(most, [kept.get(key, nothing) for key in range(len(sets))])
    jobs.tell(_name_of(size if sets else 0, rule_size, 0, 1), number, number)
    log.info(
        "%s: %s candidates, %s sets; %s rules of all sizes; %d jobs, %.1f s",
        _name_of(size if sets else 0, rule_size, 0, 1), f"{sum(b[2] for b in sets):,}",
        f"{run.set_count(size) if run.size >= size else 0:,}", f"{run.rule_count:,}", number,
        clock.monotonic() - began,
    )
    _check_bytes(run, 0, limits)
    if limits.sets is not None and sets_found(run) > limits.sets:
        raise exceeded(f"{limits.sets:,} item sets", f"min_count={run.min_count}", *run.reach())


def _check_bytes(run: _engine.LevelRun, more: int, limits: Limits) -> None:
    if run.memory + more > limits.driver_bytes:
        raise exceeded(
            f"{limits.driver_bytes:,} bytes at the driver", f"min_count={run.min_count}",
            *run.reach(),
        )


def _packed(
    blocks: list[_work.Block], each: int, most: int
) -> list[list[tuple[int, _work.Block]]]:
    """Group consecutive blocks into jobs; the key of a block is its place among all blocks."""
    jobs: list[list[tuple[int, _work.Block]]] = []
    room = 0
    for key, block in enumerate(blocks):
        takes = each * block[2]
        if not jobs or takes > room:
            jobs.append([])
            room = most
        jobs[-1].append((key, block))
        room -= takes
    return jobs


def _name_of(size: int, rule_size: int, job: int, number: int) -> str:
    parts = [f"sets of {size} items"] if size else []
    parts += [f"rules of {rule_size} items"] if rule_size else []
    block = f", block {job + 1} of {number}" if number > 1 else ""
    return " and ".join(parts) + block
