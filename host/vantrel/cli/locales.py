"""``vantrel locales``: the countries and locales that people can be from."""

import click

from vantrel.cli.group import TerseCommand
from vantrel.errors import UnknownPlaceError


@click.command(cls=TerseCommand)
@click.argument("country", required=False)
def locales(country: str | None) -> None:
    """List countries and whose names they get.

    Names come from Faker, by locale. A country that has no locale of its own borrows the names of
    another one. COUNTRY asks for all locales of one country, or for one locale. It may be written
    as in a table: BR, BRA, Brazil, Brasil, pt_BR.

    \b
    Example:
      vantrel locales Switzerland
    """
    from vantrel.cli.console import print_all
    from vantrel.reporting.places import all_countries, one_place

    try:
        print_all(all_countries() if country is None else one_place(country))
    except UnknownPlaceError as error:
        raise click.UsageError(str(error)) from error
