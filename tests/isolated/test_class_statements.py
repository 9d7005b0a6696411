"""Classes as the written statement makes them: the first is held against a class statement over the same base."""

from pathlib import Path
from typing import Any

import pytest

from support.isolated import answer_of
from support.standins import write_standins
from support.versions import needs_own_version

pytestmark = needs_own_version("another version writes more names into a class")

STATEMENT = """
from .histogram import Histogram
from ..base import DiscreteModel

class GenderModel(Histogram[str]):
    "A Model of the gender attribute."
    key_female = "F"
    key_male = "M"
    key_non_binary = "NB"
    key_ambiguous = "A"

    def __init__(self, meta):
        super().__init__(meta=meta)

    @property
    def collections(self): ...

    @property
    def categories(self): ...

    def fit(self, df):
        return super().fit(df)

    @classmethod
    def from_dict(cls, d): ...

DiscreteModel[None, str]
"""

# The module's body ends with the next class.
END = """
class End(Exception):
    pass

class DiscreteModel:
    def __class_getitem__(cls, item):
        raise End
"""

# Tells what is raised, what the host has seen, and what is left under the name of the class.
COMPARE = f"""
    import importlib.util, json
    import vantrel.model.models
    SPEC = importlib.util.find_spec("vantrel.model.models.person")
    log = []
    import vantrel.model.models.histogram

    def outcome(names, action, *arguments):
        log.clear()
        try:
            action(*arguments)
        except BaseException as error:
            chain = [repr(error.__cause__), repr(error.__context__)]
            raised = [type(error).__name__, str(error), *chain]
        made = names.get("GenderModel")
        members = list(vars(made)) if isinstance(made, type) else None
        if "__doc__" in (members or []):
            log.append(made.__doc__.partition("\\n")[0])
        return [raised, list(log), repr(made), members]

    created = importlib.util.module_from_spec(SPEC)
    names = {{"__name__": SPEC.name, "__package__": SPEC.parent, "__spec__": SPEC}}
    made = outcome(vars(created), SPEC.loader.exec_module, created)
    print(json.dumps([made, outcome(names, exec, {STATEMENT!r}, names)]))
"""

HOST = """
from __main__ import log

def tell_cell(names):
    (cell,) = names["__init__"].__closure__
    try:
        log.append(["cell", repr(cell.cell_contents), cell is names["fit"].__closure__[0]])
    except ValueError:
        log.append(["cell", "empty"])

class Whole:
    def __class_getitem__(cls, item):
        return cls

    def __init__(self, meta=None):
        self.meta = meta

class Entries:
    def __init__(self, entries):
        self.entries = entries

    def __getitem__(self, item):
        return self

    def __mro_entries__(self, bases):
        log.append([type(base).__name__ for base in bases])
        return self.entries(bases)

    def __repr__(self):
        return "entries"
"""

ODD_BASES = {
    "class": "Histogram = Whole",
    "generic class": """
from typing import Generic, TypeVar
class Histogram(Generic[TypeVar("Value")]):
    pass
""",
    "class that makes an instance of each subclass": """
class Histogram(Whole):
    def __init_subclass__(cls):
        tell_cell(vars(cls))
        log.append(cls("made").meta)
""",
    "class that refuses subclasses": """
class Histogram(Whole):
    def __init_subclass__(cls):
        raise LookupError(cls.__name__)
""",
    "class that may not be a base": "Histogram = Entries(lambda bases: (bool,))",
    "object": """
class Base(Whole):
    def __init__(self, *arguments):
        log.append([type(argument).__name__ for argument in arguments])
        if len(arguments) == 3:
            log.append([arguments[0], len(arguments[1]), list(arguments[2])])
            tell_cell(arguments[2])
    def __getitem__(self, item):
        return self
    def __repr__(self):
        return "made"
Histogram = Base()
""",
    "object that says it is a class": """
class Base(Entries):
    __class__ = type
Histogram = Base(lambda bases: (Whole,))
""",
    "entries as a list": "Histogram = Entries(lambda bases: [Whole])",
    "no entries": "Histogram = Entries(lambda bases: ())",
    "nothing for entries": "Histogram = Entries(lambda bases: None)",
    "two entries": "Histogram = Entries(lambda bases: (Whole, dict))",
    "entries of an own kind": """
class Odd(tuple):
    def __iter__(self):
        return iter([dict])
Histogram = Entries(lambda bases: Odd([Whole]))
""",
    "bases for entries": """
class Base(Entries):
    def __init__(self, *arguments):
        self.entries = lambda bases: bases
        log.append([list(names) for names in arguments[2:]])
Histogram = Base()
""",
    "entries that fail": """
def refuse(bases):
    raise LookupError
Histogram = Entries(refuse)
""",
    "entries that are not there": """
class Base(Entries):
    @property
    def __mro_entries__(self):
        raise AttributeError("gone")
Histogram = Base(None)
""",
    "entries that cannot be read": """
class Base(Entries):
    @property
    def __mro_entries__(self):
        raise LookupError("shut")
Histogram = Base(None)
""",
    "entries that cannot be called": """
class Base(Entries):
    __mro_entries__ = 3
Histogram = Base(None)
""",
    "metaclasses in conflict": """
class One(type): ...
class Other(type): ...
class A(metaclass=One): ...
class B(metaclass=Other): ...
Histogram = Entries(lambda bases: (A, B))
""",
    "metaclass of the second base": """
class One(type): ...
class Other(One):
    def __new__(metacls, name, bases, names):
        log.append([metacls.__name__, [base.__name__ for base in bases]])
        return super().__new__(metacls, name, bases, names)
class A(metaclass=One): ...
class B(metaclass=Other): ...
Histogram = Entries(lambda bases: (A, B, Whole))
""",
}

