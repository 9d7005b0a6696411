"""Tells by their names what kinds of tables files hold."""

from __future__ import annotations

from pathlib import Path
from typing import Literal, NamedTuple

from vantrel.errors import TableError
from vantrel.hints import named

Format = Literal["csv", "jsonl", "parquet"]
Compression = Literal["gzip", "zstd"]

_FORMATS: dict[str, Format] = {
    ".jsonl": "jsonl",
    ".ndjson": "jsonl",
    ".parquet": "parquet",
    ".pq": "parquet",
}
_SEPARATORS = {".tsv": "\t", ".tab": "\t"}
_COMPRESSIONS: dict[str, Compression] = {".gz": "gzip", ".zst": "zstd"}

_ARCHIVES = frozenset({".bz2", ".zip", ".xz", ".tar", ".tgz", ".7z", ".lz4", ".br"})
_SPREADSHEETS = frozenset({".xlsx", ".xls", ".xlsm", ".ods"})
_OTHERS = frozenset(
    """
    .json .xml .html .htm .yaml .yml .toml .sql .db .sqlite .sqlite3 .duckdb .feather .arrow .ipc
    .orc .avro .pkl .pickle .npy .npz .h5 .hdf5 .dta .sav .sas7bdat .pdf .doc .docx .odt .rtf .md
    .png .jpg .jpeg .svg .py .log
    """.split()
)


class Kind(NamedTuple):
    """What a file holds.

    Attributes:
        format: How rows are written.
        separator: What separates the cells of a row, where the name tells it.
        compression: How the whole is compressed, if it is.
    """

    format: Format
    separator: str | None = None
    compression: Compression | None = None


def kind_to_read(path: Path) -> Kind:
    """Tells the kind of a table that is to be read, if its name is of one."""
    end = path.suffix.lower()
    kind = _kind(path)
    if end in _ARCHIVES or (kind.compression and kind.format == "parquet"):
        raise TableError(f"Table {named(path)} is compressed: unpack it first.")
    if end in _SPREADSHEETS:
        raise TableError(f"Table {named(path)} is a spreadsheet's file: save it as CSV UTF-8.")
    if end in _OTHERS:
        raise TableError(
            f"Table {named(path)} is by its name no table: give a .csv, .tsv, .jsonl or .parquet"
            " file, or rename it if it is one."
        )
    return kind


def kind_to_write(path: Path) -> Kind:
    """Tells the kind of a table that is to be written, if its name is of one."""
    end = path.suffix.lower()
    kind = _kind(path)
    is_packed_twice = bool(kind.compression and kind.format == "parquet")
    if is_packed_twice or end in _ARCHIVES | _SPREADSHEETS | _OTHERS:
        raise TableError(
            f"Tables are not written as {end} files such as {named(path)}: name a .csv, .tsv,"
            " .jsonl or .parquet file."
        )
    return kind


def is_named_as_table(path: Path) -> bool:
    """Tells whether a name ends as those of the tables that are read or written."""
    return path.suffix.lower() in {".csv", *_FORMATS, *_SEPARATORS, *_COMPRESSIONS}


def _kind(path: Path) -> Kind:
    compression = _COMPRESSIONS.get(path.suffix.lower())
    end = (path.with_suffix("") if compression else path).suffix.lower()
    return Kind(_FORMATS.get(end, "csv"), _SEPARATORS.get(end), compression)
