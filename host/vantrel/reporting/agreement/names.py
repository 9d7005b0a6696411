"""Whether first names go with genders and countries, as far as Faker's lists of names tell."""

from __future__ import annotations

from collections import Counter
from collections.abc import Mapping
from dataclasses import dataclass

from vantrel.config import PersonModelConfig
from vantrel.first_names import first_names_of, genders_of_first_names
from vantrel.genders import keys_of
from vantrel.reporting.agreement.rates import Contradictions, of_groups
from vantrel.reporting.labelled import LabelledTable
from vantrel.reporting.nearness.forms import first_word_of_first_name
from vantrel.sampling.places import with_names_of
from vantrel.tables.database import quoted
from vantrel.util.locale.locale import locale_of, unknown_places

# The countries with the most rows tell enough.
_MOST_COUNTRIES = 40


@dataclass(frozen=True)
class _Names:
    """The first names that lists know, and how many rows have each.

    Args:
        locales: From each country to the locale whose names its people have.
        rows: By country, gender and name; what is not told is None.
    """

    locales: Mapping[str | None, str]
    rows: Mapping[tuple[str | None, str | None, str], int]


def names_against_genders(table: LabelledTable) -> Contradictions | None:
    """Counts women whose first name only men bear, and men whose name only women do.

    The lists of the row's country tell it, where no country is told those of all.
    """
    names = _names(table) if table.has("gender") else None
    if names is None:
        return None
    keys = keys_of({gender for _, gender, _ in names.rows}, PersonModelConfig(), "gender")
    looked_at = 0
    against: Counter[str] = Counter()
    for (country, gender, name), rows in names.rows.items():
        told = genders_of_first_names(names.locales.get(country)).get(name)
        if told and gender is not None and keys.get(gender) in ("F", "M"):
            looked_at += rows
            if told != keys[gender]:
                against[f"{gender}, {name.title()}"] += rows
    return of_groups(looked_at, against)


def names_against_countries(table: LabelledTable) -> Contradictions | None:
    """Counts rows whose first name is none of their country, but of another one of the table."""
    names = _names(table) if table.has("country") else None
    if names is None or len(set(names.locales.values())) < 2:
        return None
    looked_at = 0
    against: Counter[str] = Counter()
    for (country, _, name), rows in names.rows.items():
        if country in names.locales:
            looked_at += rows
            if name not in first_names_of(names.locales[country]):
                against[f"{country}, {name.title()}"] += rows
    return of_groups(looked_at, against)


def _names(table: LabelledTable) -> _Names | None:
    name = first_word_of_first_name(table)
    if name is None:
        return None
    (word,) = table.table.computed(name)
    countries = list(table.counts("country") or ())[:_MOST_COUNTRIES]
    unknown = set(unknown_places(countries))
    there = [country for country in countries if country not in unknown]
    named = with_names_of(there, table.locales)
    locales: dict[str | None, str] = {
        country: locale_of(place)[0] for country, place in zip(there, named, strict=True)
    }
    known = set().union(*map(first_names_of, locales.values())) or {*genders_of_first_names(None)}
    country, gender = (
        table.column(each) if table.has(each) else "NULL" for each in ("country", "gender")
    )
    found = table.table.query(
        f"SELECT country, gender, name, count(*) FROM"
        f" (SELECT {country} AS country, {gender} AS gender, {word} AS name FROM {{rows}})"
        f" WHERE name IN ({', '.join(map(quoted, sorted(known)))}) GROUP BY ALL"
    )
    return _Names(locales, {tuple(cells): rows for *cells, rows in found})
