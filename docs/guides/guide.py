"""What the guides' programs in Python share: pictures that go to a page, and what the page says, checked (as guide.h)."""
from __future__ import annotations

import sys
from pathlib import Path
from typing import Any, Callable

import cv2

_folder = Path()
_failed = False


def run(make: Callable[[], None]) -> None:
    """A program of a page: the folder for its pictures is its one argument. Exits with 1 where something is not so."""
    global _folder
    if len(sys.argv) != 2:
        sys.exit(f"usage: {sys.argv[0]} FOLDER    writes the pictures of its page there")
    _folder = Path(sys.argv[1])
    _folder.mkdir(parents=True, exist_ok=True)
    make()
    sys.exit(1 if _failed else 0)


def save(name: str, picture: Any) -> None:
    """As PNG into the folder of pictures."""
    expect(cv2.imwrite(str(_folder / f"{name}.png"), picture), f"{name}.png can be written")


def expect_about(value: float, stated: float, within: float, what: str) -> None:
    """A figure that the page states. Platforms round differently: a unit of the last digit stated is a good `within`."""
    expect(abs(value - stated) <= within, f"{what}: {stated:.6g} is stated, and here it is {value:.6g}")


def expect(holds: bool, what: str) -> None:
    """Something that the page says. Where it is not so, the program tells it and fails."""
    global _failed
    if not holds:
        print(f"this is not so: {what}", file=sys.stderr)
        _failed = True
