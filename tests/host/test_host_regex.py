"""Which patterns may come from a model file."""

import re
import sys
from collections.abc import Iterator
from contextlib import contextmanager
from types import CodeType

import pytest
from hypothesis import given, settings
from hypothesis import strategies as st

from vantrel import genders as patterns
from vantrel.model.models.person import GenderModel
from vantrel.util.regex.alphabet import BEYOND
from vantrel.util.regex.safety import LONGEST_PATTERN, UnsafePatternError, check_pattern
from vantrel.util.regex.syntax import (
    Character,
    Choice,
    Pattern,
    Repeat,
    Sequence,
    Start,
    read,
)
from vantrel.util.regex.ways import TooManyWaysError, check_ways

DEFAULTS = [value for name, value in vars(patterns).items() if name.isupper() and name[0] != "_"]


def test_the_default_patterns_would_be_accepted_if_they_were_not_known() -> None:
    assert len(DEFAULTS) == 6
    for pattern in DEFAULTS:
        check_ways(read(pattern))


@pytest.mark.parametrize("pattern", GenderModel.__init__.__defaults__ or ())
def test_the_default_patterns_of_titles(pattern: str) -> None:
    check_pattern(pattern)


@pytest.mark.parametrize(
    "pattern",
    [
        "", "^$", "mr", r"^(f|female|frau|mme)\.?$", "(?i)wom[ae]n", "^h(err)?$", "^(?:m|f)$",
        r"\bmrs?\b", r"^\s*(mr|mister)[\s.]*$", "^mr.*$", "^.*mr", r"mrs?\s*$", r"^[^\W\d]+$",
        r"^(?P<who>wo)?m[ae]n\Z", r"\Am\x61le$", "^(dr ){0,3}mrs$", "^[a-z]+ [a-z]+$", "^fräu?lein$",
        "^[])}]$", "^[^]]$", "^(a|b|c)*$", r"^\u0444.?$", "^f*?x", "^(ab)+c{2,}$", "]}",
        "^(♀|👩)$", r"^(\s|[^\0-\uffff])+$", "[" + "a-z" * 30 + "]",
        "^[" + "".join(map(chr, range(0x4E00, 0x6000))) + "]+",
    ],
)  # fmt: skip
def test_patterns_of_ones_own(pattern: str) -> None:
    check_pattern(pattern)


@pytest.mark.parametrize(
    "pattern",
    [
        "(a+)+$", "(a|aa)+$", "(a|a?)+$", "^(a|a)*$", ".*.*.*.*=", "^.*.*=", "(a*)*", "^(a*b?)*$",
        "^(x+x+)+y", "a?" * 30 + "a" * 30, "^(a?){30}a{30}", "^" + "(|)" * 40 + "$", "(|)" * 40 + "x",
        "^a" + "(|)" * 40 + "b", r"^(\w|\d)+$", r"^(\W|ι)+$", r"^([\u0500-\u0700]|\d)+$",
        "^(ſ|S)+$", "^(😀|.)+$", "^(𐐀|𐐨)+$", r"^(\d|[^\0-\uffff])+$", r"^(\w|[^\0-\uffff])+$",
        "a+b", "(a{1000}){1000}", "^(a|b)*a(a|b){14}$", r"^(\s|[^a])+$", "(ab|a|b)*c",
        "^" + "(a|b|c|d)" * 500, "|".join(map(chr, range(0x4E00, 0x4E70))), r"^\s*mr\s*\.?\s*$",
    ],
)  # fmt: skip
def test_patterns_that_might_make_a_search_endless(pattern: str) -> None:
    with pytest.raises(UnsafePatternError) as caught:
        check_pattern(pattern)
    assert str(caught.value) == (
        "could make a search endless: begin it with ^ and let no two repeats match the same"
        " characters, neither one in the other, as in (a+)+, nor side by side, as in a*a*."
    )


