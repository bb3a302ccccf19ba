"""The package as a whole: what an import brings, and how many threads a call may use."""
from __future__ import annotations

import doctest
import importlib
import pkgutil
import re
import subprocess
import sys
from pathlib import Path

import pytest

import orxfunctions

MODULES = [module.name for module in pkgutil.walk_packages(orxfunctions.__path__, "orxfunctions.")
           if not module.name.endswith("__main__")]


@pytest.mark.parametrize("name", MODULES)
def test_examples_in_docstrings_hold(name: str) -> None:
    assert doctest.testmod(importlib.import_module(name)).failed == 0


def test_what_is_public_says_what_it_does() -> None:
    for name in MODULES:
        module = importlib.import_module(name)
        for public in getattr(module, "__all__", []):
            thing = getattr(module, public)
            if callable(thing) and not isinstance(thing, int) and thing.__module__ != "typing":
                assert (thing.__doc__ or "").strip(), f"{name}.{public} has no docstring"


def modules_after(code: str) -> set[str]:
    code += "; import sys; print(*sys.modules)"
    return set(subprocess.run([sys.executable, "-c", code], check=True, capture_output=True, text=True).stdout.split())


def test_an_import_brings_nothing_heavy_and_no_module_unasked() -> None:
    loaded = modules_after("import orxfunctions")
    assert "orxfunctions._core" in loaded and not {"orxfunctions.camera", "orxfunctions.measuring"} & loaded
    everything = modules_after("import orxfunctions; [getattr(orxfunctions, name) for name in orxfunctions.__all__]")
    assert {"numpy", "orxfunctions.camera", "orxfunctions.measuring"} <= everything
    assert not {"cv2", "matplotlib", "PIL", "scipy", "skimage", "ipywidgets", "IPython", "distributed"} & everything
    assert set(dir(orxfunctions)) == set(orxfunctions.__all__)
    with pytest.raises(AttributeError, match="module 'orxfunctions' has no attribute 'analysys'"):
        getattr(orxfunctions, "analysys")


def test_the_version_is_that_of_the_library() -> None:
    header = Path(__file__).resolve().parents[2] / "orxFunctions" / "api.h"
    numbers = re.findall(r"define ORX_VERSION_(?:MAJOR|MINOR|PATCH) (\d+)", header.read_text(encoding="utf-8"))
    assert orxfunctions.__version__ == ".".join(numbers)


def test_threads_of_a_call_are_set() -> None:
    try:
        orxfunctions.set_threads(1)
        assert orxfunctions.threads() == 1
        with pytest.raises(ValueError, match="count: expected 0 or more, got -1"):
            orxfunctions.set_threads(-1)
    finally:
        orxfunctions.set_threads(0)
    assert orxfunctions.threads() >= 1
