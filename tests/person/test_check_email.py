"""The check of an e-mail address: English locales match a pattern, others accept all."""

import re
from types import SimpleNamespace
from typing import Any

import pytest
from hypothesis import given
from hypothesis import strategies as st

from support import readings_generators as readings
from vantrel.model.models import person
from vantrel.model.models.person import PersonModel

check = PersonModel.check_email

TABLE = [
    ("ann.lee@mail.test", True),
    ("a@b", False),
    ("x@[192.168.0.1]", True),
    ("bad@", False),
    ("@mail.test", False),
    ("Ann.Lee@mail.test trailing", True),
    ("a@b.c-", True),
    (" a@b.c", False),
    ("", False),
    ("not an email", False),
    ("a..b@c.de", False),
    (".a@c.de", False),
    ("a.@c.de", False),
    ('"a b"@c.de', False),
    ('"a.@b"@c.de', True),
    (r'"a\ b"@c.de', True),
    ("!#$%&'*+/=?^`{|}~-@c.de", True),
    ("ändré@c.de", True),
    ("a@ü.de", False),
    ("a@-b.de", False),
    ("a@b-.de", False),
    ("a@b-c.de", True),
    ("x@[256.0.0.1]", False),
    ("x@[1.2.3]", False),
    ("x@[IPv6:2001:db8::1]", False),
    ("x@[1.2.3.IPv6:2001:db8::1]", True),
    ("x@[1.2.3.tag:]", False),
    ("x@[192.168.0.1", False),
    ("a@b.c\nd", True),
    ("a b@c.de", False),
]


@pytest.mark.parametrize(("s", "valid"), TABLE)
def test_an_english_address_is_matched(s: str, valid: bool) -> None:
    assert check(s, locales=["en"]) is valid
    assert readings.check_email(s, ["en"]) is valid


@pytest.mark.parametrize(("s", "valid"), TABLE)
def test_without_locales_the_default_is_english(s: str, valid: bool) -> None:
    assert check(s) is valid


@pytest.mark.parametrize("s", ["not an email", "", "a@b", "ann.lee@mail.test"])
@pytest.mark.parametrize("locales", [["en_GB", "fr_FR"], ["fr_FR"], ["EN"], ["e", "n"], [""]])
def test_a_locale_without_en_lets_everything_pass(s: str, locales: list[str]) -> None:
    assert check(s, locales) is True


@pytest.mark.parametrize("locales", [["en_GB", "en_US"], ["en"], [], ["hyphen"], [["en"]]])
def test_locales_that_all_have_en_apply_the_pattern(locales: list[Any]) -> None:
    assert check("a@b", locales) is False
    assert check("a@b.c", locales) is True


def test_locales_are_tested_in_order_and_no_further_than_needed() -> None:
    assert check("a@b", ["fr", 7]) is True
    with pytest.raises(TypeError, match=r"^argument of type 'int' is not iterable$"):
        check("a@b", ["en", 7])


@pytest.mark.parametrize(
    ("arguments", "name", "expected", "given"),
    [
        ((None,), "s", "str", "NoneType"),
        ((7, ["en"]), "s", "str", "int"),
        (("a@b", None), "locales", "list", "NoneType"),
        (("a@b", ("en",)), "locales", "list", "tuple"),
        (("a@b", "en"), "locales", "list", "str"),
        ((None, None), "s", "str", "NoneType"),
    ],
)
def test_an_argument_of_another_type_is_refused(
    arguments: tuple[Any, ...], name: str, expected: str, given: str
) -> None:
    with pytest.raises(TypeError) as caught:
        check(*arguments)
    assert str(caught.value) == (
        f"Argument '{name}' has incorrect type (expected {expected}, got {given})"
    )


@pytest.mark.parametrize(
    ("arguments", "message"),
    [
        ((), "check_email() takes at least 1 positional argument (0 given)"),
        (("a", [], 7), "check_email() takes at most 2 positional arguments (3 given)"),
    ],
)
def test_another_number_of_arguments_is_refused(arguments: tuple[Any, ...], message: str) -> None:
    with pytest.raises(TypeError) as caught:
        check(*arguments)
    assert str(caught.value) == message


def test_the_shared_default_is_one_list_that_no_call_changes() -> None:
    (default,) = check.__defaults__
    for s, _ in TABLE:
        check(s)
    assert check.__defaults__ == (["en"],)
    assert check.__defaults__[0] is default


def test_a_given_list_is_not_changed() -> None:
    locales = ["en_GB", "fr_FR"]
    check("a@b", locales)
    assert locales == ["en_GB", "fr_FR"]


@pytest.fixture
def recorded_match(monkeypatch: pytest.MonkeyPatch) -> Any:
    """A stand-in for the module `re` that gives what a test wants."""
    record = SimpleNamespace(calls=[], result=None)

    def match(*args: Any, **kwargs: Any) -> Any:
        record.calls.append((args, kwargs))
        return record.result

    monkeypatch.setattr(person, "re", SimpleNamespace(match=match))
    return record


def test_the_pattern_of_347_characters_is_matched_without_flags(recorded_match: Any) -> None:
    check("a@b.c")
    (((pattern, s), kwargs),) = recorded_match.calls
    assert (s, kwargs) == ("a@b.c", {})
    assert type(pattern) is str
    assert len(pattern) == 347
    assert pattern == readings.EMAIL_PATTERN


@pytest.mark.parametrize(("result", "valid"), [(None, False), (0, True), ("", True), ("m", True)])
def test_only_none_means_that_nothing_matched(
    recorded_match: Any, result: Any, valid: bool
) -> None:
    recorded_match.result = result
    assert check("a@b.c") is valid


def test_other_locales_match_nothing_at_all(recorded_match: Any) -> None:
    assert check("a@b.c", ["fr_FR"]) is True
    assert recorded_match.calls == []


def test_an_error_of_the_match_propagates(monkeypatch: pytest.MonkeyPatch) -> None:
    monkeypatch.setattr(person, "re", SimpleNamespace())
    with pytest.raises(AttributeError, match=r"has no attribute 'match'$"):
        check("a@b.c")


def test_the_pattern_that_the_oracle_uses_has_347_characters_and_compiles() -> None:
    assert len(readings.EMAIL_PATTERN) == 347
    re.compile(readings.EMAIL_PATTERN)


ALPHABET = st.text(st.sampled_from('aZ09.-_@"[]:\\ \n\0ü%'), max_size=20)


@given(
    s=ALPHABET | st.text(max_size=12) | st.emails(),
    locales=st.lists(st.sampled_from(["en", "en_GB", "fr_FR", "", "hen"]), max_size=3),
)
def test_any_text_is_judged_as_the_reading_judges_it(s: str, locales: list[str]) -> None:
    assert check(s, locales) is readings.check_email(s, locales)
