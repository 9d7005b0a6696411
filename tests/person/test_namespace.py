"""What the imported module holds: its names, its classes, and everything about its functions but their work."""

import builtins
import copy
import dataclasses
import inspect
import pickle
import pydoc
import random
import re
import string
import types
import typing
import weakref
from unittest import mock

import faker
import numpy as np
import pandas as pd
import pytest
from pandas._libs.missing import NAType

import vantrel.config
import vantrel.metadata
import vantrel.metadata.rules.association
import vantrel.metadata.value
import vantrel.model.base
import vantrel.model.exceptions
import vantrel.model.models.histogram
import vantrel.util.locale.locale
import vantrel.util.person
from support.members import MEMBER_IDS, MEMBERS, MEMBERS_BY_CLASS, MODULE_FUNCTIONS, Member
from support.people import person_model
from vantrel.config import PersonLabels
from vantrel.metadata.value import Person, String
from vantrel.model.models import person
from vantrel.model.models.person import CountryModel, GenderModel, PersonModel

MODULE_NAME = "vantrel.model.models.person"
FILE = r"vantrel\model\models\person"

BOUND_BY_IMPORTS = {
    "random": random,
    "re": re,
    "string": string,
    "asdict": dataclasses.asdict,
    "Any": typing.Any,
    "Dict": typing.Dict,  # noqa: UP006
    "List": typing.List,  # noqa: UP006
    "Optional": typing.Optional,
    "Sequence": typing.Sequence,
    "Union": typing.Union,
    "cast": typing.cast,
    "np": np,
    "pd": pd,
    "Faker": faker.Faker,
    "NAType": NAType,
    "Association": vantrel.metadata.rules.association.Association,
    "PersonLabels": vantrel.config.PersonLabels,
    "PersonModelConfig": vantrel.config.PersonModelConfig,
    "MetaNotExtractedError": vantrel.metadata.MetaNotExtractedError,
    "Nominal": vantrel.metadata.Nominal,
    "Person": vantrel.metadata.value.Person,
    "String": vantrel.metadata.value.String,
    "Provider": vantrel.util.locale.locale.Provider,
    "get_country_to_provder_map": vantrel.util.locale.locale.get_country_to_provder_map,
    "get_supported_country_codes": vantrel.util.locale.locale.get_supported_country_codes,
    "get_supported_country_names": vantrel.util.locale.locale.get_supported_country_names,
    "valid_locales": vantrel.util.locale.locale.valid_locales,
    "collections_from_mapping": vantrel.util.person.collections_from_mapping,
    "DiscreteModel": vantrel.model.base.DiscreteModel,
    "ModelNotFittedError": vantrel.model.exceptions.ModelNotFittedError,
    "Histogram": vantrel.model.models.histogram.Histogram,
}
DEFINED_HERE = {
    "GenderModel",
    "PersonModel",
    "CountryModel",
    "all_supported_country_names",
    "all_supported_country_codes",
    "all_supported_locales",
    "__test__",
}
MODULE_ATTRIBUTES = {
    "__name__",
    "__doc__",
    "__file__",
    "__loader__",
    "__package__",
    "__spec__",
    "__builtins__",
}

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


# --- the module ---


def test_module_holds_exactly_these_names():
    assert set(vars(person)) == set(BOUND_BY_IMPORTS) | DEFINED_HERE | MODULE_ATTRIBUTES


def test_module_binds_names_in_the_order_of_its_statements():
    bound = [name for name in vars(person) if name not in MODULE_ATTRIBUTES]
    assert bound == [
        *BOUND_BY_IMPORTS,
        *MEMBERS_BY_CLASS,
        *(member.name for member in MODULE_FUNCTIONS),
        "__test__",
    ]


@pytest.mark.parametrize("name", BOUND_BY_IMPORTS)
def test_imported_name_is_the_very_object(name):
    assert getattr(person, name) is BOUND_BY_IMPORTS[name]


def test_test_names_are_an_empty_dict():
    assert type(person.__test__) is dict
    assert person.__test__ == {}


def test_module_attributes_come_from_its_spec():
    spec = person.__spec__
    assert person.__name__ == MODULE_NAME == spec.name
    assert person.__package__ == "vantrel.model.models"
    assert person.__file__ == spec.origin
    assert person.__loader__ is spec.loader


def test_module_is_no_package():
    assert not hasattr(person, "__path__")


def test_module_has_no_docstring():
    assert person.__doc__ is None


def test_builtins_are_those_of_the_interpreter():
    assert person.__builtins__ in (builtins, vars(builtins))


# --- the classes ---


