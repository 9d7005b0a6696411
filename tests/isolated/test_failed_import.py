"""Imports that fail: what is raised and from which line, and that a repaired import works."""

from pathlib import Path

import pytest

from support.isolated import answer_of, output_of
from support.standins import CONFIG, HOST, MODEL, write_standins

ENTRY = [r"vantrel\model\models\person", "init vantrel.model.models.person"]

# Says what the import raises, where, and whether anything of the module is left.
PRELUDE = """
    import builtins, importlib, importlib.util, json, sys, traceback
    NAME = "vantrel.model.models.person"
    FILE = r"vantrel\\model\\models\\person"

    def report(error):
        models = sys.modules.get("vantrel.model.models")
        return {
            "type": type(error).__name__,
            "text": str(error),
            "name": getattr(error, "name", None),
            "entries": [
                [frame.f_code.co_filename, frame.f_code.co_name, line]
                for frame, line in traceback.walk_tb(error.__traceback__)
                if frame.f_code.co_filename == FILE
            ],
            "left": NAME in sys.modules or hasattr(models, "person"),
        }

    def failure():
        try:
            importlib.import_module(NAME)
        except BaseException as error:
            return report(error)

    def works():
        person = importlib.import_module(NAME)
        return person.all_supported_locales() == ["person"] and person.__test__ == {}
"""

IMPORTS = [
    (1, "random"),
    (2, "re"),
    (3, "string"),
    (4, "dataclasses"),
    (5, "typing"),
    (7, "numpy"),
    (8, "pandas"),
    (9, "faker"),
    (10, "pandas._libs.missing"),
    (12, "vantrel.metadata.rules.association"),
    (14, "vantrel.config"),
    (15, "vantrel.metadata"),
    (16, "vantrel.metadata.value"),
    (17, "vantrel.util.locale.locale"),
    (24, "vantrel.util.person"),
    (25, "vantrel.model.base"),
    (26, "vantrel.model.exceptions"),
    (27, "vantrel.model.models.histogram"),
]

NAMES = [
    (4, "dataclasses", "asdict"),
    *(
        (5, "typing", name)
        for name in ["Any", "Dict", "List", "Optional", "Sequence", "Union", "cast"]
    ),
    (9, "faker", "Faker"),
    (10, "pandas._libs.missing", "NAType"),
    (12, "vantrel.metadata.rules.association", "Association"),
    (14, "vantrel.config", "PersonLabels"),
    (14, "vantrel.config", "PersonModelConfig"),
    (15, "vantrel.metadata", "MetaNotExtractedError"),
    (15, "vantrel.metadata", "Nominal"),
    (16, "vantrel.metadata.value", "Person"),
    (16, "vantrel.metadata.value", "String"),
    (17, "vantrel.util.locale.locale", "Provider"),
    (17, "vantrel.util.locale.locale", "get_country_to_provder_map"),
    (17, "vantrel.util.locale.locale", "get_supported_country_codes"),
    (17, "vantrel.util.locale.locale", "get_supported_country_names"),
    (17, "vantrel.util.locale.locale", "valid_locales"),
    (24, "vantrel.util.person", "collections_from_mapping"),
    (25, "vantrel.model.base", "DiscreteModel"),
    (26, "vantrel.model.exceptions", "ModelNotFittedError"),
    (27, "vantrel.model.models.histogram", "Histogram"),
]


# --- import statements ---


@pytest.mark.parametrize(("line", "module"), IMPORTS)
def test_module_that_cannot_be_imported(standins: Path, line: int, module: str) -> None:
    code = (
        PRELUDE
        + f"""
    import vantrel.metadata.rules.association  # so that its package is missed on its own line only
    kept = sys.modules.pop({module!r}, None)
    sys.modules[{module!r}] = None
    failed = failure()
    del sys.modules[{module!r}]
    if kept is not None:
        sys.modules[{module!r}] = kept
    print(json.dumps([failed, works()]))
    """
    )
    failed, repaired = answer_of(code, path=standins)
    assert failed == {
        "type": "ModuleNotFoundError",
        "text": f"import of {module} halted; None in sys.modules",
        "name": module,
        "entries": [[*ENTRY, line]],
        "left": False,
    }
    assert repaired


