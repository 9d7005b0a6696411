"""Recognises the names that person columns bear in common European languages.

A name is folded first: ``First Name``, ``first_name``, ``firstName`` and ``FIRST-NAME`` are one
name, and so are ``Prénom`` and ``prenom``.
"""

from __future__ import annotations

import re
import unicodedata
from collections.abc import Container
from enum import IntEnum
from functools import cache
from itertools import product

# What a column may be found to be: an attribute of a person, or one of these, whose attribute
# depends on the other columns or the values: a telephone of no kind, a name of no kind, and
# somebody, who may be named by a number as well.
PHONE = "phone"
NAME = "name"
SOMEBODY = "somebody"


class Match(IntEnum):
    """How a column's name says what the column is, the surest first."""

    WHOLE = 0
    PARTLY = 1


_KNOWN = {
    "gender": """
        gender sex sexe genre genero género sexo sesso genere geschlecht kön kjønn køn geslacht
        płeć sukupuoli pohlaví pohlavie gen cinsiyet nem spol gender_code sex_code gender_name
        gender_identity m_f f_m m_w m_w_d pronouns
    """,
    "title": """
        title salutation honorific courtesy_title name_title name_prefix prefix person_title anrede
        titel titre civilité tratamiento título titulo tratamento titolo aanhef tilltal tittel
        tytuł tytul zwrot oslovení osloveni titul hitap
    """,
    "firstname": """
        first_name fname first forename forenames given given_name given_names name_first
        first_names vorname vornamen rufname prénom prénoms nombre_de_pila primer_nombre
        primeiro_nome prenome voornaam voornamen förnamn fornavn imię imie etunimi jméno krestní
        křestní_jméno keresztnév prenume ime christian_name
    """,
    "lastname": """
        last_name lname last surname family_name name_last nachname familienname
        zuname nom_de_famille nom_famille patronyme apellido apellidos primer_apellido sobrenome
        apelido cognome achternaam familienaam efternamn etternavn efternavn nazwisko sukunimi
        příjmení priezvisko vezetéknév prezime soyad soyadı
    """,
    "fullname": """
        full_name complete_name whole_name person_name name_full vollständiger_name
        vollstaendiger_name vor_und_nachname vorname_nachname nom_complet nombre_completo
        nome_completo volledige_naam fullständigt_namn fuldt_navn fullt_navn imię_i_nazwisko
        koko_nimi celé_jméno teljes_név first_and_last_name
    """,
    "email": """
        email e_mail mail email_address e_mail_address mail_address email_id e_mail_adresse
        mailadresse e_post epost epostadress correo correo_electrónico courriel adresse_mail
        adresse_email posta_elettronica correio_eletrónico indirizzo_email emailadres sähköposti
        eposta
    """,
    "username": """
        username user_name user login login_name user_login nickname
        nick screen_name handle benutzername benutzer nutzername anmeldename
        nom_d_utilisateur usuario nombre_de_usuario nome_utente utente nome_de_usuário
        gebruikersnaam användarnamn brukernavn brugernavn nazwa_użytkownika użytkownik
        käyttäjätunnus uživatelské_jméno
    """,
    "password": """
        password passwd pwd passphrase passwort kennwort passwort_klartext mot_de_passe mdp
        contraseña senha wachtwoord lösenord passord adgangskode hasło salasana heslo
        jelszó parola şifre
    """,
    "country": """
        country country_code country_name country_iso iso_country country_iso2 country_iso3
        country_iso_2 country_iso_3 iso2 iso3 iso_2 iso_3 nation nationality citizenship
        country_region country_of_residence country_of_birth country_of_origin land
        ländercode laendercode
        länderkürzel landcode land_code landkod landkode landeskennzeichen staat nationalität
        nationalitaet staatsangehörigkeit staatsangehoerigkeit staatsbürgerschaft pays code_pays
        nationalité país pais código_país nacionalidad nacionalidade paese nazione nazionalità
        nationaliteit nationalitet kraj narodowość obywatelstwo maa kansalaisuus země krajina
        ország ţară țară ülke locale
    """,
    NAME: """
        name names nombre nombres nom nome naam namn navn nimi név nev nume ad
    """,
    SOMEBODY: """
        customer client buyer purchaser seller recipient addressee contact contact_person employee
        cardholder card_holder account_holder accountholder holder owner tenant passenger guest
        patient student driver signatory payee ship_to bill_to sold_to sent_to
        kunde kundin kundenname kundinname käufer verkäufer besteller auftraggeber empfänger
        empfaenger empfängername ansprechpartner ansprechpartnerin ansprechperson kontaktperson
        kontoinhaber karteninhaber mieter mitarbeiter mitarbeiterin mitarbeitername teilnehmer
        patientenname versicherter bearbeiter sachbearbeiter
        client destinataire titulaire acheteur salarié destinatario titular contacto cliente
        empleado intestatario contatto acquirente dipendente contato funcionário ontvanger
        contactpersoon klant rekeninghouder medewerker odbiorca klient pracownik mottagare kund
        modtager modtaker mottaker asiakas vastaanottaja zákazník příjemce ügyfél címzett
    """,
}  # fmt: skip

