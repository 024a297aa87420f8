"""Reads the texts of item sets and rules in the tool's files.

Names are not quoted there, so a text with a comma or an arrow in a name is ambiguous. Of all ways
to read a text, the one with the fewest unknown names is chosen.
"""

from __future__ import annotations

from collections.abc import Container, Iterable

Side = tuple[str, ...]

_ARROW = " => "
_LONGEST = 24  # the most pieces between commas that are joined to one name
_UNKNOWN = 1.0  # the cost of an unknown name
_COMMA = 0.01  # the additional cost of each comma in it
_BLANK = 0.6  # its additional cost if it begins or ends with a blank


def split_rule(text: str, known: frozenset[str]) -> tuple[Side, Side] | None:
    """Return the sides of a rule, or None for a text without an arrow."""
    best: tuple[float, tuple[Side, Side]] | None = None
    at = text.find(_ARROW)
    while at >= 0:
        left = _split_side(text[:at], known)
        right = _split_side(text[at + len(_ARROW) :], known)
        cost = left[0] + right[0]
        if best is None or cost < best[0]:
            best = cost, (left[1], right[1])
        if cost == 0:
            break
        at = text.find(_ARROW, at + 1)
    return None if best is None else best[1]


def plain_names(texts: Iterable[str]) -> frozenset[str]:
    """Return the names that are the only item of a side, from texts with exactly one arrow."""
    names: set[str] = set()
    for text in texts:
        sides = text.split(_ARROW)
        if len(sides) == 2:
            names.update(side for side in sides if not side.startswith("{"))
    return frozenset(names)


def is_list(text: str, known: Container[str]) -> bool:
    """Return whether a text is a list of two or more known names between commas."""
    return _split_list(text, known, 2)[0] == 0


def _split_side(text: str, known: Container[str]) -> tuple[float, Side]:
    alone = 0.0 if text in known else _UNKNOWN + _COMMA * text.count(",")
    if len(text) < 2 or text[0] != "{" or text[-1] != "}" or "," not in text:
        return alone + (_UNKNOWN if text.startswith("{") != text.endswith("}") else 0.0), (text,)
    listed = _split_list(text[1:-1], known, 2)
    return listed if listed[0] <= alone or text not in known else (alone, (text,))


def _split_list(text: str, known: Container[str], least: int) -> tuple[float, Side]:
    """Return the cheapest way to split a text at commas into at least one or two names.

    The result is its cost and the names; `least` is 1 or 2.
    """
    pieces = text.split(",")
    if all(piece in known for piece in pieces):
        return 0.0, tuple(pieces)
    # For the first k pieces: the cost of the cheapest way, and where its last name begins.
    costs = [0.0] + [float("inf")] * len(pieces)
    begins = [0] * (len(pieces) + 1)
    for end in range(1, len(pieces) + 1):
        for begin in range(max(0, end - _LONGEST), end):
            if least == 2 and begin == 0 and end == len(pieces):
                continue
            name = ",".join(pieces[begin:end])
            cost = costs[begin] + _cost(name, end - begin - 1, known)
            if cost < costs[end]:
                costs[end], begins[end] = cost, begin
    names = []
    end = len(pieces)
    while end > 0:
        names.append(",".join(pieces[begins[end] : end]))
        end = begins[end]
    return costs[-1], tuple(reversed(names))


def _cost(name: str, commas: int, known: Container[str]) -> float:
    if name in known:
        return 0.0
    return _UNKNOWN + _COMMA * commas + (_BLANK if name != name.strip() or not name else 0.0)
