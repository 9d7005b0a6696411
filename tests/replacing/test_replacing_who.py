"""Who is who, over several tables."""

from __future__ import annotations

from typing import Any

import numpy as np
import pytest

pytest.importorskip("pyarrow", reason="People are replaced by way of Arrow")

import vantrel
from vantrel.replacing.people import who as who_module
from vantrel.replacing.people.told import Told
from vantrel.replacing.people.who import Who


def told(rows: list[tuple[int, int, int, int]]) -> Told:
    columns = zip(*((*row, 0) for row in rows), strict=True)
    return Told(
        *(
            np.array(column, dtype=dtype)
            for column, dtype in zip(columns, ("u1", "u2", "u8", "u8", "u8"), strict=True)
        )
    )


def learn(who: Who, keys: list[int], rows: list[tuple[int, int, int, int]]) -> None:
    prints = np.array(keys, dtype=np.uint64)
    who.learn(prints, prints + np.uint64(1), told(rows))


def facts(who: Who, key: int) -> tuple[int, ...]:
    place = who.find(np.array([key], dtype=np.uint64))
    return tuple(int(values[place][0]) for values in who.told[:-1])


def test_each_fact_is_of_the_first_row_that_tells_it() -> None:
    who = Who()
    learn(who, [9, 5, 9], [(0, 0, 3, 0), (2, 1, 0, 0), (1, 0, 4, 0)])
    learn(who, [9, 5], [(2, 7, 0, 6), (0, 2, 8, 0)])
    assert who.end_table() == {"gender": 1, "place": 1}
    assert facts(who, 9) == (1, 7, 3, 6)
    assert facts(who, 5) == (2, 1, 8, 0)


def test_contradictions_are_counted_by_person_and_table() -> None:
    who = Who()
    learn(who, [1, 1, 1, 2], [(1, 1, 0, 0), (2, 1, 0, 0), (3, 2, 0, 0), (1, 0, 0, 0)])
    assert who.end_table() == {"gender": 1, "place": 1}
    learn(who, [1, 2, 3], [(1, 1, 0, 0), (2, 0, 0, 0), (1, 1, 0, 0)])
    assert who.end_table() == {"gender": 1, "place": 0}
    assert who.end_table() == {"gender": 0, "place": 0}


def test_merging_often_or_once_is_the_same(monkeypatch: pytest.MonkeyPatch) -> None:
    rng = np.random.default_rng(1)
    keys = rng.integers(1, 60, (20, 10))
    rows = rng.integers(0, 3, (20, 10, 4))

    def learnt(fewest: int) -> tuple[Any, ...]:
        monkeypatch.setattr(who_module, "_FEWEST_TO_MERGE", fewest)
        who = Who()
        for own, those in zip(keys.tolist(), rows.tolist(), strict=True):
            learn(who, own, those)
        return (who.end_table(), *(values.tolist() for values in who.told[:-1]))

    assert learnt(1) == learnt(1_000_000)


def test_digests_stay_with_their_people() -> None:
    who = Who()
    learn(who, [50, 55], [(1, 1, 0, 0)] * 2)
    who.end_table()
    who.digests[0], who.is_hashed[0] = 7, True
    learn(who, [40, 50, 60], [(1, 1, 0, 0)] * 3)
    who.end_table()
    assert who.is_hashed.tolist() == [False, True, False, False]
    assert who.digests[:, 0].tolist() == [0, 7, 0, 0]


def test_a_key_that_was_not_learnt_is_refused() -> None:
    who = Who()
    message = "Some rows have keys that were not there when the table was learnt."
    for keys in ([], [1, 5]):
        learn(who, keys, [(1, 1, 0, 0)] * len(keys)) if keys else None
        who.end_table()
        for other in (0, 3, 9):
            with pytest.raises(vantrel.ReplaceError) as caught:
                who.find(np.array([other], dtype=np.uint64))
            assert str(caught.value) == message
    assert len(who.find(np.array([], dtype=np.uint64))) == 0


def test_keys_of_one_print_are_refused() -> None:
    who = Who()
    same = np.array([3, 3], dtype=np.uint64)
    who.learn(same, np.array([1, 2], dtype=np.uint64), told([(1, 1, 0, 0)] * 2))
    with pytest.raises(vantrel.ReplaceError) as caught:
        who.end_table()
    assert str(caught.value) == ("Two keys look alike by chance, as few ever do: run it once more.")
