"""Mine association rules in a cluster of Spark, with the same results as `quarvis.mine`.

>>> from quarvis.spark import mine
>>> mined = mine(frame, entity="customer", time="day", items="product", min_count=100, window="30d")
>>> mined.rules.show()

The package must also be installed on the executors.
"""

from quarvis.mining import Budget
from quarvis.spark.mined import Collected, Mined
from quarvis.spark.mining import mine

__all__ = ["Budget", "Collected", "Mined", "mine"]
