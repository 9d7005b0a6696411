"""Which gender each sampled row has: a given one, a learnt one, or either of two."""

from types import SimpleNamespace

import numpy as np
import pandas as pd
import pytest

from support.people import fitted_model, people, person_model
from support.recording import Calls
from support.sampling import GIVEN, LEARNT, conditional_of, noting_model
from vantrel.config import PersonModelConfig
from vantrel.metadata.rules.association import Association
from vantrel.model.models import person
from vantrel.model.models.person import GenderModel, PersonModel


@pytest.mark.parametrize("name", ["hidden", "country"])
def test_a_hidden_model_gets_four_keywords_and_the_whole_conditions(name: str) -> None:
    calls = Calls()
    conditions = GIVEN[["age"]].head(2)
    associations = [Association(["age"])]
    noting_model(calls).sample(conditions=conditions, associations=associations)
    [(_, args, keywords)] = [call for call in calls if call[0] == name]
    assert args == ()
    assert list(keywords) == ["n", "produce_nans", "conditions", "associations"]
    assert keywords["n"] == 2
    assert keywords["produce_nans"] is True
    assert keywords["conditions"] is conditions
    assert keywords["associations"] is associations


def test_conditions_without_the_gender_column_ask_the_hidden_gender_model() -> None:
    calls = Calls()
    noting_model(calls).sample(conditions=GIVEN[["country"]].head(2))
    assert calls.names() == ["hidden", "conditional", "revert"]
    assert conditional_of(calls)["gender_conditions"].tolist() == ["F", "M"]


def test_the_genders_are_the_hidden_metas_column_of_the_sampled_frame() -> None:
    calls = Calls()
    model = noting_model(calls)
    frame = pd.DataFrame({"hidden": ["F"], "renamed": ["M"]})
    model.hidden_model_gender.sample = lambda **_: frame
    model.hidden_model_gender.meta.name = "renamed"
    model.sample(n=1)
    assert conditional_of(calls)["gender_conditions"].tolist() == ["M"]


def test_given_genders_are_mapped_as_texts_with_the_patterns_in_order() -> None:
    calls = Calls()
    model = noting_model(calls)
    model.config = PersonModelConfig(
        gender_male_regex="m", gender_female_regex="f", gender_non_binary_regex="n"
    )
    keys = pd.Series(["F", "F"])
    model.map_to_gender_keys = calls.recorder("keys", lambda *_, **__: keys)
    model.sample(conditions=pd.DataFrame({"gender": [1, 2], "country": ["GB", "US"]}))
    name, (values,), keywords = calls[0]
    assert name == "keys"
    assert values.tolist() == ["1", "2"]
    assert list(keywords) == ["mapping"]
    assert list(keywords["mapping"].items()) == [("M", "m"), ("F", "f"), ("NB", "n")]
    assert conditional_of(calls)["gender_conditions"] is keys
    assert "hidden" not in calls.names()


def test_the_map_of_genders_to_keys_of_a_subclass_is_honoured() -> None:
    class Other(PersonModel):
        def map_to_gender_keys(self, conditions: pd.Series, mapping: dict[str, str]) -> pd.Series:
            return pd.Series(["NB"] * len(conditions))

    model = Other(person_model(LEARNT).meta).fit(people())
    assert model.sample(conditions=GIVEN)["gender"].tolist() == ["nb"] * 5


@pytest.mark.parametrize(
    ("attribute", "position"), [("key_male", 0), ("key_female", 1), ("key_non_binary", 2)]
)
def test_the_keys_are_those_of_the_gender_model_when_sampling(
    monkeypatch: pytest.MonkeyPatch, attribute: str, position: int
) -> None:
    calls = Calls()
    model = noting_model(calls)
    model.map_to_gender_keys = calls.recorder("keys", lambda *_, **__: None)
    monkeypatch.setattr(GenderModel, attribute, "Z")
    model.sample(conditions=GIVEN)
    assert list(calls[0][2]["mapping"])[position] == "Z"


def test_given_genders_come_back() -> None:
    made = fitted_model(LEARNT).sample(conditions=GIVEN)
    assert made["gender"].tolist() == GIVEN["gender"].tolist()


def test_without_a_hidden_model_the_genders_are_male_or_female_from_the_models_generator(
    monkeypatch: pytest.MonkeyPatch,
) -> None:
    calls = Calls()
    model = noting_model(calls)
    model.hidden_model_gender = None
    series = calls.recorder("Series", pd.Series)
    monkeypatch.setattr(person, "pd", SimpleNamespace(Series=series))
    model.sample(n=3)
    assert calls[0] == ("choice", (["M", "F"],), {"size": 3})
    name, args, keywords = calls[1]
    assert (name, len(args), keywords) == ("Series", 1, {})
    assert conditional_of(calls)["gender_conditions"].tolist() == ["F"] * 3


def test_without_a_hidden_model_only_male_and_female_occur_about_equally_often() -> None:
    calls = Calls()
    model = noting_model(calls)
    model.hidden_model_gender = None
    model._rng = np.random.default_rng(1)
    model.sample(n=2_000)
    counts = conditional_of(calls)["gender_conditions"].value_counts()
    assert set(counts.index) == {"M", "F"}
    assert abs(counts["M"] - 1_000) < 4 * np.sqrt(500)
