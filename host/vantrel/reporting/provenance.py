"""How a sample was made, in words."""

from __future__ import annotations

import json
from dataclasses import dataclass
from typing import Any

from vantrel.sampling.record import SampleRecord
from vantrel.versions import differences, versions

# The options whose names do not tell a reader enough.
_OPTIONS = {
    "block_rows": "Rows a block",
    "csv_safe": "Safe for spreadsheets",
    "conditions_sha256": "SHA-256 of the conditions",
}


@dataclass(frozen=True)
class Version:
    """A version that the rows depend on, where the sample was made and here; None if unknown."""

    name: str
    made_with: str
    here: str | None

    @property
    def differs(self) -> bool:
        """Whether another one is installed here."""
        return self.here is not None and self.here != self.made_with


@dataclass(frozen=True)
class Provenance:
    """How a sample was made.

    Args:
        seed: The seed that it was made with.
        conditions: The table of conditions that it was made for, if there was one.
        facts: What is known, each with its name.
        versions: The versions that the rows depend on.
        differences: What the versions that differ may change, a sentence each.
        rows_now: The rows of the table if they are not as many as were made, else None.
        was_changed: Whether the table is another one than was made; None if that is not known, as
            only files have a SHA-256 to compare.
    """

    seed: int
    conditions: str | None
    facts: tuple[tuple[str, str], ...]
    versions: tuple[Version, ...]
    differences: tuple[str, ...]
    rows_now: int | None
    was_changed: bool | None


def provenance(record: SampleRecord, rows: int, sha256: str | None = None) -> Provenance:
    """Tells how a sample was made.

    Args:
        record: What was kept beside the sample.
        rows: The rows that it has now.
        sha256: The SHA-256 that its file has now, if that is known.
    """
    here = versions()
    facts = [
        ("Model", record.model),
        ("Seed", str(record.seed)),
        ("Rows", f"{record.rows:,}"),
        *((_words(name), _option(value)) for name, value in sorted(record.options.items())),
        ("SHA-256 of the model", record.model_sha256),
    ]
    return Provenance(
        record.seed,
        record.options.get("conditions"),
        tuple(facts),
        tuple(Version(name, made, here.get(name)) for name, made in record.versions.items()),
        tuple(differences(record.versions)),
        None if record.rows == rows else rows,
        _was_changed(record, rows, sha256),
    )


def _was_changed(record: SampleRecord, rows: int, sha256: str | None) -> bool | None:
    if record.rows != rows:
        return True
    is_known = sha256 is not None and record.file_sha256 is not None
    return sha256 != record.file_sha256 if is_known else None


def _words(option: str) -> str:
    return _OPTIONS.get(option) or option.replace("_", " ").capitalize()


def _option(value: Any) -> str:
    if isinstance(value, bool):
        return "yes" if value else "no"
    if value in (None, []):
        return "none"
    if isinstance(value, int):
        return f"{value:,}"
    if isinstance(value, list):
        return ", ".join(map(str, value))
    return value if isinstance(value, str) else json.dumps(value, ensure_ascii=False)
