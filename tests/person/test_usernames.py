"""Usernames: names, a separator and perhaps a number, without clashes until lower-cased."""

import random
import re
from types import SimpleNamespace
from typing import Any

import numpy as np
import pandas as pd
import pytest
from hypothesis import given
from hypothesis import strategies as st

from support import readings_generators as readings
from support.comparing import assert_identical, assert_same_outcome
from support.providers import DTYPES, LOCALES, countries_of, model_of_kind
from vantrel.model.models import person
from vantrel.model.models.person import PersonModel

generate = PersonModel.generate_usernames
ANN_LEE = re.compile(r"ann[.\-_]?lee([0-9]{1,2}|100)?")


def assert_reads_alike(firstnames: Any, lastnames: Any, seed: int = 1) -> Any:
    """Both get copies, so that neither sees what the other may have changed."""
    return assert_same_outcome(
        lambda: generate(firstnames.copy(), lastnames),
        lambda: readings.usernames(firstnames.copy(), lastnames),
        seed,
    )


def draw_always(monkeypatch: pytest.MonkeyPatch, separator: str, numbers: list[int]) -> Any:
    """Every separator is this one, and the numbers come from this list."""
    left = iter(numbers)
    monkeypatch.setattr(np.random, "choice", lambda separators: separator)
    monkeypatch.setattr(random, "randint", lambda low, high: next(left))
    return left


# --- what a username looks like -------------------------------------------------------------


@pytest.mark.parametrize("seed", range(20))
def test_ann_lee_gives_one_of_four_forms_with_or_without_a_number(seed: int) -> None:
    (username,) = assert_reads_alike(pd.Series(["Ann"]), pd.Series(["Lee"]), seed)
    assert ANN_LEE.fullmatch(username)


def test_every_form_of_ann_lee_occurs() -> None:
    made = set()
    for seed in range(80):
        np.random.seed(seed)
        random.seed(seed)
        (username,) = generate(pd.Series(["Ann"]), pd.Series(["Lee"]))
        made.add((username[3:-3] if username.endswith("lee") else "number", username[3]))
    assert {("", "l"), (".", "."), ("-", "-"), ("_", "_")} < made
    assert any(form == "number" for form, _ in made)


def test_blanks_are_removed_from_every_part() -> None:
    usernames = assert_reads_alike(
        pd.Series(["Mary Ann", " Jo  ", "Bo"]), pd.Series(["Lee", "de la Cruz", " "])
    )
    assert not usernames.str.contains(" ").any()
    assert usernames[0].startswith("maryann")


def test_other_white_space_stays() -> None:
    (username,) = assert_reads_alike(pd.Series(["A\tB\u00a0"]), pd.Series(["C\n"]))
    assert username.startswith("a\tb\u00a0")
    assert "c\n" in username


@pytest.mark.parametrize("first", ["İpek", "ẞtraße", "ǅ", "ΑΣ", "张伟", "محمد", "Ольга", "é", ""])
def test_lower_case_is_what_pandas_makes_of_it(first: str) -> None:
    usernames = assert_reads_alike(pd.Series([first, "Ann"]), pd.Series(["Ş", first]))
    assert len(usernames) == 2


def test_the_result_keeps_the_index_and_name_of_the_first_names() -> None:
    firstnames = pd.Series(["Ann", "Bo"], index=["b", "a"], name="first")
    lastnames = pd.Series(["Lee", "Cho"], index=["b", "a"], name="last")
    usernames = assert_reads_alike(firstnames, lastnames)
    assert (list(usernames.index), usernames.name) == (["b", "a"], "first")


def test_last_names_are_aligned_by_label() -> None:
    firstnames = pd.Series(["Ann", "Bo"], index=["a", "b"])
    lastnames = pd.Series(["Cho", "Lee"], index=["b", "a"])
    usernames = assert_reads_alike(firstnames, lastnames)
    assert ANN_LEE.fullmatch(usernames["a"])


@pytest.mark.parametrize("dtype", DTYPES, ids=str)
def test_empty_series_give_an_empty_series_of_dtype_string(dtype: Any) -> None:
    usernames = assert_reads_alike(pd.Series([], dtype=dtype), pd.Series([], dtype=dtype))
    assert (len(usernames), str(usernames.dtype)) == (0, "string")


def test_the_given_series_are_not_changed() -> None:
    firstnames, lastnames = pd.Series(["Ann"] * 5), pd.Series(["Lee"] * 5)
    generate(firstnames, lastnames)
    assert (list(firstnames), list(lastnames)) == (["Ann"] * 5, ["Lee"] * 5)


