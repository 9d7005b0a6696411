"""Model files that anybody wrote."""

import json
import warnings
from pathlib import Path

import pytest
from hypothesis import given
from hypothesis import strategies as st

import vantrel
from support.fuzzing import any_text, fuzz, json_values, row_numbers
from support.odd_forms import LABELS, changed, good_form, paths, written
from vantrel.errors import ModelFileError
from vantrel.storage.models import load

FILE = (
    '{"format": "vantrel-person-model", "schema_version": 1, "versions": {"Faker": "1"},'
    ' "model": %s}'
)


@st.composite
def files(draw: st.DrawFn) -> str:
    """A model file with a few changes, or other JSON."""
    if draw(st.integers(0, 19)) == 0:
        return written(draw(json_values))
    model = good_form(draw(st.integers(0, len(LABELS) - 1)))
    form = draw(changed(json.loads(FILE % model)))
    places = paths(form)
    twice = draw(st.one_of(st.just(()), st.sampled_from(places))) if places else ()
    return written(form, twice)


def taken_or_refused(path: Path, content: bytes, rows: int = 3) -> None:
    """Loads a file: it gives a model that can be sampled, or is refused in one line."""
    path.write_bytes(content)
    message = ""
    with warnings.catch_warnings():
        warnings.simplefilter("ignore")
        try:
            model = load(path)
        except ModelFileError as error:
            message = str(error)
    if message:
        assert message.startswith(f"Model file {path} ")
        assert len(message.splitlines()) == 1
        assert len(message) < 10_000
    else:
        with warnings.catch_warnings():
            warnings.simplefilter("ignore")
            people = vantrel.sample(model, rows, seed=7)
        assert set(people) == set(model.params.values())
        assert people.columns.is_unique
        assert len(people) == rows


@fuzz
@given(files(), row_numbers)
def test_a_changed_file(tmp_path: Path, content: str, rows: int) -> None:
    taken_or_refused(tmp_path / "m.json", content.encode(), rows)


@fuzz
@given(st.data())
def test_changed_bytes(tmp_path: Path, data: st.DataObject) -> None:
    model = good_form(data.draw(st.integers(0, len(LABELS) - 1)))
    content = bytearray((FILE % model).encode())
    for _ in range(data.draw(st.integers(1, 3))):
        start = data.draw(st.integers(0, len(content)))
        end = start + data.draw(st.integers(0, 5))
        piece = st.one_of(
            st.binary(max_size=3), st.sampled_from([b"e999", b"NaN", b'"', b"[", b"}"])
        )
        content[start:end] = data.draw(piece)
    taken_or_refused(tmp_path / "m.json", bytes(content))


@pytest.mark.parametrize("shape", ["object", "list"])
@fuzz
@given(any_text, st.integers(0, 200_000))
def test_deep_files(tmp_path: Path, shape: str, key: str, depth: int) -> None:
    opening, closing = (f"{{{written(key)}: ", "}") if shape == "object" else ("[", "]")
    taken_or_refused(tmp_path / "m.json", f"{opening * depth}1{closing * depth}".encode())
