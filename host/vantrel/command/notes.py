"""Tells what of a table a fitted model will not give back and what it assumes."""

from __future__ import annotations

import shlex
from collections.abc import Collection, Iterator, Mapping, Sequence
from typing import TYPE_CHECKING, Any

from vantrel.command.console import percent
from vantrel.command.learnt import genders_by_gender, titles_by_gender, values_of

if TYPE_CHECKING:
    import pandas as pd

    from vantrel.model.models.person import PersonModel
    from vantrel.tables import TableCounts

_MOST_SHOWN = 5
_BY_GENDER = frozenset({"firstname", "fullname", "email", "username"})
_BY_COUNTRY = _BY_GENDER | {"lastname"}


def notes(
    model: PersonModel, first: pd.DataFrame, counts: TableCounts, *, located: bool
) -> list[str]:
    """Lists, in a sentence each, what is not understood, never sampled, assumed or left out.

    Args:
        model: The fitted model.
        first: The first values of each column of the table that it was fitted on.
        counts: The counts of its values.
        located: Whether the user told where the people are from.
    """
    return [
        *_of_genders(model, first, counts),
        *_of_titles(model, counts),
        *_of_equal_genders(model),
        *([] if located else _of_places(model)),
        *_of_the_rest(model, first.columns.tolist()),
    ]


def _of_genders(model: PersonModel, first: pd.DataFrame, counts: TableCounts) -> Iterator[str]:
    column = model.labels.gender
    if not column:
        return
    by_gender = genders_by_gender(model)
    if unclear := _others(counts.values[column], values_of(by_gender)):
        told = _not_understood(column, "genders", unclear, counts.rows)
        yield f"{told}{_title_advice(model, first[column])}"

    several = [_some(list(map(repr, ways))) for ways in by_gender.values() if len(ways) > 1]
    if several:
        yield (
            f"Column {column!r} writes one gender in several ways, which samples have equally often"
            f" among that gender: {'; '.join(several)}. Write each gender in one way to have only"
            " that."
        )


def _title_advice(model: PersonModel, genders: pd.Series) -> str:
    from vantrel.detect.values import Values

    values = Values(genders, model.config)
    if values.agreement("title") <= values.agreement("gender"):
        return ""
    option = shlex.quote(f"title={model.labels.gender}")
    return f" They look like titles: add --column {option} in place of --column for gender."


def _of_titles(model: PersonModel, counts: TableCounts) -> Iterator[str]:
    column = model.labels.title
    if not column:
        return
    titles = counts.values[column]
    by_gender = titles_by_gender(model)
    if model.labels.gender:
        learnt = model.hidden_model_gender._probabilities or {}
        drawn = values_of({key: values for key, values in by_gender.items() if key in learnt})
        if never := _others(titles, drawn):
            yield (
                f"Column {column!r} has titles that will never be sampled, as they tell none of the"
                f" learnt genders: {_counted(never)}."
            )
    elif unclear := _others(titles, values_of(by_gender)):
        yield _not_understood(column, "titles", unclear, counts.rows)


def _others(counts: Mapping[Any, int], known: Collection[str]) -> dict[str, int]:
    """The counts of the values that are none of the known ones, nor missing."""
    return {
        value: count for value, count in counts.items() if value is not None and value not in known
    }


def _not_understood(column: str, what: str, unclear: Mapping[str, int], rows: int) -> str:
    share = percent(sum(unclear.values()) / rows)
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


def _of_the_rest(model: PersonModel, columns: Sequence[str]) -> Iterator[str]:
    labelled = model.params.values()
    if left_out := [column for column in columns if column not in labelled]:
        yield (
            "These columns are no attribute of a person and are left out of samples:"
            f" {', '.join(map(repr, left_out))}."
        )


def _counted(values: Mapping[str, int]) -> str:
    ranked = sorted(values.items(), key=lambda item: -item[1])
    return _some([f"{value!r} ({n})" for value, n in ranked])


def _some(texts: list[str]) -> str:
    shown = ", ".join(texts[:_MOST_SHOWN])
    more = len(texts) - _MOST_SHOWN
    return f"{shown} and {more} more" if more > 0 else shown
