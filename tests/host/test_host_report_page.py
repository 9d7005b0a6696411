"""What the page of a report says, and that it is safe to open."""

import re
from html import unescape
from html.parser import HTMLParser

import pandas as pd
import pytest
from msgspec.structs import replace

import vantrel
from support.report_tables import ODD_NAMES, both, odd, ordinary, page, record
from vantrel import wording
from vantrel.reporting.figures import compare_labelled
from vantrel.reporting.frequencies import MOST_SHARES
from vantrel.reporting.page import MOST_BARS, Sources
from vantrel.reporting.provenance import provenance
from vantrel.reporting.verdict import FINE, LOOK, OPEN, Verdict
from vantrel.reporting.verdicts import verdicts
from vantrel.sampling.record import SampleRecord

REAL, SAMPLED = ordinary(400, 1), ordinary(300, 2)
EMPTY = REAL.head(0)


def text_of(html: str) -> str:
    """What a reader sees of a page, each run of white space as one blank."""
    text = re.sub(r"<style>.*?</style>", "", html, flags=re.DOTALL)
    text = re.sub(r"</?(bdi|b|strong|code|a|span)\b[^>]*>", "", text)
    return " ".join(unescape(re.sub(r"<[^>]*>", " ", text)).split())


class Elements(HTMLParser):
    """Collects all elements with their attributes."""

    def __init__(self, html: str) -> None:
        super().__init__()
        self.found: list[tuple[str, dict[str, str | None]]] = []
        self.feed(html)

    def handle_starttag(self, tag: str, attrs: list[tuple[str, str | None]]) -> None:
        self.found.append((tag, dict(attrs)))


def judged(real: pd.DataFrame, sampled: pd.DataFrame) -> dict[str, Verdict]:
    return {each.about: each for each in verdicts(compare_labelled(*both(real, sampled)), None)}


def test_the_page_is_named_after_the_real_table() -> None:
    html = page(REAL, SAMPLED)
    assert "<title>People report: real.csv</title>" in html
    assert "400 real rows beside 300 sampled rows of sampled.csv" in text_of(html)


def test_the_same_tables_give_the_same_page() -> None:
    assert page(REAL, SAMPLED, record(300)) == page(REAL.copy(), SAMPLED.copy(), record(300))


def test_the_page_needs_nothing_from_outside_and_runs_nothing() -> None:
    html = page(odd(500, 1), odd(500, 2), record(500))
    for tag, attributes in Elements(html).found:
        assert tag not in {"script", "img", "iframe", "object", "embed", "base", "form", "video"}
        assert not any(name.startswith("on") for name in attributes)
        for name in ("src", "srcset", "href", "action", "data", "poster"):
            assert re.match("#|data:,$", attributes.get(name) or "#")
    style = "".join(re.findall(r"<style>(.*?)</style>", html, re.DOTALL))
    assert not re.search(r"url\(|@import|://", style)
    assert "default-src 'none'" in html


def test_values_and_names_of_files_are_text_and_not_markup() -> None:
    html = page(odd(500, 1), odd(500, 2), record(500), Sources("<i>.csv", "</title>.csv"))
    assert "&lt;script&gt;alert(1)&lt;/script&gt;" in html
    assert "<title>People report: &lt;i&gt;.csv</title>" in html
    assert html.count("</title>") == 1
    assert "{{ 7 * 7 }}" in text_of(html)


def test_markup_in_a_record_is_text() -> None:
    made = replace(
        record(300),
        model="<x-model>",
        model_sha256="<x-sum>",
        options={"<x-name>": "<x-value>"},
        versions={"<x-package>": "<x-version>"},
    )
    html = page(REAL, SAMPLED, made)
    assert "<x-" not in html
    assert len(set(re.findall("&lt;x-[a-z]+&gt;", html))) == 6


def test_no_value_is_left_as_it_is_where_it_could_deceive() -> None:
    html = page(odd(500, 1), odd(500, 2))
    assert "\x00" not in html
    assert "\u202e" not in html
    assert "Ana" * 60 not in html
    assert "(blank)" in html


