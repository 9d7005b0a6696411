"""Replaces the people of files, in memory that grows with the people alone."""

from __future__ import annotations

from collections.abc import Callable, Collection, Iterable, Iterator, Mapping, Sequence
from contextlib import AbstractContextManager, ExitStack, contextmanager, nullcontext, suppress
from dataclasses import dataclass
from pathlib import Path

import pandas as pd
import pyarrow as pa

from vantrel.detection.values import SAMPLE_SIZE
from vantrel.errors import ArgumentError, LeakError, OverwriteError
from vantrel.hints import argument, did_you_mean, listed, named
from vantrel.replacing.frames import excerpt
from vantrel.replacing.leaks import Leak
from vantrel.replacing.notes import notes_on_people, notes_on_table
from vantrel.replacing.passing import Passing
from vantrel.replacing.people import People, Report, Table
from vantrel.replacing.record import write_record
from vantrel.replacing.roles import Roles, find_roles, refuse_scrub
from vantrel.replacing.secret import checked_secret, read_or_make_secret
from vantrel.sampling.record import record_path
from vantrel.storage.files import refuse_missing_folder, refuse_overwriting, replacing
from vantrel.tables.copying import Copied, open_copied
from vantrel.tables.kinds import Compression, Format, kind_to_write
from vantrel.util.locale.faker_locales import DEFAULT_LOCALE

_FORMATS: dict[Format, str] = {"csv": "CSV", "jsonl": "JSON Lines", "parquet": "Parquet"}

# For each table, or for all of them under None: the columns of attributes, and those of the key.
type ColumnsOfTables = Mapping[str | None, Mapping[str, Sequence[str]]]
type KeysOfTables = Mapping[str | None, Sequence[str]]

# From what is done and the number of rows, where it is known, to what is told of further rows.
type Progress = Callable[[str, int | None], AbstractContextManager[Callable[[int], object]]]


@dataclass(frozen=True)
class Asked:
    """What is asked of a run, besides its tables.

    Args:
        keys: The columns of the key, of each table by its name, or of all under None.
        columns: The columns of attributes that are not to be found, likewise.
        keep: Attributes that stay as they are.
        scrub: Columns of other things in which the names of the row's person are replaced, too.
        place: The country, or locale of Faker, of the people for whom no table tells one.
        no_real: Whether nobody gets the full name or the telephone number of a real person.
        fail_on_leak: Whether nothing is written where somebody is still named.
    """

    keys: KeysOfTables
    columns: ColumnsOfTables
    keep: Collection[str] = ()
    scrub: Sequence[str] = ()
    place: str = DEFAULT_LOCALE
    no_real: bool = False
    fail_on_leak: bool = False


@dataclass(frozen=True)
class Replaced:
    """A table whose people were replaced.

    Attributes:
        path: The table.
        output: The copy.
        roles: What its columns were taken for.
        rows: The number of its rows.
        leaks: Who is still named in it.
        notes: What is to be told of it.
    """

    path: Path
    output: Path
    roles: Roles
    rows: int
    leaks: list[Leak]
    notes: list[str]


@dataclass(frozen=True)
class Outcome:
    """What came of a run.

    Attributes:
        tables: The tables, in the order in which they were given.
        report: What came of all of them.
        notes: What is to be told of all of them.
    """

    tables: list[Replaced]
    report: Report
    notes: list[str]


