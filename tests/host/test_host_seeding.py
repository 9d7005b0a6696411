"""Seeds: the same seed gives the same table."""

import random
from pathlib import Path

import numpy as np
import pandas as pd
import pytest
from faker import Faker

from vantrel.config import PersonLabels
from vantrel.metadata.value import Person
from vantrel.model.models.person import PersonModel
from vantrel.model_file import load, save
from vantrel.sampling import sample_people
from vantrel.seeding import seed_everything

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
        seed_everything(fitted(CASES[0], people), seed)  # type: ignore[arg-type]
    assert str(caught.value) == f"A seed is an integer from 0 on, not {seed!r}."


def test_a_negative_seed_is_refused(people: pd.DataFrame) -> None:
    with pytest.raises(ValueError) as caught:
        seed_everything(fitted(CASES[0], people), -1)
    assert str(caught.value) == "A seed is an integer from 0 on, not -1."
