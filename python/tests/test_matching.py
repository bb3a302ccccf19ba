"""Parts: taught, found, drawn and kept."""
from __future__ import annotations

import pickle
from pathlib import Path
from typing import Any

import numpy as np
import pytest
from numpy.typing import NDArray

from orxfunctions import matching
from orxfunctions.matching import OutlineArc, OutlineLine, PartModel, PartPose

Bytes = NDArray[np.uint8]
SHAPE = [(-50.0, -30.0), (50.0, -30.0), (50.0, 10.0), (10.0, 10.0), (10.0, 30.0), (-50.0, 30.0)]  # of no symmetry


def picture(x: float, y: float, angle: float = 0.0, scale: float = 1.0, levels: tuple[int, int] = (60, 160)) -> Bytes:
    """The shape at a pose, drawn at four times the size and averaged: sides along the axes lie at quarters of a pixel."""
    turn = np.radians(angle)
    rows, columns = (np.mgrid[:960, :1280] + 0.5) / 4 - 0.5
    across, down = columns - x, rows - y
    u = (np.cos(turn) * across + np.sin(turn) * down) / scale
    v = (np.cos(turn) * down - np.sin(turn) * across) / scale
    inside = (abs(u) < 50) & (abs(v) < 30) & ~((u > 10) & (v > 10))
    share = inside.reshape(240, 4, 320, 4).mean(axis=(1, 3))
    for axis in (0, 1):
        share = 0.25 * np.roll(share, 1, axis) + 0.5 * share + 0.25 * np.roll(share, -1, axis)
    return np.asarray(np.rint(levels[0] + (levels[1] - levels[0]) * share), np.uint8)


@pytest.fixture(scope="module")
def model() -> PartModel:
    return matching.teach_part(picture(140, 110), region=(80, 70, 120, 80), reference=(140, 110))


def test_models_tell_their_outline(model: PartModel) -> None:
    u, v = model.outline.T
    sides = np.min([abs(abs(u) - 50), abs(abs(v) - 30), abs(u - 10), abs(v - 10)], axis=0)
    corners = np.min([np.hypot(u - x, v - y) for x, y in SHAPE], axis=0)
    assert np.all(sides[corners > 8] < 0.05) and np.sum(corners > 8) > 200
    assert np.allclose(np.hypot(*model.normals.T), 1)
    assert np.all(model.normals[(u > 49) & (abs(v + 10) < 15)] @ (-1, 0) > 0.99)  # from dark to bright: inwards
    report = model.report
    assert report.symmetry == 1 and not report.angles_are_free and report.radius == pytest.approx(58, abs=1)
    assert report.points_per_level[0] == len(model.outline) and report.least_contrast > 30
    assert model.taught_pose == PartPose(140, 110, 0, 1)


@pytest.mark.parametrize("x, y, angle, scale", [(160.25, 121.5, 0, 1), (150.5, 118.25, 37, 1), (155, 120, 200, 1.2)])
def test_parts_are_found_where_they_lie(model: PartModel, x: float, y: float, angle: float, scale: float) -> None:
    found = matching.find_parts(picture(x, y, angle, scale), model, min_scale=0.8, max_scale=1.3)
    assert len(found) == 1 and found
    part = found[0]
    assert np.allclose((part.pose.x, part.pose.y), (x, y), atol=0.05)
    turned = (part.pose.angle - angle + 180) % 360 - 180
    assert abs(turned) < 0.1 and part.pose.scale == pytest.approx(scale, abs=2e-3)
    assert part.score > 0.9 and not part.reversed and part.seen.dtype == np.bool_ and part.seen.mean() > 0.9
    assert np.allclose(part.deviations, np.sqrt(np.diag(part.covariance))) and np.all(part.deviations > 0)
    assert part.free.shape == (0, 4) and part.rms < 0.2
    corners = part.pose.apply(SHAPE)
    assert abs(corners[0] - (x, y)).max() < 60 * scale
    assert part.pose.inverse().apply(corners) == pytest.approx(np.array(SHAPE))


