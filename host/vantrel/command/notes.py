"""Tells what of a table a fitted model will not give back."""

from __future__ import annotations

from typing import TYPE_CHECKING

if TYPE_CHECKING:
    import pandas as pd

    from vantrel.model.models.person import PersonModel

_MOST_SHOWN = 5


def notes(model: PersonModel, df: pd.DataFrame) -> list[str]:
    """Lists, in a sentence each, what is not understood, never sampled or left out.

    Args:
        model: The fitted model.
        df: The table that it was fitted on.
    """
    columns = model.params
    found = []
    if unclear := "gender" in columns and _not_understood(model, df[columns["gender"]]):
        found.append(
            f"Column {columns['gender']!r} has values that are not understood as genders and count"
            f" as missing: {unclear}."
        )
    if {"gender", "title"} <= columns.keys() and (
        never := _never_sampled(model, df[columns["title"]])
    ):
        found.append(
            f"Column {columns['title']!r} has titles that will never be sampled, as they tell"
            f" none of the learnt genders: {never}."
        )
    if left_out := [column for column in df.columns if column not in columns.values()]:
        found.append(
            f"These columns are not labelled and are left out: {', '.join(map(repr, left_out))}."
        )
    return found


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
