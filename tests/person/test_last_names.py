"""Last names: one a country, blanked where the first name is missing."""

from types import SimpleNamespace
from typing import Any

import pandas as pd
import pytest
from hypothesis import given
from hypothesis import strategies as st

from support import readings_generators as readings
from support.comparing import assert_same_outcome
from support.providers import (
    DTYPES,
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
from vantrel.model.models.person import PersonModel


def named(rows: int) -> pd.Series:
    names = [None if i % 3 == 1 else f"Name{i}" for i in range(rows)]
    return pd.Series(names, dtype="object")


def assert_reads_alike(model: PersonModel, firstnames: Any, countries: Any, seed: int = 1) -> Any:
    return assert_same_outcome(
        lambda: model.generate_last_names(firstnames, countries),
        lambda: readings.last_names(model, firstnames, countries),
        seed,
        model,
    )


def test_a_missing_first_name_blanks_its_last_name() -> None:
    model = model_of_kind("shared")
    lastnames = assert_reads_alike(model, pd.Series(["Ann", None, "Bo"]), countries_of(model, 3))
    assert list(lastnames.isna()) == [False, True, False]
    assert all(type(lastnames[row]) is str for row in (0, 2))


def test_the_blank_is_what_pandas_makes_of_na() -> None:
    model = model_with({"GB": StandInFaker()})
    lastnames = model.generate_last_names(pd.Series(["Ann", None]), pd.Series(["GB", "GB"]))
    expected = pd.Series(["last1", "last2"])
    expected.loc[[False, True]] = pd.NA
    assert lastnames[1] is expected[1]
    assert lastnames.dtype == expected.dtype


def test_without_missing_first_names_every_row_is_a_str() -> None:
    model = model_of_kind("shared")
    lastnames = assert_reads_alike(model, pd.Series(["Ann"] * 9), countries_of(model, 9))
    assert {type(name) for name in lastnames} == {str}


def test_empty_inputs_give_an_empty_series() -> None:
    model = model_of_kind("shared")
    lastnames = assert_reads_alike(model, pd.Series([], dtype="object"), countries_of(model, 0))
    assert lastnames.empty


@pytest.mark.parametrize("rows", [0, 1, 2, 300])
@pytest.mark.parametrize("kind", KINDS)
@pytest.mark.parametrize("seed", [0, 2026])
def test_a_column_is_drawn_as_the_reading_draws_it(kind: str, rows: int, seed: int) -> None:
    model = model_of_kind(kind)
    lastnames = assert_reads_alike(model, named(rows), countries_of(model, rows), seed)
    assert len(lastnames) == rows


@pytest.mark.parametrize("locale", LOCALES)
@pytest.mark.parametrize("kind", ["shared", "separate"])
def test_a_column_of_one_locale_is_drawn_as_the_reading_draws_it(kind: str, locale: str) -> None:
    countries = pd.Series([locale] * 30)
    assert assert_reads_alike(model_of_kind(kind), named(30), countries) is not None


@pytest.mark.parametrize("dtype", DTYPES, ids=str)
def test_first_names_and_countries_may_have_any_dtype(dtype: Any) -> None:
    model = model_of_kind("shared")
    firstnames = named(40).astype(dtype)
    lastnames = assert_reads_alike(model, firstnames, countries_of(model, 40).astype(dtype))
    assert list(lastnames.isna()) == list(firstnames.isna())


def test_a_first_name_of_the_dtype_of_first_names_is_the_usual_input() -> None:
    model = model_of_kind("separate")
    countries = countries_of(model, 24)
    firstnames = model.generate_first_names(pd.Series(["F", "M"] * 12), countries)
    assert_reads_alike(model, firstnames, countries)


@pytest.mark.parametrize("rows", [1, 2, 5])
def test_the_number_of_rows_is_that_of_the_countries(rows: int) -> None:
    faker = StandInFaker()
    firstnames = pd.Series(["Ann"] * rows)
    lastnames = model_with({"GB": faker}).generate_last_names(
        firstnames, pd.Series(["GB"] * rows, index=range(10, 10 + rows), name="country")
    )
    assert len(lastnames) == len(faker.calls) == rows
    assert type(lastnames.index) is pd.RangeIndex
    assert (list(lastnames.index), lastnames.name) == (list(range(rows)), None)


def test_blanked_rows_are_drawn_all_the_same() -> None:
    model = model_of_kind("separate")
    countries = countries_of(model, 30)
    seed_sources(3, model)
    whole = model.generate_last_names(pd.Series(["Ann"] * 30), countries)
    states = source_states(model)
    seed_sources(3, model)
    holed = model.generate_last_names(named(30), countries)
    assert states == source_states(model)
    present = named(30).notna()
    assert list(holed[present]) == list(whole[present])


def test_the_mask_goes_by_label_and_not_by_position() -> None:
    firstnames = pd.Series([None, "Bo", "Cy"], index=[2, 0, 1])
    lastnames = model_with({"GB": StandInFaker()}).generate_last_names(
        firstnames, pd.Series(["GB"] * 3)
    )
    assert list(lastnames.isna()) == [False, False, True]


@pytest.mark.parametrize(
    "firstnames",
    [
        pd.Series(["Ann", None, "Bo"], index=["a", "b", "c"]),
        pd.Series(["Ann", None]),
        pd.Series([None, "Ann"], index=[1, 0]),
        pd.Series(["Ann", None, "Bo"], index=[1, 2, 3]),
        pd.Series(["Ann"], index=[9]),
        pd.Series(["Ann", None, "Bo", "Cy", None]),
        pd.Series(["Ann", None, "Bo"], index=[0, 0, 1]),
    ],
    ids=["letters", "shorter", "shorter reversed", "shifted", "foreign", "longer", "repeated"],
)
def test_labels_that_do_not_line_up_do_what_pandas_does(firstnames: pd.Series) -> None:
    model = model_of_kind("separate")
    assert_reads_alike(model, firstnames, countries_of(model, 3))


def test_labels_that_do_not_line_up_raise_the_error_of_pandas() -> None:
    with pytest.raises(pd.errors.IndexingError, match=r"^Unalignable boolean Series"):
        model_with({"GB": StandInFaker()}).generate_last_names(
            pd.Series(["Ann", None], index=["a", "b"]), pd.Series(["GB", "GB"])
        )


def test_an_unknown_country_raises_the_key_error_of_the_map() -> None:
    with pytest.raises(KeyError) as caught:
        model_of_kind("shared").generate_last_names(
            pd.Series(["Ann", "Bo"]), pd.Series(["en_GB", "Atlantis"])
        )
    assert caught.value.args == ("Atlantis",)


@pytest.mark.parametrize("kind", ["shared", "separate", "several_locales"])
def test_a_failing_row_leaves_the_sources_after_the_rows_before_it(kind: str) -> None:
    model = model_of_kind(kind)
    countries = countries_of(model, 6)
    countries[4] = "Atlantis"
    assert assert_reads_alike(model, named(6), countries) is None
    seed_sources(1, model)
    with pytest.raises(KeyError):
        model.generate_last_names(named(6), countries)
    states = source_states(model)
    seed_sources(1, model)
    model.generate_last_names(named(4), countries[:4])
    assert states == source_states(model)


def test_last_names_do_not_depend_on_the_first_names_values() -> None:
    model = model_of_kind("separate")
    countries = countries_of(model, 10)
    seed_sources(8, model)
    one = model.generate_last_names(pd.Series(["Ann"] * 10), countries)
    seed_sources(8, model)
    other = model.generate_last_names(pd.Series(range(10)), countries)
    assert list(one) == list(other)


def test_the_map_is_read_again_for_every_row() -> None:
    class Growing(PersonModel):
        reads = 0

        @property
        def country_to_provider_map(self) -> Any:
            Growing.reads += 1
            return {"GB": SimpleNamespace(last_name=lambda: f"name {Growing.reads}")}

    model = Growing(meta=model_of_kind("shared").meta)
    lastnames = model.generate_last_names(pd.Series(["Ann"] * 3), pd.Series(["GB"] * 3))
    assert list(lastnames) == ["name 1", "name 2", "name 3"]


def test_a_country_need_not_be_a_str() -> None:
    model = model_with({7: StandInFaker(), None: StandInFaker("none ")})
    countries = pd.Series([7, None], dtype="object")
    assert list(model.generate_last_names(pd.Series(["Ann", "Bo"]), countries)) == [
        "last1",
        "none last1",
    ]


@pytest.mark.parametrize("result", [7, None, pd.NA, 0.5, ("a", "b")])
def test_a_last_name_is_not_checked(result: Any) -> None:
    model = model_with({"GB": SimpleNamespace(last_name=lambda: result)})
    assert_reads_alike(model, pd.Series(["Ann", "Bo"]), pd.Series(["GB", "GB"]))


def test_a_stop_iteration_of_a_faker_propagates() -> None:
    def stop() -> str:
        raise StopIteration("enough")

    model = model_with({"GB": SimpleNamespace(last_name=stop)})
    with pytest.raises(StopIteration, match="enough"):
        model.generate_last_names(pd.Series(["Ann"]), pd.Series(["GB"]))


def test_pandas_is_called_for_the_series_the_mask_and_the_blank(
    monkeypatch: pytest.MonkeyPatch,
) -> None:
    calls: list[Any] = []

    class Loc:
        def __setitem__(self, key: Any, value: Any) -> None:
            calls.append(("loc", key, value))

    made = SimpleNamespace(loc=Loc())

    def make_series(*args: Any, **kwargs: Any) -> Any:
        calls.append(("Series", args, kwargs))
        return made

    def isna() -> str:
        calls.append("isna")
        return "mask"

    monkeypatch.setattr(person, "pd", SimpleNamespace(Series=make_series, NA="blank"))
    model = model_with({"GB": StandInFaker()})
    assert model.generate_last_names(SimpleNamespace(isna=isna), iter(["GB", "GB"])) is made
    assert calls == [
        ("Series", (), {"data": ["last1", "last2"]}),
        "isna",
        ("loc", "mask", "blank"),
    ]


def test_a_table_of_names_changed_in_place_counts_from_the_next_column() -> None:
    model = model_with(separate())
    faker = model.country_to_provider_map["en_GB"]
    provider = next(p for p in faker.get_providers() if hasattr(p, "last_names"))
    firstnames, countries = pd.Series(["Ann"] * 5), pd.Series(["en_GB"] * 5)
    assert_reads_alike(model, firstnames, countries)
    provider.last_names = type(provider.last_names)({"Only": 1.0})
    assert list(assert_reads_alike(model, firstnames, countries)) == ["Only"] * 5


def test_the_arguments_are_taken_by_keyword_too() -> None:
    model = model_of_kind("separate")
    firstnames, countries = named(6), countries_of(model, 6)
    lastnames = assert_same_outcome(
        lambda: model.generate_last_names(country_conditions=countries, firstnames=firstnames),
        lambda: readings.last_names(model, firstnames, countries),
        1,
        model,
    )
    assert len(lastnames) == 6


@given(
    rows=st.lists(
        st.tuples(
            st.sampled_from(["Ann", "", "Bo", None, pd.NA, float("nan")]),
            st.sampled_from([*LOCALES, "Atlantis"]),
        ),
        max_size=12,
    ),
    seed=st.integers(0, 2**32 - 1),
)
def test_any_columns_are_drawn_as_the_reading_draws_them(
    rows: list[tuple[Any, str]], seed: int
) -> None:
    firstnames = pd.Series([name for name, _ in rows], dtype="object")
    countries = pd.Series([country for _, country in rows], dtype="object")
    assert_reads_alike(model_of_kind("shared"), firstnames, countries, seed)
