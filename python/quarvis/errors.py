"""What the package raises and warns of."""


class QuarvisError(Exception):
    """The base of the errors that this package raises by itself."""


class DataError(QuarvisError, ValueError):
    """Data or an argument that cannot be mined as it is; the message tells the remedy."""


class BudgetExceeded(QuarvisError, RuntimeError):
    """A run that came to the end of its budget.

    Attributes
    ----------
    item_sets : tuple of int
        How far the run came: the number of item sets that were found of each size, from one item
        on. From two items on there may be more. Empty when the search had not begun.
    min_count : int or None
        A least count to try next: the least one that at most half of these sets have. None when
        there are none.
    """

    def __init__(self, message: str, item_sets: tuple[int, ...], min_count: int | None) -> None:
        super().__init__(message, item_sets, min_count)
        self.item_sets = item_sets
        self.min_count = min_count

    def __str__(self) -> str:
        return str(self.args[0])


class QuarvisWarning(UserWarning):
    """Data that look other than meant."""
