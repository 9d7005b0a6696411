"""Writes files whole or not at all, and nothing over what nobody has given up."""

import errno
import fcntl
import filecmp
import hashlib
import os
import stat
import warnings
from collections.abc import Iterator
from contextlib import contextmanager, suppress
from itertools import count
from pathlib import Path
from typing import IO, Any

from vantrel.errors import LeftoverWarning, OverwriteError
from vantrel.hints import argument, named
from vantrel.util.callers import OURS

# What stands for standard input or output in the place of a file.
STANDARD_STREAM = Path("-")

_LONGEST_NAME = 255


@contextmanager
def replacing(
    path: Path,
    *,
    binary: bool = False,
    force: bool = True,
    private_as: Path | None = None,
    mode: int = 0o666,
) -> Iterator[IO[Any]]:
    """Opens a file that takes its place only when it was written to the end.

    It takes text, in UTF-8, or bytes. Until the end they go to a file of a temporary name in the
    same folder. If anything fails that file is removed, and what was at ``path`` before is still
    there; what a process has left that was killed is removed by the next one. A file that is
    replaced keeps its permissions. A symbolic link stays and the file it leads to is replaced. What
    is there and no regular file, such as a pipe or a device, is written straight into.

    Args:
        path: The file.
        binary: Whether it takes bytes.
        force: Whether a file is replaced that is there in the end.
        private_as: Nobody may do more with the file than with this one.
        mode: The permissions of a new file, of which the process's mask takes some.
    """
    try:
        target = Path(os.path.realpath(path))
        refuse_missing_folder(target if path.is_symlink() else path)
        if target.is_symlink():
            raise OSError(errno.ELOOP, os.strerror(errno.ELOOP))
        if is_special(target):
            with _opened(os.open(target, os.O_WRONLY | os.O_TRUNC), binary) as file:
                yield file
            return
        mode, is_replaced = _permissions(target, private_as, mode)
        temporary, descriptor = _made_beside(target, mode, path)
        try:
            if is_replaced:
                os.fchmod(descriptor, mode)  # whatever the process's mask is
            with _opened(os.dup(descriptor), binary) as file:
                yield file
                file.flush()
                os.fsync(descriptor)
            _name(temporary, target, path, force=force)
        finally:  # while it is locked: nobody takes it for a leftover
            temporary.unlink(missing_ok=True)
            os.close(descriptor)
    except OverwriteError:
        raise
    except OSError as error:
        # Whoever reads the error has never heard of the temporary name.
        error.filename = str(path)
        del error.filename2
        raise


def refuse_overwriting(output: Path, *sources: Path, force: bool = False) -> None:
    """Refuses an output that would overwrite a source or, without ``force``, any other file.

    A link that leads nowhere is there, too: whoever made it has plans with the name.
    """
    if any(same_file(source, output) for source in sources):
        raise OverwriteError(f"{named(output)} is the file to read: write to another one.")
    if output.is_dir():
        raise OverwriteError(f"{named(output)} is a folder: name a file in it.")
    if os.path.lexists(output) and not is_special(output) and not force:
        raise _is_there(output)


def _is_there(output: Path) -> OverwriteError:
    return OverwriteError(
        f"{named(output)} is there already: add {argument('force')} to overwrite it."
    )


def read_whole(path: Path, most: int) -> bytes:
    """Reads a regular file of so many bytes at most; no other one, which might never end.

    Raises:
        OSError: It cannot be read, is no regular file or has more.
    """
    descriptor = os.open(path, os.O_RDONLY | os.O_NONBLOCK)
    with os.fdopen(descriptor, "rb") as file:
        if not stat.S_ISREG(os.fstat(descriptor).st_mode):
            raise OSError(errno.EINVAL, "It is no regular file")
        content = file.read(most + 1)
    if len(content) > most:
        raise OSError(errno.EFBIG, f"It has more than {most:,} bytes")
    return content


def refuse_missing_folder(path: Path) -> None:
    """Refuses a path in a folder that is not there."""
    if not path.parent.is_dir():
        reason = f"folder {str(path.parent)!r} does not exist"
        raise FileNotFoundError(errno.ENOENT, reason, str(path))


def same_file(one: Path, other: Path) -> bool:
    """Tells whether two paths lead to one existing file."""
    return one.exists() and other.exists() and one.samefile(other)


