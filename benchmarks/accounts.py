"""Tells which generator the time of a whole sample goes to.

The methods that a sample calls are wrapped on the model, so that the parts are measured where they
are at work and add up to the whole. The generators themselves stay as they are.
"""

from __future__ import annotations

import time
from collections import defaultdict
from collections.abc import Callable, Iterator
from contextlib import contextmanager
from typing import Any

from vantrel.model.models.person import PersonModel

GENDER_KEYS = "map_to_gender_keys"
GENDER = "values from collections: gender"
TITLE = "values from collections: title"
AMBIGUOUS = "title's ambiguous draw"
ASSEMBLY = "assembly of the frame, the rest"

COLLECTIONS = "generate_values_from_collections"

PART_OF = {
    "generate_first_names": "first names",
    "generate_last_names": "last names",
    "generate_emails": "e-mails: usernames of their own, domain names",
    "generate_usernames": "usernames",
    "generate_passwords": "passwords",
    "generate_phone_numbers": "phone numbers, three columns",
}

PARTS = (GENDER_KEYS, GENDER, TITLE, AMBIGUOUS, *PART_OF.values(), ASSEMBLY)

Method = Callable[..., Any]


class Accounts:
    """Books each moment of a sample on the part that is at work.

    Attributes:
        seconds: The CPU time of each part.
    """

    def __init__(self) -> None:
        self.seconds: defaultdict[str, float] = defaultdict(float)
        # What is at work outside of all methods, then the methods that called each other.
        self._at_work = [ASSEMBLY]
        self._since = time.process_time()
        self._collections = iter((GENDER, TITLE))

    def book(self) -> None:
        """Books the time since the last call on the part at work."""
        now = time.process_time()
        self.seconds[self._at_work[-1]] += now - self._since
        self._since = now

    def timed(self, method: Method, part: str) -> Method:
        """Wraps a method whose time is one part."""

        def call(*args: Any, **kwargs: Any) -> Any:
            return self._call(method, part, args, kwargs)

        return call

    def timed_collections(self, method: Method) -> Method:
        """Wraps the method that a sample calls for the genders, then for the titles."""

        def call(*args: Any, **kwargs: Any) -> Any:
            part = next(self._collections)
            values = self._call(method, part, args, kwargs)
            # No method of the model draws the ambiguous titles: it is done before the next one.
            self._at_work[0] = AMBIGUOUS if part == TITLE else ASSEMBLY
            return values

        return call

    def _call(self, method: Method, part: str, args: Any, kwargs: Any) -> Any:
        self.book()
        self._at_work[0] = ASSEMBLY
        self._at_work.append(part)
        values = method(*args, **kwargs)
        self.book()
        self._at_work.pop()
        return values


def seconds_of_parts(model: PersonModel, sample: Callable[[], object]) -> dict[str, float]:
    """Runs a sample of all twelve columns and gives the CPU seconds of each of ``PARTS``."""
    accounts = Accounts()
    with _wrapped(model, accounts):
        accounts.book()
        accounts.seconds.clear()
        sample()
        accounts.book()
    return {part: accounts.seconds[part] for part in PARTS}


@contextmanager
def _wrapped(model: PersonModel, accounts: Accounts) -> Iterator[None]:
    wrappers = {name: accounts.timed(getattr(model, name), part) for name, part in PART_OF.items()}
    wrappers[GENDER_KEYS] = accounts.timed(getattr(model, GENDER_KEYS), GENDER_KEYS)
    wrappers[COLLECTIONS] = accounts.timed_collections(getattr(model, COLLECTIONS))
    emails = wrappers["generate_emails"]

    def emails_with_plain_usernames(*args: Any, **kwargs: Any) -> Any:
        # E-mails are made at once only where the method behind their usernames is the class's own.
        usernames = vars(model).pop("generate_usernames")
        try:
            return emails(*args, **kwargs)
        finally:
            vars(model)["generate_usernames"] = usernames

    wrappers["generate_emails"] = emails_with_plain_usernames
    vars(model).update(wrappers)
    try:
        yield
    finally:
        for name in wrappers:
            delattr(model, name)
