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
from vantrel.tables import TableCounts
from vantrel.wording import percent, shown, some

_MOST_SHOWN = 5


def notes(
    model: PersonModel,
    first: pd.DataFrame,
    counts: TableCounts,
    found: Detection,
    generated: Collection[str],
    *,
    located: bool,
) -> list[str]:
    """Lists, in a sentence or two each, what is not understood, never sampled, assumed or left out.

    Args:
        model: The fitted model.
        first: The first values of each column of the table that it was fitted on.
        counts: The counts of its values.
        found: The columns that were found.
        generated: The attributes that were to be generated.
        located: Whether the user told where the people are from.
    """
    return [
        *map(doubt_note, found.doubts),
        *_there_already(found, generated),
        *_of_genders(model, first, counts),
        *_of_titles(model, counts),
        *_of_equal_genders(model),
        *([] if located else _of_places(model)),
        *_of_the_rest(model, first.columns.tolist()),
    ]


def doubt_note(doubt: Doubt) -> str:
    """Tells of a column that was not taken, and how to take it."""
    value = f", such as {shown(repr(doubt.value))}," if doubt.value and shows_values() else ""
    way_out = f"to take it, add {argument(doubt.attribute, doubt.column)}"
    if doubt.attribute == "gender":
        way_out += f", and patterns of its values with {argument('config', ...)}"
    if doubt.attribute == "country":
        way_out = (
            "to take it, write each as an ISO code, an English name or a name in the country's own"
            f" language; or add {argument('locales', ['DE'])}, say, in its place"
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
    by_gender = learnt_by_gender(model, "gender")
    if unclear := _others(counts.values[column], understood(by_gender)):
        told = _not_understood(column, "genders", unclear, counts)
        yield f"{told}{_title_advice(model, first[column])}"

    several = [
        some([shown(repr(way)) for way in ways], _MOST_SHOWN)
        if shows_values()
        else f"{key} in {len(ways)} ways"
        for key, ways in by_gender.items()
        if len(ways) > 1
    ]
    if several:
        yield (
            f"Column {column!r} writes one gender in several ways, which samples have equally often"
            f" among that gender: {'; '.join(several)}. Write each gender in one way to have only"
            " that."
        )


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
    titles = counts.values[column]
    by_gender = learnt_by_gender(model, "title")
    if model.labels.gender:
        learnt = model.hidden_model_gender._probabilities or {}
        drawn = understood({key: values for key, values in by_gender.items() if key in learnt})
        if never := _others(titles, drawn):
            yield (
                f"Column {column!r} has titles that will never be sampled, as they tell none of the"
                f" learnt genders: {_named(never, column, counts)}."
            )
    elif unclear := _others(titles, understood(by_gender)):
        yield _not_understood(column, "titles", unclear, counts)


def _others(counts: Mapping[Any, int], known: Collection[str]) -> dict[Any, int]:
    """The counts of the values that are none of the known ones, nor missing."""
    return {
        value: count
        for value, count in counts.items()
        if value is not None and str(value) not in known
    }


def _not_understood(column: str, what: str, unclear: Mapping[Any, int], counts: TableCounts) -> str:
    share = percent(sum(unclear.values()) / counts.rows)
    return (
        f"Column {column!r} has values that are not understood as {what} and count as missing:"
        f" {_named(unclear, column, counts)}. These are {share} of the rows, which"
        f" samples leave blank; patterns in {argument('config', ...)} make them understood."
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
