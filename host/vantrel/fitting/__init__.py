"""From a table to a fitted model."""

from __future__ import annotations

import logging
from collections.abc import Collection, Iterable, Mapping, Sequence
from dataclasses import dataclass
from typing import Any, Protocol, Unpack, runtime_checkable

import msgspec
import pandas as pd

from vantrel.arguments import as_frame
from vantrel.attributes import PersonColumns
from vantrel.config import PersonModelConfig
from vantrel.detection import NOTHING
from vantrel.detection import detect as find
from vantrel.detection.full_names import full_names_of
from vantrel.detection.values import SAMPLE_SIZE
from vantrel.errors import FittingError, raised_by_model
from vantrel.fitting.checks import (
    check_columns,
    check_config,
    check_kept,
    check_min_count,
    check_request,
    check_ways,
    hidden_values,
    make_person,
    refuse_countries_of_none,
    refuse_nothing,
)
from vantrel.fitting.counted import fit_counts, in_one_country, learnt_columns
from vantrel.fitting.notes import notes
from vantrel.hints import showing_values
from vantrel.metadata.value import Person
from vantrel.model.models.person import PersonModel
from vantrel.rows import DEFAULT_MIN_COUNT, RESERVED, Ways, learn_rows
from vantrel.sampling.places import places_of
from vantrel.tables import TableCounts, count_frame
from vantrel.util.locale.locale import refuse_unknown, told_before, warn_of_borrowed

__all__ = ["Countable", "FitKeywords", "WholeFrame", "fit"]

_log = logging.getLogger(__name__)


@runtime_checkable
class Countable(Protocol):
    """A table that tells what a model learns of it, and need not be in memory."""

    def excerpt(self, rows: int, /) -> pd.DataFrame:
        """Gives all columns, with at least so many of the first values of each, if it has them."""

    def count(self, columns: list[str], labelled: list[str], /) -> TableCounts:
        """Counts the combinations of the values of columns and the gaps of the labelled ones."""


@dataclass(frozen=True)
class WholeFrame:
    """A table that is in memory."""

    df: pd.DataFrame

    def excerpt(self, _rows: int) -> pd.DataFrame:
        """Gives the whole table."""
        return self.df

    def without(self, hidden: dict[str, set[str]]) -> pd.DataFrame:
        """Gives the table as if some values, by their texts, were missing from their columns."""
        left = {
            column: self.df[column].mask(self.df[column].astype(str).isin(values))
            for column, values in hidden.items()
            if values
        }
        return self.df.assign(**left) if left else self.df

    def count(self, columns: list[str], labelled: list[str]) -> TableCounts:
        """Counts all rows."""
        return count_frame(self.df, columns, labelled)


class FitKeywords(PersonColumns, total=False):
    """What :func:`fit` takes by name."""

    generate: Iterable[str]
    locales: Sequence[str] | Mapping[str, str] | None
    config: PersonModelConfig | None
    ignore: Collection[str]
    detect: bool
    show_values: bool
    min_count: int
    email_domain: str
    phone_numbers: str
    phone_formats: Mapping[str, Mapping[str, str]] | None
    latin: bool


