"""``vantrel fit``: from a table to a model file."""

from __future__ import annotations

from pathlib import Path
from typing import Any

import click

from vantrel.cli.group import TerseCommand
from vantrel.cli.options import (
    TableType,
    columns_option,
    email_domain_option,
    encoding_option,
    files_of,
    force_option,
    latin_option,
    list_option,
    path_option,
    phone_numbers_option,
    refuse_for_databases,
    separator_option,
    values_option,
)
from vantrel.databases.address import Address
from vantrel.hints import named
from vantrel.storage.files import STANDARD_STREAM, refuse_overwriting


def _by_country(
    _context: click.Context, _option: click.Parameter, values: tuple[str, ...]
) -> tuple[str, ...] | dict[str, str]:
    """Gives locales as they are, or by country where they are written so."""
    pairs = [value.partition("=") for value in values if "=" in value]
    if pairs and len(pairs) < len(values):
        raise click.BadParameter("Some are locales and some of a country: write COUNTRY=LOCALE.")
    by_country: dict[str, str] = {}
    for country, _, locale in pairs:
        if by_country.setdefault(country, locale) != locale:
            raise click.BadParameter(f"{country!r} is given twice.")
    return by_country or values


@click.command(cls=TerseCommand)
@click.argument("table", type=TableType(has_table=True))
@path_option("-o", "--output", metavar="MODEL.json", required=True, help="The model file to write.")
@columns_option(
    "An attribute of a person and the table's column that holds it, whatever would be found;"
    " may be repeated."
)
@click.option(
    "--ignore",
    multiple=True,
    metavar="COLUMN",
    help="A column that is not to be found; may be repeated.",
)
@click.option(
    "--no-detect", is_flag=True, help="Take the columns that --column names, and find no others."
)
@list_option("--generate", "Attributes that the table does not have but the samples shall.")
@click.option(
    "--locale",
    "locales",
    multiple=True,
    metavar="LOCALE",
    callback=_by_country,
    help="Where the people are from if no column says so; may be repeated. [default: en_GB] Or the"
    " locale of a country of the column, as in India=en_IN.",
)
@path_option(
    "--config",
    "config_file",
    metavar="FILE.toml",
    help="Settings: patterns of genders and titles, telephone numbers, e-mail addresses, lengths"
    " of passwords.",
)
@email_domain_option
@phone_numbers_option
@latin_option
@click.option(
    "--min-count",
    metavar="ROWS",
    type=click.IntRange(min=1),
    default=5,
    show_default=True,
    help="The fewest rows that a gender, title or country must be in to be kept, and a combination"
    " of them to be kept as such. 1 keeps all but rare titles that tell no gender.",
)
@separator_option("TABLE")
@encoding_option("TABLE")
@values_option
@force_option
def fit(
    table: Path | Address,
    output: Path,
    columns: Any,
    ignore: tuple[str, ...],
    no_detect: bool,
    generate: list[str],
    locales: tuple[str, ...] | dict[str, str],
    config_file: Path | None,
    separator: str | None,
    encoding: str | None,
    show_values: bool,
    min_count: int,
    email_domain: str | None,
    phone_numbers: str | None,
    latin: bool,
    force: bool,
) -> None:
    """Learn from a table and write a model file.

    TABLE is CSV, JSON Lines (.jsonl) or Parquet (.parquet) by the end of its name, compressed if
    that is .gz or .zst; - is standard input. It may be one of a database, as in
    'postgresql://host/database?table=customers' or 'sqlite:///file.db?table=customers'. The
    columns of a person (gender, title, names, e-mail address, username, password, telephone
    numbers, country) are found by their names and values, and what was chosen is printed. --column
    overrides a choice, --ignore leaves a column out; with --no-detect only the columns of --column
    are taken.

    \b
    Examples:
      vantrel fit people.csv -o model.json
      vantrel fit people.csv -o model.json --column gender=sex --ignore notes
    """
    if output == STANDARD_STREAM:
        raise click.UsageError("A model is not written to standard output: name a file for -o.")
    refuse_overwriting(output, *files_of(table, config_file), force=force)
    if isinstance(table, Address):
        refuse_for_databases(separator=separator, encoding=encoding)

    # These take a second to import; help need not wait for them.
    import vantrel
    from vantrel.cli.console import print_all
    from vantrel.reporting.sections import Section
    from vantrel.storage.settings import load_settings
    from vantrel.tables import open_table

    loaded = load_settings(config_file) if config_file else None
    ways = loaded.ways if loaded else {}
    named_ways = {"email_domain": email_domain, "phone_numbers": phone_numbers, "latin": latin}
    ways |= {name: value for name, value in named_ways.items() if value}
    with open_table(table, separator=separator, encoding=encoding, empty_is_missing=True) as opened:
        model = vantrel.fit(
            opened,
            generate=generate,
            locales=locales,
            config=loaded and loaded.config,
            ignore=ignore,
            detect=not no_detect,
            show_values=show_values,
            min_count=min_count,
            **ways,
            **columns,
        )
    vantrel.save(model, output, force=force)
    if not no_detect:
        told_by = dict.fromkeys(generate, "--generate") | model.meta.told_by
        told_by |= dict.fromkeys(columns, "--column")
        rows = [(name, column, told_by[name]) for name, column in model.params.items()]
        print_all([Section("", ("Attribute", "Column", "Found by"), rows)])
    click.echo(
        f"Learnt from {model.meta.learnt_from:,} rows of {named(table)}; wrote {named(output)}."
    )
    for note in model.meta.notes:
        click.echo(f"vantrel: note: {note}", err=True)
