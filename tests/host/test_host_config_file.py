"""Reading a configuration from a TOML file."""

from dataclasses import asdict
from pathlib import Path

import pytest

from vantrel.config import PersonModelConfig
from vantrel.storage.settings import ConfigFileError, load_config

EVERYTHING = """
gender_female_regex = "^(f|w)$"
gender_male_regex = '^m$'
gender_non_binary_regex = "^x$"
title_female_regex = "^Frau$"
title_male_regex = "^Herr$"
title_non_binary_regex = "^Mx$"
genders = ["F", "M", "NB"]
mobile_number_format = "+49 17x xxxxxxx"
home_number_format = "030 xxxxxx"
work_number_format = "040 xxxxxx"
dict_cache_size = 5
pwd_length = [12, 20]
"""

FIELDS = ", ".join(asdict(PersonModelConfig()))


def write(folder: Path, text: str) -> Path:
    path = folder / "c.toml"
    path.write_text(text, encoding="utf-8")
    return path


def test_every_field_can_be_set(tmp_path: Path) -> None:
    config = load_config(write(tmp_path, EVERYTHING))
    assert config == PersonModelConfig(
        gender_female_regex="^(f|w)$",
        gender_male_regex="^m$",
        gender_non_binary_regex="^x$",
        title_female_regex="^Frau$",
        title_male_regex="^Herr$",
        title_non_binary_regex="^Mx$",
        genders=["F", "M", "NB"],
        mobile_number_format="+49 17x xxxxxxx",
        home_number_format="030 xxxxxx",
        work_number_format="040 xxxxxx",
        dict_cache_size=5,
        pwd_length=(12, 20),
    )
    usual = asdict(PersonModelConfig())
    assert all(value != usual[name] for name, value in asdict(config).items())


def test_what_is_not_set_is_the_default(tmp_path: Path) -> None:
    assert load_config(write(tmp_path, "")) == PersonModelConfig()
    assert load_config(write(tmp_path, "dict_cache_size = 0")) == PersonModelConfig(
        dict_cache_size=0
    )


def test_a_byte_order_mark_is_no_part_of_the_text(tmp_path: Path) -> None:
    path = tmp_path / "c.toml"
    path.write_bytes(b"\xef\xbb\xbfdict_cache_size = 1\r\n")
    assert load_config(path).dict_cache_size == 1


@pytest.mark.parametrize(
    ("text", "message"),
    [
        (
            "pwd_lenght = [1, 2]",
            f"'pwd_lenght' is no setting. Did you mean 'pwd_length'? Known are: {FIELDS}.",
        ),
        ("[config]\ngenders = ['F']", f"'config' is no setting. Known are: {FIELDS}."),
        ("zzzz = 1", f"'zzzz' is no setting. Known are: {FIELDS}."),
        ("gender_male_regex = 1", "gender_male_regex is 1, not a text."),
        ("gender_male_regex = ['a']", "gender_male_regex is a list of 1, not a text."),
        (
            "title_male_regex = '(a'",
            "title_male_regex is '(a', which is no regular expression (missing ), unterminated"
            " subpattern at position 0): correct it.",
        ),
        (
            "title_male_regex = '^(a+)+$'",
            "title_male_regex is '^(a+)+$', which could make a search endless: begin it with ^ and"
            " let no two repeats match the same characters, neither one in the other, as in"
            " (a+)+, nor side by side, as in a*a*.",
        ),
        ("genders = 'F'", "genders is 'F', not a list."),
        ("genders = ['F', 'Q']", "genders[1] is 'Q', not 'F' or 'M' or 'NB' or 'A'."),
        ("genders = ['F', 1]", "genders[1] is 1, not 'F' or 'M' or 'NB' or 'A'."),
        ("genders = []", "genders is empty: list each of its keys once."),
        ("genders = ['F', 'M', 'F']", "genders has a key twice: list each of its keys once."),
        ("mobile_number_format = 7", "mobile_number_format is 7, not a text."),
        (
            f"home_number_format = '{'x' * 1001}'",
            "home_number_format has 1,001 characters, more than 1,000.",
        ),
        (
            "dict_cache_size = -1",
            "dict_cache_size is -1, not an integer from 0 to 1,000,000,000,000,000,000.",
        ),
        (
            "dict_cache_size = true",
            "dict_cache_size is true, not an integer from 0 to 1,000,000,000,000,000,000.",
        ),
        ("pwd_length = 8", "pwd_length is 8, not a list."),
        ("pwd_length = 1979-05-27", 'pwd_length is "1979-05-27", not a list.'),
        (
            "pwd_length = [9, 8]",
            "pwd_length is [9, 8]: the greatest length comes second.",
        ),
        (
            "pwd_length = [8]",
            "pwd_length is a list of 1, not a list of the least and the greatest length.",
        ),
        ("pwd_length = [8, 1.5]", "pwd_length[1] is 1.5, not an integer from 0 to 4,096."),
    ],
)
def test_a_setting_that_is_none(tmp_path: Path, text: str, message: str) -> None:
    path = write(tmp_path, text)
    with pytest.raises(ConfigFileError) as caught:
        load_config(path)
    assert str(caught.value) == f"Config file {path}: {message}"


@pytest.mark.parametrize(
    ("text", "message"),
    [
        ("a = 1\nb = = 2", " is not TOML: Invalid value (at line 2, column 5)."),
        ("a = 1\na = 2\n", " is not TOML: Cannot overwrite a value (at line 2, column 6)."),
        ("a = " + "[" * 5000, " is not TOML: "),
    ],
)
def test_a_file_that_is_no_toml(tmp_path: Path, text: str, message: str) -> None:
    path = write(tmp_path, text)
    with pytest.raises(ConfigFileError) as caught:
        load_config(path)
    assert str(caught.value).startswith(f"Config file {path}{message}")
    assert "\n" not in str(caught.value)


def test_a_file_that_cannot_be_read(tmp_path: Path) -> None:
    missing = tmp_path / "no.toml"
    with pytest.raises(ConfigFileError) as caught:
        load_config(missing)
    assert str(caught.value) == f"Config file {missing} cannot be read: No such file or directory."
    with pytest.raises(ConfigFileError, match="cannot be read: Is a directory"):
        load_config(tmp_path)
    latin = tmp_path / "latin.toml"
    latin.write_bytes("title_male_regex = '^Señor$'".encode("latin-1"))
    with pytest.raises(ConfigFileError) as caught:
        load_config(latin)
    assert str(caught.value) == f"Config file {latin} is not in UTF-8: save it in that encoding."
