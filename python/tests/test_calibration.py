"""Poses, motions, files and targets."""
from __future__ import annotations

import os
import pickle
import subprocess
import sys
from pathlib import Path

import numpy as np
import pytest

from orxfunctions import calibration
from orxfunctions.calibration import CameraCalibration, Target

CUBE = np.array([(x, y, z) for x in (0.0, 50.0) for y in (0.0, 40.0) for z in (0.0, 30.0)])
QUARTER = np.array([(0.0, -1.0, 0.0), (1.0, 0.0, 0.0), (0.0, 0.0, 1.0)])


def test_pose_turns_about_z_first_then_y_then_x() -> None:
    # Rx(90) Ry(90): the z axis goes to x by Ry, where Rx leaves it.
    matrix = calibration.pose_matrix((1, 2, 3, 90, 90, 0))
    assert np.allclose(matrix @ (0, 0, 1, 1), (2, 2, 3, 1), atol=1e-12)
    assert np.allclose(calibration.pose_matrix([0, 0, 0, 0, 0, 90])[:3, :3], QUARTER, atol=1e-12)


def test_poses_that_would_end_the_process_are_refused() -> None:
    for angle in (np.nan, np.inf):
        with pytest.raises(ValueError, match="pose: expected finite numbers"):
            calibration.pose_matrix((0, 0, 0, 0, angle, 0))
    with pytest.raises(TypeError, match="pose: expected six numbers .*, got 5"):
        calibration.pose_matrix((0, 0, 0, 0, 0))
    with pytest.raises(TypeError, match="pose: expected numbers"):
        calibration.pose_matrix("000000")  # type: ignore[arg-type]


def test_motion_is_found_and_what_leaves_it_open_is_refused() -> None:
    moved = CUBE @ QUARTER.T + (7, 8, 9)
    matrix = calibration.rigid_transform(CUBE, moved)
    assert np.allclose(matrix[:3, :3], QUARTER, atol=1e-12) and np.allclose(matrix[:, 3], (7, 8, 9, 1), atol=1e-9)
    assert np.allclose(calibration.rotation_between(CUBE[:3], moved[:3]), QUARTER, atol=1e-6)
    # Points of a plane tell a motion, too; a mirrored list has none but the nearest.
    assert np.allclose(calibration.rigid_transform(CUBE[:4], moved[:4]), matrix, atol=1e-9)
    mirrored = calibration.rigid_transform(CUBE, CUBE * (1, 1, -1))
    assert np.linalg.det(mirrored[:3, :3]) == pytest.approx(1)
    line = np.outer(np.arange(5.0), (0.1, 0.2, 0.3)) + (1000, 0, 0)
    for find in (calibration.rigid_transform, calibration.rotation_between):
        with pytest.raises(ValueError, match="on a line"):
            find(line, line + 1)
        with pytest.raises(ValueError, match="on a line"):
            find(CUBE, np.zeros((8, 3)))
        with pytest.raises(ValueError, match="the lists have 8 and 7 points"):
            find(CUBE, CUBE[:7])
        with pytest.raises(ValueError, match="target: expected finite coordinates"):
            find(CUBE, np.full((8, 3), np.inf))
        with pytest.raises(TypeError, match="source: expected points in space"):
            find(CUBE[:, :2], CUBE)
    with pytest.raises(ValueError, match="the lists have 3 points; 4 at least"):
        calibration.rigid_transform(CUBE[:3], CUBE[:3])
    with pytest.raises(ValueError, match="finite coordinates"):  # beyond single precision
        calibration.rotation_between(CUBE * 1e40, CUBE)


