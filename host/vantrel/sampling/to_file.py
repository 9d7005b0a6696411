"""Samples into a file, in memory that does not grow with the rows."""

from __future__ import annotations

from collections.abc import Callable, Iterable, Iterator
from contextlib import AbstractContextManager, contextmanager
from functools import partial
from pathlib import Path
from typing import Any

import pandas as pd
from msgspec.structs import replace

from vantrel.sampling.blocks import sample_blocks
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
from vantrel.storage.models import read_model
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
    loaded = read_model(model_file, allow_patterns=allow_patterns)
    wanted = _read_conditions(conditions, separator, encoding) if conditions else None
    plan, given = plan_sample(
        loaded.model,
        n,
        wanted,
        seed=seed,
        unique=unique,
        strict=strict,
        show_values=show_values,
        exact=exact,
    )
    with progress(plan.rows) as further:
        people = sample_blocks(loaded.model, plan, given)
        if wanted is not None:
            people = map(partial(beside, wanted), people)
        write_table(told(people, further), output, csv_safe=csv_safe, force=force)
    options = {"csv_safe": csv_safe} | (_told_of(conditions) if conditions else {})
    record = record_of(loaded, plan, given, **options)
    if is_recorded:
        record = replace(record, file_sha256=sha256_of(output))
        record_path(output).unlink(missing_ok=True)  # it tells of the table that was there before
        write_record(record, output)
    return record


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
