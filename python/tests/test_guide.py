"""What the guide to Python shows runs, and says what is true of its picture."""
from __future__ import annotations

import re
import runpy
import shutil
from pathlib import Path

import numpy as np
import pytest

TREE = Path(__file__).resolve().parent.parent.parent
PAGE = TREE / "docs" / "guides" / "python.md"
cv2 = pytest.importorskip("cv2")


def test_the_lines_of_the_guide_measure_its_parts(tmp_path: Path, monkeypatch: pytest.MonkeyPatch,
                                                   capsys: pytest.CaptureFixture[str]) -> None:
    blocks = re.findall(r"^```python\n(.*?)^```", PAGE.read_text(encoding="utf-8"), re.MULTILINE | re.DOTALL)
    assert len(blocks) == 1
    images = tmp_path / "docs" / "images"
    images.mkdir(parents=True)
    shutil.copy(TREE / "docs" / "images" / "python-parts.png", images)
    monkeypatch.chdir(tmp_path)
    exec(compile(blocks[0], str(PAGE), "exec"), {"__name__": "__main__"})

    parts = runpy.run_path(str(TREE / "python" / "examples" / "parts_picture.py"))["PARTS"]
    lines = capsys.readouterr().out.splitlines()
    found = np.array([[float(number) for number in re.findall(r"[0-9]+\.[0-9]+", line)] for line in lines])
    assert found.shape == (len(parts), 4)
    for part in parts:
        nearest = found[np.argmin(np.hypot(found[:, 0] - part.x, found[:, 1] - part.y))]
        assert np.allclose(nearest[:3], part, atol=0.1)
        assert 0.001 < nearest[3] < 0.05
    drawn, shown = cv2.imread("circles.png"), cv2.imread(str(TREE / "docs" / "images" / "python-circles.png"))
    assert drawn.shape == shown.shape and np.mean(drawn != shown) < 0.01  # docs/python.md shows what they draw


def test_the_picture_of_the_guide_is_the_rendered_one() -> None:
    rendered = runpy.run_path(str(TREE / "python" / "examples" / "parts_picture.py"))["render"]()
    kept = cv2.imread(str(TREE / "docs" / "images" / "python-parts.png"), cv2.IMREAD_GRAYSCALE)
    assert np.abs(rendered.astype(int) - kept).max() <= 1
