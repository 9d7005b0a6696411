"""Reads plans."""

from __future__ import annotations

from pathlib import Path
from typing import Any

import msgspec

from vantrel.attributes import ATTRIBUTES
from vantrel.errors import PlanError
from vantrel.hints import did_you_mean
from vantrel.replacing.others.action import read_action
from vantrel.replacing.plan.form import KEEP, SCRUB, UNDECIDED, Plan
from vantrel.storage.toml import read_toml
from vantrel.wording import shown

_MOST_BYTES = 2**24


def read_plan(path: Path) -> Plan:
    """Reads a plan from a file of TOML.

    Raises:
        PlanError: It cannot be read, is no plan, or contradicts itself.
    """
    return read_toml(path, "Plan", _plan, PlanError, _MOST_BYTES)


def _plan(content: dict[str, Any]) -> Plan:
    if "format" not in content:
        raise ValueError('It has no line format = "vantrel-plan", so it is no plan')
    plan = msgspec.convert(content, Plan)
    for name, table in plan.tables.items():
        where = f"Table {shown(repr(name))}"
        if len(table.people) != 1:
            raise ValueError(f"{where} has {len(table.people)} people: each row has one")
        (person,) = table.people
        for attribute in (*person.columns, *person.keep):
            if attribute not in ATTRIBUTES:
                hint = did_you_mean(attribute, ATTRIBUTES)
                raise ValueError(f"{where}: {shown(repr(attribute))} is no attribute.{hint}")
        for column, fate in table.other.items():
            if fate not in (KEEP, SCRUB, UNDECIDED):
                read_action(fate, column)
        for column in person.named:
            if table.other.get(column, "keep") != "keep" and column not in person.key:
                raise ValueError(
                    f"{where}: column {shown(repr(column))} is the person's and in other, too"
                )
    return plan
