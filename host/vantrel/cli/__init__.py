"""The command ``vantrel``."""

import click

from vantrel import __version__
from vantrel.cli.fit import fit
from vantrel.cli.locales import locales
from vantrel.cli.report import report
from vantrel.cli.sample import sample
from vantrel.cli.show import show
from vantrel.cli.main import TerseGroup


@click.group(cls=TerseGroup)
@click.version_option(__version__)
def main() -> None:
    """Learn from a table of real people, then make people who are as frequent and not real."""


main.add_command(fit)
main.add_command(sample)
main.add_command(report)
main.add_command(show)
main.add_command(locales)
