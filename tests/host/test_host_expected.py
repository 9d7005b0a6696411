"""What the record of a sample says that its model was to give."""

import pandas as pd
import pytest

import vantrel
from vantrel.model.models.person import PersonModel
from vantrel.sampling import Plan, prepare_conditions
from vantrel.sampling.blocks import BLOCK_ROWS
from vantrel.sampling.expected import Expected, expected_of


@pytest.fixture(scope="module")
def model() -> PersonModel:
    table = pd.DataFrame(
        {
            "sex": ["f"] * 60 + ["m"] * 30 + [None] * 10,
            "title": ["Ms"] * 50 + ["Dr"] * 10 + ["Mr"] * 30 + [None] * 10,
            "land": ["UK", "US"] * 50,
            "last": ["Lee"] * 80 + [None] * 20,
        },
        dtype=object,
    )
    return vantrel.fit(
        table, detect=False, gender="sex", title="title", country="land", lastname="last"
    )


def expected(model: PersonModel, plan: Plan, given: pd.DataFrame | None = None) -> Expected:
    if given is not None:
        given = prepare_conditions(model, given)
    found = expected_of(model, plan, given)
    assert found
    return found


def test_shares_combinations_and_gaps_are_those_of_the_table(model: PersonModel) -> None:
    found = expected(model, Plan(10, 1))
    assert (found.rows, found.min_count) == (BLOCK_ROWS, 5)
    assert found.shares["gender"] == pytest.approx({"f": 2 / 3, "m": 1 / 3}, abs=0.01)
    assert found.shares["title"]["Ms"] == pytest.approx(5 / 9, abs=0.01)
    assert found.attributes == ["gender", "title", "country"]
    combinations = {tuple(cells): share for cells, share in found.combinations}
    assert combinations["f", "Ms", "UK"] == pytest.approx(0.25, abs=0.01)
    assert combinations[None, None, "US"] == pytest.approx(0.05, abs=0.01)
    assert found.missing == pytest.approx(
        {"gender": 0.1, "title": 0.1, "country": 0, "lastname": 0.2}, abs=0.01
    )


def test_the_same_seed_expects_the_same_and_nothing_of_the_sample(model: PersonModel) -> None:
    assert (
        expected(model, Plan(10, 1)) == expected(model, Plan(99, 1)) != expected(model, Plan(10, 2))
    )


def test_titles_of_the_bare_model_are_even(model: PersonModel) -> None:
    found = expected(model, Plan(10, 1, exact=True))
    assert found.min_count is None
    assert found.shares["title"] == pytest.approx({"Mr": 1 / 3, "Ms": 2 / 3}, abs=0.01)


@pytest.mark.parametrize("rows", [10, 2 * BLOCK_ROWS])
def test_what_is_given_is_expected(model: PersonModel, rows: int) -> None:
    given = pd.DataFrame({"sex": ["f", "m", "m", "m", "m"] * (rows // 5)})
    found = expected(model, Plan(rows, 1), given)
    assert found.shares["gender"] == pytest.approx({"f": 0.2, "m": 0.8}, abs=0.01)
    assert found.missing["gender"] == 0


def test_nothing_is_expected_of_conditions_without_rows(model: PersonModel) -> None:
    none = prepare_conditions(model, pd.DataFrame({"sex": pd.Series([], dtype=object)}))
    assert expected_of(model, Plan(0, 1), none) is None
