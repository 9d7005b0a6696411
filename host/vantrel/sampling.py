"""Samples tables that have missing countries where the fitted one had."""

from __future__ import annotations

from typing import TYPE_CHECKING

if TYPE_CHECKING:
    import pandas as pd

    from vantrel.model.models.person import PersonModel


def sample_people(model: PersonModel, n: int) -> pd.DataFrame:
    """Samples people, some of them without a country where the fitted table had such.

    A name needs a country. So each row is drawn with one, and the countries are taken out of as
    many rows as the fitted table had without.

    Args:
        model: A fitted model.
        n: The number of rows.

    Returns:
        A frame of the labelled columns with the index 0 to n - 1.
    """
    hidden = model.hidden_model_country
    if hidden is None or not hidden.meta.nan_freq:
        return model.sample(n=n)
    people = model.sample(conditions=hidden.sample(n=n, produce_nans=False))
    unknown = model._rng.random(n) < hidden.meta.nan_freq
    people[hidden.name] = people[hidden.name].mask(unknown)
    return people
