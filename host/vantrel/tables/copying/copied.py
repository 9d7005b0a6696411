"""What every table can do that is read in batches, and what those can that are copied."""

from __future__ import annotations

from collections.abc import Callable, Iterator, Mapping, Sequence
from pathlib import Path
from typing import IO, TYPE_CHECKING, Protocol

from vantrel.tables.kinds import Compression, Format

if TYPE_CHECKING:
    import pyarrow as pa

# Makes the new values of columns, whichever it likes, out of some rows of all that it asked for.
type Change = Callable[[pa.RecordBatch], Mapping[str, pa.Array]]


class Batched(Protocol):
    """A table that is read in batches of rows."""

    @property
    def path(self) -> Path:
        """What the user calls it."""

    @property
    def columns(self) -> tuple[str, ...]:
        """The names of the columns, in their order."""

    def batches(self, columns: Sequence[str]) -> Iterator[pa.RecordBatch]:
        """Reads columns, in the order that they are asked for, some rows at a time.

        Those of CSV are texts, in which an empty cell is missing and one in quotation marks an
        empty text. Those of Parquet have the types that they are kept in. Those of a database are
        whole numbers or texts.
        """


class Copied(Batched, Protocol):
    """A table in a file, which is copied with some columns changed.

    Whatever fails of the table itself is a ``TableError``.
    """

    @property
    def format(self) -> Format:
        """How its rows are written, and those of a copy."""

    @property
    def compression(self) -> Compression | None:
        """How the whole file is compressed, if it is."""

    def write(
        self,
        target: IO[bytes],
        columns: Sequence[str],
        change: Change,
        *,
        compression: Compression | None = None,
    ) -> int:
        """Writes a copy, and gives the number of its rows.

        Args:
            target: An open file.
            columns: Those that ``change`` looks at.
            change: Is given what :meth:`batches` gives, and returns what takes the place of
                columns, by their names, in as many rows. Missing values stay so in no other way
                than that it returns them.
            compression: How the whole file is to be compressed.
        """
