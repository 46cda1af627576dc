"""Fixtures for acceptance tests of a radio.

They are there with ``pytest -p frequencyhandler.pytest_plugin``, or ``pytest_plugins = ["frequencyhandler.pytest_plugin"]``
in a conftest.py; installed from a wheel or a package, they are there without either. Which board a test is about, a fixture
``board_file`` says that the tests have themselves, or ``--radio-board FILE``; ``--radio-hardware`` runs them on the real radio.
"""

from __future__ import annotations

from typing import Any, Iterator, List, Optional, Tuple

import pytest

from ._arguments import Whole
from .board import Board
from .events import FailedWrite, Write
from .radio import Radio


def pytest_addoption(parser: pytest.Parser) -> None:
    """Adds --radio-board and --radio-hardware."""
    group = parser.getgroup("frequencyhandler")
    group.addoption("--radio-board", metavar="FILE", help="the board that tests are about")
    group.addoption("--radio-hardware", action="store_true", help="drive its real hardware, and skip tests that mock it")


@pytest.fixture
def board_file(request: pytest.FixtureRequest) -> str:
    """The board file: that of --radio-board, unless the tests have a fixture of this name."""
    file: Optional[str] = request.config.getoption("--radio-board")
    if file is None:
        pytest.fail("which board? Expected --radio-board FILE, or a fixture board_file", pytrace=False)
    return file


@pytest.fixture
def board(board_file: Any) -> Board:
    """The board of :func:`board_file`, to be changed before the radio boots."""
    return Board.load(board_file)


def _skip_mocks_of_real_hardware(request: pytest.FixtureRequest) -> None:
    if request.config.getoption("--radio-hardware"):
        pytest.skip("the test has hardware fail, and --radio-hardware drives the real one")


@pytest.fixture
def radio(request: pytest.FixtureRequest, board: Board) -> Iterator[Radio]:
    """A radio that is up, and closed when the test is over; with --radio-hardware the real one."""
    if "mocked_hardware" in request.fixturenames:  # before anything is driven
        _skip_mocks_of_real_hardware(request)
    with Radio(board, hardware=request.config.getoption("--radio-hardware")) as opened:
        yield opened


class MockedHardware:
    """What stands in for hardware: what is written to it, and how it fails."""

    def __init__(self, radio: Radio) -> None:
        self.radio = radio
        self._events = radio.events(Write, FailedWrite)
        self._seen: List[Any] = []

    def _all(self) -> List[Any]:
        self._seen += self._events
        return self._seen

    @property
    def writes(self) -> Tuple[Write, ...]:
        """What reached hardware since the test began, in order."""
        return tuple(item for item in self._all() if isinstance(item, Write))

    @property
    def refused(self) -> Tuple[FailedWrite, ...]:
        """What it refused."""
        return tuple(item for item in self._all() if isinstance(item, FailedWrite))

    def refuse(self, driver: str, code: Whole = 0x8001, *, times: Optional[Whole] = None) -> None:
        """From now on a driver refuses what is written to it, so many times or always. Raises :class:`ArgumentError` for a
        driver that there is none of."""
        self.radio.faults.inject("driver-write", driver, code, times=times)

    def forget(self) -> None:
        """What was written counts no more."""
        self._all()
        self._seen = []


@pytest.fixture
def mocked_hardware(request: pytest.FixtureRequest, radio: Radio) -> MockedHardware:
    """Hardware that is none, under the same :func:`radio`, which a test need not ask for: it is the ``radio`` of what it gets.
    With --radio-hardware the test is skipped, with that reason, and nothing is driven for it."""
    _skip_mocks_of_real_hardware(request)
    return MockedHardware(radio)
