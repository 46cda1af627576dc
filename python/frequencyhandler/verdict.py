"""What was found, held against the limits of a board."""

from __future__ import annotations

from dataclasses import dataclass
from typing import Any, Dict, Optional, Tuple

__all__ = ["JudgedLimit", "Verdict", "Finding"]


@dataclass(frozen=True)
class Finding:
    """Something about a board or a table that will not work, or is not used. ``severity`` is "warning" or "error"."""

    severity: str
    file: Optional[str]
    line: Optional[int]
    text: str

    @property
    def is_error(self) -> bool:
        """A channel does not start, or what is described cannot be meant."""
        return self.severity == "error"

    def __str__(self) -> str:
        place = f"{self.file}:{self.line}" if self.line else self.file
        return f"{place}: {self.severity}: {self.text}"


def findings(given: Any) -> Tuple[Finding, ...]:
    """Findings of what the engines give."""
    return tuple(Finding(severity, place[0], place[1], text) for severity, place, text in given)


@dataclass(frozen=True)
class JudgedLimit:
    """What came of one limit.

    ``limit`` and ``found`` are in dBc, of "leakage_improvement" in dB. ``found`` is None where it cannot be known, which
    ``why_unknown`` tells. ``carrier_khz`` and ``temperature`` (degrees Celsius) are where the worst is.
    """

    name: str
    limit: float
    found: Optional[float]
    is_held: bool
    why_unknown: Optional[str]
    channel: Optional[int]
    carrier_khz: Optional[int]
    temperature: Optional[int]


@dataclass(frozen=True)
class Verdict:
    """What the limits of a board make of a result. ``kind`` is "PASS", "FAIL" or None, where there was nothing to judge;
    ``why_none`` says why. As a condition it is true for "PASS" alone."""

    kind: Optional[str]
    limits: Tuple[JudgedLimit, ...]
    why_none: Optional[str]
    lines: Tuple[str, ...]

    def __bool__(self) -> bool:
        return self.kind == "PASS"

    def __str__(self) -> str:
        return "\n".join(self.lines)


def verdict(given: Dict[str, Any]) -> Verdict:
    """A verdict of what the engines give."""
    limits = tuple(JudgedLimit(*limit) for limit in given["limits"])
    return Verdict(given["kind"], limits, given["why_none"], tuple(given["lines"]))