@every_class
def test_class_names(class_name):
    made = getattr(person, class_name)
    assert (made.__name__, made.__qualname__, made.__module__) == (
        class_name,
        class_name,
        MODULE_NAME,
    )


@pytest.mark.parametrize(
    ("made", "base"),
    [
        (GenderModel, vantrel.model.models.histogram.Histogram[str]),
        (PersonModel, vantrel.model.base.DiscreteModel[Person, str]),
        (CountryModel, vantrel.model.models.histogram.Histogram[str]),
    ],
)
def test_base_is_subscribed_and_resolved(made, base):
    assert made.__orig_bases__ == (base,)
    assert types.get_original_bases(made) == (base,)
    assert made.__bases__ == (typing.get_origin(base),)


@every_class
def test_metaclass_is_that_of_the_base(class_name):
    made = getattr(person, class_name)
    assert type(made) is type(made.__bases__[0])


@every_class
def test_class_dict_holds_module_and_docstring_then_the_members_in_order(class_name):
    attributes = ["key_female", "key_male", "key_non_binary", "key_ambiguous"]
    members = dict.fromkeys(member.name for member in MEMBERS_BY_CLASS[class_name])
    expected = [
        "__module__",
        "__doc__",
        *(attributes if class_name == "GenderModel" else []),
        *members,
    ]
    assert list(vars(getattr(person, class_name)))[: len(expected)] == expected


@every_class
def test_class_has_no_members_but_these(class_name):
    expected = {member.name for member in MEMBERS_BY_CLASS[class_name]}
    if class_name == "GenderModel":
        expected |= {"key_female", "key_male", "key_non_binary", "key_ambiguous"}
    made_by_python = {"__module__", "__doc__", "__orig_bases__", "__parameters__"}
    abstract = {"__abstractmethods__", "_abc_impl"}
    assert set(vars(getattr(person, class_name))) - made_by_python - abstract == expected


@pytest.mark.parametrize(
    ("name", "key"),
    [("key_female", "F"), ("key_male", "M"), ("key_non_binary", "NB"), ("key_ambiguous", "A")],
)
def test_gender_keys_are_read_on_class_and_instance(name, key):
    assert getattr(GenderModel, name) == key
    assert getattr(GenderModel(String("sex")), name) == key
    assert type(getattr(GenderModel, name)) is str


@pytest.mark.parametrize(
    ("made", "line"),
    [
        (GenderModel, "A Model of the gender attribute."),
        (PersonModel, "A Model of Person which captures gender with a hidden model."),
        (CountryModel, "A model for countries."),
    ],
)
def test_first_line_of_class_docstring(made, line):
    assert made.__doc__.splitlines()[0] == line


def test_country_model_docstring_is_one_line():
    assert CountryModel.__doc__ == "A model for countries."


@pytest.mark.parametrize(
    "phrase",
    [
        "4(+1) possible categories",
        "F: female",
        "M: male",
        "NB: non-binary",
        "A: ambiguous",
        "correspond to collections of values in `self.meta.categories`",
        "three regular expressions, one each for F, M and NB",
        "more than one",
        "F: Mrs, Ms",
        "M: Mr",
        "NB: Ind, Mx",
        "A: Dr, Prof",
    ],
)
def test_gender_model_docstring_says(phrase):
    assert phrase in " ".join(GenderModel.__doc__.split())


@pytest.mark.parametrize(
    "phrase",
    [
        "gender (orig.)",
        "title (orig.)",
        "first_name last_name email username password home/work/mobile_number",
        "Attributes marked with 'orig.' have values that correspond to the original dataset.",
        "hidden attribute `_gender`",
        "F, M, NB and A",
        "F, M, U or a missing value",
        "ambiguous",
        "evenly distributed amongst the genders",
    ],
)
def test_person_model_docstring_says(phrase):
    assert phrase in " ".join(PersonModel.__doc__.split())


# --- the functions ---


@every_member
def test_kind_of_member(member: Member):
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
def test_names_of_function(member: Member):
    function = member.built()
    assert (function.__name__, function.__qualname__) == (member.name, member.qualname)
    assert function.__module__ == MODULE_NAME


@every_member
def test_code_of_function(member: Member):
    code = member.built().__code__
    parameters = tuple(parameter.name for parameter in member.parameters)
    assert (code.co_name, code.co_qualname) == (member.name, member.qualname)
    assert (code.co_filename, code.co_firstlineno) == (FILE, member.line)
    assert code.co_varnames[: code.co_argcount] == parameters
    assert (code.co_posonlyargcount, code.co_kwonlyargcount) == (0, 0)


