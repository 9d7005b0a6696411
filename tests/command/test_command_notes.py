"""What ``vantrel fit`` tells of a table beside what it learns."""

from pathlib import Path

import pytest

from support.command import fail, succeed
from vantrel.storage.models import load
from vantrel.tables import read_table

NAMED = "fit people.csv -o m.json --min-count 1 --no-detect --column gender=sex"
FOUND = "fit people.csv -o m.json --min-count 1"
NO_COUNTRIES = (
    "vantrel: note: There is no column of countries, so all people get names of en_GB: --locale DE,"
    " say, changes that.\n"
)


def test_notes_tell_what_samples_will_not_have() -> None:
    Path("people.csv").write_text("sex,t,class\nm,Mr,1\nf,Dr,2\nzz,Mx,3\nzz,Dr,3\nyy,Qq,3\n,,\n")
    result = succeed(f"{NAMED} --show-values --column title=t")
    assert result.stderr.splitlines() == [
        "vantrel: note: Column 'sex' has values that are not understood as genders: 'zz' (2), 'yy'"
        " (1). These are 50.0% of the rows, which samples have as often, with names of any gender;"
        " patterns in --config make them understood.",
        "vantrel: note: Column 't' has 1 value in too few rows to be kept, 1 in all: titles"
        " that tell no gender may be anything; patterns in --config make them understood.",
        "vantrel: note: These columns are not made by vantrel and are left out of samples: 'class'.",
    ]


def test_what_is_too_rare_is_told_with_what_keeps_it() -> None:
    rare = "M,Jonkheer,NL\nM,Mr,BE\n"
    Path("people.csv").write_text("sex,t,land\n" + "F,Ms,DE\nM,Mr,FR\n" * 9 + rare)
    assert succeed(f"{FOUND} --min-count 5 --column title=t").stderr.splitlines() == [
        "vantrel: note: Column 't' has 1 value in too few rows to be kept, 1 in all: --min-count 1"
        " keeps them if they tell a gender.",
        "vantrel: note: Column 'land' has 2 values in too few rows to be kept, 2 in all: --min-count"
        " 1 keeps them.",
    ]
    assert succeed(f"{FOUND} --force --column title=t").stderr == ""


def test_a_table_that_is_wholly_understood_needs_no_notes() -> None:
    Path("people.csv").write_text("sex,t\nm,Mr\nf,Mrs\n")
    assert succeed(f"{NAMED} --column title=t").stderr == ""


def test_titles_that_tell_the_gender_are_all_sampled() -> None:
    Path("people.csv").write_text("t\nMr\nDr\n")
    assert succeed(f"{FOUND} --no-detect --column title=t").stderr == ""


def test_notes_show_a_few_values() -> None:
    Path("people.csv").write_text("sex\nm\n" + "".join(f"z{i}\n" for i in range(7)))
    assert (
        " (1) and 2 more. These are 87.5% of the rows," in succeed(f"{NAMED} --show-values").stderr
    )


def test_spellings_of_one_gender_are_as_frequent_as_they_were() -> None:
    Path("people.csv").write_text("sex\n" + "male\n" * 8 + "M\nf\nF\nx\n")
    assert succeed(f"{NAMED} --show-values").stderr == ""
    succeed("sample m.json -n 2000 --seed 1 -o out.csv")
    shares = read_table(Path("out.csv"))["sex"].value_counts(normalize=True)
    assert shares["male"] == pytest.approx(8 / 12, abs=0.04)
    assert shares["M"] == pytest.approx(1 / 12, abs=0.03)


def test_titles_that_are_not_understood_are_told_with_their_share() -> None:
    titles = ["Mr", "Mrs", *["Firma"] * 6, *["Familie"] * 5, "Dr", "", ""]
    Path("people.csv").write_text("t\n" + "\n".join(titles) + "\n")
    assert succeed(f"{FOUND} --show-values --column title=t").stderr == (
        "vantrel: note: Column 't' has values that are not understood as titles: 'Firma' (6),"
        " 'Familie' (5). These are 68.8% of the rows, which samples have as often, with names of any"
        " gender; patterns in --config make them understood.\n"
    )
    assert load(Path("m.json")).hidden_model_gender.meta.nan_freq == 13 / 16


def test_titles_that_are_named_as_genders_are_told_to_be_titles() -> None:
    Path("people.csv").write_text("Die Anrede\n" + "Herr\nFrau\n" * 5)
    line = f"{FOUND} --show-values --force --column"
    assert succeed(f"{line} 'gender=Die Anrede'").stderr == (
        "vantrel: note: Column 'Die Anrede' has values that are not understood as genders: 'Herr'"
        " (5). These are 50.0% of the rows, which samples have as often, with names of any gender;"
        " patterns in --config make them understood. They look like titles: use --column"
        " 'title=Die Anrede' in place of the same for gender.\n"
    )
    assert succeed(f"{line} 'title=Die Anrede'").stderr == ""


