"""From countries and locales, as tables write them, to generators of names.

A place may be written as a locale of Faker ("pt_BR", "pt-BR"), an ISO code of two or three
letters ("BR", "BRA"), an English name in any common form ("Brazil", "USA", "South Korea") or the
name in an official language of any country ("Brasil", "Polen", "Suisse"). A locale written
exactly so comes first ("la" is Latin, "LA" is Laos), then come codes and English names, then
locales without regard to case, then names in other languages. What people write where they know
no country ("n/a", "N.A.", "other") is none of these; "NA" in capitals is Namibia.
"""

import warnings
from collections.abc import Iterable, Iterator
from contextlib import contextmanager
from contextvars import ContextVar
from enum import Enum
from functools import cache
from typing import NamedTuple

import pandas as pd
from faker import Faker

from vantrel.errors import BorrowedNamesWarning, UnknownPlaceError
from vantrel.hints import nearest
from vantrel.util.callers import OURS
from vantrel.util.locale.copies import copied
from vantrel.util.locale.countries import (
    country_codes,
    country_name,
    folded,
    foreign_names,
    stands_for_nothing,
)
from vantrel.util.locale.faker_locales import (
    locale_for_country,
    locale_for_locale,
    locales,
    locales_by_country,
    locales_with_names,
)
from vantrel.wording import shown, some

# An error names no more unknown places than a reader can take in.
_MOST_NAMED = 20
_MOST_BORROWED = 100

_LONGEST_PLACE = 200


class Provider(Enum):
    """What is generated for a locale; each member needs names of its own in the locale."""

    PERSON = "person"


def get_country_to_provder_map(countries: Iterable[str], provider: Provider) -> dict[str, Faker]:
    """Makes a generator of names for each country or locale.

    Args:
        countries: Countries or locales in any way to write them. Missing ones are left out.
        provider: What the generators are for.

    Returns:
        From each value, as it is written, to a ``Faker`` instance of its own, in the order of
        first appearance.

    Raises:
        UnknownPlaceError: Some values are neither a country nor a locale; all of them are named.

    Warns:
        BorrowedNamesWarning: Once for all values of which Faker has no names of their own, with the
            locales whose names they get.
    """
    _check(provider)
    present = dict.fromkeys(country for country in countries if not pd.isna(country))
    refuse_unknown(present)
    if _warns.get():
        warn_of_borrowed(present)
    chosen = {country: locale_of(country)[0] for country in present}
    first: dict[str, Faker] = {}
    return {
        country: copied(first[locale])
        if locale in first
        else first.setdefault(locale, Faker(locale))
        for country, locale in chosen.items()
    }


# Off while it is known that the user was told.
_warns: ContextVar[bool] = ContextVar("warns", default=True)


@contextmanager
def told_before() -> Iterator[None]:
    """Has generators of names made without a warning: the user is told once, of all at once."""
    token = _warns.set(False)
    try:
        yield
    finally:
        _warns.reset(token)


def warn_of_borrowed(places: Iterable[str]) -> None:
    """Warns of those known places of which Faker has no names, with the locales whose they get."""
    borrowed = [f"{place} ({locale})" for place, locale in borrowed_places(places).items()]
    if borrowed:
        warnings.warn(
            "Faker has no person names of its own for these; they get those of the locale in"
            f" brackets: {some(borrowed, _MOST_BORROWED)}.",
            BorrowedNamesWarning,
            skip_file_prefixes=OURS,
        )


def get_supported_country_names(provider: Provider) -> dict[str, list[str]]:
    """Maps the English names, sorted, of the countries with names of their own to their locales.

    The first locale of a country is the one that is taken for it.
    """
    codes = get_supported_country_codes(provider)
    return dict(sorted((country_name(code), locales) for code, locales in codes.items()))


def get_supported_country_codes(provider: Provider) -> dict[str, list[str]]:
    """Maps the two-letter codes, sorted, of the countries with names of their own to their locales.

    The first locale of a country is the one that is taken for it.
    """
    _check(provider)
    return {code: list(own) for code, own in sorted(locales_by_country().items())}


def valid_locales(provider: Provider) -> list[str]:
    """Lists the locales, sorted, of which Faker has names of their own."""
    _check(provider)
    return list(locales_with_names())


def _check(provider: Provider) -> None:
    if provider is not Provider.PERSON:
        raise ValueError(f"No locales are known for {provider!r}: use Provider.PERSON.")


def refuse_unknown(places: Iterable[str]) -> None:
    """Refuses what is neither a country nor a locale; all of it is named."""
    unknown = unknown_places(places)
    if unknown:
        raise UnknownPlaceError(told_unknown(unknown))


def unknown_places(places: Iterable[str]) -> list[str]:
    """Lists those that are neither a country nor a locale, in their order."""
    return [place for place in places if recognise(place) is None]


def borrowed_places(places: Iterable[str]) -> dict[str, str]:
    """Maps those known places of which Faker has no names to the locale whose names they get."""
    chosen = {place: locale_of(place) for place in places}
    return {place: locale for place, (locale, own) in chosen.items() if not own}


def locale_of(place: str) -> tuple[str, bool]:
    """Gives the locale whose names a known place gets, and whether they are of that very place."""
    found = recognise_known(place)
    return locale_for_country(found.country) if found.country else locale_for_locale(found.locale)


class Recognised(NamedTuple):
    """What a place is: a country by its two-letter code, or one of Faker's locales."""

    country: str = ""
    locale: str = ""


def recognise(place: str) -> Recognised | None:
    """Tells whether a place is a country or a locale, and which; ``None`` if it is neither."""
    text = str(place).strip()
    if len(text) > _LONGEST_PLACE or stands_for_nothing(text):
        return None
    if text.replace("-", "_") in locales():
        return Recognised(locale=text.replace("-", "_"))
    if country := country_codes().get(folded(text)):
        return Recognised(country=country)
    if locale := _locales_by_folded().get(folded(text)):
        return Recognised(locale=locale)
    if country := foreign_names().get(folded(text)):
        return Recognised(country=country)
    return None


def recognise_known(place: str) -> Recognised:
    """Tells what a place is, and refuses what is none."""
    refuse_unknown([place])
    found = recognise(place)
    assert found is not None
    return found


@cache
def _locales_by_folded() -> dict[str, str]:
    return {folded(locale): locale for locale in locales()}


HOW_TO_WRITE = (
    "Write a country as its ISO code, its English name or its name in its own language, a locale as"
    " 'en_GB'."
)


def told_unknown(places: list[str]) -> str:
    """Names what is neither a country nor a locale, with the nearest ones that are."""
    if len(places) == 1:
        (place,) = places
        hint = f" Did you mean {_nearest(place)}?" if _nearest(place) else ""
        return f"{shown(repr(place))} is neither a country nor a locale.{hint} {HOW_TO_WRITE}"
    named = [
        shown(repr(place)) + (f" (did you mean {near}?)" if (near := _nearest(place)) else "")
        for place in places[:_MOST_NAMED]
    ]
    listed = some([*named, *places[_MOST_NAMED:]], _MOST_NAMED)
    return f"These are neither countries nor locales: {listed}. {HOW_TO_WRITE}"


def _nearest(place: str) -> str:
    if stands_for_nothing(str(place)):
        return ""
    codes = foreign_names() | country_codes()
    shown = {spelling: country_name(code) for spelling, code in codes.items()}
    shown |= _locales_by_folded()
    return nearest(folded(str(place)), shown, most=3)