@pytest.mark.parametrize(
    ("pattern", "what"),
    [
        (r"(a)\1", r"what stands from '\\1' on"),
        ("^(?=a)", "what stands from '(?=a)' on"),
        ("x(?#y)", "what stands from '(?#y)' on"),
        ("(?>a)", "what stands from '(?>a)' on"),
        ("a++", "what stands from '++' on"),
        ("(?x)a b", "what stands from '(?x)a b' on"),
        ("a{", "what stands from '{' on"),
        ("[[a]]", "what stands from '[[a]]' on"),
        ("0[][]", "what stands from '[][]' on"),
        ("[^][]", "what stands from '[^][]' on"),
        ("[a&&b]", "what stands from '[a&&b]' on"),
        (r"\N{BULLET}", r"what stands from '\\N{BULLE' on"),
        ("^[♀👩]$", "a class with a character beyond U+FFFF"),
        ("[^\U00010000-\U00010fff]{400}b", "a class with a character beyond U+FFFF"),
        ("(" * 30 + ")" * 30, "groups in more than 20 others"),
    ],
)
def test_patterns_that_are_not_understood(pattern: str, what: str) -> None:
    with pytest.raises(UnsafePatternError) as caught:
        check_pattern(pattern)
    assert str(caught.value) == (
        f"uses {what}, which is not supported in a file: write it with characters, classes, groups,"
        " |, repeats, anchors and a leading (?i) only."
    )


@pytest.mark.parametrize(
    ("pattern", "reason"),
    [
        ("*", "nothing to repeat at position 0"),
        ("[b-a]", "bad character range b-a at position 1"),
        (r"\q", r"bad escape \q at position 0"),
        ("a{9999999999}", "the repetition number is too large"),
        ("a)", "unbalanced parenthesis at position 1"),
    ],
)
def test_patterns_that_are_none(pattern: str, reason: str) -> None:
    with pytest.raises(UnsafePatternError) as caught:
        check_pattern(pattern)
    assert str(caught.value) == f"is no regular expression ({reason}): correct it."


def test_a_long_pattern() -> None:
    with pytest.raises(UnsafePatternError) as caught:
        check_pattern("^" + "a" * LONGEST_PATTERN)
    assert str(caught.value) == "has 5,001 characters, more than 5,000: shorten it."


def test_a_pattern_with_many_ranges() -> None:
    with pytest.raises(UnsafePatternError) as caught:
        check_pattern("[" + "\0-\uffff" * 31 + "]")
    assert str(caught.value) == "has 31 hyphens, more than 30: write fewer ranges."


def test_three_characters_stand_for_all_beyond_ffff() -> None:
    beyond = "".join(map(chr, range(0x10000, sys.maxunicode + 1)))
    assert not re.search("[\0-\uffff]", beyond, re.IGNORECASE)
    kinds = [r"[^\W\d]", r"\d", r"[^\w\s]"]
    assert [re.findall(kind, BEYOND) for kind in kinds] == [[character] for character in BEYOND]
    assert len(beyond) == sum(len(re.findall(kind, beyond)) for kind in kinds)


def ends(pattern: Pattern, text: str, at: int) -> set[int]:
    """Gives where a match that begins at a position can end, by the meaning of what was read."""
    match pattern:
        case Character(source):
            fits = at < len(text) and re.fullmatch(source, text[at], re.IGNORECASE)
            return {at + 1} if fits else set()
        case Start():
            return {at} if at == 0 else set()
        case Choice(parts):
            return {end for part in parts for end in ends(part, text, at)}
        case Sequence(parts):
            reached = {at}
            for part in parts:
                reached = {end for start in reached for end in ends(part, text, start)}
            return reached
        case Repeat(part, least, most):
            found: set[int] = set()
            reached, times = {at}, 0
            while reached and (most is None or times <= most) and times <= least + len(text):
                found |= reached if times >= least else set()
                reached = {end for start in reached for end in ends(part, text, start)}
                times += 1
            return found


# What a search may try at each character of a text, as check_ways promises.
TRIES = 1_000

