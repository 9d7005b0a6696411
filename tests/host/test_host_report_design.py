"""What the report says where the record of a sample tells what its model was to give."""

import json
from pathlib import Path
from typing import Any

import duckdb
import msgspec
import numpy as np
import pandas as pd
import pytest

import vantrel
from support.report_tables import both
from vantrel.reporting import meant
from vantrel.reporting.comparison import Comparison
from vantrel.reporting.figures import compare_labelled
from vantrel.reporting.missing import compare_all_missing_rates
from vantrel.reporting.verdict import FINE, KNOWN, LOOK, OPEN, Verdict
from vantrel.sampling import sample_to_file
from vantrel.sampling.expected import Expected
from vantrel.sampling.record import read_record, record_path
from vantrel.tables import open_table, read_table

COLUMNS: Any = {"gender": "sex", "title": "title", "lastname": "last", "country": "land"}
ROWS = 4000

TOGETHER = "Gender, title and country together"
SHARES = ("Gender shares", "Title shares", "Country shares", TOGETHER)


def real_people(*, has_gaps: bool) -> pd.DataFrame:
    """Rows in which titles go with genders, and some values are rare."""
    rng = np.random.default_rng(1)
    sex = rng.choice(["female", "male", "M", "nb"], ROWS, p=[0.5, 0.4, 0.05, 0.05])
    titles = {"female": ["Mrs", "Ms", "Dr"], "nb": ["Mx"] * 3}
    shares = {"female": [0.6, 0.3, 0.1], "nb": [0.2, 0.2, 0.6]}
    title = [
        rng.choice(titles.get(each, ["Mr", "Sir", "Dr"]), p=shares.get(each, [0.85, 0.05, 0.1]))
        for each in sex
    ]
    land = rng.choice(["Norway", "Sweden", "UK"], ROWS, p=[0.5, 0.3, 0.2])
    last = [f"L{number}" for number in range(ROWS)]
    people = pd.DataFrame({"sex": sex, "title": title, "last": last, "land": land}, dtype=object)
    people.loc[:2, "title"], people.loc[1:3, "land"] = "Duke", "Chad"
    if has_gaps:
        people = people.mask(pd.DataFrame(rng.random(people.shape) < 0.1, columns=people.columns))
        people.loc[rng.random(ROWS) < 0.05] = None
    return people


class Made:
    """A model's sample in a file, with its record."""

    def __init__(self, folder: Path, real: pd.DataFrame, rows: int, **options: Any) -> None:
        self.real, self.path, model = real, folder / "made.csv", folder / "model.json"
        given = options.pop("given", None)
        vantrel.save(vantrel.fit(real, detect=False, **COLUMNS), model)
        if given is not None:
            options["conditions"] = folder / "given.csv"
            given.to_csv(options["conditions"], index=False)
        sample_to_file(model, self.path, rows or None, seed=7, **options)

    def compared(self, *, knows_model: bool = True) -> Comparison:
        record = read_record(self.path) if knows_model else None
        with open_table(self.path, empty_is_missing=True) as sample:
            return vantrel.compare(self.real, sample, record=record, **COLUMNS)

    def verdicts(self, *, knows_model: bool = True) -> dict[str, Verdict]:
        return {each.about: each for each in self.compared(knows_model=knows_model).verdicts}

    def states(self, *, knows_model: bool = True) -> dict[str, str]:
        return {about: each.state for about, each in self.verdicts(knows_model=knows_model).items()}

    def change(self, **columns: Any) -> None:
        """Changes columns by functions of the whole table."""
        table = read_table(self.path)
        for name, function in columns.items():
            table[name] = function(table)
        table.to_csv(self.path, index=False)


def shuffled(column: str) -> Any:
    return lambda table: table[column].sample(frac=1, random_state=1).to_numpy()


@pytest.mark.parametrize("has_gaps", [False, True])
@pytest.mark.parametrize("rows", [200, 20_000])
@pytest.mark.parametrize("knows_model", [False, True])
def test_a_good_sample_asks_for_no_look(
    tmp_path: Path, rows: int, has_gaps: bool, knows_model: bool
) -> None:
    made = Made(tmp_path, real_people(has_gaps=has_gaps), rows)
    found = made.states(knows_model=knows_model)
    assert LOOK not in found.values()
    assert {found[each] for each in SHARES} == {FINE}


