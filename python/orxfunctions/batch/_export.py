"""Results as a table: CSV, and Parquet where pyarrow is installed."""
from __future__ import annotations

import csv
import importlib
import json
import os
from collections.abc import Iterator
from typing import TYPE_CHECKING, Any

from ._rows import Row, columns_of

if TYPE_CHECKING:
    from ._store import Kept, ReadableStore

_FIRST = ("inspection", "version", "path", "size", "changed", "status", "reason", "seconds")
_ROWS_AT_ONCE = 10_000


def export_rows(store: ReadableStore, path: str) -> None:
    """Writes all rows into a file, which replaces one that is there once it is whole.

    Reads the results twice, the first time for the names of the columns, so that no more than one row is in memory.
    """
    writers = {".csv": _write_csv, ".parquet": _write_parquet}
    extension = os.path.splitext(path)[1].lower()
    if extension not in writers:
        raise ValueError(f"path: expected a name that ends in .csv or .parquet, got {path!r}")
    names = list(dict.fromkeys(name for _, row in _all_rows(store) for name, _ in _columns(row)))
    partial = f"{path}.part"
    try:
        writers[extension](store, names, partial)
        os.replace(partial, path)
    finally:
        if os.path.exists(partial):
            os.remove(partial)


def _all_rows(store: ReadableStore) -> Iterator[tuple[Kept, Row]]:
    for inspection in store.inspections():
        for row in store.rows(inspection):
            yield inspection, row


def _columns(row: Row) -> list[tuple[str, Any]]:
    """The columns of a record; one that is called as one of ours is told apart by a dot."""
    record = json.loads(row.record) if row.record else {}
    return [(f".{name}" if name in _FIRST else name, value) for name, value in columns_of(record)]


def _head(inspection: Kept, row: Row) -> tuple[Any, ...]:
    return inspection.name, inspection.version, *row.picture, row.status, row.reason, row.seconds


def _write_csv(store: ReadableStore, names: list[str], path: str) -> None:
    with open(path, "w", newline="", encoding="utf-8") as file:
        table = csv.writer(file)
        table.writerow([*_FIRST, *names])
        for inspection, row in _all_rows(store):
            cells = dict(_columns(row))
            table.writerow([*_head(inspection, row), *(cells.get(name) for name in names)])


def _write_parquet(store: ReadableStore, names: list[str], path: str) -> None:
    """Columns of the record are numbers where all their values are, else texts."""
    try:
        arrow: Any = importlib.import_module("pyarrow")
        parquet: Any = importlib.import_module("pyarrow.parquet")
    except ImportError:
        raise ImportError("Parquet needs pyarrow, which is not installed; .csv needs nothing") from None
    texts = {name for _, row in _all_rows(store) for name, value in _columns(row)
             if value is not None and not isinstance(value, (int, float))}
    kinds = [arrow.string()] * 3 + [arrow.int64()] * 2 + [arrow.string()] * 2 + [arrow.float64()]
    schema = arrow.schema([*zip(_FIRST, kinds), *((name, arrow.string() if name in texts else arrow.float64())
                                                  for name in names)])

    def row_of(inspection: Kept, row: Row) -> dict[str, Any]:
        cells = {name: None if value is None else str(value) if name in texts else float(value)
                 for name, value in _columns(row)}
        return {**dict(zip(_FIRST, _head(inspection, row))), **cells}

    with parquet.ParquetWriter(path, schema) as file:
        some: list[dict[str, Any]] = []
        for inspection, row in _all_rows(store):
            some.append(row_of(inspection, row))
            if len(some) == _ROWS_AT_ONCE:
                file.write_table(arrow.Table.from_pylist(some, schema=schema))
                some = []
        file.write_table(arrow.Table.from_pylist(some, schema=schema))
