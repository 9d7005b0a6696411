"""First names: drawn for a gender key and a country each, while the series is made."""

from types import SimpleNamespace
from typing import Any

import numpy as np
import pandas as pd
import pytest
from hypothesis import given
from hypothesis import strategies as st

from support import readings_generators as readings
from support.comparing import assert_same_outcome
from support.providers import (
    KINDS,
    LOCALES,
    StandInFaker,
    countries_of,
    model_of_kind,
    model_with,
    separate,
)
from support.sources import seed_sources, source_states
from vantrel.model.models import person
from vantrel.model.models.person import GenderModel, PersonModel

MISSING = [None, float("nan"), pd.NA]
MISSING_IDS = ["None", "NaN", "NA"]
KEYS = ["F", "M", "NB", "A", None, pd.NA, float("nan")]


def genders_of(rows: int) -> pd.Series:
    return pd.Series([KEYS[i % len(KEYS)] for i in range(rows)], dtype="object")


def assert_reads_alike(model: PersonModel, genders: Any, countries: Any, seed: int = 1) -> Any:
    return assert_same_outcome(
        lambda: model.generate_first_names(genders, countries),
        lambda: readings.first_names(model, genders, countries),
        seed,
        model,
    )


# --- one name -------------------------------------------------------------------------------


@pytest.mark.parametrize("gender", MISSING, ids=MISSING_IDS)
def test_a_missing_gender_gives_a_neutral_name(gender: Any) -> None:
    faker = StandInFaker()
    name = model_with({"GB": faker}).generate_random_first_name(gender, "GB")
    assert (name, faker.calls) == ("first1", ["first"])


@pytest.mark.parametrize(
    ("gender", "method"), [("NB", "first"), ("A", "first"), ("M", "male"), ("F", "female")]
)
def test_each_gender_key_has_its_method(gender: str, method: str) -> None:
    faker = StandInFaker()
    name = model_with({"GB": faker}).generate_random_first_name(gender, "GB")
    assert (name, faker.calls) == (method + "1", [method])


@pytest.mark.parametrize(("gender", "method"), [("NB", "first"), ("M", "male"), ("F", "female")])
def test_a_numpy_string_matches_its_key(gender: str, method: str) -> None:
    faker = StandInFaker()
    model_with({"GB": faker}).generate_random_first_name(np.str_(gender), "GB")
    assert faker.calls == [method]


@pytest.mark.parametrize("gender", ["X", "f", "", 0, True])
def test_another_gender_is_refused_with_the_braces_in_the_message(gender: Any) -> None:
    faker = StandInFaker()
    with pytest.raises(ValueError) as caught:
        model_with({"GB": faker}).generate_random_first_name(gender, "GB")
    assert type(caught.value) is ValueError
    assert caught.value.args == ("Unrecognised gender: {gender}",)
    assert faker.calls == []


@pytest.mark.parametrize(
    ("country", "given"),
    [
        (None, "NoneType"),
        (float("nan"), "float"),
        (pd.NA, "NAType"),
        (np.str_("GB"), "str_"),
        (7, "int"),
    ],
)
def test_a_country_that_is_not_a_str_is_refused(country: Any, given: str) -> None:
    model = model_with({"GB": StandInFaker(), country: StandInFaker()})
    with pytest.raises(TypeError) as caught:
        model.generate_random_first_name("F", country)
    assert str(caught.value) == (
        f"Argument 'country' has incorrect type (expected str, got {given})"
    )


def test_an_unknown_country_raises_the_key_error_of_the_map() -> None:
    with pytest.raises(KeyError) as caught:
        model_with({"GB": StandInFaker()}).generate_random_first_name("F", "XX")
    assert caught.value.args == ("XX",)


def test_the_country_is_looked_up_before_the_gender_is_looked_at() -> None:
    with pytest.raises(KeyError):
        model_with({"GB": StandInFaker()}).generate_random_first_name("X", "XX")