pieces = st.sampled_from(
    ["a", "b", "A", r"\.", ".", "[ab]", "[^a]", r"\w", r"\s", "[]a]", "[^]]", r"[\]b]", r"\x61", "]",
     "a{2}", "b{,2}", "a{1,}", "b?", "a*?", "[a-c]+", "^", "}", "ä"]
)  # fmt: skip
some_patterns = st.recursive(
    pieces,
    lambda inner: st.one_of(
        st.lists(inner, max_size=3).map("".join),
        st.lists(inner, min_size=1, max_size=3).map(lambda parts: f"({'|'.join(parts)})"),
        st.tuples(inner, st.sampled_from(["*", "+", "?", "{2}", "{1,2}", "+?"])).map(
            lambda part: f"(?:{part[0]}){part[1]}"
        ),
    ),
    max_leaves=6,
)


@settings(max_examples=300, deadline=None, database=None)
@given(some_patterns, st.text("abA.] ä\n", max_size=6))
def test_a_pattern_is_read_as_re_reads_it(pattern: str, text: str) -> None:
    found = re.compile(pattern, re.IGNORECASE).fullmatch(text) is not None
    assert (len(text) in ends(read(pattern), text, 0)) == found


def search(pattern: Pattern, text: str, most_tries: int) -> None:
    """Goes all ways through a text, one after another, as a search does whose ways all fail."""
    tries = 0

    def go(parts: tuple[Pattern, ...], at: int) -> None:
        nonlocal tries
        if not parts:
            return
        first, rest = parts[0], parts[1:]
        match first:
            case Character():
                tries += 1
                assert tries <= most_tries
                if ends(first, text, at):
                    go(rest, at + 1)
            case Start():
                if at == 0:
                    go(rest, at)
            case Choice(choices):
                for choice in choices:
                    go((choice, *rest), at)
            case Sequence(sequence):
                go((*sequence, *rest), at)
            case Repeat(part, least, most):
                if most != 0:
                    fewer = None if most is None else most - 1
                    go((part, Repeat(part, max(least - 1, 0), fewer), *rest), at)
                if least == 0:
                    go(rest, at)

    for start in range(len(text) + 1):
        go((pattern,), start)


@settings(max_examples=300, deadline=None, database=None)
@given(some_patterns, st.text("abA. ", min_size=1, max_size=4))
def test_a_search_with_an_accepted_pattern_tries_little(pattern: str, text: str) -> None:
    tree = read(pattern)
    try:
        check_ways(tree)
    except TooManyWaysError:
        return
    search(tree, text * 10, most_tries=TRIES * len(text * 10))


def test_a_search_with_another_pattern_tries_more() -> None:
    with pytest.raises(AssertionError):
        search(read("(a+)+$"), "a" * 40, most_tries=TRIES * 40)


@contextmanager
def no_more_instructions_than(most: int) -> Iterator[None]:
    """Fails as soon as Python has run more instructions than that."""
    left = most

    def count(code: CodeType, offset: int) -> None:
        nonlocal left
        left -= 1
        assert left != 0, f"more than {most:,} instructions"

    tool, events = sys.monitoring.PROFILER_ID, sys.monitoring.events
    sys.monitoring.use_tool_id(tool, "instructions of Python")
    sys.monitoring.register_callback(tool, events.INSTRUCTION, count)
    sys.monitoring.set_events(tool, events.INSTRUCTION)
    try:
        yield
    finally:
        sys.monitoring.set_events(tool, 0)
        sys.monitoring.free_tool_id(tool)


@pytest.mark.parametrize(
    "pattern", ["a?" * 1_990, "(?:a?){1990}", "a{0,1990}", "^" + "(?:a|)" * 800, "(?:a?b?){900}"]
)
def test_a_check_of_many_ways_gives_up_soon(pattern: str) -> None:
    with no_more_instructions_than(20_000_000), pytest.raises(UnsafePatternError):
        check_pattern(pattern)
