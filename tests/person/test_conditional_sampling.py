"""All columns for given genders and countries: which, in which order, made by what."""

from functools import cache
from typing import Any

import numpy as np
import pandas as pd
import pytest
from faker import Faker

from support import readings_sampling as readings
from support.comparing import assert_identical, assert_same_outcome
from support.people import ALL_LABELS, people, person_model
from support.recording import Calls, raising
from support.sources import seed_sources, source_states
from vantrel.config import PersonLabels, PersonModelConfig
from vantrel.model.models import person
from vantrel.model.models.person import GenderModel, PersonModel

# The fields in the order in which their columns are made.
FIELDS = ["gender", "title", "country", "firstname", "lastname", "fullname", "email", "username"]
FIELDS += ["password", "mobile_number", "home_number", "work_number"]
GENERATORS = ["generate_values_from_collections", "generate_first_names", "generate_last_names"]
GENERATORS += ["generate_emails", "generate_usernames", "generate_passwords"]
GENERATORS += ["generate_phone_numbers"]
COUNTRIES = ["GB", "US", "DE"]
KEYS = ["F", "M", "NB", "A", None]
CONFIG = PersonModelConfig(
    title_female_regex="^(mrs|dr)$",
    title_male_regex="^(mr|dr)$",
    title_non_binary_regex="^mx$",
    mobile_number_format="+44 7xxx xxx",
    home_number_format="01-xx",
    work_number_format="none",
)


class Number(int):
    """A subclass of int."""


@cache
def providers() -> dict[str, Faker]:
    return {"GB": Faker("en_GB"), "US": Faker("en_US"), "DE": Faker("de_DE")}


def only(*names: str) -> PersonLabels:
    return PersonLabels(**{name: getattr(ALL_LABELS, name) for name in names})


def without(left_out: str) -> PersonLabels:
    return only(*[name for name in FIELDS if name != left_out])


LABEL_SETS = {
    "all": ALL_LABELS,
    "none": PersonLabels(),
    **{f"only {name}": only(name) for name in FIELDS},
    **{f"without {name}": without(name) for name in FIELDS},
}


def model_of(
    labels: PersonLabels = ALL_LABELS,
    config: PersonModelConfig = CONFIG,
    cls: type[PersonModel] = PersonModel,
) -> PersonModel:
    """A model that knows its categories and has a provider for each country."""
    model = cls(person_model(labels).meta, config)
    model.meta.extract(people())
    model.country_to_provider_map = providers()
    return model


def genders(rows: int, keys: list[Any] | None = None) -> pd.Series:
    keys = KEYS if keys is None else keys
    return pd.Series([keys[i % len(keys)] for i in range(rows)], dtype=object)


def countries(rows: int) -> pd.Series:
    return pd.Series([COUNTRIES[i % 3] for i in range(rows)], dtype=object)


def sampled(model: PersonModel, rows: int = 5, **given: Any) -> pd.DataFrame:
    given = {"gender_conditions": genders(rows), "country_conditions": countries(rows)} | given
    return model._sample_conditional(num_rows=rows, **given)


def columns_of(labels: PersonLabels) -> list[str]:
    return [getattr(labels, name) for name in FIELDS if getattr(labels, name) is not None]


def noting_model(calls: Calls, labels: PersonLabels = ALL_LABELS) -> PersonModel:
    """A model that notes the calls of its generators, which work as ever."""
    model = model_of(labels)
    for name in GENERATORS:
        setattr(model, name, calls.recorder(name, getattr(model, name)))
    return model


# Against the reading


@pytest.mark.parametrize("labels", LABEL_SETS.values(), ids=LABEL_SETS)
@pytest.mark.parametrize("produce_nans", [True, False])
@pytest.mark.parametrize("seed", [1, 2])
def test_rows_equal_the_reading(labels: PersonLabels, produce_nans: bool, seed: int) -> None:
    model = model_of(labels)
    given = (12, genders(12), countries(12), produce_nans)
    made = assert_same_outcome(
        lambda: model._sample_conditional(*given),
        lambda: readings.sample_conditional(model, *given),
        seed,
        model,
    )
    assert made is not None


@pytest.mark.parametrize("rows", [0, 1, 2, 3_000])
@pytest.mark.parametrize("produce_nans", [True, False])
def test_any_number_of_rows_equals_the_reading(rows: int, produce_nans: bool) -> None:
    model = model_of()
    given = (rows, genders(rows), countries(rows), produce_nans)
    made = assert_same_outcome(
        lambda: model._sample_conditional(*given),
        lambda: readings.sample_conditional(model, *given),
        rows,
        model,
    )
    assert len(made) == rows


