"""
The mining engine for Python, as numbers and columns. Internal to quarvis.
"""

from collections.abc import Sequence
import enum
from typing import Annotated, Any

import numpy
from numpy.typing import NDArray


class BudgetExceeded(Exception):
    pass

class Limit(enum.Enum):
    LEVELS = 0

    SETS = 1

    BYTES = 2

    TIME = 3

class Watch:
    """Progress, signals and the budget of a run."""

    def __init__(self, progress: object | None = None, nanoseconds: int = 0, sets: int = 0, bytes: int = 0) -> None: ...

class Index:
    """Histories with the items that are frequent."""

    @property
    def history_count(self) -> int: ...

    @property
    def item_count(self) -> int: ...

    @property
    def transaction_count(self) -> int: ...

    @property
    def min_count(self) -> int: ...

    @property
    def memory(self) -> int: ...

    def names(self) -> tuple[Any, Any]:
        """The names by rank, as offsets and bytes."""

    def counts(self) -> Annotated[NDArray[numpy.uint32], dict(shape=(None,))]:
        """The number of histories that hold each item, by rank."""

class Rows:
    """Rows as columns of codes."""

    def __init__(self, entities: Annotated[NDArray[numpy.uint32], dict(shape=(None,), order='C', device='cpu', writable=False)], times: Annotated[NDArray[numpy.uint32], dict(shape=(None,), order='C', device='cpu', writable=False)] | Annotated[NDArray[numpy.uint64], dict(shape=(None,), order='C', device='cpu', writable=False)], items: Annotated[NDArray[numpy.uint32], dict(shape=(None,), order='C', device='cpu', writable=False)], histories: int, name_offsets: Annotated[NDArray[numpy.int64], dict(shape=(None,), order='C', device='cpu', writable=False)], name_bytes: Annotated[NDArray[numpy.uint8], dict(shape=(None,), order='C', device='cpu', writable=False)]) -> None: ...

    def index(self, min_count: int, watch: Watch) -> Index:
        """The index of the items that are in at least this many histories."""

    def shard(self) -> Index:
        """A shard of all items."""

NO_ITEM: int = 4294967295

def read_transactions(path: str) -> dict[str, Any]:
    """The columns of a transaction file, read as the tool does."""

class Splits(enum.Enum):
    RUNS = 0

    ALL = 1

class Options:
    """The settings of a run; 0 means no bound."""

    def __init__(self) -> None: ...

    @property
    def min_count(self) -> int: ...

    @min_count.setter
    def min_count(self, arg: int, /) -> None: ...

    @property
    def max_size(self) -> int: ...

    @max_size.setter
    def max_size(self, arg: int, /) -> None: ...

    @property
    def window(self) -> int: ...

    @window.setter
    def window(self, arg: int, /) -> None: ...

    @property
    def splits(self) -> Splits: ...

    @splits.setter
    def splits(self, arg: Splits, /) -> None: ...

    @property
    def threads(self) -> int: ...

    @threads.setter
    def threads(self, arg: int, /) -> None: ...

    def set_thresholds(self, support: float, confidence: float, lift: float, conviction: float) -> None: ...

