"""From pixels to the millimetres of a plane, with what is known of their uncertainty."""
from __future__ import annotations

from collections.abc import Sequence
from typing import Any, Optional, Tuple

from numpy.typing import NDArray

from .. import _core
from .._paths import Path, path_bytes, text_bytes
from .._types import Doubles, Place, Points
from ._targets import TargetView


class PlaneCalibration:
    """The lens of a camera and the plane that parts lie on; made by `calibrate_plane` and `load`.

    A pinhole camera with radial and tangential distortion and one plane. Points of the plane are millimetres in the target's
    own axes, as it lay in the picture that told the plane. Uncertainties are standard ones, to first order (JCGM 100:2008,
    and JCGM 102 for what points have in common).

    Measure shapes in millimetres: map edge points, then fit. The centre of a circle's picture is not the picture of its
    centre as soon as the plane is tilted.

    Never changes, may be used by several threads at once, and can be pickled.

    C++: orx::TPlaneCalibration
    """

    __slots__ = ("_held",)

    def __init__(self, held: _core.PlaneCalibration) -> None:
        self._held = held

    def to_plane(self, pixels: Points) -> Doubles:
        """The points of the plane that pixels show.

        Parameters
        ----------
        pixels : array (n, 2)

        Returns
        -------
        float64 array (n, 2)
            Millimetres. A row is not-a-number where the line of sight does not meet the plane in front of the camera, and
            where the lens' formula folds back, far outside of the field that the targets covered.

        C++: orx::imageToPlane
        """
        return self._held.to_plane(pixels)

    def to_image(self, points: Points) -> Doubles:
        """The pixels that show points of the plane, to within 1e-9 pixels; rows of not-a-number as in `to_plane`.

        C++: orx::planeToImage
        """
        return self._held.to_image(points)

    def covariance_of(self, pixels: Points, pixel_covariance: Optional[NDArray[Any]] = None) -> Optional[Doubles]:
        """The covariance of mapped points, which share what is not known of the calibration.

        Distances between near points hardly feel that share; what is computed from points takes it along.

        Parameters
        ----------
        pixels : array (n, 2)
            2,000 at the most.
        pixel_covariance : array (2n, 2n), optional
            That of the pixels x0, y0, x1, y1, ...; none for exact ones.

        Returns
        -------
        float64 array (2n, 2n) or None
            Square millimetres, of x0, y0, x1, y1, ... None where a point has no place on the plane.

        C++: orx::planeCovariance
        """
        return self._held.covariance_of(pixels, pixel_covariance)

    def jacobian(self, pixel: Place) -> Optional[Doubles]:
        """The derivative of `to_plane` at a pixel: rows are x and y in millimetres, columns x and y in pixels.

        None where the pixel has no place on the plane.

        C++: orx::planeJacobian
        """
        return self._held.jacobian(pixel)

    def pixel_size(self, pixel: Place) -> Optional[float]:
        """Millimetres a pixel at a place of the picture, the root of the determinant of `jacobian`; None like that.

        C++: orx::pixelSize
        """
        return self._held.pixel_size(pixel)

    def sensitivity(self, pixels: Points) -> Optional[Doubles]:
        """The derivative of mapped points by the parameters, in the order of `covariance`.

        Returns
        -------
        float64 array (2n, 15) or None
            None where a point has no place on the plane.

        C++: orx::planeSensitivity
        """
        return self._held.sensitivity(pixels)

    def relocate(self, view: Optional[TargetView], *, height: float = 0.0, height_deviation: float = 0.0,
                 scale_deviation: float = 0.0, most_rms: float = 2.0) -> PlaneCalibration:
        """The same lens over another plane: that on which the target lies in this view, `height` above it.

        What was found about the lens, and its covariance, stays; `noise`, `rms` and `degrees_of_freedom` are those of the
        view. The options are those of `calibrate_plane`.

        Raises
        ------
        ValueError
            For a calibration without a lens, a view that is None or of a picture of another size, and where the points do
            not follow the lens.

        C++: orx::relocatePlane
        """
        return PlaneCalibration(self._held.relocate(view, height, height_deviation, scale_deviation, most_rms))

    def residuals(self, view: Optional[TargetView]) -> Doubles:
        """How far a view's points lie from where the calibration says they are, with the target laid where it shows it.

        Returns
        -------
        float64 array (n, 2)
            Found less projected, pixels. Without rows where the view is None, or shows no place for the target.

        C++: orx::planeResiduals
        """
        return self._held.residuals(view)

    def warnings(self, views: Sequence[Optional[TargetView]]) -> list[str]:
        """What about the views makes the calibration weaker than it could be, as sentences for a person.

        Parts of the picture that no target reached, too little tilt, a view that fits much worse than the others.

        C++: orx::planeWarnings
        """
        return self._held.warnings(views)

    def save(self, path: Path) -> None:
        """Writes a file that `load` and `load_calibration` read: .json, .xml, else YAML.

        Replaces an earlier file once the new one is whole on the disk; OSError where it can't be written.

        C++: orx::writePlaneCalibration
        """
        self._held.save(path_bytes(path))

    @classmethod
    def load(cls, path: Path) -> PlaneCalibration:
        """Reads what `save` wrote. OSError and its kinds where it can't be read, ValueError where it holds something else.

        C++: orx::readPlaneCalibration
        """
        return cls(_core.read_plane_calibration(path_bytes(path)))

    @property
    def image_size(self) -> Tuple[int, int]:
        """Width and height of the pictures."""
        return self._held.image_size

    @property
    def lens(self) -> bool:
        """Whether there is a lens; else `homography` tells all."""
        return self._held.lens

    @property
    def camera(self) -> Doubles:
        """(3, 3): fx, 0, cx; 0, fy, cy; 0, 0, 1, pixels."""
        return self._held.camera

    @property
    def distortion(self) -> Doubles:
        """(5,): k1, k2, p1, p2, k3 as in OpenCV."""
        return self._held.distortion

    @property
    def rotation(self) -> Doubles:
        """(3,): plane to camera, Rodrigues' vector."""
        return self._held.rotation

    @property
    def translation(self) -> Doubles:
        """(3,): plane to camera, millimetres; the parts' height is in it."""
        return self._held.translation

    @property
    def homography(self) -> Doubles:
        """(3, 3): plane to pixels where there is no lens; its last element is 1."""
        return self._held.homography

    @property
    def covariance(self) -> Doubles:
        """(15, 15), with a lens of fx, fy, cx, cy, k1, k2, p1, p2, k3, rotation, translation, 0 for what was not found; else
        of the homography's first 8 elements, row by row."""
        return self._held.covariance

    @property
    def degrees_of_freedom(self) -> float:
        """Of the covariance."""
        return self._held.degrees_of_freedom

    @property
    def noise(self) -> float:
        """Standard deviation of a found point's x or y, pixels."""
        return self._held.noise

    @property
    def rms(self) -> float:
        """Distances of found and projected points, root mean square, pixels."""
        return self._held.rms

    @property
    def coverage(self) -> float:
        """Share of the picture that the found points reached, 0 to 1."""
        return self._held.coverage

    @property
    def views(self) -> int:
        """In how many pictures the target was found."""
        return self._held.views

    @property
    def description(self) -> str:
        return self._held.description.decode("utf-8", "surrogateescape")

    def __eq__(self, other: object) -> bool:
        if not isinstance(other, PlaneCalibration):
            return NotImplemented
        return self._held.__getstate__() == other._held.__getstate__()

    __hash__ = None  # type: ignore[assignment]

    def __reduce__(self) -> Tuple[type[PlaneCalibration], Tuple[_core.PlaneCalibration]]:
        return PlaneCalibration, (self._held,)

    def __repr__(self) -> str:
        kind = "lens and plane" if self.lens else "plane"
        width, height = self.image_size
        return f"PlaneCalibration({kind}, {width} x {height} pixels, {self.views} views, rms {self.rms:.4f} px)"

    def _repr_html_(self) -> str:
        camera, (width, height) = self.camera, self.image_size
        size = self.pixel_size((0.5 * (width - 1), 0.5 * (height - 1)))
        rows = [("picture", f"{width} x {height}"), ("views", str(self.views)), ("rms, px", f"{self.rms:.4f}"),
                ("noise, px", f"{self.noise:.4f}"), ("coverage", f"{self.coverage:.0%}")]
        if self.lens:
            rows += [("focal length, px", f"{camera[0, 0]:.2f}, {camera[1, 1]:.2f}"),
                     ("centre, px", f"{camera[0, 2]:.2f}, {camera[1, 2]:.2f}"),
                     ("distortion", ", ".join(f"{value:.3g}" for value in self.distortion))]
        if size is not None:
            rows.append(("pixel in the middle, mm", f"{size:.5g}"))
        return "<table>" + "".join(f"<tr><th>{name}</th><td>{value}</td></tr>" for name, value in rows) + "</table>"