@pytest.mark.parametrize("missing", [None, np.nan, pd.NA])
@pytest.mark.parametrize("produce_nans", [True, False])
@pytest.mark.parametrize("keys", [[], ["F"], ["M", "NB"]])
def test_missing_genders_of_every_kind_equal_the_reading(
    missing: Any, produce_nans: bool, keys: list[str]
) -> None:
    model = model_of()
    given = (6, genders(6, [missing, *keys]), countries(6), produce_nans)
    made = assert_same_outcome(
        lambda: model._sample_conditional(*given),
        lambda: readings.sample_conditional(model, *given),
        3,
        model,
    )
    assert made is not None


@pytest.mark.parametrize("dtype", ["string", "category", "str"])
@pytest.mark.parametrize("produce_nans", [True, False])
def test_conditions_of_every_dtype_equal_the_reading(dtype: str, produce_nans: bool) -> None:
    # Rows are compared, or the error where this pandas refuses such a column.
    model = model_of()
    given = (6, genders(6).astype(dtype), countries(6).astype(dtype), produce_nans)
    assert_same_outcome(
        lambda: model._sample_conditional(*given),
        lambda: readings.sample_conditional(model, *given),
        4,
        model,
    )


@pytest.mark.parametrize(
    "index", [[5, 6, 7, 8, 9], [4, 3, 2, 1, 0], [0, 0, 1, 1, 2], list("abcde")]
)
@pytest.mark.parametrize("both", [True, False])
@pytest.mark.parametrize("keys", [KEYS, ["F", "M"]])
def test_conditions_with_another_index_do_as_the_reading_does(
    index: list[Any], both: bool, keys: list[Any]
) -> None:
    model = model_of()
    placed = countries(5).set_axis(index) if both else countries(5)
    given = (5, genders(5, keys).set_axis(index), placed)
    assert_same_outcome(
        lambda: model._sample_conditional(*given),
        lambda: readings.sample_conditional(model, *given),
        5,
        model,
    )


@pytest.mark.parametrize("rows", [3, 8])
def test_conditions_of_another_length_do_as_the_reading_does(rows: int) -> None:
    model = model_of()
    given = (5, genders(rows), countries(rows))
    assert_same_outcome(
        lambda: model._sample_conditional(*given),
        lambda: readings.sample_conditional(model, *given),
        6,
        model,
    )


def test_conditions_with_a_reversed_index_are_aligned_by_label() -> None:
    placed = countries(3).set_axis([2, 1, 0])
    made = sampled(model_of(only("country")), 3, country_conditions=placed, produce_nans=False)
    assert made["country"].tolist() == ["DE", "US", "GB"]


def test_the_same_seed_gives_the_same_rows() -> None:
    model = model_of()
    seed_sources(9, model)
    first = sampled(model, 30)
    seed_sources(9, model)
    assert_identical(sampled(model, 30), first)


def test_another_seed_gives_other_rows() -> None:
    model = model_of()
    seed_sources(9, model)
    first = sampled(model, 30)
    seed_sources(10, model)
    assert not sampled(model, 30).equals(first)


def test_the_models_own_generators_are_not_drawn_from() -> None:
    model = model_of()
    seed_sources(1, model)
    before = source_states(model)
    sampled(model, 30)
    after = source_states(model)
    drawn_from = [name for name in before if before[name] != after[name]]
    assert drawn_from == ["random", "numpy", "faker", "providers"]


# Which columns


@pytest.mark.parametrize("labels", LABEL_SETS.values(), ids=LABEL_SETS)
def test_columns_are_the_labelled_ones_in_a_fixed_order(labels: PersonLabels) -> None:
    assert sampled(model_of(labels)).columns.tolist() == columns_of(labels)


@pytest.mark.parametrize("produce_nans", [True, False])
@pytest.mark.parametrize("rows", [0, 4])
def test_without_labels_names_are_made_and_an_empty_frame_of_the_rows_comes_back(
    rows: int, produce_nans: bool
) -> None:
    calls = Calls()
    made = sampled(noting_model(calls, PersonLabels()), rows, produce_nans=produce_nans)
    assert calls.names() == ["generate_first_names", "generate_last_names"]
    assert made.shape == (rows, 0)
    assert made.index.tolist() == list(range(rows))


