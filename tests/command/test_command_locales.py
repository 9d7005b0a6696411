"""``vantrel locales``, as a shell runs it."""

import re

import pytest

from support.command import fail, shell, succeed, terminal
from vantrel.util.locale.countries import country_codes
from vantrel.util.locale.locale import Provider, get_supported_country_codes, locale_of


def test_every_country_is_listed_with_whose_names_it_gets() -> None:
    heading, *lines, blank, count = succeed("locales").stdout.splitlines()
    assert heading.split("  ")[0] == "Code"
    rows = [re.split(r" {2,}", line) for line in lines]
    assert {row[0] for row in rows} == set(country_codes().values())
    own = get_supported_country_codes(Provider.PERSON)
    for code, _, names_of, own_locales in rows:
        assert names_of == locale_of(code)[0]
        assert own_locales == (", ".join(own[code]) if code in own else "none: borrowed")
    assert blank == ""
    assert count == f"{len(rows)} countries, {len(own)} of them with names of their own"


def test_countries_are_listed_by_name_without_regard_to_accents() -> None:
    lines = succeed("locales").stdout.splitlines()
    names = [re.split(r" {2,}", line)[1] for line in lines[1:5]]
    assert names == ["Afghanistan", "Åland Islands", "Albania", "Algeria"]


@pytest.mark.parametrize("country", ["CH", "che", "Switzerland", "'the  SWITZERLAND'", "Svizzera"])
def test_one_country_with_all_its_locales(country: str) -> None:
    assert succeed(f"locales {country}").stdout.splitlines() == [
        "Country   Switzerland (CH)",
        "Names of  de_CH",
        "",
        "Its locales",
        "Locale  Names of",
        "de_CH   de_CH     own",
        "fr_CH   fr_CH     own",
        "it_CH   it_IT     borrowed",
    ]


def test_a_country_that_borrows() -> None:
    assert succeed("locales AU").stdout.splitlines() == [
        "Country   Australia (AU)",
        "Names of  en_GB (borrowed: Faker has none of this country)",
        "",
        "Its locales",
        "Locale  Names of",
        "en_AU   en_GB     borrowed",
    ]


def test_a_country_without_locales() -> None:
    assert succeed("locales Zimbabwe").stdout.splitlines() == [
        "Country   Zimbabwe (ZW)",
        "Names of  en_GB (borrowed: Faker has none of this country)",
    ]


@pytest.mark.parametrize("locale", ["pt_BR", "pt-br", "PT_BR"])
def test_one_locale(locale: str) -> None:
    assert succeed(f"locales {locale}").stdout.splitlines() == [
        "Locale  Names of",
        "pt_BR   pt_BR     own",
    ]


@pytest.mark.parametrize(
    ("line", "message"),
    [
        (
            "locales Germny",
            "'Germny' is neither a country nor a locale. Did you mean 'Germany'? Write a country as"
            " its ISO code, its English name or its name in its own language, a locale as 'en_GB'.",
        ),
        (
            "locales ''",
            "'' is neither a country nor a locale. Write a country as its ISO code, its English"
            " name or its name in its own language, a locale as 'en_GB'.",
        ),
        ("locales DE FR", "Got unexpected extra argument (FR)"),
    ],
)
def test_bad_calls(line: str, message: str) -> None:
    assert fail(line, 2) == message


def test_the_shell_lists_plainly() -> None:
    result = shell("locales")
    assert (result.returncode, result.stderr) == (0, "")
    assert result.stdout == succeed("locales").stdout
    assert "\x1b" not in result.stdout
    assert shell("locales Germny").returncode == 2


@pytest.mark.parametrize("width", [60, 200])
@pytest.mark.parametrize("line", ["locales", "locales AU"])
def test_in_a_terminal(line: str, width: int) -> None:
    coloured = terminal(line, width)
    plain = re.sub(r"\x1b\[[\d;]*m", "", coloured)
    assert plain != coloured
    assert max(map(len, plain.splitlines())) <= width
    if width == 200:
        assert re.sub(" +\n", "\n", plain) == succeed(line).stdout


def test_help_has_an_example() -> None:
    assert "Example:\n    vantrel locales Switzerland\n" in succeed("locales --help").stdout


@pytest.mark.parametrize("width", ["60", "80"])
def test_the_group_lists_these_commands_uncut(width: str) -> None:
    lines = [
        line.split(maxsplit=1) for line in succeed("--help", COLUMNS=width).stdout.splitlines()
    ]
    told = {line[0]: line[1] for line in lines if len(line) == 2}
    assert told["fit"] == "Learn from a table and write a model file."
    assert told["locales"] == "List countries and whose names they get."
    assert told["show"] == "Show what a model has learnt."
