"""What the model of a sample was to give, and why that may differ from the real table."""

from __future__ import annotations

from collections import defaultdict
from collections.abc import Iterable, Mapping, Sequence
from dataclasses import dataclass

from vantrel.sampling.expected import Expected
from vantrel.sampling.record import SampleRecord
from vantrel.wording import counted

CONDITIONS = "The sample was made for given genders or countries, and has their shares and gaps."
BARE = (
    "The bare model made the rows: titles and spellings of one gender are drawn evenly, what is not"
    " understood is left out, and a row without a gender is blank."
)


@dataclass(frozen=True)
class Meant:
    """What a model was to give.

    Args:
        expected: How frequent everything is in its samples.
        reason: Why that may differ from the real table, in words.
        is_otherwise: Whether it may differ by any distance, and not only by what is left out.
    """

    expected: Expected
    reason: str
    is_otherwise: bool

    def excuse(self, excess: float, counts: Iterable[int]) -> str:
        """The reason of a distance from the real table, "" if it is none of this one.

        Args:
            excess: By how much the distance is greater than chance explains.
            counts: How often the real table has each value.
        """
        counts = list(counts)
        fewest = self.expected.min_count or 0
        left_out = sum(rows for rows in counts if rows < fewest) / max(sum(counts), 1)
        return self.reason if self.is_otherwise or excess <= left_out else ""

    def shares(self, attribute: str) -> Mapping[str, float] | None:
        """The shares of an attribute's values; None of what the model did not learn."""
        return self.expected.shares.get(attribute)

    def filled(self, attribute: str) -> int:
        """How many of the rows that tell of the model have an attribute."""
        return round(self.expected.rows * (1 - self.expected.missing.get(attribute, 0)))

    def together(self, attributes: Sequence[str]) -> Mapping[tuple[str | None, ...], float] | None:
        """The shares of what attributes hold together; None where one was not learnt."""
        learnt = self.expected.attributes
        if not set(attributes) <= set(learnt):
            return None
        places = [learnt.index(each) for each in attributes]
        shares: defaultdict[tuple[str | None, ...], float] = defaultdict(float)
        for cells, share in self.expected.combinations:
            shares[tuple(cells[place] for place in places)] += share
        return shares


def meant_of(record: SampleRecord | None) -> Meant | None:
    """Tells what the model of a sample was to give; None where its record does not."""
    if record is None or record.expected is None:
        return None
    if record.options.get("conditions"):
        return Meant(record.expected, CONDITIONS, is_otherwise=True)
    if record.expected.min_count is None:
        return Meant(record.expected, BARE, is_otherwise=True)
    fewest = counted(record.expected.min_count, "real row")
    reason = (
        f"The model leaves out values that fewer than {fewest} have, and draws combinations in"
        " fewer by coarser counts."
    )
    return Meant(record.expected, reason, is_otherwise=False)
