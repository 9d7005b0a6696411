"""Tells where there are more people than telephone numbers for them."""

from __future__ import annotations

import logging
from collections import Counter
from collections.abc import Iterator, Mapping

import pandas as pd

from vantrel.hints import NOTES_LOGGER, argument
from vantrel.model.models.person import PersonModel
from vantrel.rows import shares_of_countries
from vantrel.sampling.blocks import Plan
from vantrel.sampling.phones import (
    is_kept_for_fiction,
    number_formats,
    numbers_in,
    region_of,
)
from vantrel.util.locale.locale import unknown_places
from vantrel.wording import some

_log = logging.getLogger(NOTES_LOGGER)

_MOST_NAMED = 20


def tell_of_scarce_numbers(
    model: PersonModel, plan: Plan, conditions: pd.DataFrame | None = None
) -> None:
    """Logs a note where numbers must come more than once, as there are fewer than people.

    Args:
        model: A fitted model.
        plan: What to make.
        conditions: What is given for any of them, as ``prepare_conditions`` made it.
    """
    if not _log.isEnabledFor(logging.INFO):
        return  # nobody listens, and to count takes longer than to make a few people
    if plan.exact or model.meta.rows is None:
        return  # all numbers are of one format
    by_region: Counter[str] = Counter()
    for place, share in _shares(model, conditions).items():
        by_region[region_of(place)] += round(share * plan.rows)
    scarce = dict(_scarce_numbers(model, by_region))
    if not scarce:
        return
    remedy = (
        f" With {argument('phone_numbers', 'valid')}, fit and people take others, which may be"
        " somebody's."
    )
    _log.info(
        f"Some telephone numbers come more than once: {some(list(scarce), _MOST_NAMED)}."
        f"{remedy if any(scarce.values()) else ''}"
    )


def _scarce_numbers(model: PersonModel, people: Mapping[str, int]) -> Iterator[tuple[str, bool]]:
    """Tells of each attribute and region with more people, and whether its numbers are fiction."""
    for attribute, of_regions in number_formats(model, list(people)).items():
        for region, formats in zip(people, of_regions, strict=True):
            if 0 < (numbers := numbers_in(formats)) < people[region]:
                is_fiction = is_kept_for_fiction(formats, region, attribute)
                kept = f"{numbers:,}{' kept for fiction' if is_fiction else ''}"
                yield f"{attribute} in {region} ({kept}, for {people[region]:,} people)", is_fiction


def _shares(model: PersonModel, conditions: pd.DataFrame | None) -> Mapping[str, float]:
    """The share of each known place among the people of a sample."""
    column = model.labels.country
    if column is None:
        return dict.fromkeys(model.locales, 1 / len(model.locales))
    if conditions is not None and column in conditions:
        shares = conditions[column].value_counts(normalize=True, dropna=False)
        counts = {place: share for place, share in shares.items() if isinstance(place, str)}
    else:
        counts = shares_of_countries(model.meta.rows)
    unknown = set(unknown_places(counts))
    return {place: share for place, share in counts.items() if place not in unknown}
