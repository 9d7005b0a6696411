"""Keeps in a folder of copies how they were made, without the secret and without any real value."""

from __future__ import annotations

from collections.abc import Mapping
from hashlib import blake2b
from pathlib import Path
from typing import Any, ClassVar, Literal

from vantrel.hints import named
from vantrel.replacing.leaks import Leak
from vantrel.replacing.people.report import Report
from vantrel.replacing.runs.asked import Asked
from vantrel.replacing.runs.opened import OpenedTable
from vantrel.replacing.runs.record import form_of
from vantrel.replacing.runs.secret import deciding_versions
from vantrel.sampling.record import Record
from vantrel.scale.run import differing
from vantrel.tables.copying.parquet_folder import CopiedFolder
from vantrel.wording import shown

_OF_CHECKS = b"the same secret?"  # keeps it apart from the digests of keys
_CHECK_BYTES = 16


class ReplaceRecord(Record, frozen=True, kw_only=True, forbid_unknown_fields=True):
    """How a folder of copies was made.

    Args:
        format: What the file is.
        schema_version: The version of its form.
        table: The name of the folder that was copied.
        rows: The number of rows.
        people_of_a_row: Of each person of a row the columns of the key, those of each attribute,
            those that were replaced, each with its attribute, and the attributes that stayed; ""
            is the only one.
        others: The actions of other columns.
        options: What else was asked for, by the option's name.
        versions: The versions that people depend on, by name.
        secret: What tells that another run has the same secret, and no more.
        files: Of each file that was copied its number of bytes and when it was changed.
        report: What came of all people; None while copies are still to be made.
        leaks: Who is still named in the copies.
        copies_sha256: Of each copy its SHA-256.
    """

    of: ClassVar[str] = "a folder of replaced people"

    format: Literal["vantrel-replace-folder"] = "vantrel-replace-folder"
    schema_version: Literal[1] = 1
    table: str
    rows: int
    people_of_a_row: dict[str, dict[str, Any]]
    others: dict[str, str]
    options: dict[str, Any]
    versions: dict[str, str]
    secret: str
    files: dict[str, str]
    report: Report | None = None
    leaks: tuple[Leak, ...] = ()
    copies_sha256: dict[str, str] | None = None

    @property
    def decisive(self) -> dict[str, Any]:
        """What decides what is made, by its name."""
        return {
            "people": list(self.people_of_a_row),  # in their order: what is told first counts
            **{
                f"{what} of {name!r}" if name else what: told
                for name, own in self.people_of_a_row.items()
                for what, told in _deciding(own).items()
            },
            **{f"column {column!r}": fate for column, fate in self.others.items()},
            **self.options,
            **self.versions,
            "secret": self.secret,
            "files": self.files,
        }

    def differences(self, now: ReplaceRecord) -> list[str]:
        """Tells in words in what another run differs from this one."""
        was, its = self.decisive, now.decisive
        told = ["the secret is another one"] if was.pop("secret") != its.pop("secret") else []
        told += _changes(was.pop("files"), its.pop("files"))
        return [*told, *differing(was, its)]


def record_of(table: OpenedTable[CopiedFolder], asked: Asked, secret: bytes) -> ReplaceRecord:
    """Notes how a folder is copied."""
    roles, copied = table.roles, table.copied
    return ReplaceRecord(
        table=shown(copied.path.name, 255),
        rows=sum(copied.rows),
        people_of_a_row={person.name: form_of(person) for person in roles.people},
        others={column: str(action) for column, action in table.others.items()},
        options={
            "scrub": list(table.asked.scrub),
            "place": asked.place,
            "phone_numbers": asked.ways.phone_numbers,
            "latin": asked.ways.latin,
        },
        versions=deciding_versions(),
        secret=blake2b(key=secret, person=_OF_CHECKS, digest_size=_CHECK_BYTES).hexdigest(),
        files={file.name: _state(file) for file in copied.files},
    )


def _deciding(person: Mapping[str, Any]) -> dict[str, Any]:
    """What decides who becomes of a person of each row; what is replaced follows from it."""
    rest = {what: told for what, told in person.items() if what not in ("columns", "replaced")}
    columns = person.get("columns", {})
    return rest | {f"columns for {attribute}": those for attribute, those in columns.items()}


def _state(file: Path) -> str:
    state = file.stat()
    return f"{state.st_size} {state.st_mtime_ns}"


def _changes(was: dict[str, str], now: dict[str, str]) -> list[str]:
    """Names a file that is another one than before, or is no longer there, or is new."""
    for name in dict.fromkeys((*was, *now)):
        if was.get(name) != now.get(name):
            how = "is gone" if name not in now else "is new" if name not in was else "has changed"
            return [f"file {named(name)} {how}"]
    return []
