"""What stands in a plan."""

from __future__ import annotations

from collections.abc import Mapping, Sequence
from dataclasses import dataclass
from pathlib import Path
from typing import Literal

import msgspec

FORMAT = "vantrel-plan"
SCHEMA_VERSION = 1

type Columns = str | list[str]


class Person(msgspec.Struct, forbid_unknown_fields=True):
    """A person of each row of a table.

    Attributes:
        name: What she is called, where a row has several people.
        key: The columns that name her together; chosen if there is none.
        of: The kind of person that the key tells apart, in all tables; keys of no kind are of one.
        columns: The column, or columns, of each attribute. Others are not looked for.
        keep: The attributes that stay as they are.
        household: The column in whose households people share family names.
    """

    columns: dict[str, Columns]
    name: str = ""
    key: list[str] = []
    of: str = ""
    household: str = ""
    keep: list[str] = []

    def columns_of(self, attribute: str) -> Sequence[str]:
        """The columns of an attribute, as several."""
        those = self.columns.get(attribute, [])
        return [those] if isinstance(those, str) else those

    @property
    def named(self) -> list[str]:
        """All columns that are named."""
        told = [column for attribute in self.columns for column in self.columns_of(attribute)]
        return [*self.key, *told]


class TablePlan(msgspec.Struct, forbid_unknown_fields=True):
    """What becomes of a table.

    Attributes:
        people: The people of each row, one or more.
        other: What becomes of each other column: an action, or one of the words of ``fates``.
    """

    people: list[Person]
    other: dict[str, str] = {}


class Content(msgspec.Struct, forbid_unknown_fields=True):
    """What a file of a plan has in it.

    Attributes:
        tables: The plan of each table, by the name of its file.
        new_columns: Whether columns that are not in it are refused, or stay.
    """

    format: Literal["vantrel-plan"]
    schema_version: Literal[1]
    tables: dict[str, TablePlan]
    new_columns: Literal["refuse", "keep"] = "refuse"


@dataclass(frozen=True)
class Plan:
    """What becomes of the tables of a run.

    Attributes:
        path: The file that tells so.
        tables: The plan of each table, by the name of its file.
        new_columns: Whether columns that are not in it are refused, or stay.
    """

    path: Path
    tables: Mapping[str, TablePlan]
    new_columns: Literal["refuse", "keep"]
