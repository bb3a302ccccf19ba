"""Finds taught parts in pictures: anywhere, at any angle and scale, partly hidden, in any light."""
from __future__ import annotations

from collections.abc import Sequence
from typing import Literal, NamedTuple, Optional

import numpy as np
from numpy.typing import NDArray

from .. import _core
from .._choices import choice
from .._collection import Collection
from .._types import Doubles, Image
from ._models import PartModel, held_of
from ._poses import PartPose

_POLARITIES = {"same": 0, "reversed": 1, "either": 2}


class FoundPart(NamedTuple):
    """A part; its arrays are views into those of `FoundParts`.

    C++: orx::TFoundPart
    """

    pose: PartPose
    score: float
    """Share of the outline's length that is seen, 0 to 1. Texture reaches a tenth by chance."""
    reversed: bool
    """Bright and dark are exchanged against the model."""
    covariance: Doubles
    """(4, 4), of x, y (pixels), angle (degrees) and scale."""
    deviations: Doubles
    """(4,): standard deviations of x, y, angle and scale; infinite where a free direction has a share in one."""
    rms: float
    """Of the seen points' distances from the picture's edges, pixels."""
    seen: NDArray[np.bool_]
    """For each point of the model's outline whether it is seen."""
    free: Doubles
    """(k, 4): directions of (x, y, angle, scale), angles and scales counted as pixels at the outline's radius, that the
    visible outline can't tell; in these the pose is as the search had it. They have no share in `covariance`."""

    def __repr__(self) -> str:
        return f"FoundPart({self.pose}, score={self.score:.3f})"


class FoundParts(Collection[FoundPart]):
    """The parts of a picture, the best first, in flat arrays; a sequence of `FoundPart`.

    C++: orx::TFindResult
    """

    __slots__ = ("poses", "scores", "reversed", "covariances", "deviations", "rms", "seen", "free")
    _name = "parts"

    poses: Doubles
    """(n, 4): x, y (pixels), angle (degrees), scale."""
    scores: Doubles
    reversed: NDArray[np.bool_]
    covariances: Doubles
    """(n, 4, 4)"""
    deviations: Doubles
    """(n, 4)"""
    rms: Doubles
    seen: NDArray[np.bool_]
    """(n, points of the outline)"""
    free: Sequence[Doubles]

    def __init__(self, poses: Doubles, scores: Doubles, reversed: NDArray[np.bool_], covariances: Doubles, deviations: Doubles,
                 rms: Doubles, seen: NDArray[np.bool_], free: Sequence[Doubles]) -> None:
        self.poses = poses
        self.scores = scores
        self.reversed = reversed
        self.covariances = covariances
        self.deviations = deviations
        self.rms = rms
        self.seen = seen
        self.free = free

    def __len__(self) -> int:
        return len(self.scores)

    def _at(self, i: int) -> FoundPart:
        return FoundPart(PartPose(*self.poses[i].tolist()), float(self.scores[i]), bool(self.reversed[i]),
                         self.covariances[i], self.deviations[i], float(self.rms[i]), self.seen[i], self.free[i])

    def __repr__(self) -> str:
        best = f", best score {self.scores[0]:.3f}" if len(self) else ""
        return f"FoundParts({len(self)} parts{best})"

    def _repr_html_(self) -> str:
        rows = "".join(f"<tr><td>{i}</td><td>{p.pose.x:.3f}</td><td>{p.pose.y:.3f}</td><td>{p.pose.angle:.3f}</td>"
                       f"<td>{p.pose.scale:.4f}</td><td>{p.score:.3f}</td><td>{p.deviations[0]:.4f}</td>"
                       f"<td>{p.deviations[1]:.4f}</td><td>{p.deviations[2]:.4f}</td></tr>" for i, p in enumerate(self[:20]))
        more = f"<p>and {len(self) - 20} more</p>" if len(self) > 20 else ""
        names = "".join(f"<th>{name}</th>" for name in ("part", "x, px", "y, px", "angle, °", "scale", "score", "σ x", "σ y",
                                                        "σ angle"))
        return f"<p>{len(self)} parts</p><table><tr>{names}</tr>{rows}</table>{more}"


def find_parts(image: Image, model: PartModel, *, start_angle: float = 0.0, angle_range: float = 360.0,
               min_scale: float = 1.0, max_scale: float = 1.0,
               polarity: Literal["same", "reversed", "either"] = "same", min_score: float = 0.6, max_parts: int = 1,
               max_overlap: float = 0.5, region: Optional[Sequence[int]] = None, greediness: float = 0.7,
               min_contrast: float = 0.0, noise: float = 0.0) -> FoundParts:
    """Finds a part in a picture, with the uncertainty of its place, angle and scale.

    Parameters
    ----------
    image : uint8 or uint16 array (rows, columns) or (rows, columns, 1 to 4)
    model : PartModel
    start_angle, angle_range : float
        Angles of the reference direction, degrees: from `start_angle` over `angle_range`, 0 to 360. Angles are told in
        [start_angle, start_angle + 360), or the 360/symmetry of it that a symmetric part looks different in.
    min_scale, max_scale : float
        Scales against the model, 0.2 to 5.
    polarity : {"same", "reversed", "either"}
        Whether bright and dark may be exchanged, against the picture that taught the model.
    min_score : float
        Least share of the outline that must be seen, 0.1 to 1.
    max_parts : int
        Parts at the most, the best first, 1 to 10,000.
    max_overlap : float
        Of two parts whose outlines' boxes cover each other by more than this share only the better is told; 0 to 1.
    region : (x, y, width, height), optional
        Where reference points may lie, whole pixels inside the picture.
    greediness : float
        0 follows every candidate that could still reach `min_score`; 1 gives up early: faster, and may miss parts that are
        hidden in large part.
    min_contrast : float
        Least contrast of an edge, grey levels; 0 takes a share of the model's, above the picture's noise.
    noise : float
        Standard deviation of the picture's noise, grey levels; 0 measures it.

    Returns
    -------
    FoundParts
        Without any part where it is not there.

    Notes
    -----
    About 0.0035 pixels and 0.01 degrees at noise 2, over parts 120 pixels wide of contrast 100. S. Hinterstoisser et al.,
    IEEE Trans. PAMI 34 (2012); C. Steger, DAGM 2001; Y. Chen and G. Medioni, Image and Vision Computing 10 (1992).

    Examples
    --------
    >>> import numpy as np
    >>> from orxfunctions.matching import teach_part
    >>> image = np.full((120, 160), 40, np.uint8)
    >>> image[30:90, 40:100] = 200
    >>> image[50:60, 100:120] = 200
    >>> found = find_parts(np.roll(image, (5, 10), axis=(0, 1)), teach_part(image, reference=(40, 30)))
    >>> [round(value, 1) for value in found[0].pose[:2]]
    [50.0, 35.0]

    C++: orx::findParts, orx::TFindOptions, orx::TPartPolarity
    """
    return FoundParts(*_core.find_parts(image, held_of(model), start_angle, angle_range, min_scale, max_scale,
                                        choice("polarity", polarity, _POLARITIES), min_score, max_parts, max_overlap, region,
                                        greediness, min_contrast, noise))
