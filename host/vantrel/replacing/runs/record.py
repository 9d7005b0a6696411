"""Keeps beside a copy how it was made, without the secret and without any real value."""

from __future__ import annotations

import json
from collections.abc import Mapping, Sequence
from pathlib import Path
from typing import TYPE_CHECKING, Any

from vantrel.replacing.runs.secret import deciding_versions
from vantrel.sampling.record import record_path
from vantrel.storage.together import Opener
from vantrel.wording import shown

if TYPE_CHECKING:
    from vantrel.replacing.columns.person import Person
    from vantrel.replacing.people.report import Report
    from vantrel.replacing.runs.asked import Asked
    from vantrel.replacing.runs.outcome import Replaced

FORMAT = "vantrel-replace"

_SCHEMA_VERSION = 1


def write_record(opened: Opener, output: Path, record: Mapping[str, Any]) -> None:
    """Writes the record of a copy beside it."""
    write_form(opened, record_path(output), record)


def write_form(opened: Opener, path: Path, record: Mapping[str, Any]) -> None:
    """Writes a record to a file."""
    file = opened(path)
    file.write(json.dumps(record, ensure_ascii=False, indent=2) + "\n")
    file.flush()


def _people(people: Sequence[Person]) -> dict[str, Any]:
    """Tells of the person of each row; under her name where a row has several."""
    if len(people) == 1:
        return form_of(people[0])
    return {"people_of_a_row": {person.name: form_of(person) for person in people}}


def form_of(person: Person) -> dict[str, Any]:
    """Tells of a person of each row which columns are hers, and what becomes of them."""
    told = {"of": person.of, "household": person.household}
    return {
        "key": list(person.key),
        **{name: value for name, value in told.items() if value},
        "columns": {attribute: list(columns) for attribute, columns in person.columns.items()},
        "replaced": person.replaced,
        "kept": sorted(person.kept),
    }


def database_record_of(
    tables: Sequence[Replaced], keys: Sequence[Sequence[str]], asked: Asked, report: Report
) -> dict[str, Any]:
    """Tells how the people of the tables of a database were replaced, without its address.

    Args:
        tables: What became of each table.
        keys: The columns of the primary key of each.
        asked: What was asked for.
        report: What came of all.
    """
    return {
        "format": f"{FORMAT}-database",
        "schema_version": _SCHEMA_VERSION,
        "tables": [
            record_of(table, asked, report) | {"primary_key": list(key)}
            for table, key in zip(tables, keys, strict=True)
        ],
    }


def record_of(table: Replaced, asked: Asked, report: Report) -> dict[str, Any]:
    """Tells how the people of a table were replaced."""
    return {
        "format": FORMAT,
        "schema_version": _SCHEMA_VERSION,
        "table": shown(table.path.name, 255),
        "rows": table.rows,
        "people": report.people,
        **_people(table.roles.people),
        "others": {column: str(action) for column, action in table.others.items()},
        "options": {
            "scrub": list(table.asked.scrub),
            "place": asked.place,
            "no_real": asked.no_real,
            "phone_numbers": asked.ways.phone_numbers,
            "latin": asked.ways.latin,
        },
        "leaks": [
            {"column": leak.column, "kind": leak.kind, "cells": leak.cells} for leak in table.leaks
        ],
        "versions": deciding_versions(),
    }
