"""What the command says of errors, and whose fault they are."""

from pathlib import Path

import pandas as pd
import pytest

import vantrel
from support.command import fail, run, succeed

FIT = "fit people.csv --min-count 1 -o m.json"


def raising(error: Exception) -> object:
    def call(*_: object, **__: object) -> None:
        raise error

    return call


@pytest.mark.parametrize("error", [ValueError("odd"), KeyError("odd"), RuntimeError("odd")])
def test_a_mistake_of_the_program_is_not_blamed_on_the_user(
    error: Exception, monkeypatch: pytest.MonkeyPatch
) -> None:
    monkeypatch.setattr("vantrel.fitting.fit", raising(error))
    assert fail(FIT, 1) == (
        f"This is a mistake in vantrel, not in what you gave it ({type(error).__name__}: {error})."
        " Please report it, with what the same command prints with --debug."
    )


@pytest.mark.parametrize(
    ("error", "status"),
    [
        (vantrel.FittingError("Told in words."), 1),
        (vantrel.ArgumentError("Told in words."), 2),
        (vantrel.ArgumentTypeError("Told in words."), 2),
        (OSError(28, "Told in words"), 1),
    ],
)
def test_errors_of_the_library_are_told_as_they_are(
    error: Exception, status: int, monkeypatch: pytest.MonkeyPatch
) -> None:
    monkeypatch.setattr("vantrel.fitting.fit", raising(error))
    assert fail(FIT, status) == "Told in words."


@pytest.mark.parametrize("line", [f"{FIT} --debug", f"--debug {FIT}"])
@pytest.mark.parametrize("error", [vantrel.FittingError("Told."), RuntimeError("odd")])
def test_the_traceback_of_any_error_can_be_seen(
    line: str, error: Exception, monkeypatch: pytest.MonkeyPatch
) -> None:
    monkeypatch.setattr("vantrel.fitting.fit", raising(error))
    shown = run(line).stderr
    assert shown.startswith("Traceback (most recent call last):\n")
    assert f"{type(error).__name__}: {error}\n" in shown
    assert shown.splitlines()[-1].startswith("vantrel: error: ")


def test_usage_errors_have_a_traceback_too() -> None:
    assert "Traceback" in run("sample m.json -o x --debug").stderr
    assert "Traceback" not in run("sample m.json -o x").stderr


def test_patterns_of_somebody_else_are_taken_if_they_are_allowed() -> None:
    Path("c.toml").write_text('gender_female_regex = "^f$"\n')
    succeed(f"{FIT} --config c.toml")
    for line in ("show m.json", "sample m.json -n 3 --seed 1 -o out.csv"):
        assert fail(line, 1) == (
            "Model file m.json has patterns of its own, such as '^f$': if you trust whoever made it,"
            " add --allow-patterns."
        )
        succeed(f"{line} --allow-patterns")


def test_the_library_does_not_speak_of_options_nor_the_command_of_keywords(
    people: pd.DataFrame,
) -> None:
    told = {fail("fit people.csv --min-count 1 -o n.json --column gender=Sex", 1)}
    people["land"] = "Grmany"
    people.to_csv("people.csv", index=False)
    told.add(fail(f"{FIT} --show-values --column country=land", 1))
    assert told == {
        "The table has no column 'Sex' for 'gender'. Did you mean 'sex'? Its columns are: 'land',"
        " 'surname', 'title', 'sex'.",
        "Column 'land': 'Grmany' is neither a country nor a locale. Did you mean 'Germany'? Write a"
        " country as its ISO code, its English name or its name in its own language, a locale as"
        " 'en_GB'. Such rows: 50 of 50. Correct or empty these cells, or leave the column out:"
        " --ignore land.",
    }
    with pytest.raises(vantrel.FittingError, match=r"leave the column out: ignore=\['land'\]\.$"):
        vantrel.fit(people, country="land")
    model = vantrel.fit(people.drop(columns="land"), generate=["firstname"])
    assert any("locales=['DE'], say, changes that." in note for note in model.meta.notes)
    assert not any("--" in note for note in model.meta.notes)
