"""Which types the functions take, in which order they check them, and the defaults that calls share."""

import sys
import types
from collections import Counter, OrderedDict, defaultdict
from collections.abc import Callable
from typing import Any

import numpy as np
import pandas as pd
import pytest

from support.calls import Number, Text, fitting, refuses
from support.members import MEMBER_IDS, MEMBERS, Member, Parameter
from support.people import person_model
from vantrel.metadata import Nominal
from vantrel.metadata.value import String
from vantrel.model.models import person
from vantrel.model.models.person import CountryModel, GenderModel, PersonModel


class Row(list[Any]):
    pass


class Mapping(dict[str, Any]):
    pass


WRONG_VALUES: dict[type, list[Any]] = {
    str: [Text("a"), np.str_("a"), b"a", 1, float("nan"), pd.NA, ["a"]],
    int: [True, Number(1), np.int64(1), 1.0, "1", pd.NA],
    list: [Row(), (), {}, "ab", iter([]), np.array([]), pd.Series([], dtype=object)],
    dict: [
        OrderedDict(),
        defaultdict(list),
        Counter(),
        Mapping(),
        types.MappingProxyType({}),
        [],
        pd.Series([], dtype=object),
    ],
}


def wrong_type(parameter: str, expected: str, given: str) -> str:
    return f"Argument '{parameter}' has incorrect type (expected {expected}, got {given})"


TYPED = [
    pytest.param(member, index, id=f"{name}-{parameter.name}")
    for member, name in zip(MEMBERS, MEMBER_IDS, strict=True)
    for index, parameter in enumerate(member.parameters)
    if parameter.exact is not None
]
typed_parameters = pytest.mark.parametrize(("member", "index"), TYPED)


# --- types ---


@typed_parameters
def test_every_wrong_type_is_refused(member: Member, index: int) -> None:
    parameter = member.parameters[index]
    for wrong in WRONG_VALUES[parameter.exact]:
        arguments = fitting(member)
        arguments[index] = wrong
        message = wrong_type(parameter.name, parameter.exact.__name__, type(wrong).__name__)
        with refuses(message):
            member.built()(*arguments)


@typed_parameters
def test_every_wrong_type_is_refused_by_keyword(member: Member, index: int) -> None:
    parameter = member.parameters[index]
    for wrong in WRONG_VALUES[parameter.exact]:
        arguments = {p.name: p.fitting for p in member.parameters} | {parameter.name: wrong}
        message = wrong_type(parameter.name, parameter.exact.__name__, type(wrong).__name__)
        with refuses(message):
            member.built()(**arguments)


def is_optional(member: Member, index: int) -> bool:
    return member.parameters[index].optional


@pytest.mark.parametrize(("member", "index"), [p for p in TYPED if not is_optional(*p.values)])
def test_none_is_refused_where_it_is_not_declared(member: Member, index: int) -> None:
    parameter = member.parameters[index]
    arguments = fitting(member)
    arguments[index] = None
    with refuses(wrong_type(parameter.name, parameter.exact.__name__, "NoneType")):
        member.built()(*arguments)


@pytest.mark.parametrize(("member", "index"), [p for p in TYPED if is_optional(*p.values)])
def test_none_passes_where_it_is_declared(member: Member, index: int) -> None:
    arguments = fitting(member)
    arguments[index] = None
    with pytest.raises(Exception) as raised:  # the model is a bare object: the body fails on it
        member.built()(*arguments)
    assert "has incorrect type" not in str(raised.value)


def test_only_the_row_count_and_the_associations_are_optional() -> None:
    optional = [p.id for p in TYPED if is_optional(*p.values)]
    assert optional == ["PersonModel.sample-n", "PersonModel.sample-associations"]


def test_which_parameters_are_typed() -> None:
    assert [p.id for p in TYPED] == [
        "GenderModel.__init__-regex_female",
        "GenderModel.__init__-regex_male",
        "GenderModel.__init__-regex_non_binary",
        "GenderModel.from_dict-d",
        "PersonModel.country_to_provider_map.setter-value",
        "PersonModel.sample-n",
        "PersonModel.sample-associations",
        "PersonModel._sample_conditional-num_rows",
        "PersonModel.generate_values_from_collections-collections",
        "PersonModel.generate_random_first_name-country",
        "PersonModel.generate_password-pwd_length_min",
        "PersonModel.generate_password-pwd_length_max",
        "PersonModel.generate_phone_numbers-number_format",
        "PersonModel.generate_from_collections-collections",
        "PersonModel.map_to_gender_keys-mapping",
        "PersonModel.check_email-s",
        "PersonModel.check_email-locales",
        "PersonModel.check_associations-associations",
        "PersonModel.from_dict-d",
    ]


