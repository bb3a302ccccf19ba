"""What the functions of the package take and give, as type checkers see it."""
from __future__ import annotations

from collections.abc import Sequence
from typing import Any, Tuple, Union

import numpy as np
from numpy.typing import NDArray

Bytes = NDArray[np.uint8]
"""A grey or colour image of 8 bits."""
Binary = Union[NDArray[np.uint8], NDArray[np.bool_]]
"""A binary image: what is not 0 belongs to an object."""
Image = Union[NDArray[np.uint8], NDArray[np.uint16]]
"""An image of 8 or 16 bits."""
Floats = NDArray[np.float32]
Doubles = NDArray[np.float64]
Ints = NDArray[np.int32]
Place = Union[Tuple[float, float], Sequence[float], NDArray[Any]]
"""One place: x and y."""
Points = Union[NDArray[Any], Sequence[Sequence[float]], Sequence[Tuple[float, float]]]
"""Places: (n, 2), x before y."""
