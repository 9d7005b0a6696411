"""Functions of pandas and Faker that somebody replaced before the module was imported."""

from pathlib import Path

import pytest

from support.isolated import output_of

START = f"""
import faulthandler, functools, sys
sys.path.insert(0, {str(Path(__file__).parents[1])!r})
faulthandler.dump_traceback_later(50, exit=True)
import faker.generator, pandas as pd
"""

REPLACED = {
    "a method that tries functions first": """
usual = pd.Series.apply
def apply(self, func, *, args=(), **rest):
    if len(self):
        func(self.iloc[0], *args, **rest)
    return usual(self, func, args=args, **rest)
pd.Series.apply = apply
""",
    "a method in a wrapper that bears its name": """
usual = pd.Series.isin
calls = []
@functools.wraps(usual)
def isin(*args):
    calls.append(1)
    return usual(*args)
pd.Series.isin = isin
""",
    "a method of Faker's generator": """
usual = faker.generator.Generator.parse
faker.generator.Generator.parse = lambda self, text: usual(self, text).upper()
""",
}


@pytest.mark.parametrize("replaced", REPLACED)
def test_what_was_replaced_is_called(replaced: str) -> None:
    compared = """
from support.twins import made_both_ways
from support.whole_columns import making, usual_model
for maker in ("values", "usernames", "emails", "conditional"):
    made_both_ways(making(maker, usual_model(), 40), usual_model())
print("the same both ways")
"""
    assert output_of(START + REPLACED[replaced] + compared) == "the same both ways"


@pytest.mark.parametrize(
    "added",
    [
        "pd.Series.progress_apply = lambda self, func: self.apply(func)",
        "pd.api.extensions.register_series_accessor('geo')(type('Geo', (), {}))",
    ],
)
def test_what_was_added_switches_nothing_off(added: str) -> None:
    counted = """
from support.counting import FAKER, calls_of
from support.whole_columns import making, usual_model
print(calls_of(making("sample", usual_model(), 2000), FAKER) < 2000)
"""
    assert output_of(f"{START}{added}\n{counted}") == "True"
