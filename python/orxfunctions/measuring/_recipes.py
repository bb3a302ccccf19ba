"""Recipes: what is measured of a part, and what it may be."""
from __future__ import annotations

import json
import os
import tempfile
from collections.abc import Mapping
from html import escape
from pathlib import Path
from typing import Any, NamedTuple, Optional, Tuple, Union

from .. import _core
from .._paths import Path as FilePath
from .._paths import path_bytes
from .._types import Bytes, Image
from ._recipe_results import RecipeResult


class RecipeProblem(NamedTuple):
    """What is wrong with a recipe, and where; ``str`` tells it in one sentence.

    C++: orx::TRecipeProblem
    """

    line: int
    """Of the text, from 1; 0 where it is of none."""
    field: str
    """Its path in the text: ``features[2].radius``."""
    text: str

    def __str__(self) -> str:
        return _core.recipe_problem_sentence(*self)


class RecipeError(ValueError):
    """A recipe with mistakes; its text tells all of them, a line each."""

    problems: Tuple[RecipeProblem, ...]

    def __init__(self, problems: Tuple[RecipeProblem, ...]) -> None:
        super().__init__("\n".join(map(str, problems)))
        self.problems = problems

    def __reduce__(self) -> Tuple[Any, ...]:
        return RecipeError, (self.problems,)


class RecipeTarget(NamedTuple):
    """What a value of a recipe is called and what it must be, known before anything is measured.

    C++: orx::TRecipeTarget
    """

    name: str
    type: str
    unit: str
    """``"px"``, ``"mm"``, ``"deg"``, or empty for a share."""
    nominal: Optional[float]
    lower: float
    """Absolute limits, infinite where there are none."""
    upper: float


