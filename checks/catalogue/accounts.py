"""Calls of the generators of e-mail addresses, usernames and passwords."""

from __future__ import annotations

import random
import re
import signal
from functools import partial
from typing import Any

import pandas as pd

from vantrel.model.models.person import PersonModel

from .call import Function, bad, fail_with, good
from .generating import FailingFaker, Interrupted, both, half_way, method, replacing
from .parts import (
    FEW,
    MANY,
    countries,
    cycle,
    drawing,
    first_names,
    first_names_and_gaps,
    last_names,
)

NUMBER: Any = 3

EMAILS = [
    *both(
        "generate_emails", 10, lambda rows: (first_names(rows), last_names(rows), countries(rows))
    ),
    bad(
        "PersonModel.generate_emails: unknown country",
        KeyError,
        method("generate_emails", first_names(MANY), last_names(MANY), cycle(["XX"], MANY)),
        2,
    ),
    bad(
        "PersonModel.generate_emails: half-way",
        LookupError,
        method(
            "generate_emails",
            first_names(FEW),
            last_names(FEW),
            countries(FEW),
            model=half_way(FailingFaker),
        ),
        2,
    ),
    bad(
        "PersonModel.generate_emails: Ctrl-C",
        KeyboardInterrupt,
        method(
            "generate_emails",
            first_names(FEW),
            last_names(FEW),
            countries(FEW),
            model=half_way(Interrupted),
        ),
        2,
    ),
    bad(
        "PersonModel.generate_emails: no address",
        AssertionError,
        replacing(
            PersonModel,
            "check_email",
            staticmethod(lambda *_: False),
            method("generate_emails", first_names(FEW), last_names(FEW), countries(FEW)),
        ),
        10,
    ),
    bad(
        "PersonModel.generate_emails: check fails",
        LookupError,
        replacing(
            PersonModel,
            "check_email",
            staticmethod(fail_with(LookupError)),
            method("generate_emails", first_names(FEW), last_names(FEW), countries(FEW)),
        ),
        10,
    ),
    good("PersonModel.check_email", lambda: partial(PersonModel.check_email, "a@b.org")),
    good("PersonModel.check_email of no address", lambda: partial(PersonModel.check_email, "a b")),
    good(
        "PersonModel.check_email, left half-way",
        lambda: partial(PersonModel.check_email, "a", ["en", "de", "en"]),
    ),
    bad(
        "PersonModel.check_email: locale fails",
        TypeError,
        lambda: partial(PersonModel.check_email, "a", ["en", NUMBER]),
    ),
    bad(
        "PersonModel.check_email: re fails",
        LookupError,
        replacing(
            re, "match", fail_with(LookupError), lambda: partial(PersonModel.check_email, "a@b")
        ),
    ),
]

USERNAMES = [
    *both("generate_usernames", 10, lambda rows: (first_names(rows), last_names(rows))),
    good(
        "PersonModel.generate_usernames of one name",
        method("generate_usernames", cycle(["Ada"], 40), cycle(["B"], 40)),
        10,
    ),
    bad(
        "PersonModel.generate_usernames: gaps",
        AttributeError,
        method("generate_usernames", first_names_and_gaps(MANY), last_names(MANY)),
        10,
    ),
    bad(
        "PersonModel.generate_usernames: no column",
        AttributeError,
        method("generate_usernames", 3, last_names(FEW)),
    ),
    bad(
        "PersonModel.generate_usernames: numbers",
        TypeError,
        method("generate_usernames", pd.Series([1, 2, 3]), last_names(FEW)),
        2,
    ),
    bad(
        "PersonModel.generate_usernames: random fails",
        LookupError,
        replacing(
            random,
            "randint",
            fail_with(LookupError),
            method("generate_usernames", first_names(MANY), last_names(MANY)),
        ),
        10,
    ),
    bad(
        "PersonModel.generate_usernames: interrupted",
        KeyboardInterrupt,
        replacing(
            random,
            "randint",
            fail_with(KeyboardInterrupt),
            method("generate_usernames", first_names(FEW), last_names(FEW)),
        ),
        10,
    ),
]


def _alarmed(rows: int) -> Function:
    """Draws until an alarm rings, which is most likely in the midst of a column."""
    model, names = drawing(), first_names(rows)
    signal.signal(signal.SIGALRM, signal.default_int_handler)

    def draw_on() -> None:
        signal.setitimer(signal.ITIMER_REAL, 0.003)
        while True:
            model.generate_passwords(names)

    return draw_on


def _with_lengths(*lengths: Any) -> Any:
    def model() -> PersonModel:
        made = drawing()
        made.pwd_length = lengths
        return made

    return model


PASSWORDS = [
    *both("generate_passwords", 8, lambda rows: (first_names(rows),)),
    bad("PersonModel.generate_passwords: no column", TypeError, method("generate_passwords", 3)),
    good(
        "PersonModel.generate_passwords without bounds",
        method("generate_passwords", first_names(FEW), model=_with_lengths()),
    ),
    bad(
        "PersonModel.generate_passwords: bounds the wrong way",
        ValueError,
        method("generate_passwords", first_names(MANY), model=_with_lengths(9, 8)),
    ),
    bad("PersonModel.generate_passwords: alarm", KeyboardInterrupt, lambda: _alarmed(60_000), 10),
    good("PersonModel.generate_password", lambda: PersonModel.generate_password),
    good(
        "PersonModel.generate_password of no letters",
        lambda: partial(PersonModel.generate_password, 0, 0),
    ),
    bad(
        "PersonModel.generate_password: bounds the wrong way",
        ValueError,
        lambda: partial(PersonModel.generate_password, 9, 8),
    ),
    bad(
        "PersonModel.generate_password: random fails half-way",
        LookupError,
        replacing(random, "choice", fail_with(LookupError), lambda: PersonModel.generate_password),
    ),
    bad(
        "PersonModel.generate_password: StopIteration",
        RuntimeError,
        replacing(
            random, "choice", fail_with(StopIteration), lambda: PersonModel.generate_password
        ),
    ),
    bad(
        "PersonModel.generate_password: interrupted",
        KeyboardInterrupt,
        replacing(
            random, "choice", fail_with(KeyboardInterrupt), lambda: PersonModel.generate_password
        ),
    ),
]


CALLS = [*EMAILS, *USERNAMES, *PASSWORDS]
