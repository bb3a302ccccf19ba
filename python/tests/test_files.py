"""Files that the package writes and reads."""
from __future__ import annotations

import array
import importlib.util
import json
import struct
from pathlib import Path
from typing import Any, Optional

import numpy as np
import pytest

from orxfunctions import drawing, files
from orxfunctions._png import png_of

cv2: Any = importlib.import_module("cv2") if importlib.util.find_spec("cv2") else None


def test_a_matrix_comes_back_as_it_was_written(tmp_path: Path) -> None:
    path = tmp_path / "高度.bin"
    matrix = np.arange(12.0).reshape(3, 4)
    files.write_stream(path, matrix[:, ::-1], size=(640, 480), text="height, µm")
    data = path.read_bytes()
    assert len(data) == 271 + 8 * 12 and struct.unpack("<ii", data[:8]) == (3, 4)
    found = files.read_stream(str(path))
    assert np.array_equal(found.matrix, matrix[:, ::-1]) and found.matrix.dtype == np.float64
    assert found.size == (640, 480) and found.text == "height, µm"
    files.write_stream(path, matrix)
    assert files.read_stream(path).size == (4, 3) and files.read_stream(path).text == ""
    path.write_bytes(data[:16] + b"")
    assert np.array_equal(files.read_stream(path).matrix, np.array([[3.0] + [0.0] * 3] + [[0.0] * 4] * 2))
    path.write_bytes(b"")
    assert files.read_stream(path).matrix.shape == (0, 0)
    path.write_bytes(struct.pack("<ii", 0, 0) + struct.pack("<ii", 1, 2) + "高".encode("gbk"))
    assert files.read_stream(path).text == "高"


def test_streams_refuse_what_they_can_not_hold(tmp_path: Path) -> None:
    path = tmp_path / "a.bin"
    for wrong in (np.zeros((2, 2), np.float32), np.zeros(3), [[1.0]], None):
        with pytest.raises(TypeError, match="matrix: expected a matrix: float64 array"):
            files.write_stream(path, wrong)  # type: ignore[arg-type]
    with pytest.raises(ValueError, match="at least one element"):
        files.write_stream(path, np.zeros((0, 4)))
    with pytest.raises(ValueError, match="text: expected at most 254 bytes"):
        files.write_stream(path, np.zeros((1, 1)), text="µ" * 128)
    assert not path.exists()
    with pytest.raises(FileNotFoundError):
        files.read_stream(path)
    with pytest.raises(OSError):
        files.write_stream(tmp_path / "none" / "a.bin", np.zeros((1, 1)))
    path.write_bytes(struct.pack("<ii", -1, 7))
    with pytest.raises(ValueError, match="-1 rows of 7 numbers"):
        files.read_stream(path)


def _kinds() -> dict[str, bytes]:
    """Files of every kind that is decoded by the library itself, and of some that are not."""
    random = np.random.default_rng(3)
    grey, deep = random.integers(0, 255, (37, 53), np.uint8), random.integers(0, 65535, (37, 53), np.uint16)
    colour = random.integers(0, 255, (37, 53, 3), np.uint8)
    pictures = {"grey": grey, "deep": deep, "colour": colour, "deep colour": np.dstack([deep] * 3),
                "clear": np.dstack([colour, grey])}
    kinds = {f"{name} {end}": cv2.imencode(end, picture)[1].tobytes()
             for name, picture in pictures.items() for end in (".png", ".tiff")}
    kinds.update({f"{name} {end}": cv2.imencode(end, pictures[name])[1].tobytes()
                  for name in ("grey", "colour") for end in (".jpg", ".bmp", ".webp")})
    kinds["float .tiff"] = cv2.imencode(".tiff", grey.astype(np.float32))[1].tobytes()
    kinds["written without OpenCV"] = png_of(grey)
    return kinds


