"""What the dictionary form of a model of people must be before a model is made of it.

The form comes from a file that anybody may have written. So every value is checked here, with the
path to it, before a class of the package sees it. No name from the form ever becomes the name of an
attribute, unless it is one of those listed here.
"""

from __future__ import annotations

import math
from dataclasses import fields
from typing import Any

from vantrel.config import PersonLabels
from vantrel.util.locale.locale import refuse_unknown
from vantrel.util.regex.safety import UnsafePatternError, check_pattern
from vantrel.util.shapes import (
    ShapeError,
    integer,
    list_of,
    mapping_of,
    number,
    one_of,
    or_null,
    record,
    refuse,
    text,
)
from vantrel.util.strict_json import MOST_DIGITS, inside, shown

_GENDER_KEYS = ("F", "M", "NB", "A")
_LEARNT = ("gender", "title", "country")
_LONGEST_NAME = 1_000
_LONGEST_TEMPLATE = 1_000
_LONGEST_CATEGORY = 1_000
_LONGEST_PLACE = 200
_MOST_PLACES = 2_000  # a generator of names is made for each
_LONGEST_PASSWORD = 4_096


def check_model(form: Any, where: str) -> None:
    """Makes sure that a dictionary form is that of a model that can be sampled.

    Args:
        form: The form.
        where: The path to it in its file.

    Raises:
        ShapeError: Something is missing, not known, of a wrong type or does not fit the rest.
    """
    _MODEL(form, where)
    _check_children(form["meta"], inside(where, "meta"))
    _check_country(form, where)


def _column_name(value: Any, where: str) -> None:
    text(_LONGEST_NAME)(value, where)
    if not value:
        refuse(value, where, "the name of a column")


def _pattern(value: Any, where: str) -> None:
    text()(value, where)
    try:
        check_pattern(value)
    except UnsafePatternError as error:
        raise ShapeError(f"{where} is {shown(value)}, which {error}") from error


def _places(value: Any, where: str) -> None:
    list_of(text(_LONGEST_PLACE))(value, where)
    if len(value) > _MOST_PLACES:
        raise ShapeError(
            f"{where} has {len(value):,} places, more than {_MOST_PLACES:,}: write each country in"
            " one way."
        )
    try:
        refuse_unknown(value)
    except ValueError as error:
        raise ShapeError(f"{where}: {error}") from error


def _locales(value: Any, where: str) -> None:
    list_of(text(), least=1)(value, where)
    _places(value, where)


def _lengths(value: Any, where: str) -> None:
    list_of(integer(0, _LONGEST_PASSWORD))(value, where)
    if len(value) != 2:
        refuse(value, where, "a list of the least and the greatest length")
    if value[0] > value[1]:
        raise ShapeError(f"{where} is {value}: the greatest length comes second.")


def _shares(value: Any, where: str) -> None:
    mapping_of(number())(value, where)
    if not 0 < sum(value.values()) < math.inf:
        raise ShapeError(f"{where} add up to {sum(value.values())}, which nothing can be drawn by.")


def _gender_shares(value: Any, where: str) -> None:
    mapping_of(number(), keys=_GENDER_KEYS)(value, where)
    _shares(value, where)


_COLUMN = {"name": text(), "nan_freq": or_null(number(most=1))}
_TEXTS = record(
    {**_COLUMN, "type": one_of("string"), "categories": list_of(text(_LONGEST_CATEGORY))}
)
_COUNTRIES = record({**_COLUMN, "type": one_of("nominal"), "categories": _places})


def _children(_value: Any, _where: str) -> None:
    """Is checked when it is known which columns the labels name."""


_LABELS = record({}, {field.name: or_null(_column_name) for field in fields(PersonLabels)})

_META = record(
    {
        "type": one_of("person"),
        "name": text(),
        "labels": _LABELS,
        "locales": or_null(_locales),
        "nan_freq": or_null(number(most=1)),
        "columns": or_null(list_of(text())),
        "children": _children,
    }
)

CONFIG_FIELDS = {
    "gender_female_regex": _pattern,
    "gender_male_regex": _pattern,
    "gender_non_binary_regex": _pattern,
    "title_female_regex": _pattern,
    "title_male_regex": _pattern,
    "title_non_binary_regex": _pattern,
    "genders": list_of(one_of(*_GENDER_KEYS)),
    "mobile_number_format": text(_LONGEST_TEMPLATE),
    "home_number_format": text(_LONGEST_TEMPLATE),
    "work_number_format": text(_LONGEST_TEMPLATE),
    "dict_cache_size": integer(0, 10**MOST_DIGITS),
    "pwd_length": _lengths,
}

# What a configuration does not have is the default, so that settings can be added to it.
_CONFIG = record({}, CONFIG_FIELDS)

_MODEL = record(
    {
        "meta": _META,
        "config": _CONFIG,
        "hidden_model_gender": record(
            {"meta": _TEXTS, "probabilities": _gender_shares},
            {
                "regex_female": or_null(_pattern),
                "regex_male": or_null(_pattern),
                "regex_non_binary": or_null(_pattern),
            },
        ),
    },
    {"hidden_model_country": record({"meta": _COUNTRIES, "probabilities": _shares})},
)


def _check_children(meta: dict[str, Any], where: str) -> None:
    """Makes sure that there is a column meta for each labelled column that is learnt, no other."""
    children, where = meta["children"], inside(where, "children")
    shapes = {
        column: _COUNTRIES if attribute == "country" else _TEXTS
        for attribute in _LEARNT
        if (column := meta["labels"].get(attribute))
    }
    record(shapes)(children, where)
    for column, child in children.items():
        one_of(column)(child["name"], inside(inside(where, column), "name"))


def _check_country(form: dict[str, Any], where: str) -> None:
    """Makes sure that a country is drawn where there is a column of them, and from that column."""
    column = form["meta"]["labels"].get("country")
    key = "hidden_model_country"
    if bool(column) != (key in form):
        reason = "though a label names" if column else "though no label names"
        raise ShapeError(f"{where} {'lacks' if column else 'has'} {key!r} {reason} countries.")
    if column:
        known = form["meta"]["children"][column]["categories"]
        shares = inside(inside(where, key), "probabilities")
        mapping_of(number(), keys=set(known))(form[key]["probabilities"], shares)
