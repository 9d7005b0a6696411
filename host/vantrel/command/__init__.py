"""The command ``vantrel``."""

import click

from vantrel import __version__
from vantrel.command.fit import fit
from vantrel.command.locales import locales
from vantrel.command.report import report
from vantrel.command.sample import sample
from vantrel.command.show import show
from vantrel.command.terse import TerseGroup


@click.group(cls=TerseGroup)
@click.version_option(__version__)
def main() -> None:
    """Learn from a table of real people, then make people who are as frequent and not real."""


main.add_command(fit)
main.add_command(sample)
main.add_command(report)
main.add_command(show)
main.add_command(locales)
