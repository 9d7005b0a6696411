from typing import Any, Dict, List, Optional, Sequence, Union

import numpy as np
import pandas as pd
from faker import Faker
from pandas._libs.missing import NAType

from vantrel.config import PersonLabels, PersonModelConfig
from vantrel.metadata import Nominal
from vantrel.metadata.rules.association import Association
from vantrel.metadata.value import Person, String
from vantrel.model.base import DiscreteModel
from vantrel.model.models.histogram import Histogram

# Where doctest would look for more tests: there are none.
__test__: Dict[str, object]

class GenderModel(Histogram[str]):
    key_female: str
    key_male: str
    key_non_binary: str
    key_ambiguous: str
    regex_female: str
    regex_male: str
    regex_non_binary: str
    def __init__(
        self,
        meta: String,
        regex_female: str = "^(mrs|ms).?$",
        regex_male: str = "^(mr).?$",
        regex_non_binary: str = "^(ind|mx|per).?$",
    ) -> None: ...
    @property
    def collections(self) -> Dict[str, List[str]]: ...
    @property
    def categories(self) -> Sequence[str]: ...
    def fit(self, df: pd.DataFrame) -> GenderModel: ...
    @classmethod
    def from_dict(cls, d: Dict[str, object]) -> GenderModel: ...

class PersonModel(DiscreteModel[Person, str]):
    config: PersonModelConfig
    hidden_model_gender: Histogram[str]
    hidden_model_country: Optional[CountryModel]
    mobile_number_format: str
    home_number_format: str
    work_number_format: str
    dict_cache_size: int
    pwd_length: Sequence[int]
    def __init__(self, meta: Person, config: PersonModelConfig = ...) -> None: ...
    @property
    def categories(self) -> List[str]: ...
    @property
    def default_locale(self) -> str: ...
    @property
    def locales(self) -> List[str]: ...
    @property
    def country_to_provider_map(self) -> Dict[str, Faker]: ...
    @country_to_provider_map.setter
    def country_to_provider_map(self, value: Dict[str, Faker]) -> None: ...
    @property
    def labels(self) -> PersonLabels: ...
    @property
    def params(self) -> Dict[str, str]: ...
    def fit(self, df: pd.DataFrame) -> PersonModel: ...
    def sample(
        self,
        n: Optional[int] = None,
        produce_nans: bool = True,
        conditions: Optional[pd.DataFrame] = None,
        associations: Optional[List[Association]] = None,
    ) -> pd.DataFrame: ...
    def _sample_conditional(
        self,
        num_rows: int,
        gender_conditions: pd.Series[Any],
        country_conditions: Optional[pd.Series[Any]],
        produce_nans: bool = True,
    ) -> pd.DataFrame: ...
    def generate_values_from_collections(
        self, conditions: pd.Series[Any], collections: Dict[str, List[str]]
    ) -> pd.Series[Any]: ...
    def generate_first_names(
        self, gender_conditions: pd.Series[Any], country_conditions: pd.Series[Any]
    ) -> pd.Series[Any]: ...
    def generate_random_first_name(
        self, gender: Optional[Union[str, NAType]], country: str
    ) -> Optional[str]: ...
    def generate_last_names(
        self, firstnames: pd.Series[Any], country_conditions: pd.Series[Any]
    ) -> pd.Series[Any]: ...
    def generate_emails(
        self,
        firstnames: pd.Series[Any],
        lastnames: pd.Series[Any],
        country_condtions: pd.Series[Any],
    ) -> pd.Series[Any]: ...
    @staticmethod
    def generate_usernames(
        firstnames: pd.Series[Any], lastnames: pd.Series[Any]
    ) -> pd.Series[Any]: ...
    def generate_passwords(self, firstnames: pd.Series[Any]) -> pd.Series[Any]: ...
    @staticmethod
    def generate_password(pwd_length_min: int = 8, pwd_length_max: int = 16) -> str: ...
    @staticmethod
    def generate_phone_numbers(
        isna: pd.Series[Any], number_format: str = "07xxxxxxxx"
    ) -> pd.Series[Any]: ...
    @staticmethod
    def generate_from_collections(
        key: Union[str, np.str_], collections: Dict[str, List[str]]
    ) -> Any: ...
    def map_to_gender_keys(
        self, conditions: pd.Series[Any], mapping: Dict[str, str]
    ) -> pd.Series[Any]: ...
    @staticmethod
    def check_email(s: str, locales: List[str] = ...) -> bool: ...
    def check_associations(self, associations: List[Association]) -> None: ...
    def to_dict(self) -> Dict[str, object]: ...
    @classmethod
    def from_dict(cls, d: Dict[str, object]) -> PersonModel: ...

class CountryModel(Histogram[str]):
    countries: List[str]
    country_to_provider_map: Dict[str, Faker]
    def __init__(self, meta: Nominal) -> None: ...
    @property
    def categories(self) -> Sequence[str]: ...
    def fit(self, df: pd.DataFrame) -> CountryModel: ...

def all_supported_country_names() -> Dict[str, List[str]]: ...
def all_supported_country_codes() -> Dict[str, List[str]]: ...
def all_supported_locales() -> List[str]: ...
