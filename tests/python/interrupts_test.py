"""Ctrl-C ends long work, and loses nothing."""

import os
import pickle
import signal
import subprocess
import sys
import threading
import time
import traceback

import pytest

from frequencyhandler import Board, Interrupted, Radio, _engine, calibrate, plan, qualify, thermal


def interrupting():
    """A progress; once it was told, another thread sends Ctrl-C."""
    begun = threading.Event()

    def interrupt():
        begun.wait()
        os.kill(os.getpid(), signal.SIGINT)

    threading.Thread(target=interrupt, daemon=True).start()
    return lambda state: begun.set()


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
    progress = interrupting()
    begun = time.monotonic()
    with pytest.raises(Interrupted):
        for _ in range(100):
            plan.audit(long_audit, keep=False, progress=progress)
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
        with pytest.raises(Leave):
            plan.audit(long_audit, keep=False, progress=interrupting())
    finally:
        signal.signal(signal.SIGINT, before)


def test_radio_is_free_afterwards(long_audit, board_file):
    with pytest.raises(Interrupted):
        plan.audit(long_audit, keep=False, progress=interrupting())
    with Radio(board_file) as radio:
        assert radio.tune("tx", 1, 7442000).ok


def test_replay_in_another_thread_is_cancelled_by_an_event(boards):
    begun, stop, results = threading.Event(), threading.Event(), []
    seconds = list(range(200000))
    degrees = [20 + second % 2 for second in seconds]
    work = threading.Thread(target=lambda: results.append(thermal.replay(
        boards / "iq-compensation-18ghz.toml", (seconds, degrees), cancel=stop, progress=lambda state: begun.set())))
    work.start()
    assert begun.wait(60)
    stop.set()
    work.join()
    result, = results
    assert not result.complete and 0 < result.samples < 200000


def test_interrupt_in_short_work_has_its_result(boards):
    file = boards / "microwave-hz-23ghz.toml"
    whole = plan.audit(file)

    def interrupted(state):  # at the end at the latest
        if state.done == state.total:
            os.kill(os.getpid(), signal.SIGINT)

    with pytest.raises(Interrupted, match="^the audit was interrupted") as caught:
        plan.audit(file, progress=interrupted)
    assert caught.value.result.complete and caught.value.result.count == whole.count


def test_what_a_function_raises_tells_where(long_audit):
    def here(state):
        raise ZeroDivisionError

    with pytest.raises(ZeroDivisionError) as caught:
        plan.audit(long_audit, progress=here)
    assert "here" in [frame.name for frame in traceback.extract_tb(caught.value.__traceback__)]
    with pytest.raises(ZeroDivisionError) as caught:
        plan.audit(long_audit, cancel=lambda: 1 / 0)
    assert "<lambda>" in [frame.name for frame in traceback.extract_tb(caught.value.__traceback__)]


@pytest.mark.parametrize("wait", [
    lambda pipe, board: Board.load(pipe),
    lambda pipe, board: thermal.read_log(pipe),
    lambda pipe, board: calibrate(board, 1, journal=pipe.parent / "j", tables=pipe)],
    ids=["board", "log", "tables"])
def test_pipe_that_nobody_serves_is_left_by_ctrl_c(leaking, tmp_path, wait):
    pipe = tmp_path / "pipe.csv"
    os.mkfifo(pipe)
    timer = threading.Timer(0.3, lambda: os.kill(os.getpid(), signal.SIGINT))
    timer.start()
    with pytest.raises(KeyboardInterrupt):
        wait(pipe, leaking)


def test_pipe_that_nobody_writes_does_not_keep_the_interpreter(tmp_path):
    os.mkfifo(tmp_path / "pipe")
    program = ("import sys, threading\n"
               "from frequencyhandler import Board\n"
               "threading.Thread(target=Board.load, args=(sys.argv[1],), daemon=True).start()\n"
               "import time; time.sleep(0.3)\n")
    subprocess.run([sys.executable, "-c", program, tmp_path / "pipe"], timeout=30, check=True)


def test_interrupt_crosses_to_other_processes():
    caught = pickle.loads(pickle.dumps(Interrupted([1, 2], "the audit")))
    assert caught.result == [1, 2] and str(caught).startswith("the audit was interrupted")


def test_hardware_that_was_not_left_is_said_with_the_interrupt(leaking, monkeypatch):
    engine = _engine.qualify
    monkeypatch.setattr(_engine, "qualify", lambda *given: (*engine(*given)[:4], False, KeyboardInterrupt()))
    with pytest.raises(Interrupted, match="^the qualification was interrupted") as caught:
        qualify(leaking, 1)
    assert caught.value.__notes__ == [f"{leaking.file}: what was to be written in the end failed"]
    assert caught.value.result.result.is_good
