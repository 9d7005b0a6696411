"""The tables of a run, opened, and what is asked of them."""

from __future__ import annotations

import re
from collections.abc import Iterable, Mapping, Sequence
from contextlib import ExitStack
from dataclasses import dataclass
from pathlib import Path
from typing import Any

import pandas as pd
import pyarrow as pa

from vantrel.detection.values import SAMPLE_SIZE
from vantrel.errors import PlanError, ReplaceError
from vantrel.hints import did_you_mean, listed, named
from vantrel.replacing.columns.roles import Roles, find_roles, refuse_scrub
from vantrel.replacing.others.action import Action
from vantrel.replacing.others.decided import decided
from vantrel.replacing.runs.advised import advised
from vantrel.replacing.runs.asked import Asked, OfTable
from vantrel.replacing.runs.frames import beginning, count_of, excerpt_of
from vantrel.tables.copying import Batched, Copied, open_copied

# An e-mail address or a telephone number, which no column is called.
_VALUE = re.compile(r"[^@\s]+@[^@\s]+\.[^@\s.]+|\+?[\d\s()./-]{8,}")


@dataclass(frozen=True)
class OpenedTable[TableT: Batched]:
    """A table of a run.

    Attributes:
        copied: The table.
        roles: What its columns are.
        asked: What is asked of it.
        others: The actions of other columns.
        empty: The columns without a value in any row.
        advised: What is likely to be wanted of columns that look personal.
    """

    copied: TableT
    roles: Roles
    asked: OfTable
    others: Mapping[str, Action]
    empty: tuple[str, ...]
    advised: Mapping[str, str]

    @property
    def changed(self) -> dict[str, str]:
        """The columns that get new values, and what these are made as."""
        others = {
            column: str(action) for column, action in self.others.items() if action.kind != "keep"
        }
        return {**self.roles.replaced, **others, **dict.fromkeys(self.asked.scrub, "scrub")}

    @property
    def staying(self) -> tuple[str, ...]:
        """The other columns, of which nothing else is asked."""
        decided = {*self.roles.told, *self.others, *self.asked.scrub}
        return tuple(column for column in self.copied.columns if column not in decided)

    @property
    def path(self) -> Path:
        """What the user calls it."""
        return self.copied.path

    @property
    def name(self) -> str:
        """What a run calls it."""
        return str(self.path)


def open_tables(
    stack: ExitStack,
    paths: Iterable[Path],
    asked: Asked,
    separator: str | None,
    encoding: str | None,
) -> list[OpenedTable[Copied]]:
    """Opens files for as long as ``stack``, and finds what their columns are."""
    return all_understood([_open(stack, path, separator, encoding) for path in paths], asked)


def open_people(
    stack: ExitStack, people: Path | None, asked: Asked, separator: str | None, encoding: str | None
) -> list[OpenedTable[Copied]]:
    """Opens the file that only tells of people, where there is one."""
    if people is None:
        return []
    copied = _open(stack, people, separator, encoding)
    return [understood(copied, asked, is_only_read=True)]


def _open(stack: ExitStack, path: Path, separator: str | None, encoding: str | None) -> Copied:
    copied = stack.enter_context(open_copied(path, separator, encoding))
    _refuse_values_as_names(copied)
    return copied


def all_understood[TableT: Batched](
    tables: Sequence[TableT], asked: Asked
) -> list[OpenedTable[TableT]]:
    """Finds what the columns of the tables of a run are: others need have none where one has some.

    Raises:
        NoPeopleError: There is nothing to change in any.
    """
    opened = [understood(table, asked, is_one_of_several=True) for table in tables]
    if any(table.changed for table in opened):
        return opened
    return [understood(table, asked) for table in tables]


