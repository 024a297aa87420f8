"""Measures of interest from the literature, computed for all rules at once.

A measure is a function of four numbers of histories: n of all histories, a of those that hold all
antecedents A, s of those that hold all consequents S, and u of those that hold both, at any times.
P(X) is the corresponding number divided by n. Measures whose name begins with ``ordered`` use the
count in order, `count`, instead of u. Division by zero follows IEEE 754: the value is infinite, or
NaN for 0/0.

>>> quarvis.measures.compute(mined, ["leverage", "zhang", "fisher"])
>>> print(quarvis.measures.MEASURES["zhang"])
"""

from __future__ import annotations

from collections.abc import Callable, Sequence
from dataclasses import dataclass
from typing import TYPE_CHECKING, Any

import numpy as np

from quarvis import _engine
from quarvis.errors import DataError

if TYPE_CHECKING:
    from quarvis.mined import Mined

Values = np.ndarray[Any, np.dtype[np.float64]]


@dataclass(frozen=True)
class Counts:
    """Numbers of histories as floating-point numbers; each array has one value per rule."""

    n: float  #: The number of all histories.
    a: Values  #: The histories that hold all antecedents.
    s: Values  #: The histories that hold all consequents.
    u: Values  #: The histories that hold both.
    ordered: Values | None  #: The histories that the rule counts in; None without times.


@dataclass(frozen=True)
class Measure:
    """A measure: its name, formula, range, source in the literature, and function."""

    name: str
    formula: str
    range: str
    source: str
    function: Callable[[Counts], Values]

    @property
    def rests_on(self) -> str:
        """The count of both sides that the measure uses: "union" for u, or "ordered"."""
        return "ordered" if self.name.startswith("ordered") else "union"

    def __str__(self) -> str:
        return (
            f"{self.name} = {self.formula}; {self.range}; rests on the {self.rests_on} count; "
            f"{self.source}"
        )


#: All measures by name.
MEASURES: dict[str, Measure] = {}


def compute(mined: Mined, names: Sequence[str] | str | None = None) -> Any:
    """Compute measures of all rules, in the order of the rules.

    Parameters
    ----------
    mined : Mined
        The rules.
    names : str or sequence of str, optional
        Names in `MEASURES`; by default all, or without times those that need no order.

    Returns
    -------
    frame
        A column for each measure, as a frame of the library of the input.

    Raises
    ------
    DataError
        For an unknown name, or a measure that needs the order of times when there are none.
    """
    import pyarrow as pa

    values = arrays(mined._counts, names)
    places = mined._places
    table = pa.table({name: column[places] for name, column in values.items()})
    return mined._run.histories._frame(table)


def arrays(counts: Counts, names: Sequence[str] | str | None = None) -> dict[str, Values]:
    """Return measures as arrays by name; for the parameters and errors see `compute`."""
    if names is None:
        wanted = [m.name for m in MEASURES.values()
                  if counts.ordered is not None or m.rests_on == "union"]
    else:
        wanted = [names] if isinstance(names, str) else list(names)
    for name in wanted:
        if name not in MEASURES:
            raise DataError(f"there is no measure {name!r}; there are {', '.join(MEASURES)}")
        if counts.ordered is None and MEASURES[name].rests_on == "ordered":
            raise DataError(f"{name} needs the order of times, and these histories have none")
    with np.errstate(all="ignore"):
        return {name: np.asarray(MEASURES[name].function(counts), float) for name in wanted}


def holm(p: Values) -> Values:
    """Return p-values corrected for the family-wise error rate (Holm 1979)."""
    order = np.argsort(p, kind="stable")
    factors = np.arange(len(p), 0, -1)
    corrected = np.minimum(np.maximum.accumulate(p[order] * factors), 1.0)
    result = np.empty(len(p))
    result[order] = corrected
    return result


def benjamini_hochberg(p: Values, tests: int | None = None) -> Values:
    """Return p-values corrected for the false discovery rate (Benjamini, Hochberg 1995).

    `tests` is the number of all tests, by default that of `p`. Tests that are not in `p` count as
    having a p-value of 1.
    """
    total = len(p) if tests is None else tests
    order = np.argsort(p, kind="stable")
    scaled = p[order] * total / np.arange(1, len(p) + 1)
    corrected = np.minimum(np.minimum.accumulate(scaled[::-1])[::-1], 1.0)
    result = np.empty(len(p))
    result[order] = corrected
    return result