@pytest.mark.parametrize(
    ("result", "given"),
    [(7, "int"), (b"Ann", "bytes"), (np.str_("Ann"), "str_"), (pd.NA, "NAType")],
)
@pytest.mark.parametrize(
    ("gender", "method"),
    [("A", "first_name"), ("M", "first_name_male"), ("F", "first_name_female")],
)
def test_a_name_that_is_no_str_is_refused(
    gender: str, method: str, result: Any, given: str
) -> None:
    model = model_with({"GB": SimpleNamespace(**{method: lambda: result})})
    with pytest.raises(TypeError) as caught:
        model.generate_random_first_name(gender, "GB")
    assert str(caught.value) == f"Expected unicode, got {given}"


def test_a_faker_may_return_none() -> None:
    model = model_with({"GB": SimpleNamespace(first_name=lambda: None)})
    assert model.generate_random_first_name("A", "GB") is None


def test_an_error_of_the_faker_propagates_unchanged() -> None:
    error = LookupError("no names today")

    def fail() -> str:
        raise error

    with pytest.raises(LookupError) as caught:
        model_with({"GB": SimpleNamespace(first_name=fail)}).generate_random_first_name("A", "GB")
    assert caught.value is error


def test_the_keys_are_read_from_the_gender_model_at_each_call(
    monkeypatch: pytest.MonkeyPatch,
) -> None:
    faker = StandInFaker()
    model = model_with({"GB": faker})
    monkeypatch.setattr(GenderModel, "key_male", "X")
    model.generate_random_first_name("X", "GB")
    with pytest.raises(ValueError, match="Unrecognised gender"):
        model.generate_random_first_name("M", "GB")
    assert faker.calls == ["male"]


def test_the_gender_model_is_looked_up_in_the_module(monkeypatch: pytest.MonkeyPatch) -> None:
    faker = StandInFaker()
    model = model_with({"GB": faker})
    keys = SimpleNamespace(key_non_binary="n", key_ambiguous="a", key_male="m", key_female="f")
    monkeypatch.setattr(person, "GenderModel", keys)
    for gender in "namf":
        model.generate_random_first_name(gender, "GB")
    assert faker.calls == ["first", "first", "male", "female"]


class Recorded:
    """A gender that writes down what it is compared with, and equals one key."""

    def __init__(self, equal_to: str) -> None:
        self.equal_to = equal_to
        self.compared: list[str] = []

    def __eq__(self, other: object) -> bool:
        self.compared.append(str(other))
        return other == self.equal_to


@pytest.mark.parametrize(
    ("key", "compared"),
    [
        ("NB", ["NB"]),
        ("A", ["NB", "A"]),
        ("M", ["NB", "A", "M"]),
        ("F", ["NB", "A", "M", "F"]),
    ],
)
def test_the_keys_are_compared_in_order_and_no_further_than_needed(
    key: str, compared: list[str]
) -> None:
    gender = Recorded(key)
    model_with({"GB": StandInFaker()}).generate_random_first_name(gender, "GB")
    assert gender.compared == compared


def test_a_missing_gender_is_compared_with_no_key(monkeypatch: pytest.MonkeyPatch) -> None:
    gender = Recorded("M")
    asked: list[Any] = []

    def isna(value: Any) -> bool:
        asked.append(value)
        return True

    monkeypatch.setattr(person, "pd", SimpleNamespace(isna=isna))
    faker = StandInFaker()
    model_with({"GB": faker}).generate_random_first_name(gender, "GB")
    (found,) = asked
    assert found is gender
    assert (gender.compared, faker.calls) == ([], ["first"])


def test_a_gender_that_cannot_be_truth_tested_raises_what_the_test_raises() -> None:
    model = model_with({"GB": StandInFaker()})
    gender = np.array(["F", "M"])
    with pytest.raises(ValueError) as caught:
        model.generate_random_first_name(gender, "GB")
    with pytest.raises(ValueError) as expected:
        bool(pd.isna(gender))
    assert str(caught.value) == str(expected.value)


@pytest.mark.parametrize("gender", KEYS, ids=repr)
@pytest.mark.parametrize("kind", KINDS)
def test_single_names_are_drawn_as_the_reading_draws_them(kind: str, gender: Any) -> None:
    model = model_of_kind(kind)
    for country in model.country_to_provider_map:
        seed_sources(5, model)
        got = [model.generate_random_first_name(gender, country) for _ in range(5)]
        states = source_states(model)
        seed_sources(5, model)
        assert got == [readings.random_first_name(model, gender, country) for _ in range(5)]
        assert states == source_states(model)
        assert {type(name) for name in got} == {str}


