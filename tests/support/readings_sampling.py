"""Plain Python readings of the sampling methods, one statement a step.

They are what the module's methods mean. A test runs both from the same state of every random
source and compares the results and the states afterwards. Names, accounts and numbers come from the
model's own generators, which have readings of their own.
"""

import random
from typing import Any

import numpy as np
import pandas as pd

from vantrel.metadata import MetaNotExtractedError
from vantrel.metadata.value import String
from vantrel.model.models.histogram import Histogram
from vantrel.model.models.person import GenderModel, PersonModel
from vantrel.util.locale.locale import Provider, get_country_to_provder_map
from vantrel.util.person import collections_from_mapping


def gender_collections(model: GenderModel) -> dict[str, list[str]]:
    """Reads ``GenderModel.collections``."""
    mapping = {
        model.key_female: model.regex_female,
        model.key_male: model.regex_male,
        model.key_non_binary: model.regex_non_binary,
    }
    collections = collections_from_mapping(model.meta.categories, mapping, model.key_ambiguous)
    return {key: collection for key, collection in collections.items() if len(collection) > 0}


def gender_categories(model: GenderModel) -> list[str]:
    """Reads ``GenderModel.categories``."""
    return list(gender_collections(model).keys())


def fit_gender(model: GenderModel, df: pd.DataFrame) -> GenderModel:
    """Reads ``GenderModel.fit``."""
    try:
        value_map = {v: key for key, held in gender_collections(model).items() for v in held}
    except MetaNotExtractedError:
        model.meta.extract(df)
        value_map = {v: key for key, held in gender_collections(model).items() for v in held}
    df_gender = df[[model.name]].copy()
    df_gender[model.name] = df_gender[model.name].astype(str).map(value_map)
    return Histogram.fit(model, df_gender)


def gender_from_dict(cls: type[GenderModel], d: dict[str, Any]) -> GenderModel:
    """Reads ``GenderModel.from_dict``."""
    meta_dict = d["meta"]
    meta = String.from_dict(meta_dict)
    model = cls(meta=meta)
    model._probabilities = d.get("probabilities")
    model.regex_female = d.get("regex_female")
    model.regex_male = d.get("regex_male")
    model.regex_non_binary = d.get("regex_non_binary")
    return model


def generate_from_collections(key: Any, collections: dict[str, list[str]]) -> Any:
    """Reads ``PersonModel.generate_from_collections``."""
    categories = collections.get(str(key), [])
    if len(categories) == 0:
        return pd.NA
    return np.random.choice(categories)


def generate_values_from_collections(
    conditions: pd.Series, collections: dict[str, list[str]]
) -> pd.Series:
    """Reads ``PersonModel.generate_values_from_collections``."""
    return conditions.astype(str).apply(generate_from_collections, collections=collections)


def map_to_gender_keys(conditions: pd.Series, mapping: dict[str, str]) -> pd.Series:
    """Reads ``PersonModel.map_to_gender_keys``."""
    collections = collections_from_mapping(conditions, mapping, GenderModel.key_ambiguous)
    return_values = []
    for value in conditions:
        for key, collection in collections.items():
            if value in collection:
                return_values.append(key)
                break
    return pd.Series(return_values)


def sample_conditional(
    model: PersonModel,
    num_rows: int,
    gender_conditions: pd.Series,
    country_conditions: pd.Series | None,
    produce_nans: bool = True,
) -> pd.DataFrame:
    """Reads ``PersonModel._sample_conditional``."""
    df = pd.DataFrame([[]] * num_rows)
    _read_categories(model, df, gender_conditions)
    if model.labels.country is not None:
        if country_conditions is None:
            raise ValueError("Got country label but no country conditions or country model.")
        df.loc[:, model.labels.country] = country_conditions
    firstnames = model.generate_first_names(
        gender_conditions=gender_conditions, country_conditions=country_conditions
    )
    lastnames = model.generate_last_names(
        firstnames=firstnames, country_conditions=country_conditions
    )
    _read_names(model, df, firstnames, lastnames)
    _read_accounts(model, df, firstnames, lastnames, country_conditions)
    _read_numbers(model, df, firstnames)
    columns = [c for c in model.labels.__dict__.values() if c is not None]
    if produce_nans:
        df.loc[gender_conditions.isna(), columns] = np.nan
    return df


def _read_categories(model: PersonModel, df: pd.DataFrame, gender_conditions: pd.Series) -> None:
    if model.labels.gender is not None:
        mapping = {
            GenderModel.key_female: model.config.gender_female_regex,
            GenderModel.key_male: model.config.gender_male_regex,
            GenderModel.key_non_binary: model.config.gender_non_binary_regex,
        }
        categories = model.meta[model.labels.gender].categories
        df.loc[:, model.labels.gender] = generate_values_from_collections(
            conditions=gender_conditions,
            collections=collections_from_mapping(
                seq=categories, mapping=mapping, ambiguous_key=GenderModel.key_ambiguous
            ),
        )
    if model.labels.title is not None:
        mapping = {
            GenderModel.key_female: model.config.title_female_regex,
            GenderModel.key_male: model.config.title_male_regex,
            GenderModel.key_non_binary: model.config.title_non_binary_regex,
        }
        categories = model.meta[model.labels.title].categories
        df.loc[:, model.labels.title] = generate_values_from_collections(
            conditions=gender_conditions,
            collections=collections_from_mapping(
                seq=categories, mapping=mapping, ambiguous_key=GenderModel.key_ambiguous
            ),
        )
        df.loc[:, model.labels.title] = (
            df.loc[:, model.labels.title]
            .astype(str)
            .apply(
                lambda x: (
                    random.choice(list(mapping.keys())) if x == GenderModel.key_ambiguous else x
                )
            )
        )


