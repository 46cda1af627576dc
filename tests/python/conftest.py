"""What the tests of the package share: boards to be changed, and a word for writes."""

import os
import shutil
from pathlib import Path

import pytest

from frequencyhandler import Board

BOARDS = Path(os.environ["RADIO_BOARDS"])


@pytest.fixture
def boards(tmp_path):
    """A folder with all boards, which a test may change."""
    folder = tmp_path / "boards"
    shutil.copytree(BOARDS, folder)
    return folder


@pytest.fixture
def board_file(boards):
    """The board of most tests: two channels, whose drivers take kHz."""
    return boards / "rf-module-7ghz.toml"


@pytest.fixture
def leaking(boards):
    """A board whose LO leakage is modelled."""
    return Board.load(boards / "lo-leakage-18ghz.toml")
