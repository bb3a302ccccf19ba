"""Statistics of one value over a run of parts, and of a gauge that measures the same parts several times."""
from __future__ import annotations

import math
from collections.abc import Iterable, Sequence
from typing import Any, NamedTuple, NoReturn, Optional, Union

from numpy.typing import NDArray

from .. import _core
from .._choices import choice
from ._verdicts import NUMBERS, VERDICTS, Verdict

Numbers = Union[Sequence[float], NDArray[Any]]


class RunSummary(NamedTuple):
    """How a value spreads over a run of parts, and how that fits its limits.

    Indices after ISO 22514-2, for a value that is distributed normally, with the limits L and U and the standard deviation s
    of the whole run: ``cp = (U - L) / (6 s)``, ``cpk = min((U - mean) / (3 s), (mean - L) / (3 s))``. Of a process that is
    not proven to be stable the standard calls them performance indices, Pp and Ppk.
    """

    parts: int
    """All that were added."""
    measured: int
    """Those with a value."""
    verdicts: dict[Verdict, int]
    """How many parts have each."""
    mean: Optional[float]
    deviation: Optional[float]
    """Of a sample (n - 1): None with fewer than two values, like the indices."""
    least: Optional[float]
    largest: Optional[float]
    range: Optional[float]
    cp: Optional[float]
    """None unless there are both limits; infinite where all values are the same."""
    cpk: Optional[float]
    """None without limits; minus infinity for equal values beyond one."""

    def _repr_html_(self) -> str:
        rows: list[tuple[str, object]] = [("parts", self.parts), ("measured", self.measured), *self.verdicts.items()]
        rows += [(name, "" if value is None else f"{value:.6g}") for name, value in zip(self._fields[3:], self[3:])]
        return "<table>" + "".join(f"<tr><th>{name}</th><td>{value}</td></tr>" for name, value in rows) + "</table>"


class RunHistogram(NamedTuple):
    """Counts of values in bins of equal width, at most 64.

    The width adapts to the values by factors of 2 and does not depend on their order. Values further outside of two limits
    than they are wide apart are counted in `below` and `above`, so that one wild value leaves the others apart.

    C++: orx::TRunHistogram
    """

    start: float
    """Lower end of the first bin."""
    width: float
    """Of a bin; 0 without values."""
    counts: list[int]
    below: int
    above: int


class RunChartPoint(NamedTuple):
    """Values that follow one another, as one point of a run chart.

    C++: orx::TRunChartPoint
    """

    first: int
    """Number of the first part, from 0, those without a value included."""
    values: int
    """How many."""
    least: float
    mean: float
    largest: float


class RunStatistics:
    """One value over a run of parts, in the same memory however long the run is.

    Parameters
    ----------
    lower, upper : float
        The limits; without any there are no indices.

    Examples
    --------
    >>> run = RunStatistics(lower=9.0, upper=11.0)
    >>> run.extend([9.8, 10.0, 10.2], "pass")
    >>> run.add(None, "not measured")
    >>> run.summary().mean, round(run.summary().cpk, 3), run.summary().verdicts["not measured"]
    (10.0, 1.667, 1)

    Mean and deviation after Welford, Technometrics 4 (1962), which loses no digits where the spread is small beside the
    value. May be used by several threads; it is not pickled: hand on its values, or its summary.

    C++: orx::TRunStatistics
    """

    __slots__ = ("_run",)

    def __init__(self, *, lower: float = -math.inf, upper: float = math.inf) -> None:
        self._run = _core.RunStatistics(lower, upper)

    def add(self, value: Optional[float], verdict: Verdict) -> None:
        """A part: its value and the verdict on it.

        None, and what is no finite number, counts among the verdicts as not measured and nowhere else.
        """
        self._run.add(math.nan if value is None else value, choice("verdict", verdict, NUMBERS))

    def extend(self, values: Numbers, verdicts: Union[Verdict, Iterable[Verdict]]) -> None:
        """Several parts, with one verdict for each or one for all of them; what is not measured is not-a-number."""
        known = (verdicts,) if isinstance(verdicts, str) else verdicts
        self._run.extend(values, [choice("verdicts", verdict, NUMBERS) for verdict in known])

    def summary(self) -> RunSummary:
        """What is told of the run so far."""
        parts, measured, verdicts, *others = self._run.summary()
        return RunSummary(parts, measured, dict(zip(VERDICTS, verdicts)), *others)

    def histogram(self) -> RunHistogram:
        """Counts of the values in bins."""
        return RunHistogram(*self._run.histogram())

    def chart(self) -> list[RunChartPoint]:
        """All parts in order, as at most 400 points of as many parts each (the last one may have fewer).

        Parts without a value make no point where they are alone in it.
        """
        return [RunChartPoint(*point) for point in self._run.chart()]

    def __reduce__(self) -> NoReturn:
        raise TypeError("a RunStatistics is not pickled or copied: hand on its values, or its summary()")

    def __repr__(self) -> str:
        told = self.summary()
        return f"RunStatistics({told.parts} parts, {told.measured} measured)"

    def _repr_html_(self) -> str:
        return self.summary()._repr_html_()


