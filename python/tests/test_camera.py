"""Cameras without hardware: frames, parameters, closing, loss. The pictures of a folder tell their own numbers."""
from __future__ import annotations

import copy
import os
import pickle
import subprocess
import sys
import threading
import time
from pathlib import Path
from types import SimpleNamespace
from typing import Any, Iterator

import numpy as np
import pytest

from orxfunctions import analysis, camera
from orxfunctions._png import png_of
from orxfunctions.errors import CameraError, CameraLost, CameraNotFound, CameraTimeout

PICTURES = 23
MODULES = os.environ.get("ORX_TEST_MODULES", "")


@pytest.fixture
def settings(tmp_path: Path, monkeypatch: pytest.MonkeyPatch) -> Iterator[Path]:
    """Camera 0 replays pictures of 24 x 16 whose last pixel is their number; camera 1 is a scene of 64 x 80."""
    for i in range(PICTURES):
        image = np.full((16, 24), 100, np.uint8)
        image[15, 23] = i
        image[0, 0] = 255
        (tmp_path / f"picture{1000 + i}.png").write_bytes(png_of(image))
    file = tmp_path / "settings.ini"
    file.write_text("[camera1]\nsource = replay\nfolder = .\nrate = 100\n"
                    "[camera2]\nsource = scene\nwidth = 64\nheight = 80\nrate = 100\n", encoding="utf-8")
    monkeypatch.setenv("TQVISION_CONFIG", str(file))
    yield file


def test_every_frame_has_its_number_and_an_array_of_its_own(settings: Path) -> None:
    before = time.time()
    frames = []
    with camera.Camera(0, policy="every", capacity=32) as cam:
        assert cam.size == (24, 16) and cam.is_open and repr(cam).startswith("Camera(0, ")
        for frame in cam:
            frames.append(frame)
            if len(frames) == 12:
                break
        counts = cam.counts
        assert cam.status.state == "grabbing"
    assert not cam.is_open and repr(cam) == "Camera(0, closed)"
    assert counts.taken == 12
    assert counts.delivered == counts.taken + counts.waiting + counts.dropped + counts.lost
    last = 0
    for frame in frames:
        assert isinstance(frame, np.ndarray) and frame.shape == (16, 24) and frame.dtype == np.uint8
        assert frame.info.is_numbered and frame.number == last + 1 + frame.info.lost_before + frame.info.dropped_before
        assert frame[15, 23] == (frame.number - 1) % PICTURES  # also after the camera was closed
        assert before - 1.0 < frame.time < time.time() + 1.0
        last = frame.number
    assert not any(np.shares_memory(a, b) for a in frames for b in frames if a is not b)
    assert len({frame.info.start for frame in frames}) == 1


def test_frames_are_arrays_that_keep_their_number(settings: Path) -> None:
    with camera.Camera(0) as cam:
        frame = cam.read()
    number = frame.number
    assert number >= 1
    for same in (pickle.loads(pickle.dumps(frame)), copy.deepcopy(frame), frame[:], frame.copy()):
        assert type(same) is camera.Frame and same.info == frame.info and np.array_equal(same, frame)
    assert type(frame > 100) is np.ndarray and type(frame + 1) is np.ndarray and type(frame.max()) is np.uint8
    changed: Any = frame
    changed += 1  # in place
    assert changed is frame and frame.number == number and frame[0, 1] == 101
    assert isinstance(analysis.threshold_level(frame), int)
    assert (frame._repr_png_() or b"").startswith(b"\x89PNG") and frame[0]._repr_png_() is None
    assert np.zeros(3, np.uint8).view(camera.Frame).number == 0


def test_frames_are_scaled_and_turned(settings: Path) -> None:
    with camera.Camera(0, scale=2) as cam:
        assert cam.read().shape == (8, 12)
    with camera.Camera(0, rotation=90) as cam:
        turned = cam.read()
        assert turned.shape == (24, 16) and turned[23, 0] == 255  # counter-clockwise: the top left goes down
    with camera.Camera(0, flip=True) as cam:
        assert cam.read()[15, 0] == 255


def test_closing_ends_loops_of_other_threads(settings: Path) -> None:
    cam = camera.Camera(0, timeout=None)
    cam.trigger = "software"  # nothing comes any more
    seen: list[int] = []
    loop = threading.Thread(target=lambda: seen.extend(frame.number for frame in cam))
    loop.start()
    time.sleep(0.2)
    assert loop.is_alive()
    cam.close()
    loop.join(5.0)
    assert not loop.is_alive()
    cam.close()
    with pytest.raises(CameraError, match="camera 0 is closed"):
        cam.read()
    use: Any
    for use in (lambda: cam.exposure, lambda: cam.latest(), cam.stop, lambda: cam.set("gain", 1), lambda: cam.size):
        with pytest.raises(CameraError, match="camera 0 is closed"):
            use()
    assert list(cam) == []


