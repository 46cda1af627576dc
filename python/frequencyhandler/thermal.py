"""Temperature logs, replayed through the compensation of the transmit IQ imbalance."""

from __future__ import annotations

import os
from dataclasses import dataclass
from typing import Any, Dict, Mapping, Optional, Tuple, Union

import numpy as np
import numpy.typing as npt

from . import _engine
from ._arguments import CHANNELS, Frequency, PathLike, flag, khz, path, whole, whole_numbers, wrong, wrong_type
from .board import BoardLike, engine_of
from .errors import finish
from .progress import CancelLike, ProgressLike, Reporter, cancelling
from .verdict import Verdict, verdict

__all__ = ["read_log", "replay", "ReplayResult", "ChannelTotals", "DriverTotals", "Worst", "MOMENT", "CORRECTIONS"]

#: What is corrected: ``moments["values"]`` has a column for each, and ``moments["written"]`` a bit, from the lowest.
CORRECTIONS = ("dc_i", "dc_q", "gain", "phase", "lo_i", "lo_q")

#: What one channel did when it was told a temperature. ``seconds`` is the log's, ``degrees`` Celsius; ``values`` are what was
#: written last, 0 before the first time; the levels are in dBc, and not a number where no transmitter is described.
MOMENT = np.dtype([
    ("seconds", np.int64),
    ("channel", np.int32),
    ("degrees", np.int32),
    ("written", np.uint32),
    ("values", np.int32, (len(CORRECTIONS),)),
    ("image_without_dbc", np.float64),
    ("image_dbc", np.float64),
    ("leakage_without_dbc", np.float64),
    ("leakage_dbc", np.float64),
], align=True)

#: A log: the name of its file, or seconds and degrees Celsius as two arrays of the same length.
LogLike = Union[PathLike, Tuple[Any, Any]]
Log = Tuple[npt.NDArray[np.int64], npt.NDArray[np.int32]]


def read_log(file: PathLike) -> Log:
    """Seconds and degrees Celsius of a log, each with the shape (samples,). Raises :class:`InputError`.

    >>> seconds, degrees = read_log("logs/day-cycle.csv")
    >>> seconds.shape == degrees.shape
    True
    """
    return _engine.read_log(path("file", file))


def _log(log: LogLike) -> Log:
    if isinstance(log, (str, bytes, os.PathLike)):
        return read_log(log)
    if not isinstance(log, tuple) or len(log) != 2:
        raise wrong_type("log", log, "a path, or a tuple of two arrays: (seconds, degrees)")
    arrays = []
    for name, value, low, high in (("seconds", log[0], 0, 10**12), ("degrees", log[1], -100, 200)):
        array = whole_numbers(name, value, (1,), (low, high))
        if not array.size:
            raise wrong(f"{name}: none", "at least one")
        arrays.append(array)
    seconds, degrees = arrays
    if seconds.size != degrees.size:
        raise wrong(f"log: {seconds.size} seconds and {degrees.size} degrees", "as many of each")
    late = np.flatnonzero(np.diff(seconds.astype(np.int64)) <= 0)
    if late.size:
        before, after = (int(seconds[late[0] + place]) for place in (0, 1))
        raise wrong(f"seconds: {after} behind {before}", "each after the one before it")
    return np.ascontiguousarray(seconds, np.int64), np.ascontiguousarray(degrees, np.int32)


@dataclass(frozen=True)
class DriverTotals:
    """What was written to one driver; ``largest_step`` has (step, second, degrees), or is None before the second write."""

    driver: str
    correction: str
    writes: int
    unchanged: int
    value: Optional[int]
    largest_step: Optional[Tuple[int, int, int]]


@dataclass(frozen=True)
class Worst:
    """The highest levels of a transmitter, each as (dBc, second, degrees), with the compensation and without."""

    image_without: Tuple[float, int, int]
    image: Tuple[float, int, int]
    leakage_without: Tuple[float, int, int]
    leakage: Tuple[float, int, int]


@dataclass(frozen=True)
class ChannelTotals:
    """What came of one channel; ``carrier_khz`` is None for one that was not tuned, ``worst`` where no transmitter is
    described."""

    channel: int
    carrier_khz: Optional[int]
    drivers: Tuple[DriverTotals, ...]
    worst: Optional[Worst]


@dataclass(frozen=True, eq=False)
class ReplayResult:
    """What came of a log. ``moments`` has the dtype :data:`MOMENT`, or is None where they were not to be kept. ``complete``
    is False for a replay that was cancelled."""

    complete: bool
    samples: int
    notifications: int
    channels: Tuple[ChannelTotals, ...]
    complaints: int
    first_complaint: Optional[str]
    verdict: Verdict
    seconds: float
    moments: Optional[npt.NDArray[np.void]]

    @property
    def is_good(self) -> bool:
        """The library complained of nothing, and no limit is missed."""
        return self.complete and self.complaints == 0 and self.verdict.kind != "FAIL"

    def __repr__(self) -> str:
        return (f"<ReplayResult: {self.samples} samples, {self.notifications} notifications, "
                f"{len(self.channels)} channels, {self.verdict.kind or 'no verdict'}>")


def _channel(given: Dict[str, Any]) -> ChannelTotals:
    worst = given["worst"]
    return ChannelTotals(given["channel"], given["carrier_khz"], tuple(DriverTotals(*one) for one in given["drivers"]),
                         None if worst is None else Worst(**worst))


def replay(board: BoardLike, log: LogLike, *, carriers: Optional[Mapping[int, Frequency]] = None, keep: bool = True,
           progress: ProgressLike = None, cancel: CancelLike = None) -> ReplayResult:
    """Plays a temperature log to a radio that is booted for it, and watches the channels with IQ compensation.

    ``log`` is a path, or a tuple of two arrays: seconds, ascending, and whole degrees Celsius. ``carriers`` has a transmit carrier for
    channels that are not to have the first of their raster. ``keep=False`` keeps no moments. Ctrl-C raises
    :class:`Interrupted`, whose ``result`` has what came of it so far.

    Raises :class:`InputError`, :class:`RadioError` and :class:`BusyError` as an audit does.

    >>> replay("iq-compensation-18ghz.toml", "logs/day-cycle.csv").is_good
    True
    """
    engine = engine_of(board)
    seconds, degrees = _log(log)
    if carriers is not None and not isinstance(carriers, Mapping):
        raise wrong_type("carriers", carriers, "a mapping from channels to carriers")
    wanted = {whole("channel", channel, CHANNELS): khz("carrier", carrier)
              for channel, carrier in (carriers or {}).items()}
    dtype = MOMENT if flag("keep", keep) else None
    with Reporter(progress, "samples") as reporter:
        complete, samples, notifications, channels, complaints, first, judged, took, moments, raised = _engine.replay(
            engine, seconds, degrees, wanted, dtype, reporter.counting, cancelling(cancel))
    result = ReplayResult(complete, samples, notifications, tuple(_channel(one) for one in channels), complaints, first,
                          verdict(judged), took, moments)
    finish(result, raised, "the replay")
    return result
