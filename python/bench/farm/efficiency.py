"""How well two workers are used, and what measuring in Python costs over C++.

    PYTHONPATH=BUILD/python python3 python/bench/farm/efficiency.py [workers | loops] [--pictures N] [--rounds N]
        [--loop BUILD/bin/farm_loop]

On a machine with other work pictures a second tell nothing. So efficiency is occupancy (the share of the clock that workers
are within batches, between the first batch and the last) times the share of the workers' processor time that is
measuring, both inside one run; and Python over C++ is processor time of processes that take turns with farm_loop.
"""
from __future__ import annotations

import argparse
import json
import statistics
import subprocess
import sys
import tempfile
import time
from collections.abc import Iterator, Sequence
from contextlib import contextmanager
from pathlib import Path
from typing import Any

import scene

from orxfunctions import batch, files
from orxfunctions.batch import _inspections, _measure, _window
from orxfunctions.batch._cluster import ClusterEngine


class Watched(ClusterEngine):
    """Keeps when batches came back, for how long workers were busy, and what processor time they took."""

    def __init__(self, *arguments: Any, **options: Any) -> None:
        super().__init__(*arguments, **options)
        self.outcomes: list[tuple[float, float, int]] = []

    def finished(self, seconds: float) -> list[_window.Outcome]:
        found = super().finished(seconds)
        self.outcomes += [(time.perf_counter(), outcome.seconds, len(outcome.rows)) for outcome in found]
        return found

    def processor_seconds(self) -> float:
        """Of all workers, their threads and what these wait for included."""
        return sum(self._client.run(time.process_time).values())

    def close(self, *, now: bool) -> None:
        if not hasattr(self, "used") and self._client is not None and not now:
            self.used = self.processor_seconds()
        super().close(now=now)


@contextmanager
def watched(workers: int, inspection: _inspections.Inspection) -> Iterator[Watched]:
    engine = Watched(_inspections.packed(inspection), inspection.fingerprint, _measure.Bounds(), workers=workers, tell=print)
    try:
        yield engine
    finally:
        engine.close(now=False)


def occupancy(workers: int, pictures: Sequence[str]) -> dict[str, float]:
    """Shares of the clock and of the processor, from one run."""
    inspection = _inspections.inspection_of(scene.inspect, version="1")
    rows: list[batch.Row] = []

    class Pot:
        def done(self, what: Any, asked: Any, *, failed_too: bool = True) -> set[batch.Picture]:
            return set()

        def write(self, what: Any, some: Sequence[batch.Row]) -> None:
            rows.extend(some)

        def export(self, path: str) -> None:
            raise NotImplementedError

        def close(self) -> None:
            pass

    with watched(workers, inspection) as engine:
        # Workers load what they need with a first batch of their own.
        window = _window.Window(inspection, (batch.Picture(name, 1, 1) for name in pictures), engine, Pot(),
                                _window.BatchSize(1.0), failed_too=True, stopped=lambda: False, told=lambda counts: None)
        before = engine.processor_seconds()
        window.run()
        used = engine.processor_seconds() - before
    # Only while there was work for all: from the first result to the last that left a full window behind.
    skip = 2 * workers
    start, end = engine.outcomes[skip - 1][0], engine.outcomes[-2 * workers][0]
    busy = sum(seconds for _, seconds, _ in engine.outcomes[skip:len(engine.outcomes) - 2 * workers + 1])
    measuring = sum(row.seconds for row in rows)
    return {"occupancy": busy / (workers * (end - start)), "pictures": sum(seconds for _, seconds, _ in engine.outcomes),
            "measuring": measuring, "processor": used}


def main() -> None:
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("what", nargs="?", choices=("workers", "loops"), help="only this")
    parser.add_argument("--pictures", type=int, default=2000)
    parser.add_argument("--rounds", type=int, default=5)
    parser.add_argument("--loop", type=Path, help="the program farm_loop of the build with benchmarks")
    parser.add_argument("--measure", choices=("batch", "plain"), help=argparse.SUPPRESS)
    given = parser.parse_args()
    if given.measure:
        print(json.dumps(loop_here(sys.stdin.read().splitlines(), given.measure == "plain")))
        return
    with tempfile.TemporaryDirectory() as folder:
        scene.write_pictures(Path(folder), given.pictures)
        names = sorted(map(str, Path(folder).glob("*.png")))
        shares = {}
        for workers in (1, 2) if given.what != "loops" else ():
            told = occupancy(workers, names)
            shares[workers] = told["occupancy"] * told["measuring"] / told["pictures"]
            print(f"{workers} workers: inside batches {told['occupancy']:.4f} of the clock, of that in pictures "
                  f"{told['measuring'] / told['pictures']:.4f}; processor time of the worker processes "
                  f"{1e3 * told['processor'] / len(names):.2f} ms a picture", flush=True)
        if shares:
            print(f"efficiency 1 to 2 workers: {shares[2] / shares[1]:.4f}; of two workers' clock {shares[2]:.4f} is measuring")
        if given.what != "workers":
            compare(names[:400], given.rounds, given.loop)


def loop_here(names: Sequence[str], plain: bool) -> dict[str, float]:
    """Processor time and the sum of what was measured: of this package's loop, or of the calls alone."""
    _measure.prepare_process()
    inspection = _inspections.inspection_of(scene.inspect, version="1")
    total, bounds = 0.0, _measure.Bounds()
    start = 0.0
    for number, name in enumerate([names[0], *names]):
        if number == 1:  # what is loaded with the first picture belongs to no picture
            start, total = time.process_time(), 0.0
        if plain:
            with open(name, "rb") as file:
                told = scene.inspect(files.decode_picture(file.read()))
        else:
            told = json.loads(_measure.measured(inspection, batch.Picture(name, 1, 1), bounds).record)
        total += told["level"] + sum(told["radii"])
    return {"seconds": time.process_time() - start, "sum": total}


def compare(names: Sequence[str], rounds: int, loop: Path | None) -> None:
    """Processor time a picture of new processes that take turns: this package's loop, the calls alone, and C++."""
    commands = {"ours": [sys.executable, __file__, "--measure", "batch"],
                "Python": [sys.executable, __file__, "--measure", "plain"]}
    if loop:
        commands["C++"] = [str(loop)]
    runs: dict[str, list[float]] = {name: [] for name in commands}
    for _ in range(rounds):
        sums = []
        for name, command in commands.items():
            told = json.loads(subprocess.run(command, input="\n".join(names), check=True, text=True,
                                             capture_output=True).stdout)
            runs[name].append(told["seconds"])
            sums.append(told["sum"])
        if max(sums) - min(sums) > 1e-5 * max(sums):  # C++ prints six digits
            raise SystemExit(f"they do not measure the same: {sums}")
    for name in list(commands)[1:]:
        ratios = [ours / theirs for ours, theirs in zip(runs["ours"], runs[name])]
        print(f"batch over a loop in {name}: {statistics.median(ratios):.3f} by rounds ({min(ratios):.3f} to "
              f"{max(ratios):.3f}), {min(runs['ours']) / min(runs[name]):.3f} by the shortest; "
              f"{1e3 * min(runs[name]) / len(names):.2f} ms a picture there")


if __name__ == "__main__":
    main()