@every_member
def test_annotations_are_the_texts_as_written(member: Member):
    assert member.built().__annotations__ == member.annotations
    assert list(member.built().__annotations__) == list(member.annotations)


def test_quotes_belong_to_the_annotation_text():
    assert PersonModel.fit.__annotations__ == {"df": "pd.DataFrame", "return": "'PersonModel'"}


@every_member
def test_annotations_resolve_through_the_function_itself(member: Member):
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
def test_signature_of_function(member: Member):
    signature = inspect.signature(member.built())
    assert list(signature.parameters) == [parameter.name for parameter in member.parameters]
    for parameter in member.parameters:
        seen = signature.parameters[parameter.name]
        assert seen.kind is inspect.Parameter.POSITIONAL_OR_KEYWORD
        assert (seen.default is not inspect.Parameter.empty) == (parameter.default is not None)


@every_member
def test_defaults_of_function(member: Member):
    written = [p.default for p in member.parameters if p.default is not None]
    expected = tuple(eval(text, vars(person).copy()) for text in written)
    assert (member.built().__defaults__ or ()) == expected
    assert [type(d) for d in member.built().__defaults__ or ()] == [type(d) for d in expected]


@every_member
def test_functions_without_defaults_have_none(member: Member):
    assert (member.built().__defaults__ is None) == (member.required == len(member.parameters))
    assert member.built().__kwdefaults__ is None


@every_member
def test_globals_are_the_module(member: Member):
    assert member.built().__globals__ is vars(person)


@every_member
def test_parent_calls_go_through_a_class_cell(member: Member):
    function = member.built()
    if member.qualname not in CALLING_PARENT:
        assert function.__closure__ is None
        assert function.__code__.co_freevars == ()
        return
    (cell,) = function.__closure__
    assert cell.cell_contents is getattr(person, member.owner)
    assert function.__code__.co_freevars == ("__class__",)


@every_class
def test_one_class_has_one_cell(class_name):
    cells = {
        id(member.built().__closure__[0])
        for member in MEMBERS_BY_CLASS[class_name]
        if member.built().__closure__
    }
    assert len(cells) == 1


def test_country_map_getter_and_setter_are_one_property():
    found = vars(PersonModel)["country_to_provider_map"]
    assert found.fget.__code__.co_firstlineno == 204
    assert found.fset.__code__.co_firstlineno == 210
    assert found.fdel is None


@pytest.mark.parametrize(
    "member",
    [m for m in MEMBERS if m.kind == "property" and m.name != "country_to_provider_map"],
    ids=lambda member: member.qualname,
)
def test_other_properties_are_read_only(member: Member):
    found = vars(getattr(person, member.owner))[member.name]
    assert (found.fset, found.fdel) == (None, None)


@pytest.mark.parametrize("name", ["categories", "default_locale", "locales", "labels", "params"])
def test_read_only_property_refuses_a_value(name):
    message = f"property '{name}' of 'PersonModel' object has no setter"
    with pytest.raises(AttributeError, match=f"^{re.escape(message)}$"):
        setattr(person_model(), name, None)


def test_setting_the_country_map_on_an_instance_goes_through_the_setter():
    model, providers = person_model(), {"GB": object()}
    model.country_to_provider_map = providers
    assert model._country_to_provider_map is providers
    assert "country_to_provider_map" not in vars(model)


# --- docstrings ---

