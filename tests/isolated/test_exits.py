"""Processes that end while daemon threads are inside the module.

The interpreter ends a thread that wants its lock back by then. Such a thread may do nothing any more:
the main thread goes on, with all objects as they are.
"""

from pathlib import Path
from typing import Any

import pytest

from support.ending import EXIT_CODE, MILLISECONDS
from support.isolated import answer_of, output_of

PRELUDE = f"""
    import json, signal, sys, threading, warnings
    sys.path.insert(0, {str(Path(__file__).parents[1])!r})
    # Forking amid threads is what is tested here.
    warnings.filterwarnings("ignore", "This process .* is multi-threaded", DeprecationWarning)
    import numpy as np
    from support import ending
    from support.ending import MODEL, NAMES, PASSWORDS
    from support.people import people, person_model
    from support.twins import StandIn
    from vantrel.model.models import person
"""

CALLS = {
    "few rows": "MODEL.sample(20)",
    "many rows": "MODEL.sample(3_000_000)",
    "fit": "MODEL.fit(people())",
    "construction": "person_model()",
    "dictionary": "MODEL.to_dict()",
    "categories": "MODEL.categories",
    "collections": "MODEL.hidden_model_gender.collections",
    "locales": "person.all_supported_locales()",
    "password": "MODEL.generate_password()",
    "many passwords": "MODEL.generate_passwords(PASSWORDS)",
    "usernames": "MODEL.generate_usernames(NAMES, NAMES)",
}


def endings(call: str, last: str = "nothing", before: str = "pass") -> Any:
    """How processes end whose threads make the call; see `support.ending`."""
    code = f"""
    {before}
    print(json.dumps(ending.endings(lambda: {call}, ending.{last})))
    """
    return answer_of(PRELUDE + code)


def well(written: str = "") -> list[list[Any]]:
    """Each with the main thread's own exit code, and with nothing written but by the main thread."""
    return [[EXIT_CODE, written]] * len(MILLISECONDS)


@pytest.mark.parametrize("call", CALLS.values(), ids=CALLS.keys())
def test_amid_a_call(call: str) -> None:
    assert endings(call) == well()


def test_amid_what_pandas_calls_for_each_element() -> None:
    call_by_call = "person.pd = StandIn(person.pd)"
    assert endings(CALLS["usernames"], before=call_by_call) == well()


def test_main_thread_draws_to_the_end() -> None:
    written = "waiting exiting finalising "
    assert endings(CALLS["few rows"], "draw_at_every_stage") == well(written)


def test_no_thread_that_was_ended_has_numpys_lock() -> None:
    assert endings(CALLS["usernames"], "hold_numpys_lock_and_draw") == well("finalising ")


def test_no_thread_that_a_child_does_not_have_has_numpys_lock() -> None:
    assert endings(CALLS["usernames"], "hold_numpys_lock_and_fork") == well("forked ")


def test_thread_that_does_nothing_but_draw_lets_others_draw() -> None:
    code = """
    def draw_for_ever():
        while True:
            np.random.random(10_000)

    signal.alarm(30)
    threading.Thread(target=draw_for_ever, daemon=True).start()
    print([len(MODEL.generate_usernames(NAMES, NAMES)) for _ in range(20)])
    """
    assert output_of(PRELUDE + code) == str([100] * 20)
