"""What `make test-lowest` tests is what the two distributions promise."""

import re
import tomllib
from pathlib import Path

ROOT = Path(__file__).parents[2]


def test_the_lowest_versions_are_those_that_are_allowed() -> None:
    files = [
        tomllib.loads((ROOT / name).read_text())
        for name in ("pyproject.toml", "host/pyproject.toml")
    ]
    allowed = {
        tuple(re.split(">=|,", each)[:2])
        for file in files
        for each in file["project"]["dependencies"]
        if not each.startswith("vantrel")
    }
    lines = (ROOT / "requirements/lowest.txt").read_text().partition("\n\n")[0].splitlines()[1:]
    lowest = {line.partition("==")[0].lower(): line.partition("==")[2] for line in lines}
    assert {(name.lower(), version) for name, version in allowed} == set(lowest.items())
