"""``vantrel report``: from a real table and a sample of it to a page that compares them."""

from __future__ import annotations

from pathlib import Path
from typing import TYPE_CHECKING, Any

import click

from vantrel.cli.group import TerseCommand
from vantrel.cli.options import (
    TableType,
    columns_option,
    encoding_option,
    files_of,
    force_option,
    path_option,
    separator_option,
)
from vantrel.databases.address import Address
from vantrel.hints import named
from vantrel.storage.files import STANDARD_STREAM, refuse_overwriting, replacing, same_file

if TYPE_CHECKING:
    from vantrel.sampling.record import SampleRecord


@click.command(cls=TerseCommand, short_help="Compare a real table with a sample.")
@click.argument("table", type=TableType(has_table=True))
@click.argument("sampled", metavar="SAMPLE", type=TableType(has_table=True))
@path_option("-o", "--output", metavar="REPORT.html", required=True, help="The page to write.")
@columns_option(
    "An attribute of a person and the column that holds it in both tables or in one; may be"
    " repeated. It comes before what is recorded beside SAMPLE or found."
)
@separator_option("TABLE")
@encoding_option("TABLE")
@force_option
def report(
    table: Path | Address,
    sampled: Path | Address,
    output: Path,
    columns: Any,
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
    if output == STANDARD_STREAM:
        raise click.UsageError("A report is not written to standard output: name a file for -o.")
    files = files_of(table, sampled)
    refuse_overwriting(output, *files, force=force)
    is_same = same_file(*files) if len(files) == 2 else table == sampled
    if is_same:
        raise click.UsageError(
            f"{named(table)} and {named(sampled)} are the same {'file' if files else 'table'}:"
            " name the real table, then a sample of it."
        )

    # These take a second to import; help need not wait for them.
    import vantrel
    from vantrel.tables import open_table

    record = _record_of(sampled)
    if record is None and _record_of(table):
        raise click.UsageError(
            f"{named(table)} is a sample, as its record says: the real table comes first."
        )
    with (
        open_table(table, separator=separator, encoding=encoding, empty_is_missing=True) as real,
        open_table(sampled, empty_is_missing=True) as people,
    ):
        comparison = vantrel.compare(real, people, record=record, **columns)
    page = comparison.to_html(_name_of(table), _name_of(sampled))
    private: Any = {"private_as": table} if isinstance(table, Path) else {"mode": 0o600}
    with replacing(output, force=force, **private) as file:
        file.write(page)
    click.echo(f"{comparison.summary}; wrote {named(output)}.")


def _record_of(table: Path | Address) -> SampleRecord | None:
    """The record beside a table; one of a database has none."""
    from vantrel.sampling.record import read_record

    return read_record(table) if isinstance(table, Path) else None


def _name_of(table: Path | Address) -> str:
    if isinstance(table, Path):
        return click.format_filename(table.absolute().name)
    return str(table.table)
