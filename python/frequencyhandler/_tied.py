"""What cannot leave its process, and says so."""

from __future__ import annotations

from typing import Any, NoReturn, SupportsIndex

from .errors import ArgumentTypeError


class Tied:
    """Is about something that is there once in a process: it is neither copied nor pickled."""

    __slots__ = ()

    #: What is to be copied or pickled in its place.
    _instead = "its board, a Board or the name of the file, of which the other process makes a radio"

    def __reduce_ex__(self, protocol: SupportsIndex) -> NoReturn:
        raise ArgumentTypeError(f"{type(self).__name__}: belongs to its process and can be neither copied nor pickled, "
                                f"expected {self._instead}", self._instead)

    def __copy__(self) -> Any:
        self.__reduce_ex__(0)

    def __deepcopy__(self, memo: Any) -> Any:
        self.__reduce_ex__(0)
