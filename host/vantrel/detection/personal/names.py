"""Recognises the names that columns of further personal data bear in European languages."""

from __future__ import annotations

from functools import cache

from vantrel.attributes import PHONES
from vantrel.detection.names import (
    OF_THE_COLUMN,
    OF_THINGS,
    PERSONS,
    PHONE,
    joined,
    kinds_beside_this_person,
    without_number,
    words_of,
)
from vantrel.detection.personal.kinds import Kind

_KNOWN = {
    Kind.NAME: """
        middle_name middle_names second_name additional_name maiden_name birth_name name_at_birth
        former_name previous_name alias_name known_as preferred_name initials name_suffix
        zweiter_vorname mittelname geburtsname mädchenname namenszusatz initialen künstlername
        deuxième_prénom nom_de_naissance nom_de_jeune_fille segundo_nombre segundo_apellido
        apellido_materno apellido_de_soltera secondo_nome cognome_da_nubile nome_do_meio
        nome_de_solteira tussenvoegsel meisjesnaam geboortenaam voorletters drugie_imię
        nazwisko_rodowe nazwisko_panieńskie patronymic otchestvo mellannamn mellomnavn mellemnavn
        rodné_příjmení leánykori_név születési_név
    """,
    Kind.PHONE: """
        emergency_contact emergency_number notfallkontakt notfallnummer contact_d_urgence
        contacto_de_emergencia contatto_di_emergenza contato_de_emergência noodcontact nödkontakt
    """,
    Kind.BIRTH: """
        dob date_of_birth birth_date birthday born born_on born_at bday year_of_birth
        birth_year yob geburtsdatum geburtstag geb_datum gebdat geboren geboren_am
        geburtsjahr geb_jahr
        date_de_naissance date_naissance naissance né_le née_le ddn année_de_naissance
        fecha_de_nacimiento fecha_nacimiento fecha_nac nacimiento año_de_nacimiento f_nac
        data_di_nascita data_nascita nascita nato_il anno_di_nascita data_de_nascimento
        data_nascimento nascimento ano_de_nascimento data_nasc dt_nascimento
        geboortedatum geboortedag geboortejaar data_urodzenia data_ur urodziny rok_urodzenia
        födelsedatum födelsedag födelseår född fødselsdato fødselsdag fødselsår født
        syntymäaika syntymäpäivä syntymävuosi datum_narození narozeni rok_narození
        dátum_narodenia rok_narodenia születési_dátum születési_idő születési_év születésnap
        data_nașterii anul_nașterii doğum_tarihi doğum_günü doğum_yılı datum_rođenja datum_rojstva
    """,
    Kind.STREET: """
        street street_name street_address address address_line address_line_one address_line_two
        addr addr_line postal_address mailing_address home_address residential_address full_address
        residence street_and_number street_line
        straße str strassenname hausadresse anschrift adresse postadresse
        wohnadresse lieferadresse rechnungsadresse lieferanschrift rechnungsanschrift wohnanschrift
        privatadresse straße_hausnummer straße_und_hausnummer straße_nr strasse_hausnr
        rue voie adresse_postale nom_de_rue ligne_adresse adresse_ligne domicile
        calle dirección domicilio dirección_postal vía
        indirizzo indirizzo_di_residenza residenza
        rua endereço morada logradouro straat straatnaam adres woonadres postadres bezoekadres
        ulica adres_zamieszkania adres_zameldowania gata gatuadress adress gatunamn
        gade gadenavn vej vejnavn veinavn gateadresse gatenavn bostedsadresse
        katuosoite osoite lähiosoite kotiosoite postiosoite adresa bydliště trvalé_bydliště
        adresa_bydliště ulice bydlisko utca cím lakcím strada sokak adres_satırı
    """,
    Kind.HOUSE_NUMBER: """
        house_number house_no house_nr street_number street_no building_number house_num
        hausnummer hausnr numéro_de_rue numéro_voie numéro_de_voie número_de_calle
        número_de_casa número_exterior numero_civico civico número_da_porta huisnummer huisnr
        numer_domu nr_domu husnummer husnr talonumero číslo_popisné číslo_domu házszám kapı_no
    """,
    Kind.POSTCODE: """
        postcode postal_code postal zip zip_code zip5 postleitzahl plz
        code_postal cp código_postal cod_postal c_postal codice_postale cap cep
        postnummer postnr kod_pocztowy postikoodi postinumero psč irányítószám
        irsz posta_kodu poštanski_broj poštna_številka eircode pincode
    """,
    Kind.CITY: """
        city town city_name municipality village place_of_residence hometown locality
        birth_place place_of_birth city_of_birth city_town
        stadt ort wohnort ortschaft gemeinde wohnsitz geburtsort ortsname
        ville commune lieu_de_naissance localité ciudad localidad población municipio
        lugar_de_nacimiento città comune luogo_di_nascita località
        cidade localidade concelho naturalidade plaats woonplaats stad gemeente
        geboorteplaats miasto miejscowość miejsce_urodzenia ort_postort postort stad_ort kommun
        by bynavn poststed kommune fødested kaupunki postitoimipaikka kunta syntymäpaikka
        město obec místo_narození miesto_narodenia város település születési_hely oraș
        localitate şehir ilçe grad
    """,
    Kind.ACCOUNT: """
        iban bank_account account_number account_no acct_no acct_number bank_account_number
        bank_account_no account_iban acct bban
        kontonummer konto_nr kto_nr kto bankkonto bankverbindung konto
        rib compte_bancaire numéro_de_compte no_compte cuenta_bancaria número_de_cuenta cuenta ccc
        clabe conto_corrente numero_conto conto nib conta_bancária número_da_conta
        rekeningnummer bankrekening bankrekeningnummer rekening numer_konta nr_konta
        numer_rachunku nr_rachunku rachunek bankkontonummer bankgiro plusgiro clearingnummer
        tilinumero pankkitili číslo_účtu bankovní_účet bankszámla bankszámlaszám
        cont_bancar hesap_no hesap_numarası
    """,
    Kind.CARD: """
        card_number card_no card_num credit_card credit_card_number cc_number cc_num
        cc_no ccn debit_card debit_card_number payment_card pan card_pan cvv cvc cvv2 card_cvc
        kartennummer kreditkarte kreditkartennummer karten_nr
        carte_bancaire numéro_de_carte carte_de_crédit tarjeta número_de_tarjeta tarjeta_de_crédito
        carta_di_credito numero_carta cartão cartão_de_crédito número_do_cartão
        creditcardnummer kaartnummer numer_karty kortnummer kortnr kreditkort kreditkortnummer
        korttinumero luottokortti číslo_karty kreditní_karta kártyaszám număr_card kart_no
        kart_numarası
    """,
    Kind.OFFICIAL: """
        ssn social_security_number social_security_no social_security social_sec_no sin itin
        national_insurance_number national_insurance nino ni_number nhs_number nhs_no
        tax_id tax_number tax_no tin taxpayer_id tax_identification_number taxpayer_number utr
        fiscal_code fiscal_number national_id national_id_number national_identification_number
        personal_id_number personal_identity_number personal_identification_number
        citizen_id insurance_number
        steuernummer steuer_nr steuer_id steueridentifikationsnummer idnr st_nr
        sozialversicherungsnummer sozialversicherungs_nr sv_nummer sv_nr
        rentenversicherungsnummer rv_nummer versichertennummer krankenversichertennummer ahv
        ahv_nummer ahv_nr
        nir numéro_de_sécurité_sociale numéro_sécurité_sociale no_sécu num_sécu insee
        numéro_fiscal numéro_insee registre_national numéro_national
        nif dni nie nss número_de_la_seguridad_social número_seguridad_social cif_nif dni_nie
        curp rfc cuil cuit rut codice_fiscale cod_fiscale codfisc cf
        niss contribuinte número_de_contribuinte número_de_identificação_fiscal cpf cpf_cnpj
        bsn burgerservicenummer sofinummer rijksregisternummer insz
        pesel nip numer_pesel nr_pesel personnummer person_nr samordningsnummer
        cpr cpr_nummer cpr_nr fødselsnummer hetu henkilötunnus sotu
        rodné_číslo adóazonosító adóazonosító_jel taj taj_szám cnp cod_numeric_personal
        tc_kimlik_no kimlik_no tckn tc_no oib emšo jmbg isikukood asmens_kodas personas_kods
        amka afm ppsn pps_number pps_no kennitala aadhaar aadhar tfn
    """,
    Kind.DOCUMENT: """
        passport passport_number passport_no identity_card identity_card_number id_card
        id_card_number driving_licence driving_license driver_license drivers_license
        drivers_licence driving_licence_number drivers_license_number licence_no
        reisepass reisepassnummer passnummer pass_nr personalausweis personalausweisnummer
        ausweisnummer ausweis_nr führerscheinnummer führerschein
        passeport numéro_de_passeport carte_d_identité permis_de_conduire pasaporte
        número_de_pasaporte carnet_de_conducir passaporto numero_passaporto carta_d_identità patente
        passaporte cartão_de_cidadão bilhete_de_identidade carta_de_condução paspoort
        paspoortnummer rijbewijs rijbewijsnummer paszport numer_paszportu dowód_osobisty
        numer_dowodu nr_dowodu prawo_jazdy pasnummer körkort pas_nr førerkort kørekort passi
        passinumero ajokortti číslo_pasu občanský_průkaz číslo_op útlevélszám személyi_szám
        pașaport serie_ci pasaport_no
    """,
    Kind.IP: """
        ip ip_address ip_addr ipv4 ipv6 ip_adresse ip_adres adresse_ip dirección_ip
        indirizzo_ip endereço_ip adres_ip ip_adress ip_osoite ip_adresa ip_cím adresă_ip
        remote_addr client_address
    """,
    Kind.DEVICE: """
        mac mac_address mac_addr mac_adresse imei imei_number imei_no meid imsi
        hardware_address adresse_mac dirección_mac indirizzo_mac mac_adres
    """,
    Kind.POSITION: """
        lat latitude lon lng long longitude latlng latlon lat_long lnglat lonlat
        coordinates coordinate coords geo geolocation geo_point location
        position gps gps_position gps_coordinates geom geometry
        breitengrad längengrad geo_breite geo_länge koordinaten standort geokoordinaten
        coordonnées latitud longitud coordenadas latitudine longitudine coordinate_gps
        breedtegraad lengtegraad coördinaten szerokość_geograficzna
        długość_geograficzna współrzędne breddgrad längdgrad koordinater breddegrad længdegrad
        lengdegrad leveysaste pituusaste koordinaatit zeměpisná_šířka zeměpisná_délka souřadnice
        szélességi_fok hosszúsági_fok enlem boylam
    """,
    Kind.PROFILE: """
        linkedin linkedin_url linkedin_profile xing facebook facebook_url facebook_id instagram
        twitter twitter_handle twitter_url tiktok github github_url profile_url profile_link
        profile_page skype skype_id mastodon bluesky
        profil_url profilseite
    """,
}  # fmt: skip

