"""From pixels to millimetres, by cameras whose truth is known."""
from __future__ import annotations

import pickle
from pathlib import Path
from typing import Any

import numpy as np
import pytest
from numpy.typing import NDArray

from orxfunctions import calibration
from orxfunctions.calibration import PlaneCalibration, TargetView

Doubles = NDArray[np.float64]
FOCAL, MIDDLE, BEND = 900.0, np.array([319.5, 239.5]), -0.1
GRID = 10.0 * np.stack(np.meshgrid(np.arange(9), np.arange(7)), axis=-1).reshape(-1, 2)


def turn(x: float, y: float) -> Doubles:
    a, b = np.radians([x, y])
    about_x = np.array([(1, 0, 0), (0, np.cos(a), -np.sin(a)), (0, np.sin(a), np.cos(a))])
    return np.asarray(about_x @ [(np.cos(b), 0, np.sin(b)), (0, 1, 0), (-np.sin(b), 0, np.cos(b))])


def seen(points: Doubles, rotation: Doubles, place: tuple[float, float, float]) -> Doubles:
    """Pixels of points of a plane, through a pinhole with one radial coefficient."""
    space = np.column_stack([points, np.zeros(len(points))]) @ rotation.T + place
    flat = space[:, :2] / space[:, 2:]
    return np.asarray(flat * (1 + BEND * (flat ** 2).sum(axis=1, keepdims=True)) * FOCAL + MIDDLE)


def view_of(x: float, y: float, place: tuple[float, float, float] = (-40, -30, 200), noise: float = 0.02,
            seed: int = 1) -> TargetView:
    shifts = np.random.default_rng(seed).normal(0, noise, GRID.shape)
    return TargetView(GRID, seen(GRID, turn(x, y), place) + shifts, np.full(len(GRID), 0.02), (640, 480))


TILTS = [(0, 0), (30, 0), (-30, 0), (0, 30), (0, -30), (25, 25), (-25, 25), (20, -30)]


@pytest.fixture(scope="module")
def views() -> list[TargetView]:
    return [view_of(x, y, seed=i) for i, (x, y) in enumerate(TILTS)]


@pytest.fixture(scope="module")
def plane(views: list[TargetView]) -> PlaneCalibration:
    return calibration.calibrate_plane(views, description="Tisch 3, 相机")


def test_camera_and_plane_are_found_within_their_uncertainty(plane: PlaneCalibration) -> None:
    found = np.array([*plane.camera[[0, 1, 0, 1], [0, 1, 2, 2]], plane.distortion[0]])
    off = found - [FOCAL, FOCAL, *MIDDLE, BEND]
    assert np.all(np.abs(off) < 4 * np.sqrt(np.diag(plane.covariance)[[0, 1, 2, 3, 4]]))
    assert abs(off[0]) < 2 and plane.lens and plane.views == 8 and plane.image_size == (640, 480)
    assert 0.015 < plane.noise < 0.025 and 0.02 < plane.rms < 0.035 and plane.degrees_of_freedom > 800
    assert np.allclose(plane.translation, (-40, -30, 200), atol=1)


def test_pixels_become_millimetres_and_pixels_again(plane: PlaneCalibration) -> None:
    spots = np.array([(3.0, 4.0), (41.5, 33.25), (77.0, 58.0)])
    pixels = seen(spots, np.eye(3), (-40, -30, 200))
    points = plane.to_plane(pixels)
    assert np.allclose(points, spots, atol=0.02) and np.allclose(plane.to_image(points), pixels, atol=1e-8)
    share = plane.covariance_of(pixels)
    assert share is not None and share.shape == (6, 6)
    assert np.all(np.abs((points - spots).ravel()) < 5 * np.sqrt(np.diag(share)))
    size = plane.pixel_size(MIDDLE)
    assert size is not None and size == pytest.approx(200 / FOCAL, rel=2e-3)


def test_covariance_is_carried_over_by_the_derivatives(plane: PlaneCalibration) -> None:
    pixels = np.array([(200.0, 150.0), (420.0, 300.0)])
    slopes = []
    for pixel in pixels:
        ahead, behind = plane.to_plane(pixel + 1e-3 * np.eye(2)), plane.to_plane(pixel - 1e-3 * np.eye(2))
        slope = (ahead - behind).T / 2e-3
        jacobian = plane.jacobian(pixel)
        assert jacobian is not None and np.allclose(jacobian, slope, rtol=1e-6, atol=1e-9)
        slopes.append(slope)
    blocks = np.block([[slopes[0], np.zeros((2, 2))], [np.zeros((2, 2)), slopes[1]]])
    own = np.diag([0.01, 0.02, 0.01, 0.02]) ** 2
    moved = plane.sensitivity(pixels)
    assert moved is not None and moved.shape == (4, 15)
    total = plane.covariance_of(pixels, own)
    assert total is not None
    assert np.allclose(total, moved @ plane.covariance @ moved.T + blocks @ own @ blocks.T, rtol=1e-6)


def test_places_without_a_line_of_sight_are_told(plane: PlaneCalibration) -> None:
    away = [(1e7, 0.0), (float("nan"), 5.0)]
    assert np.all(np.isnan(plane.to_plane([(319.5, 239.5), *away])), axis=1).tolist() == [False, True, True]
    assert plane.pixel_size(away[0]) is None and plane.jacobian(away[0]) is None
    assert plane.covariance_of(away) is None and plane.sensitivity(away) is None
    assert plane.to_plane([]).shape == (0, 2)
    with pytest.raises(ValueError, match="there are no points"):
        plane.covariance_of([])
    with pytest.raises(ValueError, match="the covariance is not 2 x 2 doubles"):
        plane.covariance_of([(1, 2)], np.eye(3))
    with pytest.raises(ValueError, match="pixel_covariance: expected finite"):
        plane.covariance_of([(1, 2)], np.full((2, 2), np.nan))
    with pytest.raises(TypeError, match=r"pixels: expected points: .*, got float64 array of shape \(3,\)"):
        plane.to_plane(np.zeros(3))


