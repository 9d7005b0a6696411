"""The model, the people and the columns that the benchmarks work on."""

from __future__ import annotations

from collections.abc import Callable, Sequence
from dataclasses import dataclass
from typing import Any

import pandas as pd

from vantrel.config import PersonLabels
from vantrel.metadata.value import Person
from vantrel.model.models.person import PersonModel

MIXED = ("GB", "US", "DE")

TWELVE = PersonLabels(
    gender="gender",
    title="title",
    firstname="firstname",
    lastname="lastname",
    fullname="fullname",
    email="email",
    username="username",
    password="password",
    mobile_number="mobile_number",
    home_number="home_number",
    work_number="work_number",
    country="country",
)


def people(rows: int, countries: Sequence[str] = MIXED) -> pd.DataFrame:
    """Gives so many people's gender, title and country; nothing is missing."""
    genders = ["female", "male", "non-binary"]
    titles = ["Mrs", "Mr", "Mx", "Dr"]
    columns = {"gender": genders, "title": titles, "country": countries}
    return pd.DataFrame(
        {name: [values[i % len(values)] for i in range(rows)] for name, values in columns.items()}
    )


def fitted_model(countries: Sequence[str] = MIXED) -> PersonModel:
    """Gives a model of all twelve columns, fitted on people of these countries."""
    return PersonModel(Person("person", TWELVE)).fit(people(12 * len(countries), countries))


@dataclass(frozen=True)
class Generator:
    """One generator of the model, with columns to work on.

    Attributes:
        name: What it makes.
        make: Makes one column.
    """

    name: str
    make: Callable[[], pd.Series[Any]]


def generators(model: PersonModel, rows: int) -> list[Generator]:
    """Lists the generators that are measured alone, on columns of so many rows."""
    genders = pd.Series([("F", "M", "NB")[i % 3] for i in range(rows)])
    # Both columns repeat after three rows: shuffled, so that each gender meets each country.
    countries = people(rows)["country"].sample(frac=1, random_state=1, ignore_index=True)
    firstnames = model.generate_first_names(genders, countries)
    lastnames = model.generate_last_names(firstnames, countries)
    missing = firstnames.isna()
    return [
        Generator("first names", lambda: model.generate_first_names(genders, countries)),
        Generator("e-mails", lambda: model.generate_emails(firstnames, lastnames, countries)),
        Generator("usernames", lambda: model.generate_usernames(firstnames, lastnames)),
        Generator("passwords", lambda: model.generate_passwords(firstnames)),
        Generator("phone numbers", lambda: model.generate_phone_numbers(missing)),
    ]
