"""Tables of databases, read once and kept where they are counted quickly."""

from __future__ import annotations

from pathlib import Path

import pyarrow as pa
import pyarrow.parquet as pq

from vantrel.databases.address import Address
from vantrel.databases.database import opened_database
from vantrel.databases.table import opened_table
from vantrel.tables.database import quoted
from vantrel.tables.sources import Source


def database_source(address: Address, folder: Path, *, empty_is_missing: bool) -> Source:
    """Copies a table or a view to a file, all values as texts.

    Args:
        address: The table.
        folder: Where the file goes.
        empty_is_missing: Whether an empty text is a missing value, too.
    """
    file = folder / "database.parquet"
    with opened_database(address) as database:
        table = opened_table(database, address.table or "")
        places = [f"c{place}" for place in range(len(table.columns))]
        schema = pa.schema([(place, pa.string()) for place in places])
        with pq.ParquetWriter(file, schema) as writer:
            for batch in table.batches(table.columns):
                texts = [column.cast(pa.string()) for column in batch.columns]
                writer.write_batch(pa.RecordBatch.from_arrays(texts, schema=schema))
    read = f"read_parquet({quoted(str(file))})"
    cells = ", ".join(f"nullif({place}, '') AS {place}" for place in places)
    return Source(
        list(table.columns), f"(SELECT {cells} FROM {read})" if empty_is_missing else read
    )
