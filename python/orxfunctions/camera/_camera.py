"""Cameras, opened, asked for frames, set and closed."""
from __future__ import annotations

import atexit
import operator
import os
from collections.abc import Iterator
from contextlib import contextmanager
from types import TracebackType
from typing import TYPE_CHECKING, Any, Literal, NamedTuple, NoReturn, Optional, Tuple, Type, Union

from .. import _core
from .._choices import choice
from .._types import Bytes
from ..errors import CameraError
from ._frame import Frame, FrameInfo, frame_of

if TYPE_CHECKING:
    from ._live import Live

Brand = Literal["any", "dahua", "basler", "hikvision", "daheng", "microvision", "imaging-source"]
Trigger = Literal["off", "software", "line1", "line2"]
_BRANDS = {"any": 12, "dahua": 7, "basler": 10, "hikvision": 11, "daheng": 13, "microvision": 14, "imaging-source": 15}
_POLICIES = {"newest": 0, "every": 1}
_TRIGGERS = {"off": 0, "software": 1, "line1": 2, "line2": 3}
_PARAMETERS = {"exposure": 1, "gain": 2, "frame_rate": 3, "trigger_mode": 4, "width": 5, "height": 6, "offset_x": 7,
               "offset_y": 8, "pixel_format": 9, "software_trigger": 10, "frame_number": 100, "frame_age": 101,
               "frames_lost": 102, "bytes_received": 103}


class CameraInfo(NamedTuple):
    """A camera that can be opened."""

    camera: int
    """Its number: ``Camera(camera)``."""
    width: int
    height: int
    channels: int
    """1 is grey, 3 is BGR."""
    is_open: bool
    """In this process."""


class CameraStatus(NamedTuple):
    """What state a camera is in, in words.

    C++: orx::TCameraStatus, orx::TCameraState, orx::TCameraReason, orx::cameraStateText, orx::cameraReasonText
    """

    state: str
    """``"closed"``, ``"open"`` (and not grabbing), ``"grabbing"``, ``"paused"``, ``"lost"``, ``"reconnecting"``."""
    reason: str
    """Such as ``"six fetches in a row failed"``."""
    since_ns: int
    """Nanoseconds since 1970."""
    attempts: int
    """To connect again, since it was lost."""


class FrameCounts(NamedTuple):
    """What became of a camera's frames since it was opened: delivered = taken + waiting + dropped + lost.

    C++: orx::TFrameCounts
    """

    delivered: int
    """By the camera, up to the last that was fetched."""
    taken: int
    waiting: int
    dropped: int
    """The full queue had no room for them."""
    lost: int
    """Nobody got them."""
    repeated: int
    """Fetches that gave the last picture again; they are no frames."""


