"""What can go wrong, as exceptions.

Every exception of the package is an :class:`Error`, and beside that what Python has for its kind: a :class:`ValueError`, a
:class:`TypeError`, a :class:`KeyError`, a :class:`RuntimeError`, a :class:`TimeoutError` or an :class:`AssertionError`. Whoever
has to do with a file finds ``file``, ``line`` and ``expected`` in it.
"""

from __future__ import annotations

from typing import Any, Optional, Sequence, Tuple

__all__ = [
    "Error", "ArgumentError", "ArgumentTypeError", "UnknownName", "InputError", "ChoiceError", "RadioError", "CommandFailed",
    "ClosedError", "BusyError", "TimedOut", "ExpectationFailed", "Interrupted",
]

#: A file and a line in it; the line is None for the file as a whole.
Place = Tuple[Optional[str], Optional[int]]
#: A driver, the value that was expected of it, and the one that was found; None: there is none at this place.
AlignedWrite = Tuple[str, Optional[int], Optional[int]]


class Error(Exception):
    """Whatever this package raises of its own."""

    def __init__(self, message: str, *rest: Any) -> None:
        super().__init__(message)
        self._given = (message, *rest)

    def __reduce__(self) -> Tuple[Any, Tuple[Any, ...]]:
        # They cross to other processes, which calibrate batches, with all that they have.
        return type(self), self._given


class ArgumentError(Error, ValueError):
    """A value that cannot be used; nothing was done.

    ``expected`` is what could have been, as a text, or None.
    """

    def __init__(self, message: str, expected: Optional[str] = None) -> None:
        super().__init__(message, expected)
        self.expected = expected


class ArgumentTypeError(Error, TypeError):
    """A value of a type that cannot be used; nothing was done. ``expected`` as in :class:`ArgumentError`."""

    def __init__(self, message: str, expected: Optional[str] = None) -> None:
        super().__init__(message, expected)
        self.expected = expected


class UnknownName(Error, KeyError):
    """A name that a mapping does not have. ``expected`` is the name that was perhaps meant, or None."""

    def __init__(self, message: str, expected: Optional[str] = None) -> None:
        super().__init__(message, expected)
        self.expected = expected

    def __str__(self) -> str:
        return str(self._given[0])  # a KeyError would put it in quotes


class InputError(Error, ValueError):
    """A file, or a board, that cannot be used.

    ``file`` and ``line`` say where, ``text`` what, and ``expected`` what should be there; each but ``text`` may be None.
    """

    def __init__(self, message: str, place: Place, text: str, expected: Optional[str] = None) -> None:
        super().__init__(message, place, text, expected)
        self.file, self.line = place
        self.text = text
        self.expected = expected


#: What the arguments are with which something is chosen.
_CHOICES = {
    "restart": 'beginning="restart" begins anew',
    "put away": 'beginning="restart" keeps it as a backup and begins anew',
    "resume or restart": 'beginning="resume" goes on with it, beginning="restart" keeps it as a backup and begins anew',
    "hardware or restart": 'hardware=True goes on with it, beginning="restart" begins anew',
}


class ChoiceError(InputError):
    """Input that could be used if something had been asked for otherwise.

    ``choice`` names what: "temperatures", "step", "restart"; ``among`` says which values there are, and may be empty. The
    message ends with the argument that says it.
    """

    def __init__(self, message: str, place: Place, text: str, choice: str, among: str,
                 expected: Optional[str] = None) -> None:
        argument = choice.replace("-", "_") + "=..." + (f" with {among}" if among else "")
        way = _CHOICES.get(choice)
        super().__init__(f"{message}; {way}" if way else f"{message}, or {argument}", place, text, expected or way or argument)
        self._given = (message, place, text, choice, among, expected)
        self.choice = choice
        self.among = among


class RadioError(Error, RuntimeError):
    """A radio that did not come up, or did not take what it was told."""


class CommandFailed(RadioError):
    """A command that a radio carried out and that failed. ``outcome`` has all that came of it."""

    def __init__(self, message: str, outcome: Any) -> None:
        super().__init__(message, outcome)
        self.outcome = outcome


class ClosedError(Error, RuntimeError):
    """Something is used that was closed."""


class BusyError(Error, RuntimeError):
    """There is one radio at a time in a process, and it does one thing at a time."""


class TimedOut(Error, TimeoutError):
    """What was waited for did not happen in time."""


class ExpectationFailed(Error, AssertionError):
    """An expectation that does not hold.

    ``expected`` and ``found`` are texts. Where writes were expected, ``writes`` has both lists side by side, as
    (driver, expected, found), and the message shows them.
    """

    def __init__(self, message: str, expected: str, found: str, writes: Sequence[AlignedWrite] = ()) -> None:
        super().__init__(message, expected, found, writes)
        self.expected = expected
        self.found = found
        self.writes = tuple(writes)


class Interrupted(KeyboardInterrupt):
    """Ctrl-C ended long work. Nothing is lost: ``result`` has what came of it so far."""

    def __init__(self, result: Any, work: str = "the work") -> None:
        super().__init__(f"{work} was interrupted; the exception's result has what came of it so far")
        self.result = result
        self._work = work

    def __reduce__(self) -> Tuple[Any, Tuple[Any, ...]]:
        return type(self), (self.result, self._work)


def finish(result: Any, raised: BaseException | None, work: str) -> None:
    """Raises what ended long work, if anything did, with what came of it so far."""
    if raised is None:
        return
    if isinstance(raised, KeyboardInterrupt):
        raise Interrupted(result, work) from raised
    raise raised


def finish_on_hardware(result: Any, raised: BaseException | None, work: str, file: str, has_left: bool) -> None:
    """The same of what may drive hardware, and raises that this could not be left properly."""
    left = None if has_left else RadioError(f"{file}: what was to be written in the end failed")
    try:
        finish(result, raised, work)
    except BaseException as error:
        if left is not None:
            error.add_note(str(left))
        raise
    if left is not None:
        raise left