_PHONES = """
    phone telephone tel telefon telefono teléfono telefone téléphone telefoon puhelin phone_number
    telephone_number telefonnummer rufnummer phone_no tel_no tel_nr telefon_nr telefonnr
    contact_number contact_no
    numéro_de_téléphone número_de_teléfono numero_di_telefono telefoonnummer puhelinnumero
    numer_telefonu
"""
_KINDS_OF_PHONES = {
    "mobile_number": """
        mobile cell cellular mobil mobiel móvil movil celular cellulare portable gsm handy komórkowy
        telemóvel
    """,
    "home_number": """
        home private privat landline fixed festnetz fixe fijo casa domicile domicilio fisso fixo
        thuis vast hem hjem domowy koti evening
    """,
    "work_number": """
        work office business company daytime arbeit büro buero dienst dienstlich geschäftlich
        geschaeftlich pro professionnel bureau travail trabajo oficina lavoro ufficio trabalho werk
        kantoor arbete arbets arbeid arbejde służbowy praca työ
    """,
}
# These say by themselves which telephone it is.
_PHONES_OF_A_KIND = {
    "mobile_number": """
        mobile mobile_number mobile_no cell cell_number cellphone cellular gsm msisdn handy
        handynummer handynr mobil mobilnummer
        mobiltelefon mobilnr mobiel móvil celular cellulare portable telemóvel komórka
        matkapuhelin kännykkä
    """,
    "home_number": """
        home_number landline landline_number festnetz festnetznummer privattelefon fixe
    """,
    "work_number": """
        work_number office_number diensttelefon dienstnummer diensthandy arbeitstelefon direct_dial
    """,
}

# A name with one of these is of something or somebody else, or not of the value itself.
OF_THINGS = frozenset(
    """
    company firm firma organisation organization employer shop store vendor supplier
    product item article book song film movie album track file folder host domain server device
    page event project team job campaign course school university hotel
    species breed pet animal dog cat horse vessel destination origin manufacturer made
    """.split()
)
OF_THE_COLUMN = frozenset(
    """
    date time timestamp created updated modified count length verified valid confirmed optin opt
    has is hash salt type format status flag fax attempts visible
    """.split()
)


def owning(words: str) -> frozenset[str]:
    """Adds the forms of words that "mothers_email" has, which names write without an apostrophe."""
    return frozenset(word + end for word in words.split() for end in ("", "s"))


# People who belong to this one.
RELATIVES = owning(
    """
    mother father parent spouse partner husband wife child emergency kin next guardian referee
    ehepartner ehepartnerin ehemann ehefrau
    """
)
_OTHERWISE_CALLED = frozenset("middle maiden former previous old alias".split())
_OF_OTHERS = (
    OF_THINGS
    | OF_THE_COLUMN
    | RELATIVES
    | _OTHERWISE_CALLED
    | frozenset("street city town place region state currency language lang ip".split())
)
# These say something only when they are the whole name ("last_visit" is no surname).
_ONLY_WHOLE = frozenset("first last given user login handle nick nickname".split())

# The values of these tell whether they are what the name says, so that less of it is needed.
_TOLD_BY_VALUES = frozenset(
    {"gender", "title", "email", "country", "mobile_number", "home_number", "work_number", PHONE}
)

# Before a name of no kind only these leave it a person's.
PERSONS = frozenset(
    """
    person people emp cust customer client kunde kunden klant cliente employee staff worker
    mitarbeiter user member mitglied patient contact guest gast passenger student pupil teacher
    applicant candidate bewerber owner holder cardholder account subscriber buyer seller recipient
    sender author respondent participant teilnehmer driver tenant donor display legal complete whole
    billing shipping ansprechpartner ihr your dein
    """.split()
)

