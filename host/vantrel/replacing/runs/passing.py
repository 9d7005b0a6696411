"""Makes the new columns of a table, batch by batch, and looks at what passes through."""

from __future__ import annotations

from collections.abc import Iterable, Mapping

import pyarrow as pa

from vantrel.replacing.columns.roles import Roles
from vantrel.replacing.leaks import Leak, LeakSearch, scrubbed
from vantrel.replacing.others.action import Action
from vantrel.replacing.others.changed import Lost
from vantrel.replacing.people.people import People
from vantrel.replacing.runs.known import found_by_print, known_of
from vantrel.replacing.values.keys import as_texts


class Passing:
    """What becomes of the batches of a table that was learnt.

    Args:
        people: Who becomes of whom.
        roles: What the table's columns are.
        scrub: The columns in which the names of the row's people are replaced, too.
        others: The actions of other columns.
        derived: The columns that are made anew from the others, in which nobody is looked for.

    Attributes:
        rows: The number of rows until now.
        has_people: Whether somebody was replaced in some of them.
    """

    def __init__(
        self,
        people: People,
        roles: Roles,
        scrub: Iterable[str] = (),
        others: Mapping[str, Action] | None = None,
        derived: Iterable[str] = (),
    ) -> None:
        self._people = people
        self._roles = roles
        self._scrub = list(scrub)
        actions = (others or {}).items()
        self._changed = [
            people.changed({name: each for name, each in actions if roles.owner(name) is person})
            for person in roles.people
        ]
        self._unsearched = {*roles.told, *derived}
        self._search = LeakSearch()
        self.rows = 0
        self.has_people = False

    def __call__(self, batch: pa.RecordBatch) -> dict[str, pa.Array]:
        """Gives the new columns of a batch with all its columns; the others stay."""
        new = self._people.replaced(batch, self._roles)
        known = [known_of(each, with_made=bool(self._scrub)) for each in new.people]
        columns = new.columns
        for changed, each in zip(self._changed, new.people, strict=True):
            columns |= changed(batch, each.digests, each.told)
        for column in self._scrub:
            texts = batch.column(column)
            values = []
            for of_person, each in zip(known, new.people, strict=True):
                address = each.made.column("email")
                own = (*of_person.values, *found_by_print(texts, of_person, each))
                values += [value._replace(address=address) for value in own]
            columns[column] = scrubbed(texts, values, column)
        passed = [name for name in batch.schema.names if name not in self._unsearched]
        left = {name: columns.get(name, batch.column(name)) for name in passed}
        self._search.look(pa.RecordBatch.from_pydict(left), known, self.rows + 1)
        self.rows += batch.num_rows
        self.has_people = self.has_people or self._has_people(batch)
        return columns

    def _has_people(self, batch: pa.RecordBatch) -> bool:
        columns = (as_texts(batch.column(name)) for name in self._roles.replaced)
        return any(cells.null_count < len(cells) for cells in columns)

    def notes(self) -> list[str]:
        """What is to be told of the columns that have actions."""
        return [note for changed in self._changed for note in changed.notes()]

    @property
    def lost(self) -> Mapping[str, Lost]:
        """The cells that held no date which could be moved, by their column."""
        return {column: lost for changed in self._changed for column, lost in changed.lost.items()}

    def leaks(self) -> list[Leak]:
        """Who is still named in the columns that passed through."""
        return self._search.found()
