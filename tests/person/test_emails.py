"""E-mail addresses: a username, an at sign and a domain, checked while assertions are on."""

import os
import subprocess
import sys
from pathlib import Path
from types import SimpleNamespace
from typing import Any

import pandas as pd
import pytest
from hypothesis import given
from hypothesis import strategies as st

from support import readings_generators as readings
from support.comparing import assert_same_outcome
from support.providers import (
    DTYPES,
    KINDS,
    LOCALES,
    StandInFaker,
    countries_of,
    model_of_kind,
    model_with,
)
from support.sources import seed_sources, source_states
from vantrel.model.models.person import PersonModel


def assert_reads_alike(
    model: PersonModel, firsts: Any, lasts: Any, where: Any, seed: int = 1
) -> Any:
    return assert_same_outcome(
        lambda: model.generate_emails(firsts, lasts, where),
        lambda: readings.emails(model, firsts, lasts, where),
        seed,
        model,
    )


def names_of(rows: int) -> tuple[pd.Series, pd.Series]:
    firsts = pd.Series([f"Ann{i % 50}" for i in range(rows)], dtype="object")
    return firsts, pd.Series(["O Lee"] * rows, dtype="object")


class FixedUsernames(PersonModel):
    """Makes the usernames that a test wants, and writes down what it was asked."""

    usernames: Any = pd.Series(["ann", "bo"], dtype="string")

    def __init__(self, *args: Any, **kwargs: Any) -> None:
        super().__init__(*args, **kwargs)
        self.log: list[Any] = []

    def generate_usernames(self, *args: Any, **kwargs: Any) -> Any:
        self.log.append(("usernames", args, kwargs))
        return self.usernames

    def check_email(self, *args: Any, **kwargs: Any) -> bool:
        self.log.append(("check", args, kwargs))
        return True


# --- addresses ------------------------------------------------------------------------------


@pytest.mark.parametrize("rows", [0, 1, 2, 300])
@pytest.mark.parametrize("kind", KINDS)
def test_a_column_is_made_as_the_reading_makes_it(kind: str, rows: int) -> None:
    model = model_of_kind(kind)
    emails = assert_reads_alike(model, *names_of(rows), countries_of(model, rows))
    assert len(emails) == rows


@pytest.mark.parametrize("locale", LOCALES)
@pytest.mark.parametrize("kind", ["shared", "separate"])
def test_a_column_of_one_locale_is_made_as_the_reading_makes_it(kind: str, locale: str) -> None:
    model = model_of_kind(kind)
    emails = assert_reads_alike(model, *names_of(40), pd.Series([locale] * 40), seed=2026)
    assert emails.str.fullmatch(r"[^@ ]+@[^@ ]+\.[^@ ]+").all()


@pytest.mark.parametrize("dtype", DTYPES, ids=str)
def test_names_and_countries_may_have_any_dtype(dtype: Any) -> None:
    model = model_of_kind("shared")
    firsts, lasts = names_of(30)
    where = countries_of(model, 30).astype(dtype)
    assert assert_reads_alike(model, firsts.astype(dtype), lasts, where) is not None


def test_300_rows_of_one_name_get_300_addresses() -> None:
    model = model_of_kind("separate")
    firsts, lasts = pd.Series(["Ann"] * 300), pd.Series(["Lee"] * 300)
    emails = assert_reads_alike(model, firsts, lasts, pd.Series(["de_DE"] * 300))
    assert emails.nunique() == 300


def test_an_address_is_the_username_an_at_sign_and_the_domain() -> None:
    model = model_with({"GB": StandInFaker(), "US": StandInFaker("us-")}, FixedUsernames)
    emails = model.generate_emails(None, None, pd.Series(["GB", "US"]))
    assert list(emails) == ["ann@domain1.test", "bo@us-domain1.test"]


def test_domains_are_joined_by_position_and_the_usernames_index_and_name_stay() -> None:
    model = model_with({"GB": StandInFaker()}, FixedUsernames)
    model.usernames = pd.Series(["ann", "bo"], index=["x", "y"], name="user", dtype="string")
    emails = model.generate_emails(None, None, pd.Series(["GB", "GB"], index=["y", "x"]))
    assert list(emails) == ["ann@domain1.test", "bo@domain2.test"]
    assert (list(emails.index), emails.name) == (["x", "y"], "user")


def test_a_missing_username_gives_a_missing_address_that_is_not_checked() -> None:
    model = model_with({"GB": StandInFaker()}, FixedUsernames)
    model.usernames = pd.Series(["ann", pd.NA, "bo"], dtype="string")
    emails = model.generate_emails(None, None, ["GB"] * 3)
    assert list(emails.isna()) == [False, True, False]
    checked = [args[0] for kind, args, _ in model.log if kind == "check"]
    assert checked == ["ann@domain1.test", "bo@domain3.test"]


