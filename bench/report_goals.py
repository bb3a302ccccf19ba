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
import sys

from report import figures, results


def print_rows(judged):
    several = any(len(row.ratios) > 1 for row in judged)
    width = max((len(row.goal["ours"]) for row in judged), default=4)
    peer_width = max((len(row.goal["peer"]) for row in judged), default=4)
    print(f"{'benchmark':<{width}}  {'peer':<{peer_width}}  {'goal':>6}  {'best':>6}  {'reached':>7}  "
          + (f"{'range':>15}  " if several else "") + "goal")
    for row in judged:
        goal = row.goal
        best = f"{goal['excellent']:.2f}" if "excellent" in goal else ""
        reached = f"{row.reached:.3f}" if row.ratios else "-"
        spread = f"{min(row.ratios):.3f} .. {max(row.ratios):.3f}" if len(row.ratios) > 1 else ""
        print(f"{goal['ours']:<{width}}  {goal['peer']:<{peer_width}}  {goal['goal']:>6.2f}  {best:>6}  {reached:>7}  "
              + (f"{spread:>15}  " if several else "") + row.verdict)
        if "limit" in goal:
            print(f"    limit: {goal['limit']}")


def main():
    if len(sys.argv) < 3:
        sys.exit(__doc__)
    goals = json.loads(pathlib.Path(sys.argv[1]).read_text())
    folders = [pathlib.Path(name) for name in sys.argv[2:]]
    missing = [str(folder) for folder in folders if not folder.is_dir()]
    if missing:
        sys.exit(f"report_goals.py: no folder '{missing[0]}'")
    judged = figures.judge(goals, [results.shortest_times(folder) for folder in folders])
    print_rows(judged)
    print(figures.totals(judged, len(folders)))


if __name__ == "__main__":
    main()
