"""What is being handled (`sys.exception()`) is the same after a call of the module as before, wherever it is made.

Nothing here comes near pandas: its compiled functions leave the exception of a caller in a generator.
"""

import random
import sys
from collections.abc import Callable, Generator
from typing import Any

import pytest

from support.recording import Calls, RecordingContext, StandInMeta, raising
from vantrel.metadata import MetaNotExtractedError
from vantrel.model.models.person import GenderModel, PersonModel

OUTER, OWN = RuntimeError("of the caller"), ValueError("of the generator")
LOST = LookupError("lost")


class LateMeta:
    """A meta that has categories once it was extracted."""

    name = "title"
    extracted = False

    def __init__(self, missing: type[Exception]) -> None:
        self.missing = missing

    @property
    def categories(self) -> list[str]:
        if not self.extracted:
            raise self.missing
        return ["Mr"]

    def extract(self, df: object) -> None:
        assert isinstance(sys.exception(), self.missing)
        self.extracted = True


class Empty:
    """A frame that has no column."""

    def __getitem__(self, column: Any) -> Any:
        raise LOST


def fit_gender_model_that_has_to_extract() -> None:
    with pytest.raises(LookupError, match=r"^lost$"):
        GenderModel(LateMeta(MetaNotExtractedError)).fit(Empty())


def fit_gender_model_that_fails() -> None:
    with pytest.raises(ZeroDivisionError):
        GenderModel(LateMeta(ZeroDivisionError)).fit(Empty())


def model_that_fails_in_the_context(swallow: bool) -> PersonModel:
    model = PersonModel(StandInMeta(context=RecordingContext(Calls(), swallow=swallow)))
    model.hidden_model_gender = GenderModel(LateMeta(ZeroDivisionError))
    model.country_to_provider_map = {"GB": None}
    return model


def fit_person_model_whose_context_swallows() -> None:
    model_that_fails_in_the_context(swallow=True).fit(Empty())


def fit_person_model_whose_context_fails() -> None:
    with pytest.raises(ZeroDivisionError):
        model_that_fails_in_the_context(swallow=False).fit(Empty())


def generate_password_that_stops() -> None:
    """The StopIteration becomes a RuntimeError."""
    with pytest.MonkeyPatch.context() as patch:
        patch.setattr(random, "choice", raising(StopIteration()))
        with pytest.raises(RuntimeError, match=r"^generator raised StopIteration$"):
            PersonModel.generate_password()


every_work = pytest.mark.parametrize(
    "work",
    [
        fit_gender_model_that_has_to_extract,
        fit_gender_model_that_fails,
        fit_person_model_whose_context_swallows,
        fit_person_model_whose_context_fails,
        generate_password_that_stops,
    ],
)


@every_work
def test_generator_takes_nothing_over_from_the_except_block_it_is_called_in(
    work: Callable[[], None],
) -> None:
    def working() -> Generator[BaseException | None]:
        work()
        yield sys.exception()
        yield sys.exception()

    generator = working()
    try:
        raise OUTER
    except RuntimeError:
        assert next(generator) is OUTER
        assert sys.exception() is OUTER
    assert next(generator) is None


@every_work
@pytest.mark.parametrize("own", [OWN, OUTER], ids=["another", "the caller's"])
def test_generator_goes_on_handling_its_own_exception(
    work: Callable[[], None], own: Exception
) -> None:
    def working() -> Generator[BaseException | None]:
        try:
            raise own
        except type(own):
            work()
            yield sys.exception()
            yield sys.exception()

    generator = working()
    try:
        raise OUTER
    except RuntimeError:
        assert next(generator) is own
        assert sys.exception() is OUTER
    assert next(generator) is own


@every_work
def test_nothing_is_handled_after_a_call_outside_of_except_blocks(work: Callable[[], None]) -> None:
    work()
    assert sys.exception() is None
