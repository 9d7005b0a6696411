"""Samples as one frame."""

from __future__ import annotations

from collections.abc import Iterable
from typing import Any

import pandas as pd

from vantrel.arguments import as_frame, check_model
from vantrel.errors import ArgumentError
from vantrel.hints import argument, showing_values
from vantrel.model.models.person import PersonModel
from vantrel.sampling.blocks import Plan, sample_blocks
from vantrel.sampling.conditions import prepare_conditions
from vantrel.sampling.places import refuse_borrowed, refuse_unknown_countries
from vantrel.sampling.scarcity import tell_of_scarce_numbers
from vantrel.sampling.seeding import given_or_drawn


def sample(
    model: PersonModel,
    n: int | None = None,
    *,
    seed: int | None = None,
    conditions: Any = None,
    unique: Iterable[str] = (),
    strict: bool = False,
    show_values: bool = False,
    exact: bool = False,
) -> pd.DataFrame:
    """Samples people, the same ones from the same model and seed.

    The rows are those of ``vantrel sample`` and of :func:`vantrel.scale.sample`. They come from
    sources of their own: no other random source of the process is touched. Countries are missing as
    often as in the fitted table, or as genders where these are missing more often.

    Args:
        model: A fitted model; new countries of ``conditions`` are all that changes in it.
        n: The number of rows; left out where conditions are given.
        seed: An integer from 0 on. If None, one is drawn and logged.
        conditions: A table, as :func:`vantrel.fit` takes it, of genders or countries or both, in
            columns named as the model's, a row for each person to make. Countries may be new to the
            model; those of the table may be spelled in other ways. What is missing or not known
            stays as it is given, and such people have names of any gender or of the model's
            countries; no row is blank for that. Index and further columns stay, too.
        unique: The attributes of which no value may come twice: "username", "email" or both.
        strict: Whether countries and locales are refused of which Faker has no names of their own,
            and conditions that are missing or not known.
        show_values: Whether an error names values of the conditions, and does not only tell how
            many cannot be placed and in which rows: it may go to a log.
        exact: Whether the rows are the bare model's: titles and spellings drawn evenly, gaps by
            column, blank rows where a gender is missing.

    Returns:
        A frame of the labelled columns, in the order of the fitted table, with the index 0 to n -
        1 or that of the conditions. Its ``attrs["seed"]`` is the seed.

    Raises:
        ArgumentTypeError: The model or the conditions are none, ``unique`` is one text, or
            ``exact`` is no bool.
        ArgumentError: Not just one of ``n`` and ``conditions`` is given, a number is out of its
            range, or a column cannot be made unique.
        SamplingError: One of the conditions cannot be placed (:class:`vantrel.ConditionsError`), or
            names would be borrowed though ``strict`` is set.
        ModelNotFittedError: Nothing has been learnt yet.

    Warns:
        BorrowedNamesWarning: Faker has no names of some countries that are new to the model.
    """
    plan, given = plan_sample(
        model,
        n,
        conditions,
        seed=seed,
        unique=unique,
        strict=strict,
        show_values=show_values,
        exact=exact,
    )
    blocks = list(sample_blocks(model, plan, given))
    people = blocks[0] if len(blocks) == 1 else pd.concat(blocks)
    if conditions is not None:
        table = as_frame(conditions)
        people = beside(table, people).set_index(table.index)
    people.attrs["seed"] = plan.seed
    return people


def beside(conditions: pd.DataFrame, people: pd.DataFrame) -> pd.DataFrame:
    """Puts the further columns of conditions beside people, whose index are the numbers of rows."""
    further = [name for name in conditions if name not in people]
    rows = conditions[further].iloc[people.index].set_axis(people.index)
    return pd.concat([people, rows], axis="columns")


def plan_sample(
    model: PersonModel,
    n: int | None,
    conditions: Any,
    *,
    seed: int | None,
    unique: Iterable[str],
    strict: bool,
    show_values: bool = False,
    exact: bool = False,
) -> tuple[Plan, pd.DataFrame | None]:
    """Tells what to make if a model can make it, and gives the conditions, checked."""
    check_model(model)
    refuse_neither_or_both(n, conditions)
    given = None
    if n is None:
        with showing_values(show_values):
            given = prepare_conditions(model, conditions, strict=strict, exact=exact)
        n = len(given)
    elif strict:
        refuse_unknown_countries(model)
        refuse_borrowed(model)
    plan = Plan(n, given_or_drawn(seed), unique=unique, exact=exact)
    tell_of_scarce_numbers(model, plan, given)
    return plan, given


def refuse_neither_or_both(n: int | None, conditions: object) -> None:
    """Refuses what does not tell in just one way how many people to make."""
    if (n is None) == (conditions is None):
        raise ArgumentError(
            f"Give either {argument('n', ...)}, a number of people, or"
            f" {argument('conditions', ...)}, a table."
        )
