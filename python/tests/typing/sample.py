"""Calls with the types that type checkers must infer."""

from typing import Any, assert_type

import quarvis
from quarvis.measures import Measure


def everything(frame: Any) -> None:
    histories = quarvis.Histories(frame, entity="who", time="when", items=["a", "b"])
    assert_type(histories, quarvis.Histories)
    assert_type(len(histories), int)
    assert_type(histories.report().dropped, dict[str, int])
    assert_type(quarvis.read_csv("a.csv", entity=None, time=None, items="a"), quarvis.Histories)
    mined = quarvis.mine(
        histories, min_count=3, window="30d", splits="runs", consequents="tea",
        progress=lambda step, done, total: None, budget=quarvis.Budget(seconds=1.5),
    )
    assert_type(mined, quarvis.Mined)
    assert_type(mined.filter(min_lift=2.0, antecedents="tea").top(3), quarvis.Mined)
    explanation = mined.explain((["tea"], ["milk"]))
    assert_type(explanation, quarvis.Explanation)
    assert_type(explanation.reasons, dict[str, int])
    assert_type(mined.summary(), str)
    mined.write_tsv("rules.tsv", None)
    assert_type(quarvis.measures.MEASURES["zhang"], Measure)
    for finding in quarvis.check("a.tsv"):
        assert_type(finding, quarvis.Finding)
        assert_type(finding.line, int)


def mistakes(histories: quarvis.Histories) -> None:
    quarvis.mine(histories, min_count="3")  # type: ignore[arg-type]
    quarvis.mine(histories, splits="some")  # type: ignore[arg-type]
    quarvis.Histories(histories, entity="who", time="when")  # type: ignore[call-arg]
