"""Reads the columns that the user names."""

from __future__ import annotations

from collections.abc import Sequence

import click

from vantrel.fitting import (
    ATTRIBUTES,
    LEARNT_ATTRIBUTES,
    make_person,
    refuse_unknown_attribute,
)


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
    try:
        refuse_unknown_attribute(attribute)
    except ValueError as error:
        raise click.BadParameter(str(error)) from error


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
    try:
        make_person(columns, generated, None)
    except ValueError as error:
        raise click.UsageError(str(error)) from error
