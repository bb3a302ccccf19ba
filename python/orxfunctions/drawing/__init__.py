"""Drawing what was found: in place on a picture, or on a copy for a notebook or a file.

The functions that draw in place take uint8 arrays of one, three or four channels that can be written, and places between the
pixels; what lies outside of the picture is cut off. Each takes one thing or many.
"""
from ._picture import Picture, picture, show
from ._shapes import arcs, circles, contours, crosses, edges, ellipses, lines, lines_polar, points, segments, text

__all__ = [
    "Picture",
    "arcs",
    "circles",
    "contours",
    "crosses",
    "edges",
    "ellipses",
    "lines",
    "lines_polar",
    "picture",
    "points",
    "segments",
    "show",
    "text",
]
