"""The frequency plan: one carrier explained, all carriers of a board audited."""

from __future__ import annotations

from dataclasses import dataclass
from typing import Any, Dict, List, Optional, Tuple

import numpy as np
import numpy.typing as npt

from . import _engine
from ._arguments import CHANNELS, Frequency, Whole, direction as checked_direction, flag, khz, whole
from ._endings import Ending
from .board import BoardLike, engine_of
from .errors import finish_on_hardware
from .progress import CancelLike, ProgressLike, Reporter, cancelling

__all__ = ["Step", "Explanation", "explain", "FindingGroup", "AuditRow", "AuditResult", "audit", "CARRIER", "WORDS",
           "FINDINGS"]

#: The words that a change of carrier puts into hardware: ``carriers["words"]`` has a column for each, and
#: ``carriers["written"]`` a bit, from the lowest.
WORDS: Tuple[str, ...] = tuple(_engine.words())
#: What can be wrong with a carrier: ``carriers["findings"]`` has a bit for each, from the lowest.
FINDINGS: Tuple[str, ...] = tuple(_engine.finding_kinds())

#: One audited carrier. ``row`` is its place in :attr:`AuditResult.rows`; ``produced_hz`` and ``error_hz`` are in Hz, and not
#: a number when no carrier comes of the words; a word that was not written is 0.
CARRIER = np.dtype([
    ("channel", np.int32),
    ("direction", np.dtype("U2")),
    ("row", np.int32),
    ("carrier_khz", np.uint32),
    ("findings", np.uint32),
    ("written", np.uint32),
    ("produced_hz", np.float64),
    ("error_hz", np.float64),
    ("words", np.int64, (len(WORDS),)),
], align=True)


@dataclass(frozen=True)
class Step:
    """One line of arithmetic: ``formula`` has the numbers in it, ``unit`` and ``note`` may be empty."""

    name: str
    formula: str
    value: int
    unit: str
    note: str


@dataclass(frozen=True)
class Explanation:
    """How one carrier becomes words, and what these produce.

    ``variables`` has (name, values, meaning), ``writes`` (driver, value, result code). ``produced_hz`` and ``error_hz`` are
    None when no carrier comes of the words. ``disagreements`` are words in which the steps and the library differ, and
    ``forbidden`` is why the board forbids the carrier, or empty.
    """

    channel: int
    direction: str
    carrier_khz: int
    variables: Tuple[Tuple[str, Tuple[int, ...], str], ...]
    steps: Tuple[Step, ...]
    writes: Tuple[Tuple[str, int, int], ...]
    complaints: Tuple[str, ...]
    production: Tuple[Step, ...]
    produced_hz: Optional[int]
    error_hz: Optional[int]
    why_off: str
    assumed_degrees: Optional[int]
    disagreements: Tuple[str, ...]
    forbidden: str
    is_good: bool

    def __str__(self) -> str:
        lines = [f"{self.direction} {self.channel}, {self.carrier_khz} kHz"]
        lines += [f"  {step.name}: {step.formula} = {step.value} {step.unit}".rstrip() for step in self.steps]
        lines += [f"  {driver} = {value}" for driver, value, _ in self.writes]
        return "\n".join(lines)


def explain(board: BoardLike, direction: str, channel: Whole, carrier: Frequency) -> Explanation:
    """Tunes a channel of a radio that is booted for it, and explains what came of it.

    ``carrier`` is in kHz or a text with a unit. Raises :class:`ArgumentError` for a channel that there is none of,
    :class:`InputError` for a board with errors, :class:`RadioError` for one that does not boot and :class:`BusyError`
    while a radio is open.

    >>> explanation = explain("microwave-if-8ghz.toml", "tx", 1, "7.75 GHz")
    >>> explanation.is_good, explanation.error_hz
    (True, 0)
    """
    engine = engine_of(board)
    given: Dict[str, Any] = _engine.explain(engine, checked_direction(direction), whole("channel", channel, CHANNELS),
                                            khz("carrier", carrier))
    given["variables"] = tuple((name, tuple(values), meaning) for name, values, meaning in given["variables"])
    for name in ("steps", "production"):
        given[name] = tuple(Step(*step) for step in given[name])
    for name in ("writes", "complaints", "disagreements"):
        given[name] = tuple(given[name])
    return Explanation(**given)


