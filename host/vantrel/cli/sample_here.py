"""Makes a sample in this process and writes it to one file or to standard output."""

from __future__ import annotations

import hashlib
from collections.abc import Iterable, Iterator
from typing import TYPE_CHECKING, Any

import click

from vantrel.cli.console import progress
from vantrel.cli.reading import told
from vantrel.cli.sample_request import SampleRequest, done
from vantrel.sampling import Plan, prepare_conditions, refuse_borrowed, sample_blocks
from vantrel.sampling.record import read_record, record_path, write_record
from vantrel.storage.files import STANDARD_STREAM, is_special
from vantrel.tables import open_table, write_table

if TYPE_CHECKING:
    import pandas as pd


def make(request: SampleRequest) -> None:
    """Makes what is asked for.

    Raises:
        VantrelError: The model, the conditions or what is asked of them cannot be used.
        OSError: The output cannot be written.
    """
    output = request.output
    recorded = output != STANDARD_STREAM and not is_special(output)
    if recorded:
        read_record(output)  # what is there and no record is not overwritten by one
    model = request.load_model()
    rows, conditions = request.rows, None
    if rows is None:
        assert request.conditions is not None
        with open_table(request.conditions, **told(request.separator, request.encoding)) as table:
            given = [column for column in table.columns if column in model.params.values()]
            conditions = prepare_conditions(model, table.frame(given), strict=request.strict)
        rows = len(conditions)
    elif request.strict:
        refuse_borrowed(model)
    plan = Plan(rows, request.new_seed(), unique=request.unique)
    people = sample_blocks(model, plan, conditions)
    write_table(_counted(people, rows), output, spreadsheet_safe=request.csv_safe)
    if output == STANDARD_STREAM:
        if request.seed is None:
            click.echo(f"vantrel: note: the seed is {plan.seed}", err=True)
        return
    if recorded:
        record_path(output).unlink(missing_ok=True)  # it tells of the table that was there before
        write_record(request.record(model, plan, **_options(request)), output)
    done(plan, output)


def _options(request: SampleRequest) -> dict[str, Any]:
    """What else decides the content of the file."""
    given = request.conditions
    if given is None:
        return {"csv_safe": request.csv_safe}
    sha256 = None if is_special(given) else hashlib.sha256(given.read_bytes()).hexdigest()
    return {
        "csv_safe": request.csv_safe,
        "conditions": given.name,
        "conditions_sha256": sha256,
    }


def _counted(frames: Iterable[pd.DataFrame], rows: int) -> Iterator[pd.DataFrame]:
    with progress(rows) as further:
        for frame in frames:
            yield frame
            further(len(frame))
