"""Makes the new columns of those that an action changes, batch by batch."""

from __future__ import annotations

from collections.abc import Iterable, Iterator, Mapping, Sequence
from dataclasses import dataclass

import numpy as np
import pyarrow as pa

from vantrel.errors import ReplaceError
from vantrel.hints import in_rows
from vantrel.replacing.making.places import Places
from vantrel.replacing.others.action import Action
from vantrel.replacing.others.faked import faked
from vantrel.replacing.others.hashed import hashed
from vantrel.replacing.others.shifted import days_of, shifted
from vantrel.replacing.people.told import Told
from vantrel.replacing.values.keys import Digests
from vantrel.wording import counted, shown

_MOST_ROWS = 3


@dataclass
class Lost:
    """The cells of a column that held no date, and are missing now.

    Attributes:
        cells: How many they are.
        rows: The first of their rows.
    """

    cells: int = 0
    rows: tuple[int, ...] = ()

    def add(self, cells: int, rows: Iterable[int]) -> None:
        """Adds cells in rows behind those that are there."""
        self.cells += cells
        self.rows = (*self.rows, *rows)[:_MOST_ROWS]


class Changed:
    """What becomes of the columns of a table that have actions.

    Args:
        actions: The action of each column; those that are kept may be left out.
        key: What decides what is hashed to what.
        places: The countries by whose numbers people are told to live there.

    Attributes:
        lost: The cells of each column that held no date, where there are any.
    """

    def __init__(self, actions: Mapping[str, Action], key: bytes, places: Places) -> None:
        self._actions = {column: each for column, each in actions.items() if each.kind != "keep"}
        self._key = key
        self._places = places
        self._rows = 0
        self.lost: dict[str, Lost] = {}

    def __call__(self, batch: pa.RecordBatch, digests: Digests, told: Told) -> dict[str, pa.Array]:
        """Makes the new columns of a batch, which comes behind those before it.

        Args:
            batch: The rows, with all columns that have actions.
            digests: The digest of each row's person.
            told: What is told of each.

        Raises:
            ReplaceError: A column cannot hold what is made for it.
        """
        new = {
            column: self._new(batch, column, action, digests, told)
            for column, action in self._actions.items()
        }
        self._rows += batch.num_rows
        return new

    def notes(self) -> Iterator[str]:
        """Tells which columns held something else than dates."""
        return notes_on_lost(self.lost, self._actions)

    def _new(
        self, batch: pa.RecordBatch, name: str, action: Action, digests: Digests, told: Told
    ) -> pa.Array:
        column = batch.column(name)
        if action.kind == "blank":
            return _blank(column, batch.schema.field(name))
        if action.kind == "hash":
            return hashed(column, name, self._key)
        if action.kind == "fake":
            locales = [self._places.known[place].locale for place in told.place.tolist()]
            return faked(column, name, action.provider, digests, locales)
        moved, is_lost = shifted(column, name, days_of(digests, action.days), action.form)
        self._note(name, (np.flatnonzero(is_lost) + self._rows + 1).tolist())
        return moved

    def _note(self, column: str, rows: Sequence[int]) -> None:
        if len(rows):
            self.lost.setdefault(column, Lost()).add(len(rows), rows[:_MOST_ROWS])


def notes_on_lost(found: Mapping[str, Lost], actions: Mapping[str, Action]) -> Iterator[str]:
    """Tells which columns held something else than dates."""
    for column, lost in found.items():
        form = actions[column].form
        written = f" of the form {form}" if form else ""
        yield (
            f"Column {shown(repr(column))}: {counted(lost.cells, 'cell')} without a date"
            f"{written} that could be moved, now empty ({in_rows(lost.rows)})."
        )


def _blank(column: pa.Array, field: pa.Field) -> pa.Array:
    if not field.nullable:
        raise ReplaceError(
            f"Column {shown(repr(field.name))} may not have missing values, so it cannot be blank:"
            " take 'fake', 'shift' or 'hash', or leave it out of the table."
        )
    return pa.nulls(len(column), column.type)
