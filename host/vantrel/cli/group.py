"""Reports errors on one line and sets the exit code."""

from __future__ import annotations

import logging
import os
import signal
import sys
import threading
import traceback
import warnings
from collections.abc import Iterator
from contextlib import contextmanager
from typing import Any, NoReturn, override

import click

from vantrel.cli.console import say
from vantrel.cli.options import as_option
from vantrel.errors import ArgumentError, ArgumentTypeError, LeakError, VantrelError
from vantrel.hints import NOTES_LOGGER, named, spelling
from vantrel.wording import without_passwords

BAD_DATA = 1
BAD_USAGE = 2
LEFT_OVER = 3
ASKS_FOR_LOOK = 4
INTERRUPTED = 130

_STDERR = 2

_DEBUG = "vantrel.debug"


def _debug_option() -> click.Option:
    def note(context: click.Context, _option: click.Parameter, value: bool) -> None:
        context.meta[_DEBUG] = value or context.meta.get(_DEBUG, False)

    return click.Option(
        ["--debug"],
        is_flag=True,
        is_eager=True,
        expose_value=False,
        callback=note,
        help="Show where an error came from.",
    )


class TerseCommand(click.Command):
    """A command that can be asked for the traceback of an error."""

    def __init__(self, *args: Any, **kwargs: Any) -> None:
        super().__init__(*args, **kwargs)
        self.params.append(_debug_option())


class TerseGroup(TerseCommand, click.Group):
    """A group of commands whose errors are one line on stderr, without the usage."""

    @override
    def main(self, *args: Any, **kwargs: Any) -> NoReturn:
        kwargs["standalone_mode"] = False
        _open_closed_streams()
        try:
            with _unwinding(), _plain_warnings(), _plain_notes(), spelling(as_option):
                status = super().main(*args, **kwargs)
        except click.exceptions.NoArgsIsHelpError as error:
            click.echo(error.format_message(), err=True)
            sys.exit(BAD_USAGE)
        except click.ClickException as error:
            say("error", error.format_message())
            sys.exit(error.exit_code)
        except click.Abort:
            click.echo("vantrel: interrupted", err=True)
            sys.exit(INTERRUPTED)
        sys.exit(status if isinstance(status, int) else 0)

    @override
    def invoke(self, ctx: click.Context) -> Any:
        try:
            return super().invoke(ctx)
        except (click.exceptions.Exit, click.Abort, BrokenPipeError):
            raise  # whoever read the output has seen enough: click ends the command quietly
        except Exception as error:
            if ctx.meta.get(_DEBUG):
                click.echo(without_passwords(traceback.format_exc()), err=True, nl=False)
            raise _reported(error) from error


class _LeftOver(click.ClickException):
    """People are still named in what was to be written."""

    exit_code = LEFT_OVER


def _reported(error: Exception) -> click.ClickException:
    """Makes the one line of an error, with the status that tells whose fault it is."""
    if isinstance(error, click.ClickException):
        return error
    if isinstance(error, (ArgumentError, ArgumentTypeError)):
        return click.UsageError(str(error))
    if isinstance(error, VantrelError):
        return (_LeftOver if isinstance(error, LeakError) else click.ClickException)(str(error))
    if isinstance(error, OSError):
        where = f"{named(error.filename)}: " if error.filename else ""
        return click.ClickException(f"{where}{error.strerror or error}.")
    return click.ClickException(
        f"This is a mistake in vantrel, not in what you gave it ({type(error).__name__}: {error})."
        " Please report it, with what the same command prints with --debug."
    )


@contextmanager
def _plain_warnings() -> Iterator[None]:
    """Prints each warning once, in a plain line."""
    with warnings.catch_warnings():
        warnings.simplefilter("once", UserWarning)
        warnings.showwarning = _show_warning
        yield


def _show_warning(message: Warning | str, *_: Any, **__: Any) -> None:
    say("warning", str(message))


class _Notes(logging.Handler):
    """Prints what is logged."""

    @override
    def emit(self, record: logging.LogRecord) -> None:
        say("note", record.getMessage())


@contextmanager
def _plain_notes() -> Iterator[None]:
    """Prints each note of the library in a plain line."""
    log, handler = logging.getLogger(NOTES_LOGGER), _Notes()
    log.setLevel(logging.INFO)
    log.addHandler(handler)
    try:
        yield
    finally:
        log.removeHandler(handler)


def _open_closed_streams() -> None:
    """Lets nothing that is opened take the place of a standard stream that is closed.

    What is told is told to nobody then; what is asked for must have somewhere to go.
    """
    has_output = sys.stdout is not None
    while (descriptor := os.open(os.devnull, os.O_RDWR)) <= _STDERR:
        pass
    os.close(descriptor)
    if sys.stderr is None:
        sys.stderr = open(_STDERR, "w", encoding="utf-8", closefd=False)  # noqa: SIM115 - to the end
    if not has_output:
        say("error", "Standard output is closed: send it somewhere, as in > /dev/null.")
        sys.exit(BAD_DATA)


@contextmanager
def _unwinding() -> Iterator[None]:
    """Lets a signal that ends the process end it in order: what is half-written is removed.

    A signal that is ignored stays so, as `nohup` asks.
    """
    if threading.current_thread() is not threading.main_thread():  # only that one gets signals
        yield
        return
    ending = [
        number
        for number in (signal.SIGTERM, signal.SIGHUP)
        if signal.getsignal(number) == signal.SIG_DFL
    ]
    for number in ending:
        signal.signal(number, _leave)
    try:
        yield
    finally:
        for number in ending:
            signal.signal(number, signal.SIG_DFL)


def _leave(number: int, _frame: object) -> NoReturn:
    sys.exit(128 + number)  # as a shell gives the status of a process that a signal ended
