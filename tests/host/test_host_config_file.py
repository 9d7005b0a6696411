"""Reading a configuration from a TOML file."""

from dataclasses import asdict
from pathlib import Path

import pytest

from vantrel.config import PersonModelConfig
from vantrel.errors import SettingsError
from vantrel.storage.settings import load_config, load_settings

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

WAYS = ("email_domain", "phone_numbers", "phone_formats", "latin")
FIELDS = ", ".join([*asdict(PersonModelConfig()), *WAYS])


WANTED = (
    "'phone_formats' are formats in ASCII of mobile_number, home_number or work_number by country,"
    " as in {'DE': {'mobile_number': '0151 xxxxxxx'}}"
)


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


def test_how_people_are_reached_can_be_set(tmp_path: Path) -> None:
    text = """
    email_domain = "example.org"
    phone_numbers = "valid"
    latin = true
    [phone_formats.Germany]
    mobile_number = "0151 xxxxxxx"
    [phone_formats.FR]
    work_number = "01 xx xx xx xx"
    """
    assert load_settings(write(tmp_path, text)).ways == {
        "email_domain": "example.org",
        "phone_numbers": "valid",
        "latin": True,
        "phone_formats": {
            "Germany": {"mobile_number": "0151 xxxxxxx"},
            "FR": {"work_number": "01 xx xx xx xx"},
        },
    }


def test_a_format_that_is_set_counts_also_where_it_is_the_usual_one(tmp_path: Path) -> None:
    text = 'mobile_number_format = "07xxxxxxxx"\nwork_number_format = "1x"'
    loaded = load_settings(write(tmp_path, text))
    assert loaded.ways == {"phone_formats": {"*": {"mobile_number": "07xxxxxxxx"}}}
    assert loaded.config == PersonModelConfig(work_number_format="1x")
    more = '[phone_formats."*"]\nmobile_number = "2x"\n[phone_formats.DE]\nmobile_number = "3x"'
    formats = load_settings(write(tmp_path, f"{text}\n{more}")).ways["phone_formats"]
    assert formats == {"*": {"mobile_number": "2x"}, "DE": {"mobile_number": "3x"}}


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
        (
            'email_domain = "foo"',
            "'email_domain' is a domain such as 'example.org', or 'reserved' or 'as-made', not"
            " 'foo'.",
        ),
        ('phone_numbers = "all"', "'phone_numbers' are 'fiction' or 'valid', not 'all'."),
        ("gender_male_regex = 1", "Expected `str`, got `int` - at `$.gender_male_regex`."),
        ("gender_male_regex = ['a']", "Expected `str`, got `array` - at `$.gender_male_regex`."),
        (
            "title_male_regex = '(a'",
            "title_male_regex is no regular expression (missing ), unterminated subpattern at"
            " position 0).",
        ),
        ("genders = 'F'", "Expected `array`, got `str` - at `$.genders`."),
        ("genders = ['F', 'Q']", "Invalid enum value 'Q' - at `$.genders[1]`."),
        ("genders = ['F', 1]", "Expected `str`, got `int` - at `$.genders[1]`."),
        ("genders = []", "genders is empty: list each of its keys once."),
        ("genders = ['F', 'M', 'F']", "genders has a key twice: list each of its keys once."),
        ("mobile_number_format = 7", "Expected `str`, got `int` - at `$.mobile_number_format`."),
        (
            f"home_number_format = '{'x' * 1001}'",
            "Expected `str` of length <= 1000 - at `$.home_number_format`.",
        ),
        (
            "dict_cache_size = -1",
            "Expected `int` >= 0 - at `$.dict_cache_size`.",
        ),
        (
            "dict_cache_size = true",
            "Expected `int`, got `bool` - at `$.dict_cache_size`.",
        ),
        ("pwd_length = 8", "Expected `array`, got `int` - at `$.pwd_length`."),
        ("pwd_length = 1979-05-27", "Expected `array`, got `date` - at `$.pwd_length`."),
        (
            "pwd_length = [9, 8]",
            "The greatest of the lengths [9, 8] comes second.",
        ),
        (
            "pwd_length = [8]",
            "Expected `array` of length 2, got 1 - at `$.pwd_length`.",
        ),
        ("pwd_length = [8, 1.5]", "Expected `int`, got `float` - at `$.pwd_length[1]`."),
        ("latin = 1", "'latin' is True or False, not 1."),
        ("phone_formats = 'x'", f"{WANTED}, not 'x'."),
        (
            "[phone_formats.DE]\nmobile = 'x'",
            f"{WANTED}, not {{'DE': {{'mobile': 'x'}}}}.",
        ),
        (
            "[phone_formats.DE]\nhome_number = '1\\n'".replace("'", '"'),
            f"{WANTED}, not {{'DE': {{'home_number': '1\\n'}}}}.",
        ),
        (
            "[phone_formats.Grmany]\nhome_number = 'x'",
            "'Grmany' is neither a country nor a locale. Did you mean 'Germany'? Write a country as"
            " its ISO code, its English name or its name in its own language, a locale as 'en_GB'.",
        ),
    ],
)
def test_a_setting_that_is_none(tmp_path: Path, text: str, message: str) -> None:
    path = write(tmp_path, text)
    with pytest.raises(SettingsError) as caught:
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
    with pytest.raises(SettingsError) as caught:
        load_config(path)
    assert str(caught.value).startswith(f"Config file {path}{message}")
    assert "\n" not in str(caught.value)


def test_a_file_that_cannot_be_read(tmp_path: Path) -> None:
    missing = tmp_path / "no.toml"
    with pytest.raises(SettingsError) as caught:
        load_config(missing)
    assert str(caught.value) == f"Config file {missing} cannot be read: No such file or directory."
    with pytest.raises(SettingsError, match="cannot be read: Is a directory"):
        load_config(tmp_path)
    latin = tmp_path / "latin.toml"
    latin.write_bytes("title_male_regex = '^Señor$'".encode("latin-1"))
    with pytest.raises(SettingsError) as caught:
        load_config(latin)
    assert str(caught.value) == f"Config file {latin} is not in UTF-8: save it in that encoding."
