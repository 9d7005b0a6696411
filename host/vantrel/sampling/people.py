"""Samples tables that have missing values where the fitted one had."""

from __future__ import annotations

import pandas as pd

from vantrel.errors import SamplingError, raised_by_model
from vantrel.model.models.person import PersonModel
from vantrel.util.locale.locale import told_before


def sample_people(
    model: PersonModel, n: int | None = None, conditions: pd.DataFrame | None = None
) -> pd.DataFrame:
    """Samples people, some of them without a country where the fitted table had such.

    People whose gender bears no title of the fitted table have a missing one.

    A name needs a country. So each row is drawn with one, and the countries are taken out of as
    many rows as the fitted table had without. Rows without a gender are blank, and so without a
    country already: where there are more of them, countries are missing as often as genders.

    Args:
        model: A fitted model.
        n: The number of rows; the number of rows of ``conditions`` where that is given.
        conditions: Genders or countries or both, by the model's columns, one row for each to make,
            with the index 0 to n - 1 and no missing value.
    """
    with told_before(), raised_by_model(SamplingError, "The model cannot make such rows"):
        people = _sample_countries_too(model, n, conditions)
    _unwrite_missing_titles(people, model)
    return people


def _sample_countries_too(
    model: PersonModel, n: int | None, conditions: pd.DataFrame | None
) -> pd.DataFrame:
    hidden = model.hidden_model_country
    given_country = conditions is not None and hidden is not None and hidden.name in conditions
    if hidden is None or not hidden.meta.nan_freq or given_country:
        return model.sample(n=n, conditions=conditions)
    countries = hidden.sample(n=n, produce_nans=False, conditions=conditions)
    people = model.sample(
        conditions=countries if conditions is None else conditions.join(countries)
    )
    blank = _share_of_blank_rows(model, conditions)
    if blank < hidden.meta.nan_freq:
        share = (hidden.meta.nan_freq - blank) / (1 - blank)
        unknown = model._rng.random(len(people)) < share
        people[hidden.name] = people[hidden.name].mask(unknown)
    return people


def _share_of_blank_rows(model: PersonModel, conditions: pd.DataFrame | None) -> float:
    hidden = model.hidden_model_gender
    if hidden is None or (conditions is not None and hidden.name in conditions):
        return 0.0
    return hidden.meta.nan_freq or 0.0


def _unwrite_missing_titles(people: pd.DataFrame, model: PersonModel) -> None:
    """Makes titles missing again that the model has turned into words, as it does in pandas 2."""
    title = model.labels.title
    if title is not None and people[title].dtype == object:
        people[title] = people[title].mask(people[title] == str(pd.NA))
