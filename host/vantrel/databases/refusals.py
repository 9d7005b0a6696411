"""Refuses, before anything is changed, tables that cannot be changed in place."""

from __future__ import annotations

from collections.abc import Callable, Collection, Iterable, Mapping, Sequence

from sqlalchemy import Numeric, String, Uuid

from vantrel.attributes import ATTRIBUTES
from vantrel.databases.database import Database
from vantrel.databases.engine import Kind
from vantrel.databases.table import DatabaseTable
from vantrel.errors import DatabaseError
from vantrel.hints import argument
from vantrel.wording import shown

_OTHERS: dict[Kind, str] = {
    "view": "is a view: name the tables that it shows.",
    "foreign table": "is of another database: change it there.",
    "partition": "is a part of another table: name the whole table.",
    "virtual table": "is a virtual table, which has no rows of its own.",
}


def refuse_unchangeable(
    tables: Sequence[DatabaseTable],
    named: Collection[str],
    *,
    are_found: bool,
    is_changing: bool = True,
) -> None:
    """Refuses what is no table of its own, or may not be changed by the user.

    Tables without a key are refused here only if they are named: of others it is not known yet
    whether anything is to be changed in them.

    Args:
        tables: The tables.
        named: The names of those that somebody named.
        are_found: Whether nobody named any, so that others could be named in place of all.
        is_changing: Whether the user needs the right to change them, or only to read them.
    """

    def why_not(table: DatabaseTable) -> str:
        obstacle = _obstacle(table, is_changing=is_changing)
        return obstacle or (lacks_key(table) if table.name in named else "")

    _refuse(tables, why_not, are_found=are_found)


def refuse_without_key(
    tables: Sequence[DatabaseTable], changed: Collection[str], *, are_found: bool
) -> None:
    """Refuses to change tables whose rows could not be found again.

    Args:
        tables: The tables.
        changed: The names of those in which something is to be changed.
        are_found: Whether nobody named any.
    """
    lacking = {table.name: lacks_key(table) for table in tables if table.name in changed}
    _refuse(tables, lambda table: lacking.get(table.name, ""), are_found=are_found)


def lacks_key(table: DatabaseTable) -> str:
    """Tells why rows of a table could not be found again; "" if they can."""
    if table.database.kinds[table.name] == "parent":
        return "has tables that inherit from it, whose rows are no rows of its key."
    if not table.key:
        return "has no primary key, by which its rows would be found again: give it one."
    return ""


def _refuse(
    tables: Sequence[DatabaseTable], why_not: Callable[[DatabaseTable], str], *, are_found: bool
) -> None:
    """Refuses the first table that has an obstacle, and names those that have none."""
    obstacles = {table.name: why for table in tables if (why := why_not(table))}
    if obstacles:
        name, obstacle = next(iter(obstacles.items()))
        others = [table.name for table in tables if table.name not in obstacles]
        named = " ".join(argument("table", other) for other in others)
        hint = f" Or leave it as it is: {named} names the others." if are_found and others else ""
        raise DatabaseError(f"Table {name!r} {obstacle}{hint}")


def _obstacle(table: DatabaseTable, *, is_changing: bool) -> str:
    """Tells why a table cannot be changed; "" if it can."""
    kind = table.database.kinds[table.name]
    if kind in _OTHERS:
        return _OTHERS[kind]
    hindrance = table.database.engine.hindrance(table.sql, is_changing=is_changing)
    return f"cannot be changed: {hindrance}" if hindrance else ""


def ties_of(
    database: Database, tables: Mapping[DatabaseTable, Mapping[str, str]]
) -> dict[str, dict[str, str]]:
    """Tells which columns of tables, by their names, cannot be changed, and why.

    Args:
        database: The database.
        tables: The columns of each table that would be changed, and what each would be made as.
    """
    foreign = list(_foreign_keys(database))
    ties = {}
    for table, changed in tables.items():
        own = {
            column: "it holds bytes"
            for column, what in changed.items()
            if what != "blank" and table.holds_bytes(column)
        }
        own |= {
            name: "the database makes its values"
            for name, column in table.told.items()
            if column.is_generated
        }
        own |= {column: why for (name, column), why in foreign if name == table.name}
        own |= dict.fromkeys(table.key, "rows are found by it, as a part of the primary key")
        if lacking := lacks_key(table).partition(",")[0]:
            own |= dict.fromkeys(table.columns, f"its table {lacking}")
        ties[table.name] = own
    return ties


def refuse_tied(
    ties: Mapping[str, Mapping[str, str]], changes: Mapping[str, Mapping[str, str]]
) -> None:
    """Refuses to change columns that cannot be changed.

    Args:
        ties: Why not, by the names of tables and columns.
        changes: The columns of each table that are to be changed, and what each is made as.
    """
    for table, changed in changes.items():
        for column, what in changed.items():
            if column in ties[table]:
                raise DatabaseError(
                    f"Column {shown(repr(column))} of table {table!r} cannot be changed:"
                    f" {ties[table][column]}. {keeping(column, what)} keeps it."
                )


def keeping(column: str, what: str) -> str:
    """Writes the option that keeps a column as it is.

    Args:
        column: The column.
        what: The attribute that it holds, or else what is done with it, as plans have it.
    """
    is_of_person = what in ATTRIBUTES
    return argument("keep", [what]) if is_of_person else argument("others", {column: "keep"})


def refuse_unhashable(table: DatabaseTable, columns: Iterable[str]) -> None:
    """Refuses to hash columns that hold other than texts, though they are read as such.

    UUIDs and whole numbers become others.
    """
    for column in columns:
        declared = table.told[column].declared
        is_whole = table.told[column].is_whole or (
            isinstance(declared, Numeric) and declared.scale == 0
        )
        if not (is_whole or isinstance(declared, String | Uuid)):
            raise DatabaseError(
                f"Column {shown(repr(column))} of table {table.name!r} is of type {declared}: only"
                " texts and whole numbers can be hashed."
            )


def _foreign_keys(database: Database) -> Iterable[tuple[tuple[str, str], str]]:
    """Tells of the columns of the schema that refer to others, or are referred to."""
    for each in database.engine.references(database.schema):
        if each.schema == database.schema:
            other = ".".join(filter(None, (each.to_table, each.to_column)))
            yield (each.table, each.column), f"it refers to {shown(other)}"
        if each.to_schema == database.schema and each.to_column:
            own = f"{each.table}.{each.column}"
            yield (each.to_table, each.to_column), f"{shown(own)} refers to it"
