"""Measures: values computed by hand, comparison with another package, and ranges."""

import itertools
import math

import numpy as np
import pandas as pd
import pytest
import scipy.stats
from mlxtend.frequent_patterns import association_rules, fpgrowth

import quarvis
from quarvis.measures import MEASURES, Counts, arrays, benjamini_hochberg, holm


def counts(n, a, s, u, ordered=None):
    each = [np.array([value], float) for value in (a, s, u, u if ordered is None else ordered)]
    return Counts(float(n), *each)


# Of 20 histories 10 hold A, 8 hold S and 6 hold both; the rule counts in 3 of these. So 4 hold only
# A, 2 only S, and 8 neither.
BY_HAND = {
    "support": 6 / 20,
    "coverage": 10 / 20,
    "prevalence": 8 / 20,
    "confidence": 0.6,
    "reverse_confidence": 0.75,
    "specificity": 8 / 10,
    "lift": 0.3 / (0.5 * 0.4),
    "conviction": 0.5 * 0.6 / 0.2,
    "leverage": 0.3 - 0.5 * 0.4,
    "added_value": 0.2,
    "klosgen": math.sqrt(0.3) * 0.2,
    "zhang": 0.1 / max(0.3 * 0.5, 0.5 * 0.1),
    "certainty_factor": 0.2 / 0.6,
    "cosine": 6 / math.sqrt(80),
    "jaccard": 6 / 12,
    "kulczynski": (0.6 + 0.75) / 2,
    "imbalance_ratio": 2 / 12,
    "all_confidence": 0.6,
    "max_confidence": 0.75,
    "odds_ratio": 6 * 8 / (4 * 2),
    "yule_q": (6 - 1) / (6 + 1),
    "yule_y": (math.sqrt(6) - 1) / (math.sqrt(6) + 1),
    "phi": 0.1 / math.sqrt(0.5 * 0.5 * 0.4 * 0.6),
    "kappa": (0.7 - 0.5) / (1 - 0.5),
    "chi_square": 20 * 0.01 / 0.06,
    "fisher": sum(math.comb(8, k) * math.comb(12, 10 - k) for k in (6, 7, 8)) / math.comb(20, 10),
    "information_gain": (
        0.3 * math.log2(0.3 / 0.2) + 0.2 * math.log2(0.2 / 0.3)
        + 0.1 * math.log2(0.1 / 0.2) + 0.4 * math.log2(0.4 / 0.3)
    ),
    "j_measure": 0.3 * math.log2(0.6 / 0.4) + 0.2 * math.log2(0.4 / 0.6),
    "gini": 0.5 * (0.36 + 0.16) + 0.5 * (0.04 + 0.64) - 0.16 - 0.36,
    "laplace": 7 / 12,
    "sebag": 6 / 4,
    "least_contradiction": (6 - 4) / 8,
    "example_rate": 1 - 4 / 6,
    "relative_risk": 0.6 / 0.2,
    "collective_strength": 0.7 / 0.5 * 0.5 / 0.3,
    "certainty_odds": 3.0,
    "ordered_support": 3 / 20,
    "ordered_confidence": 3 / 10,
    "ordered_lift": 20 * 3 / 80,
    "ordered_share": 3 / 6,
}
BY_HAND["fisher_holm"] = BY_HAND["fisher_bh"] = BY_HAND["fisher"]  # a family of one


def test_every_measure_is_worked_out_by_hand():
    assert set(BY_HAND) == set(MEASURES)
    assert len(MEASURES) >= 25


@pytest.mark.parametrize("name", MEASURES)
def test_by_hand(name):
    assert arrays(counts(20, 10, 8, 6, 3), name)[name][0] == pytest.approx(BY_HAND[name], rel=1e-12)


# Independence, complete dependence and exclusion: 4, 8 and 0 histories hold both; 10 hold A, 8 S.
EXTREMES = {
    "lift": (1, 2, 0), "leverage": (0, 0.25, -0.25), "zhang": (0, 1, -1), "phi": (0, 1, -1),
    "yule_q": (0, 1, -1), "odds_ratio": (1, math.inf, 0), "chi_square": (0, 20, 20),
    "certainty_factor": (0, 1, -1), "kappa": (0, 1, -1), "information_gain": (0, 1, 1),
    "conviction": (1, math.inf, 0.5), "jaccard": (1 / 3, 1, 0), "added_value": (0, 0.5, -0.5),
}


@pytest.mark.parametrize("name", EXTREMES)
def test_extremes(name):
    values = [arrays(counts(20, 10, 10, u), name)[name][0] for u in (5, 10, 0)]
    assert values == pytest.approx(EXTREMES[name], abs=1e-12)


def test_fisher_against_scipy():
    cases = [
        (n, a, s, u) for n in (1, 7, 40) for a in range(1, n + 1, 3) for s in range(1, n + 1, 4)
        for u in range(max(0, a + s - n), min(a, s) + 1)
    ]
    cases += [(10**6, 3000, 500, 40), (10**6, 9 * 10**5, 5 * 10**5, 445_000), (10**6, 10, 10, 10)]
    for n, a, s, u in cases:
        expected = scipy.stats.hypergeom.sf(u - 1, n, s, a)
        found = arrays(counts(n, a, s, u), "fisher")["fisher"][0]
        assert found == pytest.approx(expected, rel=1e-7), (n, a, s, u)


def test_corrections():
    p = np.array([0.01, 0.04, 0.03, 0.005])
    assert holm(p) == pytest.approx([0.03, 0.06, 0.06, 0.02])
    assert benjamini_hochberg(p) == pytest.approx(scipy.stats.false_discovery_control(p))
    assert benjamini_hochberg(p, 400) == pytest.approx(
        scipy.stats.false_discovery_control(np.append(p, np.ones(396)))[:4]
    )


def test_against_mlxtend():
    draws = np.random.default_rng(5)
    frame = pd.DataFrame(draws.random((300, 8)) < 0.4, columns=list("abcdefgh"))
    frame["b"] |= frame["a"]
    peer = association_rules(
        fpgrowth(frame, 0.05, use_colnames=True), metric="support", min_threshold=0
    )
    ours = quarvis.mine(frame, items=list(frame.columns), min_support=0.05).measures()
    names = {
        "support": "support", "confidence": "confidence", "lift": "lift", "leverage": "leverage",
        "conviction": "conviction", "zhangs_metric": "zhang", "jaccard": "jaccard",
        "certainty": "certainty_factor", "kulczynski": "kulczynski",
    }

    def by_rule(table):
        return {
            (frozenset(r["antecedents"]), frozenset(r["consequents"])): r
            for r in table.to_dict("records")
        }

    theirs, found = by_rule(peer), by_rule(ours)
    assert set(theirs) == set(found)
    assert len(found) > 100
    for rule, (theirs_name, name) in itertools.product(found, names.items()):
        if name == "certainty_factor" and found[rule]["lift"] < 1:
            continue  # the other package always divides by 1 - P(S)
        assert found[rule][name] == pytest.approx(theirs[rule][theirs_name], abs=1e-9), (rule, name)


def test_description():
    assert str(MEASURES["ordered_share"]) == (
        "ordered_share = count / u; 0 to 1; rests on the ordered count; of the histories with all "
        "items, the share in which the rule counts"
    )
    for measure in MEASURES.values():
        assert measure.formula
        assert measure.range
        assert measure.source


def test_unknown_measure(shop):
    mined = quarvis.mine(shop, min_count=2)
    with pytest.raises(quarvis.DataError, match="there is no measure 'lif'; there are support, "):
        mined.measures("lif")
