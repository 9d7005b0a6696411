"""Copies of tables, as tests make them."""

from __future__ import annotations

from collections.abc import Mapping, Sequence
from dataclasses import replace
from io import BytesIO
from pathlib import Path
from typing import TYPE_CHECKING, Any

from vantrel.tables.copying import Copied, open_copied

if TYPE_CHECKING:
    import pyarrow as pa

# Bytes that are read at a time: each row in several pieces, a few rows, and all at once.
BLOCKS = (1, 2, 7, 64, 4_000_000)

type Cells = list[str | None]


def upper(batch: pa.RecordBatch) -> Mapping[str, pa.Array]:
    """Changes every column that it is given."""
    import pyarrow as pa
    import pyarrow.compute as pc

    return {
        name: pc.utf8_upper(column.cast(pa.string()))
        for name, column in zip(batch.schema.names, batch.columns, strict=True)
    }


def unchanged(batch: pa.RecordBatch) -> Mapping[str, pa.Array]:
    """Returns every column that it is given."""
    return dict(zip(batch.schema.names, batch.columns, strict=True))


def read(path: Path, block: int = BLOCKS[-1], **options: Any) -> dict[str, Cells]:
    """Reads all columns of a CSV file."""
    with open_copied(path, **options) as copied:
        cells: dict[str, Cells] = {column: [] for column in copied.columns}
        for batch in in_blocks(copied, block).batches(copied.columns):
            for column, values in batch.to_pydict().items():
                cells[column] += values
    return cells


def written(
    path: Path, changes: Mapping[str, Cells], block: int = BLOCKS[-1], **options: Any
) -> bytes:
    """Copies a CSV file with all cells of some columns given."""
    import pyarrow as pa

    done = 0

    def change(batch: pa.RecordBatch) -> dict[str, pa.Array]:
        nonlocal done
        rows = slice(done, done + len(batch))
        done += len(batch)
        return {column: pa.array(cells[rows], pa.string()) for column, cells in changes.items()}

    with open_copied(path, **options) as copied:
        target = BytesIO()
        # Of the first column is told how many rows there are.
        rows = in_blocks(copied, block).write(target, copied.columns[:1], change)
        assert all(len(cells) == rows for cells in changes.values())
    return target.getvalue()


def copied_as_it_is(path: Path, block: int = BLOCKS[-1], **options: Any) -> bytes:
    """Copies a CSV file of which all columns are returned unchanged."""
    with open_copied(path, **options) as copied:
        target = BytesIO()
        in_blocks(copied, block).write(target, columns_of(copied), unchanged)
    return target.getvalue()


def columns_of(copied: Copied) -> Sequence[str]:
    """All columns of a table, the last first: the order makes no difference to a copy."""
    return copied.columns[::-1]


def in_blocks(copied: Copied, block: int) -> Copied:
    """The same CSV file, read in blocks of so many bytes."""
    return replace(copied, block=block)  # type: ignore[type-var]  # what is opened is a dataclass
