"""Folders whose people are replaced on Dask: the people are those of one machine."""

from __future__ import annotations

import dataclasses
import json
import re
import stat
from pathlib import Path
from typing import Any

import pandas as pd
import pytest

pytest.importorskip("distributed", reason="clusters need distributed")
pytest.importorskip("pyarrow", reason="Parquet files need pyarrow")

import pyarrow as pa
import pyarrow.parquet as pq

import vantrel
from support.command import succeed
from support.replaced_folders import KEY, in_rows, read_files, visits, write_folder
from support.replacing import SECRET
from support.scaling import contents
from vantrel import scale
from vantrel.errors import BorrowedNamesWarning, ReplaceError
from vantrel.replacing.runs.asked import Asked, OfTable
from vantrel.replacing.runs.files import replace_files
from vantrel.replacing.runs.outcome import Outcome
from vantrel.sampling.to_file import untold

OTHERS = {"seen": "shift:30", "row": "keep"}
NAME = re.compile(r"[^ ]*/(one|many)(\.parquet)?")


@pytest.fixture(autouse=True)
def _here(tmp_path: Path, monkeypatch: pytest.MonkeyPatch) -> None:
    monkeypatch.chdir(tmp_path)


@pytest.fixture(scope="module")
def table() -> pd.DataFrame:
    return visits()


@pytest.fixture(scope="module")
def whole(
    table: pd.DataFrame, tmp_path_factory: pytest.TempPathFactory
) -> tuple[pa.Table, Outcome]:
    """What one machine makes of the table, and what it tells."""
    return on_one_machine(table, tmp_path_factory.mktemp("one"))


def on_one_machine(table: pd.DataFrame, folder: Path, **asked: Any) -> tuple[pa.Table, Outcome]:
    one, copy = folder / "one.parquet", folder / "copy.parquet"
    table.to_parquet(one, index=False)
    (folder / "secret").write_text(f"secret: {SECRET.hex()}\n")
    (folder / "secret").chmod(0o600)
    outcome = replace_files(
        [one],
        copy,
        Asked(OfTable(((KEY,),), others=OTHERS | asked)),
        secret_file=folder / "secret",
        progress=lambda _, rows: untold(rows or 0),
    )
    return pq.read_table(copy).replace_schema_metadata(), outcome


def replace(client: Any, source: str = "many", output: str = "copy", **asked: Any) -> Outcome:
    asked = {"key": KEY, "secret": SECRET, "others": OTHERS} | asked
    return scale.replace(source, output, client=client, **asked)


def told(outcome: Outcome) -> tuple[Any, ...]:
    """What is told of a run, but for what one machine alone counts or takes, and the table's name."""
    report = dataclasses.asdict(outcome.report)
    (of_table,) = report.pop("tables").values()
    for counted in ("borne", "by_chance"):
        report.pop(counted)
    (done,) = outcome.tables
    notes = [NAME.sub("", note).replace(" or people=...", "") for note in outcome.notes]
    return report, of_table, done.leaks, done.notes, notes


@pytest.mark.parametrize("files", [1, 3, 7])
def test_the_people_are_those_of_one_machine(
    files: int, client: Any, table: pd.DataFrame, whole: tuple[pa.Table, Outcome]
) -> None:
    write_folder(Path("many"), table, files)
    outcome = replace(client)
    made, plain = whole
    assert in_rows(read_files(Path("copy"))).equals(in_rows(made))
    assert told(outcome) == told(plain)
    names = {path.name for path in Path("many").iterdir()}
    assert {path.name for path in Path("copy").iterdir()} == {*names, "_made.json"}
    assert "still name the row's person (rows 51, 151, 251)" in "".join(outcome.notes)
    assert "136 cells without a date" in "".join(outcome.notes)


def test_notes_advise_what_is_taken_here(client: Any, table: pd.DataFrame) -> None:
    write_folder(Path("many"), table, 2)
    (note,) = (note for note in replace(client).notes if "country" in note)
    assert note.endswith(
        "their names and numbers are those of en_GB, unless place=... tells others."
    )


def test_the_order_of_files_does_not_matter(
    client: Any, table: pd.DataFrame, whole: tuple[pa.Table, Outcome]
) -> None:
    write_folder(Path("many"), table, 5, backwards=True)
    replace(client)
    made = read_files(Path("copy"))
    assert made["row"][0].as_py() == 960
    assert in_rows(made).equals(in_rows(whole[0]))


