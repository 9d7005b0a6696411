"""A host and libraries in nothing but Python, as small as the module's functions can do with.

Under it a call stays within the module and the standard library, whatever it does.
"""

from pathlib import Path

from support.standins import LOCALE, write_standins

PANDAS = """
NA = type("NAType", (), {"__repr__": lambda self: "<NA>", "__bool__": None})()


def isna(value):
    return value is None or value is NA or value != value


def notna(value):
    return not isna(value)


class Texts:
    def __init__(self, series):
        self.series = series

    def cat(self, others, sep=""):
        return Series([a + sep + b for a, b in zip(self.series, others)])

    def lower(self):
        return Series([text.lower() for text in self.series])


class Objects:
    name = "object"


class Series:
    def __init__(self, data=(), dtype="object", index=None, name=None, copy=None):
        self.data, self.dtype, self.index, self.name = list(data), Objects(), index, name

    def __iter__(self):
        return iter(self.data)

    def __len__(self):
        return len(self.data)

    def __eq__(self, other):
        return self.data == other.data

    def __repr__(self):
        return repr(self.data)

    def __gt__(self, number):
        return Series([value > number for value in self.data])

    def __getitem__(self, flags):
        kept = Series([value for value, flag in zip(self.data, flags) if flag])
        kept.index = [label for label, flag in zip(self.index or self.data, flags) if flag]
        return kept

    def __setitem__(self, flags, values):
        values = iter(values)
        self.data = [next(values) if flag else value for value, flag in zip(self.data, flags)]

    @property
    def loc(self):
        return Places(self)

    str = property(Texts)

    def apply(self, function, args=(), **keywords):
        return Series([function(value, *args, **keywords) for value in self.data])

    def map(self, mapping):
        return Series([mapping.get(value) for value in self.data])

    def astype(self, dtype):
        return Series(map(str, self.data)) if dtype is str else Series(self.data, dtype)

    def isna(self):
        return Series(map(isna, self.data))

    def notna(self):
        return Series(map(notna, self.data))

    def isin(self, values):
        return Series([value in values for value in self.data])

    def unique(self):
        return self

    def tolist(self):
        return list(dict.fromkeys(self.data))

    def nunique(self):
        return len(set(self.data))

    def value_counts(self):
        counted = Series(map(self.data.count, dict.fromkeys(self.data)))
        counted.index = list(dict.fromkeys(self.data))
        return counted


class Places:
    def __init__(self, of):
        self.of = of

    def __getitem__(self, place):
        return self.of.columns[place[1]]

    def __setitem__(self, place, value):
        if isinstance(self.of, Series):
            self.of[place] = [value] * len(self.of)
        elif isinstance(place[0], slice):
            self.of.columns[place[1]] = value
        else:
            for column in place[1]:
                self.of.columns[column][place[0]] = [value] * len(place[0])


class DataFrame:
    def __init__(self, data=None, index=None):
        self.columns = data if isinstance(data, dict) else {}

    def __getitem__(self, column):
        if isinstance(column, list):
            return DataFrame({name: self.columns[name] for name in column})
        return self.columns[column]

    def __setitem__(self, column, values):
        self.columns[column] = values

    def __len__(self):
        return len(next(iter(self.columns.values())))

    def __eq__(self, other):
        return self.columns == other.columns

    def copy(self):
        return DataFrame(dict(self.columns))

    loc = property(Places)


RangeIndex = range
"""

NUMPY = """
from ctypes import py_object

nan = float("nan")
str_ = str


def empty(shape, dtype):
    return (py_object * shape)()


class random:
    @staticmethod
    def choice(values):
        return values[-1]
"""

