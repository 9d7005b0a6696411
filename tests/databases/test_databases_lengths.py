"""Values that are made to fit into short columns of databases."""

from __future__ import annotations

from support.command import succeed
from support.databases import (
    KEYS,
    Post,
    Trial,
    shop,
)


def test_what_would_not_fit_is_made_to_fit(trial: Trial) -> None:
    shop(trial, "nick varchar(12), full_name varchar(9), street varchar(6)")
    trial.run("UPDATE customers SET nick = 'n' || id, full_name = 'x', street = 'y'")
    if isinstance(trial, Post):
        trial.run("ALTER TABLE customers ALTER email TYPE varchar(24)")
    succeed(
        f"replace '{trial.address}' --table customers {KEYS} --column username=nick"
        " --column fullname=full_name --other street=fake:street_address"
    )
    rows = trial.rows("SELECT nick, full_name, street, email, first_name FROM customers")
    assert {(len(nick), nick[1]) for nick, *_ in rows} == {(12, ".")}
    assert len({nick for nick, *_ in rows}) == 30
    for _, full_name, street, email, first in rows:
        assert 0 < len(full_name) <= 9
        assert first.startswith(full_name) or full_name.startswith(first)
        assert 0 < len(street) <= 6
        if isinstance(trial, Post):
            assert len(email) <= 24
            assert email.endswith(".example")
