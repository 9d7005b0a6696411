"""Prints tables and progress: in colour to terminals, plain to files and pipes."""

from __future__ import annotations

import os
import sys
from collections.abc import Callable, Iterator, Sequence
from contextlib import AbstractContextManager, contextmanager
from typing import TYPE_CHECKING

import click

from vantrel.wording import without_passwords

if TYPE_CHECKING:
    from vantrel.reporting.sections import Section


def print_all(sections: Sequence[Section]) -> None:
    """Prints tables to standard output, one below the other."""
    from rich.console import Console

    from vantrel.reporting.sections import WIDTH_OF_FILES, print_sections

    console = Console(highlight=False, markup=False, emoji=False)
    if not console.is_terminal and "COLUMNS" not in os.environ:
        console.width = WIDTH_OF_FILES
    with console.capture() as captured:
        print_sections(sections, console)
    lines = (line.rstrip() for line in captured.get().splitlines())
    click.echo("\n".join(lines), color=console.color_system is not None)


def say(what: str, message: str) -> None:
    """Prints a line to stderr, in which no sign does what it was not printed for.

    Args:
        what: "error", "warning" or "note".
        message: What is told. Names of others' are shown in it so that they can be used; what has
            come through all the same, by a message of another package perhaps, is replaced.
    """
    line = without_passwords(" ".join(message.split()))
    seen = "".join(sign if sign.isprintable() else "\N{REPLACEMENT CHARACTER}" for sign in line)
    click.echo(f"vantrel: {what}: {seen}", err=True)


def progress(rows: int) -> AbstractContextManager[Callable[[int], None]]:
    """Shows on stderr how far the people are that are made; see :func:`working`."""
    return working("Making people", rows)


@contextmanager
def working(what: str, rows: int | None) -> Iterator[Callable[[int], None]]:
    """Shows on stderr how far the rows are; nothing where that is no terminal.

    Args:
        what: What is done with them.
        rows: How many there are, if that is known.

    Yields:
        What is to be called with each number of further rows.
    """
    if not sys.stderr.isatty():
        yield lambda _rows: None
        return
    from rich.console import Console
    from rich.progress import (
        BarColumn,
        MofNCompleteColumn,
        Progress,
        ProgressColumn,
        Task,
        TimeRemainingColumn,
    )
    from rich.text import Text

    class Rate(ProgressColumn):
        """The rows of a second."""

        def render(self, task: Task) -> Text:
            return Text(f"{task.speed or 0:,.0f} rows/s")

    columns = (what, BarColumn(), MofNCompleteColumn(), Rate(), TimeRemainingColumn())
    with Progress(*columns, console=Console(stderr=True), transient=True) as bar:
        task = bar.add_task(what, total=rows)
        yield lambda further: bar.update(task, advance=further)
