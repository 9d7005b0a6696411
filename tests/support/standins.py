"""The smallest host that the person module can be imported into, and small stand-ins for what else it imports.

They show what the module needs of its surroundings, and make an import take milliseconds.
"""

import importlib.util
import shutil
from pathlib import Path

MODULE_NAME = "vantrel.model.models.person"

MODEL = """
class {name}:
    made_of = []

    def __class_getitem__(cls, item):
        return Subscribed(cls, item)

    def __init_subclass__(cls, **keywords):
        super().__init_subclass__(**keywords)
        cls.made_of.append(cls)

    def __init__(self, meta=None):
        self.meta = self._meta = meta

    def fit(self, df):
        return self

    def to_dict(self):
        return {{}}


class Subscribed:
    def __init__(self, origin, item):
        self.origin, self.item = origin, item

    def __mro_entries__(self, bases):
        return (self.origin,)
"""

CONFIG = """
from dataclasses import dataclass


class PersonLabels:
    pass


@dataclass
class PersonModelConfig:
    pwd_length: tuple = (8, 16)
"""

LOCALE = """
class Provider:
    PERSON = "person"


def get_country_to_provder_map(countries, provider):
    return dict.fromkeys(countries, provider)


def get_supported_country_codes(provider):
    return {provider: []}


def get_supported_country_names(provider):
    return {provider: []}


def valid_locales(provider):
    return [provider]
"""


def _classes(*names: str) -> str:
    return "\n\n".join(f"class {name}:\n    pass" for name in names)


def _exceptions(*names: str) -> str:
    return "\n\n".join(f"class {name}(Exception):\n    pass" for name in names)


HOST = {
    "vantrel/__init__.py": "",
    "vantrel/config.py": CONFIG,
    "vantrel/metadata/__init__.py": _classes("Nominal")
    + "\n\n"
    + _exceptions("MetaNotExtractedError"),
    "vantrel/metadata/value.py": _classes("Person", "String"),
    "vantrel/metadata/rules/__init__.py": "",
    "vantrel/metadata/rules/association.py": _classes("Association"),
    "vantrel/model/__init__.py": "",
    "vantrel/model/base.py": MODEL.format(name="DiscreteModel"),
    "vantrel/model/exceptions.py": _exceptions("ModelNotFittedError"),
    "vantrel/model/models/__init__.py": "",
    "vantrel/model/models/histogram.py": MODEL.format(name="Histogram"),
    "vantrel/util/__init__.py": "",
    "vantrel/util/locale/__init__.py": "",
    "vantrel/util/locale/locale.py": LOCALE,
    "vantrel/util/person.py": "def collections_from_mapping(seq, mapping, ambiguous_key):\n    return {}\n",
}
LIBRARIES = {
    "numpy.py": "",
    "faker.py": _classes("Faker"),
    "pandas/__init__.py": "Series = list\n",
    "pandas/_libs/__init__.py": "",
    "pandas/_libs/missing.py": _classes("NAType"),
}


def write_standins(folder: Path, **replaced: str) -> Path:
    """Writes the host and the libraries, and puts the built module into them.

    Args:
        folder: Where to write.
        replaced: The text of modules that shall be others, or that come on top, by their dotted names
            with "__" for each dot.

    Returns:
        The folder.
    """
    sources = HOST | LIBRARIES
    for name, text in replaced.items():
        path = name.replace("__", "/")
        package = f"{path}/__init__.py"
        sources[package if package in sources else f"{path}.py"] = text
    for path, text in sources.items():
        (folder / path).parent.mkdir(parents=True, exist_ok=True)
        (folder / path).write_text(text, encoding="utf-8")
    built = importlib.util.find_spec(MODULE_NAME)
    assert built is not None
    assert built.origin is not None
    # Under this suffix every interpreter finds it, not only the one that it is built for.
    shutil.copy(built.origin, folder / "vantrel/model/models/person.so")
    return folder
