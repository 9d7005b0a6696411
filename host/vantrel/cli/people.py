"""``vantrel people``: people without a table to learn from."""

from __future__ import annotations

from collections.abc import Sequence
from pathlib import Path

import click

from vantrel.cli.group import TerseCommand
from vantrel.cli.options import (
    email_domain_option,
    force_option,
    latin_option,
    list_option,
    path_option,
    phone_numbers_option,
)
from vantrel.hints import named, quoted
from vantrel.storage.files import STANDARD_STREAM
from vantrel.wording import counted, shown


def _by_share(
    _context: click.Context, option: click.Parameter, values: Sequence[str]
) -> dict[str, float] | None:
    shares: dict[str, float] = {}
    for value in values:
        _refuse_several(option, value)
        name, _, share = value.partition("=")
        if name in shares:
            raise click.BadParameter(f"{name!r} is given twice.")
        try:
            shares[name] = float(share or 1)
        except ValueError:
            raise click.BadParameter(f"{value!r} is not of the form NAME=SHARE.") from None
    return shares or None


def _by_country(
    _context: click.Context, _option: click.Parameter, values: Sequence[str]
) -> dict[str, str]:
    pairs = [value.partition("=") for value in values]
    for value, (country, _, locale) in zip(values, pairs, strict=True):
        if not (country and locale):
            raise click.BadParameter(f"{value!r} is not of the form COUNTRY=LOCALE.")
    return {country: locale for country, _, locale in pairs}


def _refuse_several(option: click.Parameter, value: str) -> None:
    """Refuses several names in one option. A country may have a comma in its own name."""
    if "," not in value:
        return
    from vantrel.util.locale.locale import unknown_places  # takes a second, and is seldom needed

    name, _, share = value.partition("=")
    if "," in share or unknown_places([name]):
        parts = [f"{option.opts[0]} {quoted(part.strip())}" for part in value.split(",")]
        raise click.BadParameter(
            f"{shown(repr(value))} is several names: repeat the option, {shown(' '.join(parts))}."
        )


@click.command(cls=TerseCommand)
@click.option(
    "-n", metavar="N", type=click.IntRange(min=0), required=True, help="The number of people."
)
@click.option(
    "--country",
    "countries",
    multiple=True,
    metavar="COUNTRY=SHARE",
    callback=_by_share,
    help="A country and how frequent it is beside others; may be repeated. [default: GB]",
)
@click.option(
    "--gender",
    "genders",
    multiple=True,
    metavar="GENDER=SHARE",
    callback=_by_share,
    help="The same for a gender. [default: F and M]",
)
@list_option("--columns", "The attributes to make, in this order; all if left out.")
@click.option(
    "--seed",
    metavar="SEED",
    type=click.IntRange(min=0),
    help="Makes the people reproducible. Without one, a seed is drawn and told.",
)
@click.option(
    "--locale",
    "locales",
    multiple=True,
    metavar="COUNTRY=LOCALE",
    callback=_by_country,
    help="The locale whose names people of a country get, as in India=en_IN; may be repeated.",
)
@email_domain_option
@phone_numbers_option
@latin_option
@path_option(
    "-o",
    "--output",
    metavar="PEOPLE",
    help="The table to write. [default: standard output, as CSV]",
)
@force_option
def people(
    n: int,
    countries: dict[str, float] | None,
    genders: dict[str, float] | None,
    columns: list[str],
    seed: int | None,
    locales: dict[str, str],
    email_domain: str | None,
    phone_numbers: str | None,
    latin: bool,
    output: Path | None,
    force: bool,
) -> None:
    """Make people without a table to learn from.

    \b
    Examples:
      vantrel people -n 1000 --country DE=3 --country GB=1 --seed 7 -o people.csv
      vantrel people -n 5 --columns firstname,lastname,email
    """
    target = output or STANDARD_STREAM

    # These take a second to import; help and usage errors need not wait for them.
    from vantrel.cli.console import progress
    from vantrel.rows import RESERVED
    from vantrel.without_table import people_to_file

    drawn_from = people_to_file(
        target,
        n,
        countries=countries,
        genders=genders,
        columns=columns or None,
        seed=seed,
        locales=locales,
        email_domain=email_domain or RESERVED,
        phone_numbers=phone_numbers or "fiction",
        latin=latin,
        force=force,
        progress=progress,
    )
    if target != STANDARD_STREAM:
        made = counted(n, "person", "people")
        click.echo(f"Made {made} with the seed {drawn_from}; wrote {named(target)}.")
    elif seed is None:
        click.echo(f"vantrel: note: the seed is {drawn_from}", err=True)
