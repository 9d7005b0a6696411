"""Which names are the most frequent in each country."""

from __future__ import annotations

from collections import Counter
from collections.abc import Sequence
from dataclasses import dataclass

from vantrel.reporting.labelled import LabelledTable
from vantrel.tables.database import quoted

MOST_PLACES = 12
MOST_NAMES = 5


@dataclass(frozen=True)
class Name:
    """A name and its share, from 0 to 1, of the place's rows that have a name of the kind."""

    value: str
    share: float


@dataclass(frozen=True)
class FrequentNames:
    """The most frequent names of one kind; None for a table without a column of them."""

    attribute: str
    real: tuple[Name, ...] | None
    sampled: tuple[Name, ...] | None


@dataclass(frozen=True)
class Place:
    """The most frequent names of a place; its name is None where it is all the rows."""

    name: str | None
    kinds: tuple[FrequentNames, ...]


@dataclass(frozen=True)
class Places:
    """The places with the most rows, real and sampled together, and how many more there are."""

    places: tuple[Place, ...]
    more: int


# From kind to country to names.
_Tops = dict[str, dict[str | None, tuple[Name, ...]]]


def frequent_names(real: LabelledTable, sampled: LabelledTable) -> Places:
    """Lists the most frequent names by country, or of all rows where countries are not told.

    First and last names are listed, and full names where there are neither. Countries are told
    if every table that has names has them.
    """
    tables = [real, sampled]
    kinds = _kinds(tables)
    named = [table for table in tables if any(table.has(kind) for kind in kinds)]
    if not named:
        return Places((), 0)
    if not all(table.has("country") for table in named):
        return Places((_place(None, kinds, [_top(table, kinds) for table in tables]),), 0)
    rows: Counter[str] = Counter()
    for table in named:
        rows.update(table.counts("country"))
    countries = sorted(rows, key=lambda country: (-rows[country], country))
    shown = countries[:MOST_PLACES]
    tops = [_top(table, kinds, shown) for table in tables]
    return Places(tuple(_place(each, kinds, tops) for each in shown), len(countries) - len(shown))


def _kinds(tables: Sequence[LabelledTable]) -> list[str]:
    def there(kind: str) -> bool:
        return any(table.has(kind) for table in tables)

    parts = [kind for kind in ("firstname", "lastname") if there(kind)]
    return parts or [kind for kind in ("fullname",) if there(kind)]


def _place(name: str | None, kinds: Sequence[str], tops: Sequence[_Tops]) -> Place:
    """Joins the names of both tables; a table without countries has no names either."""
    return Place(name, tuple(FrequentNames(kind, *_both(kind, name, tops)) for kind in kinds))


def _both(
    kind: str, place: str | None, tops: Sequence[_Tops]
) -> tuple[tuple[Name, ...] | None, ...]:
    return tuple(top[kind].get(place, ()) if kind in top else None for top in tops)


def _top(table: LabelledTable, kinds: Sequence[str], countries: Sequence[str] = ()) -> _Tops:
    """The most frequent names of each kind that a table has, by country, of all rows for none."""
    return {kind: _top_of(table, kind, countries) for kind in kinds if table.has(kind)}


def _top_of(
    table: LabelledTable, kind: str, countries: Sequence[str]
) -> dict[str | None, tuple[Name, ...]]:
    name = table.column(kind)
    country = table.column("country") if countries else "NULL"
    shown = f"AND {country} IN ({', '.join(map(quoted, countries))})" if countries else ""
    found = table.table.query(
        f"SELECT country, sum(rows), min({{'rows': -rows, 'name': name}}, {MOST_NAMES}) FROM"
        f" (SELECT {country} AS country, {name} AS name, count(*) AS rows FROM {{rows}}"
        f" WHERE {name} IS NOT NULL {shown} GROUP BY 1, 2) GROUP BY 1"
    )
    return {
        place: tuple(Name(each["name"], -each["rows"] / int(rows)) for each in names)
        for place, rows, names in found
    }
