"""What keeps waiting: instruments that do not answer, files that never end, and events that are yet to happen."""

import os
import signal
import socket
import threading
import time

import pytest

from frequencyhandler import (ArgumentError, ArgumentTypeError, Board, ClosedError, CommandFailed, Interrupted, Radio, TimedOut,
                              calibrate, events, plan, qualify, tables, thermal)

#: Until Ctrl-C is heard and a moment is over that an answer may still take, and what a busy computer adds; in seconds.
SOON = 5


class Instrument:
    """Takes commands, and answers queries as `answers` says: not at all, where it says nothing."""

    def __init__(self, answers=None):
        self.answers = answers or {}
        self.heard = threading.Event()
        self._listener = socket.create_server(("127.0.0.1", 0))
        self._clients = []
        threading.Thread(target=self._run, daemon=True).start()

    @property
    def address(self):
        return "127.0.0.1:%d" % self._listener.getsockname()[1]

    def _run(self):
        while True:
            try:
                client, _ = self._listener.accept()
            except OSError:
                return
            self._clients.append(client)
            threading.Thread(target=self._serve, args=(client,), daemon=True).start()

    def _serve(self, client):
        for line in client.makefile():
            if line.strip().endswith("?"):
                self.heard.set()
            if line.strip() in self.answers:
                client.sendall((self.answers[line.strip()] + "\n").encode())

    def hang_up(self):
        """Ends all connections, and takes no more."""
        self._listener.close()
        for client in self._clients:
            client.shutdown(socket.SHUT_RDWR)

    def close(self):
        self._listener.close()
        for client in self._clients:
            client.close()


@pytest.fixture
def instrument():
    made = Instrument()
    yield made
    made.close()


@pytest.fixture
def silent(board_file, instrument, monkeypatch, tmp_path):
    """A board with an instrument that takes ten minutes for what it is asked, so to speak."""
    monkeypatch.setenv("XDG_STATE_HOME", str(tmp_path / "state"))
    with open(board_file, "a") as file:
        file.write(f'[devices]\nmeter = {{ scpi = "{instrument.address}", time_limit = 600000 }}\n'
                   '[hardware."channel.1.tx.rf.frequency"]\ndevice = "meter"\nwrite = "FREQ {}"\nread = "FREQ?"\n')
    return board_file


def interrupt_when(heard):
    def interrupt():
        assert heard.wait(60)
        time.sleep(0.2)
        os.kill(os.getpid(), signal.SIGINT)

    threading.Thread(target=interrupt, daemon=True).start()


def read_when_connected(driver):
    end = time.monotonic() + 30
    while True:
        try:
            return driver.read()
        except CommandFailed:
            assert time.monotonic() < end
            time.sleep(0.05)


def test_instrument_that_does_not_answer_is_not_waited_for_after_an_interrupt(silent, instrument):
    with Radio(silent, hardware=True) as radio:
        driver = radio.drivers["channel.1.tx.rf.frequency"]
        interrupt_when(instrument.heard)
        begun = time.monotonic()
        with pytest.raises(Interrupted, match="^read channel.1.tx.rf.frequency was interrupted") as caught:
            driver.read()
        assert time.monotonic() - begun < SOON
        assert caught.value.result.command == "read channel.1.tx.rf.frequency"
        instrument.answers["FREQ?"] = "7442000"
        assert read_when_connected(driver) == 7442000  # what broke off an answer broke the connection


@pytest.fixture
def many(silent):
    """The same with more carriers than it is worth waiting for."""
    with open(silent, "a") as file:
        file.write('[[raster]]\nname = "many"\nchannels = [1]\ndirection = "tx"\nfirst = 7000000\nlast = 7999999\nstep = 1\n')
    return silent


def test_audit_ends_with_the_connection_to_its_hardware(many, instrument):
    told = []

    def hang_up(state):
        if not told:
            instrument.hang_up()
        told.append(state.done)

    result = plan.audit(many, hardware=True, progress=hang_up)
    assert not result.complete and not result.is_good and result.lost_device == "meter"
    assert 0 < told[0] <= result.count == result.carriers.size < 1000000
    assert repr(result).endswith(", not complete, the connection to meter was lost>")


def test_audit_on_hardware_is_interrupted(many):
    with pytest.raises(Interrupted, match="^the audit was interrupted") as caught:
        plan.audit(many, hardware=True, progress=lambda state: os.kill(os.getpid(), signal.SIGINT))
    assert 0 < caught.value.result.count < 1000000
    assert caught.value.result.lost_device is None


def test_thread_that_waits_for_an_instrument_is_ended_by_close(silent, instrument):
    radio, ends = Radio(silent, hardware=True), []

    def read():
        try:
            radio.drivers["channel.1.tx.rf.frequency"].read()
        except ClosedError as error:
            ends.append(error)

    work = threading.Thread(target=read)
    work.start()
    assert instrument.heard.wait(60)
    begun = time.monotonic()
    radio.close()
    work.join()
    assert time.monotonic() - begun < SOON and "was closed meanwhile" in str(ends[0])


def test_interrupt_while_hardware_is_looked_for_is_that_and_no_fault_of_the_hardware(board_file, monkeypatch, tmp_path):
    monkeypatch.setenv("XDG_STATE_HOME", str(tmp_path / "state"))
    with socket.socket() as full:  # a queue of connections that nobody takes
        full.bind(("127.0.0.1", 0))
        full.listen(0)
        others = [socket.socket() for _ in range(3)]
        for other in others:
            other.setblocking(False)
            other.connect_ex(full.getsockname())
        with open(board_file, "a") as file:
            file.write(f'[devices]\nmeter = {{ scpi = "127.0.0.1:{full.getsockname()[1]}", time_limit = 600000 }}\n'
                       '[hardware."channel.1.tx.rf.frequency"]\ndevice = "meter"\nwrite = "FREQ {}"\n')
        begins = threading.Event()
        interrupt_when(begins)
        begun = time.monotonic()
        with pytest.raises(KeyboardInterrupt):
            begins.set()
            Radio(board_file, hardware=True)
        assert time.monotonic() - begun < SOON
        for other in others:
            other.close()
    Radio(board_file).close()  # nothing is in the way