@pytest.mark.parametrize(("line", "module", "name"), NAMES)
def test_name_that_is_missing(standins: Path, line: int, module: str, name: str) -> None:
    """The error is the one of the statement `from module import name`, and nothing else is."""
    code = (
        PRELUDE
        + f"""
    source = importlib.import_module({module!r})
    kept = source.__dict__.pop({name!r})
    failed = failure()
    try:
        from {module} import {name}
    except ImportError as error:
        written = report(error)
        path = error.path
    setattr(source, {name!r}, kept)
    print(json.dumps([failed, written, works()]))
    """
    )
    failed, written, repaired = answer_of(code, path=standins)
    assert failed["entries"] == [[*ENTRY, line]]
    assert failed["text"].startswith(f"cannot import name '{name}' from '{module}' (")
    assert (failed["type"], failed["name"]) == ("ImportError", module)
    assert failed["left"] is False
    assert (failed["type"], failed["text"]) == (written["type"], written["text"])
    assert repaired


def test_missing_name_tells_the_path_of_its_module(standins: Path) -> None:
    code = (
        PRELUDE
        + """
    import vantrel.config
    del vantrel.config.PersonLabels
    try:
        import vantrel.model.models.person
    except ImportError as error:
        print(json.dumps([error.name, error.path, error.path == vantrel.config.__file__]))
    """
    )
    name, _, same = answer_of(code, path=standins)
    assert (name, same) == ("vantrel.config", True)


def test_misspelt_utility_is_wanted_as_it_is_spelt(tmp_path: Path) -> None:
    locale = HOST["vantrel/util/locale/locale.py"].replace("provder", "provider")
    write_standins(tmp_path, vantrel__util__locale__locale=locale)
    failed = answer_of(PRELUDE + "\n    print(json.dumps(failure()))", path=tmp_path)
    assert "cannot import name 'get_country_to_provder_map'" in failed["text"]


def test_error_of_a_host_module_passes_unchanged(tmp_path: Path) -> None:
    write_standins(tmp_path, vantrel__util__person="raise LookupError('in the host')")
    failed = answer_of(PRELUDE + "\n    print(json.dumps(failure()))", path=tmp_path)
    assert (failed["type"], failed["text"]) == ("LookupError", "in the host")
    assert failed["entries"] == [[*ENTRY, 24]]
    assert failed["left"] is False


@pytest.mark.parametrize("error", ["KeyboardInterrupt", "SystemExit", "MemoryError"])
def test_import_that_is_broken_off(tmp_path: Path, error: str) -> None:
    write_standins(tmp_path, vantrel__metadata=f"raise {error}")
    code = (
        PRELUDE
        + """
    print(json.dumps(failure()))
    """
    )
    failed = answer_of(code, path=tmp_path)
    assert (failed["type"], failed["entries"]) == (error, [[*ENTRY, 12]])


def test_submodule_that_its_package_does_not_name_is_found(tmp_path: Path) -> None:
    """`from package import name` falls back to the module `package.name`."""
    write_standins(
        tmp_path,
        vantrel__metadata="class MetaNotExtractedError(Exception):\n    pass\n",
        vantrel__metadata__Nominal="",
    )
    code = """
    import vantrel.model.models.person as person
    print(person.Nominal.__name__)
    """
    assert output_of(code, path=tmp_path) == "vantrel.metadata.Nominal"


def test_name_is_taken_from_a_submodule_that_is_loaded_already(standins: Path) -> None:
    """As in the statement: a package that lacks the name may have a loaded module `package.name`."""
    code = """
    import sys, types, vantrel.metadata
    del vantrel.metadata.Nominal
    sys.modules["vantrel.metadata.Nominal"] = types.ModuleType("vantrel.metadata.Nominal")
    import vantrel.model.models.person as person
    print(person.Nominal.__name__)
    """
    assert output_of(code, path=standins) == "vantrel.metadata.Nominal"


# --- classes ---

PLAIN_HISTOGRAM = "class Histogram:\n    pass\n"
PLAIN_MODEL = "class DiscreteModel:\n    pass\n"
SUBSCRIBED_ONCE = MODEL.format(name="Histogram").replace(
    "return Subscribed(cls, item)",
    "if cls.made_of:\n            raise LookupError('subscribed twice')\n        return Subscribed(cls, item)",
)
REFUSING_CONFIG = (
    CONFIG + "\n    def __post_init__(self):\n        raise LookupError('no config')\n"
)
REFUSING_HOOK = (
    "if cls.__name__ == {!r}:\n            raise LookupError('no ' + cls.__name__)\n        "
)
UNRESOLVED = MODEL.format(name="DiscreteModel").replace(
    "return (self.origin,)", "return self.origin"
)


