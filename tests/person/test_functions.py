"""The functions as Python sees them: names, code, annotations, signatures, defaults and cells."""

import copy
import inspect
import pickle
import pydoc
import random
import re
import types
import typing
import weakref
from collections.abc import Callable, Iterable
from typing import Any
from unittest import mock

import numpy as np
import pandas as pd
import pytest

import vantrel.config
import vantrel.metadata
import vantrel.metadata.rules.association
import vantrel.metadata.value
import vantrel.model.base
import vantrel.model.exceptions
import vantrel.model.models.histogram
import vantrel.util.locale.locale
import vantrel.util.person
from support.members import MEMBER_IDS, MEMBERS, MEMBERS_BY_CLASS, Member
from support.people import person_model
from vantrel.config import PersonLabels
from vantrel.model.models import person
from vantrel.model.models.person import CountryModel, GenderModel, PersonModel

MODULE_NAME = "vantrel.model.models.person"
FILE = r"vantrel\model\models\person"

CALLING_PARENT = {
    "GenderModel.__init__",
    "GenderModel.fit",
    "PersonModel.__init__",
    "PersonModel.fit",
    "PersonModel.to_dict",
    "CountryModel.__init__",
    "CountryModel.fit",
}

every_member = pytest.mark.parametrize("member", MEMBERS, ids=MEMBER_IDS)
every_class = pytest.mark.parametrize("class_name", MEMBERS_BY_CLASS)


# --- the functions ---


@every_member
def test_kind_of_member(member: Member) -> None:
    holder = vars(getattr(person, member.owner)) if member.owner else vars(person)
    kinds = {
        "method": types.FunctionType,
        "function": types.FunctionType,
        "property": property,
        "setter": property,
        "staticmethod": staticmethod,
        "classmethod": classmethod,
    }
    assert type(holder[member.name]) is kinds[member.kind]
    assert type(member.built()) is types.FunctionType


@every_member
def test_names_of_function(member: Member) -> None:
    function = member.built()
    assert (function.__name__, function.__qualname__) == (member.name, member.qualname)
    assert function.__module__ == MODULE_NAME


@every_member
def test_code_of_function(member: Member) -> None:
    code = member.built().__code__
    parameters = tuple(parameter.name for parameter in member.parameters)
    assert (code.co_name, code.co_qualname) == (member.name, member.qualname)
    assert (code.co_filename, code.co_firstlineno) == (FILE, member.line)
    assert code.co_varnames[: code.co_argcount] == parameters
    assert (code.co_posonlyargcount, code.co_kwonlyargcount) == (0, 0)


@every_member
def test_annotations_are_the_texts_as_written(member: Member) -> None:
    assert member.built().__annotations__ == member.annotations
    assert list(member.built().__annotations__) == list(member.annotations)


def test_quotes_belong_to_the_annotation_text() -> None:
    assert PersonModel.fit.__annotations__ == {"df": "pd.DataFrame", "return": "'PersonModel'"}


@every_member
def test_annotations_resolve_through_the_function_itself(member: Member) -> None:
    resolved = typing.get_type_hints(member.built())
    expected = {name: eval(text, vars(person).copy()) for name, text in member.annotations.items()}
    by_name = {
        "'GenderModel'": GenderModel,
        "'PersonModel'": PersonModel,
        "'CountryModel'": CountryModel,
    }
    returns = member.annotations.get("return")
    if returns in by_name:
        expected["return"] = by_name[returns]
    elif returns == "None":
        expected["return"] = type(None)
    assert resolved == expected


@every_member
def test_signature_of_function(member: Member) -> None:
    signature = inspect.signature(member.built())
    assert list(signature.parameters) == [parameter.name for parameter in member.parameters]
    for parameter in member.parameters:
        seen = signature.parameters[parameter.name]
        assert seen.kind is inspect.Parameter.POSITIONAL_OR_KEYWORD
        assert (seen.default is not inspect.Parameter.empty) == (parameter.default is not None)


@every_member
def test_defaults_of_function(member: Member) -> None:
    written = [p.default for p in member.parameters if p.default is not None]
    expected = tuple(eval(text, vars(person).copy()) for text in written)
    assert (member.built().__defaults__ or ()) == expected
    assert [type(d) for d in member.built().__defaults__ or ()] == [type(d) for d in expected]


@every_member
def test_functions_without_defaults_have_none(member: Member) -> None:
    assert (member.built().__defaults__ is None) == (member.required == len(member.parameters))
    assert member.built().__kwdefaults__ is None


@every_member
def test_globals_are_the_module(member: Member) -> None:
    assert member.built().__globals__ is vars(person)


@every_member
def test_parent_calls_go_through_a_class_cell(member: Member) -> None:
    function = member.built()
    if member.qualname not in CALLING_PARENT:
        assert function.__closure__ is None
        assert function.__code__.co_freevars == ()
        return
    (cell,) = function.__closure__
    assert cell.cell_contents is getattr(person, member.owner)
    assert function.__code__.co_freevars == ("__class__",)


