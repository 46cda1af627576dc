"""Wrong arguments, each refused with words, by an exception of the kind that it should be, and nothing done."""

import itertools
import os
import shutil
from pathlib import Path

import numpy as np
import pytest

import frequencyhandler as fh
from frequencyhandler import ArgumentError, ArgumentTypeError, InputError, plan, recordings, tables, thermal

OPEN = []
KEPT = Path(__file__).parents[1] / "recording" / "kept" / "rf-module-7ghz.rec"
FREQUENCY = "channel.1.tx.rf.frequency"


class Hostile:
    """Raises whatever is asked of it."""

    def __repr__(self):
        raise RuntimeError("no words")

    def __str__(self):
        raise RuntimeError("no words")


class RaisingIndex:
    """A number that raises when it is asked for."""

    def __index__(self):
        raise RuntimeError("no number")


# What no number, text, path or flag is, and in which way.
NO_NUMBERS = [None, "one", 1.0, True, [], {}, b"1", object(), Hostile(), float("nan"), np.float64(1), np.True_,
              np.array([1, 2]), np.array(1), RaisingIndex()]
NO_TEXTS = [None, 1, 1.5, b"tx", [], object(), Hostile()]
NO_FLAGS = [None, 0, 1, "yes", [], 1.0]
NO_PATHS = [None, 1, 1.5, [], object(), Hostile()]
BAD_PATHS = ["", "a\0b", b"", b"\0"]
NO_FUNCTIONS = [1, "f", [], object()]
OUT_OF_RANGE = [-1, 2**31, 2**32, 2**63, 2**64, -(2**63) - 1, 10**100]


def table(what, kind, *values):
    return [(what, value, kind) for value in values]


ON_A_RADIO = list(itertools.chain(
    table(lambda radio, value: radio.tune(value, 1, 7442000), ArgumentTypeError, *NO_TEXTS),
    table(lambda radio, value: radio.tune(value, 1, 7442000), ArgumentError, "", "TX", "up", "tx ", "t\0x", "\ud800"),
    table(lambda radio, value: radio.tune("tx", value, 7442000), ArgumentTypeError, *NO_NUMBERS),
    table(lambda radio, value: radio.tune("tx", value, 7442000), ArgumentError, 0, 3, *OUT_OF_RANGE),
    table(lambda radio, value: radio.tune("tx", 1, value), ArgumentTypeError, None, 7.442, [], {}, b"7442000", True,
          object(), Hostile(), np.float64(7442000)),
    table(lambda radio, value: radio.tune("tx", 1, value), ArgumentError, -1, 2**32, 2**64, 10**100, "", " ", "7.442 THz",
          "7.4425678 GHz", "GHz", "-1", "1e6", "7,442", "9999999999", "nan", "\ud800", "7442000 kHz kHz", "0x10"),
    table(lambda radio, value: radio.tune("tx", 1, 7442000, force=value), ArgumentTypeError, *NO_FLAGS),
    table(lambda radio, value: radio.tune("tx", 1, 7442000, check=value), ArgumentTypeError, *NO_FLAGS),
    table(lambda radio, value: radio.drivers[FREQUENCY].write(value), ArgumentTypeError, *NO_NUMBERS),
    table(lambda radio, value: radio.drivers[FREQUENCY].write(value), ArgumentError, 2**63, -(2**63) - 1, 10**100),
    table(lambda radio, value: radio.drivers[value], KeyError, "no such driver", "", 1, None, b"x"),
    table(lambda radio, value: radio.variables[value], KeyError, "no such variable", "", 1, None),
    table(lambda radio, value: radio.variables.set("nothing", value), ArgumentTypeError, None, 1.5, "1", [1.5], [None],
          np.array(1.5), np.array([[1]]), RaisingIndex()),
    table(lambda radio, value: radio.variables.set("nothing", value), ArgumentError, 1, [], [2**31], [1, 2], np.array(5)),
    table(lambda radio, value: setattr(radio, "temperature", value), ArgumentTypeError, *NO_NUMBERS),
    table(lambda radio, value: setattr(radio, "temperature", value), ArgumentError, -101, 201, 2**40),
    table(lambda radio, value: radio.phase(value), ArgumentError, "", "start", 1, 2**32, -1),
    table(lambda radio, value: radio.phase(value), ArgumentTypeError, None, 1.5, [], b"init"),
    table(lambda radio, value: radio.faults.inject(value), ArgumentError, "", "driver", "write", "\ud800"),
    table(lambda radio, value: radio.faults.inject(value), ArgumentTypeError, *NO_TEXTS),
    table(lambda radio, value: radio.faults.inject("driver-write", value), ArgumentError, "no such driver"),
    table(lambda radio, value: radio.faults.inject("driver-write", code=value), ArgumentError, -1, 2**31),
    table(lambda radio, value: radio.faults.inject("driver-write", times=value), ArgumentError, -1, 0, 2**32),
    table(lambda radio, value: radio.faults.clear(value), ArgumentError, "everything"),
    table(lambda radio, value: radio.execute(value), ArgumentError, "", " ", "tune", "tune tx", "tuna", "include x", [],
          ["tune", "tx", "1"], ["expect"], "watch " + FREQUENCY, ["tune tx 1 7442000"], "expect writes x=1", "\0"),
    table(lambda radio, value: radio.execute(value), ArgumentTypeError, None, 1, b"quit", [1], {"tune": 1}),
    table(lambda radio, value: radio.wait(value), ArgumentError, -1, 3601, float("inf"), float("nan")),
    table(lambda radio, value: radio.wait(value), ArgumentTypeError, None, "1", True, []),
    table(lambda radio, value: radio.sweep("tx", 1, 7442000, 7443000, value), ArgumentError, 0, -1, "0"),
    table(lambda radio, value: radio.frequency("tx", value), ArgumentError, 0, 3, -1),
    table(lambda radio, value: radio.leakage(value), ArgumentError, 1, 9, -1),
    table(lambda radio, value: radio.on_event(value), ArgumentTypeError, None, *NO_FUNCTIONS),
    table(lambda radio, value: radio.expect.result(value), ArgumentError, "good", -1, 2**32),
    table(lambda radio, value: radio.expect.writes(value), ArgumentTypeError, None, "x", 1.5, [1], [("x",)], [("x", 1.5)]),
    table(lambda radio, value: radio.expect.writes(value), ArgumentError, -1, [("no such driver", 1)]),
    table(lambda radio, value: radio.expect.driver(value, 1), ArgumentError, "no such driver", ""),
    table(lambda radio, value: radio.expect.leakage(1, below=value), ArgumentTypeError, None, "-70", True),
    table(lambda radio, value: fh.Radio(value), ArgumentTypeError, *NO_PATHS),
))

