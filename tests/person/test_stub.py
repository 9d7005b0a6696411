"""The stub names what the built module has, with the same parameters and defaults."""

import ast
import inspect
from pathlib import Path

import pytest

from support.members import MEMBER_IDS, MEMBERS, MEMBERS_BY_CLASS, MODULE_FUNCTIONS, Member

STUB = Path(__file__).parents[2] / "model" / "models" / "person.pyi"
TREE = ast.parse(STUB.read_text(encoding="utf-8"))
CLASSES = {node.name: node for node in TREE.body if isinstance(node, ast.ClassDef)}


def definitions(owner: str) -> list[ast.FunctionDef]:
    body = CLASSES[owner].body if owner else TREE.body
    return [node for node in body if isinstance(node, ast.FunctionDef)]


def decorators(node: ast.FunctionDef) -> list[str]:
    return [ast.unparse(decorator) for decorator in node.decorator_list]


def stub_of(member: Member) -> ast.FunctionDef:
    setter = member.kind == "setter"
    (found,) = [
        node
        for node in definitions(member.owner)
        if node.name == member.name and (decorators(node) == [f"{member.name}.setter"]) == setter
    ]
    return found


every_member = pytest.mark.parametrize("member", MEMBERS, ids=MEMBER_IDS)


def test_stub_lies_beside_the_package_that_it_describes() -> None:
    assert STUB.is_file()


def test_stub_has_the_classes_in_order() -> None:
    assert list(CLASSES) == list(MEMBERS_BY_CLASS)


@pytest.mark.parametrize("owner", [*MEMBERS_BY_CLASS, ""])
def test_stub_has_exactly_the_functions_in_order(owner: str) -> None:
    expected = MEMBERS_BY_CLASS[owner] if owner else MODULE_FUNCTIONS
    assert [node.name for node in definitions(owner)] == [member.name for member in expected]


@every_member
def test_kind(member: Member) -> None:
    expected = {
        "property": ["property"],
        "setter": [f"{member.name}.setter"],
        "staticmethod": ["staticmethod"],
        "classmethod": ["classmethod"],
    }
    assert decorators(stub_of(member)) == expected.get(member.kind, [])


@every_member
def test_parameters(member: Member) -> None:
    arguments = stub_of(member).args
    names = list(inspect.signature(member.built()).parameters)
    assert [argument.arg for argument in arguments.args] == names
    assert not arguments.posonlyargs
    assert not arguments.kwonlyargs
    assert (arguments.vararg, arguments.kwarg) == (None, None)


@every_member
def test_defaults(member: Member) -> None:
    """A default is written out where it can be, and elided where it is an object."""
    written = stub_of(member).args.defaults
    built = member.built().__defaults__ or ()
    assert len(written) == len(built)
    for node, default in zip(written, built, strict=True):
        simple = default is None or isinstance(default, (str, int))
        assert ast.literal_eval(node) == (default if simple else ...)


@every_member
def test_everything_is_annotated(member: Member) -> None:
    node = stub_of(member)
    assert node.returns is not None
    assert all(
        argument.annotation for argument in node.args.args if argument.arg not in ("self", "cls")
    )


@every_member
def test_result_is_annotated_as_in_the_module(member: Member) -> None:
    declared = member.built().__annotations__.get("return")
    if declared is None:
        assert (
            member.name in ("__init__", "fit", "generate_from_collections")
            or member.kind == "setter"
        )
        return
    written = ast.unparse(stub_of(member).returns)
    assert written.replace("pd.Series[Any]", "pd.Series") == declared.strip("'")


@pytest.mark.parametrize("name", ["key_female", "key_male", "key_non_binary", "key_ambiguous"])
def test_gender_keys_are_declared(name: str) -> None:
    declared = {
        node.target.id: ast.unparse(node.annotation)
        for node in CLASSES["GenderModel"].body
        if isinstance(node, ast.AnnAssign)
    }
    assert declared[name] == "str"


def test_bases_are_those_of_the_built_classes() -> None:
    bases = {name: [ast.unparse(base) for base in node.bases] for name, node in CLASSES.items()}
    assert bases == {
        "GenderModel": ["Histogram[str]"],
        "PersonModel": ["DiscreteModel[Person, str]"],
        "CountryModel": ["Histogram[str]"],
    }
