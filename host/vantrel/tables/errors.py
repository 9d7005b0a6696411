"""What is wrong with a table."""

from __future__ import annotations

import zlib
from collections.abc import Iterator
from contextlib import contextmanager
from pathlib import Path

from backports import zstd

from vantrel.errors import TableError
from vantrel.hints import named, why_unreadable


@contextmanager
def telling(path: Path, encoding: str = "UTF-8") -> Iterator[None]:
    """Turns what may fail where a file is read into a ``TableError``.

    Args:
        path: What the user calls the file.
        encoding: What its text is read in.
    """
    try:
        yield
    except UnicodeError as error:
        raise TableError(
            f"Table {named(path)} is not in {encoding}: name its encoding, cp1252 most likely, or"
            " save it as CSV UTF-8."
        ) from error
    except (EOFError, zlib.error, zstd.ZstdError) as error:
        raise TableError(f"Table {named(path)} is cut off or damaged: compress it anew.") from error
    except OSError as error:
        raise TableError(f"Table {named(path)} {why_unreadable(path, error)}") from error