MODEL = """
class {name}:
    def __class_getitem__(cls, item):
        return cls

    def __init__(self, meta):
        self.meta = self._meta = meta
        self._rng = Draws()

    @property
    def name(self):
        return self.meta.name

    def fit(self, df):
        self.fitted = df
        return self

    def sample(self, n, produce_nans, conditions, associations):
        from pandas import DataFrame, Series
        return DataFrame({{self.name: Series((["F", "M"] * n)[:n])}})

    def to_dict(self):
        return {{"meta": self.meta.name}}

    @classmethod
    def from_dict(cls, d):
        return cls(d)


class Draws:
    def choice(self, values, size):
        return [values[0]] * size
"""

CONFIG = """
from dataclasses import dataclass, field


@dataclass
class PersonLabels:
    gender: str = None
    title: str = None
    firstname: str = None
    lastname: str = None
    fullname: str = None
    email: str = None
    username: str = None
    password: str = None
    mobile_number: str = None
    home_number: str = None
    work_number: str = None
    country: str = None


@dataclass
class PersonModelConfig:
    gender_female_regex: str = "^f"
    gender_male_regex: str = "^m"
    gender_non_binary_regex: str = "^n"
    title_female_regex: str = "^mrs"
    title_male_regex: str = "^mr$"
    title_non_binary_regex: str = "^mx"
    genders: list = field(default_factory=lambda: ["F", "M"])
    mobile_number_format: str = "07x"
    home_number_format: str = "01x"
    work_number_format: str = "02x"
    dict_cache_size: int = 10
    pwd_length: tuple = (1, 2)
"""

METAS = """
from contextlib import nullcontext
from vantrel.metadata import MetaNotExtractedError, Nominal


class String(Nominal):
    pass


class Person:
    nan_freq = None
    locales = None
    categories = None

    def __init__(self, name, labels):
        self.name, self.labels = name, labels
        self.params = {key: value for key, value in vars(labels).items() if value}

    def __getitem__(self, column):
        return String(column, ["Mrs", "Mr", "Dr", "f", "m"])

    def unfold(self, df):
        return nullcontext(df)

    def revert_df_from_children(self, df):
        return df

    @classmethod
    def from_dict(cls, d):
        from vantrel.config import PersonLabels
        return cls(d["name"], PersonLabels(**d["labels"]))
"""

METADATA = """
class MetaNotExtractedError(Exception):
    pass


class Nominal:
    def __init__(self, name, categories=None, nan_freq=None):
        self.name, self.known, self.nan_freq = name, categories, nan_freq

    @property
    def categories(self):
        if self.known is None:
            raise MetaNotExtractedError("not known yet")
        return self.known

    def extract(self, df):
        self.known = df[self.name].tolist()

    @classmethod
    def from_dict(cls, d):
        return cls(**d)
"""

SORTING = """
import re


def collections_from_mapping(seq, mapping, ambiguous_key):
    sorted_values = {}
    for value in seq:
        keys = [key for key, pattern in mapping.items() if re.match(pattern, value.lower())]
        sorted_values.setdefault(keys[0] if len(keys) == 1 else ambiguous_key, []).append(value)
    return sorted_values
"""

FAKER = """
class Faker:
    def first_name(self):
        return "Ada"

    first_name_male = first_name_female = first_name

    def last_name(self):
        return "Byron"

    def domain_name(self):
        return "b.org"
"""


def write_pure_host(folder: Path) -> Path:
    """Writes the host and the libraries, with the built module in them.

    Returns:
        The folder.
    """
    return write_standins(
        folder,
        pandas=PANDAS,
        numpy=NUMPY,
        faker=FAKER,
        vantrel__config=CONFIG,
        vantrel__metadata=METADATA,
        vantrel__metadata__value=METAS,
        vantrel__model__base=MODEL.format(name="DiscreteModel"),
        vantrel__model__models__histogram=MODEL.format(name="Histogram"),
        vantrel__util__person=SORTING,
        vantrel__util__locale__locale=LOCALE.replace(
            "return dict.fromkeys(countries, provider)",
            "from faker import Faker\n    return {country: Faker() for country in countries}",
        ),
    )
