"""Where a command writes to."""

from pathlib import Path

import click

from vantrel.files import same_file

STANDARD_OUTPUT = Path("-")


def refuse_overwriting(source: Path, output: Path) -> None:
    """Makes sure that writing the output leaves the input alone.

    Raises:
        click.UsageError: Both are one file.
    """
    if same_file(source, output):
        raise click.UsageError(f"{output} is the file to read: write to another one.")
