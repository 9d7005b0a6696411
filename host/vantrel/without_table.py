"""People of whom there is no table: shares are told in its place."""

from __future__ import annotations

import math
from collections.abc import Iterable, Mapping
from decimal import Decimal
from functools import lru_cache
from itertools import product
from numbers import Real
from pathlib import Path
from typing import Any, TypedDict, Unpack

import msgspec
import pandas as pd

from vantrel.arguments import kind_of, refuse_text
from vantrel.attributes import ATTRIBUTES, LEARNT
from vantrel.config import PersonLabels, PersonModelConfig
from vantrel.errors import ArgumentError, ArgumentTypeError
from vantrel.fitting.checks import check_ways, refuse_unknown_attribute
from vantrel.fitting.counted import fit_counts
from vantrel.genders import keys_of
from vantrel.metadata.value import Person
from vantrel.model.models.person import PersonModel
from vantrel.rows import RESERVED, Ways, learn_rows
from vantrel.sampling.blocks import sample_blocks
from vantrel.sampling.places import with_names_of
from vantrel.sampling.to_file import Progress, told, untold
from vantrel.sampling.whole import plan_sample, sample
from vantrel.storage.files import refuse_overwriting
from vantrel.tables import TableCounts, write_table
from vantrel.tables.counts import Found
from vantrel.usual_titles import usual_titles
from vantrel.util.locale.locale import locale_of, refuse_unknown, told_before, warn_of_borrowed
from vantrel.wording import shown

# So many rows are counted where shares add up to 1.
_SCALE = 10**12

type Shares = Mapping[str, float] | pd.Series | Iterable[str] | None


class Reached(TypedDict, total=False):
    """What :func:`people` takes that tells how people are reached."""

    email_domain: str
    phone_numbers: str
    locales: Mapping[str, str] | None
    latin: bool


def people(
    n: int,
    *,
    countries: Shares = None,
    genders: Shares = None,
    columns: Iterable[str] | None = None,
    seed: int | None = None,
    email_domain: str = RESERVED,
    phone_numbers: str = "fiction",
    locales: Mapping[str, str] | None = None,
    latin: bool = False,
) -> pd.DataFrame:
    """Makes up people without a table to learn from.

    Titles are those that are usual for country and gender. Where none are, as in Sweden or Japan,
    or for other genders than women and men but in English, they are missing; so they are where
    those of a language are not in Latin letters and ``latin`` is set.

    What is behind a call is kept for the next ones of the same shares and columns, which cost as
    much as :func:`vantrel.sample`.

    Args:
        n: The number of people.
        countries: The share of each country, as in ``{"DE": 3, "GB": 1}`` or counts of pandas, or
            countries of equal shares; written as :func:`vantrel.fit` takes them. British if None.
        genders: The same of genders, in words or letters. Women and men if None.
        columns: The attributes to make, in this order; all if None.
        seed: An integer from 0 on. If None, one is drawn and logged.
        email_domain: The domain of e-mail addresses, as :func:`vantrel.fit` takes it.
        phone_numbers: "fiction" for numbers that are kept for it where a country has such, "valid"
            for valid ones everywhere.
        locales: The locales whose names people of some countries get: ``{"India": "en_IN"}``.
        latin: Whether names are written in Latin letters.

    Returns:
        A frame with a column for each attribute. Its ``attrs["seed"]`` is the seed.

    Raises:
        ArgumentTypeError: There is one text in the place of several, or something of another type.
        ArgumentError: A share, a gender, an attribute or a number is none.
        UnknownPlaceError: A country or a locale is not known.

    Warns:
        BorrowedNamesWarning: Faker has no names of some countries.
    """
    if n is None:
        raise ArgumentTypeError("'n' is the number of people, not None.")
    model, wanted = model_of(
        countries,
        genders,
        columns,
        email_domain=email_domain,
        phone_numbers=phone_numbers,
        locales=locales,
        latin=latin,
    )
    return sample(model, n, seed=seed)[wanted]


def people_to_file(
    output: Path,
    n: int,
    *,
    columns: Iterable[str] | None = None,
    countries: Shares = None,
    genders: Shares = None,
    seed: int | None = None,
    force: bool = False,
    progress: Progress = untold,
    **reached: Unpack[Reached],
) -> int:
    """Writes the people of :func:`people` to a table, in memory that does not grow with them.

    What is not told here is as that function takes it.

    Args:
        output: The table to write, as :func:`vantrel.tables.write_table` takes it.
        force: Whether a file that is there is overwritten.
        progress: What is told how far the rows are.

    Returns:
        The seed, drawn or given.
    """
    refuse_overwriting(output, force=force)
    model, wanted = model_of(countries, genders, columns, **reached)
    plan, _ = plan_sample(model, n, None, seed=seed, unique=(), strict=False)
    with progress(n) as further:
        made = (block[wanted] for block in sample_blocks(model, plan))
        write_table(told(made, further), output, force=force)
    return plan.seed


