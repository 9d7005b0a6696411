"""Samples tables that have missing countries where the fitted one had."""

from __future__ import annotations

from typing import TYPE_CHECKING

if TYPE_CHECKING:
    import pandas as pd

    from vantrel.model.models.person import PersonModel


def sample_people(
    model: PersonModel, n: int | None = None, conditions: pd.DataFrame | None = None
) -> pd.DataFrame:
    """Samples people, some of them without a country where the fitted table had such.

    A name needs a country. So each row is drawn with one, and the countries are taken out of as
    many rows as the fitted table had without.

    Args:
        model: A fitted model.
        n: The number of rows; the number of rows of ``conditions`` where that is given.
        conditions: Genders or countries or both, by the model's columns, one row for each to make,
            with the index 0 to n - 1 and no missing value.

    Returns:
        A frame of the labelled columns with the index 0 to n - 1.
    """
    hidden = model.hidden_model_country
    given_country = conditions is not None and hidden is not None and hidden.name in conditions
    if hidden is None or not hidden.meta.nan_freq or given_country:
        return model.sample(n=n, conditions=conditions)
    countries = hidden.sample(n=n, produce_nans=False, conditions=conditions)
    people = model.sample(
        conditions=countries if conditions is None else conditions.join(countries)
    )
    unknown = model._rng.random(len(people)) < hidden.meta.nan_freq
    people[hidden.name] = people[hidden.name].mask(unknown)
    return people