def _read_names(
    model: PersonModel, df: pd.DataFrame, firstnames: pd.Series, lastnames: pd.Series
) -> None:
    if model.labels.firstname is not None:
        df.loc[:, model.labels.firstname] = firstnames
    if model.labels.lastname is not None:
        df.loc[:, model.labels.lastname] = lastnames
    if model.labels.fullname is not None:
        df.loc[:, model.labels.fullname] = firstnames.astype(dtype="string").str.cat(
            others=lastnames, sep=" "
        )


def _read_accounts(
    model: PersonModel,
    df: pd.DataFrame,
    firstnames: pd.Series,
    lastnames: pd.Series,
    country_conditions: pd.Series,
) -> None:
    if model.labels.email is not None:
        df.loc[:, model.labels.email] = model.generate_emails(
            firstnames=firstnames, lastnames=lastnames, country_condtions=country_conditions
        )
    if model.labels.username is not None:
        df.loc[:, model.labels.username] = model.generate_usernames(
            firstnames=firstnames, lastnames=lastnames
        )
    if model.labels.password is not None:
        df.loc[:, model.labels.password] = model.generate_passwords(firstnames=firstnames)


def _read_numbers(model: PersonModel, df: pd.DataFrame, firstnames: pd.Series) -> None:
    if model.labels.mobile_number is not None:
        df.loc[:, model.labels.mobile_number] = model.generate_phone_numbers(
            isna=firstnames.isna(), number_format=model.mobile_number_format
        )
    if model.labels.home_number is not None:
        df.loc[:, model.labels.home_number] = model.generate_phone_numbers(
            isna=firstnames.isna(), number_format=model.home_number_format
        )
    if model.labels.work_number is not None:
        df.loc[:, model.labels.work_number] = model.generate_phone_numbers(
            isna=firstnames.isna(), number_format=model.work_number_format
        )


def sample(
    model: PersonModel,
    n: int | None = None,
    produce_nans: bool = True,
    conditions: pd.DataFrame | None = None,
    associations: list[Any] | None = None,
) -> pd.DataFrame:
    """Reads ``PersonModel.sample``."""
    if conditions is None and n is None:
        raise ValueError("One of 'n' or 'conditions' must be given.")
    num_rows = len(conditions) if conditions is not None else n
    hidden = {"n": num_rows, "produce_nans": produce_nans}
    hidden |= {"conditions": conditions, "associations": associations}
    gender_conditions = _read_gender_conditions(model, num_rows, conditions, hidden)
    country_conditions = _read_country_conditions(model, num_rows, conditions, hidden)
    df = sample_conditional(
        model,
        num_rows=num_rows,
        gender_conditions=gender_conditions,
        country_conditions=country_conditions,
        produce_nans=produce_nans,
    )
    return model._meta.revert_df_from_children(df)


def _read_gender_conditions(
    model: PersonModel, num_rows: int, conditions: pd.DataFrame | None, hidden: dict[str, Any]
) -> pd.Series:
    if conditions is not None and model.labels.gender in conditions.columns:
        return map_to_gender_keys(
            conditions[model.labels.gender].astype(str),
            mapping={
                GenderModel.key_male: model.config.gender_male_regex,
                GenderModel.key_female: model.config.gender_female_regex,
                GenderModel.key_non_binary: model.config.gender_non_binary_regex,
            },
        )
    if model.hidden_model_gender is not None:
        return model.hidden_model_gender.sample(**hidden)[model.hidden_model_gender.meta.name]
    return pd.Series(
        model._rng.choice([GenderModel.key_male, GenderModel.key_female], size=num_rows)
    )


def _read_country_conditions(
    model: PersonModel, num_rows: int, conditions: pd.DataFrame | None, hidden: dict[str, Any]
) -> pd.Series | None:
    country_conditions = None
    if model.labels.country:
        if conditions is not None and model.labels.country in conditions.columns:
            country_conditions = conditions[model.labels.country]
        elif model.hidden_model_country is not None:
            country_conditions = model.hidden_model_country.sample(**hidden)[model.labels.country]
    elif model.locales is not None:
        model.country_to_provider_map = get_country_to_provder_map(model.locales, Provider.PERSON)
        country_conditions = pd.Series(
            model._rng.choice(list(model.locales), size=num_rows), dtype=str
        )
    else:
        model.country_to_provider_map = get_country_to_provder_map(
            [model.default_locale], Provider.PERSON
        )
        country_conditions = pd.Series([model.default_locale for _ in range(num_rows)], dtype=str)
    return country_conditions
