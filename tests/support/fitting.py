"""A person model all of whose parts note how they are fitted."""

from typing import Any

from support.people import people
from support.recording import Calls, StandInMeta
from vantrel.model.models.person import CountryModel, GenderModel, PersonModel

FRAME = people()


class StandInGender(GenderModel):
    """A gender model that only notes how it is fitted."""

    def __init__(self, calls: Calls, answer: Any = None) -> None:
        self.calls, self.answer = calls, answer

    def fit(self, *args: Any, **kwargs: Any) -> None:
        self.calls.append(("gender", args, kwargs))
        if self.answer is not None:
            raise self.answer


class StandInCountry(CountryModel):
    """A country model that only notes how it is fitted and has a map of its own."""

    def __init__(self, calls: Calls, answer: Any = None, providers: Any = None) -> None:
        self.calls, self.answer = calls, answer
        self.country_to_provider_map = {"GB": 1} if providers is None else providers

    def fit(self, *args: Any, **kwargs: Any) -> None:
        self.calls.append(("country", args, kwargs))
        if self.answer is not None:
            raise self.answer


def model_of(
    calls: Calls,
    gender_error: BaseException | None = None,
    country_error: BaseException | None = None,
    context: Any = None,
    providers: Any = None,
) -> PersonModel:
    """A model all of whose parts note what is done with them."""
    model = PersonModel(StandInMeta(calls=calls, context=context))
    model.hidden_model_gender = StandInGender(calls, gender_error)
    model.hidden_model_country = StandInCountry(calls, country_error, providers)
    calls.clear()
    return model
