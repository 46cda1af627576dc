"""A radio that is up, simulated or real."""

from __future__ import annotations

from collections import deque
from contextlib import contextmanager
from types import TracebackType
from typing import Any, Callable, Deque, Iterator, List, Mapping, NamedTuple, Optional, Sequence, Tuple, Type, Union

from . import _engine
from ._arguments import (CHANNELS, INT32, INT64, UINT32, Frequency, direction as checked_direction, flag, function, khz,
                         shown, text, whole, wrong_type)
from .board import BoardLike, engine_of
from .errors import ArgumentError, ClosedError, CommandFailed, RadioError, finish
from .events import Event, Listing, Outcome, Phase, Trace, event
from .expectations import Expectations, judge

__all__ = ["Radio", "Driver", "Drivers", "Variables", "Fault", "Faults", "Events", "Subscription"]


class Driver:
    """A driver of a radio, read and written past all handlers, as a client of the driver layer does."""

    def __init__(self, radio: Radio, name: str) -> None:
        self._radio = radio
        self._name = name

    @property
    def name(self) -> str:
        """Its name."""
        return self._name

    @property
    def value(self) -> int:
        """What was written or read last, in the driver's unit; asks nobody."""
        return int(self._radio._engine.driver(self._name)[0])

    @property
    def writes(self) -> int:
        """How many writes succeeded."""
        return int(self._radio._engine.driver(self._name)[1])

    @property
    def is_real(self) -> bool:
        """Real hardware stands behind it."""
        return bool(self._radio._engine.driver(self._name)[2])

    def read(self) -> int:
        """Its value, read through its record, in its unit. Raises :class:`CommandFailed` with the driver's code."""
        value = self._radio._act(["read", self._name]).value
        assert value is not None  # a read that gives none has failed
        return value

    def write(self, value: int, *, force: bool = False) -> Outcome:
        """Writes a value of up to 32 bits, or up to 64 to a driver that takes Hz. Raises :class:`CommandFailed` with the
        driver's code, and on hardware for a value outside its range, unless it is forced."""
        words = ["write", self._name, str(whole("value", value, INT64))]
        return self._radio._act(words + ["force"] * flag("force", force))

    def __repr__(self) -> str:
        if self._radio.is_closed:
            return f"<Driver {self._name!r} of a closed radio>"
        return f"<Driver {self._name!r}: {self.value}>"


class Drivers(Mapping[str, Driver]):
    """The drivers of a radio, by name."""

    def __init__(self, radio: Radio, names: Sequence[str]) -> None:
        self._radio = radio
        self._names = tuple(names)
        self._known = frozenset(names)

    def __getitem__(self, name: str) -> Driver:
        self._radio._require_open()
        if not isinstance(name, str) or name not in self._known:
            raise KeyError(name)
        return Driver(self._radio, name)

    def __iter__(self) -> Iterator[str]:
        return iter(self._names)

    def __len__(self) -> int:
        return len(self._names)

    def __repr__(self) -> str:
        return f"<{len(self)} drivers of {self._radio!r}>"


class Variables(Mapping[str, Tuple[int, ...]]):
    """The variables of a radio's database, by name; each has one value or more."""

    def __init__(self, radio: Radio, names: Sequence[str]) -> None:
        self._radio = radio
        self._names = tuple(names)

    def __getitem__(self, name: str) -> Tuple[int, ...]:
        self._radio._require_open()
        if not isinstance(name, str) or name not in self._names:
            raise KeyError(name)
        return tuple(self._radio._engine.variable(name))

    def __setitem__(self, name: str, values: Union[int, Sequence[int]]) -> None:
        self.set(name, values)

    def set(self, name: str, values: Union[int, Sequence[int]]) -> Outcome:
        """Changes a variable; fewer values than it has places leave the others. The outcome's note says which phase takes
        it over, if one has to."""
        given: Sequence[int]
        if isinstance(values, (str, bytes, Mapping)) or not (hasattr(values, "__iter__") or hasattr(values, "__index__")):
            raise wrong_type("values", values, "a whole number, or several")
        given = list(values) if hasattr(values, "__iter__") else [values]  # type: ignore[list-item]
        if not given:
            raise ArgumentError("values: none, expected at least one")
        written = ",".join(str(whole("values", value, INT32)) for value in given)
        return self._radio._act(["set", text("name", name), written])

    def __iter__(self) -> Iterator[str]:
        return iter(self._names)

    def __len__(self) -> int:
        return len(self._names)

    def __repr__(self) -> str:
        return f"<{len(self)} variables of {self._radio!r}>"


