"""The main figures in a few words each, and whether they ask for a look."""

from __future__ import annotations

from collections.abc import Sequence

from vantrel.attributes import UNIQUE, WORDS
from vantrel.reporting.agreement.judged import judge_agreement
from vantrel.reporting.distances import Distance
from vantrel.reporting.duplicates import Duplicates
from vantrel.reporting.figures import Figures
from vantrel.reporting.frequencies import Frequencies
from vantrel.reporting.missing import MissingRates
from vantrel.reporting.nearness.judged import judge_nearness
from vantrel.reporting.provenance import Provenance
from vantrel.reporting.together import Together
from vantrel.reporting.verdict import FINE, KNOWN, LOOK, OPEN, Verdict
from vantrel.wording import distance, listed, number, points, shown

_CHANGED = "See whether the sample was changed, or made from another model."
_OTHER_TABLE = "The model was to give that: see whether it was fitted to this table."
_MOST_VALUES = 5
UNKNOWN_CHANGES = (
    "Whether the table was changed since is not known: that is told of a file whose SHA-256 is in"
    " the record, and neither of a folder nor of a table in memory."
)
_MISLEADS = "Tests that rely on these shares may mislead."


def verdicts(figures: Figures, origin: Provenance | None) -> list[Verdict]:
    """Judges what was compared; what no table holds has no verdict.

    Args:
        figures: What was compared.
        origin: How the sample was made, if that is known.
    """
    found = [_of_shares(shares) for shares in figures.frequencies]
    found += [_of_together(figures.together)] if figures.together else []
    found += _of_gaps(figures.missing_rates)
    found += judge_agreement(figures.agreement)
    found += _of_repeats(figures.duplicates)
    found += judge_nearness(figures.nearness)
    return [*found, _of_origin(origin)]


def _of_shares(shares: Frequencies) -> Verdict:
    about = f"{WORDS[shares.attribute]} shares"
    if shares.distance is None or shares.limit is None:
        return Verdict(about, "none", OPEN, why_not_compared(shares), "shares")
    figure = distance(shares.distance)
    found = _of_distance(about, figure, Distance(shares.distance, shares.limit), shares)
    if found.state == LOOK or not shares.unlikely:
        return found
    values = listed([shown(value) for value in shares.unlikely[:_MOST_VALUES]])
    words = f"Rarer or more frequent than chance explains: {values}. {_CHANGED}"
    return Verdict(about, figure, LOOK, words, "shares")


def _of_together(together: Together) -> Verdict:
    figure = distance(together.distance.value)
    return _of_distance(together.words, figure, together.distance, together)


def _of_distance(
    about: str, figure: str, real: Distance, judged: Frequencies | Together
) -> Verdict:
    """Judges a distance from the real table, and from what the model was to give if it is known."""
    section = "together" if isinstance(judged, Together) else "shares"
    limit = f"9,999 in 10,000 samples of so many rows stay within {distance(real.limit)}."
    model = judged.from_model
    if model and not model.is_by_chance:
        words = (
            f"Not what the model was to give: it is {distance(model.value)} from that, and chance"
            f" explains {distance(model.limit)}. {_CHANGED}"
        )
        return Verdict(about, figure, LOOK, words, section)
    if real.is_by_chance:
        words = f"As near as chance allows: {limit}"
        return Verdict(about, figure, FINE, words, section)
    if judged.by_design:
        words = f"What the model was to give. {judged.by_design}"
        return Verdict(about, figure, KNOWN, words, section)
    words = f"Further apart than chance explains: {limit} {_OTHER_TABLE if model else _MISLEADS}"
    return Verdict(about, figure, LOOK, words, section)


def why_not_compared(shares: Frequencies) -> str:
    """Tells which table lacks the column or any value of it."""
    sides = (("real table", shares.real_rows), ("sample", shares.sampled_rows))
    without = [name for name, rows in sides if rows is None]
    if without:
        return f"Not compared: the {without[0]} has no such column."
    empty = listed([f"the {name}" for name, rows in sides if rows == 0])
    return f"Not compared: {empty} {'has' if 'and' not in empty else 'have'} no value."