class Recipe:
    """What is measured of a part, and what it may be. Never changes; may run on several threads at once.

    A recipe says where the part is (found by its model, by two features of it, or at a fixed place), which features are
    measured there, which values are told of them and between which limits they must lie. The format is that of
    docs/recipes.md; `propose_recipe` writes a first one from a picture of a good part.

    Parameters
    ----------
    source : str or mapping
        The recipe as JSON text, or what ``json.loads`` makes of it. `Recipe.load` reads a file.
    folder : path
        That the names of part models and calibrations are relative to. These files are read at once and go along where a
        recipe is pickled: another machine needs none of them.

    Raises
    ------
    RecipeError
        A `ValueError` that tells all mistakes with their lines and fields.

    Examples
    --------
    >>> import numpy as np
    >>> image = np.full((60, 80), 40, np.uint8)
    >>> image[:, 20:50] = 200
    >>> recipe = Recipe({"recipe": 1, "name": "bar",
    ...                  "features": [{"name": "bar", "type": "edgePair", "from": [20, 30], "to": [50, 30], "search": 6}],
    ...                  "values": [{"name": "width", "type": "width", "of": ["bar"], "nominal": 30, "tolerance": 0.5}]})
    >>> result = recipe.run(image)
    >>> result.verdict, round(result["width"].value, 2)
    ('pass', 30.0)

    C++: orx::TRecipe, orx::parseRecipe
    """

    __slots__ = ("_handle", "_text", "_files")

    def __init__(self, source: Union[str, Mapping[str, Any]], *, folder: FilePath = ".") -> None:
        if isinstance(source, str):
            if "{" not in source:
                raise RecipeError((RecipeProblem(0, "", "expected JSON text (Recipe.load reads a file)"),))
            self._take(_core.parse_recipe(source.encode(), path_bytes(folder)), source, folder)
        elif isinstance(source, Mapping):
            text = json.dumps(dict(source), ensure_ascii=False, default=_plain)
            self._take(_core.parse_recipe(text.encode(), path_bytes(folder)), text, folder, lines=False)
        else:
            raise TypeError(f"source: expected JSON text or a mapping, got {type(source).__name__}")

    @classmethod
    def load(cls, path: FilePath) -> Recipe:
        """The recipe in a file, whose folder is that of the files it names.

        Raises `RecipeError` for mistakes in it, `OSError` and its kinds for what can't be read.

        C++: orx::readRecipe
        """
        handle = _core.read_recipe(path_bytes(path))
        recipe = cls.__new__(cls)
        recipe._take(handle, handle.text(), os.path.dirname(path) or ".")
        return recipe

    def _take(self, handle: _core.Recipe, text: str, folder: FilePath, *, lines: bool = True) -> None:
        if not handle.valid():
            raise RecipeError(tuple(RecipeProblem(line if lines else 0, field, told)
                                    for line, field, told in handle.problems()))
        self._handle = handle
        self._text = text
        self._files = {name: Path(folder, name).read_bytes() for name in named_files(json.loads(text))}

    @property
    def name(self) -> str:
        return self._handle.name()

    @property
    def text(self) -> str:
        """JSON."""
        return self._text

    @property
    def confidence(self) -> float:
        """At which verdicts are given."""
        return self._handle.confidence()

    @property
    def targets(self) -> Tuple[RecipeTarget, ...]:
        """What its values must be."""
        return tuple(RecipeTarget(*target) for target in self._handle.targets())

    @property
    def feature_names(self) -> Tuple[str, ...]:
        return tuple(self._handle.feature_names())

    @property
    def picture_shape(self) -> Optional[Tuple[int, int]]:
        """Rows and columns of the calibration's pictures, the only ones that are taken; None without a calibration."""
        width, height = self._handle.picture_size()
        return (height, width) if width > 0 else None

    def run(self, image: Image) -> RecipeResult:
        """Measures the part in a picture.

        Parameters
        ----------
        image : uint8 or uint16 array (rows, columns) or (rows, columns, 1 to 4)

        Returns
        -------
        RecipeResult
            Every value is in it, whatever happens: what could not be measured says why, and so does the whole where the part
            is not there.

        Raises
        ------
        ValueError
            For a picture of another size than the calibration's.
        """
        return RecipeResult(self._handle.run(image))

    def draw(self, image: Image, result: RecipeResult) -> Bytes:
        """The picture in colour with what the recipe asks to be drawn: features, the part's axes, a list of the values.

        Features are green where all their values pass, red where one fails, yellow where one is undecided or not measured,
        blue without verdicts.

        C++: orx::drawRecipeResult
        """
        return self._handle.draw(image, result._handle)

    def draw_sheet(self, image: Image, result: RecipeResult) -> Bytes:
        """The same, enlarged where it is small, with a table of the values beside the picture: for people and reports.

        C++: orx::drawRecipeSheet
        """
        return self._handle.draw_sheet(image, result._handle)

    def __copy__(self) -> Recipe:
        return self

    def __deepcopy__(self, memo: dict[int, Any]) -> Recipe:
        return self

    def __reduce__(self) -> Tuple[Any, ...]:
        return restored, (self._text, self._files)

    def __repr__(self) -> str:
        return f"Recipe({self.name!r}, {len(self.feature_names)} features, {len(self.targets)} values)"

    def _repr_html_(self) -> str:
        rows = "".join(f"<tr><td>{escape(target.name)}</td><td>{escape(target.type)}</td><td>{target.unit}</td>"
                       f"<td>{'' if target.nominal is None else f'{target.nominal:.6g}'}</td>"
                       f"<td>{target.lower:.6g}</td><td>{target.upper:.6g}</td></tr>" for target in self.targets)
        return (f"<p>{escape(self.name)}: {len(self.feature_names)} features</p><table><tr><th>value</th><th>type</th>"
                f"<th>unit</th><th>nominal</th><th>lower</th><th>upper</th></tr>{rows}</table>")


def _plain(value: Any) -> Any:
    """What a mapping may hold beside what JSON knows: numbers and arrays of numpy, names of files."""
    if isinstance(value, os.PathLike):
        return os.fspath(value)
    if hasattr(value, "tolist"):
        return value.tolist()
    raise TypeError(f"source: expected what JSON can hold, got {type(value).__name__}")


def named_files(recipe: dict[str, Any]) -> list[str]:
    part = recipe.get("part") or {}
    return [holder[field] for holder, field in ((recipe, "calibration"), (part, "model")) if field in holder]


def restored(text: str, files: dict[str, bytes]) -> Recipe:
    """A recipe with files of its own."""
    if not files:
        return Recipe(text)
    recipe = json.loads(text)
    with tempfile.TemporaryDirectory() as folder:
        moved = {}
        for number, (name, content) in enumerate(files.items()):
            # What kind of file it is may follow from its name.
            moved[name] = f"{number}-{Path(name).name}"
            Path(folder, moved[name]).write_bytes(content)
        for holder, field in ((recipe, "calibration"), (recipe.get("part") or {}, "model")):
            if field in holder:
                holder[field] = moved[holder[field]]
        restored = Recipe(recipe, folder=folder)
    restored._text, restored._files = text, files
    return restored