@pytest.mark.parametrize("produce_nans", [True, False])
def test_no_rows_give_an_empty_frame_with_the_columns(produce_nans: bool) -> None:
    made = sampled(model_of(), 0, produce_nans=produce_nans)
    assert made.columns.tolist() == columns_of(ALL_LABELS)
    assert len(made) == 0


def test_an_empty_label_is_a_column_of_that_name() -> None:
    made = sampled(model_of(PersonLabels(firstname="")), 2)
    assert made.columns.tolist() == [""]


def test_the_frame_is_made_of_empty_rows(monkeypatch: pytest.MonkeyPatch) -> None:
    calls = Calls()
    model = model_of(PersonLabels())
    firsts = pd.Series(["a", "b"])
    model.generate_first_names = lambda **_: firsts
    model.generate_last_names = lambda **_: firsts

    class Pandas:
        DataFrame = staticmethod(calls.recorder("DataFrame", pd.DataFrame))

    monkeypatch.setattr(person, "pd", Pandas)
    sampled(model, 2)
    assert calls == [("DataFrame", ([[], []],), {})]


# Order and arguments of the calls


def test_generators_are_called_in_order() -> None:
    calls = Calls()
    sampled(noting_model(calls))
    # The e-mails ask for usernames of their own.
    assert calls.names() == [
        *["generate_values_from_collections"] * 2,
        *["generate_first_names", "generate_last_names"],
        *["generate_emails", "generate_usernames", "generate_usernames"],
        *["generate_passwords", *["generate_phone_numbers"] * 3],
    ]


def test_generators_get_their_arguments_by_keyword() -> None:
    calls = Calls()
    sampled(noting_model(calls, without("email")))
    assert [(name, args, list(keywords)) for name, args, keywords in calls] == [
        ("generate_values_from_collections", (), ["conditions", "collections"]),
        ("generate_values_from_collections", (), ["conditions", "collections"]),
        ("generate_first_names", (), ["gender_conditions", "country_conditions"]),
        ("generate_last_names", (), ["firstnames", "country_conditions"]),
        ("generate_usernames", (), ["firstnames", "lastnames"]),
        ("generate_passwords", (), ["firstnames"]),
        *[("generate_phone_numbers", (), ["isna", "number_format"])] * 3,
    ]


def test_generators_get_the_very_conditions_and_names() -> None:
    calls = Calls()
    model = model_of()
    firsts, lasts = pd.Series(["a", "b"]), pd.Series(["c", "d"])
    model.generate_first_names = calls.recorder("first", lambda **_: firsts)
    model.generate_last_names = calls.recorder("last", lambda **_: lasts)
    model.generate_emails = calls.recorder("email", lambda **_: firsts)
    model.generate_usernames = calls.recorder("user", lambda **_: firsts)
    model.generate_passwords = calls.recorder("password", lambda **_: firsts)
    gender, country = genders(2, ["F"]), countries(2)
    sampled(model, 2, gender_conditions=gender, country_conditions=country)
    expected = [
        ("first", {"gender_conditions": gender, "country_conditions": country}),
        ("last", {"firstnames": firsts, "country_conditions": country}),
        ("email", {"firstnames": firsts, "lastnames": lasts, "country_condtions": country}),
        ("user", {"firstnames": firsts, "lastnames": lasts}),
        ("password", {"firstnames": firsts}),
    ]
    assert calls.names() == [name for name, _ in expected]
    for (_, args, given), (_, wanted) in zip(calls, expected, strict=True):
        assert args == ()
        assert list(given) == list(wanted)
        assert all(given[name] is wanted[name] for name in wanted)


@pytest.mark.parametrize("name", GENERATORS)
def test_a_generator_of_a_subclass_is_honoured(name: str) -> None:
    class Other(PersonModel):
        pass

    def fixed(self: PersonModel, **given: Any) -> pd.Series:
        return pd.Series(["Zed"] * 3)

    setattr(Other, name, fixed)
    column = {
        "generate_values_from_collections": "title",
        "generate_first_names": "first",
        "generate_last_names": "last",
        "generate_emails": "email",
        "generate_usernames": "user",
        "generate_passwords": "password",
        "generate_phone_numbers": "home",
    }[name]
    model = model_of(cls=Other)
    if name == "generate_usernames":
        model.generate_emails = lambda **_: pd.Series(["x"] * 3)
    made = sampled(model, 3, produce_nans=False)
    assert made[column].tolist() == ["Zed"] * 3


