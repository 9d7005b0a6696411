"""How many arguments the functions take, under which names, and by which ways to call them."""

import functools
import operator
import types
from collections.abc import Callable
from typing import Any

import pandas as pd
import pytest

from support.calls import Text, fitting, refuses
from support.members import MEMBER_IDS, MEMBERS, Member
from support.people import person_model
from vantrel.metadata import Nominal
from vantrel.model.models import person
from vantrel.model.models.person import CountryModel, GenderModel, PersonModel


def bound(count: int) -> str:
    return f"{count} positional argument{'' if count == 1 else 's'}"


def members(condition: Callable[[Member], bool]) -> pytest.MarkDecorator:
    chosen = [(m, i) for m, i in zip(MEMBERS, MEMBER_IDS, strict=True) if condition(m)]
    return pytest.mark.parametrize("member", [m for m, _ in chosen], ids=[i for _, i in chosen])


# --- counts ---


@members(lambda member: member.required > 0)
def test_no_arguments_where_some_are_required(member: Member) -> None:
    how = "exactly" if member.required == len(member.parameters) else "at least"
    with refuses(f"{member.name}() takes {how} {bound(member.required)} (0 given)"):
        member.built()()


@members(lambda member: member.required > 1)
def test_one_argument_too_few(member: Member) -> None:
    how = "exactly" if member.required == len(member.parameters) else "at least"
    given = member.required - 1
    with refuses(f"{member.name}() takes {how} {bound(member.required)} ({given} given)"):
        member.built()(*fitting(member)[:given])


@pytest.mark.parametrize("extra", [1, 4])
@members(lambda member: len(member.parameters) > 0)
def test_too_many_arguments(member: Member, extra: int) -> None:
    accepted = len(member.parameters)
    how = "exactly" if member.required == accepted else "at most"
    with refuses(f"{member.name}() takes {how} {bound(accepted)} ({accepted + extra} given)"):
        member.built()(*fitting(member), *range(extra))


@pytest.mark.parametrize("given", [1, 2])
@members(lambda member: not member.parameters)
def test_function_without_parameters_takes_no_arguments(member: Member, given: int) -> None:
    with refuses(f"{member.name}() takes no arguments ({given} given)"):
        member.built()(*range(given))


@members(lambda member: not member.parameters)
def test_function_without_parameters_takes_no_keyword(member: Member) -> None:
    with refuses(f"{member.name}() got an unexpected keyword argument 'zz'"):
        member.built()(zz=1)


@members(lambda member: member.required > 1)
def test_last_required_argument_missing_among_keywords(member: Member) -> None:
    how = "exactly" if member.required == len(member.parameters) else "at least"
    names = [parameter.name for parameter in member.parameters]
    given = dict(list(zip(names, fitting(member), strict=True))[: member.required - 1])
    message = f"{member.name}() takes {how} {bound(member.required)} ({member.required - 1} given)"
    with refuses(message):
        member.built()(**given)


