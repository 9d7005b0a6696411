"""The options that tell how a table is written, for what is not found out."""

from __future__ import annotations

from collections.abc import Callable
from typing import Any

import click

_WORDS = {"tab": "\t", "\\t": "\t", "comma": ",", "semicolon": ";", "space": " "}


def _separator(_context: click.Context, _option: click.Parameter, value: str | None) -> str | None:
    separator = _WORDS.get(value, value) if value is not None else None
    if separator is not None and (len(separator) != 1 or separator in '"\r\n'):
        raise click.BadParameter(f"{value!r} is not one character, such as ; or | or tab.")
    return separator


def reading_options(of: str) -> Callable[[Callable[..., None]], Callable[..., None]]:
    """Gives a command the options ``separator`` and ``encoding``.

    Args:
        of: Which table they are of, as the command's help calls it.
    """
    options = (
        click.option(
            "--separator",
            metavar="CHARACTER",
            callback=_separator,
            help=f"What separates the cells of {of}, such as ; or tab, if it is not found.",
        ),
        click.option(
            "--encoding",
            metavar="NAME",
            help=f"The encoding of {of}, such as cp1252, if it is neither UTF-8 nor marked UTF-16.",
        ),
    )

    def add(command: Callable[..., None]) -> Callable[..., None]:
        for option in reversed(options):
            command = option(command)
        return command

    return add


def told(separator: str | None, encoding: str | None) -> dict[str, Any]:
    """What is told of a table to learn from: there an empty text is as good as none."""
    return {"separator": separator, "encoding": encoding, "empty_is_missing": True}
