"""Recognises what names a device in a network, and pages of people in networks of another kind."""

from __future__ import annotations

import re
from ipaddress import AddressValueError, IPv4Address, ip_address

from stdnum import imei

from vantrel.detection.personal.texts import told

_MAC = re.compile(
    r"[0-9a-f]{2}([:-])(?:[0-9a-f]{2}\1){4}[0-9a-f]{2}|(?:[0-9a-f]{4}\.){2}[0-9a-f]{4}"
)
# The first two digits tell who approved of a device.
_IMEI = re.compile(r"(?:01|35|86|99)\d{13}")
_BETWEEN_DIGITS = str.maketrans("", "", " -/")

# Numbers of versions and paragraphs have the form of an address, too, but small parts.
_LEAST_LARGEST_PART = 100

_PROFILE = re.compile(
    r"(?:https?://)?(?:[a-z-]{2,6}\.)?(?:linkedin\.com/in|xing\.com/profile|facebook\.com"
    r"|instagram\.com|twitter\.com|x\.com|tiktok\.com|github\.com|gitlab\.com|youtube\.com/@"
    r"|threads\.net|bsky\.app/profile|pinterest\.com|vk\.com|t\.me|medium\.com|orcid\.org)"
    r"/?@?[^/\s?]+/?(?:\?\S*)?",
    re.IGNORECASE,
)
# Not whether somebody has a page.
_HANDLE = re.compile(r"(?!(?:yes|no|true|false|none)$)\S*[^\W\d_]\S+", re.IGNORECASE)


def is_ip(text: str) -> bool:
    """Whether a text is an address of IPv4 or IPv6."""
    try:
        ip_address(text)
    except ValueError:
        return False
    return True


def told_ips(texts: list[str]) -> str | None:
    """Tells whether values are IP addresses, and not numbers of versions."""
    return told(texts, _is_surely_ip, "are IP addresses")


def can_be_device(text: str) -> bool:
    """Whether a text is a number by which a device is known."""
    return _is_mac(text) or bool(re.fullmatch(r"\d{14,16}", text.translate(_BETWEEN_DIGITS)))


def told_devices(texts: list[str]) -> str | None:
    """Tells whether values are addresses of network cards, or numbers of mobile telephones."""
    return told(texts, _is_mac, "are MAC addresses of devices") or told(
        texts, _is_imei, "are valid IMEI numbers of telephones"
    )


def can_be_profile(text: str) -> bool:
    """Whether a text is an address of a page or a name in a network."""
    return bool(_HANDLE.fullmatch(text))


def told_profiles(texts: list[str]) -> str | None:
    """Tells whether values are addresses of people's pages in well-known networks."""
    return told(texts, _PROFILE.fullmatch, "are addresses of profile pages")


def _is_surely_ip(text: str) -> bool:
    try:
        parts = IPv4Address(text).packed
    except AddressValueError:
        return ":" in text and is_ip(text)
    return max(parts) >= _LEAST_LARGEST_PART


def _is_mac(text: str) -> bool:
    return bool(_MAC.fullmatch(text.lower()))


def _is_imei(text: str) -> bool:
    digits = text.translate(_BETWEEN_DIGITS)
    return bool(_IMEI.fullmatch(digits)) and imei.is_valid(digits)
