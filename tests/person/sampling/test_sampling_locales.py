"""Which locale each sampled row has where no country is labelled, and the provider map made for it."""

from types import SimpleNamespace
from typing import Any

import pandas as pd
import pytest
from faker import Faker

from support.people import fitted_model
from support.recording import Calls
from support.sampling import GIVEN, LABEL_SETS, conditional_of, noting_model
from vantrel.config import PersonLabels
from vantrel.model.models import person
from vantrel.model.models.person import PersonModel
from vantrel.util.locale.locale import Provider


@pytest.mark.parametrize("country", [None, ""])
def test_without_a_country_label_rows_get_the_locales(asked: Calls, country: str | None) -> None:
    calls = Calls()
    model = noting_model(calls, PersonLabels(country=country), locales=["de_DE", "fr_FR"])
    model.sample(n=3)
    assert asked == [("map", (["de_DE", "fr_FR"], Provider.PERSON), {})]
    assert model.country_to_provider_map == {"x": 1}
    assert ("choice", (["de_DE", "fr_FR"],), {"size": 3}) in calls
    assert conditional_of(calls)["country_conditions"].tolist() == ["fr_FR"] * 3


def test_given_countries_are_not_looked_at_without_a_country_label(asked: Calls) -> None:
    calls = Calls()
    noting_model(calls, PersonLabels(), locales=["de_DE"]).sample(conditions=GIVEN)
    assert conditional_of(calls)["country_conditions"].tolist() == ["de_DE"] * 5


def test_the_hidden_country_model_is_not_asked_without_a_country_label(asked: Calls) -> None:
    calls = Calls()
    noting_model(calls, PersonLabels(), locales=["de_DE"]).sample(n=1)
    assert "country" not in calls.names()


def test_the_drawn_locales_are_a_series_of_texts(
    monkeypatch: pytest.MonkeyPatch, asked: Calls
) -> None:
    calls = Calls()
    model = noting_model(calls, PersonLabels(), locales=["de_DE"])
    monkeypatch.setattr(person, "pd", SimpleNamespace(Series=calls.recorder("Series", pd.Series)))
    model.sample(n=2)
    [(_, (drawn,), keywords)] = [call for call in calls if call[0] == "Series"]
    assert drawn.tolist() == ["de_DE", "de_DE"]
    assert keywords == {"dtype": str}


def test_locales_are_read_anew_for_the_test_the_map_and_the_draw(asked: Calls) -> None:
    class Changing(PersonModel):
        read = 0

        @property
        def locales(self) -> list[str]:
            Changing.read += 1
            return [f"read {Changing.read}"]

    calls = Calls()
    model = noting_model(calls, PersonLabels())
    model.__class__ = Changing
    model.sample(n=1)
    assert asked[0][1][0] == ["read 2"]
    assert conditional_of(calls)["country_conditions"].tolist() == ["read 3"]


def test_locales_of_another_kind_are_drawn_from_as_a_list(asked: Calls) -> None:
    class Several(PersonModel):
        locales = ("de_DE", "fr_FR")

    calls = Calls()
    model = noting_model(calls, PersonLabels())
    model.__class__ = Several
    model.sample(n=1)
    assert asked[0][1][0] is Several.locales
    assert ("choice", (["de_DE", "fr_FR"],), {"size": 1}) in calls


def test_without_locales_every_row_gets_the_default_one_and_the_map_is_made_for_it(
    asked: Calls,
) -> None:
    class Placeless(PersonModel):
        locales = None

    calls = Calls()
    model = noting_model(calls, PersonLabels())
    model.__class__ = Placeless
    model.sample(n=3)
    assert asked == [("map", (["en_GB"], Provider.PERSON), {})]
    assert model.country_to_provider_map == {"x": 1}
    assert conditional_of(calls)["country_conditions"].tolist() == ["en_GB"] * 3
    assert "choice" not in calls.names()


def test_the_default_locale_of_a_subclass_is_read_for_the_map_and_each_row(asked: Calls) -> None:
    class Placeless(PersonModel):
        locales = None
        read = 0

        @property
        def default_locale(self) -> str:
            Placeless.read += 1
            return f"read {Placeless.read}"

    calls = Calls()
    model = noting_model(calls, PersonLabels())
    model.__class__ = Placeless
    model.sample(n=2)
    assert asked[0][1][0] == ["read 1"]
    assert conditional_of(calls)["country_conditions"].tolist() == ["read 2", "read 3"]


def test_repeated_default_locales_are_a_series_of_texts(
    monkeypatch: pytest.MonkeyPatch, asked: Calls
) -> None:
    class Placeless(PersonModel):
        locales = None

    calls = Calls()
    model = noting_model(calls, PersonLabels())
    model.__class__ = Placeless
    monkeypatch.setattr(person, "pd", SimpleNamespace(Series=calls.recorder("Series", pd.Series)))
    model.sample(n=2)
    assert ("Series", (["en_GB", "en_GB"],), {"dtype": str}) in calls


def test_a_meta_without_locales_gives_british_names() -> None:
    model = fitted_model(LABEL_SETS["names"])
    model.sample(n=2)
    assert list(model.country_to_provider_map) == ["en_GB"]
    assert isinstance(model.country_to_provider_map["en_GB"], Faker)


def test_the_map_is_set_through_the_property(asked: Calls) -> None:
    class Noting(PersonModel):
        country_to_provider_map = property(None, lambda self, value: assigned.append(value))

    assigned: list[Any] = []
    model = noting_model(Calls(), PersonLabels())
    model.__class__ = Noting
    model.sample(n=1)
    assert assigned == [{"x": 1}]


def test_the_provider_enumeration_is_looked_up_when_sampling(
    monkeypatch: pytest.MonkeyPatch, asked: Calls
) -> None:
    monkeypatch.setattr(person, "Provider", SimpleNamespace(PERSON="somebody"))
    noting_model(Calls(), PersonLabels()).sample(n=1)
    assert asked[0][1][1] == "somebody"


def test_no_locales_to_draw_from_fail_as_numpy_does() -> None:
    model = fitted_model(LABEL_SETS["names"], locales=[])
    with pytest.raises(ValueError) as caught:
        model.sample(n=2)
    assert str(caught.value) == "a cannot be empty unless no samples are taken"
