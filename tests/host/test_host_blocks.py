"""Samples in blocks: the same rows from the same seed, whatever makes them and in which order."""

import random
import subprocess
import sys
import threading
import weakref
from collections.abc import Iterable, Iterator
from functools import partial
from pathlib import Path

import numpy as np
import pandas as pd
import pytest
from faker import Faker

from support.counting import FAKER, calls_of
from support.people import ALL_LABELS, fitted_model
from vantrel.config import PersonLabels
from vantrel.model.models.person import PersonModel
from vantrel.sampling import Plan, check_plan, sample_block, sample_blocks, sample_people
from vantrel.sampling.seeding import OwnSources
from vantrel.storage.models import dumps, loads, save
from vantrel.tables import write_csv, write_table

PLAN = Plan(300, 7, block_rows=100)
SOURCES = [
    ALL_LABELS,
    PersonLabels(gender="gender", title="title", firstname="first", country="country"),
    PersonLabels(title="title", fullname="full", password="secret"),
    PersonLabels(firstname="first", lastname="last", username="user"),
]


@pytest.fixture(scope="module", params=SOURCES, ids=["all", "country", "title", "names"])
def model(request: pytest.FixtureRequest) -> PersonModel:
    return fitted_model(request.param, locales=["en_GB", "de_DE"])


@pytest.fixture(scope="module")
def whole() -> PersonModel:
    """A model of every attribute."""
    return fitted_model(ALL_LABELS)


def blocks(model: PersonModel, numbers: Iterable[int], plan: Plan = PLAN) -> list[pd.DataFrame]:
    """Some blocks, made in the order in which they are named, and sorted then."""
    made = {number: sample_block(model, plan, number) for number in numbers}
    return [made[number] for number in sorted(made)]


def assert_same(one: list[pd.DataFrame], other: list[pd.DataFrame]) -> None:
    for left, right in zip(one, other, strict=True):
        pd.testing.assert_frame_equal(left, right)


# --- the same rows


def test_the_order_in_which_blocks_are_made_does_not_matter(model: PersonModel) -> None:
    in_turn = list(sample_blocks(model, PLAN))
    assert_same(blocks(model, [2, 0, 1]), in_turn)
    assert_same(blocks(model, [1]), in_turn[1:2])


def test_what_was_drawn_before_does_not_matter(model: PersonModel) -> None:
    first = blocks(model, [1])
    model.sample(50)
    sample_block(model, Plan(10, 8), 0)
    assert_same(blocks(model, [1]), first)


def test_a_loaded_model_makes_the_same(model: PersonModel) -> None:
    assert_same(blocks(loads(dumps(model)), [0, 1, 2]), blocks(model, [0, 1, 2]))


def test_another_process_makes_the_same(whole: PersonModel, tmp_path: Path) -> None:
    save(whole, tmp_path / "m.json")
    write_table(sample_blocks(whole, PLAN), tmp_path / "here.csv")
    code = (
        "from vantrel.storage.models import load\n"
        "from vantrel.sampling import Plan, sample_block\n"
        "from vantrel.tables import write_table\n"
        "model, plan = load('m.json'), Plan(300, 7, block_rows=100)\n"
        "blocks = {number: sample_block(model, plan, number) for number in (2, 0, 1)}\n"
        "write_table([blocks[0], blocks[1], blocks[2]], __import__('pathlib').Path('there.csv'))\n"
    )
    subprocess.run([sys.executable, "-c", code], check=True, cwd=tmp_path)
    assert (tmp_path / "there.csv").read_bytes() == (tmp_path / "here.csv").read_bytes()


def test_blocks_and_seeds_differ(model: PersonModel) -> None:
    made = blocks(model, range(3)) + blocks(model, range(3), Plan(300, 8, block_rows=100))
    assert len({block.to_csv(index=False) for block in made}) == 6


def test_a_shorter_sample_begins_with_the_same_blocks(whole: PersonModel) -> None:
    assert_same(list(sample_blocks(whole, Plan(200, 7, block_rows=100))), blocks(whole, [0, 1]))


def test_any_seed_has_rows_of_its_own(whole: PersonModel) -> None:
    seeds = [0, 1, 2**32, 2**64, 2**200]
    made = [tuple(sample_block(whole, Plan(5, seed), 0)["full"]) for seed in seeds]
    assert len(set(made)) == len(seeds)


def test_a_thread_that_draws_all_the_time_changes_nothing(model: PersonModel) -> None:
    expected = blocks(model, [0, 1, 2])
    stop = threading.Event()
    faker, other = Faker(), loads(dumps(model))
    drawn: list[object] = []

    def draw() -> None:
        while not stop.is_set():
            drawn.extend([random.random(), np.random.random(), faker.uuid4()])
            other.sample(3)
            model.sample(3)

    thread = threading.Thread(target=draw)
    usual = sys.getswitchinterval()
    sys.setswitchinterval(1e-6)
    thread.start()
    try:
        for _ in range(20):
            assert_same(blocks(model, [0, 1, 2]), expected)
    finally:
        stop.set()
        sys.setswitchinterval(usual)
        thread.join()
    assert len(set(drawn)) == len(drawn) > 10


