"""One call of the module that is checked: how it is made ready and how it must end."""

from __future__ import annotations

from collections.abc import Callable
from dataclasses import dataclass
from unittest import mock

# Every call is made a tenth as often as wished, at least.
MOST_COST = 10

Function = Callable[[], object]
Prepared = Callable[[], Function]


@dataclass(frozen=True)
class Call:
    """One call.

    Attributes:
        name: What is called and with what.
        prepare: Makes everything ready and gives the call itself, which may be made any number of
            times. It runs in the process that makes the calls.
        raises: The very class of error that the call ends with; ``None`` where it returns.
        cost: How many times less often than the others it is made, for it is dear; `MOST_COST` at
            most.
    """

    name: str
    prepare: Prepared
    raises: type[BaseException] | None = None
    cost: int = 1

    def checked(self) -> Function:
        """Gives the call with a look at how it ends.

        Raises:
            Exception: Whatever the preparation raises.
        """
        function = self.prepare()

        def once() -> None:
            try:
                function()
            except BaseException as error:
                if type(error) is not self.raises:
                    raise
            else:
                if self.raises is not None:
                    raise AssertionError(f"{self.raises.__name__} was not raised")

        return once


def good(name: str, prepare: Prepared, cost: int = 1) -> Call:
    """A call that returns."""
    return Call(name, prepare, cost=cost)


def bad(name: str, raises: type[BaseException], prepare: Prepared, cost: int = 1) -> Call:
    """A call that fails."""
    return Call(name, prepare, raises, cost)


def replace(target: object, name: str, value: object) -> None:
    """Puts a stand-in in place, until `restore` takes all of them away."""
    mock.patch.object(target, name, value, create=True).start()


def restore() -> None:
    """Takes away all stand-ins."""
    mock.patch.stopall()


def fail_with(error: type[BaseException]) -> Callable[..., object]:
    """Gives a function of the host that fails."""

    def fail(*_: object, **__: object) -> object:
        raise error

    return fail
