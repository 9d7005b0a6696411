"""``vantrel sample``: from a model file to a table."""

from __future__ import annotations

import secrets
import warnings
from collections.abc import Iterable, Iterator
from pathlib import Path
from typing import TYPE_CHECKING

import click

from vantrel.command.output import STANDARD_OUTPUT, force_option, refuse_overwriting
from vantrel.command.terse import reporting

if TYPE_CHECKING:
    import pandas as pd

    from vantrel.model.models.person import PersonModel
    from vantrel.sampling import Plan


def _unique(_context: click.Context, _option: click.Parameter, value: str | None) -> list[str]:
    attributes = [attribute.strip() for attribute in value.split(",")] if value else []
    for attribute in attributes:
        if attribute not in ("username", "email"):
            raise click.BadParameter(
                f"{attribute!r} cannot be made unique: only username and email can."
            )
    return attributes


@click.command()
@click.argument("model_file", metavar="MODEL.json", type=click.Path(path_type=Path))
@click.option(
    "-n",
    "rows",
    type=click.IntRange(min=0),
    help="The number of people to make; not needed with --conditions.",
)
@click.option(
    "-o",
    "--output",
    required=True,
    metavar="PEOPLE",
    type=click.Path(path_type=Path),
    help="The table to write: Parquet if its name ends in .parquet, else CSV;"
    " - is standard output.",
)
@click.option(
    "--seed",
    type=click.IntRange(min=0),
    help="Makes the table reproducible: the same model and seed give the same table. Without one,"
    " a seed is drawn and told.",
)
@click.option(
    "--conditions",
    metavar="TABLE",
    type=click.Path(path_type=Path),
    help="A table that gives genders or countries or both, a row for each person to make, in"
    " columns named as the model's.",
)
@click.option(
    "--unique",
    metavar="ATTRIBUTE,...",
    callback=_unique,
    help="Of username and email, those of which no value may come twice. Each value ends in a code"
    " of six characters then.",
)
@click.option(
    "--strict", is_flag=True, help="Refuse countries of which Faker has no names of their own."
)
@click.option(
    "--csv-safe",
    is_flag=True,
    help="Put an apostrophe before each cell that a spreadsheet would run as a formula.",
)
@click.option(
    "--dask",
    is_flag=True,
    help="Make the people on a Dask cluster and write a folder of Parquet files.",
)
@click.option(
    "--scheduler",
    metavar="ADDRESS",
    help="The cluster's scheduler, such as tcp://10.0.0.1:8786. [default: a cluster on this"
    " machine]",
)
@click.option(
    "--workers",
    type=click.IntRange(min=1),
    help="The number of processes of the cluster on this machine. [default: one a core]",
)
@click.option(
    "--partitions",
    type=click.IntRange(min=1),
    help="The number of Parquet files. [default: one for every 200,000 people]",
)
@click.option("--resume", is_flag=True, help="Go on with a run on Dask that was stopped.")
@force_option
def sample(
    model_file: Path,
    rows: int | None,
    output: Path,
    seed: int | None,
    conditions: Path | None,
    unique: list[str],
    strict: bool,
    csv_safe: bool,
    dask: bool,
    scheduler: str | None,
    workers: int | None,
    partitions: int | None,
    resume: bool,
    force: bool,
) -> None:
    """Make people as a model describes them.

    The model file MODEL.json is one that 'vantrel fit' wrote. Beside the table, a small file that
    ends in .made.json tells how it was made.

    \b
    Example:
      vantrel sample model.json -n 1000 --seed 7 -o people.csv
    """
    if (rows is None) == (conditions is None):
        raise click.UsageError("Give either -n, a number of people, or --conditions, a table.")
    if csv_safe and output.suffix.lower() in (".parquet", ".pq"):
        raise click.UsageError(f"--csv-safe is for CSV, and {output} is Parquet: leave it out.")
    if dask:
        if conditions is not None or csv_safe or force or output == STANDARD_OUTPUT:
            raise click.UsageError(
                "--dask writes a new folder of Parquet files and takes no --conditions, --csv-safe"
                " or --force: leave them out."
            )
        if scheduler is not None and workers is not None:
            raise click.UsageError("A cluster that runs has its workers: leave --workers out.")
    elif scheduler or workers or partitions or resume:
        raise click.UsageError(
            "--scheduler, --workers, --partitions and --resume are for --dask: add it."
        )
    refuse_overwriting(output, model_file, *filter(None, [conditions]), force=force)

    # These take a second to import; help and usage errors need not wait for them.
    from vantrel.record import read_record
    from vantrel.sampling import Plan, prepare_conditions, refuse_borrowed, sample_blocks
    from vantrel.tables import read_table

    with reporting():
        read_record(output)  # what is no record is not overwritten by one
        model = _load(model_file)
        given = None if conditions is None else prepare_conditions(model, read_table(conditions))
        if strict:
            refuse_borrowed(model)
        plan = Plan(
            rows=len(given) if rows is None else rows,  # type: ignore[arg-type]
            seed=secrets.randbits(32) if seed is None else seed,
            unique=tuple(unique),
        )
        _write(_with_progress(sample_blocks(model, plan, given), plan.rows), output, csv_safe)
        if output.is_file():
            _write_record(model, model_file, plan, conditions, output)
    if output != STANDARD_OUTPUT:
        click.echo(f"Made {plan.rows:,} people with the seed {plan.seed}; wrote {output}.")
    elif seed is None:
        click.echo(f"vantrel: note: the seed is {plan.seed}", err=True)


def _load(path: Path) -> PersonModel:
    from vantrel.model_file import load
    from vantrel.util.locale.locale import BorrowedNamesWarning

    with warnings.catch_warnings():
        warnings.simplefilter("ignore", BorrowedNamesWarning)  # 'vantrel fit' has told
        return load(path)


def _with_progress(frames: Iterable[pd.DataFrame], rows: int) -> Iterator[pd.DataFrame]:
    """Shows on stderr how far the rows are; nothing where that is no terminal."""
    from tqdm import tqdm

    with tqdm(total=rows, unit=" people", unit_scale=True, disable=None, leave=False) as bar:
        for frame in frames:
            yield frame
            bar.update(len(frame))


def _write(frames: Iterable[pd.DataFrame], output: Path, csv_safe: bool) -> None:
    from vantrel.tables import write_csv, write_table

    if output == STANDARD_OUTPUT:
        with click.open_file("-", "w", encoding="utf-8") as file:
            write_csv(frames, file, spreadsheet_safe=csv_safe)
    else:
        write_table(frames, output, spreadsheet_safe=csv_safe)


def _write_record(
    model: PersonModel, model_file: Path, plan: Plan, conditions: Path | None, output: Path
) -> None:
    from vantrel.record import SampleRecord, sha256_of, write_record

    record = SampleRecord(
        model=model_file.name,
        model_sha256=sha256_of(model_file),
        rows=plan.rows,
        seed=plan.seed,
        columns=dict(model.params),
        options={
            "conditions": None if conditions is None else conditions.name,
            "unique": list(plan.unique),
        },
    )
    write_record(record, output)
