"""What a radio tells while it works, in the order in which it happens."""

from __future__ import annotations

from dataclasses import dataclass
from typing import Any, Callable, Dict, Iterator, NamedTuple, Optional, Sequence, Tuple, Union

from . import _engine
from ._arguments import unknown_name

__all__ = ["Write", "FailedWrite", "Call", "Trace", "Notified", "Phase", "PhaseStep", "Warned", "HardwareNews", "Sensed",
           "Event"]


class Write(NamedTuple):
    """A value that reached hardware, in the driver's unit. Carriers of remote radio units go by names such as
    "IRauHandler_1.tx". As a tuple it is the pair (driver, value)."""

    driver: str
    value: int


class FailedWrite(NamedTuple):
    """A value that the hardware refused, with the driver's code."""

    driver: str
    value: int
    code: int


class Call(NamedTuple):
    """Another call of the library to its platform; told to who asks for it with ``calls=True``."""

    operation: str
    object: str
    value: int
    code: int


class Trace(NamedTuple):
    """A trace message; ``level`` is "error", "warning", "notice" or "information"."""

    level: str
    text: str
    source: str


class Notified(NamedTuple):
    """A frequency handler told an observer its carrier, in kHz."""

    direction: str
    channel: int
    carrier_khz: int
    through_c: bool


class PhaseStep(NamedTuple):
    """The turn of one module in a phase, with its result code."""

    module: str
    channel: int
    code: int


class Phase(NamedTuple):
    """A start-up phase, and the modules that had their turn; the last may have failed."""

    number: int
    meaning: str
    succeeded: bool
    steps: Tuple[PhaseStep, ...]


class Warned(NamedTuple):
    """What is about to be done, or was, should perhaps not be."""

    text: str


class HardwareNews(NamedTuple):
    """What became of real hardware: ``kind`` is "lost" or "back" for a device, "failed" for a driver, whose attribute is in
    ``why``, or "sensor"."""

    kind: str
    what: str
    why: str
    code: int


class Sensed(NamedTuple):
    """The temperature that a real sensor gave, in degrees Celsius, and how many observers were told."""

    degrees: int
    told: int


Event = Union[Write, FailedWrite, Call, Trace, Notified, Phase, Warned, HardwareNews, Sensed]


def _write(driver: str, value: int, code: int) -> Event:
    return FailedWrite(driver, value, code) if code & 0x8000 else Write(driver, value)


def _phase(number: int, meaning: str, succeeded: bool, steps: Sequence[Any]) -> Event:
    return Phase(number, meaning, succeeded, tuple(PhaseStep(*step) for step in steps))


_MAKERS: Dict[str, Callable[..., Event]] = {
    "write": _write, "call": Call, "trace": Trace, "notified": Notified, "phase": _phase, "warning": Warned,
    "hardware": HardwareNews, "sensed": Sensed,
}


def event(given: Tuple[Any, ...]) -> Event:
    """An event of what the engine tells.

    >>> event(("write", "channel.1.tx.rf.frequency", 7442000, 0))
    Write(driver='channel.1.tx.rf.frequency', value=7442000)
    """
    return _MAKERS[given[0]](*given[1:])


def events_of(given: Optional[_engine.Events]) -> Iterator[Event]:
    """The events of what an engine gives, a few thousand at a time: other threads have their turn in between."""
    for first in range(0, 0 if given is None else len(given), _AT_A_TIME):
        assert given is not None
        yield from map(event, given.tuples(first, _AT_A_TIME))


_AT_A_TIME = 4096


@dataclass(frozen=True)
class Listing:
    """A list of what a radio has."""

    title: str
    columns: Tuple[str, ...]
    rows: Tuple[Tuple[Any, ...], ...]


class Outcome:
    """What came of one command. It goes through the writes that reached hardware, ``for driver, value in outcome``, of which
    ``len(outcome)`` says how many; ``outcome["name"]`` is the last value that was written to a driver, and ``"name" in
    outcome`` says whether one was. As a condition it is true unless the command failed.

    ``command`` is what was carried out, ``code`` the result, of which bit 0x8000 says failure, and ``note`` what else
    there is to know, or empty. ``value`` is what was read, of a read; ``events`` has all that happened.
    """

    __slots__ = ("command", "code", "note", "value", "listing", "_given", "_events")

    def __init__(self, command: str, code: int, note: str, events: Union[None, _engine.Events, Tuple[Event, ...]],
                 value: Optional[int] = None, listing: Optional[Listing] = None) -> None:
        self.command = command
        self.code = code
        self.note = note
        self.value = value
        self.listing = listing
        self._given = events if isinstance(events, _engine.Events) else None
        self._events: Tuple[Event, ...] = events if isinstance(events, tuple) else ()

    def __reduce__(self) -> Tuple[Any, Tuple[Any, ...]]:
        return Outcome, (self.command, self.code, self.note, self.events, self.value, self.listing)

    @property
    def events(self) -> Tuple[Event, ...]:
        """All that happened, in order."""
        given = self._given  # another thread may have them meanwhile
        if given is not None:
            self._events = tuple(events_of(given))
            self._given = None
        return self._events

    @property
    def ok(self) -> bool:
        """It did not fail. A carrier that hardware refused is no failure of the tune: see :attr:`failed_writes`."""
        return not self.code & 0x8000

    @property
    def writes(self) -> Tuple[Write, ...]:
        """What reached hardware, in order."""
        return tuple(item for item in self.events if isinstance(item, Write))

    @property
    def failed_writes(self) -> Tuple[FailedWrite, ...]:
        """What hardware refused."""
        return tuple(item for item in self.events if isinstance(item, FailedWrite))

    @property
    def traces(self) -> Tuple[str, ...]:
        """The texts of the trace messages."""
        return tuple(item.text for item in self.events if isinstance(item, Trace))

    @property
    def notifications(self) -> Tuple[Notified, ...]:
        """Who was told which carrier."""
        return tuple(item for item in self.events if isinstance(item, Notified))

    @property
    def warnings(self) -> Tuple[str, ...]:
        """What speaks against it."""
        return tuple(item.text for item in self.events if isinstance(item, Warned))

    def __iter__(self) -> Iterator[Write]:
        return iter(self.writes)

    def __contains__(self, item: object) -> bool:
        """A driver was written to, or this very :class:`Write` is among the writes."""
        if isinstance(item, str):
            return any(item == write.driver for write in self.writes)
        return isinstance(item, tuple) and item in self.writes

    def __len__(self) -> int:
        return len(self.writes)

    def __bool__(self) -> bool:
        return self.ok

    def __getitem__(self, driver: str) -> int:
        """The last value that was written to a driver. Raises :class:`UnknownName`, a KeyError, when none was."""
        for write in reversed(self.writes):
            if isinstance(driver, str) and write.driver == driver:
                return write.value
        raise unknown_name("driver among the writes:", driver, tuple(dict.fromkeys(write.driver for write in self.writes)))

    def __repr__(self) -> str:
        result = "ok" if self.code == 0 else f"0x{self.code & 0xFFFFFFFF:04x}"
        writes = " ".join(f"{driver}={value}" for driver, value in self.writes)
        refused = "".join(f", refused {driver}={value} (0x{code & 0xFFFFFFFF:04x})"
                          for driver, value, code in self.failed_writes)
        return f"<{self.command}: {result}{', ' + self.note if self.note else ''}; {writes or 'no writes'}{refused}>"
