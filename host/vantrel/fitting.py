"""From a table to a fitted model."""

from __future__ import annotations

from collections.abc import Iterable, Mapping, Sequence
from dataclasses import fields
from difflib import get_close_matches
from typing import TYPE_CHECKING, Any

from vantrel.config import PersonLabels, PersonModelConfig
from vantrel.metadata.value import Person
from vantrel.util.arguments import refuse_text

if TYPE_CHECKING:
    import pandas as pd

    from vantrel.model.models.person import PersonModel

ATTRIBUTES = [field.name for field in fields(PersonLabels)]

# What a sample has of these comes from the fitted column's own values.
LEARNT_ATTRIBUTES = ("gender", "title", "country")


class FittingError(ValueError):
    """A table and what it is said to hold do not go together."""


def fit(
    df: pd.DataFrame,
    *,
    generate: Iterable[str] = (),
    locales: Sequence[str] | None = None,
    config: PersonModelConfig | None = None,
    **columns: str,
) -> PersonModel:
    """Learns from a table of people.

    Args:
        df: A frame with a row for each person; other columns than those named are left out of
            samples. Not changed.
        generate: Attributes that the table does not have but samples shall, in columns of the
            attributes' names.
        locales: Where the people are from if there is no column of countries, as locales of Faker
            or as countries; one is drawn for each person. British if None.
        config: Patterns of genders and titles, formats of phone numbers, lengths of passwords.
        columns: The column of each attribute, as in ``gender="sex"``. The attributes are gender,
            title, firstname, lastname, fullname, email, username, password, mobile_number,
            home_number, work_number and country. If there are none, the columns are found by their
            names and values, as :func:`vantrel.detect.detect_columns` tells.

    Returns:
        A fitted model: ``model.sample(1000)`` gives a frame of 1,000 made-up people.

    Raises:
        FittingError: An attribute or a column is not known, a column is there twice, holds missing
            values only or unknown countries, or no column was found.
        TypeError: The table is no frame, or there is one text in the place of a list.
        ValueError: A locale is not known, or a column has nothing to learn from.
    """
    from vantrel.detect import detect_columns
    from vantrel.model.models.person import PersonModel
    from vantrel.tables.counts import count_frame
    from vantrel.util.locale.locale import refuse_unknown

    _check_frame(df)
    refuse_text(generate, "generate", "attributes")
    refuse_text(locales, "locales", "locales")
    generated = list(generate)
    for attribute in (*columns, *generated):
        refuse_unknown_attribute(attribute)
    for attribute in generated:
        if attribute in LEARNT_ATTRIBUTES and attribute not in columns:
            raise FittingError(f"{attribute!r} must be learnt: name its column, {attribute}=...")
    if not columns:
        columns = detect_columns(df)
    if not columns:
        raise FittingError(f"No columns of people were found among {_listed(df)}: name them.")
    check_columns(df, columns, "The table")
    if "country" in columns:
        column = columns["country"]
        check_countries(count_frame(df, [column]).values[column], column)
    refuse_unknown(locales or ())
    meta = make_person(columns, generated, locales)
    return PersonModel(meta, config or PersonModelConfig()).fit(df)


def _check_frame(df: object) -> None:
    import pandas as pd

    if not isinstance(df, pd.DataFrame):
        raise TypeError(
            f"A table is a pandas DataFrame, not {df!r:.50}: read a file with pandas.read_csv."
        )
    doubled = df.columns[df.columns.duplicated()].unique()
    if len(doubled):
        raise FittingError(
            f"Columns are there twice: {', '.join(map(repr, doubled))}. Give each one name of its"
            " own."
        )


def refuse_unknown_attribute(attribute: str) -> None:
    """Makes sure that a person can have an attribute.

    Raises:
        FittingError: It cannot; the nearest one is named.
    """
    if attribute not in ATTRIBUTES:
        raise FittingError(
            f"{attribute!r} is no attribute of a person.{suggestion(attribute, ATTRIBUTES)} Known"
            f" are: {', '.join(ATTRIBUTES)}."
        )


def suggestion(text: str, known: Iterable[Any]) -> str:
    """Asks for the known name that is nearest, without regard to case, if one is near."""
    by_folded = {str(name).casefold(): name for name in known}
    nearest = get_close_matches(text.casefold(), by_folded, n=1, cutoff=0.8)
    return f" Did you mean {by_folded[nearest[0]]!r}?" if nearest else ""


def make_person(
    columns: dict[str, str], generated: Iterable[str], locales: Sequence[str] | None
) -> Person:
    """Describes a person by the table's columns; what else is generated is named as its attribute.

    Raises:
        ValueError: Two attributes share a column.
    """
    labels = PersonLabels(**{attribute: attribute for attribute in generated} | columns)
    return Person("person", labels, locales=list(locales) if locales else None)


def check_columns(df: pd.DataFrame, columns: dict[str, str], table: str) -> None:
    """Makes sure that a table has the named columns, with at least one value in each.

    Args:
        df: The table.
        columns: The column of each attribute.
        table: What the error is to call the table, as the first words of a sentence.

    Raises:
        FittingError: A column is not there or holds missing values only.
    """
    for attribute, column in columns.items():
        if column not in df.columns:
            raise FittingError(
                f"{table} has no column {column!r} for {attribute!r}."
                f"{suggestion(column, df.columns)} Its columns are: {_listed(df)}."
                f"{separator_hint(df)}"
            )
        if df[column].isna().all():
            raise FittingError(
                f"Column {column!r} of {table[0].lower()}{table[1:]} holds missing values only:"
                f" leave {attribute!r} out."
            )


def _listed(df: pd.DataFrame) -> str:
    return ", ".join(map(repr, df.columns))


def separator_hint(df: pd.DataFrame) -> str:
    """Tells, as sentences with a leading blank, if the one column looks like several."""
    for separator, written, name in ((";", ";", "semicolons"), ("\t", r"\t", "tabs")):
        if len(df.columns) == 1 and separator in str(df.columns[0]):
            return (
                f" It seems to be separated by {name}: save it as CSV UTF-8 (comma separated), or"
                " convert it, as in python -c \"import pandas as pd; pd.read_csv('in.csv',"
                f" sep='{written}', dtype=str, keep_default_na=False).to_csv('out.csv',"
                ' index=False)".'
            )
    return ""


def check_countries(
    counts: Mapping[Any, int], column: str, way_out: str = "leave the column out"
) -> None:
    """Makes sure that every country is known.

    Args:
        counts: How many rows have each country; a missing one is None.
        column: The column of countries.
        way_out: What the user may do instead of correcting the cells.

    Raises:
        FittingError: Some are not; all of them are named, with the number of their rows.
    """
    from vantrel.util.locale.locale import refuse_unknown, unknown_places

    places = [place for place in counts if place is not None]
    try:
        refuse_unknown(places)
    except ValueError as error:
        rows = sum(counts[place] for place in unknown_places(places))
        raise FittingError(
            f"Column {column!r}: {error} Such rows: {rows:,} of {sum(counts.values()):,}. Correct"
            f" or empty these cells, or {way_out}."
        ) from error