def refusing_hook(base: str, made: str) -> str:
    """A base class that refuses one of the classes that are made of it."""
    return MODEL.format(name=base).replace(
        "cls.made_of.append", REFUSING_HOOK.format(made) + "cls.made_of.append"
    )


@pytest.mark.parametrize(
    ("replaced", "line", "text"),
    [
        (
            {"vantrel__model__models__histogram": PLAIN_HISTOGRAM},
            30,
            "TypeError: type 'Histogram' is not subscriptable",
        ),
        (
            {"vantrel__model__base": PLAIN_MODEL},
            109,
            "TypeError: type 'DiscreteModel' is not subscriptable",
        ),
        (
            {"vantrel__model__models__histogram": SUBSCRIBED_ONCE},
            739,
            "LookupError: subscribed twice",
        ),
        (
            {"vantrel__model__base": UNRESOLVED},
            109,
            "TypeError: __mro_entries__ must return a tuple",
        ),
        ({"vantrel__config": REFUSING_CONFIG}, 109, "LookupError: no config"),
        (
            {"vantrel__model__models__histogram": refusing_hook("Histogram", "GenderModel")},
            30,
            "LookupError: no GenderModel",
        ),
        (
            {"vantrel__model__base": refusing_hook("DiscreteModel", "PersonModel")},
            109,
            "LookupError: no PersonModel",
        ),
        (
            {"vantrel__model__models__histogram": refusing_hook("Histogram", "CountryModel")},
            739,
            "LookupError: no CountryModel",
        ),
    ],
    ids=lambda value: value if isinstance(value, str) else "",
)
def test_class_that_cannot_be_made(
    tmp_path: Path, replaced: dict[str, str], line: int, text: str
) -> None:
    write_standins(tmp_path, **replaced)
    ((name, _),) = replaced.items()
    sound = {"vantrel__config": CONFIG}.get(name) or HOST[name.replace("__", "/") + ".py"]
    code = (
        PRELUDE
        + f"""
    failed = failure()
    source = importlib.import_module({name.replace("__", ".")!r})
    exec({sound!r}, source.__dict__)
    print(json.dumps([failed, works()]))
    """
    )
    failed, repaired = answer_of(code, path=tmp_path)
    assert f"{failed['type']}: {failed['text']}" == text
    assert failed["entries"] == [[*ENTRY, line]]
    assert failed["left"] is False
    assert repaired


def test_line_that_a_traceback_prints(tmp_path: Path) -> None:
    write_standins(tmp_path, vantrel__config=REFUSING_CONFIG)
    code = """
    import traceback
    try:
        import vantrel.model.models.person
    except LookupError:
        print(traceback.format_exc())
    """
    assert (
        r'  File "vantrel\model\models\person", line 109, in init vantrel.model.models.person'
        in output_of(code, path=tmp_path)
    )


@pytest.mark.parametrize("times", [1, 5])
def test_functions_of_a_class_that_outlives_a_failed_import(tmp_path: Path, times: int) -> None:
    """A host that keeps classes keeps them whole: they may be called, before and after the next import."""
    write_standins(tmp_path)
    code = (
        PRELUDE
        + f"""
    import vantrel.config
    from vantrel.model.models.histogram import Histogram
    sound = vantrel.config.PersonModelConfig
    def refuse():
        raise LookupError
    for _ in range({times}):
        vantrel.config.PersonModelConfig = refuse
        assert failure()["type"] == "LookupError"
    vantrel.config.PersonModelConfig = sound

    def exercise():
        seen = set()
        for made in Histogram.made_of:
            model = made("meta")
            seen.add((made.__name__, model.meta, getattr(model, "regex_male", None)))
            for member in vars(made).values():
                function = getattr(member, "fget", getattr(member, "__func__", member))
                if not callable(function):
                    continue
                try:
                    function(model, {{}})
                except Exception as error:
                    seen.add(type(error).__name__)
        return sorted(seen, key=repr)

    before = exercise()
    worked = works()
    print(json.dumps([len(Histogram.made_of), before, worked, len(exercise())]))
    """
    )
    made, before, worked, _ = answer_of(code, path=tmp_path)
    assert made == times + 2
    assert ["GenderModel", "meta", "^(mr).?$"] in before
    assert worked


