"""Radio units described, booted, driven, audited and calibrated from Python.

The engines are those of ``radioctl``; units are in the names (``_khz``, ``_hz``, ``_dbc``, ``_ms``), temperatures are degrees
Celsius, and arrays are numpy's. A first try::

    from frequencyhandler import Board, Radio

    board = Board.load("rf-module-7ghz.toml")
    with Radio(board) as radio:
        print(radio.tune("tx", 1, "7.442 GHz"))
"""

from __future__ import annotations

from ._loading import require_main_interpreter, require_own_platform

require_main_interpreter()
require_own_platform()

from . import _engine, calibration, errors, events, plan, recordings, tables, thermal
from .board import Board, Channel, Limits, Raster, Table
from .calibration import calibrate, qualify
from .drivers import Driver
from .errors import (ArgumentError, ArgumentTypeError, BusyError, ChoiceError, ClosedError, CommandFailed, Error,
                     ExpectationFailed, InputError, Interrupted, RadioError, TimedOut, UnknownName)
from .faults import Fault
from .progress import Progress
from .radio import Radio
from .verdict import Finding, Verdict

__version__ = _engine.version

__all__ = [
    "Board", "Channel", "Limits", "Raster", "Table", "Radio", "Driver", "Fault", "Finding", "Verdict", "Progress",
    "calibrate", "qualify", "calibration", "errors", "events", "plan", "recordings", "tables", "thermal",
    "Error", "ArgumentError", "ArgumentTypeError", "UnknownName", "InputError", "ChoiceError", "RadioError", "CommandFailed",
    "ClosedError", "BusyError", "TimedOut", "ExpectationFailed", "Interrupted",
]
