"""The same twelve columns as users of other libraries would make them.

Both make columns by list comprehensions over the library's own methods, with one generator for each
country that is made once. They may do less: neither sees to it that
usernames differ or that an e-mail address has anything to do with the name.
"""

from __future__ import annotations

import random
from collections.abc import Callable

import pandas as pd
from faker import Faker
from mimesis import Gender, Locale, Person

from .people import MIXED

GENDERS = ("female", "male")
# The mean of the lengths that the model draws.
PASSWORD_LENGTH = 12
PHONE_NUMBERS = {
    "mobile_number": "07########",
    "home_number": "01########",
    "work_number": "02########",
}

Sample = Callable[[int], pd.DataFrame]


def mimesis() -> Sample:
    """Gives a function that makes so many rows with mimesis."""
    locales = {"GB": Locale.EN_GB, "US": Locale.EN, "DE": Locale.DE}
    persons = {country: Person(locale) for country, locale in locales.items()}
    gender_of = {"female": Gender.FEMALE, "male": Gender.MALE}

    def sample(rows: int) -> pd.DataFrame:
        genders, countries = _drawn(rows)
        row = [(persons[c], gender_of[g]) for c, g in zip(countries, genders, strict=True)]
        person = [p for p, _ in row]
        first = [p.first_name(gender) for p, gender in row]
        last = [p.last_name(gender) for p, gender in row]
        return _frame(
            genders,
            title=[p.title(gender) for p, gender in row],
            names=(first, last),
            email=[p.email() for p in person],
            username=[p.username() for p in person],
            password=[p.password(PASSWORD_LENGTH) for p in person],
            phone_numbers=[
                [p.phone_number(form) for p in person] for form in PHONE_NUMBERS.values()
            ],
            country=countries,
        )

    return sample


def faker(use_weighting: bool) -> Sample:
    """Gives a function that makes so many rows with a plain loop over Faker's methods.

    Args:
        use_weighting: Whether names come as often as in life, as Faker does unless told otherwise.
    """
    locales = {"GB": "en_GB", "US": "en_US", "DE": "de_DE"}
    fakers = {c: Faker(locale, use_weighting=use_weighting) for c, locale in locales.items()}
    # Looking a method up costs more than calling it: once is enough.
    titles = {(c, "female"): fake.prefix_female for c, fake in fakers.items()}
    titles |= {(c, "male"): fake.prefix_male for c, fake in fakers.items()}
    first_names = {(c, "female"): fake.first_name_female for c, fake in fakers.items()}
    first_names |= {(c, "male"): fake.first_name_male for c, fake in fakers.items()}
    last_names = {c: fake.last_name for c, fake in fakers.items()}
    emails = {c: fake.email for c, fake in fakers.items()}
    usernames = {c: fake.user_name for c, fake in fakers.items()}
    password = fakers["GB"].password
    numerify = fakers["GB"].numerify

    def sample(rows: int) -> pd.DataFrame:
        genders, countries = _drawn(rows)
        row = list(zip(countries, genders, strict=True))
        first = [first_names[country, gender]() for country, gender in row]
        last = [last_names[country]() for country in countries]
        return _frame(
            genders,
            title=[titles[country, gender]() for country, gender in row],
            names=(first, last),
            email=[emails[country]() for country in countries],
            username=[usernames[country]() for country in countries],
            password=[password(PASSWORD_LENGTH, special_chars=False) for _ in range(rows)],
            phone_numbers=[
                [numerify(form) for _ in range(rows)] for form in PHONE_NUMBERS.values()
            ],
            country=countries,
        )

    return sample


def _drawn(rows: int) -> tuple[list[str], list[str]]:
    return random.choices(GENDERS, k=rows), random.choices(MIXED, k=rows)


def _frame(
    genders: list[str],
    title: list[str],
    names: tuple[list[str], list[str]],
    email: list[str],
    username: list[str],
    password: list[str],
    phone_numbers: list[list[str]],
    country: list[str],
) -> pd.DataFrame:
    first, last = names
    return pd.DataFrame(
        {
            "gender": genders,
            "title": title,
            "firstname": first,
            "lastname": last,
            "fullname": [f"{a} {b}" for a, b in zip(first, last, strict=True)],
            "email": email,
            "username": username,
            "password": password,
            **dict(zip(PHONE_NUMBERS, phone_numbers, strict=True)),
            "country": country,
        }
    )


RIVALS: dict[str, Callable[[], Sample]] = {
    "mimesis": mimesis,
    "Faker": lambda: faker(use_weighting=True),
    "Faker, unweighted": lambda: faker(use_weighting=False),
}
