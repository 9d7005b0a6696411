"""Writes files whole or not at all."""

import errno
import os
import secrets
from collections.abc import Iterator
from contextlib import contextmanager
from pathlib import Path
from typing import IO, Any

from vantrel.errors import OverwriteError
from vantrel.hints import argument

# What stands for standard input or output in the place of a file.
STANDARD_STREAM = Path("-")


@contextmanager
def replacing(path: Path, *, binary: bool = False) -> Iterator[IO[Any]]:
    """Opens a file that takes its place only when it was written to the end.

    It takes text, in UTF-8, or bytes. Until the end they go to a file of a temporary name in the
    same folder. If anything fails that file is removed, and what was at ``path`` before is still
    there. A symbolic link stays and the file it leads to is replaced. What is there and no regular
    file, such as a pipe or a device, is written straight into.
    """
    try:
        target = Path(os.path.realpath(path))
        refuse_missing_folder(target if path.is_symlink() else path)
        opening = _in_place if is_special(target) else _beside
        with opening(target, binary) as file:
            yield file
    except OSError as error:
        # Whoever reads the error has never heard of the temporary name.
        error.filename = str(path)
        del error.filename2
        raise


def refuse_overwriting(output: Path, *sources: Path, force: bool = False) -> None:
    """Refuses an output that would overwrite a source or, without ``force``, any other file."""
    if any(same_file(source, output) for source in sources):
        raise OverwriteError(f"{output} is the file to read: write to another one.")
    if output.is_dir():
        raise OverwriteError(f"{output} is a folder: name a file in it.")
    if output.exists() and not is_special(output) and not force:
        raise OverwriteError(f"{output} is there already: add {argument('force')} to overwrite it.")


def refuse_missing_folder(path: Path) -> None:
    """Refuses a path in a folder that is not there."""
    if not path.parent.is_dir():
        reason = f"folder {str(path.parent)!r} does not exist"
        raise FileNotFoundError(errno.ENOENT, reason, str(path))


def same_file(one: Path, other: Path) -> bool:
    """Tells whether two paths lead to one existing file."""
    return one.exists() and other.exists() and one.samefile(other)


def is_special(path: Path) -> bool:
    """Tells whether a path leads to what is there and no regular file: a pipe, a device."""
    return path.exists() and not path.is_file()


def _in_place(target: Path, binary: bool) -> IO[Any]:
    return _open(target, "w", binary)


@contextmanager
def _beside(target: Path, binary: bool) -> Iterator[IO[Any]]:
    temporary = target.with_name(f".{target.name}.{secrets.token_hex(4)}.tmp")
    try:
        with _open(temporary, "x", binary) as file:
            yield file
            file.flush()
            os.fsync(file.fileno())
        temporary.replace(target)
    finally:
        temporary.unlink(missing_ok=True)


def _open(path: Path, mode: str, binary: bool) -> IO[Any]:
    return path.open(f"{mode}b") if binary else path.open(mode, encoding="utf-8", newline="")
