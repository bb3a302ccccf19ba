"""Where results are kept, and what is shown of them: SQLite, a PostgreSQL server of this test's own, tables and pages."""
from __future__ import annotations

import csv
import importlib
import json
import os
import pwd
import re
import shutil
import signal
import sqlite3
import subprocess
import tempfile
import threading
import time
from collections.abc import Iterator
from html.parser import HTMLParser
from pathlib import Path
from typing import Any

import pytest

from orxfunctions import batch
from orxfunctions.batch import _inspections, _report

pytest.importorskip("cv2")
inspections = pytest.importorskip("batch_inspections")
LIMITS = {"mean": (61.5, 62.5)}


@pytest.fixture(scope="module")
def server() -> Iterator[str]:
    """The address of a server that listens on a socket of its own alone, as a user without rights."""
    programs = sorted(Path("/usr/lib/postgresql").glob("*/bin/initdb"))
    if not programs:
        pytest.skip("there is no server: install postgresql")
    pytest.importorskip("psycopg2", reason="there is no client: install python3-psycopg2")
    user = pwd.getpwnam("nobody") if os.geteuid() == 0 else pwd.getpwuid(os.geteuid())
    folder = tempfile.mkdtemp(prefix="orx-postgres-")
    os.chown(folder, user.pw_uid, user.pw_gid)
    options: dict[str, Any] = {"cwd": folder, "env": {"PATH": "/usr/bin", "HOME": folder, "LC_ALL": "C.UTF-8"}}
    if os.geteuid() == 0:
        options.update(user=user.pw_uid, group=user.pw_gid, extra_groups=[])
    subprocess.run([programs[-1], "-D", "data", "-A", "trust", "-U", "tester", "--no-sync"], check=True, capture_output=True,
                   **options)
    with open(os.path.join(folder, "log"), "wb") as log:
        running = subprocess.Popen([programs[-1].with_name("postgres"), "-D", "data", "-k", folder, "-c",
                                    "listen_addresses=", "-c", "fsync=off"], stdout=log, stderr=log, **options)
    try:
        until = time.monotonic() + 30
        while "ready to accept connections" not in Path(folder, "log").read_text():
            assert time.monotonic() < until and running.poll() is None, Path(folder, "log").read_text()
            time.sleep(0.05)
        yield f"postgresql://tester@/postgres?host={folder}"
    finally:
        running.send_signal(signal.SIGINT)  # without waiting for clients
        running.wait(timeout=30)
        shutil.rmtree(folder)


@pytest.fixture(params=["sqlite", "postgresql"])
def address(request: pytest.FixtureRequest, tmp_path: Path) -> str:
    if request.param == "sqlite":
        return str(tmp_path / "results.sqlite")
    address = str(request.getfixturevalue("server"))
    base = importlib.import_module("psycopg2").connect(address)
    base.cursor().execute("DROP SCHEMA IF EXISTS orx_results CASCADE")
    base.commit()
    base.close()
    return address


@pytest.fixture
def pictures(tmp_path: Path) -> Path:
    for number in range(30):
        inspections.write_picture(tmp_path / "pictures" / f"{number}.png", number)
    inspections.write_picture(tmp_path / "pictures" / "<i>raises.png", 1, inspections.RAISES)
    inspections.write_picture(tmp_path / "pictures" / "ends.png", 1, inspections.ABORTS)
    (tmp_path / "pictures" / os.fsdecode(b"\xff bytes.png")).write_bytes(b"")
    return tmp_path / "pictures"


