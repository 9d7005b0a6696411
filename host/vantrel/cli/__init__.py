"""The command ``vantrel``."""

import click

from vantrel import __version__
from vantrel.cli.fit import fit
from vantrel.cli.group import TerseGroup
from vantrel.cli.locales import locales
from vantrel.cli.people import people
from vantrel.cli.report import report
from vantrel.cli.sample import sample
from vantrel.cli.show import show


@click.group(cls=TerseGroup)
@click.version_option(__version__)
def main() -> None:
    """Learn from a table of real people, then make people who are as frequent and not real."""


for command in (fit, sample, people, report, show, locales):
    main.add_command(command)
