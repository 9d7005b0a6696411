"""``vantrel sample``: from a model file to a table."""

from __future__ import annotations

from pathlib import Path
from typing import TYPE_CHECKING, Any

import click

from vantrel.cli.group import TerseCommand
from vantrel.cli.options import (
    TableType,
    as_option,
    dask_option,
    encoding_option,
    force_option,
    list_option,
    path_option,
    patterns_option,
    refuse_superfluous,
    resume_option,
    scheduler_option,
    separator_option,
    values_option,
    workers_option,
)
from vantrel.databases.address import Address
from vantrel.hints import named
from vantrel.storage.files import STANDARD_STREAM
from vantrel.wording import counted

if TYPE_CHECKING:
    from vantrel.sampling.record import SampleRecord

# The options that go with the one way of making people only.
_ON_DASK = ("scheduler", "workers", "partitions", "resume")
_IN_THIS_PROCESS = ("conditions", "separator", "encoding", "csv_safe", "show_values", "force")


@click.command(cls=TerseCommand)
@click.argument("model_file", metavar="MODEL.json", type=click.Path(path_type=Path))
@click.option(
    "-n",
    metavar="N",
    type=click.IntRange(min=0),
    help="The number of people to make; not needed with --conditions.",
)
@click.option(
    "-o",
    "--output",
    required=True,
    metavar="PEOPLE",
    type=TableType(has_table=True),
    help="The table to write: CSV, JSON Lines (.jsonl) or Parquet (.parquet) by the end of its"
    " name, compressed if that is .gz or .zst; - is standard output. With --append also one of a"
    " database, as in 'postgresql://host/database?table=customers'.",
)
@click.option(
    "--append", is_flag=True, help="Add the people to a table of a database, all or none of them."
)
@click.option(
    "--seed",
    metavar="SEED",
    type=click.IntRange(min=0),
    help="Makes the table reproducible: the same model and seed give the same table. Without one,"
    " a seed is drawn and told.",
)
@path_option(
    "--conditions",
    metavar="TABLE",
    help="A table that gives genders or countries or both, a row for each person to make, in"
    " columns named as the model's.",
)
@separator_option("the conditions")
@encoding_option("the conditions")
@list_option(
    "--unique",
    "Of username and email, those of which no value may come twice. Each value ends in a code"
    " of six characters then.",
)
@click.option(
    "--strict",
    is_flag=True,
    help="Refuse countries of which Faker has no names of their own, and what is no country.",
)
@click.option(
    "--exact",
    is_flag=True,
    help="Make the rows of the bare model: titles and spellings drawn evenly, and blank rows where"
    " a gender is missing.",
)
@click.option(
    "--csv-safe",
    is_flag=True,
    help="Put an apostrophe before each cell that a spreadsheet would run as a formula, and quotes"
    " around every cell.",
)
@dask_option("Make the people on a Dask cluster and write a folder of Parquet files.")
@scheduler_option
@workers_option
@click.option(
    "--partitions",
    metavar="N",
    type=click.IntRange(min=1),
    help="The number of Parquet files. [default: one for every 200,000 people]",
)
@resume_option
@values_option
@patterns_option
@force_option
def sample(
    model_file: Path,
    output: Path | Address,
    n: int | None,
    seed: int | None,
    on_dask: bool,
    append: bool,
    **asked: Any,
) -> None:
    """Make people as a model describes them.

    The model file MODEL.json is one that 'vantrel fit' wrote. Beside the table, a small file that
    ends in .made.json tells how it was made.

    \b
    Examples:
      vantrel sample model.json -n 1000 --seed 7 -o people.csv
      vantrel sample model.json -n 1000000000 --seed 7 -o people --dask
    """
    if not isinstance(output, Path):
        _to_database(model_file, output, n, seed, append=append, on_dask=on_dask, **asked)
        return
    if append:
        raise click.UsageError("Only tables of databases get more rows: leave --append out.")
    others = {name: asked.pop(name) for name in (_IN_THIS_PROCESS if on_dask else _ON_DASK)}
    more = ["-o -"] if on_dask and output == STANDARD_STREAM else []
    refuse_superfluous(others, on_dask, "a new folder of Parquet files", more)

    # These take a second to import; help and usage errors need not wait for them.
    from vantrel.cli.console import progress

    if on_dask:
        from vantrel.scale import sample_to_folder

        made = sample_to_folder(model_file, output, n, seed=seed, progress=progress, **asked)
    else:
        from vantrel.sampling import sample_to_file

        made = sample_to_file(model_file, output, n, seed=seed, progress=progress, **asked)
    if output != STANDARD_STREAM:
        click.echo(f"{_told(made)}; wrote {named(output)}.")
    elif seed is None:
        click.echo(f"vantrel: note: the seed is {made.seed}", err=True)


def _to_database(
    model_file: Path, output: Address, n: int | None, seed: int | None, **asked: Any
) -> None:
    others = {name: asked.pop(name) for name in ("on_dask", *_ON_DASK, "csv_safe", "force")}
    if given := [as_option(name, ...) for name, value in others.items() if value]:
        raise click.UsageError(f"A database makes no use of {', '.join(given)}: leave that out.")
    from vantrel.cli.console import progress
    from vantrel.sampling.to_file import sample_to_database

    made = sample_to_database(model_file, output, n, seed=seed, progress=progress, **asked)
    click.echo(f"{_told(made)}; added them to {named(output)}.")


def _told(made: SampleRecord) -> str:
    people = counted(made.rows, "person", "people")
    return f"Made {people} with the seed {made.seed}"
