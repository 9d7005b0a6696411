"""What the report says of real people in a sample: what is copied, and what chance explains."""

from collections.abc import Callable
from typing import Any

import numpy as np
import pandas as pd
import pytest

import vantrel
from support.report_tables import COLUMNS, both
from vantrel.reporting.nearness.nearness import Nearness, compare_nearness
from vantrel.reporting.nearness.rare import Rare
from vantrel.reporting.nearness.shared import MOST_EXAMPLES, Example, Shared, most_by_chance
from vantrel.reporting.verdict import FINE, LOOK, Verdict

ROWS = 400
COUNTRIES = {"GB": 2, "DE": 1, "SE": 1}
ALL = {name: name for name in vantrel.people(1, seed=1)}
PARTS = ("email", "username", "password", "mobile_number")
ABOUT = {
    "fullname": "Real full names in the sample",
    "email": "Real e-mail addresses in the sample",
    "username": "Real usernames in the sample",
    "password": "Real passwords in the sample",
    "mobile_number": "Real telephone numbers in the sample",
}


def people(rows: int, seed: int) -> pd.DataFrame:
    """People with numbers of any range: those for fiction are so few that many people share one."""
    made = vantrel.people(rows, countries=COUNTRIES, seed=seed)
    digits = np.random.default_rng(seed).integers(10**8, 10**9, rows)
    made = made.assign(mobile_number=[f"0{number}" for number in digits])
    return made.drop(columns=["home_number", "work_number"])


REAL, GOOD = people(ROWS, 1), people(ROWS, 2)


def near(real: pd.DataFrame, sampled: pd.DataFrame, columns: Any = ALL) -> Nearness:
    return compare_nearness(*both(real, sampled, columns))


def kind(found: Nearness, name: str) -> Shared:
    return next(each for each in found.shared if each.kind == name)


def judged(real: pd.DataFrame, sampled: pd.DataFrame) -> dict[str, Verdict]:
    return {each.about: each for each in vantrel.compare(real, sampled).verdicts}


def named(*names: tuple[str | None, str | None]) -> pd.DataFrame:
    return pd.DataFrame(names, columns=["first", "last"], dtype=object)


def full(*names: str | None) -> pd.DataFrame:
    return pd.DataFrame({"full": pd.Series(names, dtype=object)})


@pytest.mark.parametrize("rows", [200, ROWS, 3000])
@pytest.mark.parametrize("seed", [5, 6])
def test_people_who_are_made_up_come_as_near_as_chance_has_it(rows: int, seed: int) -> None:
    real, sampled = (
        vantrel.people(rows, countries=COUNTRIES, seed=each) for each in (seed, seed + 10)
    )
    sampled.loc[::7, ["email", "mobile_number"]] = None
    found = near(real, sampled)
    assert {each.kind for each in found.shared if not each.is_by_chance} == set()
    assert kind(found, "Whole row").bearing == 0
    if rows == 3000:
        names = kind(found, "Full name")
        assert names.bearing > 30
        assert names.chance == pytest.approx(names.bearing, rel=0.35)


