"""Many pictures: each is measured once, whatever happens to it or to its neighbours."""
from __future__ import annotations

import importlib.util
import json
import os
import platform
import signal
import sqlite3
import subprocess
import sys
import time
from collections.abc import Sequence
from pathlib import Path
from typing import Any

import numpy as np
import pytest

from orxfunctions import batch
from orxfunctions.batch import _pictures, _reading, _window
from orxfunctions.measuring import Recipe
from test_recipes import disk_recipe

cv2 = pytest.importorskip("cv2")
inspections = pytest.importorskip("batch_inspections")
HERE = Path(__file__).resolve().parent


def rows_of(path: Path) -> dict[str, tuple[str, str, str]]:
    """Name, and status, reason and record, as SQLite itself has them."""
    with sqlite3.connect(path) as base:
        found = base.execute("SELECT path, status, reason, record FROM results").fetchall()
    assert len(found) == len({row[0] for row in found})
    return {os.path.basename(name): (status, reason, record) for name, status, reason, record in found}


@pytest.fixture
def pictures(tmp_path: Path) -> Path:
    """Forty pictures in three folders."""
    for number in range(40):
        inspections.write_picture(tmp_path / "pictures" / ("", "a", "a/b")[number % 3] / f"{number}.png", number)
    (tmp_path / "pictures" / "notes.md").write_text("no picture")
    return tmp_path / "pictures"


