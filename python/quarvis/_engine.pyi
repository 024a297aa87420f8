"""
The mining engine for Python, as numbers and columns. Internal to quarvis.
"""

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
        """By rank: the histories that the item is in."""

class Rows:
    """Rows as columns of codes."""

    def __init__(self, entities: Annotated[NDArray[numpy.uint32], dict(shape=(None,), order='C', device='cpu', writable=False)], times: Annotated[NDArray[numpy.uint32], dict(shape=(None,), order='C', device='cpu', writable=False)] | Annotated[NDArray[numpy.uint64], dict(shape=(None,), order='C', device='cpu', writable=False)], items: Annotated[NDArray[numpy.uint32], dict(shape=(None,), order='C', device='cpu', writable=False)], histories: int, name_offsets: Annotated[NDArray[numpy.int64], dict(shape=(None,), order='C', device='cpu', writable=False)], name_bytes: Annotated[NDArray[numpy.uint8], dict(shape=(None,), order='C', device='cpu', writable=False)]) -> None: ...

    def index(self, min_count: int, watch: Watch) -> Index:
        """The index of the items that are in this many histories or more."""

NO_ITEM: int = 4294967295

def read_transactions(path: str) -> dict[str, Any]:
    """The columns of a transaction file, read by the rules of the tool."""

class Splits(enum.Enum):
    RUNS = 0

    ALL = 1

class Options:
    """The settings of a run; 0 is no bound."""

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
    """What a run found, as ranks of its index."""

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
        """By set: whether it is not closed, not maximal."""

    def with_basket_rules(self, splits: Splits, confidence: float, lift: float, conviction: float, watch: Watch) -> Found:
        """The same sets with the rules that need no times."""

    def with_sides(self, all: Index, left: Annotated[NDArray[numpy.uint8], dict(shape=(None,), order='C', device='cpu', writable=False)], right: Annotated[NDArray[numpy.uint8], dict(shape=(None,), order='C', device='cpu', writable=False)], confidence: float, lift: float, conviction: float, watch: Watch) -> Found:
        """The rules with certain items on a side."""

    def write(self, path: str, rules: bool, keep: Annotated[NDArray[numpy.uint8], dict(shape=(None,), order='C', device='cpu', writable=False)] | None) -> None:
        """Writes the rules file or the item-set file of the tool."""

def mine(index: Index, options: Options, watch: Watch) -> Found: ...

def mine_item_sets(index: Index, options: Options, watch: Watch) -> Found: ...

def explain(index: Index, antecedent: Annotated[NDArray[numpy.uint32], dict(shape=(None,), order='C', device='cpu', writable=False)], subsequent: Annotated[NDArray[numpy.uint32], dict(shape=(None,), order='C', device='cpu', writable=False)], window: int) -> dict[str, Any]:
    """How each history with all items counts for a rule."""

def lags(found: Found, places: Annotated[NDArray[numpy.int64], dict(shape=(None,), order='C', device='cpu', writable=False)], window: int, threads: int, watch: Watch) -> dict[str, Any]:
    """The lags and reverse counts of rules."""

def redundant(found: Found, places: Annotated[NDArray[numpy.int64], dict(shape=(None,), order='C', device='cpu', writable=False)], values: Annotated[NDArray[numpy.float64], dict(shape=(None,), order='C', device='cpu', writable=False)], watch: Watch) -> Annotated[NDArray[numpy.uint8], dict(shape=(None,))]:
    """By rule: whether a more general one is at least as good."""

def match(found: Found, places: Annotated[NDArray[numpy.int64], dict(shape=(None,), order='C', device='cpu', writable=False)], histories: Annotated[NDArray[numpy.uint32], dict(shape=(None,), order='C', device='cpu', writable=False)], times: Annotated[NDArray[numpy.uint64], dict(shape=(None,), order='C', device='cpu', writable=False)], ranks: Annotated[NDArray[numpy.uint32], dict(shape=(None,), order='C', device='cpu', writable=False)], now: int, window: int, watch: Watch) -> dict[str, Any]:
    """Which rules are met in which histories at a time."""

def test_order(found: Found, options: Options, permutations: int, seed: int, threads: int, watch: Watch) -> dict[str, Any]:
    """How far the counts stand out from those of permuted times."""

def fisher(n: float, a: Annotated[NDArray[numpy.float64], dict(shape=(None,), order='C', device='cpu', writable=False)], s: Annotated[NDArray[numpy.float64], dict(shape=(None,), order='C', device='cpu', writable=False)], u: Annotated[NDArray[numpy.float64], dict(shape=(None,), order='C', device='cpu', writable=False)]) -> Annotated[NDArray[numpy.float64], dict(shape=(None,))]:
    """Tails of hypergeometric distributions."""
