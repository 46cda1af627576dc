"""A radio that is up, simulated or real."""

from __future__ import annotations

import atexit
import os
import warnings
import weakref
from types import TracebackType
from typing import Any, Callable, List, Optional, Sequence, Tuple, Type, Union, get_args, overload

from . import _engine
from ._arguments import (CHANNELS, UINT32, Frequency, Whole, direction as checked_direction, flag, khz, real, shown, text,
                         whole, wrong, wrong_type)
from ._endings import Ending, forked
from ._tied import Tied
from .board import BoardLike, engine_of
from .drivers import Drivers, Names, Variables
from .errors import ClosedError, CommandFailed, RadioError, finish
from .events import Event, Listing, Outcome, Phase, Trace, events_of
from .expectations import Expectations, judge
from .faults import Faults
from .listening import Events, Happened, Listeners, Other, Subscription

__all__ = ["Radio"]


class Radio(Tied):
    """Boots a board, and drives what came up until it is closed. One at a time in a process: a second one raises
    :class:`BusyError`, as does one that is used while another thread does.

    ``hardware=True`` drives the real devices of the board, and leaves them properly at the end. SIGTERM and SIGHUP, where
    nobody handles them, are a SystemExit in the main thread as long as a radio is open that was opened there; who left a
    device as it was is a warning of ``boot``. ``trace`` is the level of
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

    __slots__ = {
        "boot": "What the start-up came to, an :class:`frequencyhandler.events.Outcome`.",
        "_file": None, "_engine": None, "_drivers": None, "_variables": None, "_channels": None, "_listeners": None,
        "_phases": None, "_ending": None, "__weakref__": None,
    }

    def __init__(self, board: BoardLike, hardware: bool = False, *, trace: str = "notice", calls: bool = False,
                 must_boot: bool = True) -> None:
        flag("must_boot", must_boot)
        description = engine_of(board)
        self._file = description.file
        self._drivers = Names(description.drivers())
        self._variables = Names(description.variables())
        self._channels = len(description.channels())
        here = weakref.ref(self)
        self._listeners = Listeners(lambda: getattr(here(), "is_closed", True))
        self._phases: List[Phase] = []
        given = flag("hardware", hardware), text("trace", trace), flag("calls", calls), must_boot
        self._ending = Ending(hardware)
        try:
            self._ending.begin()
            self._engine = _engine.Radio.open(description, *given)
            self._begin(must_boot)
        except BaseException:  # whoever keeps the exception keeps what was begun, too
            try:
                if hasattr(self, "_engine"):
                    self._engine.close()
            finally:
                self._ending.end()
            raise

    def _begin(self, must_boot: bool) -> None:
        _booted.add(self)
        code, note, events, *_ = self._engine.boot()
        self.boot = Outcome("boot", code, note, events)
        self._phases += [item for item in self.boot.events if isinstance(item, Phase)]
        if must_boot and not self._engine.is_up:
            complaints = [item.text for item in self.boot.events if isinstance(item, Trace) and item.level == "error"]
            raise RadioError(": ".join([self._file, "the radio did not boot", *complaints[:1]]))

    def __enter__(self) -> Radio:
        self._require_open()
        return self

    def __exit__(self, kind: Optional[Type[BaseException]], error: Optional[BaseException],
                 trace: Optional[TracebackType]) -> None:
        try:
            self.close()
        except Exception as failed:
            if error is None:
                raise
            error.add_note(f"and then: {failed}")  # what went wrong in the block is said rather than this

    def __del__(self) -> None:
        engine = getattr(self, "_engine", None)
        if engine is not None and not engine.is_closed:
            warnings.warn(f"the radio of {self._file} was not closed", ResourceWarning, source=self)
            try:
                self.close()
            except ClosedError:  # a thread that is left to itself, while the interpreter ends: that leaves the hardware
                pass

    def close(self) -> None:
        """Leaves the radio; hardware gets what it is to have in the end. What another thread does with the radio comes to an
        end before, as by Ctrl-C. The second time does nothing. Raises :class:`RadioError` when some of that could not be
        written."""
        try:
            writes, events = self._engine.close()
        finally:
            if self.is_closed:
                self._ending.end()
        failed = [f"{driver}={value} (0x{code & 0xFFFFFFFF:04x})" for driver, value, code in writes if code & 0x8000]
        try:
            self._tell(tuple(events_of(events)))
        finally:
            if failed:
                raise RadioError(f"{self._file}: what was to be written in the end failed: {', '.join(failed)}")

    @property
    def is_closed(self) -> bool:
        """It was closed, or has never come up."""
        engine: Optional[_engine.Radio] = getattr(self, "_engine", None)
        return engine is None or engine.is_closed

    def _require_open(self) -> None:
        if self.is_closed:
            raise ClosedError(f"the radio of {self._file} is closed")

    def tune(self, direction: str, channel: Whole, carrier: Frequency, *, force: bool = False,
             check: bool = True) -> Outcome:
        """Sets the carrier of a channel, in kHz or as a text with a unit, and gives what was written.

        ``direction`` is "tx" or "rx". A carrier that the board forbids is warned of, and refused on hardware unless it is
        forced. Raises :class:`ArgumentError`, and :class:`CommandFailed` when the radio answers with a failure, unless
        ``check`` is False. What the hardware refused is in the outcome's ``failed_writes``.

        >>> with Radio("rf-module-7ghz.toml") as radio:
        ...     radio.tune("tx", 1, 7442000).writes
        (Write(driver='channel.1.tx.rf.frequency', value=7442000),)
        """
        self._require_open()
        way = checked_direction(direction)
        number = whole("channel", channel, CHANNELS)
        frequency = khz("carrier", carrier)
        flag("check", check)
        report = self._engine.tune(way, number, frequency, flag("force", force))
        return self._done(f"tune {way} {number} {frequency}", report, check)

    def sweep(self, direction: str, channel: Whole, first: Frequency, last: Frequency, step: Frequency, *,
              dwell: float = 0.0, force: bool = False) -> Outcome:
        """Sets one carrier after the other, up or down, and stays ``dwell`` seconds at each. There are at most 1000000.
        Raises as :meth:`tune`; Ctrl-C raises :class:`Interrupted`, whose ``result`` has what was written so far."""
        self._require_open()
        words = ["sweep", checked_direction(direction), str(whole("channel", channel, CHANNELS)),
                 *(str(khz(name, value)) for name, value in (("first", first), ("last", last), ("step", step))),
                 _seconds("dwell", dwell)]
        return self._act(words + ["force"] * flag("force", force))

    def wait(self, seconds: float) -> Outcome:
        """Lets time pass, at most one hour: on hardware it is waited for, otherwise what is modelled settles at once.
        Raises :class:`ArgumentError` for other times; Ctrl-C raises :class:`Interrupted`."""
        self._require_open()
        return self._act(["wait", _seconds("seconds", seconds)])

    def execute(self, command: Union[str, Sequence[str]], *, check: bool = True) -> Outcome:
        """Carries out one command of radioctl's scripts, as its words: ``["observe", "tx", "1"]`` or ``"observe tx 1"``;
        words with blanks in them need the list. Raises :class:`ArgumentError` for one that makes no sense,
        :class:`ExpectationFailed` for an expectation that does not hold, :class:`CommandFailed` unless ``check`` is
        False."""
        __tracebackhide__ = True
        self._require_open()
        if isinstance(command, str):
            words = text("command", command).split()
        elif isinstance(command, (list, tuple)):
            words = [text("command", word) for word in command]
        else:
            raise wrong_type("command", command, "a text, or a list of words")
        if not words:
            raise wrong("command: no words", "a command")
        return self._act(words, flag("check", check))

    def phase(self, name: Union[str, Whole]) -> Outcome:
        """Runs a start-up phase again over all channels: "init", "storage" or "frame-format", or 11, 5 or 20.
        Raises :class:`ArgumentError` for another one, and :class:`CommandFailed` when a module fails in it."""
        self._require_open()
        word = str(whole("name", name, UINT32)) if not isinstance(name, str) else text("name", name)
        return self._act(["phase", word])

    @property
    def phases(self) -> Tuple[Phase, ...]:
        """The phases that were run, those of the start-up first."""
        self._require_open()
        return tuple(self._phases)

    @property
    def temperature(self) -> Optional[int]:
        """In degrees Celsius; None before anybody told one. Setting it, from -100 to 200, tells its observers. On hardware
        it is that of the sensor, as it was last read by the board's interval."""
        self._poll()
        return self._engine.temperature

    @temperature.setter
    def temperature(self, degrees: int) -> None:
        self._require_open()
        self._act(["temperature", str(whole("temperature", degrees, (-100, 200)))])

    def frequency(self, direction: str, channel: Whole) -> int:
        """The carrier that a frequency handler reports, in kHz; 0 before the first. Raises :class:`ArgumentError` for a channel
        that the board does not have, and :class:`BusyError`."""
        self._require_open()
        return self._engine.frequency(checked_direction(direction), whole("channel", channel, CHANNELS))

    def leakage(self, channel: Whole) -> Optional[float]:
        """The modelled LO leakage of a channel as it is now, in dBc; None without a carrier. Raises :class:`ArgumentError`
        for one that is not modelled, and :class:`BusyError`."""
        self._require_open()
        return self._engine.leakage(whole("channel", channel, CHANNELS))

    @property
    def drivers(self) -> Drivers:
        """Its drivers, by name."""
        return Drivers(self, self._drivers)

    @property
    def variables(self) -> Variables:
        """The variables of its database, by name."""
        return Variables(self, self._variables)

    @property
    def faults(self) -> Faults:
        """The faults that its platform has."""
        return Faults(self)

    @property
    def expect(self) -> Expectations:
        """Expectations of the radio and its last command, which raise :class:`ExpectationFailed`."""
        return Expectations(self)

    @overload
    def events(self) -> Events[Event]: ...

    @overload
    def events(self, kind: Type[Happened], /) -> Events[Happened]: ...

    @overload
    def events(self, kind: Type[Happened], other: Type[Other], /) -> Events[Union[Happened, Other]]: ...

    @overload
    def events(self, *kinds: Type[Any]) -> Events[Any]: ...

    def events(self, *kinds: Type[Any]) -> Events[Any]:
        """An iterator over the events from now on, of these classes only, if any are named."""
        self._require_open()
        return Events(self, _kinds(kinds))

    @overload
    def on_event(self, callback: Callable[[Event], Any], /) -> Subscription: ...

    @overload
    def on_event(self, callback: Callable[[Happened], Any], kind: Type[Happened], /) -> Subscription: ...

    @overload
    def on_event(self, callback: Callable[[Union[Happened, Other]], Any], kind: Type[Happened], other: Type[Other],
                 /) -> Subscription: ...

    @overload
    def on_event(self, callback: Callable[[Any], Any], *kinds: Type[Any]) -> Subscription: ...

    def on_event(self, callback: Callable[[Any], Any], *kinds: Type[Any]) -> Subscription:
        """Has ``callback`` told of events, in their order, once the command is done in which they happened; it may drive
        the radio, up to 1000 times for one command, and is told what happens then behind what waits. What it raises is
        raised by the command, when all were told."""
        self._require_open()
        if not callable(callback):
            raise wrong_type("callback", callback, "a function")
        return self._listeners.add(callback, _kinds(kinds))

    def _act(self, words: List[str], check: bool = True) -> Outcome:
        __tracebackhide__ = True  # of pytest: what an expectation raises is about the line of the test
        self._require_open()
        return self._done(" ".join(words), self._engine.execute(words), check)

    def _done(self, command: str, report: Any, check: bool) -> Outcome:
        __tracebackhide__ = True
        code, note, events, value, judgement, listing, raised = report
        shown_list = Listing(listing[0], tuple(listing[1]), tuple(map(tuple, listing[2]))) if listing else None
        outcome = Outcome(command, code, note, events, value, shown_list)
        if events is not None and (events.has_phases or self._listeners.are_there()):
            try:
                self._tell(outcome.events)
            except Exception:
                finish(outcome, raised, command)  # an interrupt goes before what a function raised
                raise
        finish(outcome, raised, command)
        if judgement is not None:
            judge(command, judgement)
        if check and not outcome.ok:
            raise CommandFailed(_failure(outcome), outcome)
        return outcome

    def _poll(self) -> None:
        """Looks what became of real hardware and its sensor since, and tells."""
        if self._engine.is_on_hardware and not self.is_closed:
            self._tell(tuple(events_of(self._engine.poll())))

    def _tell(self, happened: Sequence[Event]) -> None:
        self._phases += [item for item in happened if isinstance(item, Phase)]
        if happened and self._listeners.are_there():
            self._listeners.tell(happened)

    def __repr__(self) -> str:
        if self.is_closed:
            return f"<Radio {getattr(self, '_file', '')!r}, closed>"
        return f"<Radio {self._file!r}: {self._channels} channels, {len(self._drivers.names)} drivers>"


