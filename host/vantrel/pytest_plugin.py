"""A fixture of made-up people for tests, the same ones in each run."""

from __future__ import annotations

import hashlib
from collections.abc import Callable, Generator
from typing import TYPE_CHECKING, Any

import pytest

if TYPE_CHECKING:
    import pandas as pd

_SEEDS = pytest.StashKey[list[int]]()


@pytest.fixture
def people(request: pytest.FixtureRequest) -> Callable[..., pd.DataFrame]:
    """Makes up people as ``vantrel.people`` does, from a seed of this test's own.

    ``people(50, countries=["DE"])`` gives the same people to a test in each run, others to other
    tests, and others in its next call. A seed that is given is taken. What tells a test from others
    is the name of its file, without the folder, its class and its name with its parameters: so it
    does not matter from which folder pytest is run.
    """
    seeds: list[int] = []
    request.node.stash[_SEEDS] = seeds
    test = request.node.nodeid.partition("::")[2]
    own_name = f"{request.node.path.name}::{test}"

    def make(n: int, **asked: Any) -> pd.DataFrame:
        import vantrel  # costs a second, which tests without people need not wait for

        name = f"{own_name} {len(seeds)}"
        own = int.from_bytes(hashlib.sha256(name.encode()).digest()[:8], "big")
        seed = asked.pop("seed", None)
        seeds.append(own if seed is None else seed)
        return vantrel.people(n, seed=seeds[-1], **asked)

    return make


@pytest.hookimpl(wrapper=True)
def pytest_runtest_makereport(
    item: pytest.Item,
) -> Generator[None, pytest.TestReport, pytest.TestReport]:
    """Shows the seeds of a test that fails."""
    report = yield
    if report.failed and (seeds := item.stash.get(_SEEDS, [])):
        report.sections.append(("Seeds of people", ", ".join(map(str, seeds))))
    return report
