"""Stand-ins that note what is asked of them and in which order."""

from collections.abc import Callable
from typing import Any

from vantrel.config import PersonLabels


class Calls(list[tuple[Any, ...]]):
    """The calls that stand-ins received, each as (name, positional, keywords)."""

    def recorder(self, name: str, answer: Callable[..., Any] | None = None) -> Callable[..., Any]:
        """Gives a function that notes its calls and answers as ``answer`` does, else None."""

        def record(*args: Any, **kwargs: Any) -> Any:
            self.append((name, args, kwargs))
            return None if answer is None else answer(*args, **kwargs)

        return record

    def names(self) -> list[str]:
        """Lists the names alone."""
        return [call[0] for call in self]


class Stop(BaseException):
    """No ordinary error; unlike an interrupt it does not end the test run where it escapes."""


def raising(error: BaseException) -> Callable[..., Any]:
    """Gives a function that raises the very object."""

    def fail(*args: Any, **kwargs: Any) -> Any:
        raise error

    return fail


class RecordingContext:
    """A context manager that notes entering and leaving, and swallows errors if told so."""

    def __init__(self, calls: Calls, handed_out: Any = None, swallow: Any = None) -> None:
        self.calls = calls
        self.handed_out = handed_out
        self.swallow = swallow

    def __enter__(self) -> Any:
        self.calls.append(("enter", (), {}))
        return self.handed_out

    def __exit__(self, *details: object) -> Any:
        self.calls.append(("exit", details, {}))
        return self.swallow


class StandInMeta:
    """A person's meta that only holds what it is given and notes what is done with it.

    Args:
        labels: The labels.
        calls: Where to note the calls; a list of its own by default.
        **attributes: Attributes to set besides, such as ``locales`` or ``children``.
    """

    def __init__(
        self, labels: PersonLabels | None = None, calls: Calls | None = None, **attributes: Any
    ) -> None:
        self.labels = PersonLabels() if labels is None else labels
        self.calls = Calls() if calls is None else calls
        self.name: Any = "person"
        self.nan_freq: Any = None
        self.locales: Any = None
        self.params: Any = {}
        self.categories: Any = None
        self.children: dict[str, Any] = {}
        self.context: Any = None
        for name, value in attributes.items():
            setattr(self, name, value)

    def __getitem__(self, column: str) -> Any:
        self.calls.append(("child", (column,), {}))
        return self.children[column]

    def extract(self, *args: Any, **kwargs: Any) -> None:
        self.calls.append(("extract", args, kwargs))

    def unfold(self, *args: Any, **kwargs: Any) -> Any:
        self.calls.append(("unfold", args, kwargs))
        return RecordingContext(self.calls) if self.context is None else self.context

    def revert_df_from_children(self, *args: Any, **kwargs: Any) -> Any:
        self.calls.append(("revert", args, kwargs))
        return args[0]
