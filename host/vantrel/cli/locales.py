"""``vantrel locales``: the countries and locales that people can be from."""

import click

from vantrel.cli.main import reporting


@click.command()
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
    from vantrel.cli.place_tables import all_countries, one_country, some_locales
    from vantrel.util.locale.locale import recognise, refuse_unknown

    if country is None:
        with reporting():
            print_all(*all_countries())
        return
    try:
        refuse_unknown([country])
    except ValueError as error:
        raise click.UsageError(str(error)) from error
    found = recognise(country)
    assert found is not None
    with reporting():
        print_all(*(one_country(found.country) if found.country else some_locales([found.locale])))
