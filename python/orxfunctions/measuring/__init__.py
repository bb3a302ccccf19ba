"""Form, verdicts, statistics and recipes: from what was measured of a part to what is said of it."""
from ._form import (PointNoise, Roundness, Straightness, maximum_inscribed_circle, minimum_circumscribed_circle,
                    minimum_zone_circle, minimum_zone_line)
from ._proposals import PartRegion, Proposal, find_part_region, propose_recipe
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
    "PartRegion",
    "PointNoise",
    "Proposal",
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
    "find_part_region",
    "judge",
    "maximum_inscribed_circle",
    "minimum_circumscribed_circle",
    "minimum_zone_circle",
    "minimum_zone_line",
    "propose_recipe",
    "worst_verdict",
]
