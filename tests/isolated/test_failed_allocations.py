"""Allocations that fail: each one of a call in turn, alone and together with all after it.

Every call stays within the module and the standard library: pandas does not survive that.
"""

import re
from pathlib import Path

import pytest

from support.isolated import output_of, run
from support.pure_host import write_pure_host
from support.stub import public_functions, titles_of

pytest.importorskip("_testcapi", reason="this interpreter cannot make allocations fail")


@pytest.fixture(scope="module")
def pure_host(tmp_path_factory: pytest.TempPathFactory) -> Path:
    return write_pure_host(tmp_path_factory.mktemp("pure_host"))


# Says on each line which allocation fails next, so that the last line tells where a crash was.
FAILING = """
    import os, random
    from itertools import count
    from _testcapi import remove_mem_hooks, set_nomemory

    def came_to(error):
        return type(error), str(error)

    def outcome(call):
        random.seed(1)
        try:
            return call()
        except Exception as error:
            return came_to(error)

    OURS = ("GenderModel.", "PersonModel.", "CountryModel.", "all_supported_")

    def is_want_of_memory(error):
        # CPython 3.12 forgets the error where there is no memory for the frame object of a Python
        # function that it passes through. A function of the module may not.
        if isinstance(error, SystemError):
            function, found, _ = str(error).partition(" returned NULL without setting an exc")
            theirs = found and not function.startswith(tuple("<function " + name for name in OURS))
            return theirs or str(error) == "error return without exception set"
        return isinstance(error, MemoryError)

    def without_memory(call, first, last):
        random.seed(1)
        raised = answer = None
        used_up = False
        set_nomemory(first, last)
        try:
            answer = call()
        except BaseException as error:
            raised = error
        try:
            bytearray(1000)
        except MemoryError:
            used_up = True
        remove_mem_hooks()
        return (answer if raised is None else came_to(raised)), raised, used_up

    def exhaust(call):
        for _ in range(3):
            expected = outcome(call)
        for first in count():
            for last in first + 1, 0:
                os.write(1, b"%d to %d\\n" % (first, last))
                got, raised, used_up = without_memory(call, first, last)
                if not is_want_of_memory(raised):
                    assert got == expected, (first, last, got, expected)
                again = outcome(call)
                assert again == expected, (first, last, again, expected)
            if not used_up:
                return first
"""

MODELS = """
    import vantrel.model.models.person as person
    from faker import Faker
    from pandas import DataFrame, Series
    from vantrel.config import PersonLabels, PersonModelConfig
    from vantrel.metadata import Nominal
    from vantrel.metadata.rules.association import Association
    from vantrel.metadata.value import Person, String
    from vantrel.model.models.person import CountryModel, GenderModel, PersonModel

    NAMES = PersonLabels(firstname="first", lastname="last")
    ALL = PersonLabels(**{field: field for field in vars(NAMES)})
    TITLES = ["Mrs", "Mr", "Mx", "Dr"]
    TABLE = {"title": Series(TITLES), "gender": Series(["f", "m"]), "country": Series(["GB", "US"])}
    COUNTRIES = Series(["GB", "US", "GB"])
    FIRST, LAST = Series(["Ada", "Li Wei", "Bo"]), Series(["Byron", "Li", "Ek"])
    MANY = Series(["Ada"] * 20)

    def gender_model(categories=TITLES):
        return GenderModel(String("title", categories))

    def person_model(labels=ALL):
        model = PersonModel(Person("person", labels))
        model.country_to_provider_map = {"GB": Faker(), "US": Faker()}
        return model

    unfitted, model, odd = PersonModel(Person("person", ALL)), person_model(), person_model()
    odd._country_to_provider_map = {"GB": object(), "US": object()}
    form = {"meta": {"name": "p", "labels": vars(NAMES)}, "config": {"dict_cache_size": 1}}
"""

