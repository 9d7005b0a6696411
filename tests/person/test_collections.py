"""From gender keys to category values and back."""

import random
from typing import Any

import numpy as np
import pandas as pd
import pytest

from support import readings_sampling as readings
from support.comparing import assert_same_outcome
from support.people import person_model
from support.recording import Calls, raising
from support.sources import seed_sources, source_states
from vantrel.config import PersonModelConfig
from vantrel.model.models import person
from vantrel.model.models.person import GenderModel, PersonModel

COLLECTIONS = {"F": ["woman", "lady", "girl"], "M": ["man"], "NB": [], "A": ["x", "y"]}
KEYS = ["F", "M", "NB", "A", None, np.nan, pd.NA, "Z"]
CONFIG = PersonModelConfig()
MAPPING = {
    "M": CONFIG.gender_male_regex,
    "F": CONFIG.gender_female_regex,
    "NB": CONFIG.gender_non_binary_regex,
}


class Mapping(dict[str, Any]):
    """A subclass of dict."""


# One key


def test_a_value_of_the_keys_collection_is_drawn() -> None:
    drawn = {PersonModel.generate_from_collections("F", COLLECTIONS) for _ in range(100)}
    assert drawn == {"woman", "lady", "girl"}


def test_a_value_is_drawn_as_numpy_gives_it() -> None:
    assert type(PersonModel.generate_from_collections("M", COLLECTIONS)) is np.str_


def test_a_key_without_a_collection_is_missing() -> None:
    assert PersonModel.generate_from_collections("Z", COLLECTIONS) is pd.NA


def test_a_key_of_an_empty_collection_is_missing() -> None:
    assert PersonModel.generate_from_collections("NB", COLLECTIONS) is pd.NA


@pytest.mark.parametrize("missing", ["nan", "None", "<NA>", None, np.nan, pd.NA])
def test_a_missing_key_and_its_text_are_missing(missing: Any) -> None:
    assert PersonModel.generate_from_collections(missing, COLLECTIONS) is pd.NA


@pytest.mark.parametrize(("key", "text"), [(1, "1"), (None, "None"), (np.nan, "nan"), (1.5, "1.5")])
def test_a_key_is_looked_up_by_its_text(key: Any, text: str) -> None:
    assert PersonModel.generate_from_collections(key, {text: ["v"]}) == "v"


def test_a_key_may_be_a_numpy_string() -> None:
    assert PersonModel.generate_from_collections(np.str_("M"), COLLECTIONS) == "man"


def test_nothing_is_drawn_for_a_missing_value() -> None:
    before = source_states()
    PersonModel.generate_from_collections("Z", COLLECTIONS)
    PersonModel.generate_from_collections("NB", COLLECTIONS)
    assert source_states() == before


def test_a_value_comes_from_numpys_global_source_only() -> None:
    model = person_model()
    seed_sources(1, model)
    before = source_states(model)
    model.generate_from_collections("F", COLLECTIONS)
    after = source_states(model)
    assert [name for name in before if before[name] != after[name]] == ["numpy"]


def test_the_draw_is_looked_up_when_it_is_made(monkeypatch: pytest.MonkeyPatch) -> None:
    calls = Calls()

    class Numpy:
        class random:
            choice = staticmethod(calls.recorder("choice", lambda values: values[-1]))

    monkeypatch.setattr(person, "np", Numpy)
    assert PersonModel.generate_from_collections("F", COLLECTIONS) == "girl"
    assert calls == [("choice", (COLLECTIONS["F"],), {})]
    assert calls[0][1][0] is COLLECTIONS["F"]


def test_the_missing_value_is_looked_up_when_it_is_given(monkeypatch: pytest.MonkeyPatch) -> None:
    class Pandas:
        NA = "missing"

    monkeypatch.setattr(person, "pd", Pandas)
    assert PersonModel.generate_from_collections("Z", COLLECTIONS) == "missing"


def test_arguments_may_be_given_by_keyword() -> None:
    assert PersonModel.generate_from_collections(collections=COLLECTIONS, key="M") == "man"


def test_one_key_is_no_matter_of_an_instance() -> None:
    assert person_model().generate_from_collections("M", COLLECTIONS) == "man"


def test_a_collection_without_a_length_fails_as_len_does() -> None:
    with pytest.raises(TypeError) as caught:
        PersonModel.generate_from_collections("F", {"F": None})
    assert str(caught.value) == "object of type 'NoneType' has no len()"


# Bad mappings


@pytest.mark.parametrize(
    ("value", "given"), [(None, "NoneType"), (Mapping(), "Mapping"), ([("F", [])], "list")]
)
@pytest.mark.parametrize(
    ("method", "first", "name"),
    [
        ("generate_values_from_collections", pd.Series(["F"]), "collections"),
        ("generate_from_collections", "F", "collections"),
        ("map_to_gender_keys", pd.Series(["F"]), "mapping"),
    ],
)
def test_only_a_dict_itself_is_taken(
    method: str, first: Any, name: str, value: Any, given: str
) -> None:
    with pytest.raises(TypeError) as caught:
        getattr(person_model(), method)(first, value)
    message = f"Argument '{name}' has incorrect type (expected dict, got {given})"
    assert str(caught.value) == message


