"""Plots of the tables in docs/accuracy-*.md; each stands above the table that it is drawn from."""
from __future__ import annotations

import itertools
import re
from dataclasses import dataclass, field
from typing import Callable, Optional, Union

import plots
from tree import write

Row = list[str]


def number(cell: str, part: int = 0) -> Optional[float]:
    """One of the numbers of a cell, None where it has none."""
    found = re.findall(r"[+-]?\d+(?:\.\d+)?(?:e[+-]?\d+)?", cell)
    return float(found[part]) if len(found) > part else None


@dataclass
class Over:
    """A line a series: values over the numbers of column `x`, or over columns that are numbers themselves."""

    y: str
    series: Callable[[Row], Optional[str]]  # which series a row belongs to; None: to none
    values: dict[str, int] = field(default_factory=dict)  # what a series is called further, and its column
    x: int = 0
    x_label: str = ""
    columns: Optional[tuple[int, int]] = None  # the columns that stand for x, from, to before
    part: int = 0
    log: str = ""

    def draw(self, header: Row, rows: list[Row]) -> str:
        lines: dict[str, list[tuple[float, float]]] = {}
        for row in rows:
            name = self.series(row)
            if name is None:
                continue
            if self.columns:
                pairs = [(name, number(header[c]), number(row[c], self.part)) for c in range(*self.columns)]
            else:
                pairs = [(f"{name}{more}", number(row[self.x]), number(row[column])) for more, column in self.values.items()]
            for label, x, y in pairs:
                if x is not None and y is not None:
                    lines.setdefault(label, []).append((x, y))
        return plots.lines(lines, self.x_label, self.y, self.log)


@dataclass
class Beside:
    """A row of marks a row of the table."""

    x: str
    label: tuple[int, ...]
    values: dict[str, Union[int, tuple[int, int]]]  # what a mark is called, its column and which number of a cell
    line: Optional[float] = None
    log: str = ""

    def draw(self, header: Row, rows: list[Row]) -> str:
        labels = [", ".join(row[c] if re.search(r"[A-Za-z]{2}", row[c]) else f"{header[c]} {row[c]}" for c in self.label)
                  for row in rows]
        marks = {}
        for name, place in self.values.items():
            column, part = place if isinstance(place, tuple) else (place, 0)
            marks[name] = [number(row[column], part) for row in rows]
        return plots.marks(labels, marks, self.x, self.line, self.log)


Plot = Union[Over, Beside]
_FIT = Beside("spread over the bound", (0, 1, 2), {"spread / bound": 4}, line=1.0)
_ESTIMATORS = Over("spread", lambda row: row[0] if row[1] == "0.5" else None, x_label="outliers, %", columns=(2, 9), part=1,
                   log="y")
_ZONE = Beside("in noises", (0, 1), {"plain, independent": 2, "freed, independent": 3, "plain, chain": 6, "freed, chain": 7},
               line=0.0)
_FOUND = Beside("error of the place, rms, pixels", (0,), {"error": 4}, log="x")
_VERDICT = Beside("stated over true uncertainty", (0,), {"stated / true": 5}, line=1.0)

