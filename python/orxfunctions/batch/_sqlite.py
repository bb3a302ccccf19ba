"""Results in a file of SQLite."""
from __future__ import annotations

import fcntl
import os
import sqlite3
from collections.abc import Iterator, Sequence
from contextlib import contextmanager
from typing import IO, Optional

from ._errors import StoreError
from ._export import export_rows
from ._inspections import Inspection
from ._kept import ROW_COLUMNS, kept, row_of, text_of, unchanged
from ._pictures import Picture
from ._rows import Row
from ._store import Kept

_APPLICATION = 0x6F727842
_TABLES = """
CREATE TABLE inspections(id INTEGER PRIMARY KEY, name TEXT NOT NULL, version TEXT NOT NULL, fingerprint TEXT NOT NULL UNIQUE,
    described TEXT NOT NULL);
CREATE TABLE results(path TEXT NOT NULL, inspection INTEGER NOT NULL REFERENCES inspections, size INTEGER NOT NULL,
    changed INTEGER NOT NULL, status TEXT NOT NULL, seconds REAL NOT NULL, reason TEXT NOT NULL, record TEXT NOT NULL,
    PRIMARY KEY(inspection, path)) WITHOUT ROWID;
"""
_ASKED_AT_ONCE = 500


class SQLiteStore:
    """A file of SQLite, written by one process at a time and read by any number meanwhile.

    Parameters
    ----------
    path : str
        Made where it is missing. Best on a disk of this machine: workers don't need it.
    writing : bool
        False: only to be read.
    patience : float
        Seconds to wait for another program that has the file locked.
    """

    def __init__(self, path: str, *, writing: bool = True, patience: float = 600.0) -> None:
        self._path = path
        self._lock: Optional[IO[bytes]] = None
        self._ids: dict[str, int] = {}
        if not writing and not os.path.exists(path):
            raise FileNotFoundError(f"store: there is no file {path!r}")
        if writing:
            self._lock = self._locked()
        try:
            self._base = sqlite3.connect(path, timeout=patience, isolation_level=None)
            self._prepare(writing)
        except BaseException as error:
            self.close()
            if isinstance(error, sqlite3.Error):
                raise StoreError(f"store {path}: {error}") from error
            raise

    def _locked(self) -> IO[bytes]:
        try:
            lock = open(self._path + ".lock", "ab")
        except OSError as error:
            raise StoreError(f"store {self._path}: {error.strerror}") from error
        try:
            fcntl.flock(lock, fcntl.LOCK_EX | fcntl.LOCK_NB)
        except OSError:
            lock.close()
            raise StoreError(f"store {self._path}: another run writes into it") from None
        return lock

    def _prepare(self, writing: bool) -> None:
        (application,) = self._base.execute("PRAGMA application_id").fetchone()
        (tables,) = self._base.execute("SELECT count(*) FROM sqlite_master").fetchone()
        if application != _APPLICATION and (tables or not writing):
            raise StoreError(f"store {self._path}: a database, but not one of results")
        if not writing:
            return
        self._base.execute("PRAGMA journal_mode = WAL")
        self._base.execute("PRAGMA synchronous = NORMAL")
        if not tables:
            self._base.executescript(f"BEGIN; {_TABLES} PRAGMA application_id = {_APPLICATION}; COMMIT;")

    @contextmanager
    def _told(self) -> Iterator[None]:
        try:
            yield
        except sqlite3.Error as error:
            raise StoreError(f"store {self._path}: {error}") from error

    def done(self, inspection: Inspection, pictures: Sequence[Picture], *, failed_too: bool = True) -> set[Picture]:
        found: set[Picture] = set()
        with self._told():
            number = self._number(inspection)
            for start in range(0, len(pictures), _ASKED_AT_ONCE):
                names = {text_of(picture.path): picture for picture in pictures[start:start + _ASKED_AT_ONCE]}
                rows = self._base.execute(
                    "SELECT path, size, changed FROM results WHERE inspection = ? "
                    f"AND path IN ({','.join('?' * len(names))})" + ("" if failed_too else " AND status = 'ok'"),
                    (number, *names))
                found |= unchanged(names, rows)
        return found

    def write(self, inspection: Inspection, rows: Sequence[Row]) -> None:
        with self._told():
            number = self._number(inspection)
            with self._base:
                self._base.execute("BEGIN IMMEDIATE")
                self._base.executemany("INSERT OR REPLACE INTO results VALUES(?, ?, ?, ?, ?, ?, ?, ?)", (
                    (text_of(row.picture.path), number, row.picture.size, row.picture.changed, row.status, row.seconds,
                     text_of(row.reason), row.record) for row in rows))

    def _number(self, inspection: Inspection) -> int:
        known = self._ids.get(inspection.fingerprint)
        if known is None:
            with self._base:
                self._base.execute("INSERT INTO inspections(name, version, fingerprint, described) VALUES(?, ?, ?, ?) "
                                   "ON CONFLICT(fingerprint) DO UPDATE SET described = excluded.described",
                                   (inspection.name, inspection.version, inspection.fingerprint, inspection.described()))
            (known,) = self._base.execute("SELECT id FROM inspections WHERE fingerprint = ?",
                                          (inspection.fingerprint,)).fetchone()
            self._ids[inspection.fingerprint] = known
        return known

    def inspections(self) -> list[Kept]:
        """Whose results are kept, the oldest first."""
        with self._told():
            return [kept(*row) for row in self._base.execute(
                "SELECT id, name, version, fingerprint, described FROM inspections ORDER BY id")]

    def rows(self, inspection: Kept) -> Iterator[Row]:
        """All rows of an inspection by their paths."""
        with self._told():
            cursor = self._base.execute(
                f"SELECT {ROW_COLUMNS} FROM results "
                "WHERE inspection = (SELECT id FROM inspections WHERE fingerprint = ?) ORDER BY path",
                (inspection.fingerprint,))
            for cells in cursor:
                yield row_of(*cells)

    def export(self, path: str) -> None:
        """Writes all rows into PATH.csv or PATH.parquet."""
        export_rows(self, path)

    def close(self) -> None:
        if getattr(self, "_base", None) is not None:
            self._base.close()
        if self._lock is not None:
            self._lock.close()
            self._lock = None


