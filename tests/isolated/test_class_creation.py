"""The classes are made as a class statement makes them, whatever base and metaclass the host has."""

from pathlib import Path

import pytest

from support.isolated import answer_of, output_of
from support.standins import MODEL, write_standins

PREPARING = MODEL.format(name="Histogram").replace(
    "class Histogram:",
    """
class Names(dict):
    events = []

    def __setitem__(self, name, value):
        self.events.append(name)
        super().__setitem__(name, value)

    def __getitem__(self, name):
        self.events.append("read " + name)
        return super().__getitem__(name)


class Meta(type):
    calls = []

    @classmethod
    def __prepare__(metacls, name, bases, **keywords):
        metacls.calls.append(("prepare", name, tuple(base.__name__ for base in bases), keywords))
        return Names() if bases else {}

    def __new__(metacls, name, bases, names, **keywords):
        metacls.calls.append(("new", name, type(names).__name__, keywords))
        return super().__new__(metacls, name, bases, names)


class Histogram(metaclass=Meta):""",
)


@pytest.fixture(scope="module")
def preparing(tmp_path_factory: pytest.TempPathFactory) -> Path:
    """A host both of whose base classes have a metaclass that prepares the namespace."""
    base = "from vantrel.model.models.histogram import Meta\n" + MODEL.format(
        name="DiscreteModel"
    ).replace("class DiscreteModel:", "class DiscreteModel(metaclass=Meta):")
    return write_standins(
        tmp_path_factory.mktemp("preparing"),
        vantrel__model__base=base,
        vantrel__model__models__histogram=PREPARING,
    )


def test_metaclass_prepares_with_name_and_resolved_bases(preparing: Path) -> None:
    code = """
    import json
    import vantrel.model.models.person as person
    from vantrel.model.models.histogram import Meta
    made = [type(getattr(person, n)) is Meta for n in ("GenderModel", "PersonModel", "CountryModel")]
    print(json.dumps([made, [call for call in Meta.calls if call[1] not in ("Histogram", "DiscreteModel")]]))
    """
    made, calls = answer_of(code, path=preparing)
    assert made == [True, True, True]
    assert calls == [
        ["prepare", "GenderModel", ["Histogram"], {}],
        ["new", "GenderModel", "Names", {}],
        ["prepare", "PersonModel", ["DiscreteModel"], {}],
        ["new", "PersonModel", "Names", {}],
        ["prepare", "CountryModel", ["Histogram"], {}],
        ["new", "CountryModel", "Names", {}],
    ]


def test_prepared_namespace_is_filled_in_order(preparing: Path) -> None:
    code = """
    import json
    import vantrel.model.models.person
    from vantrel.model.models.histogram import Names
    print(json.dumps(Names.events))
    """
    start = ["__module__", "__qualname__", "__doc__"]
    end = ["__classcell__", "__orig_bases__"]
    assert answer_of(code, path=preparing) == [
        *start,
        "key_female",
        "key_male",
        "key_non_binary",
        "key_ambiguous",
        "__init__",
        "collections",
        "categories",
        "fit",
        "from_dict",
        *end,
        *start,
        "__init__",
        "categories",
        "default_locale",
        "locales",
        "country_to_provider_map",
        "read country_to_provider_map",
        "country_to_provider_map",
        "labels",
        "params",
        "fit",
        "sample",
        "_sample_conditional",
        "generate_values_from_collections",
        "generate_first_names",
        "generate_random_first_name",
        "generate_last_names",
        "generate_emails",
        "generate_usernames",
        "generate_passwords",
        "generate_password",
        "generate_phone_numbers",
        "generate_from_collections",
        "map_to_gender_keys",
        "check_email",
        "check_associations",
        "to_dict",
        "from_dict",
        *end,
        *start,
        "__init__",
        "categories",
        "fit",
        *end,
    ]


NAMES_THAT_MISS = """
class Names(dict):
    def __getitem__(self, name):
        raise {error}


class Meta(type):
    @classmethod
    def __prepare__(metacls, name, bases, **keywords):
        return Names()

    def __new__(metacls, name, bases, names, **keywords):
        return super().__new__(metacls, name, bases, names)
"""