def test_seeds_of_both_generators_decide() -> None:
    def made(numpy_seed: int, random_seed: int) -> list[str]:
        np.random.seed(numpy_seed)
        random.seed(random_seed)
        return list(generate(pd.Series(["Ann"] * 9), pd.Series(["Lee"] * 9)))

    assert made(1, 1) == made(1, 1)
    assert made(1, 1) != made(2, 1)
    assert made(1, 1) != made(1, 2)


def test_the_arguments_are_taken_by_keyword_too() -> None:
    firstnames, lastnames = pd.Series(["Ann"]), pd.Series(["Lee"])
    usernames = assert_same_outcome(
        lambda: generate(lastnames=lastnames, firstnames=firstnames),
        lambda: readings.usernames(firstnames, lastnames),
        1,
    )
    assert len(usernames) == 1


# --- columns --------------------------------------------------------------------------------


@pytest.mark.parametrize("rows", [0, 1, 2, 300])
@pytest.mark.parametrize("seed", [0, 2026])
@pytest.mark.parametrize("names", ["different", "few", "one"])
def test_a_column_is_made_as_the_reading_makes_it(rows: int, seed: int, names: str) -> None:
    distinct = {"different": 1000, "few": 7, "one": 1}[names]
    firstnames = pd.Series([f"Ann{i % distinct}" for i in range(rows)], dtype="object")
    lastnames = pd.Series([f"O Lee{i % distinct}" for i in range(rows)], dtype="object")
    usernames = assert_reads_alike(firstnames, lastnames, seed)
    assert usernames.nunique() == rows


@pytest.mark.parametrize("locale", LOCALES)
def test_names_of_every_locale_read_alike(locale: str) -> None:
    model = model_of_kind("separate")
    countries = pd.Series([locale] * 40)
    firstnames = model.generate_first_names(pd.Series(["F", "M"] * 20), countries)
    assert_reads_alike(firstnames, model.generate_last_names(firstnames, countries))


@pytest.mark.parametrize("dtype", DTYPES, ids=str)
@pytest.mark.parametrize("last_dtype", ["object", "string", "category"])
def test_names_may_have_any_dtype(dtype: Any, last_dtype: str) -> None:
    firstnames = pd.Series(["Ann", "Bo", "Ann", "Mary Ann"] * 5, dtype=dtype)
    lastnames = pd.Series(["Lee", "Cho", "Lee", "Li"] * 5, dtype=last_dtype)
    assert assert_reads_alike(firstnames, lastnames) is not None


@pytest.mark.parametrize(
    "others", [["Lee", "Cho"], ("Lee", "Cho"), np.array(["Lee", "Cho"], object)]
)
def test_last_names_may_be_what_pandas_can_join(others: Any) -> None:
    assert_reads_alike(pd.Series(["Ann", "Bo"]), others)


@pytest.mark.parametrize(
    ("firstnames", "lastnames"),
    [
        (pd.Series(["Ann", "Bo"]), ["Lee"]),
        (pd.Series(["Ann", "Bo"]), 7),
        (pd.Series(["Ann", "Bo"]), None),
        (pd.Series(["Ann", "Bo"]), pd.Series([1, 2])),
        (pd.Series([1, 2]), pd.Series(["Lee", "Cho"])),
        (pd.Series([["Ann"]]), pd.Series(["Lee"])),
        (pd.Series(["Ann", "Bo"]), pd.Series(["Lee", "Cho"], index=[0, 0])),
    ],
    ids=["short", "int", "none", "int last", "int first", "list", "repeated labels"],
)
def test_errors_of_pandas_propagate_unchanged(firstnames: Any, lastnames: Any) -> None:
    assert assert_reads_alike(firstnames, lastnames) is None


@pytest.mark.parametrize("index", [[0, 0, 1, 1], [5, 5, 5, 5], [3, 2, 1, 0]])
@pytest.mark.parametrize("names", [["Ann"] * 4, ["Ann", "Ann", "Bo", "Cy"]])
def test_clashes_on_any_index_do_what_pandas_does(index: list[int], names: list[str]) -> None:
    assert_reads_alike(pd.Series(names, index=index), pd.Series(["Lee"] * 4, index=index))


# --- missing names --------------------------------------------------------------------------


@pytest.mark.parametrize(
    "names", [[None], ["Ann", None, "Bo"], [None, None], ["Ann", float("nan")]]
)
@pytest.mark.parametrize("dtype", DTYPES, ids=str)
def test_missing_names_do_what_pandas_hands_to_the_space_step(names: list[Any], dtype: Any) -> None:
    firstnames = pd.Series(names, dtype="object").astype(dtype)
    assert_reads_alike(firstnames, firstnames.copy())


