"""Every function of the person module, as its source would write it, and how to reach the built one."""

import ast
import re
from dataclasses import dataclass
from typing import Any

from vantrel.model.models import person


@dataclass(frozen=True)
class Parameter:
    """One parameter: its annotation as written, and the source of its default."""

    name: str
    annotation: str | None
    default: str | None

    @property
    def exact(self) -> type | None:
        """The one type that the parameter takes; None where it takes anything."""
        declared = re.match(r"(?:Optional\[)?(str|int|List|Dict)\b", self.annotation or "")
        types: dict[str, type] = {"str": str, "int": int, "List": list, "Dict": dict}
        return types[declared[1]] if declared else None

    @property
    def optional(self) -> bool:
        """Whether the parameter takes None beside its type."""
        return (self.annotation or "").startswith("Optional[")

    @property
    def fitting(self) -> Any:
        """A value that passes the check of its type."""
        return object() if self.exact is None else self.exact()


@dataclass(frozen=True)
class Member:
    """A function: where it is found, on which line it stands, and what it takes."""

    owner: str
    line: int
    name: str
    kind: str
    signature: str

    @property
    def qualname(self) -> str:
        return f"{self.owner}.{self.name}" if self.owner else self.name

    @property
    def _definition(self) -> ast.FunctionDef:
        (definition,) = ast.parse(f"def f{self.signature}: ...").body
        assert isinstance(definition, ast.FunctionDef)
        return definition

    def _text(self, node: ast.AST | None) -> str | None:
        return None if node is None else ast.get_source_segment(f"def f{self.signature}: ...", node)

    @property
    def parameters(self) -> list[Parameter]:
        arguments = self._definition.args
        names = arguments.args
        defaults = [None] * (len(names) - len(arguments.defaults)) + list(arguments.defaults)
        return [
            Parameter(name.arg, self._text(name.annotation), self._text(default))
            for name, default in zip(names, defaults, strict=True)
        ]

    @property
    def annotations(self) -> dict[str, str]:
        written = {p.name: p.annotation for p in self.parameters if p.annotation is not None}
        returns = self._text(self._definition.returns)
        return written if returns is None else {**written, "return": returns}

    @property
    def required(self) -> int:
        return sum(parameter.default is None for parameter in self.parameters)

    def built(self) -> Any:
        """The function itself, taken out of what wraps it."""
        if not self.owner:
            return getattr(person, self.name)
        found = vars(getattr(person, self.owner))[self.name]
        if self.kind == "property":
            return found.fget
        if self.kind == "setter":
            return found.fset
        return found.__func__ if self.kind in ("staticmethod", "classmethod") else found


def _id(member: Member) -> str:
    return f"{member.qualname}.setter" if member.kind == "setter" else member.qualname


GENDER_MEMBERS = [
    Member(
        "GenderModel",
        57,
        "__init__",
        "method",
        '(self, meta: String, regex_female: str = "^(mrs|ms).?$", regex_male: str = "^(mr).?$", '
        'regex_non_binary: str = "^(ind|mx|per).?$")',
    ),
    Member("GenderModel", 69, "collections", "property", "(self) -> Dict[str, List[str]]"),
    Member("GenderModel", 79, "categories", "property", "(self) -> Sequence[str]"),
    Member("GenderModel", 83, "fit", "method", "(self, df)"),
    Member(
        "GenderModel",
        95,
        "from_dict",
        "classmethod",
        "(cls, d: Dict[str, object]) -> 'GenderModel'",
    ),
]

