"""Whether titles go with genders."""

from __future__ import annotations

from collections import Counter

from vantrel.config import PersonModelConfig
from vantrel.genders import keys_of
from vantrel.reporting.agreement.rates import Contradictions, of_groups
from vantrel.reporting.labelled import LabelledTable

_TELLING = ("F", "M")


def titles_against_genders(table: LabelledTable) -> Contradictions | None:
    """Counts women with men's titles, and men with women's."""
    if not table.has("gender", "title"):
        return None
    counts = table.combinations(("gender", "title"))
    genders, titles = (
        keys_of([cells[place] for cells in counts], PersonModelConfig(), attribute)
        for place, attribute in enumerate(("gender", "title"))
    )
    looked_at = 0
    against: Counter[str] = Counter()
    for (gender, title), rows in counts.items():
        keys = genders.get(gender), titles.get(title)
        if all(key in _TELLING for key in keys):
            looked_at += rows
            if len(set(keys)) > 1:
                against[f"{gender}, {title}"] += rows
    return of_groups(looked_at, against)
