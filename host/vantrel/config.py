"""The records that configure a model of people."""

from dataclasses import MISSING, dataclass, field, fields

from vantrel.genders import (
    GENDER_FEMALE,
    GENDER_MALE,
    GENDER_NON_BINARY,
    TITLE_FEMALE,
    TITLE_MALE,
    TITLE_NON_BINARY,
)


@dataclass
class PersonLabels:
    """Which column of a table holds which attribute of a person.

    Each field is a column name, or ``None`` where the table has no such column and the samples
    shall have none either. The order of the fields is the order of the attributes wherever
    nothing else, such as a fitted table, gives one.
    """

    gender: str | None = None
    title: str | None = None
    firstname: str | None = None
    lastname: str | None = None
    fullname: str | None = None
    email: str | None = None
    username: str | None = None
    password: str | None = None
    mobile_number: str | None = None
    home_number: str | None = None
    work_number: str | None = None
    country: str | None = None


@dataclass
class PersonModelConfig:
    """How a model of people reads genders and titles and what it generates.

    Attributes:
        gender_female_regex: Pattern of the gender column's values that mean female. All six
            patterns are searched without regard to case.
        gender_male_regex: The same for male.
        gender_non_binary_regex: The same for non-binary.
        title_female_regex: Pattern of the titles that women bear. A title that several patterns
            match says nothing of the gender and counts as ambiguous.
        title_male_regex: The same for men.
        title_non_binary_regex: The same for non-binary people.
        genders: Gender keys that are equally likely where a table tells neither gender nor title.
        mobile_number_format: Template of mobile numbers; each "x" becomes a random digit.
        home_number_format: The same for home numbers.
        work_number_format: The same for work numbers.
        dict_cache_size: Number of entries that a user of the model may keep in a cache.
        pwd_length: Shortest and longest generated password, in characters.
    """

    gender_female_regex: str = GENDER_FEMALE
    gender_male_regex: str = GENDER_MALE
    gender_non_binary_regex: str = GENDER_NON_BINARY
    title_female_regex: str = TITLE_FEMALE
    title_male_regex: str = TITLE_MALE
    title_non_binary_regex: str = TITLE_NON_BINARY
    genders: list[str] = field(default_factory=lambda: ["F", "M"])
    mobile_number_format: str = "07xxxxxxxx"
    home_number_format: str = "01xxxxxxxx"
    work_number_format: str = "02xxxxxxxx"
    dict_cache_size: int = 10_000
    pwd_length: tuple[int, int] = (8, 16)

    def __post_init__(self) -> None:
        # JSON knows lists only: a configuration that went through a file equals the original.
        if isinstance(self.genders, tuple):
            self.genders = list(self.genders)
        if isinstance(self.pwd_length, list):
            self.pwd_length = tuple(self.pwd_length)

    def __repr__(self) -> str:
        """Writes what is not as by default: in help, the patterns alone would fill a screen."""
        usual = PersonModelConfig()
        told = ((each.name, getattr(self, each.name)) for each in fields(self))
        unusual = (
            f"{name}={value!r}" for name, value in told if value != getattr(usual, name, MISSING)
        )
        return f"{type(self).__qualname__}({', '.join(unusual)})"
