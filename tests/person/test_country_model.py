"""The hidden model of the country: categories, fitting and the map of providers."""

from typing import Any

import numpy as np
import pandas as pd
import pytest
from faker import Faker

from support.recording import Calls, raising
from vantrel.metadata import Nominal
from vantrel.model.exceptions import ModelNotFittedError
from vantrel.model.models import person
from vantrel.model.models.histogram import Histogram
from vantrel.model.models.person import CountryModel
from vantrel.util.locale.locale import Provider

COUNTRIES = pd.DataFrame({"country": ["GB", "US", "GB"]})


def model_of(categories: list[str] | None = None) -> CountryModel:
    return CountryModel(Nominal("country", categories=categories))


def test_base_class_gets_the_meta_by_keyword(monkeypatch: pytest.MonkeyPatch) -> None:
    calls = Calls()
    monkeypatch.setattr(Histogram, "__init__", calls.recorder("init"))
    meta = Nominal("country")
    model = CountryModel(meta)
    assert calls == [("init", (model,), {"meta": meta})]


def test_construction_sets_nothing_else() -> None:
    meta = Nominal("country")
    assert set(vars(CountryModel(meta))) == set(vars(Histogram(meta)))


def test_a_meta_may_be_given_by_keyword() -> None:
    meta = Nominal("country")
    assert CountryModel(meta=meta).meta is meta


def test_categories_of_an_unfitted_model_raise_the_bare_error() -> None:
    with pytest.raises(ModelNotFittedError) as caught:
        _ = model_of().categories
    assert caught.value.args == ()
    assert type(caught.value) is ModelNotFittedError


def test_the_error_is_looked_up_when_it_is_raised(monkeypatch: pytest.MonkeyPatch) -> None:
    monkeypatch.setattr(person, "ModelNotFittedError", LookupError)
    with pytest.raises(LookupError):
        _ = model_of().categories


def test_categories_are_the_very_object_of_the_meta() -> None:
    model = model_of(["GB"])
    assert model.categories is model._meta.categories


def test_empty_categories_are_no_missing_ones() -> None:
    assert model_of([]).categories == []


def test_categories_read_the_private_meta_twice() -> None:
    class Meta:
        name = "country"
        read = 0

        @property
        def categories(self) -> str:
            self.read += 1
            return f"read {self.read}"

    assert CountryModel(Meta()).categories == "read 2"


def test_categories_are_read_only() -> None:
    with pytest.raises(AttributeError) as caught:
        model_of().categories = []
    assert str(caught.value) == "property 'categories' of 'CountryModel' object has no setter"


def test_fit_keeps_the_countries_in_first_seen_order() -> None:
    model = model_of().fit(COUNTRIES)
    assert type(model.countries) is list
    assert model.countries == ["GB", "US"]


def test_fit_keeps_a_provider_for_each_country() -> None:
    providers = model_of().fit(COUNTRIES).country_to_provider_map
    assert list(providers) == ["GB", "US"]
    assert all(isinstance(provider, Faker) for provider in providers.values())


def test_fit_learns_the_frequencies() -> None:
    model = model_of().fit(COUNTRIES)
    assert model._probabilities == {"GB": pytest.approx(2 / 3), "US": pytest.approx(1 / 3)}


def test_fit_gives_back_the_very_object_so_that_calls_chain() -> None:
    model = model_of()
    assert model.fit(COUNTRIES) is model


def test_the_result_of_the_base_class_is_discarded(monkeypatch: pytest.MonkeyPatch) -> None:
    monkeypatch.setattr(Histogram, "fit", lambda self, df: object())
    model = model_of()
    assert model.fit(COUNTRIES) is model


def test_providers_are_asked_for_by_position_with_the_kept_list(
    monkeypatch: pytest.MonkeyPatch,
) -> None:
    calls = Calls()
    answer = object()
    monkeypatch.setattr(
        person, "get_country_to_provder_map", calls.recorder("map", lambda *_: answer)
    )
    model = model_of().fit(COUNTRIES)
    [(_, (countries, provider), keywords)] = calls
    assert countries is model.countries
    assert provider is Provider.PERSON
    assert keywords == {}
    assert model.country_to_provider_map is answer


