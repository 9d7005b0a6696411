"""Models of tabular data: learn from real rows, sample new ones that a seed reproduces.

    import vantrel

    model = vantrel.fit(df, gender="sex", title="title", generate=["firstname", "email"])
    vantrel.seed_everything(model, 7)
    people = model.sample(1000)

Importing this package is cheap: pandas and numpy are loaded when a name that needs them is used.
"""

from importlib import import_module
from typing import TYPE_CHECKING, Any

__version__ = "0.1.0"

if TYPE_CHECKING:
    from vantrel.fitting import fit
    from vantrel.storage.models import load, save
    from vantrel.sampling import sample
    from vantrel.sampling.seeding import seed_everything

__all__ = ["fit", "load", "sample", "save", "seed_everything"]

_HOMES = {
    "fit": "vantrel.fitting",
    "load": "vantrel.storage.models",
    "sample": "vantrel.sampling",
    "save": "vantrel.storage.models",
    "seed_everything": "vantrel.sampling.seeding",
}


def __getattr__(name: str) -> Any:
    if name not in _HOMES:
        raise AttributeError(f"module {__name__!r} has no attribute {name!r}")
    return getattr(import_module(_HOMES[name]), name)


def __dir__() -> list[str]:
    return sorted([*__all__, "__version__"])
