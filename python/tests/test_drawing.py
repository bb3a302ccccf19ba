"""What is drawn lies where it should, to a part of a pixel, and nothing outside of the picture does harm."""
from __future__ import annotations

import pickle
import struct
import zlib
from pathlib import Path
from types import SimpleNamespace
from typing import Any

import numpy as np
import pytest
from numpy.typing import NDArray

from orxfunctions import analysis, drawing

Bytes = NDArray[np.uint8]


def blank(rows: int = 60, columns: int = 80) -> Bytes:
    return np.zeros((rows, columns), np.uint8)


def center_of(image: Bytes) -> tuple[float, float]:
    y, x = np.mgrid[: image.shape[0], : image.shape[1]]
    weight = image / image.sum()
    return float((x * weight).sum()), float((y * weight).sum())


@pytest.mark.parametrize("draw, what", [
    (drawing.circles, (40.25, 30.5, 12.75)),
    (drawing.circles, np.array([[40.25, 30.5, 12.75]])),
    (drawing.circles, SimpleNamespace(x=40.25, y=30.5, radius=12.75, score=3)),
    (drawing.circles, SimpleNamespace(circle=SimpleNamespace(x=40.25, y=30.5, r=12.75))),
    (drawing.circles, [SimpleNamespace(center=(40.25, 30.5), radius=12.75, start_angle=3.0, sweep=4.0)]),
    (drawing.ellipses, (40.25, 30.5, 25.5, 25.5, 17.0)),
    (drawing.ellipses, SimpleNamespace(center=(40.25, 30.5), semi_major=12.75, semi_minor=12.75, angle=0.0)),
    (drawing.arcs, [(40.25, 30.5, 12.75, 0.0, 180.0), (40.25, 30.5, 12.75, 180.0, 360.0)]),
])
def test_round_shapes_lie_between_the_pixels(draw: Any, what: Any) -> None:
    image = blank()
    draw(image, what, color=255)
    assert np.allclose(center_of(image), (40.25, 30.5), atol=0.1)
    y, x = np.nonzero(image > 100)
    assert np.allclose(np.hypot(x - 40.25, y - 30.5), 12.75, atol=0.8)
    assert len(x) > 60  # all round


def test_arcs_run_from_x_towards_y_or_along_their_points() -> None:
    image = blank()
    drawing.arcs(image, (40, 30, 20, 0, 90), color=255)
    y, x = np.nonzero(image)
    assert x.min() >= 38 and y.min() >= 28 and image[50, 40] > 100 and image[30, 60] > 100
    along = blank()
    outline = [(40.0, 50.0), (54.0, 44.0), (60.0, 30.0)]  # the same, the other way round
    drawing.arcs(along, SimpleNamespace(x=40, y=30, radius=20, points=outline), color=255)
    assert np.count_nonzero((image > 128) != (along > 128)) <= 4
    for record in (SimpleNamespace(center=(40, 30), radius=20, start_angle=0.0, end_angle=90.0, points=outline),
                   SimpleNamespace(center=(40, 30), radius=20, start_angle=0.0, sweep=90.0)):
        told = blank()
        drawing.arcs(told, [record], color=255)
        assert np.array_equal(told, image)
    over = blank()
    drawing.arcs(over, (40, 30, 20, 270, 0), color=255)
    assert over[10, 40] > 100 and over[30, 60] > 100 and over[50, 40] == 0 and over[30, 20] == 0


def test_lines_cross_the_whole_picture_and_segments_do_not() -> None:
    image = blank()
    drawing.lines(image, [(0.0, 7.0), SimpleNamespace(k=0.0, b=50.0)], color=255)
    assert image[7].all() and image[50].all() and not image[20].any()
    drawing.lines_polar(image, (0.0, 33.0), color=255)  # x = 33
    assert image[:, 33].all() and not image[20, :30].any()
    measured = SimpleNamespace(point=(15.0, 20.0), direction=(0.0, 1.0), from_=-5.0, to=10.0)
    drawing.lines(image, measured, color=255)
    assert image[:, 15].all()
    stretch = blank()
    drawing.segments(stretch, [measured], color=255)
    assert stretch[15:31, 15].all() and not stretch[:13, 15].any() and not stretch[33:, 15].any()
    piece = blank()
    drawing.segments(piece, SimpleNamespace(start=(10, 20), end=(30, 20)), color=255)
    assert piece[20, 10:31].all() and not piece[20, 35:].any() and not piece[20, :7].any()


