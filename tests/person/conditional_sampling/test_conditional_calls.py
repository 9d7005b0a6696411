"""The calls of the generators: their order, their arguments, their errors."""

from typing import Any

import pandas as pd
import pytest

from support.conditional_sampling import (
    GENERATORS,
    countries,
    genders,
    model_of,
    noting_model,
    sampled,
    without,
)
from support.recording import Calls, raising
from vantrel.model.models import person
from vantrel.model.models.person import PersonModel


def test_generators_are_called_in_order() -> None:
    calls = Calls()
    sampled(noting_model(calls))
    # The e-mails ask for usernames of their own.
    assert calls.names() == [
        *["generate_values_from_collections"] * 2,
        *["generate_first_names", "generate_last_names"],
        *["generate_emails", "generate_usernames", "generate_usernames"],
        *["generate_passwords", *["generate_phone_numbers"] * 3],
    ]


def test_generators_get_their_arguments_by_keyword() -> None:
    calls = Calls()
    sampled(noting_model(calls, without("email")))
    assert [(name, args, list(keywords)) for name, args, keywords in calls] == [
        ("generate_values_from_collections", (), ["conditions", "collections"]),
        ("generate_values_from_collections", (), ["conditions", "collections"]),
        ("generate_first_names", (), ["gender_conditions", "country_conditions"]),
        ("generate_last_names", (), ["firstnames", "country_conditions"]),
        ("generate_usernames", (), ["firstnames", "lastnames"]),
        ("generate_passwords", (), ["firstnames"]),
        *[("generate_phone_numbers", (), ["isna", "number_format"])] * 3,
    ]


def test_generators_get_the_very_conditions_and_names() -> None:
    calls = Calls()
    model = model_of()
    firsts, lasts = pd.Series(["a", "b"]), pd.Series(["c", "d"])
    model.generate_first_names = calls.recorder("first", lambda **_: firsts)
    model.generate_last_names = calls.recorder("last", lambda **_: lasts)
    model.generate_emails = calls.recorder("email", lambda **_: firsts)
    model.generate_usernames = calls.recorder("user", lambda **_: firsts)
    model.generate_passwords = calls.recorder("password", lambda **_: firsts)
    gender, country = genders(2, ["F"]), countries(2)
    sampled(model, 2, gender_conditions=gender, country_conditions=country)
    expected = [
        ("first", {"gender_conditions": gender, "country_conditions": country}),
        ("last", {"firstnames": firsts, "country_conditions": country}),
        ("email", {"firstnames": firsts, "lastnames": lasts, "country_condtions": country}),
        ("user", {"firstnames": firsts, "lastnames": lasts}),
        ("password", {"firstnames": firsts}),
    ]
    assert calls.names() == [name for name, _ in expected]
    for (_, args, given), (_, wanted) in zip(calls, expected, strict=True):
        assert args == ()
        assert list(given) == list(wanted)
        assert all(given[name] is wanted[name] for name in wanted)


@pytest.mark.parametrize("name", GENERATORS)
def test_a_generator_of_a_subclass_is_honoured(name: str) -> None:
    class Other(PersonModel):
        pass

    def fixed(self: PersonModel, **given: Any) -> pd.Series:
        return pd.Series(["Zed"] * 3)

    setattr(Other, name, fixed)
    column = {
        "generate_values_from_collections": "title",
        "generate_first_names": "first",
        "generate_last_names": "last",
        "generate_emails": "email",
        "generate_usernames": "user",
        "generate_passwords": "password",
        "generate_phone_numbers": "home",
    }[name]
    model = model_of(cls=Other)
    if name == "generate_usernames":
        model.generate_emails = lambda **_: pd.Series(["x"] * 3)
    made = sampled(model, 3, produce_nans=False)
    assert made[column].tolist() == ["Zed"] * 3


@pytest.mark.parametrize("name", GENERATORS)
def test_an_error_of_a_generator_propagates(name: str) -> None:
    error = RuntimeError("no")
    model = model_of()
    setattr(model, name, raising(error))
    with pytest.raises(RuntimeError) as caught:
        sampled(model)
    assert caught.value is error


def test_an_error_of_the_collections_propagates(monkeypatch: pytest.MonkeyPatch) -> None:
    error = RuntimeError("no")
    model = model_of()
    monkeypatch.setattr(person, "collections_from_mapping", raising(error))
    with pytest.raises(RuntimeError) as caught:
        sampled(model)
    assert caught.value is error
