"""Which columns of a table name the person of a row, tell of the person, and are replaced."""

from __future__ import annotations

from collections import Counter
from collections.abc import Collection, Iterable, Mapping, Sequence
from dataclasses import dataclass, replace

import pandas as pd

from vantrel.arguments import refuse_text
from vantrel.attributes import ATTRIBUTES, LEARNT
from vantrel.detection import NOTHING, Choice, Detection, detect
from vantrel.detection.personal import Finding, find_personal
from vantrel.errors import ArgumentTypeError, NoPeopleError, ReplaceError
from vantrel.fitting.checks import refuse_unknown_attribute
from vantrel.hints import argument, did_you_mean, listed, named

type Columns = Mapping[str, str | Iterable[str]]
"""The column, or columns, of each attribute."""

REPLACED = tuple(name for name in ATTRIBUTES if name not in LEARNT)
"""The attributes that are replaced; the others are read and stay."""

_DEFAULT_KEYS = (("email",), ("fullname",), ("firstname", "lastname"))


@dataclass(frozen=True)
class Roles:
    """What the columns of one table are.

    Attributes:
        key: The columns whose values together name the person of a row. Where there are none, each
            row is a person.
        columns: The columns of each attribute, gender, title and country among them.
        kept: The attributes that are read and stay as they are, though they could be replaced.
        found: What told the columns that were not named.
        further: Columns that look like those of a person as well, and stay.
        personal: Columns of other kinds that look personal, and stay.
        is_key_named: Whether the key was named, or else chosen.
    """

    key: tuple[str, ...]
    columns: Mapping[str, tuple[str, ...]]
    kept: frozenset[str] = frozenset()
    found: Detection = NOTHING
    further: tuple[Choice, ...] = ()
    personal: tuple[Finding, ...] = ()
    is_key_named: bool = False

    @property
    def replaced(self) -> dict[str, str]:
        """The columns that get new values, each with its attribute."""
        return {
            column: attribute
            for attribute, columns in self.columns.items()
            if attribute in REPLACED and attribute not in self.kept
            for column in columns
        }

    @property
    def needed(self) -> tuple[str, ...]:
        """The columns to read, each once."""
        told = [column for columns in self.columns.values() for column in columns]
        return tuple(dict.fromkeys([*self.key, *told]))


def find_roles(
    table: pd.DataFrame,
    *,
    key: str | Iterable[str] | None = None,
    columns: Columns | None = None,
    keep: Iterable[str] = (),
    decided: Iterable[str] = (),
    name: str | None = None,
    is_only_read: bool = False,
    has_others: bool = False,
) -> Roles:
    """Finds what the columns of a table are, as a fit finds them, where they are not named.

    Args:
        table: The table, or as much of its beginning as tells what its columns hold.
        key: The column that names the person of each row, or several together. If None, the e-mail
            address is, or else the full name, or else each row is a person.
        columns: The columns of attributes that are not to be found.
        keep: Attributes that stay as they are.
        decided: Columns of other things of which it is known what becomes of them.
        name: What errors call the table, where there are several.
        is_only_read: Whether the table need have no column to replace, only one of a person.
        has_others: Whether other columns are changed, so that it need have none of a person.

    Raises:
        ArgumentTypeError: There is one text in the place of several.
        ArgumentError: An attribute is not known.
        ReplaceError: A column is not there or has two attributes, the key is wholly missing, or no
            column of a person was found.
    """
    refuse_text(keep, "keep", "attributes")
    given = {attribute: _as_several(those) for attribute, those in (columns or {}).items()}
    kept = frozenset(keep)
    for attribute in (*given, *sorted(kept)):
        refuse_unknown_attribute(attribute)
    keys = () if key is None else _as_several(key)
    the_table = "The table" if name is None else f"Table {named(name)}"
    _refuse_missing(table, keys, given, the_table)
    _refuse_shared(given, the_table)
    decided = set(decided)
    found = _found(table, given)
    doubts = [doubt for doubt in found.doubts if doubt.column not in decided]
    found = replace(found, doubts=doubts)
    told = given | {
        attribute: (*given.get(attribute, ()), column)
        for attribute, column in found.columns.items()
    }
    told = {attribute: told[attribute] for attribute in ATTRIBUTES if attribute in told}
    key_of_table = keys or _usual_key(told)
    taken = [*key_of_table, *(column for columns in told.values() for column in columns)]
    undecided = {each for each in REPLACED if each not in kept and given.get(each) != ()}
    learnt = {name: those[0] for name, those in told.items() if name in LEARNT and those}
    further = () if is_only_read else _further(table, learnt, [*taken, *decided], undecided)
    known = [*taken, *decided, *(choice.column for choice in further)]
    personal = () if is_only_read else find_personal(table, known)
    roles = Roles(key_of_table, told, kept, found, further, personal, bool(keys))
    if len(table) and not (has_others or (roles.columns if is_only_read else roles.replaced)):
        raise _nothing_found(table, roles, the_table)
    return roles


