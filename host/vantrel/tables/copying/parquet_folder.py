"""A folder of Parquet files, which are one table: their rows come in the order of their names."""

from __future__ import annotations

from collections.abc import Iterator, Sequence
from contextlib import contextmanager
from dataclasses import dataclass
from pathlib import Path

import pyarrow as pa

from vantrel.errors import TableError
from vantrel.hints import did_you_mean_path, listed, named
from vantrel.tables.copying.parquet_copy import CopiedParquet

_SUFFIX = ".parquet"
_ASIDE = ("_", ".")  # begin the names of what readers of such folders skip


@dataclass(frozen=True)
class CopiedFolder:
    """A folder whose files are read one after the other; each is copied for itself.

    Attributes:
        path: What the user calls it.
        columns: The names of the columns of each file.
        files: The files.
        rows: The number of rows of each.
        schemas: The types of the columns of each, which may differ.
    """

    path: Path
    columns: tuple[str, ...]
    files: tuple[Path, ...]
    rows: tuple[int, ...]
    schemas: tuple[pa.Schema, ...]

    @classmethod
    def opened(cls, path: Path) -> CopiedFolder:
        """Looks at the files of a folder.

        Raises:
            TableError: It is none, holds other things, or its files differ in their columns.
        """
        files = _files(path)
        columns, rows, schemas = [], [], []
        for file in files:
            with opened_file(file) as parquet:
                columns.append(parquet.columns)
                rows.append(parquet.file.metadata.num_rows)
                schemas.append(parquet.file.schema_arrow.remove_metadata())
        for file, own in zip(files, columns, strict=True):
            if own != columns[0]:
                raise TableError(
                    f"The files of folder {named(path)} are not of one table:"
                    f" {named(files[0].name)} has the columns {listed(columns[0])},"
                    f" {named(file.name)} has {listed(own)}."
                )
        return cls(path, columns[0], tuple(files), tuple(rows), tuple(schemas))

    def batches(self, columns: Sequence[str]) -> Iterator[pa.RecordBatch]:
        """Reads columns of one file after the other."""
        for file in self.files:
            with opened_file(file) as parquet:
                yield from parquet.batches(columns)


@contextmanager
def opened_file(file: Path) -> Iterator[CopiedParquet]:
    """Opens one of the files."""
    with CopiedParquet.opened(file, file) as parquet:
        yield parquet


def _files(path: Path) -> list[Path]:
    if not path.is_dir():
        what = "is no folder" if path.exists() else "is not there"
        near = "" if path.exists() else did_you_mean_path(path)
        raise TableError(f"{named(path)} {what}: name a folder of Parquet files.{near}")
    content = sorted(each for each in path.iterdir() if not each.name.startswith(_ASIDE))
    for each in content:
        if each.suffix != _SUFFIX or not each.is_file():
            raise TableError(
                f"Folder {named(path)} holds {named(each.name)}, which is no file of Parquet: it"
                " would not be copied. Move it away."
            )
    if not content:
        raise TableError(f"Folder {named(path)} holds no Parquet files: name a folder of them.")
    return content