def test_others_run_while_one_waits(settings: Path) -> None:
    with camera.Camera(0) as cam:
        cam.trigger = "software"
        steps = 0
        waiting = threading.Thread(target=lambda: pytest.raises(CameraTimeout, drain, cam))
        waiting.start()
        while waiting.is_alive():
            steps += 1
    assert steps > 1000


def drain(cam: camera.Camera) -> None:
    while True:
        cam.read(0.3)


def test_a_trigger_takes_one_picture(settings: Path) -> None:
    with camera.Camera(1, policy="every") as cam:
        assert cam.trigger == "off"
        cam.trigger = "software"
        assert cam.trigger == "software"
        with pytest.raises(CameraTimeout, match=r"camera 1 \(grabbing\): no frame within 0.3 s") as caught:
            drain(cam)
        assert isinstance(caught.value, TimeoutError) and isinstance(caught.value, CameraError)
        with pytest.raises(CameraTimeout):
            cam.read(0)
        cam.fire()
        first = cam.read()
        cam.fire()
        assert cam.read().number == first.number + 1


def test_parameters_are_set_and_read(settings: Path) -> None:
    with camera.Camera(1, frame_rate=40) as cam:
        assert cam.frame_rate == 40.0 and cam.get(3) == 40.0
        cam.frame_rate = 50
        assert cam.get("frame_rate") == 50.0
        with pytest.raises(CameraError, match="parameter 100"):
            cam.set("frame_number", 3)
        with pytest.raises(CameraError, match="refused parameter 4711"):
            cam.get(4711)
        with pytest.raises(ValueError, match="name: expected one of 'exposure', 'gain'"):
            cam.get("exposure_time")
        wrong: Any
        for wrong in (2.5, 0, float("nan"), float("inf"), 2**31):
            with pytest.raises(ValueError, match="frame_rate: expected a whole number from 1 on"):
                cam.frame_rate = wrong
        with pytest.raises(ValueError, match="gain: expected decibels"):
            cam.gain = float("nan")
        with pytest.raises(ValueError, match="trigger: expected one of 'off'"):
            cam.trigger = "line7"  # type: ignore[assignment]


def test_acquisition_stops_and_starts_again(settings: Path) -> None:
    with camera.Camera(1, policy="every") as cam, camera.Camera(0, policy="every", capacity=64) as other:
        first = cam.read()
        with cam.stopped():
            cam.set("frame_rate", 60)
            with pytest.raises(CameraTimeout, match="open"):
                drain(cam)
        later = cam.read()
        while later.info.start == first.info.start:
            later = cam.read()
        assert later.info.start > first.info.start
        last = other.read().number
        for _ in range(10):  # the other one has missed nothing untold
            frame = other.read()
            assert frame.number == last + 1 + frame.info.lost_before + frame.info.dropped_before
            last = frame.number
    with pytest.raises(CameraError, match="closed"):
        cam.start()


def test_cameras_are_listed_and_opened_once(settings: Path) -> None:
    assert camera.list_cameras() == [(0, 24, 16, 1, False), (1, 64, 80, 1, False)]
    with camera.Camera(1) as cam:
        assert camera.list_cameras()[1] == camera.CameraInfo(1, 64, 80, 1, True)
        assert cam.read().shape == (80, 64)
        with pytest.raises(CameraError, match="camera 1 is open already"):
            camera.Camera(1)
        with pytest.raises(CameraError, match="another brand are open"):
            camera.Camera(0, brand="basler")
    settings.unlink()
    assert camera.list_cameras() == []
    with pytest.raises(CameraNotFound, match="found no camera of type 12"):
        camera.Camera(0)


@pytest.mark.parametrize("index", [2, 8, 9, -1, 10**6])
def test_there_is_no_such_camera(settings: Path, index: int) -> None:
    with pytest.raises(CameraNotFound, match=f"camera {index}"):
        camera.Camera(index)


@pytest.mark.parametrize("options, kind, text", [
    ({"index": "0"}, TypeError, "str"),
    ({"brand": "acme"}, ValueError, "brand: expected one of 'any'"),
    ({"policy": "all"}, ValueError, "policy: expected one of 'newest', 'every'"),
    ({"capacity": 65}, ValueError, "capacity is 65; 1 to 64"),
    ({"scale": 3}, ValueError, "scale is 3"),
    ({"rotation": 45}, ValueError, "rotation is 45"),
    ({"frame_rate": 0}, ValueError, "frame_rate: expected a whole number from 1 on, got 0"),
    ({"timeout": -1}, ValueError, "timeout: expected 0 or more seconds"),
    ({"timeout": float("nan")}, ValueError, "timeout: expected 0 or more seconds"),
])
def test_options_are_checked_before_the_camera_is_opened(options: Any, kind: type[Exception], text: str) -> None:
    with pytest.raises(kind, match=text):
        camera.Camera(**options)


