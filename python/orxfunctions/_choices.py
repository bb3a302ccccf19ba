"""Names of choices, as the compiled core numbers them."""
from __future__ import annotations

from collections.abc import Mapping


def choice(name: str, value: str, known: Mapping[str, int]) -> int:
    """The number of a choice; ValueError with the choices there are."""
    try:
        return known[value]
    except (KeyError, TypeError):
        raise ValueError(f"{name}: expected one of {', '.join(map(repr, known))}, got {value!r}") from None
