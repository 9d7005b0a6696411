"""Samples as Dask frames: the same rows from any partitions and schedulers."""

import pickle
import random
import re
from collections.abc import Iterator
from dataclasses import replace
from pathlib import Path
from typing import Any

import numpy as np
import pandas as pd
import pytest

import vantrel
from support.people import ALL_LABELS, fitted_model
from support.scaling import QUICK, model_with_gaps, rows_of
from support.sources import source_states
from vantrel.config import PersonLabels
from vantrel.errors import ArgumentError
from vantrel.model.models.person import PersonModel
from vantrel.sampling import BLOCK_ROWS, Plan, sample_blocks
from vantrel.scale import partitions
from vantrel.storage.models import dumps

dask = pytest.importorskip("dask", reason="sampling on Dask needs Dask")
pytest.importorskip("pyarrow", reason="Dask's frames need pyarrow")

from vantrel import scale  # noqa: E402 - after the question whether it can be

PLAN = Plan(rows=643, seed=7, block_rows=10)  # 65 blocks, the last of three rows
GENDER_ONLY = PersonLabels(gender="gender")


def frame_of(model: PersonModel, plan: Plan, npartitions: int | None = None) -> Any:
    return scale.sample(
        model,
        plan.rows,
        seed=plan.seed,
        block_rows=plan.block_rows,
        npartitions=npartitions,
        unique=plan.unique,
    )


@pytest.fixture(scope="module")
def model() -> PersonModel:
    return model_with_gaps()


@pytest.fixture(scope="module")
def expected() -> pd.DataFrame:
    return rows_of(model_with_gaps(), PLAN)


def check_rows(made: pd.DataFrame, expected: pd.DataFrame) -> None:
    pd.testing.assert_frame_equal(made, expected, check_exact=True, check_index_type="equiv")


@pytest.mark.parametrize("scheduler", ["synchronous", "threads"])
@pytest.mark.parametrize("npartitions", [1, 3, 7, 64])
def test_schedulers_in_this_process(
    model: PersonModel, expected: pd.DataFrame, npartitions: int, scheduler: str
) -> None:
    frame = frame_of(model, PLAN, npartitions)
    assert frame.npartitions == npartitions
    check_rows(frame.compute(scheduler=scheduler, num_workers=4), expected)


def test_processes(model: PersonModel, expected: pd.DataFrame) -> None:
    frame = frame_of(model, PLAN, 7)
    check_rows(frame.compute(scheduler="processes", num_workers=2), expected)


@pytest.mark.parametrize("npartitions", [1, 3, 7, 64])
def test_a_cluster(
    client: Any, model: PersonModel, expected: pd.DataFrame, npartitions: int
) -> None:
    check_rows(client.compute(frame_of(model, PLAN, npartitions)).result(), expected)


def test_all_attributes() -> None:
    model = model_with_gaps(ALL_LABELS)
    plan = replace(PLAN, rows=43)
    check_rows(frame_of(model, plan, 3).compute(scheduler="sync"), rows_of(model, plan))


def test_the_usual_blocks_are_those_of_a_plain_sample() -> None:
    model = fitted_model(GENDER_ONLY)
    plan = Plan(BLOCK_ROWS + 1, seed=7)
    check_rows(
        scale.sample(model, plan.rows, seed=7).compute(scheduler="sync"), rows_of(model, plan)
    )


def test_other_blocks_are_other_rows(model: PersonModel, expected: pd.DataFrame) -> None:
    others = frame_of(model, replace(PLAN, block_rows=11)).compute(scheduler="sync")
    assert not others["first"].equals(expected["first"])


@pytest.mark.parametrize(
    ("rows", "npartitions", "divisions"),
    [
        (643, 3, (0, 210, 430, 642)),
        (61, 7, (*range(0, 61, 10), 60)),
        (60, 1000, (*range(0, 60, 10), 59)),  # no more partitions than blocks
        (11, None, (0, 10)),  # one partition for four blocks
        (50, None, (0, 20, 49)),
        (10, 5, (0, 9)),
        (1, 5, (0, 0)),
        (0, 5, (0, 0)),
    ],
)
def test_divisions_are_known(
    rows: int, npartitions: int | None, divisions: tuple[int, ...]
) -> None:
    model = fitted_model(GENDER_ONLY)
    frame = frame_of(model, replace(PLAN, rows=rows), npartitions)
    assert frame.divisions == divisions
    assert frame.npartitions == len(divisions) - 1
    made = frame.compute(scheduler="sync")
    check_rows(made, rows_of(model, replace(PLAN, rows=rows)))
    assert list(made.index) == list(range(rows))


