"""``vantrel sample``: from a model file to a table."""

from pathlib import Path
from typing import Any

import click

from vantrel.command.numbers import whole_number
from vantrel.command.output import force_option
from vantrel.command.reading import reading_options
from vantrel.command.sample_request import SampleRequest
from vantrel.command.terse import reporting


def _unique(
    _context: click.Context, _option: click.Parameter, value: str | None
) -> tuple[str, ...]:
    attributes = [attribute.strip() for attribute in value.split(",")] if value else []
    for attribute in attributes:
        if attribute not in ("username", "email"):
            raise click.BadParameter(
                f"{attribute!r} cannot be made unique: only username and email can."
            )
    return tuple(attributes)


@click.command()
@click.argument("model_file", metavar="MODEL.json", type=click.Path(path_type=Path))
@click.option(
    "-n",
    "rows",
    metavar="N",
    type=whole_number(0),
    help="The number of people to make; not needed with --conditions.",
)
@click.option(
    "-o",
    "--output",
    required=True,
    metavar="PEOPLE",
    type=click.Path(path_type=Path),
    help="The table to write: CSV, JSON Lines (.jsonl) or Parquet (.parquet) by the end of its"
    " name, compressed if that is .gz or .zst; - is standard output.",
)
@click.option(
    "--seed",
    metavar="SEED",
    type=whole_number(0),
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
@reading_options("the conditions")
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
    help="Put an apostrophe before each cell that a spreadsheet would run as a formula, and quotes"
    " around every cell.",
)
@click.option(
    "--dask",
    "on_dask",
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
    metavar="N",
    type=whole_number(1),
    help="The number of processes of the cluster on this machine. [default: one a core]",
)
@click.option(
    "--partitions",
    metavar="N",
    type=whole_number(1),
    help="The number of Parquet files. [default: one for every 200,000 people]",
)
@click.option("--resume", is_flag=True, help="Go on with a run on Dask that was stopped.")
@force_option
def sample(**options: Any) -> None:
    """Make people as a model describes them.

    The model file MODEL.json is one that 'vantrel fit' wrote. Beside the table, a small file that
    ends in .made.json tells how it was made.

    \b
    Examples:
      vantrel sample model.json -n 1000 --seed 7 -o people.csv
      vantrel sample model.json -n 1000000000 --seed 7 -o people --dask
    """
    request = SampleRequest(**options)
    request.check()

    # These take a second to import; help and usage errors need not wait for them.
    with reporting():
        if request.on_dask:
            from vantrel.command.sample_on_dask import make
        else:
            from vantrel.command.sample_here import make
        make(request)