def _of_gaps(gaps: Sequence[MissingRates]) -> list[Verdict]:
    compared = [each for each in gaps if each.difference is not None]
    if not compared:
        return []
    beyond = [each for each in compared if each.is_beyond_chance]
    unmeant = [each for each in gaps if each.from_model and not each.from_model.is_by_chance]
    unexplained = [each for each in beyond if not each.by_design and each not in unmeant]
    asking = [*unmeant, *unexplained]
    largest = max(abs(each.difference or 0) for each in asking or compared)
    figure = f"{points(largest).lstrip('+')} points"
    if asking:
        words = " ".join(
            f"{what} in {listed([shown(each.column) for each in those])}."
            for what, those in (
                ("Not what the model was to give", unmeant),
                ("Further apart than chance explains", unexplained),
            )
            if those
        )
        state = LOOK
    elif beyond:
        words, state = " ".join(dict.fromkeys(each.by_design or "" for each in beyond)), KNOWN
    else:
        words, state = "No column's rate is further off than chance allows.", FINE
    return [Verdict("Missing values", figure, state, words, "missing")]


def _of_repeats(repeats: Sequence[Duplicates]) -> list[Verdict]:
    keys = [each for each in repeats if each.attribute in UNIQUE and each.sampled]
    judged = keys or [each for each in repeats if each.attribute is None and each.sampled]
    if not any(each.sampled and each.sampled.values for each in judged):
        return []
    repeated = sum(each.sampled.repeated for each in judged if each.sampled)
    if not keys:
        return [_of_rows(judged[0], repeated)]
    names = listed([WORDS[each.attribute].lower() for each in keys if each.attribute])
    about = f"Repeated {names}"
    if not repeated:
        return [Verdict(about, "0", FINE, "No two sampled rows share one.", "repeats")]
    if all(each.is_by_chance for each in keys):
        words = "No more sampled values repeat an earlier one than chance explains."
        return [Verdict(about, f"{repeated:,}", FINE, words, "repeats")]
    words = (
        "More sampled values repeat an earlier one than chance explains. See whether rows were"
        " pasted twice."
    )
    return [Verdict(about, f"{repeated:,}", LOOK, words, "repeats")]


def _of_rows(rows: Duplicates, repeated: int) -> Verdict:
    about, figure = "Repeated rows", f"{repeated:,}"
    if not repeated:
        words = "No two sampled rows are alike in all columns that both tables have."
        return Verdict(about, figure, FINE, words, "repeats")
    if rows.chance is None:
        words = (
            "Sampled rows that repeat an earlier one. Nothing in the columns that both tables have"
            " tells two people apart."
        )
        return Verdict(about, figure, OPEN, words, "repeats")
    chance = f"chance explains about {number(round(rows.chance))}"
    if not rows.is_by_chance:
        words = (
            "Sampled rows that repeat an earlier one in all columns that both tables have:"
            f" {chance}. See whether rows were pasted twice."
        )
        return Verdict(about, figure, LOOK, words, "repeats")
    words = (
        "Sampled rows that repeat an earlier one in all columns that both tables have are no more"
        " than chance or the real table explains."
    )
    return Verdict(about, figure, FINE, words, "repeats")


def _of_origin(origin: Provenance | None) -> Verdict:
    about = "How it was made"
    if origin is None:
        words = "There is no record beside the sample of how it was made."
        return Verdict(about, "unknown", OPEN, words, "origin")
    found = []
    if origin.rows_now is not None:
        found.append("The table no longer has as many rows as were made.")
    elif origin.was_changed:
        found.append("The file was changed after it was made.")
    if origin.differences:
        found.append("The seed may give other rows here: versions differ.")
    figure = f"seed {origin.seed}"
    if found:
        return Verdict(about, figure, LOOK, " ".join(found), "origin")
    made_of = ["the model", "the seed"]
    if origin.conditions:
        made_of.insert(1, f"the conditions in {shown(origin.conditions)}")
    words = f"{listed(made_of)} give the same rows again with the versions installed here."
    words = words[0].upper() + words[1:]
    if origin.was_changed is None:
        return Verdict(about, figure, OPEN, f"{words} {UNKNOWN_CHANGES}", "origin")
    return Verdict(about, figure, FINE, words, "origin")
