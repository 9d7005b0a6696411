"""The name columns, and the phone numbers that follow from them."""

import pandas as pd

from support.conditional_sampling import genders, model_of, noting_model, only, sampled
from support.recording import Calls
from vantrel.config import PersonModelConfig


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