def test_where_people_are_from_is_told_where_nothing_tells_it() -> None:
    Path("people.csv").write_text("sex\nm\nf\n")
    assert succeed(f"{FOUND} --generate email").stderr == NO_COUNTRIES


@pytest.mark.parametrize("options", ["--generate lastname --locale FR", "--generate password"])
def test_nothing_is_told_where_places_are_named_or_need_none(options: str) -> None:
    Path("people.csv").write_text("sex\nm\nf\n")
    assert succeed(f"{FOUND} {options}").stderr == ""


def test_nothing_is_told_where_there_is_a_column_of_countries() -> None:
    Path("people.csv").write_text("sex,land\nm,DE\nf,FR\n")
    assert succeed(f"{FOUND} --generate lastname").stderr == ""


def test_what_is_generated_and_found_is_told_to_be_there_already() -> None:
    Path("people.csv").write_text("sex,E-Mail,land\nm,a@b.co,DE\nf,b@b.co,FR\n")
    assert succeed(f"{FOUND} --generate email,lastname").stderr == (
        "vantrel: note: 'email' is there already, in column 'E-Mail', and need not be generated.\n"
    )


def test_equally_frequent_genders_are_told_where_no_column_tells_them() -> None:
    Path("people.csv").write_text("Anrede,land\nFirma,DE\nFirma,DE\nHerr,FR\n")
    Path("c.toml").write_text('genders = ["F", "NB"]\n')
    result = succeed(f"{FOUND} --show-values --generate firstname --config c.toml")
    assert result.stderr.splitlines() == [
        "vantrel: note: Column 'Anrede' is not taken for title, as its values, such as 'Firma', do"
        " not look so: to take it, add --column title=Anrede.",
        "vantrel: note: There is no column of genders or titles, so people get first names of each"
        " gender equally often: F, NB.",
        "vantrel: note: These columns are not made by vantrel and are left out of samples:"
        " 'Anrede'.",
    ]
    assert "equally often" not in succeed(f"{FOUND} --force --column title=Anrede").stderr
    assert succeed(f"{FOUND} --force --ignore Anrede --generate lastname").stderr.count("note") == 1


def test_notes_name_no_values_unasked() -> None:
    Path("people.csv").write_text("sex,t\nm,Mr\nsecret,Dr\nf,Mrs\nM,Mr\nsecret,Qq\nhidden,Mx\n")
    assert succeed(f"{NAMED} --column title=t").stderr.splitlines() == [
        "vantrel: note: Column 'sex' has values that are not understood as genders: 2 values in 3"
        " rows, first in rows 2, 6 (--show-values names them). These are 50.0% of the rows, which"
        " samples have as often, with names of any gender; patterns in --config make them"
        " understood.",
        "vantrel: note: Column 't' has 1 value in too few rows to be kept, 1 in all: titles"
        " that tell no gender may be anything; patterns in --config make them understood.",
    ]


def test_errors_name_no_values_unasked() -> None:
    Path("people.csv").write_text("sex,land\nm,a@b.org\nf,a@b.org\nf,c@d.org\n")
    assert fail(f"{NAMED} --column country=land", 1) == (
        "Column 'land': 2 values in 3 rows, first in rows 1, 3 (--show-values names them): no"
        " countries or locales. Write a country as its ISO code, its English name or its name in its"
        " own language, a locale as 'en_GB'. Correct or empty these cells, or leave the column out:"
        " --ignore land."
    )


def test_countries_of_which_none_is_known_are_kept_if_nothing_else_is_said() -> None:
    Path("people.csv").write_text("sex,land\n" + "m,n/a\nf,Other\nf,\n" * 9)
    assert succeed(f"{NAMED} --show-values --column country=land --generate email").stderr == (
        "vantrel: note: Column 'land' has values that are no countries: 'n/a' (9), 'Other' (9)."
        " Samples have them as they are, and names of en_GB with them.\n"
    )
    succeed("sample m.json -n 2000 --seed 1 -o out.csv")
    made = read_table(Path("out.csv"))
    shares = made["land"].fillna("").value_counts(normalize=True)
    assert shares.to_dict() == pytest.approx({"": 1 / 3, "n/a": 1 / 3, "Other": 1 / 3}, abs=0.05)
    assert made["email"].notna().all()
    assert fail("sample m.json -n 5 --strict -o more.csv", 1) == (
        "Column 'land' of the fitted table has 2 values that are neither a country nor a locale:"
        " leave --strict out to give these people names from the other countries."
    )


def test_notes_are_no_longer_than_anybody_reads() -> None:
    names = [f"{'long' * 100}{number}" for number in range(1_000)]
    Path("people.csv").write_text(f"sex,{','.join(names)}\nm{',1' * 1_000}\n")
    (note,) = succeed(NAMED).stderr.splitlines()
    assert len(note) < 3_000
    assert note.endswith(" and 980 more.")