@pytest.mark.parametrize("column", ABOUT)
@pytest.mark.parametrize("copied", [ROWS, ROWS // 20])
def test_a_copied_real_column_asks_for_a_look(column: str, copied: int) -> None:
    fine = judged(REAL, GOOD)[ABOUT[column]]
    assert (fine.state, fine.section) == (FINE, "real-people")
    sampled = GOOD.copy()
    sampled.loc[: copied - 1, column] = REAL.loc[: copied - 1, column].sample(frac=1).to_numpy()
    found = judged(REAL, sampled)[ABOUT[column]]
    assert found.state == LOOK
    assert copied <= int(found.figure.removesuffix(" rows")) < copied + 3
    assert found.words.endswith("Find out how they came into the sample before you hand it on.")


@pytest.mark.parametrize(
    "written",
    [
        lambda first, last: f"{last}, {first}",
        lambda first, last: f"{last.upper()} {first}",
        lambda first, last: f"Dr. {first}  {last}",
        lambda first, last: f"{last}, Prof. Dr. {first}".casefold(),
        lambda first, last: f"{first} {last}".translate(str.maketrans("äöüåéø", "aouaeo")),
        lambda first, last: f"\t{first}-{last}, PhD",
    ],
)
def test_a_real_table_in_another_spelling_is_not_a_sample(
    written: Callable[[str, str], str],
) -> None:
    pairs = zip(REAL["firstname"], REAL["lastname"], strict=True)
    respelt = full(*(written(*pair) for pair in pairs)).rename(columns={"full": "fullname"})
    found = judged(REAL, respelt.sample(frac=1, random_state=1))
    assert (found[ABOUT["fullname"]].figure, found[ABOUT["fullname"]].state) == ("400 rows", LOOK)


def test_whole_rows_are_real_ones_in_another_spelling_too() -> None:
    respelt = REAL.drop(columns=["firstname", "lastname"]).assign(
        fullname=REAL["lastname"] + ", " + REAL["firstname"], email=REAL["email"].str.upper()
    )
    assert judged(REAL, respelt)["Whole real rows in the sample"].figure == "400 rows"
    other = respelt.assign(gender=respelt["gender"].iloc[::-1].to_numpy())
    assert 0 < kind(near(REAL, other), "Whole row").bearing < ROWS
    assert judged(REAL, GOOD)["Whole real rows in the sample"].state == FINE


def test_rows_that_tell_nobody_apart_are_not_looked_for() -> None:
    learnt = REAL[["gender", "title", "country"]]
    assert near(learnt, learnt).rows is None
    assert near(REAL, learnt).rows is None


def test_a_row_without_anything_that_tells_is_nobodys() -> None:
    nobody = REAL.assign(**dict.fromkeys([*PARTS, "firstname", "lastname", "fullname"]))
    assert kind(near(nobody, nobody), "Whole row").bearing == 0


NUMBERS = pytest.mark.parametrize(
    ("real", "sampled", "is_same"),
    [
        ("+49 151 23456789", "0151/23456789", True),
        ("(231) 555-0142", "12315550142", True),
        ("0151 23456789", "0151 23456780", False),
        ("51 23 45", "512-345", True),
        ("51 23 4", "512-34", False),
    ],
)


@NUMBERS
def test_telephone_numbers_agree_by_their_digits(real: str, sampled: str, is_same: bool) -> None:
    columns = {"mobile_number": "m", "work_number": "w"}
    tables = pd.DataFrame({"w": [real, None]}), pd.DataFrame({"m": [sampled, "040 12345"]})
    (found,) = near(pd.DataFrame({"m": ["x"] * 2}).join(tables[0]), tables[1], columns).parts
    assert found.bearing == is_same


@NUMBERS
def test_numbers_agree_in_a_report_as_where_people_are_replaced(
    real: str, sampled: str, is_same: bool
) -> None:
    pa = pytest.importorskip("pyarrow")
    from vantrel.replacing.making.numbers import ends_of_numbers

    one, other = ends_of_numbers(pa.array([real, sampled])).tolist()
    assert (one == other != 0) == is_same


def test_what_chance_explains_is_that_of_halves_put_together_at_random() -> None:
    real = named(("Ann", "Lee"), ("Cy", "Ray"))
    sampled = named(("Ann", "Lee"), ("Ann", "Ray"), ("Bob", "Lee"), ("Bob", "Ray"), (None, "Lee"))
    (found, *_) = near(real, sampled, COLUMNS).names
    # Two of four rows have "Ann", two have "Lee": 2 * 2 / 4.
    assert found == Shared(
        "First and last name together", 2, 1, 4, 1, 1.0, (Example("Ann Lee", 1, 1),)
    )


def test_names_meet_within_their_country() -> None:
    sampled = pd.concat([named(*[("Ann", "Lee")] * 10), named(*[("Bob", "Ray")] * 10)])
    columns = {**COLUMNS, "country": "land"}
    apart = sampled.assign(land=["GB"] * 10 + ["US"] * 10)
    real = named(("Ann", "Ray"))
    assert near(real, sampled, columns).names[0].chance == pytest.approx(100 / 20)
    assert near(real, apart, columns).names[0].chance == 0
    few = apart[5:15]  # too few of each country to be looked at apart
    assert near(real, few, columns).names[0].chance == pytest.approx(25 / 10)


def test_a_real_name_that_is_turned_around_is_one() -> None:
    sampled = full("Lee Ann", "Lee Bob", "Ray Ann", "Ray Bob")
    (found,) = near(full("Ann Lee"), sampled, COLUMNS).names
    assert (found.bearing, found.chance) == (1, 1.0)


def test_names_in_one_column_are_those_in_two() -> None:
    parts, whole = named(("Ann", "Lee"), ("Bob", "Ray")), full("Lee, Ann", "Cy Orr")
    for real, sampled in ((parts, whole), (whole, parts)):
        (found,) = near(real, sampled, COLUMNS).names
        assert (found.bearing, found.found) == (1, 1)
    twice = pd.concat([parts, whole], axis="columns")
    names = near(full("Bob Ray"), twice, COLUMNS).names
    assert [(each.kind, each.bearing) for each in names] == [
        ("Full name", 0),
        ("First and last name together", 1),
    ]


def test_case_white_space_and_accents_do_not_hide_a_name() -> None:
    real = full("Ann  LEE", "ANN Lee", " ", "Straße Ærø", None)
    sampled = full("ann\tlee ", "STRASSE AERO", "\u00a0", "Bob Orr")
    (found,) = near(real, sampled, COLUMNS).names
    assert (found.real_values, found.found, found.sampled_rows, found.bearing) == (2, 2, 3, 2)
    assert found.examples == (Example("ANN Lee", 1, 1), Example("Straße Ærø", 1, 2))


def test_the_examples_are_those_of_the_most_rows_and_only_so_many() -> None:
    letters = list("abcdefgh")
    (found,) = near(full(*letters), full(*letters, "h", "h", "g"), COLUMNS).names
    assert [each.value for each in found.examples] == ["h", "g", "a", "b", "c"]
    assert found.examples[:2] == (Example("h", 3, 8), Example("g", 2, 7))
    assert len(found.examples) == MOST_EXAMPLES


def test_tables_without_common_names_have_nothing_to_compare() -> None:
    none = pd.DataFrame({"age": [1]})
    assert near(none, named(("Ann", "Lee")), COLUMNS).has_unchecked_names
    found = near(pd.DataFrame({"first": ["A"]}), pd.DataFrame({"last": ["A"]}), COLUMNS)
    assert (found.shared, found.rare, found.has_unchecked_names) == ([], (), False)


def test_tables_without_rows_share_nothing() -> None:
    for real, sampled in ((REAL.head(0), GOOD), (REAL, GOOD.head(0)), (REAL.head(0),) * 2):
        assert {each.bearing for each in near(real, sampled).shared} == {0}


def test_rare_events_have_the_limits_of_the_poisson_distribution() -> None:
    assert [most_by_chance(expected) for expected in (0, 0.005, 1, 10, 1000)] == [
        0,
        1,
        6,
        24,
        1120,
    ]  # fmt: skip - a table of figures


def learnt(**counts: int) -> pd.DataFrame:
    """Rows of gender, title and country, as in ``F_Ms_GB=10``."""
    cells = [name.split("_") for name, rows in counts.items() for _ in range(rows)]
    return pd.DataFrame(cells, columns=["sex", "title", "land"])


COMMON = {"F_Ms_GB": 400, "M_Mr_GB": 400, "F_Ms_DE": 100, "M_Mr_DE": 96}


def rare(real: pd.DataFrame, sampled: pd.DataFrame) -> dict[str, Rare]:
    return {each.kind: each for each in near(real, sampled, COLUMNS).rare}


def test_a_rare_title_that_came_through_asks_for_a_look() -> None:
    real = learnt(**COMMON, M_Duke_GB=4)
    assert rare(real, learnt(**COMMON)) == {
        "Title of few people": Rare("Title of few people", ("title",), 1, 0, 0, 0.0, ())
    }
    found = rare(real, learnt(**COMMON, M_Duke_GB=1))["Title of few people"]
    assert (found.bearing, found.examples, found.is_by_chance) == (1, (("Duke", 1),), False)
    assert rare(learnt(**COMMON, M_Duke_GB=5), real) == {}


def with_gaps(table: pd.DataFrame, **columns: str) -> pd.DataFrame:
    """Empties a column where it stands beside a value of another one, as in ``title="land_SE"``."""
    for column, beside in columns.items():
        other, value = beside.split("_")
        table[column] = table[column].mask(table[other] == value)
    return table


def test_a_country_of_many_is_not_rare_where_few_of_them_have_a_title() -> None:
    real = with_gaps(learnt(**COMMON, M_Mr_SE=27), title="land_SE")
    real.loc[len(real)] = ["M", "Mr", "SE"]
    assert "Country of few people" not in rare(real, real)


def test_a_rare_title_in_rows_without_a_country_came_through_all_the_same() -> None:
    real = learnt(**COMMON, M_Duke_GB=2)
    sampled = with_gaps(learnt(**COMMON, M_Duke_GB=3), land="title_Duke")
    found = rare(real, sampled)["Title of few people"]
    assert (found.bearing, found.is_by_chance) == (3, False)
    nowhere = rare(with_gaps(real, land="title_Duke"), sampled)["Title of few people"]
    assert (nowhere.real, nowhere.bearing) == (1, 3)


def test_a_rare_spelling_of_a_gender_tells_of_nobody() -> None:
    assert rare(learnt(**COMMON, female_Ms_GB=1), learnt(**COMMON)).keys() == {
        "Gender, title and country together"
    }
    assert "Gender of few people" in rare(learnt(**COMMON, Klingon_Ms_GB=1), learnt(**COMMON))


def test_a_rare_combination_may_come_about_by_chance_or_be_kept() -> None:
    together = "Gender, title and country together"
    real = learnt(**COMMON, M_Mr_FR=6, F_Ms_FR=3)
    mixed = rare(real, learnt(**COMMON, M_Mr_FR=5, F_Ms_FR=4))[together]
    assert (mixed.real, mixed.found, mixed.bearing) == (1, 1, 4)
    assert mixed.chance == pytest.approx(504 * 9 / 1005)
    assert mixed.is_by_chance
    kept = rare(learnt(**COMMON, M_Ms_GB=2), learnt(**COMMON, M_Ms_GB=1))[together]
    assert (kept.chance, kept.is_by_chance) == (0, False)


def test_what_few_people_have_is_judged() -> None:
    about = "What few real people have"
    columns = {"sex": "gender", "title": "title", "land": "country"}
    real, good, kept = (
        learnt(**COMMON, **more).rename(columns=columns)
        for more in ({"M_Sir_GB": 4}, {}, {"M_Sir_GB": 2})
    )
    assert judged(real, good)[about] == Verdict(
        about,
        "0 of 1",
        FINE,
        "No value or combination that fewer than five real rows have came through.",
        "real-people",
    )
    found = judged(real, kept)[about]
    assert (found.state, found.figure) == (LOOK, "1 of 1")
    assert found.words.startswith(
        "What fewer than five real rows have came through: title of few people in 2 rows."
    )
    assert about not in judged(good, good)


IN_ORDER = "Real columns in the same order"


@pytest.mark.parametrize("columns", [["lastname", "gender"], ["gender", "lastname", "country"]])
@pytest.mark.parametrize("rows", [ROWS, ROWS // 10])
def test_a_real_column_in_the_same_order_asks_for_a_look(columns: list[str], rows: int) -> None:
    """All of its last names are in lists, so that each may have been made up."""
    real, sampled = REAL[columns], GOOD[columns].copy()
    assert judged(real, sampled)[IN_ORDER].state == FINE
    pasted = real["lastname"].str.upper()
    sampled.loc[: rows - 1, "lastname"] = pasted[:rows]
    found = judged(real, sampled)[IN_ORDER]
    assert (found.figure, found.state) == ("1 column", LOOK)
    assert "more often than chance explains: lastname in 4" in found.words
    mixed = sampled.assign(lastname=pasted.sample(frac=1, random_state=1).to_numpy())
    assert judged(real, mixed)[IN_ORDER].state == FINE


def test_a_column_of_few_values_is_the_same_in_many_rows_by_chance() -> None:
    real, sampled = (
        pd.DataFrame(
            {"sex": ["f", "m"] * 200, "last": np.random.default_rng(seed).choice(["A", "B"], 400)}
        )
        for seed in (1, 2)
    )
    (found,) = near(real, sampled, {"gender": "sex", "lastname": "last"}).in_place
    assert found.is_by_chance
    assert found.same == pytest.approx(200, abs=40)
    assert found.chance == pytest.approx(200, abs=20)
    given = near(real, sampled.assign(sex=real["sex"]), {"gender": "sex"})
    assert given.in_place == ()


@pytest.mark.parametrize("rows", [1, 10, 20])
def test_one_common_name_in_its_place_in_a_small_table_is_by_chance(rows: int) -> None:
    real = pd.DataFrame({"last": [f"R{n}" for n in range(rows)]})
    sampled = pd.DataFrame({"last": ["R0", *(f"S{n}" for n in range(1, rows))]})
    (found,) = near(real, sampled, {"lastname": "last"}).in_place
    assert (found.same, found.chance, found.is_by_chance) == (1, 1 / rows, True)


def test_all_names_in_their_places_in_a_small_table_are_not_by_chance() -> None:
    real = pd.DataFrame({"last": [f"R{n}" for n in range(10)]})
    (found,) = near(real, real, {"lastname": "last"}).in_place
    assert (found.same, found.chance, found.is_by_chance) == (10, 1, False)


UNLISTED = "Real rare last names in the sample"


def with_rare_last_names(table: pd.DataFrame) -> pd.DataFrame:
    """Every fourth person has a last name that no list has."""
    own = [f"Q{chr(97 + n % 26)}{chr(97 + n // 26)}wick" for n in range(len(table))]
    return table.assign(lastname=table["lastname"].mask(np.arange(len(table)) % 4 == 0, own))


@pytest.mark.parametrize("columns", [["lastname", "gender"], ["firstname", "lastname", "country"]])
def test_real_last_names_beside_other_first_names_ask_for_a_look(columns: list[str]) -> None:
    real = with_rare_last_names(REAL)
    sampled = GOOD[columns].assign(lastname=real["lastname"].to_numpy())
    found = judged(real[columns], sampled)[UNLISTED]
    assert (found.figure, found.state) == ("100 rows", LOOK)
    assert found.words.startswith(
        "25.0% of the values in the sample are the rare last name of a real person, and chance"
        " explains about none of them."
    )


@pytest.mark.filterwarnings("ignore::vantrel.errors.BorrowedNamesWarning")  # IS, in older Faker
@pytest.mark.parametrize("seed", range(2, 7))
@pytest.mark.parametrize("rows", [200, 2000])
def test_made_up_last_names_are_none_of_real_people_alone(rows: int, seed: int) -> None:
    sampled = vantrel.people(rows, countries={**COUNTRIES, "ES": 1, "PL": 1, "IS": 1}, seed=seed)
    sampled.loc[::5, "lastname"] = None
    real = vantrel.people(2000, countries={**COUNTRIES, "ES": 1, "PL": 1, "IS": 1}, seed=1)
    found = judged(with_rare_last_names(real), sampled)[UNLISTED]
    assert (found.figure, found.state) == ("0", FINE)
    assert UNLISTED not in judged(real, sampled)