def test_one_worker_writes_the_same_files(client: Any, table: pd.DataFrame) -> None:
    write_folder(Path("many"), table, 3)
    replace(client)
    scale.replace("many", "alone", KEY, SECRET, others=OTHERS, workers=1)
    made, alone = contents(Path("copy")), contents(Path("alone"))
    assert made == alone


@pytest.mark.parametrize("files", [2, 6])
def test_the_first_file_that_tells_counts(files: int, client: Any, table: pd.DataFrame) -> None:
    few = table.head(6).assign(
        customer_id=[1, 1, 1, 2, 2, 3],
        sex=["", "f", "m", "m", "m", ""],
        country=["", "DE", "FR", "", "JP", "FR"],
        first_name="Qa",
        last_name="Qb",
    )
    write_folder(Path("many"), few, files)
    outcome = replace(client)
    folder = Path("one machine")
    folder.mkdir()
    made, plain = on_one_machine(few, folder)
    assert read_files(Path("copy")).equals(made)
    assert told(outcome) == told(plain)
    assert outcome.report.tables["many"].contradictions == {"gender": 1, "country": 1}


def test_every_row_is_a_person_without_a_key(client: Any, table: pd.DataFrame) -> None:
    bare = table.drop(columns=["email", "first_name", "last_name"]).head(50)
    write_folder(Path("many"), bare, 3)
    outcome = replace(client, key=None)
    bare.to_parquet("one.parquet", index=False)
    plain = pq.read_table("one.parquet").to_pandas()
    expected = scale_free(plain)
    assert outcome.report.people == outcome.report.tables["many"].without_key[""] == 50
    assert read_files(Path("copy"))["username"].to_pylist() == expected["username"].tolist()


def scale_free(table: pd.DataFrame) -> pd.DataFrame:
    """What one machine makes of a frame."""

    made: pd.DataFrame = vantrel.replace(table, secret=SECRET, others=OTHERS)
    return made


def test_actions_and_scrubbing_go_over_all_files(client: Any, table: pd.DataFrame) -> None:
    write_folder(Path("many"), table, 4)
    outcome = replace(client, scrub=["note"], others=OTHERS | {KEY: "hash", "sex": "blank"})
    made = in_rows(read_files(Path("copy"))).to_pandas()
    assert not any("note" in note for note in outcome.notes)
    real = table[KEY].dropna()
    assert made[KEY].dropna().groupby(real.to_numpy()).nunique().eq(1).all()
    assert not (made[KEY].dropna().to_numpy() == real.to_numpy()).any()
    assert made["sex"].isna().all()
    assert (made["note"] == "x").sum() == (table["note"] == "x").sum()
    assert not made["note"].str.contains("Qa").any()


def test_files_without_rows_and_folders_without_people(client: Any, table: pd.DataFrame) -> None:
    write_folder(Path("many"), table.head(2), 3)
    assert replace(client).report.people == 2
    assert [len(pq.read_table(path)) for path in sorted(Path("copy").glob("*.parquet"))] == [
        0,
        1,
        1,
    ]
    write_folder(Path("none"), table.head(0), 1)
    assert replace(client, "none", "no copy").report.people == 0
    assert read_files(Path("no copy")).schema == read_files(Path("none")).schema


def test_the_types_of_files_may_differ(
    client: Any, table: pd.DataFrame, whole: tuple[pa.Table, Outcome]
) -> None:
    folder = write_folder(Path("many"), table, 4)
    kinds = (pa.int64(), pa.string(), pa.float64(), pa.decimal128(19))
    for kind, path in zip(kinds, sorted(folder.iterdir()), strict=True):
        part = pq.read_table(path)
        keys = part[KEY].cast(kind)
        pq.write_table(part.set_column(part.column_names.index(KEY), KEY, keys), path)
    assert told(replace(client)) == told(whole[1])
    copies = [pq.read_table(path).drop(KEY) for path in sorted(Path("copy").glob("*.parquet"))]
    made = pa.concat_tables(copies).replace_schema_metadata()
    assert in_rows(made).equals(in_rows(whole[0].drop(KEY)))


