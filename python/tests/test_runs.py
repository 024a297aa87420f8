"""Threads, progress, budgets, Ctrl-C, file errors, and memory over many runs."""

import gc
import os
import pickle
import re
import resource
import subprocess
import sys
import textwrap
import threading
import time
from concurrent.futures import ThreadPoolExecutor

import numpy as np
import pyarrow as pa
import pytest

import quarvis


def large(histories=2000, items=60, seed=1):
    """Return histories of random items, whose search at a low count takes long."""
    draws = np.random.default_rng(seed)
    rows = histories * 40
    table = pa.table({
        "who": draws.integers(0, histories, rows),
        "when": draws.integers(0, 50, rows),
        "what": draws.integers(0, items, rows),
    })
    return quarvis.Histories(table, entity="who", time="when", items="what")


@pytest.fixture(scope="module")
def many():
    return large()


def test_result_does_not_depend_on_threads(many):
    arguments = {"min_count": 150, "window": 20, "max_items": 3}
    one = quarvis.mine(many, threads=1, **arguments)
    assert len(one) > 50
    for threads in (2, 5):
        assert quarvis.mine(many, threads=threads, **arguments).to_arrow().equals(one.to_arrow())


def test_other_threads_run_meanwhile(many):
    ticks = []
    ended = threading.Event()

    def tick():
        while not ended.wait(0.005):
            ticks.append(None)

    other = threading.Thread(target=tick)
    other.start()
    before = len(ticks)
    with pytest.raises(quarvis.BudgetExceeded):
        quarvis.mine(many, min_count=2, threads=1, budget=quarvis.Budget(seconds=1))
    during = len(ticks) - before
    ended.set()
    other.join()
    assert during > 3  # about 200 are possible; at most 2 if the run kept the interpreter's lock


def test_threads_share_histories(many):
    results = []
    arguments = {"min_count": 400, "max_items": 2, "threads": 2}
    threads = [
        threading.Thread(target=lambda: results.append(quarvis.mine(many, **arguments)))
        for _ in range(4)
    ]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert len(results) == 4
    assert all(r.to_arrow().equals(results[0].to_arrow()) for r in results)


def test_threads_read_files_at_the_same_time(tmp_path):
    path = tmp_path / "histories.tsv"
    path.write_text("who\tat\twhat\n" + "".join(f"e{n}\t{n}\ta\tb\n" for n in range(40)))
    with ThreadPoolExecutor(8) as pool:
        read = pool.map(lambda _: quarvis.read_transactions(path).report().rows, range(2000))
        assert list(read) == [80] * 2000


def test_progress_is_told(many):
    told = []
    begin = time.monotonic()
    quarvis.mine(
        many, min_count=2, max_items=3, threads=1, progress=lambda *step: told.append(step)
    )
    took = time.monotonic() - begin
    assert told
    assert {step for step, _, _ in told} <= {"item sets", "rules"}
    for _, done, total in told:
        assert 0 <= done <= total
    assert len(told) <= took * 10 + 1  # at most ten times a second


@pytest.mark.parametrize("threads", [1, 2])
def test_error_of_progress_ends_run(many, threads):
    def fail(*_):
        raise LookupError("no more")

    with pytest.raises(LookupError, match="no more"):
        quarvis.mine(many, min_count=2, threads=threads, progress=fail)


def test_progress_is_printed(many, capsys):
    quarvis.mine(many, min_count=1000, progress=True, max_items=2)
    assert capsys.readouterr().err.endswith("\n")


# Of the eight customers 6 have bread, 6 butter, 2 jam and 1 tea. So half of the four items have a
# count of 3 or more.
@pytest.mark.parametrize(
    ("budget", "bound"),
    [
        (quarvis.Budget(sets=3), "3 item sets"),
        (quarvis.Budget(bytes=100), "100 bytes"),  # 4 items take 112
        (quarvis.Budget(seconds=1e-9), "1e-09 seconds"),
    ],
)
@pytest.mark.parametrize("frame", ["times", "baskets", "sides"])
def test_budget_tells_how_far_the_run_came(shop, budget, bound, frame):
    arguments = {"min_count": 1, "budget": budget}
    if frame == "baskets":
        shop = quarvis.from_baskets([["bread", "butter"]] * 5 + [["bread"], ["butter", "jam"],
                                                                 ["jam", "tea"]])
    elif frame == "sides":
        arguments |= {"antecedents": "*"}
    with pytest.raises(quarvis.BudgetExceeded) as error:
        quarvis.mine(shop, **arguments)
    assert str(error.value) == (
        f"the budget of {bound} is exceeded at min_count=1; 4 item sets of up to 1 items were "
        "found so far, of which at most half have a count of 3: try min_count=3, or max_items=2"
    )
    assert (error.value.item_sets, error.value.min_count) == ((4,), 3)
    again = pickle.loads(pickle.dumps(error.value))
    assert (str(again), again.item_sets, again.min_count) == (str(error.value), (4,), 3)


@pytest.mark.parametrize("threads", [1, 2])
def test_budget_ends_in_the_midst_of_a_size(many, threads):
    # All 1,770 pairs and 34,220 triples of the 60 items are in two histories or more.
    with pytest.raises(quarvis.BudgetExceeded) as error:
        quarvis.mine(many, min_count=2, max_items=3, threads=threads,
                     budget=quarvis.Budget(sets=30_000))
    items, pairs, triples = error.value.item_sets
    assert items == 60
    assert pairs <= 1770
    assert 28_000 < items + pairs + triples <= 30_100
    sets = quarvis.mine(many, min_count=error.value.min_count, max_items=3, rules=False)
    assert 0 < len(sets.item_sets) < 30_000


