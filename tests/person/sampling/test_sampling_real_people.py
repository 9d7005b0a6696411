"""Sampling what was learnt from real people."""

import numpy as np
import pandas as pd
import pytest

from support import readings_sampling as readings
from support.comparing import assert_same_outcome
from support.examples import EXAMPLES
from support.people import person_model
from vantrel.config import PersonLabels
from vantrel.sampling.seeding import seed_everything
from vantrel.tables import read_table


def assert_frequencies(drawn: pd.Series, learnt: pd.Series) -> None:
    """Checks that each value is drawn as often as it was seen, within five standard errors.

    The seeds are fixed but not chosen, and of so many shares one does lie beyond four. Five are
    at most 1.8 points in a hundred where 20,000 rows are drawn.
    """
    rows = len(drawn)
    seen, made = learnt.value_counts(normalize=True), drawn.value_counts(normalize=True)
    assert set(made.index) <= set(seen.index)
    for value, share in seen.items():
        error = np.sqrt(share * (1 - share) / rows)
        assert abs(made.get(value, 0.0) - share) < 5 * error, value


def test_real_passengers_are_sampled_with_their_frequencies() -> None:
    table = read_table(EXAMPLES / "passengers.csv")
    model = person_model(PersonLabels(gender="sex", title="title")).fit(table)
    seed_everything(model, 1)
    made = model.sample(n=20_000)
    assert_frequencies(made["sex"], table["sex"])


def test_real_titles_agree_with_the_sex_of_the_passengers() -> None:
    table = read_table(EXAMPLES / "passengers.csv")
    model = person_model(PersonLabels(gender="sex", title="title")).fit(table)
    seed_everything(model, 2)
    made = model.sample(n=2_000)
    titles = made.groupby("sex")["title"].unique()
    assert {"Mr", "Master"} <= set(titles["male"])
    assert {"Mrs", "Miss"} <= set(titles["female"])
    assert not set(titles["male"]) & set(titles["female"])


def test_real_titles_alone_are_sampled_with_the_frequencies_of_their_genders() -> None:
    table = read_table(EXAMPLES / "passengers.csv")
    model = person_model(PersonLabels(title="title")).fit(table)
    seed_everything(model, 3)
    made = model.sample(n=20_000, produce_nans=False)
    collections = model.hidden_model_gender.collections
    keys = {title: key for key, titles in collections.items() for title in titles}
    assert_frequencies(made["title"].map(keys), table["title"].map(keys))


def test_real_respondents_are_sampled_with_their_frequencies() -> None:
    table = read_table(EXAMPLES / "respondents.csv").dropna(subset=["country"])
    model = person_model(PersonLabels(gender="gender", country="country"))
    with pytest.warns(UserWarning, match="Faker has no person names of its own"):
        model.fit(table)
    seed_everything(model, 4)
    made = model.sample(n=20_000, produce_nans=False)
    assert_frequencies(made["country"], table["country"])


def test_real_respondents_equal_the_reading() -> None:
    table = read_table(EXAMPLES / "respondents.csv").dropna(subset=["country"]).head(2_000)
    model = person_model(PersonLabels(gender="gender", country="country", fullname="name"))
    with pytest.warns(UserWarning, match="Faker has no person names of its own"):
        model.fit(table)
    made = assert_same_outcome(
        lambda: model.sample(n=500), lambda: readings.sample(model, n=500), 5, model
    )
    assert made is not None
