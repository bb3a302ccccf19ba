"""Plots as SVG that are readable on light and on dark pages: no ground of their own, grey axes, colours of medium lightness."""
from __future__ import annotations

import io
from typing import Any, Optional

import matplotlib

matplotlib.use("svg")
matplotlib.rcParams["svg.hashsalt"] = "orxFunctions"  # equal data give equal files

import matplotlib.pyplot as pyplot  # noqa: E402
from matplotlib.figure import Figure  # noqa: E402

_GREY = "#7a828b"
_COLOURS = ["#3b82f6", "#e0791a", "#2e9e5b", "#a866d6", "#d9486e", "#1a9ba8", "#9a8420", "#7a828b"]
_SIGNS = ["o", "s", "^", "D", "v", "P", "X", "*"]
_DASHES = ["-", "--", ":", "-."]


def _figure(height: float) -> tuple[Figure, Any]:
    figure, axes = pyplot.subplots(figsize=(7.6, height))
    figure.patch.set_alpha(0.0)
    axes.patch.set_alpha(0.0)
    axes.tick_params(colors=_GREY, which="both", labelsize=9)
    for spine in axes.spines.values():
        spine.set_color(_GREY)
    for side in ("top", "right"):
        axes.spines[side].set_visible(False)
    axes.grid(True, color=_GREY, alpha=0.25, linewidth=0.6)
    return figure, axes


def _finished(figure: Figure, axes: Any, log: str, entries: int) -> str:
    if "x" in log:
        axes.set_xscale("log")
    if "y" in log:
        axes.set_yscale("log")
    for label in (axes.xaxis.label, axes.yaxis.label):
        label.set_color(_GREY)
    if entries > 1:
        axes.legend(loc="upper center", bbox_to_anchor=(0.5, -42.0 / (72 * figure.get_figheight() * 0.8)),
                    ncol=2 if entries > 3 else entries, frameon=False, labelcolor=_GREY, fontsize=8.5)
    text = io.StringIO()
    figure.savefig(text, format="svg", transparent=True, bbox_inches="tight", metadata={"Date": None})
    pyplot.close(figure)
    return text.getvalue()


def lines(series: dict[str, list[tuple[float, float]]], x: str, y: str, log: str) -> str:
    """A line a series."""
    if not series:
        raise SystemExit(f"nothing to plot of '{y}' over '{x}'")
    figure, axes = _figure(3.6)
    for i, (name, points) in enumerate(series.items()):
        shown = [point for point in sorted(points) if "y" not in log or point[1] > 0]
        axes.plot([point[0] for point in shown], [point[1] for point in shown], label=name, color=_COLOURS[i % len(_COLOURS)],
                  marker=_SIGNS[i % len(_SIGNS)], linestyle=_DASHES[i // len(_COLOURS) % len(_DASHES)], markersize=4.5,
                  linewidth=1.4)
    axes.set_xlabel(x)
    axes.set_ylabel(y)
    return _finished(figure, axes, log, len(series))


def marks(labels: list[str], values: dict[str, list[Optional[float]]], x: str, line: Optional[float], log: str) -> str:
    """Marks beside each label; a line where a value is as it should be."""
    if not any(value is not None for column in values.values() for value in column):
        raise SystemExit(f"nothing to plot of '{x}'")
    figure, axes = _figure(0.8 + 0.21 * len(labels))
    places = list(range(len(labels)))
    if line is not None:
        axes.axvline(line, color=_GREY, linewidth=1.2)
    for i, (name, column) in enumerate(values.items()):
        shown = [(value, place) for value, place in zip(column, places) if value is not None and ("x" not in log or value > 0)]
        axes.plot([value for value, _ in shown], [place for _, place in shown], linestyle="none", label=name,
                  color=_COLOURS[i % len(_COLOURS)], marker=_SIGNS[i % len(_SIGNS)], markersize=5, alpha=0.9)
    axes.set_yticks(places, labels)
    axes.set_ylim(len(labels) - 0.5, -0.5)
    axes.set_xlabel(x)
    return _finished(figure, axes, log, len(values))
