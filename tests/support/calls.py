"""Calls of the module's functions, and the refusal of bad ones."""

import re
from contextlib import AbstractContextManager
from typing import Any

import pytest

from support.members import Member


class Text(str):
    """A string that is not exactly one."""


class Number(int):
    """An int that is not exactly one."""


def refuses(message: str) -> AbstractContextManager[pytest.ExceptionInfo[TypeError]]:
    """Expects a TypeError with exactly this message."""
    return pytest.raises(TypeError, match=rf"\A{re.escape(message)}\Z")


def fitting(member: Member) -> list[Any]:
    """Arguments that pass every check of their types."""
    return [parameter.fitting for parameter in member.parameters]
