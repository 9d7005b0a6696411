"""Importing the module: once, again, through its spec, and what it does while its body runs."""

from pathlib import Path

from support.isolated import answer_of, output_of
from support.standins import write_standins

ALREADY_IMPORTED = "Module 'person' has already been imported. Re-initialisation is not supported."

# Counts how often the body has run: the host's class hears of every class that is made of it.
TESTS = Path(__file__).parents[1]

PRELUDE = """
    import importlib.util, json, sys
    from vantrel.model.models.histogram import Histogram
    NAME = "vantrel.model.models.person"
    def runs():
        return len([made for made in Histogram.made_of if made.__name__ == "GenderModel"])
"""


def test_module_is_imported_into_another_host(standins: Path) -> None:
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


def test_second_import_is_the_cached_module(standins: Path) -> None:
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


def test_import_after_forgetting_gives_the_same_module(standins: Path) -> None:
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


def test_creation_again_gives_the_existing_module(standins: Path) -> None:
    code = (
        PRELUDE
        + """
    import vantrel.model.models.person as first
    again = importlib.util.module_from_spec(importlib.util.find_spec(NAME))
    print(again is first)
    """
    )
    assert output_of(code, path=standins) == "True"


def test_creation_again_of_a_module_that_was_executed_by_hand(standins: Path) -> None:
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


def test_execution_again_does_nothing(standins: Path) -> None:
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


def test_execution_through_another_module_object_fails(standins: Path) -> None:
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


def test_first_module_serves_on_after_the_refused_execution(standins: Path) -> None:
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


def test_created_module_has_what_its_spec_tells(standins: Path) -> None:
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


def test_created_module_holds_nothing_else_before_it_is_executed(standins: Path) -> None:
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


def test_threads_that_import_at_once_share_one_run(standins: Path) -> None:
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


def test_created_module_has_the_search_locations_of_its_spec(standins: Path) -> None:
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


def test_body_runs_in_the_order_of_its_statements(standins: Path) -> None:
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


def test_default_config_is_made_once_while_the_class_is_made(tmp_path: Path) -> None:
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


# --- the environment that the tests run in ---


def test_import_into_the_reference_host() -> None:
    code = """
    import sys
    import vantrel.model.models.person as first
    del sys.modules["vantrel.model.models.person"]
    import vantrel.model.models.person as second
    print(first is second, second.PersonModel.__module__)
    """
    assert output_of(code) == "True vantrel.model.models.person"


def test_columns_are_made_at_once_after_another_import() -> None:
    code = f"""
    import sys
    sys.path[:0] = [{str(TESTS)!r}]
    from support.counting import FAKER, calls_of
    from support.whole_columns import making, usual_model
    del sys.modules["vantrel.model.models.person"]
    import vantrel.model.models.person
    print(calls_of(making("sample", usual_model(), 2_000), FAKER) < 2_000)
    """
    assert output_of(code) == "True"