# A series of keys


def test_each_row_gets_a_value_of_its_key_on_the_same_index() -> None:
    conditions = pd.Series(["M", "F", "M"], index=[7, 7, 3], name="g")
    values = person_model().generate_values_from_collections(conditions, COLLECTIONS)
    assert values.index.tolist() == [7, 7, 3]
    assert values.name == "g"
    assert values.tolist()[::2] == ["man", "man"]
    assert values.tolist()[1] in COLLECTIONS["F"]


def test_rows_without_a_key_or_with_an_empty_collection_are_missing() -> None:
    conditions = pd.Series(["M", None, "NB", np.nan, "Z"], dtype=object)
    values = person_model().generate_values_from_collections(conditions, COLLECTIONS)
    assert values.isna().tolist() == [False, True, True, True, True]


def test_values_are_made_through_the_instance_in_row_order() -> None:
    calls = Calls()
    model = person_model()
    model.generate_from_collections = calls.recorder("one", lambda key, collections: key * 2)
    values = model.generate_values_from_collections(pd.Series(["M", "F"]), COLLECTIONS)
    assert values.tolist() == ["MM", "FF"]
    assert [(args, keywords) for _, args, keywords in calls] == [
        (("M",), {"collections": COLLECTIONS}),
        (("F",), {"collections": COLLECTIONS}),
    ]
    assert all(keywords["collections"] is COLLECTIONS for _, _, keywords in calls)


def test_a_subclass_may_make_the_values_otherwise() -> None:
    class Fixed(PersonModel):
        @staticmethod
        def generate_from_collections(key: str, collections: dict[str, list[str]]) -> str:
            return f"{key}!"

    model = Fixed(person_model().meta)
    assert model.generate_values_from_collections(pd.Series(["M"]), {}).tolist() == ["M!"]


def test_keys_that_are_no_texts_become_texts_first() -> None:
    values = person_model().generate_values_from_collections(
        conditions=pd.Series([1, 2]), collections={"1": ["one"], "2": ["two"]}
    )
    assert values.tolist() == ["one", "two"]


def test_the_conditions_are_asked_for_texts_and_applied_to() -> None:
    calls = Calls()
    answer = object()

    class Applied:
        apply = staticmethod(calls.recorder("apply", lambda *_, **__: answer))

    class Conditions:
        astype = staticmethod(calls.recorder("astype", lambda _: Applied))

    model = person_model()
    assert model.generate_values_from_collections(Conditions, COLLECTIONS) is answer
    assert calls == [
        ("astype", (str,), {}),
        ("apply", (model.generate_from_collections,), {"collections": COLLECTIONS}),
    ]


@pytest.mark.parametrize("rows", [0, 1, 2, 3_000])
@pytest.mark.parametrize("dtype", [object, "string", "category", "str"])
@pytest.mark.parametrize("seed", [1, 2])
def test_values_equal_the_reading(rows: int, dtype: Any, seed: int) -> None:
    model = person_model()
    keys = [KEYS[i % len(KEYS)] for i in range(rows)]
    conditions = pd.Series(keys, dtype=object).astype(dtype).iloc[::-1]
    assert_same_outcome(
        lambda: model.generate_values_from_collections(conditions, COLLECTIONS),
        lambda: readings.generate_values_from_collections(conditions, COLLECTIONS),
        seed,
        model,
    )


@pytest.mark.parametrize("key", KEYS)
@pytest.mark.parametrize("seed", range(5))
def test_one_value_equals_the_reading(key: Any, seed: int) -> None:
    assert_same_outcome(
        lambda: PersonModel.generate_from_collections(key, COLLECTIONS),
        lambda: readings.generate_from_collections(key, COLLECTIONS),
        seed,
    )


def test_only_numpys_global_source_is_drawn_from() -> None:
    model = person_model()
    seed_sources(1, model)
    before = source_states(model)
    model.generate_values_from_collections(pd.Series(["F"] * 20), COLLECTIONS)
    after = source_states(model)
    assert [name for name in before if before[name] != after[name]] == ["numpy"]


def test_the_standard_random_module_is_left_alone() -> None:
    random.seed(1)
    before = random.getstate()
    person_model().generate_values_from_collections(pd.Series(["F", "A"]), COLLECTIONS)
    assert random.getstate() == before


# From values to keys


def test_values_become_the_keys_of_the_patterns_that_match() -> None:
    keys = person_model().map_to_gender_keys(pd.Series(["female", "male", "nb", "male"]), MAPPING)
    assert keys.tolist() == ["F", "M", "NB", "M"]


