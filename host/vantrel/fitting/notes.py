"""Tells what of a table a fitted model will not give back and what it assumes."""

from __future__ import annotations

from collections.abc import Collection, Iterator, Mapping, Sequence
from typing import Any

import pandas as pd

from vantrel.attributes import ATTRIBUTES
from vantrel.detection import Detection, Doubt
from vantrel.detection.values import Values
from vantrel.genders import learnt_by_gender, understood
from vantrel.hints import argument, listed, shows_values, unnamed
from vantrel.model.models.person import PersonModel
from vantrel.rows.form import MOST_COMBINATIONS
from vantrel.sampling.names import has_gendered_first_names
from vantrel.sampling.places import places_of, with_names_of
from vantrel.tables import TableCounts
from vantrel.util.locale.faker_locales import DEFAULT_LOCALE
from vantrel.util.locale.locale import (
    Provider,
    get_country_to_provder_map,
    told_before,
    unknown_places,
)
from vantrel.wording import counted, percent, shown, some

_MOST_SHOWN = 5


def notes(
    model: PersonModel,
    first: pd.DataFrame,
    counts: TableCounts,
    found: Detection,
    generated: Collection[str],
    *,
    located: bool,
    has_too_many: bool,
) -> list[str]:
    """Lists, in a sentence or two each, what is not understood, never sampled, assumed or left out.

    Args:
        model: The fitted model.
        first: The first values of each column of the table that it was fitted on.
        counts: The counts of its values.
        found: The columns that were found.
        generated: The attributes that were to be generated.
        located: Whether the user told where the people are from.
        has_too_many: Whether there were more combinations than a model keeps.
    """
    return [
        *map(doubt_note, found.doubts),
        *_there_already(found, generated),
        *_of_genders(model, first, counts),
        *_of_titles(model, counts),
        *_of_countries(model, counts),
        *_of_the_rare(model),
        *_of_too_many(has_too_many),
        *_of_equal_genders(model),
        *([] if located else _of_places(model)),
        *_of_first_names(model),
        *_of_full_names(model),
        *_of_the_rest(model, first.columns.tolist()),
    ]


def doubt_note(doubt: Doubt) -> str:
    """Tells of a column that was not taken, and how to take it."""
    value = f", such as {shown(repr(doubt.value))}," if doubt.value and shows_values() else ""
    way_out = f"to take it, add {argument(doubt.attribute, doubt.column)}"
    if doubt.attribute == "gender":
        way_out += f", and patterns of its values with {argument('config', ...)}"
    if doubt.attribute == "country":
        way_out += (
            f", or {argument('locales', ['DE'])}, say, in its place. Where a value is no country,"
            " samples have it as it is, and a name from the other countries with it"
        )
    return (
        f"Column {doubt.column!r} is not taken for {doubt.attribute}, as its values{value} do not"
        f" look so: {way_out}."
    )


def _there_already(found: Detection, generated: Collection[str]) -> Iterator[str]:
    for attribute, column in found.columns.items():
        if attribute in generated:
            yield (
                f"{attribute!r} is there already, in column {column!r}, and need not be generated."
            )


def _of_genders(model: PersonModel, first: pd.DataFrame, counts: TableCounts) -> Iterator[str]:
    column = model.labels.gender
    if not column:
        return
    if unclear := _unclear(model, counts, "gender"):
        told = _not_understood(column, "genders", unclear, counts)
        yield f"{told}{_title_advice(model, first[column])}"


def _title_advice(model: PersonModel, genders: pd.Series) -> str:
    values = Values(genders, model.config)
    if values.agreement("title") <= values.agreement("gender"):
        return ""
    column = argument("title", model.labels.gender)
    return f" They look like titles: use {column} in place of the same for gender."


def _of_titles(model: PersonModel, counts: TableCounts) -> Iterator[str]:
    column = model.labels.title
    if not column:
        return
    if not model.labels.gender and (unclear := _unclear(model, counts, "title")):
        yield _not_understood(column, "titles", unclear, counts)


