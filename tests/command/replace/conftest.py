"""What the tests of ``vantrel replace`` share: a folder with two tables, and no secret around."""

from pathlib import Path

import pytest

from support.replaced_tables import CUSTOMERS, ORDERS


@pytest.fixture(autouse=True)
def tables(tmp_path: Path, monkeypatch: pytest.MonkeyPatch) -> None:
    monkeypatch.chdir(tmp_path)
    monkeypatch.delenv("VANTREL_SECRET", raising=False)
    Path("customers.csv").write_bytes(CUSTOMERS.encode())
    Path("orders.csv").write_text(ORDERS)
