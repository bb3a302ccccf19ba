"""What Google Benchmark's programs wrote: one JSON file for each program in a folder."""

import json
import pathlib

TO_NS = {"ns": 1.0, "us": 1e3, "ms": 1e6, "s": 1e9}


def runs_of(folder):
    """The single runs of all programs as (program, run); aggregates and failed runs are left out."""
    for path in sorted(pathlib.Path(folder).glob("*.json")):
        for run in json.loads(path.read_text())["benchmarks"]:
            if run.get("run_type") != "aggregate" and not run.get("error_occurred"):
                yield path.stem, run


def shortest_times(folder):
    """Maps (program, benchmark name, kind of time) to the shortest time in nanoseconds."""
    times = {}
    for program, run in runs_of(folder):
        for kind in ("cpu", "real"):
            key = (program, run["run_name"], kind)
            time = run[f"{kind}_time"] * TO_NS[run["time_unit"]]
            times[key] = min(time, times.get(key, time))
    return times


def heap_uses(folder):
    """Maps (program, benchmark name) to what a call took from the heap: (blocks, bytes, peak)."""
    return {(program, run["run_name"]): (run["heap_blocks"], run["heap_bytes"], run["heap_peak"])
            for program, run in runs_of(folder) if "heap_blocks" in run}


def context_of(folder):
    """Date, cores and clock of the newest run, as Google Benchmark tells them."""
    runs = [json.loads(path.read_text()) for path in pathlib.Path(folder).glob("*_*.json")]
    contexts = [run["context"] for run in runs if "context" in run]  # Python's have none
    return max(contexts, key=lambda context: context["date"], default={})
