"""The countries and locales that a model has names for."""

from __future__ import annotations

from collections.abc import Iterable, Mapping

import pandas as pd

from vantrel.errors import SamplingError
from vantrel.hints import argument, listed
from vantrel.model.models.person import PersonModel
from vantrel.util.locale.locale import (
    Provider,
    borrowed_places,
    get_country_to_provder_map,
    recognise_known,
    unknown_places,
)
from vantrel.wording import counted


def take_in(model: PersonModel, countries: Iterable[str]) -> None:
    """Gives a model names for countries that the fit did not see; warns of borrowed ones."""
    known = model.country_to_provider_map
    new = [country for country in countries if country not in known]
    made = get_country_to_provder_map(new, Provider.PERSON)
    model.country_to_provider_map = model.country_to_provider_map | made  # as it is by now


def places_of(model: PersonModel, conditions: pd.DataFrame | None = None) -> list[str]:
    """Lists the countries, or else the locales, that a fitted model may sample.

    Of the countries in ``conditions``, as ``prepare_conditions`` made them, no others are sampled.
    """
    country = model.labels.country
    if country is None:
        return list(model.locales)
    if conditions is not None and country in conditions:
        return list(conditions[country].unique())
    return list(model.country_to_provider_map)


def with_names_of(places: Iterable[str], locales: Mapping[str, str]) -> list[str]:
    """Gives for each place the locale that is named for its country, or else the place itself."""
    named = {recognise_known(place): locale for place, locale in locales.items()}
    return [named.get(recognise_known(place), place) for place in places]


def refuse_unknown_countries(model: PersonModel) -> None:
    """Refuses a model that has learnt countries that are none; they are told of by their number."""
    countries = [] if model.meta.rows is None else filter(None, model.meta.rows.country)
    if unknown := unknown_places(countries):
        values = counted(len(unknown), "value")
        raise SamplingError(
            f"Column {model.labels.country!r} of the fitted table has {values}"
            f" that {'is' if len(unknown) == 1 else 'are'} neither a country nor a locale: leave"
            f" {argument('strict')} out to give these people names from the other countries."
        )


def refuse_borrowed(model: PersonModel, conditions: pd.DataFrame | None = None) -> None:
    """Refuses a model that may sample places of which Faker has no names; all of them are named."""
    if borrowed := borrowed_places(places_of(model, conditions)):
        raise SamplingError(
            f"Faker has no person names of its own for {listed(borrowed)}: leave"
            f" {argument('strict')} out to give these people names from elsewhere."
        )
