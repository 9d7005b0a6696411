"""Recognises numbers with check digits: of bank accounts, payment cards, and those of offices."""

from __future__ import annotations

import re
from functools import cache
from importlib import import_module
from typing import Any

from stdnum import iban, luhn

from vantrel.detection.personal.texts import Test, told

_BETWEEN_DIGITS = str.maketrans("", "", " -./")
_BLANKS_AND_POINTS = str.maketrans("", "", " .")
_DIGIT = re.compile(r"\d")
_DATE_OR_MEASURE = re.compile(r"\d{4}-\d\d-\d\d.*|\d\d?\.\d\d?\.\d{4}.*|[-+]?\d*\.\d+")
_NUMBER = re.compile(r"[\dA-Z +./-]{4,40}", re.IGNORECASE)

# The beginnings and lengths that issuers of cards have.
_CARD = re.compile(
    r"4\d{12}(?:\d{3}){0,2}"
    r"|(?:5[1-5]\d\d|222[1-9]|22[3-9]\d|2[3-6]\d\d|27[01]\d|2720)\d{12}"
    r"|3[47]\d{13}|3(?:0[0-5]|[689]\d)\d{11}"
    r"|(?:2131|1800)\d{11}|35(?:2[89]|[3-8]\d)\d{12}"
    r"|(?:6011|65\d\d|64[4-9]\d|62\d\d)\d{12}"
    r"|(?:50|5[6-8]|6[0-9])\d{10,17}"
)
_MASKED_CARD = re.compile(r"[\dXx*•.# -]*\d{3,}")

# The form of each number without blanks and full stops, and its name.
OFFICIAL = {
    "pl.pesel": (r"\d{11}", "Polish PESEL numbers"),
    "es.nif": (r"[A-Z]?-?\d{7,8}-?[A-Z]|[A-Z]-?\d{8}", "Spanish NIF numbers"),
    "it.codicefiscale": (r"[A-Z]{6}[\dA-Z]{9}[A-Z]", "Italian tax codes"),
    "fr.nir": (r"[1-478]\d{4}[\dAB]\d{9}", "French social security numbers"),
    "fr.nif": (r"[0-3]\d{12}", "French tax numbers"),
    "de.idnr": (r"\d{11}", "German tax identification numbers"),
    "be.nn": (r"\d{6}-?\d{5}", "Belgian national numbers"),
    "ch.ssn": (r"756\d{10}", "Swiss AHV numbers"),
    "cz.rc": (r"\d{10}|\d{6}/\d{3,4}", "Czech or Slovak birth numbers"),
    "se.personnummer": (r"(?:\d\d)?\d{6}[-+]?\d{4}", "Swedish personal identity numbers"),
    "no.fodselsnummer": (r"\d{11}", "Norwegian birth numbers"),
    "fi.hetu": (r"\d{6}[-+A-FU-Y]\d{3}[\dA-Y]", "Finnish personal identity codes"),
    "is_.kennitala": (r"\d{6}-?\d{4}", "Icelandic identity numbers"),
    "ee.ik": (r"\d{11}", "Estonian or Lithuanian personal codes"),
    "ro.cnp": (r"\d{13}", "Romanian CNP numbers"),
    "bg.egn": (r"\d{10}", "Bulgarian EGN numbers"),
    "gr.amka": (r"\d{11}", "Greek AMKA numbers"),
    "si.emso": (r"\d{13}", "EMŠO or JMBG numbers"),
    "tr.tckimlik": (r"\d{11}", "Turkish identity numbers"),
    "ie.pps": (r"\d{7}[A-W][A-IW]?", "Irish PPS numbers"),
    "us.ssn": (r"\d{3}-\d\d-\d{4}", "American social security numbers"),
    "br.cpf": (r"\d{9}-?\d\d", "Brazilian CPF numbers"),
    "mx.curp": (r"[A-Z]{4}\d{6}[A-Z]{6}[\dA-Z]\d", "Mexican CURP codes"),
    "ar.cuit": (r"\d\d-?\d{8}-?\d", "Argentine CUIT numbers"),
    "in_.pan": (r"[A-Z]{5}\d{4}[A-Z]", "Indian PAN numbers"),
    "za.idnr": (r"\d{13}", "South African identity numbers"),
    "kr.rrn": (r"\d{6}-?\d{7}", "South Korean registration numbers"),
}
# Little but one check digit tells these from other numbers, of which some pass by chance: so nearly
# all values of a column must, and several of them.
WEAK = {
    "nl.bsn": (r"\d{9}", "Dutch BSN numbers"),
    # Of England and Wales, of Northern Ireland, and of Scotland, where the day of birth begins it.
    "gb.nhs": (
        r"(?:[467]\d\d|3[2-9]\d|(?:0[1-9]|[12]\d|3[01])(?=0[1-9]|1[0-2])\d)-?\d{3}-?\d{4}",
        "British NHS numbers",
    ),
}
_NEARLY_ALL = 0.95
# Numbers of books have the check digit of the British ones. In one of eleven it is an X: of so many
# books hardly ever in none.
_FEWEST_OF_WEAK = 40
_BOOK = re.compile(r"\d{9}X", re.IGNORECASE)
# Without check digits, but of a form of its own.
_BRITISH = re.compile(r"(?!BG|GB|KN|NK|NT|TN|ZZ)[A-CEGHJ-PR-TW-Z][A-CEGHJ-NPR-TW-Z]\d{6}[A-D]")