@pytest.mark.parametrize(
    ("value", "words"),
    [
        ("Ann", "Ann"),
        ("a\tb\nc", "a b c"),
        ("\x00\x7f\ud800", "\ufffd" * 3),
        ("\u202eab\u2066", "\ufffdab\ufffd"),
        ("می\u200cروم", "می\u200cروم"),
        ("", "(blank)"),
        (" \u00a0", "(blank)"),
        ("x" * 120, "x" * 120),
        ("x" * 121, "x" * 120 + "…"),
    ],
)
def test_how_values_are_shown(value: str, words: str) -> None:
    assert wording.shown(value) == words


@pytest.mark.parametrize(
    ("share", "words"),
    [
        (0, "0%"),
        (0.0001, "<0.1%"),
        (0.0005, "0.1%"),
        (0.123, "12.3%"),
        (0.9994, "99.9%"),
        (0.9999, ">99.9%"),
        (1, "100%"),
    ],
)
def test_how_shares_are_shown(share: float, words: str) -> None:
    assert wording.percent(share) == words


def test_how_numbers_are_shown() -> None:
    assert wording.number(1234567) == "1,234,567"
    assert wording.number(12.5) == "12.5"
    assert wording.counted(1, "row") == "1 row"
    assert wording.counted(2000, "row") == "2,000 rows"
    assert [wording.distance(value) for value in (0, 0.00001, 0.00072, 0.0312, 1)] == [
        "0.000",
        "<0.0001",
        "0.0007",
        "0.031",
        "1.000",
    ]
    assert [wording.points(value) for value in (0, -0.012, 0.2, 0.0001)] == [
        "0",
        "−1.2",
        "+20.0",
        "0.0",
    ]
    assert [wording.listed(items) for items in ([], ["a"], ["a", "b"], ["a", "b", "c"])] == [
        "",
        "a",
        "a and b",
        "a, b and c",
    ]


def test_a_table_agrees_with_itself() -> None:
    found = judged(REAL, REAL)
    assert {about: each.state for about, each in found.items()} == {
        "Gender shares": FINE,
        "Title shares": FINE,
        "Country shares": FINE,
        "Missing values": FINE,
        "Gender, title and country together": FINE,
        "Titles and genders": FINE,
        "First names and genders": FINE,
        "First names and countries": FINE,
        "E-mail addresses and names": FINE,
        "Usernames and names": FINE,
        "Repeated e-mail address and username": FINE,
        "Real full names in the sample": FINE,
        "Real e-mail addresses in the sample": LOOK,
        "Real usernames in the sample": LOOK,
        "What few real people have": FINE,
        "Real columns in the same order": LOOK,
        "Whole real rows in the sample": LOOK,
        "How it was made": OPEN,
    }
    assert found["Gender shares"].figure == "0.000"


def test_shares_further_apart_than_chance_ask_for_a_look() -> None:
    found = judged(REAL, SAMPLED.assign(sex="male", land="Chad"))
    assert found["Gender shares"].state == LOOK
    assert found["Country shares"] == Verdict(
        "Country shares",
        "1.000",
        LOOK,
        "Further apart than chance explains: 9,999 in 10,000 samples of so many rows stay within 0.114."
        " Tests that rely on these shares may mislead.",
        "shares",
    )


@pytest.mark.parametrize(
    ("real", "sampled", "words"),
    [
        (REAL, SAMPLED.drop(columns="sex"), "the sample has no such column"),
        (REAL.drop(columns="sex"), SAMPLED, "the real table has no such column"),
        (REAL.assign(sex=None), SAMPLED, "the real table has no value"),
        (REAL, EMPTY, "the sample has no value"),
        (EMPTY, EMPTY, "the real table and the sample have no value"),
    ],
)
def test_what_is_not_compared_says_why(
    real: pd.DataFrame, sampled: pd.DataFrame, words: str
) -> None:
    found = judged(real, sampled)["Gender shares"]
    assert found == Verdict("Gender shares", "none", OPEN, f"Not compared: {words}.", "shares")
    assert words in text_of(page(real, sampled))


