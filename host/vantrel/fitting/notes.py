"""Tells what of a table a fitted model will not give back and what it assumes."""

from __future__ import annotations

import shlex
from collections.abc import Iterator
from typing import TYPE_CHECKING

from vantrel.cli.console import percent
from vantrel.fitting.learnt import genders_by_gender, titles_by_gender, values_of

if TYPE_CHECKING:
    import pandas as pd

    from vantrel.model.models.person import PersonModel

_MOST_SHOWN = 5
_BY_GENDER = frozenset({"firstname", "fullname", "email", "username"})
_BY_COUNTRY = _BY_GENDER | {"lastname"}


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
        *_of_equal_genders(model),
        *([] if located else _of_places(model)),
        *_of_the_rest(model, df),
    ]


def _of_genders(model: PersonModel, df: pd.DataFrame) -> Iterator[str]:
    column = model.labels.gender
    if not column:
        return
    by_gender = genders_by_gender(model)
    genders = df[column].dropna()
    unclear = genders[~genders.isin(values_of(by_gender))]
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
    from vantrel.detection.values import Values

    values = Values(genders, model.config)
    if values.agreement("title") <= values.agreement("gender"):
        return ""
    option = shlex.quote(f"title={model.labels.gender}")
    return f" They look like titles: add --column {option} in place of --column for gender."


def _of_titles(model: PersonModel, df: pd.DataFrame) -> Iterator[str]:
    column = model.labels.title
    if not column:
        return
    titles = df[column].dropna()
    by_gender = titles_by_gender(model)
    if model.labels.gender:
        learnt = model.hidden_model_gender._probabilities or {}
        drawn = values_of({key: values for key, values in by_gender.items() if key in learnt})
        if len(never := titles[~titles.isin(drawn)]):
            yield (
                f"Column {column!r} has titles that will never be sampled, as they tell none of the"
                f" learnt genders: {_counted(never)}."
            )
    elif len(unclear := titles[~titles.isin(values_of(by_gender))]):
        yield _not_understood(column, "titles", unclear, df)


def _not_understood(column: str, what: str, unclear: pd.Series, df: pd.DataFrame) -> str:
    share = percent(len(unclear) / len(df))
    return (
        f"Column {column!r} has values that are not understood as {what} and count as missing:"
        f" {_counted(unclear)}. These are {share} of the rows, which samples leave blank; patterns"
        " in --config make them understood."
    )


def _of_equal_genders(model: PersonModel) -> Iterator[str]:
    labels = model.labels
    if not (labels.gender or labels.title) and not _BY_GENDER.isdisjoint(model.params):
        yield (
            "There is no column of genders or titles, so people get first names of each gender"
            f" equally often: {', '.join(model.config.genders)}."
        )


def _of_places(model: PersonModel) -> Iterator[str]:
    if not model.labels.country and not _BY_COUNTRY.isdisjoint(model.params):
        (locale,) = model.locales
        yield (
            f"There is no column of countries, so all people get names of {locale}: --locale DE,"
            " say, changes that."
        )


def _of_the_rest(model: PersonModel, df: pd.DataFrame) -> Iterator[str]:
    labelled = model.params.values()
    if left_out := [column for column in df.columns if column not in labelled]:
        yield (
            "These columns are no attribute of a person and are left out of samples:"
            f" {', '.join(map(repr, left_out))}."
        )


def _counted(values: pd.Series) -> str:
    return _some([f"{value!r} ({n})" for value, n in values.value_counts().items()])


def _some(texts: list[str]) -> str:
    shown = ", ".join(texts[:_MOST_SHOWN])
    more = len(texts) - _MOST_SHOWN
    return f"{shown} and {more} more" if more > 0 else shown
