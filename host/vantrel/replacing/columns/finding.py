"""Finds the people of a table's rows, and the columns of each."""

from __future__ import annotations

from collections.abc import Collection, Iterable, Mapping, Sequence
from dataclasses import replace
from typing import NamedTuple

import pandas as pd

from vantrel.attributes import ATTRIBUTES, LEARNT
from vantrel.detection import NOTHING, Detection, detect
from vantrel.detection.groups import groups_of, is_of_somebody_else, owner_of
from vantrel.detection.names import joined
from vantrel.replacing.columns.of_person import OfPerson, with_columns
from vantrel.replacing.columns.person import REPLACED, Person

_DEFAULT_KEYS = (("email",), ("fullname",), ("firstname", "lastname"))


class Found(NamedTuple):
    """A person of each row.

    Attributes:
        asked: What is asked of her.
        detection: The columns that were found besides, and those that only look like hers.
    """

    asked: OfPerson
    detection: Detection

    @property
    def columns(self) -> dict[str, tuple[str, ...]]:
        """The columns of each attribute, in the order of the attributes."""
        told = dict(self.asked.columns)
        for attribute, column in self.detection.columns.items():
            told[attribute] = (*told.get(attribute, ()), column)
        return {attribute: told[attribute] for attribute in ATTRIBUTES if told.get(attribute)}

    @property
    def person(self) -> Person:
        """Gives what is known of her, with the usual key where none was named."""
        asked, columns = self.asked, self.columns
        return Person(
            asked.key or _usual_key(columns, asked.name),
            columns,
            asked.kept,
            tuple(self.detection.choices),
            bool(asked.key),
            asked.name,
            asked.of,
            asked.household,
        )


def find_people(
    table: pd.DataFrame,
    planned: Sequence[OfPerson],
    given: Mapping[str, Sequence[str]],
    kept: frozenset[str],
    keyed: Iterable[str] = (),
) -> list[Found]:
    """Finds the people of each row: those of a plan, or several that names tell apart, or one.

    Args:
        table: The table, or its beginning.
        planned: The people of a plan; none if they are to be found.
        given: The columns of attributes that are not to be found.
        kept: Attributes that stay as they are.
        keyed: The columns of keys that are named, and the names of people who have one.
    """
    if planned:
        return [Found(each, NOTHING) for each in with_columns(planned, given, kept)]
    several = _several(table, given, kept, keyed)
    if len(several) > 1:
        return several
    (one,) = with_columns([OfPerson()], given, kept)
    return [_found(table, one)]


def _several(
    table: pd.DataFrame,
    given: Mapping[str, Sequence[str]],
    kept: frozenset[str],
    keyed: Iterable[str],
) -> list[Found]:
    """Finds several people, each of whom has something to replace; what is nobody's is the first's.

    One whose columns are all empty is there if she has a key: other rows may have her.

    Returns:
        None or one where names do not tell several apart.
    """
    groups = groups_of(table.columns)
    if not groups:
        return []
    asked = with_columns([OfPerson(label) for label in groups], given, kept)
    told = [_found(table, each, groups[each.name]) for each in asked]
    with_key = {owner_of(each, groups) or each for each in keyed}
    told = [
        each
        for each in told
        if not each.columns.keys().isdisjoint(REPLACED)
        or (each.asked.name in with_key and _is_empty(table, groups[each.asked.name]))
    ]
    for first in told[:1]:
        own = groups[first.asked.name]
        of_nobody = _without_owner(table.columns, groups, own)
        told[0] = _found(table, first.asked, {**own, **of_nobody})
    return told


def _is_empty(table: pd.DataFrame, columns: Iterable[str]) -> bool:
    return bool(table[list(columns)].isna().all(axis=None))


def _without_owner(
    columns: Iterable[object], groups: Collection[str], own: Mapping[str, str]
) -> dict[str, str]:
    """The columns that bear no label, unless a labelled one of the first person is called so.

    Nor are those hers that name somebody else, whose address might become her key.
    """
    known = {joined(short) for short in own.values()}
    return {
        column: column
        for column in columns
        if isinstance(column, str)
        and not owner_of(column, groups)
        and not is_of_somebody_else(column, groups)
        and joined(column) not in known
    }


def _found(table: pd.DataFrame, asked: OfPerson, part: Mapping[str, str] | None = None) -> Found:
    """Finds the columns of what is not named, and those of what is replaced besides.

    Args:
        table: The table.
        asked: What is asked of the person.
        part: Her columns, each by what it would be called were she the only one; all if None.
    """
    named = {column for columns in asked.columns.values() for column in columns}
    settled = {name: those for name, those in asked.columns.items() if name in LEARNT or not those}
    known = {name: those[0] for name, those in settled.items() if those}
    if part is None:
        found = detect(table, known=known, ignored=named)
    else:
        own = {short: column for column, short in part.items() if column not in named}
        seen = table[list(own.values())].set_axis(list(own), axis="columns")
        found = _renamed(detect(seen, known=known), own)
    choices = [choice for choice in found.choices if choice.attribute not in settled]
    return Found(asked, replace(found, choices=choices))


def _renamed(found: Detection, names: Mapping[str, str]) -> Detection:
    return Detection(
        [replace(choice, column=names[choice.column]) for choice in found.choices],
        [replace(doubt, column=names[doubt.column]) for doubt in found.doubts],
    )


def _usual_key(told: Mapping[str, tuple[str, ...]], name: str) -> tuple[str, ...]:
    """The columns that name a person where no key is given; what is called after others comes last.

    One contact or manager may be that of many people.
    """
    keys = [
        tuple(told[attribute][0] for attribute in attributes)
        for attributes in _DEFAULT_KEYS
        if all(attribute in told for attribute in attributes)
    ]
    own = [key for key in keys if not any(is_of_somebody_else(each, [name]) for each in key)]
    return next(iter([*own, *keys]), ())
