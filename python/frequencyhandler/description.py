"""The board that a recording tells of, and what was done with it."""

from __future__ import annotations

from dataclasses import dataclass
from typing import Optional, Tuple

from . import _engine
from ._arguments import PathLike, path
from .board import Board

__all__ = ["Description", "describe"]


@dataclass(frozen=True)
class Description:
    """What a recording tells of a radio: ``board`` is the text of a board file, tables included, ``script`` that of a script
    which does what was done and expects what was written. The numbers are how many of each the board has, and ``unknown``
    is what the recording does not tell, in words."""

    file: str
    board: str
    script: str
    channels: int
    drivers: int
    variables: int
    tables: int
    unknown: Tuple[str, ...]

    def load(self) -> Board:
        """The board, as if it had been saved and loaded; it goes by the name of the recording. Raises :class:`InputError`
        with a line of ``board`` where that lacks what the recording does not tell."""
        content = _bytes(self.board)
        return Board(_engine.read_board(content, _bytes(self.file)), content)

    def save(self, board: PathLike, script: Optional[PathLike] = None) -> None:
        """Writes the board file, and the script if that has a name. Each is there as a whole or as it was, and neither is
        put in its place before both are written. Raises :class:`InputError` where one cannot be written,
        :class:`ArgumentError` when two of board, script and recording are one file."""
        _engine.save_description(_bytes(self.file), path("board", board), _bytes(self.board),
                                 b"" if script is None else path("script", script), _bytes(self.script))

    def __repr__(self) -> str:
        unknown = f"; not known: {', '.join(self.unknown)}" if self.unknown else ""
        return (f"<Description of {self.file!r}: {self.channels} channels, {self.drivers} drivers, {self.variables} variables, "
                f"{self.tables} tables{unknown}>")


def _bytes(content: str) -> bytes:
    return content.encode("utf-8", "surrogateescape")


def describe(recording: PathLike) -> Description:
    """Describes the board of which a recording was made. Raises :class:`InputError` for what no recorder writes, and for a
    recording that tells of no channel."""
    name = path("recording", recording)
    given = _engine.describe(name)
    given["unknown"] = tuple(given["unknown"])
    return Description(name.decode("utf-8", "surrogateescape"), **given)
