"""Says in one line each what is wrong, and leaves with the status that tells whose fault it is."""

import signal
import sys
import threading
import warnings
from collections.abc import Iterator
from contextlib import contextmanager
from typing import Any, NoReturn, override

import click

BAD_DATA = 1
BAD_USAGE = 2
INTERRUPTED = 130


class TerseGroup(click.Group):
    """A group of commands whose errors are one line on stderr, without the usage."""

    @override
    def main(self, *args: Any, **kwargs: Any) -> NoReturn:
        kwargs["standalone_mode"] = False
        try:
            with _unwinding():
                status = super().main(*args, **kwargs)
        except click.exceptions.NoArgsIsHelpError as error:
            click.echo(error.format_message(), err=True)
            sys.exit(BAD_USAGE)
        except click.ClickException as error:
            message = " ".join(error.format_message().split())
            click.echo(f"vantrel: error: {message}", err=True)
            sys.exit(error.exit_code)
        except click.Abort:
            click.echo("vantrel: interrupted", err=True)
            sys.exit(INTERRUPTED)
        sys.exit(status if isinstance(status, int) else 0)


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


@contextmanager
def reporting() -> Iterator[None]:
    """Turns what the data makes fail into one-line errors, and warnings into plain lines.

    Raises:
        click.ClickException: The table, the model file or the disk is not as it should be.
    """
    with warnings.catch_warnings():
        warnings.simplefilter("once", UserWarning)
        warnings.showwarning = _show_warning
        try:
            yield
        except BrokenPipeError:
            raise  # whoever read the output has seen enough: click ends the command quietly
        except OSError as error:
            where = f"{error.filename}: " if error.filename else ""
            raise click.ClickException(f"{where}{error.strerror or error}.") from error
        except ValueError as error:
            raise click.ClickException(str(error)) from error


def _show_warning(message: Warning | str, *_: Any, **__: Any) -> None:
    click.echo(f"vantrel: warning: {message}", err=True)