PERSON_MEMBERS = [
    Member(
        "PersonModel",
        141,
        "__init__",
        "method",
        "(self, meta: Person, config: PersonModelConfig = PersonModelConfig())",
    ),
    Member("PersonModel", 185, "categories", "property", "(self) -> List[str]"),
    Member("PersonModel", 192, "default_locale", "property", "(self) -> str"),
    Member("PersonModel", 196, "locales", "property", "(self) -> List[str]"),
    Member("PersonModel", 204, "country_to_provider_map", "property", "(self) -> Dict[str, Faker]"),
    Member(
        "PersonModel", 210, "country_to_provider_map", "setter", "(self, value: Dict[str, Faker])"
    ),
    Member("PersonModel", 214, "labels", "property", "(self) -> PersonLabels"),
    Member("PersonModel", 218, "params", "property", "(self) -> Dict[str, str]"),
    Member("PersonModel", 222, "fit", "method", "(self, df: pd.DataFrame) -> 'PersonModel'"),
    Member(
        "PersonModel",
        234,
        "sample",
        "method",
        "(self, n: Optional[int] = None, produce_nans: bool = True, "
        "conditions: Optional[pd.DataFrame] = None, "
        "associations: Optional[List[Association]] = None) -> pd.DataFrame",
    ),
    Member(
        "PersonModel",
        326,
        "_sample_conditional",
        "method",
        "(self, num_rows: int, gender_conditions: pd.Series, "
        "country_conditions: Optional[pd.Series], produce_nans: bool = True) -> pd.DataFrame",
    ),
    Member(
        "PersonModel",
        447,
        "generate_values_from_collections",
        "method",
        "(self, conditions: pd.Series, collections: Dict[str, List[str]]) -> pd.Series",
    ),
    Member(
        "PersonModel",
        465,
        "generate_first_names",
        "method",
        "(self, gender_conditions: pd.Series, country_conditions: pd.Series) -> pd.Series",
    ),
    Member(
        "PersonModel",
        483,
        "generate_random_first_name",
        "method",
        "(self, gender: Optional[Union[str, NAType]], country: str) -> Optional[str]",
    ),
    Member(
        "PersonModel",
        510,
        "generate_last_names",
        "method",
        "(self, firstnames: pd.Series, country_conditions: pd.Series) -> pd.Series",
    ),
    Member(
        "PersonModel",
        532,
        "generate_emails",
        "method",
        "(self, firstnames: pd.Series, lastnames: pd.Series, country_condtions: pd.Series)"
        " -> pd.Series",
    ),
    Member(
        "PersonModel",
        560,
        "generate_usernames",
        "staticmethod",
        "(firstnames: pd.Series, lastnames: pd.Series) -> pd.Series",
    ),
    Member(
        "PersonModel",
        599,
        "generate_passwords",
        "method",
        "(self, firstnames: pd.Series) -> pd.Series",
    ),
    Member(
        "PersonModel",
        606,
        "generate_password",
        "staticmethod",
        "(pwd_length_min: int = 8, pwd_length_max: int = 16) -> str",
    ),
    Member(
        "PersonModel",
        613,
        "generate_phone_numbers",
        "staticmethod",
        '(isna: pd.Series, number_format: str = "07xxxxxxxx") -> pd.Series',
    ),
    Member(
        "PersonModel",
        626,
        "generate_from_collections",
        "staticmethod",
        "(key: Union[str, np.str_], collections: Dict[str, List[str]])",
    ),
    Member(
        "PersonModel",
        639,
        "map_to_gender_keys",
        "method",
        "(self, conditions: pd.Series, mapping: Dict[str, str]) -> pd.Series",
    ),
    Member(
        "PersonModel",
        660,
        "check_email",
        "staticmethod",
        '(s: str, locales: List[str] = ["en"]) -> bool',
    ),
    Member(
        "PersonModel",
        695,
        "check_associations",
        "method",
        "(self, associations: List[Association]) -> None",
    ),
    Member("PersonModel", 711, "to_dict", "method", "(self) -> Dict[str, object]"),
    Member(
        "PersonModel",
        721,
        "from_dict",
        "classmethod",
        "(cls, d: Dict[str, object]) -> 'PersonModel'",
    ),
]

COUNTRY_MEMBERS = [
    Member("CountryModel", 742, "__init__", "method", "(self, meta: Nominal)"),
    Member("CountryModel", 745, "categories", "property", "(self) -> Sequence[str]"),
    Member("CountryModel", 752, "fit", "method", "(self, df: pd.DataFrame) -> 'CountryModel'"),
]

MODULE_FUNCTIONS = [
    Member("", 760, "all_supported_country_names", "function", "() -> Dict[str, List[str]]"),
    Member("", 769, "all_supported_country_codes", "function", "() -> Dict[str, List[str]]"),
    Member("", 778, "all_supported_locales", "function", "() -> List[str]"),
]

MEMBERS_BY_CLASS = {
    "GenderModel": GENDER_MEMBERS,
    "PersonModel": PERSON_MEMBERS,
    "CountryModel": COUNTRY_MEMBERS,
}
MEMBERS = [*GENDER_MEMBERS, *PERSON_MEMBERS, *COUNTRY_MEMBERS, *MODULE_FUNCTIONS]
MEMBER_IDS = [_id(member) for member in MEMBERS]
