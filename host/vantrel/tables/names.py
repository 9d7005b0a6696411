"""Tells by their names files that are tables of other kinds than are read and written here."""

from __future__ import annotations

from pathlib import Path

from vantrel.tables.errors import TableError

_COMPRESSED = frozenset({".gz", ".bz2", ".zip", ".xz", ".zst", ".tar"})
_SPREADSHEETS = frozenset({".xlsx", ".xls", ".ods"})


def refuse_to_read(path: Path) -> None:
    """Makes sure that a file to be read is by its name neither compressed nor a spreadsheet's.

    Raises:
        TableError: It is.
    """
    kind = path.suffix.lower()
    if kind in _COMPRESSED:
        raise TableError(f"Table {path} is compressed: unpack it first.")
    if kind in _SPREADSHEETS:
        raise TableError(f"Table {path} is a spreadsheet's file: save it as CSV UTF-8.")


def refuse_to_write(path: Path) -> None:
    """Makes sure that a file to be written is named as what it will be.

    Raises:
        TableError: Its name is of a compressed file or of a spreadsheet's.
    """
    kind = path.suffix.lower()
    if kind in _COMPRESSED | _SPREADSHEETS:
        raise TableError(
            f"Tables are not written as {kind} files such as {path}: name a .csv or .parquet file."
        )
