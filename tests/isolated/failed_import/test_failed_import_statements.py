"""Import statements of the module that fail: what is raised, from which line, and that a repaired import works."""

from pathlib import Path

import pytest

from support.failed_imports import ENTRY, PRELUDE
from support.isolated import answer_of, output_of
from support.standins import HOST, write_standins

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
