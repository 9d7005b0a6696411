"""What it means how a copy differs from its original."""

from __future__ import annotations

from collections.abc import Iterator, Sequence

from vantrel.reporting.copies.acted import ActedColumn
from vantrel.reporting.copies.cells import Kept, ReplacedColumn
from vantrel.reporting.copies.record import FoundLeak
from vantrel.reporting.verdict import FINE, LOOK, Verdict
from vantrel.wording import counted, listed, number, shown


def judge_rows(original: int, copy: int, made: int) -> Verdict:
    """Judges whether the copy has the rows of the original."""
    if original == copy == made:
        words = "The copy has a row for each of the original."
        return Verdict("Rows", number(copy), FINE, words, "kept")
    words = (
        f"The original has {counted(original, 'row')}, the copy {number(copy)}, and {number(made)}"
        " were made: one of them was changed since. Make the copy anew."
    )
    return Verdict("Rows", number(copy), LOOK, words, "kept")


def judge_kept(kept: Sequence[Kept]) -> Verdict:
    """Judges whether what had to stay stayed."""
    about = "Cells that had to stay"
    changed = [each for each in kept if each.differing]
    if not changed:
        words = "Every cell of the other columns is as in the original, in the same order."
        return Verdict(about, "0 differ", FINE, words, "kept")
    names = listed([shown(each.column) for each in changed])
    words = f"Cells differ from the original in {names}. Make the copy anew."
    figure = f"{number(sum(each.differing for each in changed))} differ"
    return Verdict(about, figure, LOOK, words, "kept")


def judge_replaced(replaced: Sequence[ReplacedColumn]) -> Iterator[Verdict]:
    """Judges whether people were replaced, and each by one person."""
    if not replaced:
        return
    same = [each for each in replaced if not each.is_replaced]
    about = "Cells that had to change"
    fine = "No more cells mean what they meant in the original than chance explains."
    yield _of_same(about, replaced, same, "Real values", fine, "replaced")
    if any(each.torn is not None for each in replaced):
        yield _of_people(replaced)


def _of_people(replaced: Sequence[ReplacedColumn]) -> Verdict:
    about = "One person for each key"
    torn = [each for each in replaced if each.torn]
    shared = [each for each in replaced if each.shared]
    if not (torn or shared):
        words = (
            "Rows of one key have one made-up person, and no two keys share an e-mail address or"
            " user name."
        )
        return Verdict(about, "0 exceptions", FINE, words, "replaced")
    words = " ".join(
        f"{what} in {listed([shown(each.column) for each in columns])}."
        for what, columns in (
            ("One key has several made-up values", torn),
            ("Several keys share one", shared),
        )
        if columns
    )
    most = max(each.torn or each.shared or 0 for each in [*torn, *shared])
    return Verdict(about, counted(most, "exception"), LOOK, words, "replaced")


def judge_acted(acted: Sequence[ActedColumn]) -> Iterator[Verdict]:
    """Judges whether the columns that had an action were changed by it."""
    if not acted:
        return
    same = [each for each in acted if not each.is_changed]
    about = "Columns that had an action"
    fine = "No value is still there but those that chance explains."
    yield _of_same(about, acted, same, "Values that had to go", fine, "acted")


def _of_same[ColumnT: (ReplacedColumn, ActedColumn)](
    about: str,
    columns: Sequence[ColumnT],
    same: Sequence[ColumnT],
    what: str,
    fine: str,
    block: str,
) -> Verdict:
    """Judges whether columns have more of what they had than chance explains."""
    figure = f"{number(sum(each.same for each in same or columns))} as before"
    if not same:
        return Verdict(about, figure, FINE, fine, block)
    names = listed([shown(each.column) for each in same])
    words = f"{what} are still in {names}. Make the copy anew, and do not hand this one on."
    return Verdict(about, figure, LOOK, words, block)


def judge_origin(is_changed: bool | None) -> Iterator[Verdict]:
    """Judges whether the copy is the one that was made, if that is known."""
    about = "How it was made"
    if is_changed:
        words = "The copy is not as it was made: it was changed since. Make it anew."
        yield Verdict(about, "changed", LOOK, words, "origin")
    elif is_changed is not None:
        words = "The copy is to the byte as it was made."
        yield Verdict(about, "unchanged", FINE, words, "origin")


def judge_leaks(leaks: Sequence[FoundLeak]) -> Verdict:
    """Judges what was found of people in other columns when the copy was made."""
    about = "People who are still named"
    if not leaks:
        words = "No other column named anybody when the copy was made."
        return Verdict(about, "0", FINE, words, "leaks")
    columns = listed([shown(each) for each in dict.fromkeys(each.column for each in leaks)])
    words = (
        f"Cells of {columns} named people when the copy was made: read them, or make the copy anew"
        " and scrub these columns."
    )
    return Verdict(about, counted(sum(each.cells for each in leaks), "cell"), LOOK, words, "leaks")
