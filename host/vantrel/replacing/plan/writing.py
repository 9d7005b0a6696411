"""Writes plans, with a comment on each column that tells why."""

from __future__ import annotations

from collections.abc import Collection, Mapping, Sequence
from types import MappingProxyType
from typing import TYPE_CHECKING, NamedTuple

import tomlkit
from tomlkit.items import Array, Item, Table

from vantrel.replacing.columns.person import REPLACED, Person
from vantrel.replacing.columns.roles import Roles
from vantrel.replacing.fates import KEEP, UNDECIDED
from vantrel.replacing.plan.form import FORMAT, SCHEMA_VERSION

if TYPE_CHECKING:
    from vantrel.replacing.leaks import Leak

_HEAD = """\
What becomes of each column. Look at it, change it, and run

  vantrel replace TABLE... -o COPY --plan THIS_FILE     (files)
  vantrel replace ADDRESS --plan THIS_FILE              (a database)

A column of [tables.*.other] has "keep", "blank", "scrub" (what names the row's person is replaced),
"hash", "fake:PROVIDER", "shift:DAYS", or "undecided", which stays and is told.

A table has an entry [[tables.*.people]] for each person of a row. Equal keys are one person in all
tables; of = "customer" makes those of customers apart from all others. household = "COLUMN" gives
the people of a household who share a family name one that they share."""


class Decided(NamedTuple):
    """What a plan tells of a table.

    Attributes:
        roles: What its columns are.
        columns: All of them.
        fates: What becomes of those that are decided.
        empty: Those without a value, of which nothing but the name tells what they will hold.
        leaks: Who would still be named in which of them.
        ties: Why columns cannot be changed, where any are so.
    """

    roles: Roles
    columns: Sequence[str]
    fates: Mapping[str, str]
    empty: Collection[str]
    leaks: Sequence[Leak] = ()
    ties: Mapping[str, str] = MappingProxyType({})


def write_plan(tables: Mapping[str, Decided]) -> str:
    """Writes what was found in tables, by their names, as a plan."""
    document = tomlkit.document()
    for line in _HEAD.splitlines():
        document.add(tomlkit.comment(line) if line else tomlkit.comment(""))
    document.add(tomlkit.nl())
    document["format"] = FORMAT
    document["schema_version"] = SCHEMA_VERSION
    document["new_columns"] = _told("refuse", '"keep": columns that are not here stay')
    plans = tomlkit.table(is_super_table=True)
    for name, decided in tables.items():
        plans[name] = _table(decided)
    document["tables"] = plans
    return tomlkit.dumps(document)


def _table(decided: Decided) -> Table:
    table = tomlkit.table()
    people = tomlkit.aot()
    tied = decided.ties.keys() & decided.roles.replaced.keys()
    roles = decided.roles.without(tied)
    for person in roles.people:
        people.append(_person(person))
    table["people"] = people
    table["other"] = _others(decided, roles, tied)
    return table


def _person(found: Person) -> Table:
    person = tomlkit.table()
    if found.name:
        person["name"] = found.name
    if found.key:
        chosen = "named" if found.is_key_named else "chosen, as none was named"
        person["key"] = _told(_array(found.key), chosen)
    if found.of:
        person["of"] = found.of
    if found.household:
        person["household"] = _told(found.household, "people of one share family names")
    if found.kept:
        person["keep"] = _array(sorted(found.kept))
    of_attributes = tomlkit.table()
    reasons = {choice.attribute: choice.reason for choice in found.choices}
    for attribute, those in found.columns.items():
        fate = "replaced" if attribute in REPLACED and attribute not in found.kept else "stays"
        why = f"found by its {reasons[attribute]}" if attribute in reasons else "named"
        value = tomlkit.item(those[0]) if len(those) == 1 else _array(those)
        of_attributes[attribute] = _told(value, f"{fate}; {why}")
    person["columns"] = of_attributes
    return person


def _others(decided: Decided, roles: Roles, tied: Collection[str]) -> Table:
    """Tells what becomes of the columns that are not a person's, or are but cannot be changed."""
    table = tomlkit.table()
    why = dict.fromkeys(decided.empty, "empty: no value tells what it holds")
    why |= {each.column: f"{each.kind}: {each.why}" for each in roles.personal}
    why |= _looks_of_further(roles)
    why |= {
        doubt.column: f"named like {doubt.attribute}, but its values do not look so"
        for doubt in roles.doubts
    }
    why = {leak.column: leak.told for leak in decided.leaks if leak.kind == "person"} | why
    ties = {column: f"cannot be changed: {each}" for column, each in decided.ties.items()}
    why |= {column: each for column, each in ties.items() if column in why or column in tied}
    names_alone = {leak.column: leak.told for leak in decided.leaks if leak.kind == "name"}
    for column in decided.columns:
        if column in roles.told:
            continue
        is_open = column in why and column not in roles.keys and column not in ties
        fate = decided.fates.get(column, UNDECIDED if is_open else KEEP)
        reasons = [_whose_key(roles, column), why.get(column) or names_alone.get(column, "")]
        told = "; ".join(filter(None, reasons))
        table[column] = _told(fate, told) if told else fate
    return table


def _looks_of_further(roles: Roles) -> dict[str, str]:
    """Tells what columns look like beside those that are a person's."""
    another = {column for columns in roles.beside for column in columns}.union(roles.of_others)
    return {
        each.column: f"looks like {each.attribute}"
        + (" of another person" if each.column in another else ", too")
        for each in roles.further
    }


def _whose_key(roles: Roles, column: str) -> str:
    """Tells that a column is the key of somebody, or part of it; "" if it is not."""
    owners = [person.name for person in roles.people if column in person.key]
    names = " and ".join(filter(None, owners))
    return f"the key of {names}" if names else "the key" if owners else ""


def _array(values: object) -> Array:
    array = tomlkit.array()
    array.extend(values)  # type: ignore[arg-type]  # of texts
    return array


def _told(value: object, comment: str) -> Item:
    item = tomlkit.item(value)
    item.comment(comment)
    return item
