"""Tables of every size, in each environment that the module is tested in.

Run as ``python -m benchmarks.sizes ROUNDS`` it measures in the environment of that interpreter and
prints the lines as JSON.
"""

from __future__ import annotations

import json
import subprocess
import sys
from collections.abc import Iterator
from dataclasses import asdict
from functools import partial
from importlib.metadata import version
from importlib.util import find_spec
from pathlib import Path

from vantrel.model.models.person import PersonModel

from .comparing import both_ways, seeding
from .people import MIXED, fitted_model
from .results import Limits, Result
from .rivals import mimesis
from .timing import Way, alternate

ROOT = Path(__file__).resolve().parent.parent

# The environments beside the one that the benchmarks run in, which has pandas 3 and pyarrow.
OTHER_ENVIRONMENTS = (".venv-noarrow", ".venv-pandas2")

HAS_PYARROW = find_spec("pyarrow") is not None

ROWS_AGAINST_MIMESIS = {
    100: Limits(bar=2, aim=3),
    1_000: Limits(bar=10, aim=14),
    **({100_000: Limits(bar=20, aim=26)} if HAS_PYARROW else {10_000: Limits(bar=14, aim=18)}),
}
ONE_ROW_LIMITS = Limits(bar=0.2, aim=0.1, at_most=True)
MIXED_ROWS, MIXED_LIMITS = 20_000, Limits(bar=140, aim=190)
COUNTRIES_ROWS, COUNTRIES_LIMITS = 4_000, Limits(bar=30, aim=45)
COUNTRIES = (("GB",), ("US",), ("DE",), ("FR", "ES", "IT"), ("CN",))


def in_all_environments(rounds: int) -> Iterator[Result]:
    """Measures in this environment, then in the others, each in a process of its own."""
    for folder in (Path(sys.prefix), *(ROOT / name for name in OTHER_ENVIRONMENTS)):
        command = [str(folder / "bin" / "python"), "-m", "benchmarks.sizes", str(rounds)]
        done = subprocess.run(command, cwd=ROOT, check=True, stdout=subprocess.PIPE)
        yield from map(Result.of_dict, json.loads(done.stdout))


def in_this_environment(rounds: int) -> Iterator[Result]:
    """Measures with the installed pandas."""
    where = f"pandas {version('pandas')}{'' if HAS_PYARROW else ', no pyarrow'}"
    model = fitted_model()
    yield _against_plain_way(f"1 row, {where}", model, 1, ONE_ROW_LIMITS, rounds)
    rival = mimesis()
    for rows, limits in ROWS_AGAINST_MIMESIS.items():
        ways = {
            "mimesis": Way(partial(rival, rows), rows),
            "ours": Way(partial(model.sample, rows), rows, seeding(model)),
        }
        costs = alternate(ways, rounds)
        work = f"{rows:,} rows, mimesis, {where}"
        yield Result.of_costs(work, costs["mimesis"], costs["ours"], limits)
    if HAS_PYARROW:
        return
    work = f"{MIXED_ROWS:,} rows, {', '.join(MIXED)}, {where}"
    yield _against_plain_way(work, model, MIXED_ROWS, MIXED_LIMITS, rounds)
    for countries in COUNTRIES:
        work = f"{COUNTRIES_ROWS:,} rows, {', '.join(countries)}, {where}"
        of_countries = fitted_model(countries)
        yield _against_plain_way(work, of_countries, COUNTRIES_ROWS, COUNTRIES_LIMITS, rounds)


def _against_plain_way(
    work: str, model: PersonModel, rows: int, limits: Limits, rounds: int
) -> Result:
    return Result.of_costs(
        work, *both_ways(model, partial(model.sample, rows), rows, rounds), limits
    )


if __name__ == "__main__":
    print(json.dumps([asdict(line) for line in in_this_environment(int(sys.argv[1]))]))
