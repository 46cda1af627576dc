"""However a radio ends: it is closed, nobody has it any more, the interpreter ends, or a child of the process does."""

import gc
import os
import signal
import subprocess
import sys
import threading
import time
import warnings

import pytest

from frequencyhandler import BusyError, ClosedError, InputError, Radio, events
from frequencyhandler import radio as radio_module


def program(text, *arguments):
    """What a program of its own says, and how it ends."""
    return subprocess.run([sys.executable, "-c", "import os, sys, threading, time\nfrom frequencyhandler import *\n"
                           "from frequencyhandler import plan\n" + text, *map(str, arguments)],
                          capture_output=True, text=True, timeout=120)


def amplifier(folder):
    return (folder / "amplifier").read_text().strip()


def driven(radio, work):
    """A thread that is in the middle of driving the radio."""
    thread = threading.Thread(target=work)
    thread.start()
    while True:
        try:
            radio.frequency("tx", 1)
        except BusyError:
            return thread
        time.sleep(0.001)


def closed_meanwhile(work, *arguments):
    """What the exception of that says."""
    with pytest.raises(ClosedError) as caught:
        work(*arguments)
    return str(caught.value)


def test_thread_left_to_itself_does_not_keep_the_hardware_from_being_left(bench, tmp_path):
    done = program("radio = Radio(sys.argv[1], hardware=True)\n"
                   "radio.drivers['amplifier'].write(1)\n"
                   "threading.Thread(target=lambda: radio.wait(100), daemon=True).start()\n"
                   "time.sleep(0.3)\n"
                   "print(open(sys.argv[2]).read().strip())", bench, tmp_path / "amplifier")
    assert (done.returncode, done.stdout) == (0, "1\n"), done.stderr
    assert amplifier(tmp_path) == "0"


def test_radio_of_a_thread_that_is_left_to_itself_is_left_without_a_complaint(bench, tmp_path):
    done = program("def drive():\n"
                   "    radio = Radio(sys.argv[1], hardware=True)\n"
                   "    radio.drivers['amplifier'].write(1)\n"
                   "    begun.set()\n"
                   "    try:\n"
                   "        while True:\n"
                   "            radio.wait(0.001)\n"
                   "    except ClosedError:\n"
                   "        pass\n"
                   "begun = threading.Event()\n"
                   "threading.Thread(target=drive, daemon=True).start()\n"
                   "begun.wait()", bench)
    assert (done.returncode, done.stderr) == (0, "")
    assert amplifier(tmp_path) == "0"


@pytest.mark.parametrize("work", ["plan.audit(sys.argv[1], keep=False)",
                                  "plan.audit(sys.argv[1], keep=False, progress=lambda state: None)",
                                  "Board.load(sys.argv[1])"])
def test_thread_left_to_itself_does_not_end_the_process_by_a_crash(boards, work):
    # What ends the work is not printed: the interpreter crashes by itself where a thread prints while it ends.
    done = program("def loop():\n"
                   "    try:\n"
                   "        while True:\n"
                   f"            {work}\n"
                   "    except BaseException:\n"
                   "        pass\n"
                   "threading.Thread(target=loop, daemon=True).start()\n"
                   "time.sleep(0.2)\n"
                   "print('the end')", boards / "microwave-if-8ghz.toml")
    assert (done.returncode, done.stdout) == (0, "the end\n"), done.stderr
    assert "terminate" not in done.stderr


def test_radio_that_is_left_open_is_left_when_the_interpreter_ends(bench, tmp_path):
    done = program("radio = Radio(sys.argv[1], hardware=True)\n"
                   "radio.drivers['amplifier'].write(1)", bench)
    assert done.returncode == 0 and amplifier(tmp_path) == "0"


SIGNALLED = """
import signal
try:
    with Radio(sys.argv[1], hardware=True) as radio:
        radio.drivers["amplifier"].write(1)
        os.kill(os.getpid(), int(sys.argv[2]))
        {then}
except SystemExit as ended:
    print(radio.is_closed, ended.code, signal.getsignal(int(sys.argv[2])) == signal.SIG_DFL)
    raise
"""


