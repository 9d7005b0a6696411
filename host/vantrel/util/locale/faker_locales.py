"""Which of Faker's locales has names of its own, and which stands in where none has.

Faker knows more locales than it has names for. Where it has none it takes American names without
a word. Here such a locale, and such a country, gets the names of another one that suits better.
"""

import locale as standard_locale
from collections import defaultdict
from functools import cache

from faker.config import AVAILABLE_LOCALES
from faker.providers import person
from faker.utils.loading import list_module

from vantrel.util.locale.countries import country_codes, official_languages

DEFAULT_LOCALE = "en_GB"

# The locale of a language that several countries share, where it is not the one of the country
# whose code is the language's ("de_DE", "fr_FR"). A language may be written in several scripts.
_HOME_LOCALES = {
    "en": "en_GB",
    "ar": "ar_AA",
    "zh": "zh_CN",
    "zh_Hant": "zh_TW",
    "nb": "no_NO",
    "nn": "no_NO",
}


@cache
def locales() -> frozenset[str]:
    """All locales that Faker knows."""
    return frozenset(AVAILABLE_LOCALES)


@cache
def locales_with_names() -> tuple[str, ...]:
    """The locales, sorted, of which Faker has person names."""
    own = set(list_module(person))
    return tuple(sorted(locale for locale in locales() if _completed(locale) in own))


def _completed(locale: str) -> str:
    # As Faker itself does: "de" is "de_DE".
    return standard_locale.normalize(locale).partition(".")[0]


def _language(locale: str) -> str:
    return locale.partition("_")[0]


@cache
def locales_by_country() -> dict[str, list[str]]:
    """Maps two-letter codes to the country's locales that have names.

    The locale that is taken for the country comes first. The order is that of the country's
    official languages, the most spoken first, then the alphabet's.
    """
    codes = set(country_codes().values())
    by_country: dict[str, list[str]] = defaultdict(list)
    for locale in locales_with_names():
        country = locale.partition("_")[2]
        if country in codes:
            by_country[country].append(locale)
    for country, own in by_country.items():
        ranks = {language: rank for rank, language in enumerate(official_languages(country))}
        own.sort(key=lambda locale: (ranks.get(_language(locale), len(ranks)), locale))
    return dict(by_country)


@cache
def locale_for_language(language: str) -> str | None:
    """Gives the locale that stands for a language; ``None`` where Faker has no names in it."""
    home = _HOME_LOCALES.get(language)
    if home is None:
        language = _language(language)
        home = _HOME_LOCALES.get(language, f"{language}_{language.upper()}")
    own = [locale for locale in locales_with_names() if _language(locale) == language]
    return home if home in locales_with_names() else next(iter(own), None)


def locale_for_country(country: str) -> tuple[str, bool]:
    """Chooses the locale whose names people of a country, a two-letter code, get.

    It is the first of the country's own locales. Without one it is the locale of the first of its
    official languages in which Faker has names, and without that ``DEFAULT_LOCALE``.

    Returns:
        The locale, and whether it is the country's own.
    """
    own = locales_by_country().get(country)
    if own:
        return own[0], True
    in_language = map(locale_for_language, official_languages(country))
    return next(filter(None, in_language), DEFAULT_LOCALE), False


def locale_for_locale(locale: str) -> tuple[str, bool]:
    """Chooses the locale whose names stand for those of one of Faker's locales.

    It is the locale itself if it has names, else the one of its language, else its country's.

    Returns:
        The locale, and whether it is the given one.
    """
    if locale in locales_with_names():
        return locale, True
    in_language = locale_for_language(_language(locale))
    return in_language or locale_for_country(locale.partition("_")[2])[0], False
