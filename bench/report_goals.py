"""Prints each performance goal beside the ratio that the benchmarks reached.

Usage: report_goals.py GOALS.json RESULTS_FOLDER...

A goal names a benchmark of ours, the peer that it is measured against, and the largest ratio of their times that counts
as reached. Times are the shortest of all repetitions in one folder: the noise of a busy machine only adds. They are
processor times, or real ones where the goal says so: those of several threads, for an idle machine. Of several folders,
each with the results of one run, the median of the ratios counts, and their range stands beside it.

"excellent" is the ratio that operation counts say is possible; where a measured limit forbids it, "excellent" is that
limit and "limit" the reason, which is printed below the row.
"""

import json
import pathlib
import statistics
import sys


def shortest_times(folder):
    """Maps (program, benchmark name, kind of time) to the shortest time in nanoseconds."""
    to_ns = {"ns": 1.0, "us": 1e3, "ms": 1e6, "s": 1e9}
    times = {}
    for path in sorted(folder.glob("*.json")):
        for run in json.loads(path.read_text())["benchmarks"]:
            if run.get("run_type") == "aggregate" or run.get("error_occurred"):
                continue
            for kind in ("cpu", "real"):
                key = (path.stem, run["run_name"], kind)
                time = run[f"{kind}_time"] * to_ns[run["time_unit"]]
                times[key] = min(time, times.get(key, time))
    return times


def ratio_of(goal, times):
    """The ratio that one run reached, or None where it did not measure both sides."""
    kind = goal.get("time", "cpu")
    ours = times.get((goal["program"], goal["ours"], kind))
    peer = times.get((goal.get("peer_program", goal["program"]), goal["peer"], kind))
    return None if ours is None or peer is None else ours / peer


def print_rows(goals, ratios_of_goals):
    several = any(len(ratios) > 1 for ratios in ratios_of_goals)
    width = max((len(goal["ours"]) for goal in goals), default=4)
    peer_width = max((len(goal["peer"]) for goal in goals), default=4)
    print(f"{'benchmark':<{width}}  {'peer':<{peer_width}}  {'goal':>6}  {'best':>6}  {'reached':>7}  "
          + (f"{'range':>15}  " if several else "") + "goal")
    for goal, ratios in zip(goals, ratios_of_goals):
        best = f"{goal['excellent']:.2f}" if "excellent" in goal else ""
        reached, verdict, spread = "-", "not run", ""
        if ratios:
            ratio = statistics.median(ratios)
            reached = f"{ratio:.3f}"
            verdict = "yes" if ratio <= goal["goal"] else "MISSED"
            if "excellent" in goal and ratio <= goal["excellent"]:
                verdict += ", best"
            spread = f"{min(ratios):.3f} .. {max(ratios):.3f}" if len(ratios) > 1 else ""
        print(f"{goal['ours']:<{width}}  {goal['peer']:<{peer_width}}  {goal['goal']:>6.2f}  {best:>6}  {reached:>7}  "
              + (f"{spread:>15}  " if several else "") + verdict)
        if "limit" in goal:
            print(f"    limit: {goal['limit']}")


def print_totals(goals, ratios_of_goals, runs):
    measured = [(goal, statistics.median(ratios)) for goal, ratios in zip(goals, ratios_of_goals) if ratios]
    reached = sum(ratio <= goal["goal"] for goal, ratio in measured)
    with_best = [(goal, ratio) for goal, ratio in measured if "excellent" in goal]
    best = sum(ratio <= goal["excellent"] for goal, ratio in with_best)
    print(f"{len(measured)} of {len(goals)} goals measured" + (f", median of {runs} runs" if runs > 1 else "")
          + f": {reached} reached, {len(measured) - reached} missed; {best} of {len(with_best)} best values reached")


def main():
    if len(sys.argv) < 3:
        sys.exit(__doc__)
    goals = json.loads(pathlib.Path(sys.argv[1]).read_text())
    folders = [pathlib.Path(name) for name in sys.argv[2:]]
    missing = [str(folder) for folder in folders if not folder.is_dir()]
    if missing:
        sys.exit(f"report_goals.py: no folder '{missing[0]}'")
    runs = [shortest_times(folder) for folder in folders]
    ratios_of_goals = []
    for goal in goals:
        ratios = [ratio_of(goal, times) for times in runs]
        ratios_of_goals.append([ratio for ratio in ratios if ratio is not None])
    print_rows(goals, ratios_of_goals)
    print_totals(goals, ratios_of_goals, len(runs))


if __name__ == "__main__":
    main()