@pytest.mark.parametrize("number, code", [(signal.SIGTERM, 143), (signal.SIGHUP, 129)])
@pytest.mark.parametrize("then", ["time.sleep(60)", "radio.wait(60)"])
def test_signal_that_ends_the_program_leaves_the_hardware_first(bench, tmp_path, number, code, then):
    done = program(SIGNALLED.format(then=then), bench, int(number))
    assert (done.returncode, done.stdout) == (code, f"True {code} True\n"), done.stderr
    assert amplifier(tmp_path) == "0"


def test_signal_ends_a_program_whose_radio_stands_in_no_block(bench, tmp_path):
    done = program("import signal\n"
                   "radio = Radio(sys.argv[1], hardware=True)\n"
                   "radio.drivers['amplifier'].write(1)\n"
                   "signal.raise_signal(signal.SIGTERM)\n", bench)
    assert done.returncode == 143 and amplifier(tmp_path) == "0"


@pytest.mark.parametrize("hardware, mine", [(True, "lambda *_: None"), (True, "signal.SIG_IGN"), (False, "signal.SIG_DFL")])
def test_handler_that_somebody_has_set_stays_and_without_hardware_none_is(bench, hardware, mine):
    done = program(f"import signal\nmine = {mine}\nsignal.signal(signal.SIGTERM, mine)\n"
                   f"with Radio(sys.argv[1], hardware={hardware}):\n"
                   "    print(signal.getsignal(signal.SIGTERM) == mine)\n"
                   "print(signal.getsignal(signal.SIGTERM) == mine)", bench)
    assert done.stdout == "True\nTrue\n", done.stderr


def test_start_up_that_fails_leaves_the_signals_as_they_were(board_file):
    before = signal.getsignal(signal.SIGTERM)
    with pytest.raises(InputError, match="hardware"):
        Radio(board_file, hardware=True)
    assert signal.getsignal(signal.SIGTERM) == before


def test_signal_ends_the_program_after_another_thread_has_closed_the_radio(bench):
    done = program("import signal\n"
                   "radio = Radio(sys.argv[1], hardware=True)\n"
                   "thread = threading.Thread(target=radio.close)\n"
                   "thread.start()\n"
                   "thread.join()\n"
                   "signal.raise_signal(signal.SIGTERM)\n", bench)
    assert done.returncode == -signal.SIGTERM, done.stderr


def test_radio_that_was_left_as_it_was_is_a_warning_of_the_next_start(bench, tmp_path):
    done = program("import signal\n"
                   "with Radio(sys.argv[1], hardware=True) as radio:\n"
                   "    radio.drivers['amplifier'].write(1)\n"
                   "    os.kill(os.getpid(), signal.SIGKILL)", bench)
    assert done.returncode == -signal.SIGKILL and amplifier(tmp_path) == "1"
    with Radio(bench, hardware=True) as radio:
        said, = radio.boot.warnings
        assert said.startswith("the radio was left as it was by process ")
        assert said.endswith(": nothing was switched off then")
    with Radio(bench, hardware=True) as radio:
        assert radio.boot.warnings == ()


FORKED = """
with Radio(sys.argv[1], hardware=True) as radio:
    radio.drivers["amplifier"].write(1)
    child = os.fork()
    if child == 0:
        {child}
        sys.exit(0)
    code = os.waitstatus_to_exitcode(os.waitpid(child, 0)[1])
    print(code, open(sys.argv[2]).read().strip())
"""


@pytest.mark.parametrize("child", [
    "pass",
    "radio.close()",
    "sys.exit(0 if radio.is_closed else 1)",
    "Radio(sys.argv[1]).close()",
    "import signal; sys.exit(0 if signal.getsignal(signal.SIGTERM) == signal.SIG_DFL else 1)",
])
def test_child_leaves_the_hardware_of_its_parent_alone(bench, tmp_path, child):
    done = program(FORKED.format(child=child), bench, tmp_path / "amplifier")
    assert (done.returncode, done.stdout) == (0, "0 1\n"), done.stderr
    assert amplifier(tmp_path) == "0"  # that the parent has written


