"""Copies of the files of a folder, in which people are replaced."""

from __future__ import annotations

from collections.abc import Iterable, Iterator
from contextlib import contextmanager
from dataclasses import dataclass, field, replace
from pathlib import Path

import msgspec
import pandas as pd
import pyarrow as pa
from pyarrow.parquet import read_metadata

from vantrel.errors import ReplaceError
from vantrel.hints import named
from vantrel.replacing.leaks import Leak
from vantrel.replacing.leaks.search import people_first
from vantrel.replacing.others.changed import Lost
from vantrel.scale.facts import facts_of
from vantrel.scale.joining import Checked
from vantrel.scale.run import FileOfRun
from vantrel.scale.shared import Shared
from vantrel.storage.files import replacing
from vantrel.tables.copying.parquet_folder import opened_file

_NOTE = "vantrel.found"


@dataclass(frozen=True)
class CopiedFile(FileOfRun):
    """The copy of a file, of the same name.

    Attributes:
        source: The file.
        folder: Where the copy goes.
        run: Of which run it is.
        number: The number of the file.
        row_count: The number of its rows.
    """

    source: Path
    folder: Path
    run: str
    number: int
    row_count: int

    @property
    def path(self) -> Path:
        return self.folder / self.source.name

    @property
    def rows(self) -> int:
        return self.row_count

    @property
    def place(self) -> str:
        return f"{self.run}/{self.number}"

    def everywhere(self) -> CopiedFile:
        """Gives the same with the paths under which all workers see it."""
        return replace(self, source=self.source.resolve(), folder=self.folder.resolve())


@dataclass(frozen=True)
class Found:
    """What was found in the rows of a table.

    Attributes:
        leaks: Who is still named.
        lost: The cells of each column that held no date.
        has_people: Whether somebody was replaced in them.
    """

    leaks: list[Leak] = field(default_factory=list)
    lost: dict[str, Lost] = field(default_factory=dict)
    has_people: bool = False


def write_copy(file: CopiedFile, answers: pd.DataFrame, _checked: Checked, shared: Shared) -> None:
    """Writes a copy, which keeps what was found in its rows.

    Args:
        file: The copy.
        answers: What is known of its keys.
        _checked: Is there when it is sure that the run may go on.
        shared: What all workers are told.
    """
    people = shared.people()
    people.know(facts_of(answers, people.places), shared.roles.replaced.values())
    passing = shared.passing(people)

    def notes() -> dict[str, str]:
        found = Found(passing.leaks(), dict(passing.lost), passing.has_people)
        return file.note | {_NOTE: msgspec.json.encode(found).decode()}

    with (
        _naming(file.source),
        opened_file(file.source) as copied,
        replacing(file.path, binary=True, private_as=file.source) as target,
    ):
        copied.write(target, copied.columns, passing, notes=notes)


def refuse_types(files: Iterable[Path], schemas: Iterable[pa.Schema], shared: Shared) -> None:
    """Refuses columns that cannot hold what is made for them, before a row is read.

    Args:
        files: The files.
        schemas: The types of the columns of each.
        shared: What all workers are told.

    Raises:
        ReplaceError: A file has such a column.
    """
    tried = set()
    for file, schema in zip(files, schemas, strict=True):
        if schema not in tried:
            tried.add(schema)
            none = [column.combine_chunks() for column in schema.empty_table().columns]
            with _naming(file):
                shared.passing(shared.people())(pa.RecordBatch.from_arrays(none, schema=schema))


@contextmanager
def _naming(file: Path) -> Iterator[None]:
    """Tells in which file something cannot be replaced."""
    try:
        yield
    except ReplaceError as error:
        raise ReplaceError(f"File {named(file.name)}: {error}") from error


def found_in(files: Iterable[CopiedFile]) -> Found:
    """Gives what was found in the rows of all copies, numbered from the first one's on."""
    leaks: dict[tuple[str, str], Leak] = {}
    lost: dict[str, Lost] = {}
    before, has_people = 0, False
    for file in files:
        note = read_metadata(file.path).metadata[_NOTE.encode()]
        found = msgspec.json.decode(note, type=Found)
        for leak in found.leaks:
            known = leaks.setdefault((leak.column, leak.kind), Leak(leak.column, leak.kind, 0, ()))
            known.add(leak.cells, (row + before for row in leak.rows))
        for column, cells in found.lost.items():
            lost.setdefault(column, Lost()).add(cells.cells, (row + before for row in cells.rows))
        before += file.rows
        has_people |= found.has_people
    return Found(people_first(leaks.values()), lost, has_people)
