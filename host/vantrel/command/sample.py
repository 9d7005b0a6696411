"""``vantrel sample``: from a model file to a table."""

import warnings
from pathlib import Path

import click

from vantrel.command.output import STANDARD_OUTPUT, refuse_overwriting
from vantrel.command.terse import reporting


@click.command()
@click.argument("model_file", metavar="MODEL.json", type=click.Path(path_type=Path))
@click.option(
    "-n",
    "rows",
    required=True,
    type=click.IntRange(min=0),
    help="The number of people to make.",
)
@click.option(
    "--seed",
    type=click.IntRange(min=0),
    help="Makes the table reproducible: the same model and seed give the same table.",
)
@click.option(
    "-o",
    "--output",
    required=True,
    metavar="PEOPLE.csv",
    type=click.Path(path_type=Path),
    help="The table to write; - is standard output.",
)
def sample(model_file: Path, rows: int, seed: int | None, output: Path) -> None:
    """Make people as the model file MODEL.json describes them and write them as CSV.

    \b
    Example:
      vantrel sample model.json -n 1000 --seed 7 -o people.csv
    """
    refuse_overwriting(model_file, output)

    # These take a second to import; help and usage errors need not wait for them.
    from vantrel.model_file import load
    from vantrel.sampling import sample_people
    from vantrel.seeding import seed_everything
    from vantrel.tables import write_csv, write_table
    from vantrel.util.locale.locale import BorrowedNamesWarning

    with reporting():
        warnings.simplefilter("ignore", BorrowedNamesWarning)  # 'vantrel fit' has told
        model = load(model_file)
        if seed is not None:
            seed_everything(model, seed)
        people = sample_people(model, rows)
        if output == STANDARD_OUTPUT:
            with click.open_file("-", "w", encoding="utf-8") as file:
                write_csv(people, file)
        else:
            write_table(people, output)
            click.echo(f"Made {rows:,} people; wrote {output}.")
