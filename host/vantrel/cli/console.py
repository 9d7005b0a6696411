"""Prints tables: in colour to terminals, plain to files and pipes."""

from __future__ import annotations

import os
from collections.abc import Sequence
from typing import TYPE_CHECKING

import click

if TYPE_CHECKING:
    from rich.console import RenderableType
    from rich.table import Table

# Nothing is folded where no terminal says how wide it is.
_WIDTH_OF_FILES = 10_000


def print_all(*parts: RenderableType) -> None:
    """Prints texts and tables to standard output, one below the other."""
    from rich.console import Console

    console = Console(highlight=False, markup=False, emoji=False)
    if not console.is_terminal and "COLUMNS" not in os.environ:
        console.width = _WIDTH_OF_FILES
    with console.capture() as captured:
        for part in parts:
            console.print(part)
    lines = (line.rstrip() for line in captured.get().splitlines())
    click.echo("\n".join(lines), color=console.color_system is not None)


def table(*headings: str, rows: Sequence[tuple[str, ...]]) -> Table:
    """Makes a table of texts whose cells are shown as they are, folded where the width asks.

    Args:
        headings: The name of each column; without any text among them there is no line of them.
        rows: A text for each column.
    """
    from rich.table import Table
    from rich.text import Text

    made = Table(box=None, pad_edge=False, padding=(0, 2, 0, 0), show_header=any(headings))
    for heading in headings:
        made.add_column(heading, header_style="bold cyan", overflow="fold")
    for row in rows:
        made.add_row(*(Text(visible(cell)) for cell in row))
    return made


def heading(text: str) -> RenderableType:
    """Makes the line above a table, with an empty line before it."""
    from rich.text import Text

    return Text(f"\n{visible(text)}", style="bold")


def visible(text: str) -> str:
    """Escapes what a terminal would not show but obey."""
    return text if text.isprintable() else repr(text)[1:-1]


def percent(share: float) -> str:
    """Writes a share from 0 to 1 in per cent."""
    return "<0.1%" if 0 < share < 0.0005 else f"{share:.1%}"
