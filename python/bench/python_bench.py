"""What the Python package costs over C++, and over what users would take instead.

    PYTHONPATH=BUILD/python python3 python/bench/python_bench.py [--quick] [--output FILE]

Each row is measured in rounds that take turns with those of its peer, on the same arrays, in processor time of the thread
(starts of processes and two threads: in real time, for an idle machine). Written in the form of Google Benchmark's results,
one run for each round, so that `scripts/bench` prints the goals beside them. scikit-image is left out where it is missing.
"""
from __future__ import annotations

import argparse
import json
import statistics
import subprocess
import sys
import threading
import time
from pathlib import Path
from typing import Any, Callable, Dict, List, Tuple

import _plain_calls as plain
import numpy as np
from numpy.typing import NDArray

import orxfunctions
from orxfunctions import _core, analysis, fitting

Seconds = Callable[[], float]


def scene(rows: int, columns: int) -> NDArray[np.uint8]:
    """Disks in rows, blurred at their rims, and a little noise."""
    y, x = np.mgrid[:rows, :columns]
    inside = 30.0 - np.hypot((x % 100) - 49.3, (y % 100) - 50.6)
    levels = 40.0 + 80.0 * (1.0 + np.tanh(1.2 * inside)) + np.random.default_rng(2).normal(0.0, 2.0, (rows, columns))
    return np.asarray(np.clip(np.rint(levels), 0, 255), np.uint8)


def circle(count: int, outliers: float = 0.0) -> NDArray[np.float64]:
    random = np.random.default_rng(3)
    angles = random.uniform(0.0, 2.0 * np.pi, count)
    points = np.stack([320.0 + 100.0 * np.cos(angles), 240.0 + 100.0 * np.sin(angles)], axis=1)
    points += random.normal(0.0, 0.1, points.shape)
    wild = int(outliers * count)
    points[:wild] = random.uniform((200.0, 120.0), (440.0, 360.0), (wild, 2))
    return np.asarray(points)


def processor(call: Callable[[], Any], calls: int) -> Seconds:
    def seconds() -> float:
        start = time.thread_time()
        for _ in range(calls):
            call()
        return (time.thread_time() - start) / calls
    return seconds


def real_on_threads(call: Callable[[], Any], calls: int, threads: int) -> Seconds:
    """Seconds until each of the threads has made its calls."""
    def work() -> None:
        for _ in range(calls):
            call()

    def seconds() -> float:
        workers = [threading.Thread(target=work) for _ in range(threads)]
        start = time.perf_counter()
        for worker in workers:
            worker.start()
        for worker in workers:
            worker.join()
        return time.perf_counter() - start
    return seconds


def start_of(code: str) -> Seconds:
    def seconds() -> float:
        start = time.perf_counter()
        subprocess.run([sys.executable, "-c", code], check=True)
        return time.perf_counter() - start
    return seconds