def _of_countries(model: PersonModel, counts: TableCounts) -> Iterator[str]:
    column = model.labels.country
    if not column:
        return
    kept = set(model.meta.rows.country)
    there = [value for value in counts.values[column] if value is not None and str(value) in kept]
    if unknown := unknown_places(there):
        values = {value: counts.values[column][value] for value in unknown}
        whose = "from the other countries" if len(unknown) < len(there) else f"of {DEFAULT_LOCALE}"
        yield (
            f"Column {column!r} has values that are no countries: {_named(values, column, counts)}."
            f" Samples have them as they are, and names {whose} with them."
        )


def _of_the_rare(model: PersonModel) -> Iterator[str]:
    rows = model.meta.rows
    for attribute, left_out in rows.left_out.items():
        way_out = f"{argument('min_count', 1)} keeps them"
        if attribute == "title":
            way_out += " if they tell a gender"
        if rows.min_count == 1:  # just titles are left out then
            way_out = (
                "titles that tell no gender may be anything; patterns in"
                f" {argument('config', ...)} make them understood"
            )
        yield (
            f"Column {model.params[attribute]!r} has {counted(left_out.values, 'value')} in too few"
            f" rows to be kept, {left_out.rows:,} in all: {way_out}."
        )


def _of_too_many(has_too_many: bool) -> Iterator[str]:
    if has_too_many:
        yield (
            f"There are more than {MOST_COMBINATIONS:,} combinations of genders, titles, countries"
            " and gaps. The rarest of them are drawn by coarser counts, with fewer columns at once."
        )


def _unclear(model: PersonModel, counts: TableCounts, attribute: str) -> dict[Any, int]:
    """The counts of the values that are kept and tell no gender."""
    known = understood(learnt_by_gender(model, attribute))
    kept = set(getattr(model.meta.rows, attribute)) - known
    values = counts.values[model.params[attribute]]
    return {
        value: rows for value, rows in values.items() if value is not None and str(value) in kept
    }


def _not_understood(column: str, what: str, unclear: Mapping[Any, int], counts: TableCounts) -> str:
    share = percent(sum(unclear.values()) / counts.rows)
    return (
        f"Column {column!r} has values that are not understood as {what}:"
        f" {_named(unclear, column, counts)}. These are {share} of the rows, which samples have as"
        f" often, with names of any gender; patterns in {argument('config', ...)} make them"
        " understood."
    )


def _of_equal_genders(model: PersonModel) -> Iterator[str]:
    labels = model.labels
    if not (labels.gender or labels.title) and _makes_by(model, "gender"):
        yield (
            "There is no column of genders or titles, so people get first names of each gender"
            f" equally often: {', '.join(model.config.genders)}."
        )


def _of_places(model: PersonModel) -> Iterator[str]:
    if not model.labels.country and _makes_by(model, "country"):
        (locale,) = model.locales
        yield (
            f"There is no column of countries, so all people get names of {locale}:"
            f" {argument('locales', ['DE'])}, say, changes that."
        )


def _of_first_names(model: PersonModel) -> Iterator[str]:
    if not _makes_by(model, "gender"):
        return
    places = with_names_of(places_of(model), model.meta.ways.locales)
    with told_before():
        fakers = get_country_to_provder_map(places, Provider.PERSON)
    if mixed := [place for place in fakers if not has_gendered_first_names(fakers[place])]:
        yield (
            "Faker does not tell first names of women and men apart in these countries and locales,"
            f" so there they do not follow the gender: {listed(mixed)}."
        )


def _of_full_names(model: PersonModel) -> Iterator[str]:
    if way := model.meta.ways.full_names:
        yield (
            f"Column {model.labels.fullname!r} has names that are written {way!r}, so samples have"
            " them written so, in all countries."
        )


def _makes_by(model: PersonModel, attribute: str) -> bool:
    """Whether a sample has something that follows the gender or the country."""
    return any(attribute in ATTRIBUTES[each].follows for each in model.params)


def _of_the_rest(model: PersonModel, columns: Sequence[str]) -> Iterator[str]:
    labelled = model.params.values()
    if left_out := [column for column in columns if column not in labelled]:
        yield (
            "These columns are not made by vantrel and are left out of samples:"
            f" {listed(left_out)}."
        )


def _named(values: Mapping[Any, int], column: str, counts: TableCounts) -> str:
    if not shows_values():
        return unnamed(len(values), counts.where(column, values))
    ranked = sorted(values.items(), key=lambda item: -item[1])
    return some([f"{shown(repr(value))} ({n})" for value, n in ranked], _MOST_SHOWN)
