"""Adds rows to a table of a database."""

from __future__ import annotations

from collections.abc import Iterable, Iterator

import pandas as pd
import pyarrow as pa

from vantrel.databases.address import Address
from vantrel.databases.database import opened_database
from vantrel.databases.engine import quoted
from vantrel.databases.table import DatabaseTable, opened_table
from vantrel.errors import DatabaseError
from vantrel.hints import did_you_mean, listed
from vantrel.wording import shown


def append_to(address: Address, frames: Iterable[pd.DataFrame]) -> None:
    """Adds the rows of frames of texts to a table, all or none.

    Raises:
        DatabaseError: The table is not there, has not all columns, or refuses the rows.
    """
    with opened_database(address, is_changing=True) as database:
        table = opened_table(database, address.table or "")
        if database.kinds[table.name] in ("view", "foreign table"):
            raise DatabaseError(f"{address} is no table that rows are added to, but a view.")
        for frame in _checked(frames, table):
            cells = {
                quoted(str(column)): pa.array(frame[column], pa.string(), from_pandas=True)
                for column in frame
            }
            database.engine.put(table.sql, cells)
        database.engine.settle()
        database.commit()


def _checked(frames: Iterable[pd.DataFrame], table: DatabaseTable) -> Iterator[pd.DataFrame]:
    """Gives frames on whose columns are all in a table."""
    for frame in frames:
        for column in frame:
            if column not in table.columns:
                raise DatabaseError(
                    f"Table {table.name!r} has no column {shown(repr(column))} for the sample's."
                    f"{did_you_mean(column, table.columns)} Its columns are:"
                    f" {listed(table.columns)}."
                )
        yield frame
