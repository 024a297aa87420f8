"""The texts of item sets and rules in the tool's files, read back.

Nothing is quoted there, so a name with a comma or an arrow can be read in several ways. Names that
are known decide; without them, the way with the fewest items that nobody knows is taken.
"""

from __future__ import annotations

from collections.abc import Container, Iterable

Side = tuple[str, ...]

_ARROW = " => "
_LONGEST = 24  # commas that a name is tried with
_UNKNOWN = 1.0
_COMMA = 0.01  # for each comma in a name that nobody knows
_BLANK = 0.6  # for a name that nobody knows and that begins or ends with a blank


def split_rule(text: str, known: frozenset[str]) -> tuple[Side, Side] | None:
    """Give the sides of a rule, or None for a text without an arrow."""
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
    """Give the names that stand alone on a side of rules that can be read in one way only."""
    names: set[str] = set()
    for text in texts:
        sides = text.split(_ARROW)
        if len(sides) == 2:
            names.update(side for side in sides if not side.startswith("{"))
    return frozenset(names)


def is_list(text: str, known: Container[str]) -> bool:
    """Whether a text is two known names or more, with commas between."""
    return _split_list(text, known, 2)[0] == 0


def _split_side(text: str, known: Container[str]) -> tuple[float, Side]:
    alone = 0.0 if text in known else _UNKNOWN + _COMMA * text.count(",")
    if len(text) < 2 or text[0] != "{" or text[-1] != "}" or "," not in text:
        return alone + (_UNKNOWN if text.startswith("{") != text.endswith("}") else 0.0), (text,)
    listed = _split_list(text[1:-1], known, 2)
    return listed if listed[0] <= alone or text not in known else (alone, (text,))


def _split_list(text: str, known: Container[str], least: int) -> tuple[float, Side]:
    """Give the cheapest way to cut a text at commas into at least so many names, one or two."""
    pieces = text.split(",")
    if all(piece in known for piece in pieces):
        return 0.0, tuple(pieces)
    # By the number of pieces: the cost of the cheapest way, and where its last name begins.
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