EXACT_DOCSTRINGS = {
    "PersonModel.generate_first_names": (
        "Generate first names based on the genders specified in the conditions series.\n\n"
        "        Args:\n"
        "            gender_conditions: A series of genders to generate first names from.\n"
        "            country_conditions: A series of countries to generate first names from.\n\n"
        "        Returns:\n"
        "            A series of generated first names.\n"
    ),
    "PersonModel.generate_random_first_name": (
        "Generate a random first name based on gender and country.\n\n"
        "        Args:\n"
        "            gender: String representing the gender of the person. Must be one as defined by\n"
        "            GenderModel.\n"
        "            country: String representing the country of the person. Defaults to None.\n\n"
        "        Returns:\n"
        "            A randomly generated first name or pd.NA.\n"
    ),
    "PersonModel.generate_last_names": (
        "Genderate last names. If country_conditions is provided, the last names are generated\n"
        "        based on the countries specified in the series.\n\n"
        "        Args:\n"
        "            firstnames: A series of firstnames, used to determine the number of lastnames to\n"
        "                generate and where to place NaNs.\n"
        "            country_conditions: A series of countries to generate lastnames for.\n\n"
        "        Returns:\n"
        "            A series of generated lastnames.\n"
    ),
    "PersonModel.generate_emails": (
        "\n        Generate emails based on the firstnames and lastnames specified in the series,\n"
        "        optionally conditional on the countries.\n\n"
        "        Args:\n"
        "            firstnames: A series of firstnames to generate emails from.\n"
        "            lastnames: A series of lastnames to generate emails from.\n"
        "            country_conditions: A series of countries to generate emails for.\n\n"
        "        Returns:\n"
        "            A series of generated emails.\n"
    ),
    "PersonModel.check_email": (
        "Check if a string is a valid email address.\n\n"
        "        Args:\n"
        "            s: The string to check.\n"
        "            locales: locales that the email is generated for, the check only functions with"
        " english\n"
        "                language emails, otherwise no check is performed.\n"
    ),
    "PersonModel.generate_usernames": (
        "Generate usernames based on the firstnames and lastnames specified in the series.\n"
        "            These are generated by concatenating the firstnames and lastnames with a random"
        " number\n"
        "            and a random separator.\n\n"
        "        Args:\n"
        "            firstnames: A series of firstnames to generate usernames from.\n"
        "            lastnames: A series of lastnames to generate usernames from.\n\n"
        "        Returns:\n"
        "            A series of generated usernames.\n"
    ),
    "PersonModel.generate_passwords": None,
    "PersonModel.generate_password": None,
    "PersonModel.generate_phone_numbers": None,
}


@pytest.mark.parametrize("qualname", EXACT_DOCSTRINGS)
def test_docstring_is_exact(qualname):
    function = getattr(PersonModel, qualname.partition(".")[2])
    assert function.__doc__ == EXACT_DOCSTRINGS[qualname]


@pytest.mark.parametrize(
    ("name", "asked", "returned"),
    [
        (
            "all_supported_country_names",
            "country names",
            "A dictionary mapping country names to the locales that they are associated with.",
        ),
        (
            "all_supported_country_codes",
            "country codes",
            "A dictionary mapping country codes to the locales that they are associated with.",
        ),
        ("all_supported_locales", "locales", "A list of supported locales."),
    ],
)
def test_docstring_of_module_function(name, asked, returned):
    assert inspect.getdoc(getattr(person, name)) == (
        f"Get all supported {asked} that can be used in the person model.\n\n"
        f"Returns:\n    {returned}"
    )


# --- defaults that calls share ---


def test_person_model_holds_one_default_config():
    defaults = PersonModel.__init__.__defaults__
    assert len(defaults) == 1
    assert type(defaults[0]) is vantrel.config.PersonModelConfig


def test_models_without_config_share_the_default_config():
    (shared,) = PersonModel.__init__.__defaults__
    assert person_model().config is shared
    assert person_model().config is shared


def test_changing_the_default_config_changes_later_models(monkeypatch):
    (shared,) = PersonModel.__init__.__defaults__
    monkeypatch.setattr(shared, "pwd_length", (3, 3))
    assert person_model().pwd_length == (3, 3)


def test_check_email_holds_one_default_list():
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
def test_constant_defaults(function, defaults):
    assert function.__defaults__ == defaults


# --- functions as the rest of Python sees them ---


def test_function_binds_as_a_method():
    model = person_model()
    assert isinstance(model.fit, types.MethodType)
    assert model.fit.__self__ is model
    assert model.fit.__func__ is PersonModel.fit


def test_class_method_binds_to_the_class_it_is_read_from():
    class Special(PersonModel):
        pass

    assert Special.from_dict.__self__ is Special
    assert Special.from_dict.__func__ is PersonModel.from_dict.__func__


def test_static_method_is_the_same_on_class_and_instance():
    assert person_model().check_email is PersonModel.check_email


def test_signature_of_bound_method_leaves_self_out():
    assert list(inspect.signature(person_model().generate_emails).parameters) == [
        "firstnames",
        "lastnames",
        "country_condtions",
    ]


def test_signature_reads_as_written():
    assert str(inspect.signature(PersonModel.generate_password)) == (
        "(pwd_length_min: 'int' = 8, pwd_length_max: 'int' = 16) -> 'str'"
    )


def test_help_shows_signature_and_docstring():
    text = pydoc.plain(pydoc.render_doc(PersonModel.generate_last_names))
    assert (
        "generate_last_names(self, firstnames: 'pd.Series', country_conditions: 'pd.Series')"
        in text
    )
    assert "Genderate last names." in text


@every_class
def test_help_shows_every_member_of_a_class(class_name):
    text = pydoc.plain(pydoc.render_doc(getattr(person, class_name)))
    for member in MEMBERS_BY_CLASS[class_name]:
        assert member.name in text or member.name.startswith("_sample")


