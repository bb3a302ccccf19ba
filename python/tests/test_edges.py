"""Edges between the pixels, and their collection."""
from __future__ import annotations

import pickle

import numpy as np
import pytest
from numpy.typing import NDArray

from orxfunctions import analysis

Bytes = NDArray[np.uint8]


def test_points_lie_on_the_rim_and_know_their_uncertainty(disk: Bytes) -> None:
    found = analysis.edges(disk)
    assert len(found) == 1 and found[0].closed
    radii = np.hypot(found.points[:, 0] - 64.0, found.points[:, 1] - 48.0)
    assert abs(radii.mean() - 30.0) < 0.01
    assert 0.0 < found.deviation.mean() < 0.1
    outwards = (found.points - [64.0, 48.0]) / radii[:, None]
    normals = np.stack([np.cos(found.direction), np.sin(found.direction)], axis=1)
    assert np.all((outwards * normals).sum(axis=1) < -0.99)  # from dark to bright: inwards


def test_edges_are_a_sequence_of_views(disk: Bytes) -> None:
    two = np.concatenate([disk, disk], axis=1)
    found = analysis.edges(two)
    assert len(found) == 2 and [len(edge) for edge in found] == list(np.diff(found.offsets))
    assert np.shares_memory(found[0].points, found.points)
    assert np.array_equal(found[-1].points, found[1].points) and len(found[0:2]) == 2
    with pytest.raises(IndexError, match="there are 2 edges"):
        found[2]
    again = pickle.loads(pickle.dumps(found))
    assert np.array_equal(again.points, found.points) and np.array_equal(again.closed, found.closed)
    assert repr(found) == f"Edges(2 edges, {len(found.points)} points)"
    assert "<table>" in found._repr_html_()


def test_nothing_found_is_empty_and_bad_options_are_named() -> None:
    flat = np.full((20, 20), 7, np.uint8)
    found = analysis.edges(flat)
    assert len(found) == 0 and found.points.shape == (0, 2) and list(found) == []
    with pytest.raises(ValueError, match="sigma is 0.1; 0.5 to 20"):
        analysis.edges(flat, sigma=0.1)
    with pytest.raises(ValueError, match="mode: expected one of 'external', 'list'"):
        analysis.edges(flat, mode="all")  # type: ignore[arg-type]


def test_classic_chains_run_along_both_sides(step: Bytes) -> None:
    chains = analysis.edges_classic(step)
    assert len(chains) == 1 and chains[0].points.dtype == np.float32
    assert np.allclose(chains[0].points[:, 0], 9.5, atol=0.5)
