"""What a run costs beside measuring: batches a second through one client, memory over a million names, the store.

    PYTHONPATH=BUILD/python python3 python/bench/farm/rates.py [batches | memory | store] [--names N]

`batches`: pictures that cost nothing, through two workers of Dask: batches a second, and the processor time of client and
scheduler, which is what limits them where workers have machines of their own; the same for a picture in large batches.
`memory`: resident memory of the client while it hands out names; the largest step after the first tenth.
`store`: microseconds and bytes a row of SQLite; microseconds to list a picture in a folder.
"""
from __future__ import annotations

import argparse
import os
import tempfile
import time
from collections.abc import Iterator
from pathlib import Path

from scene import empty

from orxfunctions import batch
from orxfunctions.batch import _inspections, _pictures


def names(count: int) -> Iterator[batch.Picture]:
    """Pictures that are nowhere: nothing is read."""
    for number in range(count):
        yield batch.Picture(f"/pictures/{number // 1000:06d}/{number:09d}.png", 1, 1)


def resident() -> float:
    """Megabytes."""
    with open("/proc/self/statm", encoding="ascii") as file:
        return int(file.read().split()[1]) * os.sysconf("SC_PAGE_SIZE") / 1e6


def batches(count: int, folder: str) -> None:
    """Client and scheduler are one process here: its processor time is that of both."""
    spent = {}
    for number, (size, batches) in enumerate(((1, 1), (1, count), (1000, count // 10))):
        processor = time.process_time()
        summary = batch.run(empty, names(size * batches), f"{folder}/{number}.sqlite", workers=2, reader=str, version="1",
                            batch_size=size, progress=False, seconds=None, memory=None)
        spent[number] = time.process_time() - processor, summary.seconds
    each = (spent[1][0] - spent[0][0]) / (count - 1)
    picture = (spent[2][0] - spent[0][0] - count // 10 * each) / (1000 * (count // 10))
    print(f"start and end of two workers: {spent[0][1]:.1f} s\n"
          f"batches of one: {(count - 1) / (spent[1][1] - spent[0][1]):.0f}/s on the clock, {1 / each:.0f} per second of the "
          f"processor time of client and scheduler ({1e3 * each:.2f} ms each); {1e6 * picture:.1f} us a picture in batches of 1,000")


def memory(count: int, folder: str) -> None:
    for workers in (1, 2):
        seen: list[float] = []
        summary = batch.run(empty, names(count), f"{folder}/m{workers}.sqlite", workers=workers, reader=str, version="1",
                            progress=lambda progress: seen.append(resident()))
        late = seen[len(seen) // 10:]
        print(f"{workers} workers, {count:,} names: {seen[0]:.0f} MB at first, {max(late):.0f} at most, "
              f"grown by {max(late) - late[0]:.1f} MB after the first tenth; {summary.measured / summary.seconds:.0f} names/s")


def store(count: int, folder: str) -> None:
    what = _inspections.inspection_of(empty, version="1")
    kept = batch.open_store(f"{folder}/store.sqlite")
    record = '{"level": 127, "radii": [56.12345678, 61.12345678, 70.12345678, 55.12345678, 66.12345678, 59.12345678]}'
    spent = asked = 0.0
    pictures = list(names(count))
    for start in range(0, count, 300):
        some = pictures[start:start + 300]
        rows = [batch.Row(picture, "ok", 0.006, "", record) for picture in some]
        begun = time.process_time()
        kept.done(what, some)
        asked += time.process_time() - begun
        begun = time.process_time()
        kept.write(what, rows)
        spent += time.process_time() - begun
    kept.close()
    size = Path(f"{folder}/store.sqlite").stat().st_size
    print(f"SQLite: {1e6 * spent / count:.1f} us to write a row, {1e6 * asked / count:.1f} us to ask for it (processor), "
          f"{size / count:.0f} bytes a row")
    made = min(count, 20_000)
    for number in range(made):
        Path(folder, f"{number}.png").touch()
    begun = time.process_time()
    assert sum(1 for _ in _pictures.pictures_of(folder)) == made
    print(f"listing: {1e6 * (time.process_time() - begun) / made:.1f} us a picture (processor, files known to the system)")


def main() -> None:
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("what", nargs="?", choices=("batches", "memory", "store"))
    parser.add_argument("--names", type=int, help="how many (batches: 3,000, memory: 1,000,000, store: 100,000)")
    given = parser.parse_args()
    with tempfile.TemporaryDirectory() as folder:
        for name, measure, count in (("store", store, 100_000), ("batches", batches, 3_000), ("memory", memory, 1_000_000)):
            if given.what in (None, name):
                measure(given.names or count, folder)


if __name__ == "__main__":
    main()