def test_the_countries_are_read_back_from_the_model(monkeypatch: pytest.MonkeyPatch) -> None:
    class Upper(CountryModel):
        def __setattr__(self, name: str, value: Any) -> None:
            super().__setattr__(name, ["XX"] if name == "countries" else value)

    monkeypatch.setattr(person, "get_country_to_provder_map", lambda countries, _: countries)
    assert Upper(Nominal("country")).fit(COUNTRIES).country_to_provider_map == ["XX"]


def test_the_provider_enumeration_is_looked_up_when_fitting(
    monkeypatch: pytest.MonkeyPatch,
) -> None:
    class StandIn:
        PERSON = "somebody"

    monkeypatch.setattr(person, "Provider", StandIn)
    monkeypatch.setattr(person, "get_country_to_provder_map", lambda _, provider: provider)
    assert model_of().fit(COUNTRIES).country_to_provider_map == "somebody"


def test_the_map_comes_before_the_base_class_which_gets_the_frame_by_position(
    monkeypatch: pytest.MonkeyPatch,
) -> None:
    calls = Calls()
    monkeypatch.setattr(person, "get_country_to_provder_map", calls.recorder("map"))
    monkeypatch.setattr(Histogram, "fit", calls.recorder("fit"))
    model = model_of().fit(COUNTRIES)
    assert calls.names() == ["map", "fit"]
    _, (bound, df), keywords = calls[1]
    assert bound is model
    assert df is COUNTRIES
    assert keywords == {}


@pytest.mark.parametrize("missing", [None, np.nan, pd.NA])
def test_missing_countries_stay_and_are_passed_on(
    monkeypatch: pytest.MonkeyPatch, missing: Any
) -> None:
    asked = []
    monkeypatch.setattr(
        person, "get_country_to_provder_map", lambda countries, _: asked.append(countries)
    )
    df = pd.DataFrame({"country": pd.Series(["GB", missing, "GB", missing], dtype=object)})
    model = model_of().fit(df)
    assert len(model.countries) == 2
    assert model.countries[1] is missing
    assert asked == [model.countries]


def test_the_host_makes_no_provider_for_a_missing_country() -> None:
    df = pd.DataFrame({"country": ["GB", None]})
    assert list(model_of().fit(df).country_to_provider_map) == ["GB"]


def test_the_column_is_that_of_the_public_metas_name() -> None:
    class Renamed(CountryModel):
        meta = Nominal("land")

    df = pd.DataFrame({"country": ["GB"], "land": ["US"]})
    assert Renamed(Nominal("country")).fit(df).countries == ["US"]


def test_fit_again_replaces_countries_providers_and_frequencies() -> None:
    model = model_of().fit(COUNTRIES)
    model.fit(pd.DataFrame({"country": ["DE"]}))
    assert model.countries == ["DE"]
    assert list(model.country_to_provider_map) == ["DE"]
    assert model._probabilities == {"DE": 1.0}


def test_a_frame_without_the_column_changes_nothing() -> None:
    model = model_of()
    before = dict(vars(model))
    with pytest.raises(KeyError) as caught:
        model.fit(pd.DataFrame({"land": ["GB"]}))
    assert caught.value.args == ("country",)
    assert vars(model) == before


def test_an_error_of_the_host_function_leaves_the_countries_set(
    monkeypatch: pytest.MonkeyPatch,
) -> None:
    error = RuntimeError("no")
    monkeypatch.setattr(person, "get_country_to_provder_map", raising(error))
    model = model_of()
    with pytest.raises(RuntimeError) as caught:
        model.fit(COUNTRIES)
    assert caught.value is error
    assert model.countries == ["GB", "US"]
    assert not hasattr(model, "country_to_provider_map")


def test_an_error_of_the_base_class_leaves_countries_and_providers_set(
    monkeypatch: pytest.MonkeyPatch,
) -> None:
    error = RuntimeError("no")
    monkeypatch.setattr(Histogram, "fit", raising(error))
    model = model_of()
    with pytest.raises(RuntimeError) as caught:
        model.fit(COUNTRIES)
    assert caught.value is error
    assert model.countries == ["GB", "US"]
    assert list(model.country_to_provider_map) == ["GB", "US"]
