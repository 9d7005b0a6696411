"""What the calls start from: models, columns and frames."""

from __future__ import annotations

import pickle
from collections.abc import Callable
from functools import cache, partial
from typing import Any

import pandas as pd

from support.people import ALL_LABELS, fitted_model, people, person_model
from support.providers import shared
from support.recording import Calls, StandInMeta
from support.sources import seed_sources
from vantrel.config import PersonLabels
from vantrel.metadata.value import String
from vantrel.model.models.person import GenderModel, PersonModel

from .call import Function

# Columns this short are made call by call, those this long at once.
FEW, MANY = 3, 24
LENGTHS = {"by single calls": FEW, "at once": MANY}

NAME_LABELS = PersonLabels(gender="gender", firstname="first", lastname="last")
COUNTRIES = ["en_GB", "en_US", "de_DE"]


_LEARNT: list[PersonModel] = []


def learnt(labels: PersonLabels = ALL_LABELS, **settings: Any) -> PersonModel:
    """A new model that was fitted and that `seed_all` seeds."""
    model = fitted_model(labels, **settings)
    _LEARNT.append(model)
    return model


@cache
def fitted() -> PersonModel:
    """A model of all attributes, which sampling does not change."""
    return learnt()


def seed_all() -> None:
    """Seeds the sources that all models share, and those of the fitted models."""
    seed_sources(1)
    for model in _LEARNT:
        seed_sources(1, model)


@cache
def fakers() -> dict[str, Any]:
    """Some Faker instances, made once: they are dear."""
    return shared(COUNTRIES)


def drawing(providers: dict[str, Any] | None = None) -> PersonModel:
    """A new model that was not fitted and draws from these providers."""
    model = person_model()
    model.country_to_provider_map = fakers() if providers is None else providers
    return model


class Forgetful(Calls):
    """Keeps no account of the calls, which would grow with each."""

    def append(self, call: tuple[Any, ...]) -> None:
        pass


def stand_in_meta(labels: PersonLabels = ALL_LABELS, **attributes: Any) -> Any:
    """A stand-in for a person's meta."""
    return StandInMeta(labels, Forgetful(), **attributes)


def standing_in(labels: PersonLabels = ALL_LABELS, **attributes: Any) -> PersonModel:
    """A model whose meta is a stand-in with these attributes."""
    model = person_model(labels)
    model._meta = stand_in_meta(labels, **attributes)
    return model


def gender_model(categories: list[str] | None = None) -> GenderModel:
    """A gender model of a titles column; what the column holds is known where it is given."""
    return GenderModel(meta=String("title", categories=categories))


def cycle(values: list[Any], rows: int) -> pd.Series:
    """The values in turn."""
    return pd.Series([values[row % len(values)] for row in range(rows)], dtype="object")


def genders(rows: int) -> pd.Series:
    return cycle(["F", "M", "NB", "A", None], rows)


def countries(rows: int) -> pd.Series:
    return cycle(COUNTRIES, rows)


def first_names(rows: int) -> pd.Series:
    return cycle(["Ada", "Émile", "Anne-Marie", "Li Wei"], rows)


def first_names_and_gaps(rows: int) -> pd.Series:
    return cycle(["Ada", "Émile", None], rows)


def last_names(rows: int) -> pd.Series:
    return cycle(["Byron", "Zola", "van Dyck"], rows)


def frame(rows: int) -> pd.DataFrame:
    """A table of people as models learn from it."""
    return people(rows)


def maker(value: Any) -> Callable[[], Any]:
    """Gives a function that makes a column or frame anew, with an index of its own.

    pandas notes in columns and indexes each view that was taken of them, and forgets them by the
    hundred only: those that are used again and again seem to leak.
    """
    if not isinstance(value, pd.Series | pd.DataFrame):
        return lambda: value
    return partial(pickle.loads, pickle.dumps(value))


def calling(function: Callable[..., object], *arguments: Any, **keywords: Any) -> Function:
    """Gives a call of the function with columns and frames that are new each time."""
    makers = [maker(value) for value in arguments]
    named = {name: maker(value) for name, value in keywords.items()}

    def call() -> object:
        return function(*(make() for make in makers), **{n: make() for n, make in named.items()})

    return call


class OddCollections:
    """Collections one of whose entries is not a pair."""

    def items(self) -> list[tuple[Any, ...]]:
        return [("F", ["?"]), ("M",)]