@pytest.mark.parametrize("name", ["camera.yml", "camera.xml", "camera.json", "Kamera äß.yml"])
def test_calibration_files_keep_every_digit_and_text(tmp_path: Path, name: str) -> None:
    intrinsic = np.array([(1234.5678901234567, 0, 319.5), (0, 1 / 3, 239.5), (0, 0, 1)])
    text = ' "left" <camera> Größe 相机 '
    path = tmp_path / name
    calibration.save_calibration(path, intrinsic, np.array([[0.1, -0.2, 0, 0, 1e-300]]), (640, 480), text)
    found = calibration.load_calibration(os.fspath(path))
    assert isinstance(found, CameraCalibration)
    assert np.array_equal(found.intrinsic, intrinsic) and found.intrinsic.dtype == np.float64
    assert np.array_equal(found.distortion, [[0.1, -0.2, 0, 0, 1e-300]])
    assert found.image_size == (640, 480) and found.description == text
    calibration.save_calibration(path, np.eye(3, dtype=np.float32), [], (1, 1))
    again = calibration.load_calibration(path)
    assert again.intrinsic.dtype == np.float32 and again.distortion.size == 0 and again.description == ""


def test_whole_numbers_of_other_programs_are_read_as_doubles(tmp_path: Path) -> None:
    path = tmp_path / "other.yml"
    path.write_text("%YAML:1.0\n---\nimageIntrinsic: !!opencv-matrix\n   rows: 1\n   cols: 2\n   dt: i\n   data: [ 3, 4 ]\n"
                    "isDistortionConfig: 1\n", encoding="ascii")
    found = calibration.load_calibration(path)
    assert found.intrinsic.dtype == np.float64 and found.intrinsic.tolist() == [[3, 4]]
    assert found.image_size == (0, 0) and found.distortion.shape == (0, 0)


def test_files_that_can_not_be_are_told_by_their_kind(tmp_path: Path) -> None:
    with pytest.raises(FileNotFoundError):
        calibration.load_calibration(tmp_path / "none.yml")
    (tmp_path / "text.yml").write_text("no calibration", encoding="ascii")
    with pytest.raises(ValueError, match="it is no calibration"):
        calibration.load_calibration(tmp_path / "text.yml")
    with pytest.raises(OSError):
        calibration.save_calibration(tmp_path / "none" / "camera.yml", np.eye(3), np.zeros(5), (4, 4))
    with pytest.raises(OSError):
        calibration.save_calibration(tmp_path, np.eye(3), np.zeros(5), (4, 4))
    with pytest.raises(ValueError, match="null"):
        calibration.load_calibration("a\0b")
    with pytest.raises(TypeError):
        calibration.load_calibration(3)  # type: ignore[arg-type]
    with pytest.raises(TypeError, match="intrinsic: expected a matrix"):
        calibration.save_calibration(tmp_path / "a.yml", [["a"]], np.zeros(5), (4, 4))
    with pytest.raises(TypeError, match="distortion: expected a matrix"):
        calibration.save_calibration(tmp_path / "a.yml", np.eye(3), np.zeros((2, 2, 2)), (4, 4))
    with pytest.raises(TypeError, match="description: expected str, got int"):
        calibration.save_calibration(tmp_path / "a.yml", np.eye(3), np.zeros(5), (4, 4), 5)  # type: ignore[arg-type]
    assert not (tmp_path / "a.yml").exists()


def test_boards_are_drawn_as_asked() -> None:
    cells = calibration.checkerboard(6, 4, 2, levels=(10, 300))
    assert cells.shape == (4, 6) and cells[0].tolist() == [10, 10, 44, 44, 10, 10] and cells[2, 0] == 44
    assert calibration.checkerboard(6, 4, 2, channels=4)[0, 0].tolist() == [0, 0, 0, 255]
    board = calibration.chessboard(100, 60, 20, margin=10)
    assert board.shape == (60, 100) and np.all(board[:10] == 255) and set(np.unique(board)) == {0, 255}
    with pytest.raises(ValueError, match="cells of 0 pixels"):
        calibration.checkerboard(6, 4, 0)
    with pytest.raises(ValueError, match="channels: expected 1, 3 or 4"):
        calibration.checkerboard(6, 4, 2, channels=2)  # type: ignore[arg-type]
    with pytest.raises(ValueError, match="1 byte to 1 GiB"):
        calibration.chessboard(0, 5, 2)


