"""Models of parts, taught from pictures and drawings."""
from __future__ import annotations

from collections.abc import Sequence
from typing import Literal, NamedTuple, Optional, Tuple, Union

from .. import _core
from .._choices import choice
from .._paths import Path, path_bytes
from .._types import Binary, Doubles, Image, Place, Points
from ._poses import Pair, PartPose

_SIDES = {"unknown": 0, "left": 1, "right": 2}


class TeachReport(NamedTuple):
    """What teaching found.

    C++: orx::TTeachReport
    """

    points_per_level: list[int]
    """Finest first."""
    least_contrast: float
    """Grey levels: of the weakest twentieth of the outline; 0 for drawings."""
    radius: float
    """Of the outline about the reference point, pixels."""
    symmetry: int
    """The part looks the same after 1/symmetry of a turn about `symmetry_centre`: 1 for none, 6 for a hexagon; 0 for every
    angle (a ring)."""
    near_symmetry: int
    """After 1/near_symmetry of a turn most of the outline looks the same, and the rest tells the turns from each other: a
    gear with a tooth missing. 0 for every angle; 1 where there is no such turn beyond those of `symmetry`."""
    near_share: float
    """How much of it, 0.85 to 1; 0 where `near_symmetry` is 1."""
    symmetry_centre: Pair
    """Of both, in the model's plane."""
    angles_are_free: bool
    """The outline can't tell a turn about `symmetry_centre` (a ring, an arc) ..."""
    a_shift_is_free: bool
    """... a shift along a line (parallel edges) ..."""
    free_direction: float
    """of that direction, degrees in the model's plane, 0 to 180 ..."""
    scale_is_free: bool
    """... or the scale (a corner, a straight edge)."""
    warnings: list[str]
    """In English, for a person."""


class OutlineLine(NamedTuple):
    """A line of a drawing, in its units; walked from its start to its end.

    C++: orx::outlineLine, orx::TOutlinePiece
    """

    start: Place
    end: Place


class OutlineArc(NamedTuple):
    """An arc of a drawing.

    C++: orx::outlineArc
    """

    centre: Place
    radius: float
    start_angle: float = 0.0
    """Degrees from the x axis towards the y axis."""
    sweep: float = 360.0
    """Degrees in the same sense, -360 to 360, not 0; 360 is a circle."""


