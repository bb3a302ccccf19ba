"""Where results are kept: what a store must be able to do, and which one an address means."""
from __future__ import annotations

import os
from collections.abc import Iterator, Sequence
from typing import Protocol, Union, runtime_checkable

from ._inspections import Inspection
from ._pictures import Picture
from ._rows import Row


@runtime_checkable
class Store(Protocol):
    """Four methods keep the results of a run. They are called by the thread that called `run`, never by workers.

    A row is known by its picture's path and the inspection's fingerprint: to write one again replaces it.
    """

    def done(self, inspection: Inspection, pictures: Sequence[Picture], *, failed_too: bool = True) -> set[Picture]:
        """Which of these pictures, at most some thousands, have a row of this inspection with the same size and time of
        change; without `failed_too` only those that were measured."""

    def write(self, inspection: Inspection, rows: Sequence[Row]) -> None:
        """Keeps rows, all or none of them: once it returns, a killed process does not lose them."""

    def export(self, path: str) -> None:
        """Writes all rows into a file whose extension says how: .csv, .parquet."""

    def close(self) -> None:
        """Gives back what the store holds."""


class Kept(Protocol):
    """An inspection whose results are in a store."""

    @property
    def name(self) -> str: ...
    @property
    def version(self) -> str: ...
    @property
    def fingerprint(self) -> str: ...
    @property
    def limits(self) -> dict[str, tuple[float, float]]: ...


@runtime_checkable
class ReadableStore(Store, Protocol):
    """A store whose results can be shown, too; those of this package are."""

    def inspections(self) -> list[Kept]:
        """Whose results are kept, the oldest first."""

    def rows(self, inspection: Kept) -> Iterator[Row]:
        """All rows of an inspection by their paths, a few at a time."""


def open_store(store: Union[str, "os.PathLike[str]", Store], *, writing: bool = True) -> Store:
    """The store that an address means: ``postgresql://...``, or the name of a file of SQLite, which is made where it is
    missing. What is a store already is given back."""
    if isinstance(store, Store):
        return store
    if not isinstance(store, (str, os.PathLike)):
        missing = [name for name in ("done", "write", "export", "close") if not callable(getattr(store, name, None))]
        raise TypeError(f"store: expected a file's name, postgresql://... or a store; {type(store).__name__} has no "
                        f"{', '.join(missing)}")
    name = os.fspath(store)
    if name.startswith(("postgresql://", "postgres://")):
        from ._postgres import PostgresStore
        return PostgresStore(name, writing=writing)
    from ._sqlite import SQLiteStore
    return SQLiteStore(name, writing=writing)
