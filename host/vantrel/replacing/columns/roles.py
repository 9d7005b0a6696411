"""Which columns of a table name the people of its rows, tell of them, and are replaced."""

from __future__ import annotations

from collections.abc import Collection, Iterable, Mapping, Sequence
from dataclasses import dataclass, replace

import pandas as pd

from vantrel.arguments import refuse_text
from vantrel.attributes import LEARNT
from vantrel.detection import Choice, Doubt, detect
from vantrel.detection.groups import people_beside
from vantrel.detection.personal import Finding, Kind, find_personal
from vantrel.detection.whose import are_of_others
from vantrel.errors import ArgumentTypeError, NoPeopleError, PlanError, ReplaceError
from vantrel.fitting.checks import refuse_unknown_attribute
from vantrel.hints import argument, did_you_mean, listed, named
from vantrel.replacing.columns.finding import Found, find_people
from vantrel.replacing.columns.of_person import (
    OfPerson,
    owner_among,
    shared_column,
    with_household,
    with_keys,
)
from vantrel.replacing.columns.person import REPLACED, Person

__all__ = [
    "REPLACED",
    "Columns",
    "Key",
    "Keys",
    "Roles",
    "find_roles",
    "key_columns",
    "refuse_scrub",
]

type Columns = Mapping[str, str | Iterable[str]]
"""The column, or columns, of each attribute."""

type Key = str | Iterable[str]
"""The column that names a person, or several together."""

type Keys = Key | Mapping[str, Key]
"""The key of the person of a row, or the keys of several by what they are called."""


@dataclass(frozen=True)
class Roles:
    """What the columns of one table are.

    Attributes:
        people: The people of each row, one or more.
        doubts: Columns that are not taken, as their values contradict their names.
        further: Columns that look like those of a person as well, and stay.
        personal: Columns of other kinds that look personal, and stay.
        of_others: Those of both kinds that hold whole names, mostly of others than the people of
            the rows; also where they are scrubbed, which leaves others as they are.
    """

    people: tuple[Person, ...]
    doubts: tuple[Doubt, ...] = ()
    further: tuple[Choice, ...] = ()
    personal: tuple[Finding, ...] = ()
    of_others: tuple[str, ...] = ()

    @property
    def replaced(self) -> dict[str, str]:
        """The columns that get new values, each with its attribute."""
        return {name: what for person in self.people for name, what in person.replaced.items()}

    @property
    def told(self) -> frozenset[str]:
        """The columns of all attributes of all people."""
        return frozenset(column for person in self.people for column in person.told)

    @property
    def keys(self) -> frozenset[str]:
        """The columns of all keys."""
        return frozenset(column for person in self.people for column in person.key)

    @property
    def needed(self) -> tuple[str, ...]:
        """The columns to read, each once."""
        return tuple(dict.fromkeys(each for person in self.people for each in person.needed))

    @property
    def beside(self) -> list[tuple[str, ...]]:
        """Those of the further columns that look like another person's, hers together."""
        return people_beside({choice.column: choice.attribute for choice in self.further})

    def without(self, columns: Collection[str]) -> Roles:
        """The same, but some columns are nobody's."""
        people = []
        for person in self.people:
            told = {
                attribute: own
                for attribute, those in person.columns.items()
                if (own := tuple(column for column in those if column not in columns))
            }
            people.append(replace(person, columns=told))
        return replace(self, people=tuple(people))

    def attribute_of(self, column: str) -> tuple[str, bool]:
        """The attribute that a column has, "" if none, and whether it is kept that could go."""
        for person in self.people:
            for attribute, columns in person.columns.items():
                if column in columns:
                    return attribute, attribute in person.kept
        return "", False

    def owner(self, column: str) -> Person:
        """Whose a column of another kind is: hers whose name it bears, or else the first one's."""
        name = owner_among(column, [person.name for person in self.people])
        return next(person for person in self.people if person.name == name)


