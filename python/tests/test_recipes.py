"""Recipes, and what they measure."""
from __future__ import annotations

import copy
import json
import pickle
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path
from typing import Any

import numpy as np
import pytest
from numpy.typing import NDArray

from conftest import disk_picture
from orxfunctions.measuring import Recipe, RecipeError, RecipeResult, RecipeValue

Bytes = NDArray[np.uint8]


def disk_recipe(**changes: Any) -> dict[str, Any]:
    """The disk of radius 30 about (64, 48), and a line where there is nothing."""
    return {
        "recipe": 1,
        "name": "disk",
        "features": [
            {"name": "rim", "type": "circle", "center": [64, 48], "radius": 29, "search": 8},
            {"name": "nothing", "type": "line", "from": [5, 5], "to": [5, 90], "search": 3},
        ],
        "values": [
            {"name": "diameter", "type": "diameter", "of": ["rim"], "nominal": 60, "tolerance": 0.5},
            {"name": "x", "type": "x", "of": ["rim"], "lower": 70},
            {"name": "apart", "type": "distance", "of": ["rim", "nothing"], "upper": 100},
            {"name": "form", "type": "roundness", "of": ["rim"]},
        ],
        **changes,
    }


@pytest.fixture
def measured(disk: Bytes) -> RecipeResult:
    return Recipe(disk_recipe()).run(disk)


def test_values_are_those_of_the_picture_with_a_verdict_each(measured: RecipeResult) -> None:
    diameter, x, apart, form = (measured[name] for name in ("diameter", "x", "apart", "form"))
    assert diameter.value is not None and diameter.deviation is not None
    assert abs(diameter.value - 60) < 0.02 and 0 < diameter.deviation < 0.05
    assert (diameter.lower, diameter.upper, diameter.nominal, diameter.unit) == (59.5, 60.5, 60.0, "px")
    assert diameter.verdict == "pass" and str(diameter).startswith("6") and str(diameter).endswith(" px")
    assert x.value is not None and abs(x.value - 64) < 0.01 and x.verdict == "fail" and x.conformity == 0
    assert apart.verdict == "not measured" and apart.value is None and apart.reason and apart.reason in str(apart)
    assert form.verdict == "no limits" and form.upper == float("inf")
    assert list(measured.values) == ["diameter", "x", "apart", "form"] and measured.verdict == "fail"
    assert measured.shape == (96, 128) and measured.reason is None and measured.pose is not None
    with pytest.raises(KeyError, match="no value 'radius'; there are: diameter, x"):
        measured["radius"]


def test_features_tell_where_they_lie(measured: RecipeResult) -> None:
    rim, nothing = measured.features["rim"], measured.features["nothing"]
    assert rim.kind == "circle" and rim.measured and rim.reason is None
    assert np.allclose(np.hypot(*(rim.points - [64, 48]).T), 30, atol=0.1) and rim.rms < 0.1
    assert np.allclose(np.hypot(*(rim.outline - [64, 48]).T), 30, atol=0.1)
    assert not nothing.measured and nothing.reason and len(nothing.nominal) >= 2 and nothing.outline.shape == (0, 2)


def test_json_has_what_the_values_say(measured: RecipeResult) -> None:
    told = measured.as_dict(picture="disk.png", milliseconds=False)
    assert told == json.loads(measured.to_json(picture="disk.png", milliseconds=False))
    assert told["picture"] == "disk.png" and "milliseconds" not in told and told["verdict"] == "fail"
    assert told["values"][0]["value"] == pytest.approx(measured["diameter"].value, rel=1e-9)
    assert told["values"][2]["value"] is None and told["values"][3]["upper"] is None
    assert "features" not in measured.as_dict(features=False)


def test_all_mistakes_are_told_with_line_and_field(tmp_path: Path) -> None:
    text = json.dumps(disk_recipe(), indent=1).replace('"radius"', '"radus"').replace('["rim"]', '["ring"]')
    text = text.replace('"lower": 70', '"lower": "70"')
    with pytest.raises(RecipeError) as caught:
        Recipe(text)
    problems = caught.value.problems
    assert {"features[0].radus", "features[0].radius", "values[1].lower"} <= {problem.field for problem in problems}
    unknown = next(problem for problem in problems if problem.field == "features[0].radus")
    assert unknown.line == text[:text.index("radus")].count("\n") + 1
    assert str(unknown).startswith(f'line {unknown.line}, features[0].radus: unknown field "radus": did you mean')
    assert str(caught.value).splitlines() == [str(problem) for problem in problems]
    again = pickle.loads(pickle.dumps(caught.value))
    assert again.problems == problems and str(again) == str(caught.value)
    with pytest.raises(ValueError, match=r"^features: ") as of_dict:
        Recipe(disk_recipe(features=3))
    assert isinstance(of_dict.value, RecipeError) and all(problem.line == 0 for problem in of_dict.value.problems)
    file = tmp_path / "recipe.json"
    file.write_text(text, encoding="utf-8")
    with pytest.raises(RecipeError) as of_file:
        Recipe.load(file)
    assert of_file.value.problems == problems


