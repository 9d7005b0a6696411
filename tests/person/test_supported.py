"""The countries and locales that the module says it supports, and how its functions look their names up."""

import builtins
from collections import OrderedDict, defaultdict
from collections.abc import Callable
from typing import Any, Never

import pandas as pd
import pytest

from support.people import person_model
from vantrel.metadata import Nominal
from vantrel.metadata.value import String
from vantrel.model.exceptions import ModelNotFittedError
from vantrel.model.models import person
from vantrel.model.models.histogram import Histogram
from vantrel.model.models.person import CountryModel, GenderModel, PersonModel
from vantrel.util.locale.locale import (
    Provider,
    get_supported_country_codes,
    get_supported_country_names,
    valid_locales,
)

UTILITIES = {
    "all_supported_country_names": ("get_supported_country_names", dict, "dict"),
    "all_supported_country_codes": ("get_supported_country_codes", dict, "dict"),
    "all_supported_locales": ("valid_locales", list, "list"),
}
every_function = pytest.mark.parametrize("name", UTILITIES)


class Refusal(Exception):
    """Raised by stand-ins, never by anything else."""


def refuse(*arguments: Any, **keywords: Any) -> Never:
    raise Refusal


def answer_with(monkeypatch: pytest.MonkeyPatch, name: str, answer: Any) -> None:
    """Replaces the host utility that the function asks by one that gives this answer."""
    monkeypatch.setattr(person, UTILITIES[name][0], lambda provider: answer)


# --- what the host says ---


def test_country_names_are_the_host_s() -> None:
    names = person.all_supported_country_names()
    assert names == get_supported_country_names(Provider.PERSON)
    assert "en_GB" in names["United Kingdom"]


def test_country_codes_are_the_host_s() -> None:
    codes = person.all_supported_country_codes()
    assert codes == get_supported_country_codes(Provider.PERSON)
    assert "de_DE" in codes["DE"]


def test_locales_are_the_host_s() -> None:
    locales = person.all_supported_locales()
    assert locales == valid_locales(Provider.PERSON)
    assert {"en_GB", "de_DE"} <= set(locales)


# --- how the host is asked ---


@every_function
def test_host_is_asked_once_for_the_person_provider(
    monkeypatch: pytest.MonkeyPatch, name: str
) -> None:
    asked = []

    def utility(*arguments: Any, **keywords: Any) -> None:
        asked.append((arguments, keywords))

    monkeypatch.setattr(person, UTILITIES[name][0], utility)
    getattr(person, name)()
    assert asked == [((Provider.PERSON,), {})]


@every_function
def test_provider_is_read_when_the_function_runs(
    monkeypatch: pytest.MonkeyPatch, name: str
) -> None:
    class Other:
        PERSON = object()

    asked: list[object] = []
    monkeypatch.setattr(person, "Provider", Other)
    monkeypatch.setattr(person, UTILITIES[name][0], asked.append)
    getattr(person, name)()
    assert asked == [Other.PERSON]


@every_function
def test_provider_without_persons_fails(monkeypatch: pytest.MonkeyPatch, name: str) -> None:
    monkeypatch.setattr(person, "Provider", object)
    with pytest.raises(AttributeError, match=r"^type object 'object' has no attribute 'PERSON'$"):
        getattr(person, name)()


@every_function
def test_failure_of_the_host_passes_unchanged(monkeypatch: pytest.MonkeyPatch, name: str) -> None:
    error = Refusal("as it is")

    def utility(provider: Any) -> Never:
        raise error

    monkeypatch.setattr(person, UTILITIES[name][0], utility)
    with pytest.raises(Refusal) as raised:
        getattr(person, name)()
    assert raised.value is error


@every_function
def test_utility_is_looked_up_before_the_provider(
    monkeypatch: pytest.MonkeyPatch, name: str
) -> None:
    monkeypatch.delattr(person, UTILITIES[name][0])
    monkeypatch.delattr(person, "Provider")
    with pytest.raises(NameError, match=f"^name '{UTILITIES[name][0]}' is not defined$"):
        getattr(person, name)()


# --- what the host answers ---


@every_function
def test_answer_is_the_object_itself(monkeypatch: pytest.MonkeyPatch, name: str) -> None:
    answer = UTILITIES[name][1]()
    answer_with(monkeypatch, name, answer)
    assert getattr(person, name)() is answer


@every_function
def test_answer_may_be_none(monkeypatch: pytest.MonkeyPatch, name: str) -> None:
    answer_with(monkeypatch, name, None)
    assert getattr(person, name)() is None