def test_rows_are_found_by_their_numbers(model: PersonModel, expected: pd.DataFrame) -> None:
    frame = frame_of(model, PLAN, 7)
    check_rows(frame.loc[95:105].compute(scheduler="sync"), expected.loc[95:105])


def test_no_rows_have_all_columns(model: PersonModel, expected: pd.DataFrame) -> None:
    made = frame_of(model, replace(PLAN, rows=0)).compute(scheduler="sync")
    check_rows(made, expected.iloc[:0])


def test_columns_of_missing_values_only_are_of_text() -> None:
    model = model_with_gaps(share=0.5)
    plan = Plan(12, 7, block_rows=1)
    frame = frame_of(model, plan, 12)
    assert (frame.dtypes == "string").all()
    made = [part.compute(scheduler="sync") for part in frame.partitions]
    assert any(part.isna().all(axis=None) for part in made)
    assert all((part.dtypes == "string").all() for part in made)
    check_rows(pd.concat(made), rows_of(model, plan))


def test_partitions_are_held_to_the_columns(
    model: PersonModel, monkeypatch: pytest.MonkeyPatch
) -> None:
    def with_one_more(*arguments: Any, **named: Any) -> Iterator[pd.DataFrame]:
        return (block.assign(more="x") for block in sample_blocks(*arguments, **named))

    frame = frame_of(model, PLAN, 3)
    monkeypatch.setattr(partitions, "sample_blocks", with_one_more)
    with pytest.raises(ValueError, match=r"^The columns in the computed data do not match"):
        frame.compute(scheduler="sync")


def test_a_seed_is_drawn_and_logged_once(
    model: PersonModel, caplog: pytest.LogCaptureFixture
) -> None:
    with caplog.at_level("INFO", logger="vantrel"):
        frame = scale.sample(model, 30, block_rows=10)
        once, again = frame.compute(scheduler="sync"), frame.compute(scheduler="sync")
        scale.sample(model, 30, block_rows=10)
    first, second = (re.fullmatch(r"The seed is (\d+)\.", each) for each in caplog.messages)
    assert first
    assert second
    check_rows(once, again)
    check_rows(once, rows_of(model, Plan(30, int(first[1]), 10)))
    assert first[1] != second[1]


def test_a_given_seed_is_not_logged(model: PersonModel, caplog: pytest.LogCaptureFixture) -> None:
    with caplog.at_level("INFO", logger="vantrel"):
        scale.sample(model, 30, seed=7)
    assert caplog.messages == []


@pytest.mark.parametrize("scheduler", ["synchronous", "threads"])
def test_no_source_is_left_changed(model: PersonModel, scheduler: str) -> None:
    before = source_states(model)
    frame_of(model, PLAN, 3).compute(scheduler=scheduler, num_workers=3)
    assert source_states(model) == before


def test_sources_are_left_as_they_were_by_a_block_that_fails(
    monkeypatch: pytest.MonkeyPatch,
) -> None:
    def draw_and_fail(model: PersonModel, *_: object) -> pd.DataFrame:
        model.sample(3)
        raise ZeroDivisionError("nothing to share")

    frame = frame_of(fitted_model(), PLAN, 1)
    monkeypatch.setattr("vantrel.sampling.makers.sample_people", draw_and_fail)
    random.seed(3)
    np.random.seed(3)
    before = source_states()
    with pytest.raises(scale.PartitionError) as caught:
        frame.compute(scheduler="sync")
    assert str(caught.value) == (
        "Rows 0 to 9 (block 0 of the seed 7) could not be made: ZeroDivisionError: nothing to share"
    )
    assert source_states() == before


def test_the_graph_holds_text_and_no_generators(model: PersonModel) -> None:
    frame = frame_of(model, PLAN, 64)
    graph = pickle.dumps(dict(frame.optimize().__dask_graph__()))
    for generator in (b"faker.proxy", b"random", b"models.person"):
        assert generator not in graph
    assert len(graph) < len(dumps(model)) + 64 * 1000


def test_graphs_of_other_samples_have_other_names(model: PersonModel) -> None:
    other = fitted_model(replace(QUICK, password=None))
    plans = [PLAN, replace(PLAN, rows=644), replace(PLAN, seed=8), replace(PLAN, block_rows=11)]
    names = [frame_of(model, plan, 3)._name for plan in plans] + [frame_of(other, PLAN, 3)._name]
    assert len(set(names)) == 5
    assert frame_of(model, PLAN, 3)._name == names[0]


def test_unique_over_all_partitions(client: Any) -> None:
    model = fitted_model(PersonLabels(gender="gender", username="user", email="email"))
    plan = Plan(20_000, seed=7, block_rows=1000, unique=("username", "email"))
    made = client.compute(frame_of(model, plan, 7)).result()
    assert made["user"].is_unique
    assert made["email"].is_unique
    check_rows(made, rows_of(model, plan))
    repeating = rows_of(model, replace(plan, unique=()))
    assert not repeating["user"].is_unique
    assert (made["email"].str.len() == repeating["email"].str.len() + 6).all()


