"""The hidden country model."""

import pytest

from support.people import person_model
from support.recording import Calls
from vantrel.config import PersonLabels
from vantrel.metadata import Nominal
from vantrel.model.models import person
from vantrel.model.models.person import CountryModel


@pytest.mark.parametrize("country", [None, ""])
def test_no_country_label_is_no_country_model(country: str | None) -> None:
    assert person_model(PersonLabels(country=country)).hidden_model_country is None


def test_a_country_label_makes_a_country_model_over_its_column() -> None:
    model = person_model(PersonLabels(country="c"))
    assert type(model.hidden_model_country) is CountryModel
    assert model.hidden_model_country.meta is model.meta["c"]
    assert type(model.meta["c"]) is Nominal


def test_the_country_model_gets_its_meta_by_position(monkeypatch: pytest.MonkeyPatch) -> None:
    calls = Calls()
    hidden = object()
    monkeypatch.setattr(person, "CountryModel", calls.recorder("make", lambda *_: hidden))
    model = person_model(PersonLabels(country="c"))
    assert calls == [("make", (model.meta["c"],), {})]
    assert model.hidden_model_country is hidden
