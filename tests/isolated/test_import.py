"""Importing the module: once, again, through its spec, and what it does while its body runs."""

import pytest

from support.isolated import answer_of, output_of
from support.standins import MODEL, write_standins

ALREADY_IMPORTED = "Module 'person' has already been imported. Re-initialisation is not supported."

# Counts how often the body has run: the host's class hears of every class that is made of it.
PRELUDE = """
    import importlib.util, json, sys
    from vantrel.model.models.histogram import Histogram
    NAME = "vantrel.model.models.person"
    def runs():
        return len([made for made in Histogram.made_of if made.__name__ == "GenderModel"])
"""


def test_module_is_imported_into_another_host(standins):
    code = (
        PRELUDE
        + """
    import vantrel.model.models.person as person
    print(json.dumps([person.all_supported_locales(), person.__file__, runs()]))
    """
    )
    locales, file, runs = answer_of(code, path=standins)
    assert locales == ["person"]
    assert file == str(standins / "vantrel/model/models/person.so")
    assert runs == 1


def test_second_import_is_the_cached_module(standins):
    code = (
        PRELUDE
        + """
    import vantrel.model.models.person as first
    first.Faker = "kept"
    import vantrel.model.models.person as second
    third = importlib.import_module(NAME)
    print(first is second is third is sys.modules[NAME], third.Faker, runs())
    """
    )
    assert output_of(code, path=standins) == "True kept 1"


def test_import_after_forgetting_gives_the_same_module(standins):
    code = (
        PRELUDE
        + """
    import vantrel.model.models.person as first
    first.Faker = "kept"
    del sys.modules[NAME]
    again = importlib.import_module(NAME)
    print(again is first, again.Faker, runs())
    """
    )
    assert output_of(code, path=standins) == "True kept 1"


def test_creation_again_gives_the_existing_module(standins):
    code = (
        PRELUDE
        + """
    import vantrel.model.models.person as first
    again = importlib.util.module_from_spec(importlib.util.find_spec(NAME))
    print(again is first)
    """
    )
    assert output_of(code, path=standins) == "True"


def test_creation_again_of_a_module_that_was_executed_by_hand(standins):
    code = (
        PRELUDE
        + """
    spec = importlib.util.find_spec(NAME)
    first = importlib.util.module_from_spec(spec)
    spec.loader.exec_module(first)
    print(importlib.util.module_from_spec(spec) is first, NAME in sys.modules, runs())
    """
    )
    assert output_of(code, path=standins) == "True False 1"


def test_execution_again_does_nothing(standins):
    code = (
        PRELUDE
        + """
    import vantrel.model.models.person as person
    del person.Faker
    person.__spec__.loader.exec_module(person)
    print(hasattr(person, "Faker"), runs())
    """
    )
    assert output_of(code, path=standins) == "False 1"


def test_execution_through_another_module_object_fails(standins):
    code = (
        PRELUDE
        + """
    spec = importlib.util.find_spec(NAME)
    first, second = (importlib.util.module_from_spec(spec) for _ in range(2))
    spec.loader.exec_module(first)
    try:
        spec.loader.exec_module(second)
    except RuntimeError as error:
        print(json.dumps([first is second, type(error).__name__, str(error), runs()]))
    """
    )
    assert answer_of(code, path=standins) == [False, "RuntimeError", ALREADY_IMPORTED, 1]


def test_first_module_serves_on_after_the_refused_execution(standins):
    code = (
        PRELUDE
        + """
    spec = importlib.util.find_spec(NAME)
    first, second = (importlib.util.module_from_spec(spec) for _ in range(2))
    spec.loader.exec_module(first)
    try:
        spec.loader.exec_module(second)
    except RuntimeError:
        pass
    print(first.all_supported_locales(), "PersonModel" in vars(second))
    """
    )
    assert output_of(code, path=standins) == "['person'] False"


def test_created_module_has_what_its_spec_tells(standins):
    code = (
        PRELUDE
        + """
    spec = importlib.util.find_spec(NAME)
    made = spec.loader.create_module(spec)
    print(made.__name__ == NAME, made.__loader__ is spec.loader, made.__file__ == spec.origin)
    print(made.__package__, hasattr(made, "__path__"))
    """
    )
    assert output_of(code, path=standins).split("\n") == [
        "True True True",
        "vantrel.model.models False",
    ]


def test_created_module_holds_nothing_else_before_it_is_executed(standins):
    code = (
        PRELUDE
        + """
    made = importlib.util.module_from_spec(importlib.util.find_spec(NAME))
    print(json.dumps(sorted(vars(made))))
    """
    )
    assert answer_of(code, path=standins) == [
        "__doc__",
        "__file__",
        "__loader__",
        "__name__",
        "__package__",
        "__spec__",
    ]


