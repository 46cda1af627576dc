"""A radio that is up, simulated or real."""

from __future__ import annotations

from types import TracebackType
from typing import Any, Callable, List, Optional, Sequence, Tuple, Type, Union

from . import _engine
from ._arguments import (CHANNELS, UINT32, Frequency, direction as checked_direction, flag, function, khz, shown, text,
                         whole, wrong_type)
from .board import BoardLike, engine_of
from .drivers import Drivers, Variables
from .errors import ArgumentError, ClosedError, CommandFailed, RadioError, finish
from .events import Event, Listing, Outcome, Phase, Trace
from .expectations import Expectations, judge
from .faults import Faults
from .listening import Events, Subscription

__all__ = ["Radio"]


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
