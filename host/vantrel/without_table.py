"""People of whom there is no table: shares are told in its place."""

from __future__ import annotations

import math
from collections.abc import Iterable, Mapping
from functools import lru_cache
from itertools import product
from pathlib import Path
from typing import Any

import pandas as pd

from vantrel.arguments import refuse_text
from vantrel.attributes import ATTRIBUTES, LEARNT
from vantrel.config import PersonLabels, PersonModelConfig
from vantrel.errors import ArgumentError, ArgumentTypeError
from vantrel.fitting.checks import check_ways, refuse_unknown_attribute
from vantrel.fitting.counted import fit_counts
from vantrel.genders import keys_of
from vantrel.metadata.value import Person
from vantrel.model.models.person import PersonModel
from vantrel.rows import learn_rows
from vantrel.sampling.blocks import sample_blocks
from vantrel.sampling.to_file import Progress, told, untold
from vantrel.sampling.whole import plan_sample, sample
from vantrel.storage.files import refuse_overwriting
from vantrel.tables import TableCounts, write_table
from vantrel.tables.counts import Found
from vantrel.util.locale.locale import locale_of, refuse_unknown, told_before, warn_of_borrowed
from vantrel.wording import shown

# The titles that are usual in a language for each gender, with their shares. There are none for
# other genders, and in languages that are not here.
_TITLES: dict[str, dict[str, dict[str | None, float]]] = {
    "en": {
        "F": {"Mrs": 0.4, "Ms": 0.35, "Miss": 0.22, "Dr": 0.03},
        "M": {"Mr": 0.97, "Dr": 0.03},
        "NB": {"Mx": 1},
    },
    "de": {"F": {"Frau": 0.98, "Dr.": 0.02}, "M": {"Herr": 0.98, "Dr.": 0.02}},
    "fr": {"F": {"Mme": 0.97, "Mlle": 0.03}, "M": {"M.": 1}},
    "es": {"F": {"Sra.": 0.9, "Srta.": 0.1}, "M": {"Sr.": 1}},
    "it": {"F": {"Sig.ra": 1}, "M": {"Sig.": 1}},
    "nl": {"F": {"Mevr.": 1}, "M": {"Dhr.": 1}},
    "pl": {"F": {"Pani": 1}, "M": {"Pan": 1}},
    "pt": {"F": {"Sra.": 1}, "M": {"Sr.": 1}},
}
_NO_TITLE: dict[str | None, float] = {None: 1}

# So many rows are counted where shares add up to 1.
_SCALE = 10**12

type Shares = Mapping[str, float] | Iterable[str] | None


def people(
    n: int,
    *,
    countries: Shares = None,
    genders: Shares = None,
    columns: Iterable[str] | None = None,
    seed: int | None = None,
    phone_numbers: str = "fiction",
    latin: bool = False,
) -> pd.DataFrame:
    """Makes up people without a table to learn from.

    Titles are those that are usual for country and gender. What is behind a call is kept for the
    next ones of the same shares and columns, which cost as much as :func:`vantrel.sample`.

    Args:
        n: The number of people.
        countries: The share of each country, as in ``{"DE": 3, "GB": 1}``, or countries of equal
            shares; written as :func:`vantrel.fit` takes them. British if None.
        genders: The same of genders, in words or letters. Women and men if None.
        columns: The attributes to make, in this order; all if None.
        seed: An integer from 0 on. If None, one is drawn and logged.
        phone_numbers: "fiction" for numbers that are kept for it where a country has such, "valid"
            for valid ones everywhere.
        latin: Whether names are written in Latin letters.

    Returns:
        A frame with a column for each attribute. Its ``attrs["seed"]`` is the seed.

    Raises:
        ArgumentTypeError: There is one text in the place of several.
        ArgumentError: A share, a gender, an attribute or a number is none.
        UnknownPlaceError: A country is not known.

    Warns:
        BorrowedNamesWarning: Faker has no names of some countries.
    """
    model, wanted = model_of(countries, genders, columns, phone_numbers, latin=latin)
    return sample(model, n, seed=seed)[wanted]


def people_to_file(
    output: Path,
    n: int,
    *,
    columns: Iterable[str] | None = None,
    countries: Shares = None,
    genders: Shares = None,
    seed: int | None = None,
    phone_numbers: str = "fiction",
    latin: bool = False,
    force: bool = False,
    progress: Progress = untold,
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
    model, wanted = model_of(countries, genders, columns, phone_numbers, latin=latin)
    plan, _ = plan_sample(model, n, None, seed=seed, unique=(), strict=False)
    with progress(n) as further:
        made = (block[wanted] for block in sample_blocks(model, plan))
        write_table(told(made, further), output, force=force)
    return plan.seed


def model_of(
    countries: Shares,
    genders: Shares,
    columns: Iterable[str] | None,
    phone_numbers: str = "fiction",
    *,
    latin: bool = False,
) -> tuple[PersonModel, list[str]]:
    """Gives the model behind :func:`people`, which takes the same, and the columns to show."""
    refuse_text(columns, "columns", "attributes")
    wanted = list(dict.fromkeys(ATTRIBUTES if columns is None else columns))
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
    warn_of_borrowed(places)
    made = tuple(name for name in ATTRIBUTES if name in wanted or name in LEARNT)
    check_ways(phone_numbers=phone_numbers, latin=latin)
    shares = tuple(places.items()), tuple(words.items())
    return _model(*shares, made, phone_numbers, latin), wanted


def _shares(given: Any, name: str) -> dict[str, float]:
    """Gives the shares as they were given, equal ones if there are just names."""
    refuse_text(given, name, name)
    shares = dict(given) if isinstance(given, Mapping) else dict.fromkeys(given, 1)
    for each, share in shares.items():
        is_number = isinstance(share, int | float) and not isinstance(share, bool)
        if not isinstance(each, str):
            raise ArgumentTypeError(f"{name!r} are texts with their shares, not {each!r}.")
        if not is_number or not 0 <= share < math.inf:
            raise ArgumentError(
                f"The share of {shown(repr(each))} is a number from 0 on, not {share!r}."
            )
    if not sum(shares.values()):
        raise ArgumentError(f"{name!r} have no share above 0: give at least one.")
    return {each: share for each, share in shares.items() if share}


@lru_cache(maxsize=16)
def _model(
    countries: tuple[tuple[str, float], ...],
    genders: tuple[tuple[str, float], ...],
    attributes: tuple[str, ...],
    phone_numbers: str,
    latin: bool,
) -> PersonModel:
    keys = keys_of([gender for gender, _ in genders], PersonModelConfig(), "gender")
    total = sum(share for _, share in countries) * sum(share for _, share in genders)
    combinations: dict[tuple[Any, ...], Found] = {}
    for (country, of_country), (gender, of_gender) in product(countries, genders):
        language = locale_of(country)[0].partition("_")[0]
        titles = _TITLES.get(language, {}).get(keys[gender], _NO_TITLE)
        for title, of_title in titles.items():
            rows = round(of_country * of_gender * of_title / total * _SCALE)
            combinations[gender, title, country, 0] = Found(rows, len(combinations) + 1)
    counts = TableCounts(LEARNT, (), combinations)
    config = PersonModelConfig()
    meta = Person("person", PersonLabels(**{name: name for name in attributes}))
    with told_before():
        model = fit_counts(counts, list(attributes), meta, config)
    meta.rows = learn_rows(counts, meta, config, 1).rows
    meta.ways = check_ways(phone_numbers=phone_numbers, latin=latin)
    return model
