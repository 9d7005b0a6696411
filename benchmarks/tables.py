"""Tables that read well in a terminal and in Markdown alike."""

from __future__ import annotations

from collections.abc import Sequence

Row = Sequence[str]


def table(head: Row, rows: Sequence[Row]) -> str:
    """Lays out a table whose first column is text and whose others are numbers.

    Args:
        head: The columns' names.
        rows: The cells.

    Returns:
        The lines of a Markdown table whose cells stand below each other.
    """
    widths = [max(map(len, column)) for column in zip(head, *rows, strict=True)]
    rule = ["-" * widths[0], *("-" * (width - 1) + ":" for width in widths[1:])]
    return "\n".join(_line(row, widths) for row in (head, rule, *rows))


def _line(cells: Row, widths: Sequence[int]) -> str:
    numbers = (cell.rjust(width) for cell, width in zip(cells[1:], widths[1:], strict=True))
    return f"| {' | '.join([cells[0].ljust(widths[0]), *numbers])} |"


def micros(value: float) -> str:
    """Writes microseconds."""
    return f"{figure(value)} µs"


def megabytes(value: float) -> str:
    """Writes a number of bytes in millions."""
    return f"{figure(value / 1e6)} MB"


def figure(value: float) -> str:
    """Writes a number with three digits that count, or two decimals."""
    decimals = 0 if abs(value) >= 100 else 1 if abs(value) >= 10 else 2
    return f"{value:.{decimals}f}"
