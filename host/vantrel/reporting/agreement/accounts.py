"""Whether e-mail addresses and user names go with the names of their rows."""

from __future__ import annotations

from vantrel.reporting.agreement.rates import MOST_EXAMPLES, Contradictions
from vantrel.reporting.labelled import LabelledTable
from vantrel.reporting.nearness.forms import folded, whole_names

# Letters that are written in two ways without accents, as "Müller" is "muller" or "mueller".
_TWO_WAYS = ("ae", "oe", "ue", "aa")

# Initials and short names are in most addresses by chance.
_SHORTEST = 3

_COUNTED = """
    WITH rows AS (
        SELECT {account} AS account, {one_way} AS one_way, {shown} AS shown,
            list_filter({words}, lambda word: length(word) >= {shortest}) AS words
        FROM {{rows}}
    ),
    told AS (
        SELECT shown, len(list_filter(
            words, lambda word: contains(account, word) OR contains(one_way, {word_one_way})
        )) > 0 AS agrees
        FROM rows
        WHERE account <> '' AND len(words) > 0
            AND regexp_full_match(array_to_string(words, ''), '[a-z]+')
    )
    SELECT count(*), count(*) FILTER (NOT agrees), min(shown, {most}) FILTER (NOT agrees) FROM told
"""


def accounts_against_names(table: LabelledTable, attribute: str) -> Contradictions | None:
    """Counts the addresses or user names that have no word of their row's name in them.

    Names that are not written in Latin letters tell nothing.
    """
    names = whole_names(table)
    if not (names and table.has(attribute)):
        return None
    column = table.column(attribute)
    local = f"split_part({folded(column)}, '@', 1)"
    ((looked_at, against, examples),) = table.table.query(
        _COUNTED.format(
            account=_letters(local),
            one_way=_letters(_one_way(local)),
            words=f"string_split({names[0].key}, ' ')",
            word_one_way=_one_way("word"),
            shown=f"concat_ws(', ', {names[0].shown}, {column})",
            shortest=_SHORTEST,
            most=MOST_EXAMPLES,
        )
    )
    return Contradictions(looked_at, against, tuple((each, 1) for each in examples or ()))


def _letters(text: str) -> str:
    return f"regexp_replace({text}, '[^a-z]', '', 'g')"


def _one_way(text: str) -> str:
    for letters in _TWO_WAYS:
        text = f"replace({text}, '{letters}', '{letters[0]}')"
    return text
