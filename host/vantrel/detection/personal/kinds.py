"""What a column that looks personal may hold."""

from __future__ import annotations

from enum import StrEnum


class Kind(StrEnum):
    """The kinds, each with the words in which users are told of it."""

    NAME = "further name"
    EMAIL = "e-mail address"
    PHONE = "telephone number"
    BIRTH = "date of birth"
    STREET = "street address"
    HOUSE_NUMBER = "house number"
    POSTCODE = "postcode"
    CITY = "city"
    ACCOUNT = "bank account"
    CARD = "payment card"
    OFFICIAL = "tax or social security number"
    DOCUMENT = "identity document"
    IP = "IP address"
    DEVICE = "device number"
    POSITION = "geographic position"
    PROFILE = "profile page"
    PEOPLE = "names of people"
    PROSE = "text with names of people"
