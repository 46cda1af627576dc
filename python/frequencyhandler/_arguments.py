"""Arguments looked at before anything is done with them, so that messages are about what was given."""

from __future__ import annotations

import operator
import os
from typing import Any, Callable, Iterable, Optional, Tuple, Union

from . import _engine
from .errors import ArgumentError, ArgumentTypeError

PathLike = Union[str, bytes, "os.PathLike[str]", "os.PathLike[bytes]"]
#: A frequency: a whole number of kHz, or a text with a unit, such as "7.442 GHz".
Frequency = Union[int, str]

INT32 = (-(2**31), 2**31 - 1)
INT64 = (-(2**63), 2**63 - 1)
UINT32 = (0, 2**32 - 1)
CHANNELS = (0, 2**31 - 1)


def shown(value: Any) -> str:
    """A value for a message: not too long, and with nothing in it that a terminal would obey."""
    try:
        text = ascii(value)
    except Exception:  # what it says of itself is its own affair
        text = object.__repr__(value)
    return text if len(text) <= 60 else text[:57] + "..."


def wrong_type(name: str, value: Any, expected: str) -> ArgumentTypeError:
    """For an argument that is of another type than it should be."""
    return ArgumentTypeError(f"{name}: {shown(value)}, expected {expected}")


def whole(name: str, value: Any, bounds: Tuple[int, int]) -> int:
    """A whole number from the first to the second of ``bounds``; numpy's do as well."""
    if isinstance(value, bool) or not hasattr(type(value), "__index__"):
        raise wrong_type(name, value, "a whole number")
    number = operator.index(value)
    if not bounds[0] <= number <= bounds[1]:
        raise ArgumentError(f"{name}: {shown(number)}, expected from {bounds[0]} to {bounds[1]}")
    return number


def text(name: str, value: Any, among: Iterable[str] = ()) -> str:
    """A text, and one of ``among`` if that is not empty."""
    if not isinstance(value, str):
        raise wrong_type(name, value, "a text")
    choices = tuple(among)
    if choices and value not in choices:
        raise ArgumentError(f"{name}: {shown(value)}, expected {' or '.join(choices)}")
    try:
        value.encode()
    except UnicodeEncodeError:
        raise ArgumentError(f"{name}: {shown(value)}, expected a text that can be written as UTF-8") from None
    return str(value)


def flag(name: str, value: Any) -> bool:
    """True or False, and nothing that counts as either."""
    if not isinstance(value, bool):
        raise wrong_type(name, value, "True or False")
    return value


def path(name: str, value: Any) -> bytes:
    """The name of a file, as the system has it."""
    if not isinstance(value, (str, bytes, os.PathLike)):
        raise wrong_type(name, value, "a path")
    try:
        encoded = os.fsencode(value)
    except (TypeError, UnicodeEncodeError):
        raise ArgumentError(f"{name}: {shown(value)}, expected a path") from None
    if not encoded or b"\0" in encoded:
        raise ArgumentError(f"{name}: {shown(value)}, expected a path that is not empty and has no zero byte")
    return encoded


def khz(name: str, value: Any) -> int:
    """A frequency in kHz."""
    if isinstance(value, str):
        try:
            return _engine.khz(text(name, value))
        except ArgumentError as error:
            raise ArgumentError(f"{name}: {error}") from None
    if isinstance(value, float):
        raise wrong_type(name, value, 'whole kHz, or a text with a unit such as "7.442 GHz"')
    return whole(name, value, UINT32)


def direction(value: Any) -> str:
    """"tx" or "rx"."""
    return text("direction", value, ("tx", "rx"))


def function(name: str, value: Any) -> Optional[Callable[..., Any]]:
    """Something that can be called, or None."""
    if value is not None and not callable(value):
        raise wrong_type(name, value, "a function or None")
    called: Optional[Callable[..., Any]] = value
    return called
