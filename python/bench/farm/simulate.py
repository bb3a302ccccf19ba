"""A simulated run of very many pictures: how large batches, how many cores, how many clients, how long.

    python3 python/bench/farm/simulate.py [--check] [--costs FILE]

Discrete events, without chance and without a clock: a client that hands out batches through a window of three for each
worker, and workers that measure them. What each step costs is in costs.json, each figure with the measurement it comes
from. Prints the tables of docs/scale.md; --check compares them with that page.
"""
from __future__ import annotations

import argparse
import heapq
import json
import sys
from pathlib import Path
from typing import NamedTuple

HERE = Path(__file__).resolve().parent
PAGE = HERE.parents[2] / "docs" / "scale.md"
MOST_EVENTS = 200_000
TABLE_BEGIN, TABLE_END = "<!-- made by python/bench/farm/simulate.py -->", "<!-- end -->"


class Costs(NamedTuple):
    """Seconds of one processor, and bytes."""

    picture: float
    """Reading and measuring a picture."""
    picture_client: float
    """Of the client for each picture: its name, asking the store, writing the row."""
    batch_client: float
    """Of client and scheduler for each batch."""
    batch_worker: float
    """Of the worker for each batch."""
    row_bytes: float
    start: float
    """Until workers measure."""
    core_hour: float
    """Money."""


class Run(NamedTuple):
    """What came of a simulated run."""

    seconds: float
    occupancy: float
    """Share of the workers' time that is measuring, of the whole run."""
    client: float
    """Share of the time that the client is busy."""


def simulate(pictures: int, workers: int, batch: int, costs: Costs) -> Run:
    """Hands batches to the worker that has been free the longest; the client does one thing at a time.

    Where there are more batches than can be gone through one by one, the steady state of the first ones is carried on.
    """
    batches = -(-pictures // batch)
    simulated = min(batches, MOST_EVENTS)
    client = costs.start
    client_busy = 0.0
    work = costs.picture * batch + costs.batch_worker
    handling = costs.batch_client + costs.picture_client * batch
    # A batch waits in the window of a worker, so that the worker begins at once; the client is asked again by each result.
    flying: list[float] = []
    free = [costs.start] * workers
    heapq.heapify(free)
    measured = 0.0
    end = half = client
    for number in range(simulated):
        if len(flying) >= 3 * workers:
            client = max(client, heapq.heappop(flying))
        client += handling
        client_busy += handling
        begin = max(client, heapq.heappop(free))
        done = begin + work
        heapq.heappush(free, done)
        heapq.heappush(flying, done)
        measured += costs.picture * batch
        end = max(end, done)
        if number == simulated // 2:
            half = client
    if simulated < batches:
        # The second half of what was gone through is free of how a run begins.
        each = (client - half) / (simulated - 1 - simulated // 2)
        more = batches - simulated
        end += each * more
        client_busy += handling * more
        measured += costs.picture * batch * more
    return Run(end, measured / (workers * end), client_busy / end)


def best_batch(workers: int, costs: Costs) -> int:
    """Pictures in a batch of 2 s, which `batch.run` comes to by itself; up to its largest."""
    return max(1, min(int(2.0 / costs.picture), 5_000))


def told(seconds: float) -> str:
    """A duration."""
    if seconds < 120:
        return f"{seconds:.0f} s"
    return f"{seconds / 60:.0f} min" if seconds < 7200 else f"{seconds / 3600:.1f} h"


def amount(count: float) -> str:
    """Bytes."""
    return f"{count / 1e9:.1f} GB" if count < 1e12 else f"{count / 1e12:.2f} TB"


def tables(costs: Costs) -> str:
    lines = ["| pictures | cores | clients (shards) | batch | store | time | workers measure | client busy | core hours "
             "| cost |", "|---|---|---|---|---|---|---|---|---|---|"]
    for exponent, cores, shards in ((6, 2, 1), (6, 100, 1), (7, 100, 1), (8, 100, 1), (8, 500, 1), (9, 100, 10), (9, 1000, 10)):
        pictures = 10**exponent
        batch = best_batch(cores // shards, costs)
        run = simulate(pictures // shards, cores // shards, batch, costs)
        hours = run.seconds * cores / 3600
        lines.append(f"| 10^{exponent} | {cores:,} | {shards} | {batch} | {amount(costs.row_bytes * pictures)} "
                     f"| {told(run.seconds)} | {100 * run.occupancy:.0f} % | {100 * run.client:.0f} % | {hours:,.0f} "
                     f"| {costs.core_hour * hours:,.0f} |")
    lines += ["", "How many cores one client keeps busy, by the time that a batch takes (10^7 pictures; share of the workers' time",
              "that is measuring):", "", "| cores | 0.05 s | 0.2 s | 1 s | 2 s | 5 s |", "|---|---|---|---|---|---|"]
    for cores in (2, 10, 50, 100, 200, 500, 1000):
        shares = [simulate(10**7, cores, max(1, round(seconds / costs.picture)), costs).occupancy
                  for seconds in (0.05, 0.2, 1.0, 2.0, 5.0)]
        lines.append(f"| {cores:,} | " + " | ".join(f"{100 * share:.0f} %" for share in shares) + " |")
    return "\n".join(lines)


def main() -> int:
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--costs", type=Path, default=HERE / "costs.json")
    parser.add_argument("--check", action="store_true", help="1 where docs/scale.md tells something else")
    parser.add_argument("--write", action="store_true", help="into docs/scale.md")
    given = parser.parse_args()
    measured = json.loads(given.costs.read_text(encoding="utf-8"))
    text = tables(Costs(**{name: told["value"] for name, told in measured.items()}))
    page = PAGE.read_text(encoding="utf-8") if given.check or given.write else ""
    if given.check or given.write:
        before, _, rest = page.partition(TABLE_BEGIN)
        _, _, after = rest.partition(TABLE_END)
        new = f"{before}{TABLE_BEGIN}\n\n{text}\n\n{TABLE_END}{after}"
        if given.check and new != page:
            print("docs/scale.md is not what simulate.py tells: run it with --write", file=sys.stderr)
            return 1
        if given.write:
            PAGE.write_text(new, encoding="utf-8")
        return 0
    print(text)
    return 0


if __name__ == "__main__":
    sys.exit(main())
