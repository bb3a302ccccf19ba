"""Form, verdicts, statistics and recipes: from what was measured of a part to what is said of it."""
from ._form import (PointNoise, Roundness, Straightness, maximum_inscribed_circle, minimum_circumscribed_circle,
                    minimum_zone_circle, minimum_zone_line)
from ._recipe_results import FeatureKind, RecipeFeature, RecipePose, RecipeResult, RecipeValue
from ._recipes import Recipe, RecipeError, RecipeProblem, RecipeTarget
from ._statistics import GaugePart, GaugeResult, GaugeStudy, RunChartPoint, RunHistogram, RunStatistics, RunSummary
from ._verdicts import Judgement, Verdict, judge, worst_verdict

__all__ = [
    "FeatureKind",
    "GaugePart",
    "GaugeResult",
    "GaugeStudy",
    "Judgement",
    "PointNoise",
    "Recipe",
    "RecipeError",
    "RecipeFeature",
    "RecipePose",
    "RecipeProblem",
    "RecipeResult",
    "RecipeTarget",
    "RecipeValue",
    "Roundness",
    "RunChartPoint",
    "RunHistogram",
    "RunStatistics",
    "RunSummary",
    "Straightness",
    "Verdict",
    "judge",
    "maximum_inscribed_circle",
    "minimum_circumscribed_circle",
    "minimum_zone_circle",
    "minimum_zone_line",
    "worst_verdict",
]
