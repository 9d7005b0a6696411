"""Copies CSV byte for byte, but for the cells of some columns."""

from __future__ import annotations

import codecs
from collections.abc import Callable, Iterator, Sequence
from dataclasses import dataclass
from functools import cache
from pathlib import Path
from typing import IO

import pyarrow as pa

from vantrel.errors import TableError
from vantrel.hints import named
from vantrel.tables.copying.cells import Column, replaced
from vantrel.tables.copying.copied import Change
from vantrel.tables.copying.encoding import Encoder, refuse_other_than_utf8
from vantrel.tables.copying.grid import Dialect, Grid, UnsoundError, grid_of
from vantrel.tables.csv_rows import Header, fault, is_marked
from vantrel.tables.errors import telling
from vantrel.tables.files import compressing, open_bytes
from vantrel.tables.kinds import Compression, Format, Kind
from vantrel.tables.sources import LONGEST_ROW

# Few enough bytes for the processor's caches, enough rows for calls that take whole columns.
_BLOCK = 4_000_000

_NOT_FOUND = (
    f"a row of it has more than {LONGEST_ROW:,} bytes, or a quotation mark that is never closed."
)


@dataclass(frozen=True)
class CopiedCsv:
    """A CSV file that is copied with some columns changed.

    Attributes:
        path: What the user calls it.
        file: What is read, in UTF-8.
        kind: What that holds.
        header: Its first row.
        compression: How the file at ``path`` is compressed.
        encoding: What the file at ``path`` is in, if not in UTF-8.
        block: How many bytes are read at a time.
    """

    path: Path
    file: Path
    kind: Kind
    header: Header
    compression: Compression | None = None
    encoding: str | None = None
    block: int = _BLOCK

    format: Format = "csv"

    @property
    def columns(self) -> tuple[str, ...]:
        """The names of the columns."""
        return tuple(self.header.names)

    def batches(self, columns: Sequence[str]) -> Iterator[pa.RecordBatch]:
        """Reads columns as texts."""
        for grid in self._grids():
            if len(grid):
                yield _batch(columns, self._cells(grid))

    def write(
        self,
        target: IO[bytes],
        columns: Sequence[str],
        change: Change,
        *,
        compression: Compression | None = None,
    ) -> int:
        """Writes a copy."""
        rows = 0
        with compressing(target, compression) as packed:
            copy = Encoder(packed, self.encoding)
            copy.write(self._mark)
            for grid in self._grids():
                copy.write(self._changed(grid, columns, change))
                rows += len(grid)
            copy.write(b"", is_last=True)
        return rows

    def _cells(self, grid: Grid) -> Callable[[str], Column]:
        """What reads a column of a block once."""
        return cache(lambda column: Column(grid, self.columns.index(column)))

    def _changed(self, grid: Grid, columns: Sequence[str], change: Change) -> pa.Buffer | bytes:
        if not len(grid):
            return replaced(grid, {})
        cells = self._cells(grid)
        new = {
            self.columns.index(column): cells(column).written(texts, self.header.separator)
            for column, texts in change(_batch(columns, cells)).items()
        }
        return replaced(grid, new)

    def _grids(self) -> Iterator[Grid]:
        """Reads the file in blocks of whole rows, of which the header is none."""
        # In one column a blank line is a row.
        above = 1 + (self.header.blank_lines if len(self.columns) == 1 else 0)
        for grid in self._blocks():
            hidden = min(above, len(grid))
            above -= hidden
            yield grid.without_first(hidden)

    def _blocks(self) -> Iterator[Grid]:
        rest = b""
        with telling(self.path), open_bytes(self.file, self.kind.compression) as raw:
            raw.read(len(self._mark))
            while True:
                read = raw.read(self.block)
                if not read and not rest:
                    return
                grid = self._sound(rest + read, is_last=not read)
                rest = grid.text[grid.end :]
                yield grid

    def _sound(self, text: bytes, *, is_last: bool) -> Grid:
        """Finds the rows in a block that is no longer than it may be, and in the encoding."""
        dialect = Dialect(self.header.separator.encode(), len(self.columns))
        try:
            grid = grid_of(text, dialect, is_last=is_last)
            if len(text) - grid.end > LONGEST_ROW:
                raise UnsoundError
        except UnsoundError:
            reason = fault(self.file, self.kind, self.header) or _NOT_FOUND
            raise TableError(f"Table {named(self.path)} is no CSV table: {reason}") from None
        refuse_other_than_utf8(text, grid.end)
        return grid

    @property
    def _mark(self) -> bytes:
        return codecs.BOM_UTF8 if is_marked(self.file, self.kind) else b""


def _batch(columns: Sequence[str], cells: Callable[[str], Column]) -> pa.RecordBatch:
    return pa.RecordBatch.from_arrays([cells(each).texts for each in columns], names=list(columns))
