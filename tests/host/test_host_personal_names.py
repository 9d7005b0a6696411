"""Columns that are told by their names to be personal."""

from __future__ import annotations

import pandas as pd
import pytest

from vantrel.detection.personal import Finding, Kind, find_personal

# Too few to tell anything by themselves.
VALUES = {
    Kind.NAME: ["Maria", "J.", "von der Aue"],
    Kind.EMAIL: ["maria@example.org", "j@example.com", "vda@example.org"],
    Kind.PHONE: ["+44 7700 900123", "020 7946 0001", "(0161) 496-0002"],
    Kind.BIRTH: ["1984-02-29", "2001-07-01", "1955-11-30"],
    Kind.STREET: ["Unter den Linden 5", "Rue de la Paix 7", "Storgatan"],
    Kind.HOUSE_NUMBER: ["5", "12b", "7-9"],
    Kind.POSTCODE: ["10117", "SW1A 1AA", "00-950"],
    Kind.CITY: ["Berlin", "La Paz", "Óbidos"],
    Kind.ACCOUNT: ["GB82 WEST 1234 5698 7654 32", "0123456789", "12-3456-7890"],
    Kind.CARD: ["4111 1111 1111 1111", "XXXX-XXXX-XXXX-1234", "5500005555555559"],
    Kind.OFFICIAL: ["12/345/67890", "AB123456C", "850101-1234"],
    Kind.DOCUMENT: ["C01X00T47", "L898902C", "123456789"],
    Kind.IP: ["10.0.0.1", "192.168.7.5", "2001:db8::1"],
    Kind.DEVICE: ["00:1b:63:84:45:e6", "490154203237518", "00-1B-63-84-45-E7"],
    Kind.POSITION: ["52.5163", "-13.3777", "48.8"],
    Kind.PROFILE: ["@ann.lee", "https://example.org/ann", "bo_ray"],
}
NAMES = {
    Kind.BIRTH: [
        "dob", "date_of_birth", "Birth Date", "customerBirthday", "DOB (patient)", "birth_year",
        "Geburtsdatum", "geb. am".replace(" am", "_datum"), "date de naissance", "fecha_nacimiento",
        "data di nascita", "DataNascimento", "geboortedatum", "data_urodzenia", "Födelsedatum",
        "fødselsdato", "syntymäaika", "datum narození", "születési dátum", "doğum tarihi",
        "data nașterii", "child_dob",
    ],
    Kind.STREET: [
        "street", "Street Address", "address_line_1", "address2", "billing_street", "shippingAddress",
        "street_buyer", "Straße", "Strasse", "Lieferadresse", "Anschrift", "rue", "adresse postale",
        "calle", "dirección", "indirizzo", "endereço", "morada", "adres", "ulica", "gatuadress",
        "vejnavn", "katuosoite", "adresa bydliště",
    ],
    Kind.HOUSE_NUMBER: [
        "house_number", "HouseNo", "Hausnummer", "numéro de rue", "número exterior",
        "numero civico", "huisnummer", "nr_domu", "husnummer", "talonumero", "číslo popisné",
    ],
    Kind.POSTCODE: [
        "postcode", "zip", "ZIP Code", "billing_zip", "PLZ", "Postleitzahl", "code postal", "cp",
        "código postal", "cap", "cep", "postnummer", "kod pocztowy", "postinumero", "PSČ",
        "zip_recipient",
    ],
    Kind.CITY: [
        "city", "shipping_city", "Town", "Ort", "Wohnort", "ville", "ciudad", "città", "comune",
        "cidade", "woonplaats", "miasto", "postort", "poststed", "by", "kaupunki", "město",
        "place_of_birth", "Geburtsort",
    ],
    Kind.ACCOUNT: [
        "iban", "IBAN Kunde", "bank_account", "account number", "Kontonummer", "Kto.-Nr.", "RIB",
        "número de cuenta", "numero conto", "NIB", "rekeningnummer", "nr_konta", "tilinumero",
        "číslo účtu",
    ],
    Kind.CARD: [
        "card_number", "creditCard", "cc_number", "PAN", "Kreditkartennummer", "numéro de carte",
        "tarjeta de crédito", "carta di credito", "número do cartão", "numer_karty", "kortnummer",
    ],
    Kind.OFFICIAL: [
        "ssn", "SSN_applicant", "tax_id", "national insurance number", "Steuernummer", "Steuer-ID",
        "SV-Nummer", "NIR", "numéro de sécurité sociale", "NIF", "DNI", "codice fiscale",
        "contribuinte", "CPF", "BSN", "PESEL", "personnummer", "CPR-nr", "fødselsnummer", "hetu",
        "rodné číslo", "CNP", "TC Kimlik No", "OIB", "adóazonosító",
    ],
    Kind.DOCUMENT: [
        "passport_no", "Reisepassnummer", "driving licence", "numéro de passeport", "pasaporte",
        "carta d'identità", "rijbewijs", "nr_dowodu", "körkort",
    ],
    Kind.IP: ["ip", "ip_address", "last_login_ip", "IP-Adresse", "adresse IP", "ip_of_client"],
    Kind.DEVICE: ["mac", "mac_address", "IMEI", "device_imei", "MAC-Adresse"],
    Kind.POSITION: [
        "lat", "longitude", "home_lng", "Breitengrad", "latitud", "longitudine", "breddegrad",
        "gps_coordinates", "szerokość geograficzna",
    ],
    Kind.NAME: [
        "middle_name", "Geburtsname", "maiden name", "initials", "segundo apellido",
        "spouse_first_name", "formerLastName",
    ],
    Kind.EMAIL: ["spouse_email", "parentEmailAddress", "email (next of kin)", "old_email", "mothers_email"],
    Kind.PHONE: [
        "mother_phone", "next_of_kin_phone", "emergency_phone", "guardianMobile", "spouse work phone",
        "emergency_contact_phone", "emergency_contact", "previous_phone_2", "Notfallkontakt",
    ],
    Kind.PROFILE: ["linkedin", "twitter_handle", "github_url", "xing", "Profile URL"],
}  # fmt: skip


