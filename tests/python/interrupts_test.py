"""Ctrl-C ends long work, and loses nothing."""

import os
import signal
import threading
import time

import pytest

from frequencyhandler import Interrupted, Radio, calibrate, plan, thermal


def interrupt_from(progress_or_delay):
    threading.Timer(progress_or_delay, os.kill, (os.getpid(), signal.SIGINT)).start()


@pytest.fixture
def long_audit(boards):
    file = boards / "microwave-if-8ghz.toml"
    file.write_text(file.read_text().replace("step = 10\n", "step = 1\n"))
    return file


def test_interrupted_audit_has_its_carriers(long_audit):
    def progress(state):
        os.kill(os.getpid(), signal.SIGINT)

    with pytest.raises(KeyboardInterrupt) as caught:
        plan.audit(long_audit, progress=progress)
    assert isinstance(caught.value, Interrupted)
    result = caught.value.result
    assert not result.complete and 0 < result.count == result.carriers.size


def test_interrupt_comes_soon(long_audit):
    interrupt_from(0.1)
    begun = time.monotonic()
    with pytest.raises(Interrupted):
        for _ in range(100):
            plan.audit(long_audit, keep=False)
    assert time.monotonic() - begun < 5


def test_interrupted_calibration_is_resumed(leaking, tmp_path):
    files = dict(journal=tmp_path / "j", tables=tmp_path / "t.csv")

    def on_point(point):
        os.kill(os.getpid(), signal.SIGINT)

    with pytest.raises(KeyboardInterrupt):
        calibrate(leaking, 1, on_point=on_point, **files)
    assert calibrate(leaking, 1, beginning="resume", **files).is_good


def test_other_handlers_of_signals_have_their_say(long_audit):
    class Leave(Exception):
        pass

    def leave(number, frame):
        raise Leave

    before = signal.signal(signal.SIGINT, leave)
    try:
        interrupt_from(0.05)
        with pytest.raises(Leave):
            for _ in range(100):
                plan.audit(long_audit, keep=False)
    finally:
        signal.signal(signal.SIGINT, before)


def test_radio_is_free_afterwards(long_audit, board_file):
    interrupt_from(0.05)
    with pytest.raises(Interrupted):
        for _ in range(100):
            plan.audit(long_audit, keep=False)
    with Radio(board_file) as radio:
        assert radio.tune("tx", 1, 7442000).ok


def test_replay_in_another_thread_is_cancelled_by_an_event(boards):
    stop = threading.Event()
    stop.set()
    seconds = list(range(200000))
    degrees = [20 + second % 2 for second in seconds]
    result = thermal.replay(boards / "iq-compensation-18ghz.toml", (seconds, degrees), cancel=stop)
    assert not result.complete and result.samples < 200000
