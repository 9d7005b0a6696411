"""Seeds: the same seed gives the same table."""

import random
from collections.abc import Iterator
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
from vantrel.sampling import Plan, prepare_conditions, sample_block, sample_people
from vantrel.sampling.seeding import own_sources, seed_everything
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
    model = fitted(CASES[1], people.assign(land=["GB", "GBR", "United Kingdom", "en_GB", "gb"] * 2))
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
    return {**source_states(), "own random": vars(person)["random"] is random, "seeded": seeded}


@pytest.fixture(params=["fresh", "seeded"])
def before(request: pytest.FixtureRequest) -> Iterator[dict[str, Any]]:
    """The sources before a sample, once with Faker as nobody has seeded it, once seeded."""
    kept = Generator._global_seed, Generator._is_seeded
    if request.param == "seeded":
        Faker.seed(3)
    yield states()
    Generator._global_seed, Generator._is_seeded = kept


def test_the_sources_of_the_process_are_as_before(
    before: dict[str, Any], people: pd.DataFrame
) -> None:
    for labels in CASES:
        sample_block(fitted(labels, people), Plan(100, 7), 0)
        assert states() == before
    assert before["own random"]


@pytest.mark.parametrize("error", [ValueError, KeyboardInterrupt, SystemExit])
def test_they_are_also_after_a_failure(
    before: dict[str, Any], people: pd.DataFrame, error: type[BaseException]
) -> None:
    model = fitted(CASES[1], people)
    with pytest.raises(error), own_sources(model, 7):
        sample_people(model, 50)
        random.getstate()
        assert states() != before
        raise error
    assert states() == before


@pytest.mark.parametrize("error", [ValueError, KeyboardInterrupt])
def test_they_are_also_where_a_block_fails_amid_its_draws(
    people: pd.DataFrame, monkeypatch: pytest.MonkeyPatch, error: type[BaseException]
) -> None:
    model = fitted(CASES[1], people)
    expected = sample_block(model, Plan(50, 7), 0)
    before = states()
    generate = PersonModel.generate_last_names

    def fail(self: PersonModel, *arguments: Any, **named: Any) -> Any:
        generate(self, *arguments, **named)
        raise error

    with monkeypatch.context() as patch:
        patch.setattr(PersonModel, "generate_last_names", fail)
        with pytest.raises(error):
            sample_block(model, Plan(50, 7), 0)
    assert states() == before
    pd.testing.assert_frame_equal(sample_block(model, Plan(50, 7), 0), expected)


@pytest.mark.parametrize("seed", [-1, "7", True, None])
def test_a_seed_that_is_refused_leaves_the_sources_too(
    before: dict[str, Any], people: pd.DataFrame, seed: Any
) -> None:
    model = fitted(CASES[0], people)
    with pytest.raises((TypeError, ValueError)), own_sources(model, seed):
        pass
    assert states() == before


@pytest.mark.parametrize("labels", CASES)
def test_own_sources_give_what_seeded_ones_give(labels: PersonLabels, people: pd.DataFrame) -> None:
    model = fitted(labels, people)
    with own_sources(model, 7):
        own = sample_people(model, 200)
    pd.testing.assert_frame_equal(own, sample(model, 7))


def test_a_sequence_is_as_good_a_seed_also_after_it_was_used(people: pd.DataFrame) -> None:
    model = fitted(CASES[1], people)
    sequence = np.random.SeedSequence(7)
    sequence.spawn(3)
    for _ in range(2):
        with own_sources(model, sequence):
            own = sample_people(model, 200)
        pd.testing.assert_frame_equal(own, sample(model, 7))