# By page and heading: the plot and what is seen in it. Tables of goals, of counts and of rounding have none.
PLOTS: dict[tuple[str, str], tuple[Plot, str]] = {
    ("accuracy-edges", ""): (
        Over("rms error, pixels",
             lambda row: row[0] if row[0] in ("disk, radius 20", "line, any angle") and row[2] == "2" else None,
             {": EdgesSubPix": 5, ": edgesSubPixMetric": 8, ": bound": 10}, x=1, x_label="blur, pixels", log="y"),
        "Error of edge points on disks and lines over the blur, noise 2"),
    ("accuracy-ellipse", ""): (
        Over("error of the centre, pixels", lambda row: row[0] if row[2] == "0.50" and row[3] == "0 %" else None, {"": 5}, x=1,
             x_label="arc that is seen, degrees", log="xy"),
        "Error of the centre over the arc that is seen; noise 0.5, no outliers"),
    ("accuracy-fits", "Circles: centre column"): (_ESTIMATORS, "Spread of the centre over the share of outliers, noise 0.5"),
    ("accuracy-fits", "Circles: radius"): (_ESTIMATORS, "Spread of the radius over the share of outliers, noise 0.5"),
    ("accuracy-fits", "Lines: angle"): (_ESTIMATORS, "Spread of the angle over the share of outliers, noise 0.5"),
    ("accuracy-fits", "Lines: distance at the middle"): (
        _ESTIMATORS, "Spread of the place over the share of outliers, noise 0.5"),
    ("accuracy-calibration", "Points of targets"): (
        Over("error, pixels", lambda row: row[0] if row[1] == "40 px" and row[2] == "0.7" else None,
             {", findTarget": 4, ", OpenCV": 6, ", OpenCV with cornerSubPix": 7}, x=3, x_label="noise, grey levels", log="y"),
        "Error of a target's points over the noise; pitch 40 pixels, blur 0.7"),
    ("accuracy-calibration", "From pixels to millimetres"): (
        Beside("micrometres", (0, 1), {"error of the length": 6, "stated": 7, "error of a place": 5}),
        "Errors of the diagonal and of places, and what is stated of the diagonal"),
    ("accuracy-form", "Minimum zone circle"): (_ZONE, "Plain and freed values of the zone, mean error in noises"),
    ("accuracy-form", "Radius of the circumscribed circle"): (_ZONE, "Plain and freed radius, mean error in noises"),
    ("accuracy-form", "Radius of the inscribed circle"): (_ZONE, "Plain and freed radius, mean error in noises"),
    ("accuracy-form", "Straightness"): (_ZONE, "Plain and freed straightness, mean error in noises"),
    ("accuracy-form", "Relations"): (
        Beside("stated over true uncertainty", (0,), {"noise 0.02": 3, "noise 0.1": 5, "noise 0.3": 7}, line=1.0),
        "Stated over true uncertainty of each relation"),
    ("accuracy-form", "Edges across an outline"): (
        Over("rms error, pixels", lambda row: row[0] if row[1] == "1" else None, x_label="noise, grey levels", columns=(2, 7),
             part=1),
        "Error of points across an outline over the noise, blur 1"),
    ("accuracy-matching", "Scenes with goals"): (_FOUND, "Error of the place in each scene"),
    ("accuracy-matching", "Further scenes"): (_FOUND, "Error of the place in each scene"),
    ("accuracy-measuring", "Edges found in pictures"): (
        Beside("stated over true uncertainty", (0, 1, 2, 3), {"stated / spread": 6}, line=1.0),
        "Stated over true uncertainty of shapes fitted to edges"),
    ("accuracy-verdict", "By a plane calibrated from rendered targets"): (
        _VERDICT, "Stated over true uncertainty of each value"),
    ("accuracy-verdict", "By the plane as it is"): (_VERDICT, "Stated over true uncertainty of each value"),
}
for _shape in ("Circles and arcs", "Lines", "Ellipses"):
    for _way in ("", " among 40 % outliers, Tukey's loss", " among 40 % outliers, consensus search"):
        PLOTS["accuracy-measuring", _shape + _way] = _FIT, f"Spread over the least possible: {_shape.lower()}{_way}"


def _cells(line: str) -> Row:
    return [cell.strip() for cell in line.strip().strip("|").split("|")]


def _peers_plot(header: Row) -> tuple[Plot, str]:
    columns: dict[str, Union[int, tuple[int, int]]] = {name: i for i, name in enumerate(header) if i > 0}
    return (Beside("spread over the bound", (0,), columns, line=1.0, log="x"),
            f"Spread over the least possible beside other libraries: {header[0]}")


def with_plots(text: str, page: str) -> str:
    """The page with a plot above each table that has one."""
    heading, out = "", []
    drawn: set[str] = set()
    lines, numbers = text.splitlines(), itertools.count(1)
    for i, line in enumerate(lines):
        if line.startswith("##"):
            heading = line.lstrip("# ")
        if line.startswith("|") and i + 1 < len(lines) and re.match(r"\|[-:|]+$", lines[i + 1]):
            header, end = _cells(line), i + 2
            while end < len(lines) and lines[end].startswith("|"):
                end += 1
            rows = [_cells(row) for row in lines[i + 2:end]]
            plot = PLOTS.get((page, heading)) if heading not in drawn else None  # of the first table below a heading
            if heading == "Beside other libraries":
                plot = _peers_plot(header)
            if plot:
                drawn.add(heading)
                name = f"plots/{page}-{next(numbers)}.svg"
                write(name, plot[0].draw(header, rows))
                out += [f"![{plot[1]}]({name})", ""]
        out.append(line)
    missing = [there for where, there in PLOTS if where == page and there not in drawn]
    if missing:
        raise SystemExit(f"docs/{page}.md: no table to plot below: {', '.join(missing)}")
    return "\n".join(out) + "\n"
