"""Boards: what a radio is, as its file describes it."""

from __future__ import annotations

import os
from dataclasses import dataclass
from typing import Any, Dict, Iterator, MutableMapping, Optional, Tuple, Union

import numpy as np
import numpy.typing as npt

from . import _engine
from ._arguments import INT32, PathLike, path, shown, text, unknown_name, whole_numbers, wrong, wrong_type
from ._tied import Tied
from .errors import ArgumentTypeError
from .verdict import Finding, findings

__all__ = ["Board", "Channel", "Limits", "Raster", "Table", "Tables"]


@dataclass(frozen=True)
class Channel:
    """A radio channel. ``type`` is the word for its handlers in board files, "rf-module" for example;
    ``has_leakage`` says whether the LO leakage of its transmitter is modelled, so that it can be calibrated here."""

    number: int
    type: str
    iq_compensation: bool
    has_leakage: bool
    file: Optional[str]
    line: Optional[int]


@dataclass(frozen=True)
class Limits:
    """What the hardware of a board can do, and what it is held against; None: nothing is stated."""

    if_pll_khz: Optional[Tuple[int, int]]
    rf_pll_khz: Optional[Tuple[int, int]]
    #: By how much a carrier may be off, in Hz.
    carrier_error_hz: Optional[int]
    #: From and to, in degrees Celsius.
    temperature: Optional[Tuple[int, int]]
    leakage_dbc: Optional[float]
    leakage_at_nodes_dbc: Optional[float]
    leakage_improvement_db: Optional[float]
    image_dbc: Optional[float]
    carrier_leakage_dbc: Optional[float]


@dataclass(frozen=True)
class Raster:
    """Carriers for which channels are made. ``rows`` has (direction, first, step, count), in kHz."""

    name: str
    channels: Tuple[int, ...]
    rows: Tuple[Tuple[str, int, int, int], ...]
    channel_spacings: Tuple[int, ...]


@dataclass(frozen=True, eq=False, repr=False)
class Table:
    """A calibration table, with arrays of int32.

    ``axis1`` has the shape (n,). With one axis ``axis2`` is None and ``values`` has the shape (n,); with two, ``axis2``
    has the shape (m,) and ``values`` (n, m). Tables of the LO cancellation have carriers in kHz on the first axis and
    degrees Celsius on the second; their values are in units of the drivers. ``file`` and ``column`` say which CSV file it
    was read from, if from one and nobody has replaced it since. Those of a board are read-only: what is to be changed is a
    copy, assigned to ``board.tables[name]``.
    """

    axis1: npt.NDArray[np.int32]
    axis2: Optional[npt.NDArray[np.int32]]
    values: npt.NDArray[np.int32]
    file: Optional[str] = None
    column: Optional[str] = None

    @property
    def is_there(self) -> bool:
        """False for a table that is to come from a file that is not there: nothing has been calibrated yet."""
        return self.axis1.size > 0

    def __repr__(self) -> str:
        origin = f" of {self.file!r}" if self.file else ""
        if not self.is_there:
            return f"<Table, nothing calibrated yet{origin}>"
        return (f"<Table of {' x '.join(map(str, self.values.shape))} values from {self.values.min()} to {self.values.max()}, "
                f"axis 1 from {self.axis1[0]} to {self.axis1[-1]}"
                f"{'' if self.axis2 is None else f', axis 2 from {self.axis2[0]} to {self.axis2[-1]}'}{origin}>")


def _whole_numbers(name: str, value: Any, dimensions: Tuple[int, ...]) -> npt.NDArray[np.int32]:
    """``value`` as an array of int32, with nothing lost."""
    return np.ascontiguousarray(whole_numbers(name, value, dimensions, INT32), dtype=np.int32)


