"""The results of a check."""

from __future__ import annotations

import html
from collections.abc import Iterator
from dataclasses import dataclass, field

_KEPT = 3


@dataclass(frozen=True)
class Finding:
    """A place in a file that is not read as intended.

    Attributes
    ----------
    kind : str
        The kind of the finding, in a word or two.
    line, column : int
        The place, both counted from 1. The column is that of the cell, not of the character.
    text : str
        What happens there.
    """

    kind: str
    line: int
    column: int
    text: str


@dataclass
class Findings:
    """The results of a check, grouped by kind. True if there are any.

    At most three findings of each kind are kept; `counts` has the number of all.

    Attributes
    ----------
    path : str
        The file.
    counts : dict of str to int
        The number of findings of each kind, including those that were not kept.
    """

    path: str
    counts: dict[str, int] = field(default_factory=dict)
    _kept: dict[str, list[Finding]] = field(default_factory=dict)

    def add(self, kind: str, line: int, column: int, text: str) -> None:
        """Count a finding, and keep it if it is among the first three of its kind."""
        self.counts[kind] = self.counts.get(kind, 0) + 1
        kept = self._kept.setdefault(kind, [])
        if len(kept) < _KEPT:
            kept.append(Finding(kind, line, column, text))

    def __iter__(self) -> Iterator[Finding]:
        """Iterate over the findings that were kept."""
        return (finding for kept in self._kept.values() for finding in kept)

    def __bool__(self) -> bool:
        """Return whether anything was found."""
        return bool(self.counts)

    def __len__(self) -> int:
        """Return the number of findings that were kept."""
        return sum(map(len, self._kept.values()))

    def __str__(self) -> str:
        if not self:
            return f"{self.path}: nothing found"
        lines = []
        for kind, kept in self._kept.items():
            lines += [f"{self.path}:{f.line}:{f.column}: {f.text}" for f in kept]
            more = self.counts[kind] - len(kept)
            if more:
                lines.append(f"{self.path}: {kind}: {more:,} more")
        return "\n".join(lines)

    __repr__ = __str__

    def _repr_html_(self) -> str:
        return f"<pre>{html.escape(str(self))}</pre>"