# --- a column -------------------------------------------------------------------------------


@pytest.mark.parametrize("rows", [0, 1, 2, 300])
@pytest.mark.parametrize("kind", KINDS)
@pytest.mark.parametrize("seed", [0, 2026])
def test_a_column_is_drawn_as_the_reading_draws_it(kind: str, rows: int, seed: int) -> None:
    model = model_of_kind(kind)
    names = assert_reads_alike(model, genders_of(rows), countries_of(model, rows), seed)
    assert len(names) == rows


@pytest.mark.parametrize("locale", LOCALES)
@pytest.mark.parametrize("kind", ["shared", "separate"])
def test_a_column_of_one_locale_is_drawn_as_the_reading_draws_it(kind: str, locale: str) -> None:
    names = assert_reads_alike(model_of_kind(kind), genders_of(40), pd.Series([locale] * 40))
    assert {type(name) for name in names} == {str}


def test_seeds_decide_the_names() -> None:
    model = model_of_kind("separate")
    columns = [
        tuple(assert_reads_alike(model, genders_of(30), countries_of(model, 30), seed))
        for seed in (3, 4)
    ]
    assert columns[0] != columns[1]


@pytest.mark.parametrize("dtype", ["object", "str", "string", "category"])
def test_the_columns_may_have_any_dtype(dtype: str) -> None:
    model = model_of_kind("shared")
    genders = pd.Series(["F", "M", None, "NB"] * 10, dtype=dtype)
    countries = countries_of(model, 40).astype(dtype)
    assert assert_reads_alike(model, genders, countries) is not None


def test_series_of_lengths_5_and_3_give_3_names() -> None:
    model = model_of_kind("shared")
    names = assert_reads_alike(model, genders_of(5), countries_of(model, 3))
    assert list(names.index) == [0, 1, 2]


def test_series_of_lengths_3_and_5_give_3_names() -> None:
    model = model_of_kind("shared")
    names = assert_reads_alike(model, genders_of(3), countries_of(model, 5))
    assert list(names.index) == [0, 1, 2]


def test_empty_series_give_an_empty_series() -> None:
    model = model_of_kind("shared")
    names = assert_reads_alike(model, pd.Series([], dtype="object"), countries_of(model, 0))
    assert isinstance(names, pd.Series)
    assert names.empty


def test_pairs_go_by_position_and_the_result_has_its_own_index() -> None:
    faker = StandInFaker()
    model = model_with({"GB": faker, "US": StandInFaker("us ", faker.calls)})
    genders = pd.Series(["F", "M", "NB"], index=[2, 0, 1], name="g")
    countries = pd.Series(["GB", "US", "GB"], index=["a", "b", "c"], name="c")
    names = model.generate_first_names(genders, countries)
    assert list(names) == ["female1", "us male2", "first3"]
    assert type(names.index) is pd.RangeIndex
    assert list(names.index) == [0, 1, 2]
    assert names.name is None


def test_missing_genders_give_names_and_not_missing_values() -> None:
    model = model_of_kind("shared")
    genders = pd.Series([None, pd.NA, float("nan")], dtype="object")
    names = assert_reads_alike(model, genders, countries_of(model, 3))
    assert names.notna().all()


@pytest.mark.parametrize(
    ("genders", "countries"),
    [
        (["F", "M", "X", "F"], ["en_GB", "de_DE", "en_GB", "fr_FR"]),
        (["F", "M", "F", "F"], ["en_GB", "de_DE", "Atlantis", "fr_FR"]),
        (["F", "M", "F", "F"], ["en_GB", "de_DE", np.str_("en_GB"), "fr_FR"]),
        (["F", "M", "F", "F"], ["en_GB", "de_DE", None, "fr_FR"]),
    ],
    ids=["gender X", "unknown country", "numpy string", "no country"],
)
@pytest.mark.parametrize("kind", ["shared", "separate"])
def test_the_first_failing_pair_ends_the_column_where_the_draws_before_it_end(
    kind: str, genders: list[str], countries: list[Any]
) -> None:
    model = model_of_kind(kind)
    before = pd.Series(genders[:2]), pd.Series(countries[:2], dtype="object")
    seed_sources(7, model)
    with pytest.raises((ValueError, KeyError, TypeError)):
        model.generate_first_names(pd.Series(genders), pd.Series(countries, dtype="object"))
    states = source_states(model)
    seed_sources(7, model)
    readings.first_names(model, *before)
    assert states == source_states(model)