def test_plane_moves_and_the_lens_stays(plane: PlaneCalibration, views: list[TargetView]) -> None:
    moved = plane.relocate(view_of(10, 0, (-30, -20, 220), seed=20), height=5, height_deviation=0.1)
    assert np.array_equal(moved.camera, plane.camera) and moved.description == plane.description
    # 5 mm nearer along the plane's normal, which leads away from the camera.
    assert np.allclose(moved.translation, np.array([-30, -20, 220]) - 5 * turn(10, 0)[:, 2], atol=0.5)
    residuals = plane.residuals(views[3])
    assert residuals.shape == GRID.shape and 0.015 < residuals.std() < 0.025
    assert plane.residuals(None).shape == (0, 2)
    with pytest.raises(ValueError, match="pictures of different sizes"):
        plane.relocate(views[0]._replace(image_size=(320, 240)))
    with pytest.raises(ValueError, match="the target was not found"):
        plane.relocate(None)


def test_warnings_name_what_is_weak(plane: PlaneCalibration, views: list[TargetView]) -> None:
    assert plane.warnings(views) == []
    flat = plane.warnings([views[0], None])
    assert len(flat) == 1 and "tilted by 15 degrees and more in 0 pictures only" in flat[0]
    rough = plane.warnings([*views[:3], view_of(0, 30, noise=0.5), *views[4:]])
    assert len(rough) == 1 and rough[0].startswith("view 4 fits by 0.")


def test_one_view_and_no_lens_give_a_homography() -> None:
    view = TargetView(GRID, 4 * GRID + (100, 50), np.full(len(GRID), 0.02), (640, 480))
    flat = calibration.calibrate_plane([None, view], lens=False, plane_view=1)
    assert not flat.lens and np.allclose(flat.homography, [(4, 0, 100), (0, 4, 50), (0, 0, 1)], atol=1e-6)
    assert flat.pixel_size((200, 200)) == pytest.approx(0.25)
    with pytest.raises(ValueError, match="the calibration has no lens"):
        flat.relocate(view)


def test_calibrations_that_fail_say_why(views: list[TargetView]) -> None:
    wild = views[0]._replace(pixels=np.random.default_rng(1).uniform(0, 400, GRID.shape))
    cases: list[tuple[list[Any], dict[str, Any], str]] = [
        ([None, None], {}, "the target was not found"),
        (views[:2], {}, "too few pictures of the target"),
        ([views[0]] * 4, {}, "too much alike"),
        ([*views, views[0]._replace(image_size=(1, 1))], {}, "pictures of different sizes"),
        ([wild], {"lens": False}, "the points follow no camera"),
        (views, {"radial": 4}, "radial is 4; 0 to 3"),
        (views, {"most_rms": 0.0}, "most_rms is 0; above 0"),
        (views, {"plane_view": 8}, "the view that tells the plane does not show the target"),
        ([views[0]._replace(pixels=GRID * np.nan)], {"lens": False}, "not finite"),
        ([views[0]._replace(plane=GRID[1:])], {"lens": False}, "differ in length"),
    ]
    for given, options, text in cases:
        with pytest.raises(ValueError, match=text):
            calibration.calibrate_plane(given, **options)
    with pytest.raises(TypeError, match=r"views\[1\]: expected a TargetView or None, got int"):
        calibration.calibrate_plane([views[0], 5])  # type: ignore[list-item]
    with pytest.raises(TypeError, match=r"views\[0\].pixels: expected points"):
        calibration.calibrate_plane([views[0]._replace(pixels=np.zeros(3))])
    with pytest.raises(TypeError, match="views: expected a sequence"):
        calibration.calibrate_plane(None)  # type: ignore[arg-type]


@pytest.mark.parametrize("name", ["plane.yml", "plane.json", "plane.xml"])
def test_files_and_pickles_keep_everything(plane: PlaneCalibration, tmp_path: Path, name: str) -> None:
    plane.save(tmp_path / name)
    assert PlaneCalibration.load(str(tmp_path / name)) == plane
    camera = calibration.load_calibration(tmp_path / name)
    assert np.array_equal(camera.intrinsic, plane.camera) and camera.description == "Tisch 3, 相机"
    again = pickle.loads(pickle.dumps(plane))
    assert again == plane and again != calibration.calibrate_plane([view_of(0, 0)], lens=False) and plane != 5
    assert repr(again).startswith("PlaneCalibration(lens and plane, 640 x 480 pixels, 8 views, rms 0.0")
    assert "focal length" in again._repr_html_()


def test_files_of_something_else_are_refused(plane: PlaneCalibration, tmp_path: Path) -> None:
    with pytest.raises(FileNotFoundError):
        PlaneCalibration.load(tmp_path / "none.yml")
    calibration.save_calibration(tmp_path / "camera.yml", np.eye(3), np.zeros(5), (640, 480))
    with pytest.raises(ValueError, match="it tells no plane"):
        PlaneCalibration.load(tmp_path / "camera.yml")
    with pytest.raises(OSError):
        plane.save(tmp_path / "none" / "plane.yml")
