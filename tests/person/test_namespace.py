"""What the imported module holds: its names, its classes, and what their docstrings say."""

import builtins
import dataclasses
import inspect
import random
import re
import string
import types
import typing
from typing import Any

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
from support.members import MEMBER_IDS, MEMBERS, MEMBERS_BY_CLASS, MODULE_FUNCTIONS
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
    "Dict": typing.Dict,  # noqa: UP006 - this very object stands in the module
    "List": typing.List,  # noqa: UP006 - this very object stands in the module
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


every_member = pytest.mark.parametrize("member", MEMBERS, ids=MEMBER_IDS)
every_class = pytest.mark.parametrize("class_name", MEMBERS_BY_CLASS)


# --- the module ---


def test_module_holds_exactly_these_names() -> None:
    assert set(vars(person)) == set(BOUND_BY_IMPORTS) | DEFINED_HERE | MODULE_ATTRIBUTES


def test_module_binds_names_in_the_order_of_its_statements() -> None:
    bound = [name for name in vars(person) if name not in MODULE_ATTRIBUTES]
    assert bound == [
        *BOUND_BY_IMPORTS,
        *MEMBERS_BY_CLASS,
        *(member.name for member in MODULE_FUNCTIONS),
        "__test__",
    ]


@pytest.mark.parametrize("name", BOUND_BY_IMPORTS)
def test_imported_name_is_the_very_object(name: str) -> None:
    assert getattr(person, name) is BOUND_BY_IMPORTS[name]


def test_test_names_are_an_empty_dict() -> None:
    assert type(person.__test__) is dict
    assert person.__test__ == {}


def test_module_attributes_come_from_its_spec() -> None:
    spec = person.__spec__
    assert person.__name__ == MODULE_NAME == spec.name
    assert person.__package__ == "vantrel.model.models"
    assert person.__file__ == spec.origin
    assert person.__loader__ is spec.loader


def test_module_is_no_package() -> None:
    assert not hasattr(person, "__path__")


def test_module_has_no_docstring() -> None:
    assert person.__doc__ is None


def test_builtins_are_those_of_the_interpreter() -> None:
    assert person.__builtins__ in (builtins, vars(builtins))


# --- the classes ---


@every_class
def test_class_names(class_name: str) -> None:
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
def test_base_is_subscribed_and_resolved(made: type, base: str) -> None:
    assert made.__orig_bases__ == (base,)
    assert types.get_original_bases(made) == (base,)
    assert made.__bases__ == (typing.get_origin(base),)


@every_class
def test_metaclass_is_that_of_the_base(class_name: str) -> None:
    made = getattr(person, class_name)
    assert type(made) is type(made.__bases__[0])


@every_class
def test_class_dict_holds_module_and_docstring_then_the_members_in_order(class_name: str) -> None:
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
def test_class_has_no_members_but_these(class_name: str) -> None:
    expected = {member.name for member in MEMBERS_BY_CLASS[class_name]}
    if class_name == "GenderModel":
        expected |= {"key_female", "key_male", "key_non_binary", "key_ambiguous"}
    made_by_python = {"__module__", "__doc__", "__orig_bases__", "__parameters__"}
    abstract = {"__abstractmethods__", "_abc_impl"}
    kept_by_copy = {"__slotnames__"}  # where an object was copied before
    others = made_by_python | abstract | kept_by_copy
    assert set(vars(getattr(person, class_name))) - others == expected


@pytest.mark.parametrize(
    ("name", "key"),
    [("key_female", "F"), ("key_male", "M"), ("key_non_binary", "NB"), ("key_ambiguous", "A")],
)
def test_gender_keys_are_read_on_class_and_instance(name: str, key: Any) -> None:
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
def test_first_line_of_class_docstring(made: type, line: int) -> None:
    assert made.__doc__.splitlines()[0] == line


def test_country_model_docstring_is_one_line() -> None:
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
def test_gender_model_docstring_says(phrase: str) -> None:
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
def test_person_model_docstring_says(phrase: str) -> None:
    assert phrase in " ".join(PersonModel.__doc__.split())


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
def test_docstring_is_exact(qualname: str) -> None:
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
def test_docstring_of_module_function(name: str, asked: str, returned: str) -> None:
    assert inspect.getdoc(getattr(person, name)) == (
        f"Get all supported {asked} that can be used in the person model.\n\n"
        f"Returns:\n    {returned}"
    )