class Tables(Tied, MutableMapping[str, Table]):
    """The calibration tables of a board, by name, read and replaced in memory; the files stay as they are.

    A table is assigned as a :class:`Table` or as (axis 1, axis 2, values), axis 2 being None for one axis. What was
    booted of the board before has the tables that were there then. :meth:`add` gives the board a new one; tables cannot be
    taken away, which raises :class:`ArgumentTypeError`.
    """

    __slots__ = ("_engine",)
    _instead = "the board, or dict(board.tables)"

    def __init__(self, engine: _engine.Board) -> None:
        self._engine = engine

    def __getitem__(self, name: str) -> Table:
        """Raises :class:`UnknownName`, a KeyError, for one that the board does not have."""
        if not isinstance(name, str) or name not in self:
            raise unknown_name("table", name, self._engine.tables())
        axis1, axis2, values, file, column, _ = self._engine.table(name)
        for array in (axis1, axis2, values):  # copies, in which a value would be lost
            if array is not None:
                array.flags.writeable = False
        return Table(axis1, axis2, values, file, column)

    def __setitem__(self, name: str, table: Union[Table, Tuple[Any, Any, Any]]) -> None:
        """Puts a table in the place of the one with this name. Raises :class:`UnknownName`, a KeyError, for one that the
        board does not have: see :meth:`add`."""
        if not isinstance(name, str) or name not in self:
            raise unknown_name("table", name, self._engine.tables())
        self._set(name, table)

    def add(self, name: str, table: Union[Table, Tuple[Any, Any, Any]]) -> None:
        """Gives the board a table that it does not have yet. Raises :class:`ArgumentError` for a name that it has, and for
        one that is empty or cannot be printed."""
        if not text("name", name) or not name.isprintable():
            raise wrong(f"name: {shown(name)}", "a text that can be printed")
        if name in self:
            raise wrong(f"name: the board has {shown(name)}", "another name, or tables[name] = ...")
        self._set(name, table)

    def _set(self, name: str, table: Union[Table, Tuple[Any, Any, Any]]) -> None:
        if isinstance(table, Table):
            parts: Tuple[Any, Any, Any] = (table.axis1, table.axis2, table.values)
        elif isinstance(table, tuple) and len(table) == 3:
            parts = table
        else:
            raise wrong_type("table", table, "a Table, or (axis 1, axis 2 or None, values)")
        axis1 = _whole_numbers("axis1", parts[0], (1,))
        axis2 = _whole_numbers("axis2", () if parts[1] is None else parts[1], (1,)) if parts[1] is not None else \
            np.empty(0, np.int32)
        values = _whole_numbers("values", parts[2], (1,) if parts[1] is None else (2,))
        shape = (axis1.size,) if parts[1] is None else (axis1.size, axis2.size)
        if values.shape != shape:
            raise wrong(f"values: an array with the shape {values.shape}", f"{shape}, one value for each node")
        if not values.size:
            raise wrong("values: no nodes", "at least one")
        self._engine.set_table(name, axis1, axis2, values)

    def __delitem__(self, name: str) -> None:
        raise ArgumentTypeError(f"{shown(name)}: a table cannot be taken away, expected another one in its place",
                                "another one in its place")

    def __iter__(self) -> Iterator[str]:
        return iter(self._engine.tables())

    def __len__(self) -> int:
        return len(self._engine.tables())

    def __contains__(self, name: object) -> bool:
        return isinstance(name, str) and name in self._engine.tables()

    def __repr__(self) -> str:
        return f"<{len(self)} tables of {self._engine.file}>"


