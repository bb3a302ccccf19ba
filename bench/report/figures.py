"""The arithmetic of the reports."""

import dataclasses
import math
import statistics


def slope(points):
    """The least-squares slope of y over x; None for fewer than two places in x."""
    if len({x for x, _ in points}) < 2:
        return None
    mean_x = statistics.fmean(x for x, _ in points)
    mean_y = statistics.fmean(y for _, y in points)
    return (sum((x - mean_x) * (y - mean_y) for x, y in points)
            / sum((x - mean_x) ** 2 for x, _ in points))


def exponent(times):
    """The e of a time that grows as size^e, fitted to the logarithms of {size: time}."""
    return slope([(math.log(size), math.log(time)) for size, time in times.items() if size > 0 and time > 0])


def ratio(goal, times):
    """Our time over the peer's in one run, or None where it did not measure both sides."""
    kind = goal.get("time", "cpu")
    ours = times.get((goal["program"], goal["ours"], kind))
    peer = times.get((goal.get("peer_program", goal["program"]), goal["peer"], kind))
    return None if ours is None or peer is None else ours / peer


def median_times(runs):
    """The median of several runs' times, for what all or some of them measured."""
    keys = {key for run in runs for key in run}
    return {key: statistics.median(run[key] for run in runs if key in run) for key in keys}


@dataclasses.dataclass(frozen=True)
class Judged:
    """A goal with the ratios that several runs reached."""

    goal: dict
    ratios: list

    @property
    def reached(self):
        """The median, or None where nothing was measured."""
        return statistics.median(self.ratios) if self.ratios else None

    @property
    def verdict(self):
        if not self.ratios:
            return "not run"
        if self.reached > self.goal["goal"]:
            return "MISSED"
        return "yes, best" if self.reached <= self.goal.get("excellent", -1) else "yes"


def judge(goals, runs):
    """Every goal against the times of each run."""
    judged = []
    for goal in goals:
        ratios = [ratio(goal, times) for times in runs]
        judged.append(Judged(goal, [value for value in ratios if value is not None]))
    return judged


def totals(judged, runs):
    """How many goals were measured, reached and missed, in a sentence."""
    measured = [row for row in judged if row.ratios]
    missed = sum(row.verdict == "MISSED" for row in measured)
    with_best = [row for row in measured if "excellent" in row.goal]
    best = sum(row.reached <= row.goal["excellent"] for row in with_best)
    return (f"{len(measured)} of {len(judged)} goals measured" + (f", median of {runs} runs" if runs > 1 else "")
            + f": {len(measured) - missed} reached, {missed} missed; {best} of {len(with_best)} best values reached")


def growths(times, program="growth_bench", prefix="growth/"):
    """Maps each operator of rows PREFIX OPERATOR/SIZE to its {size: processor time in ns}."""
    families = {}
    for (of, name, kind), time in times.items():
        if of == program and kind == "cpu" and name.startswith(prefix):
            operator, size = name[len(prefix):].rsplit("/", 1)
            families.setdefault(operator, {})[int(size)] = time
    return {operator: dict(sorted(sizes.items())) for operator, sizes in sorted(families.items())}


def time_text(ns):
    """Three digits and a unit."""
    for unit, scale in (("s", 1e9), ("ms", 1e6), ("µs", 1e3)):
        if ns >= 0.9995 * scale:
            return f"{ns / scale:.3g} {unit}"
    return f"{ns:.3g} ns"


def count_text(count):
    """Three digits, in thousands, millions or thousand millions."""
    for unit, scale in (("G", 1e9), ("M", 1e6), ("k", 1e3)):
        if count >= 0.9995 * scale:
            return f"{count / scale:.3g} {unit}"
    return f"{count:.3g}"
