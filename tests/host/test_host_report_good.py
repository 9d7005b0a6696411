"""Good samples of tables of all kinds ask for no look: each of these once did."""

from pathlib import Path
from typing import Any

import numpy as np
import pandas as pd
import pytest

import vantrel
from vantrel.reporting.verdict import FINE, LOOK, Verdict
from vantrel.sampling import sample_to_file
from vantrel.sampling.record import read_record
from vantrel.tables import open_table

ONE = {"GB": 1}
SIX = {"US": 5, "GB": 3, "DE": 2, "FR": 2, "SE": 1, "ES": 0.3}


def real_people(rows: int, seed: int, countries: Any, *, has_gaps: bool) -> pd.DataFrame:
    """People a few of whom have rare titles, and whose columns are filled more or less often."""
    rng = np.random.default_rng(seed)
    people = vantrel.people(rows, countries=countries, seed=seed).drop(columns="password")
    luck = rng.random(rows)
    people.loc[luck < 0.039, "title"] = "Rev"
    people.loc[luck < 0.036, "title"] = "Prof"
    people.loc[luck < 0.03, "title"] = "Dr"
    if has_gaps:
        for column, rate in zip(people, rng.choice([0, 0.02, 0.1, 0.3, 0.6], 12), strict=False):
            people[column] = people[column].astype(object).mask(rng.random(rows) < rate)
        people.loc[rng.random(rows) < 0.02] = None
    return people


FEW = ["gender", "title", "firstname", "lastname", "country", "email"]


@pytest.mark.parametrize(
    ("rows", "seed", "countries", "has_gaps", "columns"),
    [
        (50, 0, ONE, True, None),  # titles that a model draws by coarser counts
        (50, 4, ONE, True, None),  # combinations of a title drawn so
        (50, 1, SIX, False, None),
        (200, 1, SIX, True, None),  # rows without a title
        (200, 5, ONE, False, None),  # one limit of many
        (200, 7, ONE, False, None),  # a user name made from a real name
        (5000, 0, SIX, True, None),  # names in rows without a country
        (5000, 3, SIX, True, FEW),  # whole rows without an address
    ],
)
@pytest.mark.parametrize("knows_model", [False, True])
def test_a_good_sample_of_any_size_asks_for_no_look(
    tmp_path: Path,
    rows: int,
    seed: int,
    countries: Any,
    has_gaps: bool,
    columns: list[str] | None,
    knows_model: bool,
) -> None:
    real = real_people(rows, seed, countries, has_gaps=has_gaps)
    real = real[columns] if columns else real
    model, path = tmp_path / "model.json", tmp_path / "made.csv"
    vantrel.save(vantrel.fit(real), model)
    sample_to_file(model, path, rows, seed=seed + 1000)
    with open_table(path, empty_is_missing=True) as sample:
        record = read_record(path) if knows_model else None
        found = vantrel.compare(real, sample, record=record)
    assert [each for each in found.verdicts if each.state == LOOK] == []


ABOUT_ACCOUNTS = "Repeated e-mail address and username"
ACCOUNTS = ["gender", "firstname", "lastname", "email", "username", "country"]


def judged_accounts(made: pd.DataFrame) -> Verdict:
    real = vantrel.people(500, countries=ONE, seed=9)[ACCOUNTS]
    found = vantrel.compare(real, made[ACCOUNTS]).verdicts
    return next(each for each in found if each.about == ABOUT_ACCOUNTS)


def test_addresses_and_user_names_that_meet_by_chance_ask_for_no_look() -> None:
    made = vantrel.people(120_000, countries=ONE, seed=2)
    assert made["email"].duplicated().any()
    assert made["username"].duplicated().any()
    found = judged_accounts(made)
    words = "No more sampled values repeat an earlier one than chance explains."
    assert (found.state, found.words) == (FINE, words)


@pytest.mark.parametrize("twice", ["email", "username"])
@pytest.mark.parametrize("rows", [200, 2000, 20_000])
def test_addresses_and_user_names_that_were_pasted_twice_ask_for_a_look(
    rows: int, twice: str
) -> None:
    made = vantrel.people(rows, countries=ONE, seed=1)
    made.loc[:9, twice] = made.loc[10:19, twice].to_numpy()
    assert judged_accounts(made).state == LOOK


def test_whole_real_rows_ask_for_a_look_though_telephone_numbers_come_by_chance() -> None:
    kept = ["gender", "firstname", "lastname", "mobile_number", "country"]
    real = real_people(2_000, 2, SIX, has_gaps=True)[kept]
    made = vantrel.sample(vantrel.fit(real), 2_000, seed=3)
    about = "Whole real rows in the sample"
    states = []
    for pasted in (0, 50):
        made.iloc[:pasted] = real.dropna().iloc[100 : 100 + pasted]
        verdicts = vantrel.compare(real, made).verdicts
        states += [each.state for each in verdicts if each.about == about]
    assert states == [FINE, LOOK]