@pytest.mark.skipif(cv2 is None, reason="compares with cv2")
def test_pictures_are_decoded_as_by_cv2() -> None:
    modes: dict[files.Mode, int] = {"grey": cv2.IMREAD_GRAYSCALE, "colour": cv2.IMREAD_COLOR,
                                    "unchanged": cv2.IMREAD_UNCHANGED}
    random, compared, refused = np.random.default_rng(4), 0, 0
    for kind, whole in _kinds().items():
        damaged = bytearray(whole)
        for place in random.integers(len(whole) // 3, len(whole), 5):
            damaged[place] ^= 0x55
        for data in (whole, bytes(damaged), whole[: len(whole) // 2], whole + b"behind it"):
            for mode, flag in modes.items():
                expected = cv2.imdecode(np.frombuffer(data, np.uint8), flag)
                if expected is None:
                    refused += 1
                    with pytest.raises(ValueError):
                        files.decode_picture(data, mode)
                    continue
                found = files.decode_picture(data, mode)
                compared += 1
                assert found.dtype == expected.dtype and np.array_equal(found, expected), (kind, mode)
    assert compared > 100 and refused > 10


def test_pictures_are_decoded_from_all_that_holds_bytes() -> None:
    picture = np.arange(48, dtype=np.uint8).reshape(6, 8)
    data = png_of(picture)
    apart = np.repeat(np.frombuffer(data, np.uint8), 3)
    folded = np.frombuffer(data + b"\0" * (-len(data) % 4), np.uint8).reshape(-1, 4)
    for held in (bytearray(data), memoryview(data), array.array("B", data), apart[::3], memoryview(apart.tobytes())[::3], folded,
                 np.asfortranarray(folded)):
        found = files.decode_picture(held)  # type: ignore[arg-type]
        assert np.array_equal(found, picture) and found.flags.writeable
    for wrong in (None, 3, "text", [1, 2]):
        with pytest.raises(TypeError, match="data: expected bytes, or what gives access to some, got "):
            files.decode_picture(wrong)  # type: ignore[arg-type]
    for nothing, words in ((b"", "no bytes"), (b"text", "not a picture")):
        with pytest.raises(ValueError, match=words):
            files.decode_picture(nothing)
    with pytest.raises(ValueError, match="mode: expected one of 'grey', 'colour', 'unchanged', got 'gray'"):
        files.decode_picture(data, "gray")  # type: ignore[arg-type]


@pytest.fixture
def pictures(tmp_path: Path) -> Path:
    folder = tmp_path / "pictures"
    folder.mkdir()
    for i in range(3):
        image = np.full((20, 30), 40 * i, np.uint8)
        image[:, :10] = 200
        (folder / f"part{i}.png").write_bytes(png_of(image))
    shape = {"label": "part", "points": [[0, 0], [10, 0], [10, 20]], "shape_type": "polygon"}
    annotation = {"shapes": [shape], "imageWidth": 30, "imageHeight": 20}
    (folder / "part0.json").write_text(json.dumps(annotation), encoding="utf-8")
    return folder


def test_variants_are_repeatable_and_move_their_annotations(pictures: Path, tmp_path: Path) -> None:
    seen: list[tuple[int, int, str]] = []

    def progress(done: int, total: int, file: str) -> None:
        seen.append((done, total, Path(file).name))

    report = files.augment(pictures, tmp_path / "one", seed=7, rotations=2, progress=progress)
    assert report == (True, 3, 0, 3 * 10, [])
    assert seen == [(0, 3, "part0.png"), (1, 3, "part1.png"), (2, 3, "part2.png"), (3, 3, "")]
    moved = json.loads((tmp_path / "one" / "part0_flipH.json").read_text(encoding="utf-8"))
    assert moved["shapes"][0]["points"] == [[30, 0], [20, 0], [20, 20]]
    files.augment(str(pictures), tmp_path / "two", seed=7, rotations=2)
    names = sorted(path.name for path in (tmp_path / "one").iterdir())
    assert all((tmp_path / "one" / name).read_bytes() == (tmp_path / "two" / name).read_bytes() for name in names)
    files.augment(pictures, tmp_path / "few", flip_vertical=False, rotations=0, scalings=0, shifts=0, brightness_changes=0,
                  contrast_changes=0, blurs=0, noises=0)
    assert sorted(path.name for path in (tmp_path / "few").glob("*.png")) == [f"part{i}_flipH.png" for i in range(3)]


def test_progress_may_stop_a_run_or_raise(pictures: Path, tmp_path: Path) -> None:
    report = files.augment(pictures, tmp_path / "out", progress=lambda done, total, file: done < 1)
    assert not report.completed and report.images == 1

    def fail(done: int, total: int, file: str) -> Optional[bool]:
        raise KeyError(file)

    with pytest.raises(KeyError):
        files.augment(pictures, tmp_path / "out", progress=fail)
    with pytest.raises(ValueError, match="one folder"):
        files.augment(pictures, pictures)
    with pytest.raises(FileNotFoundError):
        files.augment(tmp_path / "none", tmp_path / "out")
    (pictures / "broken.png").write_bytes(b"no picture")
    report = files.augment(pictures, tmp_path / "out")
    assert report.skipped == 1 and "broken.png" in report.problems[0]


def test_pictures_are_saved_in_the_background(tmp_path: Path) -> None:
    image = np.full((5, 7, 3), 9, np.uint8)
    drawing.points(image, (3, 2))
    first = files.save_image(image, tmp_path / "saved", prefix="面")
    second = files.save_image(image[:, ::-1], tmp_path / "saved", prefix="面", extension=".bmp")
    assert files.flush() and files.flush(5.0)
    assert Path(first).name.startswith("面") and first < second
    assert Path(first).read_bytes().startswith(b"\x89PNG") and Path(second).read_bytes().startswith(b"BM")
    with pytest.raises(ValueError, match="xyz"):
        files.save_image(image, tmp_path, extension=".xyz")
    with pytest.raises(TypeError, match="image: expected an image"):
        files.save_image(np.zeros((2, 2)), tmp_path)  # type: ignore[arg-type]
    with pytest.raises(ValueError, match="timeout"):
        files.flush(-1.0)


def test_any_kind_of_name_is_taken_or_refused(tmp_path: Path) -> None:
    wrong: Any
    for wrong in (None, 5, object()):
        with pytest.raises(TypeError):
            files.read_stream(wrong)
    with pytest.raises((OSError, ValueError)):
        files.read_stream("")
    with pytest.raises((OSError, ValueError)):
        files.read_stream(str(tmp_path))
