"""How ``vantrel report`` is called in tests, and what its page shows."""

import re
from pathlib import Path

REPORT = "report people.csv made-up.csv -o report.html"
LABELS = "--column gender=sex --column title=title --column lastname=surname --column country=land"


def shown_page() -> str:
    """The page, without what keeps words whole."""
    page = Path("report.html").read_text(encoding="utf-8")
    return re.sub(r'<span class="word">(.*?)</span>', r"\1", page.replace("<wbr>", ""))
