"""Replaces people as a tester does who has Faker and an afternoon."""

from __future__ import annotations

import csv
import hmac
from pathlib import Path

from faker import Faker

from .orders import KEY

_SECRET = b"the secret of a benchmark"
_LOCALES = {"GB": "en_GB", "US": "en_US", "DE": "de_DE"}
_PASSWORD_LENGTH = 12


def replace_by_hand(source: Path, copy: Path) -> None:
    """Copies orders; each customer becomes a person of Faker's, made once and seeded by the key."""
    fakers = {country: Faker(locale) for country, locale in _LOCALES.items()}
    made: dict[str, dict[str, str]] = {}
    with (
        source.open(encoding="utf-8", newline="") as rows,
        copy.open("w", encoding="utf-8", newline="") as file,
    ):
        reader = csv.DictReader(rows)
        writer = csv.DictWriter(file, reader.fieldnames or ())
        writer.writeheader()
        for row in reader:
            key = row[KEY]
            if key not in made:
                made[key] = _person(fakers[row["country"]], key, row["gender"])
            writer.writerow(row | made[key])


def _person(fake: Faker, key: str, gender: str) -> dict[str, str]:
    fake.seed_instance(hmac.digest(_SECRET, key.encode(), "sha256"))
    first_names = {"female": fake.first_name_female, "male": fake.first_name_male}
    first, last = first_names.get(gender, fake.first_name)(), fake.last_name()
    return {
        "firstname": first,
        "lastname": last,
        "fullname": f"{first} {last}",
        "email": fake.email(),
        "username": fake.user_name(),
        "password": fake.password(_PASSWORD_LENGTH),
        "mobile_number": fake.phone_number(),
        "home_number": fake.phone_number(),
    }
