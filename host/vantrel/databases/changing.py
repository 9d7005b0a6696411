"""Changes columns of a table: new values go into a temporary table, and from there all at once."""

from __future__ import annotations

from collections.abc import Callable, Mapping, Sequence

import pyarrow as pa

from vantrel.databases.engine import quoted
from vantrel.databases.table import DatabaseTable
from vantrel.errors import DatabaseError
from vantrel.wording import counted, shown


class NewValues:
    """The new values of some columns of a table, on their way into it.

    Args:
        table: The table.
        columns: The columns that are changed.
        number: The number of the table within the transaction.
    """

    def __init__(self, table: DatabaseTable, columns: Sequence[str], number: int) -> None:
        self._table = table
        self._columns = columns
        self._driver = table.database.driver
        self._engine = table.database.engine
        self._name = quoted(f"vantrel_new_{number}")
        self._keys = [quoted(f"key_{place}") for place in range(len(table.key))]
        self._new = [quoted(f"new_{place}") for place in range(len(columns))]
        self.rows = 0

    def make(self, change: Callable[[pa.RecordBatch], Mapping[str, pa.Array]]) -> None:
        """Makes all new values, from batches of all columns, and keeps them beside the table.

        They have the types of their columns there: what a column cannot hold is refused.
        """
        if self._columns:
            self._create()
        for batch, keys in self._table.with_keys():
            self.rows += batch.num_rows
            new = change(batch)
            if not self._columns:
                continue
            made = dict(zip(self._keys, keys, strict=True))
            made |= {
                name: new[column] for name, column in zip(self._new, self._columns, strict=True)
            }
            self._put(made)

    def take_effect(self) -> None:
        """Puts the new values into the table."""
        if not (self.rows and self._columns):
            return
        new = ", ".join(
            f"{quoted(column)} = " + self._engine.becoming(f"old.{quoted(column)}", f"made.{name}")
            for column, name in zip(self._columns, self._new, strict=True)
        )
        is_same = " AND ".join(
            f"{self._engine.key(f'old.{quoted(column)}')} = made.{name}"
            for column, name in zip(self._table.key, self._keys, strict=True)
        )
        changed = self._driver.execute(
            f"UPDATE {self._table.sql} AS old SET {new} FROM {self._name} AS made WHERE {is_same}"
        ).rowcount
        if changed != self.rows:
            raise DatabaseError(
                f"Table {self._table.name!r}: of {counted(self.rows, 'row')} the database changed"
                f" {changed:,}, so nothing was changed. A trigger or a rule may keep the others, or"
                " they have no primary key."
            )

    def first(self, rows: int) -> list[list[str | None]]:
        """The first new values that were made, as the types of their columns hold them."""
        told = [self._table.told[column].declared for column in self._columns]
        cells = map(self._engine.as_text, self._new, told)
        found = self._driver.execute(f"SELECT {', '.join(cells)} FROM {self._name} LIMIT {rows}")
        return [*map(list, found)]

    def _put(self, made: Mapping[str, pa.Array]) -> None:
        try:
            self._engine.put(self._name, made)
        except Exception as error:
            refused = self._engine.refused_cell(error)
            if refused is None:
                raise
            column = dict(zip(self._new, self._columns, strict=True))[quoted(refused[0])]
            # The cause is not shown: its text may have more rows in it.
            raise DatabaseError(
                f"Column {shown(repr(column))} of table {self._table.name!r} cannot hold what is"
                f" made for it: {refused[1]}."
            ) from None

    def _create(self) -> None:
        cells = [self._engine.key(quoted(column)) for column in self._table.key]
        cells += map(quoted, self._columns)
        names = [*self._keys, *self._new]
        listed = ", ".join(f"{cell} AS {name}" for cell, name in zip(cells, names, strict=True))
        self._driver.execute(
            f"CREATE TEMPORARY TABLE {self._name} AS"
            f" SELECT {listed} FROM {self._table.sql} WHERE false"
        )
