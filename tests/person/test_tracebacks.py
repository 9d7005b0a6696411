"""What a traceback shows of the module's functions: file, name and line of each that failed."""

import random
import re
import traceback
from collections.abc import Callable
from typing import Any, Never

import numpy as np
import pandas as pd
import pytest

from support.members import MEMBER_IDS, MEMBERS
from support.people import fitted_model, people, person_model
from vantrel.config import PersonLabels
from vantrel.metadata import Nominal
from vantrel.metadata.value import String
from vantrel.model.models import person
from vantrel.model.models.person import CountryModel, GenderModel, PersonModel

FILE = r"vantrel\model\models\person"
PREFIX = "vantrel.model.models.person."

MEMBER_OF = dict(zip(MEMBER_IDS, MEMBERS, strict=True))
NEVER_FAILING = {"PersonModel.default_locale"}

# Arguments, the model among them, on which the body of each function fails.
FAILING_ARGUMENTS: dict[str, tuple[Any, ...]] = {
    "GenderModel.__init__": (object(), String("sex")),
    "GenderModel.collections": (object(),),
    "GenderModel.categories": (object(),),
    "GenderModel.fit": (object(), people()),
    "GenderModel.from_dict": (GenderModel, {}),
    "PersonModel.__init__": (object(), None),
    "PersonModel.categories": (object(),),
    "PersonModel.locales": (object(),),
    "PersonModel.country_to_provider_map": (object(),),
    "PersonModel.country_to_provider_map.setter": (object(), {}),
    "PersonModel.labels": (object(),),
    "PersonModel.params": (object(),),
    "PersonModel.fit": (object(), people()),
    "PersonModel.sample": (object(),),
    "PersonModel._sample_conditional": (object(), 1, None, None),
    "PersonModel.generate_values_from_collections": (object(), 1, {}),
    "PersonModel.generate_first_names": (object(), 1, 2),
    "PersonModel.generate_random_first_name": (object(), "F", "GB"),
    "PersonModel.generate_last_names": (object(), 1, 2),
    "PersonModel.generate_emails": (object(), 1, 2, 3),
    "PersonModel.generate_usernames": (1, 2),
    "PersonModel.generate_passwords": (object(), 1),
    "PersonModel.generate_password": (2, 1),
    "PersonModel.generate_phone_numbers": (1,),
    "PersonModel.generate_from_collections": ("F", {"F": 1}),
    "PersonModel.map_to_gender_keys": (object(), 1, {}),
    "PersonModel.check_email": ("a@b.c", [1]),
    "PersonModel.check_associations": (object(), [1]),
    "PersonModel.to_dict": (object(),),
    "PersonModel.from_dict": (PersonModel, {}),
    "CountryModel.__init__": (object(), Nominal("country")),
    "CountryModel.categories": (object(),),
    "CountryModel.fit": (object(), people()),
}


def entries(call: Callable[..., Any], *arguments: Any, **keywords: Any) -> list[tuple[str, int]]:
    """Name and line of the entries that the failing call leaves, outermost first."""
    with pytest.raises(Exception) as raised:
        call(*arguments, **keywords)
    return shown(raised.value)


def shown(error: BaseException) -> list[tuple[str, int]]:
    """Name and line of those entries of the error's traceback that are the module's."""
    return [
        (frame.f_code.co_name.removeprefix(PREFIX), line)
        for frame, line in traceback.walk_tb(error.__traceback__)
        if frame.f_code.co_filename == FILE
    ]


class Refusal(Exception):
    """Raised by stand-ins, never by anything else."""


def refuse(*arguments: Any, **keywords: Any) -> Never:
    raise Refusal


# --- each function ---


def test_every_member_is_made_to_fail() -> None:
    expected = {name for name, member in MEMBER_OF.items() if member.owner}
    assert set(FAILING_ARGUMENTS) == expected - NEVER_FAILING


@pytest.mark.parametrize("name", FAILING_ARGUMENTS)
def test_failing_function_is_shown_with_its_line(name: str) -> None:
    member = MEMBER_OF[name]
    function = member.built()
    assert entries(function, *FAILING_ARGUMENTS[name])[0] == (member.qualname, member.line)


