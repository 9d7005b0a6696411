"""Whoever gets borrowed names is told once."""

import warnings
from pathlib import Path

import pandas as pd
import pytest

import vantrel


def table(*countries: str) -> pd.DataFrame:
    return pd.DataFrame({"sex": ["m", "f"] * len(countries), "land": [*countries, *countries]})


def warned(call: object) -> list[str]:
    """The warnings of borrowed names that a call gives."""
    assert callable(call)
    with warnings.catch_warnings(record=True) as caught:
        warnings.simplefilter("always")
        call()
    assert all(each.category is vantrel.BorrowedNamesWarning for each in caught)
    return [str(each.message).partition("brackets: ")[2] for each in caught]


def test_a_model_is_told_of_once(tmp_path: Path) -> None:
    with pytest.warns(vantrel.BorrowedNamesWarning):
        model = vantrel.fit(table("GB", "NA"), generate=["firstname"], min_count=1)
    vantrel.save(model, tmp_path / "m.json")
    loaded = vantrel.load(tmp_path / "m.json")
    for each in (model, loaded):
        assert warned(lambda each=each: vantrel.sample(each, 120_000, seed=7)) == []
        assert warned(lambda each=each: vantrel.describe(each)) == []


def test_locales_are_told_of_once() -> None:
    people = table("GB").drop(columns="land")
    with pytest.warns(vantrel.BorrowedNamesWarning) as caught:
        model = vantrel.fit(people, locales=["AU"], generate=["firstname"], min_count=1)
    assert len(caught) == 1
    assert warned(lambda: vantrel.sample(model, 10, seed=7)) == []


def test_only_new_countries_that_are_asked_for_are_told() -> None:
    model = vantrel.fit(table("GB"), generate=["firstname"], min_count=1)
    assert warned(lambda: vantrel.sample(model, conditions=table("FR"), seed=7)) == []
    assert warned(lambda: vantrel.sample(model, conditions=table("NA"), seed=7)) == ["NA (en_GB)."]
    assert warned(lambda: vantrel.sample(model, conditions=table("NA"), seed=7)) == []


def test_strict_refuses_before_it_warns() -> None:
    model = vantrel.fit(table("GB"), generate=["firstname"], min_count=1)

    def strict() -> None:
        with pytest.raises(vantrel.SamplingError):
            vantrel.sample(model, conditions=table("NA"), seed=7, strict=True)

    assert warned(strict) == []
