"""A config that shows where each of its values ends up in a person model."""

from typing import Any

from vantrel.config import PersonModelConfig
from vantrel.model.models.person import PersonModel

SETTINGS = [
    "mobile_number_format",
    "home_number_format",
    "work_number_format",
    "dict_cache_size",
    "pwd_length",
]
CONFIG = PersonModelConfig(
    gender_female_regex="gf",
    gender_male_regex="gm",
    gender_non_binary_regex="gn",
    title_female_regex="tf",
    title_male_regex="tm",
    title_non_binary_regex="tn",
    genders=["F", "M", "NB"],
    mobile_number_format="m",
    home_number_format="h",
    work_number_format="w",
    dict_cache_size=7,
    pwd_length=(1, 2),
)


def patterns(model: PersonModel) -> tuple[Any, ...]:
    """The patterns of the hidden gender model: female, male, non-binary."""
    hidden: Any = model.hidden_model_gender
    return hidden.regex_female, hidden.regex_male, hidden.regex_non_binary
