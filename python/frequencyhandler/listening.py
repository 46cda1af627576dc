"""Who is told of the events of a radio."""

from __future__ import annotations

import math
import threading
import time
from collections import deque
from typing import TYPE_CHECKING, Any, Callable, Deque, Iterator, List, Optional, Sequence, Tuple, Type, TypeVar
from weakref import WeakSet

from ._arguments import real, shown, wrong
from ._tied import Tied
from .errors import BusyError, ClosedError, RadioError, TimedOut
from .events import Event

if TYPE_CHECKING:
    from .radio import Radio

__all__ = ["Events", "Subscription"]

#: Of the kind that was asked for.
Happened = TypeVar("Happened", bound=Event)
Other = TypeVar("Other", bound=Event)

#: So many commands may functions carry out that are told of the events of one: more go in a circle.
FURTHER = 1000


class Subscription(Tied):
    """A function that is told of events, until it is cancelled."""

    __slots__ = ("_listeners", "_callback", "_kinds")

    def __init__(self, listeners: Listeners, callback: Callable[[Any], Any], kinds: Tuple[Type[Any], ...]) -> None:
        self._listeners = listeners
        self._callback = callback
        self._kinds = kinds

    def cancel(self) -> None:
        """It is told nothing any more. The second time does nothing."""
        self._listeners.remove(self)

    def tell(self, happened: Event) -> None:
        """Passes an event on, if it is of the kinds that were asked for."""
        if not self._kinds or isinstance(happened, self._kinds):
            self._callback(happened)

    def __repr__(self) -> str:
        of = " or ".join(kind.__name__ for kind in self._kinds) or "all events"
        is_closed = self._listeners.is_closed()
        return (f"<Subscription of {of}{' of a closed radio' if is_closed else ''}"
                f"{'' if self._listeners.has(self) else ', cancelled'}>")


class Listeners:
    """Who is told of the events of one radio. What functions are told waits in a queue, so that all are told in the order
    in which things happened, also when one of them drives the radio; iterators have theirs at once."""

    __slots__ = ("_subscriptions", "_iterators", "_waiting", "_lock", "_teller", "_further", "is_closed")

    def __init__(self, is_closed: Callable[[], bool]) -> None:
        self.is_closed = is_closed
        self._subscriptions: List[Subscription] = []
        self._iterators: WeakSet[Events[Any]] = WeakSet()
        self._waiting: Deque[Event] = deque()
        self._lock = threading.Lock()
        self._teller: Optional[int] = None
        self._further = 0

    def add(self, callback: Callable[[Any], Any], kinds: Tuple[Type[Any], ...]) -> Subscription:
        subscription = Subscription(self, callback, kinds)
        self._subscriptions.append(subscription)
        return subscription

    def remove(self, subscription: Subscription) -> None:
        if subscription in self._subscriptions:
            self._subscriptions.remove(subscription)

    def has(self, subscription: Subscription) -> bool:
        return subscription in self._subscriptions

    def add_iterator(self, events: Events[Any]) -> None:
        self._iterators.add(events)

    def has_iterator(self, events: Events[Any]) -> bool:
        return events in self._iterators

    def remove_iterator(self, events: Events[Any]) -> None:
        self._iterators.discard(events)

    def are_there(self) -> bool:
        return bool(self._subscriptions or self._iterators)

    def tell(self, happened: Sequence[Event]) -> None:
        """Tells all of them, and raises the first of what they raise. Within one of them, and while another thread
        tells, the events are told behind those that wait."""
        for events in tuple(self._iterators):
            events.gather(happened)
        if self._subscriptions and self._begin(happened):
            try:
                first = self._tell_waiting()
            except BaseException:  # an interrupt, or a program that cannot go on: nobody is told any more
                self._end()
                raise
            if first is not None:
                raise first

    def _begin(self, happened: Sequence[Event]) -> bool:
        me = threading.get_ident()
        with self._lock:
            if self._teller is None:
                self._teller = me
                self._further = 0
                self._waiting.extend(happened)
                return True
            if self._teller == me:
                self._further += 1
                if self._further > FURTHER:
                    self._waiting.clear()
                    raise RadioError(f"functions that are told of events have driven the radio {FURTHER} times, expected "
                                     "them to come to an end")
            self._waiting.extend(happened)
            return False

    def _end(self) -> None:
        with self._lock:
            self._waiting.clear()
            self._teller = None

    def _next(self) -> Optional[Event]:
        with self._lock:
            if self._waiting:
                return self._waiting.popleft()
            self._teller = None
            return None

    def _tell_waiting(self) -> Optional[Exception]:
        first: Optional[Exception] = None
        while True:
            happened = self._next()
            if happened is None:
                return first
            for subscription in tuple(self._subscriptions):
                try:
                    subscription.tell(happened)
                except RecursionError:
                    raise
                except Exception as error:  # the others are told all the same
                    first = first or error


