"""The errors and the warning of the package."""


class QuarvisError(Exception):
    """The base class of the errors that this package defines."""


class DataError(QuarvisError, ValueError):
    """Data or an argument that cannot be used as it is; the message says how to fix it."""


class BudgetExceeded(QuarvisError, RuntimeError):
    """A run that exceeded its budget.

    Attributes
    ----------
    item_sets : tuple of int
        The number of item sets found of each size, starting with one item. From two items on there
        may be more than were found. Empty when the search had not begun.
    min_count : int or None
        A minimum count to try next: the smallest one that at most half of these sets reach. None
        when no set was found.
    """

    def __init__(self, message: str, item_sets: tuple[int, ...], min_count: int | None) -> None:
        super().__init__(message, item_sets, min_count)
        self.item_sets = item_sets
        self.min_count = min_count

    def __str__(self) -> str:
        return str(self.args[0])


class QuarvisWarning(UserWarning):
    """Data that may not be what was intended."""
