"""Reads plans."""

from __future__ import annotations

from collections.abc import Iterator, Mapping, Sequence
from pathlib import Path
from typing import Any

import msgspec

from vantrel.attributes import ATTRIBUTES
from vantrel.detection.names import joined
from vantrel.errors import PlanError, ReplaceError
from vantrel.hints import did_you_mean
from vantrel.replacing.columns.of_person import shared_column
from vantrel.replacing.fates import KEEP, SCRUB, UNDECIDED
from vantrel.replacing.others.action import read_action
from vantrel.replacing.plan.form import (
    FORMAT,
    SCHEMA_VERSION,
    Content,
    Person,
    Plan,
    TablePlan,
)
from vantrel.storage.head import later_form
from vantrel.storage.toml import read_toml
from vantrel.wording import shown

_MOST_BYTES = 2**24


def read_plan(path: Path) -> Plan:
    """Reads a plan from a file of TOML.

    Raises:
        PlanError: It cannot be read, is no plan, or contradicts itself.
    """
    content = read_toml(path, "Plan", _content, PlanError, _MOST_BYTES)
    return Plan(path, content.tables, content.new_columns)


def _content(content: dict[str, Any]) -> Content:
    if content.get("format") != FORMAT:
        raise ValueError(f'It has no line format = "{FORMAT}", so it is no plan')
    if later := later_form(content.get("schema_version"), SCHEMA_VERSION):
        raise ValueError(f"It cannot be used: {later}")
    new = content.get("new_columns", "refuse")
    if new not in ("refuse", "keep"):
        raise ValueError(f'new_columns is "refuse" or "keep", not {shown(repr(new))}')
    plan = _converted(content)
    for name, table in plan.tables.items():
        where = f"Table {shown(repr(name))}"
        _refuse_unusable_names(table.people, where)
        _check_actions(table.other, where)
        for person in table.people:
            _check_person(person, table.other, where)
        if shared := shared_column(_given(table.people)):
            raise ValueError(f"{where}: {shared}")
    return plan


def _converted(content: dict[str, Any]) -> Content:
    """Gives the plan; an error tells in which table it is, for the library leaves that out."""
    try:
        return msgspec.convert(content, Content)
    except msgspec.ValidationError:
        tables = content.get("tables")
        for name, table in tables.items() if isinstance(tables, dict) else ():
            try:
                msgspec.convert(table, TablePlan)
            except msgspec.ValidationError as error:
                raise ValueError(f"Table {shown(repr(name))}: {error}") from None
        raise


def _refuse_unusable_names(people: Sequence[Person], where: str) -> None:
    """Refuses people whom no name tells apart; one of them may be without."""
    if not people:
        raise ValueError(f"{where} has 0 people: each row has one")
    met: dict[str, str] = {}
    for name in (person.name for person in people):
        words = joined(name) or name  # columns bear a name in any spelling of Latin letters
        if words in met:
            both = " and ".join(shown(repr(each)) for each in dict.fromkeys((met[words], name)))
            called = f"called {both}" if name else "without a name"
            raise ValueError(
                f"{where} has several people in a row who are {called}: tell them apart, as in"
                ' name = "buyer"'
            )
        met[words] = name


def _check_actions(other: Mapping[str, str], where: str) -> None:
    for column, fate in other.items():
        if fate not in (KEEP, SCRUB, UNDECIDED):
            try:
                read_action(fate, column, (SCRUB, UNDECIDED))
            except ReplaceError as error:
                raise ValueError(f"{where}: {error}") from None


def _check_person(person: Person, other: Mapping[str, str], where: str) -> None:
    for attribute in (*person.columns, *person.keep):
        if attribute not in ATTRIBUTES:
            hint = did_you_mean(attribute, ATTRIBUTES)
            raise ValueError(f"{where}: {shown(repr(attribute))} is no attribute.{hint}")
    if person.of and not person.of.strip():
        who = f", person {shown(repr(person.name))}" if person.name else ""
        raise ValueError(
            f"{where}{who}: of = {shown(repr(person.of))} names no kind of person: write one, such"
            ' as of = "customer", or leave it out'
        )
    for column in person.named:
        if other.get(column, "keep") != "keep" and column not in person.key:
            raise ValueError(
                f"{where}: column {shown(repr(column))} is the person's and in other, too"
            )


def _given(people: Sequence[Person]) -> Iterator[tuple[str, str, str]]:
    """The person, attribute and column of each column that is an attribute of somebody."""
    for person in people:
        for attribute in person.columns:
            for column in person.columns_of(attribute):
                yield person.name, attribute, column