def _failure(outcome: Outcome) -> str:
    why = [note for note in (outcome.note, *outcome.traces, *outcome.warnings) if note]
    return f"{outcome.command}: 0x{outcome.code & 0xFFFFFFFF:04x}" + "".join(f", {note}" for note in why[:2])


def _kinds(kinds: Tuple[Type[Any], ...]) -> Tuple[Type[Any], ...]:
    for kind in kinds:
        if not isinstance(kind, type) or kind not in get_args(Event):
            raise wrong_type("kinds", kind, "classes of events, such as events.Write")
    return kinds


def _seconds(name: str, value: float) -> str:
    number = real(name, value, "a number of seconds")
    if not 0 <= number <= 3600:
        raise wrong(f"{name}: {shown(value)}", "from 0 to 3600")
    return f"{number:.6f}".rstrip("0").rstrip(".") or "0"


#: Those that are up, or were and are still known.
_booted: weakref.WeakSet[Radio] = weakref.WeakSet()


def _leave() -> None:
    # Before the interpreter ends: what threads do that are left to themselves, and what hardware is to have in the end.
    try:
        _engine.leave()
    finally:
        for radio in tuple(_booted):
            if not radio.is_closed:
                radio.__del__()


atexit.register(_leave)
os.register_at_fork(after_in_child=_engine.forked)
os.register_at_fork(after_in_child=forked)
