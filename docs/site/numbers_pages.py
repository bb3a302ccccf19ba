"""The pages of numbers that are made out of this tree: their index, speed, threads."""
from __future__ import annotations

import json
import re
from itertools import groupby

import guides
import thread_words
from tree import SOURCE, TREE, write


def _speed() -> str:
    goals = json.loads((TREE / "bench" / "goals.json").read_text(encoding="utf-8"))
    lines = ["# Speed", "",
             "Speed is told as a ratio of processor times from one run: ours over that of what a host would take instead.", "",
             "![Bars of processor times, ours above those of other libraries and of OpenCV's calls](../images/benchmarks.svg)", "",
             "The picture names its machine and its day. This measures it anew, on an idle machine:", "",
             "```", "scripts/bench --peers --picture docs/images/benchmarks.svg", "```", "",
             "`build/bench/report/index.html` then has every goal beside the ratio that was reached, also those that were missed,",
             "how the time of each operator grows with its input, and what it takes from the heap. `scripts/bench --runs 3` takes",
             "the median of three runs.", "",
             "## Goals", "",
             f"The {len(goals)} goals of `bench/goals.json`: the ratio **wanted** at most, the **best** that operation counts or a",
             "measured limit allow, and that limit in words. These are goals; what was reached is in the report of a run.", ""]
    for program, rows in groupby(sorted(goals, key=lambda goal: str(goal["program"])), key=lambda goal: str(goal["program"])):
        lines += [f"### {program}", "", "| ours | beside | wanted | best | limit |", "|---|---|---|---|---|"]
        for goal in rows:
            limit = re.sub(r"([|*_<\\])", r"\\\1", goal.get("limit", ""))
            beside = f"`{goal['peer']}`" + (f" ({goal['peer_program']})" if "peer_program" in goal else "")
            clock = ", real time" if goal.get("time") == "real" else ""
            lines.append(f"| `{goal['ours']}`{clock} | {beside} | {goal['goal']} | {goal.get('excellent', '')} | {limit} |")
        lines.append("")
    return "\n".join(lines)


def _index(accuracy: list[str]) -> str:
    lines = ["# Numbers", "", "What programs of this tree measured, and what is promised.", "", "## Accuracy", "",
             "Each page: scenes whose truth is known, errors as plots, and the tables that they are drawn from. The programs that",
             "made them are in `docs/tools`.", ""]
    for page in accuracy:
        title = guides.title_of((SOURCE / f"{page}.md").read_text(encoding="utf-8"))
        lines.append(f"- [{title}](../{page}.md)")
    lines += ["", "## Speed, threads, versions", "",
              "- [Speed](performance.md): ratios to other libraries, and the command that measures them",
              "- [Which class on which thread](thread-safety.md): out of the headers",
              "- [Versions, what they promise, and where it was tried](versions.md)", "",
              "```{toctree}", ":hidden:", "",
              *(f"../{page}" for page in accuracy), "performance", "thread-safety", "versions", "```", ""]
    return "\n".join(lines)


def write_pages() -> None:
    accuracy = sorted(file.stem for file in SOURCE.glob("accuracy-*.md"))
    write("numbers/performance.md", _speed())
    write("numbers/thread-safety.md", thread_words.page())
    write("numbers/index.md", _index(accuracy))
