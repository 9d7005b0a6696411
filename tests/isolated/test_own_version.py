"""The module under the Python that it is built for."""

from pathlib import Path

from support.isolated import output_of
from support.versions import needs_own_version


@needs_own_version("another version is warned of")
def test_nothing_is_warned_of(standins: Path) -> None:
    code = "import vantrel.model.models.person as person; print(person.__name__)"
    settings = {"path": standins, "options": ("-W", "error")}
    assert output_of(code, **settings) == "vantrel.model.models.person"


@needs_own_version("another version is warned of, which is an error here")
def test_development_mode_finds_nothing(standins: Path) -> None:
    """Import, a class, a call, a failure and the end of the process under the checking allocator."""
    code = """
        import vantrel.model.models.person as person
        model = person.CountryModel("meta")
        try:
            person.PersonModel.from_dict({})
        except KeyError:
            print(model.fit is not None, person.all_supported_locales())
        """
    settings = {"path": standins, "options": ("-X", "dev", "-W", "error")}
    assert output_of(code, **settings) == "True ['person']"


def test_module_survives_the_end_of_the_process(standins: Path) -> None:
    """What is called while the interpreter goes down still answers."""
    code = """
        import atexit
        import vantrel.model.models.person as person
        atexit.register(lambda: print(person.PersonModel.check_email("no address", ["fr"])))
        """
    assert output_of(code, path=standins) == "True"
