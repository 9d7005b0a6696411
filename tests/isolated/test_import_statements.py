"""Imports that fail as the written statement does: each is held against a statement in the same process."""

from pathlib import Path

import pytest

from support.isolated import answer_of
from support.standins import CONFIG, write_standins
from support.versions import needs_own_version

pytestmark = needs_own_version(
    "another version is warned of, and words some errors of an import in another way"
)

STATEMENTS = """
import random
import re
import string
from dataclasses import asdict
from typing import Any, Dict, List, Optional, Sequence, Union, cast
import numpy as np
import pandas as pd
from faker import Faker
from pandas._libs.missing import NAType
from vantrel.metadata.rules.association import Association
from ...config import PersonLabels, PersonModelConfig
from ...metadata import MetaNotExtractedError, Nominal
from ...metadata.value import Person, String
from ...util.locale.locale import (
    Provider,
    get_country_to_provder_map,
    get_supported_country_codes,
    get_supported_country_names,
    valid_locales,
)
from ...util.person import collections_from_mapping
from ..base import DiscreteModel
from ..exceptions import ModelNotFittedError
from .histogram import Histogram
"""

# Says what came of importing the module, and of the statements in a module of its name.
PRELUDE = f"""
    import importlib, importlib.util, json, sys, types, warnings
    import vantrel.model.models
    SPEC = importlib.util.find_spec("vantrel.model.models.person")
    log = []

    def outcome(action, *arguments):
        log.clear()
        with warnings.catch_warnings(record=True) as warned:
            warnings.simplefilter("always")
            try:
                action(*arguments)
                raised = None
            except BaseException as error:
                told = [repr(getattr(error, name, "-")) for name in ("name", "path", "name_from")]
                chain = [repr(error.__cause__), repr(error.__context__)]
                raised = [type(error).__name__, str(error), *told, *chain]
        return [raised, [str(warning.message) for warning in warned], list(log)]

    def of_module(package=SPEC.parent):
        created = importlib.util.module_from_spec(SPEC)
        created.__package__ = package
        return outcome(SPEC.loader.exec_module, created)

    def of_statements(package=SPEC.parent):
        names = {{"__name__": SPEC.name, "__package__": package, "__spec__": SPEC}}
        return outcome(exec, {STATEMENTS!r}, names)
"""

# Makes what is found under the module's name in sys.modules. What it records in `log` is compared, too.
ODD_MODULES = {
    "object": "odd = object()",
    "named object": "odd = types.SimpleNamespace(__name__='odd', __file__='odd.py')",
    "object of a name that is no text": "odd = types.SimpleNamespace(__name__=3)",
    "module": "odd = types.ModuleType('odd')",
    "module of a file": "odd = types.ModuleType('odd'); odd.__file__ = 'odd.py'",
    "module of a file that is no text": "odd = types.ModuleType('odd'); odd.__file__ = 3",
    "module without a name": "odd = types.ModuleType('odd'); del odd.__name__",
    "module of a file, without a name": (
        "odd = types.ModuleType('odd'); odd.__file__ = 'odd.py'; del odd.__name__"
    ),
    "module of a file and a name that is no text": (
        "odd = types.ModuleType('odd'); odd.__file__ = 'odd.py'; odd.__name__ = b'odd'"
    ),
    "module without a spec": (
        "odd = types.ModuleType('odd'); odd.__file__ = 'odd.py'; del odd.__spec__"
    ),
    "module that is being made": """
odd = types.ModuleType("odd")
odd.__file__ = "odd.py"
odd.__spec__ = types.SimpleNamespace(_initializing=[1])
""",
    "module without a file that is being made": """
odd = types.ModuleType("odd")
odd.__spec__ = types.SimpleNamespace(_initializing=True)
""",
    "module whose state cannot be told": """
class Torn:
    def __bool__(self):
        raise LookupError("torn")
odd = types.ModuleType("odd")
odd.__file__ = "odd.py"
odd.__spec__ = types.SimpleNamespace(_initializing=Torn())
""",
    "module whose spec cannot be asked": """
class Torn:
    def __getattr__(self, name):
        raise LookupError("torn")
odd = types.ModuleType("odd")
odd.__file__ = "odd.py"
odd.__spec__ = Torn()
""",
    "module that refuses with LookupError": """
def refuse(name):
    raise LookupError(name)
odd = types.ModuleType("odd")
odd.__path__ = None
odd.__getattr__ = refuse
""",
    "module that refuses with AttributeError": """
def refuse(name):
    raise AttributeError(name)
odd = types.ModuleType("odd")
odd.__getattr__ = refuse
""",
    "object whose name cannot be read": """
class Odd:
    @property
    def __name__(self):
        raise KeyboardInterrupt
odd = Odd()
""",
    "names of an own kind of text": """
class Shown(str):
    def __repr__(self):
        return "<shown>"
    def __str__(self):
        return "written"
odd = types.ModuleType("odd")
odd.__name__, odd.__file__ = Shown("odd"), Shown("odd.py")
""",
    "name that cannot be shown": """
class Shown(str):
    def __repr__(self):
        raise LookupError("torn")
odd = types.ModuleType("odd")
odd.__name__ = Shown("odd")
""",
    "package of a module that is loaded as nothing": """
odd = types.ModuleType("odd")
sys.modules["odd.PersonLabels"] = None
""",
    "package that imports nothing": """
odd = types.ModuleType("odd")
odd.__path__ = []
""",
    "object that tells what it is asked": """
class Odd:
    def __getattribute__(self, name):
        log.append(name)
        if name in ("__name__", "__file__"):
            return "odd"
        raise AttributeError(name)
odd = Odd()
""",
    "module that tells what it is asked": """
class Odd(types.ModuleType):
    def __getattribute__(self, name):
        log.append(name)
        return super().__getattribute__(name)
odd = Odd("odd")
odd.__file__ = "odd.py"
""",
}


