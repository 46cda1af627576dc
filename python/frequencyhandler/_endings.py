"""SIGTERM and SIGHUP while real hardware is driven: raised as an exception, so that the hardware is left properly."""

from __future__ import annotations

import os
import signal
import threading
from types import FrameType, TracebackType
from typing import Optional, Set, Type

_SIGNALS = (signal.SIGTERM, signal.SIGHUP)
#: What drives hardware now.
_driving: Set[int] = set()


def _is_main() -> bool:
    return threading.current_thread() is threading.main_thread()


def _ended(number: int, frame: Optional[FrameType]) -> None:
    """Of the main thread, as of any handler. Where nothing is driven any more, the signal does what it would have done."""
    if _driving:
        raise SystemExit(128 + number)
    signal.signal(number, signal.SIG_DFL)
    os.kill(os.getpid(), number)


def _put_back() -> None:
    for number in _SIGNALS:
        if signal.getsignal(number) is _ended:
            signal.signal(number, signal.SIG_DFL)


def forked() -> None:
    """In a child: the hardware is the parent's, and a signal ends the child as any other."""
    _driving.clear()
    if _is_main():
        _put_back()


class Ending:
    """From :meth:`begin` to :meth:`end` hardware is driven, if it is to be. Handlers that somebody has set stay; only the main thread can set
    any."""

    __slots__ = ("_is_wanted",)

    def __init__(self, is_wanted: bool) -> None:
        self._is_wanted = is_wanted

    def begin(self) -> None:
        if not self._is_wanted:
            return
        _driving.add(id(self))
        if _is_main():
            for number in _SIGNALS:
                if signal.getsignal(number) == signal.SIG_DFL:
                    signal.signal(number, _ended)

    def end(self) -> None:
        """The second time does nothing."""
        _driving.discard(id(self))
        if not _driving and _is_main():
            _put_back()

    def __enter__(self) -> None:
        self.begin()

    def __exit__(self, kind: Optional[Type[BaseException]], error: Optional[BaseException],
                 trace: Optional[TracebackType]) -> None:
        self.end()
