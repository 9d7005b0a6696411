"""Tables that are counted and samples that are written without being held, from Python."""

import io
import sys
from pathlib import Path
from types import SimpleNamespace

import pandas as pd
import pytest

import vantrel
from vantrel.sampling import sample_to_file
from vantrel.sampling.record import read_record
from vantrel.storage.models import dumps
from vantrel.tables import open_table, read_table


@pytest.fixture(autouse=True)
def folder(tmp_path: Path, people: pd.DataFrame, monkeypatch: pytest.MonkeyPatch) -> Path:
    monkeypatch.chdir(tmp_path)
    people.to_csv("people.csv", index=False)
    vantrel.save(vantrel.fit(people), "m.json")
    return tmp_path


def test_a_model_of_an_open_table_is_that_of_the_frame(people: pd.DataFrame) -> None:
    with open_table(Path("people.csv")) as table:
        counted = vantrel.fit(table, gender="sex", ignore=["surname"])
    held = vantrel.fit(people, gender="sex", ignore=["surname"])
    assert dumps(counted) == dumps(held)
    assert counted.meta.notes == held.meta.notes
    assert counted.meta.learnt_from == held.meta.learnt_from == len(people)


def test_open_tables_compare_as_frames_do(people: pd.DataFrame) -> None:
    with open_table(Path("people.csv")) as real, open_table(Path("people.csv")) as sampled:
        opened = vantrel.compare(real, sampled)
    assert opened.figures == vantrel.compare(people, people).figures


def test_a_file_has_the_rows_of_a_frame_and_its_record_comes_back() -> None:
    made = sample_to_file(Path("m.json"), Path("out.csv"), 12, seed=7, unique=())
    people = vantrel.sample(vantrel.load("m.json"), 12, seed=7)
    pd.testing.assert_frame_equal(read_table(Path("out.csv")), people, check_dtype=False)
    assert made == read_record(Path("out.csv"))
    assert (made.model, made.rows, made.seed) == ("m.json", 12, 7)


def test_a_drawn_seed_comes_back_and_is_logged(caplog: pytest.LogCaptureFixture) -> None:
    with caplog.at_level("INFO"):
        made = sample_to_file(Path("m.json"), Path("out.csv"), 2)
    assert caplog.messages == [f"The seed is {made.seed}."]


def test_progress_is_told_block_by_block() -> None:
    told: list[int] = []

    class Progress:
        def __init__(self, rows: int) -> None:
            told.append(rows)

        def __enter__(self) -> object:
            return told.append

        def __exit__(self, *_: object) -> None:
            told.append(-1)

    sample_to_file(Path("m.json"), Path("out.csv"), 50_001, progress=Progress)  # type: ignore[arg-type]  # of less
    assert told == [50_001, 50_000, 1, -1]


def test_conditions_may_come_from_standard_input(monkeypatch: pytest.MonkeyPatch) -> None:
    piped = SimpleNamespace(buffer=io.BytesIO(b"land,sex\nDE,f\nGB,m\n"))
    monkeypatch.setattr(sys, "stdin", piped)
    made = sample_to_file(Path("m.json"), Path("out.csv"), conditions=Path("-"))
    assert read_table(Path("out.csv"))["land"].tolist() == ["DE", "GB"]
    assert (made.options["conditions"], made.options["conditions_sha256"]) == ("-", None)


@pytest.mark.parametrize(
    ("output", "arguments", "message"),
    [
        ("out.csv", {}, "Give either n=..., a number of people, or conditions=..., a table."),
        (
            "out.parquet",
            {"n": 2, "csv_safe": True},
            "csv_safe=True is for CSV, and out.parquet is to be Parquet: leave it out.",
        ),
        ("people.csv", {"n": 2}, "people.csv is there already: add force=True to overwrite it."),
    ],
)
def test_what_cannot_be_asked_for_is_told_in_words_of_python(
    output: str, arguments: dict[str, object], message: str
) -> None:
    with pytest.raises(vantrel.ArgumentError) as caught:
        sample_to_file(Path("m.json"), Path(output), **arguments)  # type: ignore[arg-type]  # each of another type
    assert str(caught.value) == message
    assert not Path("out.csv").exists()
