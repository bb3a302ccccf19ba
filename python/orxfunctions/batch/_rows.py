"""What is told of a picture: a row of the store."""
from __future__ import annotations

import json
import math
import os
from collections.abc import Iterator, Mapping
from typing import Any, Literal, NamedTuple

from ._pictures import Picture

Status = Literal["ok", "failed"]
_LONGEST_REASON = 500


class Row(NamedTuple):
    """What came of a picture."""

    picture: Picture
    status: Status
    seconds: float
    """That reading and inspecting it took; 0 where that is not known."""
    reason: str
    """Why it failed; empty where it did not."""
    record: str
    """What was measured, JSON; empty where it failed."""
    here: str = ""
    """The machine on which a file that exists elsewhere was not found; else empty. Never stored."""
    verdict: str = ""
    """Of what was measured; empty where there are no limits. Stored within the record, by a recipe, or not at all."""


class NotARecord(TypeError):
    """What an inspection gave is no dict that JSON can hold."""


def failed(picture: Picture, reason: str, seconds: float = 0.0) -> Row:
    """A row without a record."""
    text = " ".join(reason.split())
    return Row(picture, "failed", seconds, text if len(text) <= _LONGEST_REASON else text[:_LONGEST_REASON] + " ...", "")


def record_text(told: Any) -> str:
    """What an inspection gave, as JSON; numbers that are not finite become null."""
    for method in ("as_dict", "_asdict"):
        if hasattr(told, method):
            told = getattr(told, method)()
    if not isinstance(told, Mapping):
        raise NotARecord(f"the inspection gave {type(told).__name__}, expected a dict")
    told = dict(told)
    try:
        return json.dumps(told, ensure_ascii=False, allow_nan=False, default=_plain)
    except ValueError:  # not-a-number or infinity
        return json.dumps(_finite(told), ensure_ascii=False, allow_nan=False, default=_plain)


def _plain(value: Any) -> Any:
    if hasattr(value, "tolist"):  # numbers and arrays of numpy
        return value.tolist()
    if hasattr(value, "as_dict"):
        return value.as_dict()
    if isinstance(value, os.PathLike):
        return os.fspath(value)
    raise NotARecord(f"the inspection gave a {type(value).__name__} within its dict, which JSON can't hold")


def _finite(value: Any) -> Any:
    if isinstance(value, Mapping):
        return {key: _finite(part) for key, part in value.items()}
    if isinstance(value, (list, tuple)):
        return [_finite(part) for part in value]
    if isinstance(value, float):
        return value if math.isfinite(value) else None
    return _finite(_plain(value)) if hasattr(value, "tolist") else value


class Value(NamedTuple):
    """A number of a record."""

    name: str
    value: float | None
    unit: str = ""
    verdict: str = "no limits"
    lower: float = -math.inf
    upper: float = math.inf


def _recipe_values(record: Mapping[str, Any]) -> list[Any] | None:
    """The values of a recipe's result; None where the record is that of a function."""
    measured = record.get("values")
    of_recipe = isinstance(measured, list) and all(isinstance(value, Mapping) and "name" in value for value in measured)
    return measured if of_recipe else None


def values_of(record: Mapping[str, Any], limits: Mapping[str, tuple[float, float]]) -> Iterator[Value]:
    """The numbers of a record: those of a recipe with its limits, or those of a function with the limits given."""
    measured = _recipe_values(record)
    if measured is not None:
        for value in measured:
            lower, upper = value.get("lower"), value.get("upper")
            yield Value(str(value["name"]), value.get("value"), str(value.get("unit") or ""),
                        str(value.get("verdict") or "no limits"), -math.inf if lower is None else lower,
                        math.inf if upper is None else upper)
        return
    for name, value in _leaves(record, ""):
        number = isinstance(value, (int, float)) and not isinstance(value, bool)
        if not number and (value is not None or name not in limits):
            continue
        lower, upper = limits.get(name, (-math.inf, math.inf))
        verdict = "not measured" if not number else "no limits" if name not in limits else \
            "pass" if lower <= value <= upper else "fail"
        yield Value(name, float(value) if number else None, "", verdict, lower, upper)


def columns_of(record: Mapping[str, Any]) -> Iterator[tuple[str, Any]]:
    """A record as the cells of a table: names and plain values."""
    measured = _recipe_values(record)
    if measured is not None:
        yield "verdict", record.get("verdict")
        yield "problem", record.get("problem")
        for value in measured:
            name = f"{value['name']} ({value['unit']})" if value.get("unit") else str(value["name"])
            yield name, value.get("value")
            yield f"{name} deviation", value.get("deviation")
            yield f"{name} verdict", value.get("verdict")
        return
    for name, value in _leaves(record, ""):
        yield name, json.dumps(value, ensure_ascii=False) if isinstance(value, list) else value


def verdict_of(record: Mapping[str, Any], limits: Mapping[str, tuple[float, float]]) -> str:
    """The verdict on the whole: a recipe's own, or the worst of the values with limits; empty without any."""
    own = record.get("verdict")
    if isinstance(own, str):
        return own
    verdicts = {value.verdict for value in values_of(record, limits)} if limits else set()
    return next((verdict for verdict in ("fail", "not measured", "undecided", "pass") if verdict in verdicts), "")


def _leaves(record: Mapping[str, Any], prefix: str) -> Iterator[tuple[str, Any]]:
    for name, value in record.items():
        if isinstance(value, Mapping):
            yield from _leaves(value, f"{prefix}{name}.")
        else:
            yield f"{prefix}{name}", value
