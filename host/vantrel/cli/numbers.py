"""Reads numbers that the user gives."""

from __future__ import annotations

import re
from collections.abc import Callable
from decimal import Decimal

import click

# Ways to write a whole number that are not its digits alone: "1,000,000", "1e6", "1.5e6".
_SEPARATED = re.compile(r"\d{1,3}(,\d{3})+")
_SCIENTIFIC = re.compile(r"\d+(\.\d+)?e\+?\d{1,2}", re.IGNORECASE)


def whole_number(least: int) -> Callable[[str], int]:
    """Makes the type of an option that takes a whole number, written in digits.

    Args:
        least: The least that is allowed.
    """

    def read(value: str) -> int:
        try:
            number = int(value)
        except ValueError:
            raise click.BadParameter(f"{value!r} is no whole number{_hint(value)}.") from None
        if number < least:
            raise click.BadParameter(f"{number} is below {least}.")
        return number

    return read


def _hint(text: str) -> str:
    """Tells how to write what is a whole number all the same."""
    if _SEPARATED.fullmatch(text):
        text = text.replace(",", "")
    elif not _SCIENTIFIC.fullmatch(text) or Decimal(text) % 1:
        return ""
    return f": write {int(Decimal(text))}"
