"""What is kept beside a sample of how it was made."""

import json
import re
from pathlib import Path
from typing import Any

import msgspec
import pytest

from vantrel.errors import RecordError
from vantrel.sampling.record import SampleRecord, read_record, record_path, write_record
from vantrel.versions import versions

RECORD = SampleRecord(
    model="modèle.json",
    model_sha256="ab" * 32,
    rows=12,
    seed=2**200,
    columns={"gender": "sex", "country": "Länder"},
    options={"unique": ["email"], "conditions": None, "block_rows": 50_000},
    versions=versions(),
)


@pytest.fixture
def output(tmp_path: Path) -> Path:
    """A sample that has a record."""
    path = tmp_path / "people.csv"
    path.write_text("sex\n")
    write_record(RECORD, path)
    return path


def edited(output: Path, **changes: Any) -> str:
    """Changes keys of a record, None to leave one out, and gives the message of refusal."""
    path = record_path(output)
    form = {**json.loads(path.read_text(encoding="utf-8")), **changes}
    path.write_text(json.dumps({key: form[key] for key in form if form[key] is not None}))
    return refusal(output)


def refusal(output: Path) -> str:
    with pytest.raises(RecordError) as caught:
        read_record(output)
    return str(caught.value)


def no_record(output: Path, why: str) -> str:
    return f"{record_path(output)} is no record of a sample that this version knows ({why}): move it away."


def test_a_record_is_read_as_it_was_written(output: Path) -> None:
    assert read_record(output) == RECORD


def test_a_record_can_be_read_by_others(output: Path) -> None:
    assert json.loads(record_path(output).read_text(encoding="utf-8")) == {
        "format": "vantrel-sample",
        "schema_version": 2,
        "model": "modèle.json",
        "model_sha256": "ab" * 32,
        "rows": 12,
        "seed": 2**200,
        "columns": {"gender": "sex", "country": "Länder"},
        "options": {"unique": ["email"], "conditions": None, "block_rows": 50_000},
        "versions": versions(),
        "expected": None,
        "file_sha256": None,
    }


def test_a_record_of_schema_1_is_read(output: Path) -> None:
    path = record_path(output)
    form = json.loads(path.read_text(encoding="utf-8")) | {"schema_version": 1}
    del form["expected"], form["file_sha256"]
    path.write_text(json.dumps(form))
    assert read_record(output) == msgspec.structs.replace(RECORD, schema_version=1)


def test_a_record_stands_beside_a_file_and_in_a_folder(tmp_path: Path) -> None:
    assert record_path(tmp_path / "people.csv") == tmp_path / "people.csv.made.json"
    assert record_path(tmp_path / "p", unfinished=True) == tmp_path / "p.made.json"
    assert record_path(tmp_path) == tmp_path / "_made.json"
    assert record_path(tmp_path, unfinished=True) == tmp_path / "_making.json"


def test_a_folder_has_records_of_its_own(tmp_path: Path) -> None:
    write_record(RECORD, tmp_path, unfinished=True)
    assert read_record(tmp_path) is None
    assert read_record(tmp_path, unfinished=True) == RECORD


@pytest.mark.parametrize("name", ["other.csv", "no/other.csv", "people.csv/other.csv"])
def test_a_sample_without_a_record(output: Path, name: str) -> None:
    assert read_record(output.with_name(name.partition("/")[0]) / name.partition("/")[2]) is None


@pytest.mark.parametrize("content", [b"", b"{", b"a note", b"\xff\xfe", b"[" * 100_000])
def test_a_file_that_is_no_json(output: Path, content: bytes) -> None:
    record_path(output).write_bytes(content)
    assert re.fullmatch(
        rf"{re.escape(str(record_path(output)))} is no record of a sample that this version knows"
        r" \((Input data was truncated|JSON is malformed: .*|Expected `object`, got `array`)\):"
        r" move it away\.",
        refusal(output),
    )


@pytest.mark.parametrize(
    ("content", "why"),
    [
        ("[]", "Expected `object`, got `array`"),
        ("5", "Expected `object`, got `int`"),
        ("{}", "Object missing required field `model`"),
    ],
)
def test_a_file_of_something_else(output: Path, content: str, why: str) -> None:
    record_path(output).write_text(content)
    assert refusal(output) == no_record(output, why)


@pytest.mark.parametrize("kind", ["x", 5, ["vantrel-sample"]])
def test_a_record_of_another_kind(output: Path, kind: object) -> None:
    record_path(output).write_text(json.dumps({"format": kind}))
    assert refusal(output) == (
        f"{record_path(output)} is no record of a sample (its format is {kind!r}): move it away."
    )


def test_a_record_of_a_later_form(output: Path) -> None:
    record_path(output).write_text('{"format": "vantrel-sample", "schema_version": 3}')
    assert refusal(output) == (
        f"{record_path(output)} cannot be used: its schema version is 3, the newest known here is"
        " 2: install a newer vantrel."
    )


@pytest.mark.parametrize(
    ("changes", "why"),
    [
        ({"schema_version": 0}, "Invalid enum value 0 - at `$.schema_version`"),
        ({"seed": None}, "Object missing required field `seed`"),
        ({"extra": 1}, "Object contains unknown field `extra`"),
        ({"rows": "12"}, "Expected `int`, got `str` - at `$.rows`"),
        ({"rows": -1}, "Expected `int` >= 0 - at `$.rows`"),
        ({"rows": True}, "Expected `int`, got `bool` - at `$.rows`"),
        ({"seed": 1.5}, "Expected `int`, got `float` - at `$.seed`"),
        ({"model": 5}, "Expected `str`, got `int` - at `$.model`"),
        ({"model_sha256": []}, "Expected `str`, got `array` - at `$.model_sha256`"),
        ({"columns": []}, "Expected `object`, got `array` - at `$.columns`"),
        ({"columns": {"gender": 5}}, "Expected `str`, got `int` - at `$.columns[...]`"),
        ({"options": "x"}, "Expected `object`, got `str` - at `$.options`"),
        ({"versions": {"Faker": 40}}, "Expected `str`, got `int` - at `$.versions[...]`"),
    ],
)
def test_a_record_that_is_not_as_it_should_be(
    output: Path, changes: dict[str, Any], why: str
) -> None:
    assert edited(output, **changes) == no_record(output, why)


def test_a_folder_in_the_place_of_a_record(output: Path) -> None:
    record_path(output).unlink()
    record_path(output).mkdir()
    assert refusal(output) == f"{record_path(output)} cannot be read: Is a directory."


def test_a_record_is_written_whole_or_not_at_all(output: Path) -> None:
    before = record_path(output).read_bytes()
    unwritable = msgspec.structs.replace(RECORD, options={"seen": object()})
    with pytest.raises(TypeError):
        write_record(unwritable, output)
    assert record_path(output).read_bytes() == before
    assert len(list(output.parent.iterdir())) == 2
