"""Samples into a file or a database, in memory that does not grow with the rows."""

from __future__ import annotations

from collections.abc import Callable, Iterable, Iterator
from contextlib import AbstractContextManager, contextmanager
from functools import partial
from pathlib import Path
from typing import Any, NamedTuple

import pandas as pd
from msgspec.structs import replace

from vantrel.databases.address import Address
from vantrel.errors import ArgumentError
from vantrel.hints import argument, named
from vantrel.sampling.blocks import Plan, sample_blocks
from vantrel.sampling.record import (
    SampleRecord,
    read_record,
    record_of,
    record_path,
    sha256_of,
    write_record,
)
from vantrel.sampling.whole import beside, plan_sample, refuse_neither_or_both
from vantrel.storage.files import STANDARD_STREAM, is_special, refuse_overwriting
from vantrel.storage.models import LoadedModel, read_model
from vantrel.tables import open_table, write_table
from vantrel.wording import shown

# From the number of rows to what is to be told of each number of further rows.
type Progress = Callable[[int], AbstractContextManager[Callable[[int], object]]]


@contextmanager
def untold(_rows: int) -> Iterator[Callable[[int], object]]:
    """Tells nobody how far the rows are."""
    yield lambda _further: None


def sample_to_file(
    model_file: Path,
    output: Path,
    n: int | None = None,
    *,
    seed: int | None = None,
    conditions: Path | None = None,
    separator: str | None = None,
    encoding: str | None = None,
    unique: Iterable[str] = (),
    strict: bool = False,
    csv_safe: bool = False,
    show_values: bool = False,
    exact: bool = False,
    allow_patterns: bool = False,
    force: bool = False,
    progress: Progress = untold,
) -> SampleRecord:
    """Makes the people of :func:`vantrel.sample`, and notes beside the table how it was made.

    What is not told here is as that function or :func:`vantrel.load` takes it.

    Args:
        model_file: The model.
        output: The table to write, as :func:`vantrel.tables.write_table` takes it. Standard output,
            pipes and devices have no record beside them.
        n: The number of rows; left out where conditions are given.
        conditions: A table of genders or countries or both, a row for each person to make. Further
            columns of it stand beside those of the model.
        separator: What separates the cells of the conditions; found if None.
        encoding: The encoding of the conditions.
        csv_safe: Whether cells are kept from being run by a spreadsheet.
        force: Whether a file that is there is overwritten.
        progress: What is told how far the rows are.

    Returns:
        How it was made; ``seed`` is the seed.

    Raises:
        VantrelError: The model, the conditions or what is asked of them cannot be used.
        OSError: The output cannot be written.
    """
    refuse_overwriting(output, *filter(None, (model_file, conditions)), force=force)
    refuse_neither_or_both(n, conditions)
    is_recorded = output != STANDARD_STREAM and not is_special(output)
    if is_recorded:
        read_record(output)  # what is there and no record is not overwritten by one
    made = _made(
        model_file,
        n,
        conditions,
        separator,
        encoding,
        allow_patterns=allow_patterns,
        seed=seed,
        unique=unique,
        strict=strict,
        show_values=show_values,
        exact=exact,
    )
    with progress(made.plan.rows) as further:
        write_table(told(made.people, further), output, csv_safe=csv_safe, force=force)
    options = {"csv_safe": csv_safe} | (_told_of(conditions) if conditions else {})
    record = record_of(made.model, made.plan, made.given, **options)
    if is_recorded:
        record = replace(record, file_sha256=sha256_of(output))
        record_path(output).unlink(missing_ok=True)  # it tells of the table that was there before
        write_record(record, output)
    return record


def sample_to_database(
    model_file: Path,
    table: Address,
    n: int | None = None,
    *,
    append: bool = False,
    conditions: Path | None = None,
    separator: str | None = None,
    encoding: str | None = None,
    allow_patterns: bool = False,
    progress: Progress = untold,
    **asked: Any,
) -> SampleRecord:
    """Adds the people of :func:`vantrel.sample` to a table of a database: all or none.

    What is not told here is as :func:`sample_to_file` takes it.

    Args:
        model_file: The model.
        table: The table, which has all columns of the sample. Its others have their defaults.
        append: Whether rows may be added to a table that is there.

    Raises:
        VantrelError: The model, the conditions or the table cannot be used.
    """
    from vantrel.databases.filling import append_to

    refuse_neither_or_both(n, conditions)
    if not append:
        raise ArgumentError(f"{named(table)} would get more rows: add {argument('append')}.")
    made = _made(
        model_file, n, conditions, separator, encoding, allow_patterns=allow_patterns, **asked
    )
    with progress(made.plan.rows) as further:
        append_to(table, told(made.people, further))
    return record_of(made.model, made.plan, made.given)


class _Made(NamedTuple):
    """People who are made when they are asked for, and what they are made from."""

    model: LoadedModel
    plan: Plan
    given: pd.DataFrame | None
    people: Iterator[pd.DataFrame]


def _made(
    model_file: Path,
    n: int | None,
    conditions: Path | None,
    separator: str | None,
    encoding: str | None,
    *,
    allow_patterns: bool,
    **asked: Any,
) -> _Made:
    loaded = read_model(model_file, allow_patterns=allow_patterns)
    wanted = _read_conditions(conditions, separator, encoding) if conditions else None
    plan, given = plan_sample(loaded.model, n, wanted, **asked)
    people = sample_blocks(loaded.model, plan, given)
    if wanted is not None:
        people = map(partial(beside, wanted), people)
    return _Made(loaded, plan, given, people)


def _read_conditions(path: Path, separator: str | None, encoding: str | None) -> pd.DataFrame:
    with open_table(path, separator=separator, encoding=encoding, empty_is_missing=True) as table:
        return table.frame(table.columns)


def _told_of(conditions: Path) -> dict[str, Any]:
    name, sha256 = shown(conditions.name, 255), sha256_of(conditions)  # a pipe has been read
    return {"conditions": name, "conditions_sha256": sha256}


def told(
    frames: Iterable[pd.DataFrame], further: Callable[[int], object]
) -> Iterator[pd.DataFrame]:
    """Gives frames on, and tells how many rows each had when the next is asked for."""
    for frame in frames:
        yield frame
        further(len(frame))
