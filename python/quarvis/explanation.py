"""Explains in which histories a rule counts, and why not in the others."""

from __future__ import annotations

from collections.abc import Mapping, Sequence
from dataclasses import dataclass
from typing import TYPE_CHECKING, Any

import numpy as np
import pyarrow as pa
import pyarrow.compute

from quarvis import _engine
from quarvis._columns import names_of
from quarvis.errors import DataError

if TYPE_CHECKING:
    from quarvis.mined import Run

#: The reasons why a history with all items does not count, by the engine's number.
REASONS = (
    "consequents apart",
    "other order",
    "same time",
    "too late",
    "not new",
    "antecedents present",
)


@dataclass(frozen=True)
class Explanation:
    """For each history with all items of a rule: whether the rule counts there, and why not.

    Attributes
    ----------
    antecedents, consequents : list of str
        The rule.
    count, reverse_count : int
        The number of histories in which the rule counts, and in which the reverse rule
        "consequents => antecedents" counts.
    histories : frame
        A row for each history with all items of the rule. `entity` names it, and `counts` tells
        whether the rule counts there. If it does, `consequent_time` is the time of the first
        transaction that counts, `antecedent_time` the time at which the last antecedent had
        occurred, and `lag` the time between the two. If it does not, `reason` is one of:

        - "consequents apart": no transaction has all consequents;
        - "other order": some antecedent occurs only after the consequents;
        - "same time": some antecedent occurs only together with the consequents, not before;
        - "too late": all antecedents occurred before, but not within the window;
        - "not new": a consequent had already occurred within the window;
        - "antecedents present": the transaction also has all antecedents.

        A transaction is tested in this order, and the reason is the first test that it fails. Of
        all transactions, the one that passes the most tests decides.
    reasons : dict of str to int
        The number of histories for each reason.
    """

    antecedents: list[str]
    consequents: list[str]
    count: int
    reverse_count: int
    histories: Any
    reasons: dict[str, int]

    def __repr__(self) -> str:
        rule = f"{_side(self.antecedents)} => {_side(self.consequents)}"
        lines = [f"{rule}: counts in {self.count:,}, the reverse rule in {self.reverse_count:,}"]
        lines += [f"{count:>8,}  {reason}" for reason, count in self.reasons.items() if count]
        return "\n".join(lines)


def _side(items: list[str]) -> str:
    return items[0] if len(items) == 1 else "{" + ",".join(items) + "}"


def sides_of(rule: Any) -> tuple[list[str], list[str]]:
    """Return both sides of a rule, given as a pair of item lists or as a row of a frame."""
    if isinstance(rule, Mapping) or hasattr(rule, "keys"):
        sides = (rule["antecedents"], rule["consequents"])
    elif hasattr(rule, "antecedents"):
        sides = (rule.antecedents, rule.consequents)
    elif isinstance(rule, Sequence) and len(rule) == 2:
        sides = (rule[0], rule[1])
    else:
        raise DataError(
            f"{rule!r} is not a rule: give a pair of item lists, or a row of a frame of rules"
        )
    left, right = ([side] if isinstance(side, str) else [str(item) for item in side]
                   for side in sides)
    if not left or not right:
        raise DataError("a rule has items on both sides")
    if len({*left, *right}) < len(left) + len(right):
        raise DataError("an item comes twice in the rule")
    return left, right


def ranks_of(index: _engine.Index, sides: tuple[list[str], list[str]]) -> list[Any] | None:
    """Return the ranks of both sides in the index, or None when the index lacks an item."""
    names = names_of(*index.names())
    found = []
    for side in sides:
        places = pa.compute.index_in(pa.array(side, names.type), names)
        if places.null_count:
            return None
        found.append(places.to_numpy().astype(np.uint32))
    return found


def explain(run: Run, index: _engine.Index, rule: Any) -> Explanation:
    """Explain a rule, whether it was found or not."""
    if not run.has_times:
        raise DataError("these histories have no times, so nothing follows anything")
    sides = sides_of(rule)
    ranks = ranks_of(index, sides)
    if ranks is None:
        # Some item is not frequent; the index with a least count of 1 has every item.
        index = run.histories._rows.index(1, _engine.Watch())
        ranks = ranks_of(index, sides)
    if ranks is None:
        known = set(names_of(*index.names()).to_pylist())
        unknown = next(item for side in sides for item in side if item not in known)
        raise DataError(f"no history has the item {unknown!r}")
    columns = _engine.explain(index, ranks[0], ranks[1], run.options.window)
    counts = columns["counts"].astype(bool)
    scale = run.histories._columns.scale
    entities = run.histories._columns.entities.values
    reasons = pa.array(REASONS)
    table = pa.table({
        "entity": entities.take(pa.array(columns["history"])),
        "counts": counts,
        "antecedent_time": scale.decode(columns["complete"], ~counts),
        "consequent_time": scale.decode(columns["time"], ~counts),
        "lag": scale.decode_lengths(columns["time"] - columns["complete"], ~counts),
        "reason": reasons.take(pa.array(columns["miss"].astype(np.int8), mask=counts)),
    })
    numbers = np.bincount(columns["miss"][~counts], minlength=len(REASONS))
    return Explanation(
        *sides, columns["count"], columns["reverse_count"], run.histories._frame(table),
        dict(zip(REASONS, map(int, numbers), strict=True)),
    )
