"""Which differences the report says to be by design."""

from pathlib import Path
from typing import Any

import numpy as np
import pandas as pd
import pytest

import vantrel
from support.report_tables import both
from vantrel.fitting import fit
from vantrel.reporting import design
from vantrel.reporting.design import Design
from vantrel.reporting.figures import Figures, compare_labelled
from vantrel.reporting.frequencies import compare_frequencies
from vantrel.reporting.labelled import LabelledTable
from vantrel.reporting.missing import compare_missing_rates
from vantrel.reporting.verdict import FINE, KNOWN, LOOK, OPEN
from vantrel.reporting.verdicts import verdicts
from vantrel.sampling import Plan, sample_blocks
from vantrel.tables import frame_table, read_table

COLUMNS = {"gender": "sex", "title": "title", "lastname": "last", "country": "land"}
ROWS = 4000


def table(**columns: dict[str | None, float]) -> pd.DataFrame:
    """A table of such shares of values; the columns are independent."""
    rng = np.random.default_rng(1)
    return pd.DataFrame(
        {
            name: pd.Series(rng.permutation(np.repeat(np.array([*shares], object), counts(shares))))
            for name, shares in columns.items()
        }
    )


def counts(shares: dict[str | None, float]) -> list[int]:
    return [round(share * ROWS) for share in shares.values()]


def states(figures: Figures) -> dict[str, str]:
    return {each.about: each.state for each in verdicts(figures, None)}


def gap(real: pd.DataFrame, sampled: pd.DataFrame, attribute: str) -> str | None:
    """Why the missing rate of an attribute is by design; it is never what chance explains."""
    found = compare_missing_rates(Design(*both(real, sampled, COLUMNS)), attribute)
    assert found.is_beyond_chance
    return found.by_design


PEOPLE = table(
    sex={"female": 0.4, "male": 0.35, "M": 0.05, "nb": 0.05, "klingon": 0.05, None: 0.1},
    title={"Mr": 0.4, "Mrs": 0.3, "Mx": 0.05, "Dr": 0.05, None: 0.2},
    last={"Lee": 0.5, "Ray": 0.2, None: 0.3},
    land={"Norway": 0.5, "Sweden": 0.47, None: 0.03},
)
SEX = {"female": 0.5, "male": 0.4, None: 0.1}


@pytest.mark.parametrize("left_out", [(), ("sex",), ("sex", "title")])
def test_a_sample_of_a_model_asks_for_no_look(left_out: tuple[str, ...]) -> None:
    real = PEOPLE.drop(columns=list(left_out))
    columns: Any = {attribute: name for attribute, name in COLUMNS.items() if name in real}
    sampled = pd.concat(sample_blocks(fit(real, **columns), Plan(6000, 1, exact=True)))
    found = states(compare_labelled(*both(real, sampled, columns)))
    assert LOOK not in found.values()
    assert found["Missing values"] == KNOWN
    assert found.get("Gender shares", KNOWN) == KNOWN


def test_rows_as_real_ones_are_need_no_reason() -> None:
    columns: Any = COLUMNS
    sampled = pd.concat(sample_blocks(fit(PEOPLE, **columns), Plan(6000, 1)))
    tables = both(PEOPLE, sampled, columns)
    found = states(compare_labelled(*tables, is_bare=False))
    assert {found[about] for about in ("Gender shares", "Title shares", "Missing values")} == {FINE}
    shuffled = sampled.assign(title="Mr", last="Lee")
    found = states(compare_labelled(*both(PEOPLE, shuffled, columns), is_bare=False))
    assert found["Title shares"] == found["Missing values"] == LOOK


def test_each_reason_of_a_gap_is_told() -> None:
    sampled = PEOPLE.copy()
    sampled.loc[~PEOPLE["sex"].isin(["female", "male", "M", "nb"])] = None
    sampled.loc[PEOPLE["sex"] == "nb", "title"] = None
    sampled["title"] = sampled["title"].mask(sampled["sex"].isin(["female", "male", "M"]), "Mr")
    sampled["last"] = sampled["last"].mask(sampled["sex"].notna(), "Lee")
    sampled["land"] = sampled["land"].mask(sampled["sex"].notna(), "Norway")
    assert gap(PEOPLE, sampled, "gender") == design.UNCLEAR_GENDERS
    assert gap(PEOPLE, sampled, "lastname") == design.UNLEARNT
    assert gap(PEOPLE, sampled, "country") == design.BLANK_ROWS
    real = PEOPLE.assign(title="Mr")  # no woman and nobody else has a title
    sampled["title"] = real["title"].where(sampled["sex"].isin(["male", "M"]))
    assert gap(real, sampled, "title") == design.NO_TITLES


def test_titles_that_genders_are_learnt_from_are_missing_where_they_tell_none() -> None:
    real = table(title={"Mr": 0.5, "Mrs": 0.3, "Captain Nemo": 0.2})
    sampled = real.where(real["title"] != "Captain Nemo")
    assert gap(real, sampled, "title") == design.UNCLEAR_TITLES


