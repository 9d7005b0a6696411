"""What is to be done with a column, read from a text."""

from __future__ import annotations

import re
from collections.abc import Sequence
from dataclasses import dataclass

from vantrel.errors import ReplaceError
from vantrel.hints import did_you_mean, listed
from vantrel.replacing.others.providers import refuse_unusable
from vantrel.wording import shown

MOST_DAYS = 3650

FORMS = ("YYYY-MM-DD", "DD.MM.YYYY", "DD/MM/YYYY", "MM/DD/YYYY", "YYYY/MM/DD", "YYYYMMDD")
"""How dates may be written in texts, each with a time of day behind it or without."""

_WRITTEN = {
    "keep": "keep",
    "blank": "blank",
    "fake": "fake:PROVIDER",
    "shift": "shift:DAYS",
    "hash": "hash",
}


@dataclass(frozen=True)
class Action:
    """What is to be done with a column.

    Attributes:
        kind: ``keep``, ``blank``, ``fake``, ``shift`` or ``hash``.
        provider: The method of Faker whose values it gets.
        days: By how many days its dates move at most.
        form: How its dates are written, one of :data:`FORMS`; empty if that is still to be found.
    """

    kind: str
    provider: str = ""
    days: int = 0
    form: str = ""

    @property
    def is_by_person(self) -> bool:
        """Whether it matters to it who is who."""
        return self.kind in ("fake", "shift")

    def __str__(self) -> str:
        """Writes it as it is read."""
        days = str(self.days) if self.days else ""
        return ":".join(filter(None, (self.kind, self.provider, days, self.form)))


def read_action(text: str, column: str, more: Sequence[str] = ()) -> Action:
    """Reads the action of a column.

    Args:
        text: What is written.
        column: The column.
        more: Other words that might stand there.

    Raises:
        ReplaceError: It is none.
    """
    kind, colon, rest = text.partition(":")
    where = f"Column {shown(repr(column))}:"
    if kind not in _WRITTEN:
        raise ReplaceError(
            f"{where} {shown(repr(text))} is no action.{did_you_mean(kind, [*_WRITTEN, *more])}"
            f" Actions are: {', '.join([*_WRITTEN.values(), *more])}."
        )
    if kind == "fake":
        refuse_unusable(rest, where)
        return Action(kind, provider=rest)
    if kind == "shift":
        return _shift(rest, where)
    if colon:
        raise ReplaceError(f"{where} {kind} has nothing behind it: write {kind!r}.")
    return Action(kind)


def _shift(text: str, where: str) -> Action:
    days, colon, form = text.partition(":")
    if not (re.fullmatch("[0-9]{1,4}", days) and 1 <= int(days) <= MOST_DAYS):
        raise ReplaceError(
            f"{where} shift is followed by a whole number of days from 1 to {MOST_DAYS}, as in"
            f" 'shift:180', not by {shown(repr(days))}."
        )
    if colon and form not in FORMS:
        raise ReplaceError(
            f"{where} {shown(repr(form))} is no form of dates.{did_you_mean(form, FORMS)} Forms"
            f" are: {listed(FORMS)}."
        )
    return Action("shift", days=int(days), form=form)