@pytest.mark.parametrize("name", GENERATORS)
def test_an_error_of_a_generator_propagates(name: str) -> None:
    error = RuntimeError("no")
    model = model_of()
    setattr(model, name, raising(error))
    with pytest.raises(RuntimeError) as caught:
        sampled(model)
    assert caught.value is error


def test_an_error_of_the_collections_propagates(monkeypatch: pytest.MonkeyPatch) -> None:
    error = RuntimeError("no")
    model = model_of()
    monkeypatch.setattr(person, "collections_from_mapping", raising(error))
    with pytest.raises(RuntimeError) as caught:
        sampled(model)
    assert caught.value is error


# Gender and title


@pytest.mark.parametrize("column", ["gender", "title"])
def test_collections_are_asked_for_by_keyword_with_the_patterns_in_order(
    monkeypatch: pytest.MonkeyPatch, column: str
) -> None:
    calls = Calls()
    model = model_of(only(column))
    monkeypatch.setattr(
        person, "collections_from_mapping", calls.recorder("sort", lambda **_: {"F": ["v"]})
    )
    sampled(model, 1, gender_conditions=genders(1, ["F"]))
    [(_, args, keywords)] = calls
    assert args == ()
    assert list(keywords) == ["seq", "mapping", "ambiguous_key"]
    assert keywords["seq"] is model.meta[column].categories
    assert list(keywords["mapping"].items()) == [
        ("F", getattr(CONFIG, f"{column}_female_regex")),
        ("M", getattr(CONFIG, f"{column}_male_regex")),
        ("NB", getattr(CONFIG, f"{column}_non_binary_regex")),
    ]
    assert keywords["ambiguous_key"] == "A"


@pytest.mark.parametrize("column", ["gender", "title"])
def test_values_are_made_of_the_utilitys_very_collections(
    monkeypatch: pytest.MonkeyPatch, column: str
) -> None:
    calls = Calls()
    model = noting_model(calls, only(column))
    collections = {"F": ["v"]}
    monkeypatch.setattr(person, "collections_from_mapping", lambda **_: collections)
    gender = genders(2, ["F"])
    made = sampled(model, 2, gender_conditions=gender)
    assert made[column].tolist() == ["v", "v"]
    assert calls[0][2]["conditions"] is gender
    assert calls[0][2]["collections"] is collections


@pytest.mark.parametrize(
    ("attribute", "position"),
    [("key_female", 0), ("key_male", 1), ("key_non_binary", 2), ("key_ambiguous", 3)],
)
def test_the_keys_are_those_of_the_gender_model_when_sampling(
    monkeypatch: pytest.MonkeyPatch, attribute: str, position: int
) -> None:
    calls = Calls()
    model = model_of(only("gender"))
    monkeypatch.setattr(GenderModel, attribute, "Z")
    monkeypatch.setattr(person, "collections_from_mapping", calls.recorder("sort", lambda **_: {}))
    sampled(model, 1, gender_conditions=genders(1, [None]))
    keywords = calls[0][2]
    assert [*keywords["mapping"], keywords["ambiguous_key"]][position] == "Z"


def test_the_config_is_read_when_sampling() -> None:
    model = model_of(only("gender"))
    model.config = PersonModelConfig(gender_female_regex="^nb$")
    made = sampled(model, 3, gender_conditions=genders(3, ["F"]))
    # "nb" is now claimed by two patterns, and so is no longer a value for women.
    assert made["gender"].isna().all()


def test_a_title_that_is_the_ambiguous_key_becomes_one_of_the_three_keys() -> None:
    config = PersonModelConfig(title_female_regex="^A$")
    model = model_of(only("title"), config)
    model.meta["title"]._categories = ["A"]
    made = sampled(model, 200, gender_conditions=genders(200, ["F"]))
    assert set(made["title"]) == {"F", "M", "NB"}


def test_such_a_title_is_drawn_by_the_standard_random_module(
    monkeypatch: pytest.MonkeyPatch,
) -> None:
    calls = Calls()
    model = model_of(without("email"), PersonModelConfig(title_female_regex="^A$"))
    model.meta["title"]._categories = ["A", "Mr"]

    class Random:
        choice = staticmethod(calls.recorder("choice", lambda values: values[-1]))
        randint = staticmethod(lambda low, high: high)

    model.generate_passwords = lambda firstnames: pd.Series(["p"] * 4)
    monkeypatch.setattr(person, "random", Random)
    made = sampled(model, 4, gender_conditions=genders(4, ["F", "M"]))
    assert made["title"].tolist() == ["NB", "Mr", "NB", "Mr"]
    assert calls == [("choice", (["F", "M", "NB"],), {})] * 2


