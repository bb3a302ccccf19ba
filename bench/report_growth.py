"""Prints how the time of each operator grows with its input, and what a call takes from the heap.

Usage: report_growth.py NOTES.json RESULTS_FOLDER...

Times are the shortest of all repetitions in a folder, and of several folders their median, at the sizes that
growth_bench measures; the exponent is the slope of their logarithms (least squares). NOTES.json names the operators whose
exponent may exceed 1.1, the largest that counts as reached, and why. Heap: blocks and bytes that a repeated call asks for,
and the most that it holds at once, at the largest size.
"""

import json
import pathlib
import sys

from report import figures, results

LARGEST_EXPONENT = 1.1


def rows_of(folders, notes):
    """One row an operator: its times, exponent, goal of that, verdict, and the heap's use at its largest size."""
    times = figures.median_times([results.shortest_times(folder) for folder in folders])
    heap = results.heap_uses(folders[0])
    rows = []
    for operator, sizes in figures.growths(times).items():
        note = notes.get(operator, {})
        goal = note.get("exponent", LARGEST_EXPONENT)
        reached = figures.exponent(sizes)
        use = heap.get(("growth_bench", f"growth/{operator}/{max(sizes)}"))
        rows.append({"operator": operator, "times": sizes, "exponent": reached, "goal": goal,
                     "reason": note.get("reason", ""), "heap": use,
                     "missed": reached is not None and round(reached, 2) > goal})
    return rows


def main():
    if len(sys.argv) < 3:
        sys.exit(__doc__)
    rows = rows_of(sys.argv[2:], json.loads(pathlib.Path(sys.argv[1]).read_text()))
    if not rows:
        print("growth_bench was not run")
        return
    width = max(len(row["operator"]) for row in rows)
    print(f"{'operator':<{width}}  {'exponent':>8}  {'goal':>4}  {'':<6}  {'size':>6}  {'time':>8}  "
          f"{'blocks':>6}  {'bytes':>7}  {'peak':>7}")
    for row in rows:
        largest = max(row["times"])
        exponent = f"{row['exponent']:.2f}" if row["exponent"] is not None else "-"
        use = [figures.count_text(count) for count in row["heap"]] if row["heap"] else ["-"] * 3
        print(f"{row['operator']:<{width}}  {exponent:>8}  {row['goal']:>4}  {'MISSED' if row['missed'] else '':<6}  "
              f"{figures.count_text(largest):>6}  {figures.time_text(row['times'][largest]):>8}  "
              f"{use[0]:>6}  {use[1]:>7}  {use[2]:>7}")
        if row["reason"]:
            print(f"    {row['reason']}")
    missed = sum(row["missed"] for row in rows)
    print(f"{len(rows)} operators: the exponents of {len(rows) - missed} within their goal, of {missed} beyond")


if __name__ == "__main__":
    main()
