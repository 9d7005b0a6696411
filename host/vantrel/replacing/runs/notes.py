"""Tells in words what came of a table whose people were replaced."""

from __future__ import annotations

from collections.abc import Iterable, Iterator, Mapping, Sequence
from typing import TYPE_CHECKING

import pandas as pd
from pandas.api.types import is_datetime64_any_dtype, is_numeric_dtype, is_timedelta64_dtype

from vantrel.hints import argument, listed
from vantrel.replacing.columns.person import Person
from vantrel.replacing.columns.roles import Roles
from vantrel.replacing.fates import KEEP, SCRUB
from vantrel.replacing.runs.remedies import Remedies
from vantrel.wording import counted, shown, some

_BLANK = "blank"

_MOST_NAMED = 20

if TYPE_CHECKING:
    from vantrel.replacing.leaks import Leak
    from vantrel.replacing.others.action import Action
    from vantrel.replacing.people.report import Report, Table


def note_on_columns(roles: Roles, others: Mapping[str, Action], scrub: Iterable[str]) -> str:
    """Tells which columns are replaced, and which are changed otherwise."""
    taken = roles.replaced | {column: str(action) for column, action in others.items()}
    taken |= dict.fromkeys(scrub, "scrubbed")
    return f"Replaced: {', '.join(f'{column!r} ({what})' for column, what in taken.items())}."


def notes_on_index(table: object) -> Iterator[str]:
    """Tells that the index of a frame stays, if that is not one of numbers or times."""
    if isinstance(table, pd.DataFrame):
        levels = [table.index.get_level_values(level) for level in range(table.index.nlevels)]
        if any(not _is_of_numbers(level) for level in levels):
            yield "The index stays as it is: reset_index() makes columns of it, which are replaced."


def _is_of_numbers(values: pd.Index) -> bool:
    kinds = (is_numeric_dtype, is_datetime64_any_dtype, is_timedelta64_dtype)
    return any(test(values.dtype) for test in kinds)


def further(roles: Roles, remedies: Remedies) -> Iterator[str]:
    """Tells of columns that look like those of a person, and stay."""
    attributes = {choice.column: choice.attribute for choice in roles.further}
    together = {column for columns in roles.beside for column in columns}
    for column in roles.of_others:
        if column not in together:
            yield (
                f"Column {shown(repr(column))} has names of other people than the row's, and these"
                f" stay: {remedies.telling_apart}; or {remedies.verb}"
                f" {remedies.deciding(column, _BLANK)} to leave it empty"
            )
    for column, attribute in attributes.items():
        if column not in together and column not in roles.of_others:
            remedy = f"{remedies.verb} {remedies.taking({attribute: column})}"
            yield (
                f"Column {shown(repr(column))} looks like {attribute}, too, and stays: {remedy} to"
                " replace it"
            )
    for columns in roles.beside:
        remedy = remedies.taking({attributes[column]: column for column in columns})
        yield (
            f"Columns {listed(columns)} look like those of another person of the row, and stay:"
            f" {remedies.telling_apart}; if they are the same person's, {remedies.verb} {remedy} to"
            " replace them"
        )


def notes_on_table(
    roles: Roles,
    others: Mapping[str, Action],
    table: Table,
    leaks: list[Leak],
    remedies: Remedies,
) -> Iterator[str]:
    """Tells who the rows were taken for, what was odd in them, and who is still named."""
    is_by_person = any(action.is_by_person for action in others.values())
    for person in roles.people:
        if person.needed or is_by_person:
            yield from _notes_on_key(person, table)
    for told, count in table.contradictions.items():
        if count:
            yield (
                f"The rows of {counted(count, 'person', 'people')} contradict each other in"
                f" {told}: what was told first holds."
            )
    for doubt in roles.doubts:
        remedy = remedies.taking({doubt.attribute: doubt.column})
        yield (
            f"Column {shown(repr(doubt.column))} is not taken for {doubt.attribute}, as its values"
            f" do not look so: it stays; {remedy} takes it."
        )
    for leak in leaks:
        yield f"{note_on_leak(leak, roles, remedies) if leak.kind == 'person' else leak}."


