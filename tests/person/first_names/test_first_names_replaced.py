"""First names where something on their way is replaced: the method, pandas, the map, a Faker."""

from types import SimpleNamespace
from typing import Any

import pandas as pd
import pytest

from support.first_names import assert_reads_alike
from support.providers import StandInFaker, model_of_kind, model_with, separate
from vantrel.model.models import person
from vantrel.model.models.person import PersonModel


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
