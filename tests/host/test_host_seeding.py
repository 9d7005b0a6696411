"""Seeds: the same seed gives the same table."""

import random
from collections.abc import Callable, Iterator
from pathlib import Path
from typing import Any

import numpy as np
import pandas as pd
import pytest
from faker import Faker
from faker.generator import Generator

import vantrel.model.models.person as person
from support.sources import source_states
from vantrel.config import PersonLabels
from vantrel.metadata.value import Person
from vantrel.model.models.person import PersonModel
from vantrel.sampling import (
    Plan,
    prepare_conditions,
    sample_block,
    sample_blocks,
    sample_people,
)
from vantrel.sampling.seeding import OwnSources, given_or_drawn, seed_everything
from vantrel.storage.models import load, save

CASES = [
    PersonLabels(gender="sex", title="title", firstname="first", lastname="surname"),
    PersonLabels(gender="sex", title="title", fullname="whole", country="land"),
    PersonLabels(title="title", firstname="first", country="land"),
    PersonLabels(lastname="surname", firstname="first"),
]


def fitted(labels: PersonLabels, people: pd.DataFrame) -> PersonModel:
    return PersonModel(meta=Person("person", labels, locales=["en_GB", "de_DE"])).fit(people)


def sample(model: PersonModel, seed: int) -> pd.DataFrame:
    seed_everything(model, seed)
    return sample_people(model, 200)


@pytest.mark.parametrize("labels", CASES)
def test_the_same_seed_gives_the_same_table(labels: PersonLabels, people: pd.DataFrame) -> None:
    model = fitted(labels, people)
    first = sample(model, 7)
    pd.testing.assert_frame_equal(sample(model, 7), first)
    pd.testing.assert_frame_equal(sample(fitted(labels, people), 7), first)


@pytest.mark.parametrize("labels", CASES)
def test_a_model_from_its_file_gives_the_same_table(
    labels: PersonLabels, people: pd.DataFrame, tmp_path: Path
) -> None:
    people.loc[3, "land"] = None
    model = fitted(labels, people)
    save(model, tmp_path / "m.json")
    pd.testing.assert_frame_equal(sample(load(tmp_path / "m.json"), 7), sample(model, 7))


@pytest.mark.parametrize("labels", CASES)
def test_another_seed_gives_another_table(labels: PersonLabels, people: pd.DataFrame) -> None:
    model = fitted(labels, people)
    assert not sample(model, 7).equals(sample(model, 8))


def test_every_source_has_a_stream_of_its_own(people: pd.DataFrame) -> None:
    model = fitted(CASES[1], people)

    def draws() -> list[float]:
        assert model.hidden_model_country is not None
        providers = model.country_to_provider_map.values()
        return [
            model._rng.random(),
            model.hidden_model_gender._rng.random(),
            model.hidden_model_country._rng.random(),
            np.random.random(),
            random.random(),
            Faker().random.random(),
            *(provider.random.random() for provider in providers),
        ]

    seed_everything(model, 7)
    first = draws()
    seed_everything(model, 7)
    assert draws() == first
    assert len(set(first)) == len(first) == 9


def test_a_draw_from_one_provider_does_not_move_another(people: pd.DataFrame) -> None:
    model = fitted(CASES[1], people)
    seed_everything(model, 7)
    one, other, *_ = model.country_to_provider_map.values()
    first = other.random.random()
    seed_everything(model, 7)
    one.random.random()
    Faker().random.random()
    assert other.random.random() == first


def test_a_place_keeps_its_stream_whatever_other_places_are_known(people: pd.DataFrame) -> None:
    def rows_of(model: PersonModel, *countries: str) -> pd.DataFrame:
        given = prepare_conditions(model, pd.DataFrame({"land": countries * 20}))
        return sample_block(model, Plan(len(given), 7), 0, given)

    used, new = fitted(CASES[1], people), fitted(CASES[1], people)
    rows_of(used, "FR", "GB")
    pd.testing.assert_frame_equal(rows_of(used, "IT", "GB"), rows_of(new, "IT", "GB"))


def test_two_places_have_streams_of_their_own(people: pd.DataFrame) -> None:
    model = fitted(
        CASES[1], people.assign(land=["GB", "GBR", "United Kingdom", "en_GB", "gb"] * 10)
    )
    seed_everything(model, 7)
    draws = {provider.random.random() for provider in model.country_to_provider_map.values()}
    assert len(draws) == 5


def test_a_source_keeps_its_stream_where_a_hidden_model_is_not_there(people: pd.DataFrame) -> None:
    seed_everything(fitted(CASES[0], people), 7)
    without_country = (np.random.random(), random.random())
    seed_everything(fitted(CASES[1], people), 7)
    assert (np.random.random(), random.random()) == without_country


@pytest.mark.parametrize("seed", [0, 2**200, np.int64(5)])
def test_any_integer_from_0_on_is_a_seed(seed: int, people: pd.DataFrame) -> None:
    model = fitted(CASES[0], people)
    pd.testing.assert_frame_equal(sample(model, seed), sample(model, int(seed)))


@pytest.mark.parametrize("seed", [None, 1.0, "7", True])
def test_a_seed_that_is_no_integer_is_refused(seed: object, people: pd.DataFrame) -> None:
    with pytest.raises(TypeError) as caught:
        seed_everything(fitted(CASES[0], people), seed)  # type: ignore[arg-type]  # that is the test
    assert str(caught.value) == f"A seed is an integer from 0 on, not {seed!r}."