@pytest.mark.filterwarnings(
    "ignore:The inplace keyword in DataFrame.set_index:DeprecationWarning"  # it is Dask that does
)
def test_parquet_files_as_dask_writes_them(
    model: PersonModel, expected: pd.DataFrame, tmp_path: Path
) -> None:
    frame_of(model, PLAN, 3).to_parquet(tmp_path / "people", compute_kwargs={"scheduler": "sync"})
    made = pd.read_parquet(tmp_path / "people")
    check_rows(made.rename_axis(None).astype(expected.dtypes), expected)


NUMBER = "{} is an integer from {} on, not {!r}."


@pytest.mark.parametrize(
    ("given", "message"),
    [
        ({"n": -1}, NUMBER.format("The number of rows", 0, -1)),
        ({"n": 1.5}, NUMBER.format("The number of rows", 0, 1.5)),
        ({"n": True}, NUMBER.format("The number of rows", 0, True)),
        ({"seed": -1}, NUMBER.format("The seed", 0, -1)),
        ({"seed": "7"}, NUMBER.format("The seed", 0, "7")),
        ({"block_rows": 0}, NUMBER.format("The number of rows of a block", 1, 0)),
        ({"npartitions": 0}, "The number of partitions is an integer from 1 on, not 0."),
        ({"npartitions": 2.5}, "The number of partitions is an integer from 1 on, not 2.5."),
        (
            {"unique": ["password"]},
            "'password' cannot be made unique: only email and username can.",
        ),
        (
            {"unique": ("email",)},
            "'email' cannot be made unique: the model does not make it. Fit it with"
            " generate=['email'].",
        ),
    ],
)
def test_bad_values(
    given: dict[str, Any], message: str, capsys: pytest.CaptureFixture[str]
) -> None:
    with pytest.raises(ValueError) as caught:
        scale.sample(fitted_model(GENDER_ONLY), **{"n": 10, **given})
    assert str(caught.value) == message
    assert capsys.readouterr().err == ""  # no seed of a sample that is not made


def table_of_rows() -> pd.DataFrame:
    """A table of which rows are learnt, with gaps and a country that is none."""
    ten = pd.DataFrame(
        {
            "sex": ["f", "m", "f", "unknown", None, "m", "f", "m", "f", None],
            "land": ["DE", "GB", "JP", "DE", "GB", "elsewhere", "RU", None, "FR", None],
            "title": ["Mrs", "Mr", "Dr", None, None, "Mr", "Ms", "Mr", "Mme", None],
        }
    )
    return pd.concat([ten] * 6, ignore_index=True)


@pytest.mark.parametrize("npartitions", [1, 3])
@pytest.mark.parametrize("latin", [False, True])
def test_rows_as_real_ones_are_the_same_here_in_parts_and_on_dask(
    npartitions: int, latin: bool
) -> None:
    made_up = ["firstname", "lastname", "fullname", "email", "mobile_number", "password"]
    columns: dict[str, Any] = {"gender": "sex", "title": "title", "country": "land"}
    model = vantrel.fit(table_of_rows(), generate=made_up, latin=latin, **columns)
    here = vantrel.sample(model, 120_000, seed=5).astype("string[pyarrow]")
    assert here.isna().all(axis="columns").any()
    frame = scale.sample(model, 120_000, seed=5, npartitions=npartitions)
    check_rows(frame.compute(scheduler="synchronous"), here)
    plan = Plan(120_000, 5)
    last = pd.concat(sample_blocks(model, plan, blocks=range(2, 3))).astype("string[pyarrow]")
    check_rows(last, here.iloc[100_000:])


def test_a_table_in_parts_gives_the_same_model_of_rows() -> None:
    import dask.dataframe as dd

    table = table_of_rows().assign(name="SMITH, John")
    whole = vantrel.fit(table)
    in_parts = scale.fit(dd.from_pandas(table, npartitions=4))
    assert dumps(in_parts) == dumps(whole)
    assert whole.meta.ways.full_names == "LAST, First"


def test_conditions_are_refused_as_those_of_a_table_in_memory(model: PersonModel) -> None:
    with pytest.raises(ArgumentError) as caught:
        scale.sample(model, 5, conditions=pd.DataFrame({"gender": ["F"]}))
    assert str(caught.value) == (
        "'conditions' are not taken on Dask: vantrel.sample(model, conditions=...) makes a person for"
        " each row of a table in memory."
    )
