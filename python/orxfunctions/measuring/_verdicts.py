"""Whether a measured value conforms to its limits."""
from __future__ import annotations

import math
from collections.abc import Iterable
from typing import Literal, NamedTuple, Optional

from .. import _core
from .._choices import choice

Verdict = Literal["pass", "fail", "undecided", "not measured", "no limits"]
VERDICTS: tuple[Verdict, ...] = ("pass", "fail", "undecided", "not measured", "no limits")
NUMBERS: dict[str, int] = {verdict: number for number, verdict in enumerate(VERDICTS)}


class Judgement(NamedTuple):
    """A verdict, and how sure it is.

    C++: orx::TJudgement
    """

    verdict: Verdict
    conformity: Optional[float]
    """The probability that the true value lies within the limits, given the measured one and nothing else; None where
    nothing is measured."""
    guard: float
    """Width of the guard band within the limits, in the unit of the value."""


def judge(value: Optional[float], deviation: Optional[float], degrees_of_freedom: float, *, lower: float = -math.inf,
          upper: float = math.inf, confidence: float = 0.95) -> Judgement:
    """Whether a measured value lies within its limits, by the decision rule of ISO 14253-1.

    Only what is proven passes or fails: the limits are drawn in by a guard band for a pass and pushed out by it for a fail.
    The band is the one-sided coverage factor (Student's t) times the standard uncertainty, so a wrong verdict has a
    probability of at most ``1 - confidence``, whatever the true value.

    Parameters
    ----------
    value, deviation : float or None
        The measured value and its standard uncertainty, 0 or more, in one unit; None for what is not measured.
    degrees_of_freedom : float
        Those of the deviation, above 0; infinite where it is known. The first three fields of a `MeasuredValue` are these
        arguments: ``judge(*distance(a, b)[:3], upper=5)``.
    lower, upper : float
        Limits that belong to what is allowed, ``lower <= upper``; either may be infinite.
    confidence : float
        0.5 to 0.999999.

    Returns
    -------
    Judgement
        Its verdict is ``"pass"``, ``"fail"``, ``"undecided"`` (too near a limit for the uncertainty), ``"not measured"``
        (for None, never a pass) or ``"no limits"``.

    Raises
    ------
    ValueError
        For numbers that are not finite or out of range, and limits that are none.

    Examples
    --------
    >>> judge(10.0, 0.1, math.inf, lower=9.0, upper=11.0).verdict
    'pass'
    >>> judge(10.9, 0.1, math.inf, lower=9.0, upper=11.0).verdict
    'undecided'
    >>> judge(None, None, math.inf, upper=11.0).verdict
    'not measured'

    C++: orx::judge, orx::TTolerance, orx::TVerdict, orx::verdictText
    """
    if value is None or deviation is None:
        return Judgement("not measured", None, 0.0)
    verdict, conformity, guard = _core.judge(value, deviation, degrees_of_freedom, lower, upper, confidence)
    return Judgement(VERDICTS[verdict], conformity, guard)


def worst_verdict(verdicts: Iterable[Verdict]) -> Verdict:
    """The verdict of the whole from those of its parts.

    A fail beats not measured, which beats undecided, which beats a pass; parts without limits count only where there are no
    others, and no parts at all have no limits.

    C++: orx::worseVerdict
    """
    worst = NUMBERS["no limits"]
    for verdict in verdicts:
        worst = _core.worse_verdict(worst, choice("verdicts", verdict, NUMBERS))
    return VERDICTS[worst]
