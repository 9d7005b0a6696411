"""Calls that fit a person model and sample rows."""

from __future__ import annotations

from collections.abc import Callable
from typing import Any

import pandas as pd

from support.people import person_model
from support.recording import RecordingContext
from vantrel.config import PersonLabels
from vantrel.errors import ArgumentError
from vantrel.metadata.exceptions import ColumnNotFoundError
from vantrel.metadata.rules.association import Association
from vantrel.model.exceptions import ModelNotFittedError
from vantrel.model.models import person
from vantrel.model.models.histogram import Histogram
from vantrel.model.models.person import PersonModel

from .call import bad, fail_with, good, replace
from .parts import (
    COUNTRIES,
    FEW,
    LENGTHS,
    MANY,
    NAME_LABELS,
    Forgetful,
    calling,
    cycle,
    drawing,
    fakers,
    fitted,
    frame,
    gender_model,
    genders,
    learnt,
    standing_in,
)


def _given_providers() -> None:
    """The countries' Faker instances are there already: making them takes most of a fit."""
    replace(person, "get_country_to_provder_map", lambda *_: fakers())


def _fit() -> Callable[[], object]:
    _given_providers()
    table = frame(6)
    return calling(lambda table: person_model().fit(table), table)


def _fit_without(column: str) -> Any:
    return lambda: calling(person_model().fit, frame(6).drop(columns=column))


def _fit_inside(
    context: object, error: type[BaseException] | None = None, name: str = "gender"
) -> Any:
    """A fit inside a context of the meta's, where a hidden model may fail."""

    def prepare() -> Callable[[], object]:
        model = standing_in(NAME_LABELS, context=context)
        hidden = gender_model(["Mrs", "Mr"])
        if error is not None:
            replace(type(hidden), "fit", fail_with(error))
        model.hidden_model_gender = hidden
        table = pd.DataFrame({name: ["Mrs", "Mr"], "title": ["Mrs", "Mr"]})
        return calling(model.fit, table)

    return prepare


def _context(swallow: bool = False) -> RecordingContext:
    return RecordingContext(Forgetful(), swallow=swallow)


class Refusing:
    """A context that cannot be entered."""

    def __enter__(self) -> None:
        raise LookupError

    def __exit__(self, *_: object) -> None:
        raise AssertionError


class Failing:
    """A context that fails when it is left."""

    def __enter__(self) -> None:
        pass

    def __exit__(self, *_: object) -> None:
        raise LookupError


FITTING = [
    good("PersonModel.fit", _fit, 10),
    bad("PersonModel.fit: no gender column", ColumnNotFoundError, _fit_without("gender")),
    bad("PersonModel.fit: no country column", ColumnNotFoundError, _fit_without("country")),
    bad("PersonModel.fit: no frame", AttributeError, lambda: calling(person_model().fit, 3)),
    good("PersonModel.fit inside a context", _fit_inside(_context()), 10),
    good("PersonModel.fit: error swallowed", _fit_inside(_context(True), LookupError)),
    bad("PersonModel.fit: error in a context", LookupError, _fit_inside(_context(), LookupError)),
    bad(
        "PersonModel.fit: interrupted",
        KeyboardInterrupt,
        _fit_inside(_context(), KeyboardInterrupt),
    ),
    bad("PersonModel.fit: no context", TypeError, _fit_inside(object())),
    bad("PersonModel.fit: context refuses", LookupError, _fit_inside(Refusing())),
    bad("PersonModel.fit: context fails", LookupError, _fit_inside(Failing()), 10),
    bad("PersonModel.fit: context fails, too", LookupError, _fit_inside(Failing(), KeyError)),
]


def _sampling(model: Callable[[], PersonModel] = fitted, **arguments: Any) -> Any:
    return lambda: calling(model().sample, **arguments)


def _sampling_with_new_options() -> Callable[[], object]:
    """A sample whose form in pandas is learnt anew each time."""
    model = fitted()

    def sample() -> object:
        with pd.option_context("mode.string_storage", "python"):
            return model.sample(MANY)

    return sample


def _conditions(rows: int) -> pd.DataFrame:
    return frame(rows)[["gender", "country"]]


def _without_countries() -> PersonModel:
    replace(person, "get_country_to_provder_map", lambda *_: fakers())
    return learnt(NAME_LABELS, locales=COUNTRIES)


def _without_hidden_models() -> PersonModel:
    model = _without_countries()
    vars(model)["hidden_model_gender"] = None
    return model


def _without_anything() -> PersonModel:
    return person_model(PersonLabels(country="country", firstname="first"))


def _hidden_model_fails(error: type[BaseException]) -> Any:
    def model() -> PersonModel:
        replace(Histogram, "sample", fail_with(error))
        return fitted()

    return model


def _method_fails(name: str, error: type[BaseException]) -> Any:
    def model() -> PersonModel:
        replace(PersonModel, name, fail_with(error))
        return fitted()

    return model


