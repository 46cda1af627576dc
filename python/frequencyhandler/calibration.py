"""The calibration of the LO leakage, and of what it is measured with."""

from __future__ import annotations

from typing import Any, Callable, Dict, Iterable, Optional, Sequence, Tuple

import numpy as np

from . import _engine
from ._arguments import (CHANNELS, INT64, Frequency, PathLike, Whole, flag, function, khz, path, real, several, shown, text,
                         whole, wrong, wrong_type)
from ._endings import Ending
from .board import BoardLike, engine_of
from .calibration_results import (POINT, CalibrationResult, ChannelQualification, Point, Probe, Qualification, Summary,
                                  Worst, point, qualification, result as result_of)
from .errors import finish_on_hardware
from .progress import CancelLike, Progress, ProgressLike, Reporter, cancelling

__all__ = ["calibrate", "qualify", "CalibrationResult", "Point", "Probe", "Qualification", "ChannelQualification", "Summary",
           "Worst", "POINT"]


def _pair(name: str, value: Any, one: Callable[[str, Any], int]) -> Optional[Tuple[int, int]]:
    if value is None:
        return None
    if not isinstance(value, (tuple, list)) or len(value) != 2:
        raise wrong_type(name, value, "two: the lowest and the highest")
    return one(name, value[0]), one(name, value[1])


def _number(name: str, value: Any) -> int:
    return whole(name, value, INT64)


def _numbers(name: str, value: Any) -> Optional[Tuple[int, ...]]:
    if value is None:
        return None
    if isinstance(value, np.ndarray) and value.ndim == 0 or not hasattr(value, "__iter__"):
        raise wrong_type(name, value, "whole numbers")
    numbers = tuple(_number(name, one) for one in several(name, value))
    return numbers


def _label(name: str, value: Optional[str]) -> Optional[str]:
    if value is not None and (not text(name, value) or not value.isprintable() or len(value) > 200):
        raise wrong(f"{name}: {shown(value)}", "a text of 1 to 200 characters, all of which can be printed")
    return value


def _factor(name: str, value: Any) -> Optional[float]:
    if value is None:
        return None
    return real(name, value, "a number between 0 and 1, such as 0.75")


def _optional(value: Any, name: str) -> Optional[int]:
    return None if value is None else _number(name, value)


def _note(given: Dict[str, Any]) -> str:
    if given["awaited"] is not None:
        wanted, now = given["awaited"]
        return f"waiting for {wanted} degrees" + ("" if now is None else f", now {now}")
    if given["highest_reading"] is not None:
        return f"last readings up to {given['highest_reading']}"
    return "" if given["worst_dbc"] is None else f"leakage up to {given['worst_dbc']:.2f} dBc"


