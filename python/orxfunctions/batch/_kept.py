"""What stores of tables have in common: names as texts that every database takes, inspections and rows as they were kept."""
from __future__ import annotations

import json
import math
from collections.abc import Iterable, Mapping
from typing import Any, NamedTuple

from ._pictures import Picture
from ._rows import Row

ROW_COLUMNS = "path, size, changed, status, seconds, reason, record"
"""What `row_of` takes."""


class KeptInspection(NamedTuple):
    """An inspection whose results are in a store."""

    number: int
    name: str
    version: str
    fingerprint: str
    limits: dict[str, tuple[float, float]]


def kept(number: int, name: str, version: str, fingerprint: str, described: str) -> KeptInspection:
    """An inspection as a table tells it."""
    limits = {name: (-math.inf if low is None else float(low), math.inf if high is None else float(high))
              for name, (low, high) in json.loads(described).get("limits", {}).items()}
    return KeptInspection(number, name, version, fingerprint, limits)


def text_of(name: str) -> str:
    """A file's name as databases take it: bytes that are no UTF-8, and null characters, as escapes."""
    return name.encode("utf-8", "surrogateescape").decode("utf-8", "backslashreplace").replace("\0", "\\x00")


def row_of(path: str, size: int, changed: int, status: Any, seconds: float, reason: str, record: str) -> Row:
    """A row as a table tells it."""
    return Row(Picture(path, size, changed), status, seconds, reason, record)


def unchanged(pictures: Mapping[str, Picture], told: Iterable[Any]) -> set[Picture]:
    """Which of the pictures, by their texts, a table tells with the size and the time of change that they have."""
    return {pictures[path] for path, *file in told if tuple(file) == pictures[path][1:]}
