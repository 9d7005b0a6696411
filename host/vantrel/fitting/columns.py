"""Finds the columns of a person where the user does not name them all."""

from __future__ import annotations

import shlex
from collections.abc import Collection, Mapping, Sequence
from typing import TYPE_CHECKING

import click

from vantrel.fitting import ATTRIBUTES, separator_hint
from vantrel.hints import suggestion

if TYPE_CHECKING:
    import pandas as pd
    from rich.table import Table

    from vantrel.config import PersonModelConfig
    from vantrel.detection import Detection, Doubt

_MADE_UP = "--generate"


def check_ignored(df: pd.DataFrame, ignored: Sequence[str], table: object) -> None:
    """Makes sure that a table has the columns that are to be ignored.

    Raises:
        click.ClickException: One is not there.
    """
    for column in ignored:
        if column not in df.columns:
            raise click.ClickException(
                f"Table {table} has no column {column!r} to ignore.{suggestion(column, df.columns)}"
                f" Its columns are: {', '.join(map(repr, df.columns))}."
            )


def find_columns(
    df: pd.DataFrame,
    table: object,
    config: PersonModelConfig,
    named: Mapping[str, str],
    ignored: Collection[str],
) -> Detection:
    """Finds the columns of the attributes that the user has not named.

    Raises:
        click.ClickException: Neither was a column named nor is one found.
    """
    from vantrel.detection import Detection, detect

    hint = separator_hint(df)
    found = Detection([], []) if hint else detect(df, config, known=named, ignored=ignored)
    if not (found.choices or named):
        doubts = "".join(f" {doubt_note(doubt)}" for doubt in found.doubts)
        raise click.ClickException(
            f"No column of table {table} is found to be of a person by its name and values: name"
            f" one, as in --column gender=COLUMN.{doubts} Its columns are:"
            f" {', '.join(map(repr, df.columns))}.{hint}"
        )
    return found


def doubt_note(doubt: Doubt) -> str:
    """Tells of a column that was not taken, and how to take it."""
    value = "" if doubt.value is None else f", such as {doubt.value!r},"
    return (
        f"Column {doubt.column!r} is not taken for {doubt.attribute}, as its values{value} do not"
        f" look so: {_way_out(doubt)}."
    )


def _way_out(doubt: Doubt) -> str:
    if doubt.attribute == "country":
        return (
            "to take it, write each as an ISO code, an English name or a name in the country's own"
            " language; or add --locale in its place"
        )
    meaning = ", and patterns of its values with --config" if doubt.attribute == "gender" else ""
    option = shlex.quote(f"{doubt.attribute}={doubt.column}")
    return f"to take it, add --column {option}{meaning}"


def there_already(found: Detection, generated: Collection[str]) -> list[str]:
    """Tells, in a sentence each, of attributes to generate for which a column was found."""
    return [
        f"{attribute!r} is there already, in column {column!r}: --generate is not needed for it."
        for attribute, column in found.columns.items()
        if attribute in generated
    ]


def columns_table(named: Mapping[str, str], found: Detection, generated: Collection[str]) -> Table:
    """Shows the column of each attribute and what told it."""
    from vantrel.cli.console import table

    told = {attribute: (column, "--column") for attribute, column in named.items()}
    told |= {choice.attribute: (choice.column, choice.reason) for choice in found.choices}
    told |= {attribute: (attribute, _MADE_UP) for attribute in generated if attribute not in told}
    rows = [(attribute, *told[attribute]) for attribute in ATTRIBUTES if attribute in told]
    return table("Attribute", "Column", "Told by", rows=rows)
