"""First recipes from pictures of good parts."""
from __future__ import annotations

import json
import pickle
import shutil
from pathlib import Path

import numpy as np
import pytest
from numpy.typing import NDArray

from orxfunctions.measuring import Recipe, find_part_region, propose_recipe

Bytes = NDArray[np.uint8]


def plate(shift: tuple[float, float] = (0.0, 0.0), angle: float = 0.0, hole: float = 16.0) -> Bytes:
    """A bright plate of 120 x 80 about (110, 90) + shift, with a hole off its middle, by signed distances."""
    y, x = np.mgrid[:180, :220]
    turn = np.deg2rad(angle)
    x, y = x - 110.0 - shift[0], y - 90.0 - shift[1]
    along, across = np.cos(turn) * x + np.sin(turn) * y, np.cos(turn) * y - np.sin(turn) * x
    inside = np.minimum(60.0 - np.abs(along), 40.0 - np.abs(across))
    inside = np.minimum(inside, np.hypot(along - 25.0, across - 8.0) - hole)
    share = 0.5 * (1.0 + np.tanh(1.2 * inside))
    return np.asarray(np.rint(40.0 + 160.0 * share), np.uint8)


def test_the_part_that_stands_out_is_proposed_with_its_sizes() -> None:
    proposal = propose_recipe(plate(), name="plate")
    assert proposal is not None and proposal.model is None
    assert proposal.features == len(json.loads(proposal.text)["features"]) == 5  # four edges and the hole
    result = proposal.recipe().run(plate())
    assert result.verdict == "pass" and result.recipe == "plate"
    sizes = {value.type: value.value for value in result.values.values()}
    assert sizes["diameter"] == pytest.approx(32.0, abs=0.05)
    distances = sorted(value.value or 0.0 for value in result.values.values() if value.type == "distance")
    assert distances == pytest.approx([80.0, 120.0], abs=0.05)
    x, y, width, height = proposal.region.box
    assert x < 50 < 170 < x + width and y < 50 < 130 < y + height and proposal.region.polygon.shape[1] == 2
    assert proposal.picture.ndim == 3 and proposal.picture.dtype == np.uint8


def test_a_taught_part_is_found_elsewhere_without_any_file(tmp_path: Path) -> None:
    proposal = propose_recipe(plate(), model="models/plate.part", teach=True, folder=tmp_path)
    assert proposal is not None and proposal.model is not None
    turned = plate(shift=(6.0, -5.0), angle=20.0)
    recipe = proposal.recipe()
    result = recipe.run(turned)
    assert result.pose is not None and result.pose.angle == pytest.approx(20.0, abs=0.2)
    assert result.verdict == "pass" and result.pose.x_deviation < 0.1
    bad = recipe.run(plate(angle=20.0, hole=14.0))
    assert bad.verdict == "fail"
    assert recipe.run(np.full((180, 220), 40, np.uint8)).verdict == "not measured"
    assert list(tmp_path.iterdir()) == []

    path = proposal.save()
    assert sorted(file.name for file in tmp_path.rglob("*.*")) == ["plate.part", "recipe.json"]
    with pytest.raises(FileExistsError, match="recipe.json"):
        proposal.save()
    loaded = Recipe.load(proposal.save(overwrite=True))
    assert loaded.run(turned).to_json(milliseconds=False) == result.to_json(milliseconds=False)

    # Recipes go to other machines with their files.
    packed = pickle.dumps(loaded)
    shutil.rmtree(tmp_path / "models")
    again = pickle.loads(pickle.dumps(pickle.loads(packed)))
    assert again.run(turned).to_json(milliseconds=False) == result.to_json(milliseconds=False)
    assert again.text == path.read_text(encoding="utf-8") == loaded.text
    assert pickle.loads(pickle.dumps(proposal)).text == proposal.text


def test_a_picture_without_a_part_proposes_nothing() -> None:
    flat = np.full((60, 80), 90, np.uint8)
    assert propose_recipe(flat) is None and find_part_region(flat) is None
    region = find_part_region(plate())
    assert region is not None and region.others == 0


def test_options_out_of_range_are_named(tmp_path: Path) -> None:
    image = plate()
    with pytest.raises(ValueError, match="max_features is 0; 1 to 500"):
        propose_recipe(image, max_features=0)
    with pytest.raises(ValueError, match="min_length is 7; 8 to 1e\\+06"):
        propose_recipe(image, min_length=7)
    with pytest.raises(ValueError, match="share is nan; 0 to 10"):
        propose_recipe(image, share=float("nan"))
    with pytest.raises(ValueError, match="expected one of them above 0"):
        propose_recipe(image, share=0, least_pixels=0)
    with pytest.raises(ValueError, match="model: expected a name"):
        propose_recipe(image, teach=True)
    for box in ((0, 0, 221, 10), (-1, 0, 10, 10), (0, 0, 0, 10), (2**31 - 1, 0, 10, 10)):
        with pytest.raises(ValueError, match="inside of the image of 220 x 180 pixels"):
            propose_recipe(image, region=box)
    with pytest.raises(ValueError, match="noSuch.part"):
        propose_recipe(image, model="noSuch.part", folder=tmp_path)
    with pytest.raises(TypeError, match="image: .*got float64"):
        propose_recipe(image.astype(float))
