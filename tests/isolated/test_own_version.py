"""The module under the Python that it is built for."""

from support.isolated import output_of


def test_nothing_is_warned_of(standins):
    code = "import vantrel.model.models.person as person; print(person.__name__)"
    settings = {"path": standins, "options": ("-W", "error")}
    assert output_of(code, **settings) == "vantrel.model.models.person"
