"""Importing again after imports that failed."""

from pathlib import Path

from support.failed_imports import PRELUDE
from support.isolated import answer_of, output_of


def test_several_failures_in_a_row_then_a_sound_import(standins: Path) -> None:
    code = (
        PRELUDE
        + """
    import vantrel.config, vantrel.util.person, vantrel.model.models.histogram as histogram
    failures = []
    for module, name in [
        (vantrel.config, "PersonLabels"),
        (vantrel.util.person, "collections_from_mapping"),
        (histogram, "Histogram"),
    ] * 3:
        kept = module.__dict__.pop(name)
        failures.append(failure()["entries"][0][2])
        setattr(module, name, kept)
    print(json.dumps([failures, works()]))
    """
    )
    assert answer_of(code, path=standins) == [[14, 24, 27] * 3, True]


def test_module_object_of_a_failed_execution_may_be_executed_again(standins: Path) -> None:
    code = (
        PRELUDE
        + """
    import vantrel.config
    spec = importlib.util.find_spec(NAME)
    made = importlib.util.module_from_spec(spec)
    kept = vantrel.config.__dict__.pop("PersonLabels")
    try:
        spec.loader.exec_module(made)
    except ImportError:
        vantrel.config.PersonLabels = kept
    other = importlib.util.module_from_spec(spec)
    spec.loader.exec_module(other)
    print(other is made, other.all_supported_locales())
    """
    )
    assert output_of(code, path=standins) == "False ['person']"