def test_several_parts_are_a_sequence_in_flat_arrays(model: PartModel) -> None:
    both = np.concatenate([picture(160, 120), picture(150, 115, 90)], axis=1)
    found = matching.find_parts(both, model, max_parts=5)
    assert len(found) == 2 and found.poses.shape == (2, 4) and found.seen.shape == (2, len(model.outline))
    assert sorted(round(part.pose.x) for part in found) == [160, 470]
    assert np.shares_memory(found[1].seen, found.seen) and len(found[0:5]) == 2 and found[-1].score == found.scores[1]
    with pytest.raises(IndexError, match="there are 2 parts"):
        found[2]
    again = pickle.loads(pickle.dumps(found))
    assert np.array_equal(again.covariances, found.covariances) and again[0].pose == found[0].pose
    assert repr(found).startswith("FoundParts(2 parts, best score ") and found._repr_html_().count("<tr>") == 3
    left = matching.find_parts(both, model, max_parts=5, region=(0, 0, 320, 240))
    assert len(left) == 1 and round(left[0].pose.x) == 160


def test_light_may_be_exchanged_where_asked(model: PartModel) -> None:
    dark = picture(160, 120, levels=(160, 60))
    assert len(matching.find_parts(dark, model)) == 0
    assert [part.reversed for part in matching.find_parts(dark, model, polarity="either")] == [True]
    empty = matching.find_parts(np.full((240, 320), 90, np.uint8), model)
    assert len(empty) == 0 and empty.poses.shape == (0, 4) and not empty and repr(empty) == "FoundParts(0 parts)"


def test_regions_polygons_and_masks_teach_the_same(model: PartModel) -> None:
    image = picture(140, 110)
    mask = np.zeros(image.shape, np.bool_)
    mask[70:150, 80:200] = True
    polygon = [(79.5, 69.5), (199.5, 69.5), (199.5, 149.5), (79.5, 149.5)]
    for options in ({"mask": mask}, {"polygon": polygon}):
        taught = matching.teach_part(image, reference=(140, 110), **options)  # type: ignore[arg-type]
        assert abs(len(taught.outline) - len(model.outline)) < 5 and taught.report.symmetry == 1
    with pytest.raises(ValueError, match="region, polygon, mask: expected one of them"):
        matching.teach_part(image, mask=mask, region=(0, 0, 9, 9))
    with pytest.raises(ValueError, match="the mask is not"):
        matching.teach_part(image, mask=mask[1:])


def test_drawings_teach_parts_that_pictures_show() -> None:
    ends = [*SHAPE[1:], SHAPE[0]]
    lines = [OutlineLine((x / 10, -y / 10), (u / 10, -v / 10)) for (x, y), (u, v) in zip(SHAPE, ends)]
    drawn = matching.teach_drawing([lines], pixels_per_unit=10, y_is_up=True, reference=(0, 0))
    part = matching.find_parts(picture(155.4, 118.7, 25), drawn)[0]
    assert np.allclose(part.pose, (155.4, 118.7, 25, 1), atol=0.1)
    ring = matching.teach_drawing([[OutlineArc((0, 0), 30)]])
    assert ring.report.angles_are_free and ring.report.symmetry == 0
    assert np.allclose(np.hypot(*ring.outline.T), 30, atol=1e-9)


def test_models_are_kept_to_the_last_bit(model: PartModel, tmp_path: Path) -> None:
    model.save(tmp_path / "Teil ä.part")
    for again in (PartModel.load(tmp_path / "Teil ä.part"), PartModel.from_bytes(model.to_bytes()),
                  pickle.loads(pickle.dumps(model))):
        assert again == model and np.array_equal(again.outline, model.outline) and again != 5
    assert "<svg" in model._repr_html_() and repr(model).startswith(f"PartModel({len(model.outline)} points, ")
    with pytest.raises(ValueError, match="no part model"):
        PartModel.from_bytes(model.to_bytes()[:-1])
    with pytest.raises(FileNotFoundError):
        PartModel.load(tmp_path / "none")
    with pytest.raises(OSError):
        model.save(tmp_path / "none" / "a.part")