WITHOUT_A_RADIO = list(itertools.chain(
    table(lambda board, value: fh.Board.load(value), ArgumentTypeError, *NO_PATHS),
    table(lambda board, value: fh.Board.load(value), ArgumentError, *BAD_PATHS),
    table(lambda board, value: fh.Board.load(value), InputError, "/", "/no/such/file", "/dev/null", "x" * 5000),
    table(lambda board, value: fh.Board(value), ArgumentTypeError, None, "file", 1),
    table(lambda board, value: fh.Radio(board, value), ArgumentTypeError, *NO_FLAGS),
    table(lambda board, value: fh.Radio(board, trace=value), ArgumentError, "", "loud"),
    table(lambda board, value: fh.Radio(board, trace=value), ArgumentTypeError, *NO_TEXTS),
    table(lambda board, value: plan.explain(value, "tx", 1, 1), ArgumentTypeError, *NO_PATHS),
    table(lambda board, value: plan.audit(board, progress=value), ArgumentTypeError, 1, "yes", []),
    table(lambda board, value: plan.audit(board, cancel=value), ArgumentTypeError, *NO_FUNCTIONS),
    table(lambda board, value: plan.audit(board, keep=value), ArgumentTypeError, *NO_FLAGS),
    table(lambda board, value: plan.audit(board, hardware=value), ArgumentTypeError, *NO_FLAGS),
    table(lambda board, value: tables.lint(value), ArgumentTypeError, *NO_PATHS),
    table(lambda board, value: tables.lint(value), ArgumentError, *BAD_PATHS),
    table(lambda board, value: tables.diff(value, board), ArgumentTypeError, *NO_PATHS),
    table(lambda board, value: tables.diff(board, board, channel=value), ArgumentTypeError, "1", 1.0, True),
    table(lambda board, value: tables.diff(board, board, channel=value), InputError, 9),
    table(lambda board, value: tables.why(board, 1, 17727500, value), ArgumentError, -101, 201, 2**40),
    table(lambda board, value: tables.why(board, value, 17727500, 20), ArgumentError, 9, *OUT_OF_RANGE),
    table(lambda board, value: thermal.replay(board, value), ArgumentTypeError, None, 1, [], ([0],), ([0.5], [1]),
          ("x", "y")),
    table(lambda board, value: thermal.replay(board, value), ArgumentError, ([[0]], [[1]]), ([[0], [1, 2]], [1, 2]),
          ([0], [201]), ([1, 0], [20, 20]), (np.ma.array([0, 1], mask=[0, 1]), [20, 21])),
    table(lambda board, value: thermal.replay(board, ([0], [20]), carriers=value), ArgumentTypeError, 1, [1], "x",
          {"1": 1}, {1: 1.5}),
    table(lambda board, value: thermal.replay(board, ([0], [20]), carriers=value), ArgumentError, {9: 1}, {1: -1}),
    table(lambda board, value: fh.calibrate(board, value), ArgumentTypeError, *NO_NUMBERS),
    table(lambda board, value: fh.calibrate(board, value), ArgumentError, 0, 9, -1, 2**31),
    table(lambda board, value: fh.calibrate(board, 1, method=value), ArgumentError, "", "guess"),
    table(lambda board, value: fh.calibrate(board, 1, band=value), ArgumentTypeError, 1, "18 GHz", (1,), (1.5, 2), (1, 2, 3)),
    table(lambda board, value: fh.calibrate(board, 1, band=value), ArgumentError, (0, 1), (2, 1), (1, 2**31)),
    table(lambda board, value: fh.calibrate(board, 1, temperatures=value), ArgumentError, [], [-101], [201], [1, 1]),
    table(lambda board, value: fh.calibrate(board, 1, temperatures=value), ArgumentTypeError, 20, "20", [1.5], [None],
          np.array(25), {25: 1}),
    table(lambda board, value: fh.calibrate(board, 1, i_range=value), ArgumentError, (1, 1), (2, 1), (0, 10**10)),
    table(lambda board, value: fh.calibrate(board, 1, shrink=value), ArgumentError, 0, 1, -1, float("nan")),
    table(lambda board, value: fh.calibrate(board, 1, shrink=value), ArgumentTypeError, "0.5", True, []),
    table(lambda board, value: fh.calibrate(board, 1, probes=value), ArgumentError, 0, 59, 100001, 2**64),
    table(lambda board, value: fh.calibrate(board, 1, settle_time=value), ArgumentError, -1, 60001),
    table(lambda board, value: fh.calibrate(board, 1, max_iterations=value), ArgumentError, 0, 1001),
    table(lambda board, value: fh.calibrate(board, 1, detector=value), ArgumentError, "", "middle"),
    table(lambda board, value: fh.calibrate(board, 1, beginning=value), ArgumentError, "", "now", "offline"),
    table(lambda board, value: fh.calibrate(board, 1, journal=value), ArgumentError, *BAD_PATHS),
    table(lambda board, value: fh.calibrate(board, 1, station=value), ArgumentError, "", "a\nb", "x" * 201),
    table(lambda board, value: fh.calibrate(board, 1, accept_fail=value), ArgumentTypeError, *NO_FLAGS),
    table(lambda board, value: fh.calibrate(board, 1, on_point=value), ArgumentTypeError, *NO_FUNCTIONS),
    table(lambda board, value: fh.qualify(board, value), ArgumentError, 0, 9, -1),
    table(lambda board, value: fh.qualify(board, 1, detector=value), ArgumentError, "", "middle"),
    table(lambda board, value: fh.qualify(board, 1, settle_time=value), ArgumentError, -1, 60001),
    table(lambda board, value: recordings.read(value), ArgumentTypeError, *NO_PATHS),
    table(lambda board, value: recordings.read(value), ArgumentError, *BAD_PATHS),
    table(lambda board, value: recordings.read(value), InputError, "/", "/no/such/file", "/dev/null", Path(__file__)),
    table(lambda board, value: recordings.describe(value), ArgumentTypeError, *NO_PATHS),
    table(lambda board, value: recordings.describe(value), InputError, "/", "/no/such/file", "/dev/null", Path(__file__)),
    table(lambda board, value: recordings.describe(KEPT).save(value), ArgumentTypeError, *NO_PATHS),
    table(lambda board, value: recordings.describe(KEPT).save("b", value), ArgumentError, *BAD_PATHS),
    table(lambda board, value: recordings.diff(KEPT, value), ArgumentTypeError, *NO_PATHS),
    table(lambda board, value: recordings.replay(KEPT, radioctl=value), ArgumentTypeError, *NO_PATHS),
    table(lambda board, value: recordings.replay(KEPT, radioctl=value), ArgumentError, *BAD_PATHS, "/no/such/program"),
    table(lambda board, value: recordings.diff(value, KEPT), InputError, "/no/such/file", Path(__file__)),
    table(lambda board, value: recordings.diff(KEPT, KEPT, channel=value), ArgumentTypeError, "1", 1.0, True),
    table(lambda board, value: recordings.diff(KEPT, KEPT, channel=value), ArgumentError, *OUT_OF_RANGE),
    table(lambda board, value: recordings.diff(KEPT, KEPT, driver=value), ArgumentTypeError, *NO_TEXTS),
    table(lambda board, value: recordings.diff(KEPT, KEPT, limit=value), ArgumentError, -1, 2**63, 2**64),
))


