"""Tells genders by the prints of first names."""

from __future__ import annotations

from functools import cache
from typing import Any

import numpy as np
import pyarrow as pa

from vantrel.first_names import genders_of_first_names
from vantrel.replacing.making.places import GENDERS, Places
from vantrel.replacing.values.names import first_names, folded
from vantrel.replacing.values.prints import Prints


def genders_by_name(names: Prints, place: Any, places: Places) -> Any:
    """Gives the codes of the genders that first names tell in their places, 0 where they do not.

    The lists of a place come before those of all others: "Andrea" is a woman in Germany and a man
    in Italy. Where no country is told, all lists count.
    """
    if not len(names):
        return np.zeros(0, dtype=np.uint8)
    codes = _codes(names, None)
    for number in np.flatnonzero(np.bincount(place)):
        if number:
            rows = np.flatnonzero(place == number)
            own = _codes(names[rows], places.known[number].locale)
            codes[rows] = np.where(own == 0, codes[rows], own)
    return codes


def _codes(names: Prints, locale: str | None) -> Any:
    known, codes = _lists(locale)
    if not len(known):
        return np.zeros(len(names), dtype=np.uint8)
    places = np.searchsorted(known, names).clip(max=len(known) - 1)
    return np.where(known[places] == names, codes[places], np.uint8(0))


@cache
def _lists(locale: str | None) -> tuple[Prints, Any]:
    """The prints of first names, sorted, and the codes of the genders that they tell."""
    genders = genders_of_first_names(locale)
    known = first_names(folded(pa.array(list(genders), pa.string())))
    codes = np.array([GENDERS.index(key) for key in genders.values()], dtype=np.uint8)
    order = np.argsort(known, kind="stable")
    return known[order], codes[order]
