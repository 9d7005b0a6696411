"""Where Dask is not installed, what needs it says so."""

from importlib.util import find_spec
from pathlib import Path

import pytest
from click.testing import CliRunner

from support.people import fitted_model
from vantrel.cli import main
from vantrel.config import PersonLabels
from vantrel.errors import MissingPackageError
from vantrel.storage.models import save

pytestmark = pytest.mark.skipif(find_spec("dask") is not None, reason="Dask is installed here")


def test_the_command(tmp_path: Path, monkeypatch: pytest.MonkeyPatch) -> None:
    monkeypatch.chdir(tmp_path)
    save(fitted_model(PersonLabels(gender="gender")), "m.json")
    result = CliRunner().invoke(main, "sample m.json -n 3 -o people --dask".split())
    assert result.exit_code == 1
    assert result.stderr == (
        "vantrel: error: Work on Dask needs distributed: pip install 'vantrel[dask]'.\n"
    )
    assert not Path("people").exists()


def test_replacing(tmp_path: Path, monkeypatch: pytest.MonkeyPatch) -> None:
    pytest.importorskip("pyarrow", reason="it is asked for first")
    monkeypatch.chdir(tmp_path)
    result = CliRunner().invoke(main, "replace many -o copy --dask".split())
    assert result.exit_code == 1
    assert result.stderr == (
        "vantrel: error: Work on Dask needs dask: pip install 'vantrel[dask]'.\n"
    )


def test_in_python() -> None:
    with pytest.raises(MissingPackageError) as caught:
        from vantrel.scale import sample  # noqa: F401 - to import it is the test
    assert str(caught.value) == "Work on Dask needs dask: pip install 'vantrel[dask]'."
