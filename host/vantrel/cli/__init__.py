"""The command ``vantrel``."""

import click

from vantrel import __version__
from vantrel.cli.fit import fit
from vantrel.cli.group import TerseGroup
from vantrel.cli.locales import locales
from vantrel.cli.people import people
from vantrel.cli.replace import replace
from vantrel.cli.report import report
from vantrel.cli.sample import sample
from vantrel.cli.show import show


@click.group(cls=TerseGroup)
@click.version_option(__version__)
def main() -> None:
    """Replace the real people of tables, or make people like those of a table."""


for command in (replace, fit, sample, people, report, show, locales):
    main.add_command(command)