def refuses(what, subject, value, kind):
    with pytest.raises(kind) as caught:
        what(subject, value)
    if kind is KeyError:
        assert type(caught.value) is fh.UnknownName
        return
    assert type(caught.value) is kind
    message = str(caught.value)
    assert len(message) > 10 and message.isprintable()
    if kind is not InputError:
        assert "expected" in message or "unknown" in message or "no " in message, message


@pytest.fixture(scope="module")
def shared_board(tmp_path_factory):
    folder = tmp_path_factory.mktemp("boards")
    shutil.copytree(os.environ["RADIO_BOARDS"], folder, dirs_exist_ok=True)
    return fh.Board.load(folder / "lo-leakage-18ghz.toml")


@pytest.fixture
def shared_radio():
    """One for all tests that want one, as long as they follow each other."""
    if not OPEN or OPEN[0].is_closed:
        OPEN[:] = [fh.Radio(Path(os.environ["RADIO_BOARDS"]) / "rf-module-7ghz.toml")]
    return OPEN[0]


@pytest.fixture(autouse=True)
def closed_for_boards(request):
    """What boots a radio of its own is not to meet that one."""
    if OPEN and "shared_radio" not in request.fixturenames:
        OPEN.pop().close()


@pytest.mark.parametrize("what, value, kind", ON_A_RADIO)
def test_of_a_radio(shared_radio, what, value, kind):
    before = shared_radio.frequency("tx", 1), shared_radio.temperature, len(shared_radio.faults)
    refuses(what, shared_radio, value, kind)
    assert before == (shared_radio.frequency("tx", 1), shared_radio.temperature, len(shared_radio.faults))