@pytest.mark.parametrize(
    ("call", "message"),
    [
        (
            lambda: person_model().sample(True),
            "Argument 'n' has incorrect type (expected int, got bool)",
        ),
        (
            lambda: person_model().sample(np.int64(3)),
            "Argument 'n' has incorrect type (expected int, got int64)",
        ),
        (
            lambda: person_model().sample(3, associations=()),
            "Argument 'associations' has incorrect type (expected list, got tuple)",
        ),
        (
            lambda: person_model()._sample_conditional(None, None, None),
            "Argument 'num_rows' has incorrect type (expected int, got NoneType)",
        ),
        (
            lambda: person_model().generate_random_first_name("F", np.str_("GB")),
            "Argument 'country' has incorrect type (expected str, got str_)",
        ),
        (
            lambda: person_model().generate_random_first_name("F", float("nan")),
            "Argument 'country' has incorrect type (expected str, got float)",
        ),
        (
            lambda: person_model().generate_random_first_name("F", pd.NA),
            "Argument 'country' has incorrect type (expected str, got NAType)",
        ),
        (
            lambda: PersonModel.generate_from_collections("F", OrderedDict()),
            "Argument 'collections' has incorrect type (expected dict, got OrderedDict)",
        ),
        (
            lambda: PersonModel.check_email(None),
            "Argument 's' has incorrect type (expected str, got NoneType)",
        ),
        (
            lambda: PersonModel.check_email("a", None),
            "Argument 'locales' has incorrect type (expected list, got NoneType)",
        ),
        (
            lambda: PersonModel.generate_phone_numbers([], None),
            "Argument 'number_format' has incorrect type (expected str, got NoneType)",
        ),
        (
            lambda: PersonModel.generate_password(False),
            "Argument 'pwd_length_min' has incorrect type (expected int, got bool)",
        ),
        (
            lambda: PersonModel.from_dict(None),
            "Argument 'd' has incorrect type (expected dict, got NoneType)",
        ),
        (
            lambda: GenderModel(String("sex"), None),
            "Argument 'regex_female' has incorrect type (expected str, got NoneType)",
        ),
    ],
)
def test_type_as_a_caller_meets_it(call: Callable[..., Any], message: str) -> None:
    with refuses(message):
        call()


@pytest.mark.parametrize(
    ("value", "given"),
    [(None, "NoneType"), (OrderedDict(), "OrderedDict"), (Mapping(a=1), "Mapping"), ([], "list")],
)
def test_country_map_takes_a_dict_and_nothing_else(value: Any, given: str) -> None:
    model = person_model()
    with refuses(wrong_type("value", "dict", given)):
        model.country_to_provider_map = value
    assert model._country_to_provider_map == {}


def test_type_with_a_module_is_named_without_it() -> None:
    made = type("Outer.Inner", (dict,), {"__module__": "far.away"})
    with refuses(wrong_type("collections", "dict", "Outer.Inner")):
        PersonModel.generate_from_collections("F", made())


def test_given_type_is_named_as_the_type_says_not_the_class_attribute() -> None:
    class Liar(dict[str, Any]):
        __class__ = dict

    with refuses(wrong_type("collections", "dict", "Liar")):
        PersonModel.generate_from_collections("F", Liar())


def test_long_type_name_is_cut_at_200_characters() -> None:
    made = type("x" * 300, (dict,), {})
    with refuses(wrong_type("collections", "dict", "x" * 200)):
        PersonModel.generate_from_collections("F", made())


def test_patterns_are_checked_before_anything_is_set_up() -> None:
    model = GenderModel.__new__(GenderModel)
    with refuses(wrong_type("regex_non_binary", "str", "NoneType")):
        model.__init__(String("sex"), regex_non_binary=None)
    assert vars(model) == {}


@pytest.mark.parametrize("produce_nans", [None, 0, "yes", object(), np.True_])
def test_flag_takes_anything(produce_nans: Any) -> None:
    model = person_model()
    with pytest.raises(ValueError, match=r"^One of 'n' or 'conditions' must be given\.$"):
        model.sample(produce_nans=produce_nans)


@pytest.mark.parametrize("key", [None, 1, np.str_("M"), b"M", pd.NA, object()])
def test_key_takes_anything(key: Any) -> None:
    assert PersonModel.generate_from_collections(key, {}) is pd.NA


@pytest.mark.parametrize("meta", [None, 1, "sex"])
def test_meta_is_not_checked(meta: Any) -> None:
    with pytest.raises(Exception) as raised:
        CountryModel(meta).categories  # noqa: B018 - to read it is the test
    assert "has incorrect type" not in str(raised.value)