@pytest.mark.parametrize("attribute", COLUMNS)
def test_gaps_that_no_model_makes_are_not_by_design(attribute: str) -> None:
    real = table(sex=SEX, title={"Mr": 0.5, "Mrs": 0.5}, last={"Lee": 1}, land={"Norway": 1})
    sampled = real.where(real["sex"].notna())
    sampled.loc[: ROWS // 2, COLUMNS[attribute]] = None
    assert gap(real, sampled, attribute) is None
    found = compare_labelled(*both(real, sampled, COLUMNS))
    assert states(found)["Missing values"] == LOOK


def test_a_country_that_was_missing_more_often_than_gender_stays_so() -> None:
    real = table(sex=SEX, land={"Norway": 0.7, None: 0.3})
    blank = real.assign(land=real["land"].fillna("Norway")).where(real["sex"].notna())
    assert gap(real, blank, "country") is None


def test_gaps_are_not_by_design_where_the_real_genders_are_not_known() -> None:
    real = LabelledTable(frame_table(PEOPLE.drop(columns="sex")), COLUMNS)
    sampled = PEOPLE.assign(last=None)
    found = compare_missing_rates(
        Design(real, LabelledTable(frame_table(sampled), COLUMNS)), "lastname"
    )
    assert (found.is_beyond_chance, found.by_design) == (True, None)


def test_spellings_of_a_gender_are_drawn_evenly() -> None:
    real = table(sex={"female": 0.45, "male": 0.45, "M": 0.05, "klingon": 0.05})
    drawn = table(sex={"female": 0.474, "male": 0.263, "M": 0.263})
    found = compare_frequencies(Design(*both(real, drawn, COLUMNS)), "gender")
    assert (found.is_by_chance, found.by_design) == (False, design.EVEN_SPELLINGS)


def test_shares_of_genders_that_are_not_kept_are_not_by_design() -> None:
    real = table(sex={"female": 0.5, "male": 0.45, "M": 0.05})
    drawn = table(sex={"female": 0.6, "male": 0.2, "M": 0.2})
    figures = compare_labelled(*both(real, drawn, COLUMNS))
    assert figures.frequencies[0].by_design is None
    assert states(figures)["Gender shares"] == LOOK


def test_a_gender_that_was_sampled_is_understood() -> None:
    real = table(sex={"female": 0.5, "male": 0.3, "klingon": 0.1, "vulcan": 0.1})
    drawn = table(sex={"female": 0.5 / 0.9, "male": 0.3 / 0.9, "klingon": 0.1 / 0.9})
    sides = both(real, drawn, COLUMNS)
    genders = Design(*sides).genders(sides[0], "gender")
    assert genders == {
        "F": 0.5 * ROWS,
        "M": 0.3 * ROWS,
        "klingon": 0.1 * ROWS,
    }


def test_what_was_given_as_conditions_is_by_design() -> None:
    real = table(sex=SEX, last={"Lee": 1}, land={"Norway": 1})
    given = table(sex={"female": 0.2, "male": 0.4, None: 0.4}, land={"Chad": 0.3, None: 0.7})
    given["last"] = pd.Series("Ray", given.index).where(given["sex"].notna())
    figures = compare_labelled(*both(real, given, COLUMNS), has_conditions=True)
    assert [each.by_design for each in figures.frequencies] == [design.CONDITIONS] * 2
    assert [(each.attribute, each.by_design) for each in figures.missing_rates] == [
        ("gender", design.CONDITIONS),
        ("lastname", design.UNLEARNT),
        ("country", design.CONDITIONS),
    ]
    found = states(figures)
    assert found == {
        "Gender shares": KNOWN,
        "Country shares": KNOWN,
        "Missing values": KNOWN,
        "Repeated rows": OPEN,
        "How it was made": OPEN,
    }
    assert states(compare_labelled(*both(real, given, COLUMNS)))["Gender shares"] == LOOK


def test_names_that_are_missing_more_often_than_given_genders_are_not_by_design() -> None:
    real = table(sex=SEX, last={"Lee": 1})
    given = table(sex={"female": 0.6, "male": 0.4}, last={"Ray": 0.5, None: 0.5})
    figures = compare_labelled(*both(real, given, COLUMNS), has_conditions=True)
    assert states(figures)["Missing values"] == LOOK


def test_the_figure_of_gaps_is_of_those_that_ask_for_a_look() -> None:
    real = table(sex=SEX, last={"Lee": 0.5, None: 0.5}, land={"Norway": 1})
    sampled = real.assign(last="Lee").where(real["sex"].notna())
    sampled.loc[: ROWS // 25, "land"] = None
    (card,) = (
        each
        for each in verdicts(compare_labelled(*both(real, sampled, COLUMNS)), None)
        if each.about == "Missing values"
    )
    assert (card.state, card.words) == (LOOK, "Further apart than chance explains in land.")
    missing = sampled["land"].isna().mean() * 100
    assert card.figure == f"{missing:.1f} points"


def test_rows_need_no_labels_of_their_own() -> None:
    real = PEOPLE.set_axis([0] * ROWS)
    assert compare_labelled(*both(real, real, COLUMNS)) == compare_labelled(
        *both(PEOPLE, PEOPLE, COLUMNS)
    )


def test_equal_tables_need_no_reason() -> None:
    figures = compare_labelled(*both(PEOPLE, PEOPLE, COLUMNS), has_conditions=True)
    assert {each.by_design for each in figures.frequencies} == {None}
    assert {each.by_design for each in figures.missing_rates} == {None}
    assert states(figures)["Missing values"] == FINE


EXAMPLES = Path(__file__).parents[2] / "examples"


@pytest.mark.filterwarnings("ignore::vantrel.errors.BorrowedNamesWarning")  # of Australia
@pytest.mark.parametrize(
    ("name", "columns"),
    [
        ("passengers", {"gender": "sex", "title": "title"}),
        ("respondents", {"gender": "gender", "country": "country"}),
    ],
)
def test_shares_of_rows_as_real_ones_are_as_expected_without_a_reason(
    name: str, columns: Any
) -> None:
    real = read_table(EXAMPLES / f"{name}.csv")
    sampled = vantrel.sample(vantrel.fit(real, detect=False, **columns), 1_000, seed=7)
    found = states(vantrel.compare(real, sampled).figures)
    assert {state for about, state in found.items() if about.endswith(" shares")} == {FINE}
    assert KNOWN not in found.values()