def test_titles_of_the_ambiguous_key_equal_the_reading() -> None:
    model = model_of(ALL_LABELS, PersonModelConfig(title_female_regex="^A$"))
    model.meta["title"]._categories = ["A", "Mr"]
    given = (40, genders(40), countries(40))
    assert_same_outcome(
        lambda: model._sample_conditional(*given),
        lambda: readings.sample_conditional(model, *given),
        7,
        model,
    )


def test_any_other_title_is_kept() -> None:
    model = model_of(only("title"))
    made = sampled(model, 12, gender_conditions=genders(12, ["F", "M", "NB", "A"]))
    assert made["title"].tolist() == ["Mrs", "Mr", "Mx", "Dr"] * 3


def test_the_compared_key_is_that_of_the_class_when_sampling(
    monkeypatch: pytest.MonkeyPatch,
) -> None:
    model = model_of(only("title"))
    monkeypatch.setattr(GenderModel, "key_ambiguous", "Mrs")
    made = sampled(model, 100, gender_conditions=genders(100, ["F"]))
    assert set(made["title"]) == {"F", "M", "NB"}


def test_a_gender_that_is_the_ambiguous_key_is_kept() -> None:
    model = model_of(only("gender"), PersonModelConfig(gender_female_regex="^A$"))
    model.meta["gender"]._categories = ["A"]
    made = sampled(model, 5, gender_conditions=genders(5, ["F"]))
    assert made["gender"].tolist() == ["A"] * 5


def test_genders_agree_with_their_keys() -> None:
    made = sampled(model_of(only("gender")), 6, gender_conditions=genders(6, ["F", "M", "NB"]))
    assert made["gender"].tolist() == ["female", "male", "nb"] * 2


# Country


def test_countries_are_taken_as_they_are() -> None:
    made = sampled(model_of(only("country")), 5, produce_nans=False)
    assert made["country"].tolist() == countries(5).tolist()


def test_a_country_label_without_countries_fails_after_gender_and_title() -> None:
    calls = Calls()
    with pytest.raises(ValueError) as caught:
        sampled(noting_model(calls), country_conditions=None)
    message = "Got country label but no country conditions or country model."
    assert caught.value.args == (message,)
    assert calls.names() == ["generate_values_from_collections"] * 2


def test_the_error_type_of_missing_countries_was_taken_when_importing(
    monkeypatch: pytest.MonkeyPatch,
) -> None:
    monkeypatch.setattr(person, "ValueError", LookupError, raising=False)
    with pytest.raises(ValueError):
        sampled(model_of(only("country")), country_conditions=None)


def test_without_a_country_label_missing_countries_fail_where_names_need_them() -> None:
    with pytest.raises(TypeError):
        sampled(model_of(without("country")), country_conditions=None)


def test_a_country_without_a_provider_fails_as_the_lookup() -> None:
    with pytest.raises(KeyError) as caught:
        sampled(model_of(), 2, country_conditions=pd.Series(["GB", "XX"]))
    assert caught.value.args == ("XX",)


# Names and what follows from them


def test_first_and_last_names_are_the_generated_ones() -> None:
    model = model_of(only("firstname", "lastname"))
    model.generate_first_names = lambda **_: pd.Series(["a", "b"])
    model.generate_last_names = lambda **_: pd.Series(["c", "d"])
    made = sampled(model, 2)
    assert made["first"].tolist() == ["a", "b"]
    assert made["last"].tolist() == ["c", "d"]


def test_full_names_are_first_blank_last_as_nullable_texts() -> None:
    model = model_of(only("fullname"))
    model.generate_first_names = lambda **_: pd.Series(["a", None, "b"])
    model.generate_last_names = lambda **_: pd.Series(["c", "d", None])
    made = sampled(model, 3)
    assert made["full"].dtype == pd.StringDtype()
    assert made["full"].isna().tolist() == [False, True, True]
    assert made["full"][0] == "a c"


def test_rows_without_a_first_name_have_the_flag_of_the_phone_numbers_set() -> None:
    calls = Calls()
    model = model_of(only("mobile_number", "home_number", "work_number"))
    model.generate_first_names = lambda **_: pd.Series(["a", None, pd.NA], dtype=object)
    model.generate_last_names = lambda **_: pd.Series(["a", None, None], dtype=object)
    number = type(model).generate_phone_numbers
    model.generate_phone_numbers = calls.recorder("numbers", number)
    made = sampled(model, 3, gender_conditions=genders(3, ["F"]))
    flags = [keywords["isna"].tolist() for _, _, keywords in calls]
    assert flags == [[False, True, True]] * 3
    for column in ("mobile", "home", "work"):
        assert made[column].isna().tolist() == [False, True, True]