@pytest.mark.parametrize(
    ("name", "asks", "line"),
    [
        ("all_supported_country_names", "get_supported_country_names", 760),
        ("all_supported_country_codes", "get_supported_country_codes", 769),
        ("all_supported_locales", "valid_locales", 778),
    ],
)
def test_failing_module_function_is_shown_with_its_line(
    monkeypatch: pytest.MonkeyPatch, name: str, asks: str, line: int
) -> None:
    monkeypatch.setattr(person, asks, refuse)
    assert entries(getattr(person, name)) == [(name, line)]


def test_entry_comes_between_caller_and_callee(monkeypatch: pytest.MonkeyPatch) -> None:
    monkeypatch.setattr(person, "valid_locales", refuse)
    with pytest.raises(Refusal) as raised:
        person.all_supported_locales()
    names = [frame.f_code.co_name for frame, _ in traceback.walk_tb(raised.value.__traceback__)]
    assert names == [
        "test_entry_comes_between_caller_and_callee",
        f"{PREFIX}all_supported_locales",
        "refuse",
    ]


def test_entry_prints_as_a_line_of_the_source_file() -> None:
    with pytest.raises(KeyError) as raised:
        PersonModel.from_dict({})
    text = "".join(traceback.format_exception(raised.value))
    assert (
        r'  File "vantrel\model\models\person", line 721, '
        "in vantrel.model.models.person.PersonModel.from_dict\n"
    ) in text


def test_frame_of_an_entry_has_the_module_as_its_globals() -> None:
    with pytest.raises(KeyError) as raised:
        PersonModel.from_dict({})
    frame = raised.traceback[-1].frame.raw
    assert frame.f_code.co_filename == FILE
    assert frame.f_globals is vars(person)


def test_each_failure_has_one_entry_only() -> None:
    for _ in range(3):
        assert entries(PersonModel.from_dict, {}) == [("PersonModel.from_dict", 721)]


# --- refused calls ---


@pytest.mark.parametrize(
    "call",
    [
        lambda: person_model().fit(),
        lambda: PersonModel.check_email(1),
        lambda: PersonModel.check_email("a", zz=1),
        lambda: PersonModel.check_email("a", s="b"),
        lambda: PersonModel.generate_password(1, 2, 3),
        lambda: PersonModel.from_dict([]),
        lambda: person.all_supported_locales(1),
        lambda: GenderModel(String("sex"), None),
        lambda: setattr(person_model(), "country_to_provider_map", None),
    ],
)
def test_refused_call_has_no_entry_of_the_callee(call: Callable[..., Any]) -> None:
    assert entries(call) == []


def test_call_refused_inside_a_function_shows_the_caller_only() -> None:
    model = fitted_model()
    model.pwd_length = (1, 2, 3)
    assert entries(model.generate_passwords, [1]) == [("PersonModel.generate_passwords", 599)]


# --- results of a wrong type ---


def test_result_of_a_wrong_type_is_shown_in_the_function(monkeypatch: pytest.MonkeyPatch) -> None:
    monkeypatch.setattr(person, "valid_locales", lambda provider: ())
    assert entries(person.all_supported_locales) == [("all_supported_locales", 778)]


def test_property_of_a_wrong_type_is_shown_in_the_getter() -> None:
    model = person_model()
    model._country_to_provider_map = [1]
    assert entries(lambda: model.country_to_provider_map) == [
        ("PersonModel.country_to_provider_map", 204)
    ]


# --- kinds of functions, reached as a caller reaches them ---


def test_property_getter() -> None:
    assert entries(lambda: person_model().country_to_provider_map) == [
        ("PersonModel.country_to_provider_map", 204)
    ]


def test_property_setter() -> None:
    class Closed(PersonModel):
        def __setattr__(self, name: str, value: Any) -> None:
            if name == "_country_to_provider_map":
                raise Refusal
            super().__setattr__(name, value)

    model = Closed.__new__(Closed)
    assert entries(setattr, model, "country_to_provider_map", {}) == [
        ("PersonModel.country_to_provider_map", 210)
    ]


