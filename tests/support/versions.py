"""The version of Python that the module is built for, and what is different under another one."""

import sys

import pytest

IS_OWN = sys.version_info[:2] == (3, 12)

# What tells other processes not to show the warning that importing the module gives under another version. Here the
# settings of pytest let it pass; the tests of another version look at it.
SILENCED = {} if IS_OWN else {"PYTHONWARNINGS": "ignore:compile time Python version:RuntimeWarning"}


def needs_own_version(reason: str) -> pytest.MarkDecorator:
    """Marks what cannot be so under another version, for the given reason."""
    return pytest.mark.skipif(not IS_OWN, reason=reason)
