"""From countries and locales, as tables write them, to generators of names.

A place may be written as a locale of Faker ("pt_BR", "pt-BR"), an ISO code of two or three
letters ("BR", "BRA") or an English name in any common form ("Brazil", "USA", "South Korea").
A locale written exactly so comes first ("la" is Latin, "LA" is Laos), then come countries, then
locales without regard to case.
"""

import warnings
from collections.abc import Iterable
from difflib import get_close_matches
from enum import Enum

import pandas as pd
from faker import Faker

from vantrel.util.locale.countries import country_codes, country_name, folded
from vantrel.util.locale.faker_locales import (
    locale_for_country,
    locale_for_locale,
    locales,
    locales_by_country,
    locales_with_names,
)


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
        ValueError: A value is neither a country nor a locale.

    Warns:
        UserWarning: Once for all values of which Faker has no names of their own, with the
            locales whose names they get.
    """
    _check(provider)
    present = dict.fromkeys(country for country in countries if not pd.isna(country))
    chosen = {country: _resolve(country) for country in present}
    borrowed = [f"{country} ({locale})" for country, (locale, own) in chosen.items() if not own]
    if borrowed:
        warnings.warn(
            "Faker has no person names of its own for these; they get those of the locale in"
            f" brackets: {', '.join(borrowed)}.",
            UserWarning,
            stacklevel=2,
        )
    return {country: Faker(locale) for country, (locale, _) in chosen.items()}


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


def _resolve(place: str) -> tuple[str, bool]:
    """Gives a place's locale and whether Faker has names of the very place."""
    text = str(place).strip()
    if text.replace("-", "_") in locales():
        return locale_for_locale(text.replace("-", "_"))
    country = country_codes().get(folded(text))
    if country:
        return locale_for_country(country)
    by_folded = {folded(locale): locale for locale in locales()}
    if folded(text) in by_folded:
        return locale_for_locale(by_folded[folded(text)])
    raise ValueError(_unknown(place, by_folded))


def _unknown(place: str, by_folded: dict[str, str]) -> str:
    shown = {spelling: country_name(code) for spelling, code in country_codes().items()} | by_folded
    nearest = get_close_matches(folded(str(place)), shown, n=5, cutoff=0.6)
    names = list(dict.fromkeys(shown[spelling] for spelling in nearest))[:3]
    hint = f" Did you mean {' or '.join(map(repr, names))}?" if names else ""
    return (
        f"{place!r} is neither a country nor a locale.{hint} Write a country as its ISO code or"
        " its English name, a locale as 'en_GB'."
    )
