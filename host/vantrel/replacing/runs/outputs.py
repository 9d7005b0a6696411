"""Where the copies of tables go."""

from __future__ import annotations

import os
from collections.abc import Iterator, Sequence
from contextlib import contextmanager, suppress
from pathlib import Path

from vantrel.errors import ArgumentError, OverwriteError
from vantrel.hints import named
from vantrel.sampling.record import record_path
from vantrel.storage.files import STANDARD_STREAM, refuse_missing_folder, refuse_overwriting
from vantrel.tables.copying import Copied
from vantrel.tables.kinds import Compression, Format, kind_to_write

_FORMATS: dict[Format, str] = {"csv": "CSV", "jsonl": "JSON Lines", "parquet": "Parquet"}


def outputs_of(
    inputs: Sequence[Path], output: Path, read_only: Sequence[Path], *, force: bool
) -> list[Path]:
    """Names the copy of each table; several go into a folder.

    Raises:
        ArgumentError: Two copies would have one name.
        OverwriteError: A copy, or the record beside it, would overwrite a file.
        OSError: The folder of the output is not there.
    """
    outputs = _named(inputs, output)
    refuse_missing_folder(output)
    if any(each == STANDARD_STREAM for each in inputs) and outputs[0] != output:
        raise ArgumentError("A table from standard input has no name: name the file of its copy.")
    kept = {os.path.realpath(each) for each in read_only}
    for copy in (*outputs, *map(record_path, outputs)):
        if os.path.realpath(copy) in kept:
            raise OverwriteError(f"{named(copy)} is the file to read: write to another one.")
        refuse_overwriting(copy, *inputs, *read_only, force=force)
    return outputs


def compression_of(output: Path, copied: Copied) -> Compression | None:
    """Tells how a copy is compressed, and refuses one of another kind than its table."""
    kind = kind_to_write(output)
    if kind.format != copied.format:
        raise ArgumentError(
            f"Table {named(copied.path)} is {_FORMATS[copied.format]}, and {named(output)} by its"
            f" name {_FORMATS[kind.format]}: a copy is as its table."
        )
    return kind.compression


@contextmanager
def made_if_missing(folder: Path) -> Iterator[None]:
    """Makes a folder for copies, and takes it away if none comes into it."""
    is_made = not folder.exists()
    if is_made:
        folder.mkdir()
    try:
        yield
    except BaseException:
        if is_made:
            with suppress(OSError):
                folder.rmdir()
        raise


def _named(inputs: Sequence[Path], output: Path) -> list[Path]:
    if len(inputs) == 1 and not output.is_dir() and (output.suffix or output.exists()):
        return [output]
    if output.exists() and not output.is_dir():
        raise OverwriteError(
            f"{named(output)} is there and no folder: several copies go into a folder."
        )
    refuse_doubled_names(inputs)
    return [output / path.name for path in inputs]


def refuse_doubled_names(inputs: Sequence[Path]) -> None:
    """Refuses tables whose copies, or plans, would have one name."""
    names = [path.name for path in inputs]
    for name in names:
        if names.count(name) > 1:
            raise ArgumentError(
                f"Two tables are called {named(name)}, and so would be their copies: copy them into"
                " two folders, one after the other, with one secret."
            )