def with_a_rare_title(*, has_gaps: bool) -> pd.DataFrame:
    people = real_people(has_gaps=has_gaps)
    people.loc[10::90, "title"] = "Prof"  # 1.1% of the rows
    return people


@pytest.mark.parametrize("has_gaps", [False, True])
@pytest.mark.parametrize("rows", [200, 2000])
def test_samples_of_all_seeds_are_good(tmp_path: Path, rows: int, has_gaps: bool) -> None:
    made = Made(tmp_path, with_a_rare_title(has_gaps=has_gaps), rows)
    for seed in range(1, 6):
        sample_to_file(tmp_path / "model.json", made.path, rows, seed=seed, force=True)
        for knows_model in (False, True):
            found = made.states(knows_model=knows_model)
            assert {found[about] for about in SHARES} == {FINE}


@pytest.mark.parametrize("knows_model", [False, True])
def test_a_dropped_value_of_few_rows_asks_for_a_look(tmp_path: Path, knows_model: bool) -> None:
    made = Made(tmp_path, with_a_rare_title(has_gaps=False), 2000)
    made.change(title=lambda table: table["title"].mask(table["title"] == "Prof"))
    found = made.verdicts(knows_model=knows_model)["Title shares"]
    assert (found.state, found.words) == (
        LOOK,
        "Rarer or more frequent than chance explains: Prof. See whether the sample was changed, or"
        " made from another model.",
    )


@pytest.mark.parametrize("knows_model", [False, True])
@pytest.mark.parametrize(
    ("column", "function", "looks"),
    [
        ("title", shuffled("title"), {TOGETHER, "Titles and genders"}),
        ("land", lambda table: table["land"].sort_values().to_numpy(), set()),
        (
            "title",
            lambda table: table["title"].replace("Sir", "Mr"),
            {"Title shares", TOGETHER},
        ),
        (
            "title",
            lambda table: np.random.default_rng(1).choice(["Mr", "Mrs", "Mx", "Dr"], len(table)),
            {"Title shares", TOGETHER, "Titles and genders"},
        ),
        (
            "title",
            lambda table: table["title"].mask(table["sex"] == "female", "Mr"),
            {"Title shares", TOGETHER, "Titles and genders"},
        ),
        (
            "sex",
            lambda table: table["sex"].map({"female": "male", "male": "female"}),
            {"Gender shares", TOGETHER, "Titles and genders", "Missing values"},
        ),
        ("land", lambda table: "UK", {"Country shares", TOGETHER}),
        ("last", lambda table: table["last"].mask(table.index < 400), {"Missing values"}),
    ],
    ids=["shuffled", "sorted", "dropped", "even", "everybody Mr", "swapped", "one land", "gaps"],
)
def test_a_planted_fault_asks_for_a_look(
    tmp_path: Path, column: str, function: Any, looks: set[str], knows_model: bool
) -> None:
    made = Made(tmp_path, real_people(has_gaps=False), 4000)
    made.change(**{column: function})
    states = made.states(knows_model=knows_model)
    found = {about for about, state in states.items() if state == LOOK}
    assert found - {"How it was made"} == looks
    assert KNOWN not in states.values()


@pytest.mark.parametrize("has_gaps", [False, True])
def test_what_the_bare_model_gives_is_by_design_where_the_model_is_known(
    tmp_path: Path, has_gaps: bool
) -> None:
    real = real_people(has_gaps=has_gaps)
    real["last"] = real["last"].fillna("Lee")  # blank rows have none
    made = Made(tmp_path, real, 4000, exact=True)
    found = made.verdicts()
    assert LOOK not in {each.state for each in found.values()}
    assert found["Title shares"].state == found["Gender shares"].state == KNOWN
    assert found["Title shares"].words == f"What the model was to give. {meant.BARE}"
    if has_gaps:
        assert (found["Missing values"].state, found["Missing values"].words) == (KNOWN, meant.BARE)
    unknown = made.states(knows_model=False)
    assert unknown["Title shares"] == LOOK
    assert KNOWN not in unknown.values()


