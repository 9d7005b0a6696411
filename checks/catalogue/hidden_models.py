"""Calls of the gender model and the country model."""

from __future__ import annotations

from collections.abc import Callable
from functools import partial

from vantrel.errors import UnknownPlaceError
from vantrel.metadata import MetaNotExtractedError, Nominal
from vantrel.metadata.exceptions import ColumnNotFoundError
from vantrel.metadata.value import String
from vantrel.model.exceptions import ModelNotFittedError
from vantrel.model.models import person
from vantrel.model.models.histogram import Histogram
from vantrel.model.models.person import CountryModel, GenderModel

from .call import Function, Prepared, bad, fail_with, good, replace
from .parts import OddCollections, calling, fakers, frame, gender_model

TITLES = ["Mrs", "Mr", "Mx", "Dr"]
FORM: dict[str, object] = {
    "meta": String("title", categories=TITLES).to_dict(),
    "probabilities": {"F": 0.5, "M": 0.5},
    "regex_female": "^mrs",
    "regex_male": "^mr$",
    "regex_non_binary": "^mx",
}


def _with_host(name: str, value: object, call: Prepared) -> Prepared:
    """The call, with a name of the module replaced."""

    def prepare() -> Function:
        replace(person, name, value)
        return call()

    return prepare


def _sorted_into(collections: object) -> Prepared:
    """The collections of a model whose host sorts the titles like that."""
    return _with_host("collections_from_mapping", lambda *_: collections, _collections)


def _collections() -> Function:
    model = gender_model(TITLES)
    return lambda: model.collections


def _categories() -> Function:
    model = gender_model(TITLES)
    return lambda: model.categories


def _unextracted(attribute: str) -> Prepared:
    def prepare() -> Function:
        model = gender_model()
        return lambda: getattr(model, attribute)

    return prepare


def _fit(model: Callable[[], GenderModel] = gender_model) -> Prepared:
    def prepare() -> Function:
        table = frame(8)
        return calling(lambda table: model().fit(table), table)

    return prepare


def _without_base(name: str, error: type[BaseException], call: Prepared) -> Prepared:
    """The call, with a method of the base class that fails."""

    def prepare() -> Function:
        replace(Histogram, name, fail_with(error))
        return call()

    return prepare


def _fit_again() -> Function:
    model, table = gender_model(TITLES), frame(8)
    return calling(model.fit, table)


def _extraction_that_fails() -> Function:
    replace(String, "extract", fail_with(LookupError))
    return _fit()()


GENDER_CALLS = [
    good("GenderModel()", lambda: partial(GenderModel, String("title"))),
    good(
        "GenderModel() with patterns",
        lambda: partial(GenderModel, meta=String("title"), regex_female="f", regex_male="m"),
    ),
    bad(
        "GenderModel(): base fails",
        LookupError,
        _without_base("__init__", LookupError, lambda: partial(GenderModel, String("title"))),
    ),
    good("GenderModel.collections", _collections, 5),
    bad(
        "GenderModel.collections: not extracted", MetaNotExtractedError, _unextracted("collections")
    ),
    bad("GenderModel.collections: entry of one", ValueError, _sorted_into(OddCollections())),
    bad("GenderModel.collections: no mapping", AttributeError, _sorted_into([])),
    bad("GenderModel.collections: no length", TypeError, _sorted_into({"F": 3})),
    bad(
        "GenderModel.collections: host fails",
        LookupError,
        _with_host("collections_from_mapping", fail_with(LookupError), _collections),
    ),
    bad(
        "GenderModel.collections: interrupted",
        KeyboardInterrupt,
        _with_host("collections_from_mapping", fail_with(KeyboardInterrupt), _collections),
    ),
    good("GenderModel.categories", _categories, 5),
    bad("GenderModel.categories: not extracted", MetaNotExtractedError, _unextracted("categories")),
    good("GenderModel.fit of a new meta", _fit(), 10),
    good("GenderModel.fit of a known meta", _fit_again, 10),
    bad(
        "GenderModel.fit: no such column",
        ColumnNotFoundError,
        _fit(lambda: GenderModel(String("rank"))),
        5,
    ),
    bad("GenderModel.fit: extraction fails", LookupError, _extraction_that_fails, 5),
    bad("GenderModel.fit: base fails", LookupError, _without_base("fit", LookupError, _fit()), 10),
    bad(
        "GenderModel.fit: error class replaced by no class",
        TypeError,
        _with_host("MetaNotExtractedError", "no class", _fit()),
    ),
    bad(
        "GenderModel.fit: another error class",
        MetaNotExtractedError,
        _with_host("MetaNotExtractedError", LookupError, _fit()),
    ),
    good("GenderModel.from_dict", lambda: partial(GenderModel.from_dict, FORM)),
    good(
        "GenderModel.from_dict of a meta alone",
        lambda: partial(GenderModel.from_dict, {"meta": FORM["meta"]}),
    ),
    bad("GenderModel.from_dict: no meta", KeyError, lambda: partial(GenderModel.from_dict, {})),
    bad(
        "GenderModel.from_dict: meta of a wrong form",
        TypeError,
        lambda: partial(GenderModel.from_dict, {"meta": 3}),
    ),
    bad(
        "GenderModel.from_dict: cast fails",
        LookupError,
        _with_host("cast", fail_with(LookupError), lambda: partial(GenderModel.from_dict, FORM)),
    ),
    good("GenderModel.to_dict", lambda: GenderModel.from_dict(FORM).to_dict, 5),
]


def _country_model() -> CountryModel:
    return CountryModel(Nominal("country"))


def _country_categories() -> Function:
    model = _country_model().fit(frame(6))
    return lambda: model.categories


def _unfitted_categories() -> Function:
    model = _country_model()
    return lambda: model.categories


def _fit_countries() -> Function:
    table = frame(6)
    return calling(lambda table: _country_model().fit(table), table)


def _fit_unknown_country() -> Function:
    table = frame(6).assign(country="Atlantis")
    return calling(lambda table: _country_model().fit(table), table)


def _fit_without_column() -> Function:
    table = frame(6).drop(columns="country")
    return calling(lambda table: _country_model().fit(table), table)


def _given(answer: Callable[..., object], call: Prepared = _fit_countries) -> Prepared:
    """The call, with another way from countries to Faker instances."""
    return _with_host("get_country_to_provder_map", answer, call)


COUNTRY_CALLS = [
    good("CountryModel()", lambda: partial(CountryModel, Nominal("country"))),
    bad(
        "CountryModel(): base fails",
        LookupError,
        _without_base("__init__", LookupError, lambda: _country_model),
    ),
    good("CountryModel.categories", _country_categories),
    bad("CountryModel.categories: not fitted", ModelNotFittedError, _unfitted_categories),
    good("CountryModel.fit with new Faker instances", _fit_countries, 10),
    good("CountryModel.fit", _given(lambda *_: fakers()), 10),
    bad("CountryModel.fit: no such column", KeyError, _fit_without_column),
    bad("CountryModel.fit: unknown country", UnknownPlaceError, _fit_unknown_country, 5),
    bad("CountryModel.fit: host fails", LookupError, _given(fail_with(LookupError)), 3),
    bad(
        "CountryModel.fit: interrupted", KeyboardInterrupt, _given(fail_with(KeyboardInterrupt)), 3
    ),
    bad(
        "CountryModel.fit: base fails",
        LookupError,
        _without_base("fit", LookupError, _given(lambda *_: {})),
        3,
    ),
]

CALLS = [*GENDER_CALLS, *COUNTRY_CALLS]
