"""Writes files whole or not at all."""

import os
import secrets
from collections.abc import Iterator
from contextlib import contextmanager
from pathlib import Path
from typing import TextIO


@contextmanager
def replacing(path: Path) -> Iterator[TextIO]:
    """Opens a text file that takes its place only when it was written to the end.

    Until then the text goes to a file of a temporary name in the same folder. If anything fails
    that file is removed, and what was at ``path`` before is still there.

    Raises:
        OSError: The file cannot be written.
    """
    temporary = path.with_name(f".{path.name}.{secrets.token_hex(4)}.tmp")
    try:
        with temporary.open("x", encoding="utf-8", newline="") as file:
            yield file
            file.flush()
            os.fsync(file.fileno())
        os.replace(temporary, path)
    except OSError as error:
        # Whoever reads the error has never heard of the temporary name.
        error.filename = str(path)
        error.filename2 = None
        raise
    finally:
        temporary.unlink(missing_ok=True)