def rows() -> Dict[str, Seconds]:
    orxfunctions.set_threads(1)  # what a call costs, and what two threads of Python gain
    vga, large = scene(480, 640), scene(1944, 2592)
    points, many, wild = circle(200), circle(2000), circle(2000, 0.3)
    measured: Dict[str, Seconds] = {}
    for name, image, calls in (("VGA", vga, 40), ("5MP", large, 4)):
        measured[f"python/threshold/{name}"] = processor(lambda image=image: analysis.threshold_level(image), 10 * calls)
        measured[f"cpp/threshold/{name}"] = lambda image=image, calls=calls: plain.threshold(image, 10 * calls)
        measured[f"python/edges/{name}"] = processor(lambda image=image: analysis.edges(image), calls)
        measured[f"cpp/edges/{name}"] = lambda image=image, calls=calls: plain.edges(image, calls)
    for name, some, calls in (("200", points, 8000), ("2000", many, 2000)):
        measured[f"python/fit_circle/{name}"] = processor(lambda some=some: fitting.fit_circle(some), calls)
        measured[f"cpp/fit_circle/{name}"] = lambda some=some, calls=calls: plain.fit_circle(some, calls)
    measured["python/find_circle/2000"] = processor(lambda: fitting.find_circle(wild), 400)
    measured["cpp/find_circle/2000"] = lambda: plain.find_circle(wild, 400)
    start, end = (20.0, 50.0), (80.0, 50.0)
    measured["python/caliper/60x5"] = processor(lambda: analysis.caliper(vga, start, end, width=5.0), 2000)
    measured["core/caliper/60x5"] = processor(lambda: _core.caliper(vga, start, end, 5.0, (1.0, 10.0, 0, 0)), 2000)
    measured["cpp/caliper/60x5"] = lambda: plain.caliper(vga, start, end, 5.0, 2000)
    tiny = vga[:4, :4]
    measured["typed/threshold"] = processor(lambda: analysis.threshold_level(tiny), 20_000)
    measured["core/threshold"] = processor(lambda: _core.threshold_level(tiny, 0), 20_000)
    measured["threads/one/threshold"] = real_on_threads(lambda: analysis.threshold_level(large), 60, 1)
    measured["threads/two/threshold"] = real_on_threads(lambda: analysis.threshold_level(large), 60, 2)
    measured["threads/one/edges"] = real_on_threads(lambda: analysis.edges(vga), 40, 1)
    measured["threads/two/edges"] = real_on_threads(lambda: analysis.edges(vga), 40, 2)
    measured["start/numpy"] = start_of("import numpy")
    measured["start/orxfunctions"] = start_of("from orxfunctions import analysis, fitting")
    measured.update(peers(large, wild))
    return measured


def peers(large: NDArray[np.uint8], wild: NDArray[np.float64]) -> Dict[str, Seconds]:
    """What users of scikit-image have."""
    try:
        from skimage import feature, measure
    except ImportError:
        print("scikit-image is not installed: its rows are left out", file=sys.stderr)
        return {}

    def canny() -> None:
        measure.find_contours(feature.canny(large, sigma=1.0).astype(float), 0.5)

    def consensus() -> None:
        measure.ransac(wild, measure.CircleModel, min_samples=3, residual_threshold=2.0, max_trials=100)

    return {"skimage/edges/5MP": processor(canny, 1), "skimage/find_circle/2000": processor(consensus, 2)}


def measure_in_turns(measured: Dict[str, Seconds], rounds: int) -> List[Tuple[str, float]]:
    runs = []
    for number in range(rounds):
        for name, seconds in measured.items():
            if name.startswith("skimage/") and number > 2:
                continue  # seconds each
            runs.append((name, seconds()))
            print(f"\r{number + 1} of {rounds}: {name:<32}", end="", file=sys.stderr, flush=True)
    print(file=sys.stderr)
    return runs


def with_overhead(runs: List[Tuple[str, float]]) -> List[Tuple[str, float]]:
    """The typed layer's own time, as the difference of rounds that follow each other; and a microsecond to compare it to."""
    typed = [seconds for name, seconds in runs if name == "typed/threshold"]
    core = [seconds for name, seconds in runs if name == "core/threshold"]
    own = statistics.median(a - b for a, b in zip(typed, core))
    return runs + [("typed/own_time", own), ("limit/one_microsecond", 1e-6)]


def main() -> None:
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--quick", action="store_true", help="three rounds in place of nine")
    parser.add_argument("--output", type=Path, help="a file for the results; else they are only printed")
    arguments = parser.parse_args()
    runs = with_overhead(measure_in_turns(rows(), 3 if arguments.quick else 9))
    for name in dict.fromkeys(name for name, _ in runs):
        times = [seconds for run, seconds in runs if run == name]
        print(f"{name:<28} {1e3 * statistics.median(times):12.4f} ms, shortest {1e3 * min(times):12.4f}")
    if arguments.output:
        results = [{"run_name": name, "name": name, "run_type": "iteration", "cpu_time": 1e9 * seconds,
                    "real_time": 1e9 * seconds, "time_unit": "ns"} for name, seconds in runs]
        arguments.output.write_text(json.dumps({"benchmarks": results}, indent=1), encoding="utf-8")


if __name__ == "__main__":
    main()