def test_a_country_that_is_missing_in_a_column_is_refused_as_in_a_single_call() -> None:
    model = model_of_kind("shared")
    countries = pd.Series(["en_GB", float("nan")], dtype="object")
    with pytest.raises(TypeError) as caught:
        model.generate_first_names(pd.Series(["F", "F"]), countries)
    assert str(caught.value) == "Argument 'country' has incorrect type (expected str, got float)"


# --- what the column goes through -----------------------------------------------------------


class Overriding(PersonModel):
    """Another way to make a name, with parameter names of its own."""

    def generate_random_first_name(self, *args: Any, **kwargs: Any) -> Any:
        assert not kwargs
        return f"{args[0]}-{args[1]}"


def test_an_override_of_the_single_name_is_called() -> None:
    names = model_with({"GB": StandInFaker()}, Overriding).generate_first_names(
        gender_conditions=pd.Series(["F", "X"]), country_conditions=pd.Series(["GB", "Atlantis"])
    )
    assert list(names) == ["F-GB", "X-Atlantis"]


def test_an_override_on_the_instance_is_called(monkeypatch: pytest.MonkeyPatch) -> None:
    model = model_with({"GB": StandInFaker()})
    monkeypatch.setattr(model, "generate_random_first_name", lambda gender, country: gender * 2)
    assert list(model.generate_first_names(pd.Series(["F"]), pd.Series(["GB"]))) == ["FF"]


@pytest.mark.parametrize("values", [[1, 2], [None, "a"], [0.5, None], [pd.NA, "a"], [(1, 2), [3]]])
def test_pandas_infers_the_dtype_of_what_an_override_gives(values: list[Any]) -> None:
    class Fixed(PersonModel):
        def generate_random_first_name(self, gender: Any, country: Any) -> Any:
            return values[int(gender)]

    model = model_with({"GB": StandInFaker()}, Fixed)
    assert_reads_alike(model, pd.Series(["0", "1"]), pd.Series(["GB", "GB"]))


def test_a_stop_iteration_of_an_override_is_not_taken_for_the_end() -> None:
    class Stopping(PersonModel):
        def generate_random_first_name(self, gender: Any, country: Any) -> Any:
            raise StopIteration("enough")

    model = model_with({"GB": StandInFaker()}, Stopping)
    with pytest.raises(RuntimeError) as caught:
        model.generate_first_names(pd.Series(["F"]), pd.Series(["GB"]))
    assert str(caught.value) == "generator raised StopIteration"
    assert isinstance(caught.value.__cause__, StopIteration)
    assert caught.value.__cause__.args == ("enough",)


def test_a_stop_iteration_of_a_faker_is_not_taken_for_the_end() -> None:
    def stop() -> str:
        raise StopIteration

    model = model_with({"GB": SimpleNamespace(first_name=stop)})
    with pytest.raises(RuntimeError, match=r"^generator raised StopIteration$"):
        model.generate_first_names(pd.Series(["A"]), pd.Series(["GB"]))


class TakingTwo:
    """A stand-in for pandas whose series takes two elements and leaves the rest."""

    isna = staticmethod(pd.isna)

    def __init__(self, faker: StandInFaker) -> None:
        self.faker = faker
        self.drawn_before_taking: list[str] | None = None
        self.given: tuple[tuple[Any, ...], dict[str, Any]] = ((), {})

    def Series(self, *args: Any, **kwargs: Any) -> list[str]:
        self.drawn_before_taking = list(self.faker.calls)
        self.given = args, kwargs
        (names,) = args
        return [next(names), next(names)]