def same_content(one: Path, other: Path) -> bool:
    """Tells whether two files have the same bytes; only regular ones are read."""
    return one.exists() and other.exists() and filecmp.cmp(one, other, shallow=False)


def is_special(path: Path) -> bool:
    """Tells whether a path leads to what is there and no regular file: a pipe, a device."""
    return path.exists() and not path.is_file()


@contextmanager
def owned(folder: Path) -> Iterator[bool]:
    """Tells whether this process alone has the folder from now on; the lock ends with it.

    Where the file system knows no locks there is nobody to ask.
    """
    descriptor = os.open(folder, os.O_RDONLY | os.O_DIRECTORY)
    try:
        yield _lock(descriptor) is not False
    finally:
        with suppress(OSError):  # no locks here
            # Closing alone would leave it locked by the processes that were forked meanwhile.
            fcntl.flock(descriptor, fcntl.LOCK_UN)
        os.close(descriptor)


def _lock(descriptor: int) -> bool | None:
    """Locks a file for this process unless another one has it; None where nothing can be locked."""
    try:
        fcntl.flock(descriptor, fcntl.LOCK_EX | fcntl.LOCK_NB)
    except BlockingIOError:
        return False
    except OSError:
        return None
    return True


def _permissions(target: Path, private_as: Path | None, mode: int) -> tuple[int, bool]:
    """The permissions of a file that is to be written, and whether it replaces one."""
    is_replaced = target.is_file()
    mode = stat.S_IMODE(target.stat().st_mode) if is_replaced else mode
    if private_as is not None and private_as.is_file():
        mode &= stat.S_IMODE(private_as.stat().st_mode)
    return mode, is_replaced


def _made_beside(target: Path, mode: int, told: Path) -> tuple[Path, int]:
    """Makes a temporary file beside another one, locked for as long as it is open.

    The first name that no living process has is taken, so what a killed one has left is found.
    """
    numbers = count()
    while True:
        temporary = target.with_name(_temporary_name(target.name, next(numbers)))
        _remove_leftover(temporary, told)
        try:
            descriptor = os.open(temporary, os.O_RDWR | os.O_CREAT | os.O_EXCL, mode)
            with suppress(OSError):  # no locks here
                fcntl.flock(descriptor, fcntl.LOCK_EX)
            if os.fstat(descriptor).st_nlink:
                return temporary, descriptor
            os.close(descriptor)  # taken for a leftover before it was locked
        except FileExistsError:
            continue
        except BaseException:  # of a signal's handler
            temporary.unlink(missing_ok=True)
            raise


def _temporary_name(name: str, number: int) -> str:
    end = f".{number}.tmp"
    if len(os.fsencode(name)) + len(end) >= _LONGEST_NAME:
        name = hashlib.sha256(os.fsencode(name)).hexdigest()
    return f".{name}{end}"


def _remove_leftover(temporary: Path, told: Path) -> None:
    try:
        descriptor = os.open(temporary, os.O_WRONLY | os.O_NOFOLLOW | os.O_NONBLOCK)
    except OSError:  # none, as a rule
        return
    try:
        there = os.fstat(descriptor)
        if _lock(descriptor) and there.st_nlink == 1 and _is_named(there, temporary):
            temporary.unlink()
            if there.st_size:  # or else it may be of a process that has not locked it yet
                warnings.warn(
                    f"Removed {there.st_size:,} bytes that a killed run had left beside {told}.",
                    LeftoverWarning,
                    skip_file_prefixes=OURS,
                )
    finally:
        os.close(descriptor)


def _is_named(there: os.stat_result, path: Path) -> bool:
    """Tells whether a file that was opened is still the one of a name, which others may take."""
    try:
        return os.path.samestat(there, path.lstat())
    except FileNotFoundError:
        return False


def _name(temporary: Path, target: Path, told: Path, *, force: bool) -> None:
    """Gives a file its name, which nothing bears that must not be lost."""
    if not force:
        try:
            try:
                os.link(temporary, target)
            except OSError as error:
                if isinstance(error, FileExistsError):
                    raise
                # No links in this file system: the name is taken first.
                os.close(os.open(target, os.O_CREAT | os.O_EXCL))
            else:
                return
        except FileExistsError:
            raise _is_there(told) from None
    temporary.replace(target)


def _opened(descriptor: int, binary: bool) -> IO[Any]:
    if binary:
        return os.fdopen(descriptor, "wb")
    return os.fdopen(descriptor, "w", encoding="utf-8", newline="")
