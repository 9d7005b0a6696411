"""The base of all models."""

from typing import Any

import numpy as np
import pandas as pd
import pytest

from vantrel.config import PersonLabels
from vantrel.metadata.value import Person
from vantrel.model.base import DiscreteModel


class Touchy(DiscreteModel[Person, str]):
    """Fails on whatever its base might call of it."""

    @property
    def categories(self) -> Any:
        raise AssertionError

    def sample(self) -> None:
        raise AssertionError


def person() -> Person:
    return Person("person", PersonLabels(gender="sex"))


def test_it_keeps_meta_name_and_a_generator() -> None:
    meta = person()
    model = DiscreteModel[Person, str](meta=meta)
    assert model.meta is model._meta is meta
    assert model.name == "person"
    assert isinstance(model._rng, np.random.Generator)


def test_generators_of_two_models_differ() -> None:
    one, other = Touchy(meta=person()), Touchy(meta=person())
    assert one._rng.random() != other._rng.random()


def test_fit_extracts_the_meta_anew(people: pd.DataFrame) -> None:
    model = Touchy(meta=person())
    assert model.fit(df=people) is model
    assert model.meta["sex"].categories == ["m", "f"]
    model.fit(df=people.assign(sex="x"))
    assert model.meta["sex"].categories == ["x"]


def test_the_form_holds_the_meta_and_rebuilds_the_subclass(people: pd.DataFrame) -> None:
    form = Touchy(meta=person()).fit(people).to_dict()
    assert list(form) == ["meta"]
    rebuilt = Touchy.from_dict(form)
    assert type(rebuilt) is Touchy
    assert rebuilt.to_dict() == form


def test_a_form_without_meta_is_refused() -> None:
    with pytest.raises(KeyError, match=r"^'meta'$"):
        Touchy.from_dict({})
