"""Reads numbers that the user gives."""

from __future__ import annotations

import re
from decimal import Decimal
from typing import override

import click

# Ways to write a whole number that are not its digits alone: "1,000,000", "1e6", "1.5e6".
_SEPARATED = re.compile(r"\d{1,3}(,\d{3})+")
_SCIENTIFIC = re.compile(r"\d+(\.\d+)?e\+?\d{1,2}", re.IGNORECASE)


class WholeNumber(click.ParamType):
    """A whole number, written in digits.

    Args:
        least: The least that is allowed.
    """

    name = "n"

    def __init__(self, least: int) -> None:
        self._least = least

    @override
    def convert(
        self, value: str | int, param: click.Parameter | None, ctx: click.Context | None
    ) -> int:
        """Gives the number.

        Raises:
            click.BadParameter: The value is no whole number or too small.
        """
        try:
            number = int(value)
        except ValueError:
            self.fail(f"{value!r} is no whole number{_hint(str(value))}.", param, ctx)
        if number < self._least:
            self.fail(f"{number} is below {self._least}.", param, ctx)
        return number


def _hint(text: str) -> str:
    """Tells how to write what is a whole number all the same."""
    if _SEPARATED.fullmatch(text):
        text = text.replace(",", "")
    elif not _SCIENTIFIC.fullmatch(text) or Decimal(text) % 1:
        return ""
    return f": write {int(Decimal(text))}"
