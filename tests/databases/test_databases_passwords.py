"""Passwords in addresses: never printed, logged or recorded, whatever happens."""

from __future__ import annotations

import logging
from pathlib import Path

import pytest

from support.command import run
from support.databases import Post, shop
from vantrel.databases.address import read_address
from vantrel.wording import without_passwords

# One that is written otherwise in an address, which some messages have decoded.
PASSWORD = "p:l/an@ted%"
WRITTEN = "p%3Al%2Fan%40ted%25"
PLAIN = "planted7"

GOOD = [
    "replace '{}' --table customers --key id --secret s --record r.json --debug",
    "replace '{}' --table customers --key id --secret s --dry-run",
    "replace '{}' --table customers --key id --write-plan plan.toml",
    "fit '{}&table=customers' -o m.json",
    "fit '{}&table=customers' -o m.json --force --debug",
]
BAD = [
    "replace '{}' --table custmers",
    "replace '{}' --table customers --key idd --debug",
    "replace '{}' people.csv",
    "replace '{}' -o out.csv",
    "replace people.csv -o out.csv --people '{}'",
    "fit '{}&table=nothing' -o m.json --debug",
    "fit '{}' -o m.json --debug",
    "fit people.csv -o '{}'",
    "fit people.csv -o m.json --config '{}' --debug",
    "sample m.json -n 3 -o '{}&table=customers'",
    "sample '{}' -n 3 -o people.csv --debug",
    "sample m.json -n 3 -o out.csv --conditions '{}' --debug",
    "report people.csv '{}&table=nothing' -o r.html --debug",
    "show '{}' --debug",
    "people -n 3 -o '{}'",
]
ELSEWHERE = [
    "postgresql://me:{}@/none?host={}",
    "postgresql://me:{}@/none?host={}&sslpassword=planted7",
    "postgresql://me@/none?host={1}&password={0}",
    "postgresql://me:{}@no.such.host.example/db?connect_timeout=1&x={}",
    "postgresql://me:{}@[/db?host={}",
    "postgresql://me:{}@/db?port=none&host={}",
    "postgresql://me:{}@/db?sslmode=none&host={}",
    "mysql://me:{}@/db?host={}",
    "postgresql:/me:{}@/db?host={}",
]


@pytest.fixture(autouse=True)
def _all_is_logged(caplog: pytest.LogCaptureFixture) -> None:
    for name in ("", "sqlalchemy", "sqlalchemy.engine", "sqlalchemy.pool", "psycopg"):
        caplog.set_level(logging.DEBUG, name)


def refuse_shown(text: str) -> None:
    for secret in (PASSWORD, WRITTEN, PLAIN):
        assert secret not in text


def written_here() -> str:
    return "".join(path.read_text(errors="replace") for path in Path().iterdir() if path.is_file())


@pytest.mark.parametrize("line", [*GOOD, *BAD])
def test_no_command_shows_it(post: Post, caplog: pytest.LogCaptureFixture, line: str) -> None:
    shop(post)
    address = post.address.replace("postgres@", f"postgres:{WRITTEN}@")
    told = run(line.format(address))
    assert (told.exit_code == 0) == (line in GOOD), told.output
    refuse_shown(told.stdout + told.stderr + caplog.text + written_here())


def test_what_a_driver_says_is_shown_without_it() -> None:
    address = read_address(f"postgresql://me:{WRITTEN}@h/db?sslpassword={PLAIN}")
    said = f"password={PASSWORD} or {WRITTEN} of {PLAIN} for user me"
    assert address.hidden(said) == "password=*** or *** of *** for user me"


@pytest.mark.parametrize("address", ELSEWHERE)
@pytest.mark.parametrize("password", [WRITTEN, PLAIN])
def test_no_address_that_fails_shows_it(
    socket_folder: Path, caplog: pytest.LogCaptureFixture, address: str, password: str
) -> None:
    line = f"replace '{address.format(password, socket_folder)}' --table customers --debug"
    told = run(line)
    assert told.exit_code in (1, 2)
    assert told.stderr.count("vantrel: error: ") == 1
    refuse_shown(told.stdout + told.stderr + caplog.text)


@pytest.mark.parametrize("address", ["postgres:me:{}@127.0.0.1/db", "me:{}@127.0.0.1/db"])
@pytest.mark.parametrize("password", [WRITTEN, PLAIN])
def test_an_address_without_slashes_is_shown_without_it(address: str, password: str) -> None:
    for line in ("replace '{}' --key id -o x", "fit '{}' -o m.json --debug", "show '{}'"):
        told = run(line.format(address.format(password)))
        assert told.exit_code in (1, 2)
        assert ":***@127.0.0.1/db" in told.stderr
        refuse_shown(told.stdout + told.stderr)


@pytest.mark.parametrize(
    "text", ["sqlite:///shop.db", "at 10:30 by a@b.org", "x: a@b.org", "postgresql://me@h:1/db"]
)
def test_what_has_no_password_stays(text: str) -> None:
    assert without_passwords(text) == text
