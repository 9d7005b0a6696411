"""Opens the files of tables: compressed or not, in UTF-8 or not, or no files at all but pipes."""

from __future__ import annotations

import codecs
import gzip
import shutil
import sys
from collections.abc import Iterator
from contextlib import contextmanager
from io import TextIOWrapper
from pathlib import Path
from typing import IO, Any, cast

from backports import zstd

from vantrel.errors import TableError
from vantrel.storage.files import STANDARD_STREAM, is_special
from vantrel.tables.errors import telling
from vantrel.tables.kinds import Compression, Kind, kind_to_read

_MARKS_OF_UTF_16 = (codecs.BOM_UTF16_LE, codecs.BOM_UTF16_BE)
_UTF_8 = ("utf-8", "utf-8-sig", "ascii")


def readable(path: Path, encoding: str | None, folder: Path) -> tuple[Path, Kind]:
    """Gives a file in UTF-8 that can be read again and again, and tells what it holds.

    It is the given one where that will do. A pipe is copied to a file of its own, and so is a table
    in another encoding.

    Args:
        path: A file, a folder, a pipe, or ``-`` for standard input.
        encoding: The encoding of a text file, as Python names it. If None it is UTF-8, or UTF-16
            where the file begins with its mark.
        folder: Where copies go.
    """
    if path.is_dir():
        return path, Kind("parquet")
    file, kind = found(path, folder)
    told = encoding_of(path, file, kind, encoding)
    if told is not None:
        with telling(path, told):
            file = decoded(file, kind, told, folder)
        kind = kind._replace(compression=None)
    return file, kind


def found(path: Path, folder: Path) -> tuple[Path, Kind]:
    """Gives a file that can be read again and again, and tells what it holds.

    Args:
        path: A file, a pipe, or ``-`` for standard input.
        folder: Where a pipe is copied to.
    """
    with telling(path):
        if path == STANDARD_STREAM or is_special(path):
            file = _spooled(path, folder / "piped")
            return file, _kind_by_content(file)
        kind = kind_to_read(path)
        path.open("rb").close()  # tells in a word why not
        return linked(path, folder / "given"), kind


def linked(path: Path, link: Path) -> Path:
    """Gives a file another name, for the engine takes some signs of a name for patterns."""
    link.symlink_to(path.absolute())
    return link


def open_bytes(path: Path, compression: Compression | None) -> IO[bytes]:
    """Opens a file to read what it was before it was compressed."""
    if compression == "gzip":
        return cast(IO[bytes], gzip.open(path, "rb"))
    return cast(IO[bytes], zstd.open(path, "rb")) if compression == "zstd" else path.open("rb")


@contextmanager
def compressing(file: IO[bytes], compression: Compression | None) -> Iterator[IO[bytes]]:
    """Opens what compresses all that is written to it into an open file."""
    if compression is None:
        yield file
        return
    # Without a name and a time in it, the same rows give the same bytes.
    packed: Any = (
        gzip.GzipFile("", "wb", compresslevel=6, fileobj=file, mtime=0)
        if compression == "gzip"
        else zstd.ZstdFile(file, "w")
    )
    with packed:
        yield packed


def _spooled(path: Path, copy: Path) -> Path:
    with copy.open("xb") as file:
        if path == STANDARD_STREAM:
            if sys.stdin is not None:  # as it is where it is closed
                shutil.copyfileobj(sys.stdin.buffer, file)
        else:
            with path.open("rb") as pipe:
                shutil.copyfileobj(pipe, file)
    return copy


def _kind_by_content(file: Path) -> Kind:
    """Tells what a file without a name holds by its first bytes."""
    with file.open("rb") as raw:
        start = raw.read(4)
    if start == b"PAR1":
        return Kind("parquet")
    compression: Compression | None = None
    if start[:2] == b"\x1f\x8b":
        compression = "gzip"
    elif start == b"\x28\xb5\x2f\xfd":
        compression = "zstd"
    with open_bytes(file, compression) as unpacked:
        is_json = unpacked.read(1024).removeprefix(codecs.BOM_UTF8).lstrip().startswith(b"{")
    return Kind("jsonl" if is_json else "csv", compression=compression)


def encoding_of(path: Path, file: Path, kind: Kind, named: str | None) -> str | None:
    """The encoding that a file must be decoded from; None where it can be read as it is.

    Args:
        path: What the user calls the file.
        file: What to read.
        kind: What it holds.
        named: The encoding that the user names, if any.
    """
    if kind.format == "parquet":
        return None
    with telling(path), open_bytes(file, kind.compression) as raw:
        start = raw.read(4)
    if named is None:
        if start.startswith(_MARKS_OF_UTF_16):
            return "utf-16"
        ends = {start[1::2]: "utf-16-le", start[::2]: "utf-16-be"}
        return ends.get(b"\0\0")  # every other byte of what is written in Latin letters
    try:
        known = codecs.lookup(named).name
        "".encode(known)  # some of Python's codecs are of other things than texts
    except LookupError as error:
        raise TableError(
            f"{named!r} is no encoding: write utf-8, utf-16, latin-1 or cp1252, for example."
        ) from error
    return None if known in _UTF_8 else known


def decoded(file: Path, kind: Kind, encoding: str, folder: Path) -> Path:
    """Copies what a file held before it was compressed to one in UTF-8."""
    copy = folder / "decoded"
    with (
        open_bytes(file, kind.compression) as raw,
        TextIOWrapper(cast(Any, raw), encoding=encoding, newline="") as text,
        copy.open("x", encoding="utf-8", newline="") as decoded,
    ):
        shutil.copyfileobj(text, decoded)
    return copy
