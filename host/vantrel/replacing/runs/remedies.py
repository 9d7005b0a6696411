"""How something else is done with columns: what a caller adds, or writes in the plan of a run."""

from __future__ import annotations

from collections.abc import Mapping
from pathlib import Path
from typing import Protocol

from tomlkit import item, key

from vantrel.hints import argument, named
from vantrel.replacing.columns.roles import Roles
from vantrel.replacing.fates import SCRUB
from vantrel.wording import shown


class Remedies(Protocol):
    """How something else is done with the columns of a table.

    Attributes:
        verb: What somebody does with what the methods give.
    """

    verb: str

    def deciding(self, column: str, fate: str) -> str:
        """What has a column scrubbed, or an action done with it."""

    def taking(self, columns: Mapping[str, str]) -> str:
        """What has a column of each attribute taken for one of the person of its row."""

    @property
    def telling_apart(self) -> str:
        """What tells several people of a row apart."""


class Arguments:
    """Adds arguments to a call.

    Args:
        has_plans: Whether it can write and take a plan.
    """

    verb = "add"

    def __init__(self, *, has_plans: bool) -> None:
        self._has_plans = has_plans

    def deciding(self, column: str, fate: str) -> str:
        """What has a column scrubbed, or an action done with it."""
        return argument("scrub", [column]) if fate == SCRUB else argument("others", {column: fate})

    def taking(self, columns: Mapping[str, str]) -> str:
        """What has a column of each attribute taken for one of the person of its row."""
        return argument("columns", columns)

    @property
    def telling_apart(self) -> str:
        """What tells several people of a row apart."""
        if self._has_plans:
            return f"a plan, which {argument('write_plan')} writes, tells several people apart"
        return "call the columns of each after who she is, as in 'buyer_email'"


class InPlan:
    """Writes lines in a plan.

    Args:
        plan: Its file.
        table: What it calls the table.
        roles: What the columns of the table are.
    """

    verb = "write"

    def __init__(self, plan: Path, table: str, roles: Roles) -> None:
        self._plan = named(plan)
        self._section = f"tables.{key(table).as_string()}"
        self._roles = roles

    def deciding(self, column: str, fate: str) -> str:
        """What has a column scrubbed, or an action done with it."""
        return f"{_line(column, fate)} under [{self._section}.other] in {self._plan}"

    def taking(self, columns: Mapping[str, str]) -> str:
        """What has a column of each attribute taken for one of the person of its row."""
        lines = []
        for attribute, column in columns.items():
            person = self._roles.owner(column)
            those = [*person.columns.get(attribute, ()), column]
            whose = f" of {shown(repr(person.name))}" if person.name else ""
            lines.append(_line(attribute, those if len(those) > 1 else column) + whose)
        return f"{' and '.join(lines)} under [{self._section}.people.columns] in {self._plan}"

    @property
    def telling_apart(self) -> str:
        """What tells several people of a row apart."""
        entry = f"an entry [[{self._section}.people]] for each in {self._plan}"
        return f"{entry} tells several people apart"


def _line(name: str, value: str | list[str]) -> str:
    return shown(f"{key(name).as_string()} = {item(value).as_string()}")
