"""Partitions of a sample: what travels to a worker and what is made of it. Dask is not needed."""

import io
import pickle
import re
import time
from concurrent.futures import ThreadPoolExecutor
from dataclasses import replace
from typing import Any

import numpy as np
import pandas as pd
import pytest

from support.people import fitted_model, person_model
from support.scaling import QUICK, model_with_gaps
from support.sources import source_states
from vantrel import versions
from vantrel.config import PersonLabels
from vantrel.errors import PartitionError
from vantrel.model.exceptions import ModelNotFittedError
from vantrel.model.models.person import PersonModel
from vantrel.sampling import Plan, sample_blocks
from vantrel.scale import partitions as module
from vantrel.scale.partitions import Partition, make_blocks, no_rows, partitions
from vantrel.storage.models import dumps, loads

PLAN = Plan(rows=103, seed=7, block_rows=10)  # ten whole blocks and one of three rows
TEXT = pd.Series([""]).dtype


@pytest.fixture(autouse=True)
def _no_model_is_built_yet() -> None:
    module._built.cache_clear()


@pytest.fixture
def loaded(monkeypatch: pytest.MonkeyPatch) -> list[str]:
    """The contents that models are built from, each as often as it is."""
    built: list[str] = []

    def slowly(content: str, *, allow_patterns: bool) -> PersonModel:
        built.append(content)
        time.sleep(0.05)  # so that threads which do not wait for each other meet here
        return loads(content, allow_patterns=allow_patterns)

    monkeypatch.setattr(module, "loads", slowly)
    return built


def expected_rows(model: PersonModel, plan: Plan) -> pd.DataFrame:
    """The rows that a plain loop over the blocks makes, of pandas' dtype of text."""
    return pd.concat(list(sample_blocks(model, plan))).astype(TEXT)


def made_by(*parts: Partition) -> pd.DataFrame:
    return pd.concat([block for part in parts for block in make_blocks(part)])


def borders(plan: Plan, count: int | None) -> list[tuple[int, int]]:
    parts = partitions(fitted_model(PersonLabels(gender="gender")), plan, count)
    assert [part.number for part in parts] == list(range(len(parts)))
    assert [row for part in parts for row in part.rows] == list(range(plan.rows))
    return [(part.start, part.stop) for part in parts]


@pytest.mark.parametrize(
    ("rows", "count", "expected"),
    [
        (103, 1, [(0, 11)]),
        (103, 3, [(0, 3), (3, 7), (7, 11)]),
        (103, 11, [(block, block + 1) for block in range(11)]),
        (103, 64, [(block, block + 1) for block in range(11)]),
        (103, None, [(0, 3), (3, 7), (7, 11)]),
        (110, 2, [(0, 5), (5, 11)]),
        (10, 2, [(0, 1)]),
        (11, 2, [(0, 1), (1, 2)]),
        (1, 1, [(0, 1)]),
        (0, 1, [(0, 1)]),
        (0, None, [(0, 1)]),
    ],
)
def test_blocks_are_shared_out_evenly_and_in_order(
    rows: int, count: int | None, expected: list[tuple[int, int]]
) -> None:
    assert borders(replace(PLAN, rows=rows), count) == expected


@pytest.mark.parametrize("count", [0, -1, 2.5, True, "3"])
def test_a_number_of_partitions_that_is_none(count: Any) -> None:
    with pytest.raises(ValueError) as caught:
        partitions(fitted_model(), PLAN, count)
    assert str(caught.value) == (
        f"The number of partitions is an integer from 1 on, not {count!r}."
    )


def test_a_model_that_is_not_fitted() -> None:
    with pytest.raises(ModelNotFittedError) as caught:
        partitions(person_model(), PLAN)
    assert str(caught.value) == (
        "Nothing has been learnt of column 'gender' yet: fit the model first."
    )


def test_a_plan_that_cannot_be_carried_out() -> None:
    with pytest.raises(ValueError) as caught:
        partitions(fitted_model(), replace(PLAN, unique=("password",)))
    assert str(caught.value) == ("'password' cannot be made unique: only email and username can.")


def test_all_that_travels_is_text_and_numbers(model: PersonModel) -> None:
    content = dumps(model)
    for part in partitions(model, PLAN, 3):
        pickled = pickle.dumps(part)
        unpickler = Recording(io.BytesIO(pickled))
        assert unpickler.load() == part
        assert unpickler.types == {"Partition", "Plan"}
        assert part.model == content
        assert len(pickled) < len(content) + 500


class Recording(pickle.Unpickler):
    """Notes the types that are made."""

    def __init__(self, file: io.BytesIO) -> None:
        super().__init__(file)
        self.types: set[str] = set()

    def find_class(self, module_name: str, name: str) -> Any:
        self.types.add(name)
        return super().find_class(module_name, name)


def test_the_same_rows_from_any_partitions(model: PersonModel) -> None:
    expected = expected_rows(model, PLAN)
    for count in (1, 3, 7, 64):
        made = made_by(*partitions(model, PLAN, count))
        pd.testing.assert_frame_equal(made, expected, check_exact=True)


