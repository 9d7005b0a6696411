"""``vantrel report``: from a real table and a sample of it to a page that compares them."""

from __future__ import annotations

from collections.abc import Mapping
from pathlib import Path
from typing import TYPE_CHECKING

import click

from vantrel.cli.options import columns_by_attribute
from vantrel.cli.output import STANDARD_OUTPUT, force_option, refuse_overwriting
from vantrel.cli.main import reporting
from vantrel.storage.files import same_file
from vantrel.fitting import separator_hint
from vantrel.hints import suggestion

if TYPE_CHECKING:
    import pandas as pd

    from vantrel.sampling.record import SampleRecord
    from vantrel.reporting.labelled import LabelledTable
    from vantrel.reporting.figures import Figures

_Paths = tuple[Path, Path]


@click.command(short_help="Compare a real table with a sample.")
@click.argument("table", type=click.Path(path_type=Path))
@click.argument("sampled", metavar="SAMPLE", type=click.Path(path_type=Path))
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
    help="An attribute of a person and the column that holds it in both tables or in one; may be"
    " repeated. It comes before what is recorded beside SAMPLE or found.",
)
@force_option
def report(table: Path, sampled: Path, output: Path, columns: dict[str, str], force: bool) -> None:
    """Compare the real table TABLE with a SAMPLE of it on one page.

    Which columns are compared is read from the record that 'vantrel sample' wrote beside SAMPLE;
    where there is none, and in TABLE where it names them otherwise, the columns of a person are
    found by their names and values. The page needs no network. It shows some values of the real
    table: keep it as safe as that.

    \b
    Example:
      vantrel report people.csv made-up.csv -o report.html
    """
    if output == STANDARD_OUTPUT:
        raise click.UsageError("A report is not written to standard output: name a file for -o.")
    refuse_overwriting(output, table, sampled, force=force)
    if same_file(table, sampled):
        raise click.UsageError(
            f"{table} and {sampled} are the same file: name the real table, then a sample of it."
        )

    # These take a second to import; help and usage errors need not wait for them.
    from vantrel.storage.files import replacing
    from vantrel.reporting.figures import compare
    from vantrel.reporting.page import Sources, render

    with reporting():
        record = _record(table, sampled)
        real, people = _labelled(table, sampled, columns, record)
        conditions = record and record.options.get("conditions")
        figures = compare(real, people, has_conditions=bool(conditions))
        names = [click.format_filename(path.absolute().name) for path in (table, sampled)]
        page = render(figures, Sources(*names), record)
        with replacing(output) as file:
            file.write(page)
    click.echo(f"{_summary(figures)}; wrote {output}.")


def _record(table: Path, sampled: Path) -> SampleRecord | None:
    """Reads how the sample was made, if that is recorded.

    Raises:
        click.UsageError: It is the other table whose record is there.
        RecordError: A record cannot be used.
    """
    from vantrel.sampling.record import read_record

    record = read_record(sampled)
    if record is None and read_record(table):
        raise click.UsageError(
            f"{table} is a sample, as its record says: the real table comes first."
        )
    return record


def _labelled(
    table: Path, sampled: Path, given: Mapping[str, str], record: SampleRecord | None
) -> tuple[LabelledTable, LabelledTable]:
    """Reads both tables and tells their columns.

    Raises:
        click.ClickException: They have nothing to compare, or no such columns as are given.
        ValueError: One cannot be read.
    """
    from vantrel.reporting.column_mapping import label
    from vantrel.tables import read_table
    from vantrel.tables.guard import unguarded

    real, people = read_table(table), read_table(sampled)
    if record and record.options.get("csv_safe"):
        people = unguarded(people)
    _check_columns(given, real, people, (table, sampled))
    labelled = label(real, people, given, _recorded(record, given))
    _check_comparable(*labelled, (table, sampled))
    return labelled


def _recorded(record: SampleRecord | None, given: Mapping[str, str]) -> dict[str, str]:
    """The recorded columns by attribute.

    Raises:
        click.UsageError: A given one is recorded for another attribute, or given twice.
    """
    recorded = record.columns if record else {}
    attributes: dict[str, str] = {}
    for attribute, column in {**recorded, **given}.items():
        if column in attributes:
            raise click.UsageError(
                f"Column {column!r} is given for both {attributes[column]!r} and {attribute!r}:"
                " it can hold one of them only."
            )
        attributes[column] = attribute
    return recorded


def _check_columns(
    given: Mapping[str, str], real: pd.DataFrame, sampled: pd.DataFrame, paths: _Paths
) -> None:
    """Makes sure that each given column is there.

    Args:
        given: From attribute to column.
        real: One table.
        sampled: The other one.
        paths: Where they were read from.

    Raises:
        click.ClickException: A column is in neither table.
    """
    for attribute, column in given.items():
        if column not in real.columns and column not in sampled.columns:
            known = list(dict.fromkeys([*real.columns, *sampled.columns]))
            raise click.ClickException(
                f"Neither {paths[0]} nor {paths[1]} has a column {column!r} for {attribute!r}."
                f"{suggestion(column, known)} Their columns are: {', '.join(map(repr, known))}."
            )


def _check_comparable(real: LabelledTable, sampled: LabelledTable, paths: _Paths) -> None:
    """Makes sure that two tables have something to compare.

    Raises:
        click.ClickException: No attribute has a column in both.
    """
    from vantrel.reporting.labelled import WORDS
    from vantrel.reporting.overlap import has_whole_names

    is_in_both = any(real.has(attribute) and sampled.has(attribute) for attribute in WORDS)
    if not (is_in_both or (has_whole_names(real) and has_whole_names(sampled))):
        columns = " ".join(
            f"The columns of {path} are: {', '.join(map(repr, each.df.columns))}."
            f"{separator_hint(each.df)}"
            for path, each in zip(paths, (real, sampled), strict=True)
        )
        raise click.ClickException(
            "Nothing can be compared: no attribute of a person is known to have a column in both"
            f" tables. Name columns, as in --column gender=sex. {columns}"
        )


def _summary(figures: Figures) -> str:
    """The main figures in one line."""
    from vantrel.reporting.wording import counted, distance, listed

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