def fit(
    df: Any,
    *,
    generate: Iterable[str] = (),
    locales: Sequence[str] | Mapping[str, str] | None = None,
    config: PersonModelConfig | None = None,
    ignore: Collection[str] = (),
    detect: bool = True,
    show_values: bool = False,
    min_count: int = DEFAULT_MIN_COUNT,
    email_domain: str = RESERVED,
    phone_numbers: str = "fiction",
    phone_formats: Mapping[str, Mapping[str, str]] | None = None,
    latin: bool = False,
    **columns: Unpack[PersonColumns],
) -> PersonModel:
    """Learns from a table of people.

    The columns of attributes that are not named are found by their names and values, as
    :func:`vantrel.detection.detect` tells.

    Args:
        df: A table with a row for each person: a frame of pandas, or of polars, DuckDB or pyarrow,
            whose values are taken as texts, or a table of :func:`vantrel.tables.open_table`, which
            is counted and not held. Columns of no attribute are left out of samples. Not changed.
        generate: Attributes that the table does not have but samples shall, in columns of the
            attributes' names.
        locales: Where the people are from if there is no column of countries, as locales of Faker
            or as countries; one is drawn for each person. British if None. Or, where there is such
            a column, the locales whose names people of some countries get: ``{"India": "en_IN"}``.
        config: Patterns of genders and titles, formats of phone numbers, lengths of passwords.
        ignore: Columns that are not to be found.
        detect: Whether columns are found beside those that are named.
        show_values: Whether notes and errors name values of the table, and do not only tell how
            many there are and in which rows: they may go to a log.
        min_count: The fewest rows that a value of gender, title or country must be in to be kept,
            and a combination of these with the gaps beside them to be kept as such. 1 keeps all
            but titles that tell no gender and are in fewer than five.
        email_domain: The domain of e-mail addresses. "reserved" is many, under a name that belongs
            to nobody; "as-made" are those that Faker makes, which may belong to somebody.
        phone_numbers: "fiction" are numbers that regulators keep for it, in countries that have
            such, and valid ones elsewhere; "valid" are valid ones everywhere. A format of
            ``config`` comes first.
        phone_formats: The formats of some countries, which come before all else: ``{"DE":
            {"mobile_number": "0151 xxxxxxx"}}``. Each "x" becomes a digit. "*" are all countries
            that are not there.
        latin: Whether names are written in Latin letters, also in countries that have others.
        columns: The column of each attribute, as in ``gender="sex"``. The attributes are gender,
            title, firstname, lastname, fullname, email, username, password, mobile_number,
            home_number, work_number and country.

    Returns:
        A fitted model: ``vantrel.sample(model, 1000)`` gives a frame of 1,000 made-up people.
        ``model.params`` has the column of each attribute, ``model.meta.told_by`` what told it,
        ``model.meta.learnt_from`` the number of rows, and ``model.meta.notes`` what samples will
        not have, and what was assumed; the notes are also logged.

    Raises:
        ArgumentTypeError: The table or the settings are none, or there is one text in the place of
            a list.
        ArgumentError: An attribute is not known, or what is named does not go together.
        FittingError: A column is not there, holds missing values only, unknown countries or nothing
            to learn from, or no column was found.
        UnknownPlaceError: A locale is not known.

    Warns:
        BorrowedNamesWarning: Faker has no names of some countries or locales.
    """
    named: dict[str, Any] = dict(columns)
    of_countries = locales if isinstance(locales, Mapping) else {}
    locales = None if isinstance(locales, Mapping) else locales
    generated = check_request(named, generate, ignore, locales, detect=detect)
    check_min_count(min_count)
    refuse_unknown([*of_countries, *of_countries.values()])
    ways = check_ways(
        email_domain=email_domain,
        phone_numbers=phone_numbers,
        locales=of_countries,
        latin=latin,
        phone_formats={} if phone_formats is None else phone_formats,
    )
    refuse_unknown(locales or ())
    config = PersonModelConfig() if config is None else config
    with showing_values(show_values):
        return _fitted(df, named, generated, locales, config, ways, ignore, detect, min_count)


def _fitted(
    df: Any,
    named: dict[str, Any],
    generated: list[str],
    locales: Sequence[str] | None,
    config: PersonModelConfig,
    ways: Ways,
    ignore: Collection[str],
    detect: bool,
    min_count: int,
) -> PersonModel:
    check_config(config)
    table = df if isinstance(df, Countable) else WholeFrame(as_frame(df))
    first = table.excerpt(SAMPLE_SIZE)
    check_columns(first, named, ignore)
    found = find(first, config, known=named, ignored=ignore) if detect else NOTHING
    labels = {**found.columns, **named}
    refuse_nothing(first, labels, found)
    meta = make_person(labels, generated, locales)
    refuse_countries_of_none(ways.locales, meta.labels.country)
    labelled = [column for column in first.columns if column in meta.params.values()]
    counts = table.count(learnt_columns(meta), labelled)
    learnt = learn_rows(counts, meta, config, min_count)
    hidden = hidden_values(learnt, counts, meta)
    check_kept(counts, hidden, min_count, meta.labels.country)
    with told_before(), raised_by_model(FittingError, "The model cannot be fitted"):
        model = _model(table, counts, hidden, list(first.columns), meta, config)
    meta.rows = learnt.rows
    meta.ways = msgspec.structs.replace(ways, full_names=_full_names(first, meta))
    warn_of_borrowed(places_of(model))
    meta.learnt_from = counts.rows
    meta.told_by = {choice.attribute: choice.reason for choice in found.choices}
    meta.notes = notes(
        model,
        first,
        counts,
        found,
        generated,
        located=bool(locales),
        has_too_many=learnt.has_too_many,
    )
    for note in meta.notes:
        _log.info(note)
    return model


def _model(
    table: Countable,
    counts: TableCounts,
    hidden: dict[str, set[str]],
    columns: list[str],
    meta: Person,
    config: PersonModelConfig,
) -> PersonModel:
    """Fits the bare model on what it may see."""
    country = meta.labels.country
    if country and hidden[country].issuperset(map(str, counts.values[country].keys() - {None})):
        counts = in_one_country(counts, country)
        hidden = hidden | {country: set()}
    elif isinstance(table, WholeFrame):
        return PersonModel(meta, config).fit(table.without(hidden))
    return fit_counts(counts.without(hidden), columns, meta, config)


def _full_names(first: pd.DataFrame, meta: Person) -> str | None:
    """How the table writes full names, if it has such in a way of its own."""
    column = meta.labels.fullname
    return full_names_of(first[column]) if column in first else None
