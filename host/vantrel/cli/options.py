"""What the options of several commands have in common."""

from __future__ import annotations

from collections.abc import Callable, Iterable, Mapping, Sequence
from pathlib import Path
from typing import Any, Protocol, override

import click

from vantrel.attributes import ATTRIBUTES, WORDS
from vantrel.databases.address import Address, is_address, read_address
from vantrel.hints import quoted


class _Decorator(Protocol):
    """Adds an option to a command."""

    def __call__[F: Callable[..., Any] | click.Command](self, command: F, /) -> F: ...


class TableType(click.ParamType):  # type: ignore[type-arg]  # not generic in all versions
    """A table in a file, or the address of a database.

    Args:
        has_table: Whether an address names a table of its database.
    """

    name = "table"

    def __init__(self, *, has_table: bool = False) -> None:
        self._has_table = has_table

    @override
    def convert(self, value: Any, _param: object, _ctx: object) -> Path | Address:
        """Reads what was given."""
        if isinstance(value, str) and is_address(value):
            return read_address(value, has_table=self._has_table)
        return Path(value)


def refuse_for_databases(**of_files: object) -> None:
    """Refuses options of files where the tables are those of a database."""
    if given := [as_option(name, ...) for name, value in of_files.items() if value]:
        raise click.UsageError(
            f"Only files make use of {', '.join(given)}: leave that out for tables of databases."
        )


def files_of(*tables: Path | Address | None) -> list[Path]:
    """Those of several tables that are files."""
    return [table for table in tables if isinstance(table, Path)]


# The options whose names are not those of the library's keywords.
_NAMES = {"n": "-n", "on_dask": "--dask", "locales": "--locale", "place": "--locale"}

force_option = click.option("--force", is_flag=True, help="Overwrite the output if it is there.")

values_option = click.option(
    "--show-values",
    is_flag=True,
    help="Name values of the table in notes and errors, not only their number and rows.",
)

email_domain_option = click.option(
    "--email-domain",
    metavar="DOMAIN",
    help="The domain of e-mail addresses, such as example.org; as-made for those that Faker makes,"
    " which may belong to somebody. [default: many, under .example]",
)

phone_numbers_option = click.option(
    "--phone-numbers",
    type=click.Choice(["fiction", "valid"]),
    help="Numbers that are kept for fiction, where a country has such, or valid ones everywhere."
    " [default: fiction]",
)

latin_option = click.option(
    "--latin", is_flag=True, help="Write names in Latin letters, whatever a country has."
)

patterns_option = click.option(
    "--allow-patterns",
    is_flag=True,
    help="Take a model file with patterns of its own. Do so if you trust whoever made it.",
)


def as_option(name: str, value: object) -> str:
    """Writes an argument of the library as an option of the command."""
    if name in ATTRIBUTES:
        return f"--column {quoted(f'{name}={value}')}"
    if name == "others" and isinstance(value, dict):
        pairs = (quoted(f"{column}={action}") for column, action in value.items())
        return " ".join(f"--other {pair}" for pair in pairs)
    if isinstance(value, dict):  # the columns of attributes
        return " ".join(as_option(*pair) for pair in value.items())
    option = _NAMES.get(name, f"--{name.replace('_', '-')}")
    if value is True or value is ...:
        return option
    values = value if isinstance(value, list) else [value]
    return f"{option} {quoted(','.join(map(str, values)))}"


def dask_option(does: str) -> _Decorator:
    """The option that has something done on Dask."""
    return click.option("--dask", "on_dask", is_flag=True, help=does)


scheduler_option = click.option(
    "--scheduler",
    metavar="ADDRESS",
    help="The cluster's scheduler, such as tcp://10.0.0.1:8786. [default: a cluster on this"
    " machine]",
)

workers_option = click.option(
    "--workers",
    metavar="N",
    type=click.IntRange(min=1),
    help="The number of processes of the cluster on this machine. [default: one a core]",
)

resume_option = click.option(
    "--resume", is_flag=True, help="Go on with a run on Dask that was stopped."
)


def refuse_superfluous(
    asked: Mapping[str, Any], on_dask: bool, makes: str, more: Iterable[str] = ()
) -> None:
    """Refuses options that go with the other way of making something only.

    Args:
        asked: The values of the options of the other way, by their keywords.
        on_dask: Whether it is made on Dask.
        makes: What is made there.
        more: Further options that do not go with it.
    """
    options = ", ".join([*(as_option(name, ...) for name, value in asked.items() if value), *more])
    if options:
        raise click.UsageError(
            f"--dask makes {makes}: leave {options} out."
            if on_dask
            else f"Only --dask makes use of {options}: add it."
        )


def path_option(
    *names: str,
    metavar: str,
    help: str,  # noqa: A002 - click's own name
    required: bool = False,
) -> _Decorator:
    """An option that takes the name of a file."""
    return click.option(
        *names, metavar=metavar, required=required, help=help, type=click.Path(path_type=Path)
    )


def columns_option(help: str) -> _Decorator:  # noqa: A002 - click's own name
    """The option that names the columns of attributes."""
    return click.option(
        "--column",
        "columns",
        multiple=True,
        metavar="ATTRIBUTE=COLUMN",
        callback=_columns_by_attribute,
        help=help,
    )


def attribute_and_column(text: str, form: str) -> tuple[str, str]:
    """Splits what names the column of an attribute; ``form`` is what an error says it should be."""
    attribute, equals, column = text.partition("=")
    hint = "'--column'"
    if not (equals and column):
        raise click.BadParameter(f"{text!r} is not of the form {form}.", param_hint=hint)
    if attribute not in WORDS and column in WORDS:
        message = f"{text!r} is the wrong way round: write {column}={attribute}."
        raise click.BadParameter(message, param_hint=hint)
    return attribute, column


def _columns_by_attribute(
    _context: click.Context, _option: click.Parameter, values: Sequence[str]
) -> dict[str, str]:
    columns: dict[str, str] = {}
    for value in values:
        attribute, column = attribute_and_column(value, "ATTRIBUTE=COLUMN")
        if attribute in columns:
            raise click.BadParameter(f"{attribute!r} is given twice.")
        columns[attribute] = column
    return columns


def list_option(name: str, help: str) -> _Decorator:  # noqa: A002 - click's own name
    """An option that takes attributes, separated by commas."""

    def split(_context: click.Context, _option: click.Parameter, value: str) -> list[str]:
        return [attribute.strip() for attribute in value.split(",")] if value else []

    return click.option(name, metavar="ATTRIBUTE,...", default="", callback=split, help=help)


_SEPARATORS = {"tab": "\t", "\\t": "\t", "comma": ",", "semicolon": ";", "space": " "}


def _separator(_context: click.Context, _option: click.Parameter, value: str | None) -> str | None:
    separator = None if value is None else _SEPARATORS.get(value, value)
    if separator is not None and (len(separator) != 1 or separator in '"\r\n'):
        raise click.BadParameter(f"{value!r} is not one character, such as ; or | or tab.")
    return separator


def separator_option(of: str) -> _Decorator:
    """The option that tells what separates the cells of a table, where it is not found."""
    words = f"What separates the cells of {of}, such as ; or tab, if it is not found."
    return click.option("--separator", metavar="CHARACTER", callback=_separator, help=words)


def encoding_option(of: str) -> _Decorator:
    """The option that tells the encoding of a table, where it is not found."""
    words = f"The encoding of {of}, such as cp1252, if it is neither UTF-8 nor marked UTF-16."
    return click.option("--encoding", metavar="NAME", help=words)
