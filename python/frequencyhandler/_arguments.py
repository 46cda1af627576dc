"""Arguments looked at before anything is done with them, so that messages are about what was given."""

from __future__ import annotations

import operator
import os
from typing import Any, Callable, Iterable, List, Mapping, Optional, Sequence, SupportsIndex, Tuple, Union

import numpy as np
import numpy.typing as npt

from . import _engine
from .errors import ArgumentError, ArgumentTypeError, UnknownName

PathLike = Union[str, bytes, "os.PathLike[str]", "os.PathLike[bytes]"]
#: A whole number; numpy's as well.
Whole = SupportsIndex
#: A frequency: a whole number of kHz, or a text with a unit, such as "7.442 GHz".
Frequency = Union[Whole, str]

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
    text = "".join(letter if letter.isprintable() else ascii(letter)[1:-1] for letter in text[:61])
    return text if len(text) <= 60 else text[:57] + "..."


def wrong_type(name: str, value: Any, expected: str) -> ArgumentTypeError:
    """For an argument that is of another type than it should be."""
    return ArgumentTypeError(f"{name}: {shown(value)}, expected {expected}", expected)


def wrong(what: str, expected: str) -> ArgumentError:
    """For an argument of the right type that cannot be used: ``what`` is wrong, and what it should be."""
    return ArgumentError(f"{what}, expected {expected}", expected)


def whole(name: str, value: Any, bounds: Tuple[int, int]) -> int:
    """A whole number from the first to the second of ``bounds``; numpy's do as well."""
    if isinstance(value, (bool, np.bool_, np.ndarray)) or not hasattr(type(value), "__index__"):
        raise wrong_type(name, value, "a whole number")
    try:
        number = operator.index(value)
    except Exception as error:
        raise wrong_type(name, value, "a whole number") from error
    if not bounds[0] <= number <= bounds[1]:
        raise wrong(f"{name}: {shown(number)}", f"from {bounds[0]} to {bounds[1]}")
    return number


def real(name: str, value: Any, expected: str) -> float:
    """A number, with a fraction or without; numpy's do as well."""
    if isinstance(value, bool) or not isinstance(value, (int, float, np.integer, np.floating)):
        raise wrong_type(name, value, expected)
    try:
        return float(value)
    except OverflowError:
        raise wrong(f"{name}: {shown(value)}", expected) from None


def several(name: str, value: Any) -> List[Any]:
    """A list of what may be one item or several; one at least, and each still to be looked at."""
    if isinstance(value, np.ndarray):
        return several(name, value.tolist())
    if isinstance(value, (str, bytes, Mapping)) or not (hasattr(value, "__iter__") or hasattr(value, "__index__")):
        raise wrong_type(name, value, "a whole number, or several")
    try:
        items = list(value) if hasattr(value, "__iter__") else [value]
    except Exception as error:
        raise wrong_type(name, value, "a whole number, or several") from error
    if not items:
        raise wrong(f"{name}: none", "at least one")
    return items


def whole_numbers(name: str, value: Any, dimensions: Tuple[int, ...], bounds: Tuple[int, int]) -> npt.NDArray[Any]:
    """An array of whole numbers within ``bounds``, with so many dimensions."""
    if isinstance(value, np.ma.MaskedArray) and bool(np.any(value.mask)):
        raise wrong(f"{name}: an array with a mask", "a value in every place")
    try:
        array = np.asarray(value)
    except Exception as error:
        raise wrong(f"{name}: {shown(value)}", "an array of whole numbers") from error
    if array.dtype.kind not in "iu":
        raise wrong_type(name, value, "an array of whole numbers")
    if array.ndim not in dimensions:
        raise wrong(f"{name}: an array with the shape {array.shape}",
                    f"{' or '.join(map(str, dimensions))} {'dimension' if dimensions == (1,) else 'dimensions'}")
    if array.size and (int(array.min()) < bounds[0] or int(array.max()) > bounds[1]):
        beyond = array.min() if int(array.min()) < bounds[0] else array.max()
        raise wrong(f"{name}: {int(beyond)} in an array", f"numbers from {bounds[0]} to {bounds[1]}")
    return array


def unknown_name(kind: str, name: Any, known: Sequence[str]) -> UnknownName:
    """For a name that a mapping does not have, with the one that was perhaps meant."""
    nearest = _engine.nearest(name, list(known)) if isinstance(name, str) and name.isprintable() else None
    meant = f' (did you mean "{nearest}"?)' if nearest is not None else ""
    return UnknownName(f"unknown {kind} {shown(name)}{meant}", nearest)


def text(name: str, value: Any, among: Iterable[str] = ()) -> str:
    """A text, and one of ``among`` if that is not empty."""
    if not isinstance(value, str):
        raise wrong_type(name, value, "a text")
    choices = tuple(among)
    if choices and value not in choices:
        raise wrong(f"{name}: {shown(value)}", " or ".join(choices))
    try:
        value.encode()
    except UnicodeEncodeError:
        raise wrong(f"{name}: {shown(value)}", "a text that can be written as UTF-8") from None
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
        raise wrong(f"{name}: {shown(value)}", "a path") from None
    if not encoded or b"\0" in encoded:
        raise wrong(f"{name}: {shown(value)}", "a path that is not empty and has no zero byte")
    return encoded


def khz(name: str, value: Any) -> int:
    """A frequency in kHz."""
    if isinstance(value, str):
        try:
            return _engine.khz(text(name, value))
        except ArgumentError as error:
            unit = ', or a unit, as in "7.442 GHz"' if error.expected and not any(map(str.isalpha, value)) else ""
            raise ArgumentError(f"{name}: {error}{unit}", f"{error.expected}{unit}" if unit else error.expected) from None
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
