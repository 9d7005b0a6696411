"""What makes a model's rows is kept with it, alone for each sample, until the model changes."""

from __future__ import annotations

import gc
import threading
from collections.abc import Callable
from typing import Any

import pandas as pd
import pytest

import vantrel
from vantrel.model.models.person import PersonModel
from vantrel.rows import Ways
from vantrel.sampling import Plan, makers, sample_block, sample_blocks
from vantrel.sampling.real import RealRows
from vantrel.storage.models import dumps, loads

GENERATED = ["firstname", "lastname", "email", "mobile_number", "password"]


@pytest.fixture
def model() -> PersonModel:
    df = pd.DataFrame({"sex": ["f", "m"] * 50, "land": ["GB", "DE"] * 50})
    return vantrel.fit(df, gender="sex", country="land", detect=False, generate=GENERATED)


@pytest.fixture
def made(monkeypatch: pytest.MonkeyPatch) -> list[object]:
    """Has each maker listed that is made."""
    listed: list[object] = []

    class Listed(RealRows):
        def __init__(self, *given: Any) -> None:
            super().__init__(*given)
            listed.append(self)

    monkeypatch.setattr(makers, "RealRows", Listed)
    return listed


def test_one_makes_the_rows_of_many_samples(model: PersonModel, made: list[object]) -> None:
    first = vantrel.sample(model, 30, seed=1)
    vantrel.sample(model, 10, seed=2)
    sample_block(model, Plan(10, 3), 0)
    pd.testing.assert_frame_equal(first, vantrel.sample(model, 30, seed=1))
    assert len(made) == 1


def in_other_ways(model: PersonModel) -> None:
    model.meta.ways = Ways(email_domain="example.org")


def with_other_passwords(model: PersonModel) -> None:
    model.pwd_length = (20, 20)


def with_another_column(model: PersonModel) -> None:
    model.labels.username = "account"


def with_other_columns_first(model: PersonModel) -> None:
    model.meta.columns = list(reversed(model.meta.columns or ()))


def with_other_rows(model: PersonModel) -> None:
    other = pd.DataFrame({"sex": ["m"] * 10, "land": ["FR"] * 10})
    fitted = vantrel.fit(other, gender="sex", country="land", detect=False)
    model.meta.rows = fitted.meta.rows


def with_a_format_of_numbers(model: PersonModel) -> None:
    model.config.mobile_number_format = model.mobile_number_format = "0 xx"


@pytest.mark.parametrize(
    "change",
    [
        in_other_ways,
        with_other_passwords,
        with_another_column,
        with_other_columns_first,
        with_other_rows,
        with_a_format_of_numbers,
    ],
)
def test_a_model_that_changed_makes_rows_as_it_is_now(
    model: PersonModel, change: Callable[[PersonModel], None]
) -> None:
    twin = loads(dumps(model))
    before = vantrel.sample(model, 20, seed=1)
    for each in (model, twin):
        change(each)
    after = vantrel.sample(model, 20, seed=1)
    assert not after.equals(before)
    pd.testing.assert_frame_equal(after, vantrel.sample(twin, 20, seed=1))


def test_a_sample_amid_another_has_a_maker_of_its_own(
    model: PersonModel, made: list[object]
) -> None:
    expected = vantrel.sample(model, 40, seed=1)
    blocks = sample_blocks(model, Plan(40, 1, block_rows=50_000))
    outer = sample_blocks(model, Plan(30, 5, block_rows=10))
    parts = [next(outer)]
    pd.testing.assert_frame_equal(next(blocks), expected, check_flags=False)
    parts += outer
    assert len(made) == 2
    whole = list(sample_blocks(model, Plan(30, 5, block_rows=10)))
    pd.testing.assert_frame_equal(pd.concat(parts), pd.concat(whole))


def test_threads_sample_one_model_at_once(model: PersonModel) -> None:
    expected = {seed: vantrel.sample(model, 2_000, seed=seed) for seed in range(4)}
    found: dict[int, pd.DataFrame] = {}

    def sample(seed: int) -> None:
        for _ in range(3):
            found[seed] = vantrel.sample(model, 2_000, seed=seed)

    threads = [threading.Thread(target=sample, args=(seed,)) for seed in expected]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    for seed, people in expected.items():
        pd.testing.assert_frame_equal(found[seed], people)


def test_what_is_kept_goes_with_the_model(model: PersonModel) -> None:
    twin = loads(dumps(model))
    vantrel.sample(twin, 5, seed=1)
    key = id(twin)
    assert key in makers._kept
    del twin
    gc.collect()
    assert key not in makers._kept


def test_a_sample_that_fails_leaves_no_maker_behind(
    model: PersonModel, monkeypatch: pytest.MonkeyPatch
) -> None:
    vantrel.sample(model, 5, seed=1)
    monkeypatch.setattr(type(model), "generate_passwords", 1)
    with pytest.raises(Exception, match="not callable"):
        vantrel.sample(model, 5, seed=1)
    assert id(model) not in makers._kept