@pytest.mark.parametrize(
    ("error", "message"),
    [
        ("KeyError(name)", "NameError: name 'country_to_provider_map' is not defined"),
        ("LookupError('shut')", "LookupError: shut"),
    ],
)
def test_setter_needs_the_property_in_the_namespace(
    tmp_path: Path, error: str, message: str
) -> None:
    base = NAMES_THAT_MISS.format(error=error) + MODEL.format(name="DiscreteModel").replace(
        "class DiscreteModel:", "class DiscreteModel(metaclass=Meta):"
    )
    write_standins(tmp_path, vantrel__model__base=base)
    code = """
    try:
        import vantrel.model.models.person
    except Exception as error:
        print(f"{type(error).__name__}: {error}")
    """
    assert output_of(code, path=tmp_path) == message


def test_setter_is_made_by_what_the_namespace_holds(tmp_path: Path) -> None:
    names = NAMES_THAT_MISS.format(error="KeyError").replace(
        "raise KeyError",
        "return Extended() if name == 'country_to_provider_map' else dict.__getitem__(self, name)",
    )
    base = (
        "class Extended:\n    def setter(self, function):\n        return ('extended', function.__name__)\n"
        + names
        + MODEL.format(name="DiscreteModel").replace(
            "class DiscreteModel:", "class DiscreteModel(metaclass=Meta):"
        )
    )
    write_standins(tmp_path, vantrel__model__base=base)
    code = """
    from vantrel.model.models.person import PersonModel
    print(PersonModel.country_to_provider_map)
    """
    assert output_of(code, path=tmp_path) == "('extended', 'country_to_provider_map')"


def test_setter_falls_back_to_a_global_of_that_name(tmp_path: Path) -> None:
    base = NAMES_THAT_MISS.format(error="KeyError(name)") + MODEL.format(
        name="DiscreteModel"
    ).replace("class DiscreteModel:", "class DiscreteModel(metaclass=Meta):")
    write_standins(tmp_path, vantrel__model__base=base)
    code = """
    import builtins
    class Extended:
        def setter(self, function):
            return "extended"
    builtins.country_to_provider_map = Extended()
    from vantrel.model.models.person import PersonModel
    print(PersonModel.country_to_provider_map)
    """
    assert output_of(code, path=tmp_path) == "extended"


def test_subclass_hook_sees_a_whole_class(tmp_path: Path) -> None:
    hooked = MODEL.format(name="Histogram").replace(
        "cls.made_of.append(cls)",
        "cls.made_of.append((cls.__name__, cls.__module__, hasattr(cls, 'fit'), keywords))",
    )
    write_standins(tmp_path, vantrel__model__models__histogram=hooked)
    code = """
    import json
    import vantrel.model.models.person
    from vantrel.model.models.histogram import Histogram
    print(json.dumps(Histogram.made_of))
    """
    name = "vantrel.model.models.person"
    assert answer_of(code, path=tmp_path) == [
        ["GenderModel", name, True, {}],
        ["CountryModel", name, True, {}],
    ]


def test_subscribed_base_is_resolved_with_the_bases_as_written(tmp_path: Path) -> None:
    hooked = MODEL.format(name="Histogram").replace(
        "return (self.origin,)",
        "self.origin.resolved = [type(base).__name__ for base in bases], self.item\n        return (self.origin,)",
    )
    write_standins(tmp_path, vantrel__model__models__histogram=hooked)
    code = """
    from vantrel.model.models.person import GenderModel
    (base,) = GenderModel.__orig_bases__
    print(GenderModel.__bases__, type(base).__name__, base.item, GenderModel.resolved)
    """
    assert output_of(code, path=tmp_path) == (
        "(<class 'vantrel.model.models.histogram.Histogram'>,) Subscribed <class 'str'>"
        " (['Subscribed'], <class 'str'>)"
    )


def test_base_that_needs_no_resolving_leaves_no_original_bases(tmp_path: Path) -> None:
    plain = MODEL.format(name="Histogram").replace("return Subscribed(cls, item)", "return cls")
    write_standins(tmp_path, vantrel__model__models__histogram=plain)
    code = """
    from vantrel.model.models.person import GenderModel
    print(GenderModel.__bases__, hasattr(GenderModel, "__orig_bases__"))
    """
    assert output_of(code, path=tmp_path) == (
        "(<class 'vantrel.model.models.histogram.Histogram'>,) False"
    )


def test_person_model_is_subscribed_with_person_and_text(standins: Path) -> None:
    code = """
    from vantrel.model.models.person import Person, PersonModel
    print(PersonModel.__orig_bases__[0].item == (Person, str))
    """
    assert output_of(code, path=standins) == "True"
