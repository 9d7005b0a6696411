"""Replaces people where they stand: each by a made-up one, the same wherever the same key stands.

A made-up person is a function of the secret, the key, the gender and the country:

    keys       the key of each row, as bytes that are the same whatever type it is stored in
    prints     64 bits of each text, by which keys and names are compared without holding them
    who        what the tables tell of each key: gender, country, the real names' prints
    pools      names by Faker's weights for each gender and country, drawn once with a fixed seed
    made       the columns of made-up people, from the keyed hashes of their keys

:class:`vantrel.replacing.people.people.People` ties these together, batch by batch of Arrow;
:class:`vantrel.replacing.replacer.Replacer` is for frames in memory. Only the latter can be
imported without pyarrow.
"""

from vantrel.errors import MissingPackageError


def require_pyarrow() -> None:
    """Refuses to replace people where pyarrow is not installed."""
    try:
        import pyarrow as pa  # noqa: F401 - whether it is there
    except ModuleNotFoundError as error:
        raise MissingPackageError.of("Replacing people", "pyarrow", "replace") from error