def test_missing_rates_further_apart_than_chance_are_named() -> None:
    found = judged(REAL.assign(sex="male"), SAMPLED.assign(sex="male", last=None))
    assert found["Missing values"] == Verdict(
        "Missing values",
        "100.0 points",
        LOOK,
        "Further apart than chance explains in last.",
        "missing",
    )


def test_repeated_usernames_ask_for_a_look() -> None:
    found = judged(REAL, SAMPLED.assign(user=["ann", "ann", *SAMPLED["user"][2:]]))
    assert found["Repeated e-mail address and username"] == Verdict(
        "Repeated e-mail address and username",
        "1",
        LOOK,
        "More sampled values repeat an earlier one than chance explains. See whether rows were"
        " pasted twice.",
        "repeats",
    )


def test_repeated_rows_are_told_where_nothing_tells_people_apart() -> None:
    same = SAMPLED[["sex", "land"]].assign(sex="male", land="Chad")
    found = judged(REAL, same)["Repeated rows"]
    assert (found.figure, found.state) == ("299", OPEN)


NAMED = ["gender", "title", "firstname", "lastname", "country"]


@pytest.mark.parametrize("columns", [NAMED, ["gender", "fullname", "mobile_number"]])
@pytest.mark.parametrize("rows", [100, 3000])
def test_rows_that_were_pasted_twice_ask_for_a_look(columns: list[str], rows: int) -> None:
    real, good = (
        vantrel.people(rows, countries={"GB": 2, "DE": 1}, seed=seed)[columns] for seed in (1, 2)
    )
    good.loc[::9, "gender"] = None
    assert judged_alone(real, good)["Repeated rows"].state == FINE
    few = pd.concat([good, good.head(rows // 10)])
    for pasted in (few, pd.concat([good, good])):
        found = judged_alone(real, pasted)["Repeated rows"]
        assert found.state == LOOK
        assert found.words.endswith("See whether rows were pasted twice.")
    assert judged_alone(few, few)["Repeated rows"].state == FINE  # the real table has as many


def test_one_repeated_row_of_a_small_table_excuses_no_large_sample_that_was_pasted_twice() -> None:
    real, good = (
        vantrel.people(rows, countries={"GB": 1}, seed=rows)[NAMED] for rows in (49, 1000)
    )
    real = pd.concat([real, real.head(1)])
    pasted = pd.concat([good, good])
    assert judged_alone(real, good)["Repeated rows"].state == FINE
    assert judged_alone(real, pasted)["Repeated rows"].state == LOOK


def judged_alone(real: pd.DataFrame, sampled: pd.DataFrame) -> dict[str, Verdict]:
    return {each.about: each for each in vantrel.compare(real, sampled).verdicts}


def test_a_real_name_in_the_sample_asks_for_a_look() -> None:
    sampled = SAMPLED.assign(full="Zoe Zed", first="Zoe", last="Zed")
    found = judged(REAL, sampled)["Real full names in the sample"]
    assert (found.figure, found.state) == ("0", FINE)
    sampled.loc[3:12, "full"] = "ann lee"
    found = judged(REAL, sampled)["Real full names in the sample"]
    assert (found.figure, found.state) == ("10 rows", LOOK)
    assert found.words.startswith(
        "3.3% of the values in the sample are the whole name of a real person, and chance explains"
        " about none of them."
    )
    words = text_of(page(REAL, sampled)).split("Real people in the sample")[-1]
    assert "Ann Lee 10 rows, first in row 4 of the sample" in words


def test_a_sample_without_rows_has_no_verdict_on_names() -> None:
    assert "Real full names in the sample" not in judged(REAL, EMPTY)


def test_how_it_was_made_is_told() -> None:
    words = text_of(page(REAL, SAMPLED, record(300)))
    for told in ("Model model.json", "Seed 7", "Rows 300", "Conditions none", "Unique username"):
        assert told in words
    assert "SHA-256 of the model " + "ab" * 32 in words
    assert "The model and the seed give the same rows again" in words


def test_the_options_are_told_in_words() -> None:
    options = {
        "block_rows": 50_000,
        "conditions": "wanted.csv",
        "conditions_sha256": "cd" * 32,
        "csv_safe": True,
        "partitions": 1200,
        "unique": [],
    }
    words = text_of(page(REAL, SAMPLED, replace(record(300), options=options)))
    assert (
        "Rows a block 50,000 Conditions wanted.csv SHA-256 of the conditions " + "cd" * 32 + " Safe"
        " for spreadsheets yes Partitions 1,200 Unique none SHA-256 of the model"
    ) in words


def test_a_table_of_conditions_is_needed_to_make_the_rows_again() -> None:
    made = replace(record(300), options={"conditions": "wanted.csv"})
    words = text_of(page(REAL, SAMPLED, made))
    assert "The model, the conditions in wanted.csv and the seed give the same rows again" in words


def test_other_versions_are_told() -> None:
    made = record(300, Faker="1.2", Other="9")
    words = text_of(page(REAL, SAMPLED, made))
    assert "The seed may give other rows here: versions differ." in words
    (difference,) = provenance(made, 300).differences
    assert f"{difference}." in words
    assert difference.endswith("and was 1.2: names and e-mail addresses may differ")
    assert "Other 9 not compared" in words


def test_other_rows_than_were_made_are_told() -> None:
    words = text_of(page(REAL, SAMPLED, record(1000)))
    assert "The table no longer has as many rows as were made." in words
    assert "The table has 300 rows now, other than when it was made" in words


def test_a_table_of_conditions_is_told() -> None:
    made = replace(record(300), options={"conditions": "wanted.csv"})
    assert "made for a table of conditions, wanted.csv" in text_of(page(REAL, SAMPLED, made))


def test_without_a_record_the_page_says_so() -> None:
    words = text_of(page(REAL, SAMPLED))
    assert "There is no record beside the sample of how it was made." in words
    assert "There is no record beside sampled.csv of how it was made." in words


def test_the_reader_is_told_that_real_values_are_shown() -> None:
    assert "This page shows values of the real table" in text_of(page(REAL, SAMPLED))


def test_many_values_fold_behind_the_bars() -> None:
    words = text_of(page(odd(3000, 1), odd(3000, 2)))
    assert f"{201 - MOST_BARS} more values Title: less frequent values, the first" in words
    assert f"the first {MOST_SHARES - MOST_BARS} of them" in words


def test_no_value_folds_alone() -> None:
    real = pd.DataFrame({"land": [f"L{n}" for n in range(MOST_BARS + 1)]})
    assert "more value" not in text_of(page(real, real))
    more = pd.DataFrame({"land": [f"L{n}" for n in range(MOST_BARS + 2)]})
    assert "2 more values" in text_of(page(more, more))


@pytest.mark.parametrize(
    ("real", "sampled"),
    [
        (REAL, EMPTY),
        (EMPTY, EMPTY),
        (REAL.head(1), SAMPLED.head(1)),
        (REAL.map(lambda _: None), SAMPLED.map(lambda _: None)),
        (REAL[["sex"]], SAMPLED[["full"]]),
    ],
)
@pytest.mark.parametrize("made", [None, record(1)])
def test_tables_with_little_in_them_have_a_page(
    real: pd.DataFrame, sampled: pd.DataFrame, made: SampleRecord | None
) -> None:
    words = text_of(page(real, sampled, made))
    assert not re.search(r"\b(None|nan|inf|Undefined)\b", words)


def test_each_odd_name_is_on_the_page() -> None:
    words = text_of(page(odd(3000, 1), odd(3000, 2)))
    for name in ODD_NAMES:
        assert " ".join(wording.shown(name).split()) in words
