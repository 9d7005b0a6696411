"""Importing the host."""

import subprocess
import sys

import pytest


@pytest.mark.parametrize("package", ["vantrel", "vantrel.model", "vantrel.model.models"])
def test_packages_above_the_module_load_neither_pandas_nor_numpy(package: str) -> None:
    code = f"import sys, {package}; print({{'pandas', 'numpy', 'faker'}} & set(sys.modules))"
    run = subprocess.run([sys.executable, "-c", code], capture_output=True, text=True, check=True)
    assert run.stdout.strip() == "set()"


@pytest.mark.parametrize(
    ("module", "names"),
    [
        ("vantrel.config", "PersonLabels PersonModelConfig"),
        ("vantrel.metadata", "MetaNotExtractedError Nominal"),
        ("vantrel.metadata.value", "Person String"),
        ("vantrel.metadata.rules.association", "Association"),
        (
            "vantrel.util.locale.locale",
            "Provider get_country_to_provder_map get_supported_country_codes"
            " get_supported_country_names valid_locales",
        ),
        ("vantrel.util.person", "collections_from_mapping"),
        ("vantrel.model.base", "DiscreteModel"),
        ("vantrel.model.exceptions", "ModelNotFittedError"),
        ("vantrel.model.models.histogram", "Histogram"),
    ],
)
def test_every_name_is_where_the_module_imports_it_from(module: str, names: str) -> None:
    subprocess.run(
        [sys.executable, "-c", f"from {module} import {', '.join(names.split())}"], check=True
    )
