"""The tables of a run, opened, and what is asked of them."""

from __future__ import annotations

import re
from collections.abc import Collection, Mapping, Sequence
from contextlib import ExitStack
from dataclasses import dataclass, field
from pathlib import Path

import pandas as pd
import pyarrow as pa

from vantrel.detection.values import SAMPLE_SIZE
from vantrel.errors import ArgumentError, ReplaceError
from vantrel.hints import did_you_mean, listed, named
from vantrel.replacing.frames import excerpt_of, without_gaps
from vantrel.replacing.others.action import Action
from vantrel.replacing.others.decided import decided, without_decided
from vantrel.replacing.roles import Roles, find_roles
from vantrel.rows import Ways
from vantrel.tables.copying import Copied, open_copied
from vantrel.util.locale.faker_locales import DEFAULT_LOCALE

# An e-mail address or a telephone number, which no column is called.
_VALUE = re.compile(r"[^@\s]+@[^@\s]+\.[^@\s.]+|\+?[\d\s()./-]{8,}")

# For each table, or for all of them under None: the columns of attributes, and those of the key.
type ColumnsOfTables = Mapping[str | None, Mapping[str, Sequence[str]]]
type KeysOfTables = Mapping[str | None, Sequence[str]]

# Likewise the actions of other columns.
type OthersOfTables = Mapping[str | None, Mapping[str, str]]


@dataclass(frozen=True)
class Asked:
    """What is asked of a run, besides its tables.

    Args:
        keys: The columns of the key, of each table by its name, or of all under None.
        columns: The columns of attributes that are not to be found, likewise.
        keep: Attributes that stay as they are.
        scrub: Columns of other things in which the names of the row's person are replaced, too.
        place: The country, or locale of Faker, of the people for whom no table tells one.
        no_real: Whether nobody gets the full name or the telephone number of a real person.
        ways: Which telephone numbers people have, and in what letters their names are.
        fail_on_leak: Whether nothing is written where somebody is still named.
        others: The actions of other columns, of each table by its name, or of all under None.
    """

    keys: KeysOfTables
    columns: ColumnsOfTables
    keep: Collection[str] = ()
    scrub: Sequence[str] = ()
    place: str = DEFAULT_LOCALE
    no_real: bool = False
    ways: Ways = field(default_factory=Ways)
    fail_on_leak: bool = False
    others: OthersOfTables = field(default_factory=dict)


@dataclass(frozen=True)
class OpenedTable:
    """A table of a run.

    Attributes:
        copied: The table.
        roles: What its columns are.
        others: The actions of other columns.
    """

    copied: Copied
    roles: Roles
    others: Mapping[str, Action]

    @property
    def name(self) -> str:
        """What a run calls it."""
        return str(self.copied.path)


def open_table(
    stack: ExitStack,
    path: Path,
    asked: Asked,
    separator: str | None,
    encoding: str | None,
    *,
    is_only_read: bool = False,
) -> OpenedTable:
    """Opens a table for as long as ``stack``, and finds what its columns are."""
    copied = stack.enter_context(open_copied(path, separator, encoding))
    _refuse_values_as_names(copied)
    excerpt = _excerpt(copied)
    others = {} if is_only_read else _others(asked.others, path, copied.columns)
    roles = find_roles(
        excerpt,
        key=_key(_of_table(asked.keys, path), copied.columns),
        columns=_columns(asked.columns, path, copied.columns),
        keep=asked.keep,
        name=str(path),
        is_only_read=is_only_read,
        has_others=bool(others),
    )
    actions = decided(excerpt, roles, others, asked.scrub)
    return OpenedTable(copied, without_decided(roles, actions), actions)


def _refuse_values_as_names(copied: Copied) -> None:
    """Refuses a table whose first line is a person's."""
    if any(_VALUE.fullmatch(name.strip()) for name in copied.columns):
        raise ReplaceError(
            f"Table {named(copied.path)} has no line of column names: its first line holds an"
            " e-mail address or a telephone number. Put the names of the columns above it."
        )


def _excerpt(copied: Copied) -> pd.DataFrame:
    """Gives as many values of each column as tell what it is, wherever in the table they begin."""
    values: dict[str, list[pa.Array]] = {name: [] for name in copied.columns}
    rows = 0
    for batch in copied.batches(copied.columns):
        rows += batch.num_rows
        for name, column in zip(batch.schema.names, batch.columns, strict=True):
            if (own := without_gaps(column)) and sum(map(len, values[name])) < SAMPLE_SIZE:
                values[name].append(own)
        if rows >= SAMPLE_SIZE and all(values.values()):
            break
    return excerpt_of({name: pa.chunked_array(own or [[]]) for name, own in values.items()})


def _key(given: Sequence[str] | None, columns: Sequence[str]) -> Sequence[str] | None:
    """Gives the columns of a key, of which one may have a comma in its name."""
    if given is None:
        return None
    whole = ",".join(given)
    stripped = [name if name in columns else name.strip() for name in given]
    return [whole] if whole in columns else stripped


def _columns(
    asked: ColumnsOfTables, path: Path, known: Sequence[str]
) -> Mapping[str, Sequence[str]]:
    """Gives the columns of attributes; of those that are asked of all tables, what this one has."""
    own = next((asked[name] for name in names_of(path) if name in asked), {})
    of_all = {
        attribute: [column for column in columns if column in known]
        for attribute, columns in asked.get(None, {}).items()
    }
    return {**{attribute: those for attribute, those in of_all.items() if those}, **own}


def _others(asked: OthersOfTables, path: Path, known: Sequence[str]) -> Mapping[str, str]:
    """Gives the actions of columns; of those that are asked of all tables, what this one has."""
    of_all = {column: each for column, each in asked.get(None, {}).items() if column in known}
    return of_all | next((dict(asked[name]) for name in names_of(path) if name in asked), {})


def _of_table[T](asked: Mapping[str | None, T], path: Path) -> T | None:
    """Gives what is asked of a table by its name, or else of all."""
    return next((asked[name] for name in (*names_of(path), None) if name in asked), None)


def names_of(path: Path) -> tuple[str, ...]:
    """What a table may be called: its file, with or without the ends of its name."""
    return path.name, path.name.split(".")[0]


def refuse_unknown_tables(paths: Sequence[Path], asked: Asked) -> None:
    """Refuses what is asked of a table that is not there."""
    known = dict.fromkeys(name for path in paths for name in names_of(path))
    for name in (*asked.keys, *asked.columns, *asked.others):
        if name is not None and name not in known:
            raise ArgumentError(
                f"There is no table {name!r}.{did_you_mean(name, known)} Tables are:"
                f" {listed([path.name for path in paths])}."
            )


def refuse_unknown_columns(tables: Sequence[OpenedTable], asked: Asked) -> None:
    """Refuses columns that are asked of all tables and are in none."""
    known = dict.fromkeys(column for table in tables for column in table.copied.columns)
    for attribute, columns in asked.columns.get(None, {}).items():
        for column in columns:
            if column not in known:
                raise ReplaceError(
                    f"No table has a column {column!r} for {attribute!r}."
                    f"{did_you_mean(column, known)} Columns are: {listed(known)}."
                )
    for column in asked.others.get(None, {}):
        if column not in known:
            raise ReplaceError(
                f"No table has a column {column!r} to change.{did_you_mean(column, known)} Columns"
                f" are: {listed(known)}."
            )
