"""Workers, clients and schedulers that end in the middle, and machines that are not alike."""
from __future__ import annotations

import itertools
import os
import shutil
import signal
import sqlite3
import subprocess
import sys
import time
import warnings
from collections.abc import Callable, Iterator
from pathlib import Path
from typing import Any

import pytest

import orxfunctions
from orxfunctions.batch import _cluster, _local

pytest.importorskip("cv2")
pytest.importorskip("distributed")
inspections = pytest.importorskip("batch_inspections")
INSPECTION = f"{Path(__file__).resolve().parent / 'batch_inspections.py'}:slow"
PICTURES = 300
# A machine that says nothing any more is given up soon.
ENVIRONMENT = {**os.environ, "DASK_DISTRIBUTED__COMM__TIMEOUTS__TCP": "12s",
               "DASK_DISTRIBUTED__COMM__TIMEOUTS__CONNECT": "5s"}


@pytest.fixture
def pictures(tmp_path: Path) -> Path:
    for number in range(PICTURES):
        inspections.write_picture(tmp_path / "pictures" / f"{number}.png", number)
    return tmp_path / "pictures"


def count_of(store: Path) -> int:
    try:
        with sqlite3.connect(f"file:{store}?mode=ro", uri=True) as base:
            return int(base.execute("SELECT count(*) FROM results").fetchone()[0])
    except sqlite3.Error:
        return 0


def statuses_of(store: Path) -> list[str]:
    with sqlite3.connect(store) as base:
        rows = base.execute("SELECT path, status FROM results").fetchall()
    assert len({path for path, _ in rows}) == len(rows) == PICTURES
    return [status for _, status in rows]


def wait_for(what: Callable[[], Any], seconds: float = 40.0) -> None:
    until = time.monotonic() + seconds
    while not what():
        assert time.monotonic() < until, "nothing came"
        time.sleep(0.05)


def workers_below(process: int) -> list[int]:
    """Processes started by one, and by those, that measure."""
    children: dict[int, list[int]] = {}
    lines: dict[int, str] = {}
    for folder in Path("/proc").glob("[0-9]*"):
        try:
            pid, parent = int(folder.name), int((folder / "stat").read_text().rsplit(")", 1)[1].split()[1])
            lines[pid] = (folder / "cmdline").read_text().replace("\0", " ")
        except (OSError, IndexError):
            continue  # it has ended
        children.setdefault(parent, []).append(pid)
    below, todo = [], [process]
    while todo:
        todo += children.get(todo[0], [])
        below.append(todo.pop(0))
    return [pid for pid in below[1:] if "_local_worker" in lines.get(pid, "")]


class Programs:
    """Programs of a test, in the network namespace of a machine, or all on this one; ended with the test."""

    def __init__(self, folder: Path, machines: dict[str, str]) -> None:
        self.folder, self.machines = folder, machines
        self.running: list[subprocess.Popen[str]] = []

    def start(self, machine: str, *arguments: Any, path: str = "") -> subprocess.Popen[str]:
        prefix = ["ip", "netns", "exec", machine] if self.machines else []
        found = str(Path(orxfunctions.__file__).parent.parent)
        environment = {**ENVIRONMENT, "PYTHONPATH": os.pathsep.join(filter(None, (path, found)))}
        log = open(self.folder / f"log-{len(self.running)}.txt", "w", encoding="utf-8")
        process = subprocess.Popen([*prefix, sys.executable, *map(str, arguments)], stdout=log, stderr=log, text=True,
                                   env=environment, start_new_session=True)
        log.close()
        self.running.append(process)
        return process

    def log(self, process: subprocess.Popen[str]) -> str:
        return (self.folder / f"log-{self.running.index(process)}.txt").read_text(encoding="utf-8")

    def end(self, process: subprocess.Popen[str], number: int = signal.SIGKILL) -> None:
        try:
            os.killpg(process.pid, number)
        except ProcessLookupError:
            pass
        process.wait(timeout=30)

    def scheduler(self, port: int) -> subprocess.Popen[str]:
        return self.start("orx-scheduler", "-m", "distributed.cli.dask_scheduler", "--host", self.host("orx-scheduler"),
                          "--port", port, "--no-dashboard", "--no-show")

    def worker(self, machine: str, port: int, path: str = "") -> subprocess.Popen[str]:
        address = f"tcp://{self.host('orx-scheduler')}:{port}"
        return self.start(machine, "-m", "distributed.cli.dask_worker", address, "--host", self.host(machine), "--nthreads", 1,
                          "--no-dashboard", "--local-directory", self.folder, path=path)

    def host(self, machine: str) -> str:
        return self.machines.get(machine, "127.0.0.1")

    def client(self, pictures: Path, store: Path, port: int) -> subprocess.Popen[str]:
        return self.start("orx-client", "-m", "orxfunctions.batch", INSPECTION, pictures, store, "--cluster",
                          f"tcp://{self.host('orx-scheduler')}:{port}", "--batch-seconds", "0.1", "--patience", "90")


