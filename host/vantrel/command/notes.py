"""Tells what of a table a fitted model will not give back and what it assumes."""

from __future__ import annotations

from collections.abc import Iterator
from typing import TYPE_CHECKING

if TYPE_CHECKING:
    import pandas as pd

    from vantrel.model.models.person import PersonModel

_MOST_SHOWN = 5
_FROM_NAMES = frozenset({"firstname", "lastname", "fullname", "email", "username"})


def notes(model: PersonModel, df: pd.DataFrame, *, located: bool) -> list[str]:
    """Lists, in a sentence each, what is not understood, never sampled, assumed or left out.

    Args:
        model: The fitted model.
        df: The table that it was fitted on.
        located: Whether the user told where the people are from.
    """
    return [
        *_of_genders(model, df),
        *_of_titles(model, df),
        *([] if located else _of_places(model)),
        *_of_the_rest(model, df),
    ]


def _of_genders(model: PersonModel, df: pd.DataFrame) -> Iterator[str]:
    column = model.labels.gender
    if column and (unclear := _not_understood(model, df[column])):
        yield (
            f"Column {column!r} has values that are not understood as genders and count as"
            f" missing: {unclear}."
        )


def _of_titles(model: PersonModel, df: pd.DataFrame) -> Iterator[str]:
    column = model.labels.title
    if column and model.labels.gender and (never := _never_sampled(model, df[column])):
        yield (
            f"Column {column!r} has titles that will never be sampled, as they tell none of the"
            f" learnt genders: {never}."
        )


def _of_places(model: PersonModel) -> Iterator[str]:
    if not model.labels.country and not _FROM_NAMES.isdisjoint(model.params):
        (locale,) = model.locales
        yield (
            f"There is no column of countries, so all people get names of {locale}: --locale DE,"
            " say, changes that."
        )


def _of_the_rest(model: PersonModel, df: pd.DataFrame) -> Iterator[str]:
    labelled = model.params.values()
    if left_out := [column for column in df.columns if column not in labelled]:
        yield f"These columns are not labelled and are left out: {', '.join(map(repr, left_out))}."


def _not_understood(model: PersonModel, genders: pd.Series) -> str:
    from vantrel.model.models.person import GenderModel

    assert isinstance(model.hidden_model_gender, GenderModel)
    known = {v for values in model.hidden_model_gender.collections.values() for v in values}
    return _counted(genders[~genders.isin(known)])


def _never_sampled(model: PersonModel, titles: pd.Series) -> str:
    from vantrel.command.titles import titles_by_gender

    learnt = model.hidden_model_gender._probabilities or {}
    drawn = {v for key, values in titles_by_gender(model).items() if key in learnt for v in values}
    return _counted(titles[~titles.isin(drawn)])


def _counted(values: pd.Series) -> str:
    counts = values.dropna().value_counts()
    shown = ", ".join(f"{value!r} ({n})" for value, n in counts.head(_MOST_SHOWN).items())
    more = len(counts) - _MOST_SHOWN
    return f"{shown} and {more} more" if more > 0 else shown
