"""The module belongs to the one interpreter of a process that first created it."""

from pathlib import Path

import pytest

from support.isolated import answer_of, output_of

REFUSAL = (
    "Interpreter change detected - this module can only be loaded into one interpreter per process."
)

# Runs code in another interpreter; what it puts into `answer` comes back through a file.
PRELUDE = """
    import json, os, sys, tempfile, textwrap

    try:
        import _xxsubinterpreters as interpreters
        create = lambda own_lock: interpreters.create(isolated=own_lock)
    except ImportError:  # as Python 3.13 has it
        import _interpreters as interpreters
        create = lambda own_lock: interpreters.create("isolated" if own_lock else "legacy")

    IMPORT = textwrap.dedent('''
        import warnings  # reads what the process was told of them; a main interpreter has done so
        try:
            import vantrel.model.models.person as person
            answer = ["imported", person.all_supported_locales()]
        except BaseException as error:
            import sys
            answer = [type(error).__name__, str(error), "vantrel.model.models.person" in sys.modules]
    ''')

    def answer_in(interpreter, code=IMPORT):
        path = os.path.join(tempfile.mkdtemp(), "answer")
        interpreters.run_string(interpreter, code + textwrap.dedent(f'''
            import json
            with open({path!r}, "w") as file:
                json.dump(answer, file)
        '''))
        with open(path) as file:
            return json.load(file)
"""

own_lock = pytest.mark.parametrize("own_lock", [False, True], ids=["shared lock", "own lock"])


@own_lock
def test_second_interpreter_is_refused(standins: Path, own_lock: bool) -> None:
    code = (
        PRELUDE
        + f"""
    import vantrel.model.models.person
    other = create({own_lock})
    answer = answer_in(other)
    interpreters.destroy(other)
    print(json.dumps(answer))
    """
    )
    assert answer_of(code, path=standins) == ["ImportError", REFUSAL, False]


@own_lock
def test_second_interpreter_is_refused_each_time(standins: Path, own_lock: bool) -> None:
    code = (
        PRELUDE
        + f"""
    import vantrel.model.models.person
    answers = []
    for _ in range(3):
        other = create({own_lock})
        answers += [answer_in(other)[1], answer_in(other)[1]]
        interpreters.destroy(other)
    print(json.dumps(answers))
    """
    )
    assert answer_of(code, path=standins) == [REFUSAL] * 6


@own_lock
def test_first_interpreter_is_served_after_the_refusal(standins: Path, own_lock: bool) -> None:
    code = (
        PRELUDE
        + f"""
    import vantrel.model.models.person as person
    other = create({own_lock})
    answer_in(other)
    interpreters.destroy(other)
    del sys.modules["vantrel.model.models.person"]
    import vantrel.model.models.person as again
    print(again is person, person.all_supported_locales())
    """
    )
    assert output_of(code, path=standins) == "True ['person']"


@own_lock
def test_creation_alone_binds_the_module_to_its_interpreter(standins: Path, own_lock: bool) -> None:
    code = (
        PRELUDE
        + f"""
    import importlib.util
    made = importlib.util.module_from_spec(importlib.util.find_spec("vantrel.model.models.person"))
    other = create({own_lock})
    print(json.dumps([answer_in(other), "Faker" in vars(made)]))
    interpreters.destroy(other)
    """
    )
    assert answer_of(code, path=standins) == [["ImportError", REFUSAL, False], False]


@own_lock
def test_main_interpreter_is_refused_where_another_came_first(
    standins: Path, own_lock: bool
) -> None:
    code = (
        PRELUDE
        + f"""
    other = create({own_lock})
    first = answer_in(other)
    try:
        import vantrel.model.models.person
    except ImportError as error:
        refused = str(error)
    again = answer_in(other)
    interpreters.destroy(other)
    print(json.dumps([first, refused, again]))
    """
    )
    imported = ["imported", ["person"]]
    assert answer_of(code, path=standins) == [imported, REFUSAL, imported]


def test_interpreter_that_is_gone_is_not_replaced(standins: Path) -> None:
    code = (
        PRELUDE
        + """
    other = create(True)
    answer_in(other)
    interpreters.destroy(other)
    try:
        import vantrel.model.models.person
    except ImportError as error:
        print(error)
    """
    )
    assert output_of(code, path=standins) == REFUSAL


def test_interpreters_that_come_at_the_same_time(standins: Path) -> None:
    """Each with a lock of its own: one gets the module, the others are refused."""
    code = (
        PRELUDE
        + """
    import threading
    others = [create(True) for _ in range(4)]
    answers = []
    threads = [
        threading.Thread(target=lambda other=other: answers.append(answer_in(other))) for other in others
    ]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    print(json.dumps(sorted(answers)))
    """
    )
    refused = ["ImportError", REFUSAL, False]
    assert answer_of(code, path=standins) == [refused, refused, refused, ["imported", ["person"]]]


def test_second_interpreter_is_refused_in_the_reference_host() -> None:
    code = (
        PRELUDE
        + """
    import vantrel.model.models.person
    other = create(False)
    print(json.dumps(answer_in(other)))
    interpreters.destroy(other)
    """
    )
    assert answer_of(code) == ["ImportError", REFUSAL, False]
