"""The check of interrupts passes where each was answered in time, and nowhere else."""

import signal

import pytest

from checks.interrupts import LAST_MOMENT, MOST_SECONDS, Answers, _call_until_interrupted, _moments

ANSWERED = (0.01, True, True)
LATE = (MOST_SECONDS + 0.01, True, True)
LOST = (0.01, False, True)
ENDED_SOONER = (-0.01, False, True)
UNSOUND = (0.01, True, False)


@pytest.mark.parametrize(
    ("noted", "good"),
    [
        ([ANSWERED] * 12, True),
        ([ANSWERED] * 9 + [ENDED_SOONER] * 3, True),
        ([ANSWERED] * 8 + [ENDED_SOONER] * 4, False),
        ([ANSWERED] * 11 + [LOST], False),
        ([ANSWERED] + [LOST] * 11, False),
        ([ANSWERED] * 11 + [LATE], False),
        ([ANSWERED] * 11 + [UNSOUND], False),
        ([], False),
    ],
)
def test_what_is_good(noted: list[tuple[float, bool, bool]], good: bool) -> None:
    answers = Answers(5.0)
    for answer in noted:
        answers.note(*answer)
    assert answers.good == good


def test_cells_tell_what_was_lost() -> None:
    answers = Answers(5.0)
    for answer in (ANSWERED, (0.03, True, True), LOST, UNSOUND):
        answers.note(*answer)
    assert answers.cells() == ["5.0 s", "3 of 4", "1", "10 ms", "30 ms", "1"]


def test_moments_lie_in_every_part_of_the_call_but_the_last() -> None:
    moments = list(_moments(9))
    assert [int(10 * moment) for moment in moments] == list(range(9))
    assert max(moments) < LAST_MOMENT


@pytest.mark.parametrize("swallow", [False, True])
def test_swallowed_interrupt_is_no_answer(swallow: bool) -> None:
    def call() -> None:
        try:
            raise KeyboardInterrupt
        except KeyboardInterrupt:
            if not swallow:
                raise

    usual = signal.getsignal(signal.SIGINT)
    try:
        interrupted, _ = _call_until_interrupted(call)
    finally:
        signal.signal(signal.SIGINT, usual)
    assert interrupted != swallow