def test_usernames_that_are_all_missing_give_missing_addresses_and_no_check() -> None:
    model = model_with({"GB": StandInFaker()}, FixedUsernames)
    model.usernames = pd.Series([pd.NA, pd.NA], dtype="string")
    emails = model.generate_emails(None, None, ["GB"] * 2)
    assert emails.isna().all()
    assert [entry[0] for entry in model.log] == ["usernames"]


@pytest.mark.parametrize(("first", "last"), [(None, None), ("Ann", None), (None, "Lee")])
def test_a_missing_name_does_what_the_usernames_do(first: Any, last: Any) -> None:
    model = model_of_kind("separate")
    firsts, lasts = pd.Series(["Bo", first]), pd.Series(["Cho", last])
    assert_reads_alike(model, firsts, lasts, pd.Series(["en_GB"] * 2))


def test_domains_come_first_then_usernames_by_position_then_one_check_an_address() -> None:
    faker = StandInFaker()
    model = model_with({"GB": faker}, FixedUsernames)
    faker.calls = model.log
    model.generate_emails(firstnames="F", lastnames="L", country_condtions=["GB", "GB"])
    characters = ["e", "n", "_", "G", "B"]
    assert model.log == [
        "domain",
        "domain",
        ("usernames", ("F", "L"), {}),
        ("check", ("ann@domain1.test", characters), {}),
        ("check", ("bo@domain2.test", characters), {}),
    ]


def test_the_misspelt_keyword_is_the_only_one() -> None:
    model = model_with({"GB": StandInFaker()})
    with pytest.raises(TypeError):
        model.generate_emails(*names_of(1), country_conditions=["GB"])
    assert len(model.generate_emails(*names_of(1), country_condtions=["GB"])) == 1


def test_the_map_is_read_again_for_every_row() -> None:
    class Growing(FixedUsernames):
        reads = 0

        @property
        def country_to_provider_map(self) -> Any:
            Growing.reads += 1
            return {"GB": SimpleNamespace(domain_name=lambda: f"d{Growing.reads}.test")}

    model = Growing(meta=model_of_kind("shared").meta)
    assert list(model.generate_emails(None, None, ["GB", "GB"])) == ["ann@d1.test", "bo@d2.test"]


def test_a_stand_in_for_the_static_usernames_is_called(monkeypatch: pytest.MonkeyPatch) -> None:
    model = model_with({"GB": StandInFaker()})
    monkeypatch.setattr(
        model, "generate_usernames", lambda firsts, lasts: pd.Series(["made"], dtype="string")
    )
    assert list(model.generate_emails(None, None, ["GB"])) == ["made@domain1.test"]


# --- failures -------------------------------------------------------------------------------


def test_an_unknown_country_raises_the_key_error_of_the_map_before_any_username() -> None:
    model = model_with({"GB": StandInFaker()}, FixedUsernames)
    with pytest.raises(KeyError) as caught:
        model.generate_emails(None, None, ["GB", "Atlantis"])
    assert caught.value.args == ("Atlantis",)
    assert model.log == []


@pytest.mark.parametrize("kind", ["shared", "separate"])
def test_a_failing_row_leaves_the_sources_after_the_domains_before_it(kind: str) -> None:
    model = model_of_kind(kind)
    where = countries_of(model, 6)
    where[4] = "Atlantis"
    assert assert_reads_alike(model, *names_of(6), where) is None
    seed_sources(1, model)
    with pytest.raises(KeyError):
        model.generate_emails(*names_of(6), where)
    states = source_states(model)
    seed_sources(1, model)
    for country in where[:4]:
        model.country_to_provider_map[country].domain_name()
    assert states == source_states(model)


@pytest.mark.parametrize(("names", "countries"), [(3, 2), (2, 3), (0, 1)])
def test_other_numbers_of_domains_and_usernames_raise_what_pandas_raises(
    names: int, countries: int
) -> None:
    model = model_of_kind("separate")
    assert assert_reads_alike(model, *names_of(names), countries_of(model, countries)) is None


def test_no_domain_at_all_does_what_pandas_does() -> None:
    model = model_of_kind("separate")
    assert_reads_alike(model, *names_of(1), countries_of(model, 0))


@pytest.mark.parametrize("domain", [7, None, pd.NA, b"a.test"])
def test_a_domain_is_not_checked_before_pandas_joins_it(domain: Any) -> None:
    model = model_with({"GB": SimpleNamespace(domain_name=lambda: domain)})
    assert_reads_alike(model, *names_of(2), pd.Series(["GB"] * 2))


# --- the assertion --------------------------------------------------------------------------


