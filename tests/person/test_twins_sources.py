"""Whole columns against single calls: random sources that were replaced or have something saved."""

import random
import string
from collections.abc import Callable, Iterator
from contextlib import ExitStack, contextmanager
from typing import Any, ClassVar

import faker.generator
import numpy as np
import pytest
from faker.providers import BaseProvider
from numpy.random.bit_generator import BitGenerator

from support.twins import Surroundings, made_both_ways, same_both_ways
from support.whole_columns import (
    FAKER_MAKERS,
    MAKERS,
    making,
    model_after_use,
    noting,
    usual_model,
)
from vantrel.model.models.person import PersonModel

# The source behind the functions of `random`.
HIDDEN_SOURCE: random.Random = random.choice.__self__
FUNCTIONS = ["choice", "choices", "randint", "randrange", "random", "getrandbits"]
SOURCE_METHODS = [*FUNCTIONS, "_randbelow"]


@pytest.mark.parametrize("maker", MAKERS)
@pytest.mark.parametrize("name", FUNCTIONS)
def test_a_function_of_random_replaced(name: str, maker: str) -> None:
    model = usual_model()
    made_both_ways(making(maker, model), model, within=noting(random, name))


@pytest.mark.parametrize("maker", MAKERS)
@pytest.mark.parametrize("name", [*SOURCE_METHODS, "_randbelow_with_getrandbits"])
def test_a_method_replaced_on_the_class_of_sources(name: str, maker: str) -> None:
    model = usual_model()
    made_both_ways(making(maker, model), model, within=noting(random.Random, name))


@pytest.mark.parametrize("maker", MAKERS)
@pytest.mark.parametrize("name", SOURCE_METHODS)
def test_a_method_replaced_on_the_source_behind_random(name: str, maker: str) -> None:
    model = usual_model()
    made_both_ways(making(maker, model), model, within=noting(HIDDEN_SOURCE, name))


@pytest.mark.parametrize("maker", FAKER_MAKERS)
@pytest.mark.parametrize("name", SOURCE_METHODS)
def test_a_method_replaced_on_the_source_of_faker(name: str, maker: str) -> None:
    model = usual_model()
    made_both_ways(making(maker, model), model, within=noting(faker.generator.random, name))


@pytest.mark.parametrize("maker", ["passwords", "phone_numbers", "usernames", "conditional"])
@pytest.mark.parametrize("name", ["choice", "randint"])
def test_functions_of_another_source_put_into_random(name: str, maker: str) -> None:
    model = usual_model()
    other = random.Random()

    @contextmanager
    def change() -> Iterator[Any]:
        other.seed(5)
        states = [other.getstate()]
        with noting(random, name, lambda genuine: getattr(other, name))():
            yield states
            states[0] = other.getstate()

    def draw() -> Any:
        return [making(maker, model)(), other.getstate()]

    made_both_ways(draw, model, within=change)


@pytest.mark.parametrize("maker", ["passwords", "phone_numbers", "usernames", "conditional"])
def test_a_fixed_answer_put_into_random(maker: str) -> None:
    model = usual_model()
    numbers = iter(range(10**9))
    change = noting(random, "randint", lambda genuine: lambda low, high: next(numbers) % 7)

    def draw() -> Any:
        nonlocal numbers
        numbers = iter(range(10**9))
        return making(maker, model)()

    made_both_ways(draw, model, within=change)


@pytest.mark.parametrize("maker", MAKERS)
@pytest.mark.parametrize("name", ["choice", "randint", "random_sample", "bytes"])
def test_a_function_of_numpy_replaced(name: str, maker: str) -> None:
    model = usual_model()
    made_both_ways(making(maker, model), model, within=noting(np.random, name))


def test_the_choice_of_numpy_is_noticed() -> None:
    model = usual_model()
    last = noting(np.random, "choice", lambda genuine: lambda values: values[-1])
    assert set(made_both_ways(making("values", model), model, within=last).dropna()) == {
        "Ms",
        "Mr",
        "Rev",
    }


BIT_GENERATORS = [
    np.random.PCG64,
    np.random.PCG64DXSM,
    np.random.Philox,
    np.random.SFC64,
    np.random.MT19937,
]


@contextmanager
def another_bit_generator(make: Callable[[int], BitGenerator]) -> Iterator[list[str]]:
    before = np.random.get_bit_generator()
    ours = make(7)
    np.random.set_bit_generator(ours)
    try:
        yield []
    finally:
        np.random.set_bit_generator(before)


@pytest.mark.parametrize("maker", MAKERS)
@pytest.mark.parametrize("make", BIT_GENERATORS)
def test_another_bit_generator_behind_numpy(make: type[BitGenerator], maker: str) -> None:
    model = usual_model()
    made_both_ways(making(maker, model), model, within=lambda: another_bit_generator(make))


@contextmanager
def another_state_of_numpy(position: int) -> Iterator[list[str]]:
    state = np.random.get_state(legacy=False)
    state["state"]["pos"] = position
    np.random.set_state(state)
    yield []


@contextmanager
def normal_deviates_saved() -> Iterator[list[str]]:
    random.gauss(0, 1)
    faker.generator.random.gauss(0, 1)
    np.random.normal()
    yield []


@pytest.mark.parametrize("maker", MAKERS)
def test_normal_deviates_saved_for_later(maker: str) -> None:
    model = usual_model()
    run = same_both_ways(making(maker, model), model, within=normal_deviates_saved)
    assert run.states["random"][2] is not None
    assert run.states["faker"][2] is not None
    assert run.states["numpy"]["has_gauss"] == 1


