"""Tells what of a table a fitted model will not give back and what it assumes."""

from __future__ import annotations

from collections.abc import Collection, Iterator
from typing import TYPE_CHECKING

from vantrel.attributes import ATTRIBUTES
from vantrel.detection.values import Values
from vantrel.genders import learnt_by_gender, understood
from vantrel.hints import argument, listed
from vantrel.wording import percent

if TYPE_CHECKING:
    import pandas as pd

    from vantrel.detection import Detection, Doubt
    from vantrel.model.models.person import PersonModel

_MOST_SHOWN = 5


def notes(
    model: PersonModel,
    df: pd.DataFrame,
    found: Detection,
    generated: Collection[str],
    *,
    located: bool,
) -> list[str]:
    """Lists, in a sentence or two each, what is not understood, never sampled, assumed or left out.

    Args:
        model: The fitted model.
        df: The table that it was fitted on.
        found: The columns that were found.
        generated: The attributes that were to be generated.
        located: Whether the user told where the people are from.
    """
    return [
        *map(doubt_note, found.doubts),
        *_there_already(found, generated),
        *_of_genders(model, df),
        *_of_titles(model, df),
        *_of_equal_genders(model),
        *([] if located else _of_places(model)),
        *_of_the_rest(model, df),
    ]


def doubt_note(doubt: Doubt) -> str:
    """Tells of a column that was not taken, and how to take it."""
    value = "" if doubt.value is None else f", such as {doubt.value!r},"
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


def _of_genders(model: PersonModel, df: pd.DataFrame) -> Iterator[str]:
    column = model.labels.gender
    if not column:
        return
    by_gender = learnt_by_gender(model, "gender")
    genders = df[column].dropna()
    unclear = genders[~genders.astype(str).isin(understood(by_gender))]
    if len(unclear):
        yield f"{_not_understood(column, 'genders', unclear, df)}{_title_advice(model, df[column])}"

    several = [_some(list(map(repr, ways))) for ways in by_gender.values() if len(ways) > 1]
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


def _of_titles(model: PersonModel, df: pd.DataFrame) -> Iterator[str]:
    column = model.labels.title
    if not column:
        return
    titles = df[column].dropna()
    by_gender = learnt_by_gender(model, "title")
    if model.labels.gender:
        learnt = model.hidden_model_gender._probabilities or {}
        drawn = understood({key: values for key, values in by_gender.items() if key in learnt})
        if len(never := titles[~titles.astype(str).isin(drawn)]):
            yield (
                f"Column {column!r} has titles that will never be sampled, as they tell none of the"
                f" learnt genders: {_counted(never)}."
            )
    elif len(unclear := titles[~titles.astype(str).isin(understood(by_gender))]):
        yield _not_understood(column, "titles", unclear, df)


def _not_understood(column: str, what: str, unclear: pd.Series, df: pd.DataFrame) -> str:
    return (
        f"Column {column!r} has values that are not understood as {what} and count as missing:"
        f" {_counted(unclear)}. These are {percent(len(unclear) / len(df))} of the rows, which"
        f" samples leave blank; patterns in {argument('config', ...)} make them understood."
    )


def _of_equal_genders(model: PersonModel) -> Iterator[str]:
    labels = model.labels
    if not (labels.gender or labels.title) and _makes(model, "by_gender"):
        yield (
            "There is no column of genders or titles, so people get first names of each gender"
            f" equally often: {', '.join(model.config.genders)}."
        )


def _of_places(model: PersonModel) -> Iterator[str]:
    if not model.labels.country and _makes(model, "by_country"):
        (locale,) = model.locales
        yield (
            f"There is no column of countries, so all people get names of {locale}:"
            f" {argument('locales', ['DE'])}, say, changes that."
        )


def _makes(model: PersonModel, trait: str) -> bool:
    """Whether a sample has attributes of a trait, "by_gender" or "by_country"."""
    return any(getattr(ATTRIBUTES[attribute], trait) for attribute in model.params)


def _of_the_rest(model: PersonModel, df: pd.DataFrame) -> Iterator[str]:
    labelled = model.params.values()
    if left_out := [column for column in df.columns if column not in labelled]:
        yield (
            "These columns are not made by vantrel and are left out of samples:"
            f" {listed(left_out)}."
        )


def _counted(values: pd.Series) -> str:
    return _some([f"{value!r} ({n})" for value, n in values.value_counts().items()])


def _some(texts: list[str]) -> str:
    shown = ", ".join(texts[:_MOST_SHOWN])
    more = len(texts) - _MOST_SHOWN
    return f"{shown} and {more} more" if more > 0 else shown
