"""Types of columns, and of values, when the people of tables of databases are replaced."""

from __future__ import annotations

import re

from support.command import succeed
from support.databases import KEYS, Post, Trial, shop


def test_types_of_postgresql(post: Post) -> None:
    post.run(
        """
        CREATE EXTENSION citext;
        CREATE TYPE mood AS ENUM ('sad', 'glad');
        CREATE TABLE odd (
            id uuid PRIMARY KEY, email citext, last_name char(12), phone bigint, born date, seen timestamptz,
            at timestamp, sizes integer[], data jsonb, bytes bytea, ok boolean, felt mood, amount numeric,
            ratio real, small smallint, address inet, span interval
        );
        INSERT INTO odd VALUES
        ('6b1d6f0e-7d0c-4c8f-8b2f-0d6ad9e5f001', 'Ann@B.org', 'Lee', 442079460001, 'infinity',
         '2024-03-31 00:30:00.123456+00', '0044-03-15 12:00:00 BC', '{1,NULL}', '{"a": "b"}', '\\x00ff', true,
         'glad', 'NaN', 0.1, 7, '10.0.0.1', '1 day'),
        ('6b1d6f0e-7d0c-4c8f-8b2f-0d6ad9e5f002', NULL, NULL, NULL, '1980-02-03', NULL, NULL, NULL, NULL, NULL,
         NULL, NULL, NULL, NULL, NULL, NULL, NULL);
        """
    )
    whole = "SELECT to_jsonb(odd) - 'email' - 'last_name' - 'phone' - 'born' - 'seen' - 'small', email::text, last_name, phone, born::text, small FROM odd ORDER BY id"
    before = post.rows(whole)
    told = succeed(
        f"replace '{post.address}' --table odd --key id --secret s --column mobile_number=phone"
        " --column lastname=last_name --column email=email --other born=shift:90"
        " --other seen=shift:90 --other small=hash"
    )
    after = post.rows(whole)
    assert [row[0] for row in after] == [row[0] for row in before]
    (_, email, name, phone, born, small), (*_, no_email, no_name, no_phone, later, no_small) = after
    assert email.endswith(".example")
    assert name.rstrip() not in ("Lee", "")
    assert phone > 10**6
    assert born is None
    assert 1 <= small <= 9
    assert [no_email, no_name, no_phone, no_small] == [None] * 4
    assert later != "1980-02-03"
    assert later[:2] == "19"
    assert (
        "Column 'born': 1 cell without a date of the form YYYY-MM-DD that could be moved, now empty (row 1)."
        in told.stderr
    )
    ((seen,),) = post.rows(
        "SELECT extract(microseconds FROM seen)::text FROM odd WHERE seen IS NOT NULL"
    )
    assert seen == "123456"


def test_values_of_sqlite_keep_their_types(lite: Trial) -> None:
    lite.run("CREATE TABLE people (id, name text, last_name text, phone, n, PRIMARY KEY (id))")
    rows = [
        (1, "a", "Qa", 442079460001, 1.5),
        ("1", "b", "Qb", 442079460002, "x"),
        (b"\xff", "c", "Qc", None, b"y"),
        (2.5, "d", None, 1, None),
    ]
    lite.add("people", rows)
    succeed(
        f"replace '{lite.address}' --table people --key name --secret s --column lastname=last_name"
        " --column mobile_number=phone --keep username --other name=keep"
    )
    found = lite.rows("SELECT * FROM people ORDER BY name")
    assert [(row[0], row[1], row[4]) for row in found] == [(row[0], row[1], row[4]) for row in rows]
    assert [type(row[3]) for row in found] == [int, int, type(None), int]
    assert not {row[2] for row in found} & {"Qa", "Qb", "Qc"}


def test_uuids_are_hashed_as_texts_of_them_are(post: Post) -> None:
    post.run(
        """
        CREATE TABLE people (id integer PRIMARY KEY, email text, device uuid, written text);
        INSERT INTO people SELECT n, 'a' || n || '@b.org', each, each
        FROM generate_series(1, 9) AS n, LATERAL (SELECT md5(n::text)::uuid AS each) AS one
        """
    )
    before = {row[0] for row in post.rows("SELECT device FROM people")}
    succeed(
        f"replace '{post.address}' --table people --key id --secret s --other device=hash"
        " --other written=hash"
    )
    after = post.rows("SELECT device, written FROM people")
    assert len({device for device, _ in after} - before) == 9
    assert [written for _, written in after] == [str(device) for device, _ in after]


def test_addresses_and_types_that_are_not_known(post: Post) -> None:
    shop(post, "ip inet, place point")
    post.run("UPDATE customers SET ip = ('81.2.69.' || id)::inet, place = point(id, id)")
    told = succeed(f"replace '{post.address}' --table customers {KEYS} --dry-run").stderr
    assert "Column 'ip' looks personal (IP address): its name says so. It stays" in told
    assert "point" not in told


def test_scrubbed_numbers_of_sqlite_stay_numbers(lite: Trial) -> None:
    lite.run("CREATE TABLE people (id integer PRIMARY KEY, last_name text, note, amount real)")
    rows: list[tuple[object, ...]] = [
        (1, "Qalee", "Qalee called", 0.1 + 0.2),
        (2, "Qaray", 12, 1e300),
        (3, "Qafox", 0.1 + 0.2, None),
        (4, "Qacat", "12", 7.0),
        (5, "Qadog", None, 2.5),
    ]
    lite.add("people", rows)
    succeed(f"replace '{lite.address}' --key id --secret s --scrub note --scrub amount")
    found = lite.rows("SELECT id, note, amount FROM people ORDER BY id")
    kept = [(number, note, amount) for number, _, note, amount in rows]
    assert [list(map(repr, row)) for row in found[1:]] == [list(map(repr, row)) for row in kept[1:]]
    assert found[0][1].endswith(" called")
    assert found[0][1] != "Qalee called"
    assert found[0][2] == 0.1 + 0.2


def test_a_dry_run_shows_values_as_columns_hold_them(trial: Trial) -> None:
    trial.run(
        "CREATE TABLE people (id integer PRIMARY KEY, first_name text, phone numeric, born date)"
    )
    trial.add("people", [(1, "Qa", 442079460001, "1980-02-03"), (2, None, None, None)])
    told = succeed(
        f"replace '{trial.address}' --key id --dry-run --column mobile_number=phone"
        " --other born=shift:9"
    )
    before, after, *gaps = [
        line.split() for line in told.stdout.splitlines() if line.startswith(("before", "after"))
    ]
    assert before == ["before", "1", "Qa", "442079460001", "1980-02-03"]
    assert re.fullmatch("7700900[0-9]{3}", after[2])
    assert re.fullmatch("19[0-9]{2}-[0-9]{2}-[0-9]{2}", after[3])
    assert gaps == [["before", "2"], ["after"]]