def test_class_method_of_a_subclass_keeps_the_name_of_its_owner() -> None:
    class Special(PersonModel):
        pass

    assert entries(Special.from_dict, {}) == [("PersonModel.from_dict", 721)]


def test_static_method_through_an_instance() -> None:
    assert entries(person_model().generate_password, 2, 1) == [
        ("PersonModel.generate_password", 606)
    ]


def test_unfitted_categories() -> None:
    assert entries(lambda: CountryModel(Nominal("country")).categories) == [
        ("CountryModel.categories", 745)
    ]


# --- nested calls ---


def test_sample_down_to_the_first_name() -> None:
    model = fitted_model()
    model.country_to_provider_map = {"XX": object()}
    found = entries(model.sample, conditions=people())
    assert found[0] == ("PersonModel.sample", 234)
    assert found[1] == ("PersonModel._sample_conditional", 326)
    assert found[2] == ("PersonModel.generate_first_names", 465)
    assert found[-2] == ("PersonModel.generate_first_names.<locals>.<genexpr>", 465)
    assert found[-1] == ("PersonModel.generate_random_first_name", 483)


@pytest.mark.parametrize(
    ("method", "line"),
    [
        ("generate_last_names", 510),
        ("generate_emails", 532),
        ("generate_usernames", 560),
        ("generate_passwords", 599),
        ("generate_phone_numbers", 613),
    ],
)
def test_sample_through_an_overridden_method_shows_the_callers(method: str, line: int) -> None:
    class Special(PersonModel):
        pass

    def failing(*arguments: Any, **keywords: Any) -> Never:
        raise Refusal

    setattr(Special, method, staticmethod(failing))
    plain = fitted_model()
    model = Special(plain.meta).fit(people())
    found = entries(model.sample, 3)
    expected = [("PersonModel.sample", 234), ("PersonModel._sample_conditional", 326)]
    if method == "generate_usernames":  # e-mail addresses are made of usernames, and come first
        expected.append(("PersonModel.generate_emails", 532))
    assert found == expected


def test_model_inside_the_constructor() -> None:
    labels = PersonLabels(gender="gender")
    config = person.PersonModelConfig()
    config.gender_male_regex = None
    # The hidden model refuses its patterns: it leaves no entry of its own.
    assert entries(person_model, labels, config) == [("PersonModel.__init__", 141)]


def test_locales_show_the_overridden_default_locale_no_entry_of_its_own() -> None:
    class Special(PersonModel):
        @property
        def default_locale(self) -> Never:
            raise Refusal

    model = Special(person_model().meta)
    model.meta.locales = None
    assert entries(lambda: model.locales) == [("PersonModel.locales", 196)]


@pytest.mark.parametrize(
    ("hidden_model", "entry"),
    [
        ("hidden_model_gender", ("GenderModel.fit", 83)),
        ("hidden_model_country", ("CountryModel.fit", 752)),
    ],
)
def test_fit_down_to_the_hidden_model(hidden_model: str, entry: tuple[str, int]) -> None:
    model = person_model()
    del getattr(
        model, hidden_model
    )._meta  # the hidden model is broken, the table and the model are not
    found = entries(model.fit, people())
    assert found[:2] == [("PersonModel.fit", 222), entry]


def test_gender_model_fit_down_to_its_collections(monkeypatch: pytest.MonkeyPatch) -> None:
    monkeypatch.setattr(person, "collections_from_mapping", refuse)
    model = GenderModel(String("sex", categories=["F"]))
    table = pd.DataFrame({"sex": ["F"]})
    assert entries(model.fit, table) == [("GenderModel.fit", 83), ("GenderModel.collections", 69)]


def test_gender_model_categories_down_to_its_collections(monkeypatch: pytest.MonkeyPatch) -> None:
    monkeypatch.setattr(person, "collections_from_mapping", refuse)
    model = GenderModel(String("sex", categories=["F"]))
    assert entries(lambda: model.categories) == [
        ("GenderModel.categories", 79),
        ("GenderModel.collections", 69),
    ]


