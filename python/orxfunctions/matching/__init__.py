"""Parts found at any place, angle and scale: teach a model from a picture or a drawing, find it, draw it."""
from ._drawing import PartColours, draw_found_parts, draw_part_model
from ._finder import FoundPart, FoundParts, find_parts
from ._models import OutlineArc, OutlineLine, PartModel, TeachReport, teach_drawing, teach_part
from ._poses import CaliperPlacement, PartPose

__all__ = [
    "CaliperPlacement",
    "FoundPart",
    "FoundParts",
    "OutlineArc",
    "OutlineLine",
    "PartColours",
    "PartModel",
    "PartPose",
    "TeachReport",
    "draw_found_parts",
    "draw_part_model",
    "find_parts",
    "teach_drawing",
    "teach_part",
]
