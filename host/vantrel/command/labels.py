"""Reads the columns that the user names."""

from __future__ import annotations

from collections.abc import Iterable, Sequence
from dataclasses import fields
from difflib import get_close_matches
from typing import TYPE_CHECKING

import click

from vantrel.config import PersonLabels
from vantrel.metadata.value import Person

if TYPE_CHECKING:
    import pandas as pd

ATTRIBUTES = [field.name for field in fields(PersonLabels)]

# What a sample has of these comes from the fitted column's own values.
LEARNT_ATTRIBUTES = ("gender", "title", "country")


def columns_by_attribute(
    _context: click.Context, _option: click.Parameter, values: Sequence[str]
) -> dict[str, str]:
    """Splits the values of ``--column`` into attribute and column.

    Raises:
        click.BadParameter: A value is no pair, an attribute is unknown or given twice.
    """
    columns: dict[str, str] = {}
    for value in values:
        attribute, equals, column = value.partition("=")
        if not (equals and column):
            raise click.BadParameter(f"{value!r} is not of the form ATTRIBUTE=COLUMN.")
        if attribute not in ATTRIBUTES and column in ATTRIBUTES:
            raise click.BadParameter(
                f"{value!r} is the wrong way round: write {column}={attribute}."
            )
        _refuse_unknown(attribute)
        if attribute in columns:
            raise click.BadParameter(f"{attribute!r} is given twice.")
        columns[attribute] = column
    return columns


def generated_attributes(
    _context: click.Context, _option: click.Parameter, value: str | None
) -> list[str]:
    """Splits the value of ``--generate`` into attributes.

    Raises:
        click.BadParameter: An attribute is unknown or can only be learnt.
    """
    attributes = [attribute.strip() for attribute in value.split(",")] if value else []
    for attribute in attributes:
        _refuse_unknown(attribute)
        if attribute in LEARNT_ATTRIBUTES:
            raise click.BadParameter(
                f"{attribute!r} must be learnt from a column: use --column {attribute}=COLUMN."
            )
    return attributes


def _refuse_unknown(attribute: str) -> None:
    if attribute not in ATTRIBUTES:
        raise click.BadParameter(
            f"{attribute!r} is no attribute of a person.{suggestion(attribute, ATTRIBUTES)} Known"
            f" are: {', '.join(ATTRIBUTES)}."
        )


def suggestion(text: str, known: Iterable[str]) -> str:
    """Asks for the known name that is nearest, without regard to case, if one is near."""
    by_folded = {str(name).casefold(): name for name in known}
    nearest = get_close_matches(text.casefold(), by_folded, n=1, cutoff=0.8)
    return f" Did you mean {by_folded[nearest[0]]!r}?" if nearest else ""


def check_named(
    columns: dict[str, str], generated: Sequence[str], ignored: Sequence[str], *, detecting: bool
) -> None:
    """Makes sure that what the user names goes together.

    Args:
        columns: The column of each attribute that is named.
        generated: The attributes to generate.
        ignored: The columns that are not to be found.
        detecting: Whether columns are found beside those that are named.

    Raises:
        click.UsageError: It does not: two attributes share a column, an attribute is both in the
            table and generated, a column is named and ignored, or nothing tells of any column.
    """
    if not (columns or detecting):
        raise click.UsageError("Name a column to learn from: --column gender=sex, for example.")
    for attribute in generated:
        if attribute in columns:
            raise click.UsageError(
                f"{attribute!r} is given to both --column and --generate: it is generated anyway."
            )
    for attribute, column in columns.items():
        if column in ignored:
            raise click.UsageError(
                f"Column {column!r} is given to --column for {attribute!r} and to --ignore: leave"
                " one out."
            )
    make_person(columns, generated, ())


def make_person(
    columns: dict[str, str], generated: Sequence[str], locales: Sequence[str]
) -> Person:
    """Describes a person by the table's columns; what else is generated is named as its attribute.

    Raises:
        click.UsageError: Two attributes share a column.
    """
    labels = PersonLabels(**{attribute: attribute for attribute in generated} | columns)
    try:
        return Person("person", labels, locales=locales or None)
    except ValueError as error:
        raise click.UsageError(str(error)) from error


def check_columns(df: pd.DataFrame, columns: dict[str, str], table: object) -> None:
    """Makes sure that a table has the named columns, with at least one value in each.

    Raises:
        click.ClickException: A column is not there or holds missing values only.
    """
    for attribute, column in columns.items():
        if column not in df.columns:
            known = ", ".join(map(repr, df.columns))
            raise click.ClickException(
                f"Table {table} has no column {column!r} for {attribute!r}."
                f"{suggestion(column, df.columns)} Its columns are: {known}.{separator_hint(df)}"
            )
        if df[column].isna().all():
            raise click.ClickException(
                f"Column {column!r} of table {table} holds missing values only: leave"
                f" {attribute!r} out."
            )


def separator_hint(df: pd.DataFrame) -> str:
    for separator, name in ((";", "semicolons"), ("\t", "tabs")):
        if len(df.columns) == 1 and separator in df.columns[0]:
            return f" It seems to be separated by {name}: separate it by commas."
    return ""


def check_countries(df: pd.DataFrame, columns: dict[str, str], advice: str = "") -> None:
    """Makes sure that every country is known, where there is a column of them.

    Args:
        df: The table.
        columns: The column of each attribute.
        advice: What else the user may do, with a leading blank.

    Raises:
        click.ClickException: Some are not; all of them are named.
    """
    from vantrel.util.locale.locale import refuse_unknown

    if "country" not in columns:
        return
    column = columns["country"]
    try:
        refuse_unknown(df[column].dropna().unique())
    except ValueError as error:
        raise click.ClickException(f"Column {column!r}: {error}{advice}") from error
