"""What becomes of a column that is not a person's, besides the actions."""

KEEP, SCRUB, UNDECIDED = "keep", "scrub", "undecided"
"""It stays; it stays but for what names the row's person; somebody has to look at it before, and it
stays until then."""
