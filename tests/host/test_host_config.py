"""The configuration records and their default patterns."""

import json
from dataclasses import asdict, fields

import pytest

from vantrel.config import PersonLabels, PersonModelConfig
from vantrel.util.person import collections_from_mapping


def sorted_by(config_prefix: str, values: list[str]) -> dict[str, list[str]]:
    config = asdict(PersonModelConfig())
    mapping = {
        "F": config[f"{config_prefix}_female_regex"],
        "M": config[f"{config_prefix}_male_regex"],
        "NB": config[f"{config_prefix}_non_binary_regex"],
    }
    return collections_from_mapping(values, mapping, "A")


def test_labels_stand_in_the_order_in_which_columns_are_listed() -> None:
    assert [field.name for field in fields(PersonLabels)] == [
        "gender",
        "title",
        "firstname",
        "lastname",
        "fullname",
        "email",
        "username",
        "password",
        "mobile_number",
        "home_number",
        "work_number",
        "country",
    ]
    assert set(vars(PersonLabels()).values()) == {None}


def test_configuration_survives_json() -> None:
    config = PersonModelConfig(pwd_length=(3, 4), genders=["NB"], dict_cache_size=5)
    assert PersonModelConfig(**json.loads(json.dumps(asdict(config)))) == config


def test_configurations_do_not_share_their_genders() -> None:
    PersonModelConfig().genders.append("X")
    assert PersonModelConfig().genders == ["F", "M"]


def test_titles_of_a_passenger_list() -> None:
    women = ["Miss", "Mrs", "Ms", "Mlle", "Madame", "Lady", "the Countess"]
    men = ["Mr", "Master", "Sir", "Jonkheer"]
    eithers = ["Rev", "Dr", "Major", "Colonel", "Col", "Captain"]
    assert sorted_by("title", women + men + eithers) == {
        "F": women,
        "M": men,
        "NB": [],
        "A": eithers,
    }


def test_titles_with_dots_blanks_ranks_and_neutral_ones() -> None:
    found = sorted_by("title", [" mrs. ", "MR.", "Mx", "Ind", "Prof. Dr.", "Lt Col", "Baker"])
    assert found == {
        "F": [" mrs. "],
        "M": ["MR."],
        "NB": ["Mx", "Ind"],
        "A": ["Prof. Dr.", "Lt Col"],
    }


def test_genders_in_many_spellings() -> None:
    women = ["F", "female", "Woman", "trans woman", "weiblich", "Frau", "She/Her"]
    men = ["M", "MALE", "man", "cis-male", "männlich", "Homme"]
    others = ["NB", "non-binary", "Nonbinary", "X", "other", "two spirit", "they"]
    unknown = ["", "U", "unknown", "femalemale", "1"]
    assert sorted_by("gender", women + men + others + unknown) == {
        "F": women,
        "M": men,
        "NB": others,
        "A": [],
    }


@pytest.mark.parametrize("prefix", ["gender", "title"])
@pytest.mark.parametrize("unit", [" ", ".", "dr ", "dr", ". "])
def test_patterns_are_quick_on_long_values_that_just_fail(prefix: str, unit: str) -> None:
    # A pattern that went back over its steps would not come to an end within any patience.
    assert not any(sorted_by(prefix, [unit * 20_000 + "!"]).values())
