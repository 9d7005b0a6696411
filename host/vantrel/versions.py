"""The versions that the rows of a seed depend on."""

from __future__ import annotations

import platform
from collections.abc import Mapping
from importlib.metadata import version

from vantrel import __version__

# What another version of each may change in the rows that a seed gives.
_CHANGES = {
    "Faker": "names and e-mail addresses may differ",
    "numpy": "what is drawn may differ",
    "pandas": "missing values and types may differ",
    "Python": "what is drawn may differ",
    "vantrel": "anything may differ",
}


def versions() -> dict[str, str]:
    """The installed versions of all that decides what rows a seed gives, by name."""
    return {
        "Faker": version("faker"),
        "numpy": version("numpy"),
        "pandas": version("pandas"),
        "Python": platform.python_version(),
        "vantrel": __version__,
    }


def differences(recorded: Mapping[str, str]) -> list[str]:
    """Tells in words what differs from the installed versions.

    ``recorded`` are those that :func:`versions` gave elsewhere; what is not among them is not
    compared.
    """
    return [
        f"{name} is {here} here and was {recorded[name]}: {_CHANGES[name]}"
        for name, here in versions().items()
        if _that_matters(name, recorded.get(name, here)) != _that_matters(name, here)
    ]


def _that_matters(name: str, version: str) -> list[str]:
    """Leaves out what never changes the rows: the last number of Python."""
    return version.split(".")[: 2 if name == "Python" else None]
