"""``vantrel replace``: tables in which every person is a made-up one."""

from __future__ import annotations

from pathlib import Path
from typing import TYPE_CHECKING, Any

import click

from vantrel.cli.group import TerseCommand
from vantrel.cli.options import (
    TableType,
    dask_option,
    encoding_option,
    force_option,
    latin_option,
    list_option,
    path_option,
    phone_numbers_option,
    refuse_superfluous,
    resume_option,
    scheduler_option,
    separator_option,
    workers_option,
)
from vantrel.cli.replace_asked import Texts, Wanted
from vantrel.cli.replace_dask import replace_on_dask
from vantrel.cli.replace_database import (
    Changes,
    refuse_with_database,
    refuse_without_database,
    replace_in_database,
)
from vantrel.cli.replace_told import tell
from vantrel.hints import named
from vantrel.storage.files import STANDARD_STREAM

if TYPE_CHECKING:
    from vantrel.databases.address import Address


@click.command(cls=TerseCommand)
@click.argument("tables", metavar="TABLE...", nargs=-1, required=True, type=TableType())
@path_option(
    "-o",
    "--output",
    metavar="COPY",
    help="The copy to write, of the kind of the table; of several tables the folder of the copies.",
)
@click.option(
    "--table",
    "in_database",
    multiple=True,
    metavar="NAME",
    help="A table of the database; may be repeated. [default: all in which people are found]",
)
@click.option(
    "--schema",
    metavar="NAME",
    help="The schema of the tables of the database. [default: that of the connection]",
)
@click.option(
    "--dry-run",
    is_flag=True,
    help="Make all new values for the database, show ten rows before and after, and change"
    " nothing.",
)
@path_option(
    "--record",
    metavar="FILE",
    help="Write how the people of the database were replaced, which copies have beside them.",
)
@click.option(
    "--key",
    "keys",
    multiple=True,
    metavar="[TABLE:]COLUMN,...",
    help="The column that names the person of a row, or several together; may be repeated where"
    " a row has several people: a column such as buyer_id is the key of the buyer. [default: the"
    " e-mail address, or else the full name, or else each row is a person]",
)
@path_option(
    "--secret",
    metavar="FILE",
    help="The file with the secret that decides who becomes whom, made if it is not there."
    " [default: the environment's VANTREL_SECRET, or one that nobody ever knows]",
)
@path_option(
    "--people",
    metavar="TABLE",
    help="A table that tells gender and country of each key, and is only read.",
)
@click.option(
    "--column",
    "columns",
    multiple=True,
    metavar="[TABLE:]ATTRIBUTE=COLUMN",
    help="A column that holds an attribute, whatever would be found; may be repeated, also for"
    " several columns of one attribute.",
)
@list_option("--keep", "Attributes that stay as they are.")
@click.option(
    "--scrub",
    multiple=True,
    metavar="[TABLE:]COLUMN",
    help="A column of other things in which the names of the row's person are replaced, too, and"
    " her address and numbers where the table has them; may be repeated.",
)
@click.option(
    "--other",
    "others",
    multiple=True,
    metavar="[TABLE:]COLUMN=ACTION",
    help="What becomes of another column: keep, blank, hash (another value of the same form, the"
    " same everywhere), shift:DAYS (all dates of a person moved by as many days) or fake:PROVIDER"
    " (what that method of Faker gives, one value for each person); may be repeated.",
)
@click.option(
    "--household",
    multiple=True,
    metavar="[TABLE:]COLUMN",
    help="The column that tells households: people of one who share a family name share the made-up"
    " one, in the form of each one's gender; may be repeated for several tables.",
)
@click.option(
    "--fail-on-leak",
    is_flag=True,
    help="Write nothing, and end with status 3, where a column still names the row's person.",
)
@path_option(
    "--write-plan",
    metavar="FILE",
    help="Write what would become of each column as a plan to look at, and make nothing else.",
)
@path_option(
    "--plan",
    metavar="FILE",
    help="Do what a plan says. Other options come before it; a column that it does not know is"
    " refused.",
)
@click.option(
    "--strict",
    is_flag=True,
    help="Write nothing while a column looks personal and it is not decided what becomes of it.",
)
@click.option(
    "--no-real",
    is_flag=True,
    help="Give nobody the full name or telephone number of a real person of the tables. Who becomes"
    " whom depends on the tables then, not on secret and key alone.",
)
@click.option(
    "--locale",
    "place",
    metavar="LOCALE",
    help="Where the people are from of whom no column says so. [default: en_GB]",
)
@phone_numbers_option
@latin_option
@separator_option("the tables")
@encoding_option("the tables")
@dask_option("Copy a folder of Parquet files, the only TABLE, on a Dask cluster.")
@scheduler_option
@workers_option
@resume_option
@force_option
def replace(
    tables: tuple[Path | Address, ...],
    output: Path | None,
    in_database: Texts,
    schema: str | None,
    dry_run: bool,
    record: Path | None,
    plan: Path | None,
    write_plan: Path | None,
    keys: Texts,
    columns: Texts,
    others: Texts,
    household: Texts,
    people: Path | None,
    secret: Path | None,
    on_dask: bool,
    scheduler: str | None,
    workers: int | None,
    resume: bool,
    **options: Any,
) -> None:
    """Copy tables with every person replaced by a made-up one, or replace people in a database.

    TABLE is CSV or Parquet (.parquet) by the end of its name, compressed if that is .gz or .zst.
    Names, e-mail addresses, user names, passwords and telephone numbers are replaced; they follow
    the gender, title and country of the row, which stay. All other columns, the rows and their
    order stay to the letter. Equal keys are one person in all tables, and the same secret makes the
    same people of the same keys whenever it is used. Beside each copy, a small file that ends in
    .made.json tells how it was made.

    In the place of files, TABLE is the address of a PostgreSQL or SQLite database, whose tables are
    changed where they are, all at once or not at all; --dry-run shows how.

    \b
    Examples:
      vantrel replace customers.csv -o copy.csv --key customer_id --secret people.secret
      vantrel replace customers.csv orders.parquet -o copy --key customer_id --secret people.secret
      vantrel replace customers.csv --key customer_id --write-plan replace.toml
      vantrel replace customers.csv -o copy.csv --plan replace.toml --secret people.secret
      vantrel replace customers -o copy --dask --key customer_id --secret people.secret
      vantrel replace postgresql://localhost/staging --table customers --key id --dry-run
    """
    of_files = {name: options.pop(name) for name in ("separator", "encoding", "force")}
    of_cluster = {"scheduler": scheduler, "workers": workers, "resume": resume}
    wanted = Wanted(keys, columns, others, household, plan, people, **options)
    files = [table for table in tables if isinstance(table, Path)]
    if len(files) < len(tables):
        if output is not None:
            raise click.UsageError("Tables of a database are changed in place: leave -o out.")
        refuse_with_database({"on_dask": on_dask, **of_cluster})
        changes = Changes(in_database, schema, secret, record, dry_run, write_plan)
        replace_in_database(tables, wanted, changes, **of_files)
        return
    refuse_without_database(
        {"table": in_database, "schema": schema, "dry_run": dry_run, "record": record}
    )
    if (output is None) == (write_plan is None):
        raise click.UsageError("Name either the copy to write, by -o, or a plan, by --write-plan.")
    if output == STANDARD_STREAM:
        raise click.UsageError("Copies are not written to standard output: name a file for -o.")
    if on_dask:
        replace_on_dask(files, output, write_plan, secret, wanted, of_cluster, of_files)
        return
    refuse_superfluous(of_cluster, on_dask, "")
    # These take a second to import; help need not wait for them.
    from vantrel.cli.console import working
    from vantrel.replacing import require_pyarrow

    require_pyarrow()
    from vantrel.replacing.runs.files import plan_files, replace_files

    asked = wanted.asked([*files, *([people] if people else [])])
    if output is None:
        assert write_plan is not None
        plan_files(files, write_plan, asked, people=people, progress=working, **of_files)
        click.echo(f"Wrote {named(write_plan)}: look at it, then run it with --plan.")
        return
    outcome = replace_files(
        files, output, asked, secret_file=secret, people=people, progress=working, **of_files
    )
    tell(outcome)