CALLS = {
    # what comes of it stays within the module
    "all_supported_country_names": "person.all_supported_country_names()",
    "all_supported_country_codes": "person.all_supported_country_codes()",
    "all_supported_locales": "person.all_supported_locales()",
    "too many arguments": "person.all_supported_locales(1)",
    "too few arguments": "PersonModel.check_email()",
    "unknown keyword": "PersonModel.check_email('', colour=1)",
    "argument given twice": "PersonModel.check_email('', s='')",
    "argument of a wrong type": "PersonModel.check_email(3)",
    "PersonModel.check_email": "PersonModel.check_email('a@b.org')",
    "PersonModel.check_email of no address": "PersonModel.check_email('a')",
    "PersonModel.check_email in other languages": "PersonModel.check_email('a', ['de', 'en'])",
    "PersonModel.check_email, broken off": "PersonModel.check_email('a', ['en', 3])",
    "subclass": "type('Made', (PersonModel,), {}).__name__",
    "function's attributes": "[str(getattr(PersonModel.sample, name)) for name in"
    " ('__doc__', '__annotations__', '__defaults__', '__closure__')]",
    # gender and country models
    "GenderModel()": "vars(GenderModel('meta')).keys()",
    "GenderModel.collections": "gender_model().collections",
    "GenderModel.collections, not known": "gender_model(None).collections",
    "GenderModel.categories": "gender_model().categories",
    "GenderModel.fit": "gender_model().fit(DataFrame(TABLE)).fitted",
    "GenderModel.fit, not known": "gender_model(None).fit(DataFrame(TABLE)).fitted",
    "GenderModel.fit, no column": "gender_model().fit(DataFrame({}))",
    "GenderModel.from_dict": "vars(GenderModel.from_dict({'meta': {'name': 'title'}})).keys()",
    "GenderModel.from_dict, no meta": "GenderModel.from_dict({})",
    "CountryModel()": "vars(CountryModel('meta')).keys()",
    "CountryModel.categories": "CountryModel(Nominal('country', ['GB'])).categories",
    "CountryModel.fit": "CountryModel(Nominal('country')).fit(DataFrame(TABLE)).countries",
    # person models
    "PersonModel()": "vars(PersonModel(Person('person', ALL))).keys()",
    "PersonModel() without columns": "vars(PersonModel(Person('person', NAMES))).keys()",
    "PersonModel() of nothing": "PersonModel(None)",
    "PersonModel.categories": "model.categories",
    "PersonModel.default_locale": "model.default_locale",
    "PersonModel.locales": "model.locales",
    "PersonModel.labels": "model.labels",
    "PersonModel.params": "model.params",
    "PersonModel.country_to_provider_map": "list(model.country_to_provider_map)",
    "PersonModel.country_to_provider_map, not fitted": "unfitted.country_to_provider_map",
    "PersonModel.country_to_provider_map = providers": "setattr(odd, 'country_to_provider_map', {})",
    "PersonModel.country_to_provider_map = None": "setattr(odd, 'country_to_provider_map', None)",
    "PersonModel.to_dict": "model.to_dict()",
    "PersonModel.from_dict": "PersonModel.from_dict(form).to_dict()",
    "PersonModel.from_dict, bad setting": "PersonModel.from_dict(form | {'config': {'size': 1}})",
    "PersonModel.from_dict, no settings": "PersonModel.from_dict(form | {'config': 3})",
    "PersonModel.fit": "person_model().fit(DataFrame(TABLE)).fitted",
    "PersonModel.fit, no column": "person_model().fit(DataFrame({}))",
    "PersonModel.check_associations": "model.check_associations([])",
    "PersonModel.check_associations of a column": "model.check_associations([Rule])",
    # generators
    "PersonModel.generate_password": "PersonModel.generate_password()",
    "PersonModel.generate_password, bad bounds": "PersonModel.generate_password(9, 8)",
    "PersonModel.generate_passwords": "model.generate_passwords(FIRST)",
    "PersonModel.generate_passwords at once": "model.generate_passwords(MANY)",
    "PersonModel.generate_phone_numbers": "PersonModel.generate_phone_numbers(FIRST.isna())",
    "PersonModel.generate_first_names": "model.generate_first_names(Series(['F', 'M', None]), COUNTRIES)",
    "PersonModel.generate_first_names, gender X": "model.generate_first_names(Series(['X']), COUNTRIES)",
    "PersonModel.generate_first_names, half-way": "odd.generate_first_names(Series(['F']), COUNTRIES)",
    "PersonModel.generate_last_names": "model.generate_last_names(FIRST, COUNTRIES)",
    "PersonModel.generate_last_names, unknown country": "model.generate_last_names(FIRST, Series(['X']))",
    "PersonModel.generate_usernames": "PersonModel.generate_usernames(FIRST, LAST)",
    "PersonModel.generate_emails": "model.generate_emails(FIRST, LAST, COUNTRIES)",
    "PersonModel.generate_from_collections": "PersonModel.generate_from_collections('F', {'F': ['Mrs']})",
    "PersonModel.generate_values_from_collections": "model.generate_values_from_collections("
    "Series(['F', 'M']), {'F': ['Mrs']})",
    "PersonModel.map_to_gender_keys": "model.map_to_gender_keys(Series(TITLES), {'F': '^mrs', 'M': '^mr$'})",
    "PersonModel.generate_random_first_name": "model.generate_random_first_name('F', 'GB')",
    "PersonModel.generate_random_first_name, gender X": "model.generate_random_first_name('X', 'GB')",
    # rows
    "PersonModel.sample": "model.sample(2)",
    "PersonModel.sample of locales": "person_model(NAMES).sample(2)",
    "PersonModel.sample of nothing": "model.sample()",
    "PersonModel.sample with a bad number": "model.sample(True)",
    "PersonModel._sample_conditional without countries": "model._sample_conditional(1, Series(['F']), None)",
}


