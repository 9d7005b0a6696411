"""Writes figures and values for a reader."""

from __future__ import annotations

import re
import unicodedata
from collections.abc import Sequence
from decimal import Decimal

MOST_CHARACTERS = 120

# What stands between the name of a user and a host in an address. Of paths one of the two slashes
# may be lost, and of mistyped addresses both.
_PASSWORD = re.compile(r"((?<=[A-Za-z0-9]:/)/?[^\s/:@]*:|(?<![\w.%+-])[\w.%+-]+:(?!/))\S*@")

# Stands for a sign that no reader could see.
_UNSEEN = "\N{REPLACEMENT CHARACTER}"

# Signs that turn the direction of what follows: with them a name could pose as another.
_TURNS = ("LRE", "RLE", "LRO", "RLO", "PDF", "LRI", "RLI", "FSI", "PDI")


def number(count: float) -> str:
    """A number with thousands separators and one digit after the point if it is not whole."""
    return f"{count:,.0f}" if float(count).is_integer() else f"{count:,.1f}"


def counted(count: int, singular: str, plural: str | None = None) -> str:
    """A number with its noun, such as "1 row" or "1,000 rows"."""
    return f"{count:,} {singular if count == 1 else plural or singular + 's'}"


def percent(share: float) -> str:
    """A share in percent; what is not quite none or all is not told as such."""
    if share in (0, 1):
        return f"{share:.0%}"
    if 0 < share < 0.0005:
        return "<0.1%"
    if 0.9995 <= share < 1:
        return ">99.9%"
    return f"{share:.1%}"


def distance(value: float) -> str:
    """A distance from 0 to 1, with a fourth digit where it is small."""
    if 0 < value < 0.00005:
        return "<0.0001"
    return f"{value:.4f}" if 0 < value < 0.00095 else f"{value:.3f}"


def points(difference: float) -> str:
    """A signed difference of two shares, in percentage points."""
    if difference == 0:
        return "0"
    rounded = round(difference * 100, 1)
    return f"{rounded:+.1f}".replace("-", "\N{MINUS SIGN}") if rounded else "0.0"


def cell_text(value: object) -> str:
    """A value of a table as text: whole numbers are written without a point."""
    if isinstance(value, float | Decimal) and value == value // 1:
        return str(int(value))
    return str(value)


def shown(value: object, most: int = MOST_CHARACTERS) -> str:
    """A value of a table as one line: cut if very long, with signs for what cannot be seen."""
    text = "".join(_seen(character) for character in str(value)[: most + 1])
    if len(text) > most:
        return text[:most].rstrip() + "\N{HORIZONTAL ELLIPSIS}"
    return text if text.strip() else "(blank)"


def _seen(character: str) -> str:
    if character.isspace():
        return " "
    is_unseen = unicodedata.category(character) in ("Cc", "Cs")
    return _UNSEEN if is_unseen or unicodedata.bidirectional(character) in _TURNS else character


def without_passwords(text: str) -> str:
    """Gives a text without the passwords of the addresses that are in it."""
    return _PASSWORD.sub(r"\1***@", text)


def some(texts: Sequence[str], most: int) -> str:
    """Joins the first of several texts, and tells how many more there are."""
    more = f" and {len(texts) - most} more" if len(texts) > most else ""
    return ", ".join(texts[:most]) + more


def listed(items: list[str]) -> str:
    """Joins words with commas and a final "and"."""
    return " and ".join(part for part in (", ".join(items[:-1]), *items[-1:]) if part)