def test_by_design_does_not_excuse_what_no_model_made(tmp_path: Path) -> None:
    made = Made(tmp_path, real_people(has_gaps=False), 4000, exact=True)
    made.change(title=lambda _: "Mr")
    found = made.verdicts()["Title shares"]
    assert found.state == LOOK
    assert found.words.startswith("Not what the model was to give: it is 0.")
    assert found.words.endswith("See whether the sample was changed, or made from another model.")


def test_given_rows_have_their_own_shares_by_design(tmp_path: Path) -> None:
    given = pd.DataFrame({"sex": ["male"] * 900 + ["female"] * 100, "land": ["UK", None] * 500})
    made = Made(tmp_path, real_people(has_gaps=False), 0, given=given)
    found = made.verdicts()
    assert found["Gender shares"].words == f"What the model was to give. {meant.CONDITIONS}"
    assert {found[each].state for each in SHARES} == {KNOWN}
    assert (found["Missing values"].state, found["Missing values"].words) == (
        KNOWN,
        meant.CONDITIONS,
    )
    made.change(sex=lambda table: np.where(np.arange(len(table)) % 2, "male", "female"))
    assert made.states()["Gender shares"] == LOOK  # near the real table, and not what was given


def test_what_is_left_out_as_too_rare_is_told(tmp_path: Path) -> None:
    real = real_people(has_gaps=False)
    real.loc[:23, "land"] = np.repeat(["Chad", "Peru", "Cuba", "Fiji", "Oman", "Mali"], 4)
    made = Made(tmp_path, real, 300_000)
    found = made.verdicts()["Country shares"]
    assert (found.state, found.words) == (
        KNOWN,
        "What the model was to give. The model leaves out values that fewer than 5 real rows have,"
        " and draws combinations in fewer by coarser counts.",
    )
    assert made.states(knows_model=False)["Country shares"] == LOOK


def test_gaps_where_rare_values_are_left_out_are_by_design() -> None:
    real = real_people(has_gaps=False)[["sex", "land"]]
    real["land"] = [f"L{row // 4}" if row < 400 else "UK" for row in range(ROWS)]
    sampled = real.assign(land=real["land"].mask(real.index < 400))
    expected = Expected(
        rows=ROWS,
        min_count=5,
        shares={},
        attributes=[],
        combinations=[],
        missing={"gender": 0, "country": 0.1},
    )
    known = meant.Meant(expected, "Left out.", is_otherwise=False)
    gender, country = compare_all_missing_rates(*both(real, sampled, COLUMNS), known)
    assert (gender.by_design, country.by_design) == (None, "Left out.")
    usual = real.assign(land="UK")  # has no rare value to leave out
    _, country = compare_all_missing_rates(*both(usual, sampled, COLUMNS), known)
    assert country.by_design is None


