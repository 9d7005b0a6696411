"""Prints what came of ``vantrel replace``."""

from __future__ import annotations

from collections.abc import Iterator, Sequence
from typing import TYPE_CHECKING

import click

from vantrel.hints import listed, named
from vantrel.wording import counted

if TYPE_CHECKING:
    from vantrel.replacing.columns.person import Person
    from vantrel.replacing.runs.in_place import Excerpt
    from vantrel.replacing.runs.outcome import Outcome, Replaced


def tell(outcome: Outcome, *, is_rehearsal: bool = False) -> None:
    """Prints what the columns of tables were taken for, and what is to be told of them."""
    from vantrel.cli.console import say

    for table in outcome.tables:
        _tell(table, is_rehearsal=is_rehearsal)
    for note in outcome.notes:
        say("note", note)


def show(excerpts: Sequence[Excerpt]) -> None:
    """Prints the first rows of tables as they are, each above what it would become."""
    from vantrel.cli.console import print_all
    from vantrel.reporting.sections import Section

    for excerpt in excerpts:
        rows = []
        triples = zip(excerpt.keys, excerpt.before, excerpt.after, strict=True)
        for key, before, after in triples:
            rows.append(("before", *map(_cell, [*key, *before])))
            rows.append(("after", *[""] * len(key), *map(_cell, after)))
        headings = ("", *excerpt.key, *excerpt.columns)
        print_all([Section(f"{excerpt.table}, the first rows", headings, rows)])


def _cell(value: object) -> str:
    return "" if value is None else str(value)


def _tell(table: Replaced, *, is_rehearsal: bool) -> None:
    from vantrel.cli.console import print_all
    from vantrel.reporting.sections import Section

    sections = []
    for person in table.roles.people:
        title = f"{table.path}: {person.name}" if person.name else str(table.path)
        rows = [*_rows(table, person), *_rows_of_others(table, person)]
        sections.append(Section(title, ("Attribute", "Column", "Found by", ""), rows))
    print_all(sections)
    if table.staying:
        click.echo(f"Other columns stay: {listed(table.staying)}.")
    whom = "the people of" if table.has_people or not table.rows else "nobody in"
    people = f"{whom} {counted(table.rows, 'row')}"
    if is_rehearsal:
        click.echo(f"Would replace {people}; nothing was changed.")
    elif table.output is None:
        click.echo(f"Replaced {people} in place.")
    else:
        click.echo(f"Replaced {people}; wrote {named(table.output)}.")


def _rows(table: Replaced, person: Person) -> Iterator[tuple[str, str, str, str]]:
    """What the columns of a person were taken for."""
    told_by = {choice.attribute: choice.reason for choice in person.choices}
    otherwise = "plan" if table.asked.plan else "--column"
    for attribute, columns in person.columns.items():
        for column in columns:
            told = told_by.get(attribute, otherwise)
            yield attribute, column, told, _fate(person, column, attribute)


def _rows_of_others(table: Replaced, person: Person) -> Iterator[tuple[str, str, str, str]]:
    """What becomes of the other columns that are a person's."""
    fates = [(column, "--other", str(action)) for column, action in table.others.items()]
    fates += [(column, "--scrub", "scrubbed") for column in table.asked.scrub]
    for column, option, fate in fates:
        if table.roles.owner(column) is person:
            yield "", column, "plan" if table.asked.plan else option, fate


def _fate(person: Person, column: str, attribute: str) -> str:
    if column in person.replaced:
        return "replaced"
    return "kept" if attribute in person.kept else "stays"
