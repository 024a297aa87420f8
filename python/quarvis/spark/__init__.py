"""Association rules of histories that Spark has: the numbers of `quarvis.mine`, in a cluster.

>>> from quarvis.spark import mine
>>> mined = mine(frame, entity="customer", time="day", items="product", min_count=100, window="30d")
>>> mined.rules.show()

The executors need the package, too.
"""

from quarvis.mining import Budget
from quarvis.spark.mined import Collected, Mined
from quarvis.spark.mining import mine

__all__ = ["Budget", "Collected", "Mined", "mine"]
