"""The definitions by brute force, for a dozen items. Shares no code with the package."""

from itertools import combinations


def histories_of(rows):
    """Return the items by entity and time. A row is (entity, time, item); None is no item."""
    histories = {}
    for entity, time, item in rows:
        items = histories.setdefault(entity, {}).setdefault(time, set())
        if item is not None:
            items.add(item)
    return histories


def holding(histories, items):
    """Return the entities whose history has all of the items, at any times."""
    return {e for e, h in histories.items() if set(items) <= set().union(*h.values())}


def frequent(histories, min_count, max_items=None):
    """Return the count of each frequent set, by its sorted items."""
    items = sorted(set().union(*(i for h in histories.values() for i in h.values())))
    found = {}
    for size in range(1, (max_items or len(items)) + 1):
        level = {
            s: n for s in combinations(items, size)
            if (n := len(holding(histories, s))) >= max(min_count, 1)
        }
        if not level:
            break
        found |= level
    return found


def recent(history, time, window):
    """Return the items that occurred before the time, within the window."""
    return {
        item for when, items in history.items() for item in items
        if when < time and (window is None or time - when <= window)
    }


def counted_at(history, antecedent, consequent, window):
    """Return the first time at which the rule counts, or None."""
    a, s = set(antecedent), set(consequent)
    for time in sorted(history):
        seen = recent(history, time, window)
        there = history[time]
        if s <= there and not a <= there and a <= seen and not s & seen:
            return time
    return None


def completed_at(history, antecedent, time):
    """Return the time before `time` at which the last of the items occurred."""
    return max(max(t for t, i in history.items() if t < time and item in i) for item in antecedent)


def why_not(history, antecedent, consequent, window):
    """Return why a history with all items does not count: the latest test that fails."""
    a, s = set(antecedent), set(consequent)
    best = 0
    for time in sorted(history):
        there = history[time]
        before = recent(history, time, None)
        seen = recent(history, time, window)
        tests = [s <= there, a <= before | there, a <= before, a <= seen, not s & seen,
                 not a <= there]
        best = max(best, [*tests, False].index(False))
    return ["consequents apart", "other order", "same time", "too late", "not new",
            "antecedents present"][best]


def lags(histories, antecedent, consequent, window):
    """Return the lags of the histories that count, ascending."""
    found = []
    for history in histories.values():
        time = counted_at(history, antecedent, consequent, window)
        if time is not None:
            found.append(time - completed_at(history, antecedent, time))
    return sorted(found)


def splits(items, kind):
    """Yield the proposed ways to split sorted items in two."""
    for size in range(1, len(items)):
        for side in combinations(range(len(items)), size):
            if kind == "all" or side[-1] - side[0] == len(side) - 1:
                yield (tuple(items[i] for i in side),
                       tuple(x for i, x in enumerate(items) if i not in side))


def rules(histories, min_count, window, kind="all", max_items=None):
    """Return the count of each rule that reaches the least count, by its sides."""
    found = {}
    for items in frequent(histories, min_count, max_items):
        for antecedent, consequent in splits(items, kind):
            count = sum(
                counted_at(h, antecedent, consequent, window) is not None
                for h in histories.values()
            )
            if count >= max(min_count, 1):
                found[antecedent, consequent] = count
    return found
