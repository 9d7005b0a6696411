"""``vantrel replace`` on the tables of a database."""

from __future__ import annotations

from collections.abc import Mapping, Sequence
from dataclasses import dataclass
from pathlib import Path
from typing import TYPE_CHECKING, Any

import click

from vantrel.cli.options import as_option, refuse_for_databases
from vantrel.cli.replace_asked import Texts, Wanted
from vantrel.cli.replace_told import show, tell
from vantrel.hints import named

if TYPE_CHECKING:
    from vantrel.databases.address import Address


@dataclass(frozen=True)
class Changes:
    """The options that only databases make use of, and where things go."""

    tables: Texts
    schema: str | None
    secret: Path | None
    record: Path | None
    dry_run: bool
    write_plan: Path | None


def refuse_with_database(given: Mapping[str, Any]) -> None:
    """Refuses options that do not go with a database."""
    if options := _options(given):
        raise click.UsageError(
            f"Tables of a database are changed in place, in one transaction: leave {options} out."
        )


def refuse_without_database(given: Mapping[str, Any]) -> None:
    """Refuses options that only databases make use of."""
    if options := _options(given):
        raise click.UsageError(
            f"Only databases make use of {options}: name the address of one, or leave that out."
        )


def _options(given: Mapping[str, Any]) -> str:
    return ", ".join(as_option(name, ...) for name, value in given.items() if value)


def replace_in_database(
    addresses: Sequence[Path | Address],
    wanted: Wanted,
    changes: Changes,
    *,
    separator: str | None,
    encoding: str | None,
    force: bool,
) -> None:
    """Replaces people where they are, shows how, or writes a plan of it."""
    (address, *others) = addresses
    if others or isinstance(address, Path):
        raise click.UsageError("Name one database and no files: --table names tables of it.")
    only_read = changes.dry_run or changes.write_plan is not None
    if only_read and changes.record:
        raise click.UsageError(
            "Nothing is changed, so there is nothing to record: leave --record out."
        )
    if not wanted.people:
        refuse_for_databases(separator=separator, encoding=encoding)
    # These take a second to import; help need not wait for them.
    from dataclasses import replace

    from vantrel.cli.console import working
    from vantrel.databases.database import opened_database
    from vantrel.replacing.runs.in_place import plan_database, replace_in_place

    address = replace(address, schema=changes.schema)
    of_people: dict[str, Any] = {
        "people": wanted.people,
        "separator": separator,
        "encoding": encoding,
    }
    with opened_database(address, is_changing=not only_read) as database:
        for table in changes.tables:
            database.refuse_unknown(table)
        asked = wanted.asked_of_database(list(database.kinds))
        if changes.write_plan is not None:
            plan_database(
                database,
                changes.tables,
                changes.write_plan,
                asked,
                **of_people,
                force=force,
                progress=working,
            )
            told = f"Wrote {named(changes.write_plan)}: look at it, then run it with --plan."
            click.echo(told)
            return
        outcome, excerpts = replace_in_place(
            database,
            changes.tables,
            asked,
            secret_file=changes.secret,
            **of_people,
            record=changes.record,
            force=force,
            is_rehearsal=changes.dry_run,
            progress=working,
        )
    if changes.dry_run:
        show(excerpts)
    tell(outcome, is_rehearsal=changes.dry_run)
