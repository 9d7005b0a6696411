"""Names and values that columns of people have."""

ATTRIBUTES = [
    "gender",
    "title",
    "firstname",
    "lastname",
    "fullname",
    "email",
    "username",
    "password",
    "mobile_number",
    "home_number",
    "work_number",
    "country",
]

# What a column of each attribute may hold.
VALUES = {
    "gender": ["female", "male", "m"],
    "title": ["Mr", "Mrs", "Dr"],
    "firstname": ["Ann", "Bo", "Mary Jane"],
    "lastname": ["Lee", "O'Neill", "Smith"],
    "fullname": ["Ann Lee", "O'Neill, Bo", "Mary Jane Smith"],
    "email": ["a.lee@example.org", "bo@example.com", "mj@example.co.uk"],
    "username": ["alee", "bo_7", "mj.smith"],
    "password": ["s3cr3t!", "hunter22", "x'yz&8.9"],
    "mobile_number": ["07700 900123", "+44 7700 900124", "07700900125"],
    "home_number": ["01632 960001", "(01632) 960002", "01632/960003"],
    "work_number": ["020 7946 0001", "020-7946-0002", "020 7946 0003 x12"],
    "country": ["GB", "Germany", "South Korea"],
}
NOTHING = ["12.5", "13.0", "99.9"]

NAMES = {
    "gender": [
        "gender", "Gender", "SEX", "sexe", "género", "genre", "Geschlecht", "sexo", "Sesso", "kön",
        "płeć", "gender_code", "customerGender", "Gender (M/F)", "m/f", "geslacht",
    ],
    "title": [
        "title", "Title", "Salutation", "honorific", "Anrede", "Titel", "civilité", "tratamiento",
        "name_prefix", "customer_title", "aanhef",
    ],
    "firstname": [
        "First Name", "first_name", "firstName", "FirstName", "FIRST-NAME", "FNAME", "first",
        "given_name", "GivenNames", "forename", "vorname", "Vorname(n)", "prénom", "Prenom",
        "PRÉNOM", "voornaam", "förnamn", "fornavn", "imię", "etunimi", "jméno", "name_first",
        "customer_first_name", "emp.first.name", "contactFirstName", "primeiro_nome",
    ],
    "lastname": [
        "Last Name", "last_name", "lastName", "LNAME", "last", "surname", "Surname",
        "family name", "Nachname", "Familienname", "nom_de_famille", "apellido", "Apellidos",
        "sobrenome", "cognome", "achternaam", "efternamn", "etternavn", "nazwisko", "sukunimi",
        "Příjmení", "user_last_name", "soyadı",
    ],
    "fullname": [
        "full name", "fullName", "FULL_NAME", "complete_name", "nom complet", "nombre_completo",
        "name", "Name", "customer_name", "EMP_NAME", "patientName", "Kunden Name", "name_full",
        "imię i nazwisko",
    ],
    "email": [
        "email", "E-Mail", "e_mail", "eMail", "EMAIL", "e-mail address", "EmailAddress", "mail",
        "correo electrónico", "courriel", "work_email", "email_1", "Email 2", "sähköposti",
        "E-Mail-Adresse", "email (private)",
    ],
    "username": [
        "username", "user_name", "UserName", "login", "user", "Benutzername", "usuario",
        "nom_d'utilisateur", "login name", "handle", "account_username",
    ],
    "password": [
        "password", "Passwd", "pwd", "Passwort", "mot de passe", "contraseña", "user_password",
        "wachtwoord", "hasło",
    ],
    "mobile_number": [
        "mobile", "mobile_number", "MobilePhone", "cell", "Cell Phone", "cellphone", "Handy",
        "Handy-Nr.", "Mobiltelefon", "tel_mobile", "portable", "móvil", "celular", "gsm",
        "phone", "Phone Number", "telephone", "Tel.", "Telefonnummer", "téléphone", "phone1",
        "contact_phone", "Phone (mobile)", "kontakt.mobile_phone_no", "msisdn",
    ],
    "home_number": [
        "home_number", "home phone", "tel_home", "HomeTel", "phone_home", "Telefon (privat)",
        "landline", "Festnetz", "téléphone fixe", "home_phone_number", "customer_home_phone",
    ],
    "work_number": [
        "work_number", "work phone", "tel_work", "office_phone", "BusinessPhone", "phoneWork",
        "Telefon dienstlich", "company_phone", "daytime phone", "Work Tel. No.",
    ],
    "country": [
        "country", "Country", "country_code", "CountryName", "iso2", "nation", "nationality",
        "Land", "Ländercode", "pays", "país", "paese", "kraj", "billing_country",
        "Country/Region", "country of birth", "land_code",
    ],
}  # fmt: skip
