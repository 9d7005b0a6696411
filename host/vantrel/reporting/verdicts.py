"""The main figures in a few words each, and whether they ask for a look."""

from __future__ import annotations

from collections.abc import Sequence

from vantrel.attributes import UNIQUE, WORDS
from vantrel.reporting.agreement.judged import judge_agreement
from vantrel.reporting.duplicates import Duplicates
from vantrel.reporting.figures import Figures
from vantrel.reporting.frequencies import Frequencies
from vantrel.reporting.missing import MissingRates
from vantrel.reporting.nearness.judged import judge_nearness
from vantrel.reporting.provenance import Provenance
from vantrel.reporting.verdict import FINE, KNOWN, LOOK, OPEN, Verdict
from vantrel.wording import distance, listed, points, shown


def verdicts(figures: Figures, origin: Provenance | None) -> list[Verdict]:
    """Judges what was compared; what no table holds has no verdict.

    Args:
        figures: What was compared.
        origin: How the sample was made, if that is known.
    """
    found = [_of_shares(shares) for shares in figures.frequencies]
    found += _of_gaps(figures.missing_rates)
    found += judge_agreement(figures.agreement)
    found += _of_repeats(figures.duplicates)
    found += judge_nearness(figures.nearness)
    return [*found, _of_origin(origin)]


def _of_shares(shares: Frequencies) -> Verdict:
    about = f"{WORDS[shares.attribute]} shares"
    if shares.distance is None or shares.limit is None:
        return Verdict(about, "none", OPEN, why_not_compared(shares), "shares")
    limit = f"99 in 100 samples of so many rows stay within {distance(shares.limit)}."
    if shares.is_by_chance:
        words = f"As near as chance allows: {limit}"
        return Verdict(about, distance(shares.distance), FINE, words, "shares")
    if shares.by_design:
        return Verdict(about, distance(shares.distance), KNOWN, shares.by_design, "shares")
    words = f"Further apart than chance explains: {limit}"
    return Verdict(about, distance(shares.distance), LOOK, words, "shares")


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
    unexplained = [each for each in beyond if not each.by_design]
    largest = max(abs(each.difference or 0) for each in unexplained or compared)
    figure = f"{points(largest).lstrip('+')} points"
    if unexplained:
        names = listed([shown(each.column) for each in unexplained])
        words, state = f"Further apart than chance explains in {names}.", LOOK
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
        words = (
            "Sampled rows that repeat an earlier one. Without a username or an e-mail address,"
            " nothing need tell two people apart."
        )
        return [Verdict("Repeated rows", f"{repeated:,}", OPEN, words, "repeats")]
    names = listed([WORDS[each.attribute].lower() for each in keys if each.attribute])
    about = f"Repeated {names}"
    if not repeated:
        return [Verdict(about, "0", FINE, "No two sampled rows share one.", "repeats")]
    words = "So many sampled values repeat an earlier one."
    return [Verdict(about, f"{repeated:,}", LOOK, words, "repeats")]


def _of_origin(origin: Provenance | None) -> Verdict:
    about = "How it was made"
    if origin is None:
        words = "There is no record beside the sample of how it was made."
        return Verdict(about, "unknown", OPEN, words, "origin")
    found = []
    if origin.rows_now is not None:
        found.append("The table no longer has as many rows as were made.")
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
    return Verdict(about, figure, FINE, words, "origin")
