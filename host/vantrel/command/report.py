"""``vantrel report``: from a real table and a sample of it to a page that compares them."""

from __future__ import annotations

from collections.abc import Mapping
from pathlib import Path
from typing import TYPE_CHECKING

import click

from vantrel.command.labels import columns_by_attribute
from vantrel.command.output import STANDARD_OUTPUT, force_option, refuse_overwriting
from vantrel.command.terse import reporting
from vantrel.fitting import ATTRIBUTES, separator_hint, suggestion

if TYPE_CHECKING:
    import pandas as pd

    from vantrel.report.figures import Figures


@click.command()
@click.argument("table", type=click.Path(path_type=Path))
@click.argument("sampled", metavar="OUT", type=click.Path(path_type=Path))
@click.option(
    "-o",
    "--output",
    required=True,
    metavar="REPORT.html",
    type=click.Path(path_type=Path),
    help="The page to write.",
)
@click.option(
    "--column",
    "columns",
    multiple=True,
    metavar="ATTRIBUTE=COLUMN",
    callback=columns_by_attribute,
    help="An attribute of a person and the column that holds it in both tables; may be repeated."
    " It comes before what is recorded beside OUT or found.",
)
@force_option
def report(table: Path, sampled: Path, output: Path, columns: dict[str, str], force: bool) -> None:
    """Compare the real table TABLE with a sample of it, OUT, on one page.

    Which columns are compared is read from the record that 'vantrel sample' wrote beside OUT; where
    there is none, the columns of a person are found by their names and values. The page needs no
    network. It shows some values of the real table: keep it as safe as that.

    \b
    Example:
      vantrel report people.csv made-up.csv -o report.html
    """
    if output == STANDARD_OUTPUT:
        raise click.UsageError("A report is not written to standard output: name a file for -o.")
    refuse_overwriting(output, table, sampled, force=force)

    # These take a second to import; help and usage errors need not wait for them.
    from vantrel.files import replacing
    from vantrel.record import read_record
    from vantrel.report.figures import compare
    from vantrel.report.page import Sources, render
    from vantrel.tables import read_table

    with reporting():
        record = read_record(sampled)
        real, people = read_table(table), read_table(sampled)
        known = record.columns if record else {}
        if not known and not columns:
            known = _found(real, people, sampled)
        labels = _labels(columns, known)
        _check_columns(labels, real, people, (table, sampled))
        figures = compare(real, people, labels)
        sources = Sources(
            *(click.format_filename(path.absolute().name) for path in (table, sampled))
        )
        page = render(figures, sources, record)
        with replacing(output) as file:
            file.write(page)
    click.echo(f"{_summary(figures)}; wrote {output}.")


def _found(real: pd.DataFrame, people: pd.DataFrame, sampled: Path) -> dict[str, str]:
    """The columns of a person in either table, by attribute.

    Raises:
        click.ClickException: There are none.
    """
    from vantrel.detect import detect

    columns = detect(real).columns
    columns |= detect(people, known=columns).columns
    if not columns:
        raise click.ClickException(
            f"There is no record beside {sampled} of its columns, and none of a person is found:"
            " name them, as in --column gender=sex."
        )
    return columns


def _labels(given: Mapping[str, str], known: Mapping[str, str]) -> dict[str, str]:
    """The column of each attribute: as given, else as known."""
    columns = {**known, **given}
    attributes: dict[str, str] = {}
    for attribute, column in columns.items():
        if column in attributes:
            raise click.UsageError(
                f"Column {column!r} is given for both {attributes[column]!r} and {attribute!r}:"
                " it can hold one of them only."
            )
        attributes[column] = attribute
    return {attribute: columns[attribute] for attribute in ATTRIBUTES if attribute in columns}


def _check_columns(
    columns: Mapping[str, str], real: pd.DataFrame, sampled: pd.DataFrame, paths: tuple[Path, Path]
) -> None:
    """Makes sure that two tables have something to compare in the named columns.

    Args:
        columns: From attribute to column.
        real: One table.
        sampled: The other one.
        paths: Where they were read from.

    Raises:
        click.ClickException: A column is in neither table, or a table has none of them.
    """
    for attribute, column in columns.items():
        if column not in real.columns and column not in sampled.columns:
            known = list(dict.fromkeys([*real.columns, *sampled.columns]))
            raise click.ClickException(
                f"Neither {paths[0]} nor {paths[1]} has a column {column!r} for {attribute!r}."
                f"{suggestion(column, known)} Their columns are: {', '.join(map(repr, known))}."
            )
    for df, path in zip((real, sampled), paths, strict=True):
        if not set(columns.values()) & set(df.columns):
            raise click.ClickException(
                f"Table {path} has none of the columns to compare:"
                f" {', '.join(map(repr, columns.values()))}. Its columns are:"
                f" {', '.join(map(repr, df.columns))}.{separator_hint(df)}"
            )


def _summary(figures: Figures) -> str:
    """The main figures in one line."""
    from vantrel.report.wording import counted, distance, listed

    compared = (
        f"Compared {counted(figures.real_rows, 'real row')} with"
        f" {counted(figures.sampled_rows, 'sampled row')}"
    )
    distances = [
        f"{shares.attribute} {distance(shares.distance)}"
        for shares in figures.shares
        if shares.distance is not None
    ]
    parts = [f"distance of {listed(distances)}"] if distances else []
    if bearing := [each.bearing for each in figures.reappearing if each.is_whole]:
        parts.append(f"{counted(max(bearing), 'row')} with a real full name")
    return ": ".join([compared, ", ".join(parts)] if parts else [compared])
