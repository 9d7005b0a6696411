"""``vantrel report``: from a real table and a sample of it to a page that compares them."""

from __future__ import annotations

from pathlib import Path
from typing import TYPE_CHECKING, Any

import click

from vantrel.cli.group import ASKS_FOR_LOOK, TerseCommand
from vantrel.cli.options import (
    TableType,
    columns_option,
    encoding_option,
    files_of,
    force_option,
    path_option,
    refuse_for_databases,
    separator_option,
)
from vantrel.databases.address import Address
from vantrel.hints import named
from vantrel.storage.files import (
    STANDARD_STREAM,
    refuse_overwriting,
    replacing,
    same_content,
    same_file,
)
from vantrel.wording import shown

if TYPE_CHECKING:
    from vantrel.reporting.comparison import Comparison
    from vantrel.reporting.copies.record import CopyRecord
    from vantrel.reporting.judged import Judged
    from vantrel.tables import Table


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
@path_option(
    "--record",
    metavar="FILE.json",
    help="How SAMPLE was made, if it is a table of a database: what 'vantrel replace --record' has"
    " written.",
)
@path_option("--json", metavar="FILE.json", help="Write verdicts and figures for machines, too.")
@click.option(
    "--fail-on",
    type=click.Choice(["look"]),
    help=f"End with status {ASKS_FOR_LOOK} if a verdict asks for a look, after all is written.",
)
@force_option
def report(
    table: Path | Address,
    sampled: Path | Address,
    output: Path,
    columns: Any,
    separator: str | None,
    encoding: str | None,
    record: Path | None,
    json: Path | None,
    fail_on: str | None,
    force: bool,
) -> None:
    """Compare the real table TABLE with a SAMPLE of it on one page.

    Which columns are compared is read from the record that 'vantrel sample' wrote beside SAMPLE;
    where there is none, and in TABLE where it names them otherwise, the columns of a person are
    found by their names and values. SAMPLE may also be the copy of TABLE that 'vantrel replace'
    made: its record tells what had to stay and what had to change. The page needs no network. It
    shows some values of the real table: keep it as safe as that.

    \b
    Example:
      vantrel report people.csv made-up.csv -o report.html
    """
    if output == STANDARD_STREAM:
        raise click.UsageError("A report is not written to standard output: name a file for -o.")
    if json == STANDARD_STREAM:
        raise click.UsageError(
            "Figures are not written to standard output: name a file for --json."
        )
    files = files_of(table, sampled)
    if isinstance(table, Address):
        refuse_for_databases(separator=separator, encoding=encoding)
    for written in filter(None, (output, json)):
        refuse_overwriting(written, *files, force=force)
    if json and json.absolute() == output.absolute():
        raise click.UsageError(
            "The page and the figures are two files: name another one for --json."
        )
    is_same = same_file(*files) if len(files) == 2 else table == sampled
    if is_same:
        raise click.UsageError(
            f"{named(table)} and {named(sampled)} are the same {'file' if files else 'table'}:"
            " name the real table, then a sample of it."
        )
    if len(files) == 2 and same_content(*files):
        raise click.UsageError(
            f"{named(table)} and {named(sampled)} have the same content: name the real table, then"
            " a sample of it."
        )

    # These take a second to import; help need not wait for them.
    from vantrel.cli.console import say

    copy = _copy_record(sampled, record)
    found = _compared(table, sampled, columns, copy, separator=separator, encoding=encoding)
    names = [_name_of(table), _name_of(sampled)]
    private: Any = {"private_as": table} if isinstance(table, Path) else {"mode": 0o600}
    with replacing(output, force=force, **private) as file:
        file.write(found.to_html(*names))
    if json:
        with replacing(json, force=force, **private) as file:
            file.write(found.to_json(*names))
    wrote = " and ".join(named(path) for path in (output, json) if path)
    click.echo(f"{found.summary}; wrote {wrote}.")
    if found.asks_for_look:
        if fail_on:
            raise _AsksForLook(_looks(found))
        say("note", _looks(found))


def _name_of(table: Path | Address) -> str:
    if isinstance(table, Path):
        return click.format_filename(table.absolute().name)
    return str(table.table)


class _AsksForLook(click.ClickException):
    """Some verdicts ask for a look."""

    exit_code = ASKS_FOR_LOOK


def _looks(found: Judged) -> str:
    """Names the verdicts that ask for a look."""
    about = [each.about for each in found.verdicts if each.state == "look"]
    ask = "verdict asks" if len(about) == 1 else "verdicts ask"
    return f"{len(about)} {ask} for a look: {'; '.join(about)}."


def _copy_record(sampled: Path | Address, record: Path | None) -> CopyRecord | None:
    """Reads how a copy was made, beside it or in the file that is named; None for a sample."""
    from vantrel.reporting.copies.record import read_copy_record, read_database_record

    if isinstance(sampled, Path):
        if record:
            raise click.UsageError(
                f"The record of a file stands beside it, and {named(sampled)} is one: leave"
                " --record out."
            )
        return read_copy_record(sampled)
    return read_database_record(record, sampled.table or "") if record else None


def _compared(
    table: Path | Address,
    sampled: Path | Address,
    columns: Any,
    copy: CopyRecord | None,
    *,
    separator: str | None,
    encoding: str | None,
) -> Judged:
    """Compares by the record of the second table, where there is one."""
    # These take a second to import; help need not wait for them.
    import vantrel
    from vantrel.reporting.copies.comparison import compare_copy
    from vantrel.sampling.record import read_record
    from vantrel.tables import open_table

    if copy and columns:
        raise click.UsageError(
            "The columns of a copy are those that its record tells: leave --column out."
        )
    record = None if copy or isinstance(sampled, Address) else read_record(sampled)
    if isinstance(table, Path):
        _refuse_made(table, sampled, may_be_made=bool(copy or record))
    with (
        open_table(table, separator=separator, encoding=encoding, empty_is_missing=True) as real,
        open_table(sampled, empty_is_missing=True) as people,
    ):
        if copy:
            return compare_copy(real, people, copy)
        found = vantrel.compare(real, people, record=record, **columns)
        if record is None and _may_be_copied(found, real, people):
            _say_without_record(table, sampled)
        return found


def _may_be_copied(found: Comparison, real: Table, people: Table) -> bool:
    """Tells whether a table has the rows and columns that a copy of another one has."""
    figures = found.figures
    return figures.real_rows == figures.sampled_rows and real.columns == people.columns


def _say_without_record(table: Path | Address, copy: Path | Address) -> None:
    from vantrel.cli.console import say
    from vantrel.sampling.record import record_path

    remedy = (
        f"put {named(record_path(copy))} back beside it"
        if isinstance(copy, Path)
        else "name what its --record has written, by --record"
    )
    say(
        "note",
        f"{_name_of(copy)} has no record and was compared as a sample. If 'vantrel replace' made it"
        f" from {_name_of(table)}, as its rows and columns suggest, {remedy}.",
    )


def _refuse_made(table: Path, sampled: Path | Address, *, may_be_made: bool) -> None:
    """Refuses a table that was made in the place of the real one, if it may not be a sample."""
    from vantrel.reporting.copies.record import read_copy_record
    from vantrel.sampling.record import read_record

    copy = read_copy_record(table)
    if copy and isinstance(sampled, Path) and copy.table == shown(sampled.name, 255):
        made = f"copy of {named(sampled)}"
    elif not may_be_made and (copy or read_record(table)):
        made = "copy" if copy else "sample"
    else:
        return
    raise click.UsageError(
        f"{named(table)} is a {made}, as its record says: the real table comes first."
    )
