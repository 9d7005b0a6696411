"""Makes sure that a table and what it is said to hold go together."""

from __future__ import annotations

from collections.abc import Collection, Iterable, Mapping, Sequence
from typing import Any

import pandas as pd

from vantrel.arguments import refuse_text
from vantrel.attributes import ATTRIBUTES
from vantrel.config import PersonLabels
from vantrel.detection import Detection
from vantrel.errors import ArgumentError, FittingError, UnknownPlaceError
from vantrel.fitting.notes import doubt_note
from vantrel.hints import argument, did_you_mean, listed
from vantrel.metadata.value import Person
from vantrel.util.locale.locale import refuse_unknown, unknown_places


def check_request(
    columns: Mapping[str, str],
    generate: Iterable[str],
    ignore: Collection[str],
    locales: Sequence[str] | None,
    *,
    detect: bool,
) -> list[str]:
    """Makes sure, before a table is looked at, that what is asked of a fit goes together.

    The arguments are those of :func:`vantrel.fit`.

    Returns:
        The attributes to generate.
    """
    refuse_text(generate, "generate", "attributes")
    refuse_text(ignore, "ignore", "columns")
    refuse_text(locales, "locales", "locales")
    generated = list(generate)
    for attribute in (*columns, *generated):
        refuse_unknown_attribute(attribute)
    for attribute in generated:
        if attribute in columns:
            raise ArgumentError(
                f"{attribute!r} is both named and to be generated: a column that is named is"
                " generated anyway."
            )
        if ATTRIBUTES[attribute].is_learnt:
            raise ArgumentError(
                f"{attribute!r} must be learnt from a column: name it, as in"
                f" {argument(attribute, 'COLUMN')}."
            )
    for attribute, column in columns.items():
        if column in ignore:
            raise ArgumentError(
                f"Column {column!r} is both named for {attribute!r} and ignored: leave one out."
            )
    if not (columns or detect):
        raise ArgumentError(f"Name a column to learn from, as in {argument('gender', 'COLUMN')}.")
    make_person(columns, generated, None)
    return generated


def refuse_unknown_attribute(attribute: str) -> None:
    """Refuses what no person has; the nearest attribute is named."""
    if attribute not in ATTRIBUTES:
        raise ArgumentError(
            f"{attribute!r} is no attribute of a person.{did_you_mean(attribute, ATTRIBUTES)} Known"
            f" are: {', '.join(ATTRIBUTES)}."
        )


def make_person(
    columns: Mapping[str, str], generated: Iterable[str], locales: Sequence[str] | None
) -> Person:
    """Describes a person by a table's columns; what else is generated is named as its attribute."""
    labels = PersonLabels(**{attribute: attribute for attribute in generated} | {**columns})
    return Person("person", labels, locales=list(locales) if locales else None)


def check_columns(df: pd.DataFrame, columns: Mapping[str, str], ignore: Iterable[str]) -> None:
    """Refuses columns that a table has not, and named ones without any value."""
    wanted = {column: f"for {attribute!r}" for attribute, column in columns.items()}
    for column, why in {**dict.fromkeys(ignore, "to ignore"), **wanted}.items():
        if column not in df.columns:
            raise FittingError(
                f"The table has no column {column!r} {why}.{did_you_mean(column, df.columns)} Its"
                f" columns are: {listed(df.columns)}."
            )
    for attribute, column in columns.items():
        if df[column].isna().all():
            raise FittingError(
                f"Column {column!r} holds missing values only: leave {attribute!r} out."
            )


def refuse_nothing(df: pd.DataFrame, columns: Mapping[str, str], found: Detection) -> None:
    """Refuses a table in which no column was named or found."""
    if not columns:
        doubts = "".join(f" {doubt_note(doubt)}" for doubt in found.doubts)
        raise FittingError(
            "No column of the table is found to be of a person by its name and values: name one, as"
            f" in {argument('gender', 'COLUMN')}.{doubts} Its columns are: {listed(df.columns)}."
        )


def check_countries(counts: Mapping[Any, int], column: str) -> None:
    """Refuses unknown countries: all of them are named, with the number of their rows.

    Args:
        counts: How many rows have each country; a missing one is None.
        column: The column of countries.
    """
    places = [place for place in counts if place is not None]
    try:
        refuse_unknown(places)
    except UnknownPlaceError as error:
        rows = sum(counts[place] for place in unknown_places(places))
        raise FittingError(
            f"Column {column!r}: {error} Such rows: {rows:,} of {sum(counts.values()):,}. Correct"
            f" or empty these cells, or leave the column out: {argument('ignore', [column])}."
        ) from error