class Found:
    """The result of a run, as ranks of its index."""

    @property
    def index(self) -> Index: ...

    @property
    def rule_count(self) -> int: ...

    def rules(self, watch: Watch) -> dict[str, Any]:
        """The rules as columns."""

    @property
    def set_count(self) -> int: ...

    def set_counts(self) -> list[int]:
        """The number of item sets of each size, from 1 on."""

    def item_sets(self, keep: Annotated[NDArray[numpy.uint8], dict(shape=(None,), order='C', device='cpu', writable=False)] | None, watch: Watch) -> dict[str, Any]:
        """The item sets as columns."""

    def extensions(self, watch: Watch) -> dict[str, Any]:
        """Whether each set is not closed, and not maximal."""

    def with_basket_rules(self, histories: int, splits: Splits, confidence: float, lift: float, conviction: float, watch: Watch) -> Found:
        """The same sets with rules that ignore times."""

    def with_sides(self, all: Index, left: Annotated[NDArray[numpy.uint8], dict(shape=(None,), order='C', device='cpu', writable=False)], right: Annotated[NDArray[numpy.uint8], dict(shape=(None,), order='C', device='cpu', writable=False)], confidence: float, lift: float, conviction: float, watch: Watch) -> Found:
        """The rules with certain items on a side."""

    def with_counted_sides(self, left: Annotated[NDArray[numpy.uint8], dict(shape=(None,), order='C', device='cpu', writable=False)], right: Annotated[NDArray[numpy.uint8], dict(shape=(None,), order='C', device='cpu', writable=False)], antecedents: Annotated[NDArray[numpy.uint32], dict(shape=(None,), order='C', device='cpu', writable=False)], consequents: Annotated[NDArray[numpy.uint32], dict(shape=(None,), order='C', device='cpu', writable=False)], histories: int, confidence: float, lift: float, conviction: float, watch: Watch) -> Found:
        """The same, with known counts of sides."""

    def write(self, path: str, rules: bool, keep: Annotated[NDArray[numpy.uint8], dict(shape=(None,), order='C', device='cpu', writable=False)] | None) -> None:
        """Writes the rules file or the item-set file of the tool."""

def mine(index: Index, options: Options, watch: Watch) -> Found: ...

def mine_item_sets(index: Index, options: Options, watch: Watch) -> Found: ...

def explain(index: Index, antecedent: Annotated[NDArray[numpy.uint32], dict(shape=(None,), order='C', device='cpu', writable=False)], subsequent: Annotated[NDArray[numpy.uint32], dict(shape=(None,), order='C', device='cpu', writable=False)], window: int) -> dict[str, Any]:
    """Whether a rule counts, for each history with all its items."""

def lags(found: Found, places: Annotated[NDArray[numpy.int64], dict(shape=(None,), order='C', device='cpu', writable=False)], window: int, threads: int, watch: Watch) -> dict[str, Any]:
    """The lags and reverse counts of rules."""

def redundant(found: Found, places: Annotated[NDArray[numpy.int64], dict(shape=(None,), order='C', device='cpu', writable=False)], values: Annotated[NDArray[numpy.float64], dict(shape=(None,), order='C', device='cpu', writable=False)], watch: Watch) -> Annotated[NDArray[numpy.uint8], dict(shape=(None,))]:
    """Whether a more general rule is at least as good."""

def match(found: Found, places: Annotated[NDArray[numpy.int64], dict(shape=(None,), order='C', device='cpu', writable=False)], histories: Annotated[NDArray[numpy.uint32], dict(shape=(None,), order='C', device='cpu', writable=False)], times: Annotated[NDArray[numpy.uint64], dict(shape=(None,), order='C', device='cpu', writable=False)], ranks: Annotated[NDArray[numpy.uint32], dict(shape=(None,), order='C', device='cpu', writable=False)], now: int, window: int, watch: Watch) -> dict[str, Any]:
    """The rules that match histories at a time."""

def test_order(found: Found, options: Options, permutations: int, seed: int, threads: int, watch: Watch) -> dict[str, Any]:
    """How far the counts stand out from those of permuted times."""

def fisher(n: float, a: Annotated[NDArray[numpy.float64], dict(shape=(None,), order='C', device='cpu', writable=False)], s: Annotated[NDArray[numpy.float64], dict(shape=(None,), order='C', device='cpu', writable=False)], u: Annotated[NDArray[numpy.float64], dict(shape=(None,), order='C', device='cpu', writable=False)]) -> Annotated[NDArray[numpy.float64], dict(shape=(None,))]:
    """Tails of hypergeometric distributions."""