def _measure(
    name: str, formula: str, range: str, source: str
) -> Callable[[Callable[[Counts], Values]], Callable[[Counts], Values]]:
    def add(function: Callable[[Counts], Values]) -> Callable[[Counts], Values]:
        MEASURES[name] = Measure(name, formula, range, source, function)
        return function

    return add


def _share(part: Values, of: Values | float) -> Values:
    return np.asarray(part / of, float)


def _entropy_term(p: Values, q: Values) -> Values:
    """Return p log2(p / q), which is 0 where p is 0."""
    return np.where(p == 0, 0.0, p * np.log2(np.where(p == 0, 1.0, p) / q))


@_measure("support", "P(AS)", "0 to 1", "Agrawal, Imielinski, Swami 1993")
def _support(c: Counts) -> Values:
    return _share(c.u, c.n)


@_measure("coverage", "P(A)", "0 to 1", "Geng, Hamilton 2006")
def _coverage(c: Counts) -> Values:
    return _share(c.a, c.n)


@_measure("prevalence", "P(S)", "0 to 1", "Geng, Hamilton 2006")
def _prevalence(c: Counts) -> Values:
    return _share(c.s, c.n)


@_measure("confidence", "P(S|A)", "0 to 1", "Agrawal, Imielinski, Swami 1993")
def _confidence(c: Counts) -> Values:
    return _share(c.u, c.a)


@_measure("reverse_confidence", "P(A|S)", "0 to 1", "Lavrac, Flach, Zupan 1999, as sensitivity")
def _reverse_confidence(c: Counts) -> Values:
    return _share(c.u, c.s)


@_measure("specificity", "P(not S|not A)", "0 to 1", "Lavrac, Flach, Zupan 1999")
def _specificity(c: Counts) -> Values:
    return _share(c.n - c.a - c.s + c.u, c.n - c.a)


@_measure("lift", "P(AS) / (P(A) P(S))", "0 to infinity, 1 if independent",
          "Brin, Motwani, Ullman, Tsur 1997, as interest")
def _lift(c: Counts) -> Values:
    return c.n * c.u / (c.a * c.s)


@_measure("conviction", "P(A) P(not S) / P(A, not S)", "0 to infinity, 1 if independent",
          "Brin, Motwani, Ullman, Tsur 1997")
def _conviction(c: Counts) -> Values:
    return np.where(c.a == c.u, np.inf, c.a * (c.n - c.s) / (c.n * (c.a - c.u)))


@_measure("leverage", "P(AS) - P(A) P(S)", "-0.25 to 0.25", "Piatetsky-Shapiro 1991")
def _leverage(c: Counts) -> Values:
    return (c.u * c.n - c.a * c.s) / c.n**2


@_measure("added_value", "P(S|A) - P(S)", "-1 to 1", "Sahar, Mansour 1999")
def _added_value(c: Counts) -> Values:
    return c.u / c.a - c.s / c.n


@_measure("klosgen", "sqrt(P(AS)) (P(S|A) - P(S))", "-1 to 1", "Kloesgen 1996")
def _klosgen(c: Counts) -> Values:
    return np.sqrt(c.u / c.n) * (c.u / c.a - c.s / c.n)


@_measure("zhang", "(P(AS) - P(A)P(S)) / max(P(AS)(1 - P(A)), P(A)(P(S) - P(AS)))", "-1 to 1",
          "Zhang 2000")
def _zhang(c: Counts) -> Values:
    return (c.u * c.n - c.a * c.s) / np.maximum(c.u * (c.n - c.a), c.a * (c.s - c.u))


@_measure("certainty_factor", "(P(S|A) - P(S)) / (1 - P(S)), or over P(S) where negative",
          "-1 to 1", "Berzal, Blanco, Sanchez, Vila 2002")
def _certainty_factor(c: Counts) -> Values:
    change = c.u / c.a - c.s / c.n
    return np.where(change >= 0, change / (1 - c.s / c.n), change / (c.s / c.n))


@_measure("cosine", "P(AS) / sqrt(P(A) P(S))", "0 to 1", "Tan, Kumar, Srivastava 2004")
def _cosine(c: Counts) -> Values:
    return c.u / np.sqrt(c.a * c.s)


