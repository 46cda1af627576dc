"""The faults of a radio that is up."""

from __future__ import annotations

from contextlib import contextmanager
from typing import TYPE_CHECKING, Iterator, List, NamedTuple, Optional, Sequence, Union, overload

from ._arguments import UINT32, Whole, text, whole
from ._tied import Tied
from .errors import BusyError
from .events import Outcome

if TYPE_CHECKING:
    from .radio import Radio

__all__ = ["Fault", "Faults"]


class Fault(NamedTuple):
    """Calls of ``operation`` on ``object`` (empty: on any) are answered with ``code``, ``times`` more times (None: until it
    is cleared)."""

    operation: str
    object: str
    code: int
    times: Optional[int]


class Faults(Tied, Sequence[Fault]):
    """The faults of a radio's platform, oldest first."""

    __slots__ = ("_radio",)

    def __init__(self, radio: Radio) -> None:
        self._radio = radio

    def _all(self) -> List[Fault]:
        return [Fault(*fault) for fault in self._radio._engine.faults()]

    def inject(self, operation: str, object: str = "", code: Whole = 0x8000, *, times: Optional[Whole] = None) -> Outcome:
        """Has the platform answer calls of ``operation`` ("driver-write") on ``object`` (empty: on any) with ``code``, so
        many times or until it is cleared. With a code that has no bit 0x8000 the call is carried out all the same. Raises
        :class:`ArgumentError` for an operation or object that there is none of."""
        self._radio._require_open()
        words = ["fault", text("operation", operation)]
        words += [text("object", object)] if text("object", object) else []
        words.append(str(whole("code", code, (0, 0x7FFFFFFF))))
        words += [] if times is None else [str(whole("times", times, UINT32)), "times"]
        return self._radio._act(words)

    def clear(self, operation: str = "", object: str = "") -> Outcome:
        """Takes faults back: all, all of an operation, or that of an object. Raises :class:`ArgumentError` for an operation
        that there is none of."""
        self._radio._require_open()
        words = ["clear", text("operation", operation) or "all"]
        return self._radio._act(words + ([text("object", object)] if text("object", object) else []))

    @contextmanager
    def injected(self, operation: str, object: str = "", code: Whole = 0x8000) -> Iterator[None]:
        """A fault as long as the block lasts; others of the same operation and object are there afterwards as before."""
        self.inject(operation, object, code)
        try:
            yield
        finally:
            if not self._radio.is_closed:
                self._take(Fault(operation, object, int(code), None))

    def _take(self, fault: Fault) -> None:
        others = [other for other in self._all() if other.operation == fault.operation]
        if fault in others:  # unless somebody cleared it
            del others[len(others) - 1 - others[::-1].index(fault)]
            self.clear(fault.operation)
            for other in others:
                self.inject(*other[:3], times=other.times)

    @overload
    def __getitem__(self, index: int) -> Fault: ...

    @overload
    def __getitem__(self, index: slice) -> List[Fault]: ...

    def __getitem__(self, index: Union[int, slice]) -> Union[Fault, List[Fault]]:
        """The fault at a place, or those of a slice, as they are now. Raises IndexError, as a list does."""
        return self._all()[index]

    def __len__(self) -> int:
        return len(self._all())

    def __repr__(self) -> str:
        if self._radio.is_closed:
            return "<Faults of a closed radio>"
        try:
            return f"<Faults: {self._all()}>"
        except BusyError:
            return "<Faults of a radio in use>"
