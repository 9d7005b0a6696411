"""Has a model make the names and accounts of people whose genders and places are drawn already."""

from __future__ import annotations

import copy
import re
from collections import Counter
from collections.abc import Iterable
from dataclasses import asdict
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
    """Copies an instance so that its last names are those of one gender."""
    twin = copied(faker)
    (generator,) = twin.factories
    gender = "female" if key == "F" else "male"
    own = getattr(generator, f"last_name_{gender}")
    if hasattr(own.__self__, f"last_names_{gender}") and not _is_own(own):
        own.__self__.last_names = getattr(own.__self__, f"last_names_{gender}")
    else:
        generator.last_name = own
    return twin


def has_gendered_last_names(faker: Faker) -> bool:
    """Whether Faker knows different last names of women and men for a place."""
    (generator,) = faker.factories
    provider = generator.last_name_female.__self__
    return _is_own(generator.last_name_female) or hasattr(provider, "last_names_female")


def _is_own(method: Any) -> bool:
    """Whether a locale has a method of its own in the place of the usual one."""
    usual: Any = getattr(Provider, method.__name__)
    return method.__func__ is not usual


class Order(NamedTuple):
    """How a language joins names."""

    is_last_first: bool = False
    separator: str = " "


_TWO_NAMES = re.compile(r"\{\{(first|last)_name\w*\}\}([^{}]*)\{\{(first|last)_name\w*\}\}")


def order_of_names(faker: Faker) -> Order:
    """Tells the order and the separator of names by Faker's own formats, the likeliest of them."""
    (generator,) = faker.factories
    formats = getattr(generator.first_name.__self__, "formats", ())
    weights = formats if isinstance(formats, dict) else dict.fromkeys(formats, 1)
    found: Counter[Order] = Counter()
    for text, weight in weights.items():
        match = _TWO_NAMES.fullmatch(text)
        if match and match[1] != match[3]:
            found[Order(match[1] == "last", match[2])] += weight
    return found.most_common(1)[0][0] if found else Order()
