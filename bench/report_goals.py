"""Prints each performance goal beside the ratio that a benchmark run reached.

Usage: report_goals.py GOALS.json RESULTS_FOLDER

A goal names a benchmark of ours, the peer that it is measured against in the same program, and the largest ratio of
their times that counts as reached. Times are the shortest of all repetitions: the noise of a busy machine only adds.
They are processor times, or real ones where the goal says so: those of several threads, for an idle machine.
"""

import json
import pathlib
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


def main():
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    goals = json.loads(pathlib.Path(sys.argv[1]).read_text())
    times = shortest_times(pathlib.Path(sys.argv[2]))

    rows = []
    for goal in goals:
        kind = goal.get("time", "cpu")
        ours = times.get((goal["program"], goal["ours"], kind))
        peer = times.get((goal.get("peer_program", goal["program"]), goal["peer"], kind))
        if ours is None or peer is None:
            rows.append((goal, None))
        else:
            rows.append((goal, ours / peer))

    width = max((len(goal["ours"]) for goal in goals), default=4)
    peer_width = max((len(goal["peer"]) for goal in goals), default=4)
    print(f"{'benchmark':<{width}}  {'peer':<{peer_width}}  {'goal':>6}  {'best':>6}  {'reached':>7}")
    missed = 0
    for goal, ratio in rows:
        best = f"{goal['excellent']:.2f}" if "excellent" in goal else ""
        if ratio is None:
            reached, verdict = "-", "not run"
        else:
            reached = f"{ratio:.3f}"
            verdict = "yes" if ratio <= goal["goal"] else "MISSED"
            missed += ratio > goal["goal"]
        print(f"{goal['ours']:<{width}}  {goal['peer']:<{peer_width}}  {goal['goal']:>6.2f}  {best:>6}  "
              f"{reached:>7}  {verdict}")
    run = sum(ratio is not None for _, ratio in rows)
    print(f"{run} of {len(rows)} goals measured, {missed} missed")


if __name__ == "__main__":
    main()