@pytest.mark.parametrize("what, value, kind", WITHOUT_A_RADIO)
def test_of_a_board(shared_board, monkeypatch, what, value, kind):
    folder = Path(shared_board.file).parent
    monkeypatch.chdir(folder)
    before = sorted(path.name for path in folder.iterdir())
    refuses(what, shared_board, value, kind)
    assert before == sorted(path.name for path in folder.iterdir())


def test_there_are_more_than_four_hundred():
    assert len(ON_A_RADIO) + len(WITHOUT_A_RADIO) > 400


@pytest.mark.parametrize("what, said", [
    (lambda board, radio: radio.on_event(3), "callback: 3, expected a function"),
    (lambda board, radio: board.tables.add("new", ([1], np.empty(0, int), np.empty((1, 0), int))),
     "values: no nodes, expected at least one"),
    (lambda board, radio: board.tables.add("", ([1], None, [1])), "name: '', expected a text that can be printed"),
    (lambda board, radio: board.tables.add("a\nb", ([1], None, [1])), "name: 'a\\nb', expected a text that can be printed"),
    (lambda board, radio: board.tables.__delitem__("x"),
     "'x': a table cannot be taken away, expected another one in its place"),
    (lambda board, radio: thermal.replay(board, [[0, 1], [20, 21]]),
     "log: [[0, 1], [20, 21]], expected a path, or a tuple of two arrays: (seconds, degrees)"),
    (lambda board, radio: fh.Board(), "Board: None, expected Board.load(path)"),
])
def test_says_what_was_meant(shared_board, shared_radio, what, said):
    with pytest.raises((ArgumentError, ArgumentTypeError)) as caught:
        what(shared_board, shared_radio)
    assert str(caught.value) == said
    assert "expected" in said
