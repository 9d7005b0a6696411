"""The histogram: frequencies of one column, and draws from them."""

import json
import math
from typing import Any

import numpy as np
import pandas as pd
import pytest

from vantrel.metadata import ColumnNotFoundError, Nominal
from vantrel.metadata.value import String
from vantrel.model.exceptions import ModelNotFittedError
from vantrel.model.models.histogram import Histogram
from vantrel.model.models.person import GenderModel


def frame(*values: object) -> pd.DataFrame:
    return pd.DataFrame({"c": list(values)})


class Patterned(Histogram[str]):
    """A subclass with a setting of its own, as the gender model is one."""

    def __init__(self, meta: Nominal, regex: str = "^x$") -> None:
        super().__init__(meta=meta)
        self.regex = regex


def test_it_is_subscriptable_and_keeps_its_meta() -> None:
    meta = Nominal("c")
    model = Histogram[str](meta=meta)
    assert model.meta is model._meta is meta
    assert model.name == "c"
    assert model._probabilities is None
    assert isinstance(model._rng, np.random.Generator)


def test_fit_learns_shares_of_present_values_in_first_seen_order() -> None:
    model = Histogram[str](meta=Nominal("c"))
    assert model.fit(frame("b", "a", None, "b", "b")) is model
    assert model._probabilities == {"b": 0.75, "a": 0.25}
    assert list(model._probabilities) == ["b", "a"]
    assert all(type(share) is float for share in model._probabilities.values())
    assert model.meta.nan_freq == 0.2
    assert model.meta.categories == ["b", "a"]


def test_fitting_again_replaces_what_was_learnt() -> None:
    model = Histogram[str](meta=Nominal("c")).fit(frame("a", None))
    model.fit(frame("z"))
    assert model._probabilities == {"z": 1.0}
    assert model.meta.categories == ["z"]
    assert model.meta.nan_freq == 0.0


def test_fit_leaves_categories_alone_that_somebody_else_extracted() -> None:
    meta = String("c", categories=["Mr", "Mrs"])
    Histogram[str](meta=meta).fit(frame("M", None)).fit(frame("F"))
    assert meta.categories == ["Mr", "Mrs"]
    assert meta.nan_freq == 0.0


def test_fit_learns_the_missing_share_where_it_leaves_the_categories_alone() -> None:
    meta = String("c", categories=["Mr", "Mrs"], nan_freq=0.0)
    Histogram[str](meta=meta).fit(frame("M", None))
    assert meta.nan_freq == 0.5


def test_categories_extracted_after_construction_are_somebody_elses_too() -> None:
    meta = String("c")
    model = Histogram[str](meta=meta)
    meta.extract(frame("Mr"))
    model.fit(frame("M"))
    assert meta.categories == ["Mr"]
    assert model._probabilities == {"M": 1.0}


@pytest.mark.parametrize("dtype", [object, "str", "string", "category"])
def test_fit_reads_every_dtype_of_texts(dtype: Any) -> None:
    model = Histogram[str](meta=Nominal("c"))
    model.fit(frame("a", "b", "a", "a").astype({"c": dtype}))
    assert model._probabilities == {"a": 0.75, "b": 0.25}


def test_categories_that_do_not_occur_are_not_learnt() -> None:
    column = pd.Categorical(["b"], categories=["a", "b"])
    model = Histogram[str](meta=Nominal("c")).fit(pd.DataFrame({"c": column}))
    assert model._probabilities == {"b": 1.0}


@pytest.mark.parametrize("values", [[None, None], [np.nan], []])
def test_a_column_without_values_is_refused(values: list[object]) -> None:
    model = Histogram[str](meta=Nominal("c"))
    with pytest.raises(ValueError) as caught:
        model.fit(pd.DataFrame({"c": pd.Series(values, dtype=object)}))
    assert str(caught.value) == (
        f"Column 'c' has nothing to learn from: each of its {len(values)} values is missing or"
        " not understood."
    )
    assert model._probabilities is None


def test_a_missing_column_is_refused() -> None:
    with pytest.raises(ColumnNotFoundError):
        Histogram[str](meta=Nominal("zz")).fit(frame("a"))


def fitted() -> Histogram[str]:
    model = Histogram[str](meta=Nominal("c")).fit(frame("a", "a", "a", "b", None))
    model._rng = np.random.default_rng(1)
    return model


def test_sample_draws_as_often_as_learnt() -> None:
    sample = fitted().sample(n=40_000)
    shares = sample["c"].value_counts(normalize=True, dropna=False)
    assert list(sample.columns) == ["c"]
    assert list(sample.index) == list(range(40_000))
    # Five standard deviations of a share of 40,000 draws.
    for value, share in {"a": 0.6, "b": 0.2}.items():
        assert abs(shares[value] - share) < 5 * math.sqrt(share * (1 - share) / 40_000)
    assert abs(sample["c"].isna().mean() - 0.2) < 0.01


def test_sampled_values_are_plain_strings() -> None:
    assert {type(value) for value in fitted().sample(n=50, produce_nans=False)["c"]} == {str}


def test_sample_has_the_dtype_that_pandas_gives_such_values() -> None:
    assert fitted().sample(n=50)["c"].dtype == pd.Series(["a", None]).dtype


