"""Chooses the tables of a database of which a run is."""

from __future__ import annotations

import logging
from collections.abc import Collection, Iterable, Iterator, Sequence
from dataclasses import replace

from vantrel.databases.database import Database
from vantrel.databases.table import DatabaseTable, opened_table
from vantrel.errors import DatabaseError, NoPeopleError, PlanError
from vantrel.hints import NOTES_LOGGER, argument, listed, named
from vantrel.replacing.plan import Plan
from vantrel.replacing.runs.asked import Asked, OfTable
from vantrel.replacing.runs.opened import OpenedTable, understood

_log = logging.getLogger(NOTES_LOGGER)


def chosen_tables(database: Database, named_tables: Sequence[str], asked: Asked) -> list[str]:
    """The tables that are named, or those of the plan, or those in which people are found.

    Where all is to be decided, they are also those in which columns look personal. Else these are
    told.
    """
    if named_tables:
        return [*dict.fromkeys(named_tables)]
    if asked.plan:
        _refuse_missing_tables(database, asked.plan)
        _refuse_new_tables(database, asked.plan, asked)
        return [*asked.plan.tables]
    unasked = [name for name in database.tables if name not in asked.of_tables]
    with_people, personal = _found_in(database, unasked, asked)
    if personal and not asked.is_personal_enough:
        _log.info(
            "Nobody is named in these tables, but columns look personal, and stay:"
            f" {listed(personal)}. A plan, which {argument('write_plan')} writes, decides about"
            " them."
        )
        personal = []
    chosen = {*asked.of_tables, *with_people, *personal}
    found = [name for name in database.tables if name in chosen]
    if not found:
        there = (
            f"name tables, by {argument('table', ...)}. Its tables are: {listed(database.tables)}."
            if database.tables
            else "it has no tables."
        )
        raise DatabaseError(
            f"No people were found in schema {database.schema!r} of {database.address}: {there}"
        )
    return found


def notes_on_others(chosen: Collection[str], asked: Asked) -> Iterator[str]:
    """Tells of tables of which something is asked, and that were not chosen."""
    for name in asked.of_tables:
        if name not in chosen:
            yield (
                f"{named(name)} stays, whatever is asked of it: it is not among the tables of the"
                " run."
            )


def _refuse_missing_tables(database: Database, plan: Plan) -> None:
    """Refuses a plan with tables that are not there, which may be the new ones by other names."""
    for name in plan.tables:
        try:
            database.refuse_unknown(name)
        except DatabaseError as error:
            raise PlanError(f"Plan {named(plan.path)}: {error}") from None


def _refuse_new_tables(database: Database, plan: Plan, asked: Asked) -> None:
    """Refuses a plan that does not know tables in which it would matter, unless they may stay."""
    if plan.new_columns == "keep":
        return
    new = [name for name in database.tables if name not in plan.tables]
    with_people, personal = _found_in(database, new, asked)
    if with_people or personal:
        what = "people" if with_people else "columns that look personal"
        raise PlanError(
            f"There are {what} in tables that are not in the plan:"
            f" {listed([*with_people, *personal])}. Write a plan of"
            f" all tables, with {argument('write_plan')}, name those to change, by"
            f' {argument("table", ...)}, or let new ones stay: new_columns = "keep".'
        )


def _found_in(
    database: Database, names: Iterable[str], asked: Asked
) -> tuple[list[str], list[str]]:
    """Those of some tables in which people are found, and others in which columns look personal.

    What cannot be read is told.
    """
    unreadable: list[str] = []
    with_people: list[str] = []
    personal: list[str] = []
    for name in names:
        table = opened_table(database, name)
        if database.engine.hindrance(table.sql, is_changing=False):
            unreadable.append(name)
        elif found := _looked_at(table, asked):
            (with_people if found.changed else personal).append(name)
    if unreadable:
        _log.info(
            "Nobody was looked for in these tables, as the user of the address cannot read all of"
            f" their rows: {listed(unreadable)}."
        )
    return with_people, personal


def _looked_at(table: DatabaseTable, asked: Asked) -> OpenedTable[DatabaseTable] | None:
    """Finds what the columns of a table are; None if nobody is in it, and nothing is personal."""
    of_any = OfTable(
        columns=asked.of(table.path, table.columns).columns, others=asked.of_all.others
    )
    try:
        found = understood(table, replace(asked, of_all=of_any, plan=None, is_planned=True))
    except NoPeopleError:
        return None
    return found if found.changed or found.roles.personal else None
