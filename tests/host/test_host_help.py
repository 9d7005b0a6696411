"""What Python's help says of a model."""

import inspect
import pydoc
import re

import pytest

from support.members import MEMBER_IDS, MEMBERS, Member
from vantrel.config import PersonLabels, PersonModelConfig
from vantrel.metadata.value.person import Person
from vantrel.model.models.person import PersonModel

# Its docstring spells a parameter otherwise than the function does, for good.
NAMED_OTHERWISE = {"generate_emails"}


def told(thing: object) -> list[str]:
    return pydoc.plain(pydoc.render_doc(thing)).splitlines()


@pytest.mark.parametrize(
    "thing", [PersonModel, PersonModel(Person("person", PersonLabels(gender="sex")))]
)
def test_help_begins_with_what_a_model_does(thing: object) -> None:
    head = [line.lstrip(" |") for line in told(thing)[:7]]
    assert "PersonModel(meta: 'Person', config: 'PersonModelConfig' = PersonModelConfig())" in head
    assert "A Model of Person which captures gender with a hidden model." in head
    assert max(map(len, told(thing))) < 200


def test_a_configuration_writes_what_is_set() -> None:
    assert repr(PersonModelConfig()) == "PersonModelConfig()"
    config = PersonModelConfig(genders=["F"], pwd_length=(4, 5))
    assert repr(config) == "PersonModelConfig(genders=['F'], pwd_length=(4, 5))"


@pytest.mark.parametrize("member", MEMBERS, ids=MEMBER_IDS)
def test_docstrings_name_the_parameters_of_their_functions(member: Member) -> None:
    """They tell of each in its order; the stub's parameters are compared with the module's own."""
    function = member.built()
    listed = inspect.getdoc(function) or ""
    _, has_any, parameters = listed.partition("\nArgs:\n")
    parameters = parameters.partition("\n\n")[0]
    named = re.findall(r"^ {4}(\w+)(?: \([^)]*\))?:", parameters, re.MULTILINE)
    taken = [name for name in inspect.signature(function).parameters if name not in ("self", "cls")]
    if has_any:
        assert (named == taken) == (member.name not in NAMED_OTHERWISE), (named, taken)
