"""What a check finds."""

from __future__ import annotations

import html
from collections.abc import Iterator
from dataclasses import dataclass, field

_KEPT = 3


@dataclass(frozen=True)
class Finding:
    """Something that reads otherwise than meant.

    Attributes
    ----------
    kind : str
        A word or two for all findings of the kind.
    line, column : int
        Where it stands, both from 1 on; in a check by column the line is 1.
    text : str
        What happens there.
    """

    kind: str
    line: int
    column: int
    text: str


@dataclass
class Findings:
    """What a check found, in the order of the kinds.

    Attributes
    ----------
    path : str
        The file.
    counts : dict of str to int
        By kind: how many there are.
    """

    path: str
    counts: dict[str, int] = field(default_factory=dict)
    _kept: dict[str, list[Finding]] = field(default_factory=dict)

    def add(self, kind: str, line: int, column: int, text: str) -> None:
        """Add a finding; the first three of a kind are kept."""
        self.counts[kind] = self.counts.get(kind, 0) + 1
        kept = self._kept.setdefault(kind, [])
        if len(kept) < _KEPT:
            kept.append(Finding(kind, line, column, text))

    def __iter__(self) -> Iterator[Finding]:
        """The findings that were kept."""
        return (finding for kept in self._kept.values() for finding in kept)

    def __bool__(self) -> bool:
        """Whether there is any."""
        return bool(self.counts)

    def __len__(self) -> int:
        """The number of findings that were kept."""
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
