"""Names as tables write them: in Latin letters, in an order of their own, of one gender."""

from __future__ import annotations

import unicodedata

import pandas as pd
import pytest

import vantrel
from vantrel.rows import Ways
from vantrel.storage.models import dumps, loads
from vantrel.util.locale.locale import Provider, valid_locales

LOCALES = [each for each in valid_locales(Provider.PERSON) if each != "fr_QC"]  # is fr_CA
NAMES = ["firstname", "lastname", "fullname"]


def table(places: list[str], rows: int) -> pd.DataFrame:
    """As many women as men of each place."""
    land = [place for place in places for _ in range(rows)]
    return pd.DataFrame({"sex": ["f", "m"] * (len(land) // 2), "land": land})


def sampled(places: list[str], rows: int, **asked: object) -> pd.DataFrame:
    df = table(places, rows)
    model = vantrel.fit(
        df,
        gender="sex",
        country="land",
        detect=False,
        generate=[*NAMES, "username"],
        **asked,  # type: ignore[arg-type]  # by name
    )
    return vantrel.sample(model, conditions=df, seed=3)


@pytest.fixture(scope="module")
def in_latin() -> pd.DataFrame:
    return sampled(LOCALES, 60, latin=True)


def is_latin(text: str) -> bool:
    return all(unicodedata.name(sign).startswith("LATIN") for sign in text if sign.isalpha())


def test_names_of_all_locales_are_in_latin_letters(in_latin: pd.DataFrame) -> None:
    usual = sampled(LOCALES, 60)
    for column in NAMES:
        assert in_latin[column].map(is_latin).all()
        assert in_latin[column].str.contains(r"^[^\W\d_]", regex=True).all()
        stays = usual[column].map(is_latin)
        assert 0.3 < stays.mean() < 0.9
        assert in_latin.loc[stays, column].tolist() == usual.loc[stays, column].tolist()


def test_names_in_latin_letters_begin_with_capitals_and_are_those_of_the_account(
    in_latin: pd.DataFrame,
) -> None:
    for land in ("JP", "ru_RU", "ko_KR", "ar_SA", "hi_IN"):
        own = in_latin[in_latin["land"] == {"JP": "ja_JP"}.get(land, land)]
        assert own["lastname"].str.fullmatch(r"[A-Z][a-z]*([ .-]+[A-Z][a-z]*)*\.?").all()
    japanese = in_latin[in_latin["land"] == "ja_JP"]
    assert {"Sato", "Suzuki", "Kato"} & set(japanese["lastname"])  # as Faker reads them
    starts = [
        username.startswith((first[0].lower(), last[0].lower()))
        for username, first, last in japanese[["username", "firstname", "lastname"]].to_numpy()
    ]
    assert all(starts)


def test_full_names_in_latin_letters_are_separate_words_in_the_order_of_faker(
    in_latin: pd.DataFrame,
) -> None:
    for land, pattern in {"zh_CN": "{0} {1}", "ko_KR": "{1} {0}", "ja_JP": "{0} {1}"}.items():
        own = in_latin[in_latin["land"] == land]
        expected = [pattern.format(*each) for each in own[["firstname", "lastname"]].to_numpy()]
        assert own["fullname"].tolist() == expected


def named(full_names: list[str], rows: int = 100) -> pd.DataFrame:
    return pd.DataFrame({"sex": ["f", "m"] * (rows // 2), "name": (full_names * rows)[:rows]})


def full_names_of(*full_names: str) -> str | None:
    ways: Ways = vantrel.fit(named(list(full_names))).meta.ways
    return ways.full_names


@pytest.mark.parametrize(
    ("cells", "way", "pattern"),
    [
        (["Smith, John", "Le Goff, Jean-P."], "Last, First", r"{last}, {first}"),
        (["SMITH, John", "O'BRIEN, Zoë"], "LAST, First", r"{LAST}, {first}"),
        (["SMITH John A.", "VAN DYK Mary Ann"], "LAST First", r"{LAST} {first}"),
        (["John A. SMITH", "A. de WIT"], "First LAST", r"{first} {LAST}"),
    ],
)
def test_full_names_are_written_as_the_table_writes_them(
    cells: list[str], way: str, pattern: str
) -> None:
    model = vantrel.fit(
        named(cells), generate=["firstname", "lastname"], locales=["ja_JP", "de_DE"]
    )
    assert model.params["fullname"] == "name"
    assert model.meta.ways.full_names == way
    assert (
        f"Column 'name' has names that are written {way!r}, so samples have them written so, in all"
        " countries." in model.meta.notes
    )
    people = vantrel.sample(loads(dumps(model)), 200, seed=1)
    rows = people[["firstname", "lastname", "name"]].to_numpy()
    for first, last, name in rows:
        assert name == pattern.format(first=first, last=last, LAST=last.upper())


def test_one_way_must_be_that_of_by_far_most() -> None:
    assert full_names_of(*["Smith, John"] * 91, *["John Smith"] * 9) == "Last, First"
    assert full_names_of(*["Smith, John"] * 89, *["John Smith"] * 11) is None
    assert full_names_of("John Smith", "JOHN SMITH") is None
    assert full_names_of("JOHN SMITH") is None
    assert full_names_of("SMITH John", "Smith, John") is None


def test_names_without_capitals_have_no_say_beside_others() -> None:
    signs = ["石川 直子", "高玉英"] * 50
    assert full_names_of(*["SMITH John"] * 10, *signs) == "LAST First"
    assert full_names_of(*["SMITH, John"] * 10, *["石川, 直子"] * 90) == "LAST, First"
    assert full_names_of(*["石川, 直子"] * 90, *signs[:5]) == "Last, First"
    assert full_names_of(*signs) is None


def test_all_is_counted_and_gaps_are_not() -> None:
    df = named(["Smith, John"])
    df.loc[:60, "name"] = None
    model = vantrel.fit(df)
    assert model.meta.ways.full_names == "Last, First"
    assert "Smith" not in dumps(model)


def test_a_table_without_full_names_has_those_of_the_language() -> None:
    model = vantrel.fit(named(["x"])[["sex"]], generate=["fullname"])
    assert model.meta.ways.full_names is None


# What women's and men's last names end in, where they differ; None where most are of both.
ENDINGS = {
    "bg_BG": (r"[ая]", r"[^ая]"),
    "cs_CZ": (r"á", r"[^á]"),
    "el_GR": (r"[^ς]", None),
    "is_IS": (r"dóttir", r"son"),
    "lt_LT": (r"ienė", r"[^ė]"),
    "lv_LV": (r"[aeē]", r"[^aā]"),
    "ru_RU": (r"а", r"[^а]"),
    "sk_SK": (r"á", r"[^á]"),
}


@pytest.fixture(scope="module")
def gendered() -> pd.DataFrame:
    return sampled(sorted({*ENDINGS, "pl_PL", "uk_UA"} & set(LOCALES)), 1_000)


@pytest.mark.parametrize("land", sorted(set(ENDINGS) & set(LOCALES)))  # an old Faker has fewer
def test_last_names_have_the_form_of_the_gender(gendered: pd.DataFrame, land: str) -> None:
    own = gendered[gendered["land"] == land]
    for sex, end in zip("fm", ENDINGS[land], strict=True):
        if end:
            matching = own.loc[own["sex"] == sex, "lastname"].str.contains(rf"{end}$", regex=True)
            assert matching.mean() > 0.9  # some of Faker's lists have a name of the other kind


def test_polish_and_ukrainian_adjectives_follow_the_gender(gendered: pd.DataFrame) -> None:
    polish = gendered[gendered["land"] == "pl_PL"]
    for end, share_of_women in {"[sc]ki|dzki": 0, "[sc]ka|dzka": 0.026}.items():
        has_end = polish["lastname"].str.contains(f"(?:{end})$", regex=True)
        shares = has_end.groupby(polish["sex"]).mean()
        assert shares["f"] == pytest.approx(share_of_women, abs=0.016)
        assert shares["m"] == pytest.approx(0.026 - share_of_women, abs=0.016)
    ukrainian = gendered[(gendered["land"] == "uk_UA") & (gendered["sex"] == "m")]
    assert not set(ukrainian["lastname"]) & {"Тиха", "Піддубна", "Зарудна", "Гаєвська"}


def test_lithuanian_first_names_follow_the_gender(gendered: pd.DataFrame) -> None:
    own = gendered[gendered["land"] == "lt_LT"]
    is_mans = own["firstname"].str.endswith("s")
    assert is_mans.groupby(own["sex"]).mean().to_dict() == {"f": 0.0, "m": 1.0}


def test_first_names_that_cannot_follow_the_gender_are_told_of_once() -> None:
    df = table(["Pakistan", "GB", "en_TH", "LT"], 20)
    note = (
        "Faker does not tell first names of women and men apart in these countries and locales, so"
        " there they do not follow the gender: 'Pakistan', 'en_TH'."
    )
    model = vantrel.fit(df, gender="sex", country="land", generate=["firstname"])
    assert model.meta.notes.count(note) == 1
    assert not set(vantrel.fit(df, gender="sex", country="land").meta.notes) & {note}
    of_others = {"PK": "en_US", "en_TH": "th_TH"}
    other = vantrel.fit(df, gender="sex", country="land", generate=["firstname"], locales=of_others)
    assert not [each for each in other.meta.notes if "do not follow the gender" in each]
