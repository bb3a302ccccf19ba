"""The page of a benchmark run: one HTML file without scripts, fonts or pictures of others."""

import html
import itertools

from report import svg
from report.figures import count_text, time_text, totals

STYLE = """
body { background: var(--ground); color: var(--ink); font: 15px/1.45 system-ui, sans-serif; margin: 0 auto;
       max-width: 1100px; padding: 16px; }
h1 { font-size: 24px; margin: 0; } h2 { font-size: 18px; margin: 32px 0 8px; } h3 { font-size: 14px; margin: 18px 0 6px; }
p { margin: 4px 0 10px; } .faint { color: var(--faint); } .bad { color: var(--missed); } svg { display: block; width: 100%; }
.row { border-top: 1px solid var(--line); display: grid; gap: 2px 12px; padding: 5px 0;
       grid-template-columns: minmax(0, 4fr) minmax(0, 5fr) 150px; align-items: center; overflow-wrap: anywhere; }
.row svg { height: 20px; } .row .note { grid-column: 1 / -1; font-size: 13px; }
.key { display: inline-block; height: 10px; margin: 0 4px 0 10px; width: 18px; }
.curves { display: grid; gap: 12px; grid-template-columns: repeat(auto-fill, minmax(150px, 1fr)); }
.curves figure { margin: 0; } figcaption { font-size: 13px; overflow-wrap: anywhere; }
.wide { overflow-x: auto; } table { border-collapse: collapse; font-size: 13px; }
td, th { border-top: 1px solid var(--line); padding: 3px 10px 3px 0; text-align: right; white-space: nowrap; }
td:first-child, th:first-child { text-align: left; }
@media (max-width: 600px) { .row { grid-template-columns: minmax(0, 1fr) 110px; } .row .bars { grid-column: 1 / -1; order: 3; }
       .row .note { order: 4; } }
"""


def _escaped(text):
    return html.escape(str(text))


def _goal_row(judged):
    goal = judged.goal
    bad = ' class="bad"' if judged.verdict == "MISSED" else ""
    best = f", best {goal['excellent']:g}" if "excellent" in goal else ""
    figure = f'<b{bad}>{judged.reached:.3f}</b> <span class="faint">goal {goal["goal"]:g}{best}</span>'
    note = f'<div class="note faint">Limit: {_escaped(goal["limit"])}</div>' if "limit" in goal else ""
    return (f'<div class="row"><div>{_escaped(goal["ours"])} <span class="faint">/ {_escaped(goal["peer"])}</span></div>'
            f'<div class="bars">{svg.bars(judged)}</div><div>{figure}</div>{note}</div>')


def _goals(judged):
    yield "<h2>Goals</h2>"
    yield ('<p><span class="key" style="background:var(--ours)"></span>ours'
           '<span class="key" style="background:var(--missed)"></span>ours, goal missed'
           '<span class="key" style="background:var(--peer)"></span>peer'
           '<span class="key" style="background:var(--goal);width:2px"></span>goal'
           '<span class="key" style="background:var(--best);width:2px"></span>best that limits allow</p>')
    yield '<p class="faint">A row is our processor time over that of the peer in the same run; less is better.</p>'
    measured = [row for row in judged if row.ratios]
    for program, rows in itertools.groupby(measured, key=lambda row: row.goal["program"]):
        yield f"<h3>{_escaped(program)}</h3>"
        yield from (_goal_row(row) for row in rows)
    left_out = [row.goal for row in judged if not row.ratios]
    if left_out:
        names = ", ".join(f'{goal["ours"]} / {goal["peer"]}' for goal in left_out)
        yield f"<details><summary>{len(left_out)} were not run</summary><p>{_escaped(names)}</p></details>"


def _growth(rows):
    yield "<h2>Growth</h2>"
    yield ('<p class="faint">Time over pixels or points, both logarithmic; the dashed line grows as the input does. '
           "The exponent is the least-squares slope; up to 1.1 is the goal unless a reason is given.</p>")
    yield '<div class="curves">'
    for row in rows:
        bad = ' class="bad"' if row["missed"] else ""
        exponent = f'{row["exponent"]:.2f}' if row["exponent"] is not None else "-"
        reason = f'<div class="faint">{_escaped(row["reason"])}</div>' if row["reason"] else ""
        yield (f'<figure>{svg.growth(row["times"])}<figcaption>{_escaped(row["operator"])} <b{bad}>{exponent}</b>'
               f"{reason}</figcaption></figure>")
    yield "</div>"


def _heap(rows):
    yield "<h2>Heap</h2>"
    yield ('<p class="faint">What a repeated call with the same input asks for at the largest size: blocks, bytes, and '
           "the most that it holds at once.</p>")
    yield ('<div class="wide"><table><tr><th>operator</th><th>size</th><th>time</th><th>blocks</th><th>bytes</th>'
           "<th>peak</th><th>peak for each pixel or point</th></tr>")
    for row in rows:
        if row["heap"] is None:
            continue
        largest = max(row["times"])
        blocks, taken, peak = row["heap"]
        yield (f'<tr><td>{_escaped(row["operator"])}</td><td>{count_text(largest)}</td>'
               f'<td>{_escaped(time_text(row["times"][largest]))}</td><td>{count_text(blocks)}</td>'
               f"<td>{count_text(taken)}</td><td>{count_text(peak)}</td><td>{peak / largest:.1f}</td></tr>")
    yield "</table></div>"


def text_of(judged, growth_rows, machine, runs):
    """The whole page; `machine` says in one line what was measured on and when."""
    parts = ['<!DOCTYPE html><html lang="en"><head><meta charset="utf-8">',
             '<meta name="viewport" content="width=device-width, initial-scale=1"><title>Benchmarks</title>',
             f"<style>{svg.COLOURS}{svg.CLASSES}{STYLE}</style></head><body>",
             f'<h1>Benchmarks</h1><p class="faint">{_escaped(machine)}</p><p>{totals(judged, runs)}.</p>']
    parts += _goals(judged)
    if growth_rows:
        parts += _growth(growth_rows)
        parts += _heap(growth_rows)
    parts.append("</body></html>\n")
    return "\n".join(parts)
