"""The calls that make whole columns, ready to be run over any model and any number of rows."""

import warnings
from collections.abc import Callable, Iterable
from contextlib import AbstractContextManager, contextmanager
from functools import cache
from typing import Any

import pandas as pd
from faker import Faker

from support.people import fitted_model
from vantrel.model.models.person import PersonModel

COUNTRIES = ("GB", "US", "DE", "CN")
LOCALES = {"GB": "en_GB", "US": "en_US", "DE": "de_DE", "CN": "zh_CN"}
GENDER_KEYS = ["F", "M", "NB", "A", None, "M", "F"]
PATTERNS = {"M": "^(mr|male).?$", "F": "^(mrs|female).?$", "NB": "^mx.?$"}
COLLECTIONS = {"F": ["Mrs", "Ms"], "M": ["Mr"], "NB": [], "A": ["Dr", "Prof", "Rev"]}


def new_faker(locale: Any, **settings: Any) -> Faker:
    """A Faker instance; what Faker says of its older locales is of no interest."""
    with warnings.catch_warnings():
        warnings.simplefilter("ignore")
        return Faker(locale, **settings)


def new_fakers(**settings: Any) -> dict[str, Any]:
    """New Faker instances that draw from one common source, by country."""
    return {country: new_faker(locale, **settings) for country, locale in LOCALES.items()}


@cache
def _fitted_model() -> PersonModel:
    return fitted_model()


def model_with(providers: dict[str, Any], cls: type[PersonModel] = PersonModel) -> PersonModel:
    """A fitted model of twelve columns that draws names from these providers.

    The models share the hidden ones, which are dear to fit and whose sources each run seeds.
    """
    fitted = _fitted_model()
    model = cls(fitted.meta)
    model.__dict__.update(fitted.__dict__)
    model.country_to_provider_map = providers
    return model


@cache
def usual_model() -> PersonModel:
    """A model that tests share as long as they leave it as it is."""
    return model_with(new_fakers())


def in_turn(values: Iterable[Any], rows: int, dtype: Any = "object", **rest: Any) -> pd.Series:
    """A series of so many rows that repeats the values."""
    values = list(values)
    series: pd.Series = pd.Series(
        [values[i % len(values)] for i in range(rows)], dtype=dtype, **rest
    )
    return series


def genders(rows: int) -> pd.Series:
    """Every gender key, also the missing one."""
    return in_turn(GENDER_KEYS, rows)


def countries(model: PersonModel, rows: int) -> pd.Series:
    """The model's countries in turn."""
    return in_turn(model.country_to_provider_map, rows)


def names(rows: int) -> pd.Series:
    """Names of which a few are alike."""
    return in_turn(["Ann", "Bo", "Mary Ann", "Çelik", "李", "o'Neil", "ann"], rows)


Maker = Callable[[PersonModel, int], Any]
MAKERS: dict[str, Maker] = {
    "first_names": lambda model, rows: model.generate_first_names(
        genders(rows), countries(model, rows)
    ),
    "last_names": lambda model, rows: model.generate_last_names(
        names(rows), countries(model, rows)
    ),
    "emails": lambda model, rows: model.generate_emails(
        names(rows), names(rows), countries(model, rows)
    ),
    "usernames": lambda model, rows: model.generate_usernames(names(rows), names(rows)),
    "passwords": lambda model, rows: model.generate_passwords(names(rows)),
    "phone_numbers": lambda model, rows: model.generate_phone_numbers(
        in_turn([False, False, True, False], rows, "bool"), "+44 xxx-XXX xx"
    ),
    "values": lambda model, rows: model.generate_values_from_collections(
        genders(rows), COLLECTIONS
    ),
    "gender_keys": lambda model, rows: model.map_to_gender_keys(
        in_turn(["Mr", "mrs", "Mx", "nobody", "female"], rows), PATTERNS
    ),
    "conditional": lambda model, rows: model._sample_conditional(
        rows, genders(rows), countries(model, rows)
    ),
    "sample": lambda model, rows: model.sample(rows),
}
FAKER_MAKERS = ["first_names", "last_names", "emails", "conditional"]


def making(maker: str, model: PersonModel, rows: int = 30) -> Callable[[], Any]:
    """The call that makes so many rows."""
    return lambda: MAKERS[maker](model, rows)


def provider(model: PersonModel, name: str, country: str = "GB") -> Any:
    """One of the providers of a country's Faker instance, such as "person" or "internet"."""
    return model.country_to_provider_map[country].provider(f"faker.providers.{name}")


def model_after_use(providers: dict[str, Any] | None = None) -> PersonModel:
    """A model of its own that has made a few rows.

    What the module keeps from one column to the next it has kept by now, so that a change
    after this also has to be noticed.
    """
    model = model_with(new_fakers() if providers is None else providers)
    MAKERS["conditional"](model, 8)
    return model


Change = Callable[[], AbstractContextManager[Any]]


def noting(
    target: Any, name: str, make: Callable[[Any], Callable[..., Any]] = lambda f: f
) -> Change:
    """Replaces a function for a while by another one, and notes the arguments of each call.

    Args:
        target: The module, class or instance that has the function.
        name: The function's name.
        make: Gives the replacement for the function that was there; by default the same one.
    """

    @contextmanager
    def change() -> Any:
        calls: list[str] = []
        owned = name in vars(target)
        genuine = getattr(target, name)
        answer = make(genuine)

        def noted(*args: Any, **kwargs: Any) -> Any:
            calls.append(f"{len(args)} {sorted(kwargs)}")
            return answer(*args, **kwargs)

        before = vars(target).get(name)
        setattr(target, name, staticmethod(noted) if isinstance(before, staticmethod) else noted)
        try:
            yield calls
        finally:
            if owned:
                setattr(target, name, before)
            else:
                delattr(target, name)

    return change


class Text(str):
    """A string of another type."""
