"""Levels, edges, calipers, outlines, enhancement: what is found in a picture."""
from ._edges import Edge, Edges, edges, edges_classic
from ._levels import OtsuLevel, level_for_count, otsu_level, threshold_level, threshold_quadrants

__all__ = [
    "Edge",
    "Edges",
    "OtsuLevel",
    "edges",
    "edges_classic",
    "level_for_count",
    "otsu_level",
    "threshold_level",
    "threshold_quadrants",
]