def find_roles(
    table: pd.DataFrame,
    *,
    key: Keys | None = None,
    more_keys: Iterable[Key] = (),
    columns: Columns | None = None,
    keep: Iterable[str] = (),
    decided: Iterable[str] = (),
    scrub: Iterable[str] = (),
    name: str | None = None,
    is_only_read: bool = False,
    has_others: bool = False,
    is_personal_enough: bool = False,
    people: Sequence[OfPerson] = (),
    household: str = "",
) -> Roles:
    """Finds what the columns of a table are, as a fit finds them, where they are not named.

    Args:
        table: The table, or as much of its beginning as tells what its columns hold.
        key: The column that names the person of each row, or several together; where a row has
            several people, the key of the one whose name it bears, or the keys of some by their
            names. Where none is named, the e-mail address is the key, or else the full name, or
            else each row is a person.
        more_keys: Keys of more people.
        columns: The columns of attributes that are not to be found.
        keep: Attributes that stay as they are.
        decided: Columns of other things of which it is known what becomes of them.
        scrub: Those in which the people of the rows are replaced.
        name: What errors call the table, where there are several.
        is_only_read: Whether the table need have no column to replace, only one of a person.
        has_others: Whether other columns are changed, so that it need have none of a person.
        is_personal_enough: Whether it need have none of a person where others look personal.
        people: The people of each row, as a plan has them; found if there are none.
        household: The column in whose households people share family names.

    Raises:
        ArgumentTypeError: There is one text in the place of several.
        ArgumentError: An attribute is not known.
        PlanError: A column of the plan is not there.
        ReplaceError: A column is not there or has two attributes, there are two keys of a person or
            one of nobody, or no column of a person was found.
    """
    refuse_text(keep, "keep", "attributes")
    given = {attribute: _as_several(those) for attribute, those in (columns or {}).items()}
    kept = frozenset(keep)
    for attribute in (*given, *sorted(kept)):
        refuse_unknown_attribute(attribute)
    the_table = "The table" if name is None else f"Table {named(name)}"
    by_name, keys = _keys(key, more_keys)
    for those in (*by_name.values(), *keys):
        _refuse_missing(table, those, {}, the_table)
    _refuse_missing(table, [household] if household else [], {}, the_table, "for households")
    _refuse_missing(table, (), given, the_table)
    keyed = [*by_name, *(column for those in keys for column in those)]
    found = find_people(table, people, given, kept, keyed)
    asked = with_keys([each.asked for each in found], keys, by_name, the_table)
    asked = with_household(asked, household) if household else asked
    for each in asked:
        _refuse_missing_of_plan(table, each, the_table)
    if shared := shared_column((each.name, *pair) for each in asked for pair in each.given):
        raise ReplaceError(f"{the_table}: {shared}.")
    of_row = [Found(own, each.detection).person for each, own in zip(found, asked, strict=True)]
    roles = Roles(tuple(of_row))
    _refuse_replaced_households(asked, roles, the_table)
    decided, scrub = set(decided), set(scrub)
    doubts = [doubt for each in found for doubt in each.detection.doubts]
    settled = decided | scrub
    roles = replace(roles, doubts=tuple(each for each in doubts if each.column not in settled))
    if not is_only_read:
        taken = {*roles.needed, *decided}
        further = _further(table, of_row, taken, _undecided(asked))
        known = {*taken, *(choice.column for choice in further)}
        roles = replace(roles, further=further, personal=find_personal(table, known))
        roles = _with_others(table, roles, scrub)
    enough = has_others or (roles.told if is_only_read else roles.replaced)
    if len(table) and not (enough or (is_personal_enough and roles.personal)):
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
        if column in roles.keys:
            raise ReplaceError(
                f"Column {column!r} tells who is who: scrubbed, it would no longer do so."
            )


def key_columns(key: Keys | None) -> list[str]:
    """Gives all columns that a key, or the keys of several people, are of."""
    by_name, keys = _keys(key, ())
    return [column for those in (*by_name.values(), *keys) for column in those]


def _keys(
    key: Keys | None, more: Iterable[Key]
) -> tuple[dict[str, tuple[str, ...]], list[tuple[str, ...]]]:
    """Gives the keys that have people's names, and those that have not."""
    if isinstance(key, Mapping):
        return {whose: _as_several(each) for whose, each in key.items()}, [*map(_as_several, more)]
    return {}, [_as_several(each) for each in (key, *more) if each is not None]


def _as_several(names: str | Iterable[str]) -> tuple[str, ...]:
    several = [names] if isinstance(names, str) or not isinstance(names, Iterable) else [*names]
    for name in several:
        if not isinstance(name, str):
            raise ArgumentTypeError(f"A column is named by a text, not by {name!r}.")
    return tuple(dict.fromkeys(several))