@pytest.fixture
def programs(tmp_path: Path) -> Iterator[Programs]:
    programs = Programs(tmp_path, {})
    yield programs
    for process in programs.running:
        programs.end(process)


@pytest.fixture
def machines(tmp_path: Path) -> Iterator[Programs]:
    """Four machines on a switch, each a network namespace of its own; with 5 ms on the way where the kernel can."""
    if os.geteuid() != 0 or shutil.which("ip") is None:
        pytest.skip("network namespaces want root, and the program ip")
    names = ["orx-scheduler", "orx-client", "orx-worker1", "orx-worker2"]

    def run(*words: str) -> int:
        return subprocess.run(words, capture_output=True).returncode

    def clear() -> None:
        for name in [*names, "orx-switch"]:
            run("ip", "netns", "del", name)

    clear()
    if run("ip", "netns", "add", "orx-switch"):
        pytest.skip("this kernel, or this container, makes no network namespaces")
    run("ip", "-n", "orx-switch", "link", "add", "switch", "type", "bridge")
    run("ip", "-n", "orx-switch", "link", "set", "switch", "up")
    delayed = True
    for number, name in enumerate(names, 1):
        run("ip", "netns", "add", name)
        run("ip", "-n", name, "link", "add", "net", "type", "veth", "peer", "name", f"port{number}", "netns", "orx-switch")
        run("ip", "-n", name, "addr", "add", f"10.213.0.{number}/24", "dev", "net")
        for place, device in ((name, "lo"), (name, "net"), ("orx-switch", f"port{number}")):
            run("ip", "-n", place, "link", "set", device, "up")
        if run("ip", "-n", "orx-switch", "link", "set", f"port{number}", "master", "switch"):
            clear()
            pytest.skip("this kernel has no bridge")
        delayed = delayed and not run("ip", "netns", "exec", name, "tc", "qdisc", "add", "dev", "net", "root", "netem",
                                      "delay", "5ms")
    if not delayed:
        warnings.warn("this kernel has no netem: the network of this test is without delays")
    programs = Programs(tmp_path, {name: f"10.213.0.{number}" for number, name in enumerate(names, 1)})
    yield programs
    for process in programs.running:
        programs.end(process)
    clear()


_ports = itertools.count(20_000 + os.getpid() % 10_000)