@contextmanager
def words_used(number: int) -> Iterator[list[str]]:
    for source in (random, faker.generator.random):
        source.getrandbits(32 * number)
    np.random.bytes(4 * number)
    yield []


@pytest.mark.parametrize("maker", MAKERS)
@pytest.mark.parametrize("used", [1, 600, 622, 623, 624, 625])
def test_sources_at_the_end_of_a_block(used: int, maker: str) -> None:
    model = usual_model()
    made_both_ways(making(maker, model), model, within=lambda: words_used(used))


def test_a_generator_of_numpy_at_each_position() -> None:
    model = usual_model()
    for position in (0, 1, 623, 624):
        call = making("values", model)
        made_both_ways(call, model, within=lambda p=position: another_state_of_numpy(p))


class OwnRandom(random.Random):
    """A source that draws as any other, but is of a type of its own."""


class Uneven(random.Random):
    """A source that draws otherwise."""

    def random(self) -> float:
        return super().random() ** 3


class FewBits(random.Random):
    """A source of its own bits."""

    def getrandbits(self, k: int) -> int:
        return super().getrandbits(k) & ~1


class Borrowed(random.SystemRandom):
    """A source in the place of the system's that can be repeated."""

    def __init__(self) -> None:
        self.own = random.Random(1)

    def seed(self, *args: Any, **kwargs: Any) -> None:
        self.own.seed(*args, **kwargs) if hasattr(self, "own") else None

    def getstate(self) -> Any:
        return self.own.getstate()

    def random(self) -> float:
        return self.own.random()

    def getrandbits(self, k: int) -> int:
        return self.own.getrandbits(k)


class Watched(random.Random):
    """A source that tells when its state is taken or set."""

    asked: ClassVar[list[str]] = []

    def setstate(self, state: Any) -> None:
        self.asked.append("set")
        super().setstate(state)

    def getstate(self) -> Any:
        self.asked.append("get")
        return super().getstate()


@pytest.mark.parametrize("maker", FAKER_MAKERS)
@pytest.mark.parametrize("make", [random.Random, OwnRandom, Uneven, FewBits, Borrowed])
def test_another_source_given_to_an_instance(make: Callable[[], Any], maker: str) -> None:
    model = model_after_use()
    model.country_to_provider_map["DE"].factories[0].random = make()
    made_both_ways(making(maker, model), model)


@pytest.mark.parametrize("maker", FAKER_MAKERS)
def test_no_source_of_another_type_is_asked_for_its_state(maker: str) -> None:
    model = model_after_use()
    watched = Watched()
    model.country_to_provider_map["DE"].factories[0].random = watched
    watched.asked.clear()
    making(maker, model)()
    assert watched.asked == []


@pytest.mark.parametrize("source", [random, HIDDEN_SOURCE], ids=["module", "its source"])
@pytest.mark.parametrize("maker", FAKER_MAKERS)
def test_an_instance_that_draws_from_the_source_of_random(source: Any, maker: str) -> None:
    model = model_after_use()
    model.country_to_provider_map["DE"].factories[0].random = source
    made_both_ways(making(maker, model), model)


class DrawsFromRandom(BaseProvider):
    """Draws from the sources of the other columns as well."""

    def last_name(self) -> str:
        return f"{random.randint(0, 9)} {np.random.randint(9)} {self.generator.random.random()}"

    def domain_name(self) -> str:
        return f"{random.choice('abc')}{self.generator.random.choice('abc')}.test"


@pytest.mark.parametrize("maker", FAKER_MAKERS)
def test_a_provider_that_draws_from_every_source(maker: str) -> None:
    model = model_after_use()
    model.country_to_provider_map["DE"].add_provider(DrawsFromRandom)
    made_both_ways(making(maker, model, 60), model)


class SeedsInBetween(BaseProvider):
    """Seeds the common source in the middle of a column."""

    def last_name(self) -> str:
        self.generator.random.seed(4)
        random.seed(4)
        return "Seeded"


def test_a_provider_that_seeds_the_common_source() -> None:
    model = model_after_use()
    model.country_to_provider_map["DE"].add_provider(SeedsInBetween)
    column = made_both_ways(making("last_names", model, 60), model)
    assert "Seeded" in set(column)


ALPHABETS = ["abc", "a", "", "é李\U0001f600", 5, ["a", "bc"], ("x",), None, b"ab"]


@pytest.mark.parametrize("alphabet", ALPHABETS, ids=repr)
@pytest.mark.parametrize("name", ["ascii_letters", "digits"])
def test_other_letters_or_digits(name: str, alphabet: Any, monkeypatch: pytest.MonkeyPatch) -> None:
    model = usual_model()
    monkeypatch.setattr(string, name, alphabet)
    same_both_ways(making("passwords", model), model)


def test_other_letters_show_in_passwords(monkeypatch: pytest.MonkeyPatch) -> None:
    model = usual_model()
    monkeypatch.setattr(string, "ascii_letters", "é")
    monkeypatch.setattr(string, "digits", "")
    assert set("".join(made_both_ways(making("passwords", model), model))) == {"é"}


def both(*changes: Surroundings) -> Surroundings:
    @contextmanager
    def change() -> Iterator[list[Any]]:
        with ExitStack() as stack:
            yield [stack.enter_context(one()) for one in changes]

    return change


@pytest.mark.parametrize("maker", MAKERS)
def test_several_replacements_at_once(maker: str) -> None:
    model: PersonModel = usual_model()
    changes = both(noting(random, "choice"), noting(np.random, "choice"), normal_deviates_saved)
    made_both_ways(making(maker, model), model, within=changes)
