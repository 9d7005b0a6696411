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
from vantrel.replacing.runs.opened import understood

_log = logging.getLogger(NOTES_LOGGER)


def chosen_tables(database: Database, named_tables: Sequence[str], asked: Asked) -> list[str]:
    """The tables that are named, or those of the plan, or those in which people are found."""
    if named_tables:
        return [*dict.fromkeys(named_tables)]
    if asked.plan:
        _refuse_missing_tables(database, asked.plan)
        _refuse_new_tables(database, asked.plan, asked)
        return [*asked.plan.tables]
    unasked = [name for name in database.tables if name not in asked.of_tables]
    with_people = _with_people(database, unasked, asked)
    found = [name for name in database.tables if name in (*asked.of_tables, *with_people)]
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
    """Refuses a plan that does not know tables in which people are found, unless they may stay."""
    if plan.new_columns == "keep":
        return
    new = [name for name in database.tables if name not in plan.tables]
    if found := _with_people(database, new, asked):
        raise PlanError(
            f"There are people in tables that are not in the plan: {listed(found)}. Write a plan of"
            f" all tables, with {argument('write_plan')}, name those to change, by"
            f' {argument("table", ...)}, or let new ones stay: new_columns = "keep".'
        )


def _with_people(database: Database, names: Iterable[str], asked: Asked) -> list[str]:
    """Those of some tables in which people are found; what cannot be read is told."""
    unreadable, found = [], []
    for name in names:
        table = opened_table(database, name)
        if database.engine.hindrance(table.sql, is_changing=False):
            unreadable.append(name)
        elif _has_people(table, asked):
            found.append(name)
    if unreadable:
        _log.info(
            "Nobody was looked for in these tables, as the user of the address cannot read all of"
            f" their rows: {listed(unreadable)}."
        )
    return found


def _has_people(table: DatabaseTable, asked: Asked) -> bool:
    """Tells whether people are found in a table, or columns of it are to be changed otherwise."""
    of_any = OfTable(
        columns=asked.of(table.path, table.columns).columns, others=asked.of_all.others
    )
    try:
        found = understood(table, replace(asked, of_all=of_any, plan=None))
    except NoPeopleError:
        return False
    return bool(found.changed)