def model_of(
    countries: Shares = None,
    genders: Shares = None,
    columns: Iterable[str] | None = None,
    **reached: Unpack[Reached],
) -> tuple[PersonModel, list[str]]:
    """Gives the model behind :func:`people`, which takes the same, and the columns to show."""
    wanted = list(dict.fromkeys(_texts(ATTRIBUTES if columns is None else columns, "columns")))
    for attribute in wanted:
        refuse_unknown_attribute(attribute)
    if not wanted:
        raise ArgumentError("There are no columns to make: name some, or leave 'columns' out.")
    places = _shares({"GB": 1} if countries is None else countries, "countries")
    refuse_unknown(places)
    words = _shares({"F": 1, "M": 1} if genders is None else genders, "genders")
    keys = keys_of(words, PersonModelConfig(), "gender")
    for word in words:
        if word not in keys:
            raise ArgumentError(
                f"{shown(repr(word))} is no gender: write F, M or NB, or a word for one of them."
            )
    ways = check_ways(**{**reached, "locales": reached.get("locales") or {}})
    warn_of_borrowed(with_names_of(places, ways.locales))
    made = tuple(name for name in ATTRIBUTES if name in wanted or name in LEARNT)
    return _model(
        tuple(places.items()), tuple(words.items()), made, msgspec.json.encode(ways)
    ), wanted


# What an argument of several is several of.
_ITEMS = {"columns": "attributes", "countries": "countries", "genders": "genders"}


def _texts(given: Any, name: str) -> list[str]:
    """Gives the texts of an argument, and refuses what is none or just one."""
    items = _ITEMS[name]
    refuse_text(given, name, items)
    if not isinstance(given, Iterable):
        raise ArgumentTypeError(f"{name!r} is a list of {items}; this is {kind_of(given)}.")
    texts = list(given)
    for each in texts:
        if not isinstance(each, str):
            raise ArgumentTypeError(f"{name!r} are texts, not {shown(repr(each))}.")
    return texts


def _shares(given: Any, name: str) -> dict[str, float]:
    """Gives shares that add up to 1, equal ones if there are just names."""
    if isinstance(given, pd.Series) and pd.api.types.is_numeric_dtype(given):
        given = given.to_dict()
    names = _texts(given, name)
    shares = dict.fromkeys(names, 1.0)
    if isinstance(given, Mapping):
        shares = {each: _share(given[each], each) for each in names}
    most = max(shares.values(), default=0.0)
    if not most:
        raise ArgumentError(f"{name!r} have no share above 0: give at least one.")
    # Beside the greatest one first, for the sum of very large ones is infinite.
    total = sum(share / most for share in shares.values())
    return {each: share / most / total for each, share in shares.items() if share}


def _share(given: Any, of: str) -> float:
    share = math.nan
    if isinstance(given, Real | Decimal) and not isinstance(given, bool):
        try:
            share = float(given)
        except ValueError:  # a decimal that is no number
            pass
        except OverflowError:
            raise ArgumentError(
                f"The share of {shown(repr(of))} is too large to count with."
            ) from None
    if not 0 <= share < math.inf:
        raise ArgumentError(
            f"The share of {shown(repr(of))} is a number from 0 on, not {shown(repr(given))}."
        )
    return share


@lru_cache(maxsize=16)
def _model(
    countries: tuple[tuple[str, float], ...],
    genders: tuple[tuple[str, float], ...],
    attributes: tuple[str, ...],
    encoded_ways: bytes,
) -> PersonModel:
    ways = msgspec.json.decode(encoded_ways, type=Ways)
    keys = keys_of([gender for gender, _ in genders], PersonModelConfig(), "gender")
    combinations: dict[tuple[Any, ...], Found] = {}
    for (country, of_country), (gender, of_gender) in product(countries, genders):
        (place,) = with_names_of([country], ways.locales)
        language = locale_of(place)[0].partition("_")[0]
        titles = usual_titles(language, keys[gender], latin=ways.latin)
        for title, of_title in titles.items():
            if rows := round(of_country * of_gender * of_title * _SCALE):
                combinations[gender, title, country, 0] = Found(rows, len(combinations) + 1)
    counts = TableCounts(LEARNT, (), combinations)
    config = PersonModelConfig()
    meta = Person("person", PersonLabels(**{name: name for name in attributes}))
    with told_before():
        model = fit_counts(counts, list(attributes), meta, config)
    meta.rows = learn_rows(counts, meta, config, 1).rows
    meta.ways = ways
    return model
