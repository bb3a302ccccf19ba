"""Models and found parts over pictures."""
from __future__ import annotations

from collections.abc import Iterable
from typing import NamedTuple, Tuple

from .. import _core
from .._types import Image
from ._finder import FoundPart
from ._models import PartModel, held_of
from ._poses import PartPose

Colour = Tuple[float, float, float]


class PartColours(NamedTuple):
    """Blue, green and red of 0 to 255; grey pictures get their brightness.

    C++: orx::TPartColours
    """

    seen: Colour = (80, 220, 0)
    """Of the outline."""
    unseen: Colour = (40, 40, 255)
    """Of what is hidden of it."""
    pose: Colour = (0, 200, 255)
    """Cross and direction."""
    score: Colour = (255, 255, 255)
    """Text."""
    thickness: int = 1
    """Of lines, pixels, 1 to 20; others count as the nearest."""


def draw_part_model(image: Image, model: PartModel, pose: PartPose, *, colours: PartColours = PartColours()) -> None:
    """Draws the outline at a pose into the picture, a cross at the reference point, and a line along its direction.

    `image` is changed: a uint8 or uint16 array of 1 to 4 channels whose rows lie without steps between their pixels. What
    lies outside of it is not drawn.

    C++: orx::drawPartModel
    """
    _core.draw_part_model(image, held_of(model), pose, colours)


def draw_found_parts(image: Image, model: PartModel, parts: Iterable[FoundPart], *,
                     colours: PartColours = PartColours()) -> None:
    """Draws each part like `draw_part_model`, in two colours by what is seen of it, with its number, from 1, and its score.

    C++: orx::drawFoundParts
    """
    held = held_of(model)
    _core.draw_found_parts(image, held, [(part.pose, part.score, part.seen.tobytes()) for part in parts], colours)