def note_on_leak(leak: Leak, roles: Roles, remedies: Remedies) -> str:
    """Tells where people are named, and how not to.

    What joins tables is not scrubbed, nor are names of others, whom that would leave.
    """
    fate = "hash" if leak.column in roles.keys else SCRUB
    if leak.column in roles.of_others:
        fate = _BLANK
    return f"{leak}: {remedies.verb} {remedies.deciding(leak.column, fate)}"


def _notes_on_key(person: Person, table: Table) -> Iterator[str]:
    whose = f" of {person.name!r}" if person.name else ""
    if not person.is_key_named:
        tell = "tells" if len(person.key) == 1 else "together tell"
        yield (
            f"No key{whose} was named: {listed(person.key)} {tell} who is who."
            if person.key
            else f"No key{whose} was named, and none was found: each row is a person of its own."
        )
    if person.key and (count := table.without_key.get(person.name)):
        yield f"{counted(count, 'row')} without a key{whose}: each is a person of its own."


def notes_on_undecided(
    roles: Roles, undecided: Iterable[str], advised: Mapping[str, str], remedies: Remedies
) -> Iterator[str]:
    """Tells which columns look personal and stay, as nobody has decided otherwise.

    Args:
        roles: What the columns of a table are.
        undecided: Those of which a plan says so.
        advised: What is likely to be wanted of those that look personal.
        remedies: How that is done.
    """
    yield from (f"{note}." for note in further(roles, remedies))
    told = {choice.column for choice in roles.further}.union(roles.of_others)
    why = {finding.column: finding for finding in roles.personal}
    for column in dict.fromkeys((*why, *undecided)):
        if column in told:
            continue
        finding = why.get(column)
        looks = f"looks personal ({finding.kind}): {finding.why}" if finding else "is undecided"
        decision = remedies.deciding(column, advised.get(column, KEEP))
        yield f"Column {shown(repr(column))} {looks}. It stays; {decision} decides."


def notes_on_people(
    report: Report, *, no_real: bool, tellers: Sequence[str] = ("place", "people")
) -> Iterator[str]:
    """Tells what was not known of people, and how many made-up ones bear what a real one bears.

    Args:
        report: What came of all people.
        no_real: Whether nobody was to bear what a real one bears.
        tellers: The options that can tell where people are from.
    """
    if report.met_before is not None and report.met_before < report.people:
        yield (
            f"The table that was only read tells of {_some_of(report.met_before, report)}: of the"
            " others their own rows alone tell."
        )
    if count := report.untold.get("country"):
        remedies = [argument(teller, ...) for teller in tellers]
        if count == report.people:  # else some column was taken for it
            remedies.append(argument("columns", {"country": "COLUMN"}))
        yield (
            f"The country of {_some_of(count, report)} is not known: their names and numbers are"
            f" those of {report.locale}, unless {' or '.join(remedies)} tells others."
        )
    if count := report.untold.get("gender"):
        yield f"The gender of {_some_of(count, report)} is not known: they have names of any."
    if report.scarce:
        yield (
            f"There are more people than numbers: {some(report.scarce, _MOST_NAMED)}."
            f" {argument('phone_numbers', 'valid')} has more, which may be somebody's."
        )
    for what, count in report.borne.items():
        if count:
            remedy = (
                "There are too few others."
                if no_real
                else f"{argument('no_real')} makes others, where there are enough."
            )
            yield (
                f"{count:,} of the made-up {what} are those of real people of the tables; chance"
                f" alone gives {report.by_chance.get(what, 0):,}. {remedy}"
            )


def _some_of(count: int, report: Report) -> str:
    """Tells how many of all people there are."""
    return f"{count:,} of {counted(report.people, 'person', 'people')}"