def test_a_record_tells_how_copies_were_made(client: Any, table: pd.DataFrame) -> None:
    write_folder(Path("many"), table, 2)
    outcome = replace(client)
    text = Path("copy", "_made.json").read_text()
    record = json.loads(text)
    assert (record["table"], record["rows"]) == ("many", 1_200)
    assert record["people_of_a_row"][""]["key"] == [KEY]
    assert record["report"]["people"] == outcome.report.people
    assert record["others"] == {"seen": "shift:30:YYYY-MM-DD", "row": "keep"}
    assert [leak["cells"] for leak in record["leaks"]] == [12]
    assert list(record["files"]) == ["part.000.parquet", "part.001.parquet"]
    assert not shows(text)


def test_a_folder_is_compared_with_its_copies(client: Any, table: pd.DataFrame) -> None:
    write_folder(Path("many"), table, 3)
    replace(client)
    found = reported()
    asking = {about for about, state in found.items() if state == "look"}
    assert asking == {"People who are still named"}
    assert found["How it was made"] == "fine"
    part = Path("copy", "part.001.parquet")
    pq.write_table(pq.read_table(part), part)
    assert {about for about, state in reported().items() if state == "look"} == {
        "People who are still named",
        "How it was made",
    }


def reported() -> dict[str, str]:
    """The states of all verdicts on the copies."""
    succeed("report many copy -o report.html --json report.json --force")
    form = json.loads(Path("report.json").read_text())
    assert form["compared"] == "copy"
    return {each["about"]: each["state"] for each in form["verdicts"]}


def shows(text: str) -> bool:
    """Tells whether a text has the secret in it, in whatever form."""
    forms = (SECRET.decode(), SECRET.hex(), repr(SECRET), str(int.from_bytes(SECRET)))
    return any(form.strip("b'") in text for form in forms)


def test_countries_without_names_are_told_once(client: Any, table: pd.DataFrame) -> None:
    write_folder(Path("many"), table.head(4).assign(country="Malta"), 4)
    with pytest.warns(BorrowedNamesWarning) as warned:
        replace(client)
    assert len(warned) == 1
    assert "Malta" in str(warned[0].message)


def test_a_new_secret_file_is_kept_and_used_again(client: Any, table: pd.DataFrame) -> None:
    write_folder(Path("many"), table, 2)
    secret = Path("people.secret")
    asked = Asked(OfTable(((KEY,),), others=OTHERS))
    for output in ("copy", "another"):
        scale.replace_folder(Path("many"), Path(output), asked, secret=secret, client=client)
    assert stat.S_IMODE(secret.stat().st_mode) == 0o600
    assert contents(Path("copy")) == contents(Path("another"))


def test_no_copy_may_be_read_by_more_people_than_its_file(client: Any, table: pd.DataFrame) -> None:
    write_folder(Path("many"), table, 2)
    Path("many", "part.001.parquet").chmod(0o600)
    replace(client)
    assert stat.S_IMODE(Path("copy", "part.001.parquet").stat().st_mode) == 0o600


def test_several_people_of_a_row_and_their_households(client: Any, table: pd.DataFrame) -> None:
    people = table[[KEY, "sex", "country", "first_name", "last_name"]].assign(
        house=table["row"] // 7
    )
    sellers = people[::-1].reset_index(drop=True)
    sellers.loc[5:40] = None
    sides = [people.add_prefix("buyer_"), sellers.add_prefix("seller_")]
    deals = pd.concat(sides, axis="columns").assign(house=people["house"])
    write_folder(Path("deals"), deals, 3)
    keys = {side: f"{side}_{KEY}" for side in ("buyer", "seller")}
    asked = Asked(OfTable(tuple((key,) for key in keys.values()), household="house"))
    scale.replace_folder(Path("deals"), Path("two"), asked, secret=SECRET, client=client)
    real, made = (read_files(Path(name)).to_pandas() for name in ("deals", "two"))
    alone = vantrel.replace(real, keys, SECRET, household="house")
    pd.testing.assert_frame_equal(made, alone)
    changed = [f"{side}_{name}_name" for side in keys for name in ("first", "last")]
    assert not (made[changed] == real[changed]).any(axis=None)
    scale.replace("deals", "by name", keys, SECRET, household="house", client=client)
    assert contents(Path("by name")) == contents(Path("two"))


def test_a_key_of_nobody_in_the_rows(client: Any, table: pd.DataFrame) -> None:
    write_folder(Path("many"), table, 2)
    with pytest.raises(ReplaceError) as caught:
        replace(client, key={"buyer": KEY})
    assert str(caught.value) == (
        "Table many has nobody called 'buyer' in its rows. Its rows have one person each: name the"
        " key alone."
    )