def _further(
    table: pd.DataFrame,
    people: Iterable[Person],
    taken: Iterable[str],
    undecided: Collection[str],
) -> tuple[Choice, ...]:
    """Finds columns that look like those of some attributes, beside the ones that are taken."""
    columns = [pair for person in people for pair in person.columns.items()]
    learnt = {name: those[0] for name, those in columns if name in LEARNT and those}
    choices: list[Choice] = []
    while True:
        ignored = [*taken, *(choice.column for choice in choices)]
        found = detect(table, known=learnt, ignored=ignored).choices
        more = [choice for choice in found if choice.attribute in undecided]
        if not more:
            return tuple(choices)
        choices += more


def _with_others(table: pd.DataFrame, roles: Roles, scrub: Collection[str]) -> Roles:
    """Tells which columns are of others; only these are told of those that are scrubbed."""
    names = [each.column for each in roles.further if each.attribute == "fullname"]
    names += [each.column for each in roles.personal if each.kind == Kind.PEOPLE]
    own = [name for person in roles.people for name in _names_of(person)]
    of_others = tuple(each for each in names if not own or are_of_others(table, each, own))
    settled = {*scrub}.difference(of_others)
    return replace(
        roles,
        further=tuple(each for each in roles.further if each.column not in settled),
        personal=tuple(each for each in roles.personal if each.column not in settled),
        of_others=of_others,
    )


def _names_of(person: Person) -> list[tuple[str, ...]]:
    """The columns of each name of a person: of a first and a last one, and of whole ones."""
    halves = [person.columns.get(name, ())[:1] for name in ("firstname", "lastname")]
    names = [sum(halves, ()), *((each,) for each in person.columns.get("fullname", ()))]
    return [columns for columns in names if columns]


def _undecided(asked: Iterable[OfPerson]) -> set[str]:
    """The attributes of which it is not said for everybody that they stay or are not there."""
    return {
        attribute
        for person in asked
        for attribute in REPLACED
        if attribute not in person.kept and person.columns.get(attribute) != ()
    }


def _refuse_missing(
    table: pd.DataFrame,
    key: Iterable[str],
    given: Mapping[str, tuple[str, ...]],
    the_table: str,
    what_for: str = "for the key",
) -> None:
    """Refuses columns that the table has not."""
    wanted = [(column, what_for) for column in key]
    wanted += [(each, f"for {name!r}") for name, columns in given.items() for each in columns]
    for column, why in wanted:
        if column not in table.columns:
            raise ReplaceError(
                f"{the_table} has no column {column!r} {why}."
                f"{did_you_mean(column, table.columns)}{_no_table(column)} Its columns are:"
                f" {listed(table.columns)}."
            )


def _refuse_missing_of_plan(table: pd.DataFrame, person: OfPerson, the_table: str) -> None:
    """Refuses columns that a plan has of a person, and the table has not."""
    wanted = [*(("key", column) for column in person.key), *person.given]
    wanted += [("household", person.household)] if person.household else []
    for what, column in wanted:
        if column not in table.columns:
            raise PlanError(
                f"{person.place or the_table}, {what}: there is no column {column!r}."
                f"{did_you_mean(column, table.columns)} Columns are: {listed(table.columns)}."
            )


def _refuse_replaced_households(people: Iterable[OfPerson], roles: Roles, the_table: str) -> None:
    """Refuses to tell households by what is replaced."""
    for person in people:
        if attribute := roles.replaced.get(person.household):
            where = f"{person.place}, household" if person.place else the_table
            raise ReplaceError(
                f"{where}: column {person.household!r} is replaced, as {attribute}, and so cannot"
                " tell households: name one that stays."
            )


def _no_table(column: str) -> str:
    """Tells that what stands before a colon is no table, in case it was meant for one."""
    prefix, colon, _ = column.partition(":")
    return f" No table is called {prefix!r}." if colon else ""


def _nothing_found(table: pd.DataFrame, roles: Roles, the_table: str) -> NoPeopleError:
    doubts = "".join(
        f" Column {doubt.column!r} is not taken for {doubt.attribute}: its values do not look so."
        for doubt in roles.doubts
    )
    stay = sorted({attribute for person in roles.people for attribute in person.kept})
    kept = f" Kept as they are: {', '.join(stay)}." if stay else ""
    return NoPeopleError(
        f"{the_table} has no column to replace that is found by its name and values: name one, as"
        f" in {argument('columns', {'lastname': 'COLUMN'})}.{doubts}{kept} Its columns are:"
        f" {listed(table.columns)}."
    )
