"""Drawings for the reports: static SVG whose colours are the page's, as classes."""

import html
import math

from report.figures import time_text

# Of a page, and of a picture that stands alone.
COLOURS = """
:root { --ground: #ffffff; --ink: #1c2128; --faint: #667080; --line: #d5dae0; --ours: #1f6feb; --peer: #9aa4af;
        --goal: #1a7f37; --best: #9a6700; --missed: #cf222e; }
@media (prefers-color-scheme: dark) {
  :root { --ground: #0d1117; --ink: #e6edf3; --faint: #98a2ad; --line: #30363d; --ours: #4493f8; --peer: #6e7781;
          --goal: #3fb950; --best: #d29922; --missed: #f85149; }
}
"""
CLASSES = """
.ours { fill: var(--ours); } .peer { fill: var(--peer); } .missed { fill: var(--missed); }
.goal { stroke: var(--goal); stroke-width: 2; } .best { stroke: var(--best); stroke-width: 2; stroke-dasharray: 2 2; }
.grid { stroke: var(--line); stroke-width: 1; fill: none; }
.curve { stroke: var(--ours); stroke-width: 1.5; fill: none; } .straight { stroke: var(--faint); stroke-dasharray: 3 3; }
text { fill: var(--ink); font: 11px system-ui, sans-serif; } text.faint { fill: var(--faint); }
"""


def _number(value):
    return f"{value:.2f}".rstrip("0").rstrip(".")


def bars(judged, width=300, height=20):
    """Our time above the peer's, the longer as wide as the drawing; lines at the goal and at the best possible."""
    reached = judged.reached
    best = judged.goal.get("excellent")
    longest = max(1.0, reached, min(judged.goal["goal"], 1.5))

    def x(share):
        return _number(min(share / longest, 1.0) * (width - 2) + 1)

    ours = "missed" if judged.verdict == "MISSED" else "ours"
    parts = [f'<rect class="{ours}" x="0" y="1" width="{x(reached)}" height="{height / 2 - 2:g}"/>',
             f'<rect class="peer" x="0" y="{height / 2 + 1:g}" width="{x(1.0)}" height="{height / 2 - 2:g}"/>']
    for share, kind in ((judged.goal["goal"], "goal"), (best, "best")):
        if share is not None and share <= longest:
            parts.append(f'<line class="{kind}" x1="{x(share)}" x2="{x(share)}" y1="0" y2="{height}"/>')
    return (f'<svg viewBox="0 0 {width} {height}" preserveAspectRatio="none" role="img" '
            f'aria-label="{_number(reached)} of the peer\'s time">' + "".join(parts) + "</svg>")


def growth(times, width=150, height=90):
    """Time over size, both logarithmic, with a dashed line of exponent 1 through the first point."""
    points = [(math.log10(size), math.log10(time)) for size, time in times.items()]
    left, top, right, bottom = 4, 14, width - 4, height - 14
    low_x, high_x = points[0][0], points[-1][0]
    low_y = min(y for _, y in points)
    high_y = max(max(y for _, y in points), points[0][1] + high_x - low_x)

    def place(point):
        x = left + (point[0] - low_x) / ((high_x - low_x) or 1) * (right - left)
        y = bottom - (point[1] - low_y) / ((high_y - low_y) or 1) * (bottom - top)
        return f"{_number(x)},{_number(y)}"

    end = (high_x, points[0][1] + high_x - low_x)
    first, last = min(times), max(times)
    dots = "".join(f'<circle class="ours" cx="{place(p).split(",")[0]}" cy="{place(p).split(",")[1]}" r="2.5"/>'
                   for p in points)
    return (f'<svg viewBox="0 0 {width} {height}" role="img">'
            f'<rect class="grid" x="{left}" y="{top}" width="{right - left}" height="{bottom - top}"/>'
            f'<polyline class="grid straight" points="{place(points[0])} {place(end)}"/>'
            f'<polyline class="curve" points="{" ".join(place(p) for p in points)}"/>{dots}'
            f'<text class="faint" x="{left}" y="{height - 3}">{html.escape(time_text(times[first]))}</text>'
            f'<text class="faint" x="{right}" y="10" text-anchor="end">{html.escape(time_text(times[last]))}</text>'
            "</svg>")


def summary(rows, footing, width=760):
    """A picture that stands alone: one line for each of some goals, `rows` being (text, Judged)."""
    line, left, right = 30, 300, 70
    height = 34 + line * len(rows) + 34
    parts = [f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {width} {height}" width="{width}" height="{height}">',
             f"<style>{COLOURS}{CLASSES}</style>",
             f'<rect width="{width}" height="{height}" fill="var(--ground)"/>',
             f'<text x="{left}" y="20" class="faint">ours, below it what else would be taken; red: goal missed</text>',
             f'<text x="{width - 10}" y="20" text-anchor="end" class="faint">ratio</text>']
    for index, (text, judged) in enumerate(rows):
        y = 34 + line * index
        drawn = bars(judged, width - left - right, 20)
        parts.append(f'<text x="{left - 10}" y="{y + 14}" text-anchor="end">{html.escape(text)}</text>')
        parts.append(f'<g transform="translate({left} {y})">' + drawn[drawn.index(">") + 1:-len("</svg>")] + "</g>")
        parts.append(f'<text x="{width - 10}" y="{y + 14}" text-anchor="end">{judged.reached:.2f}</text>')
    parts.append(f'<text x="10" y="{height - 12}" class="faint">{html.escape(footing)}</text></svg>')
    return "\n".join(parts) + "\n"
