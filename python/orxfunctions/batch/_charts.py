"""Charts as SVG, drawn with the colours of the page they are on."""
from __future__ import annotations

import math
from collections.abc import Sequence

from ..measuring import RunChartPoint, RunHistogram

_WIDTH, _HEIGHT = 360.0, 130.0
_LEFT, _RIGHT, _TOP, _BOTTOM = 8.0, 352.0, 8.0, 108.0


def histogram(counts: RunHistogram, lower: float, upper: float) -> str:
    """Bars over the values, with the limits as lines."""
    ends = [counts.start, counts.start + counts.width * len(counts.counts)]
    ends += [bound for bound in (lower, upper) if math.isfinite(bound)]
    least, largest = _widened(min(ends), max(ends))
    most = max([*counts.counts, counts.below, counts.above, 1])

    def x(value: float) -> float:
        return _LEFT + (_RIGHT - _LEFT) * (value - least) / (largest - least)

    def bar(start: float, end: float, count: int) -> str:
        height = (_BOTTOM - _TOP) * count / most
        width = max(end - start - 0.5, 0.5)
        return f'<rect x="{start:.1f}" y="{_BOTTOM - height:.1f}" width="{width:.1f}" height="{height:.1f}"/>'

    bars = "".join(bar(x(counts.start + index * counts.width), x(counts.start + (index + 1) * counts.width), count)
                   for index, count in enumerate(counts.counts) if count)
    for count, place in ((counts.below, _LEFT - 6), (counts.above, _RIGHT + 1)):
        bars += f'<g class="out">{bar(place, place + 5, count)}</g>' if count else ""
    limits = "".join(f'<line class="limit" x1="{x(bound):.1f}" y1="{_TOP}" x2="{x(bound):.1f}" y2="{_BOTTOM}"/>'
                     for bound in (lower, upper) if math.isfinite(bound))
    return _svg("histogram", bars + limits, f"{least:.6g}", f"{largest:.6g}")


def run_chart(points: Sequence[RunChartPoint], parts: int, lower: float, upper: float) -> str:
    """The means along the run, and the band between the least and the largest, with the limits as lines."""
    bounds = [bound for bound in (lower, upper) if math.isfinite(bound)]
    least, largest = _widened(min([*(point.least for point in points), *bounds]),
                              max([*(point.largest for point in points), *bounds]))

    def x(part: float) -> float:
        return _LEFT + (_RIGHT - _LEFT) * part / max(parts - 1, 1)

    def y(value: float) -> float:
        return _BOTTOM - (_BOTTOM - _TOP) * (value - least) / (largest - least)

    band = [f"{x(point.first):.1f},{y(point.largest):.1f}" for point in points]
    band += [f"{x(point.first):.1f},{y(point.least):.1f}" for point in reversed(points)]
    line = " ".join(f"{x(point.first):.1f},{y(point.mean):.1f}" for point in points)
    limits = "".join(f'<line class="limit" x1="{_LEFT}" y1="{y(bound):.1f}" x2="{_RIGHT}" y2="{y(bound):.1f}"/>'
                     for bound in bounds)
    if len(points) == 1:
        line += f" {_RIGHT},{y(points[0].mean):.1f}"
    drawn = f'<polygon class="band" points="{" ".join(band)}"/><polyline points="{line}"/>{limits}'
    return _svg("run chart", drawn, "first", f"{parts:,} pictures")


def _widened(least: float, largest: float) -> tuple[float, float]:
    margin = 0.04 * (largest - least) or max(abs(least) * 1e-3, 1e-9)
    return least - margin, largest + margin


def _svg(name: str, drawn: str, left: str, right: str) -> str:
    return (f'<svg viewBox="0 0 {_WIDTH:g} {_HEIGHT:g}" role="img" aria-label="{name}">'
            f'<line class="axis" x1="{_LEFT}" y1="{_BOTTOM}" x2="{_RIGHT}" y2="{_BOTTOM}"/>{drawn}'
            f'<text x="{_LEFT}" y="124">{left}</text><text x="{_RIGHT}" y="124" text-anchor="end">{right}</text></svg>')
