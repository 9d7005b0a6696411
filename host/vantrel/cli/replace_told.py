"""Prints what came of ``vantrel replace``."""

from __future__ import annotations

from collections.abc import Sequence
from typing import TYPE_CHECKING

import click

from vantrel.hints import listed, named
from vantrel.wording import counted

if TYPE_CHECKING:
    from vantrel.replacing.in_place import Excerpt
    from vantrel.replacing.outcome import Outcome, Replaced


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

    told_by = {choice.attribute: choice.reason for choice in table.roles.found.choices}
    otherwise = "plan" if table.asked.is_planned else "--column"
    rows = [
        (name, column, told_by.get(name, otherwise), _fate(table, column, name))
        for name, columns in table.roles.columns.items()
        for column in columns
    ]
    by_option = "plan" if table.asked.is_planned else "--other"
    rows += [("", column, by_option, str(action)) for column, action in table.others.items()]
    title = str(table.path)
    print_all([Section(title, ("Attribute", "Column", "Found by", ""), rows)])
    if table.staying:
        click.echo(f"Other columns stay: {listed(table.staying)}.")
    people = f"the people of {counted(table.rows, 'row')}"
    if is_rehearsal:
        click.echo(f"Would replace {people}; nothing was changed.")
    elif table.output is None:
        click.echo(f"Replaced {people} in place.")
    else:
        click.echo(f"Replaced {people}; wrote {named(table.output)}.")


def _fate(table: Replaced, column: str, attribute: str) -> str:
    if column in table.roles.replaced:
        return "replaced"
    return "kept" if attribute in table.roles.kept else "stays"
