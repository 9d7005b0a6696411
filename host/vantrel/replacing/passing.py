"""Makes the new columns of a table, batch by batch, and looks at what passes through."""

from __future__ import annotations

from collections.abc import Iterable, Mapping

import pyarrow as pa
import pyarrow.compute as pc

from vantrel.replacing.keys import as_texts
from vantrel.replacing.leaks import Leak, LeakSearch, scrubbed
from vantrel.replacing.people import People
from vantrel.replacing.roles import Roles

# "Smith, John" and "John Smith"; of several words the last is apart.
_TWO_NAMES = (
    r"^\s*(?:(?P<before>[^,]*[^,\s])\s*,\s*(?P<behind>.*\S)|(?P<start>.*\S)\s+(?P<end>\S+))\s*$"
)


class Passing:
    """What becomes of the batches of a table that was learnt.

    Args:
        people: Who becomes of whom.
        roles: What the table's columns are.
        scrub: The columns in which the names of the row's person are replaced, too.

    Attributes:
        rows: The number of rows until now.
    """

    def __init__(self, people: People, roles: Roles, scrub: Iterable[str] = ()) -> None:
        self._people = people
        self._roles = roles
        self._scrub = list(scrub)
        self._search = LeakSearch()
        self._of_people = {column for columns in roles.columns.values() for column in columns}
        self.rows = 0

    def __call__(self, batch: pa.RecordBatch) -> dict[str, pa.Array]:
        """Gives the new columns of a batch with all its columns; the others stay."""
        made = self._people.replaced(batch, self._roles)
        real = self._by_attribute({name: batch.column(name) for name in made})
        if self._scrub:
            new = self._by_attribute(made)
            made |= {name: scrubbed(batch.column(name), real, new) for name in self._scrub}
        passed = [name for name in batch.schema.names if name not in self._of_people]
        left = {name: made.get(name, batch.column(name)) for name in passed}
        self._search.look(pa.RecordBatch.from_pydict(left), real, self.rows + 1)
        self.rows += batch.num_rows
        return made

    def leaks(self) -> list[Leak]:
        """Who is still named in the columns that passed through."""
        return self._search.found()

    def _by_attribute(self, columns: Mapping[str, pa.Array]) -> dict[str, pa.Array]:
        """Gives what a row's person is known by; parts of full names where they have no columns."""
        found: dict[str, pa.Array] = {}
        for column, attribute in self._roles.replaced.items():
            found.setdefault(attribute, as_texts(columns[column]))
        if "fullname" in found and not {"firstname", "lastname"} <= found.keys():
            halves = _halves(found["fullname"])
            found = dict(zip(("firstname", "lastname"), halves, strict=True)) | found
        return found


def _halves(names: pa.Array) -> tuple[pa.Array, pa.Array]:
    """Gives the first and the last names of full ones, missing where there is one word."""
    found = pc.extract_regex(names, _TWO_NAMES)
    before, behind, start, end = (
        pc.if_else(pc.equal(part, ""), None, part) for part in found.flatten()
    )
    return pc.coalesce(behind, start), pc.coalesce(before, end)
