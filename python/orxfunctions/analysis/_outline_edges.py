"""Where an outline really passes: edge points across a contour, a line, a circle or an ellipse."""
from __future__ import annotations

from typing import NamedTuple, Tuple

import numpy as np
from numpy.typing import NDArray

from .. import _core
from .._choices import choice
from .._types import Doubles, Image, Place, Points
from ._calipers import POLARITIES, Polarity

OUTLINE_SMOOTHING: float = _core.CONTOUR_EDGE_SMOOTHING
"""Neighbouring points share pixels as those of an edge finder of this smoothing do: for the fits."""


class Probes(NamedTuple):
    """Places to look at, and how; row i of each array is probe i."""

    points: Doubles
    """(n, 2), pixels."""
    normals: Doubles
    """(n, 2), of length 1: the directions of the profiles, out of the object."""
    curvature: Doubles
    """1 / pixels, above 0 where the outline bends away from the normal; 0 where it is straight or not known."""


class OutlineEdges(NamedTuple):
    """One answer for each probe."""

    found: NDArray[np.bool_]
    position: Doubles
    """(n, 2): of the edge, pixels; of the place asked for where none was found."""
    offset: Doubles
    """From the place asked for, along the normal, pixels."""
    contrast: Doubles
    """Grey levels along the normal: positive from dark to bright."""
    deviation: Doubles
    """Standard deviation of the position along the normal, pixels; 0 where none was found."""

    @property
    def points(self) -> Doubles:
        """(k, 2): the edges that were found, which is what fits take."""
        return self.position[self.found]

    @property
    def deviations(self) -> Doubles:
        """(k,): the deviations of `points`."""
        return self.deviation[self.found]


def edges_across(image: Image, probes: Probes, *, reach: float = 3.0, min_contrast: float = 8.0,
                 polarity: Polarity = "any", noise: float = 0.0) -> OutlineEdges:
    """Where outlines that are known to within a few pixels really pass, with an uncertainty for each point.

    Parameters
    ----------
    image : uint8 or uint16 array
    probes : Probes
        See `probes_along_contour`, `probes_along_line`, `probes_along_circle`, `probes_along_ellipse`.
    reach : float
        How far a profile reaches to either side, pixels, 1.5 to 50; its outer thirds must lie on object and ground.
    min_contrast : float
        Least step between the two, grey levels.
    polarity : {"any", "dark-to-bright", "bright-to-dark"}
        Seen along the normal.
    noise : float
        Standard deviation of the image noise, grey levels; 0 measures it in the image.

    Notes
    -----
    The edge is where the profile crosses the middle between the levels at its ends; the displacement of curved edges by blur
    is taken back. On disks of radius 12 to 60 the mean place is right to 0.004 pixel.

    Examples
    --------
    >>> import numpy as np
    >>> image = np.full((40, 40), 40, np.uint8)
    >>> image[:, 20:] = 200
    >>> found = edges_across(image, probes_along_line((20, 5), (20, 35)))
    >>> bool(found.found.all()), float(found.points[:, 0].mean().round(2))
    (True, 19.5)

    C++: orx::edgesAcross, orx::TContourEdgeOptions, orx::TContourEdge, orx::TEdgeProbe, orx::pointsOf, orx::deviationsOf
    """
    return OutlineEdges(*_core.edges_across(image, probes.points, probes.normals, probes.curvature, reach, min_contrast,
                                            choice("polarity", polarity, POLARITIES), noise))


def probes_along_contour(contour: Points) -> Probes:
    """Probes at every pixel of a closed contour of whole pixels, half a pixel outside of it.

    C++: orx::probesAlongContour
    """
    return Probes(*_core.probes_along_contour(contour))


def probes_along_line(start: Place, end: Place, *, spacing: float = 1.0) -> Probes:
    """Probes along a segment, both ends included; normals to the right of one who walks along it on the screen.

    C++: orx::probesAlongLine
    """
    return Probes(*_core.probes_along_line(start, end, spacing))


def probes_along_circle(center: Place, radius: float, *, spacing: float = 1.0, start_angle: float = 0.0,
                        sweep: float = 360.0) -> Probes:
    """Probes along a circle or an arc (degrees from the x axis towards the y axis); normals point outwards.

    C++: orx::probesAlongCircle
    """
    return Probes(*_core.probes_along_circle(center, radius, spacing, start_angle, sweep))


def probes_along_ellipse(center: Place, size: Tuple[float, float], angle: float = 0.0, *, spacing: float = 1.0) -> Probes:
    """Probes along an ellipse of the full axes `size`, the first of them at `angle` degrees; normals point outwards.

    C++: orx::probesAlongEllipse
    """
    return Probes(*_core.probes_along_ellipse(center, size, angle, spacing))