def test_a_store_keeps_each_picture_once(address: str, pictures: Path, tmp_path: Path) -> None:
    def measured(**options: Any) -> tuple[int, int, int]:
        summary = batch.run(inspections.level, pictures, address, version="1", limits=LIMITS, **options)
        return summary.measured, summary.failed, summary.skipped

    assert measured() == (30, 3, 0) and measured() == (0, 0, 33)
    inspections.write_picture(pictures / "3.png", 50)
    assert measured() == (1, 0, 32) and measured(retry_failed=True) == (0, 3, 30)
    store = batch.open_store(address)
    assert isinstance(store, batch.ReadableStore)
    (kept,) = store.inspections()
    assert kept.name.endswith(".level") and kept.limits == LIMITS
    rows = list(store.rows(kept))
    assert len({row.picture.path for row in rows}) == len(rows) == 33
    assert [row.picture.path for row in rows] == sorted(row.picture.path for row in rows)
    assert any(row.picture.path.endswith("\\xff bytes.png") and row.reason == "an empty file" for row in rows)
    store.done(_inspections.inspection_of(inspections.level, version="1", limits=LIMITS), [])  # as a run begins
    with pytest.raises(batch.StoreError, match="another run"):
        batch.run(inspections.level, pictures, address, version="1", limits=LIMITS)
    store.export(str(tmp_path / "table.csv"))
    store.close()
    with open(tmp_path / "table.csv", newline="", encoding="utf-8") as file:
        table = list(csv.DictReader(file))
    for row, cells in zip(rows, table):
        assert cells["path"] == row.picture.path and int(cells["changed"]) == row.picture.changed
        if row.record:
            record = json.loads(row.record)
            assert float(cells["mean"]) == record["mean"] and cells["size.rows"] == "48" and cells["none"] == ""


def test_rows_are_written_all_or_none(address: str) -> None:
    what = _inspections.inspection_of(inspections.level, version="all or none")
    rows = [batch.Row(batch.Picture(f"/{number}", number, number), "ok", 0.1, "", "{}") for number in range(1200)]
    store = batch.open_store(address)
    with pytest.raises(Exception):
        store.write(what, [*rows, rows[0]._replace(record=None)])  # type: ignore[arg-type]
    pictures = [row.picture for row in rows]
    assert store.done(what, pictures) == set()
    store.write(what, rows)
    store.write(what, [rows[3]._replace(picture=batch.Picture("/3", 3, 4))])  # the file was changed
    assert store.done(what, pictures) == set(pictures) - {pictures[3]}
    assert store.done(what, pictures[:2], failed_too=False) == set(pictures[:2])
    store.close()


def test_a_store_that_is_locked_is_waited_for(pictures: Path, tmp_path: Path) -> None:
    store = tmp_path / "results.sqlite"
    batch.open_store(store).close()
    other = sqlite3.connect(store, isolation_level=None, check_same_thread=False)
    other.execute("BEGIN EXCLUSIVE")
    threading.Timer(1.5, lambda: other.execute("COMMIT")).start()
    start = time.monotonic()
    assert batch.run(inspections.level, pictures, store, version="1").measured == 30
    assert time.monotonic() - start > 1.4
    other.close()


class Checked(HTMLParser):
    """Every element that is opened is closed, and nothing comes from elsewhere."""

    def __init__(self) -> None:
        super().__init__()
        self.open: list[str] = []
        self.seen: list[str] = []

    def handle_starttag(self, tag: str, attributes: list[tuple[str, Any]]) -> None:
        self.seen.append(tag)
        for name, value in attributes:
            assert name not in ("href", "srcset") and (name != "src" or value.startswith("data:image/jpeg;base64,"))
        if tag not in ("meta", "img", "br", "rect", "line", "polygon", "polyline"):
            self.open.append(tag)

    def handle_endtag(self, tag: str) -> None:
        if tag not in ("rect", "line", "polygon", "polyline"):
            assert self.open.pop() == tag


def test_the_page_shows_counts_charts_and_bad_parts(pictures: Path, tmp_path: Path) -> None:
    store = tmp_path / "results.sqlite"
    batch.run(inspections.level, pictures, store, version="<1>", limits=LIMITS, workers=1)
    opened = batch.open_store(store, writing=False)
    _report.write_page(opened, str(tmp_path / "page.html"))
    text = (tmp_path / "page.html").read_text(encoding="utf-8")
    page = Checked()
    page.feed(text)
    assert not page.open and page.seen.count("svg") == 2 * 3  # level, mean, size.rows
    # What ends its process is shown, too: it is read by another one.
    assert page.seen.count("img") == text.count('<figure><img') == text.count("<figure>") - 1
    assert "&lt;i&gt;raises.png" in text and "<i>" not in text and "&lt;1&gt;" in text
    verdicts = [61.5 <= json.loads(row.record)["mean"] <= 62.5 for kept in opened.inspections()  # type: ignore[attr-defined]
                for row in opened.rows(kept) if row.record]  # type: ignore[attr-defined]
    assert re.search(rf"<b>{sum(verdicts)}</b>pass", text) and 0 < sum(verdicts) < 30
    assert "prefers-color-scheme: dark" in text and 'name="viewport"' in text and len(text) < 20_000_000
    opened.close()
