"""The default patterns that tell genders and titles apart.

Each pattern is anchored at both ends and made of plain words, so that matching takes time linear
in the value. Blanks and full stops around a word do not count ("Mr", " mr. ").
"""

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
_MENS_TITLES = _one_of(
    "mr mister master mstr sir lord king emperor prince duke marquess marquis earl count viscount"
    " baron jonkheer jhr esq esquire father fr brother abbot herr monsieur m señor senor sr don"
    " signor signore dhr meneer"
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

TITLE_FEMALE = _whole_value(f"{_ARTICLE}(?:{_WOMENS_TITLES}|{_EITHERS})")
TITLE_MALE = _whole_value(f"{_ARTICLE}(?:{_MENS_TITLES}|{_EITHERS})")
TITLE_NON_BINARY = _whole_value(_one_of("mx ind per misc mre"))
