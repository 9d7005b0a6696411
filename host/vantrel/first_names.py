"""What Faker's lists of first names tell: which words are such, and whose gender they tell."""

from __future__ import annotations

import pkgutil
from collections import Counter
from collections.abc import Iterator, Mapping
from functools import cache
from importlib import import_module
from typing import Any

import faker.providers.person

# The languages that write names with capitals and whose tables are likeliest to come.
_LOCALES = """
    en_GB en_US de_DE de_AT de_CH fr_FR es_ES es_MX it_IT nl_NL nl_BE pl_PL pt_PT pt_BR sv_SE da_DK
    no_NO fi_FI cs_CZ sk_SK hu_HU ro_RO tr_TR hr_HR sl_SI
""".split()

# First names that are also words at the beginning of a sentence, months, places or goods.
_WORDS = frozenset(
    """
    abril alle among amor ante april art august austin beat bello berg best bett bill blanca bonnie
    brooklyn campo can cara carolina chance charity charlotte chase che chelsea chi christian cielo
    clair clay cliff dale dallas dawn day dean del della deviner dolores dom domenica domingo don
    drew duke durante dünya día earl eden else ever faith fleur floor florence forest franc francia
    frank gala gale gene georgia gioia glen gold golden grace grant grazia greco gun guy harmony
    hasta heather holly hope houston indie iris isla israel ivy jackson jersey job jordan joy juin
    julio june junio junior justice kapitola karta king klas kort lance land lane lien line london
    long lot love luce luna mad madison magni maj man mar mark martes may mercedes merit miles mille
    min mini mír nada norma nula oba olive ona page paris pat patience peace pearl penny per pero
    pietra precious price prima prince prudence queen ray rich river rob roman rosa rose royal ruby
    sad sage salud san sandy santa santiago savannah segundo sera server sever sky sol sole star
    steen stein stella sterling stone storm sue summer sunny sydney tage tan til tor trinity una uno
    urban valný van veer ver verde victoria vida vide villa ville vino vinný violet virginia vita
    von vorm wade ward washington west will wolf wood yeni young zak
    """.split()
)
_SHORTEST = 3

# One of these is in so many more lists of its gender that those of the other do not count.
_BY_FAR = 4


@cache
def genders_of_first_names(locale: str | None = None) -> Mapping[str, str]:
    """Maps first names, in lower case, to the key of the gender that they tell: "F" or "M".

    Args:
        locale: Whose lists count. If None, those of all: a name that is in many more lists of one
            gender than of the other tells that one.
    """
    lists = {"F": Counter[str](), "M": Counter[str]()}
    for provider in _providers(locale):
        for key, gender in (("F", "female"), ("M", "male")):
            lists[key].update({name.lower() for name in _list(provider, f"first_names_{gender}")})
    women, men = lists["F"], lists["M"]
    return {
        name: "F" if women[name] > men[name] else "M"
        for name in women | men
        if max(women[name], men[name]) >= _BY_FAR * min(women[name], men[name])
    }


@cache
def first_names() -> frozenset[str]:
    """The first names, in lower case, that are hardly ever something else."""
    names = {name for locale in _LOCALES for name in first_names_of(locale)}
    return frozenset({name for name in names if len(name) >= _SHORTEST} - _WORDS)


@cache
def first_names_of(locale: str) -> frozenset[str]:
    """The first names, in lower case, that people of a locale get."""
    return frozenset(
        name.lower()
        for provider in _providers(locale)
        for which in ("first_names", "first_names_female", "first_names_male")
        for name in _list(provider, which)
    )


def _providers(locale: str | None = None) -> Iterator[Any]:
    package = faker.providers.person
    for module in pkgutil.iter_modules(package.__path__):
        if locale in (None, module.name):
            yield import_module(f"{package.__name__}.{module.name}").Provider


def _list(provider: Any, name: str) -> Any:
    names = getattr(provider, name, ())
    return () if isinstance(names, property) else names
