"""Which names are the most frequent in each country."""

from __future__ import annotations

from collections.abc import Mapping
from dataclasses import dataclass

import pandas as pd

from vantrel.report.columns import has, most_frequent, texts

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


def frequent_names(real: pd.DataFrame, sampled: pd.DataFrame, columns: Mapping[str, str]) -> Places:
    """Lists the most frequent names by country, or of all rows where countries are not told.

    First and last names are listed, and full names where there are neither. Countries are told
    if every table that has names has them.
    """
    tables = [real, sampled]
    kinds = _kinds(tables, columns)
    named = [df for df in tables if any(has(df, columns, kind) for kind in kinds)]
    if not named:
        return Places((), 0)
    if not all(has(df, columns, "country") for df in named):
        return Places((_place(None, tables, columns, kinds),), 0)
    counts = most_frequent(pd.concat([_countries(df, columns) for df in named]))
    places = []
    for country in counts.index[:MOST_PLACES]:
        rows = [_of_country(df, columns, country) for df in tables]
        places.append(_place(str(country), rows, columns, kinds))
    return Places(tuple(places), len(counts) - len(places))


def _kinds(tables: list[pd.DataFrame], columns: Mapping[str, str]) -> list[str]:
    def there(kind: str) -> bool:
        return any(has(df, columns, kind) for df in tables)

    parts = [kind for kind in ("firstname", "lastname") if there(kind)]
    return parts or [kind for kind in ("fullname",) if there(kind)]


def _countries(df: pd.DataFrame, columns: Mapping[str, str]) -> pd.Series:
    countries = texts(df, columns, "country")
    assert countries is not None
    return countries


def _of_country(df: pd.DataFrame, columns: Mapping[str, str], country: str) -> pd.DataFrame:
    """A table without countries has no names either: it stays as it is."""
    if not has(df, columns, "country"):
        return df
    countries = _countries(df, columns)
    return df.loc[countries.index[countries == country]]


def _place(
    name: str | None, tables: list[pd.DataFrame], columns: Mapping[str, str], kinds: list[str]
) -> Place:
    return Place(
        name,
        tuple(
            FrequentNames(kind, *(_top(texts(df, columns, kind)) for df in tables))
            for kind in kinds
        ),
    )


def _top(values: pd.Series | None) -> tuple[Name, ...] | None:
    if values is None:
        return None
    counts = most_frequent(values).head(MOST_NAMES)
    return tuple(Name(str(value), int(n) / len(values)) for value, n in counts.items())