# The one of the standard library makes generators, at which CPython 3.12 crashes without memory. While
# it is replaced, no column is made at once.
PLAIN_ASDICT = """
    person.asdict = lambda config: dict(vars(config))
"""


@pytest.mark.parametrize("name", public_functions())
def test_every_public_function_is_called(name: str) -> None:
    assert titles_of(name, CALLS) != []


@pytest.mark.parametrize(("column", "drawn"), [("FIRST", True), ("MANY", False)])
def test_long_columns_are_made_at_once(pure_host: Path, column: str, drawn: bool) -> None:
    code = f"""{MODELS}
    import sys
    started = set()
    sys.setprofile(lambda frame, event, argument: started.add(frame.f_code.co_name))
    model.generate_passwords({column})
    sys.setprofile(None)
    print("randint" in started)
    """
    assert output_of(code, path=pure_host) == str(drawn)


@pytest.mark.parametrize("name", CALLS)
def test_call(pure_host: Path, name: str) -> None:
    """It ends with MemoryError or as it does with enough memory, and the next call works."""
    asdict = PLAIN_ASDICT if "to_dict" in CALLS[name] else ""
    code = f"{FAILING}{MODELS}{asdict}\n"
    code += "    Rule = Association(); Rule.associations = ['email']\n"
    code += f"    print('ended after', exhaust(lambda: {CALLS[name]}))"
    finished = run(code, path=pure_host)
    lines = finished.stdout.splitlines()
    where = f"allocations {lines[-1] if lines else 'none'} failed"
    assert finished.returncode == 0, f"{where}\n{finished.stderr}"
    assert lines[-1].startswith("ended after")
    assert finished.stderr == ""


# Makes the module in a child process for each allocation that fails, then once more with memory.
MAKING = """
    import _imp, dataclasses, importlib, importlib.util, re, string, sys, traceback, types, typing
    import faker, numpy, pandas._libs.missing, vantrel.metadata.rules.association
    import vantrel.config, vantrel.metadata.value, vantrel.model.base, vantrel.model.exceptions
    import vantrel.model.models.histogram, vantrel.util.person, vantrel.util.locale.locale

    NAME = "vantrel.model.models.person"
    spec = importlib.util.find_spec(NAME)

    _imp.create_dynamic(spec)  # loads the library, which takes longer than all the rest

    def make():  # without what importlib itself allocates
        _imp.exec_dynamic(_imp.create_dynamic(spec))

    def works():
        person = importlib.import_module(NAME)
        model = person.PersonModel.from_dict({"meta": {"name": "p", "labels": {"email": "e"}}})
        return model.params == {"email": "e"} and person.all_supported_locales() == ["person"]

    def fails_well(first, last):
        _, raised, used_up = without_memory(make, first, last)
        if raised is not None and not is_want_of_memory(raised):
            raise raised
        assert works()
        return used_up

    def in_child(first, last):
        child = os.fork()
        if child:
            return os.waitstatus_to_exitcode(os.waitpid(child, 0)[1])
        try:
            used_up = fails_well(first, last)
            os._exit(0 if used_up or last else END)
        except BaseException:
            traceback.print_exc()
            sys.stderr.flush()
            os._exit(1)

    END = 3
    low, allocations = 0, 1 << 20  # the first number with which none fails
    while low < allocations:
        middle = (low + allocations) // 2
        if in_child(middle, 0) == END:
            allocations = middle
        else:
            low = middle + 1
    bad = [first for first in range(allocations) if in_child(first, %s) != 0]
    print(allocations, "allocations, not well without:", bad)
"""


@pytest.mark.parametrize("last", ["0", "first + 1"], ids=["all from one on", "a single one"])
def test_making_of_the_module(pure_host: Path, last: str) -> None:
    """It fails with MemoryError, whichever allocation fails, and succeeds the next time."""
    finished = run(FAILING + MAKING.replace("%s", last), path=pure_host)
    assert finished.stderr == ""
    assert finished.returncode == 0
    reached = re.fullmatch(r"(\d+) allocations, not well without: \[\]\n", finished.stdout)
    assert reached is not None, finished.stdout
    assert int(reached[1]) > 1000