def test_what_is_no_recipe_is_refused(tmp_path: Path) -> None:
    with pytest.raises(RecipeError, match="Recipe.load reads a file"):
        Recipe("plate.json")
    with pytest.raises(TypeError, match="source: expected JSON text or a mapping, got bytes"):
        Recipe(b"{}")  # type: ignore[arg-type]
    with pytest.raises(TypeError, match="source: expected what JSON can hold, got object"):
        Recipe({"recipe": object()})
    with pytest.raises(FileNotFoundError, match="myRecipe.json"):
        Recipe.load(tmp_path / "myRecipe.json")
    with pytest.raises(OSError, match="folder"):
        Recipe.load(tmp_path)
    with pytest.raises(RecipeError, match="model"):
        Recipe(disk_recipe(part={"by": "model", "model": "none.part"}), folder=tmp_path)


def test_pictures_that_are_none_are_refused() -> None:
    recipe = Recipe(disk_recipe())
    with pytest.raises(TypeError, match=r"image: .*got float64 array of shape \(4, 4\)"):
        recipe.run(np.zeros((4, 4)))  # type: ignore[arg-type]
    with pytest.raises(ValueError, match="at least one pixel"):
        recipe.run(np.zeros((0, 4), np.uint8))
    with pytest.raises(TypeError, match="got NoneType"):
        recipe.run(None)  # type: ignore[arg-type]


def test_a_part_that_is_not_there_is_a_result() -> None:
    part = {"by": "features", "origin": "rim", "direction": "nothing", "angle": 0}
    values = [{"name": "x", "type": "partX"}]
    result = Recipe(disk_recipe(part=part, values=values)).run(np.full((96, 128), 9, np.uint8))
    assert result.pose is None and result.verdict == "not measured" and result.reason
    assert result["x"].reason == result.reason and result["x"].verdict == "not measured"
    assert "not measured" in result._repr_html_() and "not measured" in repr(result)


def test_recipes_and_results_are_pickled(disk: Bytes, measured: RecipeResult) -> None:
    recipe = pickle.loads(pickle.dumps(Recipe(disk_recipe())))
    assert recipe.run(disk).to_json(milliseconds=False) == measured.to_json(milliseconds=False)
    again = pickle.loads(pickle.dumps(measured))
    assert again.to_json() == measured.to_json() and again.values == measured.values
    assert np.array_equal(again.features["rim"].outline, measured.features["rim"].outline)
    assert np.array_equal(recipe.draw(disk, again), recipe.draw(disk, measured))
    assert copy.deepcopy(recipe) is recipe and copy.copy(recipe) is recipe


def test_threads_share_a_recipe() -> None:
    recipe = Recipe(disk_recipe())
    pictures = [disk_picture(radius) for radius in (27.0, 29.0, 31.0, 33.0)] * 4
    alone = [recipe.run(picture).to_json(milliseconds=False) for picture in pictures]
    with ThreadPoolExecutor(3) as pool:
        together = [result.to_json(milliseconds=False) for result in pool.map(recipe.run, pictures)]
    assert together == alone and len(set(alone)) == 4


def test_results_are_drawn(disk: Bytes, measured: RecipeResult) -> None:
    recipe = Recipe(disk_recipe())
    drawn = recipe.draw(disk, measured)
    assert drawn.shape == (96, 128, 3) and drawn.dtype == np.uint8
    assert tuple(drawn[18, 64]) != (disk[18, 64],) * 3  # the rim, in colour
    sheet = recipe.draw_sheet(disk, measured)
    assert sheet.shape[0] >= 96 * 4 and sheet.shape[1] > 128 * 4
    with pytest.raises(TypeError, match="image: "):
        recipe.draw(None, measured)  # type: ignore[arg-type]


def test_what_is_shown_is_escaped(disk: Bytes) -> None:
    values = [{"name": "<b>", "type": "diameter", "of": ["rim"], "upper": 70}]
    recipe = Recipe(disk_recipe(name="<i>", values=values))
    for shown in (recipe._repr_html_(), recipe.run(disk)._repr_html_()):
        assert "&lt;b&gt;" in shown and "&lt;i&gt;" in shown and "<b>" not in shown.replace("<b style", "")


def test_targets_are_known_before_anything_is_measured() -> None:
    recipe = Recipe(json.dumps(disk_recipe(confidence=0.9)))
    assert recipe.name == "disk" and recipe.confidence == 0.9 and recipe.feature_names == ("rim", "nothing")
    assert recipe.targets[0] == ("diameter", "diameter", "px", 60.0, 59.5, 60.5)
    assert recipe.targets[3].nominal is None and recipe.picture_shape is None
    assert json.loads(recipe.text)["confidence"] == 0.9 and repr(recipe) == "Recipe('disk', 2 features, 4 values)"
    assert isinstance(recipe.run(disk_picture())["x"], RecipeValue)
