"""What a record tells of a copy."""

from __future__ import annotations

from pathlib import Path
from typing import Any, Literal

import msgspec

from vantrel.errors import RecordError
from vantrel.hints import did_you_mean, listed, named, why_unreadable
from vantrel.sampling.record import MOST_BYTES, decoded_record, record_path, sha256_of
from vantrel.storage.files import read_whole
from vantrel.storage.head import Head
from vantrel.tables.sources import parts_of

_FORMATS = ("vantrel-replace", "vantrel-replace-folder")
_KEEP = "keep"


class FoundLeak(msgspec.Struct, frozen=True):
    """Cells in which somebody was still named when the copy was made."""

    column: str
    kind: str
    cells: int


class OfPerson(msgspec.Struct, frozen=True):
    """One person of each row.

    Args:
        key: The columns that tell who is who.
        replaced: The attribute of each column in which she was replaced.
        columns: Her columns by their attribute, also those that were only read.
    """

    key: list[str]
    replaced: dict[str, str]
    columns: dict[str, list[str]] = {}


class CopyRecord(msgspec.Struct, frozen=True, kw_only=True):
    """How a copy was made, as far as a report asks for it.

    Args:
        format: What the file is.
        schema_version: The version of its form.
        table: The name of the original.
        rows: The number of rows.
        key: The key of the person of a row, as :class:`OfPerson` has it, where a row has one.
        replaced: What was replaced of her, likewise.
        columns: Her columns, likewise.
        people_of_a_row: The same of each person by her name, where a row has several.
        others: What was done with further columns.
        options: What else was asked for, by the option's name.
        leaks: Who was still named.
        versions: The versions that decide who people become.
        file_sha256: The SHA-256 of the file of the copy; None where it is none.
        copies_sha256: The same of each file of a folder, by its name.
        primary_key: The columns that tell which rows belong together, in tables of databases.
    """

    format: Literal["vantrel-replace", "vantrel-replace-folder"]
    schema_version: Literal[1]
    table: str
    rows: int
    key: list[str] = []
    replaced: dict[str, str] = {}
    columns: dict[str, list[str]] = {}
    people_of_a_row: dict[str, OfPerson] = {}
    others: dict[str, str]
    options: dict[str, Any]
    leaks: list[FoundLeak]
    versions: dict[str, str]
    file_sha256: str | None = None
    copies_sha256: dict[str, str] | None = None
    primary_key: list[str] = []

    @property
    def people(self) -> dict[str, OfPerson]:
        """The people of each row by their names, which is "" for the only one."""
        return self.people_of_a_row or {"": OfPerson(self.key, self.replaced, self.columns)}

    @property
    def asked(self) -> list[str]:
        """The columns of people, of keys, and those that had an action."""
        own = (column for each in self.people.values() for column in (*each.key, *each.replaced))
        return list(dict.fromkeys([*own, *self.primary_key, *self.others]))

    @property
    def actions(self) -> dict[str, str]:
        """What was done with each further column that was changed: ``shift`` of ``shift:180``."""
        kinds = {column: action.partition(":")[0] for column, action in self.others.items()}
        return {column: kind for column, kind in kinds.items() if kind != _KEEP}

    @property
    def changed(self) -> set[str]:
        """The columns of which something was changed."""
        replaced = {column for each in self.people.values() for column in each.replaced}
        return {*replaced, *self.options.get("scrub", ()), *self.actions}

    def is_changed(self, copy: Path) -> bool | None:
        """Tells whether a copy is another one than was made; None where the record does not."""
        if self.copies_sha256:
            return self.copies_sha256 != {file.name: sha256_of(file) for file in parts_of(copy)}
        return None if self.file_sha256 is None else self.file_sha256 != sha256_of(copy)


class _DatabaseRecord(msgspec.Struct, frozen=True):
    """How the people of the tables of a database were replaced."""

    format: Literal["vantrel-replace-database"]
    schema_version: Literal[1]
    tables: list[CopyRecord]


def read_copy_record(output: Path) -> CopyRecord | None:
    """Reads the record beside a copy; None where there is none, or that of something else.

    Raises:
        RecordError: It is a record of a copy that this version does not know.
    """
    path = record_path(output)
    try:
        text = read_whole(path, MOST_BYTES)
        if msgspec.json.decode(text, type=Head).format not in _FORMATS:
            return None
    except (OSError, msgspec.DecodeError, RecursionError):
        return None  # whoever reads the record of a sample tells what is wrong
    return decoded_record(CopyRecord, text, path, "a copy")


def read_database_record(path: Path, table: str) -> CopyRecord:
    """Reads what the record of a database that was replaced in place tells of a table.

    Raises:
        RecordError: It is no such record that this version knows, or does not tell of the table.
    """
    try:
        text = read_whole(path, MOST_BYTES)
    except OSError as error:
        raise RecordError(f"{named(path)} {why_unreadable(path, error)}") from error
    record = decoded_record(_DatabaseRecord, text, path, "a database whose people were replaced")
    tables = {each.table: each for each in record.tables}
    if table not in tables:
        raise RecordError(
            f"{named(path)} tells of no table {table!r}.{did_you_mean(table, tables)} Its tables"
            f" are: {listed([*tables])}."
        )
    return tables[table]
