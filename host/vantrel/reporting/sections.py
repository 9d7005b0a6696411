"""Shows small tables as text, in a terminal or not, and as HTML."""

from __future__ import annotations

import io
from collections.abc import Sequence
from dataclasses import dataclass
from html import escape
from typing import TYPE_CHECKING

if TYPE_CHECKING:
    from rich.console import Console

# Nothing is folded where no terminal says how wide it is.
WIDTH_OF_FILES = 10_000


@dataclass(frozen=True)
class Section:
    """A table of texts.

    Args:
        title: What stands above it, if anything.
        headings: The name of each column; without any text among them there is no line of them.
        rows: A text for each column.
    """

    title: str
    headings: Sequence[str]
    rows: Sequence[Sequence[str]]


class Sections(tuple[Section, ...]):
    """Tables one below the other, which a notebook shows as HTML."""

    __slots__ = ()

    def __str__(self) -> str:
        from rich.console import Console

        file = io.StringIO()
        print_sections(self, Console(file=file, width=WIDTH_OF_FILES, color_system=None))
        return "\n".join(line.rstrip() for line in file.getvalue().splitlines())

    __repr__ = __str__

    def _repr_html_(self) -> str:
        return "\n".join(map(_html, self))


def print_sections(sections: Sequence[Section], console: Console) -> None:
    """Prints tables whose cells are shown as they are, folded where the width asks."""
    from rich.table import Table
    from rich.text import Text

    for section in sections:
        if section.title:
            console.print(Text(f"\n{visible(section.title)}", style="bold"))
        table = Table(
            box=None, pad_edge=False, padding=(0, 2, 0, 0), show_header=any(section.headings)
        )
        for heading in section.headings:
            table.add_column(Text(visible(heading)), header_style="bold cyan", overflow="fold")
        for row in section.rows:
            table.add_row(*(Text(visible(cell)) for cell in row))
        if section.headings:
            console.print(table)


def _html(section: Section) -> str:
    title = f"<h4>{escape(section.title)}</h4>" if section.title else ""
    head = _html_row(section.headings, "th") if any(section.headings) else ""
    return f"{title}<table>{head}{''.join(_html_row(row, 'td') for row in section.rows)}</table>"


def _html_row(cells: Sequence[str], tag: str) -> str:
    return f"<tr>{''.join(f'<{tag}>{escape(cell)}</{tag}>' for cell in cells)}</tr>"


def visible(text: str) -> str:
    """Escapes what a terminal would not show but obey."""
    return text if text.isprintable() else repr(text)[1:-1]
