"""Reads the configuration of a model of people from a TOML file."""

from __future__ import annotations

import re
from pathlib import Path
from typing import Any, NamedTuple

import msgspec

from vantrel.config import PersonModelConfig
from vantrel.errors import SettingsError
from vantrel.hints import did_you_mean
from vantrel.rows import Ways
from vantrel.storage.form import Settings
from vantrel.storage.toml import read_toml
from vantrel.wording import shown

_WAYS = ("email_domain", "phone_numbers", "phone_formats", "latin")


class Loaded(NamedTuple):
    """What a file of settings sets."""

    config: PersonModelConfig
    ways: dict[str, Any]


def load_config(path: Path) -> PersonModelConfig:
    """Reads the configuration of a model, as :func:`load_settings` does."""
    return load_settings(path).config


def load_settings(path: Path) -> Loaded:
    """Reads a configuration, and how people are reached.

    Args:
        path: A TOML file. Its keys are fields of ``PersonModelConfig`` and of
            :class:`vantrel.rows.Ways`, all on the top level but for the tables of phone_formats;
            what it does not set is the default.
            Lengths are in characters.

    Raises:
        SettingsError: The file cannot be read, is no TOML, or has a key that is no field or a value
            that the field cannot have.
    """
    return read_toml(path, "Config file", _config, SettingsError)


def _config(settings: dict[str, Any]) -> Loaded:
    known = (*Settings.__struct_fields__, *_WAYS)
    for name, value in settings.items():
        if name not in known:
            hint = did_you_mean(name, known, most=3)
            raise ValueError(
                f"{shown(repr(name))} is no setting.{hint} Known are: {', '.join(known)}"
            )
        if name.endswith("_regex") and isinstance(value, str):
            _check_pattern(name, value)
    ways = {name: settings.pop(name) for name in _WAYS if name in settings}
    msgspec.convert(ways, Ways)
    found = msgspec.to_builtins(msgspec.convert(settings, Settings))
    genders = found.get("genders", ["F"])
    if not genders or len(set(genders)) < len(genders):  # each key is as likely as any other
        wrong = "has a key twice" if genders else "is empty"
        raise ValueError(f"genders {wrong}: list each of its keys once")
    return Loaded(PersonModelConfig(**found), ways)


def _check_pattern(name: str, pattern: str) -> None:
    try:
        re.compile(pattern)
    except (re.error, OverflowError, RecursionError) as error:
        raise ValueError(f"{name} is no regular expression ({error})") from error
