"""Whole columns against single calls: countries whose names come by calls of Faker's own code."""

from collections.abc import Callable, Iterator
from contextlib import AbstractContextManager, contextmanager
from types import MethodType
from typing import Any

import pytest
from faker.config import AVAILABLE_LOCALES
from faker.providers import BaseProvider
from faker.utils.decorators import lowercase

from support.counting import FAKER, calls_of
from support.sources import seed_sources
from support.twins import made_both_ways, refused_both_ways, same_both_ways
from support.whole_columns import (
    FAKER_MAKERS,
    countries,
    genders,
    in_turn,
    making,
    model_with,
    names,
    new_faker,
    provider,
)
from vantrel.model.models.person import PersonModel

# In each of these, Faker makes first names, last names or domains in a way of its own. An old
# Faker does not know all of them.
_LOCALES = {
    "JP": "ja_JP",
    "GB": "en_GB",
    "IS": "is_IS",
    "CL": "es_CL",
    "US": "en_US",
    "GR": "el_GR",
    "TW": "zh_TW",
    "IR": "fa_IR",
    "BD": "bn_BD",
}
LOCALES = {place: each for place, each in _LOCALES.items() if each in AVAILABLE_LOCALES}


def mixed(*places: str) -> PersonModel:
    return model_with({place: new_faker(LOCALES[place]) for place in places or LOCALES})


@pytest.mark.parametrize("own", [(), ("JP",), ("GB",), ("JP", "GB", "CL"), tuple(LOCALES)], ids=str)
@pytest.mark.parametrize("maker", FAKER_MAKERS)
def test_with_and_without_sources_of_their_own(maker: str, own: tuple[str, ...]) -> None:
    model = mixed()
    for number, place in enumerate(own):
        model.country_to_provider_map[place].seed_instance(number)
    made_both_ways(making(maker, model, 120), model)


@pytest.mark.parametrize("seeded", [False, True])
@pytest.mark.parametrize("maker", ["first_names", "last_names", "emails"])
def test_the_other_countries_are_made_at_once(maker: str, seeded: bool) -> None:
    model = mixed("GB", "JP", "CL")
    if seeded:
        model.country_to_provider_map["GB"].seed_instance(1)
    makers: dict[str, Callable[[Any], Any]] = {
        "first_names": lambda places: model.generate_first_names(genders(len(places)), places),
        "last_names": lambda places: model.generate_last_names(names(len(places)), places),
        "emails": lambda places: model.generate_emails(
            names(len(places)), names(len(places)), places
        ),
    }

    def calls(british: int) -> int:
        places = in_turn(["GB"], british).tolist() + ["JP", "CL"] * 20
        seed_sources(1, model)
        return calls_of(lambda: makers[maker](in_turn(places, len(places))), FAKER)

    assert 40 < calls(1_000) < calls(200) + 400


DASHES = (
    "–x",
    "A-–x",
    "Ä-",
    "北-京",
    "Ö--Ü",
    "É-\u0301a",
    "-é",
    "Οδός-ΟΔΟΣ",
    "a\u00a0-é",
    "—",
    "Ü b-ß",
)


@pytest.mark.parametrize("place", ["DE", "GR", "CL", "TW"])
def test_domains_of_names_with_dashes(place: str) -> None:
    model = model_with({place: new_faker({"DE": "de_DE", **LOCALES}[place])})
    people = provider(model, "person", place)
    people.last_names = people.last_romanized_names = DASHES
    made_both_ways(making("emails", model, 300), model)


@pytest.mark.parametrize("place", ["GR", "TW"])
def test_domains_that_are_made_at_once(place: str) -> None:
    emails = making("emails", mixed(place), 2000)
    for _ in range(8):
        emails()  # finishes the names of most companies
    assert calls_of(emails, FAKER) < 2000


class OwnNames(BaseProvider):
    """A provider of a user's, which draws by itself."""

    def last_name(self) -> str:
        return str(self.random_element(["Ada", "Ben"]))


