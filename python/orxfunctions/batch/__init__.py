"""Many pictures, on one machine or on many: each measured once, and what came of it kept.

``run(inspect, "pictures/", "results.sqlite", workers=4)`` goes on where it was stopped, passes over nothing and measures
nothing twice. ``python3 -m orxfunctions.batch`` does the same for a recipe or a function in a file.
"""
from ._errors import BatchError, StoreError
from ._inspections import Inspection
from ._pictures import Picture
from ._progress import Progress
from ._reading import DamagedPicture, read_picture
from ._rows import Row
from ._run import Summary, run
from ._store import ReadableStore, Store, open_store

__all__ = [
    "BatchError",
    "DamagedPicture",
    "Inspection",
    "Picture",
    "Progress",
    "ReadableStore",
    "Row",
    "Store",
    "StoreError",
    "Summary",
    "open_store",
    "read_picture",
    "run",
]
