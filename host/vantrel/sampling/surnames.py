"""Names of one gender where Faker has those of both in one list, or those of men alone.

The languages that are here tell both by the end of a name.
"""

from __future__ import annotations

from collections.abc import Callable, Sequence
from typing import Any

# How men's last names end, and what women's end in there, the longest first. Polish ones that end
# otherwise are those of women, too; Lithuanian women have that of their husband here.
_POLISH = (("ski", "ska"), ("cki", "cka"), ("dzki", "dzka"))
_LITHUANIAN = tuple((end, "ienė") for end in ("ius", "as", "is", "ys", "us", "a"))

type Lists = dict[str, list[str]]


def lists_of_one_gender(provider: Any, gender: str) -> Lists:
    """Gives the lists of names that are to stand in those of a provider, by their names.

    Args:
        provider: Faker's provider of the names of a locale.
        gender: "female" or "male".

    Returns:
        Nothing where Faker tells the genders itself, or knows no difference.
    """
    lists = _LOCALES.get(getattr(provider, "__lang__", ""))
    return lists(provider, gender) if lists else {}


def _polish(provider: Any, gender: str) -> Lists:
    own = _formed(provider.male_last_names, _POLISH if gender == "female" else ())
    return {"last_names": [*own, *provider.unisex_last_names]}


def _lithuanian(provider: Any, gender: str) -> Lists:
    first = [name for name in provider.first_names if name.endswith("s") == (gender == "male")]
    last = _formed(provider.last_names, _LITHUANIAN if gender == "female" else ())
    return {f"first_names_{gender}": first, "last_names": last}


def _formed(names: Sequence[str], endings: Sequence[tuple[str, str]]) -> list[str]:
    """Gives names their other endings."""
    return [
        next((name.removesuffix(end) + other for end, other in endings if name.endswith(end)), name)
        for name in names
    ]


_LOCALES: dict[str, Callable[[Any, str], Lists]] = {"lt_LT": _lithuanian, "pl_PL": _polish}
