"""Writes several files, of which all take their places or none does."""

from __future__ import annotations

import os
from collections.abc import Callable, Iterator
from contextlib import ExitStack, contextmanager, suppress
from pathlib import Path
from typing import IO, Any

from vantrel.storage.files import replacing

# Opens a file, with the options of ``replacing``.
type Opener = Callable[..., IO[Any]]


@contextmanager
def replacing_together(*, force: bool) -> Iterator[Opener]:
    """Gives what opens files that take their places when all were written to the end.

    The last one that was opened takes its place first. If one cannot, those before it are removed
    again, unless they may have replaced others.

    Args:
        force: Whether files are replaced that are there in the end.
    """
    opened: list[tuple[Path, os.stat_result]] = []
    try:
        with ExitStack() as stack:

            def open_one(path: Path, **options: Any) -> IO[Any]:
                file: IO[Any] = stack.enter_context(replacing(path, **{"force": force} | options))
                opened.append((path, os.fstat(file.fileno())))
                return file

            yield open_one
    except BaseException:
        for path, there in [] if force else opened:
            with suppress(OSError):
                target = Path(os.path.realpath(path))
                if os.path.samestat(target.lstat(), there):
                    target.unlink()
        raise
