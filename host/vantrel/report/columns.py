"""Looks up the columns of a table by the attribute that each holds."""

from __future__ import annotations

from collections.abc import Mapping

import pandas as pd

# The attributes as a reader knows them.
WORDS = {
    "gender": "Gender",
    "title": "Title",
    "firstname": "First name",
    "lastname": "Last name",
    "fullname": "Full name",
    "email": "E-mail address",
    "username": "Username",
    "password": "Password",
    "mobile_number": "Mobile number",
    "home_number": "Home number",
    "work_number": "Work number",
    "country": "Country",
}


def has(df: pd.DataFrame, columns: Mapping[str, str], *attributes: str) -> bool:
    """Tells whether a table holds all of these attributes."""
    return all(columns.get(attribute) in df.columns for attribute in attributes)


def texts(df: pd.DataFrame, columns: Mapping[str, str], attribute: str) -> pd.Series | None:
    """The values of an attribute as texts, without the missing ones.

    Returns:
        A Series on the table's own index, or None where the table has no such column.
    """
    if not has(df, columns, attribute):
        return None
    return df[columns[attribute]].dropna().astype(str)


def most_frequent(values: pd.Series) -> pd.Series:
    """Counts values, the most frequent first, equally frequent ones in the order of the alphabet.

    Returns:
        The count of each distinct value; the index holds the values.
    """
    return values.value_counts().sort_index().sort_values(ascending=False, kind="stable")