def replace_files(
    inputs: Sequence[Path],
    output: Path,
    asked: Asked,
    *,
    secret_file: Path | None = None,
    people: Path | None = None,
    separator: str | None = None,
    encoding: str | None = None,
    force: bool = False,
    progress: Progress,
) -> Outcome:
    """Copies tables with their people replaced, and notes beside each copy how it was made.

    All copies take their names at the end; if anything fails before, none is there.

    Args:
        inputs: Files of CSV or Parquet, by the ends of their names.
        output: The copy, or the folder of the copies where there are several tables or it is there.
        asked: What else is asked for.
        secret_file: The file with the secret, made if it is not there. If None, the secret is that
            of the environment, or one that nobody ever knows.
        people: A table with the genders and countries of people, which is only read.
        separator: What separates the cells of CSV; found if None.
        encoding: The encoding of CSV.
        force: Whether files that are there are overwritten.
        progress: What is told how far the rows are.

    Raises:
        VantrelError: A table, the secret or what is asked for cannot be used.
        LeakError: Somebody is still named, where that is to be an error.
        OSError: A copy cannot be written.
    """
    read_only = [each for each in (secret_file, people) if each]
    outputs = _outputs(inputs, output)
    _refuse_unknown_tables([*inputs, *read_only], asked)
    refuse_missing_folder(output)
    for copy in (*outputs, *map(record_path, outputs)):
        refuse_overwriting(copy, *inputs, *read_only, force=force)
    with ExitStack() as stack:
        tables = [
            _opened(stack, each, copy, asked, separator, encoding)
            for each, copy in zip(inputs, outputs, strict=True)
        ]
        _refuse_unknown_scrub(tables, asked.scrub)
        first = [people] if people else []
        told = [_opened(stack, each, None, asked, separator, encoding) for each in first]
        secret = checked_secret(None) if secret_file is None else read_or_make_secret(secret_file)
        who = People(secret, place=asked.place, no_real=asked.no_real)
        _learn(who, [*told, *tables], progress)
        with _made_if_missing(output) if len(inputs) > 1 else nullcontext():
            outcome = _copy_all(who, tables, asked, progress, force=force)
    for replaced in outcome.tables:
        write_record(replaced, asked, outcome.report)
    return outcome


@dataclass(frozen=True)
class _Table:
    """A table of a run; without an output it is only read."""

    copied: Copied
    roles: Roles
    output: Path | None
    compression: Compression | None

    @property
    def name(self) -> str:
        return str(self.copied.path)


def _opened(
    stack: ExitStack,
    path: Path,
    output: Path | None,
    asked: Asked,
    separator: str | None,
    encoding: str | None,
) -> _Table:
    copied = stack.enter_context(open_copied(path, separator, encoding))
    compression = None
    if output is not None:
        kind = kind_to_write(output)
        if kind.format != copied.format:
            raise ArgumentError(
                f"Table {named(path)} is {_FORMATS[copied.format]}, and {named(output)} by its name"
                f" {_FORMATS[kind.format]}: a copy is as its table."
            )
        compression = kind.compression
    roles = find_roles(
        _excerpt(copied),
        key=_of_table(asked.keys, path),
        columns=_of_table(asked.columns, path),
        keep=asked.keep,
        name=str(path),
        is_only_read=output is None,
    )
    return _Table(copied, roles, output, compression)


def _excerpt(copied: Copied) -> pd.DataFrame:
    """Gives as many rows of a table as tell what its columns are."""
    found: list[pa.RecordBatch] = []
    for batch in copied.batches(copied.columns):
        found.append(batch)
        if sum(each.num_rows for each in found) >= SAMPLE_SIZE:
            break
    if not found:
        return pd.DataFrame(columns=list(copied.columns))
    return excerpt(pa.Table.from_batches(found))


def _of_table[T](asked: Mapping[str | None, T], path: Path) -> T | None:
    """Gives what is asked of a table by its name, or else of all."""
    return next((asked[name] for name in (*_names(path), None) if name in asked), None)


def _names(path: Path) -> tuple[str, ...]:
    """What a table may be called: its file, with or without the ends of its name."""
    return path.name, path.name.split(".")[0]


def _refuse_unknown_tables(paths: Sequence[Path], asked: Asked) -> None:
    known = dict.fromkeys(name for path in paths for name in _names(path))
    for name in (*asked.keys, *asked.columns):
        if name is not None and name not in known:
            raise ArgumentError(
                f"There is no table {name!r}.{did_you_mean(name, known)} Tables are:"
                f" {listed([path.name for path in paths])}."
            )