def test_child_that_was_forked_in_the_middle_of_work_says_so(boards):
    done = program("begun = threading.Event()\n"
                   "over = threading.Event()\n"
                   "work = threading.Thread(target=lambda: plan.audit(sys.argv[1], progress=lambda state: begun.set(),\n"
                   "                                                   cancel=over.is_set))\n"
                   "work.start()\n"
                   "begun.wait()\n"
                   "child = os.fork()\n"
                   "if child == 0:\n"
                   "    try:\n"
                   "        Radio(sys.argv[1])\n"
                   "    except BusyError as error:\n"
                   "        os._exit(0 if 'was forked in the middle of an audit' in str(error) else 1)\n"
                   "    os._exit(2)\n"
                   "over.set()\n"
                   "work.join()\n"
                   "print(os.waitstatus_to_exitcode(os.waitpid(child, 0)[1]))", long_board(boards))
    assert done.stdout == "0\n", done.stderr


def long_board(boards):
    file = boards / "microwave-if-8ghz.toml"
    file.write_text(file.read_text().replace("step = 10\n", "step = 1\n"))
    return file


def test_block_ends_what_another_thread_drives_and_keeps_its_exception(bench, tmp_path):
    with pytest.raises(ZeroDivisionError):
        with Radio(bench, hardware=True) as radio:
            radio.drivers["amplifier"].write(1)
            thread = driven(radio, lambda: closed_meanwhile(radio.wait, 100))
            raise ZeroDivisionError
    assert radio.is_closed and amplifier(tmp_path) == "0"
    thread.join(10)
    assert not thread.is_alive()
    Radio(bench).close()  # the process has room for another one


def test_what_goes_wrong_in_the_end_is_a_note_on_what_went_wrong_before(bench, tmp_path):
    with pytest.raises(ZeroDivisionError) as caught:
        with Radio(bench, hardware=True):
            (tmp_path / "amplifier").unlink()
            (tmp_path / "amplifier").mkdir()
            raise ZeroDivisionError
    assert len(caught.value.__notes__) == 1 and "amplifier=0" in caught.value.__notes__[0]


def test_thread_whose_radio_was_closed_is_told_so(board_file):
    raised = []
    radio = Radio(board_file)
    thread = driven(radio, lambda: raised.append(closed_meanwhile(radio.sweep, "tx", 1, 7000000, 7999999, 1)))
    radio.close()
    thread.join(10)
    assert raised == [f"the radio of {board_file} was closed meanwhile"]


@pytest.fixture
def without_collection():
    gc.collect()
    gc.disable()
    yield
    gc.enable()


def test_radio_is_left_with_its_last_reference(bench, tmp_path, without_collection):
    def drive():
        radio = Radio(bench, hardware=True)
        radio.drivers["amplifier"].write(1)
        told = radio.events(events.Write)
        radio.on_event(print, events.Trace)
        assert len(radio.variables) == 0 and len(radio.faults) == 0 and list(told) == []

    with pytest.warns(ResourceWarning, match="was not closed"):
        drive()
    assert amplifier(tmp_path) == "0"


def test_closed_radio_is_let_go_without_a_warning(board_file, without_collection):
    with warnings.catch_warnings():
        warnings.simplefilter("error")
        Radio(board_file).close()


def test_interrupted_start_up_leaves_the_process_free(board_file, monkeypatch):
    def interrupted(*arguments):
        raise KeyboardInterrupt

    monkeypatch.setattr(radio_module, "Outcome", interrupted)
    with pytest.raises(KeyboardInterrupt) as kept:
        Radio(board_file)
    monkeypatch.undo()
    Radio(board_file).close()
    assert kept.value is not None  # and with it the traceback, which has the radio
