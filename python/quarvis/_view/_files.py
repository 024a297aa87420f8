"""Reads the tool's rules file and item-set file."""

from __future__ import annotations

import os
import re
from collections.abc import Iterator
from dataclasses import dataclass
from pathlib import Path

import numpy as np

from quarvis._view._counts import Written, recover
from quarvis._view._rules import PageRules, RulesBuilder
from quarvis._view._texts import Side, is_list, plain_names, split_rule
from quarvis.errors import DataError

_HEADER = (
    "Rule\tCount\tA union S\tSupport\tConfidence\tLift\tConviction\tProbability\tCertainty"
)
_SET_HEADER = "Count\tItem Set"
_NUMBERS = re.compile(r"\d+\t\d+(\t-?(\d+(\.\d*)?(e[+-]?\d+)?|inf|nan)){6}")


@dataclass(frozen=True)
class ItemSets:
    """The data that the page needs from an item-set file."""

    single: dict[str, int]  #: The count of each item.
    size: int  #: The number of sets.



def read_rules(path: str | os.PathLike[str], item_sets: ItemSets | None = None) -> PageRules:
    """Read a rules file of the tool.

    The numbers of histories are recovered from the measures, which have six digits.

    Parameters
    ----------
    path : path
        The rules file.
    item_sets : ItemSets, optional
        The result of `read_item_sets`. It makes names with commas unambiguous.

    Raises
    ------
    DataError
        When the file is not a rules file. The message names the line.
    """
    name = os.fspath(path)
    rows = list(_rows(name))
    known = frozenset(item_sets.single if item_sets else ())
    known |= plain_names(text for _, text, _ in rows)
    sides = [_sides(name, line, text, known) for line, text, _ in rows]
    numbers = np.array([cells for _, _, cells in rows], np.float64).reshape(len(rows), 8)
    return _build(name, [line for line, _, _ in rows], sides, numbers, item_sets)


def read_item_sets(path: str | os.PathLike[str]) -> ItemSets:
    """Read an item-set file of the tool.

    Every item of a set is also in the file as a set of its own, whose text is shorter. So texts are
    read from the shortest on: one that is not a list of known names is itself a name with commas.
    """
    name = os.fspath(path)
    lines = _text(name).split("\n")
    if lines[0] != _SET_HEADER:
        raise DataError(f"{name} is not an item-set file of the tool: its first line is not "
                        f"{_SET_HEADER!r}")
    single: dict[str, int] = {}
    others: list[tuple[str, int]] = []
    size = 0
    for number, line, text, count in _set_rows(lines):
        if text is None:
            raise DataError(f"{name}: line {number} is not a count and a set: {line!r}")
        size += 1
        if "," in text:
            others.append((text, count))
        else:
            single[text] = count
    unexplained = [row for row in others if not all(map(single.__contains__, row[0].split(",")))]
    for text, count in sorted(unexplained, key=lambda row: len(row[0])):
        if not is_list(text, single):
            single[text] = count
    return ItemSets(single, size)


def _set_rows(lines: list[str]) -> Iterator[tuple[int, str, str | None, int]]:
    """Yield line number, line, the text between the braces, and the count.

    The text is None for a line that is not a count and a set.
    """
    waiting = ""
    begin = 2
    for number, line in enumerate(lines[1:], 2):
        whole = waiting + line
        count, _, text = whole.partition("\t")
        if count.isdecimal() and text.startswith("{") and text.endswith("}"):
            yield begin, whole, text[1:-1], int(count)
            waiting, begin = "", number + 1
        elif whole:
            waiting = whole + "\n"
        else:
            begin = number + 1
    if waiting.strip("\n"):
        yield begin, waiting.split("\n")[0], None, 0


def _text(name: str) -> str:
    # Names need not be UTF-8. Other bytes become visible escapes, so that names stay distinct.
    return Path(name).read_bytes().decode(errors="backslashreplace")


def _rows(name: str) -> Iterator[tuple[int, str, list[float]]]:
    """Yield line number, rule and numbers; the rule may contain tabs and line ends."""
    lines = _text(name).split("\n")
    if lines[0] != _HEADER:
        raise DataError(
            f"{name} is not a rules file of the tool: its first line is not {_HEADER!r}"
        )
    waiting = ""
    begin = 0
    for number, line in enumerate(lines[1:], 2):
        if not waiting:
            begin = number
        cells = (waiting + line).rsplit("\t", 8)
        if len(cells) == 9 and _NUMBERS.fullmatch("\t".join(cells[1:])):
            yield begin, cells[0], [float(cell) for cell in cells[1:]]
            waiting = ""
        elif waiting or line:
            waiting += line + "\n"
    if waiting.strip("\n"):
        raise DataError(
            f"{name}: line {begin} is not a rule and eight numbers, separated by tabs"
        )


def _sides(name: str, line: int, text: str, known: frozenset[str]) -> tuple[Side, Side]:
    sides = split_rule(text, known)
    if sides is None:
        raise DataError(f"{name}: line {line} has no ' => ' between the sides of its rule")
    return sides


def _build(
    name: str, lines: list[int], sides: list[tuple[Side, Side]],
    numbers: np.ndarray[tuple[int, int], np.dtype[np.float64]], item_sets: ItemSets | None,
) -> PageRules:
    builder = RulesBuilder()
    antecedent = np.array([builder.side(side) for side, _ in sides], np.int64)
    consequent = np.array([builder.side(side) for _, side in sides], np.int64)
    written = Written(antecedent, consequent, *numbers.T)
    single = {} if item_sets is None else item_sets.single
    known = {
        place: single[side[0]]
        for place, side in enumerate(builder.sides)
        if len(side) == 1 and side[0] in single
    }
    counts = recover(written, len(builder.sides), known)
    if counts.wrong is not None:
        raise DataError(
            f"{name}: the measures in line {lines[counts.wrong]} do not fit together; were numbers "
            "changed, or rules of several runs combined?"
        )
    return builder.build(
        total=counts.total,
        approximate=counts.approximate,
        set_counts=counts.sets,
        antecedent=antecedent,
        consequent=consequent,
        union_count=numbers[:, 1].astype(np.uint32),
        count=numbers[:, 0].astype(np.uint32),
        item_counts=single,
        item_sets=None if item_sets is None else item_sets.size,
    )
