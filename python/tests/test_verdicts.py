"""Verdicts, and the statistics of runs and gauges."""
from __future__ import annotations

import math
import pickle
from typing import Any

import numpy as np
import pytest

from orxfunctions.measuring import GaugeStudy, RunStatistics, judge, worst_verdict


def test_only_what_is_proven_passes_or_fails() -> None:
    # The one-sided factor of a normal distribution at 0.95 is 1.644854.
    known = judge(9.8, 0.1, math.inf, lower=9.0, upper=10.0)
    assert known.verdict == "pass" and known.guard == pytest.approx(0.1644854, abs=1e-6)
    assert known.conformity == pytest.approx(0.9772499, abs=1e-6)  # two deviations below the limit
    assert judge(9.9, 0.1, math.inf, upper=10.0).verdict == "undecided"
    assert judge(10.1, 0.1, math.inf, upper=10.0).verdict == "undecided"
    assert judge(10.2, 0.1, math.inf, upper=10.0).verdict == "fail"
    # With four degrees of freedom the factor is 2.131847.
    assert judge(9.8, 0.1, 4, upper=10.0).verdict == "undecided"
    assert judge(9.8, 0.1, 4, upper=10.0).guard == pytest.approx(0.2131847, abs=1e-6)
    assert judge(9.8, 0.1, 4, upper=10.0, confidence=0.9).verdict == "pass"
    assert judge(9.8, 0.1, 4).verdict == "no limits"


def test_what_is_not_measured_never_passes() -> None:
    assert judge(None, 0.1, math.inf, upper=10.0) == ("not measured", None, 0.0)
    assert judge(1.0, None, math.inf, upper=10.0).verdict == "not measured"


@pytest.mark.parametrize(("arguments", "limits", "told"), [
    ((math.nan, 0.1, 9), {}, "nan"),
    ((1.0, math.inf, 9), {}, "inf"),
    ((1.0, -0.1, 9), {}, "deviation of -0.1"),
    ((1.0, 0.1, 0), {}, "of 0 degrees of freedom"),
    ((1.0, 0.1, 9), {"lower": 2.0, "upper": 1.0}, "limits of 2 to 1"),
    ((1.0, 0.1, 9), {"upper": 1.0, "confidence": 0.4}, "confidence"),
])
def test_numbers_that_are_none_are_refused(arguments: tuple[float, float, float], limits: dict[str, float],
                                              told: str) -> None:
    with pytest.raises(ValueError, match=told):
        judge(*arguments, **limits)


def test_the_worst_verdict_is_that_of_the_whole() -> None:
    assert worst_verdict([]) == "no limits" and worst_verdict(["no limits", "pass"]) == "pass"
    assert worst_verdict(["pass", "undecided"]) == "undecided"
    assert worst_verdict(["not measured", "undecided", "pass"]) == "not measured"
    assert worst_verdict(judge(value, 0.1, 9, upper=5.0).verdict for value in (1.0, 7.0, 5.0)) == "fail"
    with pytest.raises(ValueError, match="verdicts: expected one of 'pass', 'fail'"):
        worst_verdict(["passed"])  # type: ignore[list-item]


def test_indices_of_a_run_follow_from_its_spread() -> None:
    run = RunStatistics(lower=0.0, upper=10.0)
    run.extend(np.array([4.0, 5.0, 6.0, 7.0, np.nan]), ["pass", "pass", "pass", "undecided", "pass"])
    run.add(None, "pass")
    told = run.summary()
    assert (told.parts, told.measured, told.mean, told.least, told.largest, told.range) == (6, 4, 5.5, 4.0, 7.0, 3.0)
    deviation = math.sqrt(5.0 / 3.0)
    assert told.deviation == pytest.approx(deviation) and told.cp == pytest.approx(10.0 / (6.0 * deviation))
    assert told.cpk == pytest.approx(4.5 / (3.0 * deviation))
    assert told.verdicts == {"pass": 3, "fail": 0, "undecided": 1, "not measured": 2, "no limits": 0}
    histogram, chart = run.histogram(), run.chart()
    assert sum(histogram.counts) == 4 and histogram.start <= 4.0 and (histogram.below, histogram.above) == (0, 0)
    assert [point.mean for point in chart] == [4.0, 5.0, 6.0, 7.0] and [point.first for point in chart] == [0, 1, 2, 3]
    assert pickle.loads(pickle.dumps(told)) == told
    assert "cpk" in run._repr_html_() and repr(run) == "RunStatistics(6 parts, 4 measured)"


def test_what_a_run_can_not_tell_is_none() -> None:
    run = RunStatistics()
    assert run.summary()[3:] == (None,) * 7 and run.chart() == [] and run.histogram().width == 0
    run.extend([3.0, 3.0], "no limits")
    assert run.summary().deviation == 0.0 and run.summary().cp is None
    same = RunStatistics(upper=2.0)
    same.extend([3, 3], "fail")
    assert same.summary().cpk == -math.inf and same.summary().cp is None


def test_runs_refuse_what_does_not_belong_to_them() -> None:
    with pytest.raises(ValueError, match="lower, upper: expected lower <= upper, got 2.0 and 1.0"):
        RunStatistics(lower=2.0, upper=1.0)
    run = RunStatistics()
    with pytest.raises(ValueError, match="one for each of 3 values, got 2"):
        run.extend([1.0, 2.0, 3.0], ["pass", "pass"])
    with pytest.raises(TypeError, match="values: expected numbers"):
        run.extend("123", "pass")  # type: ignore[arg-type]
    with pytest.raises(ValueError, match="verdict: expected one of"):
        run.add(1.0, "good")  # type: ignore[arg-type]
    assert run.summary().parts == 0
    for study in (run, GaugeStudy()):
        with pytest.raises(TypeError, match="not pickled"):
            pickle.dumps(study)


def test_repeatability_is_pooled_over_the_parts() -> None:
    study = GaugeStudy(lower=-3.0, upper=3.0)
    for part, value in [(0, 1.0), (0, 3.0), (2, 5.0), (2, 5.0), (2, 8.0)]:
        study.add(part, value)
    told = study.result()
    # Squares about the means: 2 of the first part, 6 of the third; 3 degrees of freedom.
    assert (told.parts, told.values, told.degrees_of_freedom) == (2, 5, 3.0)
    assert told.repeatability == pytest.approx(math.sqrt(8.0 / 3.0))
    assert told.tolerance_share == pytest.approx(100.0 * math.sqrt(8.0 / 3.0))
    first, second, third = study.parts()
    assert second is None and first is not None
    assert (first.values, first.mean, first.least, first.largest) == (2, 2.0, 1.0, 3.0)
    assert third is not None and third.deviation == pytest.approx(math.sqrt(3.0))
    assert repr(study) == "GaugeStudy(2 parts, 5 values)"


def test_gauge_studies_refuse_what_is_no_part_or_value() -> None:
    study = GaugeStudy()
    arguments: list[tuple[Any, Any, Any, str]] = [(-1, 1.0, ValueError, "part -1; 0 to 99999"),
                                                  (100000, 1.0, ValueError, "100000"), (0, math.nan, ValueError, "nan"),
                                                  (0.5, 1.0, TypeError, ""), (0, "1", TypeError, "")]
    for part, value, kind, text in arguments:
        with pytest.raises(kind, match=text):
            study.add(part, value)
    assert study.result()[:4] == (0, 0, 0.0, None) and study.parts() == []
