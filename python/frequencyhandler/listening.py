"""Who is told of the events of a radio."""

from __future__ import annotations

from collections import deque
from typing import TYPE_CHECKING, Any, Callable, Deque, Iterator, Tuple, Type

from .events import Event

if TYPE_CHECKING:
    from .radio import Radio

__all__ = ["Events", "Subscription"]


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