def test_a_value_of_several_patterns_is_ambiguous() -> None:
    keys = person_model().map_to_gender_keys(pd.Series(["x"]), {"M": "x", "F": "x"})
    assert keys.tolist() == ["A"]


def test_a_value_that_no_collection_holds_is_dropped() -> None:
    keys = person_model().map_to_gender_keys(pd.Series(["female", "?", "male"]), MAPPING)
    assert keys.tolist() == ["F", "M"]


def test_the_keys_have_an_index_from_zero_whatever_the_values_had() -> None:
    values = pd.Series(["male", "?", "female"], index=[9, 9, 4], name="g")
    keys = person_model().map_to_gender_keys(values, MAPPING)
    assert keys.index.tolist() == [0, 1]
    assert keys.name is None


@pytest.mark.parametrize("order", [["F", "M"], ["M", "F"]])
def test_a_value_in_two_collections_gets_the_key_that_comes_first(
    monkeypatch: pytest.MonkeyPatch, order: list[str]
) -> None:
    collections = {key: ["x"] for key in order}
    monkeypatch.setattr(person, "collections_from_mapping", lambda *_: collections)
    assert person_model().map_to_gender_keys(pd.Series(["x", "x"]), {}).tolist() == [order[0]] * 2


def test_collections_are_asked_for_with_three_positional_arguments(
    monkeypatch: pytest.MonkeyPatch,
) -> None:
    calls = Calls()
    monkeypatch.setattr(person, "collections_from_mapping", calls.recorder("sort", lambda *_: {}))
    values = pd.Series(["male"])
    person_model().map_to_gender_keys(values, MAPPING)
    [(_, args, keywords)] = calls
    assert args[0] is values
    assert args[1] is MAPPING
    assert args[2:] == ("A",)
    assert keywords == {}


def test_the_ambiguous_key_is_that_of_the_class_when_the_call_is_made(
    monkeypatch: pytest.MonkeyPatch,
) -> None:
    monkeypatch.setattr(GenderModel, "key_ambiguous", "U")
    keys = person_model().map_to_gender_keys(pd.Series(["x"]), {"M": "x", "F": "x"})
    assert keys.tolist() == ["U"]


def test_the_gender_model_is_looked_up_when_the_call_is_made(
    monkeypatch: pytest.MonkeyPatch,
) -> None:
    class StandIn:
        key_ambiguous = "U"

    model = person_model()
    monkeypatch.setattr(person, "GenderModel", StandIn)
    keys = model.map_to_gender_keys(pd.Series(["x"]), {"M": "x", "F": "x"})
    assert keys.tolist() == ["U"]


def test_any_iterable_of_values_will_do() -> None:
    keys = person_model().map_to_gender_keys(conditions=["male", "female"], mapping=MAPPING)
    assert keys.tolist() == ["M", "F"]


def test_the_walk_stops_at_the_first_collection_that_holds_the_value(
    monkeypatch: pytest.MonkeyPatch,
) -> None:
    asked = []

    class Held:
        def __init__(self, name: str, values: list[str]) -> None:
            self.name, self.values = name, values

        def __contains__(self, value: str) -> bool:
            asked.append((self.name, value))
            return value in self.values

    collections = {"F": Held("F", ["f"]), "M": Held("M", ["m", "f"]), "A": Held("A", [])}
    monkeypatch.setattr(person, "collections_from_mapping", lambda *_: collections)
    assert person_model().map_to_gender_keys(["m", "f", "?"], {}).tolist() == ["M", "F"]
    assert asked == [("F", "m"), ("M", "m"), ("F", "f"), ("F", "?"), ("M", "?"), ("A", "?")]


def test_the_series_is_made_of_the_list_by_position(monkeypatch: pytest.MonkeyPatch) -> None:
    calls = Calls()

    class Pandas:
        Series = staticmethod(calls.recorder("Series"))

    monkeypatch.setattr(person, "pd", Pandas)
    person_model().map_to_gender_keys(["male", "?", "female"], MAPPING)
    assert calls == [("Series", (["M", "F"],), {})]


def test_an_error_of_the_utility_propagates(monkeypatch: pytest.MonkeyPatch) -> None:
    error = RuntimeError("no")
    monkeypatch.setattr(person, "collections_from_mapping", raising(error))
    with pytest.raises(RuntimeError) as caught:
        person_model().map_to_gender_keys(pd.Series(["male"]), MAPPING)
    assert caught.value is error


@pytest.mark.parametrize("rows", [0, 1, 2, 3_000])
@pytest.mark.parametrize("dtype", [object, "string", "category", "str"])
def test_keys_equal_the_reading(rows: int, dtype: Any) -> None:
    words = ["male", "female", "nb", "?", "Woman", "m"]
    values = pd.Series([words[i % 6] for i in range(rows)], dtype=object).astype(dtype).iloc[::-1]
    model = person_model()
    assert_same_outcome(
        lambda: model.map_to_gender_keys(values, MAPPING),
        lambda: readings.map_to_gender_keys(values, MAPPING),
        1,
        model,
    )
