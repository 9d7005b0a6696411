"""Models and tables of people that the tests start from."""

from collections.abc import Iterable
from typing import Any

import pandas as pd

from vantrel.config import PersonLabels, PersonModelConfig
from vantrel.metadata.value import Person
from vantrel.model.models.person import PersonModel

ALL_LABELS = PersonLabels(
    gender="gender",
    title="title",
    firstname="first",
    lastname="last",
    fullname="full",
    email="email",
    username="user",
    password="password",
    mobile_number="mobile",
    home_number="home",
    work_number="work",
    country="country",
)


def people(rows: int = 12, countries: Iterable[str] = ("GB", "US", "DE")) -> pd.DataFrame:
    """A small table with a gender, a title and a country column; nothing is missing."""
    genders = ["female", "male", "nb"]
    titles = ["Mrs", "Mr", "Mx", "Dr"]
    places = list(countries)
    return pd.DataFrame(
        {
            "gender": [genders[i % len(genders)] for i in range(rows)],
            "title": [titles[i % len(titles)] for i in range(rows)],
            "country": [places[i % len(places)] for i in range(rows)],
        }
    )


def person_model(
    labels: PersonLabels = ALL_LABELS, config: PersonModelConfig | None = None, **meta: Any
) -> PersonModel:
    """A model that has not been fitted."""
    given = {} if config is None else {"config": config}
    return PersonModel(meta=Person("person", labels, **meta), **given)


def fitted_model(
    labels: PersonLabels = ALL_LABELS,
    table: pd.DataFrame | None = None,
    config: PersonModelConfig | None = None,
    **meta: Any,
) -> PersonModel:
    """A model fitted on a table of people."""
    return person_model(labels, config, **meta).fit(people() if table is None else table)
