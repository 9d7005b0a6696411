"""The checker of leaks sees those that are made on purpose, and nothing where there is none."""

import os
import signal
from collections.abc import Callable
from dataclasses import replace
from pathlib import Path

import pytest

from checks.catalogue import CATALOGUE
from checks.catalogue.call import MOST_COST
from checks.deliberate import LEAKS
from checks.growth import BATCHES, Growth
from checks.leaks import check
from checks.measuring import line, measured, verdict
from checks.processes import Outcome, run_apart
from support.isolated import output_of
from support.sanitizing import SANITIZED
from support.stub import public_functions, titles_of

ROOT = Path(__file__).parents[2]

counts_memory = pytest.mark.skipif(
    SANITIZED, reason="the sanitizer takes the place of the allocators that are asked for counts"
)
NOTHING = (0,) * BATCHES


@counts_memory
@pytest.mark.parametrize("name", LEAKS)
def test_leak_on_purpose_is_seen(name: str) -> None:
    (outcome,) = run_apart(measured, [(name, 1)], 1)
    assert verdict(outcome) == LEAKS[name][1]
    assert line(name, outcome).startswith(name)
    assert line(name, outcome).endswith(LEAKS[name][1])


@counts_memory
@pytest.mark.parametrize(
    "name",
    [
        "PersonModel.check_email",
        "PersonModel.sample: interrupted",
        "PersonModel.generate_passwords at once",
        "PersonModel.generate_usernames that clash, by single calls",
        "PersonModel.generate_last_names, names by calls of Faker",
        "module imported again",
    ],
)
def test_call_that_loses_nothing(name: str, capsys: pytest.CaptureFixture[str]) -> None:
    assert check([name], 500, 1) == []
    assert capsys.readouterr().out.endswith("  ok\n")


# What cannot fail once its arguments fit, and why.
WITHOUT_FAILURE = {"PersonModel.default_locale": "gives a constant"}
# What a misfit is called in the catalogue.
MISFITS = (
    "too many arg",
    "too few arg",
    "unknown keyword",
    "argument given twice",
    "of a wrong type",
)


def _calls_of(name: str, failing: bool) -> list[str]:
    """The names of the calls in the catalogue that make one of these, misfits not counted."""
    return [
        title
        for title in titles_of(name, CATALOGUE)
        if (CATALOGUE[title].raises is not None) == failing
        and not any(misfit in title for misfit in MISFITS)
        and not title.endswith((" as an object", " pickled by name"))
    ]


@pytest.mark.parametrize("name", public_functions())
def test_public_name_has_a_good_call_and_a_bad_one(name: str) -> None:
    assert _calls_of(name, failing=False) != []
    assert (_calls_of(name, failing=True) == []) == (name in WITHOUT_FAILURE)


def test_names_without_failure_are_public() -> None:
    assert WITHOUT_FAILURE.keys() <= set(public_functions())


def test_no_call_is_made_less_than_a_tenth_as_often() -> None:
    assert {call.name for call in CATALOGUE.values() if call.cost > MOST_COST} == set()


@pytest.mark.parametrize(
    ("blocks", "heap_bytes", "references", "complaint"),
    [
        (NOTHING, NOTHING, NOTHING, ""),
        ((90, 80, 0, 70, 60), NOTHING, NOTHING, ""),  # a cache fills
        ((9, 1, 9, 9, 9), NOTHING, NOTHING, ""),  # one for 200 calls
        ((9, 2, 9, 9, 9), NOTHING, NOTHING, "leaks blocks"),
        (NOTHING, (63, 63, 63, 63, 63), NOTHING, ""),
        (NOTHING, (64, 64, 64, 64, 64), NOTHING, "leaks bytes"),
        (NOTHING, NOTHING, (2, 2, 2, 2, 2), "leaks references"),
        (NOTHING, NOTHING, (-2, -2, -2, -2, -2), "releases too often"),
        (NOTHING, NOTHING, (-9, -9, 9, -9, -9), ""),
        ((-9, -9, -9, -9, -9), NOTHING, NOTHING, ""),
        ((200,) * 5, (6400,) * 5, NOTHING, "leaks blocks and bytes"),
    ],
)
def test_what_counts_as_a_leak(
    blocks: tuple[int, ...],
    heap_bytes: tuple[int, ...],
    references: tuple[int, ...],
    complaint: str,
) -> None:
    assert Growth(200, blocks, heap_bytes, references).complaint() == complaint


