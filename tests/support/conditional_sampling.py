"""Models and conditions for conditional sampling."""

from functools import cache
from typing import Any

import pandas as pd
from faker import Faker

from support.people import ALL_LABELS, people, person_model
from support.recording import Calls
from vantrel.config import PersonLabels, PersonModelConfig
from vantrel.model.models.person import PersonModel

# The fields in the order in which their columns are made.
FIELDS = ["gender", "title", "country", "firstname", "lastname", "fullname", "email", "username"]
FIELDS += ["password", "mobile_number", "home_number", "work_number"]
GENERATORS = ["generate_values_from_collections", "generate_first_names", "generate_last_names"]
GENERATORS += ["generate_emails", "generate_usernames", "generate_passwords"]
GENERATORS += ["generate_phone_numbers"]
COUNTRIES = ["GB", "US", "DE"]
KEYS = ["F", "M", "NB", "A", None]
CONFIG = PersonModelConfig(
    title_female_regex="^(mrs|dr)$",
    title_male_regex="^(mr|dr)$",
    title_non_binary_regex="^mx$",
    mobile_number_format="+44 7xxx xxx",
    home_number_format="01-xx",
    work_number_format="none",
)


@cache
def providers() -> dict[str, Faker]:
    """A Faker instance for each country, made once."""
    return {"GB": Faker("en_GB"), "US": Faker("en_US"), "DE": Faker("de_DE")}


def only(*names: str) -> PersonLabels:
    """Labels for these fields alone."""
    return PersonLabels(**{name: getattr(ALL_LABELS, name) for name in names})


def without(left_out: str) -> PersonLabels:
    """Labels for every field but this one."""
    return only(*[name for name in FIELDS if name != left_out])


LABEL_SETS = {
    "all": ALL_LABELS,
    "none": PersonLabels(),
    **{f"only {name}": only(name) for name in FIELDS},
    **{f"without {name}": without(name) for name in FIELDS},
}


def model_of(
    labels: PersonLabels = ALL_LABELS,
    config: PersonModelConfig = CONFIG,
    cls: type[PersonModel] = PersonModel,
) -> PersonModel:
    """A model that knows its categories and has a provider for each country."""
    model = cls(person_model(labels).meta, config)
    model.meta.extract(people())
    model.country_to_provider_map = providers()
    return model


def genders(rows: int, keys: list[Any] | None = None) -> pd.Series:
    """The gender keys in turn; by default every key, also the missing one."""
    keys = KEYS if keys is None else keys
    return pd.Series([keys[i % len(keys)] for i in range(rows)], dtype=object)


def countries(rows: int) -> pd.Series:
    """The countries in turn."""
    return pd.Series([COUNTRIES[i % 3] for i in range(rows)], dtype=object)


def sampled(model: PersonModel, rows: int = 5, **given: Any) -> pd.DataFrame:
    """What conditional sampling makes, for genders and countries in turn unless others are given."""
    given = {"gender_conditions": genders(rows), "country_conditions": countries(rows)} | given
    return model._sample_conditional(num_rows=rows, **given)


def columns_of(labels: PersonLabels) -> list[str]:
    """The labelled columns in the order in which they are made."""
    return [getattr(labels, name) for name in FIELDS if getattr(labels, name) is not None]


def noting_model(calls: Calls, labels: PersonLabels = ALL_LABELS) -> PersonModel:
    """A model that notes the calls of its generators, which work as ever."""
    model = model_of(labels)
    for name in GENERATORS:
        setattr(model, name, calls.recorder(name, getattr(model, name)))
    return model