def test_each_number_takes_its_own_format_from_the_model() -> None:
    calls = Calls()
    model = noting_model(calls, only("mobile_number", "home_number", "work_number"))
    model.mobile_number_format, model.home_number_format, model.work_number_format = "m", "h", "w"
    made = sampled(model, 1, gender_conditions=genders(1, ["F"]))
    formats = [call[2].get("number_format") for call in calls if call[0].endswith("numbers")]
    assert formats == ["m", "h", "w"]
    assert made.loc[0].tolist() == ["m", "h", "w"]


def test_numbers_do_not_follow_a_replaced_config() -> None:
    model = model_of(only("work_number"))
    model.config = PersonModelConfig(work_number_format="other")
    assert sampled(model, 1, gender_conditions=genders(1, ["F"]))["work"].tolist() == ["none"]


# Missing rows


def test_rows_without_a_gender_are_missing_in_every_column() -> None:
    made = sampled(model_of(), 10, produce_nans=True)
    assert made.isna().all(axis="columns").tolist() == [False, False, False, False, True] * 2


def test_missing_rows_are_the_default() -> None:
    made = sampled(model_of(), 5)
    assert made.iloc[4].isna().all()


@pytest.mark.parametrize("produce_nans", [1, "yes", [0]])
def test_any_true_value_asks_for_missing_rows(produce_nans: Any) -> None:
    assert sampled(model_of(), 5, produce_nans=produce_nans).iloc[4].isna().all()


@pytest.mark.parametrize("produce_nans", [False, 0, None, ""])
def test_otherwise_generated_values_stay_where_the_gender_is_missing(produce_nans: Any) -> None:
    made = sampled(model_of(), 10, produce_nans=produce_nans)
    generated = made[["country", "first", "last", "full", "email", "user", "password", "mobile"]]
    assert generated.notna().all(axis=None)
    assert made["gender"].isna().tolist() == [False, False, False, True, True] * 2


def test_the_missing_value_is_numpys_when_sampling(monkeypatch: pytest.MonkeyPatch) -> None:
    class Numpy:
        nan = "gone"

    model = model_of(only("firstname"))
    monkeypatch.setattr(person, "np", Numpy)
    assert sampled(model, 5)["first"].tolist()[4] == "gone"


def test_a_label_beyond_the_known_ones_is_blanked_too_and_so_becomes_a_column() -> None:
    labels = only("firstname")
    vars(labels)["nickname"] = "nick"
    model = model_of(labels)
    given = (5, genders(5), countries(5))
    assert_same_outcome(
        lambda: model._sample_conditional(*given),
        lambda: readings.sample_conditional(model, *given),
        8,
        model,
    )
    assert sampled(model, produce_nans=False).columns.tolist() == ["first"]
    made = sampled(model)
    assert made.columns.tolist() == ["first", "nick"]
    assert made["nick"].isna().all()


def test_the_conditions_are_left_alone() -> None:
    gender, country = genders(10), countries(10)
    sampled(model_of(), 10, gender_conditions=gender, country_conditions=country)
    assert_identical(gender, genders(10))
    assert_identical(country, countries(10))


# The number of rows


@pytest.mark.parametrize(
    ("num_rows", "given"),
    [(None, "NoneType"), (True, "bool"), (Number(1), "Number"), (1.0, "float")],
)
def test_a_number_of_rows_that_is_no_int_is_refused(num_rows: Any, given: str) -> None:
    with pytest.raises(TypeError) as caught:
        model_of()._sample_conditional(num_rows, genders(1), countries(1))
    message = f"Argument 'num_rows' has incorrect type (expected int, got {given})"
    assert str(caught.value) == message


def test_a_numpy_integer_is_refused() -> None:
    with pytest.raises(TypeError) as caught:
        model_of()._sample_conditional(np.int64(1), genders(1), countries(1))
    message = "Argument 'num_rows' has incorrect type (expected int, got int64)"
    assert str(caught.value) == message


def test_labels_of_a_subclass_are_honoured() -> None:
    class Relabelled(PersonModel):
        labels = PersonLabels(firstname="given")

    assert sampled(model_of(cls=Relabelled)).columns.tolist() == ["given"]