def refuse_scrub(names: Sequence[str], roles: Roles, scrub: Iterable[str]) -> None:
    """Refuses to scrub what is not there, or is replaced anyway."""
    for column in scrub:
        if column not in names:
            raise ReplaceError(
                f"The table has no column {column!r} to scrub.{did_you_mean(column, names)} Its"
                f" columns are: {listed(names)}."
            )
        if column in roles.replaced:
            raise ReplaceError(
                f"Column {column!r} is replaced whole, as {roles.replaced[column]}: it need not be"
                " scrubbed."
            )
        if column in roles.key:
            raise ReplaceError(
                f"Column {column!r} tells who is who: scrubbed, it would no longer do so."
            )


def _as_several(names: str | Iterable[str]) -> tuple[str, ...]:
    several = [names] if isinstance(names, str) or not isinstance(names, Iterable) else [*names]
    for name in several:
        if not isinstance(name, str):
            raise ArgumentTypeError(f"A column is named by a text, not by {name!r}.")
    return tuple(dict.fromkeys(several))


def _found(table: pd.DataFrame, given: Mapping[str, tuple[str, ...]]) -> Detection:
    """Finds the columns of what is not named, and those of what is replaced besides."""
    named = [column for columns in given.values() for column in columns]
    settled = {name: those for name, those in given.items() if name in LEARNT or not those}
    known = {name: those[0] for name, those in settled.items() if those}
    found = detect(table, known=known, ignored=named)
    choices = [choice for choice in found.choices if choice.attribute not in settled]
    return replace(found, choices=choices)


def _further(
    table: pd.DataFrame,
    learnt: Mapping[str, str],
    taken: Iterable[str],
    undecided: Collection[str],
) -> tuple[Choice, ...]:
    """Finds columns that look like those of some attributes, beside the ones that are taken."""
    choices: list[Choice] = []
    while True:
        ignored = [*taken, *(choice.column for choice in choices)]
        found = detect(table, known=learnt, ignored=ignored).choices
        more = [choice for choice in found if choice.attribute in undecided]
        if not more:
            return tuple(choices)
        choices += more


def _usual_key(told: Mapping[str, tuple[str, ...]]) -> tuple[str, ...]:
    """The columns that name a person where no key is given."""
    for attributes in _DEFAULT_KEYS:
        if all(attribute in told for attribute in attributes):
            return tuple(told[attribute][0] for attribute in attributes)
    return ()


def _refuse_missing(
    table: pd.DataFrame,
    key: tuple[str, ...],
    given: Mapping[str, tuple[str, ...]],
    the_table: str,
) -> None:
    """Refuses columns that the table has not."""
    wanted = [(column, "for the key") for column in key]
    wanted += [(each, f"for {name!r}") for name, columns in given.items() for each in columns]
    for column, why in wanted:
        if column not in table.columns:
            raise ReplaceError(
                f"{the_table} has no column {column!r} {why}."
                f"{did_you_mean(column, table.columns)}{_no_table(column)} Its columns are:"
                f" {listed(table.columns)}."
            )


def _no_table(column: str) -> str:
    """Tells that what stands before a colon is no table, in case it was meant for one."""
    prefix, colon, _ = column.partition(":")
    return f" No table is called {prefix!r}." if colon else ""


def _refuse_shared(given: Mapping[str, tuple[str, ...]], the_table: str) -> None:
    """Refuses a column that is given to two attributes."""
    counts = Counter(column for columns in given.values() for column in columns)
    for column, count in counts.items():
        if count > 1:
            sharers = [repr(name) for name, columns in given.items() if column in columns]
            raise ReplaceError(
                f"{the_table}: column {column!r} is given to {' and '.join(sharers)}: a column"
                " holds one attribute."
            )


def _nothing_found(table: pd.DataFrame, roles: Roles, the_table: str) -> NoPeopleError:
    doubts = "".join(
        f" Column {doubt.column!r} is not taken for {doubt.attribute}: its values do not look so."
        for doubt in roles.found.doubts
    )
    kept = f" Kept as they are: {', '.join(sorted(roles.kept))}." if roles.kept else ""
    return NoPeopleError(
        f"{the_table} has no column to replace that is found by its name and values: name one, as"
        f" in {argument('columns', {'lastname': 'COLUMN'})}.{doubts}{kept} Its columns are:"
        f" {listed(table.columns)}."
    )