@_measure("jaccard", "P(AS) / P(A or S)", "0 to 1", "Tan, Kumar, Srivastava 2004")
def _jaccard(c: Counts) -> Values:
    return c.u / (c.a + c.s - c.u)


@_measure("kulczynski", "(P(S|A) + P(A|S)) / 2", "0 to 1", "Wu, Chen, Han 2010")
def _kulczynski(c: Counts) -> Values:
    return (c.u / c.a + c.u / c.s) / 2


@_measure("imbalance_ratio", "|P(A) - P(S)| / P(A or S)", "0 to 1", "Wu, Chen, Han 2010")
def _imbalance_ratio(c: Counts) -> Values:
    return np.abs(c.a - c.s) / (c.a + c.s - c.u)


@_measure("all_confidence", "min(P(S|A), P(A|S))", "0 to 1", "Omiecinski 2003")
def _all_confidence(c: Counts) -> Values:
    return c.u / np.maximum(c.a, c.s)


@_measure("max_confidence", "max(P(S|A), P(A|S))", "0 to 1", "Wu, Chen, Han 2010")
def _max_confidence(c: Counts) -> Values:
    return c.u / np.minimum(c.a, c.s)


@_measure("odds_ratio", "P(AS) P(not A, not S) / (P(A, not S) P(not A, S))",
          "0 to infinity, 1 if independent", "Tan, Kumar, Srivastava 2004")
def _odds_ratio(c: Counts) -> Values:
    return c.u * (c.n - c.a - c.s + c.u) / ((c.a - c.u) * (c.s - c.u))


@_measure("yule_q", "(odds ratio - 1) / (odds ratio + 1)", "-1 to 1", "Yule 1900")
def _yule_q(c: Counts) -> Values:
    with_ = c.u * (c.n - c.a - c.s + c.u)
    without = (c.a - c.u) * (c.s - c.u)
    return (with_ - without) / (with_ + without)


@_measure("yule_y", "(sqrt(odds ratio) - 1) / (sqrt(odds ratio) + 1)", "-1 to 1", "Yule 1912")
def _yule_y(c: Counts) -> Values:
    with_ = np.sqrt(c.u * (c.n - c.a - c.s + c.u))
    without = np.sqrt((c.a - c.u) * (c.s - c.u))
    return np.asarray((with_ - without) / (with_ + without))


@_measure("phi", "(P(AS) - P(A)P(S)) / sqrt(P(A)P(not A)P(S)P(not S))", "-1 to 1",
          "Tan, Kumar, Srivastava 2004")
def _phi(c: Counts) -> Values:
    return (c.n * c.u - c.a * c.s) / np.sqrt(c.a * (c.n - c.a) * c.s * (c.n - c.s))


@_measure("kappa", "(P(AS) + P(not A, not S) - E) / (1 - E), E = P(A)P(S) + P(not A)P(not S)",
          "-1 to 1", "Cohen 1960")
def _kappa(c: Counts) -> Values:
    agree = (c.n - c.a - c.s + 2 * c.u) / c.n
    by_chance = (c.a * c.s + (c.n - c.a) * (c.n - c.s)) / c.n**2
    return (agree - by_chance) / (1 - by_chance)


@_measure("chi_square", "n phi^2", "0 to n", "Brin, Motwani, Silverstein 1997")
def _chi_square(c: Counts) -> Values:
    return c.n * _phi(c) ** 2


@_measure("fisher", "P(at least u of both | a, s, n)", "0 to 1, a p-value", "Fisher 1935, one side")
def _fisher(c: Counts) -> Values:
    return _engine.fisher(c.n, c.a, c.s, c.u)


@_measure("fisher_holm", "fisher, corrected by Holm over all rules of the run", "0 to 1",
          "Holm 1979")
def _fisher_holm(c: Counts) -> Values:
    return holm(_fisher(c))


@_measure("fisher_bh", "fisher, corrected by Benjamini and Hochberg over all rules of the run",
          "0 to 1", "Benjamini, Hochberg 1995")
def _fisher_bh(c: Counts) -> Values:
    return benjamini_hochberg(_fisher(c))


@_measure("information_gain", "mutual information of A and S, in bits", "0 to 1",
          "Quinlan 1986; Blanchard, Guillet, Gras, Briand 2005")