def test_a_negative_seed_is_refused(people: pd.DataFrame) -> None:
    with pytest.raises(ValueError) as caught:
        seed_everything(fitted(CASES[0], people), -1)
    assert str(caught.value) == "A seed is an integer from 0 on, not -1."


# --- sources of a sample's own


def states() -> dict[str, Any]:
    """All of the process that sampling could leave changed."""
    seeded = (Generator._global_seed, Generator._is_seeded)
    return {**source_states(), "module": dict(vars(person)), "seeded": seeded}


def of_model(model: PersonModel) -> dict[str, Any]:
    """What sampling could change in a model."""
    return {**source_states(model), **vars(model)}


@pytest.fixture(params=["fresh", "seeded"])
def before(request: pytest.FixtureRequest) -> Iterator[dict[str, Any]]:
    """The sources before a sample, once with Faker as nobody has seeded it, once seeded."""
    kept = Generator._global_seed, Generator._is_seeded
    if request.param == "seeded":
        Faker.seed(3)
    yield states()
    Generator._global_seed, Generator._is_seeded = kept


@pytest.fixture
def amid(monkeypatch: pytest.MonkeyPatch) -> Callable[[Callable[[], None]], None]:
    """Has something done whenever last names have been made."""
    generate = PersonModel.generate_last_names

    def done_amid(act: Callable[[], None]) -> None:
        def generate_and_act(self: PersonModel, *arguments: Any, **named: Any) -> Any:
            made = generate(self, *arguments, **named)
            monkeypatch.setattr(PersonModel, "generate_last_names", generate)
            act()
            monkeypatch.setattr(PersonModel, "generate_last_names", generate_and_act)
            return made

        monkeypatch.setattr(PersonModel, "generate_last_names", generate_and_act)

    return done_amid


@pytest.mark.parametrize("labels", CASES)
def test_no_other_source_is_touched(
    labels: PersonLabels, before: dict[str, Any], people: pd.DataFrame, amid: Any
) -> None:
    model = fitted(labels, people)
    model_before = of_model(model)
    sample_block(model, Plan(100, 7), 0)
    assert (states(), of_model(model)) == (before, model_before)

    seen = []
    amid(lambda: seen.append((states(), of_model(model)) == (before, model_before)))
    sample_block(model, Plan(100, 7), 0)
    assert seen in ([True], [])  # not every model makes last names
    assert states() == before


@pytest.mark.parametrize("labels", CASES)
def test_what_is_drawn_amid_a_sample_changes_no_row(
    labels: PersonLabels, before: dict[str, Any], people: pd.DataFrame, amid: Any
) -> None:
    assert before
    model, other = fitted(labels, people), fitted(labels, people)
    expected = list(sample_blocks(model, Plan(90, 7, block_rows=30)))

    nested = Plan(30, 7, block_rows=30)

    def draw() -> None:
        np.random.random()
        random.random()
        Faker("de_DE").name()
        Faker.seed(1)
        for provider in vars(model)["_country_to_provider_map"].values():
            provider.name()
        model.sample(20)
        other.sample(20)
        pd.testing.assert_frame_equal(sample_block(model, nested, 0), expected[0])

    amid(draw)
    for made, block in zip(sample_blocks(model, Plan(90, 7, block_rows=30)), expected, strict=True):
        pd.testing.assert_frame_equal(made, block)


@pytest.mark.parametrize("error", [ValueError, KeyboardInterrupt])
def test_a_block_that_fails_amid_its_draws_leaves_the_next_one_alone(
    people: pd.DataFrame, monkeypatch: pytest.MonkeyPatch, amid: Any, error: type[BaseException]
) -> None:
    model = fitted(CASES[1], people)
    expected = sample_block(model, Plan(50, 7), 0)
    before = states()

    def fail() -> None:
        raise error

    amid(fail)
    with pytest.raises(error):
        sample_block(model, Plan(50, 7), 0)
    monkeypatch.undo()
    assert states() == before
    pd.testing.assert_frame_equal(sample_block(model, Plan(50, 7), 0), expected)


@pytest.mark.parametrize("seed", [-1, "7", True, None])
def test_a_seed_that_is_refused_leaves_the_sources_too(
    before: dict[str, Any], people: pd.DataFrame, seed: Any
) -> None:
    model = fitted(CASES[0], people)
    with pytest.raises((TypeError, ValueError)):
        OwnSources(model).seeded(seed)
    assert states() == before


@pytest.mark.parametrize("labels", CASES)
def test_own_sources_give_what_seeded_ones_give(labels: PersonLabels, people: pd.DataFrame) -> None:
    model = fitted(labels, people)
    own = sample_people(OwnSources(model).seeded(7), 200)
    pd.testing.assert_frame_equal(own, sample(model, 7))


def test_a_sequence_is_as_good_a_seed_also_after_it_was_used(people: pd.DataFrame) -> None:
    model = fitted(CASES[1], people)
    sequence = np.random.SeedSequence(7)
    sequence.spawn(3)
    sources = OwnSources(model)
    for _ in range(2):
        own = sample_people(sources.seeded(sequence), 200)
        pd.testing.assert_frame_equal(own, sample(model, 7))


def test_seeds_that_are_drawn_cannot_be_tried_out() -> None:
    drawn = [given_or_drawn(None) for _ in range(20)]
    assert 2**120 < max(drawn) < 2**128
    assert len(set(drawn)) == 20
