"""What a model file must hold, as the types that it is decoded into.

The file may be anybody's: no class of the model sees a value that does not fit here. An unknown key
is refused, so no name from it becomes the name of an attribute, and what costs far more to use than
to write is limited.
"""

from __future__ import annotations

import math
from typing import Annotated, Any, Literal

from msgspec import UNSET, Meta, Struct, UnsetType, defstruct, structs

from vantrel.attributes import ATTRIBUTES, LEARNT
from vantrel.hints import listed
from vantrel.rows.form import Rows, Ways
from vantrel.util.locale.locale import refuse_unknown

SCHEMA_VERSION = 2

Share = Annotated[float, Meta(ge=0, le=1)]
Weight = Annotated[float, Meta(ge=0)]
ColumnName = Annotated[str, Meta(min_length=1, max_length=1_000)]
Template = Annotated[str, Meta(max_length=1_000)]
Pattern = Annotated[str, Meta(max_length=5_000)]
Category = Annotated[str, Meta(max_length=1_000)]
Place = Annotated[str, Meta(max_length=200)]
MOST_PLACES = 2_000  # a generator of names is made for each
PasswordLength = Annotated[int, Meta(ge=0, le=4_096)]
Version = Annotated[str, Meta(max_length=100, pattern="^[ -~]*$")]
GenderKey = Literal["F", "M", "NB", "A"]


class _Form(Struct, forbid_unknown_fields=True):
    """An object of the file. What its constructor raises comes with the path to it."""


class Settings(_Form):
    """The fields of a configuration; what is not set is the default."""

    gender_female_regex: Pattern | UnsetType = UNSET
    gender_male_regex: Pattern | UnsetType = UNSET
    gender_non_binary_regex: Pattern | UnsetType = UNSET
    title_female_regex: Pattern | UnsetType = UNSET
    title_male_regex: Pattern | UnsetType = UNSET
    title_non_binary_regex: Pattern | UnsetType = UNSET
    genders: list[GenderKey] | UnsetType = UNSET
    mobile_number_format: Template | UnsetType = UNSET
    home_number_format: Template | UnsetType = UNSET
    work_number_format: Template | UnsetType = UNSET
    dict_cache_size: Annotated[int, Meta(ge=0, le=10**18)] | UnsetType = UNSET
    pwd_length: tuple[PasswordLength, PasswordLength] | UnsetType = UNSET

    def __post_init__(self) -> None:
        if self.pwd_length and self.pwd_length[0] > self.pwd_length[1]:
            raise ValueError(f"The greatest of the lengths {list(self.pwd_length)} comes second")


Labels: Any = defstruct(
    "Labels", [(attribute, ColumnName | None, None) for attribute in ATTRIBUTES], bases=(_Form,)
)


class Texts(_Form, tag_field="type", tag="string"):
    """What is known of a column of genders or titles."""

    name: str
    nan_freq: Share | None
    categories: list[Category]


class Countries(_Form, tag_field="type", tag="nominal"):
    """What is known of a column of countries."""

    name: str
    nan_freq: Share | None
    categories: list[Place]

    def __post_init__(self) -> None:
        _check_places(self.categories)


class Person(_Form, tag_field="type", tag="person"):
    """What is known of the columns of a person."""

    name: str
    labels: Labels
    locales: Annotated[list[Place], Meta(min_length=1)] | None
    nan_freq: Share | None
    columns: list[str] | None
    children: dict[str, Texts | Countries]

    def __post_init__(self) -> None:
        _check_places(self.locales or [])
        columns = list(filter(None, structs.astuple(self.labels)))
        if len(set(columns)) < len(columns):
            raise ValueError("Two labels name one column")
        learnt = {
            column: Countries if attribute == "country" else Texts
            for attribute in LEARNT
            if (column := getattr(self.labels, attribute))
        }
        if set(learnt) != set(self.children):
            raise ValueError(f"The children are not the learnt columns, {_short(listed(learnt))}")
        for column, child in self.children.items():
            if child.name != column or type(child) is not learnt[column]:
                raise ValueError(f"The child {_short(repr(column))} is that of another column")


class GenderFrequencies(_Form):
    """How frequent genders are, and what tells them."""

    meta: Texts
    probabilities: dict[GenderKey, Weight]
    regex_female: Pattern | UnsetType | None = UNSET
    regex_male: Pattern | UnsetType | None = UNSET
    regex_non_binary: Pattern | UnsetType | None = UNSET

    def __post_init__(self) -> None:
        _refuse_undrawable(self.probabilities.values())


class CountryFrequencies(_Form):
    """How frequent countries are."""

    meta: Countries
    probabilities: dict[str, Weight]

    def __post_init__(self) -> None:
        _refuse_undrawable(self.probabilities.values())


class Model(_Form):
    """The dictionary form of a model of people."""

    meta: Person
    config: Settings
    hidden_model_gender: GenderFrequencies
    hidden_model_country: CountryFrequencies | UnsetType = UNSET

    def __post_init__(self) -> None:
        column, hidden = self.meta.labels.country, self.hidden_model_country
        if bool(column) != bool(hidden):
            raise ValueError("Of 'hidden_model_country' and a label of countries there is but one")
        if hidden and not set(hidden.probabilities) <= set(self.meta.children[column].categories):
            raise ValueError("Countries have probabilities that are none of the categories")

    @property
    def patterns(self) -> set[str]:
        """All patterns of the file."""
        forms = (self.config, self.hidden_model_gender)
        names = [(form, name) for form in forms for name in form.__struct_fields__]
        return {getattr(form, name) or "" for form, name in names if "regex" in name} - {""}


class ModelFile(_Form):
    """The whole file."""

    format: str
    schema_version: Literal[1, 2]
    model: Model
    rows: Rows | None = None
    ways: Ways | None = None
    versions: dict[str, Version] = {}

    def __post_init__(self) -> None:
        if self.rows is None:
            return
        if len(self.rows.country) > MOST_PLACES:
            raise ValueError(
                f"There are {len(self.rows.country):,} places, more than {MOST_PLACES:,}"
            )
        labels = self.model.meta.labels
        made_up = {getattr(labels, name) for name in ATTRIBUTES if name not in LEARNT}
        with_gaps = {
            *self.rows.gaps_apart,
            *(name for each in self.rows.gaps for name in each or ()),
        }
        if not with_gaps <= made_up:
            raise ValueError("There are gaps in columns that are not labelled")
        for attribute in LEARNT:
            has_values = getattr(self.rows, attribute) != [None] or attribute in self.rows.left_out
            if has_values and not getattr(labels, attribute):
                raise ValueError(f"There are values of {attribute!r}, which is no column")


def _check_places(places: list[str]) -> None:
    if len(places) > MOST_PLACES:
        raise ValueError(
            f"There are {len(places):,} places, more than {MOST_PLACES:,}; write each country in"
            " one way"
        )
    refuse_unknown(places)


def _refuse_undrawable(weights: Any) -> None:
    if not 0 < sum(weights) < math.inf:
        raise ValueError(f"Nothing can be drawn by weights that add up to {sum(weights)}")


def _short(text: str) -> str:
    return text if len(text) <= 60 else f"{text[:56]} ..."
