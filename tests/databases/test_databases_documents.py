"""The commands that documents show of databases of the reader's, run on a server of the tests' own."""

from __future__ import annotations

import re
from pathlib import Path

import pytest

pytest.importorskip("sqlalchemy", reason="databases need SQLAlchemy")
pytest.importorskip("pyarrow", reason="tables of databases are read by way of Arrow")

from support.command import succeed
from support.databases import Post, contents, example

DOCUMENT = Path(__file__).parents[2] / "docs" / "databases.md"
SHOWN = re.compile(r"^```text\nvantrel ((?:.|\n)*?)^```$", re.MULTILINE)
ADDRESS = re.compile(r"'?postgresql://localhost/\w+(\?[^'\s]+)?'?")


def shown(post: Post) -> list[str]:
    """The commands, with the address of a database that is there."""

    def there(address: re.Match[str]) -> str:
        more = (address[1] or "").replace("?", "&")
        return f"'{post.address}{more}'"

    commands = SHOWN.findall(DOCUMENT.read_text(encoding="utf-8"))
    return [ADDRESS.sub(there, command.replace("\\\n", " ")) for command in commands]


def test_commands_that_are_shown_do_what_is_said(post: Post) -> None:
    example(post)
    replace, append = shown(post)

    before = contents(post, "customers", "orders")
    succeed(replace)
    assert contents(post, "customers", "orders") == before  # only for show
    succeed(replace.replace("--dry-run", ""))
    assert contents(post, "customers", "orders") != before

    succeed(f"fit '{post.address}&table=customers' -o model.json")
    columns = succeed("sample model.json -n 1 -o -").stdout.splitlines()[0]
    post.run(f"CREATE TABLE people AS SELECT {columns} FROM customers WHERE false")
    succeed(append)
    assert post.rows("SELECT count(*) FROM people") == [(1000,)]