def test_help_shows_the_module():
    text = pydoc.plain(pydoc.render_doc(person))
    assert "all_supported_locales() -> 'List[str]'" in text


@pytest.mark.parametrize(
    "member",
    [m for m in MEMBERS if m.kind in ("method", "staticmethod", "function")],
    ids=lambda member: member.qualname,
)
def test_function_is_pickled_by_name(member: Member):
    assert pickle.loads(pickle.dumps(member.built())) is member.built()


def test_class_method_is_pickled_by_name():
    assert pickle.loads(pickle.dumps(PersonModel.from_dict)) == PersonModel.from_dict


@every_class
def test_class_is_pickled_by_name(class_name):
    made = getattr(person, class_name)
    assert pickle.loads(pickle.dumps(made)) is made


@every_member
def test_function_is_copied_as_itself(member: Member):
    assert copy.deepcopy(member.built()) is member.built()


def test_autospec_keeps_signatures():
    double = mock.create_autospec(PersonModel)
    with pytest.raises(TypeError, match="^missing a required argument: 'country_condtions'$"):
        double.generate_emails(firstnames=1, lastnames=2, country_conditions=3)
    double.generate_emails(firstnames=1, lastnames=2, country_condtions=3)


def test_autospec_of_an_instance_has_its_methods():
    double = mock.create_autospec(PersonModel, instance=True)
    double.sample(n=3)
    double.sample.assert_called_once_with(n=3)
    with pytest.raises(TypeError, match="^missing a required argument: 'df'$"):
        double.fit()


def test_function_takes_attributes_and_weak_references():
    function = PersonModel.check_email
    function.marked = True
    try:
        assert function.marked
        assert weakref.ref(function)() is function
    finally:
        del function.marked


def test_functions_say_what_they_are():
    assert repr(PersonModel.fit).startswith("<function PersonModel.fit at 0x")
    assert inspect.isfunction(PersonModel.fit)
    assert inspect.isroutine(PersonModel.fit)


# --- functions that are made during a call ---


def functions_handed_to_apply(monkeypatch, call):
    """The functions that the call gives to Series.apply."""
    handed = []
    original = pd.Series.apply

    def apply(self, func, *args, **kwargs):
        handed.append(func)
        return original(self, func, *args, **kwargs)

    monkeypatch.setattr(pd.Series, "apply", apply)
    call()
    return handed


def check_inner(function, qualname, line, parameters):
    assert isinstance(function, types.FunctionType)
    assert function.__qualname__ == function.__code__.co_qualname == qualname
    assert function.__name__ == qualname.rpartition(".")[2]
    assert function.__module__ == MODULE_NAME
    assert (function.__code__.co_filename, function.__code__.co_firstlineno) == (FILE, line)
    assert list(inspect.signature(function).parameters) == parameters
    assert function.__globals__ is vars(person)


def scripted(numbers):
    """A randint that returns these numbers one after the other."""
    left = iter(numbers)
    return lambda low, high: next(left)


def test_lambdas_of_generate_usernames(monkeypatch):
    monkeypatch.setattr(random, "randint", scripted([7, 1, 7, 1, 1, 2]))
    monkeypatch.setattr(np.random, "choice", lambda separators: "_")
    names = pd.Series(["Ann", "Ann"])
    handed = functions_handed_to_apply(
        monkeypatch, lambda: PersonModel.generate_usernames(names, names)
    )
    assert len(handed) == 4
    for function in handed:
        check_inner(function, "PersonModel.generate_usernames.<locals>.<lambda>", 560, ["x"])


def test_lambda_of_generate_phone_numbers(monkeypatch):
    given = []

    class Recorder:
        @staticmethod
        def sub(pattern, replacement, text):
            given.append(replacement)
            return text

    monkeypatch.setattr(person, "re", Recorder)
    PersonModel.generate_phone_numbers([False])
    check_inner(given[0], "PersonModel.generate_phone_numbers.<locals>.<lambda>", 613, ["_"])


def test_lambda_of_sample_conditional(monkeypatch):
    table = pd.DataFrame({"title": ["Mr", "Mrs"]})
    model = person_model(PersonLabels(title="title")).fit(table)
    handed = functions_handed_to_apply(monkeypatch, lambda: model.sample(2))
    lambdas = [f for f in handed if getattr(f, "__name__", "") == "<lambda>"]
    inner = [f for f in lambdas if f.__module__ == MODULE_NAME]
    (function,) = [f for f in inner if "_sample_conditional" in f.__qualname__]
    check_inner(function, "PersonModel._sample_conditional.<locals>.<lambda>", 326, ["x"])
