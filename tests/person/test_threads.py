"""Threads that sample at the same time, from models of their own and from one that they share."""

import sys
from collections.abc import Iterator
from concurrent.futures import ThreadPoolExecutor

import pandas as pd
import pytest

from support.people import fitted_model
from support.whole_columns import provider
from vantrel.model.models.person import PersonModel

THREADS = 8
TITLES = {("female", "Mrs"), ("male", "Mr"), ("nb", "Mx")}

# The columns of few rows are made in one go, between which threads are switched as often as can be;
# amid those of many rows the module itself lets other threads in.
few_and_many_rows = pytest.mark.parametrize(
    ("rows", "switch_interval"), [(50, 1e-6), (40_000, None)], indirect=["switch_interval"]
)


@pytest.fixture
def switch_interval(request: pytest.FixtureRequest) -> Iterator[None]:
    """How many seconds a thread runs Python code before it lets another one run."""
    usual = sys.getswitchinterval()
    sys.setswitchinterval(request.param or usual)
    yield
    sys.setswitchinterval(usual)


def samples_in_threads(models: list[PersonModel], rows: int) -> list[pd.DataFrame]:
    """A sample of each model, each made by a thread of its own."""
    with ThreadPoolExecutor(len(models)) as threads:
        return list(threads.map(lambda model: model.sample(rows), models))


def assert_whole(frame: pd.DataFrame, rows: int, model: PersonModel) -> None:
    """Every column is there with all its rows, and what stands in a row agrees."""
    like = model.sample(16)
    assert frame.index.equals(pd.RangeIndex(rows))
    assert frame.dtypes.to_dict() == like.dtypes.to_dict()
    assert frame.columns.tolist() == like.columns.tolist()
    assert frame.notna().all(axis=None)
    row = {str(name): frame[name].tolist() for name in frame}
    assert set(zip(row["gender"], row["title"], strict=True)) <= TITLES
    assert row["full"] == [
        f"{first} {last}" for first, last in zip(row["first"], row["last"], strict=True)
    ]
    for column in ("user", "email"):
        pairs = zip(row[column], row["first"], strict=True)
        assert all(made.startswith(first.replace(" ", "").lower()) for made, first in pairs)
    for country in ("GB", "US", "DE"):
        known = provider(model, "person", country).last_names
        assert set(frame["last"][frame["country"] == country]) <= set(known)
    assert frame["password"].str.fullmatch("[A-Za-z0-9]{8,16}").all()
    for column, prefix in (("mobile", "07"), ("home", "01"), ("work", "02")):
        assert frame[column].str.fullmatch(prefix + "[0-9]{8}").all()


@few_and_many_rows
def test_models_of_their_own(rows: int, switch_interval: None) -> None:
    models = [fitted_model() for _ in range(THREADS)]
    for model, frame in zip(models, samples_in_threads(models, rows), strict=True):
        assert_whole(frame, rows, model)


@few_and_many_rows
def test_one_model(rows: int, switch_interval: None) -> None:
    model = fitted_model()
    for frame in samples_in_threads([model] * THREADS, rows):
        assert_whole(frame, rows, model)
