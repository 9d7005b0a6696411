"""What the generators of a person's attributes mean, in plain Python: oracles for the module.

Each function takes the model where the method takes `self`, and calls other methods through it,
so that a subclass changes both alike.
"""

import random
import re
import string
from collections.abc import Iterator
from typing import Any

import numpy as np
import pandas as pd

from vantrel.model.models.person import GenderModel, PersonModel

Column = pd.Series

DASH_WORD = r"[A-Za-z0-9](?:[A-Za-z0-9-]*[A-Za-z0-9])?"
IP_NUMBER = "(2(5[0-5]|[0-4][0-9])|1[0-9][0-9]|[1-9]?[0-9])"
EMAIL_PATTERN = (
    r"""(?:[\w!#$%&'*+/=?^`{|}~-]+(?:\.[\w!#$%&'*+/=?^`{|}~-]+)*"""
    r"""|"(?:[^\0\s"\\]|\\[^\0\n\r])*")@(?:(?:"""
    + DASH_WORD
    + r"\.)+"
    + DASH_WORD
    + r"|\[(?:(?:"
    + IP_NUMBER
    + r")\.){3}(?:"
    + IP_NUMBER
    + r"|[A-Za-z\d-]*[A-Za-z\d]:(?:[^\0\s\[\\\]]|\\[^\0\n\r])+)\])"
)


def random_first_name(model: PersonModel, gender: Any, country: str) -> str | None:
    """A name that suits one gender key and one country."""
    faker = model.country_to_provider_map[country]
    if (
        pd.isna(gender)
        or gender == GenderModel.key_non_binary
        or gender == GenderModel.key_ambiguous
    ):
        return faker.first_name()
    if gender == GenderModel.key_male:
        return faker.first_name_male()
    if gender == GenderModel.key_female:
        return faker.first_name_female()
    raise ValueError("Unrecognised gender: {gender}")


def first_names(model: PersonModel, genders: Column, countries: Column) -> Column:
    """One name for each pair, drawn while the series is made."""
    return pd.Series(
        model.generate_random_first_name(gender, country)
        for gender, country in zip(genders, countries, strict=False)
    )


def last_names(model: PersonModel, firstnames: Column, countries: Column) -> Column:
    """One name for each country; missing where the first name is."""
    drawn = [model.country_to_provider_map[country].last_name() for country in countries]
    lastnames = pd.Series(data=drawn)
    lastnames.loc[firstnames.isna()] = pd.NA
    return lastnames


def separated(x: Any) -> Any:
    """The separator step."""
    return x + np.random.choice(["", ".", "-", "_"]) if pd.notna(x) else x


def perhaps_numbered(x: Any) -> Any:
    """The number step: the number is drawn even where it is then left out."""
    return x + str(random.randint(0, 100)) * random.randint(0, 1) if pd.notna(x) else x


def usernames(firstnames: Column, lastnames: Column) -> Column:
    """First name, separator, last name, perhaps a number; clashes get further numbers."""
    names = firstnames.apply(separated).astype(dtype="string").str.cat(others=lastnames)
    names = names.apply(perhaps_numbered)
    names = names.apply(lambda x: x.replace(" ", ""))
    while names.nunique() < sum(firstnames.notna()):
        vc = names.value_counts()
        duplicates = vc[vc > 1].index
        names[names.isin(duplicates)] = names[names.isin(duplicates)].apply(
            lambda x: x + str(random.randint(0, 100))
        )
    return names.str.lower()


def emails(model: PersonModel, firstnames: Column, lastnames: Column, countries: Column) -> Column:
    """Username, at sign, domain; checked while assertions are on."""
    domains = [model.country_to_provider_map[country].domain_name() for country in countries]
    names = model.generate_usernames(firstnames, lastnames)
    addresses = names.str.cat(others=domains, sep="@")
    if __debug__:
        present = addresses[addresses.notna()]
        if not all(present.apply(model.check_email, args=[list(model.default_locale)])):
            raise AssertionError
    return addresses


def check_email(s: str, locales: list[str]) -> bool:
    """Whether English locales accept the address; every other locale accepts all."""
    if not all("en" in locale for locale in locales):
        return True
    return re.match(EMAIL_PATTERN, s) is not None


def password(pwd_length_min: int = 8, pwd_length_max: int = 16) -> str:
    """Letters and digits."""
    pwd_length = random.randint(pwd_length_min, pwd_length_max)
    possible_chars = string.ascii_letters + string.digits
    return "".join(random.choice(possible_chars) for _ in range(pwd_length))


def passwords(model: PersonModel, firstnames: Column) -> Column:
    """One password a row, whether the name is missing or not."""
    made = [model.generate_password(*model.pwd_length) for _ in range(len(firstnames))]
    return pd.Series(made, dtype="string")


def phone_numbers(isna: Column, number_format: str = "07xxxxxxxx") -> Column:
    """The template with a digit for each x, or a missing value."""

    def numbers() -> Iterator[Any]:
        for na in isna:
            if na:
                yield pd.NA
            else:
                yield re.sub("x", lambda _: str(random.randint(0, 9)), number_format)

    return pd.Series(list(numbers()))
