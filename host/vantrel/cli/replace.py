"""``vantrel replace``: tables in which every person is a made-up one."""

from __future__ import annotations

from collections.abc import Iterator, Sequence
from pathlib import Path
from typing import TYPE_CHECKING, Any

import click

from vantrel.cli.group import TerseCommand
from vantrel.cli.options import (
    as_option,
    attribute_and_column,
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
from vantrel.hints import listed, named
from vantrel.storage.files import STANDARD_STREAM
from vantrel.wording import counted

if TYPE_CHECKING:
    from vantrel.replacing.asked import OfTable
    from vantrel.replacing.outcome import Replaced
    from vantrel.replacing.person import Person

type _Texts = tuple[str, ...]


def _tables_and_rest(text: str, inputs: Sequence[Path]) -> tuple[list[str | None], str]:
    """Splits off what is before the first colon if it names tables, and gives their names."""
    from vantrel.replacing.asked import names_of

    table, colon, rest = text.partition(":")
    found = [path.name for path in inputs if colon and table in names_of(path)]
    return ([*dict.fromkeys(found)], rest) if found else ([None], text)


def _keys(given: _Texts, inputs: Sequence[Path]) -> dict[str | None, list[_Texts]]:
    keys: dict[str | None, list[_Texts]] = {}
    for text in given:
        tables, columns = _tables_and_rest(text, inputs)
        for table in tables:
            keys.setdefault(table, []).append(tuple(columns.split(",")))
    return keys


def _columns(given: _Texts, inputs: Sequence[Path]) -> dict[str | None, dict[str, list[str]]]:
    found: dict[str | None, dict[str, list[str]]] = {}
    for text in given:
        tables, pair = _tables_and_rest(text, inputs)
        attribute, column = attribute_and_column(pair, "[TABLE:]ATTRIBUTE=COLUMN")
        for table in tables:
            found.setdefault(table, {}).setdefault(attribute, []).append(column)
    return found


def _others(given: _Texts, inputs: Sequence[Path]) -> dict[str | None, dict[str, str]]:
    found: dict[str | None, dict[str, str]] = {}
    for text in given:
        tables, pair = _tables_and_rest(text, inputs)
        column, equals, action = pair.rpartition("=")
        if not (column and equals and action):
            raise click.BadParameter(
                f"{text!r} is not of the form [TABLE:]COLUMN=ACTION.", param_hint="'--other'"
            )
        for table in tables:
            if column in found.setdefault(table, {}):
                raise click.UsageError(f"There are two actions of column {column!r}: name one.")
            found[table][column] = action
    return found


def _households(given: _Texts, inputs: Sequence[Path]) -> dict[str | None, str]:
    found: dict[str | None, str] = {}
    for text in given:
        tables, column = _tables_and_rest(text, inputs)
        for table in tables:
            if table in found:
                raise click.UsageError(
                    f"There are two columns of households, {found[table]!r} and {column!r}: name"
                    " one of each table."
                )
            found[table] = column
    return found


def _of_tables(
    keys: _Texts, columns: _Texts, others: _Texts, households: _Texts, inputs: Sequence[Path]
) -> tuple[OfTable, dict[str, OfTable]]:
    """Gives what is asked of all tables, and of single ones by their names."""
    from vantrel.replacing.asked import OfTable

    keys_of, columns_of = _keys(keys, inputs), _columns(columns, inputs)
    others_of, households_of = _others(others, inputs), _households(households, inputs)

    def asked(table: str | None) -> OfTable:
        return OfTable(
            tuple(keys_of.get(table, ())),
            columns_of.get(table, {}),
            others=others_of.get(table, {}),
            household=households_of.get(table, ""),
        )

    named_tables = {**keys_of, **columns_of, **others_of, **households_of}
    return asked(None), {table: asked(table) for table in named_tables if table}


@click.command(cls=TerseCommand)
@click.argument(
    "tables", metavar="TABLE...", nargs=-1, required=True, type=click.Path(path_type=Path)
)
@path_option(
    "-o",
    "--output",
    metavar="COPY",
    help="The copy to write, of the kind of the table; of several tables the folder of the copies.",
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
    metavar="COLUMN",
    help="A column of other things in which the names, address and numbers of the row's person are"
    " replaced, too; may be repeated.",
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
    tables: tuple[Path, ...],
    output: Path | None,
    keys: _Texts,
    secret: Path | None,
    people: Path | None,
    columns: _Texts,
    keep: list[str],
    scrub: _Texts,
    others: _Texts,
    household: _Texts,
    fail_on_leak: bool,
    plan: Path | None,
    write_plan: Path | None,
    strict: bool,
    no_real: bool,
    place: str | None,
    phone_numbers: str | None,
    latin: bool,
    on_dask: bool,
    scheduler: str | None,
    workers: int | None,
    resume: bool,
    force: bool,
    **of_csv: Any,
) -> None:
    """Copy tables with every person replaced by a made-up one.

    TABLE is CSV or Parquet (.parquet) by the end of its name, compressed if that is .gz or .zst.
    Names, e-mail addresses, user names, passwords and telephone numbers are replaced; they follow
    the gender, title and country of the row, which stay. All other columns, the rows and their
    order stay to the letter. Equal keys are one person in all tables, and the same secret makes the
    same people of the same keys whenever it is used. Beside each copy, a small file that ends in
    .made.json tells how it was made.

    \b
    Examples:
      vantrel replace customers.csv -o copy.csv --key customer_id --secret people.secret
      vantrel replace customers.csv orders.parquet -o copy --key customer_id --secret people.secret
      vantrel replace customers.csv --key customer_id --write-plan replace.toml
      vantrel replace customers.csv -o copy.csv --plan replace.toml --secret people.secret
      vantrel replace customers -o copy --dask --key customer_id --secret people.secret
    """
    if (output is None) == (write_plan is None):
        raise click.UsageError("Name either the copy to write, by -o, or a plan, by --write-plan.")
    if output == STANDARD_STREAM:
        raise click.UsageError("Copies are not written to standard output: name a file for -o.")
    of_cluster: dict[str, Any] = {"scheduler": scheduler, "workers": workers, "resume": resume}
    of_process = {"people": people, "fail_on_leak": fail_on_leak, "no_real": no_real, **of_csv}
    if on_dask:
        _refuse_without_cluster(tables, write_plan, of_cluster)
        refuse_superfluous(
            of_process | {"force": force and output}, on_dask, "a new folder of Parquet files"
        )
    else:
        refuse_superfluous(of_cluster, on_dask, "")
    # These take a second to import; help need not wait for them.
    from vantrel.cli.console import say, working
    from vantrel.fitting.checks import check_ways
    from vantrel.replacing import require_pyarrow

    require_pyarrow()
    from vantrel.replacing.asked import Asked, OfTable
    from vantrel.replacing.files import plan_files, replace_files
    from vantrel.replacing.plan import read_plan
    from vantrel.util.locale.faker_locales import DEFAULT_LOCALE

    all_tables = [*tables, *([people] if people else [])]
    of_all, of_tables = _of_tables(keys, columns, others, household, all_tables)
    asked = Asked(
        OfTable(keep=frozenset(keep), scrub=scrub).over(of_all),
        of_tables,
        read_plan(plan) if plan else None,
        place=place or DEFAULT_LOCALE,
        no_real=no_real,
        ways=check_ways(phone_numbers=phone_numbers or "fiction", latin=latin),
        fail_on_leak=fail_on_leak,
        strict=strict,
    )
    if output is None:
        assert write_plan is not None
        if on_dask:
            from vantrel.scale import plan_folder

            plan_folder(tables[0], write_plan, asked, force=force)
        else:
            plan_files(tables, write_plan, asked, force=force, **of_csv)
        click.echo(f"Wrote {named(write_plan)}: look at it, then run it with --plan.")
        return
    if on_dask:
        from vantrel.scale import replace_folder

        outcome = replace_folder(
            tables[0], output, asked, secret=secret, progress=working, **of_cluster
        )
    else:
        outcome = replace_files(
            tables,
            output,
            asked,
            secret_file=secret,
            people=people,
            force=force,
            progress=working,
            **of_csv,
        )
    for table in outcome.tables:
        _tell(table)
    for note in outcome.notes:
        say("note", note)


def _refuse_without_cluster(
    tables: Sequence[Path], write_plan: Path | None, of_cluster: dict[str, Any]
) -> None:
    """Refuses what does not go with a folder on Dask, or with its plan."""
    if len(tables) > 1:
        raise click.UsageError("--dask copies one folder of Parquet files: name one TABLE.")
    options = [as_option(name, ...) for name, value in of_cluster.items() if value]
    if write_plan is not None and options:
        raise click.UsageError(
            f"A plan is written without a cluster: leave {', '.join(options)} out."
        )


def _tell(table: Replaced) -> None:
    """Prints what the columns of a table were taken for."""
    from vantrel.cli.console import print_all
    from vantrel.reporting.sections import Section

    sections = []
    for person in table.roles.people:
        title = f"{table.path}: {person.name}" if person.name else str(table.path)
        rows = [*_rows(table, person), *_rows_of_others(table, person)]
        sections.append(Section(title, ("Attribute", "Column", "Found by", ""), rows))
    print_all(sections)
    if table.staying:
        click.echo(f"Other columns stay: {listed(table.staying)}.")
    click.echo(f"Replaced the people of {counted(table.rows, 'row')}; wrote {named(table.output)}.")


def _rows(table: Replaced, person: Person) -> Iterator[tuple[str, str, str, str]]:
    """What the columns of a person were taken for."""
    told_by = {choice.attribute: choice.reason for choice in person.choices}
    otherwise = "plan" if table.asked.is_planned else "--column"
    for attribute, columns in person.columns.items():
        for column in columns:
            told = told_by.get(attribute, otherwise)
            yield attribute, column, told, _fate(person, column, attribute)


def _rows_of_others(table: Replaced, person: Person) -> Iterator[tuple[str, str, str, str]]:
    """What becomes of the other columns that are a person's."""
    by_option = "plan" if table.asked.is_planned else "--other"
    for column, action in table.others.items():
        if table.roles.owner(column) is person:
            yield "", column, by_option, str(action)


def _fate(person: Person, column: str, attribute: str) -> str:
    if column in person.replaced:
        return "replaced"
    return "kept" if attribute in person.kept else "stays"
