"""Counting shards separately and summing gives the same result as the whole."""

import struct

import hypothesis
import numpy as np
import pytest
from hypothesis import strategies as st
from strategies import rows
from test_brute_force import histories

from quarvis import _engine

SETTINGS = hypothesis.settings(max_examples=60, deadline=None)


def cut(table, number):
    """Return the bytes of shards, split at any histories, and the names of the items."""
    columns = table._columns
    names = columns.item_names.to_pylist()
    order = sorted(range(len(names)), key=lambda code: names[code].encode())
    rank = np.empty(len(names), np.uint32)
    rank[order] = np.arange(len(names))
    texts = [names[code].encode() for code in order]
    offsets = np.cumsum([0, *map(len, texts)], dtype=np.int64)
    packed = (offsets, np.frombuffer(b"".join(texts), np.uint8))
    shards = []
    for part in range(number):
        mine = columns.entities.codes % number == part
        entities = columns.entities.codes[mine] // number
        size = int(entities.max()) + 1 if len(entities) else 0
        shard = _engine.Rows(
            entities, columns.times[mine], rank[columns.items[mine]], size, *packed
        ).shard()
        shards.append(_engine.shard_bytes(shard))
    return shards, packed


def mined(shards, packed, options, histories_count, most):
    counts = sum(_engine.shard(data).counts() for data in shards).astype(np.uint32)
    run = _engine.LevelRun(counts, options)
    while run.has_candidates or run.rule_size:
        if run.has_candidates:
            kept = []
            for block in run.candidates(most):
                sent = _engine.LevelRun.from_bytes(run.bytes_for_candidates(block))
                sums = np.zeros(block[2], np.uint32)
                for data in shards:
                    _engine.ShardWork(_engine.shard(data), sent).count_candidates(block, sums)
                places = np.flatnonzero(sums >= options.min_count).astype(np.uint32)
                kept.append((places, sums[places]))
            run.add_level(most, kept)
        if run.rule_size:
            sent = _engine.LevelRun.from_bytes(run.bytes_for_rules())
            tallies = b""
            for block in run.rules(most):
                total = _engine.TallySum()
                for data in shards:
                    total.add(_engine.ShardWork(_engine.shard(data), sent).tally_rules(block))
                tallies += _engine.frequent_tallies(total.to_bytes(), options.min_count)
            run.add_rules(tallies)
    return run, run.found(_engine.items(*packed, counts, 0), histories_count)


def named(found, columns):
    """Return lists of names from lists of ranks, given as columns."""
    offsets, text = found.index.names()
    raw = text.tobytes()
    names = [raw[offsets[i] : offsets[i + 1]] for i in range(len(offsets) - 1)]
    begins, ranks = columns
    return [[names[r] for r in ranks[begins[i] : begins[i + 1]]] for i in range(len(begins) - 1)]


@hypothesis.given(
    data=rows(), min_count=st.integers(1, 3), window=st.sampled_from([0, 1, 3]),
    kind=st.sampled_from([_engine.Splits.ALL, _engine.Splits.RUNS]), number=st.integers(1, 7),
    most=st.sampled_from([1, 4, 1000]), max_size=st.sampled_from([0, 2, 3]),
)
@SETTINGS
def test_sums_of_shards_are_those_of_the_whole(
    data, min_count, window, kind, number, most, max_size
):
    table = histories(data)
    options = _engine.Options()
    options.min_count, options.window, options.splits = min_count, window, kind
    options.max_size = max_size
    whole = _engine.mine(table._rows.index(min_count, _engine.Watch()), options, _engine.Watch())
    shards, packed = cut(table, number)
    run, found = mined(shards, packed, options, len(table), most)
    for mine, theirs in (
        (found.rules(_engine.Watch()), whole.rules(_engine.Watch())),
        (found.item_sets(None, _engine.Watch()), whole.item_sets(None, _engine.Watch())),
    ):
        assert mine.keys() == theirs.keys()
        for name in mine:
            if isinstance(mine[name], tuple):
                assert named(found, mine[name]) == named(whole, theirs[name])
            else:
                assert mine[name].tolist() == theirs[name].tolist()
    kept = _engine.LevelRun.from_bytes(run.to_bytes())
    assert kept.to_bytes() == run.to_bytes()
    assert kept.without_rules().rule_count == 0
    parts = [run.found(found.index, len(table), first, 2).rule_count
             for first in range(0, run.rule_count, 2)]
    assert sum(parts) == found.rule_count


def test_a_run_tells_how_far_it_came():
    options = _engine.Options()
    options.min_count = 2
    run = _engine.LevelRun(np.array([1, 5, 4], np.uint32), options)
    # The counts are 5 and 4: both are at least 4, and one is at least 5.
    assert run.reach() == ([2], 5)
    run.add_level(10, [(np.array([0], np.uint32), np.array([3], np.uint32))])
    assert run.reach() == ([2, 1], 5)


def test_a_run_tells_the_bytes_that_its_sets_and_rules_take():
    options = _engine.Options()
    options.min_count = 2
    run = _engine.LevelRun(np.array([3, 5, 4], np.uint32), options)
    assert run.memory == 3 * 4
    run.add_level(10, [(np.array([0], np.uint32), np.array([3], np.uint32))])
    assert run.memory == 3 * 4 + 20
    # Both rules are met often enough, and one counts often enough.
    run.add_rules(b"".join(
        struct.pack("=QIIIxxxx", split, 0, met, counted) for split, met, counted in
        ((1, 3, 2), (2, 2, 1))
    ))
    assert run.rule_count == 1
    assert run.memory == 3 * 4 + 20 + 2 * 16 + 24


def test_bytes_of_another_kind_are_refused():
    for read in (_engine.LevelRun.from_bytes, _engine.shard):
        with pytest.raises(RuntimeError):
            read(b"no shard and no run")
    with pytest.raises(ValueError, match="tallies that are cut off"):
        _engine.frequent_tallies(b"x", 1)


def test_questions_to_a_shard_name_items_that_are_there():
    shards, _ = cut(histories([("u", 1, "b"), ("u", 2, "bb"), ("v", 1, "bb")]), 1)
    shard = _engine.shard(shards[0])
    one = np.array([0, 1], np.int64)
    b, bb = (np.array([rank], np.uint32) for rank in (0, 1))
    assert _engine.count_rules(shard, 0, one, b, one, bb).tolist() == [1]
    assert _engine.count_rules(shard, 0, one, bb, one, b).tolist() == [0]
    sets = (np.array([0, 1, 3]), np.array([1, 0, 1], np.uint32))
    assert _engine.count_sets(shard, *sets).tolist() == [2, 1]
    with pytest.raises(ValueError, match="an item that is not there"):
        _engine.count_sets(shard, one, np.array([2], np.uint32))
