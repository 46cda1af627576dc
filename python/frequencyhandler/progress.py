"""How long work tells how far it is, and how it is ended."""

from __future__ import annotations

import importlib
import sys
import threading
from types import TracebackType
from typing import Any, Callable, NamedTuple, Optional, Type, Union

from ._arguments import function, wrong_type

__all__ = ["Progress", "ProgressLike", "CancelLike"]


class Progress(NamedTuple):
    """How far long work is: ``done`` of ``total``, both in ``unit`` ("carriers", "probes"), and a ``note`` or nothing."""

    done: int
    total: int
    unit: str
    note: str = ""


#: True shows a bar on standard error, if the process has one, by tqdm where that is installed; a function is called with a
#: :class:`Progress`, a few times a second and a last time at the end. What it raises ends the work, and is raised in its place.
ProgressLike = Union[None, bool, Callable[[Progress], Any]]
#: Something that is set, or says True, once the work is to end: it then gives what it has.
CancelLike = Union[None, threading.Event, Callable[[], bool]]


def cancelling(value: Any) -> Optional[Callable[[], bool]]:
    """What asks whether to end, of a :data:`CancelLike`."""
    if isinstance(value, threading.Event):
        return value.is_set
    return function("cancel", value)


def _is_shown() -> bool:
    """The process has a standard error, and nobody has closed it."""
    return sys.stderr is not None and not getattr(sys.stderr, "closed", False)


class Reporter:
    """Tells a :data:`ProgressLike`, and clears up behind it."""

    def __init__(self, value: Any, unit: str) -> None:
        if value is not None and not isinstance(value, bool) and not callable(value):
            raise wrong_type("progress", value, "True, False, None or a function")
        self._bar: Any = None
        self._unit = unit
        self._tell = (self._show if _is_shown() else None) if value is True else value or None
        self._shown = ""

    def __enter__(self) -> Reporter:
        return self

    def __exit__(self, kind: Optional[Type[BaseException]], error: Optional[BaseException],
                 trace: Optional[TracebackType]) -> None:
        if self._bar is not None:
            self._bar.close()
        elif self._shown and _is_shown():
            print(file=sys.stderr)

    @property
    def counting(self) -> Optional[Callable[[int, int], None]]:
        """What the engines call with how much is done, and of how much."""
        return None if self._tell is None else self._count

    def _count(self, done: int, total: int) -> None:
        self.tell(Progress(done, total, self._unit))

    def tell(self, progress: Progress) -> None:
        """Passes ``progress`` on, if anybody wants it."""
        if self._tell is not None:
            self._tell(progress)

    def _show(self, progress: Progress) -> None:
        try:
            bars = importlib.import_module("tqdm")
        except ImportError:
            self._show_line(progress)
            return
        if self._bar is None:
            self._bar = bars.tqdm(total=progress.total, unit=f" {progress.unit}", leave=False)
        self._bar.total = progress.total
        self._bar.set_postfix_str(progress.note, refresh=False)
        self._bar.update(progress.done - self._bar.n)

    def _show_line(self, progress: Progress) -> None:
        share = 100 * progress.done // progress.total if progress.total else 100
        line = f"{share} % of {progress.total} {progress.unit} {progress.note}".rstrip()
        print("\r" + line.ljust(len(self._shown)), end="", file=sys.stderr, flush=True)
        self._shown = line