def test_corners_are_found_where_squares_meet() -> None:
    # Squares of 30 pixels in the middle of 320 x 240 less 20 a side: 9 x 6 from (25, 30) on, sides at half pixels.
    board = calibration.chessboard(320, 240, 30, margin=20)
    target = Target(columns=8, rows=5, pitch=3)
    for image in (board, np.repeat(board[:, :, None], 3, axis=2), board.astype(np.uint16) * 257):
        view = calibration.find_target(image, target)
        assert view is not None and view.image_size == (320, 240) and view.dot_diameter == 0
        x, y = np.meshgrid(54.5 + 30 * np.arange(8), 59.5 + 30 * np.arange(5))
        wanted = np.stack([x, y], axis=-1).reshape(-1, 2)
        flip = view.pixels[0, 0] > 160  # a board of an odd and an even number of squares tells its upper side
        assert np.allclose(view.pixels, wanted[::-1] if flip else wanted, atol=0.02)
        assert view.plane[9].tolist() == [3, 3] and np.all(view.deviations > 0)
    assert repr(view) == "TargetView(40 points in 320 x 240 pixels)"
    assert view is not None
    again = pickle.loads(pickle.dumps(view))
    assert np.array_equal(again.pixels, view.pixels) and again.image_size == view.image_size


def test_dots_are_found_at_their_centres() -> None:
    y, x = np.mgrid[:200, :260]
    gap = np.hypot((x - 30.3) % 40 - 20, (y - 20.6) % 40 - 20) - 10  # beyond the rims of dots at 50.3 + 40 i, 40.6 + 40 j
    gap[(x < 30) | (x > 230) | (y < 20) | (y > 180)] = 10
    image = np.rint(120 + 80 * np.tanh(1.2 * gap)).astype(np.uint8)
    view = calibration.find_target(image, Target("dot-grid", 5, 4, pitch=8, diameter=4))
    assert view is not None and view.dot_diameter == 4
    assert np.allclose(view.pixels, view.plane * 5 + (50.3, 40.6), atol=0.02)


def test_targets_that_are_not_there_are_none_and_bad_ones_refused() -> None:
    flat = np.full((60, 80), 128, np.uint8)
    assert calibration.find_target(flat, Target()) is None
    with pytest.raises(ValueError, match="columns"):
        calibration.find_target(flat, Target(columns=2))
    with pytest.raises(ValueError, match="20 to 32767 a side"):
        calibration.find_target(flat[:10], Target())
    with pytest.raises(ValueError, match="kind: expected one of 'chessboard', 'dot-grid'"):
        calibration.find_target(flat, Target("rings"))  # type: ignore[arg-type]
    with pytest.raises(TypeError, match="target: expected a Target, got tuple"):
        calibration.find_target(flat, (9, 6))  # type: ignore[arg-type]
    with pytest.raises(TypeError, match="image: expected an image: .*, got float64 array"):
        calibration.find_target(flat.astype(float), Target())


def test_pages_are_to_scale() -> None:
    page = calibration.target_svg(Target("dot-grid", 7, 5, pitch=20, diameter=10), width=200, height=150)
    assert 'width="200mm"' in page and 'height="150mm"' in page and page.count("<circle") == 35
    assert "<line" not in calibration.target_svg(Target(columns=3, rows=3), scale_bar=False) or "100" not in page
    assert calibration.target_pdf(Target()).startswith(b"%PDF-")
    with pytest.raises(ValueError, match="takes .* mm with its margin; the page has 100 x 210"):
        calibration.target_svg(Target(), width=100)


def test_import_loads_no_other_library() -> None:
    code = "import sys, orxfunctions; sys.exit(any(name in sys.modules for name in ('cv2', 'matplotlib', 'PIL')))"
    subprocess.run([sys.executable, "-c", code], check=True)
