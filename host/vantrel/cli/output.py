"""Where a command writes to."""

from pathlib import Path

import click

from vantrel.storage.files import is_special, same_file

STANDARD_OUTPUT = Path("-")

force_option = click.option("--force", is_flag=True, help="Overwrite the output if it is there.")


def refuse_overwriting(output: Path, *sources: Path, force: bool) -> None:
    """Makes sure that writing the output loses nothing.

    Raises:
        click.UsageError: It is a file to read or a folder, or it is there and ``force`` is not
            given.
    """
    if output == STANDARD_OUTPUT:
        return
    if any(same_file(source, output) for source in sources):
        raise click.UsageError(f"{output} is the file to read: write to another one.")
    if output.is_dir():
        raise click.UsageError(f"{output} is a folder: name a file in it.")
    if output.exists() and not is_special(output) and not force:
        raise click.UsageError(f"{output} is there already: add --force to overwrite it.")