def test_from_dict_down_to_the_hidden_model() -> None:
    stored = person_model().to_dict()
    stored["hidden_model_gender"] = {}
    assert entries(PersonModel.from_dict, stored) == [
        ("PersonModel.from_dict", 721),
        ("GenderModel.from_dict", 95),
    ]


def test_emails_down_to_the_check() -> None:
    class Special(PersonModel):
        @property
        def default_locale(self) -> Any:
            return (1,)

    model = Special(person_model().meta)
    model.country_to_provider_map = {"GB": Provider()}
    names = pd.Series(["Ann"])
    found = entries(model.generate_emails, names, names, ["GB"])
    assert found == [
        ("PersonModel.generate_emails", 532),
        ("PersonModel.check_email", 660),
        ("PersonModel.check_email.<locals>.<genexpr>", 660),
    ]


class Provider:
    """Gives every person the same domain."""

    def domain_name(self) -> str:
        return "mail.test"


# --- functions inside functions ---


def test_lambda_of_usernames() -> None:
    found = entries(PersonModel.generate_usernames, pd.Series([1.5]), pd.Series(["Lee"]))
    assert found == [
        ("PersonModel.generate_usernames", 560),
        ("PersonModel.generate_usernames.<locals>.<lambda>", 560),
    ]


def test_lambda_of_phone_numbers(monkeypatch: pytest.MonkeyPatch) -> None:
    monkeypatch.setattr(random, "randint", refuse)
    assert entries(PersonModel.generate_phone_numbers, [False]) == [
        ("PersonModel.generate_phone_numbers", 613),
        ("PersonModel.generate_phone_numbers.<locals>.<lambda>", 613),
    ]


def test_lambda_of_sample_conditional(monkeypatch: pytest.MonkeyPatch) -> None:
    class Special(PersonModel):
        def generate_values_from_collections(self, conditions: Any, collections: Any) -> Any:
            return pd.Series(["A"] * len(conditions))

    monkeypatch.setattr(random, "choice", refuse)
    model = Special(fitted_model(PersonLabels(title="title")).meta)
    found = entries(model._sample_conditional, 1, pd.Series(["A"]), pd.Series(["GB"]))
    assert found == [
        ("PersonModel._sample_conditional", 326),
        ("PersonModel._sample_conditional.<locals>.<lambda>", 326),
    ]


def test_values_down_to_the_draw(monkeypatch: pytest.MonkeyPatch) -> None:
    monkeypatch.setattr(np.random, "choice", refuse)
    model = person_model()
    found = entries(model.generate_values_from_collections, pd.Series(["F"]), {"F": ["Mrs"]})
    assert found == [
        ("PersonModel.generate_values_from_collections", 447),
        ("PersonModel.generate_from_collections", 626),
    ]


# --- the exception ---


def test_exception_is_the_very_object_that_was_raised(monkeypatch: pytest.MonkeyPatch) -> None:
    error = Refusal("as it is")

    def raise_it(provider: Any) -> Never:
        raise error

    monkeypatch.setattr(person, "valid_locales", raise_it)
    with pytest.raises(Refusal, match=r"^as it is$") as raised:
        person.all_supported_locales()
    assert raised.value is error
    assert (error.__cause__, error.__context__) == (None, None)


def test_exception_keeps_the_context_it_is_raised_in(monkeypatch: pytest.MonkeyPatch) -> None:
    monkeypatch.setattr(person, "valid_locales", refuse)
    outer = KeyError("outer")
    with pytest.raises(Refusal) as raised:
        try:
            raise outer
        except KeyError:
            person.all_supported_locales()
    assert raised.value.__context__ is outer


def test_message_of_a_failure_in_a_body_is_unchanged() -> None:
    with pytest.raises(KeyError, match=f"^{re.escape(repr('meta'))}$"):
        GenderModel.from_dict({})
