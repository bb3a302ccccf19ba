"""The gallery: each notebook runs from its first cell to its last, and finds what is known of its pictures."""
from __future__ import annotations

import ast
import json
from pathlib import Path
from typing import Any

import numpy as np
import pytest

FOLDER = Path(__file__).resolve().parent.parent / "examples" / "notebooks"


def cells_of(name: str) -> list[dict[str, Any]]:
    book = json.loads((FOLDER / f"{name}.ipynb").read_text(encoding="utf-8"))
    cells: list[dict[str, Any]] = book["cells"]
    return cells


def run(name: str) -> dict[str, Any]:
    """Runs the cells as a notebook does; what one ends with is shown, as a picture or a table. Gives the variables."""
    variables: dict[str, Any] = {"__name__": "__main__"}
    for cell in cells_of(name):
        if cell["cell_type"] != "code":
            continue
        tree = ast.parse("".join(cell["source"]))
        last = tree.body.pop() if isinstance(tree.body[-1], ast.Expr) else None
        exec(compile(tree, name, "exec"), variables)
        if isinstance(last, ast.Expr):
            shown = eval(compile(ast.Expression(last.value), name, "eval"), variables)
            if hasattr(shown, "_repr_png_"):
                assert shown._repr_png_().startswith(b"\x89PNG")
            elif hasattr(shown, "_repr_html_"):
                assert "<" in shown._repr_html_()
    return variables


@pytest.mark.parametrize("name", [file.stem for file in sorted(FOLDER.glob("*.ipynb"))])
def test_notebooks_are_kept_without_outputs(name: str) -> None:
    code = [cell for cell in cells_of(name) if cell["cell_type"] == "code"]
    assert code and all(cell["outputs"] == [] and cell["execution_count"] is None for cell in code)


def test_coins() -> None:
    shown = run("coins")
    assert len(shown["outlines"]) == 6 and len(shown["circles"]) == 5
    assert np.abs(shown["errors"]).max() < 0.02


def test_edges() -> None:
    shown = run("edges")
    assert abs(np.mean(shown["radii"]) - shown["RADIUS"]) < 0.01
    # What is stated is what is seen, as far as 40 pictures tell.
    assert 0.6 < np.std(shown["radii"], ddof=1) / np.mean(shown["stated"]) < 1.6


def test_calibration() -> None:
    shown = run("calibration")
    assert all(view is not None for view in shown["views"])
    assert abs(shown["plane"].camera[0, 0] - 640.0) < 5.0 and abs(shown["plane"].distortion[0] + 0.12) < 0.02
    assert len(shown["errors"]) == 2 and np.abs(shown["errors"]).max() < 0.01


def test_outline() -> None:
    shown = run("outline")
    assert len(shown["pieces"].arcs) == 2 and len(shown["pieces"].lines) >= 2
    assert np.abs(shown["errors"]).max() < 0.05
    assert abs(shown["width"] - 2.0 * shown["RADIUS"]) < 0.05


def test_camera(monkeypatch: pytest.MonkeyPatch) -> None:
    monkeypatch.setenv("TQVISION_CONFIG", "")  # what the notebook sets is taken back
    shown = run("camera")
    assert len(shown["frames"]) == 30 and len({frame.number for frame in shown["frames"]}) == 30
    assert np.abs(shown["errors"]).max() < 0.05
