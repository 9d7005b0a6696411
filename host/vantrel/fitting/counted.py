"""From the counts of a table to a fitted model, without the table."""

from __future__ import annotations

from itertools import chain, islice, repeat
from typing import Any

import pandas as pd

from vantrel.attributes import LEARNT
from vantrel.config import PersonModelConfig
from vantrel.metadata.value import Person
from vantrel.model.models.histogram import nothing_to_learn
from vantrel.model.models.person import GenderModel, PersonModel
from vantrel.tables import TableCounts
from vantrel.tables.counts import Found
from vantrel.util.locale.faker_locales import DEFAULT_LOCALE


def learnt_columns(meta: Person) -> list[str]:
    """The columns of a person whose values must be counted to fit a model."""
    return [meta.params[attribute] for attribute in LEARNT if attribute in meta.params]


def in_one_country(counts: TableCounts, column: str) -> TableCounts:
    """Counts as if everybody were British who has anything in the column of countries.

    A model needs a country to make names, also where the table tells none.
    """
    place = counts.columns.index(column)
    combinations: dict[tuple[Any, ...], Found] = {}
    for cells, found in counts.combinations.items():
        country = cells[place] and DEFAULT_LOCALE
        located = (*cells[:place], country, *cells[place + 1 :])
        earlier = combinations.get(located, Found(0, found.first))
        combinations[located] = Found(earlier.rows + found.rows, earlier.first)
    return TableCounts(counts.columns, counts.labelled, combinations)


def fit_counts(
    counts: TableCounts, columns: list[str], meta: Person, config: PersonModelConfig
) -> PersonModel:
    """Fits a model that is equal to the bit to one that has seen the whole table.

    Args:
        counts: The values of :func:`learnt_columns`, and the rows without any value in the columns
            of the person.
        columns: The table's columns.
        meta: What the columns hold.
        config: The settings of the model.
    """
    one_of_each = _one_of_each(counts, columns)
    model = PersonModel(meta, config)
    meta.extract(one_of_each)
    shared = {
        hidden: _understood(hidden, counts)
        for hidden in (model.hidden_model_gender, model.hidden_model_country)
        if hidden is not None and hidden.name in counts.values
    }
    model.fit(one_of_each)
    meta.nan_freq = counts.blank / counts.rows if meta.columns else 0.0
    for column in learnt_columns(meta):
        meta[column].nan_freq = counts.missing(column) / counts.rows
    for hidden, found in shared.items():
        understood = sum(found.values())
        hidden._probabilities = {key: count / understood for key, count in found.items()}
        hidden.meta.nan_freq = (counts.rows - understood) / counts.rows
    return model


def _one_of_each(counts: TableCounts, columns: list[str]) -> pd.DataFrame:
    """Makes a table of the same values in the same order, as short as can be.

    The last value of a column is repeated where another column has more.
    """
    length = max(map(len, counts.values.values()), default=1)
    missing = [None] * length
    rows: dict[str, list[Any]] = dict.fromkeys(columns, missing)
    for column, values in counts.values.items():
        rows[column] = list(islice(chain(values, repeat(next(reversed(values)))), length))
    return pd.DataFrame(rows, columns=pd.Index(columns))


def _understood(hidden: Any, counts: TableCounts) -> dict[Any, int]:
    """Counts what a histogram would have counted itself, if that is anything."""
    values = counts.values[hidden.name]
    keys: dict[Any, Any] = {value: value for value in values if value is not None}
    if isinstance(hidden, GenderModel):
        sorted_values = hidden.collections.items()
        keys = {value: key for key, those in sorted_values for value in those}
    found: dict[Any, int] = {}
    for value, count in values.items():
        if value in keys:
            found[keys[value]] = found.get(keys[value], 0) + count
    if not found:
        raise nothing_to_learn(hidden.name, counts.rows)
    return found
