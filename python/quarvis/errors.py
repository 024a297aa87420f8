"""What the package raises and warns of."""


class QuarvisError(Exception):
    """The base of the errors that this package raises by itself."""


class DataError(QuarvisError, ValueError):
    """Data or an argument that cannot be mined as it is; the message tells the remedy."""


class BudgetExceeded(QuarvisError, RuntimeError):
    """A run that reached a bound of its budget.

    Attributes
    ----------
    size : int
        The greatest number of items of which all item sets were found.
    item_sets : int
        The item sets found up to there.
    min_count : int or None
        A least count with which the search for item sets was seen to end, or None.
    """

    def __init__(self, message: str, size: int, item_sets: int, min_count: int | None) -> None:
        super().__init__(message)
        self.size = size
        self.item_sets = item_sets
        self.min_count = min_count


class QuarvisWarning(UserWarning):
    """Data that look other than meant."""
