"""Recognises where somebody can be reached: e-mail addresses and telephone numbers."""

from __future__ import annotations

from vantrel.detection.personal.texts import told
from vantrel.detection.values import has_mark_of_phone, is_email, is_phone


def told_emails(texts: list[str]) -> str | None:
    """Tells whether values are e-mail addresses."""
    return told(texts, is_email, "are e-mail addresses")


def told_phones(texts: list[str]) -> str | None:
    """Tells whether values are telephone numbers with a mark, which others do not have."""
    return told(texts, _is_surely_phone, "are telephone numbers")


def _is_surely_phone(text: str) -> bool:
    return is_phone(text) and has_mark_of_phone(text)
