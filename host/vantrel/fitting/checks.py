"""Makes sure that a table and what it is said to hold go together."""

from __future__ import annotations

from collections.abc import Callable, Collection, Iterable, Mapping, Sequence
from typing import Any

import msgspec
import pandas as pd

from vantrel.arguments import kind_of, refuse_text
from vantrel.attributes import ATTRIBUTES
from vantrel.config import PersonLabels, PersonModelConfig
from vantrel.detection import Detection
from vantrel.errors import ArgumentError, ArgumentTypeError, FittingError, UnknownPlaceError
from vantrel.fitting.notes import doubt_note
from vantrel.hints import argument, did_you_mean, listed, shows_values, unnamed
from vantrel.metadata.value import Person
from vantrel.rows.form import DEFAULT_MIN_COUNT, Ways
from vantrel.rows.learning import LearntRows
from vantrel.sampling.phones import formats_by_country, region_of
from vantrel.tables import TableCounts
from vantrel.util.locale.countries import stands_for_nothing
from vantrel.util.locale.locale import (
    HOW_TO_WRITE,
    recognise_known,
    told_unknown,
    unknown_places,
)
from vantrel.wording import shown

# Of settings: a sample takes as long as they are.
_FORMATS = ("mobile_number_format", "home_number_format", "work_number_format")
_LONGEST = 1_000


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


def check_min_count(min_count: int) -> None:
    """Refuses what is no number of rows."""
    if isinstance(min_count, bool) or not isinstance(min_count, int) or min_count < 1:
        raise ArgumentError(f"'min_count' is an integer from 1 on, not {min_count!r}.")


# What is wanted of each argument that tells how people are reached.
_WANTED = {
    "email_domain": "is a domain such as 'example.org', or 'reserved' or 'as-made'",
    "phone_numbers": "are 'fiction' or 'valid'",
    "locales": "are locales by country, as in {'India': 'en_IN'}",
    "latin": "is True or False",
    "phone_formats": (
        "are formats in ASCII of mobile_number, home_number or work_number by country, as in"
        " {'DE': {'mobile_number': '0151 xxxxxxx'}}"
    ),
}


def check_ways(**asked: Any) -> Ways:
    """Gives how people are reached, and refuses what cannot be done so.

    The arguments are fields of :class:`vantrel.rows.Ways`.
    """
    for name, value in asked.items():
        try:
            msgspec.convert({name: value}, Ways)
        except msgspec.ValidationError as error:
            if isinstance(error.__cause__, UnknownPlaceError):
                raise error.__cause__ from None
            raise ArgumentError(f"{name!r} {_WANTED[name]}, not {shown(repr(value))}.") from None
    ways = Ways(**asked)
    _refuse_doubled("locales", ways.locales, recognise_known)
    _refuse_doubled("phone_formats", formats_by_country(ways), region_of)
    return ways


def _refuse_doubled(name: str, countries: Iterable[str], meaning: Callable[[str], object]) -> None:
    """Refuses two spellings of one country, of which one would count for nothing."""
    found: dict[object, str] = {}
    for country in countries:
        other = found.setdefault(meaning(country), country)
        if other != country:
            raise ArgumentError(
                f"{name!r} has one country twice, as {other!r} and {country!r}: leave one out."
            )


def refuse_countries_of_none(of_countries: Mapping[str, str], country: str | None) -> None:
    """Refuses locales of countries where no column tells any."""
    if of_countries and country is None:
        named = list(dict.fromkeys(of_countries.values()))
        raise FittingError(
            "There are locales of countries, and no column of countries: name it, as in"
            f" {argument('country', 'COLUMN')}, or tell where all people are from, as in"
            f" {argument('locales', named)}."
        )


def hidden_values(learnt: LearntRows, counts: TableCounts, meta: Person) -> dict[str, set[str]]:
    """Collects by column what the bare model is not to see.

    These are values that are too rare, what is no country, and titles that tell none of the
    genders: it could make nothing of them.
    """
    hidden = {column: set(values) for column, values in learnt.hidden.items()}
    if country := meta.labels.country:
        known = (value for value in counts.values[country] if value is not None)
        hidden[country] |= set(map(str, unknown_places(known)))
    return hidden


def check_kept(
    counts: TableCounts,
    hidden: Mapping[str, Collection[str]],
    min_count: int,
    country: str | None,
) -> None:
    """Refuses columns of which nothing would be kept; ``country`` is that of countries."""
    for column, values in hidden.items():
        texts = [value for value in counts.values[column] if value is not None]
        if not texts or any(str(value) not in values for value in texts):
            continue
        if column == country and len(unknown_places(texts)) == len(texts):
            if not all(stands_for_nothing(str(text)) for text in texts):
                _refuse_countries(counts, column, texts)
            if any(counts.values[column][text] >= min_count for text in texts):
                continue
        least, way_out = min_count, f"keep what is rare, with {argument('min_count', 1)}"
        if min_count == 1:  # so these are titles
            least = DEFAULT_MIN_COUNT
            way_out = f"set patterns in {argument('config', ...)} that understand it"
        raise FittingError(
            f"Column {column!r} has no value in {least:,} rows or more, and rarer ones are not"
            f" kept: leave it out, {argument('ignore', [column])}, or {way_out}."
        )


def _refuse_countries(counts: TableCounts, column: str, unknown: list[str]) -> None:
    """Refuses unknown countries, with the number of their rows; names them where that is asked for.

    Args:
        counts: How many rows have each country.
        column: The column of countries.
        unknown: Those that are not known.
    """
    rows = sum(counts.values[column][place] for place in unknown)
    told = f"{told_unknown(unknown)} Such rows: {rows:,} of {counts.rows:,}."
    if not shows_values():
        no_places = "no country or locale" if len(unknown) == 1 else "no countries or locales"
        where = unnamed(len(unknown), counts.where(column, unknown))
        told = f"{where}: {no_places}. {HOW_TO_WRITE}"
    raise FittingError(
        f"Column {column!r}: {told} Correct or empty these cells, or leave the column out:"
        f" {argument('ignore', [column])}."
    )


def check_config(config: PersonModelConfig) -> None:
    """Refuses what is no settings, and those that are not to be carried out in anybody's time."""
    if not isinstance(config, PersonModelConfig):
        raise ArgumentTypeError(
            f"'config' is a vantrel.config.PersonModelConfig; this is {kind_of(config)}."
        )
    for name in _FORMATS:
        length = len(getattr(config, name))
        if length > _LONGEST:
            raise ArgumentError(
                f"{name!r} has {length:,} characters, more than {_LONGEST:,}: shorten it."
            )
