"""The hidden gender model over a gender or a title column."""

from typing import Any

import pytest

from support.construction import CONFIG, patterns
from support.people import person_model
from support.recording import Calls, StandInMeta
from vantrel.config import PersonLabels
from vantrel.metadata.value import Person
from vantrel.model.models import person
from vantrel.model.models.histogram import Histogram
from vantrel.model.models.person import GenderModel, PersonModel


def test_gender_comes_before_title_and_takes_the_gender_patterns() -> None:
    model = person_model(PersonLabels(gender="g", title="t"), CONFIG)
    assert type(model.hidden_model_gender) is GenderModel
    assert model.hidden_model_gender.meta is model.meta["g"]
    assert patterns(model) == ("gf", "gm", "gn")


@pytest.mark.parametrize("gender", [None, ""])
def test_title_is_taken_where_gender_is_absent_or_empty(gender: str | None) -> None:
    model = person_model(PersonLabels(gender=gender, title="t"), CONFIG)
    assert type(model.hidden_model_gender) is GenderModel
    assert model.hidden_model_gender.meta is model.meta["t"]
    assert patterns(model) == ("tf", "tm", "tn")


@pytest.mark.parametrize("gender", [None, ""])
@pytest.mark.parametrize("title", [None, ""])
def test_a_plain_histogram_is_taken_where_both_are_absent_or_empty(
    gender: str | None, title: str | None
) -> None:
    model = person_model(PersonLabels(gender=gender, title=title), CONFIG)
    assert type(model.hidden_model_gender) is Histogram


@pytest.mark.parametrize(
    ("label", "prefix"), [("gender", "gender"), ("title", "title")], ids=["gender", "title"]
)
def test_the_gender_model_is_made_with_four_keywords(
    monkeypatch: pytest.MonkeyPatch, label: str, prefix: str
) -> None:
    calls = Calls()
    hidden = object()
    monkeypatch.setattr(person, "GenderModel", calls.recorder("make", lambda **_: hidden))
    model = person_model(PersonLabels(**{label: "column"}), CONFIG)
    [(_, args, keywords)] = calls
    assert args == ()
    assert keywords == {
        "meta": model.meta["column"],
        "regex_female": getattr(CONFIG, f"{prefix}_female_regex"),
        "regex_male": getattr(CONFIG, f"{prefix}_male_regex"),
        "regex_non_binary": getattr(CONFIG, f"{prefix}_non_binary_regex"),
    }
    assert list(keywords) == ["meta", "regex_female", "regex_male", "regex_non_binary"]
    assert model.hidden_model_gender is hidden


def test_the_labels_are_read_again_for_the_index(monkeypatch: pytest.MonkeyPatch) -> None:
    monkeypatch.setattr(person, "GenderModel", lambda **keywords: keywords["meta"])

    class Labels:
        read = 0
        title = country = None

        @property
        def gender(self) -> str:
            self.read += 1
            return f"read {self.read}"

    meta = StandInMeta(Labels(), children={"read 1": "first", "read 2": "second"})
    assert PersonModel(meta, CONFIG).hidden_model_gender == "second"


def test_children_are_taken_from_the_argument_not_from_the_kept_meta() -> None:
    meta = Person("person", PersonLabels(gender="g", country="c"))

    class Other(PersonModel):
        def __getattribute__(self, name: str) -> Any:
            return StandInMeta(meta.labels) if name == "meta" else super().__getattribute__(name)

    model = Other(meta, CONFIG)
    assert model.hidden_model_gender.meta is meta["g"]
    assert model.hidden_model_country.meta is meta["c"]


def test_labels_are_read_through_the_property_which_a_subclass_may_replace() -> None:
    class Relabelled(PersonModel):
        labels = PersonLabels(title="t")

    model = Relabelled(Person("person", PersonLabels(gender="g", title="t", country="c")), CONFIG)
    assert model.hidden_model_gender.name == "t"
    assert model.hidden_model_country is None
