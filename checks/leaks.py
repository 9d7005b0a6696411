"""The command of `make leaks`: tells which calls of the module leave something behind."""

from __future__ import annotations

import argparse
import os
import sys
from collections.abc import Iterable

from .catalogue import CATALOGUE
from .deliberate import LEAKS
from .measuring import HEAD, line, measured, verdict
from .processes import run_apart

DESCRIPTION = """Makes each call of the catalogue many times, in a process of its own, and tells
what it leaves behind: blocks of Python's allocators, bytes of the C heap, references to objects
that were there before. Dear calls are made less often, a tenth as often at least. Some calls that
leak on purpose come first."""


def check(names: Iterable[str], calls: int, at_once: int) -> list[str]:
    """Measures the calls of these names and prints their lines.

    Returns:
        The names of those whose verdict is not the expected one.
    """
    wanted = list(names)
    failed = []
    outcomes = run_apart(measured, ((name, calls) for name in wanted), at_once)
    for name, outcome in zip(wanted, outcomes, strict=True):
        print(line(name, outcome), flush=True)
        expected = LEAKS[name][1] if name in LEAKS else ""
        if verdict(outcome) != expected:
            failed.append(name)
    return failed


def main() -> int:
    arguments = _arguments()
    names = [*LEAKS, *(name for name in CATALOGUE if arguments.only in name)]
    print(HEAD)
    failed = check(names, arguments.calls, arguments.jobs)
    print(f"{len(names)} calls checked, {len(failed)} of them not as they should be")
    for name in failed:
        print(f"  {name}")
    return 1 if failed else 0


def _arguments() -> argparse.Namespace:
    parser = argparse.ArgumentParser(prog="python -m checks.leaks", description=DESCRIPTION)
    parser.add_argument(
        "--calls",
        type=_positive,
        default=10_000,
        help="how often a cheap call is made (default: 10000)",
    )
    parser.add_argument(
        "--only", default="", metavar="TEXT", help="only calls that have the text in their names"
    )
    parser.add_argument(
        "--jobs",
        type=_positive,
        default=os.cpu_count() or 1,
        help="how many processes run at a time (default: one for each core)",
    )
    return parser.parse_args()


def _positive(text: str) -> int:
    if not text.isdecimal() or int(text) < 1:
        raise argparse.ArgumentTypeError(f"{text!r} is not a number from 1 on")
    return int(text)


if __name__ == "__main__":
    sys.exit(main())
