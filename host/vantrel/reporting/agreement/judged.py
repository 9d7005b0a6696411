"""What it means how often rows contradict themselves."""

from __future__ import annotations

from collections.abc import Sequence

from vantrel.reporting.agreement.rates import Agreement
from vantrel.reporting.verdict import FINE, LOOK, Verdict
from vantrel.wording import percent

SECTION = "agreement"


def judge_agreement(found: Sequence[Agreement]) -> list[Verdict]:
    """Judges each agreement of the parts of a row."""
    return [_of_agreement(each) for each in found]


def _of_agreement(found: Agreement) -> Verdict:
    figure = f"{percent(found.sampled.rate)} disagree"
    compared = (
        f"in the real table {percent(found.real.rate)} of the rows are so"
        if found.real and found.real.looked_at
        else "the real table cannot tell how often its rows are so"
    )
    if found.is_fine:
        words = (
            f"Rows with such a contradiction ({found.meaning}) are as rare as they should be;"
            f" {compared}."
        )
        return Verdict(found.parts, figure, FINE, words, SECTION)
    words = (
        f"{percent(found.sampled.rate)} of the sampled rows have {found.meaning}; {compared}."
        " Tests that rely on such rows may mislead: see whether a column was changed or mixed up."
    )
    return Verdict(found.parts, figure, LOOK, words, SECTION)
