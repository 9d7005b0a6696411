"""Tables of countries and locales and whose names they get."""

from __future__ import annotations

from typing import TYPE_CHECKING

from vantrel.cli.console import heading, table
from vantrel.util.locale.countries import country_codes, country_name, folded
from vantrel.util.locale.faker_locales import (
    locale_for_country,
    locale_for_locale,
    locales,
    locales_by_country,
)

if TYPE_CHECKING:
    from rich.console import RenderableType


def all_countries() -> list[RenderableType]:
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
        table("Code", "Country", "Names of", "Own locales", rows=rows),
        heading(f"{len(codes)} countries, {len(own)} of them with names of their own"),
    ]


def one_country(code: str) -> list[RenderableType]:
    """Shows a country, the locale that is taken for it and all of Faker's locales of it.

    Args:
        code: The two-letter code, in capitals.
    """
    taken, is_own = locale_for_country(code)
    borrowed = "" if is_own else " (borrowed: Faker has none of this country)"
    facts = [("Country", f"{country_name(code)} ({code})"), ("Names of", f"{taken}{borrowed}")]
    ranked = locales_by_country().get(code, [])
    others = sorted(locale for locale in locales() if locale.endswith(f"_{code}"))
    parts: list[RenderableType] = [table("", "", rows=facts)]
    if own := list(dict.fromkeys([*ranked, *others])):
        parts += [heading("Its locales"), *some_locales(own)]
    return parts


def some_locales(names: list[str]) -> list[RenderableType]:
    """Lists locales of Faker and whose names they get."""
    chosen = {name: locale_for_locale(name) for name in names}
    rows = [
        (name, taken, "own" if is_own else "borrowed") for name, (taken, is_own) in chosen.items()
    ]
    return [table("Locale", "Names of", "", rows=rows)]
