"""Allocations that fail: each one of a call in turn, alone and together with all after it.

Every call stays within the module and the standard library: pandas does not survive that.
"""

import re
from pathlib import Path

import pytest

from support.isolated import output_of, run
from support.pure_calls import CALLS, MODELS
from support.stub import public_functions, titles_of
from support.versions import needs_own_version

pytest.importorskip("_testcapi", reason="this interpreter cannot make allocations fail")
of_own_version = needs_own_version(
    "without memory CPython 3.13 empties objects whose __dict__ is asked for, and crashes where it"
    " warns and where sys is asked"
)


# Says on each line which allocation fails next, so that the last line tells where a crash was.
FAILING = """
    import os, random
    from itertools import count
    from _testcapi import remove_mem_hooks, set_nomemory

    def came_to(error):
        return type(error), str(error)

    def outcome(call):
        random.seed(1)
        try:
            return call()
        except Exception as error:
            return came_to(error)

    OURS = ("GenderModel.", "PersonModel.", "CountryModel.", "all_supported_")

    def is_want_of_memory(error):
        # CPython 3.12 forgets the error where there is no memory for the frame object of a Python
        # function that it passes through. A function of the module may not.
        if isinstance(error, SystemError):
            function, found, _ = str(error).partition(" returned NULL without setting an exc")
            theirs = found and not function.startswith(tuple("<function " + name for name in OURS))
            return theirs or str(error) == "error return without exception set"
        return isinstance(error, MemoryError)

    def without_memory(call, first, last):
        random.seed(1)
        raised = answer = None
        used_up = False
        set_nomemory(first, last)
        try:
            answer = call()
        except BaseException as error:
            raised = error
        try:
            bytearray(1000)
        except MemoryError:
            used_up = True
        remove_mem_hooks()
        return (answer if raised is None else came_to(raised)), raised, used_up

    def exhaust(call):
        for _ in range(3):
            expected = outcome(call)
        for first in count():
            for last in first + 1, 0:
                os.write(1, b"%d to %d\\n" % (first, last))
                got, raised, used_up = without_memory(call, first, last)
                if not is_want_of_memory(raised):
                    assert got == expected, (first, last, got, expected)
                again = outcome(call)
                assert again == expected, (first, last, again, expected)
            if not used_up:
                return first
"""

# The one of the standard library makes generators, at which CPython 3.12 crashes without memory. While
# it is replaced, no column is made at once.
PLAIN_ASDICT = """
    person.asdict = lambda config: dict(vars(config))
"""


@pytest.mark.parametrize("name", public_functions())
def test_every_public_function_is_called(name: str) -> None:
    assert titles_of(name, CALLS) != []


@pytest.mark.parametrize(("column", "drawn"), [("FIRST", True), ("MANY", False)])
def test_long_columns_are_made_at_once(pure_host: Path, column: str, drawn: bool) -> None:
    code = f"""{MODELS}
    import sys
    started = set()
    sys.setprofile(lambda frame, event, argument: started.add(frame.f_code.co_name))
    print(len(model.generate_passwords({column}).data))
    sys.setprofile(None)
    print("randint" in started)
    """
    assert output_of(code, path=pure_host).split()[1] == str(drawn)


@of_own_version
@pytest.mark.parametrize("name", CALLS)
def test_call(pure_host: Path, name: str) -> None:
    """It ends with MemoryError or as it does with enough memory, and the next call works."""
    asdict = PLAIN_ASDICT if "to_dict" in CALLS[name] else ""
    code = f"{FAILING}{MODELS}{asdict}\n"
    code += f"    print('ended after', exhaust(lambda: {CALLS[name]}))"
    finished = run(code, path=pure_host)
    lines = finished.stdout.splitlines()
    where = f"allocations {lines[-1] if lines else 'none'} failed"
    assert finished.returncode == 0, f"{where}\n{finished.stderr}"
    assert lines[-1].startswith("ended after")
    assert finished.stderr == ""


# Makes the module in a child process for each allocation that fails, then once more with memory.
MAKING = """
    import _imp, dataclasses, importlib, importlib.util, re, string, sys, traceback, types, typing
    import faker, numpy, pandas._libs.missing, vantrel.metadata.rules.association
    import vantrel.config, vantrel.metadata.value, vantrel.model.base, vantrel.model.exceptions
    import vantrel.model.models.histogram, vantrel.util.person, vantrel.util.locale.locale

    NAME = "vantrel.model.models.person"
    spec = importlib.util.find_spec(NAME)

    _imp.create_dynamic(spec)  # loads the library, which takes longer than all the rest

    def make():  # without what importlib itself allocates
        _imp.exec_dynamic(_imp.create_dynamic(spec))

    def works():
        person = importlib.import_module(NAME)
        model = person.PersonModel.from_dict({"meta": {"name": "p", "labels": {"email": "e"}}})
        return model.params == {"email": "e"} and person.all_supported_locales() == ["person"]

    def fails_well(first, last):
        _, raised, used_up = without_memory(make, first, last)
        if raised is not None and not is_want_of_memory(raised):
            raise raised
        assert works()
        return used_up

    def in_child(first, last):
        child = os.fork()
        if child:
            return os.waitstatus_to_exitcode(os.waitpid(child, 0)[1])
        try:
            used_up = fails_well(first, last)
            os._exit(0 if used_up or last else END)
        except BaseException:
            traceback.print_exc()
            sys.stderr.flush()
            os._exit(1)

    END = 3
    low, allocations = 0, 1 << 20  # the first number with which none fails
    while low < allocations:
        middle = (low + allocations) // 2
        if in_child(middle, 0) == END:
            allocations = middle
        else:
            low = middle + 1
    bad = [first for first in range(allocations) if in_child(first, %s) != 0]
    print(allocations, "allocations, not well without:", bad)
"""


@of_own_version
@pytest.mark.parametrize("last", ["0", "first + 1"], ids=["all from one on", "a single one"])
def test_making_of_the_module(pure_host: Path, last: str) -> None:
    """It fails with MemoryError, whichever allocation fails, and succeeds the next time."""
    finished = run(FAILING + MAKING.replace("%s", last), path=pure_host)
    assert finished.stderr == ""
    assert finished.returncode == 0
    reached = re.fullmatch(r"(\d+) allocations, not well without: \[\]\n", finished.stdout)
    assert reached is not None, finished.stdout
    assert int(reached[1]) > 1000
