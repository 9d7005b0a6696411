"""The countries of a run, numbered as they come."""

from __future__ import annotations

from functools import cache
from typing import Any, NamedTuple

import numpy as np
from faker import Faker

from vantrel.replacing.making.families import has_forms
from vantrel.sampling.names import Order, order_of_names
from vantrel.util.locale.locale import (
    Provider,
    get_country_to_provder_map,
    locale_of,
    recognise,
    recognise_known,
    told_before,
    warn_of_borrowed,
)

GENDERS = ("", "F", "M", "NB")
"""The keys of genders by their codes; 0 is what is not told."""


class Place(NamedTuple):
    """What of a country decides who its people are.

    Attributes:
        locale: The locale of Faker whose names they have.
        region: The two-letter code by which they have telephone numbers, "" where there is none.
    """

    locale: str
    region: str


class Places:
    """Numbers countries; 0 is where none is told, and the people of the default place live.

    Args:
        default: A country or locale.
        warns: Whether it warns of those of which Faker has no names.

    Attributes:
        known: The places by their numbers.
        texts: How those that were told by a text were written first.
    """

    def __init__(self, default: str, *, warns: bool = True) -> None:
        self._warns = warns
        recognise_known(default)
        self.known: list[Place] = [_place(default)]
        self._numbers: dict[str | None, int] = {None: 0}
        self._by_place: dict[Place, int] = {}
        self.texts: dict[Place, str] = {}

    def number_of(self, place: Place) -> int:
        """Gives the number of a place that another run, or another part of this one, has told."""
        if place not in self._by_place:
            self._by_place[place] = len(self.known)
            self.known.append(place)
        return self._by_place[place]

    def number(self, text: str | None) -> int:
        """Gives the number of a country, however it is written; 0 if it is none.

        Warns:
            BorrowedNamesWarning: Faker has no names of it.
        """
        if text not in self._numbers:
            self._numbers[text] = self._new(str(text))
        return self._numbers[text]

    def _new(self, text: str) -> int:
        if recognise(text) is None:
            return 0
        place = _place(text)
        if place not in self._by_place:
            self.texts[place] = text
            if self._warns:
                warn_of_borrowed([text])
        return self.number_of(place)

    @property
    def orders(self) -> list[Order]:
        """How the people of each place join their names."""
        return [order_in(place.locale) for place in self.known]

    @property
    def latin_orders(self) -> list[Order]:
        """The same in Latin letters."""
        return [order_in(place.locale, in_latin=True) for place in self.known]

    @property
    def is_last_first(self) -> Any:
        """Whether last names come first, for each place."""
        return np.array([order.is_last_first for order in self.orders])

    @property
    def has_forms(self) -> Any:
        """Whether last names have forms for men and women that are known, for each place."""
        return np.array([has_forms(place.locale) for place in self.known])


def _place(text: str) -> Place:
    found = recognise_known(text)
    locale, _ = locale_of(text)
    return Place(locale, found.country or found.locale.partition("_")[2])


@cache
def order_in(locale: str, *, in_latin: bool = False) -> Order:
    """How names are joined in a locale."""
    return order_of_names(faker_in(locale), in_latin=in_latin)


def faker_in(locale: str) -> Faker:
    """Makes a generator for a locale."""
    with told_before():
        (faker,) = get_country_to_provder_map([locale], Provider.PERSON).values()
    return faker