def test_a_model_of_another_table_is_no_excuse(tmp_path: Path) -> None:
    made = Made(tmp_path, real_people(has_gaps=False), 2000)
    made.real = made.real.assign(land=["UK", "Norway", "Sweden", "UK"] * (ROWS // 4))
    found = made.verdicts()["Country shares"]
    assert found.state == LOOK
    assert found.words.endswith(
        "The model was to give that: see whether it was fitted to this table."
    )


def test_missing_values_that_the_model_was_not_to_give_are_named(tmp_path: Path) -> None:
    made = Made(tmp_path, real_people(has_gaps=False), 2000)
    made.real.loc[: ROWS // 4, "land"] = None
    made.change(last=lambda table: table["last"].mask(table.index < 500))
    found = made.verdicts()["Missing values"]
    assert (found.state, found.words) == (
        LOOK,
        "Not what the model was to give in last. Further apart than chance explains in land.",
    )


def test_a_file_that_was_changed_is_judged_and_said_to_be_changed(tmp_path: Path) -> None:
    made = Made(tmp_path, real_people(has_gaps=False), 500)
    assert made.verdicts()["How it was made"].state == FINE
    made.change(last=lambda table: "Lee")
    comparison = made.compared()
    assert comparison.verdicts[-1].words == "The file was changed after it was made."
    assert comparison.verdicts[-1].state == LOOK
    assert "The file is not the one that was made: it was changed since." in comparison.to_html()


NOT_KNOWN = (
    "The model and the seed give the same rows again with the versions installed here. Whether the"
    " table was changed since is not known: that is told of a file whose SHA-256 is in the record,"
    " and neither of a folder nor of a table in memory."
)


@pytest.mark.parametrize("last", [None, "Lee"])
def test_whether_a_table_in_memory_was_changed_is_not_known(
    tmp_path: Path, last: str | None
) -> None:
    made = Made(tmp_path, real_people(has_gaps=False), 500)
    table = read_table(made.path)
    table["last"] = last or table["last"]
    comparison = vantrel.compare(made.real, table, record=read_record(made.path), **COLUMNS)
    assert comparison.verdicts[-1] == Verdict(
        "How it was made", "seed 7", OPEN, NOT_KNOWN, "origin"
    )
    assert "Whether the table was changed since is not known" in comparison.to_html()
    fewer = vantrel.compare(made.real, table[1:], record=read_record(made.path), **COLUMNS)
    assert fewer.verdicts[-1].words == "The table no longer has as many rows as were made."


def test_whether_a_folder_of_parts_was_changed_is_not_known(tmp_path: Path) -> None:
    made = Made(tmp_path, real_people(has_gaps=False), 500)
    record, folder = read_record(made.path), tmp_path / "parts"
    assert record
    folder.mkdir()
    for at in range(2):
        part = f"SELECT * REPLACE ('Lee' AS last) FROM '{made.path}' LIMIT 250 OFFSET {250 * at}"
        duckdb.execute(f"COPY ({part}) TO '{folder}/part-{at}.parquet'")
    of_folder = msgspec.structs.replace(record, file_sha256=None)
    with open_table(folder, empty_is_missing=True) as sample:
        found = vantrel.compare(made.real, sample, record=of_folder, **COLUMNS).verdicts[-1]
    assert (found.state, found.words) == (OPEN, NOT_KNOWN)


def test_a_record_of_schema_1_is_read_and_tells_nothing_of_the_model(tmp_path: Path) -> None:
    made = Made(tmp_path, real_people(has_gaps=False), 4000, exact=True)
    path = record_path(made.path)
    form = json.loads(path.read_text())
    del form["expected"], form["file_sha256"]
    path.write_text(json.dumps(form | {"schema_version": 1}))
    assert made.states() == made.states(knows_model=False) | {"How it was made": OPEN}


def test_combinations_are_told_where_their_shares_differ_most() -> None:
    real = pd.DataFrame({"sex": ["m", "m", "f", None], "land": ["UK", "UK", "UK", "US"]})
    sampled = pd.DataFrame({"sex": ["m", "f", "f", None], "land": ["UK", "UK", "UK", "US"]})
    found = compare_labelled(*both(real, sampled, COLUMNS)).together
    assert found
    assert found.attributes == ("gender", "country")
    assert found.distance.value == 0.25
    told = [(each.values, each.real, each.sampled) for each in found.furthest]
    assert told == [
        (("f", "UK"), 0.25, 0.5),
        (("m", "UK"), 0.5, 0.25),
        ((None, "US"), 0.25, 0.25),
    ]


def test_a_column_alone_has_no_combinations() -> None:
    alone = pd.DataFrame({"sex": ["m"]})
    assert compare_labelled(*both(alone, alone, COLUMNS)).together is None
    pair = pd.DataFrame({"sex": ["m"], "land": ["UK"]})
    assert compare_labelled(*both(pair, pair.head(0), COLUMNS)).together is None


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
    found = {each.about: each.state for each in vantrel.compare(real, sampled).verdicts}
    assert {state for about, state in found.items() if about.endswith(" shares")} == {FINE}
    assert KNOWN not in found.values()
