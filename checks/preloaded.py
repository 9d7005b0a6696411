"""What the processes that make the calls are forked with: all imports, looked through once."""

from . import measuring
from .growth import settle

__all__ = ["measuring"]

settle()
