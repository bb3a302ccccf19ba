"""What a recipe measured in a picture."""
from __future__ import annotations

import json
from html import escape
from typing import Any, Literal, NamedTuple, Optional, Tuple

from .. import _core
from .._types import Doubles
from ._verdicts import VERDICTS, Verdict

FeatureKind = Literal["line", "circle", "arc", "ellipse", "edgePair", "chain", "point"]
_KINDS: tuple[FeatureKind, ...] = ("line", "circle", "arc", "ellipse", "edgePair", "chain", "point")
_COLOURS = {"pass": "#1a7f37", "fail": "#cf222e", "undecided": "#9a6700", "not measured": "#9a6700", "no limits": "#0969da"}


class RecipeValue(NamedTuple):
    """A value that a recipe asks for; ``str`` writes it with its uncertainty.

    C++: orx::TRecipeValue, orx::measuredText
    """

    name: str
    type: str
    """As in the recipe: ``"diameter"``, ``"distance"`` ..."""
    value: Optional[float]
    """None where it was not measured; so are the deviations and `guard`."""
    deviation: Optional[float]
    """Standard uncertainty, that of the calibration included."""
    degrees_of_freedom: Optional[float]
    """Of the deviation."""
    unit: str
    """``"px"``, ``"mm"``, ``"deg"``, or empty for a share."""
    verdict: Verdict
    reason: Optional[str]
    """Why it was not measured."""
    nominal: Optional[float]
    lower: float
    """Absolute limits, infinite where there are none."""
    upper: float
    conformity: Optional[float]
    """The probability that the true value lies within the limits."""
    guard: Optional[float]
    """Width of the verdict's guard band."""
    calibration_deviation: Optional[float]
    """The calibration's share of the deviation; 0 without one."""

    def __str__(self) -> str:
        return self.reason or self.verdict if self.value is None else _core.measured_text(self.value, self.deviation or 0.0,
                                                                                          self.unit)


class RecipeFeature(NamedTuple):
    """A feature as it lies in the picture, pixels.

    C++: orx::TRecipeFeature, orx::TFeatureKind, orx::featureKindText
    """

    name: str
    kind: FeatureKind
    measured: bool
    reason: Optional[str]
    """Why it was not measured."""
    nominal: Doubles
    """(n, 2): a polyline where it was looked for."""
    outline: Doubles
    """(n, 2): a polyline along what was found; a point is one."""
    points: Doubles
    """(n, 2): the edge points that had a say."""
    searched: int
    """Places or calipers that were looked at."""
    found: int
    """Edge points, those left out as outliers included."""
    rms: float
    """Root mean square distance of the points from the shape."""


class RecipePose(NamedTuple):
    """Where the part was found, pixels and degrees.

    C++: orx::TRecipePose
    """

    x: float
    y: float
    angle: float
    scale: float
    """Pixels for a unit of the model."""
    score: float
    """Of the part finder; 1 for parts that are not found by a model."""
    x_deviation: float
    """Standard uncertainties; infinite where the outline can't tell, 0 where the place is fixed."""
    y_deviation: float
    angle_deviation: float