class Everywhere(PersonModel):
    """A model without a default locale, so that the pattern is applied."""

    @property
    def default_locale(self) -> str:
        return ""


class Nowhere(PersonModel):
    """A model whose check lets nothing pass."""

    @staticmethod
    def check_email(s: str, locales: list[str]) -> bool:
        return False


def faker_of(domain: str) -> dict[str, Any]:
    return {"GB": SimpleNamespace(domain_name=lambda: domain)}


def test_an_address_that_fails_the_check_raises_a_bare_assertion_error() -> None:
    with pytest.raises(AssertionError) as caught:
        model_with(faker_of("a.test"), Nowhere).generate_emails(*names_of(1), ["GB"])
    assert type(caught.value) is AssertionError
    assert caught.value.args == ()


def test_a_check_that_lets_nothing_pass_does_not_matter_without_rows() -> None:
    emails = model_with(faker_of("a.test"), Nowhere).generate_emails(*names_of(0), [])
    assert len(emails) == 0


def test_an_empty_default_locale_applies_the_pattern() -> None:
    assert (
        len(model_with(faker_of("a.test"), Everywhere).generate_emails(*names_of(1), ["GB"])) == 1
    )
    with pytest.raises(AssertionError) as caught:
        model_with(faker_of("nodot"), Everywhere).generate_emails(*names_of(1), ["GB"])
    assert caught.value.args == ()


@pytest.mark.parametrize("domain", ["nodot", "", " ", "@@", "-.-"])
def test_with_the_default_locale_no_address_fails(domain: str) -> None:
    emails = model_with(faker_of(domain)).generate_emails(*names_of(1), ["GB"])
    assert emails[0].endswith("@" + domain)


@pytest.mark.parametrize(
    ("locale", "valid"), [(["en"], False), (("xen",), False), (["fr"], True), ("english", True)]
)
def test_the_characters_of_the_default_locale_decide(locale: Any, valid: bool) -> None:
    class Located(PersonModel):
        @property
        def default_locale(self) -> Any:
            return locale

    model = model_with(faker_of("nodot"), Located)
    emails = assert_reads_alike(model, *names_of(2), pd.Series(["GB"] * 2))
    assert (emails is not None) == valid


def test_every_address_is_checked_even_after_one_failed() -> None:
    class Counting(FixedUsernames):
        def check_email(self, *args: Any, **kwargs: Any) -> bool:
            super().check_email(*args, **kwargs)
            return False

    model = model_with({"GB": StandInFaker()}, Counting)
    with pytest.raises(AssertionError):
        model.generate_emails(None, None, ["GB", "GB"])
    assert [entry[0] for entry in model.log] == ["usernames", "check", "check"]


def test_a_locale_that_is_no_sequence_raises_what_list_raises() -> None:
    class Located(PersonModel):
        @property
        def default_locale(self) -> Any:
            return 7

    model = model_with(faker_of("a.test"), Located)
    with pytest.raises(TypeError, match=r"^'int' object is not iterable$"):
        model.generate_emails(*names_of(1), ["GB"])


WITHOUT_A_VALID_ADDRESS = """
from support.providers import model_with
from types import SimpleNamespace
from vantrel.model.models.person import PersonModel
import pandas as pd

class Strict(PersonModel):
    default_locale = property(lambda self: "")

    @staticmethod
    def check_email(s, locales):
        print("checked")
        return False

model = model_with({"GB": SimpleNamespace(domain_name=lambda: "nodot")}, Strict)
names = pd.Series(["Ann"])
try:
    print("made", len(model.generate_emails(names, names, ["GB"])))
except AssertionError as error:
    print("refused", error.args)
"""


@pytest.mark.parametrize(
    ("flags", "printed"),
    [([], ["checked", "refused ()"]), (["-O"], ["made 1"])],
)
def test_addresses_are_checked_only_while_assertions_are_on(
    flags: list[str], printed: list[str]
) -> None:
    environment = {k: v for k, v in os.environ.items() if k != "PYTHONOPTIMIZE"}
    done = subprocess.run(
        [sys.executable, *flags, "-c", WITHOUT_A_VALID_ADDRESS],
        cwd=Path(__file__).parents[1],
        env=environment,
        capture_output=True,
        text=True,
        check=True,
    )
    assert done.stdout.splitlines() == printed


# --- any countries ---------------------------------------------------------------------


@given(rows=st.lists(st.sampled_from([*LOCALES, "Atlantis"]), max_size=8), seed=st.integers(0, 99))
def test_any_countries_read_alike(rows: list[str], seed: int) -> None:
    where = pd.Series(rows, dtype="object")
    assert_reads_alike(model_of_kind("shared"), *names_of(len(rows)), where, seed)
