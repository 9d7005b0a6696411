"""Has a model make the names and accounts of people whose genders and places are drawn already."""

from __future__ import annotations

import copy
import re
from collections import Counter
from collections.abc import Iterable
from dataclasses import asdict
from types import MethodType
from typing import Any, NamedTuple

import numpy as np
import pandas as pd
from faker import Faker
from faker.providers.person import Provider

from vantrel.config import PersonLabels
from vantrel.metadata import Nominal
from vantrel.metadata.value import Person
from vantrel.model.models.histogram import Drawn, Histogram
from vantrel.model.models.person import PersonModel
from vantrel.sampling.surnames import lists_of_one_gender
from vantrel.util.locale.copies import copied

_PLACE = "place"


class Given(Histogram[str]):
    """Stands in the place of a hidden model, and gives what was drawn beforehand."""

    def __init__(self, name: str) -> None:
        super().__init__(Nominal(name))
        self.drawn = Drawn([], np.zeros(0, dtype=np.int64))

    def sample(self, *_: Any, **__: Any) -> pd.DataFrame:
        """Gives the values as a frame."""
        return pd.DataFrame({self.name: self.drawn.series()})

    def positions(self, *_: Any) -> Drawn:
        """Gives the values as a hidden model gives them that draws."""
        return self.drawn

    sample.positions = positions  # type: ignore[attr-defined]  # of a function


def names_model(model: PersonModel, fakers: dict[str, Faker], made: Iterable[str]) -> PersonModel:
    """Makes a model of what is made up, in columns named as its attributes.

    First and last names are always there, whatever else is made.

    Args:
        model: A fitted model.
        fakers: What makes the names of each place.
        made: The attributes, none of which is learnt.
    """
    labels = PersonLabels(**asdict(PersonLabels()) | {name: name for name in made})
    labels.firstname, labels.lastname, labels.country = "firstname", "lastname", _PLACE
    names = copy.copy(model)
    names._meta = Person("names", labels)
    names._meta.columns = []
    names.hidden_model_gender = Given("key")
    names.hidden_model_country = Given(_PLACE)  # type: ignore[assignment]  # is asked for no more
    names.country_to_provider_map = fakers
    return names


def give(model: PersonModel, keys: Drawn, places: Drawn) -> None:
    """Tells a model of :func:`names_model` the gender keys and places of its next rows."""
    model.hidden_model_gender.drawn = keys  # type: ignore[attr-defined]  # it is a Given
    model.hidden_model_country.drawn = places  # type: ignore[union-attr]  # so is this


def gendered(faker: Faker, key: str) -> Faker:
    """Copies an instance so that its names are those of one gender."""
    twin = copied(faker)
    (generator,) = twin.factories
    gender = "female" if key == "F" else "male"
    own = getattr(generator, f"last_name_{gender}")
    provider = own.__self__
    if lists := _lists_of(provider, gender, own):
        vars(provider).update(lists)
        generator.last_name = MethodType(Provider.last_name, provider)
    else:
        generator.last_name = own
    return twin


def _lists_of(provider: Any, gender: str, own: Any) -> dict[str, Any]:
    """The lists that make a provider draw names of one gender, where lists do."""
    has_list = hasattr(provider, f"last_names_{gender}") and not _is_own(own)
    if has_list:
        return {"last_names": getattr(provider, f"last_names_{gender}")}
    return dict(lists_of_one_gender(provider, gender))


def has_gendered_last_names(faker: Faker) -> bool:
    """Whether last names of women and men are known to differ in a place."""
    (generator,) = faker.factories
    own = generator.last_name_female
    return _is_own(own) or bool(_lists_of(own.__self__, "female", own))


def has_gendered_first_names(faker: Faker) -> bool:
    """Whether first names of women and men are told apart in a place."""
    (generator,) = faker.factories
    own = generator.first_name_female
    return (
        _is_own(own)
        or hasattr(own.__self__, "first_names_female")
        or "first_names_female" in lists_of_one_gender(own.__self__, "female")
    )


def _is_own(method: Any) -> bool:
    """Whether a locale has a method of its own in the place of the usual one."""
    usual: Any = getattr(Provider, method.__name__)
    return method.__func__ is not usual


class Order(NamedTuple):
    """How a language joins names."""

    is_last_first: bool = False
    separator: str = " "


_TWO_NAMES = re.compile(r"\{\{(first|last)_\w*name\w*\}\}([^{}]*)\{\{(first|last)_\w*name\w*\}\}")


def order_of_names(faker: Faker, *, in_latin: bool = False) -> Order:
    """Tells the order and the separator of names by Faker's own formats, the likeliest of them.

    In Latin letters they are separate words, and have an order of their own where Faker tells it.
    """
    (generator,) = faker.factories
    provider = generator.first_name.__self__
    formats = getattr(provider, "formats", ())
    if in_latin:
        formats = getattr(provider, "romanized_formats", formats)
    weights = formats if isinstance(formats, dict) else dict.fromkeys(formats, 1)
    found: Counter[Order] = Counter()
    for text, weight in weights.items():
        match = _TWO_NAMES.fullmatch(text)
        if match and match[1] != match[3]:
            found[Order(match[1] == "last", match[2] or (" " if in_latin else ""))] += weight
    return found.most_common(1)[0][0] if found else Order()


def order_of_table(full_names: str) -> Order:
    """Tells the order and the separator of names in a table, which has a way of its own."""
    separator = ", " if "," in full_names else " "
    return Order(full_names.lower().startswith("last"), separator)


def readings_of(faker: Faker) -> dict[str, str]:
    """How names that are written in signs are read, where Faker tells."""
    (generator,) = faker.factories
    provider = generator.first_name.__self__
    pairs = [*getattr(provider, "first_name_pairs", ()), *getattr(provider, "last_name_pairs", ())]
    return {written: read for written, _, read in pairs}
