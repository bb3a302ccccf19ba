"""Ten thousand pictures while everything that can end does: every picture has one row at the end, and the right one.

    PYTHONPATH=BUILD/python python3 python/bench/farm/kills.py [--pictures N] [--kills N] [--seed N]

A scheduler, two workers and a client, each a process of its own. At random moments one of them is killed by SIGKILL and
started again, or the store is locked for two seconds; among the pictures are broken ones and some that end their process.
The time is compared with that of the same run without disturbance, just before.
"""
from __future__ import annotations

import argparse
import os
import random
import signal
import socket
import sqlite3
import subprocess
import sys
import tempfile
import time
from collections import Counter
from pathlib import Path

import scene

HERE = Path(__file__).resolve().parent


def write_pictures(folder: Path, count: int) -> dict[str, str]:
    """The pictures; the names of the bad ones, and what their reason must say."""
    scene.write_pictures(folder, count, rows=48, columns=64)
    bad = {}
    names = sorted(folder.glob("*.png"))
    for number, path in enumerate(names):
        if number % 500 == 123:
            path.write_bytes(path.read_bytes()[:200])
            bad[path.name] = "end chunk is missing"
        elif number % 1000 == 456:
            image = scene.disks(number, 48, 64)
            image[0, 0] = 251 if number % 2000 == 456 else 252
            scene.cv2.imwrite(str(path), image)
            bad[path.name] = "SIGABRT" if image[0, 0] == 251 else "ValueError: poison"
    return bad


class Farm:
    """The processes of a run; what is killed is started again."""

    def __init__(self, folder: Path, pictures: Path, store: Path) -> None:
        with socket.socket() as found:
            found.bind(("127.0.0.1", 0))
            self.port = found.getsockname()[1]
        self.folder, self.pictures, self.store = folder, pictures, store
        self.running: dict[str, subprocess.Popen[bytes]] = {}
        self.starts = 0
        for name in ("scheduler", "worker1", "worker2", "client"):
            self.start(name)

    def start(self, name: str) -> None:
        address = f"tcp://127.0.0.1:{self.port}"
        command = {
            "scheduler": ["-m", "distributed.cli.dask_scheduler", "--host", "127.0.0.1", "--port", str(self.port),
                          "--no-dashboard", "--no-show"],
            "client": ["-m", "orxfunctions.batch", f"{HERE / 'slow_inspection.py'}", str(self.pictures), str(self.store),
                       "--cluster", address, "--batch-seconds", "0.5"],
        }.get(name, ["-m", "distributed.cli.dask_worker", address, "--nthreads", "1", "--no-dashboard", "--local-directory",
                     str(self.folder)])
        self.starts += 1
        with open(self.folder / f"{name}-{self.starts}.log", "wb") as log:
            self.running[name] = subprocess.Popen([sys.executable, *command], stdout=log, stderr=log, start_new_session=True)

    def end(self, name: str) -> None:
        try:
            os.killpg(self.running[name].pid, signal.SIGKILL)
        except ProcessLookupError:
            pass
        self.running[name].wait()

    def disturb(self, what: str) -> None:
        if what == "store":
            with sqlite3.connect(self.store, isolation_level=None, timeout=10) as base:
                base.execute("BEGIN IMMEDIATE")
                time.sleep(2.0)
                base.execute("COMMIT")
            return
        self.end(what)
        self.start(what)

    def tend(self) -> bool:
        """Starts workers again that have gone with their scheduler; whether the client is still at work."""
        for name in ("scheduler", "worker1", "worker2"):
            if self.running[name].poll() is not None:
                self.start(name)
        return self.running["client"].poll() is None

    def close(self) -> None:
        for name in self.running:
            self.end(name)


def kept(store: Path) -> int:
    try:
        with sqlite3.connect(f"file:{store}?mode=ro", uri=True) as base:
            return int(base.execute("SELECT count(*) FROM results").fetchone()[0])
    except sqlite3.Error:
        return 0


def run(folder: Path, pictures: Path, store: Path, count: int, kills: list[str], chance: random.Random) -> float:
    """Seconds until every picture has its row."""
    farm = Farm(folder, pictures, store)
    start = time.monotonic()
    # Spread over the run by how far it is, so that they come as well where it is slow.
    moments = sorted(chance.uniform(0.02, 0.97) * count for _ in kills)
    try:
        while True:
            done = kept(store)
            if moments and done >= moments[0]:
                moments.pop(0)
                what = kills.pop()
                print(f"{time.monotonic() - start:6.1f} s, {done:6,} rows: {what}", flush=True)
                farm.disturb(what)
            if not farm.tend():
                if farm.running["client"].returncode not in (0, 1):
                    raise SystemExit(f"the client ended with {farm.running['client'].returncode}; see {folder}")
                if not moments:
                    return time.monotonic() - start
            if time.monotonic() - start > 1500:
                raise SystemExit(f"not done in time; see {folder}")
            time.sleep(0.2)
    finally:
        farm.close()


def check(store: Path, count: int, bad: dict[str, str]) -> None:
    with sqlite3.connect(store) as base:
        rows = base.execute("SELECT path, status, reason, record FROM results").fetchall()
    told = {os.path.basename(path): (status, reason, record) for path, status, reason, record in rows}
    wrong = Counter()
    for name, (status, reason, record) in told.items():
        expected = "failed" if name in bad else "ok"
        if status != expected or bad.get(name, "") not in reason or (status == "ok") != bool(record):
            wrong[f"{name}: {status} {reason}"] += 1
    print(f"{len(rows):,} rows of {count:,} pictures, {len(told):,} different, {len(bad)} bad ones, {len(wrong)} wrong")
    for text in list(wrong)[:10]:
        print("  ", text)
    if len(rows) != count or len(told) != count or wrong:
        raise SystemExit(1)


def main() -> None:
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--pictures", type=int, default=10_000)
    parser.add_argument("--kills", type=int, default=20)
    parser.add_argument("--seed", type=int, default=1)
    given = parser.parse_args()
    chance = random.Random(given.seed)
    folder = Path(tempfile.mkdtemp(prefix="orx-kills-"))
    bad = write_pictures(folder / "pictures", given.pictures)
    whole = run(folder, folder / "pictures", folder / "quiet.sqlite", given.pictures, [], chance)
    check(folder / "quiet.sqlite", given.pictures, bad)
    kinds = ["worker1", "worker2", "client", "scheduler", "store"]
    kills = [kinds[number % len(kinds)] for number in range(given.kills)]
    chance.shuffle(kills)
    disturbed = run(folder, folder / "pictures", folder / "disturbed.sqlite", given.pictures, kills, chance)
    check(folder / "disturbed.sqlite", given.pictures, bad)
    print(f"{whole:.1f} s without, {disturbed:.1f} s with {given.kills} disturbances: {disturbed / whole:.2f} times")


if __name__ == "__main__":
    main()