def test_names_are_drawn_only_as_the_series_takes_them(monkeypatch: pytest.MonkeyPatch) -> None:
    faker = StandInFaker()
    pandas = TakingTwo(faker)
    monkeypatch.setattr(person, "pd", pandas)
    genders, countries = ["F", "M", "A", "F"], ["GB"] * 4
    names = model_with({"GB": faker}).generate_first_names(genders, countries)
    assert names == ["female1", "male2"]
    assert pandas.drawn_before_taking == []
    assert faker.calls == ["female", "male"]


def test_the_series_is_made_of_the_names_alone(monkeypatch: pytest.MonkeyPatch) -> None:
    faker = StandInFaker()
    pandas = TakingTwo(faker)
    monkeypatch.setattr(person, "pd", pandas)
    model_with({"GB": faker}).generate_first_names(["F", "M"], ["GB", "GB"])
    args, kwargs = pandas.given
    assert (len(args), kwargs) == (1, {})
    assert next(args[0], "the end") == "the end"


def test_any_iterables_are_paired_and_the_longer_first_gives_one_element_more() -> None:
    genders = iter(["F", "M", "A", "NB"])
    countries = iter(["GB", "GB"])
    names = model_with({"GB": StandInFaker()}).generate_first_names(genders, countries)
    assert list(names) == ["female1", "male2"]
    assert list(genders) == ["NB"]


def test_the_map_is_read_again_for_every_name() -> None:
    class Growing(PersonModel):
        reads = 0

        @property
        def country_to_provider_map(self) -> Any:
            Growing.reads += 1
            return {"GB": SimpleNamespace(first_name=lambda: f"name {Growing.reads}")}

    names = Growing(meta=model_of_kind("shared").meta).generate_first_names(
        pd.Series(["A"] * 3), pd.Series(["GB"] * 3)
    )
    assert list(names) == ["name 1", "name 2", "name 3"]


def test_a_method_replaced_on_one_instance_is_used() -> None:
    model = model_of_kind("shared")
    faker = model.country_to_provider_map["en_GB"]
    faker.first_name_female = lambda: "Replaced"
    try:
        names = model.generate_first_names(pd.Series(["F"]), pd.Series(["en_GB"]))
    finally:
        del faker.first_name_female
    assert list(names) == ["Replaced"]


def test_a_table_of_names_changed_in_place_counts_from_the_next_column() -> None:
    model = model_with(separate())
    faker = model.country_to_provider_map["en_GB"]
    provider = next(p for p in faker.get_providers() if hasattr(p, "first_names_female"))
    genders, countries = pd.Series(["F"] * 5), pd.Series(["en_GB"] * 5)
    assert_reads_alike(model, genders, countries)
    provider.first_names_female = type(provider.first_names_female)({"Only": 1.0})
    assert list(assert_reads_alike(model, genders, countries)) == ["Only"] * 5


@pytest.mark.parametrize(
    ("locale", "function", "stand_in"),
    [("en_US", "random", lambda: 0.0), ("de_DE", "choice", lambda names: names[0])],
)
def test_a_function_of_a_source_that_is_replaced_in_place_is_used(
    monkeypatch: pytest.MonkeyPatch, locale: str, function: str, stand_in: Any
) -> None:
    model = model_with(separate([locale]))
    source = model.country_to_provider_map[locale].factories[0].random
    monkeypatch.setattr(source, function, stand_in)
    names = assert_reads_alike(model, pd.Series(["F"] * 9), pd.Series([locale] * 9))
    assert names.nunique() == 1


@given(
    keys=st.lists(st.sampled_from([*KEYS, "X"]), max_size=12),
    countries=st.lists(st.sampled_from([*LOCALES, "Atlantis"]), max_size=12),
    seed=st.integers(0, 2**32 - 1),
)
def test_any_columns_are_drawn_as_the_reading_draws_them(
    keys: list[Any], countries: list[str], seed: int
) -> None:
    genders = pd.Series(keys, dtype="object")
    assert_reads_alike(model_of_kind("shared"), genders, pd.Series(countries, dtype="object"), seed)


def test_the_arguments_are_taken_by_keyword_too() -> None:
    model = model_of_kind("separate")
    genders, countries = genders_of(7), countries_of(model, 7)
    names = assert_same_outcome(
        lambda: model.generate_first_names(country_conditions=countries, gender_conditions=genders),
        lambda: readings.first_names(model, genders, countries),
        1,
        model,
    )
    assert len(names) == 7
