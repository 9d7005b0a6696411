"""The attributes of a person: what each is called, and how a sample gets it."""

from dataclasses import dataclass
from typing import Annotated, TypedDict


@dataclass(frozen=True, slots=True)
class Attribute:
    """What is known of an attribute.

    Args:
        words: What a reader knows it as.
        made: How a sample gets it; fields of the configuration stand in braces.
        by_gender: Whether it depends on the row's gender.
        by_country: Whether it depends on the row's country.
        is_learnt: Whether a sample has the values of the fitted column.
        can_be_unique: Whether no value of it need come twice.
    """

    words: str
    made: str
    by_gender: bool = False
    by_country: bool = False
    is_learnt: bool = False
    can_be_unique: bool = False


class PersonColumns(TypedDict, total=False):
    """The column of each attribute that a table has. This is the one table of attributes."""

    gender: Annotated[str, Attribute("Gender", "learnt: drawn by its shares", is_learnt=True)]
    title: Annotated[
        str,
        Attribute("Title", "learnt: drawn evenly from those of the row's gender", is_learnt=True),
    ]
    firstname: Annotated[
        str,
        Attribute("First name", "made up by gender and country", by_gender=True, by_country=True),
    ]
    lastname: Annotated[str, Attribute("Last name", "made up by country", by_country=True)]
    fullname: Annotated[
        str, Attribute("Full name", "first name and last name", by_gender=True, by_country=True)
    ]
    email: Annotated[
        str,
        Attribute(
            "E-mail address",
            "username and a made-up domain",
            by_gender=True,
            by_country=True,
            can_be_unique=True,
        ),
    ]
    username: Annotated[
        str,
        Attribute(
            "Username",
            "made from the row's name",
            by_gender=True,
            by_country=True,
            can_be_unique=True,
        ),
    ]
    password: Annotated[
        str, Attribute("Password", "{pwd_length[0]} to {pwd_length[1]} random characters")
    ]
    mobile_number: Annotated[
        str, Attribute("Mobile number", "{mobile_number_format}, each x a random digit")
    ]
    home_number: Annotated[
        str, Attribute("Home number", "{home_number_format}, each x a random digit")
    ]
    work_number: Annotated[
        str, Attribute("Work number", "{work_number_format}, each x a random digit")
    ]
    country: Annotated[str, Attribute("Country", "learnt: drawn by its shares", is_learnt=True)]


ATTRIBUTES: dict[str, Attribute] = {
    name: hint.__metadata__[0] for name, hint in PersonColumns.__annotations__.items()
}
LEARNT = tuple(name for name, each in ATTRIBUTES.items() if each.is_learnt)
UNIQUE = tuple(name for name, each in ATTRIBUTES.items() if each.can_be_unique)
WORDS = {name: each.words for name, each in ATTRIBUTES.items()}
NAMES = ("firstname", "lastname", "fullname")
PHONES = ("mobile_number", "home_number", "work_number")
