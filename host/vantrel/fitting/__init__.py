"""From a table to a fitted model."""

from __future__ import annotations

import logging
from collections.abc import Collection, Iterable, Sequence
from typing import TYPE_CHECKING, Any, Unpack

from vantrel.arguments import as_frame
from vantrel.attributes import PersonColumns
from vantrel.config import PersonModelConfig
from vantrel.errors import FittingError, raised_by_model
from vantrel.fitting.checks import (
    check_columns,
    check_countries,
    check_request,
    make_person,
    refuse_nothing,
    separator_hint,
)

if TYPE_CHECKING:
    from vantrel.model.models.person import PersonModel

__all__ = ["check_request", "fit"]

_log = logging.getLogger(__name__)


def fit(
    df: Any,
    *,
    generate: Iterable[str] = (),
    locales: Sequence[str] | None = None,
    config: PersonModelConfig | None = None,
    ignore: Collection[str] = (),
    detect: bool = True,
    **columns: Unpack[PersonColumns],
) -> PersonModel:
    """Learns from a table of people.

    The columns of attributes that are not named are found by their names and values, as
    :func:`vantrel.detection.detect` tells.

    Args:
        df: A table with a row for each person: a frame of pandas, or of polars, DuckDB or pyarrow,
            whose values are taken as texts. Columns of no attribute are left out of samples. Not
            changed.
        generate: Attributes that the table does not have but samples shall, in columns of the
            attributes' names.
        locales: Where the people are from if there is no column of countries, as locales of Faker
            or as countries; one is drawn for each person. British if None.
        config: Patterns of genders and titles, formats of phone numbers, lengths of passwords.
        ignore: Columns that are not to be found.
        detect: Whether columns are found beside those that are named.
        columns: The column of each attribute, as in ``gender="sex"``. The attributes are gender,
            title, firstname, lastname, fullname, email, username, password, mobile_number,
            home_number, work_number and country.

    Returns:
        A fitted model: ``vantrel.sample(model, 1000)`` gives a frame of 1,000 made-up people.
        ``model.params`` has the column of each attribute, ``model.meta.told_by`` what told it, and
        ``model.meta.notes`` what samples will not have, and what was assumed; the notes are also
        logged.

    Raises:
        ArgumentTypeError: The table is none, or there is one text in the place of a list.
        ArgumentError: An attribute is not known, or what is named does not go together.
        FittingError: A column is not there, holds missing values only, unknown countries or nothing
            to learn from, or no column was found.
        UnknownPlaceError: A locale is not known.

    Warns:
        BorrowedNamesWarning: Faker has no names of some countries or locales.
    """
    from vantrel.detection import NOTHING
    from vantrel.detection import detect as find
    from vantrel.fitting.notes import notes
    from vantrel.model.models.person import PersonModel
    from vantrel.sampling.places import places_of
    from vantrel.util.locale.locale import refuse_unknown, told_before, warn_of_borrowed

    table = as_frame(df)
    named: dict[str, Any] = dict(columns)
    generated = check_request(named, generate, ignore, locales, detect=detect)
    config = config or PersonModelConfig()
    refuse_unknown(locales or ())
    check_columns(table, named, ignore)
    looks = detect and not separator_hint(table)
    found = find(table, config, known=named, ignored=ignore) if looks else NOTHING
    labels = {**found.columns, **named}
    refuse_nothing(table, labels, found)
    check_countries(table, labels)
    meta = make_person(labels, generated, locales)
    with told_before(), raised_by_model(FittingError, "The model cannot be fitted"):
        model = PersonModel(meta, config).fit(table)
    warn_of_borrowed(places_of(model))
    meta.told_by = {choice.attribute: choice.reason for choice in found.choices}
    meta.notes = notes(model, table, found, generated, located=bool(locales))
    for note in meta.notes:
        _log.info(note)
    return model
