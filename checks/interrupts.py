"""Measures how soon Ctrl-C ends long calls, and sees that nothing is left half done.

`make interrupts` runs it: each call in a process of its own, which is interrupted again and again,
at moments spread over the call. It fails where an answer took longer than it may or did not come,
or where the sources, seeded anew, do not give what they gave before.
"""

from __future__ import annotations

import argparse
import random
import signal
import statistics
import subprocess
import sys
import time
from collections.abc import Callable, Iterator
from dataclasses import dataclass, field
from pathlib import Path
from typing import IO, Any

import numpy as np
import pandas as pd

from benchmarks.people import MIXED, fitted_model
from benchmarks.tables import table
from vantrel.model.models.person import PersonModel
from vantrel.sampling.seeding import seed_everything

ROOT = Path(__file__).resolve().parent.parent
MOST_SECONDS = 0.25
# Later interrupts might come after the end: a call takes now more, now less time.
LAST_MOMENT = 0.9
# So much of what was sent must have come in time, or else too little was measured.
LEAST_ANSWERED = 0.75
SEED = 1

Call = Callable[[], Any]


def main() -> None:
    arguments = _arguments()
    if arguments.serve is not None:
        serve(CALLS[arguments.serve])
    else:
        sys.exit(measure(arguments.tries))


def _arguments() -> argparse.Namespace:
    parser = argparse.ArgumentParser(prog="python -m checks.interrupts", description=__doc__)
    parser.add_argument("--tries", type=int, default=12, help="interrupts of each call")
    parser.add_argument("--serve", choices=CALLS, help=argparse.SUPPRESS)
    return parser.parse_args()


# The calls


