"""Tables of the LO cancellation: what is wrong with them, what a new calibration moved, where a value comes from."""

from __future__ import annotations

import os
from dataclasses import dataclass
from typing import Any, Dict, Optional, Tuple, Union

import numpy as np
import numpy.typing as npt

from . import _engine
from ._arguments import CHANNELS, Frequency, PathLike, Whole, khz, path, whole, wrong_type
from .board import Board, BoardLike, engine_of
from .verdict import Finding, findings

__all__ = ["lint", "diff", "why", "ChannelDifference", "Difference", "BranchReason", "Reason", "NODE"]

#: A board, or the name of a board file or of a CSV file of tables.
TablesLike = Union[Board, PathLike]

#: One node of two pairs of tables: corrections in units of their drivers, modelled levels in dBc, not a number without a
#: model.
NODE = np.dtype([
    ("carrier_khz", np.int32),
    ("temperature", np.int32),
    ("i_before", np.int32),
    ("q_before", np.int32),
    ("i_after", np.int32),
    ("q_after", np.int32),
    ("dbc_before", np.float64),
    ("dbc_after", np.float64),
])


def _origin(name: str, tables: TablesLike) -> Union[_engine.Board, bytes]:
    if isinstance(tables, Board):
        return tables._engine
    if not isinstance(tables, (str, bytes, os.PathLike)):
        raise wrong_type(name, tables, "a Board or the path of a file")
    return path(name, tables)


def lint(tables: TablesLike) -> Tuple[Finding, ...]:
    """Looks for mistakes in the LO-cancellation tables of a board or a CSV file; empty when there are none. Raises
    :class:`InputError` for what has no such tables.

    >>> lint("lo-leakage-18ghz.toml")
    ()
    """
    return findings(_engine.lint(_origin("tables", tables)))


@dataclass(frozen=True, eq=False)
class ChannelDifference:
    """What became of one channel; ``channel`` is None when neither file says which it is. ``nodes`` has the dtype
    :data:`NODE`."""

    channel: Optional[int]
    axes_differ: bool
    nodes: npt.NDArray[np.void]

    @property
    def moved(self) -> int:
        """At how many nodes the corrections differ."""
        nodes = self.nodes
        return int(np.count_nonzero((nodes["i_before"] != nodes["i_after"]) | (nodes["q_before"] != nodes["q_after"])))

    def __repr__(self) -> str:
        return f"<ChannelDifference: channel {self.channel}, {self.moved} of {self.nodes.size} nodes moved>"


@dataclass(frozen=True, eq=False)
class Difference:
    """What became of tables: the channels that both have, and those of one alone. As a condition it is true when anything
    differs."""

    channels: Tuple[ChannelDifference, ...]
    only_before: Tuple[int, ...]
    only_after: Tuple[int, ...]

    def __bool__(self) -> bool:
        return bool(self.only_before or self.only_after or any(one.moved or one.axes_differ for one in self.channels))


def diff(before: TablesLike, after: TablesLike, *, model: Optional[TablesLike] = None,
         channel: Optional[int] = None) -> Difference:
    """Compares tables, of all channels that both have or of one. Levels are modelled as ``model`` describes it, otherwise as
    either of the two does, if it is a board. Raises :class:`InputError` when there is nothing to compare, and
    :class:`ChoiceError` when a channel has to be chosen.

    >>> bool(diff("lo-leakage-18ghz.toml", "lo-leakage-18ghz.toml"))
    False
    """
    number = None if channel is None else whole("channel", channel, CHANNELS)
    given = _engine.diff(_origin("before", before), _origin("after", after),
                         None if model is None else _origin("model", model), number)
    channels = tuple(ChannelDifference(which, axes, np.array(nodes, dtype=NODE)) for which, axes, nodes in given[0])
    return Difference(channels, tuple(given[1]), tuple(given[2]))


@dataclass(frozen=True)
class BranchReason:
    """How the correction of one branch, "I" or "Q", came about. ``nodes`` has (axis 1, axis 2, value, weight) for each node
    that takes part, the weights adding up to 1; ``exact`` is the value as a mixed number, or None where the table gives
    none, for the reason in ``why_no_value``. ``written`` is what was written to ``driver``, or None."""

    branch: str
    table: str
    file: Optional[str]
    column: Optional[str]
    why_no_value: str
    computed: int
    driver: str
    written: Optional[int]
    code: int
    exact: Optional[str]
    is_clamped: bool
    nodes: Tuple[Tuple[int, int, int, float], ...]


@dataclass(frozen=True)
class Reason:
    """How one carrier at one temperature comes to its corrections. Levels are modelled, in dBc, or None without a model;
    ``level_without_dbc`` is with both corrections 0. ``why_none`` says why there are none, or is empty."""

    channel: int
    carrier_khz: int
    temperature: int
    why_none: str
    branches: Tuple[BranchReason, ...]
    level_dbc: Optional[float]
    level_without_dbc: Optional[float]
    complaints: Tuple[str, ...]
    disagreements: Tuple[str, ...]


def why(board: BoardLike, channel: Whole, carrier: Frequency, temperature: Whole) -> Reason:
    """Sets a temperature, in degrees Celsius, and a transmit carrier on a radio that is booted for it, and explains the
    corrections. Raises as :func:`frequencyhandler.plan.explain`.

    >>> reason = why("lo-leakage-18ghz.toml", 1, "17.7275 GHz", 25)
    >>> [branch.computed == branch.written for branch in reason.branches]
    [True, True]
    """
    given: Dict[str, Any] = _engine.why(engine_of(board), whole("channel", channel, CHANNELS), khz("carrier", carrier),
                                        whole("temperature", temperature, (-100, 200)))
    branches = []
    for branch in given["branches"]:
        branch["nodes"] = tuple(branch["nodes"])
        branches.append(BranchReason(**branch))
    given["branches"] = tuple(branches)
    for name in ("complaints", "disagreements"):
        given[name] = tuple(given[name])
    return Reason(**given)
