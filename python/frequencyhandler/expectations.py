"""What is expected of a radio: holds, or raises with what was found."""

from __future__ import annotations

from typing import TYPE_CHECKING, Any, Iterable, List, Mapping, Optional, Sequence, Tuple, Union

import numpy as np

from ._arguments import (CHANNELS, INT64, UINT32, Frequency, Whole, direction as checked_direction, khz, real, text, whole,
                         wrong_type)
from ._tied import Tied
from .errors import AlignedWrite, ExpectationFailed

if TYPE_CHECKING:
    from .radio import Radio

__all__ = ["Expectations"]

Writes = Union[int, Mapping[str, int], Iterable[Tuple[str, int]]]


def _shown(value: Optional[int]) -> str:
    return "-" if value is None else str(value)


def side_by_side(writes: Sequence[AlignedWrite]) -> str:
    """Two lists of writes beside each other, a line that differs with a mark.

    >>> print(side_by_side([("a", 1, 1), ("b", 2, None)]))
      driver  expected  found
      a              1      1
    ! b              2      -
    """
    rows = [("driver", "expected", "found")]
    rows += [(driver, _shown(expected), _shown(found)) for driver, expected, found in writes]
    widths = [max(len(row[column]) for row in rows) for column in range(3)]
    marks = [" ", *(" " if expected == found else "!" for _, expected, found in writes)]
    return "\n".join(f"{mark} {row[0]:<{widths[0]}}  {row[1]:>{widths[1]}}  {row[2]:>{widths[2]}}"
                     for mark, row in zip(marks, rows))


def judge(command: str, judgement: Tuple[bool, str, str, Sequence[AlignedWrite]]) -> None:
    """Raises :class:`ExpectationFailed` for an expectation that did not hold."""
    __tracebackhide__ = True  # of pytest, whose user's line is where it failed
    held, expected, found, writes = judgement
    if held:
        return
    message = f"{command}: expected {expected}, found {found}"
    if writes:
        message = f"{command.split()[0]} writes: what was written differs\n{side_by_side(writes)}"
    raise ExpectationFailed(message, expected, found, writes)


class Expectations(Tied):
    """What can be expected of a radio and of its last command, the start-up at first. Each raises
    :class:`ExpectationFailed` unless it holds."""

    __slots__ = ("_radio",)

    def __init__(self, radio: Radio) -> None:
        radio._require_open()
        self._radio = radio

    def _act(self, words: List[str]) -> None:
        __tracebackhide__ = True
        self._radio._act(words)

    def driver(self, name: str, value: Whole) -> None:
        """A driver has this value; of real hardware it is read. Raises :class:`ExpectationFailed`, and :class:`ArgumentError`
        for a driver that there is none of."""
        __tracebackhide__ = True
        self._act(["expect", "driver", text("name", name), str(whole("value", value, INT64))])

    def _carrier(self, what: str, way: str, channel: Whole, carrier: Frequency) -> None:
        __tracebackhide__ = True
        self._act(["expect", what, checked_direction(way), str(whole("channel", channel, CHANNELS)),
                   str(khz("carrier", carrier))])

    def frequency(self, direction: str, channel: Whole, carrier: Frequency) -> None:
        """The handler reports this carrier. Raises :class:`ExpectationFailed`, and :class:`ArgumentError`."""
        __tracebackhide__ = True
        self._carrier("frequency", direction, channel, carrier)

    def rau(self, direction: str, channel: Whole, carrier: Frequency) -> None:
        """The remote radio unit has this carrier. Raises :class:`ExpectationFailed`, and :class:`ArgumentError`."""
        __tracebackhide__ = True
        self._carrier("rau", direction, channel, carrier)

    def notified(self, direction: str, channel: Whole, carrier: Frequency) -> None:
        """The last command told the observers this carrier. Raises :class:`ExpectationFailed`, and :class:`ArgumentError`."""
        __tracebackhide__ = True
        self._carrier("notified", direction, channel, carrier)

    def result(self, result: Union[str, Whole]) -> None:
        """The last command answered "ok", "failed", or with this code. Raises :class:`ExpectationFailed`, and
        :class:`ArgumentError` for another word."""
        __tracebackhide__ = True
        word = text("result", result, ("ok", "failed")) if isinstance(result, str) else \
            str(whole("result", result, UINT32))
        self._act(["expect", "result", word])

    def trace(self, part: str) -> None:
        """The last command traced a message with this text in it. Raises :class:`ExpectationFailed`."""
        __tracebackhide__ = True
        self._act(["expect", "trace", text("part", part)])

    def no_trace(self, part: str = "") -> None:
        """It did not; without a text, it traced nothing. Raises :class:`ExpectationFailed`."""
        __tracebackhide__ = True
        self._act(["expect", "no", "trace", *([text("part", part)] if text("part", part) else [])])

    def writes(self, writes: Writes) -> None:
        """The last command wrote so many values, or exactly these in this order: pairs of driver and value, or a mapping.
        Raises :class:`ExpectationFailed`, which shows what differs side by side, and :class:`ArgumentError`."""
        __tracebackhide__ = True
        if hasattr(writes, "__index__") and not isinstance(writes, np.ndarray):
            self._act(["expect", "writes", str(whole("writes", writes, UINT32))])
            return
        pairs: Any = writes.items() if isinstance(writes, Mapping) else writes
        if isinstance(pairs, (str, bytes)) or not hasattr(pairs, "__iter__"):
            raise wrong_type("writes", writes, "a number, or pairs of driver and value")
        words = []
        for pair in pairs:
            if not isinstance(pair, (tuple, list)) or len(pair) != 2:
                raise wrong_type("writes", pair, "pairs of driver and value")
            words.append(f"{text('driver', pair[0])}={whole('value', pair[1], INT64)}")
        self._act(["expect", "writes", *(words or ["0"])])

    def leakage(self, channel: Whole, *, below: float) -> None:
        """The modelled LO leakage of a channel is below this level, in dBc. Raises :class:`ExpectationFailed`, and
        :class:`ArgumentError` for a channel without a model."""
        __tracebackhide__ = True
        level = real("below", below, "a level in dBc")
        self._act(["expect", "leakage", str(whole("channel", channel, CHANNELS)), "below", f"{level:.6f}"])

    def __repr__(self) -> str:
        return f"<Expectations of {self._radio!r}>"