@contextmanager
def own_domains(model: PersonModel) -> Iterator[list[Any]]:
    """Chile's domains come from a function of a user's in a wrapper of Faker's; notes the states."""
    seen: list[Any] = []
    internet = provider(model, "internet", "CL")
    (generator,) = model.country_to_provider_map["CL"].factories
    usual = generator.domain_name

    @lowercase
    def domain_name(self: Any, *_: Any) -> str:
        seen.append(hash(model.country_to_provider_map["GB"].random.getstate()))
        return str(self.random_element(["A.example", "B.example"]))

    generator.domain_name = MethodType(domain_name, internet)
    try:
        yield seen
    finally:
        generator.domain_name = usual


def test_code_that_is_not_fakers_sees_every_source_as_it_is_call_by_call() -> None:
    model = mixed("GB", "CL")
    for place in ("GB", "CL"):
        model.country_to_provider_map[place].seed_instance(1)

    def watched() -> AbstractContextManager[list[Any]]:
        return own_domains(model)

    made = made_both_ways(making("emails", model, 60), model, within=watched)
    assert made.str.endswith(".example").sum() == 30


def test_a_provider_that_is_not_fakers() -> None:
    model = mixed("GB", "CL")
    instance = model.country_to_provider_map["CL"]
    instance.add_provider(OwnNames)
    assert instance.last_name() in ("Ada", "Ben")
    made = made_both_ways(making("last_names", model, 60), model)
    assert set(made[1::2].dropna()) == {"Ada", "Ben"}


@pytest.mark.parametrize("own", [False, True])
@pytest.mark.parametrize(
    "pair", [(5, "a", "b"), (("Ada",), "a", "b"), ("\ud800", "a", "b")], ids=ascii
)
def test_calls_that_give_no_proper_text(
    pair: tuple[Any, ...], own: bool, monkeypatch: pytest.MonkeyPatch
) -> None:
    model = mixed("GB", "JP")
    if own:
        model.country_to_provider_map["JP"].seed_instance(1)
    person = provider(model, "person", "JP")
    usual = tuple(person.last_name_pairs)[:3]
    monkeypatch.setattr(person, "last_name_pairs", (*usual, pair), raising=False)
    present = in_turn(["Ada"], 60)
    both = same_both_ways(
        lambda: model.generate_last_names(present, countries(model, 60)), model
    ).result
    # Arrow cannot hold lone surrogates.
    assert isinstance(both, UnicodeEncodeError) or pair[0] in both.tolist()


@pytest.mark.parametrize("own", [False, True])
def test_calls_that_fail(own: bool, monkeypatch: pytest.MonkeyPatch) -> None:
    model = mixed("GB", "JP")
    if own:
        model.country_to_provider_map["JP"].seed_instance(1)
    person = provider(model, "person", "JP")
    usual = person.first_name_male_pairs
    monkeypatch.setattr(person, "first_name_male_pairs", (*usual[:20], ()), raising=False)
    keys = in_turn(["M"], 200)
    error = refused_both_ways(
        lambda: model.generate_first_names(keys, countries(model, 200)), model
    )
    assert isinstance(error, IndexError)


class CtrlC(tuple[str, ...]):
    """A pair at which somebody presses Ctrl-C."""

    def __getitem__(self, _: Any) -> Any:
        raise KeyboardInterrupt


def test_an_interrupt_of_a_call_leaves_sources_that_go_on(monkeypatch: pytest.MonkeyPatch) -> None:
    model = mixed("GB", "JP")
    person = provider(model, "person", "JP")
    with monkeypatch.context() as patched:
        patched.setattr(person, "first_name_male_pairs", (CtrlC("abc"),), raising=False)
        with pytest.raises(KeyboardInterrupt):
            model.generate_first_names(in_turn(["M"], 60), countries(model, 60))
    made_both_ways(making("first_names", model, 60), model)
