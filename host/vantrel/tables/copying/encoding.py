"""Brings copies into the encoding of the original, and knows which ones come back to the letter."""

from __future__ import annotations

import codecs
import sys
from io import TextIOWrapper
from pathlib import Path
from typing import IO, Any, cast

import numpy as np
import pyarrow as pa
from anyascii import anyascii

from vantrel.errors import TableError
from vantrel.hints import named
from vantrel.tables.files import open_bytes
from vantrel.tables.kinds import Compression, Kind

_CHARACTERS = 1_000_000

# Those that a mark at the beginning tells the order of bytes of.
_MARKED = ("utf-16", "utf-32")


def _in_ascii(error: UnicodeError) -> tuple[str, int]:
    """Writes what an encoding does not have in ASCII: "Łucja" as "Lucja"."""
    if not isinstance(error, UnicodeEncodeError):
        raise error
    return anyascii(error.object[error.start : error.end]), error.end


_ERRORS = "vantrel.in_ascii"
codecs.register_error(_ERRORS, _in_ascii)


class Encoder:
    """Writes what is in UTF-8 to a file in another encoding."""

    def __init__(self, file: IO[bytes], encoding: str | None) -> None:
        """Takes the open file and its encoding; None is UTF-8."""
        self._file = file
        self._encoder = codecs.getincrementalencoder(encoding)(_ERRORS) if encoding else None

    def write(self, text: bytes | pa.Buffer, *, is_last: bool = False) -> None:
        """Writes whole characters; some encodings need to know which are the last.

        What the encoding does not have can only be of new values. It is transliterated.
        """
        if self._encoder is None:
            self._file.write(text)
        else:
            self._file.write(self._encoder.encode(str(text, "utf-8"), is_last))


def exact_encoding(encoding: str, file: Path, compression: Compression | None) -> str:
    """Names an encoding so that a mark at the beginning is read as a character, and stays."""
    if encoding not in _MARKED:
        return encoding
    with open_bytes(file, compression) as raw:
        start = raw.read(4)
    ends = [end for end in ("le", "be") if start.startswith("\ufeff".encode(f"{encoding}-{end}"))]
    return f"{encoding}-{ends[0] if ends else sys.byteorder[0] + 'e'}"


def refuse_inexact(path: Path, file: Path, kind: Kind, encoding: str, text: Path) -> None:
    """Refuses a file that is another one when it is decoded and encoded again.

    Args:
        path: What the user calls it.
        file: The file.
        kind: What it holds.
        encoding: What it is in.
        text: What it was decoded to, in UTF-8.
    """
    encoder = codecs.getincrementalencoder(encoding)()
    with (
        open_bytes(file, kind.compression) as raw,
        text.open("rb") as opened,
        TextIOWrapper(cast(Any, opened), encoding="utf-8", newline="") as characters,
    ):
        while True:
            read = characters.read(_CHARACTERS)
            again = encoder.encode(read, final=not read)
            if raw.read(len(again)) != again:
                raise TableError(
                    f"Table {named(path)} cannot be copied to the letter in {encoding}: save it as"
                    " CSV UTF-8."
                )
            if not read:
                return


def refuse_other_than_utf8(text: bytes, end: int) -> None:
    """Raises ``UnicodeDecodeError`` where a text up to an end is not in UTF-8."""
    buffers = [None, pa.py_buffer(np.array([0, end], np.int32)), pa.py_buffer(text)]
    try:
        pa.Array.from_buffers(pa.string(), 1, buffers).validate(full=True)
    except pa.ArrowInvalid:
        text[:end].decode()
        raise