def measuring(leaking, instrument, tmp_path):
    """A board whose detector is read by an instrument."""
    file = tmp_path / "boards" / "lo-leakage-18ghz.toml"
    corrections = "".join(f'[hardware."channel.1.tx.rf.mixer.{branch}"]\nwrite = "{tmp_path}/{branch}"\n' for branch in "iq")
    for branch in "iq":
        (tmp_path / branch).write_text("0\n")
    with open(file, "a") as more:
        more.write(f'[devices]\nmeter = {{ scpi = "{instrument.address}", time_limit = 600000 }}\n'
                   f'{corrections}[hardware."{detector_of(leaking)}"]\ndevice = "meter"\nread = "DET?"\n')
    return file


def detector_of(board):
    return qualify(board, 1).detector


@pytest.mark.parametrize("work", [lambda file, folder: qualify(file, 1, hardware=True, force=True),
                                  lambda file, folder: calibrate(file, 1, hardware=True, force=True, temperatures=[25],
                                                                 journal=folder / "j", tables=folder / "t.csv")])
def test_measurement_by_an_instrument_that_does_not_answer_is_interrupted(leaking, instrument, monkeypatch, tmp_path, work):
    monkeypatch.setenv("XDG_STATE_HOME", str(tmp_path / "state"))
    file = measuring(leaking, instrument, tmp_path)
    interrupt_when(instrument.heard)
    with pytest.raises(Interrupted) as caught:
        work(file, tmp_path)
    assert not caught.value.result.result.is_good if hasattr(caught.value.result, "result") else \
        not caught.value.result.complete


@pytest.mark.parametrize("read", [Board.load, tables.lint, thermal.read_log, lambda file: tables.diff(file, file)])
def test_file_that_never_ends_is_not_waited_for_after_an_interrupt(tmp_path, read):
    pipe = tmp_path / "pipe"
    os.mkfifo(pipe)
    writer = os.open(pipe, os.O_RDWR)
    begins = threading.Event()
    interrupt_when(begins)
    begun = time.monotonic()
    with pytest.raises(KeyboardInterrupt):
        begins.set()
        read(pipe)
    assert time.monotonic() - begun < SOON
    os.close(writer)


def test_event_is_waited_for_until_another_thread_makes_it_happen(radio):
    told = radio.events(events.Notified)
    threading.Timer(0.2, radio.tune, ("tx", 1, 7442000)).start()
    assert told.wait(60) == ("tx", 1, 7442000, False)


def test_event_that_does_not_happen_is_a_timeout(radio):
    told = radio.events()
    begun = time.monotonic()
    with pytest.raises(TimeoutError, match="^no event within 0.2 s$") as caught:
        told.wait(0.2)
    assert isinstance(caught.value, TimedOut) and time.monotonic() - begun >= 0.2
    with pytest.raises(TimedOut):
        told.wait(0)


def test_nothing_is_waited_for_that_cannot_happen_any_more(board_file):
    with Radio(board_file) as radio:
        told, closed = radio.events(), radio.events()
        radio.tune("tx", 1, 7442000)
        closed.close()
        with pytest.raises(ClosedError):
            closed.wait()
    assert told.wait() == ("channel.1.tx.rf.frequency", 7442000)  # of what had happened
    assert told.wait().carrier_khz == 7442000
    with pytest.raises(ClosedError, match="^nothing more happens"):
        told.wait()
    assert list(told.within(60)) == []


def test_wait_ends_when_another_thread_closes_the_radio(board_file):
    radio = Radio(board_file)
    told = radio.events()
    threading.Timer(0.2, radio.close).start()
    with pytest.raises(ClosedError):
        told.wait(60)


def test_wait_for_an_event_is_interrupted(radio):
    begins = threading.Event()
    interrupt_when(begins)
    with pytest.raises(KeyboardInterrupt):
        begins.set()
        radio.events().wait()
    assert radio.tune("tx", 1, 7442000).ok


def test_events_are_told_as_they_happen_for_so_long(radio):
    told, seen = radio.events(events.Write), []

    def drive():
        for carrier in (7442000, 7443000):
            time.sleep(0.1)
            radio.tune("tx", 1, carrier)

    threading.Thread(target=drive).start()
    for one in told.within(60):
        seen.append(one.value)
        if len(seen) == 2:
            break
    assert seen == [7442000, 7443000]
    assert list(told.within(0)) == []


def test_sensor_that_changes_is_waited_for(bench, tmp_path):
    (tmp_path / "degrees").write_text("25000\n")
    with open(bench, "a") as file:
        file.write(f'[sensor]\nread = "{tmp_path}/degrees"\nscale = 0.001\ninterval = 100\n')
    with Radio(bench, hardware=True) as radio:
        told = radio.events(events.Sensed)
        (tmp_path / "degrees").write_text("40000\n")
        assert told.wait(60).degrees == 40


@pytest.mark.parametrize("value, kind", [("1", ArgumentTypeError), (True, ArgumentTypeError), (-1, ArgumentError),
                                         (float("nan"), ArgumentError)])
def test_time_that_is_none_is_refused(radio, value, kind):
    for wait in (radio.events().wait, radio.events().within):
        with pytest.raises(kind, match="seconds"):
            wait(value)
    with pytest.raises(ArgumentTypeError, match="seconds: None"):
        radio.events().within(None)
