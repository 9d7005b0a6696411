"""The genders of the model: their keys, and the patterns that tell them by genders and titles.

Each pattern is anchored at both ends and made of plain words, so that matching takes time linear
in the value. Blanks and full stops around a word do not count ("Mr", " mr. ").
"""

from __future__ import annotations

from collections.abc import Iterable
from typing import TYPE_CHECKING, Any

if TYPE_CHECKING:
    from vantrel.config import PersonModelConfig
    from vantrel.model.models.person import PersonModel

AMBIGUOUS = "A"

# The keys by which the model knows genders, each with its name in the configuration.
KEYS = {"F": "female", "M": "male", "NB": "non_binary", AMBIGUOUS: "ambiguous"}

_BLANKS = r"[\s.]"


def _one_of(words: str) -> str:
    """Makes an alternation of words; an underscore stands for an optional blank or hyphen."""
    return "|".join(word.replace("_", r"[\s-]?") for word in words.split())


def _whole_value(body: str) -> str:
    return f"^{_BLANKS}*(?:{body}){_BLANKS}*$"


_FEMALE = _one_of(
    "f fem female females feminine w woman women girl lady she she/her v vrouw frau weiblich"
    " femme féminin mujer femenino feminino femminile donna kvinna kvinne kvinde kobieta"
)
_MALE = _one_of(
    "m male males masculine man men boy gentleman he he/him mann männlich maennlich homme"
    " masculin hombre masculino uomo maschile maschio mężczyzna"
)
_NON_BINARY = _one_of(
    "nb enby non_binary x d diverse divers other gender_queer gender_fluid agender bigender"
    " two_spirit third_gender neutral they they/them"
)
_CIS_OR_TRANS = r"(?:(?:cis|trans)(?:gender)?[\s-]?)?"

GENDER_FEMALE = _whole_value(f"{_CIS_OR_TRANS}(?:{_FEMALE})")
GENDER_MALE = _whole_value(f"{_CIS_OR_TRANS}(?:{_MALE})")
GENDER_NON_BINARY = _whole_value(_NON_BINARY)

_WOMENS_TITLES = _one_of(
    "mrs miss ms mistress madam madame mme mademoiselle mlle lady dame queen empress princess"
    " duchess marchioness countess viscountess baroness abbess sister frau fräulein fraulein"
    " señora senora sra señorita senorita srta doña dona signora signorina mevrouw mevr"
)
_FURTHER_WOMENS_TITLES = _one_of(
    r"sig\.?ra sig\.?na pani paní slečna gospođa gospa doamna d_na ibu bà"
    " госпожа г_жа пані κυρία κα श्रीमती นาง นางสาว"
)
_MENS_TITLES = _one_of(
    "mr mister master mstr sir lord king emperor prince duke marquess marquis earl count viscount"
    " baron jonkheer jhr esq esquire father fr brother abbot herr monsieur m señor senor sr don"
    " signor signore dhr meneer"
)
_FURTHER_MENS_TITLES = _one_of(
    "sig pan pán gospodin gospod domnul d_l bapak ông господин г_н пан κύριος κος श्री นาย"
)
_EITHERS_TITLES = _one_of(
    "dr doctor prof professor rev revd reverend canon dean pastor bishop archbishop rabbi imam"
    " chaplain hon honourable honorable judge justice chancellor president pres minister"
    " ambassador amb senator sen governor gov mayor col colonel maj major capt captain lt"
    " lieutenant gen general brig brigadier adm admiral commodore cdr cmdr commander sgt sergeant"
    " cpl corporal pvt private officer"
)
_ARTICLE = r"(?:the\s)?"
_EITHERS = rf"(?:{_EITHERS_TITLES})(?:{_BLANKS}+(?:{_EITHERS_TITLES}))*"


def _title(body: str) -> str:
    return _whole_value(f"{_ARTICLE}(?:{body}|{_EITHERS})")


TITLE_FEMALE = _title(f"{_WOMENS_TITLES}|{_FURTHER_WOMENS_TITLES}")
TITLE_MALE = _title(f"{_MENS_TITLES}|{_FURTHER_MENS_TITLES}")
TITLE_NON_BINARY = _whole_value(_one_of("mx ind per misc mre"))

_GENDERS = (GENDER_FEMALE, GENDER_MALE, GENDER_NON_BINARY)
_TITLES = (TITLE_FEMALE, TITLE_MALE, TITLE_NON_BINARY)
# Those of model files that are older than the further titles.
_FORMER_TITLES = (_title(_WOMENS_TITLES), _title(_MENS_TITLES))

DEFAULT_PATTERNS = frozenset((*_GENDERS, *_TITLES, *_FORMER_TITLES))


def by_gender(
    values: Iterable[Any], config: PersonModelConfig, attribute: str
) -> dict[str, list[Any]]:
    """Sorts genders or titles by the patterns of a configuration.

    Args:
        values: The values; those that no pattern matches are left out.
        config: The patterns.
        attribute: "gender" or "title".

    Returns:
        From each of the :data:`KEYS` to its distinct values. Those of several genders are under the
        ambiguous key.
    """
    from vantrel.util.person import collections_from_mapping

    patterns = {
        key: getattr(config, f"{attribute}_{name}_regex")
        for key, name in KEYS.items()
        if key != AMBIGUOUS
    }
    return collections_from_mapping(values, patterns, AMBIGUOUS)


def keys_of(values: Iterable[Any], config: PersonModelConfig, attribute: str) -> dict[Any, str]:
    """Maps genders or titles to their keys; those that no pattern matches are left out."""
    texts = (value for value in values if isinstance(value, str))
    sorted_values = by_gender(texts, config, attribute)
    return {value: key for key, those in sorted_values.items() for value in those}


def learnt_by_gender(model: PersonModel, attribute: str) -> dict[str, list[Any]]:
    """Sorts the genders or titles that a model has learnt, as :func:`by_gender` does."""
    categories = model.meta[getattr(model.labels, attribute)].categories
    return by_gender(categories or (), model.config, attribute)


def understood(collections: dict[str, list[Any]]) -> set[Any]:
    """Collects the values of all genders."""
    return {value for values in collections.values() for value in values}
