"""Reads the configuration of a model of people from a TOML file."""

from __future__ import annotations

import tomllib
from difflib import get_close_matches
from pathlib import Path
from typing import Any

from vantrel.config import PersonModelConfig
from vantrel.storage.form import CONFIG_FIELDS
from vantrel.util.shapes import ShapeError


class ConfigFileError(ValueError):
    """A file holds no configuration; the message says where and what to do."""


def load_config(path: Path) -> PersonModelConfig:
    """Reads a configuration.

    Args:
        path: A TOML file. Its keys are fields of ``PersonModelConfig``, all on the top level; what
            it does not set is the default. Lengths are in characters.

    Raises:
        ConfigFileError: The file cannot be read, is no TOML, or has a key that is no field or a
            value that the field cannot have. A pattern must be one that a model file may hold.
    """
    settings = _read(path)
    for name, value in settings.items():
        if name not in CONFIG_FIELDS:
            raise ConfigFileError(f"Config file {path}: {_unknown(name)}")
        try:
            CONFIG_FIELDS[name](value, name)
        except ShapeError as error:
            raise ConfigFileError(f"Config file {path}: {error}") from error
    _check_genders(path, settings.get("genders", ["F"]))
    return PersonModelConfig(**settings)


def _read(path: Path) -> dict[str, Any]:
    try:
        return tomllib.loads(path.read_text(encoding="utf-8-sig"))
    except OSError as error:
        raise ConfigFileError(
            f"Config file {path} cannot be read: {error.strerror or error}."
        ) from error
    except UnicodeDecodeError as error:
        raise ConfigFileError(
            f"Config file {path} is not in UTF-8: save it in that encoding."
        ) from error
    except (tomllib.TOMLDecodeError, RecursionError) as error:
        raise ConfigFileError(f"Config file {path} is not TOML: {error}.") from error


def _check_genders(path: Path, genders: list[str]) -> None:
    """Refuses what would not mean what it says: each key is as likely as any other."""
    if not genders or len(set(genders)) < len(genders):
        wrong = "has a key twice" if genders else "is empty"
        raise ConfigFileError(f"Config file {path}: genders {wrong}: list each of its keys once.")


def _unknown(name: str) -> str:
    nearest = get_close_matches(name.casefold(), CONFIG_FIELDS, n=3, cutoff=0.7)
    hint = f" Did you mean {' or '.join(map(repr, nearest))}?" if nearest else ""
    return f"{name!r} is no setting.{hint} Known are: {', '.join(CONFIG_FIELDS)}."
