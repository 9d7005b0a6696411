"""Which names are the most frequent in each country."""

from __future__ import annotations

from collections.abc import Sequence
from dataclasses import dataclass, replace

import pandas as pd

from vantrel.reporting.labelled import LabelledTable, most_frequent

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
        return Places((_place(None, tables, kinds),), 0)
    counts = most_frequent(pd.concat([_countries(table) for table in named]))
    places = []
    for country in counts.index[:MOST_PLACES]:
        rows = [_of_country(table, country) for table in tables]
        places.append(_place(str(country), rows, kinds))
    return Places(tuple(places), len(counts) - len(places))


def _kinds(tables: Sequence[LabelledTable]) -> list[str]:
    def there(kind: str) -> bool:
        return any(table.has(kind) for table in tables)

    parts = [kind for kind in ("firstname", "lastname") if there(kind)]
    return parts or [kind for kind in ("fullname",) if there(kind)]


def _countries(table: LabelledTable) -> pd.Series:
    countries = table.texts("country")
    assert countries is not None
    return countries


def _of_country(table: LabelledTable, country: str) -> LabelledTable:
    """A table without countries has no names either: it stays as it is."""
    if not table.has("country"):
        return table
    countries = table.values("country")
    is_there = countries.notna() & (countries.astype(str) == country)
    return replace(table, df=table.df[is_there.to_numpy()])


def _place(name: str | None, tables: Sequence[LabelledTable], kinds: Sequence[str]) -> Place:
    return Place(
        name,
        tuple(FrequentNames(kind, *(_top(each.texts(kind)) for each in tables)) for kind in kinds),
    )


def _top(values: pd.Series | None) -> tuple[Name, ...] | None:
    if values is None:
        return None
    counts = most_frequent(values).head(MOST_NAMES)
    return tuple(Name(str(value), int(n) / len(values)) for value, n in counts.items())
