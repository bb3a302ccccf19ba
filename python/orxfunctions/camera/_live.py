"""A camera's picture in a cell of a notebook."""
from __future__ import annotations

import threading
from typing import Any

from .._png import png_of
from ..errors import CameraError
from ._camera import Camera


class Live:
    """A live view; it follows the camera until that is closed, or `stop` is called.

    Attributes
    ----------
    widget : ipywidgets.Image
    """

    def __init__(self, camera: Camera, widget: Any, width: int, rate: float) -> None:
        self.widget = widget
        self._camera = camera
        self._width = width
        self._pause = 1.0 / rate
        self._ended = threading.Event()
        self._shown = -1
        self._thread = threading.Thread(target=self._run, name=f"live view of camera {camera.index}", daemon=True)
        self._thread.start()

    @property
    def is_running(self) -> bool:
        return self._thread.is_alive()

    def stop(self) -> None:
        """Ends the view; the last picture stays."""
        self._ended.set()
        if threading.current_thread() is not self._thread:
            self._thread.join()

    def _run(self) -> None:
        while not self._ended.is_set():
            try:
                delivered = self._camera.counts.delivered
                image = self._camera.latest() if delivered != self._shown else None
            except CameraError:  # closed
                return
            if image is not None:
                self._shown = delivered
                step = max(1, -(-image.shape[1] // self._width))
                self.widget.value = png_of(image[::step, ::step])
            self._ended.wait(self._pause)

    def _ipython_display_(self) -> None:
        from IPython.display import display  # type: ignore[import]
        display(self.widget)


def live(camera: Camera, *, width: int = 640, rate: float = 10.0) -> Live:
    """Shows what a camera sees in a cell of a notebook, at most `width` pixels wide and `rate` times a second.

    Frames stay in the camera's queue: a loop over the camera gets them all. Needs ipywidgets.

    Raises
    ------
    ImportError
        ipywidgets is not installed.
    """
    if width < 1:
        raise ValueError(f"width is {width}; at least 1 pixel is expected")
    if not 0.0 < rate <= 100.0:
        raise ValueError(f"rate is {rate}; more than 0, to 100 pictures a second is expected")
    try:
        from ipywidgets import Image  # type: ignore[import]
    except ImportError:
        raise ImportError("a live view needs ipywidgets (Debian: python3-ipywidgets; pip install ipywidgets)") from None
    return Live(camera, Image(format="png"), width, rate)