@every_class
def test_one_class_has_one_cell(class_name: str) -> None:
    cells = {
        id(member.built().__closure__[0])
        for member in MEMBERS_BY_CLASS[class_name]
        if member.built().__closure__
    }
    assert len(cells) == 1


def test_country_map_getter_and_setter_are_one_property() -> None:
    found = vars(PersonModel)["country_to_provider_map"]
    assert found.fget.__code__.co_firstlineno == 204
    assert found.fset.__code__.co_firstlineno == 210
    assert found.fdel is None


@pytest.mark.parametrize(
    "member",
    [m for m in MEMBERS if m.kind == "property" and m.name != "country_to_provider_map"],
    ids=lambda member: member.qualname,
)
def test_other_properties_are_read_only(member: Member) -> None:
    found = vars(getattr(person, member.owner))[member.name]
    assert (found.fset, found.fdel) == (None, None)


@pytest.mark.parametrize("name", ["categories", "default_locale", "locales", "labels", "params"])
def test_read_only_property_refuses_a_value(name: str) -> None:
    message = f"property '{name}' of 'PersonModel' object has no setter"
    with pytest.raises(AttributeError, match=f"^{re.escape(message)}$"):
        setattr(person_model(), name, None)


def test_setting_the_country_map_on_an_instance_goes_through_the_setter() -> None:
    model, providers = person_model(), {"GB": object()}
    model.country_to_provider_map = providers
    assert model._country_to_provider_map is providers
    assert "country_to_provider_map" not in vars(model)


# --- defaults that calls share ---


def test_person_model_holds_one_default_config() -> None:
    defaults = PersonModel.__init__.__defaults__
    assert len(defaults) == 1
    assert type(defaults[0]) is vantrel.config.PersonModelConfig


def test_models_without_config_share_the_default_config() -> None:
    (shared,) = PersonModel.__init__.__defaults__
    assert person_model().config is shared
    assert person_model().config is shared


def test_changing_the_default_config_changes_later_models(monkeypatch: pytest.MonkeyPatch) -> None:
    (shared,) = PersonModel.__init__.__defaults__
    monkeypatch.setattr(shared, "pwd_length", (3, 3))
    assert person_model().pwd_length == (3, 3)


def test_check_email_holds_one_default_list() -> None:
    assert PersonModel.check_email.__defaults__ == (["en"],)
    assert PersonModel.check_email.__defaults__[0] is PersonModel.check_email.__defaults__[0]
    assert type(PersonModel.check_email.__defaults__[0]) is list


@pytest.mark.parametrize(
    ("function", "defaults"),
    [
        (PersonModel.sample, (None, True, None, None)),
        (PersonModel._sample_conditional, (True,)),
        (PersonModel.generate_password, (8, 16)),
        (PersonModel.generate_phone_numbers, ("07xxxxxxxx",)),
        (GenderModel.__init__, ("^(mrs|ms).?$", "^(mr).?$", "^(ind|mx|per).?$")),
    ],
)
def test_constant_defaults(function: Callable[..., Any], defaults: tuple[Any, ...]) -> None:
    assert function.__defaults__ == defaults


# --- functions as the rest of Python sees them ---


def test_function_binds_as_a_method() -> None:
    model = person_model()
    assert isinstance(model.fit, types.MethodType)
    assert model.fit.__self__ is model
    assert model.fit.__func__ is PersonModel.fit


def test_class_method_binds_to_the_class_it_is_read_from() -> None:
    class Special(PersonModel):
        pass

    assert Special.from_dict.__self__ is Special
    assert Special.from_dict.__func__ is PersonModel.from_dict.__func__


def test_static_method_is_the_same_on_class_and_instance() -> None:
    assert person_model().check_email is PersonModel.check_email


def test_signature_of_bound_method_leaves_self_out() -> None:
    assert list(inspect.signature(person_model().generate_emails).parameters) == [
        "firstnames",
        "lastnames",
        "country_condtions",
    ]


def test_signature_reads_as_written() -> None:
    assert str(inspect.signature(PersonModel.generate_password)) == (
        "(pwd_length_min: 'int' = 8, pwd_length_max: 'int' = 16) -> 'str'"
    )


def test_help_shows_signature_and_docstring() -> None:
    text = pydoc.plain(pydoc.render_doc(PersonModel.generate_last_names))
    # Python 3.13 shows a long signature on several lines.
    signature = "(self,firstnames:'pd.Series',country_conditions:'pd.Series')->'pd.Series'"
    assert f"generate_last_names{signature}" in "".join(text.split())
    assert "Genderate last names." in text


@every_class
def test_help_shows_every_member_of_a_class(class_name: str) -> None:
    text = pydoc.plain(pydoc.render_doc(getattr(person, class_name)))
    for member in MEMBERS_BY_CLASS[class_name]:
        assert member.name in text or member.name.startswith("_sample")


def test_help_shows_the_module() -> None:
    text = pydoc.plain(pydoc.render_doc(person))
    assert "all_supported_locales() -> 'List[str]'" in text