def _cycle(values: list[str], rows: int, each: int = 1) -> pd.Series[Any]:
    """Repeats the values, each so many times in a row."""
    return pd.Series(values).iloc[np.arange(rows) // each % len(values)].reset_index(drop=True)


def _sampled_rows(model: PersonModel) -> Call:
    return lambda: model.sample(1_500_000)


def _passwords(model: PersonModel) -> Call:
    rows = pd.Series(np.zeros(20_000_000, bool))
    return lambda: model.generate_passwords(rows)


def _phone_numbers(model: PersonModel) -> Call:
    missing = pd.Series(np.zeros(20_000_000, bool))
    return lambda: model.generate_phone_numbers(missing)


def _usernames_of_one_name(model: PersonModel) -> Call:
    first, last = _cycle(["Ann"], 1_200_000), _cycle(["Smith"], 1_200_000)
    return lambda: model.generate_usernames(first, last)


def _first_names(model: PersonModel) -> Call:
    genders = _cycle(["F", "M", "NB"], 12_000_000)
    countries = _cycle(list(MIXED), 12_000_000, each=3)
    return lambda: model.generate_first_names(genders, countries)


CALLS: dict[str, Callable[[PersonModel], Call]] = {
    "1,500,000 sampled rows": _sampled_rows,
    "20,000,000 passwords": _passwords,
    "20,000,000 phone numbers": _phone_numbers,
    "1,200,000 usernames of one name": _usernames_of_one_name,
    "12,000,000 first names": _first_names,
}


# The process that is interrupted


def serve(prepare: Callable[[PersonModel], Call]) -> None:
    """Makes the call for each line of the input, and tells when and how it came to its end."""
    signal.signal(signal.SIGINT, signal.SIG_IGN)
    model = fitted_model()
    expected = _seeded_sample(model)
    call = prepare(model)
    call()  # takes longer than those that follow
    start = time.monotonic()
    call()
    print(time.monotonic() - start, flush=True)
    for _ in sys.stdin:
        interrupted, at = _call_until_interrupted(call)
        sound = _seeded_sample(model).equals(expected)
        print(int(interrupted), at, int(sound), flush=True)


def _call_until_interrupted(call: Call) -> tuple[bool, float]:
    print("calling", flush=True)
    try:
        signal.signal(signal.SIGINT, signal.default_int_handler)
        call()
        signal.signal(signal.SIGINT, signal.SIG_IGN)
    except KeyboardInterrupt:  # at the very end of the call, too
        at = time.monotonic()
        signal.signal(signal.SIGINT, signal.SIG_IGN)
        return True, at
    return False, time.monotonic()


def _seeded_sample(model: PersonModel) -> pd.DataFrame:
    seed_everything(model, SEED)
    return model.sample(1000)


# The process that interrupts


@dataclass
class Answers:
    """What became of the interrupts of one call.

    Attributes:
        call_seconds: How long the call takes where nothing interrupts it.
        sent: How many interrupts there were.
        seconds: From each interrupt to its KeyboardInterrupt.
        lost: How many came to nothing, though the call had not ended yet.
        unsound: How many times a sample differed afterwards.
    """

    call_seconds: float
    sent: int = 0
    seconds: list[float] = field(default_factory=list)
    lost: int = 0
    unsound: int = 0

    def note(self, seconds: float, interrupted: bool, sound: bool) -> None:
        """Notes an interrupt.

        Args:
            seconds: From the interrupt to the end of the call; below 0 where the call ended sooner.
            interrupted: Whether it ended with KeyboardInterrupt.
            sound: Whether a seeded sample is the same as ever.
        """
        self.sent += 1
        if interrupted:
            self.seconds.append(seconds)
        self.lost += not interrupted and seconds > 0
        self.unsound += not sound

    @property
    def good(self) -> bool:
        return (
            len(self.seconds) >= LEAST_ANSWERED * self.sent > 0
            and max(self.seconds) <= MOST_SECONDS
            and self.lost == self.unsound == 0
        )

    def cells(self) -> list[str]:
        times = [statistics.median(self.seconds), max(self.seconds)] if self.seconds else []
        answers = [f"{1000 * seconds:.0f} ms" for seconds in times] or ["-", "-"]
        counts = [f"{len(self.seconds)} of {self.sent}", str(self.lost)]
        return [f"{self.call_seconds:.1f} s", *counts, *answers, str(self.unsound)]


def measure(tries: int) -> int:
    """Prints the table, row by row as it comes about; gives the exit status."""
    head = ["call", "takes", "answered", "lost", "median", "longest", "unsound"]
    measured = {}
    for name in CALLS:
        print(name, file=sys.stderr, flush=True)
        measured[name] = _interrupted(name, tries)
    print(table(head, [[name, *answers.cells()] for name, answers in measured.items()]))
    slow = [name for name, answers in measured.items() if not answers.good]
    for name in slow:
        print(f"{name}: not every interrupt was answered soundly in {MOST_SECONDS * 1000:.0f} ms")
    return 1 if slow else 0


def _interrupted(name: str, tries: int) -> Answers:
    command = [sys.executable, "-m", "checks.interrupts", "--serve", name]
    with subprocess.Popen(
        command, cwd=ROOT, stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True
    ) as process:
        assert process.stdin is not None
        assert process.stdout is not None
        answers = Answers(float(_line(process.stdout)))
        for moment in _moments(tries):
            print(file=process.stdin, flush=True)
            _line(process.stdout)
            time.sleep(moment * answers.call_seconds)
            sent = time.monotonic()
            process.send_signal(signal.SIGINT)
            interrupted, at, sound = map(float, _line(process.stdout).split())
            answers.note(at - sent, interrupted > 0, sound > 0)
        process.stdin.close()
    return answers


def _line(output: IO[str]) -> str:
    line = output.readline()
    if not line:
        raise SystemExit("The process that is interrupted has ended; it says above why.")
    return line


def _moments(tries: int) -> Iterator[float]:
    """One moment at random out of each part of the call but the last, the whole being 1."""
    for part in range(tries):
        yield LAST_MOMENT * (part + random.random()) / tries


if __name__ == "__main__":
    main()