def test_no_missing_values_where_none_are_wanted() -> None:
    assert fitted().sample(n=1_000, produce_nans=False)["c"].notna().all()


def test_no_missing_values_where_the_data_had_none() -> None:
    model = Histogram[str](meta=Nominal("c")).fit(frame("a", "b"))
    assert model.sample(n=1_000)["c"].notna().all()


def test_probabilities_set_by_hand_are_drawn_from() -> None:
    model = Histogram[str](meta=String("c", categories=["F", "M"], nan_freq=0.0))
    model._probabilities = {"F": 0.0, "M": 0.5}
    assert set(model.sample(n=100)["c"]) == {"M"}


def test_the_same_generator_state_gives_the_same_sample() -> None:
    pd.testing.assert_frame_equal(fitted().sample(n=100), fitted().sample(n=100))


def test_conditions_give_back_their_own_column_and_draw_nothing() -> None:
    model = fitted()
    state = model._rng.bit_generator.state
    conditions = pd.DataFrame({"d": [1, 2], "c": ["zz", None]}, index=[5, 9])
    pd.testing.assert_frame_equal(model.sample(n=7, conditions=conditions), conditions[["c"]])
    assert model._rng.bit_generator.state == state


def test_conditions_without_the_column_give_the_number_of_rows() -> None:
    assert len(fitted().sample(n=7, conditions=pd.DataFrame({"d": [1, 2]}))) == 2


@pytest.mark.parametrize("n", [0, 1])
def test_few_rows(n: int) -> None:
    sample = fitted().sample(n=n)
    assert sample.shape == (n, 1)


@pytest.mark.parametrize("n", [None, -1])
def test_without_a_number_of_rows_nothing_is_drawn(n: int | None) -> None:
    with pytest.raises(ValueError) as caught:
        fitted().sample(n=n)
    assert str(caught.value) == ("Give 'n', a number of rows that is not below 0, or 'conditions'.")


def test_an_unfitted_histogram_cannot_be_sampled() -> None:
    with pytest.raises(ModelNotFittedError) as caught:
        Histogram[str](meta=Nominal("c")).sample(n=1)
    assert str(caught.value) == "Nothing has been learnt of column 'c' yet."


def test_the_form_is_plain_and_complete() -> None:
    form = json.loads(json.dumps(fitted().to_dict()))
    assert form == {
        "meta": {"type": "nominal", "name": "c", "categories": ["a", "b"], "nan_freq": 0.2},
        "probabilities": {"a": 0.75, "b": 0.25},
    }
    rebuilt = Histogram[str].from_dict(form)
    assert rebuilt.to_dict() == form
    rebuilt._rng = np.random.default_rng(1)
    pd.testing.assert_frame_equal(rebuilt.sample(n=100), fitted().sample(n=100))


def test_the_form_of_an_unfitted_histogram_is_unfitted() -> None:
    rebuilt = Histogram[str].from_dict(Histogram[str](meta=String("c")).to_dict())
    assert rebuilt._probabilities is None
    assert type(rebuilt.meta) is String
    assert not rebuilt.meta.extracted


def test_settings_of_a_subclass_are_part_of_the_form() -> None:
    model = Patterned(String("c"), regex="^y$").fit(frame("a"))
    form = json.loads(json.dumps(model.to_dict()))
    assert list(form) == ["meta", "probabilities", "regex"]
    assert form["regex"] == "^y$"
    rebuilt = Patterned.from_dict(form)
    assert type(rebuilt) is Patterned
    assert rebuilt.to_dict() == form


@pytest.mark.parametrize("key", ["meta", "probabilities"])
def test_a_form_that_lacks_a_key_is_refused(key: str) -> None:
    form = Patterned(String("c")).fit(frame("a")).to_dict()
    del form[key]
    with pytest.raises(KeyError, match=f"^'{key}'$"):
        Patterned.from_dict(form)


def test_a_subclass_that_keeps_no_attribute_of_what_it_takes_has_a_form() -> None:
    class Loud(Patterned):
        def __init__(self, meta: Nominal, volume: int = 3, **settings: str) -> None:
            super().__init__(meta, **settings)
            self.is_loud = volume > 1

    form = Loud(String("c"), volume=1, regex="^y$").fit(frame("a")).to_dict()
    assert list(form) == ["meta", "probabilities", "regex"]
    rebuilt = Loud.from_dict(form)
    assert (rebuilt.regex, rebuilt.is_loud) == ("^y$", True)


def test_a_subclass_of_a_hidden_model_with_another_signature_has_a_form(
    people: pd.DataFrame,
) -> None:
    class Own(GenderModel):
        def __init__(self, *args: Any, tag: str = "", **settings: Any) -> None:
            super().__init__(*args, **settings)

    model = Own(String("sex"), regex_female="^f$", regex_male="^m$")
    assert {"regex_female", "regex_male", "regex_non_binary"} <= set(model.to_dict())
    assert Own.from_dict(model.to_dict()).regex_female == "^f$"


def test_values_that_json_would_turn_into_others_are_not_stored() -> None:
    with pytest.raises(TypeError) as caught:
        Histogram[int](meta=Nominal("c")).fit(frame(1, 2)).to_dict()
    assert str(caught.value) == (
        "Value 1 of column 'c' cannot be stored: convert the column to strings before fitting."
    )