def test_budget_of_time_covers_all_steps(many):
    with pytest.raises(quarvis.BudgetExceeded, match="the budget of 0.3 seconds is exceeded"):
        quarvis.mine(many, min_count=2, budget=quarvis.Budget(seconds=0.3))


def test_budget_of_time_covers_the_indexing():
    with pytest.raises(quarvis.BudgetExceeded) as error:
        quarvis.mine(large(histories=100_000), min_count=2, budget=quarvis.Budget(seconds=1e-3))
    assert str(error.value) == (
        "the budget of 0.001 seconds is exceeded at min_count=2; the search had not begun: allow "
        "more time"
    )
    assert (error.value.item_sets, error.value.min_count) == ((), None)


def test_budget_covers_rules_of_baskets():
    # 12 items that always occur together: 4,095 sets, which give 3^12 - 2^13 + 1 rules.
    baskets = quarvis.from_baskets([[f"item {i}" for i in range(12)]] * 2)
    assert len(quarvis.mine(baskets, min_count=2)) == 3**12 - 2**13 + 1
    with pytest.raises(quarvis.BudgetExceeded) as error:
        quarvis.mine(baskets, min_count=2, budget=quarvis.Budget(bytes=20_000_000))
    assert sum(error.value.item_sets) == 4095
    assert error.value.min_count == 3


@pytest.mark.parametrize(
    ("bounds", "message"),
    [
        ({"seconds": 0}, "seconds=0: give a number greater than 0, or None"),
        ({"seconds": float("nan")}, "seconds=nan: give a number greater than 0, or None"),
        ({"sets": 0}, "sets=0: give a whole number from 1 on, or None"),
        ({"bytes": 1.5}, "bytes=1.5: give a whole number from 1 on, or None"),
    ],
)
def test_budget_out_of_range(bounds, message):
    with pytest.raises(quarvis.errors.DataError, match=f"^{re.escape(message)}$"):
        quarvis.Budget(**bounds)


def test_budget_that_suffices(many):
    budget = quarvis.Budget(seconds=60, sets=10**6, bytes=10**9)
    plain = quarvis.mine(many, min_count=500)
    assert quarvis.mine(many, min_count=500, budget=budget).to_arrow().equals(plain.to_arrow())


INTERRUPTED = """
    import os, signal, sys, threading
    sys.path.insert(0, {folder!r})
    from test_runs import large
    import quarvis

    begun = threading.Event()
    told = []

    def progress(*step):
        told.append(step)
        begun.set()

    def interrupt():
        begun.wait()
        told.clear()
        os.kill(os.getpid(), signal.SIGINT)

    threading.Thread(target=interrupt).start()
    try:
        quarvis.mine(large(), min_count=2, max_items=5, threads={threads}, progress=progress)
    except KeyboardInterrupt:
        print("interrupted", len(told))
"""


@pytest.mark.parametrize("threads", [1, 2])
def test_interrupt_ends_a_run(threads):
    script = textwrap.dedent(INTERRUPTED).format(
        folder=os.path.dirname(__file__), threads=threads
    )
    done = subprocess.run(
        [sys.executable, "-W", "ignore", "-c", script], capture_output=True, text=True,
    )
    assert done.stderr == ""
    word, told = done.stdout.split()
    assert word == "interrupted"
    # The run polls for signals five times as often as it reports progress. It may report once
    # before the signal is sent, and once more before it polls.
    assert int(told) <= 2


def test_interrupt_ends_a_walk_over_many_sets():
    script = """
        import os, signal, threading, time
        import quarvis

        baskets = quarvis.from_baskets([[str(i) for i in range(23)]] * 2)
        mined = quarvis.mine(baskets, min_count=2, rules=False)  # 2^23 - 1 sets

        def interrupt():
            time.sleep(0.05)
            os.kill(os.getpid(), signal.SIGINT)

        threading.Thread(target=interrupt).start()
        try:
            mined.maximal()
        except KeyboardInterrupt:
            print("interrupted")
    """
    done = subprocess.run(
        [sys.executable, "-W", "ignore", "-c", textwrap.dedent(script)], capture_output=True,
        text=True,
    )
    assert (done.stdout, done.stderr) == ("interrupted\n", "")


@pytest.mark.parametrize(
    ("path", "error"), [("missing/rules.tsv", FileNotFoundError), (".", IsADirectoryError)]
)
def test_files_that_cannot_be_written(shop, tmp_path, path, error):
    mined = quarvis.mine(shop, min_count=2)
    with pytest.raises(error) as raised:
        mined.write_tsv(tmp_path / path)
    assert raised.value.filename == str(tmp_path / path)


@pytest.mark.skipif(not os.path.exists("/dev/full"), reason="needs /dev/full")
def test_full_disk_is_an_error(shop):
    mined = quarvis.mine(shop, min_count=1)
    with pytest.raises(OSError, match="No space left on device: '/dev/full'"):
        mined.write_tsv("/dev/full")


def test_memory_does_not_grow_over_1000_runs(shop):
    def resident():
        with open("/proc/self/statm") as statm:
            return int(statm.read().split()[1]) * resource.getpagesize()

    def once():
        mined = quarvis.mine(shop, min_count=1, window=2)
        mined.to_arrow()
        assert mined.item_sets is not None

    def growth():
        before = resident()
        for _ in range(1000):
            once()
        gc.collect()
        return resident() - before

    for _ in range(100):
        once()
    gc.collect()
    # A leak of 2,000 bytes per run would show in each round; growth of the allocator only in one.
    assert any(growth() < 2_000_000 for _ in range(3))