def test_call_that_ends_otherwise_than_it_must() -> None:
    call = CATALOGUE["PersonModel.check_email: locale fails"]
    once = replace(call, raises=ValueError).checked()
    with pytest.raises(TypeError, match="int"):
        once()


def test_call_that_must_fail_but_returns() -> None:
    call = CATALOGUE["PersonModel.check_email"]
    once = replace(call, raises=TypeError).checked()
    with pytest.raises(AssertionError, match="TypeError was not raised"):
        once()


@pytest.mark.parametrize(
    ("function", "arguments", "trouble"),
    [
        (signal.raise_signal, (signal.SIGABRT,), "ended by SIGABRT"),
        (os._exit, (3,), "ended with exit code 3"),
        (int, ("many",), "ValueError: invalid literal for int() with base 10: 'many'"),
    ],
)
def test_process_that_breaks_down(
    function: Callable[..., object], arguments: tuple[object, ...], trouble: str
) -> None:
    (outcome,) = run_apart(function, [arguments], 1)
    assert outcome.answer is None
    assert outcome.trouble.startswith(trouble)
    assert verdict(Outcome(None, trouble)) == trouble


# In the smallest host, whose import can be made to fail.
IMPORTING = """
    import importlib, importlib.util, sys
    sys.path.append({root!r})
    from checks.growth import growth
    NAME = "vantrel.model.models.person"
    {prepared}
    measured = growth(call, 200, lambda: None)
    print(measured.complaint() or "ok", measured)
"""
IMPORT_AGAIN = """
    def call():
        sys.modules.pop(NAME, None)
        importlib.import_module(NAME)
"""
FAIL_LATE = """
    import vantrel.config
    def refuse():
        raise LookupError
    vantrel.config.PersonModelConfig = refuse
    from vantrel.model.models.histogram import Histogram
    def call():
        try:
            importlib.import_module(NAME)
        except LookupError:
            Histogram.made_of.clear()
        else:
            raise AssertionError
"""
FAIL_EARLY = """
    sys.modules["random"] = None
    def call():
        try:
            importlib.import_module(NAME)
        except ImportError:
            pass
        else:
            raise AssertionError
"""


@pytest.mark.parametrize(
    "prepared", [IMPORT_AGAIN, FAIL_LATE, FAIL_EARLY], ids=["again", "fails late", "fails early"]
)
def test_import_loses_nothing(standins: Path, prepared: str) -> None:
    code = IMPORTING.format(root=str(ROOT), prepared=prepared)
    assert output_of(code, path=standins).startswith("ok ")


# Each call twice under the debug hooks of Python's allocators, then an ordinary end of the process.
# Up to the calls that make the module once more, which come last, columns are made at once.
UNDER_DEBUG_HOOKS = """
    import sys
    sys.path[:0] = {paths!r}
    from checks.catalogue import CATALOGUE
    from checks.catalogue.call import restore
    from checks.catalogue.parts import MANY, countries, drawing, first_names
    from support.counting import FAKER, calls_of

    def twice(call):
        once = call.checked()
        try:
            once()
            once()
        finally:
            restore()

    making = [CATALOGUE[name] for name in {making!r}]
    for call in CATALOGUE.values():
        if call not in making:
            twice(call)
    draw = lambda: drawing().generate_last_names(first_names(MANY), countries(MANY))
    print(len(CATALOGUE), calls_of(draw, FAKER) < MANY)
    for call in making:
        twice(call)
"""
MAKING_THE_MODULE = ["module imported again", "module made again"]


def test_debug_hooks_have_nothing_to_report_to_the_very_end() -> None:
    code = UNDER_DEBUG_HOOKS.format(
        paths=[str(ROOT), str(ROOT / "tests")], making=MAKING_THE_MODULE
    )
    assert output_of(code, options=("-X", "dev")) == f"{len(CATALOGUE)} True"
