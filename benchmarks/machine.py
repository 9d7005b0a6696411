"""Where and with what the numbers were measured."""

from __future__ import annotations

import os
import platform
from datetime import UTC, datetime
from importlib.metadata import version
from pathlib import Path

PACKAGES = (
    "vantrel-person",
    "pandas",
    "pyarrow",
    "numpy",
    "Faker",
    "mimesis",
    "dask",
    "distributed",
)


def surroundings() -> dict[str, str]:
    """Describes date, machine and versions, each in one line."""
    packages = ", ".join(f"{package} {version(package)}" for package in PACKAGES)
    return {
        "Date": datetime.now(UTC).strftime("%Y-%m-%d"),
        "Machine": f"{_processor()}, {os.cpu_count()} cores, {_memory()}, {platform.platform()}",
        "Versions": f"{platform.python_implementation()} {platform.python_version()}, {packages}",
    }


def _processor() -> str:
    return _field(Path("/proc/cpuinfo"), "model name") or platform.machine()


def _memory() -> str:
    kilobytes = _field(Path("/proc/meminfo"), "MemTotal").split()[0]
    return f"{int(kilobytes) * 1024 / 1e9:.0f} GB"


def _field(file: Path, name: str) -> str:
    for line in file.read_text().splitlines():
        key, _, value = line.partition(":")
        if key.strip() == name:
            return value.strip()
    return ""