# --- the order of the checks ---


@pytest.mark.parametrize(
    ("function", "names"),
    [
        (GenderModel.__init__, ["regex_female", "regex_male", "regex_non_binary"]),
        (PersonModel.generate_password, ["pwd_length_min", "pwd_length_max"]),
        (PersonModel.check_email, ["s", "locales"]),
        (PersonModel.sample, ["n", "associations"]),
    ],
    ids=lambda value: getattr(value, "__qualname__", ""),
)
def test_types_are_checked_in_parameter_order(
    function: Callable[..., Any], names: list[str]
) -> None:
    parameters: list[Parameter] = next(m for m in MEMBERS if m.built() is function).parameters
    arguments = {parameter.name: parameter.fitting for parameter in parameters}
    for first in range(len(names)):
        wrong = dict.fromkeys(reversed(names[first:]), 0.5)
        keywords = wrong | {name: value for name, value in arguments.items() if name not in wrong}
        expected = next(p.exact for p in parameters if p.name == names[first]).__name__
        with refuses(wrong_type(names[first], expected, "float")):
            function(**keywords)


def test_too_many_arguments_come_before_a_wrong_type() -> None:
    with refuses("check_email() takes at most 2 positional arguments (3 given)"):
        PersonModel.check_email(1, 2, 3)


def test_too_few_arguments_come_before_a_wrong_type() -> None:
    with refuses("_sample_conditional() takes at least 4 positional arguments (3 given)"):
        person_model()._sample_conditional("1", None)


def test_unexpected_keyword_comes_before_a_wrong_type() -> None:
    with refuses("check_email() got an unexpected keyword argument 'zz'"):
        PersonModel.check_email(1, zz=2)


def test_repeated_argument_comes_before_a_wrong_type() -> None:
    with refuses("check_email() got multiple values for keyword argument 's'"):
        PersonModel.check_email(1, s=2)


def test_types_are_checked_before_the_body_runs() -> None:
    with refuses(wrong_type("associations", "list", "str")):
        person_model().sample(associations="none")  # the body would miss n and conditions


# --- defaults ---


def test_changed_default_list_holds_for_later_calls() -> None:
    (shared,) = PersonModel.check_email.__defaults__
    assert PersonModel.check_email("no address") is False
    shared.append("fr")
    try:
        assert PersonModel.check_email("no address") is True
    finally:
        shared.remove("fr")
    assert PersonModel.check_email("no address") is False


def test_calls_leave_the_default_list_alone() -> None:
    (shared,) = PersonModel.check_email.__defaults__
    PersonModel.check_email("ann.lee@mail.test")
    assert PersonModel.check_email.__defaults__[0] is shared
    assert shared == ["en"]


def test_replaced_defaults_hold_for_later_calls(monkeypatch: pytest.MonkeyPatch) -> None:
    monkeypatch.setattr(PersonModel.generate_password, "__defaults__", (3, 3))
    assert len(PersonModel.generate_password()) == 3


def test_fewer_defaults_make_a_parameter_required(monkeypatch: pytest.MonkeyPatch) -> None:
    monkeypatch.setattr(PersonModel.generate_password, "__defaults__", (3,))
    with refuses("generate_password() takes at least 1 positional argument (0 given)"):
        PersonModel.generate_password()
    assert len(PersonModel.generate_password(3)) == 3


def test_default_may_be_given_as_the_argument() -> None:
    (shared,) = PersonModel.__init__.__defaults__
    assert person_model(config=shared).config is shared


def test_given_config_leaves_the_default_alone() -> None:
    (shared,) = PersonModel.__init__.__defaults__
    given = person.PersonModelConfig(pwd_length=(3, 3))
    assert person_model(config=given).config is given
    assert PersonModel.__init__.__defaults__ == (shared,)


# --- arguments are held, not copied ---


def test_arguments_are_stored_as_they_are() -> None:
    patterns = ["a", "b", "c"]
    model = GenderModel(String("sex"), *patterns)
    assert [model.regex_female, model.regex_male, model.regex_non_binary] == patterns


def test_meta_may_be_given_by_keyword() -> None:
    meta = Nominal("country")
    assert CountryModel(meta=meta).meta is meta


def test_refused_calls_keep_no_references() -> None:
    argument = Mapping()
    before = sys.getrefcount(argument)
    for _ in range(50):
        with pytest.raises(TypeError):
            PersonModel.check_email("a", argument)
        with pytest.raises(TypeError):
            PersonModel.check_email("a", [], zz=argument)
        with pytest.raises(TypeError):
            PersonModel.check_email("a", [], argument)
    assert sys.getrefcount(argument) - before < 5
