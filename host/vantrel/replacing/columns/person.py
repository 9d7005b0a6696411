"""Which columns of a table are those of one person of each row."""

from __future__ import annotations

from collections.abc import Mapping
from dataclasses import dataclass

from vantrel.attributes import ATTRIBUTES, LEARNT
from vantrel.detection import Choice

REPLACED = tuple(name for name in ATTRIBUTES if name not in LEARNT)
"""The attributes that are replaced; the others are read and stay."""


@dataclass(frozen=True)
class Person:
    """One person of each row of a table.

    Attributes:
        key: The columns whose values together name her. Where there are none, each row is another
            person.
        columns: The columns of each attribute, gender, title and country among them.
        kept: The attributes that are read and stay as they are, though they could be replaced.
        choices: What told the columns that were not named.
        is_key_named: Whether the key was named, or else chosen.
        name: What she is called where a row has several people, such as "buyer".
        of: The kind of person that her key tells apart, such as "customer".
        household: The column of the household, in which people share family names; "" if none.
    """

    key: tuple[str, ...]
    columns: Mapping[str, tuple[str, ...]]
    kept: frozenset[str] = frozenset()
    choices: tuple[Choice, ...] = ()
    is_key_named: bool = False
    name: str = ""
    of: str = ""
    household: str = ""

    @property
    def replaced(self) -> dict[str, str]:
        """The columns that get new values, each with its attribute."""
        return {
            column: attribute
            for attribute, columns in self.columns.items()
            if attribute in REPLACED and attribute not in self.kept
            for column in columns
        }

    @property
    def told(self) -> tuple[str, ...]:
        """The columns of all attributes."""
        return tuple(column for columns in self.columns.values() for column in columns)

    @property
    def needed(self) -> tuple[str, ...]:
        """The columns to read, each once."""
        return tuple(dict.fromkeys(filter(None, [*self.key, *self.told, self.household])))
