"""The module under another Python than the one that it is built for."""

import subprocess
from pathlib import Path

import pytest

from support.isolated import answer_of, output_of, run
from support.pure_calls import CALLS, MODELS
from support.standins import write_standins

FOUND = subprocess.run(
    [Path(__file__).parents[2] / "tools/find-python", "3.13"],
    capture_output=True,
    encoding="utf-8",
    check=False,
)
OTHER = FOUND.stdout.strip()
pytestmark = pytest.mark.skipif(not OTHER, reason=FOUND.stderr.strip())

WATCH = """
    import json, sys, warnings
    events = []
    warnings.showwarning = lambda message, category, *rest: events.append([category.__name__, str(message)])

    class Watch:
        def find_spec(self, name, path=None, target=None):
            events.append(name)
"""


def warning_text() -> str:
    version = output_of("import sys; print(*sys.version_info[:2], sep='.')", python=OTHER)
    return (
        "compile time Python version 3.12 of module 'vantrel.model.models.person'"
        f" does not match runtime version {version}"
    )


def test_warning_comes_before_the_body_runs(standins: Path) -> None:
    code = (
        WATCH
        + """
    import vantrel.model.models
    sys.meta_path.insert(0, Watch())
    import vantrel.model.models.person
    print(json.dumps(events))
    """
    )
    events = answer_of(code, path=standins, python=OTHER)
    assert events[:2] == ["vantrel.model.models.person", ["RuntimeWarning", warning_text()]]
    assert all(isinstance(event, str) for event in events[2:])
    assert {"numpy", "vantrel.config"} <= set(events[2:])


def test_import_goes_on_after_the_warning(standins: Path) -> None:
    code = (
        WATCH
        + """
    import vantrel.model.models.person as person
    model = person.GenderModel("meta", regex_male="x")
    print(json.dumps([person.all_supported_locales(), model.meta, model.regex_male]))
    """
    )
    assert answer_of(code, path=standins, python=OTHER) == [["person"], "meta", "x"]


def test_functions_serve_in_hot_loops_of_the_other_version(standins: Path) -> None:
    code = (
        WATCH
        + """
    from vantrel.model.models.person import PersonModel
    checks = {PersonModel.check_email("no address", ["fr"]) for _ in range(2000)}
    model = PersonModel.__new__(PersonModel)
    locales = {model.default_locale for _ in range(2000)}
    print(checks, locales)
    """
    )
    assert output_of(code, path=standins, python=OTHER) == "{True} {'en_GB'}"


def test_constructor_serves_in_a_hot_loop_of_the_other_version(standins: Path) -> None:
    code = (
        WATCH
        + """
    from vantrel.model.models.person import CountryModel
    print({CountryModel("meta").meta for _ in range(2000)})
    """
    )
    assert output_of(code, path=standins, python=OTHER) == "{'meta'}"


EVERY_CALL = (
    MODELS
    + """
    import json, random, re

    def outcome(call):
        random.seed(1)
        try:
            ended = repr(call())
        except Exception as error:
            ended = repr(error)
        return re.sub(" at 0x[0-9a-f]+", "", ended)

    calls = {}
"""
    + "".join(f"    calls[{name!r}] = lambda: {code}\n" for name, code in CALLS.items())
    + """
    for name, call in calls.items():
        calls[name] = sorted({outcome(call) for _ in range(50)})
    print(json.dumps(calls))
"""
)


def test_every_call_ends_as_under_the_own_version(pure_host: Path) -> None:
    """However often it is made: interpreters run what they know in ways of their own."""
    of_other = answer_of(EVERY_CALL, path=pure_host, python=OTHER, options=("-W", "ignore"))
    assert of_other == answer_of(EVERY_CALL, path=pure_host)


def test_warning_is_given_though_the_import_then_fails(tmp_path: Path) -> None:
    write_standins(tmp_path, vantrel__config="")
    code = (
        WATCH
        + """
    try:
        import vantrel.model.models.person
    except ImportError as error:
        events.append(error.name)
    print(json.dumps(events))
    """
    )
    warning, name = answer_of(code, path=tmp_path, python=OTHER)
    assert warning == ["RuntimeWarning", warning_text()]
    assert name == "vantrel.config"


def test_warning_turned_into_an_error_stops_the_import(standins: Path) -> None:
    code = """
    import json, sys, traceback
    try:
        import vantrel.model.models.person
    except RuntimeWarning as error:
        names = [frame.f_code.co_name for frame, _ in traceback.walk_tb(error.__traceback__)]
        print(json.dumps([str(error), names[-1], "vantrel.model.models.person" in sys.modules, "numpy" in sys.modules]))
    """
    settings = {"path": standins, "python": OTHER, "options": ("-W", "error::RuntimeWarning")}
    text, name, left, went_on = answer_of(code, **settings)
    assert text == warning_text()
    assert name == "init vantrel.model.models.person"
    assert (left, went_on) == (False, False)


def test_warning_is_shown_to_a_user(standins: Path) -> None:
    finished = run("import vantrel.model.models.person", path=standins, python=OTHER)
    assert finished.returncode == 0, finished.stderr
    assert f"RuntimeWarning: {warning_text()}" in finished.stderr
    assert finished.stderr.count("RuntimeWarning") == 1
