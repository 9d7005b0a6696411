"""What the report says of rows that contradict themselves."""

from pathlib import Path
from typing import Any

import msgspec
import pandas as pd
import pytest

import vantrel
from support.command import made, succeed
from support.report_tables import both
from vantrel.reporting.agreement.agreements import compare_agreement
from vantrel.reporting.agreement.rates import Agreement, Contradictions
from vantrel.reporting.verdict import FINE, LOOK, Verdict
from vantrel.sampling.record import SampleRecord, read_record

ROWS = 600
COUNTRIES = {"GB": 2, "DE": 1, "FR": 1, "SE": 1}
REAL, GOOD = (vantrel.people(ROWS, countries=COUNTRIES, seed=seed) for seed in (1, 2))
ALL = {name: name for name in REAL}
KINDS = (
    "Titles and genders",
    "First names and genders",
    "First names and countries",
    "E-mail addresses and names",
    "Usernames and names",
)


def shuffled(column: str) -> pd.DataFrame:
    return GOOD.assign(**{column: GOOD[column].sample(frac=1, random_state=1).to_numpy()})


def found(real: pd.DataFrame, sampled: pd.DataFrame, columns: Any = ALL) -> dict[str, Agreement]:
    return {each.parts: each for each in compare_agreement(*both(real, sampled, columns))}


def against(sampled: pd.DataFrame, columns: Any) -> Contradictions:
    (only,) = found(sampled.head(0), sampled, columns).values()
    return only.sampled


def states(real: pd.DataFrame, sampled: pd.DataFrame) -> dict[str, str]:
    verdicts = vantrel.compare(real, sampled).verdicts
    return {each.about: each.state for each in verdicts if each.about in KINDS}


@pytest.mark.parametrize("rows", [200, ROWS])
def test_people_who_are_made_up_agree_with_themselves(rows: int) -> None:
    sampled = GOOD.head(rows).copy()
    sampled.loc[::5, ["title", "email"]] = None
    assert states(REAL, sampled) == dict.fromkeys(KINDS, FINE)
    untold = REAL[["gender", "country"]]
    assert states(untold, sampled) == dict.fromkeys(KINDS, FINE)


@pytest.mark.parametrize(
    ("sampled", "contradicted"),
    [
        (shuffled("title"), {"Titles and genders"}),
        (shuffled("country"), {"First names and countries"}),
        (shuffled("email"), {"E-mail addresses and names"}),
        (shuffled("username"), {"Usernames and names"}),
        (shuffled("gender"), {"Titles and genders", "First names and genders"}),
        (GOOD.assign(title="Mr"), {"Titles and genders"}),
        (
            GOOD.assign(gender=GOOD["gender"].map({"F": "M", "M": "F"})),
            {"Titles and genders", "First names and genders"},
        ),
    ],
)
@pytest.mark.parametrize("is_told", [True, False])
def test_a_column_that_is_mixed_up_or_swapped_asks_for_a_look(
    sampled: pd.DataFrame, contradicted: set[str], is_told: bool
) -> None:
    real = REAL if is_told else REAL[["country", "gender"]]
    looks = {about for about, state in states(real, sampled).items() if state == LOOK}
    if "First names and countries" in contradicted:  # Jean is a man in France only
        looks -= {"First names and genders"}
    assert looks == contradicted


def test_a_sample_may_contradict_itself_as_often_as_the_real_table() -> None:
    assert states(shuffled("title"), shuffled("title"))["Titles and genders"] == FINE
    assert states(shuffled("email"), GOOD)["E-mail addresses and names"] == FINE


@pytest.mark.parametrize(
    ("real", "against", "is_fine"),
    [
        (Contradictions(708, 0), 2, True),
        (Contradictions(708, 0), 40, False),
        (Contradictions(708, 30), 85, True),
        (Contradictions(5, 0), 500, True),
        (None, 25, True),
        (None, 60, False),
        (Contradictions(0, 0), 170, False),
    ],
)
def test_so_many_contradictions_are_let_pass(
    real: Contradictions | None, against: int, is_fine: bool
) -> None:
    sampled = Contradictions(2_000, against)
    assert Agreement("", "", real, sampled).is_fine == is_fine


def test_the_words_tell_what_was_found_and_what_to_do() -> None:
    real = pd.DataFrame({"gender": ["m", "f"] * 50, "title": ["Mr", "Ms"] * 50})
    sampled = real.assign(title=["Mr"] * 50 + ["Mr", "Ms"] * 25)
    (verdict,) = (each for each in vantrel.compare(real, sampled).verdicts if each.about in KINDS)
    assert verdict == Verdict(
        "Titles and genders",
        "25.0% disagree",
        LOOK,
        "25.0% of the sampled rows have a woman with a man's title, or a man with a woman's; in the"
        " real table 0% of the rows are so. Tests that rely on such rows may mislead: see whether a"
        " column was changed or mixed up.",
        "agreement",
    )


