"""``vantrel report``: from a real table and a sample of it to a page that compares them."""

from __future__ import annotations

from collections.abc import Mapping
from contextlib import ExitStack
from pathlib import Path
from typing import TYPE_CHECKING

import click

from vantrel.command.labels import columns_by_attribute
from vantrel.command.output import STANDARD_OUTPUT, force_option, refuse_overwriting
from vantrel.command.reading import reading_options, told
from vantrel.command.terse import reporting
from vantrel.files import same_file
from vantrel.fitting import suggestion

if TYPE_CHECKING:
    from vantrel.record import SampleRecord
    from vantrel.report.columns import LabelledTable
    from vantrel.report.figures import Figures
    from vantrel.tables import Table


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
@reading_options("TABLE")
@force_option
def report(
    table: Path,
    sampled: Path,
    output: Path,
    columns: dict[str, str],
    separator: str | None,
    encoding: str | None,
    force: bool,
) -> None:
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
    from vantrel.files import replacing
    from vantrel.report.figures import compare
    from vantrel.report.page import Sources, render
    from vantrel.tables import open_table

    with reporting(), ExitStack() as stack:
        record = _record(table, sampled)
        original = stack.enter_context(open_table(table, **told(separator, encoding)))
        made = stack.enter_context(open_table(sampled, empty_is_missing=True))
        real, people = _labelled(original, made, columns, record)
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
    from vantrel.record import read_record

    record = read_record(sampled)
    if record is None and read_record(table):
        raise click.UsageError(
            f"{table} is a sample, as its record says: the real table comes first."
        )
    return record


def _labelled(
    real: Table, people: Table, given: Mapping[str, str], record: SampleRecord | None
) -> tuple[LabelledTable, LabelledTable]:
    """Tells the columns of both tables.

    Raises:
        click.ClickException: They have nothing to compare, or no such columns as are given.
        ValueError: One cannot be read.
    """
    from vantrel.report.labelling import label

    if record and record.options.get("csv_safe"):
        people = people.unguarded()
    _check_columns(given, real, people)
    labelled = label(real, people, given, _recorded(record, given))
    _check_comparable(labelled, (real, people))
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


def _check_columns(given: Mapping[str, str], real: Table, sampled: Table) -> None:
    """Makes sure that each given column is there.

    Args:
        given: From attribute to column.
        real: One table.
        sampled: The other one.

    Raises:
        click.ClickException: A column is in neither table.
    """
    for attribute, column in given.items():
        if column not in real.columns and column not in sampled.columns:
            known = list(dict.fromkeys([*real.columns, *sampled.columns]))
            raise click.ClickException(
                f"Neither {real.path} nor {sampled.path} has a column {column!r} for {attribute!r}."
                f"{suggestion(column, known)} Their columns are: {', '.join(map(repr, known))}."
            )


def _check_comparable(
    labelled: tuple[LabelledTable, LabelledTable], tables: tuple[Table, Table]
) -> None:
    """Makes sure that two tables have something to compare.

    Raises:
        click.ClickException: No attribute has a column in both.
    """
    from vantrel.report.columns import WORDS
    from vantrel.report.reappearing import has_whole_names

    real, sampled = labelled
    is_in_both = any(real.has(attribute) and sampled.has(attribute) for attribute in WORDS)
    if not (is_in_both or (has_whole_names(real) and has_whole_names(sampled))):
        columns = " ".join(
            f"The columns of {each.path} are: {', '.join(map(repr, each.columns))}."
            for each in tables
        )
        raise click.ClickException(
            "Nothing can be compared: no attribute of a person is known to have a column in both"
            f" tables. Name columns, as in --column gender=sex. {columns}"
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