@pytest.mark.parametrize("module", ["faker", "vantrel.config"])
@pytest.mark.parametrize("odd", ODD_MODULES)
def test_odd_module_in_the_place_of_another(standins: Path, odd: str, module: str) -> None:
    code = (
        PRELUDE
        + f"""
    import vantrel.metadata.rules.association
    def put_in_place():
        exec({ODD_MODULES[odd]!r}, globals())
        sys.modules[{module!r}] = odd
    put_in_place()
    written = of_statements()
    put_in_place()
    print(json.dumps([of_module(), written]))
    """
    )
    made, written = answer_of(code, path=standins)
    assert made == written
    assert made[0] is not None


def test_missing_name_of_what_is_no_module(standins: Path) -> None:
    code = (
        PRELUDE
        + """
    sys.modules["faker"] = object()
    print(json.dumps(of_module()[0]))
    """
    )
    text = "cannot import name 'Faker' from '<unknown module name>' (unknown location)"
    assert answer_of(code, path=standins)[:5] == ["ImportError", text, "None", "None", "'Faker'"]


def test_circular_import(tmp_path: Path) -> None:
    """A host module that imports the person module before its own names are there."""
    config = f"""
import __main__
__main__.answers = [__main__.of_module(), __main__.of_statements(), __file__]
{CONFIG}
"""
    write_standins(tmp_path, vantrel__config=config)
    made, written, file = answer_of(
        PRELUDE + "\n    import vantrel.config\n    print(json.dumps(answers))", path=tmp_path
    )
    assert made == written
    assert made[0][1] == (
        "cannot import name 'PersonLabels' from partially initialized module 'vantrel.config'"
        f" (most likely due to a circular import) ({file})"
    )


@pytest.mark.parametrize("text", ["import absent", "raise ImportError('torn', name=3)"])
@pytest.mark.parametrize("module", ["numpy", "pandas", "faker", "vantrel.config"])
def test_module_that_fails_while_it_is_made(tmp_path: Path, module: str, text: str) -> None:
    write_standins(tmp_path, **{module.replace(".", "__"): text})
    code = PRELUDE + "\n    print(json.dumps([of_module(), of_statements()]))"
    made, written = answer_of(code, path=tmp_path)
    assert made == written
    assert made[0] is not None


@pytest.mark.parametrize("parent", ["None", "object()", "types.ModuleType('odd')"])
@pytest.mark.parametrize(
    "module",
    [
        "pandas._libs.missing",
        "vantrel.metadata.rules.association",
        "vantrel.config",
        "vantrel.metadata.value",
        "vantrel.util.locale.locale",
        "vantrel.util.person",
        "vantrel.model.base",
        "vantrel.model.exceptions",
        "vantrel.model.models.histogram",
    ],
)
def test_module_of_a_broken_parent(standins: Path, module: str, parent: str) -> None:
    code = (
        PRELUDE
        + f"""
    assert of_statements()[0] is None
    whole = dict(sys.modules)
    def break_parent():
        sys.modules.update(whole)
        del sys.modules[{module!r}]
        sys.modules[{module.rpartition(".")[0]!r}] = {parent}
    break_parent()
    written = of_statements()
    break_parent()
    print(json.dumps([of_module(), written]))
    """
    )
    made, written = answer_of(code, path=standins)
    assert made == written
    assert made[0] is not None


@pytest.mark.parametrize("package", ["", 3, "elsewhere", "vantrel", "vantrel.model"])
def test_relative_import_from_an_odd_package(standins: Path, package: object) -> None:
    code = (
        PRELUDE
        + f"""
    print(json.dumps([of_module({package!r}), of_statements({package!r})]))
    """
    )
    made, written = answer_of(code, path=standins)
    assert made == written
    assert made[0] is not None