class Camera:
    """A camera, open from its construction on; a context manager, and an iterable of frames.

    Parameters
    ----------
    index : int
        From 0, in the order of the cameras' serial numbers; see `list_cameras`.
    brand : {"any", "dahua", "basler", "hikvision", "daheng", "microvision", "imaging-source"}
        Whose cameras are counted. All that are open at a time are opened by the same.
    policy : {"newest", "every"}
        ``"newest"``: a frame is the newest there is, and those before it are dropped. ``"every"``: a queue holds `capacity`
        frames, beyond which the oldest is dropped.
    capacity : int
        1 to 64.
    frame_rate : int or None
        Pictures per second that the camera sends; None leaves it as it is.
    timeout : float or None
        Seconds to wait for a frame; None waits for ever.
    reconnect : bool
        A camera that is lost is connected again and set as it was, with pauses of 0.2 s that double up to 5 s. Without this
        it raises `CameraLost`.
    scale : {1, 2, 4}
        Frames are made smaller by this.
    rotation : {0, 90, 180, 270}
        Degrees, counter-clockwise.
    flip : bool
        Upside down, before they are turned.

    Raises
    ------
    CameraNotFound
        There is no such camera, or another program has it.
    CameraError
        Whatever else goes wrong, with the words of the library and of the module that drives the camera.

    Notes
    -----
    A thread of the library fetches the frames. Every method may be called from any thread; `close` ends loops of others
    over the camera. A camera without hardware, whose picture is a moving part, is there where none is connected.

    Examples
    --------
    Frames, each an array of its own::

        with camera.Camera(0, frame_rate=20) as cam:
            for frame in cam:
                print(frame.number, frame.time, frame.mean())

    C++: orx::TMultiCamera, orx::TCamera, orx::TCameraConfig, orx::TFrameOptions, orx::TFramePolicy, orx::openFrames,
    orx::closeFrames, orx::takeFrame, orx::frameCounts, orx::cameraStatus, orx::setReconnect, orx::TReconnect,
    orx::TLossPolicy, orx::MAXCameraNum
    """

    __slots__ = ("index", "timeout", "_session", "_reconnect", "_process", "__weakref__")

    index: int
    timeout: Optional[float]

    def __init__(self, index: int = 0, *, brand: Brand = "any", policy: Literal["newest", "every"] = "newest",
                 capacity: int = 8, frame_rate: Optional[int] = None, timeout: Optional[float] = 5.0,
                 reconnect: bool = False, scale: Literal[1, 2, 4] = 1, rotation: Literal[0, 90, 180, 270] = 0,
                 flip: bool = False) -> None:
        self._session = 0
        self._process = os.getpid()
        self.index = operator.index(index)
        self.timeout = _seconds(timeout)
        self._reconnect = bool(reconnect)
        if not 1 <= capacity <= 64:
            raise ValueError(f"capacity is {capacity}; 1 to 64 is expected")
        if scale not in (1, 2, 4):
            raise ValueError(f"scale is {scale}; 1, 2 or 4 is expected")
        if rotation not in (0, 90, 180, 270):
            raise ValueError(f"rotation is {rotation}; 0, 90, 180 or 270 degrees is expected")
        rate = 0 if frame_rate is None else _whole("frame_rate", frame_rate, 1)
        every = choice("policy", policy, _POLICIES) == 1
        kind = choice("brand", brand, _BRANDS)
        self._session = _core.camera_open(self.index, kind, every, capacity, self._reconnect, rate, scale, rotation,
                                          bool(flip))
        _processes.add(self._process)

    def read(self, timeout: Union[float, None, Literal["default"]] = "default") -> Frame:
        """The next frame; waits for one `timeout` seconds, for ever with None, as long as the camera's own by default.

        Raises
        ------
        CameraTimeout
            None came in time.
        CameraLost
            The camera gives no pictures any more: at once, or with `reconnect` when it did not come back in time.
        CameraError
            The camera was closed.
        """
        frame = self._take(self.timeout if timeout == "default" else _seconds(timeout))
        if frame is None:
            raise CameraError(f"camera {self.index} is closed")
        return frame

    def _take(self, timeout: Optional[float]) -> Optional[Frame]:
        found = _core.camera_take(self.index, self._session, timeout, self._reconnect)
        if found is None:
            return None
        return frame_of(found[0], FrameInfo(*found[1:]))

    def __iter__(self) -> Iterator[Frame]:
        """Frames until the camera is closed; raises what `read` raises."""
        while True:
            frame = self._take(self.timeout)
            if frame is None:
                return
            yield frame

    def latest(self) -> Bytes:
        """A copy of the latest picture, which stays in the queue; a black one that says so before the first.

        C++: orx::TImageThreadManager::getThreadImage
        """
        return _core.camera_latest(self.index, self._session)

    def close(self) -> None:
        """Closes the camera; loops over it end, also on other threads. May be called again.

        A process that was forked off leaves it to the one that opened it.
        """
        if self._process == os.getpid():
            _core.camera_close(self.index, self._session)

    def stop(self) -> None:
        """Ends acquisition until `start`; the region and the pixel format can be set only meanwhile."""
        _core.camera_stop(self.index, self._session)

    def start(self) -> None:
        """Begins acquisition again; frames are numbered anew, and have a higher `FrameInfo.start`."""
        _core.camera_start(self.index, self._session)

    @contextmanager
    def stopped(self) -> Iterator[None]:
        """``with cam.stopped(): cam.set("width", 640)``"""
        self.stop()
        try:
            yield
        finally:
            self.start()

    @property
    def is_open(self) -> bool:
        return _core.camera_is_open(self.index, self._session)

    @property
    def size(self) -> Tuple[int, int]:
        """Width and height that the camera announced when it was started, before frames are scaled and turned."""
        return _core.camera_size(self.index, self._session)

    @property
    def status(self) -> CameraStatus:
        """The state as it is now."""
        return CameraStatus(*_core.camera_status(self.index))

    @property
    def counts(self) -> FrameCounts:
        """What became of the frames since the camera was opened; all 0 once it is closed."""
        return FrameCounts(*_core.camera_counts(self.index))

    def get(self, name: Union[str, int]) -> float:
        """A parameter by its name, or by its number in vision_driver.h, in the units written there.

        ``"exposure"`` (microseconds), ``"gain"`` (tenths of a decibel), ``"frame_rate"``, ``"trigger_mode"``, ``"width"``,
        ``"height"``, ``"offset_x"``, ``"offset_y"``, ``"pixel_format"``; ``"frame_number"``, ``"frame_age"`` (milliseconds),
        ``"frames_lost"`` and ``"bytes_received"`` can't be set.
        """
        return _core.camera_get(self.index, self._session, _parameter(name))

    def set(self, name: Union[str, int], value: float) -> None:
        """Sets a parameter to a whole number, in the units of `get`."""
        _core.camera_set(self.index, self._session, _parameter(name), _whole("value", value))

    @property
    def exposure(self) -> float:
        """Exposure time, microseconds; whole ones can be set."""
        return self.get("exposure")

    @exposure.setter
    def exposure(self, value: float) -> None:
        self.set("exposure", _whole("exposure", value, 1))

    @property
    def gain(self) -> float:
        """Gain, decibels; set to the nearest tenth."""
        return self.get("gain") / 10.0

    @gain.setter
    def gain(self, value: float) -> None:
        if not -1e6 < value < 1e6:
            raise ValueError(f"gain: expected decibels, got {value!r}")
        self.set("gain", round(10.0 * value))

    @property
    def frame_rate(self) -> float:
        """Pictures per second of the free-running camera; whole numbers can be set."""
        return self.get("frame_rate")

    @frame_rate.setter
    def frame_rate(self, value: float) -> None:
        self.set("frame_rate", _whole("frame_rate", value, 1))

    @property
    def trigger(self) -> Trigger:
        """``"off"`` (free running), ``"software"`` (a picture for each `fire`), ``"line1"``, ``"line2"`` (for each rising
        edge at an input)."""
        number = self.get("trigger_mode")
        for name in ("off", "software", "line1", "line2"):
            if _TRIGGERS[name] == number:
                return name  # type: ignore[return-value]
        raise CameraError(f"camera {self.index} has a trigger mode of its own: {number:g}")

    @trigger.setter
    def trigger(self, value: Trigger) -> None:
        self.set("trigger_mode", choice("trigger", value, _TRIGGERS))

    def fire(self) -> None:
        """Takes one picture, where `trigger` is ``"software"``."""
        self.set("software_trigger", 1)

    def show(self, *, width: int = 640, rate: float = 10.0) -> Live:
        """A live view in a cell of a notebook: see `live`."""
        from ._live import live
        return live(self, width=width, rate=rate)

    def __enter__(self) -> Camera:
        return self

    def __exit__(self, kind: Optional[Type[BaseException]], error: Optional[BaseException],
                 trace: Optional[TracebackType]) -> None:
        self.close()

    def __del__(self) -> None:
        if getattr(self, "_session", 0):
            self.close()

    def __reduce__(self) -> NoReturn:
        raise TypeError("a camera can't be copied or pickled: open it where it is needed")

    def __repr__(self) -> str:
        return f"Camera({self.index}, {self.status.state if self.is_open else 'closed'})"