def calibrate_plane(views: Sequence[Optional[TargetView]], *, lens: bool = True, radial: int = 2, tangential: bool = True,
                    plane_view: int = 0, height: float = 0.0, height_deviation: float = 0.0, scale_deviation: float = 0.0,
                    most_rms: float = 2.0, description: str = "") -> PlaneCalibration:
    """The camera and the plane by which projected points lie nearest to those found.

    Parameters
    ----------
    views : sequence of TargetView or None
        What `find_target` gives of the pictures, at most 1,000; None is passed over.
    lens : bool
        Find the lens, from 3 views or more in which the target is tilted this way and that. False: no lens, but a homography
        from the one view `plane_view`, for a lens that draws straight lines straight.
    radial : int
        Radial coefficients, 0 to 3.
    tangential : bool
        Whether tangential distortion is found.
    plane_view : int
        The index of the view whose target lies on the plane of the parts.
    height, height_deviation : float
        Millimetres that the parts' upper side lies nearer to the camera than the target did, -1e6 to 1e6, and their standard
        uncertainty, 0 to 1e6. Both 0 without a lens.
    scale_deviation : float
        Relative standard uncertainty of the target's pitch, 0 to 0.1: all lengths share it.
    most_rms : float
        The largest root mean square distance of points from the camera found, pixels, above 0.
    description : str
        Kept with the calibration and in its file.

    Returns
    -------
    PlaneCalibration

    Raises
    ------
    ValueError
        With the reason where there is no calibration: no target in any view or in that of the plane, too few views or too
        much alike (the focal length would be uncertain by a twentieth or more), pictures of different sizes, points that
        follow no camera, an option outside its range. (There is no None: what was wrong with the pictures is what a user
        needs to know.)

    Notes
    -----
    Z. Zhang, "A flexible new technique for camera calibration", IEEE Trans. PAMI 22 (2000); weighted by the points'
    deviations.

    Examples
    --------
    >>> import numpy as np
    >>> y, x = np.mgrid[:4, :5]
    >>> millimetres = 10.0 * np.stack([x, y], axis=-1).reshape(-1, 2)
    >>> view = TargetView(millimetres, 8 * millimetres + (50, 40), np.full(20, 0.02), (500, 400))
    >>> flat = calibrate_plane([view], lens=False)
    >>> flat.to_plane([(130, 40)]).round(6)
    array([[10.,  0.]])
    >>> round(flat.pixel_size((130, 40)), 6)
    0.125

    C++: orx::calibratePlane, orx::TPlaneOptions, orx::TPlaneStatus, orx::planeStatusText
    """
    return PlaneCalibration(_core.calibrate_plane(views, lens, radial, tangential, plane_view, height, height_deviation,
                                                  scale_deviation, most_rms, text_bytes("description", description)))