def test_killed_workers_and_a_killed_client_lose_nothing(pictures: Path, tmp_path: Path, programs: Programs) -> None:
    store = tmp_path / "results.sqlite"
    command: list[Any] = ["-m", "orxfunctions.batch", INSPECTION, pictures, store, "--workers", 2, "--batch-seconds", "0.1"]
    inspections.write_picture(pictures / "7.png", 7, inspections.ABORTS)  # no trouble for this inspection
    client = programs.start("", *command)
    for kept in (20, 60):
        wait_for(lambda: count_of(store) > kept or client.poll() is not None)
        workers = workers_below(client.pid)
        if workers:
            os.kill(workers[0], signal.SIGKILL)
    wait_for(lambda: count_of(store) > 120 or client.poll() is not None)
    programs.end(client)
    kept = count_of(store)
    assert 120 < kept < PICTURES, programs.log(client)
    command[command.index("--workers") + 1] = 1  # quicker to start
    again = programs.start("", *command)
    assert again.wait(timeout=90) == 0, programs.log(again)
    assert f"{PICTURES - kept} measured" in programs.log(again) and f"{kept} had results before" in programs.log(again)
    assert set(statuses_of(store)) == {"ok"}


def test_workers_that_are_killed_as_they_start_are_started_again(pictures: Path, tmp_path: Path, programs: Programs) -> None:
    store = tmp_path / "results.sqlite"
    client = programs.start("", "-m", "orxfunctions.batch", INSPECTION, pictures, store, "--workers", 2, "--batch-seconds",
                            "0.1")
    killed: set[int] = set()
    for pause in (0.0, 0.3, 0.6):  # before anything is loaded, and on the way
        wait_for(lambda: client.poll() is not None or set(workers_below(client.pid)) - killed)
        time.sleep(pause)
        for pid in set(workers_below(client.pid)) - killed:
            os.kill(pid, signal.SIGKILL)
            killed.add(pid)
    assert count_of(store) == 0 and len(killed) >= 3
    assert client.wait(timeout=40) == 0, programs.log(client)
    assert statuses_of(store) == ["ok"] * PICTURES and "Traceback" not in programs.log(client)


def test_workers_that_end_when_all_is_handed_out_are_started_again(pictures: Path, tmp_path: Path, programs: Programs) -> None:
    (tmp_path / "once.py").write_text(
        "import os, signal\ndef inspect(image):\n    for number in range(2):\n        try:\n"
        f"            os.close(os.open(f'{tmp_path}/{{number}}', os.O_CREAT | os.O_EXCL))\n        except FileExistsError:\n"
        "            continue\n        os.kill(os.getpid(), signal.SIGKILL)\n    return {}\n", encoding="utf-8")
    store = tmp_path / "results.sqlite"
    client = programs.start("", "-m", "orxfunctions.batch", tmp_path / "once.py", f"{pictures}/1*.png", store, "--workers", 2)
    assert client.wait(timeout=40) == 0, programs.log(client)
    assert "111 measured" in programs.log(client) and (tmp_path / "1").exists()


def test_workers_that_never_start_end_the_run(monkeypatch: pytest.MonkeyPatch) -> None:
    monkeypatch.setattr(_local, "_PROGRAM", "import sys; sys.exit(3)")
    monkeypatch.setattr(_local, "_PAUSE_SECONDS", 0.01)
    workers = _local.LocalWorkers("tcp://127.0.0.1:9", 2)

    def tended() -> None:
        until = time.monotonic() + 20
        while time.monotonic() < until:
            workers.tend([])
            time.sleep(0.01)

    with pytest.raises(orxfunctions.batch.BatchError, match=r"before they can measure: 8 in a row, .* \(exit code 3\)"):
        tended()
    workers.close(now=True)


def other_version(folder: Path) -> str:
    """A folder for PYTHONPATH that makes the package say that it is of another version."""
    folder.mkdir()
    (folder / "sitecustomize.py").write_text("from orxfunctions import _core\n_core.__version__ = '0.0.1'\n")
    return str(folder)