#: Seconds after which is looked again what real hardware did.
_TURN = 0.05


def _end(name: str, seconds: Optional[float]) -> float:
    """When so many seconds are over; None: never."""
    if seconds is None and name == "timeout":
        return math.inf
    number = real(name, seconds, "a number of seconds" + (", or None" if name == "timeout" else ""))
    if not number >= 0:
        raise wrong(f"{name}: {shown(seconds)}", "0 or more seconds")
    return time.monotonic() + number


class Events(Tied, Iterator[Happened]):
    """Events of a radio from when it was made, each given once. It ends where nothing more has happened yet, and goes on
    when something has: a ``for`` over it goes through what is there. :meth:`wait` and :meth:`within` wait for what is to
    happen. What was not fetched when the radio was closed is still there. It gathers as long as anybody has it, or until
    :meth:`close`."""

    __slots__ = ("_waiting", "_radio", "_kinds", "_changed", "__weakref__")

    def __init__(self, radio: Radio, kinds: Tuple[Type[Any], ...]) -> None:
        self._waiting: Deque[Any] = deque()
        self._radio = radio
        self._kinds = kinds
        self._changed = threading.Condition()
        radio._listeners.add_iterator(self)

    def gather(self, happened: Sequence[Event]) -> None:
        """Keeps those of the kinds that were asked for."""
        kinds = self._kinds
        with self._changed:
            self._waiting.extend([item for item in happened if isinstance(item, kinds)] if kinds else happened)
            self._changed.notify_all()

    def _look(self) -> None:
        if not self._waiting:
            try:
                self._radio._poll()
            except (BusyError, ClosedError):  # who drives it is told what happens meanwhile, and this then
                pass

    def __next__(self) -> Happened:
        self._look()
        try:
            happened: Happened = self._waiting.popleft()
        except IndexError:
            raise StopIteration from None
        return happened

    def wait(self, timeout: Optional[float] = None) -> Happened:
        """The next event, which is waited for: at most ``timeout`` seconds, or as long as it takes. What real hardware and its
        sensor do happens by itself; all else while another thread drives the radio, and is told when its command is done.

        Raises :class:`TimedOut`, a TimeoutError, when nothing has happened until then, and :class:`ClosedError` when nothing
        will any more. Other threads go on meanwhile, and Ctrl-C ends it. With asyncio:
        ``await asyncio.to_thread(told.wait, 5)``.

        >>> from frequencyhandler import Radio
        >>> with Radio("rf-module-7ghz.toml") as radio:
        ...     told = radio.events()
        ...     _ = radio.tune("tx", 1, 7442000)
        ...     told.wait(5)
        Write(driver='channel.1.tx.rf.frequency', value=7442000)
        """
        end = _end("timeout", timeout)
        while True:
            self._look()
            with self._changed:
                if self._waiting:
                    happened: Happened = self._waiting.popleft()
                    return happened
                if self._radio.is_closed or not self._radio._listeners.has_iterator(self):
                    raise ClosedError("nothing more happens: the radio or the iterator is closed")
                left = end - time.monotonic()
                if left <= 0:
                    raise TimedOut(f"no event within {timeout} s")
                self._changed.wait(min(left, _TURN))

    def within(self, seconds: float) -> Iterator[Happened]:
        """The events as they happen, each as soon as it does, until so many seconds are over or the radio is closed.
        Raises :class:`ArgumentError` for a number that is none of seconds."""
        end = _end("seconds", seconds)
        return self._until(end)

    def _until(self, end: float) -> Iterator[Happened]:
        while True:
            try:
                happened = self.wait(max(0.0, end - time.monotonic()))
            except (TimedOut, ClosedError):
                return
            yield happened

    def close(self) -> None:
        """Gathers nothing any more."""
        self._radio._listeners.remove_iterator(self)
        self._waiting.clear()

    def __repr__(self) -> str:
        of = "a closed radio" if self._radio.is_closed else repr(self._radio)
        return f"<{len(self._waiting)} events of {of}>"