def test_edges_and_contours_are_drawn_as_chains(disk: Bytes) -> None:
    found = analysis.edges(disk)
    images = [np.zeros_like(disk) for _ in range(4)]
    for image, what in zip(images, (found, found[0], list(found), [found[0].points])):
        drawing.edges(image, what, color=255)
        y, x = np.nonzero(image > 128)
        assert len(x) > 100 and np.allclose(np.hypot(x - 64.0, y - 48.0), 30.0, atol=0.8)
    square = np.array([[[10, 10]], [[10, 40]], [[50, 40]], [[50, 10]]], np.int32)  # as cv2 has it
    open_one, closed_one = blank(), blank()
    drawing.edges(open_one, square, color=255)
    drawing.contours(closed_one, [square], color=255)
    assert not open_one[10, 20:40].any() and closed_one[10, 20:40].all()


def test_dots_and_crosses() -> None:
    image = blank()
    drawing.points(image, [(20, 10), (60.5, 40.25)], color=255, radius=2)
    assert np.allclose(center_of(image[:25]), (20, 10), atol=0.05)
    assert np.allclose(center_of(image[25:]), (60.5, 15.25), atol=0.1)
    cross = blank()
    drawing.crosses(cross, (40, 30), color=255, length=6)
    assert cross[30, 34:47].all() and cross[24:37, 40].all() and cross[26, 36] == 0
    turned = blank()
    drawing.crosses(turned, (40, 30), color=255, length=6, angle=45)
    assert turned[34, 44] > 100 and turned[26, 36] > 100 and turned[30, 35] == 0


def test_what_lies_far_outside_does_no_harm() -> None:
    image = np.zeros((60, 80, 3), np.uint8)
    far = [(1e300, -1e300), (-1e300, 1e300), (1e15, 5.0), (-1e15, 5.0), (2.0**31, 2.0**40)]
    drawing.contours(image, [far])
    drawing.points(image, far)
    drawing.crosses(image, far, length=1e6)
    drawing.circles(image, (1e9, -1e9, 1e6))
    drawing.lines(image, [(1e12, 0.0), (1e-300, 20.0), (-5.0, 1e9)])
    drawing.segments(image, (-1e12, 40.0, 1e12, 40.0), color=(255, 0, 0), thickness=255)
    assert (image[40, :, 0] == 255).all()
    empty = blank()
    draw: Any
    for draw in (drawing.points, drawing.crosses, drawing.edges, drawing.contours, drawing.segments, drawing.circles,
                 drawing.ellipses, drawing.lines, drawing.arcs):
        draw(empty, [])
    assert not empty.any()


def test_colours_are_blue_green_red_or_grey() -> None:
    image = np.zeros((60, 80, 4), np.uint8)
    drawing.segments(image, (10, 20, 30, 20), color=(10, 20, 30))
    assert np.allclose(image[20, 20], [10, 20, 30, 255], rtol=0.15)  # smoothed
    grey = blank()
    drawing.segments(grey, (10, 20, 30, 20), color=(0, 0, 255))
    assert abs(grey[20, 20] - 76) <= 8  # 0.299 of 255


@pytest.mark.parametrize("call, kind, text", [
    (lambda d, i: d.points(i.astype(float), (1, 1)), TypeError, "image: expected an image to draw on: uint8 array"),
    (lambda d, i: d.points(i[:, ::2], (1, 1)), ValueError, "draw on a copy"),
    (lambda d, i: d.points(None, (1, 1)), TypeError, "image: expected an image to draw on.*got NoneType"),
    (lambda d, i: d.points(i, "here"), TypeError, r"places: expected places: numbers of shape \(n, 2\), got str"),
    (lambda d, i: d.points(i, [(1, 2, 3)]), TypeError, "places: expected places"),
    (lambda d, i: d.points(i, (np.nan, 1)), ValueError, "finite"),
    (lambda d, i: d.points(i, (1, 1), radius=-1), ValueError, "radius is -1.0; 0 to 1000"),
    (lambda d, i: d.points(i, (1, 1), color="red"), TypeError, "color: expected a grey level or"),
    (lambda d, i: d.points(i, (1, 1), color=(0, 0, 256)), ValueError, "color: expected 0 to 255"),
    (lambda d, i: d.circles(i, (1, 2)), TypeError, r"circles: expected circles: \(x, y, radius\) each, got tuple"),
    (lambda d, i: d.circles(i, None), TypeError, "circles: .*got NoneType"),
    (lambda d, i: d.circles(i, (1, 2, -1)), ValueError, "circles: expected sizes of 0 to 1000000 pixels"),
    (lambda d, i: d.circles(i, (1, np.inf, 1)), ValueError, "circles: expected finite numbers"),
    (lambda d, i: d.edges(i, 5), TypeError, "edges: expected edges, contours or one of them, got int"),
    (lambda d, i: d.contours(i, np.array([["a", "b"]], object)), TypeError, "contours: expected places"),
    (lambda d, i: d.segments(i, (1, 2, 3, 4), thickness=0), ValueError, "thickness is 0; 1 to 255"),
    (lambda d, i: d.lines(i, (np.inf, 2)), ValueError, "lines: expected finite numbers"),
    (lambda d, i: d.crosses(i, (1, 1), length=np.nan), ValueError, "length is nan"),
    (lambda d, i: d.text(i, "a", ratio=0), TypeError, "channel"),
    (lambda d, i: d.text(np.zeros((9, 9, 3), np.uint8), "a", ratio=0), ValueError, "ratio"),
    (lambda d, i: d.show(i.astype(np.float32)), TypeError, "image: expected a picture: uint8, uint16 or bool .*float32"),
    (lambda d, i: d.show(i[:0]), ValueError, "at least one pixel"),
    (lambda d, i: d.picture(i).save("found.jpg"), ValueError, "ends with .png"),
])
def test_refusals_name_the_argument(call: Any, kind: type[Exception], text: str) -> None:
    with pytest.raises(kind, match=text):
        call(drawing, blank())