class Fault(NamedTuple):
    """Calls of ``operation`` on ``object`` (empty: on any) are answered with ``code``, ``times`` more times (None: until it
    is cleared)."""

    operation: str
    object: str
    code: int
    times: Optional[int]


class Faults(Sequence[Any]):
    """The faults of a radio's platform, oldest first."""

    def __init__(self, radio: Radio) -> None:
        self._radio = radio

    def _all(self) -> List[Fault]:
        return [Fault(*fault) for fault in self._radio._engine.faults()]

    def inject(self, operation: str, object: str = "", code: int = 0x8000, *, times: Optional[int] = None) -> Outcome:
        """Has the platform answer calls of ``operation`` ("driver-write") on ``object`` (empty: on any) with ``code``, so
        many times or until it is cleared. With a code that has no bit 0x8000 the call is carried out all the same."""
        words = ["fault", text("operation", operation)]
        words += [text("object", object)] if text("object", object) else []
        words.append(str(whole("code", code, (0, 0x7FFFFFFF))))
        words += [] if times is None else [str(whole("times", times, UINT32)), "times"]
        return self._radio._act(words)

    def clear(self, operation: str = "", object: str = "") -> Outcome:
        """Takes faults back: all, all of an operation, or that of an object."""
        words = ["clear", text("operation", operation) or "all"]
        return self._radio._act(words + ([text("object", object)] if text("object", object) else []))

    @contextmanager
    def injected(self, operation: str, object: str = "", code: int = 0x8000) -> Iterator[None]:
        """A fault as long as the block lasts."""
        self.inject(operation, object, code)
        try:
            yield
        finally:
            if not self._radio.is_closed:
                self.clear(operation, object)

    def __getitem__(self, index: Any) -> Any:
        return self._all()[index]

    def __len__(self) -> int:
        return len(self._all())

    def __repr__(self) -> str:
        return "<Faults of a closed radio>" if self._radio.is_closed else f"<Faults: {self._all()}>"


class Subscription:
    """A function that is told of events, until it is cancelled."""

    def __init__(self, radio: Radio, callback: Callable[[Event], Any], kinds: Tuple[Type[Any], ...]) -> None:
        self._radio = radio
        self._callback = callback
        self._kinds = kinds

    def cancel(self) -> None:
        """It is told nothing any more. The second time does nothing."""
        if self in self._radio._subscriptions:
            self._radio._subscriptions.remove(self)

    def tell(self, happened: Event) -> None:
        """Passes an event on, if it is of the kinds that were asked for."""
        if not self._kinds or isinstance(happened, self._kinds):
            self._callback(happened)


class Events(Iterator[Event]):
    """Events of a radio from when it was made, each given once. It ends where nothing more has happened yet, and goes on
    when something has. What was not fetched when the radio was closed is still there."""

    def __init__(self, radio: Radio, kinds: Tuple[Type[Any], ...]) -> None:
        self._waiting: Deque[Event] = deque()
        self._radio = radio
        self._subscription = Subscription(radio, self._waiting.append, kinds)
        radio._subscriptions.append(self._subscription)

    def __next__(self) -> Event:
        if not self._waiting:
            raise StopIteration
        return self._waiting.popleft()

    def close(self) -> None:
        """Gathers nothing any more."""
        self._subscription.cancel()
        self._waiting.clear()

    def __repr__(self) -> str:
        of = "a closed radio" if self._radio.is_closed else repr(self._radio)
        return f"<{len(self._waiting)} events of {of}>"


