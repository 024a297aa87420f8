"""Mine association rules from histories: what newly follows what, within a window of time.

>>> import quarvis
>>> histories = quarvis.Histories(data, entity="customer", time="day", items="product")
>>> mined = quarvis.mine(histories, min_count=100, window="30d")
>>> mined.rules
"""

from importlib.metadata import version as _version

from quarvis import measures, plots
from quarvis.checking import Finding, Findings, check
from quarvis.errors import BudgetExceeded, DataError, QuarvisError, QuarvisWarning
from quarvis.explanation import Explanation
from quarvis.histories import Histories, from_baskets
from quarvis.mined import Mined
from quarvis.mining import Budget, mine
from quarvis.reading import (
    read,
    read_arrow,
    read_csv,
    read_json,
    read_parquet,
    read_transactions,
)
from quarvis.viewing import View, view

__version__ = _version("quarvis")

__all__ = [
    "Budget",
    "BudgetExceeded",
    "DataError",
    "Explanation",
    "Finding",
    "Findings",
    "Histories",
    "Mined",
    "QuarvisError",
    "QuarvisWarning",
    "View",
    "check",
    "from_baskets",
    "measures",
    "mine",
    "plots",
    "read",
    "read_arrow",
    "read_csv",
    "read_json",
    "read_parquet",
    "read_transactions",
    "view",
]
