"""The faults of a radio that is up."""

from __future__ import annotations

from contextlib import contextmanager
from typing import TYPE_CHECKING, Any, Iterator, List, NamedTuple, Optional, Sequence

from ._arguments import UINT32, text, whole
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