@dataclass(frozen=True)
class FindingGroup:
    """All findings of one row that say the same. ``kind`` is one of :data:`FINDINGS`; ``carrier_khz`` is the worst."""

    kind: str
    count: int
    carrier_khz: int
    excess: int
    text: str


@dataclass(frozen=True)
class AuditRow:
    """The carriers of one channel, direction, raster and channel spacing, and what came of them."""

    channel: int
    direction: str
    raster: str
    channel_spacing: Optional[int]
    carriers: int
    outside: int
    worst_error_hz: Optional[int]
    worst_carrier_khz: Optional[int]
    findings: Tuple[FindingGroup, ...]


@dataclass(frozen=True, eq=False)
class AuditResult:
    """What an audit came to. ``count`` carriers were audited, of which ``outside`` are not within limits.

    ``carriers`` has the shape (count,) and the dtype :data:`CARRIER`, or is None where they were not to be kept. ``complete``
    is False for one that was cancelled, or whose hardware was lost: what was audited until then is there. ``lost_device`` is
    the device whose connection was lost, or None.
    """

    complete: bool
    rows: Tuple[AuditRow, ...]
    count: int
    outside: int
    seconds: float
    carriers: Optional[npt.NDArray[np.void]]
    lost_device: Optional[str] = None

    @property
    def is_good(self) -> bool:
        """All carriers were audited, and are within limits; no connection was lost."""
        return self.complete and self.outside == 0 and self.lost_device is None

    def __repr__(self) -> str:
        return (f"<AuditResult: {self.count} carriers in {len(self.rows)} rows, {self.outside} outside"
                f"{'' if self.complete else ', not complete'}"
                f"{'' if self.lost_device is None else f', the connection to {self.lost_device} was lost'}>")


def _row(given: Dict[str, Any]) -> AuditRow:
    groups: List[FindingGroup] = [FindingGroup(*group) for group in given.pop("findings")]
    return AuditRow(findings=tuple(groups), **given)


def audit(board: BoardLike, *, keep: bool = True, hardware: bool = False, progress: ProgressLike = None,
          cancel: CancelLike = None) -> AuditResult:
    """Tunes every carrier of every raster of a board through the real library, and looks at what it writes.

    ``keep=False`` keeps the rows only, for boards of which an array has no room: a carrier takes 104 bytes. ``progress``
    and ``cancel``: see :mod:`frequencyhandler.progress`. Other threads go on meanwhile. Ctrl-C raises
    :class:`Interrupted`, whose ``result`` has the carriers so far. ``hardware=True`` drives the real radio; a connection that
    is lost ends the audit, and what hardware refuses is a finding of its carrier.

    Raises :class:`InputError` for a board with errors, without rasters, or whose hardware cannot be taken,
    :class:`RadioError` for one that does not boot or whose hardware could not be left properly, :class:`BusyError` while a
    radio is open.

    >>> result = audit("microwave-if-8ghz.toml")
    >>> result.is_good, result.carriers.shape == (result.count,)
    (True, True)
    """
    engine = engine_of(board)
    dtype = CARRIER if flag("keep", keep) else None
    with Reporter(progress, "carriers") as reporter:
        with Ending(flag("hardware", hardware)):
            complete, rows, count, outside, seconds, carriers, lost, has_left, raised = _engine.audit(
                engine, dtype, hardware, reporter.counting, cancelling(cancel))
    result = AuditResult(complete, tuple(_row(row) for row in rows), count, outside, seconds, carriers, lost)
    finish_on_hardware(result, raised, "the audit", engine.file, has_left)
    return result
