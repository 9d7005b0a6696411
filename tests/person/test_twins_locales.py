"""Whole columns against single calls: every locale of Faker, its several locales and its seeds."""

from functools import cache

import pytest
from faker.config import AVAILABLE_LOCALES

from support.twins import made_both_ways, same_both_ways
from support.whole_columns import (
    FAKER_MAKERS,
    MAKERS,
    countries,
    genders,
    making,
    model_with,
    new_faker,
    new_fakers,
)
from vantrel.model.models.person import PersonModel

EVERY_LOCALE = sorted(AVAILABLE_LOCALES)


faker_of = cache(new_faker)


def model_of_every_locale() -> PersonModel:
    return model_with({locale: faker_of(locale) for locale in EVERY_LOCALE})


def test_enough_locales_are_known() -> None:
    assert len(EVERY_LOCALE) >= 40


@pytest.mark.parametrize("locale", EVERY_LOCALE)
def test_a_locale_alone(locale: str) -> None:
    model = model_with({locale: faker_of(locale)})
    frame = made_both_ways(making("conditional", model, 24), model)
    assert frame["email"].notna().sum() > 0


@pytest.mark.parametrize("seed", range(4))
@pytest.mark.parametrize("maker", ["first_names", "last_names", "emails"])
def test_all_locales_in_turn(maker: str, seed: int) -> None:
    model = model_of_every_locale()
    column = made_both_ways(making(maker, model, 2 * len(EVERY_LOCALE)), model, seed)
    assert column.nunique() > len(EVERY_LOCALE)


@pytest.mark.parametrize("maker", ["first_names", "last_names", "emails"])
def test_separately_seeded_instances(maker: str) -> None:
    providers = new_fakers()
    for instance in providers.values():
        instance.seed_instance(3)
    model = model_with(providers)
    made_both_ways(making(maker, model, 200), model)
    assert len({id(instance.random) for instance in providers.values()}) == len(providers)


@pytest.mark.parametrize("maker", FAKER_MAKERS)
def test_one_of_the_instances_seeded_and_the_others_sharing(maker: str) -> None:
    providers = new_fakers()
    providers["US"].seed_instance(3)
    model = model_with(providers)
    made_both_ways(making(maker, model, 60), model)


@pytest.mark.parametrize("maker", FAKER_MAKERS)
def test_two_instances_sharing_a_source_of_their_own(maker: str) -> None:
    providers = new_fakers()
    providers["US"].seed_instance(3)
    providers["CN"].random = providers["US"].random
    model = model_with(providers)
    made_both_ways(making(maker, model, 60), model)


@pytest.mark.parametrize("maker", FAKER_MAKERS)
def test_countries_that_share_one_instance(maker: str) -> None:
    british = new_faker("en_GB")
    model = model_with({"GB": british, "UK": british, "IE": british, "DE": new_faker("de_DE")})
    made_both_ways(making(maker, model, 60), model)


@pytest.mark.parametrize("maker", FAKER_MAKERS)
def test_instances_without_weights(maker: str) -> None:
    model = model_with(new_fakers(use_weighting=False))
    made_both_ways(making(maker, model, 60), model)


@pytest.mark.parametrize("maker", FAKER_MAKERS)
@pytest.mark.parametrize(
    "locale",
    [["en_GB", "de_DE", "zh_CN"], {"fr_FR": 1, "ja_JP": 3}, ["en_US", "en_US"], None, "de-DE"],
    ids=str,
)
def test_an_instance_of_several_locales_or_an_unusual_name(locale: object, maker: str) -> None:
    model = model_with({"mixed": new_faker(locale), "GB": new_faker("en_GB")})
    made_both_ways(making(maker, model, 40), model)


@pytest.mark.parametrize("maker", FAKER_MAKERS)
def test_proxies_of_an_instance(maker: str) -> None:
    model = model_with({"one": new_faker("en_GB").optional, "two": new_faker(["it_IT"])["it_IT"]})
    same_both_ways(making(maker, model, 40), model)


def test_unique_names_until_they_run_out() -> None:
    model = model_with({"GB": new_faker("en_GB")})
    instance = model.country_to_provider_map["GB"]

    def draw() -> object:
        instance.unique.clear()
        model.country_to_provider_map = {"GB": instance.unique}
        made = model.generate_last_names(genders(100), countries(model, 100))
        model.country_to_provider_map = {"GB": instance}
        return made

    assert made_both_ways(draw, model).dropna().is_unique


@pytest.mark.parametrize("key", ["F", "M", "NB", "A", None])
def test_first_names_of_one_gender(key: str | None) -> None:
    model = model_of_every_locale()
    rows = len(EVERY_LOCALE)
    keys = genders(rows).where([False] * rows, key)
    made_both_ways(lambda: model.generate_first_names(keys, countries(model, rows)), model)


@pytest.mark.parametrize("seed", [0, 2**32 - 1, 7])
@pytest.mark.parametrize("maker", MAKERS)
def test_several_seeds(maker: str, seed: int) -> None:
    model = model_with(new_fakers())
    made_both_ways(making(maker, model, 40), model, seed)