@pytest.mark.parametrize(
    ("name", "answer", "message"),
    [
        ("all_supported_country_names", OrderedDict(), "Expected dict, got OrderedDict"),
        ("all_supported_country_names", defaultdict(list), "Expected dict, got defaultdict"),
        ("all_supported_country_names", [], "Expected dict, got list"),
        ("all_supported_country_codes", OrderedDict(), "Expected dict, got OrderedDict"),
        ("all_supported_country_codes", "", "Expected dict, got str"),
        ("all_supported_country_codes", False, "Expected dict, got bool"),
        ("all_supported_locales", (), "Expected list, got tuple"),
        ("all_supported_locales", {}, "Expected list, got dict"),
        ("all_supported_locales", type("Row", (list,), {})(), "Expected list, got Row"),
        (
            "all_supported_locales",
            type("R" * 300, (list,), {})(),
            "Expected list, got " + "R" * 200,
        ),
    ],
)
def test_answer_of_another_type_is_refused(
    monkeypatch: pytest.MonkeyPatch, name: str, answer: Any, message: str
) -> None:
    answer_with(monkeypatch, name, answer)
    with pytest.raises(TypeError, match=f"^{message}$"):
        getattr(person, name)()


# --- names are looked up at the time of the call ---


@every_function
@pytest.mark.parametrize("missing", ["utility", "Provider"])
def test_missing_name(monkeypatch: pytest.MonkeyPatch, name: str, missing: str) -> None:
    gone = UTILITIES[name][0] if missing == "utility" else missing
    monkeypatch.delattr(person, gone)
    with pytest.raises(NameError, match=f"^name '{gone}' is not defined$"):
        getattr(person, name)()


@every_function
def test_name_is_taken_from_the_builtins_where_the_module_has_none(
    monkeypatch: pytest.MonkeyPatch, name: str
) -> None:
    utility, type_, _ = UTILITIES[name]
    answer = type_()
    monkeypatch.delattr(person, utility)
    monkeypatch.setattr(builtins, utility, lambda provider: answer, raising=False)
    assert getattr(person, name)() is answer


@every_function
def test_module_name_hides_the_builtin(monkeypatch: pytest.MonkeyPatch, name: str) -> None:
    utility, type_, _ = UTILITIES[name]
    monkeypatch.setattr(builtins, utility, refuse, raising=False)
    answer = type_()
    answer_with(monkeypatch, name, answer)
    assert getattr(person, name)() is answer


# What runs into each name of the module, with arguments that lead no further.
USES: dict[str, Callable[[], object]] = {
    "random": lambda: PersonModel.generate_password(0, 0),
    "string": lambda: PersonModel.generate_password(0, 0),
    "re": lambda: PersonModel.check_email("a@b.c", ["en", "en_GB"]),
    "np": lambda: PersonModel.generate_from_collections("F", {"F": ["Mrs"]}),
    "pd": lambda: PersonModel.generate_from_collections("F", {}),
    "asdict": lambda: person_model().to_dict(),
    "cast": lambda: PersonModel.from_dict(person_model().to_dict()),
    "Dict": lambda: PersonModel.from_dict(person_model().to_dict()),
    "Any": lambda: PersonModel.from_dict(person_model().to_dict()),
    "Person": lambda: PersonModel.from_dict(person_model().to_dict()),
    "PersonModelConfig": lambda: PersonModel.from_dict(person_model().to_dict()),
    "String": lambda: GenderModel.from_dict({"meta": String("sex").to_dict()}),
    "GenderModel": lambda: person_model(),
    "CountryModel": lambda: person_model(),
    "Histogram": lambda: person_model(labels=person.PersonLabels()),
    "ModelNotFittedError": lambda: person_model().country_to_provider_map,
    "MetaNotExtractedError": lambda: GenderModel(String("sex")).fit(pd.DataFrame({"sex": ["Mrs"]})),
    "Provider": lambda: CountryModel(Nominal("c")).fit(pd.DataFrame({"c": ["GB"]})),
    "get_country_to_provder_map": lambda: CountryModel(Nominal("c")).fit(
        pd.DataFrame({"c": ["GB"]})
    ),
    "collections_from_mapping": lambda: GenderModel(String("sex", categories=["F"])).collections,
}


@pytest.mark.parametrize("name", USES)
def test_deleted_name_is_missed_by_what_uses_it(monkeypatch: pytest.MonkeyPatch, name: str) -> None:
    use = USES[name]
    monkeypatch.delattr(person, name)
    with pytest.raises(NameError, match=f"^name '{name}' is not defined$"):
        use()


@pytest.mark.parametrize("name", [name for name in USES if name != "ModelNotFittedError"])
def test_name_put_back_serves_again(monkeypatch: pytest.MonkeyPatch, name: str) -> None:
    with monkeypatch.context() as patch:
        patch.delattr(person, name)
    USES[name]()


def test_replaced_exception_is_the_one_raised(monkeypatch: pytest.MonkeyPatch) -> None:
    monkeypatch.setattr(person, "ModelNotFittedError", Refusal)
    with pytest.raises(Refusal, match=r"^Country model not fitted\.$"):
        person_model().country_to_provider_map  # noqa: B018 - to read it is the test


def test_replaced_standard_module_is_the_one_used(monkeypatch: pytest.MonkeyPatch) -> None:
    class Dull:
        @staticmethod
        def randint(low: int, high: int) -> int:
            return high

        @staticmethod
        def choice(characters: str) -> str:
            return characters[-1]

    monkeypatch.setattr(person, "random", Dull)
    assert PersonModel.generate_password(2, 5) == "99999"


