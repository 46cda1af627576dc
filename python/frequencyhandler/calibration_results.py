"""What comes of a calibration."""

from __future__ import annotations

from dataclasses import dataclass
from typing import Any, Dict, Optional, Tuple

import numpy as np
import numpy.typing as npt

from .verdict import Verdict, verdict

__all__ = ["CalibrationResult", "ChannelQualification", "Point", "Probe", "Qualification", "Summary", "Worst", "POINT"]

#: A point in :attr:`CalibrationResult.array`: carriers in kHz, degrees Celsius, corrections in units of their drivers, levels
#: in dBc or not a number where nobody knows them.
POINT = np.dtype([
    ("carrier_khz", np.uint32),
    ("temperature", np.int32),
    ("i", np.int32),
    ("q", np.int32),
    ("before_dbc", np.float64),
    ("after_dbc", np.float64),
    ("is_good", np.bool_),
])


@dataclass(frozen=True)
class Probe:
    """Corrections that were set, and what the detector then read; None when nothing was read."""

    i: int
    q: int
    reading: Optional[int]


@dataclass(frozen=True)
class Point:
    """One carrier at one temperature (degrees Celsius). ``state`` is "good", "missed" (the board's limits), "edge" (of where
    corrections are searched) or "failed"; ``remark`` is what there is to know about it. Levels are in dBc."""

    carrier_khz: int
    temperature: int
    state: str
    remark: str
    i: int
    q: int
    max_delta: int
    iterations: int
    before_dbc: Optional[float]
    after_dbc: Optional[float]
    first_reading: Optional[int]
    last_reading: Optional[int]
    analysed_dbc: Optional[float]
    improvement_db: Optional[float]
    probes: Tuple[Probe, ...]


def point(given: Dict[str, Any]) -> Point:
    given["probes"] = tuple(Probe(*probe) for probe in given["probes"])
    return Point(**given)


@dataclass(frozen=True)
class Qualification:
    """What a measuring chain is good for. ``settle_time_ms`` is from a correction to its reading, ``settled_ms`` when it showed
    a step; ``noise`` is in units of the reading, ``slope`` in units for each dB. ``refusal`` says why nothing can be measured
    with it, or is None."""

    settle_time_ms: int
    readings: int
    settled_ms: Optional[float]
    noise: float
    slope: Optional[float]
    taken: int
    warnings: Tuple[str, ...]
    refusal: Optional[str]
    interrupted: bool
    is_good: bool


def qualification(given: Dict[str, Any]) -> Qualification:
    given["warnings"] = tuple(given["warnings"])
    return Qualification(**given)


@dataclass(frozen=True)
class Worst:
    """The highest level, in dBc or as a reading, and where it is."""

    level: float
    carrier_khz: int
    temperature: int


@dataclass(frozen=True)
class Summary:
    """The worst levels of a calibration: without corrections, with those found, as anybody saw them, anywhere between the
    points, where a fit tried its tables, and what it claims of them; of hardware the readings. And points by their state."""

    before: Optional[Worst]
    after: Optional[Worst]
    seen: Optional[Worst]
    between: Optional[Worst]
    tried: Optional[Worst]
    claim: Optional[Worst]
    first_reading: Optional[Worst]
    last_reading: Optional[Worst]
    good: int
    missed: int
    edge: int
    failed: int


def _summary(given: Dict[str, Any]) -> Summary:
    fields: Dict[str, Any] = {name: Worst(*value) if isinstance(value, tuple) else value for name, value in given.items()}
    return Summary(**fields)


@dataclass(frozen=True, eq=False)
class CalibrationResult:
    """What a calibration came to.

    ``complete`` says that all points were calibrated; ``trouble`` and ``refusal`` why not, if something went wrong, and
    ``way_on`` how to go on ("resume", "room", "measure", "put away"). ``tables`` is the file that was stored, or None, and
    ``backup`` what the old one is called now. Every probe is in the ``journal``, also of a calibration that was ended:
    ``beginning="resume"`` goes on from there. ``reservation`` is what the board says against a calibration that was done all
    the same, in a simulation or forced, or None.

    ``is_good`` says that nothing went wrong, all points have corrections, tables that were asked for could be made of them,
    and no limit of the board is missed.
    """

    complete: bool
    trouble: Optional[str]
    refusal: Optional[str]
    way_on: Optional[str]
    serial: str
    date: str
    channel: int
    method: str
    points: Tuple[Point, ...]
    tries: Tuple[Point, ...]
    nodes: Tuple[Point, ...]
    claim_dbc: Optional[float]
    qualification: Optional[Qualification]
    summary: Summary
    verdict: Verdict
    wanted: int
    known_probes: int
    new_probes: int
    qualifying_readings: int
    seconds: float
    tables: Optional[str]
    wanted_tables: Optional[str]
    backup: Optional[str]
    journal: Optional[str]
    held_back_by_edge: bool
    held_back_by_fail: bool
    unchanged: bool
    is_good: bool
    journal_backup: Optional[str]
    reservation: Optional[str]

    @property
    def array(self) -> npt.NDArray[np.void]:
        """The points as an array with the shape (points,) and the dtype :data:`POINT`."""
        nan = float("nan")
        return np.array([(point.carrier_khz, point.temperature, point.i, point.q,
                          nan if point.before_dbc is None else point.before_dbc,
                          nan if point.after_dbc is None else point.after_dbc, point.state == "good")
                         for point in self.points], dtype=POINT)

    def __repr__(self) -> str:
        end = "" if self.complete else f", not complete{': ' + self.trouble if self.trouble else ''}"
        return (f"<CalibrationResult: channel {self.channel}, {len(self.points)} points, "
                f"{self.verdict.kind or 'no verdict'}{end}>")


def result(given: Dict[str, Any], journal_backup: Optional[str], reservation: Optional[str]) -> CalibrationResult:
    """What a calibration came to, of what the engine gives."""
    for name in ("points", "tries", "nodes"):
        given[name] = tuple(map(point, given[name]))
    if given["qualification"] is not None:
        given["qualification"] = qualification(given["qualification"])
    given["summary"] = _summary(given["summary"])
    given["verdict"] = verdict(given["verdict"])
    return CalibrationResult(journal_backup=journal_backup, reservation=reservation, **given)


@dataclass(frozen=True)
class ChannelQualification:
    """Where a chain was qualified, by which driver, and what came of it."""

    carrier_khz: int
    temperature: int
    detector: str
    result: Qualification