@pytest.mark.parametrize(
    ("call", "message"),
    [
        (lambda: person_model().fit(), "fit() takes exactly 2 positional arguments (1 given)"),
        (lambda: person_model().fit(1, 2), "fit() takes exactly 2 positional arguments (3 given)"),
        (
            lambda: person_model().sample(1, 2, 3, 4, 5),
            "sample() takes at most 5 positional arguments (6 given)",
        ),
        (lambda: PersonModel(), "__init__() takes at least 2 positional arguments (1 given)"),
        (
            lambda: PersonModel(1, 2, 3),
            "__init__() takes at most 3 positional arguments (4 given)",
        ),
        (lambda: CountryModel(), "__init__() takes exactly 2 positional arguments (1 given)"),
        (lambda: GenderModel(), "__init__() takes at least 2 positional arguments (1 given)"),
        (
            lambda: GenderModel.from_dict(),
            "from_dict() takes exactly 2 positional arguments (1 given)",
        ),
        (
            lambda: PersonModel.from_dict({}, {}),
            "from_dict() takes exactly 2 positional arguments (3 given)",
        ),
        (
            lambda: PersonModel.check_email(),
            "check_email() takes at least 1 positional argument (0 given)",
        ),
        (
            lambda: person_model().check_email("a", [], 1),
            "check_email() takes at most 2 positional arguments (3 given)",
        ),
        (
            lambda: PersonModel.generate_password(1, 2, 3),
            "generate_password() takes at most 2 positional arguments (3 given)",
        ),
        (
            lambda: PersonModel.generate_phone_numbers(),
            "generate_phone_numbers() takes at least 1 positional argument (0 given)",
        ),
        (
            lambda: PersonModel.generate_phone_numbers([], "x", 3),
            "generate_phone_numbers() takes at most 2 positional arguments (3 given)",
        ),
        (
            lambda: PersonModel.generate_from_collections("F"),
            "generate_from_collections() takes exactly 2 positional arguments (1 given)",
        ),
        (
            lambda: person_model()._sample_conditional(1, 2),
            "_sample_conditional() takes at least 4 positional arguments (3 given)",
        ),
        (
            lambda: PersonModel.to_dict(),
            "to_dict() takes exactly 1 positional argument (0 given)",
        ),
        (
            lambda: person_model().to_dict(1),
            "to_dict() takes exactly 1 positional argument (2 given)",
        ),
        (
            lambda: person.all_supported_locales(1),
            "all_supported_locales() takes no arguments (1 given)",
        ),
    ],
)
def test_count_as_a_caller_meets_it(call: Callable[..., Any], message: str) -> None:
    with refuses(message):
        call()


# --- keywords ---


@members(lambda member: True)
def test_unexpected_keyword(member: Member) -> None:
    with refuses(f"{member.name}() got an unexpected keyword argument 'zz'"):
        member.built()(*fitting(member), zz=1)


@members(lambda member: len(member.parameters) > 0)
def test_multiple_values_for_every_parameter(member: Member) -> None:
    for index, parameter in enumerate(member.parameters):
        positional = fitting(member)[: max(index + 1, member.required)]
        with refuses(
            f"{member.name}() got multiple values for keyword argument '{parameter.name}'"
        ):
            member.built()(*positional, **{parameter.name: parameter.fitting})


def anew(text: str) -> str:
    """An equal string that is another object, and not interned."""
    return "".join([text[:1], text[1:]]) if len(text) > 1 else text


@pytest.mark.parametrize("zz_first", [False, True])
@members(lambda member: len(member.parameters) > 0)
def test_every_parameter_is_known_by_keyword(member: Member, zz_first: bool) -> None:
    """All that is wrong with the call is its last keyword, so each of the others has found its parameter."""
    given = {anew(parameter.name): parameter.fitting for parameter in member.parameters}
    given = {"zz": 1, **given} if zz_first else {**given, "zz": 1}
    with refuses(f"{member.name}() got an unexpected keyword argument 'zz'"):
        member.built()(**given)


def test_keyword_is_compared_by_value() -> None:
    name = anew("locales")
    parameter = PersonModel.check_email.__code__.co_varnames[1]
    assert name is not parameter
    assert PersonModel.check_email("no address", **{name: ["fr"]}) is True
    assert PersonModel.check_email("no address", **{name: ["en"]}) is False


def test_keyword_of_a_string_subclass_is_compared_by_value() -> None:
    assert PersonModel.check_email("no address", **{Text("locales"): ["fr"]}) is True


def test_keywords_may_come_in_any_order() -> None:
    assert PersonModel.check_email(locales=["fr"], s="no address") is True


def test_positional_and_keyword_arguments_mix() -> None:
    assert PersonModel.check_email("no address", locales=["fr"]) is True


def test_self_may_be_given_by_keyword() -> None:
    model = person_model()
    assert PersonModel.to_dict(self=model) == model.to_dict()


