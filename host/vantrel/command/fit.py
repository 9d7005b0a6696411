"""``vantrel fit``: from a table to a model file."""

from __future__ import annotations

from pathlib import Path

import click

from vantrel.command.finding import (
    check_ignored,
    columns_table,
    doubt_note,
    find_columns,
    there_already,
)
from vantrel.command.labels import check_named, columns_by_attribute, generated_attributes
from vantrel.command.output import STANDARD_OUTPUT, force_option, refuse_overwriting
from vantrel.command.reading import reading_options, told
from vantrel.command.terse import reporting
from vantrel.fitting import check_columns, check_countries, make_person


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
    help="An attribute of a person and the table's column that holds it, whatever would be found;"
    " may be repeated.",
)
@click.option(
    "--ignore",
    "ignored",
    multiple=True,
    metavar="COLUMN",
    help="A column that is not to be found; may be repeated.",
)
@click.option(
    "--no-detect",
    is_flag=True,
    help="Take the columns that --column names, and find no others.",
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
@click.option(
    "--config",
    "config_file",
    metavar="FILE.toml",
    type=click.Path(path_type=Path),
    help="Settings: patterns of genders and titles, formats of telephone numbers, lengths of"
    " passwords.",
)
@reading_options("TABLE")
@force_option
def fit(
    table: Path,
    output: Path,
    columns: dict[str, str],
    ignored: tuple[str, ...],
    no_detect: bool,
    generated: list[str],
    locales: tuple[str, ...],
    config_file: Path | None,
    separator: str | None,
    encoding: str | None,
    force: bool,
) -> None:
    """Learn from a table and write a model file.

    TABLE is CSV, JSON Lines (.jsonl) or Parquet (.parquet) by the end of its name, compressed if
    that is .gz or .zst; - is standard input. The columns of a person (gender, title, names, e-mail
    address, username, password, telephone numbers, country) are found by their names and values,
    and what was chosen is printed. --column overrides a choice, --ignore leaves a column out; with
    --no-detect only the columns of --column are taken.

    \b
    Examples:
      vantrel fit people.csv -o model.json
      vantrel fit people.csv -o model.json --column gender=sex --ignore notes
    """
    if output == STANDARD_OUTPUT:
        raise click.UsageError("A model is not written to standard output: name a file for -o.")
    sources = filter(None, (table, config_file))
    refuse_overwriting(output, *sources, force=force)
    check_named(columns, generated, ignored, detecting=not no_detect)

    # These take a second to import; help and usage errors need not wait for them.
    from vantrel.command.console import print_all
    from vantrel.command.notes import notes
    from vantrel.config import PersonModelConfig
    from vantrel.config_file import load_config
    from vantrel.counted import fit_counts, learnt_columns
    from vantrel.detect import Detection
    from vantrel.detect.values import SAMPLE_SIZE
    from vantrel.model_file import save
    from vantrel.tables import open_table
    from vantrel.util.locale.locale import Provider, get_country_to_provder_map

    with reporting(), open_table(table, **told(separator, encoding)) as rows:
        config = PersonModelConfig() if config_file is None else load_config(config_file)
        first = rows.excerpt(SAMPLE_SIZE)
        check_columns(first, columns, f"Table {table}")
        check_ignored(first, ignored, table)
        found = Detection([], [])
        if not no_detect:
            found = find_columns(first, table, config, columns, ignored)
        # Fitting does not look at locales: an unknown one would be found on sampling only.
        get_country_to_provder_map(locales, Provider.PERSON)
        meta = make_person({**columns, **found.columns}, generated, locales)
        labelled = [column for column in rows.columns if column in meta.params.values()]
        counts = rows.count(learnt_columns(meta), labelled)
        if country := meta.params.get("country"):
            way_out = "leave the column out with --ignore"
            if "country" in columns:
                way_out = "leave the column out: --ignore in place of --column"
            check_countries(counts.values[country], country, way_out)
        model = fit_counts(counts, rows.columns, meta, config)
        save(model, output)
        if not no_detect:
            print_all(columns_table(columns, found, generated))
    click.echo(f"Learnt from {counts.rows:,} rows of {table}; wrote {output}.")
    doubts = map(doubt_note, found.doubts)
    known = there_already(found, generated)
    for note in [*doubts, *known, *notes(model, first, counts, located=bool(locales))]:
        click.echo(f"vantrel: note: {note}", err=True)