def test_titles_that_contradict_a_gender_are_told() -> None:
    table = pd.DataFrame(
        {
            "sex": ["f", "f", "f", "m", "nb", "f", None],
            "title": ["Mr", "Mr", "Dr", "Herr", "Mr", "Frau", "Mr"],
        }
    )
    columns = {"gender": "sex", "title": "title"}
    assert against(table, columns) == Contradictions(4, 2, (("f, Mr", 2),))


def test_a_first_name_tells_a_gender_in_its_country() -> None:
    table = pd.DataFrame(
        {
            "first": ["Jean", "Andrea", "Hans Peter", "Qwxyz", "Ursula"],
            "sex": ["m", "m", "f", "f", "f"],
            "land": ["France", "Germany", "Germany", "Germany", "Germany"],
        }
    )
    columns = {"firstname": "first", "gender": "sex", "country": "land"}
    genders = found(table, table, columns)["First names and genders"].sampled
    assert genders == Contradictions(4, 2, (("f, Hans", 1), ("m, Andrea", 1)))


@pytest.mark.parametrize("name", ["Herr Dr. Hans Meier", "MEIER, Hans", "Hans Meier"])
def test_a_full_name_has_a_first_name(name: str) -> None:
    table = pd.DataFrame({"full": [name, "Ursula Meier"], "sex": ["f", "f"]})
    assert against(table, {"fullname": "full", "gender": "sex"}).against == 1


def test_a_name_of_another_country_of_the_table_is_told() -> None:
    table = pd.DataFrame(
        {"first": ["Nigel", "Nigel", "Horst"], "land": ["UK", "Germany", "Atlantis"]}
    )
    columns = {"firstname": "first", "country": "land"}
    found_there = against(table, columns)
    assert found_there == Contradictions(2, 1, (("Germany, Nigel", 1),))
    assert found(table, table.assign(land="UK"), columns) == {}


def test_people_with_the_names_of_another_locale_agree_with_their_countries(
    tmp_path: Path, monkeypatch: pytest.MonkeyPatch
) -> None:
    monkeypatch.chdir(tmp_path)
    REAL.to_csv("real.csv", index=False)
    succeed("fit real.csv -o m.json --locale DE=fr_FR --min-count 1")
    succeed("sample m.json -n 600 --seed 7 -o made.csv")
    record = read_record(Path("made.csv"))
    assert record is not None
    assert record.options["locales"] == {"DE": "fr_FR"}

    def states_by(record: SampleRecord) -> dict[str, str]:
        verdicts = vantrel.compare(REAL, made("made.csv"), record=record).verdicts
        return {each.about: each.state for each in verdicts if each.about in KINDS}

    assert states_by(record)["First names and countries"] == FINE
    options = {name: told for name, told in record.options.items() if name != "locales"}
    own = msgspec.structs.replace(record, options=options)
    assert states_by(own)["First names and countries"] == LOOK
    succeed("sample m.json -n 600 --seed 7 -o exact.csv --exact")
    exact = read_record(Path("exact.csv"))
    assert exact is not None
    assert "locales" not in exact.options


@pytest.mark.parametrize(
    ("name", "mail", "agrees"),
    [
        ("Jürgen Müller", "j.mueller@x.example", True),
        ("Jürgen Müller", "JURGEN@x.example", True),
        ("Søren Ærø", "soeren99@x.example", True),
        ("Ed Jäger", "x.jaeger@x.example", True),
        ("Bo Eriksson", "bo_eriksson@x.example", True),
        ("Bo Eriksson", "boeriksson@x.example", True),
        ("Bo Eklöf", "bo.ekloef@x.example", True),
        ("Ann Lee", "bob@lee.example", False),
        ("Bo Ek", "any@x.example", None),
        ("Иван Петров", "any@x.example", None),
        ("Ann Lee", None, None),
    ],
)
def test_an_address_has_a_word_of_the_name(
    name: str, mail: str | None, agrees: bool | None
) -> None:
    table = pd.DataFrame({"full": [name, "Eve Adams"], "mail": [mail, "eve@x.example"]})
    told = against(table, {"fullname": "full", "email": "mail"})
    assert (told.looked_at, told.against) == (1 + (agrees is not None), int(agrees is False))
    assert [words for words, _ in told.examples] == [f"{name}, {mail}"] * (agrees is False)


def test_tables_without_the_parts_are_not_looked_at() -> None:
    table = pd.DataFrame({"sex": ["f"], "mail": ["a@b.c"]})
    assert found(table, table, {"gender": "sex", "email": "mail"}) == {}
    assert found(REAL, GOOD.head(0)) == {}
