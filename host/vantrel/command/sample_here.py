"""Makes a sample in this process and writes it to one file or to standard output."""

from __future__ import annotations

from collections.abc import Iterable, Iterator
from typing import TYPE_CHECKING

import click

from vantrel.command.output import STANDARD_OUTPUT
from vantrel.command.sample_request import SampleRequest, done, progress_bar
from vantrel.record import read_record, write_record
from vantrel.sampling import Plan, prepare_conditions, refuse_borrowed, sample_blocks
from vantrel.tables import read_table, write_csv, write_table

if TYPE_CHECKING:
    import pandas as pd


def make(request: SampleRequest) -> None:
    """Makes what is asked for.

    Raises:
        ValueError: The model, the conditions or what is asked of them cannot be used.
        OSError: The output cannot be written.
    """
    output = request.output
    read_record(output)  # what is there and no record is not overwritten by one
    model = request.load_model()
    conditions = None
    if request.conditions is not None:
        conditions = prepare_conditions(model, read_table(request.conditions))
    if request.strict:
        refuse_borrowed(model)
    rows = request.rows if conditions is None else len(conditions)
    assert rows is not None
    plan = Plan(rows, request.new_seed(), unique=request.unique)
    people = sample_blocks(model, plan, conditions)
    if output == STANDARD_OUTPUT:
        with click.open_file("-", "w", encoding="utf-8") as file:
            write_csv(_counted(people, rows), file, spreadsheet_safe=request.csv_safe)
        if request.seed is None:
            click.echo(f"vantrel: note: the seed is {plan.seed}", err=True)
        return
    write_table(_counted(people, rows), output, spreadsheet_safe=request.csv_safe)
    if output.is_file():
        given = request.conditions.name if request.conditions else None
        write_record(request.record(model, plan, conditions=given), output)
    done(plan, output)


def _counted(frames: Iterable[pd.DataFrame], rows: int) -> Iterator[pd.DataFrame]:
    with progress_bar(rows) as bar:
        for frame in frames:
            yield frame
            bar.update(len(frame))
