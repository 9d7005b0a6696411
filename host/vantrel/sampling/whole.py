"""Samples as one frame."""

from __future__ import annotations

import secrets
import sys
from collections.abc import Iterable
from typing import TYPE_CHECKING

import pandas as pd

from vantrel.sampling.blocks import Plan, sample_blocks
from vantrel.sampling.conditions import prepare_conditions

if TYPE_CHECKING:
    from vantrel.model.models.person import PersonModel


def sample(
    model: PersonModel,
    n: int | None = None,
    *,
    seed: int | None = None,
    conditions: pd.DataFrame | None = None,
    unique: Iterable[str] = (),
) -> pd.DataFrame:
    """Samples people, the same ones from the same model and seed.

    The rows are those of ``vantrel sample`` and of :func:`vantrel.scale.sample`. No random source
    of the process is left changed. Countries are missing as often as in the
    fitted table, or as genders where these are missing more often.

    Args:
        model: A fitted model; its own random generators are replaced.
        n: The number of rows; left out where conditions are given.
        seed: An integer from 0 on. If None, one is drawn and told on stderr.
        conditions: Genders or countries or both, in columns named as the model's, a row for each
            person to make. Countries may be new to the model.
        unique: The attributes of which no value may come twice: "username", "email" or both.

    Returns:
        A frame of the labelled columns, in the order of the fitted table, with the index 0 to
        n - 1.

    Raises:
        TypeError: ``unique`` is one text.
        ValueError: Not just one of ``n`` and ``conditions`` is given, one of the conditions cannot
            be placed, or a column cannot be made unique.
        ModelNotFittedError: Nothing has been learnt yet.
    """
    if (n is None) == (conditions is None):
        raise ValueError("Give either 'n', a number of people, or 'conditions', a frame.")
    if seed is None:
        seed = secrets.randbits(32)
        print(f"vantrel: the seed is {seed}", file=sys.stderr)
    given = None if conditions is None else prepare_conditions(model, conditions)
    rows = len(given) if given is not None else n
    assert rows is not None
    plan = Plan(rows, seed, unique=unique)
    return pd.concat(list(sample_blocks(model, plan, given)))