def test_a_picture_that_can_not_be_written_is_refused() -> None:
    image = blank()
    image.flags.writeable = False
    with pytest.raises(ValueError, match="can be written"):
        drawing.circles(image, (10, 10, 5))
    region = blank()[5:25, 10:40]  # rows with steps between them, in place
    drawing.circles(region, (15, 10, 5), color=255)
    assert region.base is not None and region.base[15, 30] > 100


def png_pixels(data: bytes) -> Bytes:
    """Reads the PNG files that the package writes: one IDAT, rows as differences to those above."""
    assert data[:8] == b"\x89PNG\r\n\x1a\n"
    chunks, at = {}, 8
    while at < len(data):
        size, kind = struct.unpack(">I4s", data[at: at + 8])
        body = data[at + 8: at + 8 + size]
        assert struct.unpack(">I", data[at + 8 + size: at + 12 + size])[0] == zlib.crc32(kind + body)
        chunks[kind] = body
        at += 12 + size
    assert list(chunks) == [b"IHDR", b"IDAT", b"IEND"]
    width, height, depth, colour = struct.unpack(">IIBB", chunks[b"IHDR"][:10])
    assert depth == 8
    channels = {0: 1, 2: 3, 6: 4}[colour]
    lines = np.frombuffer(zlib.decompress(chunks[b"IDAT"]), np.uint8).reshape(height, 1 + width * channels)
    assert (lines[:, 0] == 2).all()
    return np.cumsum(lines[:, 1:], axis=0, dtype=np.uint8).reshape(height, width, channels)


def test_show_gives_a_picture_that_can_be_seen_and_saved(tmp_path: Path, disk: Bytes) -> None:
    before = disk.copy()
    found = drawing.show(disk, edges=analysis.edges(disk), circles=[(64, 48, 10)], points=[(64, 48)], lines=(0.0, 5.0),
                         segments=[(1, 90, 50, 90)], arcs=(64, 48, 40, 0, 30), ellipses=(20, 20, 10, 5, 0), text="one disk")
    assert np.array_equal(disk, before)
    assert found.array.shape == (96, 128, 3) and np.allclose(found.array[48, 74], [0, 0, 255], atol=40)
    found.save(tmp_path / "found.PNG")
    data = (tmp_path / "found.PNG").read_bytes()
    assert data == found._repr_png_()
    assert np.array_equal(png_pixels(data), found.array[:, :, ::-1])
    assert np.array_equal(pickle.loads(pickle.dumps(found)).array, found.array) and repr(found) == "Picture(128 x 96)"


def test_pictures_of_other_kinds_are_shown_without_a_change() -> None:
    truth = np.eye(4, dtype=bool)
    assert np.array_equal(drawing.picture(truth).array[:, :, 1], np.eye(4, dtype=np.uint8) * 255)
    deep = np.array([[0, 2048], [4095, 1024]], np.uint16)
    assert drawing.picture(deep).array[:, :, 0].tolist() == [[0, 127], [255, 63]]
    alpha = np.full((2, 3, 4), 9, np.uint8)
    assert drawing.picture(alpha[:, ::-1]).array.shape == (2, 3, 3)