def test_emails_take_the_keyword_as_it_is_spelt() -> None:
    model = person_model()
    model.country_to_provider_map = {"GB": object()}
    names = pd.Series([], dtype="string")
    emails = model.generate_emails(firstnames=names, lastnames=names, country_condtions=names)
    assert len(emails) == 0


def test_emails_refuse_the_other_spelling() -> None:
    names = pd.Series([], dtype="string")
    with refuses("generate_emails() got an unexpected keyword argument 'country_conditions'"):
        person_model().generate_emails(names, names, names, country_conditions=names)


def test_emails_refuse_the_other_spelling_alone() -> None:
    with pytest.raises(TypeError):
        person_model().generate_emails(firstnames=1, lastnames=2, country_conditions=3)


def test_keyword_that_is_not_ascii() -> None:
    with refuses("check_email() got an unexpected keyword argument 'sé\N{GRINNING FACE}'"):
        PersonModel.check_email("a", **{"sé\N{GRINNING FACE}": 1})


def test_keyword_that_is_no_string() -> None:
    with pytest.raises(TypeError, match=r"^keywords must be strings$"):
        PersonModel.check_email("a", **{1: 2})


# --- every way to make a call leads to the same function ---


@pytest.mark.parametrize(
    "call",
    [
        lambda: PersonModel.check_email("no address", ["fr"]),
        lambda: PersonModel.check_email(*("no address", ["fr"])),
        lambda: PersonModel.check_email(s="no address", locales=["fr"]),
        lambda: PersonModel.check_email.__call__("no address", ["fr"]),
        lambda: functools.partial(PersonModel.check_email, locales=["fr"])("no address"),
        lambda: next(map(PersonModel.check_email, ["no address"], [["fr"]])),
        lambda: types.MethodType(PersonModel.check_email, "no address")(["fr"]),
        lambda: operator.call(PersonModel.check_email, "no address", ["fr"]),
        lambda: vars(PersonModel)["check_email"]("no address", ["fr"]),
    ],
)
def test_call_is_served(call: Callable[..., Any]) -> None:
    assert call() is True


def test_method_is_reached_from_an_override() -> None:
    class Special(PersonModel):
        def generate_values_from_collections(self, conditions: Any, collections: Any) -> Any:
            return list(super().generate_values_from_collections(conditions, collections))

    made = Special(person_model().meta)
    assert made.generate_values_from_collections(pd.Series(["F"]), {"F": ["Mrs"]}) == ["Mrs"]


HOT = 2000  # calls of one place in the code, far more than the interpreter needs to make it a fast path


def test_static_method_in_a_hot_loop() -> None:
    assert {PersonModel.check_email("no address") for _ in range(HOT)} == {False}


def test_method_in_a_hot_loop() -> None:
    model = person_model()
    model.pwd_length = (2, 2)
    assert {len(model.generate_passwords([1])) for _ in range(HOT // 10)} == {1}


def test_class_method_in_a_hot_loop() -> None:
    caught = 0
    for _ in range(HOT):
        try:
            GenderModel.from_dict({})
        except KeyError:
            caught += 1
    assert caught == HOT


def test_property_in_a_hot_loop() -> None:
    model = person_model()
    assert {model.default_locale for _ in range(HOT)} == {"en_GB"}


def test_setter_in_a_hot_loop() -> None:
    model = person_model()
    for number in range(HOT):
        model.country_to_provider_map = {number: number}
    assert model._country_to_provider_map == {HOT - 1: HOT - 1}


def test_constructor_in_a_hot_loop() -> None:
    meta = Nominal("country")
    assert all(CountryModel(meta).meta is meta for _ in range(HOT))


def test_new_defaults_in_a_hot_loop(monkeypatch: pytest.MonkeyPatch) -> None:
    monkeypatch.setattr(PersonModel.check_email, "__defaults__", (["fr"],))
    assert {PersonModel.check_email("no address") for _ in range(HOT)} == {True}
