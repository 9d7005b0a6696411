"""What is known of people, as frames that Dask shuffles."""

from __future__ import annotations

from typing import Any

import numpy as np
import pandas as pd

from vantrel.replacing.making.places import Place, Places
from vantrel.replacing.people.made import ACCOUNT_WORDS
from vantrel.replacing.people.told import Told
from vantrel.replacing.people.who import Facts
from vantrel.replacing.values.keys import WORDS
from vantrel.replacing.values.prints import Prints

_TEXT = "string[pyarrow]"
_NOWHERE = ""
_KEYS = {"print": "uint64", "check": "uint64"}
_TOLD = {
    "gender": "uint8",
    "place": _TEXT,
    "first": "uint64",
    "last": "uint64",
    "family": "uint64",
}
_CONTRADICTED = [f"contradicted {each}" for each in ("gender", "place")]
_WORDS = [f"word {number}" for number in range(ACCOUNT_WORDS)]


def _no_rows(columns: dict[str, str]) -> pd.DataFrame:
    none = {name: pd.Series([], dtype=dtype) for name, dtype in columns.items()}
    return pd.DataFrame(none)


NO_ANSWERS = _no_rows({**_KEYS, **_TOLD, "file": "int64"})
"""The form of what a file, by its number, is told of the people in it."""

NO_FACTS = _no_rows(
    {
        **_KEYS,
        **_TOLD,
        **dict.fromkeys(_CONTRADICTED, "bool"),
        **dict.fromkeys(_WORDS, "uint64"),
        "file": "int64",
        "is_wanted": "bool",
    }
)
"""The form of what a file tells: of which file it is, and whether that waits for an answer."""

NO_ACCOUNTS = _no_rows({"print": "uint64", "account": "uint64"})
"""The form of accounts and the prints of the keys that they go with."""


def facts_frame(facts: Facts, places: Places, *, file: int, is_wanted: bool) -> pd.DataFrame:
    """Writes what a file tells as :data:`NO_FACTS`."""
    assert facts.digests is not None
    return _frame(facts, places).assign(
        **dict(zip(_CONTRADICTED, facts.is_contradicted.T, strict=True)),
        **dict(zip(_WORDS, facts.digests[:, :ACCOUNT_WORDS].T, strict=True)),
        file=np.int64(file),
        is_wanted=is_wanted,
    )


def answers_frame(facts: Facts, places: Places, files: Any) -> pd.DataFrame:
    """Writes what files are told as :data:`NO_ANSWERS`."""
    return _frame(facts, places).assign(file=files)


def accounts_frame(whose: Prints, accounts: Prints) -> pd.DataFrame:
    """Writes accounts as :data:`NO_ACCOUNTS`."""
    return pd.DataFrame({"print": whose, "account": accounts})


def facts_of(frame: pd.DataFrame, places: Places) -> Facts:
    """Reads what any of these frames tells of people."""
    told = Told(
        frame["gender"].to_numpy(),
        _numbers(frame["place"], places),
        frame["first"].to_numpy(),
        frame["last"].to_numpy(),
        frame["family"].to_numpy(),
    )
    facts = Facts(frame["print"].to_numpy(), frame["check"].to_numpy(), told)
    if _WORDS[0] not in frame:
        return facts
    digests = np.zeros((len(frame), WORDS), dtype=np.uint64)
    digests[:, :ACCOUNT_WORDS] = frame[_WORDS].to_numpy()
    return facts._replace(digests=digests, is_contradicted=frame[_CONTRADICTED].to_numpy())


def _frame(facts: Facts, places: Places) -> pd.DataFrame:
    texts = [_NOWHERE, *(f"{place.locale} {place.region}" for place in places.known[1:])]
    place = pd.Series(texts, dtype=_TEXT).array.take(facts.told.place.astype(np.int64))
    told = facts.told._replace(place=place)._asdict()
    return pd.DataFrame({"print": facts.prints, "check": facts.checks, **told})


def _numbers(texts: pd.Series, places: Places) -> Any:
    """Gives the numbers of places, which are others on each machine."""
    codes, distinct = pd.factorize(texts)
    numbers = [
        places.number_of(Place(*text.split(" "))) if text != _NOWHERE else 0 for text in distinct
    ]
    return np.array(numbers, dtype=np.uint16)[codes]
