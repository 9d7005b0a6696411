"""The secret that decides who people become: from a file, from the environment, or drawn."""

from __future__ import annotations

import errno
import os
import re
import secrets
import stat
import warnings
from collections.abc import Mapping
from importlib.metadata import version
from pathlib import Path

from vantrel.arguments import kind_of
from vantrel.errors import (
    ArgumentTypeError,
    OtherVersionsWarning,
    OverwriteError,
    SecretError,
    SecretWarning,
)
from vantrel.hints import named, why_unreadable
from vantrel.storage.files import read_whole, refuse_missing_folder
from vantrel.storage.together import Opener, replacing_together
from vantrel.util.callers import OURS
from vantrel.wording import listed

VARIABLE = "VANTREL_SECRET"

_BYTES = 32
_FEWEST_BYTES, _MOST_BYTES = 16, 64  # the most that a keyed hash takes
_MOST_OF_A_FILE = 10_000
_MODE = 0o600

_DIGITS = re.compile(rf"[0-9a-fA-F]{{{2 * _BYTES}}}")
_HEAD = "# Whoever has this can tell who became whom: keep it as well as the real data.\n"
_LINE = re.compile(r"(?P<name>[\w-]+): (?P<value>\S+)")

# With another version of these the same secret may make other people of the same keys.
_DECIDING = ("vantrel", "vantrel-person", "Faker", "numpy", "anyascii", "phonenumbers")


def deciding_versions() -> dict[str, str]:
    """The installed versions of what decides which people come of a secret."""
    return {name: version(name) for name in _DECIDING}


def checked_secret(secret: bytes | None) -> bytes:
    """Gives a secret that was given, that of the environment, or one that nobody will know.

    Raises:
        ArgumentTypeError: It is none.
        SecretError: It is too short or too long, or the environment has none where it should.
    """
    if secret is None:
        given = os.environ.get(VARIABLE)
        return secrets.token_bytes(_BYTES) if given is None else _from_environment(given)
    if not isinstance(secret, bytes):
        raise ArgumentTypeError(
            f"A secret is bytes, such as secrets.token_bytes(32) gives; this is {kind_of(secret)}."
        )
    if not _FEWEST_BYTES <= len(secret) <= _MOST_BYTES:
        raise SecretError(
            f"A secret has {_FEWEST_BYTES} to {_MOST_BYTES} bytes, not {len(secret)}: take"
            f" secrets.token_bytes({_BYTES}), and keep it."
        )
    return secret


def _from_environment(given: str) -> bytes:
    if not _DIGITS.fullmatch(given.strip()):
        raise SecretError(
            f"{VARIABLE} in the environment is no secret: it has {2 * _BYTES} hexadecimal digits,"
            " as in a secret file."
        )
    return bytes.fromhex(given.strip())


def read_or_draw_secret(path: Path) -> tuple[bytes, bool]:
    """Reads the secret of a file, or draws one if it is not there.

    Returns:
        The secret, and whether it is a new one, which :func:`write_secret` is to keep.

    Raises:
        SecretError: The file holds no secret, or cannot be read.
        OSError: It is not there, and cannot be made.

    Warns:
        OtherVersionsWarning: The secret was made where other versions of the packages are
            installed that decide which people come of it.
        SecretWarning: Others than its owner can read the file.
    """
    if os.path.lexists(path):
        return _read(path), False
    refuse_missing_folder(path)
    if not os.access(path.parent, os.W_OK):
        raise PermissionError(errno.EACCES, os.strerror(errno.EACCES), str(path))
    return secrets.token_bytes(_BYTES), True


def write_secret(path: Path, secret: bytes, opened: Opener) -> None:
    """Keeps a new secret in a file for nobody but its owner.

    Raises:
        SecretError: Another process has made the file meanwhile.
    """
    if os.path.lexists(path):
        raise _made_meanwhile(path)
    lines = {"secret": secret.hex()} | deciding_versions()
    file = opened(path, force=False, mode=_MODE)
    file.write(_HEAD)
    file.writelines(f"{name}: {value}\n" for name, value in lines.items())
    file.flush()


def keep_secret(path: Path, secret: bytes) -> None:
    """Does what :func:`write_secret` does, at once."""
    try:
        with replacing_together(force=False) as opened:
            write_secret(path, secret, opened)
    except OverwriteError as error:
        raise _made_meanwhile(path) from error


def _made_meanwhile(path: Path) -> SecretError:
    return SecretError(
        f"Secret file {named(path)} was made by another run meanwhile: run this once more."
    )


def _read(path: Path) -> bytes:
    try:
        content = read_whole(path, _MOST_OF_A_FILE)
    except OSError as error:
        raise SecretError(f"Secret file {named(path)} {why_unreadable(path, error)}") from error
    found = dict(_LINE.findall(content.decode("ascii", errors="replace")))
    if "secret" not in found:
        raise SecretError(
            f"{named(path)} is no secret file: name one, or a file that is not there, which is then"
            " made."
        )
    if not _DIGITS.fullmatch(found["secret"]):
        raise SecretError(
            f"Secret file {named(path)} is damaged: its secret is not of {2 * _BYTES} hexadecimal"
            " digits. Restore it; with a new one all people become others."
        )
    _warn_of_readers(path)
    _warn_of_versions(path, found)
    return bytes.fromhex(found["secret"])


def _warn_of_readers(path: Path) -> None:
    if stat.S_IMODE(path.stat().st_mode) & 0o077:
        _warn(
            f"Others can read secret file {named(path)}, and tell who became whom: chmod 600"
            f" {named(path)}.",
            SecretWarning,
        )


def _warn_of_versions(path: Path, recorded: Mapping[str, str]) -> None:
    differing = [
        f"{name} {here} (was {recorded[name]})"
        for name, here in deciding_versions().items()
        if recorded.get(name, here) != here
    ]
    if differing:
        _warn(
            f"People may become others than where secret file {named(path)} was made: installed"
            f" here are {listed(differing)}.",
            OtherVersionsWarning,
        )


def _warn(message: str, category: type[Warning]) -> None:
    warnings.warn(message, category, skip_file_prefixes=OURS)
