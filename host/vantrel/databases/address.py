"""The addresses of databases, and of tables in them, without the passwords that they may have."""

from __future__ import annotations

import re
from dataclasses import dataclass
from importlib.util import find_spec
from typing import TYPE_CHECKING
from urllib.parse import quote, quote_plus

from vantrel.errors import DatabaseError, MissingPackageError
from vantrel.hints import did_you_mean
from vantrel.wording import without_passwords

if TYPE_CHECKING:
    from sqlalchemy import URL

_SCHEME = re.compile(r"(?P<engine>[A-Za-z][A-Za-z0-9.-]*)(\+[A-Za-z0-9_]+)?:/{1,3}")

_POSTGRESQL, _SQLITE = "postgresql", "sqlite"
_ENGINES = {_POSTGRESQL: "psycopg", "postgres": "psycopg", _SQLITE: "pysqlite"}
_SAMPLES = "postgresql://host/database or sqlite:///file.db"

# What libpq takes as a secret, besides the password before the host.
_SECRETS = ("password", "sslpassword")


@dataclass(frozen=True)
class Address:
    """Where a database is, or one of its tables.

    Attributes:
        url: What SQLAlchemy connects with.
        table: The name of a table, where one is named.
        schema: The schema of the table, or of all tables; that of the connection if None.
    """

    url: URL
    table: str | None = None
    schema: str | None = None

    @property
    def is_sqlite(self) -> bool:
        """Whether the database is a file of SQLite."""
        return self.url.get_backend_name() == _SQLITE

    @property
    def file(self) -> str:
        """The file of a database of SQLite."""
        return self.url.database or ""

    def __str__(self) -> str:
        """Writes it without passwords, and without what else only the driver reads."""
        from sqlalchemy import URL

        url = self.url
        plain = URL.create(
            url.get_backend_name(), url.username, None, url.host, url.port, url.database
        )
        asked = {"table": self.table, "schema": self.table and self.schema}
        query = "&".join(f"{name}={value}" for name, value in asked.items() if value)
        return plain.render_as_string() + (f"?{query}" if query else "")

    def hidden(self, text: str) -> str:
        """Gives what a driver says without the secrets of the address."""
        given = [self.url.password, *(self.url.query.get(name) for name in _SECRETS)]
        for secret in filter(None, map(_as_text, given)):
            for written in (secret, quote(secret, safe=""), quote_plus(secret)):
                text = text.replace(written, "***")
        return without_passwords(text)


def is_address(text: str) -> bool:
    """Tells whether a text is the address of a database rather than the name of a file."""
    return "://" in text and _SCHEME.match(text) is not None


def read_address(text: str, *, has_table: bool = False) -> Address:
    """Reads an address such as ``postgresql://host/database`` or ``sqlite:///file.db``.

    Args:
        text: The address, to which ``?table=NAME`` and ``&schema=NAME`` may be added.
        has_table: Whether it must name a table, or else must not.

    Raises:
        DatabaseError: It is none of a database that is known.
        MissingPackageError: A package is missing that the database needs.
    """
    scheme = _SCHEME.match(text)
    engine = scheme["engine"].lower() if scheme else ""
    if engine not in _ENGINES:
        raise DatabaseError(
            f"{engine}:// leads to no database that is known.{did_you_mean(engine, _ENGINES)}"
            f" Addresses are of the form {_SAMPLES}."
        )
    packages = ("sqlalchemy", "pyarrow") + (("psycopg",) if engine != _SQLITE else ())
    for package in packages:
        if find_spec(package) is None:
            raise MissingPackageError.of("A database", package, "database")
    url = _url(text, engine)
    query = dict(url.query)
    table, schema = (_as_text(query.pop(name, None)) for name in ("table", "schema"))
    address = Address(url.set(query=query), table, schema)
    if has_table and not table:
        raise DatabaseError(f"{address} names no table: add '?table=NAME'.")
    if not has_table and (table or schema):
        raise DatabaseError(
            f"{address} names a table or a schema: name them by --table and --schema here."
        )
    return address


def _url(text: str, engine: str) -> URL:
    from sqlalchemy import make_url
    from sqlalchemy.exc import ArgumentError

    try:
        url = make_url(text)
    except (ArgumentError, ValueError):  # the text of either may have the password in it
        url = None
    if url is None or not url.database:
        raise DatabaseError(f"The address names no database: write it as {_SAMPLES}.")
    if "@" in (url.host or ""):  # what is before the second may be of the password
        raise DatabaseError("The address has more than one @: write those of a password as %40.")
    name = _SQLITE if engine == _SQLITE else _POSTGRESQL
    return url.set(drivername=f"{name}+{_ENGINES[engine]}")


def _as_text(value: str | tuple[str, ...] | None) -> str | None:
    """Gives the last of the values of a query, as it may have several."""
    return value[-1] if isinstance(value, tuple) else value
