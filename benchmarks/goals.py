"""Measures all that sampling must reach."""

from __future__ import annotations

from collections.abc import Callable, Iterator
from functools import partial

from vantrel.model.models.person import PersonModel
from vantrel.sampling.seeding import seed_everything

from . import memory
from .people import MIXED, fitted_model, generators
from .plain_way import SEED, check_both_ways_agree, plain_way
from .results import Limits, Result
from .rivals import RIVALS
from .tables import megabytes
from .timing import Cost, Way, Work, alternate

ROWS = 20_000
ROWS_ALONE = 100_000
ROWS_LARGE = 400_000
ROWS_COMPARED = 3_000

MIXED_LIMITS = Limits(bar=50, aim=90)
COUNTRIES_LIMITS = Limits(bar=25, aim=50)
RIVALS_LIMITS = Limits(bar=6, aim=10)
GROWTH_LIMITS = Limits(bar=1.25, aim=1.05, at_most=True)
MEMORY_LIMITS = Limits(bar=3, aim=1.5, at_most=True)
ALONE_LIMITS = Limits(bar=50, aim=150)

OTHER_COUNTRIES = (("GB",), ("US",), ("DE",), ("FR", "ES", "IT"), ("CN",))


def all_columns(rounds: int) -> Iterator[Result]:
    """All twelve columns against the plain way, for several countries."""
    for countries in (MIXED, *OTHER_COUNTRIES):
        model = fitted_model(countries)
        check_both_ways_agree(model, partial(model.sample, ROWS_COMPARED))
        costs = _both_ways(model, partial(model.sample, ROWS), ROWS, rounds)
        limits = MIXED_LIMITS if countries == MIXED else COUNTRIES_LIMITS
        yield Result.of_costs(f"all columns: {', '.join(countries)}", *costs, limits)


def generators_alone(rounds: int) -> Iterator[Result]:
    """Single generators against the plain way."""
    model = fitted_model()
    for generator in generators(model, ROWS_COMPARED):
        check_both_ways_agree(model, generator.make)
    for generator in generators(model, ROWS_ALONE):
        costs = _both_ways(model, generator.make, ROWS_ALONE, rounds)
        yield Result.of_costs(f"{generator.name} alone", *costs, ALONE_LIMITS)


def other_libraries(rounds: int) -> Iterator[Result]:
    """The same twelve columns by other libraries, the fastest first."""
    model = fitted_model()
    ways = {name: _rival(make()) for name, make in RIVALS.items()}
    ways["ours"] = Way(partial(model.sample, ROWS), ROWS, _seeding(model))
    costs = alternate(ways, rounds)
    ours = costs.pop("ours")
    for name, cost in sorted(costs.items(), key=lambda item: item[1].median):
        yield Result.of_costs(name, cost, ours, RIVALS_LIMITS)


def growth(rounds: int) -> Iterator[Result]:
    """The cost of a row in a large table over that in a small one."""
    model = fitted_model()
    seed = _seeding(model)
    small = Way(partial(model.sample, ROWS), ROWS, seed)
    large = Way(partial(model.sample, ROWS_LARGE), ROWS_LARGE, seed)
    costs = alternate({"small": small, "large": large}, rounds)
    yield Result.of_costs(
        f"a row of {ROWS_LARGE:,}, of {ROWS:,}", costs["small"], costs["large"], GROWTH_LIMITS
    )


def peak_memory(rounds: int) -> Iterator[Result]:
    """The most memory that a sample needs at one time over the size of its frame."""
    needed = [memory.in_new_process(ROWS_LARGE) for _ in range(rounds)]
    by_round = tuple(one.peak / one.frame for one in needed)
    middle = sorted(needed, key=lambda one: one.peak / one.frame)[len(needed) // 2]
    yield Result(
        f"peak memory, frame ({ROWS_LARGE:,})",
        megabytes(middle.frame),
        megabytes(middle.peak),
        middle.peak / middle.frame,
        by_round,
        MEMORY_LIMITS,
    )


def _both_ways(model: PersonModel, make: Work, rows: int, rounds: int) -> tuple[Cost, Cost]:
    """Measures the plain way, then ours."""

    def plainly() -> None:
        with plain_way():
            make()

    seed = _seeding(model)
    costs = alternate({"plain": Way(plainly, rows, seed), "ours": Way(make, rows, seed)}, rounds)
    return costs["plain"], costs["ours"]


def _seeding(model: PersonModel) -> Callable[[], None]:
    return partial(seed_everything, model, SEED)


def _rival(sample: Callable[[int], object]) -> Way:
    return Way(partial(sample, ROWS), ROWS)