def test_partitions_are_made_in_any_order(model: PersonModel) -> None:
    parts = partitions(model, PLAN, 7)
    forth = [made_by(part) for part in parts]
    module._built.cache_clear()
    back = [made_by(part) for part in reversed(parts)]
    pd.testing.assert_frame_equal(pd.concat(forth), pd.concat(back[::-1]), check_exact=True)


def test_the_model_at_hand_stays_as_it_is(model: PersonModel) -> None:
    before = source_states(model)
    parts = partitions(model, PLAN, 3)
    list(make_blocks(parts[1]))
    assert source_states(model) == before


def test_columns_of_missing_values_only_are_of_text() -> None:
    model = model_with_gaps(share=0.5)
    (part,) = partitions(model, Plan(12, 7, block_rows=1), 1)
    made = list(make_blocks(part))
    assert any(block.isna().all(axis=None) for block in made)
    for block in [*made, no_rows(part)]:
        assert set(block.dtypes) == {TEXT}
    missing = pd.concat(list(sample_blocks(model, part.plan))).isna()
    pd.testing.assert_frame_equal(pd.concat(made).isna(), missing)


def test_no_rows_have_all_columns(model: PersonModel) -> None:
    empty = no_rows(partitions(model, PLAN, 3)[1])
    assert empty.shape == (0, 5)
    assert list(empty) == list(next(sample_blocks(model, PLAN)))


def test_a_model_is_built_once_for_all_partitions(model: PersonModel, loaded: list[str]) -> None:
    for part in partitions(model, PLAN, 7):
        list(make_blocks(pickle.loads(pickle.dumps(part))))
    assert loaded == [dumps(model)]


def test_a_model_is_built_once_for_threads_that_ask_at_once(
    model: PersonModel, loaded: list[str]
) -> None:
    parts = partitions(model, PLAN, 4)
    with ThreadPoolExecutor(4) as threads:
        list(threads.map(lambda part: list(make_blocks(part)), parts))
    assert loaded == [dumps(model)]


def test_another_model_is_another_content(model: PersonModel, loaded: list[str]) -> None:
    other = fitted_model(replace(QUICK, password=None))
    for one in (model, other, model, other):
        (part,) = partitions(one, replace(PLAN, rows=5))
        assert list(next(make_blocks(part))) == list(next(sample_blocks(one, part.plan)))
    assert loaded == [dumps(model), dumps(other)]


def test_two_threads_make_what_each_makes_alone(model: PersonModel) -> None:
    other = fitted_model(replace(QUICK, password=None))
    runs = [(model, PLAN), (other, replace(PLAN, seed=8))] * 2
    alone = [expected_rows(*run) for run in runs]
    parts = [partitions(*run, count=1)[0] for run in runs]
    before = source_states()
    with ThreadPoolExecutor(4) as threads:
        together = list(threads.map(lambda part: made_by(part), parts))
    assert source_states() == before
    for one, other_one in zip(together, alone, strict=True):
        pd.testing.assert_frame_equal(one, other_one, check_exact=True)


def test_a_failing_block_names_its_rows_and_puts_the_sources_back(
    monkeypatch: pytest.MonkeyPatch,
) -> None:
    def fail_in_block_7(model: PersonModel, n: int, given: object) -> pd.DataFrame:
        people = model.sample(n)
        if next(numbers) == 7:
            raise ZeroDivisionError("nothing to share")
        return people

    numbers = iter(range(11))
    monkeypatch.setattr("vantrel.sampling.makers.sample_people", fail_in_block_7)
    (part,) = partitions(fitted_model(), replace(PLAN, rows=10_003, block_rows=1000), 1)
    before = source_states()
    with pytest.raises(PartitionError) as caught:
        list(make_blocks(part))
    assert str(caught.value) == (
        "Rows 7,000 to 7,999 (block 7 of the seed 7) could not be made: ZeroDivisionError: nothing"
        " to share"
    )
    assert isinstance(caught.value.__cause__, ZeroDivisionError)
    assert source_states() == before


def test_other_versions_are_refused(model: PersonModel, monkeypatch: pytest.MonkeyPatch) -> None:
    parts = partitions(model, PLAN, 1)
    monkeypatch.setattr(versions, "__version__", "9.9")
    with pytest.raises(PartitionError) as caught:
        list(make_blocks(parts[0]))
    assert re.sub(r"was [\d.]+:", "was X:", str(caught.value)) == (
        "A worker would make other rows: vantrel is 9.9 here and was X: anything may differ."
        " Install the same versions everywhere."
    )


def test_values_of_a_column_are_unique_over_all_partitions() -> None:
    model = fitted_model(PersonLabels(gender="gender", username="user", email="email"))
    plan = replace(PLAN, unique=("username", "email"))
    made = made_by(*partitions(model, plan, 7))
    assert made["user"].is_unique
    assert made["email"].is_unique
    pd.testing.assert_frame_equal(made, expected_rows(model, plan))


def test_the_seed_may_be_of_any_size() -> None:
    model = fitted_model(PersonLabels(gender="gender", firstname="first"))
    large = replace(PLAN, seed=2**200 + 1)
    (part,) = partitions(model, large, 1)
    made = made_by(part)
    pd.testing.assert_frame_equal(made, expected_rows(model, large))
    assert not np.array_equal(made, expected_rows(model, PLAN))