def test_threads_that_import_at_once_share_one_run(standins):
    code = (
        PRELUDE
        + """
    import threading
    ready, modules = threading.Barrier(8), []
    def load():
        ready.wait()
        modules.append(importlib.import_module(NAME))
    threads = [threading.Thread(target=load) for _ in range(8)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    print(len(modules), len({id(module) for module in modules}), runs())
    """
    )
    assert output_of(code, path=standins) == "8 1 1"


def test_created_module_has_the_search_locations_of_its_spec(standins):
    code = (
        PRELUDE
        + """
    spec = importlib.util.find_spec(NAME)
    spec.submodule_search_locations = ["somewhere"]
    made = spec.loader.create_module(spec)
    print(made.__path__, made.__package__)
    """
    )
    assert output_of(code, path=standins) == f"['somewhere'] {'vantrel.model.models.person'}"


def test_body_runs_in_the_order_of_its_statements(standins):
    code = """
    import json, sys
    import vantrel.model.models
    class Watch:
        seen = []
        def find_spec(self, name, path=None, target=None):
            self.seen.append(name)
    sys.meta_path.insert(0, Watch())
    import vantrel.model.models.person
    wanted = ("numpy", "pandas", "pandas._libs.missing", "faker")
    print(json.dumps([n for n in Watch.seen if n in wanted or n.startswith("vantrel.")]))
    """
    assert answer_of(code, path=standins) == [
        "vantrel.model.models.person",
        "numpy",
        "pandas",
        "faker",
        "pandas._libs.missing",
        "vantrel.metadata",
        "vantrel.metadata.rules",
        "vantrel.metadata.rules.association",
        "vantrel.config",
        "vantrel.metadata.value",
        "vantrel.util",
        "vantrel.util.locale",
        "vantrel.util.locale.locale",
        "vantrel.util.person",
        "vantrel.model.base",
        "vantrel.model.exceptions",
        "vantrel.model.models.histogram",
    ]


def test_default_config_is_made_once_while_the_class_is_made(tmp_path):
    config = """
made = []
class PersonLabels:
    pass
class PersonModelConfig:
    def __init__(self, *arguments, **keywords):
        made.append((arguments, keywords))
"""
    write_standins(tmp_path, vantrel__config=config)
    code = """
    import vantrel.model.models.person as person
    from vantrel.config import made
    (config,) = person.PersonModel.__init__.__defaults__
    print(made, type(config) is person.PersonModelConfig)
    """
    assert output_of(code, path=tmp_path) == "[((), {})] True"


# --- classes are made as a class statement makes them ---

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
def preparing(tmp_path_factory):
    """A host both of whose base classes have a metaclass that prepares the namespace."""
    base = "from vantrel.model.models.histogram import Meta\n" + MODEL.format(
        name="DiscreteModel"
    ).replace("class DiscreteModel:", "class DiscreteModel(metaclass=Meta):")
    return write_standins(
        tmp_path_factory.mktemp("preparing"),
        vantrel__model__base=base,
        vantrel__model__models__histogram=PREPARING,
    )


def test_metaclass_prepares_with_name_and_resolved_bases(preparing):
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


def test_prepared_namespace_is_filled_in_order(preparing):
    code = """
    import json
    import vantrel.model.models.person
    from vantrel.model.models.histogram import Names
    print(json.dumps(Names.events))
    """
    start = ["__module__", "__qualname__", "__doc__"]
    end = ["__orig_bases__"]
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
def test_setter_needs_the_property_in_the_namespace(tmp_path, error, message):
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


def test_setter_is_made_by_what_the_namespace_holds(tmp_path):
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


def test_setter_falls_back_to_a_global_of_that_name(tmp_path):
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


def test_subclass_hook_sees_a_whole_class(tmp_path):
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


def test_subscribed_base_is_resolved_with_the_bases_as_written(tmp_path):
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


def test_base_that_needs_no_resolving_leaves_no_original_bases(tmp_path):
    plain = MODEL.format(name="Histogram").replace("return Subscribed(cls, item)", "return cls")
    write_standins(tmp_path, vantrel__model__models__histogram=plain)
    code = """
    from vantrel.model.models.person import GenderModel
    print(GenderModel.__bases__, hasattr(GenderModel, "__orig_bases__"))
    """
    assert output_of(code, path=tmp_path) == (
        "(<class 'vantrel.model.models.histogram.Histogram'>,) False"
    )


def test_person_model_is_subscribed_with_person_and_text(standins):
    code = """
    from vantrel.model.models.person import Person, PersonModel
    print(PersonModel.__orig_bases__[0].item == (Person, str))
    """
    assert output_of(code, path=standins) == "True"


# --- the environment that the tests run in ---


def test_import_into_the_reference_host():
    code = """
    import sys
    import vantrel.model.models.person as first
    del sys.modules["vantrel.model.models.person"]
    import vantrel.model.models.person as second
    print(first is second, second.PersonModel.__module__)
    """
    assert output_of(code) == "True vantrel.model.models.person"
