"""Genders and countries that a user gives row by row."""

from __future__ import annotations

from collections.abc import Iterable
from typing import Any

import pandas as pd

from vantrel.arguments import as_frame
from vantrel.errors import ConditionsError
from vantrel.genders import by_gender, learnt_by_gender
from vantrel.hints import argument, in_rows, shows_values, unnamed
from vantrel.model.models.person import PersonModel
from vantrel.sampling.places import refuse_borrowed, take_in
from vantrel.util.locale.locale import unknown_places
from vantrel.wording import shown

_MOST_VALUES = 1_000


def prepare_conditions(
    model: PersonModel, table: Any, *, strict: bool = False, exact: bool = False
) -> pd.DataFrame:
    """Checks genders and countries row by row and takes countries in that the fit did not see.

    Args:
        model: A fitted model; its map of countries grows.
        table: A table, as :func:`vantrel.fit` takes it, with a row for each to make. Only the
            model's columns of gender and country are used.
        strict: Whether what cannot be placed is refused with its rows, the first of which is row 1,
            and countries of which Faker has no names of their own.
        exact: Whether the bare model is to make the rows, which cannot do without a place.

    Returns:
        A frame of these columns with the index 0 to n - 1.
    """
    given = as_frame(table, "A table of conditions")
    labels = model.labels
    columns = [column for column in (labels.gender, labels.country) if column is not None]
    conditions = given[[column for column in columns if column in given]].reset_index(drop=True)
    if conditions.columns.empty:
        raise ConditionsError(_without_columns(columns))
    if strict or exact or model.meta.rows is None:
        _refuse_unplaced(model, conditions)
    if strict:
        refuse_borrowed(model, conditions)
    if labels.country in conditions:
        countries = list(conditions[labels.country].dropna().unique())
        unknown = set(unknown_places(countries))
        take_in(model, (country for country in countries if country not in unknown))
    return conditions


def _refuse_unplaced(model: PersonModel, conditions: pd.DataFrame) -> None:
    """Refuses what the bare model can make no person of."""
    labels = model.labels
    problems = []
    for column in conditions:
        values = conditions[column]
        placed = _placed_genders if column == labels.gender else _placed_countries
        unplaced = values[~values.isin(placed(model, values.dropna().unique()))]
        problems += (_problems if shows_values() else _unnamed)(column, unplaced)
    if problems:
        if len(problems) > _MOST_VALUES:
            problems[_MOST_VALUES:] = [f"and {len(problems) - _MOST_VALUES} more"]
        raise ConditionsError(
            f"The conditions have values that the model cannot place: {'; '.join(problems)}."
            " Correct them or leave the rows out."
        )


def _without_columns(columns: list[str]) -> str:
    if not columns:
        return (
            "The model has neither a column of genders nor one of countries: give a number of"
            f" people instead, as in {argument('n', 1000)}."
        )
    return f"The conditions need a column {' or '.join(map(repr, columns))}, as the model has."


def _problems(column: object, unplaced: pd.Series) -> list[str]:
    """Names each value with the rows that have it."""
    return [
        f"column {column!r} has {_shown(value)} in {in_rows(rows.index + 1)}"
        for value, rows in unplaced.groupby(unplaced, sort=False, dropna=False)
    ]


def _unnamed(column: object, unplaced: pd.Series) -> list[str]:
    """Tells the rows without a value, and those of the values."""
    missing, there = unplaced[unplaced.isna()], unplaced.dropna()
    told = (
        [f"column {column!r} has no value in {in_rows(missing.index + 1)}"] if len(missing) else []
    )
    if not there.empty:
        what = unnamed(there.nunique(), in_rows(there.index + 1))
        told.append(f"column {column!r} has {what}")
    return told


def _shown(value: Any) -> str:
    return "no value" if pd.isna(value) else shown(repr(value))


def _placed_genders(model: PersonModel, values: Iterable[str]) -> list[str]:
    """Those whose gender has at least one value in the fitted table."""
    learnt = learnt_by_gender(model, "gender")
    given = by_gender(values, model.config, "gender")
    return [value for key, those in given.items() if learnt[key] for value in those]


def _placed_countries(_model: PersonModel, values: Iterable[str]) -> list[str]:
    places = list(values)
    unknown = set(unknown_places(places))
    return [place for place in places if place not in unknown]