def test_the_error_of_the_space_step_names_what_pandas_delivered() -> None:
    names = pd.Series(["Ann", pd.NA], dtype="object")
    delivered: list[Any] = []
    joined = names.astype(dtype="string").str.cat(others=names).apply(lambda x: x)
    joined.apply(delivered.append)
    assert not hasattr(delivered[1], "replace")
    with pytest.raises(AttributeError) as caught:
        generate(names, names)
    kind = type(delivered[1]).__name__
    assert str(caught.value) == f"'{kind}' object has no attribute 'replace'"


def test_only_a_missing_last_name_fails_in_the_space_step_too() -> None:
    assert assert_reads_alike(pd.Series(["Ann", "Bo"]), pd.Series(["Lee", None])) is None


class Watch:
    """What was asked of the series, and how many more rounds they answer."""

    def __init__(self) -> None:
        self.calls: list[str] = []
        self.rounds_left = 1000


@pytest.fixture
def watched(monkeypatch: pytest.MonkeyPatch) -> Watch:
    """Series whose calls are written down."""
    watch = Watch()

    def replace(name: str) -> None:
        method = getattr(pd.Series, name)

        def asked(self: pd.Series, *args: Any, **kwargs: Any) -> Any:
            watch.calls.append(name)
            watch.rounds_left -= name == "value_counts"
            if watch.rounds_left < 0:
                raise LookupError("rounds are used up")
            return method(self, *args, **kwargs)

        monkeypatch.setattr(pd.Series, name, asked)

    for name in ("apply", "nunique", "value_counts", "isin"):
        replace(name)
    return watch


@pytest.fixture
def skipping(monkeypatch: pytest.MonkeyPatch) -> None:
    """A pandas that applies no function to a missing element."""
    apply = pd.Series.apply

    def apply_to_present(self: pd.Series, func: Any) -> pd.Series:
        return apply(self, lambda x: x if pd.isna(x) else func(x))

    monkeypatch.setattr(pd.Series, "apply", apply_to_present)


@pytest.mark.usefixtures("skipping")
def test_a_name_missing_on_both_sides_stays_missing_and_does_not_count() -> None:
    names = pd.Series(["Ann", None, "Ann", pd.NA], dtype="object")
    usernames = assert_reads_alike(names, names.copy())
    assert list(usernames.isna()) == [False, True, False, True]
    assert usernames.nunique() == 2


@pytest.mark.usefixtures("skipping")
def test_a_missing_first_name_alone_leaves_the_username_missing() -> None:
    firstnames = pd.Series([None, "Ann"], dtype="object")
    usernames = assert_reads_alike(firstnames, pd.Series(["Lee"] * 2))
    assert list(usernames.isna()) == [True, False]


@pytest.mark.usefixtures("skipping")
def test_a_missing_last_name_alone_makes_the_loop_endless(watched: Watch) -> None:
    watched.rounds_left = 50
    lastnames = pd.Series(["Lee", None], dtype="object")
    with pytest.raises(LookupError, match=r"^rounds are used up$"):
        generate(pd.Series(["Ann", "Bo"], dtype="object"), lastnames)
    assert watched.calls.count("nunique") == 51


@pytest.mark.usefixtures("skipping")
def test_missing_names_draw_neither_separator_nor_number(monkeypatch: pytest.MonkeyPatch) -> None:
    left = draw_always(monkeypatch, "-", [6, 1, 5])
    names = pd.Series([None, "Ann"], dtype="object")
    assert list(generate(names, names.copy()).dropna()) == ["ann-ann6"]
    assert list(left) == [5]


def test_the_steps_ask_pandas_in_this_order(
    watched: Watch, monkeypatch: pytest.MonkeyPatch
) -> None:
    draw_always(monkeypatch, "_", [7, 1, 7, 1, 5, 5, 3, 4])
    generate(pd.Series(["Ann", "Ann"]), pd.Series(["Lee", "Lee"]))
    a_round = ["value_counts", "isin", "apply", "isin", "nunique"]
    assert watched.calls == ["apply"] * 3 + ["nunique"] + a_round * 2


# --- clashes --------------------------------------------------------------------------------


