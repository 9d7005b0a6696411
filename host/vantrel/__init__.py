"""Models of tabular data: learn from real rows, sample new ones that a seed reproduces.

    import vantrel

    model = vantrel.fit(df, gender="sex", generate=["firstname", "email"])
    people = vantrel.sample(model, 1000, seed=7)

Importing this package is cheap: pandas and numpy are loaded when a function that needs them is
used. Every error that the caller can put right is a :class:`VantrelError`.
"""

from importlib import import_module
from typing import TYPE_CHECKING, Any

from vantrel import errors
from vantrel.errors import *  # noqa: F403 - errors and warnings alone, as its own __all__ lists them

if TYPE_CHECKING:
    from vantrel.fitting import fit
    from vantrel.replacing.replacer import Replacer, replace
    from vantrel.reporting.comparison import compare
    from vantrel.reporting.description import describe
    from vantrel.sampling import sample
    from vantrel.sampling.seeding import seed_everything
    from vantrel.storage.models import load, save
    from vantrel.without_table import people

__version__ = "0.1.0"

__all__ = [
    "Replacer",
    "compare",
    "describe",
    "fit",
    "load",
    "people",
    "replace",
    "sample",
    "save",
    "seed_everything",
]
__all__ += errors.__all__

_HOMES = {
    "Replacer": "replacing.replacer",
    "compare": "reporting.comparison",
    "describe": "reporting.description",
    "fit": "fitting",
    "load": "storage.models",
    "people": "without_table",
    "replace": "replacing.replacer",
    "sample": "sampling",
    "save": "storage.models",
    "seed_everything": "sampling.seeding",
}


def __getattr__(name: str) -> Any:
    if name not in _HOMES:
        raise AttributeError(f"module {__name__!r} has no attribute {name!r}")
    return getattr(import_module(f"{__name__}.{_HOMES[name]}"), name)


def __dir__() -> list[str]:
    return sorted([*__all__, "__version__"])
