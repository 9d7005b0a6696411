"""Finds the columns of a person in a table, by their names and by their values."""

from __future__ import annotations

from collections.abc import Collection, Iterator, Mapping
from dataclasses import dataclass
from typing import NamedTuple

import pandas as pd

from vantrel.attributes import ATTRIBUTES, LEARNT, PHONES
from vantrel.config import PersonModelConfig
from vantrel.detection.names import (
    NAME,
    PHONE,
    SOMEBODY,
    Match,
    is_of_others,
    kinds_of,
    whole_kind,
    words_of,
)
from vantrel.detection.values import Values
from vantrel.detection.whose import are_of_others

__all__ = ["NOTHING", "Choice", "Detection", "Doubt", "detect", "detect_columns"]

_OF_ANY_VALUE = ("firstname", "lastname", "fullname", "username", "password")


@dataclass(frozen=True)
class Choice:
    """A column that was found, and what told that it holds the attribute."""

    attribute: str
    column: str
    reason: str


@dataclass(frozen=True)
class Doubt:
    """A column that was not taken, as its values contradict its name.

    Attributes:
        attribute: What the name says.
        column: The column.
        value: The most frequent value that contradicts; ``None`` where values are private.
    """

    attribute: str
    column: str
    value: str | None


@dataclass(frozen=True)
class Detection:
    """What was found in a table.

    Attributes:
        choices: The columns, in the order of the attributes in ``PersonLabels``.
        doubts: Columns whose values contradict their names, of attributes that were not found.
    """

    choices: list[Choice]
    doubts: list[Doubt]

    @property
    def columns(self) -> dict[str, str]:
        """The column of each attribute that was found."""
        return {choice.attribute: choice.column for choice in self.choices}


NOTHING = Detection([], [])


class _Candidate(NamedTuple):
    """What a column may be. In their order, the better one comes first."""

    rank: int
    disagreement: float
    position: int
    kind: str
    column: str
    reason: str


# After the four ranks of names: whole or a part, of an attribute or of no single one.
_BY_VALUES = 4


def detect_columns(df: pd.DataFrame) -> dict[str, str]:
    """Finds the column of each attribute, in their order, as :func:`detect` does."""
    return detect(df).columns


def detect(
    df: pd.DataFrame,
    config: PersonModelConfig | None = None,
    *,
    known: Mapping[str, str] | None = None,
    ignored: Collection[str] = (),
) -> Detection:
    """Finds the columns of a person in a table and tells why it chose them.

    A column is taken for what its name says, in common spellings of European languages, if its
    values do not contradict; or for what its values alone tell: genders, titles, e-mail addresses,
    telephone numbers with a mark such as "+", names of countries and, where no column of names is
    found, full names most of which have a first name that Faker knows. Full names beside first and
    last names are taken if they agree with these, or the column is called a name. Where several are
    found for an attribute, a whole name is better than a part of one, and that better than values
    alone; then the one more of whose values agree is, then the first one. Each column is judged by
    its first 10,000 values that are not missing. Columns without any are not taken, nor are those
    whose names are no text or not unique.

    Args:
        df: The table, with values as text; others are judged by their text.
        config: The patterns of genders and titles.
        known: The columns of attributes that need not be found, by attribute.
        ignored: Columns that are not to be found.
    """
    known = known or {}
    candidates: list[_Candidate] = []
    doubts: list[Doubt] = []
    columns = [
        (position, column, Values(df.iloc[:, position], config or PersonModelConfig()))
        for position, column in usable_columns(df, {*known.values(), *ignored})
    ]
    columns = [each for each in columns if not each[-1].is_empty]
    for position, column, values in columns:
        candidates += _by_name(position, column, values)
        doubts += _doubts(column, values)
    # To know all names of countries takes long, and a column that is named so comes first anyway.
    has_country = "country" in {*known, *(candidate.kind for candidate in candidates)}
    for position, column, values in columns:
        candidates += _by_values(position, column, values, has_country=has_country)
    chosen = _assign(candidates, known)
    while somebody := _somebody_else(df, known, chosen):
        candidates = [each for each in candidates if (each.kind, each.column) != somebody]
        chosen = _assign(candidates, known)
    return Detection(
        choices=[chosen[attribute] for attribute in ATTRIBUTES if attribute in chosen],
        doubts=[doubt for doubt in doubts if doubt.attribute not in {*chosen, *known}],
    )


