"""Refuses arguments of calls that would be taken for something else than what is meant."""


def refuse_text(value: object, name: str, items: str) -> None:
    """Refuses a text in the place of several, which would be taken for its single characters.

    Args:
        value: The argument of a call.
        name: Its name.
        items: What it should be several of.

    Raises:
        TypeError: It is a text.
    """
    if isinstance(value, str):
        raise TypeError(f"{name!r} is a list of {items}: write {name}=[{value!r}].")
