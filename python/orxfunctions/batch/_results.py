"""What a page tells of the results of an inspection, gathered in one pass and bounded memory."""
from __future__ import annotations

import heapq
import json
import math
from collections import Counter
from collections.abc import Iterable, Mapping
from typing import NamedTuple, cast

from ..measuring import RunStatistics, Verdict
from ._rows import Row, Value, values_of, verdict_of

_MOST_VALUES = 200
_MOST_PARTS = 200
_MOST_REASONS = 50
_NO_LIMITS = (-math.inf, math.inf)


class ValueRun(NamedTuple):
    """A value over all pictures."""

    unit: str
    lower: float
    upper: float
    run: RunStatistics


class BadPart(NamedTuple):
    """A picture that did not pass, or could not be measured."""

    excess: float
    """How far its worst value lies beyond a limit, as a share of the tolerance; infinite where that can't be told."""
    path: str
    told: str


class Results:
    """Counts, values and the worst parts."""

    def __init__(self, rows: Iterable[Row], limits: Mapping[str, tuple[float, float]]) -> None:
        self.status: Counter[str] = Counter()
        self.verdicts: Counter[str] = Counter()
        self.reasons: Counter[str] = Counter()
        self.values: dict[str, ValueRun] = {}
        self.seconds = RunStatistics()
        self.unmeasured: list[BadPart] = []
        self._worst: list[BadPart] = []
        for row in rows:
            self._add(row, limits)

    @property
    def worst(self) -> list[BadPart]:
        """Parts that did not pass, the worst first."""
        return sorted(self._worst, key=lambda part: (-part.excess, part.path))

    def _add(self, row: Row, limits: Mapping[str, tuple[float, float]]) -> None:
        self.status[row.status] += 1
        if row.status == "failed":
            known = row.reason in self.reasons or len(self.reasons) < _MOST_REASONS
            self.reasons[row.reason if known else "others"] += 1
            if len(self.unmeasured) < _MOST_PARTS:
                self.unmeasured.append(BadPart(math.inf, row.picture.path, row.reason))
            return
        self.seconds.add(row.seconds, "no limits")
        record = json.loads(row.record)
        values = list(values_of(record, limits))
        for value in values:
            self._add_value(value)
        verdict = verdict_of(record, limits)
        if verdict:
            self.verdicts[verdict] += 1
        if verdict not in ("", "pass", "no limits"):
            bad = [value for value in values if value.verdict not in ("pass", "no limits")]
            told = ", ".join(f"{value.name}: {_number(value.value)} {value.unit}".rstrip() for value in bad)
            part = BadPart(max((_excess(value) for value in bad), default=math.inf), row.picture.path,
                           f"{verdict}: {record.get('problem') or told}")
            if len(self._worst) < _MOST_PARTS:
                heapq.heappush(self._worst, part)
            else:
                heapq.heappushpop(self._worst, part)

    def _add_value(self, value: Value) -> None:
        known = self.values.get(value.name)
        if known is None:
            if len(self.values) == _MOST_VALUES:
                return
            known = ValueRun(value.unit, value.lower, value.upper, RunStatistics(lower=value.lower, upper=value.upper))
            self.values[value.name] = known
        known.run.add(value.value, cast(Verdict, value.verdict))


def _number(value: float | None) -> str:
    return "not measured" if value is None else f"{value:.6g}"


def _excess(value: Value) -> float:
    if value.value is None:
        return math.inf
    beyond = max(value.lower - value.value, value.value - value.upper, 0.0)
    width = value.upper - value.lower
    if math.isfinite(width) and width > 0:
        return beyond / width
    size = max([abs(bound) for bound in (value.lower, value.upper) if math.isfinite(bound)], default=0.0)
    return beyond / size if size > 0 else beyond