def calibrate(board: BoardLike, channel: Whole, *, method: Optional[str] = None, probes: Optional[Whole] = None,
              band: Optional[Sequence[Frequency]] = None, step: Optional[Frequency] = None,
              temperatures: Optional[Iterable[Whole]] = None, i_range: Optional[Sequence[Whole]] = None,
              q_range: Optional[Sequence[Whole]] = None, shrink: Optional[float] = None, min_delta: Optional[Whole] = None,
              max_iterations: Optional[Whole] = None, settle_time: Optional[Whole] = None, detector: Optional[str] = None,
              tolerance: Optional[Whole] = None, dwell: Optional[Whole] = None, serial: Optional[str] = None,
              station: Optional[str] = None, beginning: str = "fresh", journal: Optional[PathLike] = None,
              tables: Optional[PathLike] = None, accept_edge: bool = False, accept_fail: bool = False,
              qualify: bool = True, real_time: bool = False, hardware: bool = False, force: bool = False,
              progress: ProgressLike = None, cancel: CancelLike = None,
              on_point: Optional[Callable[[Point], Any]] = None) -> CalibrationResult:
    """Calibrates the LO leakage of a channel over its band and temperatures, and stores the tables.

    What is not given is as the board says, and then as ``radioctl calibrate`` has it: ``method`` "fit" or "search",
    ``probes`` of a fit, ``band`` and ``step`` in kHz or as texts, ``temperatures`` in degrees Celsius, ``i_range`` and
    ``q_range`` in units of the drivers, ``settle_time`` in ms, ``dwell`` in seconds. ``beginning`` is "fresh", "resume",
    "restart" or "offline", which goes through ``journal`` again and measures nothing. ``tables`` is where they go,
    otherwise to the file from which the board takes them, which is replaced; a :class:`Board` that was loaded before keeps
    those that it had. ``hardware=True`` calibrates the real radio; nobody is asked for
    anything, so temperatures need a chamber or a sensor.

    ``on_point`` is called with every :class:`Point`. ``progress`` and ``cancel``: see :mod:`frequencyhandler.progress`.
    Ctrl-C raises :class:`Interrupted`; as every probe is in the journal, ``beginning="resume"`` goes on.

    Raises :class:`ArgumentError`, :class:`InputError` (:class:`ChoiceError` when something has to be said and nobody does, or
    a journal is in the way), :class:`RadioError`, also when hardware could not be left properly, and :class:`BusyError`.
    """
    engine = engine_of(board)
    order: Dict[str, Any] = {
        "channel": whole("channel", channel, CHANNELS),
        "method": None if method is None else text("method", method, ("fit", "search")),
        "probes": _optional(probes, "probes"),
        "band": _pair("band", band, khz),
        "step": None if step is None else khz("step", step),
        "temperatures": _numbers("temperatures", temperatures),
        "i_range": _pair("i_range", i_range, _number),
        "q_range": _pair("q_range", q_range, _number),
        "shrink": _factor("shrink", shrink),
        "min_delta": _optional(min_delta, "min_delta"),
        "max_iterations": _optional(max_iterations, "max_iterations"),
        "settle_time": _optional(settle_time, "settle_time"),
        "detector": None if detector is None else text("detector", detector, ("low", "high")),
        "tolerance": _optional(tolerance, "tolerance"),
        "dwell": _optional(dwell, "dwell"),
        "serial": _label("serial", serial),
        "station": _label("station", station),
        "beginning": text("beginning", beginning, ("fresh", "resume", "restart", "offline")),
        "journal": None if journal is None else path("journal", journal),
        "tables": None if tables is None else path("tables", tables),
    }
    flags = {"accept_edge": accept_edge, "accept_fail": accept_fail, "qualify": qualify, "real_time": real_time,
             "hardware": hardware, "force": force}
    order.update({name: flag(name, value) for name, value in flags.items()})
    tell_point = function("on_point", on_point)
    with Reporter(progress, "points") as reporter:
        def tell(given: Dict[str, Any]) -> None:
            reporter.tell(Progress(given["done"], given["total"], given["unit"], _note(given)))

        listeners = {
            "progress": None if reporter.counting is None else tell,
            "cancel": cancelling(cancel),
            "on_point": None if tell_point is None else lambda given: tell_point(point(given)),
        }
        with Ending(hardware):
            given, has_left, put_away, reservation, raised = _engine.calibrate(engine, order, listeners)
    result = result_of(given, put_away, reservation)
    finish_on_hardware(result, raised, "the calibration", engine.file, has_left)
    return result


def qualify(board: BoardLike, channel: Whole, *, settle_time: Optional[Whole] = None, detector: Optional[str] = None,
            real_time: bool = False, hardware: bool = False, force: bool = False, progress: ProgressLike = None,
            cancel: CancelLike = None) -> ChannelQualification:
    """Measures how fast the detector of a channel settles, how noisy it is, and whether it follows the corrections.

    ``settle_time`` in ms is tried whether it does, ``detector`` is "low" or "high". ``progress`` and ``cancel``: see
    :mod:`frequencyhandler.progress`. Raises as :func:`calibrate`; Ctrl-C raises :class:`Interrupted`.

    >>> qualify("lo-leakage-18ghz.toml", 1).result.is_good
    True
    """
    engine = engine_of(board)
    order: Dict[str, Any] = {
        "channel": whole("channel", channel, CHANNELS),
        "settle_time": _optional(settle_time, "settle_time"),
        "detector": None if detector is None else text("detector", detector, ("low", "high")),
        "real_time": flag("real_time", real_time),
        "hardware": flag("hardware", hardware),
        "force": flag("force", force),
    }
    with Reporter(progress, "readings") as reporter:
        with Ending(hardware):
            carrier, temperature, name, given, has_left, raised = _engine.qualify(engine, order, reporter.counting,
                                                                                  cancelling(cancel))
    result = ChannelQualification(carrier, temperature, name, qualification(given))
    finish_on_hardware(result, raised, "the qualification", engine.file, has_left)
    return result
