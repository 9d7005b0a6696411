"""Ctrl-C in the middle of long columns."""

import random
from collections.abc import Callable, Iterable, Sequence
from typing import Any

import numpy as np
import pandas as pd
import pytest

from support.comparing import assert_identical
from support.interrupting import call_with_signals, interrupt
from support.sources import faker_randoms, seed_sources, set_states, source_states
from support.twins import call_by_call, described
from support.whole_columns import (
    COLLECTIONS,
    MAKERS,
    PATTERNS,
    countries,
    genders,
    in_turn,
    making,
    model_with,
    names,
    new_faker,
    new_fakers,
    provider,
    usual_model,
)
from vantrel.model.models.person import PersonModel

# Signals are let in every few ten thousand rows.
ROWS = 100_000

# The source behind the functions of `random`.
HIDDEN_SOURCE: random.Random = random.choice.__self__

own_sources = pytest.mark.parametrize("own_sources", [False, True], ids=["shared", "own"])

Call = tuple[Callable[..., Any], tuple[Any, ...]]

LONG_CALLS: dict[str, Callable[[PersonModel], Call]] = {
    "first_names": lambda model: (
        model.generate_first_names,
        (genders(ROWS), countries(model, ROWS)),
    ),
    "last_names": lambda model: (model.generate_last_names, (names(ROWS), countries(model, ROWS))),
    "emails": lambda model: (
        model.generate_emails,
        (names(ROWS), names(ROWS), countries(model, ROWS)),
    ),
    "usernames": lambda model: (model.generate_usernames, (names(ROWS), names(ROWS))),
    "passwords": lambda model: (model.generate_passwords, (names(ROWS),)),
    "phone_numbers": lambda model: (
        model.generate_phone_numbers,
        (in_turn([False, True], ROWS, "bool"), "xxx"),
    ),
    "values": lambda model: (model.generate_values_from_collections, (genders(ROWS), COLLECTIONS)),
    "gender_keys": lambda model: (
        model.map_to_gender_keys,
        (in_turn(["Mr", "mrs", "Mx"], ROWS), PATTERNS),
    ),
    "conditional": lambda model: (
        model._sample_conditional,
        (ROWS, genders(ROWS), countries(model, ROWS)),
    ),
    "sample": lambda model: (model.sample, (ROWS,)),
}


def interrupt_amid(maker: str, model: PersonModel) -> None:
    """Interrupts the long call amid its draws; that of gender keys draws nothing."""
    method, arguments = LONG_CALLS[maker](model)
    interrupt(
        method,
        *arguments,
        seed=lambda: seed_sources(1, model),
        states=None if maker == "gender_keys" else lambda: source_states(model),
    )


def test_every_column_is_interrupted() -> None:
    assert LONG_CALLS.keys() == MAKERS.keys()


@pytest.mark.parametrize("maker", LONG_CALLS)
def test_the_next_call_gives_what_it_would_have_given(maker: str) -> None:
    model = usual_model()
    make = making(maker, model)
    seed_sources(1, model)
    expected, states = make(), source_states(model)
    interrupt_amid(maker, model)
    seed_sources(1, model)
    assert_identical(make(), expected)
    assert source_states(model) == states


@pytest.mark.parametrize("maker", ["values", "usernames", "emails", "conditional", "sample"])
def test_numpys_source_is_free_where_signals_are_let_in(maker: str) -> None:
    """Where it is not, a process that another thread forks at that moment can never draw from it."""
    lock = np.random.mtrand._rand._bit_generator.lock
    method, arguments = LONG_CALLS[maker](usual_model())
    is_locked = getattr(lock, "_is_owned", None) or lock.locked  # of old numpy, not reentrant
    locked: list[bool] = []
    while len(locked) < 10:
        call_with_signals(lambda: locked.append(is_locked()), method, *arguments)
    assert not any(locked)


# The sources stand between two rows


class GlobalNumpy:
    """numpy's global source, read as those of `random` are."""

    def getstate(self) -> tuple[Any, ...]:
        name, keys, *rest = np.random.get_state()
        return name, keys.tobytes(), *rest


Source = random.Random | GlobalNumpy


def states_of(sources: Iterable[Source]) -> list[Any]:
    return [source.getstate() for source in sources]