class Radio:
    """Boots a board, and drives what came up until it is closed. One at a time in a process: a second one raises
    :class:`BusyError`, as does one that is used while another thread does.

    ``hardware=True`` drives the real devices of the board, and leaves them properly at the end. ``trace`` is the level of
    the trace messages that are told ("error" to "information"); ``calls=True`` tells all calls of the library, not writes
    alone. ``must_boot=False`` accepts a start-up that fails, to look into it.

    Raises :class:`InputError` for a file that cannot be used and hardware that cannot be taken, :class:`RadioError` for a
    start-up that fails.

    >>> with Radio("rf-module-7ghz.toml") as radio:
    ...     radio.tune("tx", 1, "7.442 GHz")["channel.1.tx.rf.frequency"]
    7442000
    >>> radio
    <Radio 'rf-module-7ghz.toml', closed>
    >>> radio.tune("tx", 1, 7442000)
    Traceback (most recent call last):
    frequencyhandler.errors.ClosedError: the radio of rf-module-7ghz.toml is closed
    """

    def __init__(self, board: BoardLike, hardware: bool = False, *, trace: str = "notice", calls: bool = False,
                 must_boot: bool = True) -> None:
        flag("must_boot", must_boot)
        description = engine_of(board)
        self._subscriptions: List[Subscription] = []
        self._file = description.file
        self._engine = _engine.Radio(description, flag("hardware", hardware), text("trace", trace), flag("calls", calls))
        self._drivers = Drivers(self, description.drivers())
        self._variables = Variables(self, description.variables())
        self._channels = {channel[0] for channel in description.channels()}
        code, note, events, *_ = self._engine.boot()
        #: What the start-up came to.
        self.boot = Outcome("boot", code, note, events)
        self._phases = [item for item in self.boot.events if isinstance(item, Phase)]
        if must_boot and not self._engine.is_up:
            complaints = [item.text for item in self.boot.events if isinstance(item, Trace) and item.level == "error"]
            self._engine.close()
            raise RadioError(": ".join([self._file, "the radio did not boot", *complaints[:1]]))

    def __enter__(self) -> Radio:
        self._require_open()
        return self

    def __exit__(self, kind: Optional[Type[BaseException]], error: Optional[BaseException],
                 trace: Optional[TracebackType]) -> None:
        try:
            self.close()
        except RadioError:
            if error is None:  # what went wrong in the block is said rather than this
                raise

    def close(self) -> None:
        """Leaves the radio; hardware gets what it is to have in the end. The second time does nothing. Raises
        :class:`RadioError` when some of that could not be written."""
        failed = [f"{driver}={value} (0x{code & 0xFFFFFFFF:04x})"
                  for driver, value, code in self._engine.close() if code & 0x8000]
        if failed:
            raise RadioError(f"{self._file}: what was to be written in the end failed: {', '.join(failed)}")

    @property
    def is_closed(self) -> bool:
        """It was closed."""
        return self._engine.is_closed

    def _require_open(self) -> None:
        if self.is_closed:
            raise ClosedError(f"the radio of {self._file} is closed")

    def tune(self, direction: str, channel: int, carrier: Frequency, *, force: bool = False,
             check: bool = True) -> Outcome:
        """Sets the carrier of a channel, in kHz or as a text with a unit, and gives what was written.

        ``direction`` is "tx" or "rx". A carrier that the board forbids is warned of, and refused on hardware unless it is
        forced. Raises :class:`ArgumentError`, and :class:`CommandFailed` when the radio answers with a failure, unless
        ``check`` is False. What the hardware refused is in the outcome's ``failed_writes``.

        >>> with Radio("rf-module-7ghz.toml") as radio:
        ...     radio.tune("tx", 1, 7442000).writes
        (Write(driver='channel.1.tx.rf.frequency', value=7442000),)
        """
        way = checked_direction(direction)
        number = whole("channel", channel, CHANNELS)
        frequency = khz("carrier", carrier)
        flag("check", check)
        report = self._engine.tune(way, number, frequency, flag("force", force))
        return self._done(f"tune {way} {number} {frequency}", report, check)

    def sweep(self, direction: str, channel: int, first: Frequency, last: Frequency, step: Frequency, *,
              dwell: float = 0.0, force: bool = False) -> Outcome:
        """Sets one carrier after the other, up or down, and stays ``dwell`` seconds at each. There are at most 1000000."""
        words = ["sweep", checked_direction(direction), str(whole("channel", channel, CHANNELS)),
                 *(str(khz(name, value)) for name, value in (("first", first), ("last", last), ("step", step))),
                 _seconds("dwell", dwell)]
        return self._act(words + ["force"] * flag("force", force))

    def wait(self, seconds: float) -> Outcome:
        """Lets time pass, at most one hour: on hardware it is waited for, otherwise what is modelled settles at once."""
        return self._act(["wait", _seconds("seconds", seconds)])

    def execute(self, command: Union[str, Sequence[str]], *, check: bool = True) -> Outcome:
        """Carries out one command of radioctl's scripts, as its words: ``["observe", "tx", "1"]`` or ``"observe tx 1"``;
        words with blanks in them need the list. Raises :class:`ArgumentError` for one that makes no sense,
        :class:`ExpectationFailed` for an expectation that does not hold, :class:`CommandFailed` unless ``check`` is
        False."""
        if isinstance(command, str):
            words = text("command", command).split()
        elif isinstance(command, (list, tuple)):
            words = [text("command", word) for word in command]
        else:
            raise wrong_type("command", command, "a text, or a list of words")
        if not words:
            raise ArgumentError("command: no words, expected a command")
        return self._act(words, flag("check", check))

    def phase(self, name: Union[str, int]) -> Outcome:
        """Runs a start-up phase again over all channels: "init", "storage" or "frame-format", or 11, 5 or 20."""
        word = str(whole("name", name, UINT32)) if not isinstance(name, str) else text("name", name)
        return self._act(["phase", word])

    @property
    def phases(self) -> Tuple[Phase, ...]:
        """The phases that were run, those of the start-up first."""
        return tuple(self._phases)

    @property
    def temperature(self) -> Optional[int]:
        """In degrees Celsius; None before anybody told one. Setting it, from -100 to 200, tells its observers. On hardware
        it is that of the sensor."""
        return self._engine.temperature

    @temperature.setter
    def temperature(self, degrees: int) -> None:
        self._act(["temperature", str(whole("temperature", degrees, (-100, 200)))])

    def frequency(self, direction: str, channel: int) -> int:
        """The carrier that a frequency handler reports, in kHz; 0 before the first."""
        return self._engine.frequency(checked_direction(direction), whole("channel", channel, CHANNELS))

    def leakage(self, channel: int) -> Optional[float]:
        """The modelled LO leakage of a channel as it is now, in dBc; None without a carrier."""
        return self._engine.leakage(whole("channel", channel, CHANNELS))

    @property
    def drivers(self) -> Drivers:
        """Its drivers, by name."""
        return self._drivers

    @property
    def variables(self) -> Variables:
        """The variables of its database, by name."""
        return self._variables

    @property
    def faults(self) -> Faults:
        """The faults that its platform has."""
        return Faults(self)

    @property
    def expect(self) -> Expectations:
        """Expectations of the radio and its last command, which raise :class:`ExpectationFailed`."""
        return Expectations(self._act)

    def events(self, *kinds: Type[Any]) -> Events:
        """An iterator over the events from now on, of these classes only, if any are named."""
        return Events(self, _kinds(kinds))

    def on_event(self, callback: Callable[[Event], Any], *kinds: Type[Any]) -> Subscription:
        """Has ``callback`` told of events, in their order, once the command is done in which they happened; it may drive
        the radio. What it raises is raised by the command, when all were told."""
        if function("callback", callback) is None:
            raise wrong_type("callback", callback, "a function")
        subscription = Subscription(self, callback, _kinds(kinds))
        self._subscriptions.append(subscription)
        return subscription

    def _act(self, words: List[str], check: bool = True) -> Outcome:
        return self._done(" ".join(words), self._engine.execute(words), check)

    def _done(self, command: str, report: Any, check: bool) -> Outcome:
        code, note, events, value, judgement, listing, raised = report
        shown_list = Listing(listing[0], tuple(listing[1]), tuple(map(tuple, listing[2]))) if listing else None
        outcome = Outcome(command, code, note, events, value, shown_list)
        if self._subscriptions or len(events) > 0 and any(item[0] == "phase" for item in events):
            self._tell(outcome)
        finish(outcome, raised)
        if judgement is not None:
            judge(command, judgement)
        if check and not outcome.ok:
            raise CommandFailed(_failure(outcome), outcome)
        return outcome

    def _tell(self, outcome: Outcome) -> None:
        first: Optional[BaseException] = None
        for happened in outcome.events:
            if isinstance(happened, Phase):
                self._phases.append(happened)
            for subscription in tuple(self._subscriptions):
                try:
                    subscription.tell(happened)
                except Exception as error:  # the others are told all the same
                    first = first or error
        if first is not None:
            raise first

    def __repr__(self) -> str:
        if self.is_closed:
            return f"<Radio {self._file!r}, closed>"
        return f"<Radio {self._file!r}: {len(self._channels)} channels, {len(self._drivers)} drivers>"


def _failure(outcome: Outcome) -> str:
    why = [note for note in (outcome.note, *outcome.traces, *outcome.warnings) if note]
    return f"{outcome.command}: 0x{outcome.code & 0xFFFFFFFF:04x}" + "".join(f", {note}" for note in why[:2])


def _kinds(kinds: Tuple[Type[Any], ...]) -> Tuple[Type[Any], ...]:
    for kind in kinds:
        if not isinstance(kind, type):
            raise wrong_type("kinds", kind, "classes of events")
    return kinds


def _seconds(name: str, value: float) -> str:
    if isinstance(value, bool) or not isinstance(value, (int, float)):
        raise wrong_type(name, value, "a number of seconds")
    if not 0 <= value <= 3600:
        raise ArgumentError(f"{name}: {shown(value)}, expected from 0 to 3600")
    return f"{value:.6f}".rstrip("0").rstrip(".") or "0"
