"""The code of the functions, which debuggers and tools look at: parameters, then the names of the locals."""

import inspect
import types

import pytest

from support.members import MEMBER_IDS, MEMBERS, Member

LOCALS = {
    "GenderModel.collections": ["mapping", "collections", "key", "collection"],
    "GenderModel.fit": ["value_map", "df_gender", "key", "collection", "v"],
    "GenderModel.from_dict": ["meta_dict", "meta", "model"],
    "PersonModel.__init__": ["gender_meta", "probabilities", "gender"],
    "PersonModel.sample": ["num_rows", "gender_conditions", "country_conditions", "df", "_"],
    "PersonModel._sample_conditional": [
        "df",
        "mapping",
        "categories",
        "firstnames",
        "lastnames",
        "columns",
        "c",
    ],
    "PersonModel.generate_random_first_name": ["faker"],
    "PersonModel.generate_last_names": ["lastnames", "country"],
    "PersonModel.generate_emails": ["domains", "usernames", "emails", "country"],
    "PersonModel.generate_usernames": ["usernames", "vc", "duplicates"],
    "PersonModel.generate_password": ["pwd_length", "possible_chars"],
    "PersonModel.generate_phone_numbers": ["na"],
    "PersonModel.generate_from_collections": ["categories"],
    "PersonModel.map_to_gender_keys": [
        "collections",
        "return_values",
        "value",
        "key",
        "collection",
    ],
    "PersonModel.check_email": ["dash_word", "ip_number", "pattern"],
    "PersonModel.check_associations": ["association", "assoc_col"],
    "PersonModel.to_dict": ["d"],
    "PersonModel.from_dict": ["meta_dict", "meta", "config", "model"],
}

every_member = pytest.mark.parametrize("member", MEMBERS, ids=MEMBER_IDS)


def parameters(member: Member) -> list[str]:
    return [parameter.name for parameter in member.parameters]


def test_table_names_functions_of_the_module() -> None:
    assert set(LOCALS) <= set(MEMBER_IDS)


@every_member
def test_locals_stand_after_the_parameters(member: Member) -> None:
    code = member.built().__code__
    expected = parameters(member) + LOCALS.get(member.qualname, [])
    assert list(code.co_varnames) == expected
    assert code.co_nlocals == len(expected)
    assert code.co_argcount == len(member.parameters)


@every_member
def test_locals_are_no_parameters_to_those_who_ask(member: Member) -> None:
    function = member.built()
    assert list(inspect.signature(function).parameters) == parameters(member)
    asked = inspect.getfullargspec(function)
    assert asked.args == parameters(member)
    assert (asked.varargs, asked.varkw, asked.kwonlyargs) == (None, None, [])


@every_member
def test_code_without_its_function_refuses_to_run(member: Member) -> None:
    """The code is there to be looked at: what it stands for is not in it."""
    function = member.built()
    cells = tuple(types.CellType() for _ in function.__code__.co_freevars)
    bare = types.FunctionType(function.__code__, {}, closure=cells)
    with pytest.raises(AssertionError):
        bare(*(None for _ in member.parameters))