def _refuse_unknown_scrub(tables: Sequence[_Table], scrub: Sequence[str]) -> None:
    """Refuses to scrub what no table has, or what one replaces."""
    everywhere = dict.fromkeys(column for table in tables for column in table.copied.columns)
    for table in tables:
        own = [column for column in scrub if column in table.copied.columns]
        unknown = [column for column in scrub if column not in everywhere]
        refuse_scrub(list(everywhere), table.roles, [*own, *unknown])


def _outputs(inputs: Sequence[Path], output: Path) -> list[Path]:
    """Names the copy of each table."""
    if len(inputs) == 1 and not output.is_dir():
        return [output]
    if output.exists() and not output.is_dir():
        raise OverwriteError(
            f"{named(output)} is there and no folder: several copies go into a folder."
        )
    names = [path.name for path in inputs]
    for name in names:
        if names.count(name) > 1:
            raise ArgumentError(
                f"Two tables are called {named(name)}, and so would be their copies: copy them into"
                " two folders, one after the other, with one secret."
            )
    return [output / name for name in names]


@contextmanager
def _made_if_missing(folder: Path) -> Iterator[None]:
    """Makes a folder for copies, and takes it away if none comes into it."""
    is_made = not folder.exists()
    if is_made:
        folder.mkdir()
    try:
        yield
    except BaseException:
        if is_made:
            with suppress(OSError):
                folder.rmdir()
        raise


def _learn(who: People, tables: Sequence[_Table], progress: Progress) -> None:
    with progress("Reading", None) as further:
        for table in tables:
            for batch in table.copied.batches(table.roles.needed):
                who.learn(batch, table.roles, table.name)
                further(batch.num_rows)
    who.settle()


def _copy_all(
    who: People, tables: Sequence[_Table], asked: Asked, progress: Progress, *, force: bool
) -> Outcome:
    """Writes all copies, which take their names at the end if nothing has failed."""
    rows = sum(who.tables[table.name].rows for table in tables if table.name in who.tables)
    with ExitStack() as copies:
        with progress("Replacing", rows) as further:
            passed = [_copy(copies, who, table, asked.scrub, further, force) for table in tables]
        report = who.finish()
        replaced = [
            _replaced(table, passing, report) for table, passing in zip(tables, passed, strict=True)
        ]
        if asked.fail_on_leak:
            _refuse_leaks(replaced)
    return Outcome(replaced, report, list(notes_on_people(report)))


def _copy(
    copies: ExitStack,
    who: People,
    table: _Table,
    scrub: Sequence[str],
    further: Callable[[int], object],
    force: bool,
) -> Passing:
    """Writes the copy of a table, which takes its name when ``copies`` are closed."""
    copied = table.copied
    passing = Passing(who, table.roles, [each for each in scrub if each in copied.columns])

    def told(batch: pa.RecordBatch) -> dict[str, pa.Array]:
        made = passing(batch)
        further(batch.num_rows)
        return made

    opened = replacing(table.output, binary=True, force=force, private_as=copied.path)
    copied.write(copies.enter_context(opened), copied.columns, told, compression=table.compression)
    return passing


def _replaced(table: _Table, passing: Passing, report: Report) -> Replaced:
    leaks = passing.leaks()
    met = report.tables.get(table.name, Table())
    notes = list(notes_on_table(table.roles, met, leaks))
    return Replaced(table.copied.path, table.output, table.roles, passing.rows, leaks, notes)


def _refuse_leaks(tables: Iterable[Replaced]) -> None:
    leaks = [
        f"{named(table.path)}: {leak}"
        for table in tables
        for leak in table.leaks
        if leak.kind == "person"
    ]
    if leaks:
        raise LeakError(
            f"Nothing was written, as people are still named. {'; '.join(leaks)}. Add"
            f" {argument('scrub', ...)} with these columns, or leave them out of the tables."
        )
