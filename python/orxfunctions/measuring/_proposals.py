"""A first recipe from a picture of a good part."""
from __future__ import annotations

import json
import os
from pathlib import Path
from typing import NamedTuple, Optional, Tuple

from .. import _core
from .._paths import Path as FilePath
from .._paths import path_bytes
from .._types import Bytes, Doubles, Image
from ._recipes import Recipe, named_files, restored

Box = Tuple[int, int, int, int]


class PartRegion(NamedTuple):
    """Where a part lies in a picture, pixels.

    C++: orx::TPartRegion
    """

    box: Box
    """x, y, width and height around the polygon."""
    polygon: Doubles
    """(n, 2): around the part's outline with a little margin, convex."""
    others: int
    """Further things of a twentieth of its size or more."""


class Proposal(NamedTuple):
    """A recipe to be edited, with the picture that shows what its features are.

    C++: orx::TProposal
    """

    text: str
    """JSON."""
    picture: Bytes
    """(rows, columns, 3): features drawn with the numbers that end their names; small pictures are enlarged."""
    features: int
    """How many."""
    values: int
    region: PartRegion
    """That was used."""
    model: Optional[bytes]
    """The content of the file of the part's model, where it was taught."""
    folder: str
    """That the recipe and the names of its files are relative to."""

    def recipe(self) -> Recipe:
        """The recipe as it is; no file need be written for it."""
        contents = {}
        for name in named_files(json.loads(self.text)):
            taught = self.model if name == self._model_name() else None
            contents[name] = Path(self.folder, name).read_bytes() if taught is None else taught
        return restored(self.text, contents)

    def save(self, name: FilePath = "recipe.json", *, overwrite: bool = False) -> Path:
        """Writes the recipe, and the model that was taught, into the folder; answers the recipe's path.

        FileExistsError where one of them is there, unless `overwrite`; nothing is written then.
        """
        path = Path(self.folder, name)
        contents = {path: self.text.encode()}
        if self.model is not None:
            contents[Path(self.folder, self._model_name())] = self.model
        for file in contents:
            if file.exists() and not overwrite:
                raise FileExistsError(f"there is a file {file}")
        for file, content in contents.items():
            file.parent.mkdir(parents=True, exist_ok=True)
            file.write_bytes(content)
        return path

    def _model_name(self) -> str:
        return str((json.loads(self.text).get("part") or {}).get("model", ""))

    def __repr__(self) -> str:
        return f"Proposal({self.features} features, {self.values} values)"


def find_part_region(image: Image) -> Optional[PartRegion]:
    """The largest thing that edges show in a picture of a part on a plain ground; None where no edges are seen.

    What the picture's border cuts is taken only where nothing else is as large as a fifth of it.

    C++: orx::findPartRegion
    """
    told = _core.find_part_region(image)
    return None if told is None else PartRegion(*told)


def propose_recipe(image: Image, *, name: str = "part", model: str = "", teach: bool = False, calibration: str = "",
                   folder: FilePath = ".", region: Optional[Box] = None, max_features: int = 40, min_length: float = 20.0,
                   share: float = 0.01, least_pixels: float = 0.1) -> Optional[Proposal]:
    """A first recipe from a picture of a good part: the shapes that stand out in it, each with its values as they are.

    Parameters
    ----------
    image : uint8 or uint16 array (rows, columns) or (rows, columns, 1 to 4)
    name : str
        Of the recipe.
    model : str
        File of a part model as the recipe will name it, relative to `folder` or absolute: the part is found by it, and
        features are told in its frame. Without one they are told in the picture's.
    teach : bool
        Teach that model from this picture, too; `Proposal.save` writes it.
    calibration : str
        File of a plane calibration, named likewise: shapes are those on the plane, all in millimetres.
    folder : path
        Of both files, and of the recipe to be.
    region : (x, y, width, height)
        Where the part lies; None takes what stands out (`find_part_region`). Features outside are not proposed, nor those of
        edges that the region cuts, unless it cuts the part itself.
    max_features : int
        The largest ones, 1 to 500.
    min_length : float
        Least length of an edge, pixels, 8 or more.
    share, least_pixels : float
        Tolerances to either side, to be edited: this share of the value, and at least so many pixels' worth. They are
        widened where a part that is just as good would else be undecided.

    Returns
    -------
    Proposal or None
        None where there is no part, or nothing of it that can be measured. Nominal values are what the recipe itself
        measures in this picture; features are numbered from the largest on.

    Raises
    ------
    ValueError
        For options out of range, files that can't be read, a part that can't be taught.

    C++: orx::proposeRecipe, orx::TProposalOptions
    """
    told = _core.propose_recipe(image, (name, model, teach, calibration, path_bytes(folder), region, max_features,
                                        min_length, share, least_pixels))
    if told is None:
        return None
    text, picture, features, values, used, taught = told
    return Proposal(text, picture, features, values, PartRegion(*used), taught, os.fspath(folder))
