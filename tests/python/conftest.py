"""What the tests of the package share: boards to be changed, and a word for writes."""

import os
import shutil
import signal
from pathlib import Path

import pytest

from frequencyhandler import Board

BOARDS = Path(os.environ["RADIO_BOARDS"])

# Who begins the tests in the background has Ctrl-C ignored, and the interpreter then leaves it so.
signal.signal(signal.SIGINT, signal.default_int_handler)


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


@pytest.fixture
def bench(tmp_path, board_file, monkeypatch):
    """A board on a bench, with a power amplifier that is switched off in the end."""
    monkeypatch.setenv("XDG_STATE_HOME", str(tmp_path / "state"))
    for name in ("tx", "amplifier"):
        (tmp_path / name).write_text("0\n")
    with open(board_file, "a") as file:
        file.write('"amplifier" = {}\n'
                   f'[hardware."channel.1.tx.rf.frequency"]\nwrite = "{tmp_path}/tx"\nscale = 1000\n'
                   "range = [7428000, 7582000]\n"
                   f'[hardware."amplifier"]\nwrite = "{tmp_path}/amplifier"\non_exit = 0\nrange = [0, 1]\n')
    return board_file