def test_class_that_its_base_refuses_is_whole(tmp_path: Path) -> None:
    """The class of `super()` is known before the base hears of the class."""
    hooked = MODEL.format(name="Histogram").replace(
        "cls.made_of.append(cls)",
        "cls.made_of.append(cls)\n        if len(cls.made_of) == 1: raise LookupError",
    )
    write_standins(tmp_path, vantrel__model__models__histogram=hooked)
    code = (
        PRELUDE
        + """
    failed = failure()
    from vantrel.model.models.histogram import Histogram
    (leaked,) = Histogram.made_of
    print(json.dumps([failed["entries"], leaked("meta").meta, works()]))
    """
    )
    assert answer_of(code, path=tmp_path) == [[[*ENTRY, 30]], "meta", True]


def test_class_that_was_never_made_leaves_functions_that_say_so(tmp_path: Path) -> None:
    """A metaclass that keeps the namespace of a class that it refuses."""
    refusing = """
class Meta(type):
    kept = []

    def __new__(metacls, name, bases, names):
        if name == "GenderModel" and not metacls.kept:
            metacls.kept.append(names)
            raise LookupError
        return super().__new__(metacls, name, bases, names)

""" + MODEL.format(name="Histogram").replace("class Histogram:", "class Histogram(metaclass=Meta):")
    write_standins(tmp_path, vantrel__model__models__histogram=refusing)
    code = (
        PRELUDE
        + """
    failed = failure()
    from vantrel.model.models.histogram import Histogram
    (names,) = type(Histogram).kept
    try:
        names["__init__"](Histogram(), "meta")
    except NameError as error:
        print(json.dumps([failed["entries"], str(error), works()]))
    """
    )
    entries, text, worked = answer_of(code, path=tmp_path)
    assert entries == [[*ENTRY, 30]]
    assert text == (
        "cannot access free variable '__class__' where it is not associated with a value"
        " in enclosing scope"
    )
    assert worked


# --- builtins ---

CACHED = [
    "property",
    "staticmethod",
    "super",
    "object",
    "ValueError",
    "range",
    "zip",
    "all",
    "AssertionError",
    "sum",
]


@pytest.mark.parametrize("name", CACHED)
def test_builtin_that_is_missing(standins: Path, name: str) -> None:
    code = (
        PRELUDE
        + f"""
    spec = importlib.util.find_spec(NAME)
    made = importlib.util.module_from_spec(spec)
    kept = builtins.__dict__.pop({name!r})
    caught = None
    try:
        spec.loader.exec_module(made)
    except NameError as error:
        caught = error
    builtins.__dict__[{name!r}] = kept
    failed = report(caught)
    bound = sorted(set(vars(made)) & {{"random", "GenderModel"}})
    print(json.dumps([failed, bound, works()]))
    """
    )
    failed, bound, repaired = answer_of(code, path=standins)
    assert (failed["type"], failed["text"]) == ("NameError", f"name '{name}' is not defined")
    assert [entry[:2] for entry in failed["entries"]] == [ENTRY]
    assert bound == []
    assert repaired


def test_several_failures_in_a_row_then_a_sound_import(standins: Path) -> None:
    code = (
        PRELUDE
        + """
    import vantrel.config, vantrel.util.person, vantrel.model.models.histogram as histogram
    failures = []
    for module, name in [
        (vantrel.config, "PersonLabels"),
        (vantrel.util.person, "collections_from_mapping"),
        (histogram, "Histogram"),
    ] * 3:
        kept = module.__dict__.pop(name)
        failures.append(failure()["entries"][0][2])
        setattr(module, name, kept)
    print(json.dumps([failures, works()]))
    """
    )
    assert answer_of(code, path=standins) == [[14, 24, 27] * 3, True]


def test_module_object_of_a_failed_execution_may_be_executed_again(standins: Path) -> None:
    code = (
        PRELUDE
        + """
    import vantrel.config
    spec = importlib.util.find_spec(NAME)
    made = importlib.util.module_from_spec(spec)
    kept = vantrel.config.__dict__.pop("PersonLabels")
    try:
        spec.loader.exec_module(made)
    except ImportError:
        vantrel.config.PersonLabels = kept
    other = importlib.util.module_from_spec(spec)
    spec.loader.exec_module(other)
    print(other is made, other.all_supported_locales())
    """
    )
    assert output_of(code, path=standins) == "False ['person']"
