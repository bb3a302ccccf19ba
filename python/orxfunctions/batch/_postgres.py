"""Results in a PostgreSQL database, for several programs and very many pictures."""
from __future__ import annotations

import importlib
from collections.abc import Iterator, Sequence
from contextlib import contextmanager
from typing import Any

from ._errors import StoreError
from ._export import export_rows
from ._inspections import Inspection
from ._kept import ROW_COLUMNS, kept, row_of, text_of, unchanged
from ._pictures import Picture
from ._rows import Row
from ._store import Kept

_SCHEMA = "orx_results"
_TABLES = f"""
CREATE SCHEMA IF NOT EXISTS {_SCHEMA};
CREATE TABLE IF NOT EXISTS {_SCHEMA}.inspections(id SERIAL PRIMARY KEY, name TEXT NOT NULL, version TEXT NOT NULL,
    fingerprint TEXT NOT NULL UNIQUE, described TEXT NOT NULL);
CREATE TABLE IF NOT EXISTS {_SCHEMA}.results(path TEXT COLLATE "C" NOT NULL, inspection INTEGER NOT NULL
    REFERENCES {_SCHEMA}.inspections, size BIGINT NOT NULL, changed BIGINT NOT NULL, status TEXT NOT NULL,
    seconds DOUBLE PRECISION NOT NULL, reason TEXT NOT NULL, record TEXT NOT NULL, PRIMARY KEY(inspection, path));
"""
# Any number that others are unlikely to take for their own locks.
_TABLES_LOCK = 0x6F7278


class PostgresStore:
    """Tables ``inspections`` and ``results`` in the schema ``orx_results`` of a database of PostgreSQL.

    Several runs may write at once, as long as they are of different inspections; a second one of the same is refused.

    Parameters
    ----------
    address : str
        ``postgresql://user@host/database``, as libpq has it; passwords belong into ~/.pgpass.
    writing : bool
        False: only to be read.
    """

    def __init__(self, address: str, *, writing: bool = True) -> None:
        try:
            self._driver: Any = importlib.import_module("psycopg2")
        except ImportError:
            raise ImportError("a store in PostgreSQL needs psycopg2: install python3-psycopg2") from None
        self._ids: dict[str, int] = {}
        self._extras: Any = importlib.import_module("psycopg2.extras")
        with self._told():
            self._base = self._driver.connect(address, application_name="orxfunctions")
            if writing:
                with self._base, self._base.cursor() as cursor:
                    cursor.execute("SELECT pg_advisory_xact_lock(%s)", (_TABLES_LOCK,))
                    cursor.execute(_TABLES)

    @contextmanager
    def _told(self) -> Iterator[None]:
        try:
            yield
        except self._driver.Error as error:
            raise StoreError(f"store in PostgreSQL: {str(error).strip()}") from error

    def done(self, inspection: Inspection, pictures: Sequence[Picture], *, failed_too: bool = True) -> set[Picture]:
        names = {text_of(picture.path): picture for picture in pictures}
        with self._told(), self._base, self._base.cursor() as cursor:
            cursor.execute(f"SELECT path, size, changed FROM {_SCHEMA}.results WHERE inspection = %s AND path = ANY(%s)" +
                           ("" if failed_too else " AND status = 'ok'"), (self._number(inspection), list(names)))
            return unchanged(names, cursor)

    def write(self, inspection: Inspection, rows: Sequence[Row]) -> None:
        # A command that names a row twice is refused.
        values = {text_of(row.picture.path): (row.picture.size, row.picture.changed, row.status, row.seconds,
                                              text_of(row.reason), row.record) for row in rows}
        with self._told(), self._base, self._base.cursor() as cursor:
            number = self._number(inspection)
            self._extras.execute_values(
                cursor, f"INSERT INTO {_SCHEMA}.results VALUES %s ON CONFLICT (inspection, path) DO UPDATE SET "
                "size = excluded.size, changed = excluded.changed, status = excluded.status, seconds = excluded.seconds, "
                "reason = excluded.reason, record = excluded.record",
                [(path, number, *value) for path, value in values.items()], page_size=500)

    def _number(self, inspection: Inspection) -> int:
        known = self._ids.get(inspection.fingerprint)
        if known is not None:
            return known
        with self._base.cursor() as cursor:
            cursor.execute("SELECT pg_try_advisory_lock(%s)", (int(inspection.fingerprint[:15], 16),))
            if not cursor.fetchone()[0]:
                raise StoreError(f"store in PostgreSQL: another run of {inspection.name} writes into it")
            cursor.execute(
                f"INSERT INTO {_SCHEMA}.inspections(name, version, fingerprint, described) VALUES(%s, %s, %s, %s) "
                "ON CONFLICT(fingerprint) DO UPDATE SET described = excluded.described RETURNING id",
                (inspection.name, inspection.version, inspection.fingerprint, inspection.described()))
            number: int = cursor.fetchone()[0]
        self._base.commit()
        self._ids[inspection.fingerprint] = number
        return number

    def inspections(self) -> list[Kept]:
        """Whose results are kept, the oldest first."""
        with self._told(), self._base, self._base.cursor() as cursor:
            cursor.execute(f"SELECT id, name, version, fingerprint, described FROM {_SCHEMA}.inspections ORDER BY id")
            return [kept(*row) for row in cursor]

    def rows(self, inspection: Kept) -> Iterator[Row]:
        """All rows of an inspection by their paths."""
        with self._told(), self._base, self._base.cursor("rows") as cursor:  # named: the server hands over a few at a time
            cursor.execute(f"SELECT {ROW_COLUMNS} FROM {_SCHEMA}.results WHERE "
                           f"inspection = (SELECT id FROM {_SCHEMA}.inspections WHERE fingerprint = %s) ORDER BY path",
                           (inspection.fingerprint,))
            for cells in cursor:
                yield row_of(*cells)

    def export(self, path: str) -> None:
        """Writes all rows into PATH.csv or PATH.parquet."""
        export_rows(self, path)

    def close(self) -> None:
        """Ends the connection."""
        self._base.close()