def found(name: str, values: list[str]) -> tuple[Finding, ...]:
    return find_personal(pd.DataFrame({"n": ["x"] * len(values), name: values}))


@pytest.mark.parametrize(
    ("kind", "name"), [(kind, name) for kind, names in NAMES.items() for name in names]
)
def test_names_in_common_spellings(kind: Kind, name: str) -> None:
    assert found(name, VALUES[kind]) == (Finding(name, kind, "its name says so"),)


def test_every_kind_but_that_of_texts_has_names() -> None:
    assert {*NAMES} == {*VALUES} == {*Kind} - {Kind.PEOPLE, Kind.PROSE}


@pytest.mark.parametrize(
    ("name", "values"),
    [
        ("dob", ["yes", "no", "yes"]),
        ("middle_name", ["1", "2", "3"]),
        ("birthday", ["1684-01-01", "1685-03-31", "1756-01-27"]),
        ("date of birth", ["2984-02-29", "3001-07-01", "2955-11-30"]),
        ("address", ["ann@example.org", "bo@example.org", "cy@example.org"]),
        (
            "address",
            ["0x52908400098527886E0F7030069857D2E4169EE7", "0x" + "8" * 40, "0x" + "7" * 40],
        ),
        ("street number", ["five", "six", "seven"]),
        ("zip", ["report.zip", "archive.tar.gz", "notes.zip"]),
        ("city", ["12.5", "13.0", "99.9"]),
        ("account_no", ["A1", "A2", "A3"]),
        ("iban", ["2024-01-01 10:00:00", "2024-01-02 11:00:00", "2024-01-03 09:00:00"]),
        ("pan", ["left", "right", "left"]),
        ("tin", ["yes", "no", "no"]),
        ("sin", ["0.8414709848", "0.9092974268", "0.1411200081"]),
        ("ip", ["1", "2", "3"]),
        ("mac", ["Air", "Mini", "Pro"]),
        ("position", ["1", "2", "3"]),
        ("position", ["Manager", "Clerk", "Analyst"]),
        ("lat", ["512.25", "634.5", "999.75"]),
        ("linkedin", ["yes", "no", "yes"]),
        ("mother_phone", ["yes", "no", "no"]),
        ("spouse_email", ["private", "none", "work"]),
    ],
)
def test_a_name_that_its_values_contradict(name: str, values: list[str]) -> None:
    assert found(name, values) == ()