ASSOCIATED = [Association(["country", "gender"])]

SAMPLING = [
    *[good(f"PersonModel.sample {how}", _sampling(n=rows), 10) for how, rows in LENGTHS.items()],
    good("PersonModel.sample with options of its own", _sampling_with_new_options, 10),
    good("PersonModel.sample of no rows", _sampling(n=0), 10),
    good("PersonModel.sample without blanks", _sampling(n=MANY, produce_nans=False), 10),
    good("PersonModel.sample with associations", _sampling(n=FEW, associations=ASSOCIATED), 10),
    good("PersonModel.sample with conditions", _sampling(conditions=_conditions(MANY)), 10),
    good("PersonModel.sample of locales", _sampling(_without_countries, n=FEW), 10),
    good("PersonModel.sample without hidden models", _sampling(_without_hidden_models, n=FEW), 10),
    bad("PersonModel.sample: nothing given", ValueError, _sampling()),
    bad("PersonModel.sample: below 0 rows", ArgumentError, _sampling(n=-1)),
    bad("PersonModel.sample: not fitted", ModelNotFittedError, _sampling(person_model, n=FEW)),
    bad("PersonModel.sample: conditions without length", TypeError, _sampling(conditions=3)),
    good(
        "PersonModel.sample of genders not understood",
        _sampling(conditions=_conditions(FEW).assign(gender="X")),
        10,
    ),
    bad(
        "PersonModel.sample: unknown country",
        KeyError,
        _sampling(conditions=_conditions(MANY).assign(country="Atlantis")),
        10,
    ),
    bad(
        "PersonModel.sample: no countries",
        ModelNotFittedError,
        _sampling(_without_anything, n=FEW),
        10,
    ),
    bad(
        "PersonModel.sample: hidden model fails",
        LookupError,
        _sampling(_hidden_model_fails(LookupError), n=FEW),
    ),
    bad(
        "PersonModel.sample: interrupted",
        KeyboardInterrupt,
        _sampling(_hidden_model_fails(KeyboardInterrupt), n=FEW),
    ),
    *[
        bad(
            f"PersonModel.sample: {name} fails",
            LookupError,
            _sampling(_method_fails(name, LookupError), n=FEW),
            10,
        )
        for name in (
            "generate_values_from_collections",
            "generate_first_names",
            "generate_last_names",
            "generate_emails",
            "generate_usernames",
            "generate_passwords",
            "generate_phone_numbers",
        )
    ],
]


def _rows(rows: int, gender_conditions: Any, country_conditions: Any, **more: Any) -> Any:
    return lambda: calling(
        fitted()._sample_conditional, rows, gender_conditions, country_conditions, **more
    )


CONDITIONAL = [
    *[
        good(
            f"PersonModel._sample_conditional {how}",
            _rows(rows, genders(rows), cycle(["GB", "US"], rows)),
            10,
        )
        for how, rows in LENGTHS.items()
    ],
    good(
        "PersonModel._sample_conditional without blanks",
        _rows(FEW, genders(FEW), cycle(["GB"], FEW), produce_nans=False),
        10,
    ),
    bad(
        "PersonModel._sample_conditional: no countries",
        ValueError,
        _rows(FEW, genders(FEW), None),
        10,
    ),
    bad(
        "PersonModel._sample_conditional: gender X",
        ValueError,
        _rows(FEW, cycle(["X"], FEW), cycle(["GB"], FEW)),
        10,
    ),
    bad(
        "PersonModel._sample_conditional: gender X, many",
        ValueError,
        _rows(MANY, cycle(["X"], MANY), cycle(["GB"], MANY)),
        10,
    ),
    bad(
        "PersonModel._sample_conditional: unknown country",
        KeyError,
        _rows(FEW, genders(FEW), cycle(["XX"], FEW)),
        10,
    ),
    good(
        "PersonModel._sample_conditional of fewer than 0 rows",
        _rows(-1, genders(FEW), cycle(["GB"], FEW)),
        10,
    ),
    bad(
        "PersonModel._sample_conditional: no series",
        AttributeError,
        _rows(FEW, 3, cycle(["GB"], FEW)),
    ),
]


def _checking(*rules: object) -> Any:
    return lambda: calling(drawing().check_associations, list(rules))


def _checking_broken_rules() -> Callable[[], object]:
    model = standing_in(params=[])
    return calling(model.check_associations, [Association(["email"])])


ASSOCIATIONS = [
    good("PersonModel.check_associations", _checking(*ASSOCIATED)),
    good("PersonModel.check_associations of none", _checking()),
    bad(
        "PersonModel.check_associations: made column", ValueError, _checking(Association(["email"]))
    ),
    bad("PersonModel.check_associations: no rule", AttributeError, _checking(3)),
    bad("PersonModel.check_associations: params", TypeError, _checking_broken_rules),
]

CALLS = [*FITTING, *SAMPLING, *CONDITIONAL, *ASSOCIATIONS]