def test_replaced_class_is_the_one_instantiated(monkeypatch: pytest.MonkeyPatch) -> None:
    class Special(GenderModel):
        pass

    monkeypatch.setattr(person, "GenderModel", Special)
    assert type(person_model().hidden_model_gender) is Special


def test_replaced_module_function_leaves_others_alone(monkeypatch: pytest.MonkeyPatch) -> None:
    monkeypatch.setattr(person, "all_supported_locales", refuse)
    assert person.all_supported_country_codes()


# --- builtins that were looked up at import ---

CACHED = [
    "property",
    "staticmethod",
    "super",
    "object",
    "ValueError",
    "range",
    "zip",
    "all",
    "AssertionError",
    "sum",
]


class FixedProvider:
    def first_name(self) -> str:
        return "Ann"

    first_name_female = first_name_male = first_name

    def last_name(self) -> str:
        return "Lee"

    def domain_name(self) -> str:
        return "mail.test"


@pytest.mark.parametrize("name", CACHED)
def test_module_name_does_not_hide_a_cached_builtin(
    monkeypatch: pytest.MonkeyPatch, name: str
) -> None:
    """Everything that uses one of them runs as before."""
    monkeypatch.setattr(person, name, refuse, raising=False)
    model = PersonModel.from_dict(person_model().to_dict())
    model.country_to_provider_map = {"GB": FixedProvider()}
    countries = pd.Series(["GB", "GB"])
    first = model.generate_first_names(pd.Series(["F", "M"]), countries)
    last = model.generate_last_names(first, countries)
    assert len(model.generate_emails(first, last, countries)) == 2
    assert len(model.generate_password(3, 3)) == 3
    with pytest.raises(ValueError, match=r"^One of 'n' or 'conditions' must be given\.$"):
        model.sample()


def test_replaced_zip_is_not_used(monkeypatch: pytest.MonkeyPatch) -> None:
    class Frames:
        Series = list
        isna = staticmethod(lambda value: False)

    model = person_model()
    model.country_to_provider_map = {"GB": FixedProvider()}
    monkeypatch.setattr(person, "pd", Frames)
    with monkeypatch.context() as patch:
        patch.setattr(builtins, "zip", refuse)
        names = model.generate_first_names(["F"], ["GB"])
    assert names == ["Ann"]


def test_replaced_range_is_not_used(monkeypatch: pytest.MonkeyPatch) -> None:
    with monkeypatch.context() as patch:
        patch.setattr(builtins, "range", refuse)
        password = PersonModel.generate_password(3, 3)
    assert len(password) == 3


def test_replaced_value_error_is_not_raised(monkeypatch: pytest.MonkeyPatch) -> None:
    original = ValueError
    model = person_model()
    caught = None
    with monkeypatch.context() as patch:
        patch.setattr(builtins, "ValueError", Refusal)
        try:
            model.sample()
        except Exception as error:  # noqa: BLE001 - whatever it is, its class is compared below
            caught = error
    assert type(caught) is original


def test_replaced_super_is_not_used(monkeypatch: pytest.MonkeyPatch) -> None:
    class Quiet(Histogram[str]):
        def __init__(self, meta: Any) -> None:
            self.given = meta

    class Special(CountryModel, Quiet):
        pass

    with monkeypatch.context() as patch:
        patch.setattr(builtins, "super", refuse)
        model = Special("meta")
    assert model.given == "meta"


@pytest.mark.parametrize("name", ["all", "AssertionError"])
def test_replaced_builtin_of_the_address_check_is_not_used(
    monkeypatch: pytest.MonkeyPatch, name: str
) -> None:
    """One address is bad and the check is made to find it: the empty locale asks for the pattern."""
    original = AssertionError

    class Special(PersonModel):
        default_locale = ""

        @staticmethod
        def generate_usernames(firstnames: Any, lastnames: Any) -> Any:
            return Usernames()

    class Usernames:
        str = property(lambda self: self)

        def cat(self, others: Any, sep: Any) -> Any:
            return self

        def notna(self) -> Any:
            return self

        def __getitem__(self, mask: Any) -> Any:
            return self

        def apply(self, check: Callable[..., Any], args: Any) -> Any:
            return [check("no address", *args)]

    model = Special(person_model().meta)
    model.country_to_provider_map = {"GB": FixedProvider()}
    caught = None
    with monkeypatch.context() as patch:
        patch.setattr(builtins, name, Refusal if name == "AssertionError" else refuse)
        try:
            model.generate_emails(None, None, ["GB"])
        except Exception as error:  # noqa: BLE001 - whatever it is, its class is compared below
            caught = error
    assert type(caught) is original
    assert caught.args == ()


def test_bare_exceptions_stay_bare() -> None:
    with pytest.raises(ModelNotFittedError) as raised:
        CountryModel(Nominal("c")).categories  # noqa: B018 - to read it is the test
    assert raised.value.args == ()
