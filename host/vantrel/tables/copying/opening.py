"""Opens tables that are copied with some columns changed."""

from __future__ import annotations

from collections.abc import Iterator
from contextlib import contextmanager
from importlib.util import find_spec
from pathlib import Path
from tempfile import TemporaryDirectory
from typing import TYPE_CHECKING

from vantrel.errors import MissingPackageError, TableError
from vantrel.hints import named
from vantrel.tables.errors import telling
from vantrel.tables.files import decoded, encoding_of, found
from vantrel.tables.kinds import Kind
from vantrel.tables.sources import csv_header

if TYPE_CHECKING:
    from vantrel.tables.copying.copied import Copied
    from vantrel.tables.copying.csv_copy import CopiedCsv


@contextmanager
def open_copied(
    path: Path, separator: str | None = None, encoding: str | None = None
) -> Iterator[Copied]:
    """Opens a table that is to be copied with some columns changed.

    Args:
        path: A file of CSV or Parquet by the end of its name, or a pipe, or ``-`` for standard
            input. The name may end in .gz or .zst.
        separator: What separates the cells of CSV; found if None.
        encoding: The encoding of CSV, as Python names it. If None it is UTF-8, or UTF-16 where the
            file begins with its mark.

    Raises:
        TableError: The file cannot be read, or is no such table.
        MissingPackageError: pyarrow is not installed.
    """
    if find_spec("pyarrow") is None:
        raise MissingPackageError.of(f"To copy {named(path)}", "pyarrow", "parquet")
    if path.is_dir():
        raise TableError(f"Table {named(path)} is a folder: name a file.")
    with TemporaryDirectory(prefix="vantrel-") as name:
        folder = Path(name)
        file, kind = found(path, folder)
        if kind.format == "jsonl":
            raise TableError(
                f"Table {named(path)} is JSON Lines, of which no copies are made: save it as CSV or"
                " Parquet."
            )
        if kind.format == "parquet":
            from vantrel.tables.copying.parquet_copy import CopiedParquet

            with CopiedParquet.opened(path, file) as parquet:
                yield parquet
        else:
            told = encoding_of(path, file, kind, encoding)
            kind = kind._replace(separator=separator or kind.separator)
            yield _opened_csv(path, file, kind, told, folder)


def _opened_csv(path: Path, file: Path, kind: Kind, told: str | None, folder: Path) -> CopiedCsv:
    from vantrel.tables.copying.csv_copy import CopiedCsv
    from vantrel.tables.copying.encoding import exact_encoding, refuse_inexact

    compression = kind.compression
    if told is not None:
        with telling(path, told):
            told = exact_encoding(told, file, compression)
            text = decoded(file, kind, told, folder)
            refuse_inexact(path, file, kind, told, text)
        file, kind = text, kind._replace(compression=None)
    return CopiedCsv(path, file, kind, csv_header(path, file, kind), compression, told)