class RecipeResult:
    """What a recipe measured in a picture: ``result["bore"].value``. Made by `Recipe.run`; is pickled whole.

    C++: orx::TRecipeResult, orx::toJson, orx::TJsonResultOptions
    """

    __slots__ = ("_handle", "_head", "_values", "_features")

    def __init__(self, handle: _core.RecipeResult) -> None:
        self._handle = handle
        self._head = handle.head()
        self._values: Optional[dict[str, RecipeValue]] = None
        self._features: Optional[dict[str, RecipeFeature]] = None

    @property
    def recipe(self) -> str:
        """The recipe's name."""
        return self._head[0]

    @property
    def verdict(self) -> Verdict:
        """Of the whole: the worst of the values' verdicts; ``"not measured"`` where the part was not found."""
        return VERDICTS[self._head[1]]

    @property
    def reason(self) -> Optional[str]:
        """Why nothing was measured: the part was not found; else None."""
        return self._head[2] or None

    @property
    def confidence(self) -> float:
        """At which the verdicts are given."""
        return self._head[3]

    @property
    def shape(self) -> Tuple[int, int]:
        """Rows and columns of the picture."""
        return self._head[5], self._head[4]

    @property
    def milliseconds(self) -> float:
        """That it took."""
        return self._head[6]

    @property
    def pose(self) -> Optional[RecipePose]:
        """Where the part was found; None where it was not."""
        found, *numbers, _ = self._handle.pose()
        return RecipePose(*numbers) if found else None

    @property
    def values(self) -> dict[str, RecipeValue]:
        """All values by their names, in the order of the recipe, those that were not measured included."""
        if self._values is None:
            self._values = {told[0]: _value(*told) for told in self._handle.values()}
        return self._values

    @property
    def features(self) -> dict[str, RecipeFeature]:
        """All features by their names, in the order of the recipe."""
        if self._features is None:
            self._features = {told[0]: RecipeFeature(told[0], _KINDS[told[1]], told[2], told[3] or None, *told[4:])
                              for told in self._handle.features()}
        return self._features

    def __getitem__(self, name: str) -> RecipeValue:
        try:
            return self.values[name]
        except KeyError:
            raise KeyError(f"there is no value {name!r}; there are: {', '.join(self.values)}") from None

    def to_json(self, *, features: bool = True, milliseconds: bool = True, picture: str = "") -> str:
        """One line of JSON; numbers to 10 digits, null for what is not finite or not there.

        Parameters
        ----------
        features : bool
            How the features fared; else values and pose alone.
        milliseconds : bool
            False: equal pictures give equal text.
        picture : str
            Name of the picture, put before everything else.
        """
        return self._handle.json(features, milliseconds, picture)

    def as_dict(self, *, features: bool = True, milliseconds: bool = True, picture: str = "") -> dict[str, Any]:
        """The fields of `to_json`."""
        told: dict[str, Any] = json.loads(self.to_json(features=features, milliseconds=milliseconds, picture=picture))
        return told

    def __reduce__(self) -> Tuple[Any, ...]:
        return _restored, (self._handle.state(),)

    def __repr__(self) -> str:
        told = self.reason or ", ".join(f"{value.name}: {value} {value.verdict}" for value in self.values.values())
        return f"RecipeResult({self.recipe!r}, {self.verdict}; {told})"

    def _repr_html_(self) -> str:
        rows = "".join(f"<tr><td>{escape(value.name)}</td><td>{escape(str(value))}</td><td>{value.lower:.6g}</td>"
                       f"<td>{value.upper:.6g}</td>{_verdict_cell(value.verdict)}</tr>" for value in self.values.values())
        reason = f" ({escape(self.reason)})" if self.reason else ""
        return (f"<p>{escape(self.recipe)}: <b style='color: {_COLOURS[self.verdict]}'>{self.verdict}</b>{reason}</p>"
                f"<table><tr><th>value</th><th>measured</th><th>lower</th><th>upper</th><th>verdict</th></tr>{rows}</table>")


def _verdict_cell(verdict: Verdict) -> str:
    return f"<td style='color: {_COLOURS[verdict]}'>{verdict}</td>"


def _value(name: str, kind: str, unit: str, measured: bool, problem: str, value: float, deviation: float, calibration: float,
           freedom: float, nominal: Optional[float], lower: float, upper: float, verdict: int, conformity: float,
           guard: float) -> RecipeValue:
    if not measured:
        return RecipeValue(name, kind, None, None, None, unit, VERDICTS[verdict], problem or None, nominal, lower, upper,
                           None, None, None)
    return RecipeValue(name, kind, value, deviation, freedom, unit, VERDICTS[verdict], None, nominal, lower, upper,
                       conformity, guard, calibration)


def _restored(state: Any) -> RecipeResult:
    return RecipeResult(_core.recipe_result(state))