def _information_gain(c: Counts) -> Values:
    a, s = c.a / c.n, c.s / c.n
    return np.asarray(
        _entropy_term(c.u / c.n, a * s)
        + _entropy_term((c.a - c.u) / c.n, a * (1 - s))
        + _entropy_term((c.s - c.u) / c.n, (1 - a) * s)
        + _entropy_term((c.n - c.a - c.s + c.u) / c.n, (1 - a) * (1 - s))
    )


@_measure("j_measure", "P(AS) log2(P(S|A)/P(S)) + P(A, not S) log2(P(not S|A)/P(not S))",
          "0 to 1", "Smyth, Goodman 1991")
def _j_measure(c: Counts) -> Values:
    a, s = c.a / c.n, c.s / c.n
    return np.asarray(
        _entropy_term(c.u / c.n, a * s) + _entropy_term((c.a - c.u) / c.n, a * (1 - s))
    )


@_measure("gini", "P(A)(P(S|A)^2 + P(not S|A)^2) + P(not A)(P(S|not A)^2 + P(not S|not A)^2) "
          "- P(S)^2 - P(not S)^2", "0 to 0.5", "Breiman, Friedman, Olshen, Stone 1984")
def _gini(c: Counts) -> Values:
    with_ = (c.u**2 + (c.a - c.u) ** 2) / (c.a * c.n)
    rest = c.n - c.a
    without = np.where(
        rest == 0, 0.0, ((c.s - c.u) ** 2 + (rest - c.s + c.u) ** 2) / (rest * c.n)
    )
    return np.asarray(with_ + without - (c.s**2 + (c.n - c.s) ** 2) / c.n**2)


@_measure("laplace", "(u + 1) / (a + 2)", "0 to 1", "Clark, Boswell 1991")
def _laplace(c: Counts) -> Values:
    return (c.u + 1) / (c.a + 2)


@_measure("sebag", "P(AS) / P(A, not S)", "0 to infinity", "Sebag, Schoenauer 1988")
def _sebag(c: Counts) -> Values:
    return c.u / (c.a - c.u)


@_measure("least_contradiction", "(P(AS) - P(A, not S)) / P(S)", "-infinity to 1",
          "Aze, Kodratoff 2002")
def _least_contradiction(c: Counts) -> Values:
    return (2 * c.u - c.a) / c.s


@_measure("example_rate", "1 - P(A, not S) / P(AS)", "-infinity to 1",
          "Vaillant, Lenca, Lallich 2004")
def _example_rate(c: Counts) -> Values:
    return 1 - (c.a - c.u) / c.u


@_measure("relative_risk", "P(S|A) / P(S|not A)", "0 to infinity, 1 if independent",
          "Ali, Manganaris, Srikant 1997")
def _relative_risk(c: Counts) -> Values:
    return (c.u / c.a) / ((c.s - c.u) / (c.n - c.a))


@_measure("collective_strength",
          "(P(AS) + P(not A, not S)) / E * (1 - E) / (1 - P(AS) - P(not A, not S)), E as for kappa",
          "0 to infinity, 1 if independent", "Aggarwal, Yu 1998")
def _collective_strength(c: Counts) -> Values:
    agree = (c.n - c.a - c.s + 2 * c.u) / c.n
    by_chance = (c.a * c.s + (c.n - c.a) * (c.n - c.s)) / c.n**2
    return agree / by_chance * (1 - by_chance) / (1 - agree)


@_measure("certainty_odds", "P(AS) / P(not A, S)", "0 to infinity", "the odds of A within S")
def _certainty_odds(c: Counts) -> Values:
    return c.u / (c.s - c.u)


@_measure("ordered_support", "count / n", "0 to 1", "the support of the command-line tool")
def _ordered_support(c: Counts) -> Values:
    assert c.ordered is not None
    return _share(c.ordered, c.n)


@_measure("ordered_confidence", "count / a", "0 to 1", "the confidence of the count in order")
def _ordered_confidence(c: Counts) -> Values:
    assert c.ordered is not None
    return _share(c.ordered, c.a)


@_measure("ordered_lift", "n count / (a s)", "0 to infinity", "the lift of the count in order")
def _ordered_lift(c: Counts) -> Values:
    assert c.ordered is not None
    return c.n * c.ordered / (c.a * c.s)


@_measure("ordered_share", "count / u", "0 to 1",
          "of the histories with all items, the share in which the rule counts")
def _ordered_share(c: Counts) -> Values:
    assert c.ordered is not None
    return _share(c.ordered, c.u)