def can_be_account(text: str) -> bool:
    """Whether a text may be the number of a bank account."""
    return _has_digits(text, 6) and _is_number(text)


def told_accounts(texts: list[str]) -> str | None:
    """Tells whether values are IBANs."""
    return told(texts, iban.is_valid, "are valid IBANs")


def can_be_card(text: str) -> bool:
    """Whether a text may be the number of a payment card, or what is left of a masked one."""
    return bool(_MASKED_CARD.fullmatch(text))


def told_cards(texts: list[str]) -> str | None:
    """Tells whether values are numbers of payment cards."""
    return told(texts, _is_card, "are valid numbers of payment cards")


def can_be_official(text: str) -> bool:
    """Whether a text may be a number that an office gave to a person."""
    return _has_digits(text, 4) and _is_number(text)


def told_official(texts: list[str]) -> str | None:
    """Tells whether values are tax or social security numbers, and of which country."""
    if british := told(texts, _is_british, "are valid British National Insurance numbers"):
        return british
    for module, (form, name) in OFFICIAL.items():
        if seen := told(texts, check_of(module, form), f"are valid {name}"):
            return seen
    return _told_weak(texts)


def _told_weak(texts: list[str]) -> str | None:
    if any(_BOOK.fullmatch(text.translate(_BETWEEN_DIGITS)) for text in texts):
        return None
    for module, (form, name) in WEAK.items():
        is_valid, what = check_of(module, form), f"are valid {name}"
        if seen := told(texts, is_valid, what, least=_NEARLY_ALL, fewest=_FEWEST_OF_WEAK):
            return seen
    return None


def check_of(module: str, form: str) -> Test:
    """Makes the check of one kind of number; its module is loaded when a text has the form."""
    has_form = re.compile(form).fullmatch

    def is_valid(text: str) -> bool:
        number = text.upper().translate(_BLANKS_AND_POINTS)
        return bool(has_form(number)) and bool(_module(module).is_valid(number))

    return is_valid


@cache
def _module(name: str) -> Any:
    return import_module(f"stdnum.{name}")


def _is_british(text: str) -> bool:
    return bool(_BRITISH.fullmatch(text.upper().translate(_BETWEEN_DIGITS)))


def _is_card(text: str) -> bool:
    digits = text.translate(_BETWEEN_DIGITS)
    return bool(_CARD.fullmatch(digits)) and luhn.is_valid(digits)


def _is_number(text: str) -> bool:
    """Whether a text is digits and plain letters, and no date or fraction."""
    return bool(_NUMBER.fullmatch(text)) and not _DATE_OR_MEASURE.fullmatch(text)


def _has_digits(text: str, fewest: int) -> bool:
    return len(_DIGIT.findall(text)) >= fewest
