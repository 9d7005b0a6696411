"""What users make of Faker's providers: added, replaced, subclassed, dynamic, failing, over sources of their own."""

import random
from collections import OrderedDict
from collections.abc import Callable
from typing import Any

from faker.providers import BaseProvider, DynamicProvider
from faker.providers.internet.zh_CN import Provider as InternetOfChina

from support.whole_columns import provider
from vantrel.model.models.person import PersonModel

Seen = list[Any]
Change = Callable[[PersonModel, str, Seen], None]
METHODS = ("first_name", "first_name_male", "last_name", "company", "domain_name", "tld")


def instance(model: PersonModel, country: str) -> Any:
    return model.country_to_provider_map[country]


def generator(model: PersonModel, country: str) -> Any:
    (only,) = instance(model, country).factories
    return only


class AddedNames(BaseProvider):
    """Draws from the instance's own source, and from the one that the process shares."""

    def first_name(self) -> str:
        return str(self.random_element(["Ada", "Ben"]))

    def last_name(self) -> str:
        return random.choice(["Lee", "Ng", "Ochs"])


class AddedCompanies(BaseProvider):
    def company(self) -> str:
        return f"{self.random_element(['Acme', 'Bolt'])} {self.generator.last_name()}"


class ChineseDomains(InternetOfChina):
    domain_formats = ("{{last_romanized_name}}#", "?x", "##", "{{first_romanized_name}}") * 2  # type: ignore[assignment]  # more of them


def adding(added: type[BaseProvider]) -> Change:
    return lambda model, country, _: instance(model, country).add_provider(added)


def dynamic(name: str) -> Change:
    def change(model: PersonModel, country: str, _: Seen) -> None:
        made = DynamicProvider(provider_name=name, elements=["Ash", "Birch", "Cedar & Sons"])
        instance(model, country).add_provider(made)

    return change


def replacing(method: str, fails_at: int = 0, on: str = "generator") -> Change:
    """The method, on the generator or its provider, notes each call, and one may fail."""

    def change(model: PersonModel, country: str, seen: Seen) -> None:
        holder = generator(model, country)
        if on == "provider":
            kind = "internet" if method in ("domain_name", "tld") else "person"
            holder = provider(model, "company" if method == "company" else kind, country)
        usual = getattr(holder, method)
        calls = 0

        def noted() -> str:
            nonlocal calls
            calls += 1
            seen.append((country, method))
            if calls == fails_at:
                raise LookupError(f"call {calls} of {method} in {country}")
            return str(usual())

        setattr(holder, method, noted)

    return change


def formats(*texts: str) -> Change:
    def change(model: PersonModel, country: str, _: Seen) -> None:
        provider(model, "company", country).formats = texts

    return change


class OwnRandom(random.Random):
    """A source of another class."""

    def random(self) -> float:
        return super().random() / 2


def own_source(kind: type[random.Random]) -> Change:
    def change(model: PersonModel, country: str, _: Seen) -> None:
        generator(model, country).random = kind(5)

    return change


def weighted(attribute: str) -> Change:
    """Names by weight, some of which never come."""

    def change(model: PersonModel, country: str, _: Seen) -> None:
        table = OrderedDict([("Ann", 1.0), ("Bo", 0.0), ("Cy", 2.0)])
        setattr(provider(model, "person", country), attribute, table)

    return change


def unique(model: PersonModel, country: str, _: Seen) -> None:
    model.country_to_provider_map[country] = instance(model, country).unique


def optional(model: PersonModel, country: str, _: Seen) -> None:
    model.country_to_provider_map[country] = instance(model, country).optional


def shared(model: PersonModel, country: str, _: Seen) -> None:
    model.country_to_provider_map[country] = instance(model, "GB")


def seeded(model: PersonModel, country: str, _: Seen) -> None:
    instance(model, country).seed_instance(3)


CHANGES: dict[str, Change] = {
    "adds names": adding(AddedNames),
    "adds companies": adding(AddedCompanies),
    "adds Chinese domains": adding(ChineseDomains),
    "draws companies from all": dynamic("company"),
    "draws last names from all": dynamic("last_name"),
    "has formats with signs": formats("# {{last_name}}", "?x %", "{{last_name}}-# Ltd", "^!@"),
    "has formats of digits": formats("#", "Unit##"),
    "has formats of letters": formats("A?", "{{last_name}}"),
    "has formats with unknown tokens": formats("{{city}} {{last_name}}", "{{ last_name }}"),
    "has a source of another class": own_source(OwnRandom),
    "has another source": own_source(random.Random),
    "weighs first names": weighted("first_names"),
    "weighs last names": weighted("last_names"),
    "is unique": unique,
    "is optional": optional,
    "is another's": shared,
    "is seeded": seeded,
    **{f"replaces {method}": replacing(method) for method in METHODS},
    **{f"fails in {method}": replacing(method, fails_at=4) for method in METHODS},
    **{
        f"replaces the provider's {method}": replacing(method, on="provider")
        for method in ("tld", "company", "last_name")
    },
}
