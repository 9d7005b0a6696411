"""Reads the configuration of a model of people from a TOML file."""

from __future__ import annotations

import re
from pathlib import Path
from typing import Any, NamedTuple

import msgspec

from vantrel.attributes import PHONES
from vantrel.config import PersonModelConfig
from vantrel.errors import SettingsError
from vantrel.fitting.checks import check_ways
from vantrel.hints import did_you_mean
from vantrel.rows import EVERYWHERE
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
    check_ways(**ways)
    found = msgspec.to_builtins(msgspec.convert(settings, Settings))
    genders = found.get("genders", ["F"])
    if not genders or len(set(genders)) < len(genders):  # each key is as likely as any other
        wrong = "has a key twice" if genders else "is empty"
        raise ValueError(f"genders {wrong}: list each of its keys once")
    config = PersonModelConfig(**found)
    if usual := _usual_formats(found):
        formats = ways.get("phone_formats", {})
        ways["phone_formats"] = formats | {EVERYWHERE: usual | formats.get(EVERYWHERE, {})}
    return Loaded(config, ways)


def _usual_formats(found: dict[str, Any]) -> dict[str, str]:
    """The formats that are set and usual: the configuration would not tell that they are set."""
    usual = vars(PersonModelConfig())
    formats = {attribute: f"{attribute}_format" for attribute in PHONES}
    return {
        attribute: usual[name]
        for attribute, name in formats.items()
        if found.get(name) == usual[name]
    }


def _check_pattern(name: str, pattern: str) -> None:
    try:
        re.compile(pattern)
    except (re.error, OverflowError, RecursionError) as error:
        raise ValueError(f"{name} is no regular expression ({error})") from error
