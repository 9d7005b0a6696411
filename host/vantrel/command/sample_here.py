"""Makes a sample in this process and writes it to one file or to standard output."""

from __future__ import annotations

import hashlib
import warnings
from collections.abc import Iterable, Iterator
from typing import TYPE_CHECKING, Any

import click

from vantrel.command.output import STANDARD_OUTPUT
from vantrel.command.reading import told
from vantrel.command.sample_request import SampleRequest, done, progress_bar
from vantrel.files import is_special
from vantrel.record import read_record, record_path, write_record
from vantrel.sampling import Plan, prepare_conditions, refuse_borrowed, sample_blocks
from vantrel.tables import open_table, write_table
from vantrel.util.locale.locale import BorrowedNamesWarning

if TYPE_CHECKING:
    import pandas as pd

    from vantrel.model.models.person import PersonModel


def make(request: SampleRequest) -> None:
    """Makes what is asked for.

    Raises:
        ValueError: The model, the conditions or what is asked of them cannot be used.
        OSError: The output cannot be written.
    """
    output = request.output
    recorded = output != STANDARD_OUTPUT and not is_special(output)
    if recorded:
        read_record(output)  # what is there and no record is not overwritten by one
    model = request.load_model()
    conditions = _conditions(request, model)
    if request.strict:
        refuse_borrowed(model, conditions)
    rows = request.rows if conditions is None else len(conditions)
    assert rows is not None
    plan = Plan(rows, request.new_seed(), unique=request.unique)
    people = sample_blocks(model, plan, conditions)
    if output == STANDARD_OUTPUT:
        write_table(_counted(people, rows), output, spreadsheet_safe=request.csv_safe)
        if request.seed is None:
            click.echo(f"vantrel: note: the seed is {plan.seed}", err=True)
        return
    write_table(_counted(people, rows), output, spreadsheet_safe=request.csv_safe)
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


def _conditions(request: SampleRequest, model: PersonModel) -> pd.DataFrame | None:
    if request.conditions is None:
        return None
    with warnings.catch_warnings():
        if request.strict:
            warnings.simplefilter("ignore", BorrowedNamesWarning)  # they are refused
        how = told(request.separator, request.encoding)
        with open_table(request.conditions, **how) as table:
            given = [column for column in table.columns if column in model.params.values()]
            return prepare_conditions(model, table.frame(given))


def _counted(frames: Iterable[pd.DataFrame], rows: int) -> Iterator[pd.DataFrame]:
    with progress_bar(rows) as bar:
        for frame in frames:
            yield frame
            bar.update(len(frame))