class PartModel:
    """What a part's outline looks like; made by `teach_part`, `teach_drawing`, `load` and `from_bytes`.

    Never changes, may be used by several threads at once, and can be pickled.

    C++: orx::TPartModel
    """

    __slots__ = ("_held",)

    def __init__(self, held: _core.PartModel) -> None:
        self._held = held

    @property
    def report(self) -> TeachReport:
        """What teaching found: symmetry, and what the outline can't tell."""
        return TeachReport(*self._held.report())

    @property
    def taught_pose(self) -> PartPose:
        """Where the part lay when it was taught; (0, 0, 0, 1) for drawings."""
        return PartPose(*self._held.taught_pose())

    @property
    def outline(self) -> Doubles:
        """(n, 2): the finest level's points in the model's plane."""
        return self._held.outline()

    @property
    def normals(self) -> Doubles:
        """(n, 2): the outline's normals from dark to bright, of length 1."""
        return self._held.normals()

    def save(self, path: Path) -> None:
        """Writes a file, replacing an earlier one once the new one is whole on the disk; OSError where it can't be written.

        C++: orx::writePartModel
        """
        self._held.save(path_bytes(path))

    @classmethod
    def load(cls, path: Path) -> PartModel:
        """The model that was written, to the last bit; OSError where it can't be read, ValueError where it is none.

        C++: orx::readPartModel
        """
        return cls(_core.read_part_model(path_bytes(path)))

    def to_bytes(self) -> bytes:
        """The bytes of that file, for a recipe or a database.

        C++: orx::partModelToBytes
        """
        return self._held.to_bytes()

    @classmethod
    def from_bytes(cls, data: bytes) -> PartModel:
        """The model in such bytes; ValueError for others.

        C++: orx::partModelFromBytes
        """
        return cls(_core.part_model_from_bytes(data))

    def __eq__(self, other: object) -> bool:
        if not isinstance(other, PartModel):
            return NotImplemented
        return self.to_bytes() == other.to_bytes()

    __hash__ = None  # type: ignore[assignment]

    def __reduce__(self) -> Tuple[type[PartModel], Tuple[_core.PartModel]]:
        return PartModel, (self._held,)

    def __repr__(self) -> str:
        report = self.report
        return f"PartModel({report.points_per_level[0]} points, {len(report.points_per_level)} levels, " \
               f"radius {report.radius:.1f} px, symmetry {report.symmetry})"

    def _repr_html_(self) -> str:
        report, outline = self.report, self.outline
        low, high = outline.min(axis=0) - 2, outline.max(axis=0) + 2
        dots = "".join(f"M{x:.1f} {y:.1f}h0" for x, y in outline[:: 1 + len(outline) // 2000])
        width, height = high - low
        warnings = "".join(f"<li>{text}</li>" for text in report.warnings)
        return (f'<p>{repr(self)}</p><svg width="240" viewBox="{low[0]:.1f} {low[1]:.1f} {width:.1f} {height:.1f}">'
                f'<path d="{dots}" stroke="currentColor" stroke-width="1.2" stroke-linecap="round"/></svg>'
                f'<ul>{warnings}</ul>')


def held_of(model: PartModel) -> _core.PartModel:
    """The compiled core's model; TypeError for what is none."""
    try:
        return model._held
    except AttributeError:
        raise TypeError(f"model: expected a PartModel, got {type(model).__name__}") from None


def teach_part(image: Image, *, region: Optional[Sequence[int]] = None, polygon: Optional[Points] = None,
               mask: Optional[Binary] = None, sigma: float = 1.0, min_contrast: float = 0.0,
               reference: Optional[Place] = None, direction: float = 0.0, levels: int = 0) -> PartModel:
    """Teaches the part whose outline lies in a region of a picture.

    Teach from a clean picture, or with a polygon or a mask close to the part: what is taught from dirt is looked for, too.

    Parameters
    ----------
    image : uint8 or uint16 array (rows, columns) or (rows, columns, 1 to 4)
    region : (x, y, width, height), optional
        Whole pixels, inside the picture. At most one of the three is taken; without any it is the whole picture.
    polygon : array (n, 2), optional
        Three corners or more, inside the picture.
    mask : uint8 or bool array (rows, columns), optional
        Not 0 where edges count.
    sigma : float
        Smoothing of the edge finder, pixels, 0.5 to 5.
    min_contrast : float
        Least contrast of an edge that belongs to the part, grey levels of a sharp step, 0 to 255; 0 takes it from the
        picture.
    reference : (x, y), optional
        The point whose place is told when the part is found, pixels of the picture; the outline's middle without one.
    direction : float
        The direction whose angle is told, degrees.
    levels : int
        Pyramid levels, 1 to 8; 0 chooses as many as the outline bears.

    Returns
    -------
    PartModel

    Raises
    ------
    ValueError
        For a region outside the picture, options out of range, fewer than 16 points of outline and more than 200,000.

    C++: orx::teachPart, orx::TTeachOptions, orx::TMatchStatus, orx::matchStatusText
    """
    if sum(place is not None for place in (region, polygon, mask)) > 1:
        raise ValueError("region, polygon, mask: expected one of them at the most")
    return PartModel(_core.teach_part(image, region, polygon, mask, sigma, min_contrast, reference, direction, levels))


def teach_drawing(outlines: Sequence[Sequence[Union[OutlineLine, OutlineArc]]], *, pixels_per_unit: float = 1.0,
                  y_is_up: bool = False, bright_side: Literal["unknown", "left", "right"] = "unknown",
                  reference: Optional[Place] = None, direction: float = 0.0, levels: int = 0,
                  sigma: float = 1.0) -> PartModel:
    """Teaches a part from its drawing: outlines of lines and arcs.

    Prefer a picture where there is one: it shows which edges are seen, and how bright.

    Parameters
    ----------
    outlines : sequence of outlines
        Each a sequence of `OutlineLine` and `OutlineArc` that follow one another; closed where the last one ends at the
        start of the first.
    pixels_per_unit : float
        In the pictures, above 0: the model's scale 1.
    y_is_up : bool
        The drawing's y axis runs up, as in CAD, and not down as in pictures.
    bright_side : {"unknown", "left", "right"}
        The side of the outlines, in walking direction, on which pictures are brighter.
    reference : (x, y), optional
        The point whose place is told when the part is found, units of the drawing; the outline's middle without one.
    direction : float
        The direction whose angle is told, degrees in the drawing.
    levels : int
        Pyramid levels, 1 to 8; 0 chooses as many as the outline bears.
    sigma : float
        Smoothing of the edge finder in the pictures, pixels, 0.5 to 5.

    Returns
    -------
    PartModel
        Its plane counts pixels, `pixels_per_unit` of them a unit, y down.

    Raises
    ------
    ValueError
        For pieces that are not finite, of no length or beyond a full turn, options out of range, and too little or too much
        of an outline.

    Examples
    --------
    >>> ring = teach_drawing([[OutlineArc((0, 0), 20)], [OutlineArc((0, 0), 12)]])
    >>> ring.report.symmetry, ring.report.angles_are_free
    (0, True)

    C++: orx::teachPart, orx::TDrawingOptions, orx::TBrightSide
    """
    return PartModel(_core.teach_drawing(outlines, pixels_per_unit, y_is_up, choice("bright_side", bright_side, _SIDES),
                                         reference, direction, levels, sigma))
