"""Columns that are too large for the memory there is: MemoryError, whoever it is that lacks memory."""

import sys

import pytest

from support.isolated import answer_of
from support.sanitizing import SANITIZED

pytestmark = [
    pytest.mark.skipif(sys.platform != "linux", reason="limits memory as Linux does"),
    pytest.mark.skipif(SANITIZED, reason="a sanitizer ends the process where memory is limited"),
]

# Of the flags' bytes pandas makes a copy first, then the module; then come the rows themselves.
LIMITED = """
    import json, random, resource
    from pathlib import Path
    import numpy as np, pandas as pd
    from vantrel.model.models.person import PersonModel

    ROWS = 20_000_000
    flags = pd.Series(np.zeros(ROWS, dtype=bool))

    def outcome():
        try:
            return len(PersonModel.generate_phone_numbers(flags))
        except MemoryError as error:
            return error.__traceback__.tb_next.tb_frame.f_code.co_name

    def with_more(megabytes):
        pages = int(Path("/proc/self/statm").read_text().split()[0])
        limit = pages * resource.getpagesize() + megabytes * 1_000_000
        resource.setrlimit(resource.RLIMIT_AS, (limit, resource.RLIM_INFINITY))
        try:
            return outcome()
        finally:
            resource.setrlimit(resource.RLIMIT_AS, (resource.RLIM_INFINITY, resource.RLIM_INFINITY))

    PersonModel.generate_phone_numbers(flags[:20])
    before = random.getstate()
    ends = [with_more(megabytes) for megabytes in {megabytes}]
    same = before == random.getstate()
    print(json.dumps([ends, same, len(PersonModel.generate_phone_numbers(flags[:20]))]))
"""


def test_column_without_memory_for_it() -> None:
    """The error shows the function, no number was drawn, and the next column is made as ever."""
    ends, untouched, rows = answer_of(LIMITED.format(megabytes=[10, 30]))
    assert [end.rsplit(".", 1)[-1] for end in ends] == ["generate_phone_numbers"] * 2
    assert untouched
    assert rows == 20


def test_want_of_memory_in_the_midst_of_drawing() -> None:
    ends, _, rows = answer_of(LIMITED.format(megabytes=[260]))
    assert [end.rsplit(".", 1)[-1] for end in ends] == ["generate_phone_numbers"]
    assert rows == 20