class Board:
    """A radio as its board file describes it. It is read by :meth:`load`; nothing boots.

    It crosses to other processes, which calibrate batches: pickled, it is the name of its file, which the other process
    reads again, and the tables as they are here.

    >>> board = Board.load("rf-module-7ghz.toml")
    >>> board.name
    'Two-channel RF-module radio, 7 GHz'
    >>> [channel.number for channel in board.channels]
    [1, 2]
    >>> board.check()
    ()
    >>> board
    <Board 'rf-module-7ghz.toml': 2 channels, 4 drivers, 0 tables>
    """

    __slots__ = ("_engine", "_text")

    def __init__(self, engine: Optional[_engine.Board] = None, text: Optional[bytes] = None) -> None:
        if not isinstance(engine, _engine.Board):
            raise wrong_type("Board", engine, "Board.load(path)")
        self._engine = engine
        self._text = text  # where that is not what is in its file

    @classmethod
    def load(cls, file: PathLike) -> Board:
        """Reads a board file. Raises :class:`InputError` with file, line and what was expected there.

        >>> Board.load("no-such-board.toml")
        Traceback (most recent call last):
        frequencyhandler.errors.InputError: no-such-board.toml: cannot be read: No such file or directory
        """
        return cls(_engine.Board.load(path("file", file)))

    def copy(self) -> Board:
        """Another board that has the same, and whose tables can be changed apart from this one's."""
        return Board(self._engine.copy(), self._text)

    def __copy__(self) -> Board:
        return self.copy()

    def __deepcopy__(self, memo: Any) -> Board:
        return self.copy()

    def __reduce__(self) -> Tuple[Any, Tuple[Any, ...]]:
        tables = {name: (table.axis1, table.axis2, table.values) for name, table in self.tables.items() if table.is_there}
        return _again, (os.fsencode(self.file), self._text, tables)

    def check(self) -> Tuple[Finding, ...]:
        """Holds the board against what its channels will ask the platform for; empty when everything fits."""
        return findings(self._engine.check())

    @property
    def file(self) -> str:
        """The name of its file, as it was given."""
        return self._engine.file

    @property
    def name(self) -> str:
        """What the board is called."""
        return self._engine.name

    @property
    def serial(self) -> str:
        """Of this one radio; empty when the board does not say."""
        return self._engine.serial

    @property
    def description(self) -> str:
        """What the file says about it."""
        return self._engine.description

    @property
    def channels(self) -> Tuple[Channel, ...]:
        """In the order of the file."""
        return tuple(Channel(number, kind, iq, leakage, *place)
                     for number, kind, iq, leakage, place in self._engine.channels())

    @property
    def limits(self) -> Limits:
        """What is stated under [limits]."""
        return Limits(**self._engine.limits())

    @property
    def rasters(self) -> Tuple[Raster, ...]:
        """The carriers that its channels are made for."""
        return tuple(Raster(name, tuple(channels), tuple(rows), tuple(spacings))
                     for name, channels, rows, spacings in self._engine.rasters())

    @property
    def tables(self) -> Tables:
        """Its calibration tables, as arrays."""
        return Tables(self._engine)

    @property
    def drivers(self) -> Tuple[str, ...]:
        """The names of its drivers."""
        return tuple(self._engine.drivers())

    @property
    def variables(self) -> Tuple[str, ...]:
        """The names of its variables."""
        return tuple(self._engine.variables())

    @property
    def has_hardware(self) -> bool:
        """The file says what of it is real hardware, on a bench."""
        return self._engine.has_hardware

    def __repr__(self) -> str:
        return (f"<Board {self.file!r}: {len(self.channels)} channels, {len(self.drivers)} drivers, "
                f"{len(self.tables)} tables>")


def _again(file: bytes, text: Optional[bytes], tables: Dict[str, Tuple[Any, Any, Any]]) -> Board:
    """A board that was pickled."""
    board = Board(_engine.Board.load(file) if text is None else _engine.read_board(text, file), text)
    for name, table in tables.items():
        board.tables._set(name, table)
    return board


#: A board, or the name of its file.
BoardLike = Union[Board, PathLike]


def engine_of(board: BoardLike) -> _engine.Board:
    """The engine's board of a :data:`BoardLike`."""
    if isinstance(board, Board):
        return board._engine
    if not isinstance(board, (str, bytes, os.PathLike)):
        raise wrong_type("board", board, "a Board or the path of its file")
    return Board.load(board)._engine
