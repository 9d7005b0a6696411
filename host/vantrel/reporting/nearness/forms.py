"""What is left of a value when people who write it in other ways have been understood, in SQL.

Two values that mean the same have one key. A value also has two halves that are made apart from
each other, such as a first and a last name: how often chance puts the halves of a real one together
tells what chance explains.
"""

from __future__ import annotations

from collections.abc import Callable, Mapping
from dataclasses import dataclass

from vantrel.attributes import COMPARED_DIGITS, FEWEST_COMPARED_DIGITS, PHONES
from vantrel.reporting.labelled import LabelledTable
from vantrel.tables.database import quoted

# Letters that no accent is taken from.
_LETTERS = {"ß": "ss", "æ": "ae", "œ": "oe", "ø": "o", "ł": "l", "đ": "d", "ð": "d", "þ": "th"}

# What stands before or behind names and is none itself, without accents; what may be a name, too,
# counts with its full stop only.
_TITLES = (
    r"\b(?:(?:mr|mrs|ms|miss|mx|sir|dame|professor|prof|doctor|dr|herrn?|frau|fraulein|mme|mlle"
    r"|madame|monsieur|mademoiselle|senora?|sra?|senorita|srta|signora?|dott|dottoressa|mevrouw"
    r"|mevr|meneer|dhr|fru|phd|esq|jr)\b|(?:sig|med|phil|jur|rer|nat|dipl|ing|h|c)\.)"
)
_NO_LETTERS = r"[^\p{L}\p{M}\p{N}]+"

_WORD = r"\p{L}[\p{L}\p{M}'\x{2019}-]*"
_FIRST_WORD = "^([^0-9@._+-]*)"

# The digits of a number in its range: numbers for fiction come in ranges of a hundred or more.
_OF_A_RANGE = 2


@dataclass(frozen=True)
class Form:
    """A value of each row, in SQL; missing where there is nothing to compare.

    Args:
        key: What is the same for all ways to write it.
        halves: What it is put together from, if that can be told.
        shown: The value as the table has it.
        shape: What tells values that are put together in different ways.
    """

    key: str
    halves: tuple[str, str] | None
    shown: str
    shape: str = "''"


def full_name(table: LabelledTable) -> list[Form]:
    """Full names in one column: what stands before a comma is the last name."""
    if not table.has("fullname"):
        return []
    name = table.column("fullname")
    words = _words(name)
    before, behind = _words(f"split_part({name}, ',', 1)"), _words(f"split_part({name}, ',', 2)")
    has_comma = f"contains({name}, ',')"
    first = f"CASE WHEN {has_comma} THEN {behind} ELSE regexp_replace({words}, ' ?[^ ]+$', '') END"
    last = f"CASE WHEN {has_comma} THEN {before} ELSE regexp_extract({words}, '[^ ]+$') END"
    key, first, last = table.table.computed(_sorted(words), first, last)
    return [Form(key, (first, last), name)]


def first_and_last_name(table: LabelledTable) -> list[Form]:
    """First and last names in two columns."""
    if not table.has("firstname", "lastname"):
        return []
    first, last = table.column("firstname"), table.column("lastname")
    name = f"{first} || ' ' || {last}"
    key, *halves = table.table.computed(sorted_words(name), _words(first), _words(last))
    return [Form(key, (halves[0], halves[1]), name)]


def whole_names(table: LabelledTable) -> list[Form]:
    """Whole names, wherever a table has them."""
    return full_name(table) + first_and_last_name(table)


def first_word_of_first_name(table: LabelledTable) -> str | None:
    """The first word of first names, in lower case but with its accents, in SQL."""
    if table.has("firstname"):
        name = table.column("firstname")
    elif table.has("fullname"):
        name = table.column("fullname")
        name = f"CASE WHEN contains({name}, ',') THEN split_part({name}, ',', 2) ELSE {name} END"
    else:
        return None
    untitled = f"regexp_replace(lower({name}), {quoted(_TITLES)}, ' ', 'g')"
    return f"regexp_extract({untitled}, {quoted(_WORD)})"


def addresses(table: LabelledTable) -> list[Form]:
    """E-mail addresses."""
    return _accounts(table, "email")


def usernames(table: LabelledTable) -> list[Form]:
    """User names."""
    return _accounts(table, "username")


def passwords(table: LabelledTable) -> list[Form]:
    """Passwords, to the letter."""
    if not table.has("password"):
        return []
    column = table.column("password")
    half = f"length({column}) // 2"
    halves = f"left({column}, {half})", f"substr({column}, {half} + 1)"
    return [Form(column, halves, column)]


def numbers(table: LabelledTable) -> list[Form]:
    """Telephone numbers of any kind, by their last digits."""
    columns = [table.column(attribute) for attribute in PHONES if table.has(attribute)]
    written = table.table.computed(*map(digits, columns))
    return list(map(_number, columns, written))


def _number(column: str, written: str) -> Form:
    is_long = f"length({written}) >= {FEWEST_COMPARED_DIGITS}"
    key = f"CASE WHEN {is_long} THEN right({written}, {COMPARED_DIGITS}) END"
    return Form(key, (f"left({key}, -{_OF_A_RANGE})", f"right({key}, {_OF_A_RANGE})"), column)


def _accounts(table: LabelledTable, attribute: str) -> list[Form]:
    """The first word, and all behind it, such as a last name, a number and a domain."""
    if not table.has(attribute):
        return []
    column = table.column(attribute)
    text = plain(column)
    first, rest = (
        f"regexp_extract({text}, {quoted(_FIRST_WORD + '(.*)$')}, {group})" for group in (1, 2)
    )
    shape = f"regexp_replace(left({rest}, 1), '[0-9]', '0')"
    return [Form(text, (first, rest), column, shape)]


def plain(value: str) -> str:
    """A text without regard to case and to blanks around it."""
    return f"lower(trim({value}))"


def folded(value: str) -> str:
    """A text without regard to case, accents and blanks around it."""
    text = f"strip_accents({plain(value)})"
    for letter, plainly in _LETTERS.items():
        text = f"replace({text}, '{letter}', '{plainly}')"
    is_ascii = f"strlen({value}) = length({value})"  # as most are, which is quickly seen
    return f"CASE WHEN {is_ascii} THEN {plain(value)} ELSE {text} END"


def _words(name: str) -> str:
    """The words of a name, without titles, each but the first behind one blank."""
    untitled = f"regexp_replace({folded(name)}, {quoted(_TITLES)}, ' ', 'g')"
    return f"trim(regexp_replace({untitled}, {quoted(_NO_LETTERS)}, ' ', 'g'))"


def sorted_words(name: str) -> str:
    """The words of a name in any order, without titles, capitals, accents and signs."""
    return _sorted(_words(name))


def digits(number: str) -> str:
    """The digits of a telephone number."""
    return f"regexp_replace({number}, '[^0-9]', '', 'g')"


def _sorted(words: str) -> str:
    return f"array_to_string(list_sort(string_split({words}, ' ')), ' ')"


type Forms = Callable[[LabelledTable], list[Form]]

PARTS: Mapping[str, Forms] = {
    "E-mail address": addresses,
    "Username": usernames,
    "Telephone number": numbers,
    "Password": passwords,
}
"""What tells a person apart beside her name, by what it is called."""