# Shops, events and flights have these, too.
_OF_THINGS_TOO = frozenset(
    {Kind.BIRTH, Kind.STREET, Kind.HOUSE_NUMBER, Kind.POSTCODE, Kind.CITY, Kind.POSITION}
)
# The values of these tell well whether they are what the name says, so that less of it is needed.
_TOLD_BY_VALUES = frozenset({Kind.ACCOUNT, Kind.CARD, Kind.OFFICIAL, Kind.IP, Kind.DEVICE})

# What the attributes are where they are those of a relative, or of what somebody was called before.
_BESIDE_A_PERSON = {
    **dict.fromkeys(("firstname", "lastname", "fullname"), Kind.NAME),
    **dict.fromkeys((PHONE, *PHONES), Kind.PHONE),
    "email": Kind.EMAIL,
}

# These say something only when they are the whole name ("approved_by" is no Danish town).
_ONLY_WHOLE = frozenset("by via cap cp cf cep cim grad geo location position".split())

# Addresses of another kind than postal ones.
_OF_NETWORKS = frozenset("email mail mails web wallet url http https bitcoin".split())


def kind_named(name: str) -> Kind | None:
    """Tells what a column holds by its name in any spelling: by all, its end or its beginning.

    Its beginning tells only if the rest is a person ("street_buyer") or the values decide.
    """
    words = without_number(words_of(name), _kinds())
    for start in range(len(words)):
        kind = _kind_of(words[start:], rest=words[:start])
        if kind:
            return kind
    for end in range(len(words) - 1, 0, -1):
        rest = words[end:]
        kind = _kind_of(words[:end], rest)
        if kind and (kind in _TOLD_BY_VALUES or PERSONS.issuperset(rest)):
            return kind
    beside = map(_BESIDE_A_PERSON.get, kinds_beside_this_person(name))
    return next(filter(None, beside), None)


def _kind_of(part: list[str], rest: list[str]) -> Kind | None:
    """What a part of a name says, unless the rest makes it a name of something else."""
    kind = _kinds().get("".join(part))
    if kind is None or (rest and part[0] in _ONLY_WHOLE and len(part) == 1):
        return None
    others = OF_THE_COLUMN | (OF_THINGS if kind in _OF_THINGS_TOO else frozenset())
    if kind is Kind.STREET:
        others |= _OF_NETWORKS
    return kind if others.isdisjoint(rest) else None


def is_of_a_thing(name: str) -> bool:
    """Tells whether a name is of a product, a firm or another thing."""
    return not OF_THINGS.isdisjoint(words_of(name))


@cache
def _kinds() -> dict[str, Kind]:
    """Maps names, folded and without gaps, to what they mean."""
    return {joined(name): kind for kind, names in _KNOWN.items() for name in names.split()}
