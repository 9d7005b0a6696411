"""Calls whose arguments do not fit: every function of the module, in every way."""

from __future__ import annotations

from collections.abc import Callable, Iterator
from functools import partial
from typing import Any

from support.members import MEMBER_IDS, MEMBERS, Member

from .call import Call, bad

# Nothing in the module has as many parameters.
TOO_MANY = 9


def _calling(
    member: Member, positional: int, keywords: dict[str, object] | None = None
) -> Callable[[], partial[Any]]:
    """A call with so many fitting arguments, and keywords besides."""

    def prepare() -> partial[Any]:
        fitting = [parameter.fitting for parameter in member.parameters]
        given = (fitting + [object()] * TOO_MANY)[:positional]
        return partial(member.built(), *given, **(keywords or {}))

    return prepare


def _misfits(name: str, member: Member) -> Iterator[Call]:
    required = member.required
    unknown: dict[str, object] = {"unknown_keyword": None}
    yield bad(f"{name}: too many arguments", TypeError, _calling(member, TOO_MANY))
    yield bad(f"{name}: unknown keyword", TypeError, _calling(member, required, unknown))
    if required:
        first: dict[str, object] = {member.parameters[0].name: None}
        yield bad(f"{name}: too few arguments", TypeError, _calling(member, required - 1))
        yield bad(f"{name}: argument given twice", TypeError, _calling(member, required, first))
    for position, parameter in enumerate(member.parameters):
        if parameter.exact is None:
            continue
        keywords: dict[str, object] = {
            later.name: object() if later.name == parameter.name else later.fitting
            for later in member.parameters[position:]
        }
        yield bad(
            f"{name}: {parameter.name} of a wrong type",
            TypeError,
            _calling(member, position, keywords),
        )


CALLS = [
    call
    for name, member in zip(MEMBER_IDS, MEMBERS, strict=True)
    for call in _misfits(name, member)
]