# Bodies of a metaclass. What it prepares tells the names that are put into it.
METACLASSES = {
    "telling": "",
    "taking the cell away": """
def __new__(metacls, name, bases, names):
    del names["__classcell__"]
    return type.__new__(metacls, name, bases, names)
""",
    "making the class of other names": """
def __new__(metacls, name, bases, names):
    return type.__new__(metacls, name + "s" * 300, bases, {})
""",
    "putting something else into the place of the cell": """
def __new__(metacls, name, bases, names):
    return type.__new__(metacls, name, bases, {**names, "__classcell__": 3})
""",
    "returning another class": """
def __new__(metacls, name, bases, names):
    type.__new__(metacls, name, bases, names)
    return int
""",
    "returning the first of two classes": """
def __new__(metacls, name, bases, names):
    first = type.__new__(metacls, name, bases, dict(names))
    type.__new__(metacls, "Second", bases, dict(names))
    return first
""",
    "returning what is no class": """
def __new__(metacls, name, bases, names):
    type.__new__(metacls, name, bases, names)
    tell_cell(names)
    return 42
""",
    "making no class": """
def __new__(metacls, name, bases, names):
    tell_cell(names)
    return name
""",
    "refusing": """
def __new__(metacls, name, bases, names):
    raise LookupError(name)
""",
    "taking no namespace": """
def __new__(metacls, name, bases):
    return type.__new__(metacls, name, bases, {})
""",
    "preparing a mapping": """
def __prepare__(name, bases):
    from collections import UserDict
    return UserDict()
def __new__(metacls, name, bases, names):
    return type.__new__(metacls, name, bases, dict(names))
""",
    "preparing a mapping that type refuses": """
def __prepare__(name, bases):
    from collections import UserDict
    return UserDict()
""",
    "preparing a list": "def __prepare__(name, bases): return []",
    "preparing a number": "def __prepare__(name, bases): return 3",
    "preparing nothing": "def __prepare__(name, bases): return None",
    "preparing an object of a long name": """
def __prepare__(name, bases):
    return type("é" * 250, (), {})()
""",
    "preparing what takes no names": """
def __prepare__(name, bases):
    class Shut:
        def __getitem__(self, name):
            raise KeyError(name)
    return Shut()
""",
    "preparing what refuses a name": """
def __prepare__(name, bases):
    class Shut(dict):
        def __setitem__(self, name, value):
            log.append(name)
            if name == "__classcell__":
                raise LookupError(name)
    return Shut()
""",
    "failing to prepare": """
def __prepare__(name, bases):
    raise LookupError(name)
""",
    "unable to prepare": "__prepare__ = None",
}

METACLASS = """
class Names(dict):
    def __setitem__(self, name, value):
        log.append(name)
        super().__setitem__(name, value)

class Meta(type):
    @staticmethod
    def __prepare__(name, bases, **keywords):
        log.append([name, [base.__name__ for base in bases], keywords])
        return Names()

    def __new__(metacls, name, bases, names, **keywords):
        log.append([type(names).__name__, list(names), keywords])
        tell_cell(names)
        return super().__new__(metacls, name, bases, names)

    def __init__(cls, name, bases, names, **keywords):
        log.append([list(names), keywords])
        tell_cell(names)
"""


def twins(folder: Path, histogram: str) -> tuple[list[Any], list[Any]]:
    """What comes of the module's class over the host's base, and of the statement."""
    write_standins(
        folder,
        vantrel__model__base=END,
        vantrel__model__models__histogram=HOST + histogram,
    )
    made, written = answer_of(COMPARE, path=folder)
    return made, written


@pytest.mark.parametrize("base", ODD_BASES)
def test_class_over_an_odd_base(tmp_path: Path, base: str) -> None:
    made, written = twins(tmp_path, ODD_BASES[base])
    assert made == written


@pytest.mark.parametrize("metaclass", METACLASSES)
def test_class_of_an_odd_metaclass(tmp_path: Path, metaclass: str) -> None:
    odd = f"""
class Odd(Meta):
    exec({METACLASSES[metaclass]!r})

class Whole(Whole):
    pass

OddWhole = type.__new__(Odd, "OddWhole", (Whole,), {{}})
Histogram = Entries(lambda bases: (OddWhole,))
"""
    made, written = twins(tmp_path, METACLASS + odd)
    assert made == written


@pytest.mark.parametrize(
    ("metaclass", "text"),
    [
        (
            "taking the cell away",
            "__class__ not set defining 'GenderModel' as"
            " <class 'vantrel.model.models.person.GenderModel'>."
            " Was __classcell__ propagated to type.__new__?",
        ),
        (
            "returning another class",
            "__class__ set to <class 'vantrel.model.models.person.GenderModel'>"
            " defining 'GenderModel' as <class 'int'>",
        ),
        (
            "preparing a number",
            "Odd.__prepare__() must return a mapping, not int",
        ),
    ],
)
def test_metaclass_is_told_what_it_did(tmp_path: Path, metaclass: str, text: str) -> None:
    odd = f"""
class Odd(type):
    exec({METACLASSES[metaclass]!r})

OddWhole = type.__new__(Odd, "OddWhole", (Whole,), {{}})
Histogram = Entries(lambda bases: (OddWhole,))
"""
    (raised, *_), _ = twins(tmp_path, odd)
    assert raised[1] == text