def _seconds(timeout: Any) -> Optional[float]:
    if timeout is None:
        return None
    seconds = float(timeout)
    if not seconds >= 0.0:
        raise ValueError(f"timeout: expected 0 or more seconds, got {timeout!r}")
    return seconds


def _whole(name: str, value: float, least: int = -2**31) -> int:
    """What fits into the 32 bits that a parameter has on every system."""
    try:
        number = int(value)
    except (OverflowError, ValueError):
        number = 2**31
    if number != value or not least <= number < 2**31:
        raise ValueError(f"{name}: expected a whole number{'' if least < 0 else f' from {least} on'}, got {value!r}")
    return number


def _parameter(name: Union[str, int]) -> int:
    return choice("name", name, _PARAMETERS) if isinstance(name, str) else operator.index(name)


def list_cameras(*, brand: Brand = "any") -> list[CameraInfo]:
    """The cameras that can be opened, at most nine; those that are closed are opened for a moment, which takes about a
    second and more where they are on a network.

    C++: orx::TMultiCamera
    """
    return [CameraInfo(*found) for found in _core.cameras_list(choice("brand", brand, _BRANDS))]


def connected_brand() -> Union[Brand, Literal["mixed"], None]:
    """The brand of the cameras that are connected, ``"mixed"`` for several; None without one.

    Raises
    ------
    CameraError
        There is no module that could tell.

    C++: orx::TMultiCamera::getCameraType
    """
    number = _core.cameras_brand()
    if number == -1:
        return None
    if number == -2:
        return "mixed"
    for name, known in _BRANDS.items():
        if known == number:
            return name  # type: ignore[return-value]
    raise CameraError(f"the connected brand is not known: {number}")


def has_runtime(brand: Brand) -> bool:
    """Whether the vendor's own runtime is installed; ``"any"`` needs none.

    C++: orx::TMultiCamera::CheckCameraDriverValid
    """
    return _core.cameras_runtime(choice("brand", brand, _BRANDS))


_processes: set[int] = set()
"""That have opened cameras."""


@atexit.register
def _close_all() -> None:
    # The threads of the library are in the process that started them alone.
    if os.getpid() in _processes:
        _core.cameras_close()
