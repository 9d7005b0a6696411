"""Writes tables that come in parts."""

from __future__ import annotations

import json
import os
import re
import shutil
import sys
import tempfile
from collections.abc import Iterable, Iterator, Mapping
from contextlib import contextmanager
from importlib.util import find_spec
from itertools import chain
from pathlib import Path
from typing import IO

import duckdb
import pandas as pd

from vantrel.errors import ArgumentError, MissingPackageError
from vantrel.hints import argument, named
from vantrel.storage.files import STANDARD_STREAM, replacing
from vantrel.tables.csv_rows import header_line
from vantrel.tables.database import connect, quoted, rows_of
from vantrel.tables.files import compressing
from vantrel.tables.guard import guarded
from vantrel.tables.kinds import kind_to_write

# The rows of each row group of Parquet: what readers take into memory at a time.
_GROUP_ROWS = 50_000


def write_table(
    frames: Iterable[pd.DataFrame],
    path: Path,
    *,
    separator: str | None = None,
    csv_safe: bool = False,
    force: bool = True,
    notes: Mapping[str, str] | None = None,
) -> None:
    """Writes a table that comes in parts, whole or not at all.

    What is written depends on the rows alone, not on the parts they come in.

    Args:
        frames: At least one part; all have the same columns, of text.
        path: The end of its name tells how the table is written; ``-`` is standard output, as CSV.
        separator: What separates the cells of CSV; if None a tab where the name ends in .tsv, else
            a comma.
        csv_safe: Whether to put an apostrophe before each cell of CSV that a spreadsheet would run
            as a formula, and quotes around every value, so that none is split where other
            characters than commas separate.
        force: Whether a file is replaced that is there in the end.
        notes: What a Parquet file keeps beside the rows.

    Raises:
        VantrelError: The name is of a file of another kind, or a package is missing.
        OSError: The file cannot be written.
    """
    kind = kind_to_write(path)
    if csv_safe and kind.format != "csv":
        written = "Parquet" if kind.format == "parquet" else "JSON Lines"
        raise ArgumentError(
            f"{argument('csv_safe')} is for CSV, and {named(path)} is to be {written}: leave it"
            " out."
        )
    if kind.format == "parquet" and find_spec("pyarrow") is None:
        raise MissingPackageError.of(f"To write {named(path)}", "pyarrow", "parquet")
    is_standard = path == STANDARD_STREAM
    opening = _standard_output() if is_standard else replacing(path, binary=True, force=force)
    with opening as opened, compressing(opened, kind.compression) as file:
        if kind.format == "parquet":
            _write_parquet(frames, file, notes or {})
        elif kind.format == "jsonl":
            _write_jsonl(frames, file)
        else:
            write_csv(frames, file, separator or kind.separator or ",", safe=csv_safe)


@contextmanager
def _standard_output() -> Iterator[IO[bytes]]:
    yield sys.stdout.buffer
    sys.stdout.buffer.flush()


def write_csv(
    frames: Iterable[pd.DataFrame], file: IO[bytes], separator: str = ",", *, safe: bool = False
) -> None:
    """Writes CSV to an open file: missing values as empty cells, empty texts as ``""``."""
    options = f"FORMAT csv, HEADER false, DELIMITER {quoted(separator)}, QUOTE '\"', ESCAPE '\"'"
    if safe:
        options += ", FORCE_QUOTE *"
    with (
        tempfile.TemporaryDirectory(prefix="vantrel-") as folder,
        connect(Path(folder)) as connection,
    ):
        written = Path(folder, "part")
        for number, frame in enumerate(frames):
            part = guarded(frame) if safe else frame
            if number == 0:
                names = map(str, part.columns)
                file.write(header_line(names, separator, quoting=safe).encode())
            # The engine takes names that differ in case alone for one.
            columns = [f"c{place}" for place in range(part.shape[1])]
            connection.register("part", part.set_axis(columns, axis="columns"))
            texts = ", ".join(f"CAST({column} AS VARCHAR)" for column in columns)
            copying = f"COPY (SELECT {texts} FROM part) TO {quoted(str(written))} ({options})"
            with _telling_what_the_system_says():
                rows_of(connection, copying)
            with written.open("rb") as lines:
                shutil.copyfileobj(lines, file)


@contextmanager
def _telling_what_the_system_says() -> Iterator[None]:
    """Raises the error of the system where the engine cannot write a file."""
    try:
        yield
    except duckdb.IOException as error:
        number = re.search(r'"errno":"(\d+)"', str(error))
        if number is None:
            raise
        raise OSError(int(number[1]), os.strerror(int(number[1]))) from error


def _write_jsonl(frames: Iterable[pd.DataFrame], file: IO[bytes]) -> None:
    for frame in frames:
        texts = frame.astype(object).where(frame.notna(), None)
        for row in texts.to_dict("records"):
            file.write((json.dumps(row, ensure_ascii=False) + "\n").encode())


def regroup(frames: Iterable[pd.DataFrame], rows: int) -> Iterator[pd.DataFrame]:
    """Joins and cuts frames, so that each but the last has a given number of rows.

    At least one frame comes out, of no rows if there are none.
    """
    held: list[pd.DataFrame] = []
    count = 0
    for frame in frames:
        held.append(frame)
        count += len(frame)
        if count > rows:
            joined = pd.concat(held)
            for start in range(0, count - rows, rows):
                yield joined.iloc[start : start + rows]
            held = [joined.iloc[start + rows :]]
            count = len(held[0])
    if held:
        yield pd.concat(held)


def _write_parquet(
    frames: Iterable[pd.DataFrame], file: IO[bytes], notes: Mapping[str, str]
) -> None:
    import pyarrow as pa
    import pyarrow.parquet as pq

    groups = regroup(frames, _GROUP_ROWS)
    first = next(groups)
    schema = pa.schema([(str(column), pa.string()) for column in first.columns])
    schema = schema.with_metadata(dict(notes)) if notes else schema
    with pq.ParquetWriter(file, schema) as writer:
        for group in chain([first], groups):
            writer.write_table(pa.Table.from_pandas(group, schema, preserve_index=False))
