"""Tables of countries and locales and whose names they get."""

from __future__ import annotations

from vantrel.reporting.sections import Section
from vantrel.util.locale.countries import country_codes, country_name, folded
from vantrel.util.locale.faker_locales import (
    locale_for_country,
    locale_for_locale,
    locales,
    locales_by_country,
)
from vantrel.util.locale.locale import recognise_known


def all_countries() -> list[Section]:
    """Lists every country by name, with the locale that is taken for it and those it has."""
    own = locales_by_country()
    codes = set(country_codes().values())
    rows = [
        (
            code,
            country_name(code),
            locale_for_country(code)[0],
            ", ".join(own.get(code, ["none: borrowed"])),
        )
        for code in sorted(codes, key=lambda code: folded(country_name(code)))
    ]
    return [
        Section("", ("Code", "Country", "Names of", "Own locales"), rows),
        Section(f"{len(codes)} countries, {len(own)} of them with names of their own", (), ()),
    ]


def one_place(place: str) -> list[Section]:
    """Shows the locale that is taken for a country and all of Faker's of it, or a locale."""
    found = recognise_known(place)
    return _one_country(found.country) if found.country else [_locales("", [found.locale])]


def _one_country(code: str) -> list[Section]:
    taken, is_own = locale_for_country(code)
    borrowed = "" if is_own else " (borrowed: Faker has none of this country)"
    facts = [("Country", f"{country_name(code)} ({code})"), ("Names of", f"{taken}{borrowed}")]
    ranked = locales_by_country().get(code, [])
    others = sorted(locale for locale in locales() if locale.endswith(f"_{code}"))
    sections = [Section("", ("", ""), facts)]
    if own := list(dict.fromkeys([*ranked, *others])):
        sections.append(_locales("Its locales", own))
    return sections


def _locales(title: str, names: list[str]) -> Section:
    chosen = {name: locale_for_locale(name) for name in names}
    rows = [
        (name, taken, "own" if is_own else "borrowed") for name, (taken, is_own) in chosen.items()
    ]
    return Section(title, ("Locale", "Names of", ""), rows)
