"""``vantrel show``: what a model file holds."""

import warnings
from pathlib import Path

import click

from vantrel.cli.main import reporting


@click.command()
@click.argument("model_file", metavar="MODEL.json", type=click.Path(path_type=Path))
def show(model_file: Path) -> None:
    """Show what a model has learnt.

    The model file MODEL.json is one that 'vantrel fit' wrote. All that it keeps of the real table
    is shown: the columns, the values of genders, titles and countries, and the shares.

    \b
    Example:
      vantrel show model.json
    """
    from vantrel.cli.console import print_all
    from vantrel.reporting.description import describe
    from vantrel.storage.models import load
    from vantrel.util.locale.locale import BorrowedNamesWarning

    with reporting():
        warnings.simplefilter("ignore", BorrowedNamesWarning)  # the table of countries tells
        print_all(*describe(load(model_file), model_file))