def test_both_copies_of_a_clash_get_numbers_until_they_differ(
    monkeypatch: pytest.MonkeyPatch,
) -> None:
    left = draw_always(monkeypatch, "_", [7, 1, 7, 1, 5, 5, 3, 4])
    usernames = generate(pd.Series(["Ann", "Ann"]), pd.Series(["Lee", "Lee"]))
    assert list(usernames) == ["ann_lee753", "ann_lee754"]
    assert list(left) == []


def test_only_the_rows_of_a_clash_change(monkeypatch: pytest.MonkeyPatch) -> None:
    left = draw_always(monkeypatch, "", [1, 0, 2, 0, 3, 0, 8, 9])
    usernames = generate(pd.Series(["Ann", "Bo", "Ann"]), pd.Series(["Lee", "Cho", "Lee"]))
    assert list(usernames) == ["annlee8", "bocho", "annlee9"]
    assert list(left) == []


def test_a_number_may_make_a_new_clash_with_another_row(monkeypatch: pytest.MonkeyPatch) -> None:
    left = draw_always(monkeypatch, "", [8, 1, 1, 0, 1, 0, 8, 9, 5, 6])
    usernames = generate(pd.Series(["Ann"] * 3), pd.Series(["Lee"] * 3))
    assert list(usernames) == ["annlee85", "annlee86", "annlee9"]
    assert list(left) == []


def test_clashes_that_only_the_removed_blank_makes_are_seen(
    monkeypatch: pytest.MonkeyPatch,
) -> None:
    draw_always(monkeypatch, "", [1, 0, 1, 0, 4, 5])
    usernames = generate(pd.Series(["An n", "Ann"]), pd.Series(["Lee", "Lee"]))
    assert list(usernames) == ["annlee4", "annlee5"]


def test_names_that_differ_in_case_alone_may_end_up_equal(monkeypatch: pytest.MonkeyPatch) -> None:
    left = draw_always(monkeypatch, "", [1, 0, 1, 0])
    usernames = generate(pd.Series(["Ann", "ann"]), pd.Series(["Lee", "Lee"]))
    assert list(usernames) == ["annlee", "annlee"]
    assert list(left) == []


@pytest.mark.parametrize("dtype", DTYPES, ids=str)
def test_300_rows_of_one_name_become_300_usernames(dtype: Any) -> None:
    firstnames = pd.Series(["Ann"] * 300, dtype=dtype)
    usernames = assert_reads_alike(firstnames, pd.Series(["Lee"] * 300))
    assert usernames.nunique() == 300


def test_a_failing_draw_in_a_clash_round_leaves_the_sources_there(
    monkeypatch: pytest.MonkeyPatch,
) -> None:
    draw = random.randint
    budget = {"left": 0}

    def scarce(low: int, high: int) -> int:
        budget["left"] -= 1
        if budget["left"] < 0:
            raise LookupError("no numbers left")
        return draw(low, high)

    def limited(call: Any) -> Any:
        budget["left"] = 650
        return call(pd.Series(["Ann"] * 300), pd.Series(["Lee"] * 300))

    monkeypatch.setattr(random, "randint", scarce)
    got = assert_same_outcome(lambda: limited(generate), lambda: limited(readings.usernames), 3)
    assert (got, budget["left"]) == (None, -1)


# --- replaced names -------------------------------------------------------------------------


def test_draws_are_asked_for_in_order_separators_first(monkeypatch: pytest.MonkeyPatch) -> None:
    calls: list[Any] = []

    def choice(*args: Any) -> str:
        calls.append(("choice", *args))
        return "."

    def randint(*bounds: int) -> int:
        calls.append(bounds)
        return 1 if bounds == (0, 1) else len(calls)

    monkeypatch.setattr(person, "np", SimpleNamespace(random=SimpleNamespace(choice=choice)))
    monkeypatch.setattr(person, "random", SimpleNamespace(randint=randint))
    usernames = generate(pd.Series(["Ann", "Bo"]), pd.Series(["Lee", "Cho"]))
    assert calls == [("choice", ["", ".", "-", "_"])] * 2 + [(0, 100), (0, 1)] * 2
    assert list(usernames) == ["ann.lee3", "bo.cho5"]


def test_a_clash_asks_for_one_number_a_copy(monkeypatch: pytest.MonkeyPatch) -> None:
    bounds: list[Any] = []
    drawn = iter([1, 0, 1, 0, 8, 9])

    def randint(*given: int) -> int:
        bounds.append(given)
        return next(drawn)

    monkeypatch.setattr(np.random, "choice", lambda separators: "")
    monkeypatch.setattr(person, "random", SimpleNamespace(randint=randint))
    generate(pd.Series(["Ann", "Ann"]), pd.Series(["Lee", "Lee"]))
    assert bounds == [(0, 100), (0, 1)] * 2 + [(0, 100)] * 2


