"""All that is looked at in one row."""

from __future__ import annotations

from collections.abc import Callable
from functools import partial

from vantrel.reporting.agreement.accounts import accounts_against_names
from vantrel.reporting.agreement.names import names_against_countries, names_against_genders
from vantrel.reporting.agreement.rates import Agreement, Contradictions
from vantrel.reporting.agreement.titles import titles_against_genders
from vantrel.reporting.labelled import LabelledTable

_LOOKED_AT: dict[tuple[str, str], Callable[[LabelledTable], Contradictions | None]] = {
    ("Titles and genders", "a woman with a man's title, or a man with a woman's"): (
        titles_against_genders
    ),
    (
        "First names and genders",
        "a woman with a first name that Faker knows as a man's only, or a man with a woman's",
    ): names_against_genders,
    (
        "First names and countries",
        "a first name that Faker does not know in the row's country, but in another of the table",
    ): names_against_countries,
    ("E-mail addresses and names", "an address without any word of the row's name"): partial(
        accounts_against_names, attribute="email"
    ),
    ("Usernames and names", "a user name without any word of the row's name"): partial(
        accounts_against_names, attribute="username"
    ),
}


def compare_agreement(real: LabelledTable, sampled: LabelledTable) -> tuple[Agreement, ...]:
    """Looks for contradictions in the rows of a sample, and of a real table as far as it tells."""
    found = []
    for (parts, meaning), look in _LOOKED_AT.items():
        contradictions = look(sampled)
        if contradictions is not None and contradictions.looked_at:
            found.append(Agreement(parts, meaning, look(real), contradictions))
    return tuple(found)