@pytest.mark.parametrize(
    ("name", "kind"),
    [
        ("store_city", Kind.CITY), ("company_street", Kind.STREET), ("event location", Kind.POSITION),
        ("warehouse", Kind.STREET), ("hotel_postcode", Kind.POSTCODE), ("origin_lat", Kind.POSITION),
        ("approved_by", Kind.CITY), ("ordered via", Kind.STREET), ("market_cap", Kind.POSTCODE),
        ("city_tax", Kind.CITY), ("street_count", Kind.HOUSE_NUMBER), ("capacity", Kind.CITY),
        ("web_address", Kind.STREET), ("address_type", Kind.STREET), ("birth_weight", Kind.POSITION),
        ("pet_birthday", Kind.BIRTH), ("birthday_gift_sent", Kind.BIRTH),
        ("iban_verified", Kind.ACCOUNT), ("ssn_hash", Kind.OFFICIAL), ("zip_file", Kind.POSTCODE),
        ("company_phone", Kind.PHONE), ("parent_company_phone", Kind.PHONE),
        ("spouse_email_verified", Kind.EMAIL), ("place_name", Kind.NAME),
        ("description", Kind.CITY), ("id", Kind.OFFICIAL), ("shipping", Kind.DOCUMENT),
    ],
)  # fmt: skip
def test_names_of_something_else(name: str, kind: Kind) -> None:
    assert found(name, VALUES[kind]) == ()


def test_half_of_the_values_may_be_others() -> None:
    assert found("city", ["Berlin", "Paris", "1", "2"])
    assert not found("city", ["Berlin", "Paris", "1", "2", "3"])


def test_the_values_are_named_if_they_tell_as_much() -> None:
    ibans = ["GB82WEST12345698765432", "DE89370400440532013000", "FR1420041010050500013M02606",
             "NL91ABNA0417164300", "ES9121000418450200051332"]  # fmt: skip
    why = "its name says so, and 100% of its different values are valid IBANs"
    assert found("konto", ibans) == (Finding("konto", Kind.ACCOUNT, why),)


def test_values_of_a_form_of_their_own_are_surer_than_a_name() -> None:
    ips = [f"192.168.0.{part}" for part in range(1, 9)]
    why = "100% of its different values are IP addresses"
    assert found("address", ips) == (Finding("address", Kind.IP, why),)


def test_a_town_named_after_somebody_is_still_a_town() -> None:
    towns = ["Anna Maria", "Thomas Town", "George West", "Helen Mills", "Maria Stein"]
    assert [finding.kind for finding in found("city", towns)] == [Kind.CITY]
    assert [finding.kind for finding in found("x", towns)] == [Kind.PEOPLE]


@pytest.mark.parametrize("name", ["next_of_kin", "created", "updated_by", "guardian (any)"])
@pytest.mark.parametrize(
    ("kind", "what", "values"),
    [
        (Kind.EMAIL, "e-mail addresses", [f"q{n}@example.org" for n in range(5)]),
        (Kind.PHONE, "telephone numbers", [f"+44 7700 90000{n}" for n in range(5)]),
    ],
)
def test_values_by_which_others_can_be_reached(
    name: str, kind: Kind, what: str, values: list[str]
) -> None:
    assert found(name, values) == (Finding(name, kind, f"100% of its different values are {what}"),)
    for other in ("x", "shop_contact"):  # the person's own, or of a thing
        assert found(other, values) == ()
    assert found(name, [value.replace("@", "").lstrip("+") for value in values]) == ()