def test_presence_is_asked_of_the_modules_pandas(monkeypatch: pytest.MonkeyPatch) -> None:
    asked: list[Any] = []

    def notna(value: Any) -> bool:
        asked.append(str(value))
        return False

    monkeypatch.setattr(person, "pd", SimpleNamespace(notna=notna))
    left = draw_always(monkeypatch, "-", [1])
    assert list(generate(pd.Series(["Ann", "Bo"]), pd.Series(["Lee", "Cho"]))) == [
        "annlee",
        "bocho",
    ]
    assert asked == ["Ann", "Bo", "AnnLee", "BoCho"]
    assert list(left) == [1]


@pytest.mark.parametrize(
    ("owner", "function", "stand_in"),
    [
        (np.random, "choice", lambda separators: separators[-1]),
        (random, "randint", lambda low, high: high),
    ],
)
def test_functions_replaced_in_place_are_used(
    monkeypatch: pytest.MonkeyPatch, owner: Any, function: str, stand_in: Any
) -> None:
    monkeypatch.setattr(owner, function, stand_in)
    (username,) = assert_reads_alike(pd.Series(["Ann"]), pd.Series(["Lee"]))
    assert username[3] == "_" if function == "choice" else username.endswith("lee100")


def test_other_sources_in_the_place_of_both_modules_are_used(
    monkeypatch: pytest.MonkeyPatch,
) -> None:
    names = pd.Series(["Ann"] * 20), pd.Series(["Lee"] * 20)
    random.seed(3)
    np.random.seed(3)
    expected = readings.usernames(*names)
    states = random.getstate(), np.random.get_state()[2]
    monkeypatch.setattr(person, "random", random.Random(3))
    monkeypatch.setattr(person, "np", SimpleNamespace(random=np.random.RandomState(3)))
    assert_identical(generate(*names), expected)
    assert states == (random.getstate(), np.random.get_state()[2])


def test_another_bit_generator_behind_numpys_global_source_is_used() -> None:
    kept = np.random.get_bit_generator()

    def run(call: Any) -> tuple[Any, Any]:
        np.random.set_bit_generator(np.random.PCG64(3))
        random.seed(3)
        made = call(pd.Series(["Ann"] * 30), pd.Series(["Lee"] * 30))
        return made, np.random.get_bit_generator().state

    try:
        got, state = run(generate)
        expected, expected_state = run(readings.usernames)
    finally:
        np.random.set_bit_generator(kept)
    assert_identical(got, expected)
    assert state == expected_state


def test_saved_normal_deviates_stay_saved() -> None:
    random.seed(1)
    np.random.seed(1)
    random.gauss(0, 1)
    np.random.standard_normal()
    saved = random.getstate()[2], np.random.get_state()[3:]
    generate(pd.Series(["Ann"] * 9), pd.Series(["Lee"] * 9))
    assert saved == (random.getstate()[2], np.random.get_state()[3:])


# Texts with NUL are left out: pandas counts some of those that differ as one.
TEXTS = st.text(st.characters(exclude_categories=["Cs"], exclude_characters="\0"), max_size=6)
NAMES = st.sampled_from(["Ann", "ann", "Mary Ann", "", " ", "İ", "ß", "张"]) | TEXTS


@given(rows=st.lists(st.tuples(NAMES, NAMES), max_size=10), seed=st.integers(0, 2**32 - 1))
def test_any_names_read_alike(rows: list[tuple[str, str]], seed: int) -> None:
    firstnames = pd.Series([first for first, _ in rows], dtype="object")
    lastnames = pd.Series([last for _, last in rows], dtype="object")
    assert assert_reads_alike(firstnames, lastnames, seed) is not None


@given(names=st.lists(NAMES | st.none(), min_size=1, max_size=6), seed=st.integers(0, 2**32 - 1))
def test_any_names_missing_on_both_sides_read_alike(names: list[str | None], seed: int) -> None:
    column = pd.Series(names, dtype="object")
    assert_reads_alike(column, column.copy(), seed)


def test_names_of_a_mixed_table_read_alike() -> None:
    model = model_of_kind("shared")
    countries = countries_of(model, 120)
    firstnames = model.generate_first_names(pd.Series(["F", "M", "NB"] * 40), countries)
    lastnames = model.generate_last_names(firstnames, countries)
    assert assert_reads_alike(firstnames, lastnames) is not None
