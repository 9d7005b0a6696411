"""The attributes of a person: what each is called, and how a sample gets it."""

from dataclasses import dataclass
from typing import Annotated, TypedDict


@dataclass(frozen=True, slots=True)
class Attribute:
    """What is known of an attribute.

    Args:
        words: What a reader knows it as.
        made: How a sample gets it; fields of the configuration stand in braces.
        follows: What else of the row it depends on.
        is_learnt: Whether a sample has the values of the fitted column.
        can_be_unique: Whether no value of it need come twice.
    """

    words: str
    made: str
    follows: tuple[str, ...] = ()
    is_learnt: bool = False
    can_be_unique: bool = False


_BY_SHARES = "learnt: drawn by its shares"
_BY_TITLES = "learnt: drawn evenly from those of the row's gender"
_BOTH = ("gender", "country")
_DIGITS = ", each x a random digit"


class PersonColumns(TypedDict, total=False):
    """The column of each attribute that a table has. This is the one table of attributes."""

    gender: Annotated[str, Attribute("Gender", _BY_SHARES, is_learnt=True)]
    title: Annotated[str, Attribute("Title", _BY_TITLES, is_learnt=True)]
    firstname: Annotated[str, Attribute("First name", "made up by gender and country", _BOTH)]
    lastname: Annotated[str, Attribute("Last name", "made up by country", ("country",))]
    fullname: Annotated[str, Attribute("Full name", "first name and last name", _BOTH)]
    email: Annotated[
        str, Attribute("E-mail address", "username and a made-up domain", _BOTH, can_be_unique=True)
    ]
    username: Annotated[
        str, Attribute("Username", "made from the row's name", _BOTH, can_be_unique=True)
    ]
    password: Annotated[
        str, Attribute("Password", "{pwd_length[0]} to {pwd_length[1]} random characters")
    ]
    mobile_number: Annotated[str, Attribute("Mobile number", "{mobile_number_format}" + _DIGITS)]
    home_number: Annotated[str, Attribute("Home number", "{home_number_format}" + _DIGITS)]
    work_number: Annotated[str, Attribute("Work number", "{work_number_format}" + _DIGITS)]
    country: Annotated[str, Attribute("Country", _BY_SHARES, is_learnt=True)]


ATTRIBUTES: dict[str, Attribute] = {
    name: hint.__metadata__[0] for name, hint in PersonColumns.__annotations__.items()
}
LEARNT = tuple(name for name, each in ATTRIBUTES.items() if each.is_learnt)
UNIQUE = tuple(name for name, each in ATTRIBUTES.items() if each.can_be_unique)
WORDS = {name: each.words for name, each in ATTRIBUTES.items()}
NAMES = ("firstname", "lastname", "fullname")
PHONES = ("mobile_number", "home_number", "work_number")

# Telephone numbers agree if so many digits at their ends do, as a country's prefix may be there or
# not; those of fewer digits than the second tell nobody.
COMPARED_DIGITS, FEWEST_COMPARED_DIGITS = 8, 6