@pytest.fixture
def troubled(pictures: Path) -> dict[str, str]:
    """Among them those to which something happens; their names and a part of the reason."""
    for name in ("ABORTS", "HANGS", "GREEDY", "RAISES", "EXITS", "NO_RECORD"):
        inspections.write_picture(pictures / f"{name}.png", 1, getattr(inspections, name))
    whole = cv2.imencode(".jpg", cv2.imread(str(pictures / "0.png")))[1].tobytes()
    png = (pictures / "0.png").read_bytes()
    for name, content in (("empty.png", b""), ("text.png", b"no picture at all"), ("cut.jpg", whole[: len(whole) // 2]),
                          ("cut.png", png[: len(png) // 2]), ("whole.jpg", whole)):
        (pictures / name).write_bytes(content)
    return {"ABORTS.png": "SIGABRT", "HANGS.png": "took longer than 2 s", "GREEDY.png": "needed more than 104,857,600 bytes",
            "RAISES.png": "KeyError: 'no such part'", "EXITS.png": "exit code 7", "NO_RECORD.png": "gave NoneType",
            "empty.png": "an empty file", "text.png": "not a picture", "cut.jpg": "end marker is missing",
            "cut.png": "end chunk is missing"}


@pytest.mark.skipif("libasan" in os.environ.get("LD_PRELOAD", ""), reason="a sanitizer has its own way to end a process")
@pytest.mark.parametrize("workers", [1, 2])
def test_what_happens_to_a_picture_does_not_happen_to_its_neighbours(
        pictures: Path, troubled: dict[str, str], tmp_path: Path, workers: int) -> None:
    if workers > 1:
        pytest.importorskip("distributed")
    store = tmp_path / "results.sqlite"
    names = [*map(str, sorted(pictures.rglob("*.[jp][pn]g"))), str(pictures / "gone.png")]
    summary = batch.run(inspections.level, names, store, workers=workers, seconds=2.0, memory=100 << 20)
    rows = rows_of(store)
    assert set(rows) == {os.path.basename(name) for name in names}
    reasons = {name: reason for name, (status, reason, _) in rows.items() if status == "failed"}
    assert set(reasons) == {*troubled, "gone.png"} and reasons["gone.png"] == "there is no such file"
    for name, words in troubled.items():
        assert words in reasons[name]
    assert (summary.measured, summary.failed, summary.skipped) == (41, 11, 0)
    record = json.loads(rows["7.png"][2])
    image = cv2.imread(str(pictures / "a" / "7.png"), cv2.IMREAD_GRAYSCALE)
    assert record["mean"] == pytest.approx(image.mean()) and record["none"] is None and record["size"] == {"rows": 48}
    again = batch.run(inspections.level, names, store, workers=1)
    assert (again.measured, again.failed, again.skipped) == (0, 0, 52)


def test_only_what_changed_is_measured_again(pictures: Path, tmp_path: Path) -> None:
    store = tmp_path / "results.sqlite"

    def measured(what: Any = inspections.level, version: str = "1", **options: Any) -> tuple[int, int]:
        summary = batch.run(what, pictures, store, workers=0, version=version, **options)
        return summary.measured, summary.failed

    assert measured() == (40, 0) and measured() == (0, 0)
    inspections.write_picture(pictures / "0.png", 100)
    (pictures / "3.png").write_bytes(b"")
    assert measured() == (1, 1) and measured() == (0, 0)
    assert measured(retry_failed=True) == (0, 1)
    assert measured(version="2") == (39, 1) and measured(mode="unchanged") == (39, 1)
    recipe = Recipe(disk_recipe())
    assert measured(recipe, "") == (39, 1) and measured(Recipe(disk_recipe()), "") == (0, 0)
    changed = disk_recipe()
    changed["values"][0]["tolerance"] = 0.6
    assert measured(Recipe(changed), "") == (39, 1)


def test_rows_are_equal_for_any_number_of_workers(pictures: Path, tmp_path: Path) -> None:
    pytest.importorskip("distributed")
    results = []
    for workers in (0, 1, 2, 4):
        store = tmp_path / f"{workers}.sqlite"
        assert batch.run(inspections.level, pictures, store, workers=workers, batch_size=3).measured == 40
        results.append(rows_of(store))
    assert results[0] == results[1] == results[2] == results[3]


def test_sources_give_the_same_pictures_lazily(pictures: Path, tmp_path: Path, monkeypatch: pytest.MonkeyPatch) -> None:
    expected = sorted(str(path) for path in pictures.rglob("*.png"))
    (pictures / ".hidden").mkdir()
    (pictures / "loop").symlink_to(pictures)
    listed = tmp_path / "names.txt"
    listed.write_text("\n".join(os.path.relpath(name, tmp_path) for name in expected) + "\n\n", encoding="utf-8")
    monkeypatch.chdir(tmp_path)
    sources: list[Any] = [pictures, "pictures", f"{pictures}/**/*.png", listed, iter(expected), map(Path, expected)]
    for source in sources:
        found = list(_pictures.pictures_of(source))
        assert sorted(picture.path for picture in found) == expected
        assert all(picture.size == os.path.getsize(picture.path) and picture.changed > 0 for picture in found)
    assert len(list(_pictures.pictures_of("pictures/a/*.png"))) == 13
    assert list(_pictures.pictures_of(pictures / "0.png")) == [_pictures.looked_up(str(pictures / "0.png"))]
    endless = _pictures.pictures_of(f"{number}.png" for number in iter(int, 1))
    assert next(endless).size == -1


def test_the_end_of_a_jpeg_is_its_own(tmp_path: Path) -> None:
    image = np.random.default_rng(1).integers(0, 255, (64, 64, 3), np.uint8)
    for options in ([], [cv2.IMWRITE_JPEG_PROGRESSIVE, 1], [cv2.IMWRITE_JPEG_RST_INTERVAL, 2]):
        whole = cv2.imencode(".jpg", image, options)[1].tobytes()
        thumbnail = b"\xff\xe1" + (len(whole) + 2).to_bytes(2, "big") + whole
        with_thumbnail = whole[:2] + thumbnail + whole[2:]
        for data in (whole, with_thumbnail, whole + b"\0" * 100):
            assert _reading.jpeg_is_whole(data)
        for data in (whole, with_thumbnail):
            assert not any(_reading.jpeg_is_whole(data[:length]) for length in range(2, len(data) - 1, 7))


def test_batches_last_as_long_as_wanted() -> None:
    size = _window.BatchSize(2.0)
    assert size.size == 32
    for _ in range(30):
        size.learn(size.size, 0.006 * size.size)
    assert 320 <= size.size <= 340
    for _ in range(30):
        size.learn(size.size, 10.0 * size.size)
    assert size.size == 1
    size.learn(0, 1.0)
    assert size.size == 1


class Pot:
    """A store of a user's own, which counts what it is asked."""

    def __init__(self) -> None:
        self.rows: dict[str, batch.Row] = {}
        self.largest = 0
        self.writes = 0

    def done(self, inspection: batch.Inspection, pictures: Sequence[batch.Picture], *,
             failed_too: bool = True) -> set[batch.Picture]:
        self.largest = max(self.largest, len(pictures))
        return {picture for picture in pictures if picture.path in self.rows}

    def write(self, inspection: batch.Inspection, rows: Sequence[batch.Row]) -> None:
        self.rows.update((row.picture.path, row) for row in rows)
        self.writes += 1

    def export(self, path: str) -> None:
        raise NotImplementedError

    def close(self) -> None:
        raise AssertionError("a store of the caller's stays open")


def test_a_store_of_ones_own_and_names_that_are_pictures() -> None:
    pot = Pot()
    seen = []

    def names() -> Any:
        for number in range(20_000):
            seen.append(number - len(pot.rows))
            yield batch.Picture(f"camera://{number % 19_000}", 1, 1)  # the last thousand are named twice

    summary = batch.run(len, names(), pot, workers=0, reader=str, version="1")
    assert summary.failed == 19_000 and "gave int, expected a dict" in pot.rows["camera://7"].reason
    assert len(pot.rows) == 19_000 and summary.skipped == 1_000
    assert pot.largest <= 500 and max(seen) < 15_000  # names are asked for as they are needed


def test_what_can_not_be_begun_is_refused(pictures: Path, tmp_path: Path) -> None:
    store = tmp_path / "results.sqlite"
    with pytest.raises(FileNotFoundError, match="there is no folder, list or picture 'nowhere'"):
        batch.run(inspections.level, "nowhere", store)
    with pytest.raises(TypeError, match="inspect: expected a function"):
        batch.run(3, pictures, store)  # type: ignore[arg-type]
    with pytest.raises(TypeError, match="store: .* list has no done, write, export, close"):
        batch.run(inspections.level, pictures, [])  # type: ignore[arg-type]
    with pytest.raises(ValueError, match="workers and cluster: expected one"):
        batch.run(inspections.level, pictures, store, workers=1, cluster="tcp://here:1")
    with pytest.raises(ValueError, match="batch_size is 0; 1 to 100000 is taken"):
        batch.run(inspections.level, pictures, store, batch_size=0)
    with pytest.raises(ValueError, match="give version="):
        batch.run(len, pictures, store)
    (tmp_path / "other.sqlite").write_bytes(b"no database, but long enough to be one " * 30)
    with pytest.raises(batch.StoreError, match="other.sqlite: .*not a database"):
        batch.run(inspections.level, pictures, tmp_path / "other.sqlite")
    with sqlite3.connect(tmp_path / "foreign.sqlite") as base:
        base.execute("CREATE TABLE mine(a)")
    with pytest.raises(batch.StoreError, match="not one of results"):
        batch.run(inspections.level, pictures, tmp_path / "foreign.sqlite")
    held = batch.open_store(store)
    with pytest.raises(batch.StoreError, match="another run writes into it"):
        batch.run(inspections.level, pictures, store)
    held.close()
    pytest.importorskip("distributed")
    with pytest.raises(batch.BatchError, match="no scheduler at tcp://127.0.0.1:9"):
        batch.run(inspections.level, pictures, store, cluster="tcp://127.0.0.1:9", patience=1.0)


def test_pictures_are_measured_without_cv2(pictures: Path, tmp_path: Path) -> None:
    (tmp_path / "rows.py").write_text("def inspect(image):\n    import sys\n    return {'cv2': 'cv2' in sys.modules}\n")
    program = ("import sys\nfrom orxfunctions import batch\n"
               "print(batch.run(*sys.argv[1:4], workers=int(sys.argv[4])).measured, 'cv2' in sys.modules)")
    for workers in (1, 2) if importlib.util.find_spec("distributed") else (1,):
        store = tmp_path / f"{workers}.sqlite"
        done = subprocess.run([sys.executable, "-c", program, tmp_path / "rows.py", pictures, store, str(workers)],
                              capture_output=True, text=True, timeout=60)
        assert done.stdout == "40 False\n", done.stderr
        assert {record for _, _, record in rows_of(store).values()} == {'{"cv2": false}'}


@pytest.mark.skipif(platform.libc_ver()[0] != "glibc" or "libasan" in os.environ.get("LD_PRELOAD", ""),
                    reason="the GNU library's, where no sanitizer stands in front of it")
def test_memory_of_a_picture_is_kept_for_the_next_one(pictures: Path, tmp_path: Path) -> None:
    (tmp_path / "faults.py").write_text("import resource\nimport numpy as np\ndef inspect(image):\n"
                                        "    held = [np.ones(1 << 20, np.uint8) for _ in range(8)]\n"
                                        "    return {'faults': resource.getrusage(resource.RUSAGE_SELF).ru_minflt}\n")
    assert batch.run(tmp_path / "faults.py", pictures, tmp_path / "results.sqlite", workers=1).measured == 40
    faults = sorted(json.loads(record)["faults"] for _, _, record in rows_of(tmp_path / "results.sqlite").values())
    assert faults[39] - faults[9] < 30 * 200  # 30 * 2048 where it is given back and taken again


def test_dask_is_asked_for_by_the_name_of_its_package(pictures: Path, tmp_path: Path,
                                                      monkeypatch: pytest.MonkeyPatch) -> None:
    modules: dict[str, Any] = sys.modules
    monkeypatch.setitem(modules, "distributed", None)
    with pytest.raises(ImportError, match="install python3-distributed"):
        batch.run(inspections.level, pictures, tmp_path / "results.sqlite", workers=2)
    assert batch.run(inspections.level, pictures, tmp_path / "results.sqlite", workers=1).measured == 40


def program(*arguments: Any) -> list[str]:
    return [sys.executable, "-m", "orxfunctions.batch", *map(str, arguments)]


def test_the_program_measures_shows_and_exports(pictures: Path, tmp_path: Path) -> None:
    recipe = tmp_path / "disk.json"
    recipe.write_text(json.dumps(disk_recipe()), encoding="utf-8")
    store, table = tmp_path / "results.sqlite", tmp_path / "results.csv"
    (pictures / "bad.png").write_bytes(b"")
    done = subprocess.run(program(recipe, pictures, store), capture_output=True, text=True, timeout=60)
    assert done.returncode == 1 and "40 measured, 40 " in done.stdout and ", 1 failed;" in done.stdout
    assert subprocess.run(program("export", store, table), timeout=60).returncode == 0
    lines = table.read_text(encoding="utf-8").splitlines()
    assert len(lines) == 42 and lines[0].startswith("inspection,version,path,size,changed,status,reason,seconds,verdict,")
    assert "diameter (px)" in lines[0] and sum("an empty file" in line for line in lines) == 1
    function = tmp_path / "mine.py"
    function.write_text("from __future__ import annotations\nfrom dataclasses import dataclass\n@dataclass\nclass Share:\n"
                        "    half: float = 0.5\ndef rows(image):\n    return {'rows': len(image) * Share().half}\n",
                        encoding="utf-8")
    assert subprocess.run(program(f"{function}:rows", pictures / "a", store, "--quiet"), timeout=60).returncode == 0
    mistakes: list[tuple[list[Any], str]] = [
        ([f"{function}:columns", pictures, store], "there is no function 'columns'"),
        ([tmp_path / "none.json", pictures, store], "none.json"),
        (["export", store, tmp_path / "table.xls"], "ends in .csv or .parquet")]
    for wrong, words in mistakes:
        refused = subprocess.run(program(*wrong), capture_output=True, text=True, timeout=60)
        assert refused.returncode == 2 and words in refused.stderr and "Traceback" not in refused.stderr


@pytest.mark.parametrize(("workers", "times"), [(1, 1), (2, 1), (1, 2)])
def test_ctrl_c_ends_after_the_batches_in_flight_and_the_run_goes_on(tmp_path: Path, workers: int, times: int) -> None:
    if workers > 1:
        pytest.importorskip("distributed")
    for number in range(300):
        inspections.write_picture(tmp_path / "pictures" / f"{number}.png", number)
    store = tmp_path / "results.sqlite"
    command = program(HERE / "batch_inspections.py:slow", tmp_path / "pictures", store, "--workers", workers)
    run = subprocess.Popen([*command, "--batch-seconds", "0.1"], stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True,
                           start_new_session=True)
    until = time.monotonic() + 30
    while time.monotonic() < until and not (store.exists() and rows_exist(store)):
        time.sleep(0.05)
    for _ in range(times):
        os.killpg(run.pid, signal.SIGINT)  # as a terminal does: all processes get it
        time.sleep(0.02)
    output, messages = run.communicate(timeout=30)
    kept = len(rows_of(store))
    assert run.returncode == 130 and ("interrupted" in output) == (times == 1) and 0 < kept < 300, messages
    assert "ending after the batches in flight" in messages and "Traceback" not in messages
    command[-1] = "1"  # quicker to start
    assert subprocess.run([*command, "--quiet"], timeout=60).returncode == 0
    rows = rows_of(store)
    assert len(rows) == 300 and {status for status, _, _ in rows.values()} == {"ok"}


def rows_exist(store: Path) -> bool:
    try:
        with sqlite3.connect(store) as base:
            return bool(base.execute("SELECT count(*) FROM results").fetchone()[0])
    except sqlite3.Error:
        return False