def usable_columns(df: pd.DataFrame, left_out: Collection[str]) -> Iterator[tuple[int, str]]:
    """The columns that a name tells apart, each with its position."""
    repeated = df.columns.duplicated(keep=False)
    for position, column in enumerate(df.columns):
        if isinstance(column, str) and column not in left_out and not repeated[position]:
            yield position, column


def _by_name(position: int, column: str, values: Values) -> Iterator[_Candidate]:
    for kind, match in kinds_of(column).items():
        told = "fullname" if kind in (NAME, SOMEBODY) and values.are_full_names else kind
        agreement = 0 if told == SOMEBODY else values.agreement(told)
        if agreement:
            rank = match + 2 * (kind in (PHONE, NAME, SOMEBODY))
            reason = "name" if kind in _OF_ANY_VALUE else "name and values"
            yield _Candidate(rank, 1 - agreement, position, told, column, reason)


def _by_values(
    position: int, column: str, values: Values, *, has_country: bool
) -> Iterator[_Candidate]:
    if not is_of_others(column):
        for kind, agreement in values.told(has_country=has_country).items():
            yield _Candidate(_BY_VALUES, 1 - agreement, position, kind, column, "values")


def _doubts(column: str, values: Values) -> Iterator[Doubt]:
    for kind, match in kinds_of(column).items():
        if match is Match.WHOLE and kind not in (NAME, SOMEBODY) and not values.agreement(kind):
            value = values.unlike(kind) if kind in LEARNT else None
            yield Doubt(PHONES[0] if kind == PHONE else kind, column, value)


def _assign(candidates: list[_Candidate], known: Mapping[str, str]) -> dict[str, Choice]:
    """Gives each attribute the best column that is left for it."""
    chosen: dict[str, Choice] = {}
    used: set[str] = set()
    for candidate in sorted(candidates):
        taken = {*known, *chosen}
        places = _places(candidate.kind, taken, is_told_by_values=candidate.rank == _BY_VALUES)
        free = [place for place in places if place not in taken]
        if free and candidate.column not in used:
            used.add(candidate.column)
            chosen[free[0]] = Choice(free[0], candidate.column, candidate.reason)
    return chosen


def _somebody_else(
    df: pd.DataFrame, known: Mapping[str, str], chosen: Mapping[str, Choice]
) -> tuple[str, str] | None:
    """The column, and its kind, of full names that others have than the people of the rows."""
    columns = {**known, **{attribute: choice.column for attribute, choice in chosen.items()}}
    halves = [columns[half] for half in ("firstname", "lastname") if half in columns]
    if "fullname" not in chosen or df.columns.isin(halves).sum() < 2:
        return None
    column = chosen["fullname"].column
    is_name = whole_kind(words_of(column)) in ("fullname", NAME)
    return None if is_name or not are_of_others(df, column, [halves]) else ("fullname", column)


def _places(
    kind: str, taken: Collection[str], *, is_told_by_values: bool = False
) -> tuple[str, ...]:
    """The attributes that a column of a kind may hold, the likeliest first."""
    if kind == PHONE:
        return PHONES
    if kind == "fullname":
        return () if is_told_by_values and {"firstname", "lastname"} & {*taken} else (kind,)
    if kind == NAME:  # single words: the half that is missing beside the other
        halves = {"firstname": "lastname", "lastname": "firstname"}
        return tuple(half for other, half in halves.items() if other in taken)
    return (kind,)