def test_threads_make_the_blocks_that_one_makes(whole: PersonModel) -> None:
    expected = blocks(whole, [0, 1, 2])
    models = [loads(dumps(whole)) for _ in range(3)]
    made: dict[int, pd.DataFrame] = {}

    def make(number: int) -> None:
        made[number] = sample_block(models[number], PLAN, number)

    threads = [threading.Thread(target=make, args=[number]) for number in range(3)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert_same([made[number] for number in range(3)], expected)


def test_whole_columns_are_made_at_once(whole: PersonModel) -> None:
    def make(rows: int) -> None:
        sample_people(OwnSources(whole).seeded(7), rows)

    assert calls_of(lambda: make(2_000), FAKER) < 2_000
    few, many = (calls_of(partial(make, rows)) for rows in (2_000, 4_000))
    assert many - few < 200


# --- the parts of a plan


@pytest.mark.parametrize(
    ("rows", "block_rows", "sizes"),
    [(0, 5, [0]), (1, 5, [1]), (5, 5, [5]), (6, 5, [5, 1]), (10, 5, [5, 5]), (3, 1, [1, 1, 1])],
)
def test_blocks_have_the_rows_of_the_plan(rows: int, block_rows: int, sizes: list[int]) -> None:
    model = fitted_model(PersonLabels(gender="gender"))
    made = list(sample_blocks(model, Plan(rows, 7, block_rows)))
    assert [len(block) for block in made] == sizes
    assert [number for block in made for number in block.index] == list(range(rows))
    assert all(list(block) == ["gender"] for block in made)


def test_a_plan_of_many_blocks_is_not_made_before_it_is_asked_for(whole: PersonModel) -> None:
    everything = sample_blocks(whole, Plan(10**15, 7, block_rows=50))
    assert len(next(everything)) == 50


NAMED = {
    "rows": "The number of rows",
    "seed": "The seed",
    "block_rows": "The number of rows of a block",
}


@pytest.mark.parametrize("name", NAMED)
@pytest.mark.parametrize("value", [-1, 1.0, "7", None, True])
def test_a_number_of_a_plan_that_is_out_of_range(name: str, value: object) -> None:
    with pytest.raises(ValueError) as caught:
        Plan(**{"rows": 5, "seed": 7, name: value})  # type: ignore[arg-type]  # that is the test
    least = 1 if name == "block_rows" else 0
    assert str(caught.value) == f"{NAMED[name]} is an integer from {least} on, not {value!r}."


def test_numbers_of_numpy_are_numbers_of_a_plan() -> None:
    plan = Plan(np.int64(5), np.uint32(7), np.int8(2))  # type: ignore[arg-type]  # not declared, but taken
    assert plan == Plan(5, 7, 2)
    assert {type(number) for number in (plan.rows, plan.seed, plan.block_rows)} == {int}


def test_blocks_of_no_rows_are_refused() -> None:
    with pytest.raises(ValueError) as caught:
        Plan(5, 7, block_rows=0)
    assert str(caught.value) == "The number of rows of a block is an integer from 1 on, not 0."


def test_conditions_of_another_length_are_refused(whole: PersonModel) -> None:
    conditions = pd.DataFrame({"gender": ["male"] * 1_200})
    check_plan(whole, Plan(1_200, 7), conditions)
    with pytest.raises(ValueError) as caught:
        sample_blocks(whole, Plan(3, 7), conditions)
    assert str(caught.value) == (
        "There are 1,200 rows of conditions for 3 rows to make: leave the number of rows out."
    )


# --- memory


def most_alive(model: PersonModel, count: int, path: Path) -> int:
    """The most frames of a sample that were alive at a time while it was written."""
    made: list[weakref.ref[pd.DataFrame]] = []
    alive = []

    def watched() -> Iterator[pd.DataFrame]:
        for block in sample_blocks(model, Plan(10 * count, 7, block_rows=10)):
            made.append(weakref.ref(block))
            alive.append(sum(frame() is not None for frame in made))
            yield block

    write_table(watched(), path)
    assert len(made) == count
    return max(alive)


def test_a_long_sample_holds_no_more_blocks_than_a_short_one(tmp_path: Path) -> None:
    model = fitted_model(PersonLabels(gender="gender", fullname="full"))
    few, many = (most_alive(model, count, tmp_path / "t.csv") for count in (5, 25))
    assert many == few <= 3


def test_a_long_sample_is_not_held_for_row_groups(
    tmp_path: Path, monkeypatch: pytest.MonkeyPatch
) -> None:
    pytest.importorskip("pyarrow", reason="Parquet needs pyarrow")
    monkeypatch.setattr("vantrel.tables.writing._GROUP_ROWS", 20)
    model = fitted_model(PersonLabels(gender="gender", fullname="full"))
    few, many = (most_alive(model, count, tmp_path / "t.parquet") for count in (9, 29))
    assert many == few <= 4


def test_what_is_written_first_is_not_kept_back(tmp_path: Path) -> None:
    """Blocks reach the file before later ones are made."""
    model = fitted_model(PersonLabels(gender="gender"))
    written = []
    with (tmp_path / "t.csv").open("wb") as file:

        def watched() -> Iterator[pd.DataFrame]:
            for block in sample_blocks(model, Plan(30, 7, block_rows=10)):
                written.append(file.tell())
                yield block

        write_csv(watched(), file)
    assert 0 == written[0] < written[1] < written[2]
