"""Classes that cannot be made while the module is imported, and what is left of them."""

from pathlib import Path

import pytest

from support.failed_imports import ENTRY, PRELUDE
from support.isolated import answer_of, output_of
from support.standins import CONFIG, HOST, MODEL, write_standins

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
