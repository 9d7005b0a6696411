"""Values that are made to fit into short columns of databases."""

from __future__ import annotations

from support.command import fail, succeed
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


def test_columns_of_domains_and_of_types_that_cut_silently(post: Post) -> None:
    post.run(
        """
        CREATE DOMAIN brief AS varchar(9);
        CREATE DOMAIN briefer AS brief NOT NULL;
        CREATE DOMAIN positive AS integer CHECK (VALUE > 0);
        CREATE DOMAIN host AS inet;
        CREATE TABLE people (
            id positive PRIMARY KEY, nick briefer, full_name brief, initial "char", label name, seen host, n positive
        );
        INSERT INTO people VALUES (1, 'Lee', 'Ann Lee', 'A', 'x', '10.0.0.1', 17)
        """
    )
    run = f"replace '{post.address}' --table people --key id --secret s --column"
    told = fail(f"{run} username=nick", 1)
    assert told.startswith("Column 'nick' holds 9 characters, and what is made for it has up to ")
    assert fail(f"{run} username=initial", 1).startswith("Column 'initial' holds 1 character,")
    succeed(
        f"{run} firstname=initial --column fullname=full_name --keep username --other seen=keep"
        " --other n=hash --other label=fake:paragraph"
    )
    ((number, nick, full_name, initial, label, seen, n),) = post.rows("SELECT * FROM people")
    assert (number, nick, str(seen)) == (1, "Lee", "10.0.0.1")
    assert full_name != "Ann Lee"
    assert 0 < len(full_name) <= 9
    assert len(initial) == 1
    assert 30 < len(label) <= 63
    assert " " in label
    assert n != 17