def assert_between_rows(
    method: Callable[..., Any],
    *arguments: Any,
    draw_row: Callable[[int], Any],
    model: PersonModel | None = None,
    sources: Sequence[Source] = (HIDDEN_SOURCE,),
) -> None:
    """Interrupts the column, and draws row by row until the sources stand where they stood then."""

    def seed() -> None:
        seed_sources(1, model)

    interrupt(method, *arguments, seed=seed, states=lambda: states_of(sources))
    found = states_of(sources)
    seed()
    moved = [entry for entry in zip(sources, found, strict=True) if entry[0].getstate() != entry[1]]
    for row in range(ROWS):
        draw_row(row)
        if all(source.getstate() == state for source, state in moved):
            return
    raise AssertionError("the sources never stand there between two rows")


def test_passwords() -> None:
    model = usual_model()
    assert_between_rows(
        model.generate_passwords,
        names(ROWS),
        draw_row=lambda row: model.generate_password(*model.pwd_length),
    )


def test_phone_numbers() -> None:
    missing = in_turn([False, True, False], ROWS, "bool")

    def draw_row(row: int) -> None:
        if not missing[row]:
            random.randint(0, 9)
            random.randint(0, 9)

    assert_between_rows(PersonModel.generate_phone_numbers, missing, "xx", draw_row=draw_row)


def names_apart() -> tuple[pd.Series, pd.Series]:
    """Names of which no usernames come that are alike."""
    return pd.Series([f"a{row}" for row in range(ROWS)]), pd.Series(["b"] * ROWS)


def test_separators_of_usernames() -> None:
    assert_between_rows(
        PersonModel.generate_usernames,
        *names_apart(),
        sources=[GlobalNumpy()],
        draw_row=lambda row: np.random.choice(4),
    )


def test_numbers_of_usernames() -> None:
    def draw_row(row: int) -> None:
        random.randint(0, 100)
        random.randint(0, 1)

    assert_between_rows(PersonModel.generate_usernames, *names_apart(), draw_row=draw_row)


def test_sampled_rows() -> None:
    """The sources that nobody seeds anew give the same by whole columns and by single calls."""
    model = usual_model()
    interrupt_amid("sample", model)
    found = source_states(model)
    made = described(model.sample(50))
    after = source_states(model)
    assert after != found
    set_states(found, model)
    with call_by_call():
        assert described(model.sample(50)) == made
    assert source_states(model) == after


def sources_of(model: PersonModel) -> list[Source]:
    return [HIDDEN_SOURCE, *faker_randoms(model.country_to_provider_map)]


def quick_model(own_sources: bool) -> PersonModel:
    """A model whose names come from short tables, which single calls draw from in no time."""
    model = model_with(new_fakers())
    for country, faker in model.country_to_provider_map.items():
        people = provider(model, "person", country)
        people.first_names = people.first_names_male = people.first_names_female = ("A", "B", "C")
        people.last_names = ("D", "E", "F", "G", "H")
        if own_sources:
            faker.seed_instance(1)
    return model


@own_sources
def test_first_names(own_sources: bool) -> None:
    model = quick_model(own_sources)
    keys, places = genders(ROWS), countries(model, ROWS)
    assert_between_rows(
        model.generate_first_names,
        keys,
        places,
        model=model,
        sources=sources_of(model),
        draw_row=lambda row: model.generate_random_first_name(keys[row], places[row]),
    )


@own_sources
def test_last_names(own_sources: bool) -> None:
    model = quick_model(own_sources)
    places = countries(model, ROWS)
    fakers = list(model.country_to_provider_map.values())
    assert_between_rows(
        model.generate_last_names,
        names(ROWS),
        places,
        model=model,
        sources=sources_of(model),
        draw_row=lambda row: fakers[row % len(fakers)].last_name(),
    )


def test_domains_that_are_refused_for_ever() -> None:
    """In one country Faker draws a word again until it is none of the second-level domains."""
    model = model_with({"CN": new_faker("zh_CN")})
    provider(model, "internet", "CN").domain_formats = ("ac", "com")
    source = model.country_to_provider_map["CN"].random
    interrupt(
        model.generate_emails,
        names(40),
        names(40),
        in_turn(["CN"], 40),
        seed=lambda: seed_sources(1, model),
        states=source.getstate,
    )