def test_refusals_name_what_is_wrong(model: PartModel) -> None:
    image = picture(140, 110)
    flat = np.full((60, 80), 9, np.uint8)
    refused: list[tuple[type[Exception], str, Any]] = [
        (ValueError, "the outline has 0 points; 16 to", lambda: matching.teach_part(flat)),
        (ValueError, "not inside the picture of 80 x 60", lambda: matching.teach_part(flat, region=(70, 0, 20, 20))),
        (ValueError, "sigma is 9; 0.5 to 5", lambda: matching.teach_part(image, sigma=9)),
        (ValueError, "min_score is 0; 0.1 to 1", lambda: matching.find_parts(image, model, min_score=0)),
        (ValueError, "not inside the picture", lambda: matching.find_parts(image, model, region=(-1, 0, 9, 9))),
        (ValueError, "polarity: expected one of 'same'",
         lambda: matching.find_parts(image, model, polarity="no")),  # type: ignore[arg-type]
        (ValueError, "one is not finite, of no length",
         lambda: matching.teach_drawing([[OutlineLine((0, 0), (np.nan, 1))]])),
        (TypeError, "image: expected an image",
         lambda: matching.find_parts(image.astype(float), model)),
        (TypeError, "model: expected a PartModel, got NoneType",
         lambda: matching.find_parts(image, None)),  # type: ignore[arg-type]
        (TypeError, r"region: expected whole pixels \(x, y, width, height\)",
         lambda: matching.teach_part(image, region=(0, 0, 9.5, 9))),  # type: ignore[arg-type]
        (ValueError, "region: expected whole pixels .* within 32 bits",
         lambda: matching.find_parts(image, model, region=(0, 0, 2**40, 9))),
        (TypeError, r"outlines\[0\]\[0\]: expected an OutlineLine or an OutlineArc, got int",
         lambda: matching.teach_drawing([[3]])),  # type: ignore[list-item]
        (TypeError, r"outlines\[0\]\[0\].start: expected a place",
         lambda: matching.teach_drawing([[OutlineLine((1,), (2, 3))]])),
    ]
    for kind, text, call in refused:
        with pytest.raises(kind, match=text):
            call()


def test_poses_move_what_was_laid_out() -> None:
    pose = PartPose(100, 50, 90, 2)
    assert pose.apply_to_point((10, 5)) == pytest.approx((90, 70))
    assert pose.apply_to_angle(100) == pytest.approx(-170)
    centre, radius = pose.apply_to_circle((10, 5), 4)
    assert centre == pytest.approx((90, 70)) and radius == pytest.approx(8)
    (centre, size, angle) = pose.apply_to_box(((10, 5), (6, 3), 10))
    assert centre == pytest.approx((90, 70)) and size == pytest.approx((12, 6)) and angle == pytest.approx(100)
    start, end = pose.apply_to_segment((0, 0), (10, 0))
    assert start == pytest.approx((100, 50)) and end == pytest.approx((100, 70))
    assert pose.apply_to_calipers(start_angle=5, search_length=20, width=5) == pytest.approx((95, 40, 10))
    assert pose.compose(PartPose(10, 5, 30, 3)) == pytest.approx((90, 70, 120, 6))
    assert pose.compose(pose.inverse()) == pytest.approx((0, 0, 0, 1))
    # A degree at 20 pixels moves by 0.349 pixels across, here along x; a hundredth of the scale along y by 0.1.
    share = pose.covariance_of((10, 0), np.diag([0.0, 0, 1, 1e-4]))
    assert share == pytest.approx(np.diag([np.radians(20) ** 2, 0.01]))
    with pytest.raises(ValueError, match="scale: expected"):
        PartPose(0, 0, 0, 0).inverse()
    with pytest.raises(TypeError, match=r"covariance: expected a matrix: .* \(4, 4\)"):
        pose.covariance_of((0, 0), np.eye(3))


def test_parts_are_drawn_in_place(model: PartModel) -> None:
    image = picture(160, 120)
    found = matching.find_parts(image, model)
    colour = np.repeat(image[:, :, None], 3, axis=2)
    matching.draw_found_parts(colour, model, found, colours=matching.PartColours(thickness=3))
    assert np.any(np.all(colour[88:92, 150] == (80, 220, 0), axis=1))  # the upper side is at 89.5
    half = colour.copy()
    hidden = found[0]._replace(seen=np.zeros_like(found[0].seen))
    matching.draw_found_parts(half, model, [hidden], colours=matching.PartColours(unseen=(1, 2, 3), thickness=3))
    assert np.any(np.all(half[88:92, 150] == (1, 2, 3), axis=1))
    wide = image.astype(np.uint16)
    matching.draw_part_model(wide, model, PartPose(100, 100))
    assert wide.max() > 30000 and np.mean(wide == image) > 0.98
    with pytest.raises(ValueError, match="draw on a copy"):
        matching.draw_part_model(image[:, ::2], model, PartPose(0, 0))
    image.flags.writeable = False
    with pytest.raises(ValueError, match="an array that can be written"):
        matching.draw_part_model(image, model, PartPose(0, 0))