def test_a_scheduler_comes_back_and_a_worker_of_another_version_is_left_out(
        pictures: Path, tmp_path: Path, programs: Programs) -> None:
    store, port = tmp_path / "results.sqlite", next(_ports)
    scheduler = programs.scheduler(port)
    other = other_version(tmp_path / "other")
    wrong = programs.worker("", port, other)
    client = programs.client(pictures, store, port)
    wait_for(lambda: "is left out" in programs.log(client) or client.poll() is not None)
    workers = [programs.worker("", port)]
    wait_for(lambda: count_of(store) > 50 or client.poll() is not None)
    programs.worker("", port, other)
    for process in (scheduler, *workers):
        programs.end(process)
    wait_for(lambda: "is gone; waiting" in programs.log(client))
    assert 50 < count_of(store) < PICTURES, programs.log(client)
    programs.scheduler(port)
    programs.worker("", port)
    assert client.wait(timeout=90) == 0, programs.log(client)
    told = programs.log(client)
    assert told.count("is left out: orxfunctions 0.0.1 there, ") == 1 and "is back" in told and "Traceback" not in told
    assert statuses_of(store) == ["ok"] * PICTURES
    # Sent away for good: it ends, and no nanny starts it again.
    assert wrong.wait(timeout=20) == 0 and programs.log(wrong).count("Registered to") == 1


def test_a_cluster_of_another_version_alone_ends_the_run(pictures: Path, tmp_path: Path, programs: Programs,
                                                         monkeypatch: pytest.MonkeyPatch) -> None:
    monkeypatch.setattr(_cluster, "_PATIENCE_WITHOUT_WORKERS", 1.0)
    port = next(_ports)
    programs.scheduler(port)
    programs.worker("", port, other_version(tmp_path / "other"))
    wait_for(lambda: "Register worker" in programs.log(programs.running[0]))
    with pytest.raises(orxfunctions.batch.BatchError, match="no worker at .* can measure: orxfunctions 0.0.1 there, "):
        orxfunctions.batch.run(inspections.slow, pictures, tmp_path / "results.sqlite", cluster=f"tcp://127.0.0.1:{port}",
                               progress=False)
    assert count_of(tmp_path / "results.sqlite") == 0


def test_machines_measure_together_and_one_that_is_cut_off_is_done_without(pictures: Path, tmp_path: Path,
                                                                           machines: Programs) -> None:
    store, port = tmp_path / "results.sqlite", 8786
    machines.scheduler(port)
    for name in ("orx-worker1", "orx-worker2"):
        machines.worker(name, port)
    wait_for(lambda: machines.log(machines.running[0]).count("Register worker") == 2)
    client = machines.client(pictures, store, port)
    wait_for(lambda: count_of(store) > 50 or client.poll() is not None)
    subprocess.run(["ip", "-n", "orx-worker2", "link", "set", "net", "down"], check=True)
    assert client.wait(timeout=120) == 0, machines.log(client)
    assert statuses_of(store) == ["ok"] * PICTURES


def test_pictures_that_another_machine_does_not_see_are_no_results(pictures: Path, tmp_path: Path,
                                                                   machines: Programs) -> None:
    store, port = tmp_path / "results.sqlite", 8786
    machines.scheduler(port)
    # A machine whose folder of pictures is empty: something else is mounted there.
    mount = ["mount", "-t", "tmpfs", "none", str(pictures)]
    (tmp_path / "hide.py").write_text(f"import subprocess, sys\nsubprocess.run({mount}, check=True)\n"
                                      "from distributed.cli.dask_worker import main\nsys.exit(main())\n")
    if subprocess.run(["unshare", "-m", *mount], capture_output=True).returncode:
        pytest.skip("nothing can be mounted here")
    worker = machines.start("orx-worker1", "-c", "import os, sys; os.execvp('unshare', ['unshare', '-m', sys.executable] + "
                            "sys.argv[1:])", tmp_path / "hide.py", f"tcp://10.213.0.1:{port}", "--host", "10.213.0.3",
                            "--nthreads", 1, "--no-dashboard", "--no-nanny", "--local-directory", tmp_path)
    client = machines.client(pictures, store, port)
    assert client.wait(timeout=60) == 1, machines.log(client)
    assert "every machine must see the pictures under the same names" in machines.log(client), machines.log(worker)
    assert count_of(store) == 0
