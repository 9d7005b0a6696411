"""Whole columns against single calls: Faker instances as users change them, several ways at once."""

from collections import OrderedDict
from typing import Any

import pytest
from hypothesis import HealthCheck, given, settings
from hypothesis import strategies as st

from support.counting import FAKER, calls_of
from support.made_up_providers import CHANGES, Seen
from support.twins import described, described_error, made_both_ways, same_both_ways
from support.whole_columns import (
    FAKER_MAKERS,
    MAKERS,
    countries,
    genders,
    in_turn,
    model_with,
    names,
    new_faker,
    provider,
)
from vantrel.model.models.person import PersonModel

LOCALES = {"GB": "en_GB", "US": "en_US", "CN": "zh_CN", "JP": "ja_JP"}
Steps = list[tuple[str, str]]


def mixed() -> PersonModel:
    return model_with({country: new_faker(locale) for country, locale in LOCALES.items()})


def played(steps: Steps, rows: int, makers: list[str]) -> list[Any]:
    """What the makers give one after the other, with the order of the calls and the states of all sources."""
    model, seen = mixed(), Seen()
    for change, country in steps:
        CHANGES[change](model, country, seen)
    made: list[Any] = []
    for maker in makers:
        try:
            made.append(described(MAKERS[maker](model, rows)))
        except Exception as error:  # noqa: BLE001 - whatever it is, both ways must raise it
            made.append(described_error(error))
    fakers = [getattr(faker, "_proxy", faker) for faker in model.country_to_provider_map.values()]
    return [*made, seen, [hash(faker.random.getstate()) for faker in fakers]]


@pytest.mark.parametrize("change", CHANGES)
@pytest.mark.parametrize("country", ["US", "CN", "JP"])
def test_one_change(change: str, country: str) -> None:
    made_both_ways(lambda: played([(change, country)], 40, ["first_names", "last_names", "emails"]))


@pytest.mark.parametrize("source", ["is seeded", "has another source"])
@pytest.mark.parametrize("change", CHANGES)
def test_the_same_change_in_countries_with_sources_of_their_own(change: str, source: str) -> None:
    steps = [(step, country) for country in ("GB", "US") for step in (source, change)]
    made_both_ways(lambda: played(steps, 40, ["first_names", "last_names", "emails"]))


@settings(max_examples=60, suppress_health_check=[HealthCheck.too_slow])
@given(
    st.lists(st.tuples(st.sampled_from(list(CHANGES)), st.sampled_from(list(LOCALES))), max_size=4),
    st.integers(0, 60),
    st.lists(st.sampled_from(FAKER_MAKERS), min_size=1, max_size=3),
    st.integers(0, 2**32 - 1),
)
def test_several_changes(steps: Steps, rows: int, makers: list[str], seed: int) -> None:
    same_both_ways(lambda: played(steps, rows, makers), seed=seed)


def test_an_exception_of_a_called_method_is_the_callers_after_as_many_calls() -> None:
    made = made_both_ways(lambda: played([("fails in last_name", "JP")], 60, ["last_names"]))
    assert made[0][:2] == (LookupError, "call 4 of last_name in JP")
    assert len(made[1]) == 4


def test_a_table_that_nothing_was_drawn_from_stays_as_it_is() -> None:
    model = mixed()
    table = OrderedDict([("Ann", 1.0), ("Bo", 0.0)])
    provider(model, "person", "US").first_names_female = table
    keys = in_turn(["M"], 40)

    def drawn_and_changed() -> list[Any]:
        vars(table).pop("_key_cache", None)
        table.pop("Cy", None)
        made = [model.generate_first_names(keys, countries(model, 40)), "_key_cache" in vars(table)]
        table["Cy"] = 1.0
        return [*made, model.generate_first_names(in_turn(["F"], 40), countries(model, 40))]

    assert made_both_ways(drawn_and_changed, model)[1] is False


def test_the_keys_of_a_table_that_was_drawn_from_are_kept() -> None:
    model = mixed()
    table = OrderedDict([("Ann", 1.0), ("Bo", 0.0)])
    provider(model, "person", "US").last_names = table

    def kept() -> Any:
        vars(table).pop("_key_cache", None)
        model.generate_last_names(names(40), countries(model, 40))
        return vars(table)["_key_cache"]

    assert made_both_ways(kept, model) == ("Ann", "Bo")


def test_a_provider_added_for_something_else_slows_nothing_down() -> None:
    model = mixed()
    del model.country_to_provider_map["JP"]
    CHANGES["replaces company"](model, "US", [])
    rows = 2000
    assert (
        calls_of(lambda: model.generate_first_names(genders(rows), countries(model, rows)), FAKER)
        < rows
    )
