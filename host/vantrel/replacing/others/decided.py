"""Decides what becomes of the other columns of a table, and refuses what contradicts."""

from __future__ import annotations

from collections.abc import Collection, Mapping
from dataclasses import replace
from typing import Any

import pandas as pd
import pyarrow as pa

from vantrel.arguments import kind_of
from vantrel.attributes import LEARNT
from vantrel.detection.values import SAMPLE_SIZE
from vantrel.errors import ArgumentTypeError, ReplaceError
from vantrel.hints import argument, did_you_mean, listed
from vantrel.replacing.columns.roles import Roles
from vantrel.replacing.others.action import FORMS, Action, read_action
from vantrel.replacing.others.dates import likely_forms
from vantrel.replacing.runs.frames import arrow_of, without_gaps
from vantrel.replacing.values.keys import as_texts
from vantrel.wording import shown


def decided(
    table: pd.DataFrame, roles: Roles, others: Mapping[str, str], scrub: Collection[str] = ()
) -> dict[str, Action]:
    """Reads the actions of a table's columns.

    Args:
        table: The table, or as much of it as tells how its dates are written.
        roles: What its columns are.
        others: The action of each column.
        scrub: The columns in which people's names are replaced.

    Raises:
        ArgumentTypeError: An action is no text.
        ReplaceError: It is none, there is no such column, or something else is to be done with it.
    """
    found = {}
    for column, text in others.items():
        if not isinstance(text, str):
            raise ArgumentTypeError(
                f"The action of column {column!r} is a text such as 'hash', not {kind_of(text)}."
            )
        if column not in table.columns:
            raise ReplaceError(
                f"The table has no column {column!r} to change."
                f"{did_you_mean(column, table.columns)} Its columns are: {listed(table.columns)}."
            )
        action = read_action(text, column)
        _refuse_contradiction(column, action, roles, scrub)
        found[column] = _with_form(action, column, table)
    return found


def _refuse_contradiction(
    column: str, action: Action, roles: Roles, scrub: Collection[str]
) -> None:
    """Refuses a column with which something else is to be done, too."""
    attribute, kept = roles.attribute_of(column)
    one = f"Column {shown(repr(column))}"
    if column in roles.replaced:
        raise ReplaceError(
            f"{one} is replaced, as {attribute}: it has no action besides. Without"
            f" {argument('others', {column: str(action)})} it is replaced;"
            f" {argument('keep', [attribute])} keeps it."
        )
    if kept and action.kind != "keep":
        raise ReplaceError(
            f"{one} is kept, as {attribute}, and {str(action)!r} would change it: take one of the"
            " two."
        )
    if attribute in LEARNT and action.kind == "fake":
        raise ReplaceError(
            f"{one} tells the {attribute} of people, which made-up ones have, too: keep or blank"
            " it."
        )
    if column in scrub:
        raise ReplaceError(
            f"{one} is to be scrubbed, and {str(action)!r} decides about it, too: take one of the"
            " two."
        )


def _with_form(action: Action, column: str, table: pd.DataFrame) -> Action:
    """Finds how a column of texts writes dates that are to be moved."""
    if action.kind != "shift" or action.form:
        return action
    texts = texts_of(table, column)
    if not len(texts):
        return action
    forms = likely_forms(texts)
    if not forms:
        raise ReplaceError(
            f"Column {shown(repr(column))} has no dates of a form that can be moved:"
            f" {listed(FORMS)}. 'blank' empties it."
        )
    if len(forms) > 1:
        ways = " or ".join(repr(str(replace(action, form=form))) for form in forms)
        raise ReplaceError(
            f"Column {shown(repr(column))} does not tell whether days or months come first: write"
            f" {ways}."
        )
    return replace(action, form=forms[0])


def texts_of(table: pd.DataFrame, column: str) -> Any:
    """Gives some dates of a column that has them as texts or numbers; none of any other type."""
    values = without_gaps(arrow_of(table, [column]).column(0).combine_chunks())
    if pa.types.is_temporal(values.type):
        return pa.array([], pa.string())
    return as_texts(values.slice(0, SAMPLE_SIZE)).cast(pa.string())