class LevelRun:
    """The state of a run over shards, level by level."""

    def __init__(self, counts: Annotated[NDArray[numpy.uint32], dict(shape=(None,), order='C', device='cpu', writable=False)], options: Options) -> None: ...

    @staticmethod
    def from_bytes(bytes: bytes) -> LevelRun: ...

    def to_bytes(self) -> bytes: ...

    def bytes_for_candidates(self, block: tuple[int, int, int]) -> bytes: ...

    def bytes_for_rules(self) -> bytes: ...

    @property
    def size(self) -> int: ...

    @property
    def memory(self) -> int: ...

    @property
    def min_count(self) -> int: ...

    @property
    def window(self) -> int: ...

    @property
    def has_candidates(self) -> bool: ...

    @property
    def rule_size(self) -> int: ...

    @property
    def rule_count(self) -> int: ...

    def set_count(self, size: int) -> int: ...

    def reach(self) -> tuple[list[int], int]:
        """The number of sets of each size, and a least count to try next."""

    def candidates(self, most: int) -> list[tuple[int, int, int]]:
        """The candidates of the next level, in blocks."""

    def rules(self, most: int) -> list[tuple[int, int, int]]:
        """The rules of the size that is tallied next, in blocks."""

    def add_level(self, most: int, blocks: Sequence[tuple[Annotated[NDArray[numpy.uint32], dict(shape=(None,), order='C', device='cpu', writable=False)], Annotated[NDArray[numpy.uint32], dict(shape=(None,), order='C', device='cpu', writable=False)]]]) -> None:
        """
        Ends a level: by block, the places of the frequent candidates and their counts.
        """

    def add_rules(self, tallies: bytes) -> None:
        """Ends a size of rules."""

    def without_rules(self) -> LevelRun:
        """The same sets, without rules."""

    def sides(self, size: int, tallies: bytes) -> tuple[Any, Any]:
        """The sides of rules of a size, as two lists of ranks."""

    def found(self, items: Index, histories: int, first: int = 0, most: int = 18446744073709551615) -> Found:
        """The result among so many histories, with all or some of the rules."""

class ShardWork:
    """Counts candidates and rules of a run on one shard."""

    def __init__(self, shard: Index, run: LevelRun) -> None: ...

    def count_candidates(self, block: tuple[int, int, int], sums: Annotated[NDArray[numpy.uint32], dict(shape=(None,), order='C', device='cpu')]) -> None:
        """Adds to the sums of a block."""

    def tally_rules(self, block: tuple[int, int, int]) -> bytes: ...

class TallySum:
    """Sums tallies of rules."""

    def __init__(self) -> None: ...

    def add(self, tallies: bytes) -> None: ...

    def to_bytes(self) -> bytes: ...

def frequent_tallies(tallies: bytes, least: int) -> bytes:
    """The tallies of rules that are met often enough."""

def shard(bytes: bytes) -> Index:
    """A shard from its bytes."""

def shard_bytes(shard: Index) -> bytes: ...

def shuffled_shard(shard: Index, run: LevelRun, seed: int, first: int) -> Index:
    """
    The shard with times permuted, its histories numbered from the first on.
    """

def items(name_offsets: Annotated[NDArray[numpy.int64], dict(shape=(None,), order='C', device='cpu', writable=False)], name_bytes: Annotated[NDArray[numpy.uint8], dict(shape=(None,), order='C', device='cpu', writable=False)], counts: Annotated[NDArray[numpy.uint32], dict(shape=(None,), order='C', device='cpu', writable=False)], min_count: int) -> Index:
    """An index of items without histories."""

def count_rules(shard: Index, window: int, left_offsets: Annotated[NDArray[numpy.int64], dict(shape=(None,), order='C', device='cpu', writable=False)], left: Annotated[NDArray[numpy.uint32], dict(shape=(None,), order='C', device='cpu', writable=False)], right_offsets: Annotated[NDArray[numpy.int64], dict(shape=(None,), order='C', device='cpu', writable=False)], right: Annotated[NDArray[numpy.uint32], dict(shape=(None,), order='C', device='cpu', writable=False)]) -> Annotated[NDArray[numpy.uint32], dict(shape=(None,))]:
    """The number of histories in which each rule counts."""

def count_sets(shard: Index, offsets: Annotated[NDArray[numpy.int64], dict(shape=(None,), order='C', device='cpu', writable=False)], ranks: Annotated[NDArray[numpy.uint32], dict(shape=(None,), order='C', device='cpu', writable=False)]) -> Annotated[NDArray[numpy.uint32], dict(shape=(None,))]:
    """The number of histories that hold each set."""
