"""Makes the new columns of a table, batch by batch, and looks at what passes through."""

from __future__ import annotations

from collections.abc import Iterable, Mapping

import numpy as np
import pyarrow as pa
import pyarrow.compute as pc

from vantrel.attributes import NAMES
from vantrel.replacing.form import without_titles
from vantrel.replacing.keys import as_texts, is_text
from vantrel.replacing.leaks import Leak, LeakSearch, Names, Value, scrubbed
from vantrel.replacing.made import MadeUp
from vantrel.replacing.others.action import Action
from vantrel.replacing.others.changed import Lost
from vantrel.replacing.people import People
from vantrel.replacing.roles import Roles
from vantrel.replacing.told import Told

# "Smith, John" and "John Smith"; of several words the last is apart.
_TWO_NAMES = (
    r"^\s*(?:(?P<before>[^,]*[^,\s])\s*,\s*(?P<behind>.*\S)|(?P<start>.*\S)\s+(?P<end>\S+))\s*$"
)


_PARTS = ("firstname", "lastname")


class Passing:
    """What becomes of the batches of a table that was learnt.

    Args:
        people: Who becomes of whom.
        roles: What the table's columns are.
        scrub: The columns in which the names of the row's person are replaced, too.
        others: The actions of other columns.

    Attributes:
        rows: The number of rows until now.
    """

    def __init__(
        self,
        people: People,
        roles: Roles,
        scrub: Iterable[str] = (),
        others: Mapping[str, Action] | None = None,
    ) -> None:
        self._people = people
        self._roles = roles
        self._scrub = list(scrub)
        self._changed = people.changed(others or {})
        self._search = LeakSearch()
        has_names = "fullname" in roles.columns or roles.columns.keys() >= set(_PARTS)
        self._has_no_names = not has_names
        self._of_people = {column for columns in roles.columns.values() for column in columns}
        self.rows = 0

    def __call__(self, batch: pa.RecordBatch) -> dict[str, pa.Array]:
        """Gives the new columns of a batch with all its columns; the others stay."""
        new = self._people.replaced(batch, self._roles)
        columns, values = new.columns, self._known_by(batch, new.columns)
        names = self._names(new.told, values)
        columns |= self._changed(batch, new.digests, new.told)
        for column in self._scrub:
            texts = batch.column(column)
            by_print = [] if names is None else _found_by_print(texts, names, new.made)
            columns[column] = scrubbed(texts, [*values, *by_print])
        passed = [name for name in batch.schema.names if name not in self._of_people]
        left = {name: columns.get(name, batch.column(name)) for name in passed}
        self._search.look(pa.RecordBatch.from_pydict(left), values, self.rows + 1, names)
        self.rows += batch.num_rows
        return columns

    def notes(self) -> list[str]:
        """What is to be told of the columns that have actions."""
        return list(self._changed.notes())

    @property
    def lost(self) -> Mapping[str, Lost]:
        """The cells that held no date which could be moved, by their column."""
        return self._changed.lost

    def leaks(self) -> list[Leak]:
        """Who is still named in the columns that passed through."""
        return self._search.found()

    def _names(self, told: Told, values: Iterable[Value]) -> Names | None:
        """Gives the names to look for by prints; None where names are to stay."""
        if not self._roles.kept.isdisjoint(NAMES):
            return None
        if self._has_no_names:
            return Names(told.first, told.last)
        parts = [value.real for value in values if value.attribute in _PARTS]
        plain = [pc.fill_null(pc.string_is_ascii(part), True) for part in parts]
        is_plain = np.logical_and.reduce([each.to_numpy(zero_copy_only=False) for each in plain])
        return Names(told.first, told.last, ~is_plain)

    def _known_by(self, batch: pa.RecordBatch, made: Mapping[str, pa.Array]) -> list[Value]:
        """Gives what each row's person is known by; the parts of full names, too."""
        values = [
            Value(attribute, as_texts(batch.column(column)), as_texts(made[column]))
            for column, attribute in self._roles.replaced.items()
        ]
        missing = [part for part in _PARTS if part not in self._roles.columns]
        for _, real, new in [each for each in values if missing and each.attribute == "fullname"]:
            parts = zip(_PARTS, _halves(real), _halves(new), strict=True)
            values += [Value(*part) for part in parts if part[0] in missing]
        return values


def _found_by_print(texts: pa.Array, names: Names, made: MadeUp) -> list[Value]:
    """Gives the names that another table tells, as they are in texts."""
    if not is_text(texts.type):
        return []
    words = names.words_in(texts.cast(pa.string()))
    return [
        Value(part, words.found(wanted), made.column(part))
        for part, wanted in zip(_PARTS, (names.first, names.last), strict=True)
    ]


def _halves(names: pa.Array) -> tuple[pa.Array, pa.Array]:
    """Gives the first and the last names of full ones, missing where there is one word."""
    found = pc.extract_regex(without_titles(names), _TWO_NAMES)
    before, behind, start, end = (
        pc.if_else(pc.equal(part, ""), None, part) for part in found.flatten()
    )
    return pc.coalesce(behind, start), pc.coalesce(before, end)
