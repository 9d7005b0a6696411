"""What the built library offers to whoever loads it."""

import shutil
import subprocess

import pytest

from vantrel.model.models import person


@pytest.mark.skipif(
    shutil.which("nm") is None, reason="nm is needed to list what the library exports"
)
def test_library_exports_its_entry_alone() -> None:
    listed = subprocess.run(
        ["nm", "--dynamic", "--defined-only", "--format=posix", person.__file__],
        capture_output=True,
        encoding="utf-8",
        check=True,
    )
    assert [line.split()[0] for line in listed.stdout.splitlines()] == ["PyInit_person"]