@pytest.mark.parametrize(
    "member",
    [m for m in MEMBERS if m.kind in ("method", "staticmethod", "function")],
    ids=lambda member: member.qualname,
)
def test_function_is_pickled_by_name(member: Member) -> None:
    assert pickle.loads(pickle.dumps(member.built())) is member.built()


def test_class_method_is_pickled_by_name() -> None:
    assert pickle.loads(pickle.dumps(PersonModel.from_dict)) == PersonModel.from_dict


@every_class
def test_class_is_pickled_by_name(class_name: str) -> None:
    made = getattr(person, class_name)
    assert pickle.loads(pickle.dumps(made)) is made


@every_member
def test_function_is_copied_as_itself(member: Member) -> None:
    assert copy.deepcopy(member.built()) is member.built()


def test_autospec_keeps_signatures() -> None:
    double = mock.create_autospec(PersonModel)
    with pytest.raises(TypeError, match=r"^missing a required argument: 'country_condtions'$"):
        double.generate_emails(firstnames=1, lastnames=2, country_conditions=3)
    double.generate_emails(firstnames=1, lastnames=2, country_condtions=3)


def test_autospec_of_an_instance_has_its_methods() -> None:
    double = mock.create_autospec(PersonModel, instance=True)
    double.sample(n=3)
    double.sample.assert_called_once_with(n=3)
    with pytest.raises(TypeError, match=r"^missing a required argument: 'df'$"):
        double.fit()


def test_function_takes_attributes_and_weak_references() -> None:
    function = PersonModel.check_email
    function.marked = True
    try:
        assert function.marked
        assert weakref.ref(function)() is function
    finally:
        del function.marked


def test_functions_say_what_they_are() -> None:
    assert repr(PersonModel.fit).startswith("<function PersonModel.fit at 0x")
    assert inspect.isfunction(PersonModel.fit)
    assert inspect.isroutine(PersonModel.fit)


# --- functions that are made during a call ---


def functions_handed_to_apply(
    monkeypatch: pytest.MonkeyPatch, call: Callable[..., Any]
) -> list[Any]:
    """The functions that the call gives to Series.apply."""
    handed = []
    original = pd.Series.apply

    def apply(self: Any, func: Callable[..., Any], *args: Any, **kwargs: Any) -> Any:
        handed.append(func)
        return original(self, func, *args, **kwargs)

    monkeypatch.setattr(pd.Series, "apply", apply)
    call()
    return handed


def check_inner(
    function: Callable[..., Any], qualname: str, line: int, parameters: list[str]
) -> None:
    assert isinstance(function, types.FunctionType)
    assert function.__qualname__ == function.__code__.co_qualname == qualname
    assert function.__name__ == qualname.rpartition(".")[2]
    assert function.__module__ == MODULE_NAME
    assert (function.__code__.co_filename, function.__code__.co_firstlineno) == (FILE, line)
    assert list(inspect.signature(function).parameters) == parameters
    assert function.__globals__ is vars(person)


def scripted(numbers: Iterable[int]) -> Callable[[int, int], int]:
    """A randint that returns these numbers one after the other."""
    left = iter(numbers)
    return lambda low, high: next(left)


def test_lambdas_of_generate_usernames(monkeypatch: pytest.MonkeyPatch) -> None:
    monkeypatch.setattr(random, "randint", scripted([7, 1, 7, 1, 1, 2]))
    monkeypatch.setattr(np.random, "choice", lambda separators: "_")
    names = pd.Series(["Ann", "Ann"])
    handed = functions_handed_to_apply(
        monkeypatch, lambda: PersonModel.generate_usernames(names, names)
    )
    assert len(handed) == 4
    for function in handed:
        check_inner(function, "PersonModel.generate_usernames.<locals>.<lambda>", 560, ["x"])


def test_lambda_of_generate_phone_numbers(monkeypatch: pytest.MonkeyPatch) -> None:
    given = []

    class Recorder:
        @staticmethod
        def sub(pattern: str, replacement: str, text: str) -> str:
            given.append(replacement)
            return text

    monkeypatch.setattr(person, "re", Recorder)
    PersonModel.generate_phone_numbers([False])
    check_inner(given[0], "PersonModel.generate_phone_numbers.<locals>.<lambda>", 613, ["_"])


def test_lambda_of_sample_conditional(monkeypatch: pytest.MonkeyPatch) -> None:
    table = pd.DataFrame({"title": ["Mr", "Mrs"]})
    model = person_model(PersonLabels(title="title")).fit(table)
    handed = functions_handed_to_apply(monkeypatch, lambda: model.sample(2))
    lambdas = [f for f in handed if getattr(f, "__name__", "") == "<lambda>"]
    inner = [f for f in lambdas if f.__module__ == MODULE_NAME]
    (function,) = [f for f in inner if "_sample_conditional" in f.__qualname__]
    check_inner(function, "PersonModel._sample_conditional.<locals>.<lambda>", 326, ["x"])
