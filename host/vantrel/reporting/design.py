"""What a model makes otherwise than the real table has it, by design."""

from __future__ import annotations

from collections import Counter
from dataclasses import dataclass
from functools import cached_property

from vantrel.config import PersonModelConfig
from vantrel.genders import by_gender
from vantrel.reporting.labelled import LabelledTable

EVEN_SPELLINGS = (
    "The shares of genders are kept. The spellings of one gender are drawn evenly, and what is not"
    " understood as a gender is never drawn."
)
EVEN_TITLES = "Titles are drawn evenly from those that only the row's gender bears."
CONDITIONS = "The sample was made for given genders or countries, and has their shares and gaps."
UNCLEAR_GENDERS = "What is not understood as a gender counts as missing."
UNCLEAR_TITLES = (
    "Genders are learnt from titles, and what is not understood as one counts as missing."
)
NO_TITLES = "A row has no title where its gender is missing or bears none of the real titles."
BLANK_ROWS = (
    "Countries are missing at least as often as gender, as a row without a gender is blank."
)
UNLEARNT = "Gaps in what is made up, such as names, are not learnt: it is missing where gender is."


@dataclass(frozen=True)
class Design:
    """What a model that has learnt from the real table makes of it.

    Args:
        real: The real table.
        sampled: The sample.
        has_conditions: Whether genders or countries were given to make it.
        is_bare: Whether the bare model may have made it, and not rows as real ones are.
    """

    real: LabelledTable
    sampled: LabelledTable
    has_conditions: bool = False
    is_bare: bool = True

    def gap(self, attribute: str, rate: float, sampled_rate: float) -> tuple[float | None, str]:
        """Tells how often an attribute is missing from samples, and why.

        Args:
            attribute: The attribute.
            rate: How often it is missing from the real table, from 0 to 1.
            sampled_rate: The same of the sample.

        Returns:
            The rate, from 0 to 1, or None where the real table does not tell; and the reason.
        """
        if self.has_conditions and attribute in ("gender", "country"):
            return sampled_rate, CONDITIONS
        blank = self.blank_rate if self.is_bare else None
        if blank is None:
            return None, ""
        if attribute == "country":
            return max(rate, blank), BLANK_ROWS
        if attribute == "title" and self._told_by == "gender":
            return self._untitled_rate, NO_TITLES
        reasons = {"gender": UNCLEAR_GENDERS, "title": UNCLEAR_TITLES}
        return blank, reasons.get(attribute, UNLEARNT)

    @cached_property
    def blank_rate(self) -> float | None:
        """How often a whole row is blank, from 0 to 1: where nothing tells its gender."""
        if self._told_by is None:
            return 0.0
        if not self._followed.has(self._told_by):
            return None
        told = sum(self.genders(self._followed, self._told_by).values())
        return 1 - told / len(self._followed)

    def genders(self, table: LabelledTable, attribute: str) -> dict[str, int]:
        """Counts the genders that an attribute tells, without the rows where it tells none.

        The usual patterns tell it. A value that none of them matches was understood all the same
        if it was sampled: it counts as a gender of its own.

        Args:
            table: A table with the attribute.
            attribute: ``gender`` or ``title``.

        Returns:
            The keys of genders, or the values that count as such, with their rows.
        """
        counts, sampled = table.counts(attribute), self.sampled.counts(attribute)
        assert counts is not None
        assert sampled is not None
        keys = {value: value for value in sampled}
        for key, values in by_gender([*counts, *sampled], PersonModelConfig(), attribute).items():
            keys |= dict.fromkeys(values, key)
        genders: Counter[str] = Counter()
        for value, count in counts.items():
            if value in keys:
                genders[keys[value]] += count
        return dict(genders)

    @cached_property
    def _told_by(self) -> str | None:
        """The attribute that tells the genders of the sample."""
        return next(filter(self.sampled.has, ("gender", "title")), None)

    @property
    def _followed(self) -> LabelledTable:
        """The table whose genders the sample has; those that were given are known by it alone."""
        return self.sampled if self.has_conditions and self.sampled.has("gender") else self.real

    @property
    def _untitled_rate(self) -> float:
        titles = self.real.counts("title")
        assert titles is not None
        sorted_titles = by_gender(titles, PersonModelConfig(), "title")
        titled = [key for key, values in sorted_titles.items() if values]
        genders = self.genders(self._followed, "gender")
        return 1 - sum(genders.get(key, 0) for key in titled) / len(self._followed)
