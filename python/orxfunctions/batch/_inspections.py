"""What is done with each picture: a recipe or a function, with a name that tells one from the other."""
from __future__ import annotations

import hashlib
import importlib
import inspect
import json
import math
import os
import pickle
import sys
from collections.abc import Callable, Mapping
from types import ModuleType
from typing import Any, Optional, Union

from ..files import Mode
from ..measuring import Recipe
from ._reading import read_picture
from ._rows import record_text, verdict_of

Inspect = Union[Callable[[Any], Any], Recipe, str, "os.PathLike[str]"]
Limits = Mapping[str, tuple[float, float]]


class Inspection:
    """A function or recipe with what makes its results its own: name, version, and a hash of what it does.

    Results are kept by it: a recipe that was changed measures every picture again, and so does a function whose version, or
    whose source where none is given, was changed.
    """

    def __init__(self, measure: Callable[[Any], Any], name: str, version: str, content: bytes, *, mode: Mode = "grey",
                 reader: Optional[Callable[[str], Any]] = None, limits: Optional[Limits] = None) -> None:
        self.name = name
        self.version = version
        self.limits = {key: (float(low), float(high)) for key, (low, high) in (limits or {}).items()}
        parts = [name.encode(), version.encode(), content, mode.encode(),
                 b"" if reader is None else getattr(reader, "__qualname__", type(reader).__name__).encode()]
        self.fingerprint = hashlib.sha256(b"".join(len(part).to_bytes(8, "big") + part for part in parts)).hexdigest()[:32]
        self._measure, self._mode, self._reader = measure, mode, reader

    def record(self, path: str) -> str:
        """What is measured in the picture of this path, as JSON."""
        image = read_picture(path, self._mode) if self._reader is None else self._reader(path)
        return record_text(self._measure(image))

    def verdict(self, record: str) -> str:
        """Of what was measured, by a recipe's own limits or those given; empty without any."""
        if '"verdict"' not in record and not self.limits:
            return ""
        return verdict_of(json.loads(record), self.limits)

    def described(self) -> str:
        """Limits as JSON, for who shows the results."""
        return json.dumps({"limits": {name: [bound if math.isfinite(bound) else None for bound in bounds]
                                      for name, bounds in self.limits.items()}}, ensure_ascii=False)

    def __repr__(self) -> str:
        return f"Inspection({self.name!r}, {self.version!r}, {self.fingerprint[:8]})"


class RecipeRun:
    """A recipe as a function of a picture: the fields of its result that equal pictures give equally."""

    def __init__(self, recipe: Recipe) -> None:
        self.recipe = recipe

    def __call__(self, image: Any) -> dict[str, Any]:
        return self.recipe.run(image).as_dict(features=False, milliseconds=False)


class FileFunction:
    """A function of a Python file, which goes along as text: other machines need not have the file."""

    def __init__(self, text: str, path: str, name: str) -> None:
        self._state = text, path, name
        module = ModuleType(f"orx_inspection_{hashlib.sha256(text.encode()).hexdigest()[:16]}")
        module.__file__ = path
        sys.modules[module.__name__] = module  # as dataclasses want it
        exec(compile(text, path, "exec"), module.__dict__)
        try:
            self._function = getattr(module, name)
        except AttributeError:
            raise ValueError(f"{path}: there is no function {name!r} in it") from None

    def __call__(self, image: Any) -> Any:
        return self._function(image)

    def __reduce__(self) -> Any:
        return FileFunction, self._state


def inspection_of(what: Inspect, *, version: str = "", mode: Mode = "grey", reader: Optional[Callable[[str], Any]] = None,
                  limits: Optional[Limits] = None) -> Inspection:
    """What a user means by a function, a recipe, the path of a recipe, or ``FILE.py`` (its function `inspect`;
    ``FILE.py:NAME`` another one)."""
    if isinstance(what, Inspection):
        return what
    if isinstance(what, (str, os.PathLike)):
        path, _, name = os.fspath(what).partition(".py:")
        if name or path.endswith(".py"):
            path = path + ".py" if name else path
            with open(path, encoding="utf-8") as file:
                text = file.read()
            name = name or "inspect"
            return Inspection(FileFunction(text, os.path.abspath(path), name), f"{os.path.basename(path)}:{name}", version,
                              b"" if version else text.encode(), mode=mode, reader=reader, limits=limits)
        what = Recipe.load(what)
    if isinstance(what, Recipe):
        text, files = what.__reduce__()[1]
        content = b"\0".join([text.encode(), *(part for name in sorted(files) for part in (name.encode(), files[name]))])
        return Inspection(RecipeRun(what), what.name or "recipe", version, content, mode=mode, reader=reader, limits=limits)
    if not callable(what):
        raise TypeError(f"inspect: expected a function, a recipe or the path of one, got {type(what).__name__}")
    name = f"{getattr(what, '__module__', '?')}.{getattr(what, '__qualname__', type(what).__qualname__)}"
    return Inspection(what, name, version, b"" if version else _source(what, name), mode=mode, reader=reader, limits=limits)


def _source(function: Any, name: str) -> bytes:
    try:
        return inspect.getsource(function).encode()
    except (OSError, TypeError):
        raise ValueError(f"inspect: the source of {name} is not to be had; give version=, by which its results are known") \
            from None


def packed(inspection: Inspection) -> bytes:
    """For other processes: by cloudpickle where it is installed, which takes functions of the program itself, too."""
    try:
        pickler: Any = importlib.import_module("cloudpickle")
    except ImportError:
        pickler = pickle
    try:
        data: bytes = pickler.dumps(inspection)
    except Exception as error:  # whatever the user's function holds
        raise TypeError(f"inspect: {inspection.name} can't be handed to other processes: {error}") from error
    if pickler is pickle and b"__main__" in data:
        raise TypeError(f"inspect: {inspection.name} is a function of the program itself: put it into a module of its own, "
                        "or install python3-cloudpickle")
    return data


def unpacked(data: bytes) -> Inspection:
    """The inspection that was packed."""
    inspection = pickle.loads(data)
    assert isinstance(inspection, Inspection)
    return inspection