def understood[TableT: Batched](
    copied: TableT, asked: Asked, *, is_only_read: bool = False, is_one_of_several: bool = False
) -> OpenedTable[TableT]:
    """Finds what the columns of an open table are."""
    path = copied.path
    excerpt, types = _excerpt(copied)
    own = asked.of(path, copied.columns)
    others = {} if is_only_read else own.others
    roles = find_roles(
        excerpt,
        key=own.keys_by_name or None,
        more_keys=[_key(key, copied.columns) for key in own.keys],
        columns=own.columns,
        keep=own.keep,
        decided=[*own.decided, *others],
        scrub=own.scrub,
        name=str(path),
        is_only_read=is_only_read,
        # A plan may have all of a table stay.
        has_others=not is_only_read
        and bool(others or own.scrub or own.people or is_one_of_several),
        is_personal_enough=asked.is_personal_enough,
        people=own.people,
        household=own.household,
    )
    if own.plan and asked.plan and asked.plan.new_columns == "refuse":
        _refuse_unplanned(copied, roles, own)
    if not is_only_read:
        refuse_scrub(copied.columns, roles, own.scrub)
    actions = decided(excerpt, roles, others, own.scrub)
    empty = tuple(name for name in copied.columns if excerpt[name].isna().all())
    likely = advised(excerpt, types, roles.personal)
    return OpenedTable(copied, roles, own, actions, empty, likely)


def _refuse_values_as_names(copied: Batched) -> None:
    """Refuses a table whose first line is a person's."""
    if any(_VALUE.fullmatch(name.strip()) for name in copied.columns):
        raise ReplaceError(
            f"Table {named(copied.path)} has no line of column names: its first line holds an"
            " e-mail address or a telephone number. Put the names of the columns above it."
        )


def _excerpt(copied: Batched) -> tuple[pd.DataFrame, pa.Schema]:
    """Gives as many values of each column as tell what it is, wherever in the table they begin.

    Beside these texts it gives the types that the columns have.
    """
    texts = dict.fromkeys(copied.columns, pa.chunked_array([], pa.string()))
    types = pa.schema([(name, pa.string()) for name in copied.columns])
    rows = 0
    for batch in copied.batches(copied.columns):
        types = batch.schema
        first = max(SAMPLE_SIZE - rows, 0)
        rows += batch.num_rows
        for name, column in zip(batch.schema.names, batch.columns, strict=True):
            if first or count_of(texts[name]) < SAMPLE_SIZE:
                own = beginning(column, first)  # as texts, as files differ in types
                texts[name] = pa.chunked_array([*texts[name].chunks, *own.chunks], pa.string())
        if rows >= SAMPLE_SIZE and all(map(count_of, texts.values())):
            break
    return excerpt_of(texts), types


def _key(given: Sequence[str], columns: Sequence[str]) -> Sequence[str]:
    """Gives the columns of a key, of which one may have a comma in its name."""
    whole = ",".join(given)
    if whole in columns:
        return [whole]
    return [name if name in columns else name.strip() for name in given]


def _refuse_unplanned(copied: Batched, roles: Roles, asked: OfTable) -> None:
    """Refuses columns that a plan does not know."""
    known = {*roles.needed, *asked.fates}
    for column in copied.columns:
        if column not in known:
            raise PlanError(
                f"Table {named(copied.path)} has a column {column!r} that the plan does not know:"
                ' decide in the plan what becomes of it, or write new_columns = "keep" there.'
            )
    for column in asked.fates:
        if column not in copied.columns:
            raise PlanError(
                f"Table {named(copied.path)} has no column {column!r}, which the plan knows."
                f"{did_you_mean(column, copied.columns)} Its columns are: {listed(copied.columns)}."
            )


def refuse_unknown_columns(tables: Sequence[OpenedTable[Any]], asked: Asked) -> None:
    """Refuses columns that are asked of all tables and are in none."""
    known = dict.fromkeys(column for table in tables for column in table.copied.columns)
    of_all = asked.of_all
    wanted = [(each, f"for {name!r}") for name, those in of_all.columns.items() for each in those]
    wanted += [(column, "to scrub") for column in of_all.scrub]
    wanted += [(column, "to change") for column in of_all.others]
    wanted += [(of_all.household, "for households")] if of_all.household else []
    for column, what_for in wanted:
        if column not in known:
            raise ReplaceError(
                f"No table has a column {column!r} {what_for}.{did_you_mean(column, known)} Columns"
                f" are: {listed(known)}."
            )
