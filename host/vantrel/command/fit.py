"""``vantrel fit``: from a table to a model file."""

from pathlib import Path

import click

from vantrel.command.labels import (
    check_columns,
    check_countries,
    columns_by_attribute,
    generated_attributes,
    make_person,
)
from vantrel.command.output import STANDARD_OUTPUT, force_option, refuse_overwriting
from vantrel.command.terse import reporting


@click.command()
@click.argument("table", type=click.Path(path_type=Path))
@click.option(
    "-o",
    "--output",
    required=True,
    metavar="MODEL.json",
    type=click.Path(path_type=Path),
    help="The model file to write.",
)
@click.option(
    "--column",
    "columns",
    multiple=True,
    metavar="ATTRIBUTE=COLUMN",
    callback=columns_by_attribute,
    help="An attribute of a person and the table's column that holds it; may be repeated.",
)
@click.option(
    "--generate",
    "generated",
    metavar="ATTRIBUTE,...",
    callback=generated_attributes,
    help="Attributes that the table does not have but the samples shall.",
)
@click.option(
    "--locale",
    "locales",
    multiple=True,
    metavar="LOCALE",
    help="Where the people are from if no column says so; may be repeated. [default: en_GB]",
)
@force_option
def fit(
    table: Path,
    output: Path,
    columns: dict[str, str],
    generated: list[str],
    locales: tuple[str, ...],
    force: bool,
) -> None:
    """Learn from the CSV table TABLE and write a model file.

    \b
    Example:
      vantrel fit people.csv -o model.json --column gender=sex --column title=title
    """
    if output == STANDARD_OUTPUT:
        raise click.UsageError("A model is not written to standard output: name a file for -o.")
    refuse_overwriting(output, table, force=force)
    meta = make_person(columns, generated, locales)

    # These take a second to import; help and usage errors need not wait for them.
    from vantrel.command.notes import notes
    from vantrel.model.models.person import PersonModel
    from vantrel.model_file import save
    from vantrel.tables import read_table
    from vantrel.util.locale.locale import Provider, get_country_to_provder_map

    with reporting():
        df = read_table(table)
        check_columns(df, columns, table)
        check_countries(df, columns)
        # Fitting does not look at locales: an unknown one would be found on sampling only.
        get_country_to_provder_map(locales, Provider.PERSON)
        model = PersonModel(meta=meta).fit(df)
        save(model, output)
    click.echo(f"Learnt from {len(df):,} rows of {table}; wrote {output}.")
    for note in notes(model, df):
        click.echo(f"vantrel: note: {note}", err=True)