def test_a_live_view_follows_the_camera(settings: Path, monkeypatch: pytest.MonkeyPatch) -> None:
    modules: dict[str, Any] = sys.modules
    monkeypatch.setitem(modules, "ipywidgets", None)
    with camera.Camera(0) as cam:
        with pytest.raises(ImportError, match="ipywidgets"):
            cam.show()
        widgets: Any = SimpleNamespace(Image=lambda format: SimpleNamespace(format=format, value=b""))
        monkeypatch.setitem(modules, "ipywidgets", widgets)
        shown: list[Any] = []
        monkeypatch.setitem(modules, "IPython.display", SimpleNamespace(display=shown.append))
        view = cam.show(width=24, rate=100)
        view._ipython_display_()
        assert shown == [view.widget]
        pictures: set[bytes] = set()
        end = time.monotonic() + 20.0
        while len(pictures) < 3 and time.monotonic() < end:
            pictures.add(view.widget.value)
            assert cam.read().number >= 1  # the view takes no frames away
        assert len(pictures) >= 3 and view.widget.value.startswith(b"\x89PNG") and view.is_running
        with pytest.raises(ValueError, match="rate is 0"):
            camera.live(cam, rate=0)
        view.stop()
        assert not view.is_running
        second = camera.live(cam)
    second._thread.join(5.0)
    assert not second.is_running


def run(code: str, **environment: str) -> str:
    done = subprocess.run([sys.executable, "-c", code], env={**os.environ, **environment}, capture_output=True, timeout=120)
    assert done.returncode == 0, done.stderr.decode()
    return done.stdout.decode("utf-8")


def test_a_process_may_end_with_its_cameras_open(settings: Path) -> None:
    assert run("from orxfunctions import camera\n"
               "cams = [camera.Camera(i) for i in range(2)]\n"
               "print(all(cam.read().number > 0 for cam in cams))\n") == "True\n"


def test_a_camera_stays_with_its_process_and_is_not_copied(settings: Path) -> None:
    with camera.Camera(0) as cam:
        duplicate: Any
        for duplicate in (copy.copy, pickle.dumps):
            with pytest.raises(TypeError, match="can't be copied or pickled"):
                duplicate(cam)
        assert cam.read().number >= 1
    assert run("import os\n"
               "from orxfunctions import camera\n"
               "cam = camera.Camera(0)\n"
               "child = os.fork()\n"
               "if child == 0:\n"
               "    cam.close()\n"
               "    del cam\n"
               "    os._exit(7)\n"
               "ended = os.waitstatus_to_exitcode(os.waitpid(child, 0)[1])\n"
               "print(ended, cam.read().number > 0)\n") == "7 True\n"


def unplugged(failures: int) -> dict[str, str]:
    """Camera 0 fails so often after 40 pictures."""
    paths = [str(Path(MODULES) / "flaky"), os.environ.get("LD_LIBRARY_PATH", "")]
    return {"ORX_TEST_UNPLUG": f"0 40 {failures}", "LD_LIBRARY_PATH": os.pathsep.join(paths)}


@pytest.mark.skipif(not MODULES, reason="the folder of the fake camera modules is not told")
def test_a_camera_that_is_unplugged_is_lost(settings: Path) -> None:
    told = run("from orxfunctions import camera, errors\n"
               "cam = camera.Camera(0, policy='every', capacity=64, timeout=30)\n"
               "count = 0\n"
               "try:\n"
               "    for frame in cam: count += 1\n"
               "except errors.CameraLost as lost: print(count, lost, cam.status.state)\n"
               "cam.close()\n", **unplugged(1_000_000))
    count, text = told.split(" ", 1)
    assert 1 <= int(count) <= 40 and text == "camera 0 is lost: six fetches in a row failed lost\n"
    assert issubclass(CameraLost, CameraError)


@pytest.mark.skipif(not MODULES, reason="the folder of the fake camera modules is not told")
def test_a_camera_that_comes_back_goes_on(settings: Path) -> None:
    told = run("from orxfunctions import camera\n"
               "cam = camera.Camera(0, policy='every', capacity=64, timeout=30, reconnect=True)\n"
               "starts = set()\n"
               "for frame in cam:\n"
               "    starts.add(frame.info.start)\n"
               "    if len(starts) == 2: cam.close()\n"
               "print(len(starts))\n", **unplugged(10))
    assert told == "2\n"


@pytest.mark.skipif(not MODULES, reason="the folder of the fake camera modules is not told")
def test_a_missing_module_is_named_with_what_a_user_is_told() -> None:
    told = run("from orxfunctions import camera, errors\n"
               "for use in (camera.Camera, camera.list_cameras, camera.Camera):\n"
               "    try: use()\n"
               "    except errors.CameraError as error: print(type(error).__name__, error)\n",
               LD_LIBRARY_PATH=str(Path(MODULES) / "none"), PYTHONIOENCODING="utf-8")
    line = "CameraError the driver module TQVisionDriver can't be loaded (load相机dll失败)\n"
    assert told == 3 * line
