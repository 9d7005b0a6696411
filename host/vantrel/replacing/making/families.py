"""Family names that people of one household share, in the form of each one's gender."""

from __future__ import annotations

from collections.abc import Collection, Mapping, Sequence

import pyarrow as pa
import pyarrow.compute as pc

# Languages in which the last names of women end otherwise than those of men, in ways known here.
_WITH_FORMS = frozenset("cs sk pl ru uk bg mk".split())

# How men's names end and women's of the same family; the surest come first.
_ENDINGS = (
    ("", ""),
    ("ek", "ková"),
    ("ec", "cová"),
    ("el", "lová"),
    ("a", "ová"),
    ("o", "ová"),
    ("", "ová"),
    ("ý", "á"),
    ("i", "a"),
    ("ski", "ska"),
    ("cki", "cka"),
    ("ий", "ая"),
    ("ый", "ая"),
    ("ой", "ая"),
    ("ски", "ска"),
    ("ський", "ська"),
    ("цький", "цька"),
    ("", "а"),
    ("", "a"),
    ("is", "e"),
    ("s", "a"),
    ("š", "a"),
)

# Take from folded names what tells a gender, one after the other, so that those of a family are
# alike. Behind a name there may be a first one, after a comma.
_STEMS = (
    (r"([^,]{2})(?:ova?|ая|яя|ии|ыи|ои|[aeiouyаио])(\s*,.*)?$", r"\1\2"),
    (r"([^,]{2})e([ckl])(\s*,.*)?$", r"\1\2\3"),
)


def has_forms(locale: str) -> bool:
    """Whether the last names of men and women of a locale's families differ."""
    return locale.partition("_")[0] in _WITH_FORMS


def stems(names: pa.Array) -> pa.Array:
    """Gives folded names whose last one is without what tells a gender."""
    for ending, rest in _STEMS:
        names = pc.replace_substring_regex(names, ending, rest)
    return names


def forms_of(men: Sequence[str], women: Collection[str]) -> Mapping[str, str]:
    """Gives for men's last names those of women of the same families, as far as both are known.

    Args:
        men: The last names that men may have.
        women: Those that women may have.
    """
    known = frozenset(women)
    found = {}
    for name in men:
        forms = (name[: len(name) - len(he)] + she for he, she in _ENDINGS if name.endswith(he))
        form = next((form for form in forms if form in known), None)
        if form is not None:
            found[name] = form
    return found
