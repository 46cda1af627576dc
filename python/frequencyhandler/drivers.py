"""The drivers and the variables of a radio that is up."""

from __future__ import annotations

from typing import TYPE_CHECKING, Any, Iterable, Iterator, Mapping, Sequence, Tuple, Union

from ._arguments import INT32, INT64, Whole, flag, several, text, unknown_name, whole
from ._tied import Tied
from .errors import BusyError
from .events import Outcome

if TYPE_CHECKING:
    from .radio import Radio

__all__ = ["Driver", "Drivers", "Variables"]


class Names:
    """Names in their order, and quickly found."""

    __slots__ = ("names", "known")

    def __init__(self, names: Sequence[str]) -> None:
        self.names = tuple(names)
        self.known = frozenset(names)


class Driver(Tied):
    """A driver of a radio, read and written past all handlers, as a client of the driver layer does."""

    __slots__ = ("_radio", "_name")

    def __init__(self, radio: Radio, name: str) -> None:
        self._radio = radio
        self._name = name

    @property
    def name(self) -> str:
        """Its name."""
        return self._name

    @property
    def value(self) -> int:
        """What was written or read last, in the driver's unit; asks nobody."""
        return int(self._radio._engine.driver(self._name)[0])

    @property
    def writes(self) -> int:
        """How many writes succeeded."""
        return int(self._radio._engine.driver(self._name)[1])

    @property
    def is_real(self) -> bool:
        """Real hardware stands behind it."""
        return bool(self._radio._engine.driver(self._name)[2])

    def read(self) -> int:
        """Its value, read through its record, in its unit. Raises :class:`CommandFailed` with the driver's code."""
        value = self._radio._act(["read", self._name]).value
        assert value is not None  # a read that gives none has failed
        return value

    def write(self, value: Whole, *, force: bool = False) -> Outcome:
        """Writes a value of up to 32 bits, or up to 64 to a driver that takes Hz. Raises :class:`CommandFailed` with the
        driver's code, and on hardware for a value outside its range, unless it is forced."""
        self._radio._require_open()
        words = ["write", self._name, str(whole("value", value, INT64))]
        return self._radio._act(words + ["force"] * flag("force", force))

    def __repr__(self) -> str:
        if self._radio.is_closed:
            return f"<Driver {self._name!r} of a closed radio>"
        try:
            return f"<Driver {self._name!r}: {self.value}>"
        except BusyError:
            return f"<Driver {self._name!r} of a radio in use>"


class Drivers(Tied, Mapping[str, Driver]):
    """The drivers of a radio, by name."""

    __slots__ = ("_radio", "_names")

    def __init__(self, radio: Radio, names: Names) -> None:
        self._radio = radio
        self._names = names

    def __getitem__(self, name: str) -> Driver:
        """Raises :class:`UnknownName`, a KeyError, for one that the board does not have."""
        self._radio._require_open()
        if not isinstance(name, str) or name not in self._names.known:
            raise unknown_name("driver", name, self._names.names)
        return Driver(self._radio, name)

    def __iter__(self) -> Iterator[str]:
        self._radio._require_open()
        return iter(self._names.names)

    def __len__(self) -> int:
        self._radio._require_open()
        return len(self._names.names)

    def __repr__(self) -> str:
        return f"<{len(self._names.names)} drivers of {self._radio!r}>"


class Variables(Tied, Mapping[str, Tuple[int, ...]]):
    """The variables of a radio's database, by name; each has one value or more."""

    __slots__ = ("_radio", "_names")

    def __init__(self, radio: Radio, names: Names) -> None:
        self._radio = radio
        self._names = names

    def __getitem__(self, name: str) -> Tuple[int, ...]:
        """Raises :class:`UnknownName`, a KeyError, for one that the board does not have."""
        self._radio._require_open()
        if not isinstance(name, str) or name not in self._names.known:
            raise unknown_name("variable", name, self._names.names)
        return tuple(self._radio._engine.variable(name))

    def __setitem__(self, name: str, values: Union[Whole, Iterable[Whole]]) -> None:
        self.set(name, values)

    def set(self, name: str, values: Union[Whole, Iterable[Whole]]) -> Outcome:
        """Changes a variable; fewer values than it has places leave the others. The outcome's note says which phase takes
        it over, if one has to. Raises :class:`ArgumentError` for a variable that there is none of, and for values that do not
        fit."""
        self._radio._require_open()
        items = several("values", values)
        written = ",".join(str(whole("values", value, INT32)) for value in items)
        return self._radio._act(["set", text("name", name), written])

    def __iter__(self) -> Iterator[str]:
        self._radio._require_open()
        return iter(self._names.names)

    def __len__(self) -> int:
        self._radio._require_open()
        return len(self._names.names)

    def __repr__(self) -> str:
        return f"<{len(self._names.names)} variables of {self._radio!r}>"