class GaugeResult(NamedTuple):
    """How well a measurement repeats itself.

    C++: orx::TGaugeResult
    """

    parts: int
    """With at least one value."""
    values: int
    """Of all of them."""
    degrees_of_freedom: float
    """Of the repeatability: values less the parts."""
    repeatability: Optional[float]
    """Standard deviation, pooled over the parts; None where none was measured twice."""
    part_deviation: Optional[float]
    """Standard deviation of the parts themselves; None with fewer than two."""
    tolerance_share: Optional[float]
    """Percent: 6 times the repeatability over the width of the limits. Below 10 is good, above 30 not fit for use."""
    variation_share: Optional[float]
    """Percent: the repeatability over the standard deviation of parts and repeatability together."""


class GaugePart(NamedTuple):
    """One of the parts of a gauge study.

    C++: orx::TGaugePart
    """

    values: int
    """How many."""
    mean: float
    deviation: Optional[float]
    """Of a sample; None with fewer than two values."""
    least: float
    largest: float


class GaugeStudy:
    """The same parts, measured several times each, tell how well the measurement repeats itself.

    After AIAG MSA, 4th edition (%P/T), and ISO 22514-7. What is told is the equipment's variation in one setup alone, not
    that of operators and of time. Memory grows with the parts, not with the times that each is measured.

    Examples
    --------
    >>> study = GaugeStudy(lower=9.0, upper=11.0)
    >>> for part, value in [(0, 10.0), (0, 10.02), (1, 10.2), (1, 10.22)]:
    ...     study.add(part, value)
    >>> round(study.result().repeatability, 4), round(study.result().tolerance_share, 2)
    (0.0141, 4.24)

    May be used by several threads; it is not pickled: hand on its values, or its result.

    C++: orx::TGaugeStudy
    """

    __slots__ = ("_study",)

    def __init__(self, *, lower: float = -math.inf, upper: float = math.inf) -> None:
        self._study = _core.GaugeStudy(lower, upper)

    def add(self, part: int, value: float) -> None:
        """One value of a part, which is a number from 0 to 99,999. ValueError for others, and for what is not finite."""
        self._study.add(part, value)

    def result(self) -> GaugeResult:
        """What is told of the values so far."""
        return GaugeResult(*self._study.result())

    def parts(self) -> list[Optional[GaugePart]]:
        """The parts by their number; None for those without values."""
        return [None if part is None else GaugePart(*part) for part in self._study.parts()]

    def __reduce__(self) -> NoReturn:
        raise TypeError("a GaugeStudy is not pickled or copied: hand on its values, or its result()")

    def __repr__(self) -> str:
        told = self.result()
        return f"GaugeStudy({told.parts} parts, {told.values} values)"