_WORDS = re.compile(r"[a-z]+|\d+")
# Between a small letter and a capital, and before the last of several capitals ("HTTPName").
_CAMEL_BORDER = re.compile(r"(?<=[a-z])(?=[A-Z])|(?<=[A-Z])(?=[A-Z][a-z])")
# Letters that are not a plain one with a mark.
_UNMARKED = str.maketrans({"ł": "l", "Ł": "L", "ø": "o", "Ø": "O", "ı": "i", "ß": "ss", "æ": "ae"})


def words_of(name: str) -> list[str]:
    """Splits a column's name into small words of plain letters and numbers."""
    return _WORDS.findall(_CAMEL_BORDER.sub(" ", _unmarked(name)).lower())


def plain(text: str) -> str:
    """Folds a text to small letters without marks."""
    return _unmarked(text).lower()


def _unmarked(text: str) -> str:
    decomposed = unicodedata.normalize("NFKD", text.translate(_UNMARKED))
    return "".join(c for c in decomposed if not unicodedata.combining(c))


def without_number(words: list[str], known: Container[str]) -> list[str]:
    """Leaves out numbers at the end, as of "email 2", that are no part of a known name."""
    while len(words) > 1 and words[-1].isdigit() and "".join(words) not in known:
        words = words[:-1]
    return words


def kinds_of(name: str) -> dict[str, Match]:
    """Tells what a column may be by its name.

    Args:
        name: The column's name in any spelling.

    Returns:
        From attribute, ``PHONE`` or ``NAME`` to how the name says so; empty if it says nothing.
        At most one kind is meant by the whole name.
    """
    words = without_number(words_of(name), _kinds())
    if whole := whole_kind(words):
        return {whole: Match.WHOLE}
    return {} if is_of_others(name) else dict.fromkeys(_kinds_of_parts(words), Match.PARTLY)


def kinds_beside_this_person(name: str) -> list[str]:
    """Tells what a column may be that is of a relative, or of what this person was called before.

    A part says so, such as "phone" beside "mother". Names of things and of columns say nothing.
    """
    words = without_number(words_of(name), _kinds())
    is_beside = not (RELATIVES | _OTHERWISE_CALLED).isdisjoint(words)
    is_of_a_person = (OF_THINGS | OF_THE_COLUMN).isdisjoint(words)
    return _kinds_of_parts(words) if is_beside and is_of_a_person else []


def _kinds_of_parts(words: list[str]) -> list[str]:
    """The kinds that the ends and beginnings of a name say."""
    found = []
    for border in range(1, len(words)):
        for part, rest, at_the_end in (
            (words[border:], words[:border], True),
            (words[:border], words[border:], False),
        ):
            kind = _kind_of_part(part, rest, at_the_end)
            if kind:
                found.append(kind)
    return found


def _kind_of_part(part: list[str], rest: list[str], at_the_end: bool) -> str | None:
    joined = "".join(part)
    kind = _kinds().get(joined)
    if kind is None or joined in _ONLY_WHOLE or not (at_the_end or kind in _TOLD_BY_VALUES):
        return None
    return kind if kind != NAME or PERSONS.issuperset(rest) else None


def whole_kind(words: list[str]) -> str | None:
    """Tells what the words of a name mean together, if that is known."""
    return _kinds().get("".join(without_number(words, _kinds())))


def names_of_kind(kind: str) -> list[str]:
    """The names, as they are written, that columns of a kind bear."""
    return _KNOWN[kind].split()


def is_of_others(name: str) -> bool:
    """Tells whether a name is of something that is not this person."""
    return not _OF_OTHERS.isdisjoint(words_of(name))


@cache
def _kinds() -> dict[str, str]:
    """Maps names, folded and without gaps, to what they mean."""
    kinds: dict[str, str] = {}
    for kind, names in _KNOWN.items():
        kinds |= {joined(name): kind for name in names.split()}
    phones = _PHONES.split()
    kinds |= {joined(name): PHONE for name in phones}
    for kind, kind_words in _KINDS_OF_PHONES.items():
        for word, phone in product(kind_words.split(), phones):
            kinds[joined(word + phone)] = kind
            kinds[joined(phone + word)] = kind
        kinds |= {joined(name): kind for name in _PHONES_OF_A_KIND[kind].split()}
    return kinds


def joined(name: str) -> str:
    """Folds a name and leaves out its gaps."""
    return "".join(words_of(name))
