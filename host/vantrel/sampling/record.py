"""Keeps beside a sample, or another table that was made, how that was done."""

from __future__ import annotations

import hashlib
import json
import os
from pathlib import Path
from typing import IO, Annotated, Any, ClassVar, Literal, get_args

import msgspec
import pandas as pd

from vantrel.errors import RecordError
from vantrel.hints import named, why_unreadable
from vantrel.rows import Ways
from vantrel.sampling.blocks import Plan
from vantrel.sampling.expected import Expected, expected_of
from vantrel.storage.files import read_whole, replacing
from vantrel.storage.head import Head, later_form
from vantrel.storage.models import LoadedModel
from vantrel.versions import versions
from vantrel.wording import shown

MOST_BYTES = 2**24  # of a folder of a hundred thousand files


class Record(msgspec.Struct, frozen=True, kw_only=True, forbid_unknown_fields=True):
    """How a table was made.

    Attributes:
        of: What it is the record of, as errors say it.
    """

    of: ClassVar[str]


class SampleRecord(Record, frozen=True, kw_only=True, forbid_unknown_fields=True):
    """How a sample was made: with it and the model file, the sample can be made again.

    Args:
        format: What the file is.
        schema_version: The version of its form.
        model: The name of the model file, without its folder.
        model_sha256: The SHA-256 of the model file in hexadecimal digits.
        rows: The number of rows.
        seed: The seed, drawn or given.
        columns: The sample's columns by the attribute that each holds.
        options: What else was asked for, by the option's name.
        versions: The versions that the rows depend on, by name.
        expected: What the model was to give; None in records of schema 1.
        file_sha256: The SHA-256 of the sample's file; None for a folder and in those records.
    """

    of: ClassVar[str] = "a sample"

    format: Literal["vantrel-sample"] = "vantrel-sample"
    schema_version: Literal[1, 2] = 2
    model: str
    model_sha256: str
    rows: Annotated[int, msgspec.Meta(ge=0)]
    seed: Annotated[int, msgspec.Meta(ge=0)]
    columns: dict[str, str]
    options: dict[str, Any]
    versions: dict[str, str]
    expected: Expected | None = None
    file_sha256: str | None = None


def record_of(
    loaded: LoadedModel, plan: Plan, conditions: pd.DataFrame | None = None, /, **options: Any
) -> SampleRecord:
    """Notes how a sample is made; the options are those beside the plan's own."""
    ways: Ways = loaded.model.meta.ways or Ways()
    if ways.locales and not plan.exact:
        options["locales"] = ways.locales
    return SampleRecord(
        model=shown(loaded.name, 255),
        model_sha256=loaded.sha256,
        rows=plan.rows,
        seed=plan.seed,
        columns=dict(loaded.model.params),
        options={
            "unique": list(plan.unique),
            "block_rows": plan.block_rows,
            "exact": plan.exact,
            **options,
        },
        versions=versions(),
        expected=expected_of(loaded.model, plan, conditions),
    )


def sha256_of(path: Path) -> str | None:
    """The SHA-256 of a file; None of what is none, such as a folder or a pipe."""
    if not path.is_file():
        return None
    with path.open("rb") as file:
        return hashlib.file_digest(file, "sha256").hexdigest()


def sha256_of_written(file: IO[bytes]) -> str:
    """The SHA-256 of what was written to a file that has no name yet, and is left as it is."""
    file.flush()
    with os.fdopen(os.dup(file.fileno()), "rb") as written:  # from the start to the same end
        written.seek(0)
        return hashlib.file_digest(written, "sha256").hexdigest()


def record_path(output: Path, *, unfinished: bool = False) -> Path:
    """Where the record of a table is kept: beside a file, and inside a folder of files.

    Readers of Parquet folders skip names that begin with an underscore. That of a folder some files
    of which are still to be made is another one.
    """
    if output.is_dir():
        return output / ("_making.json" if unfinished else "_made.json")
    return output.with_name(f"{output.name}.made.json")


def write_record(record: Record, output: Path, *, unfinished: bool = False) -> None:
    """Writes the record of a table, whole or not at all, where :func:`record_path` tells."""
    form = msgspec.to_builtins(record)
    with replacing(record_path(output, unfinished=unfinished)) as file:
        file.write(json.dumps(form, ensure_ascii=False, allow_nan=False, indent=2) + "\n")


def read_record(output: Path, *, unfinished: bool = False) -> SampleRecord | None:
    """Reads the record of a sample; see :func:`read_record_of`."""
    return read_record_of(SampleRecord, output, unfinished=unfinished)


def read_record_of[R: Record](kind: type[R], output: Path, *, unfinished: bool = False) -> R | None:
    """Reads a record of a kind where :func:`record_path` tells; None if there is none.

    Raises:
        RecordError: There is a file in its place that is no such record.
    """
    path = record_path(output, unfinished=unfinished)
    try:
        text = read_whole(path, MOST_BYTES)
    except (FileNotFoundError, NotADirectoryError):
        return None
    except OSError as error:
        raise RecordError(f"{named(path)} {why_unreadable(path, error)}") from error
    return decoded_record(kind, text, path, kind.of)


def decoded_record[R: msgspec.Struct](kind: type[R], text: bytes, path: Path, of: str) -> R:
    """Makes a record of a kind of the content of a file; ``of`` is what an error says.

    Raises:
        RecordError: It is no such record, or of a later form.
    """
    try:
        _check_head(kind, msgspec.json.decode(text, type=Head), path, of)
        return msgspec.json.decode(text, type=kind)
    except (msgspec.DecodeError, RecursionError) as error:
        raise RecordError(
            f"{named(path)} is no record of {of} that this version knows ({shown(error)}):"
            " move it away."
        ) from error


def _check_head(kind: type[msgspec.Struct], head: Head, path: Path, of: str) -> None:
    known = {each.name: get_args(each.type) for each in msgspec.structs.fields(kind)}
    if head.format not in (None, *known["format"]):
        raise RecordError(
            f"{named(path)} is no record of {of} (its format is {shown(repr(head.format))}):"
            " move it away."
        )
    if later := later_form(head.schema_version, max(known["schema_version"])):
        raise RecordError(f"{named(path)} cannot be used: {later}.")
