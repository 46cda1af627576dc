"""A radio whose drivers are real: files, which the kernel's drivers are as well."""

import os

import pytest

from frequencyhandler import BusyError, CommandFailed, InputError, Radio, RadioError, events


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


def test_carrier_reaches_the_hardware_in_its_own_unit(bench, tmp_path):
    with Radio(bench, hardware=True) as radio:
        radio.tune("tx", 1, "7.442 GHz")
        assert (tmp_path / "tx").read_text().strip() == "7442000000"
        assert radio.drivers["channel.1.tx.rf.frequency"].is_real
        assert not radio.drivers["channel.1.rx.rf.frequency"].is_real


def test_hardware_is_left_as_the_board_wants_it(bench, tmp_path):
    with pytest.raises(ZeroDivisionError):
        with Radio(bench, hardware=True) as radio:
            radio.drivers["amplifier"].write(1)
            assert (tmp_path / "amplifier").read_text().strip() == "1"
            raise ZeroDivisionError
    assert (tmp_path / "amplifier").read_text().strip() == "0"


def test_value_outside_its_range_is_refused_unless_it_is_forced(bench, tmp_path):
    with Radio(bench, hardware=True) as radio:
        with pytest.raises(CommandFailed, match="range|7428000"):
            radio.tune("tx", 1, 7400000)
        assert (tmp_path / "tx").read_text().strip() == "0"
        radio.tune("tx", 1, 7400000, force=True)
        assert (tmp_path / "tx").read_text().strip() == "7400000000"


def test_simulation_warns_of_what_hardware_would_refuse(bench):
    with Radio(bench) as radio:
        assert radio.tune("tx", 1, 7400000).warnings


def test_device_that_is_not_there_is_said_before_anything_is_written(bench, tmp_path):
    (tmp_path / "tx").unlink()
    with pytest.raises(InputError, match="channel.1.tx.rf.frequency"):
        Radio(bench, hardware=True)
    assert (tmp_path / "amplifier").read_text() == "0\n"
    (tmp_path / "tx").write_text("0\n")
    Radio(bench, hardware=True).close()


def test_what_could_not_be_written_in_the_end_is_said(bench, tmp_path):
    radio = Radio(bench, hardware=True)
    told = radio.events(events.HardwareNews)
    (tmp_path / "amplifier").unlink()
    (tmp_path / "amplifier").mkdir()
    with pytest.raises(RadioError, match="amplifier=0"):
        radio.close()
    assert radio.is_closed
    assert list(told) == []
    radio.close()


def test_board_without_hardware_is_said(boards):
    with pytest.raises(InputError, match="hardware"):
        Radio(boards / "rf-module-7ghz.toml", hardware=True)


def test_device_that_another_program_drives_is_not_taken(bench):
    with Radio(bench, hardware=True):
        child = os.fork()
        if child == 0:
            code = 1
            try:
                Radio(bench, hardware=True)
            except (InputError, BusyError):
                code = 0
            os._exit(code)
        assert os.waitstatus_to_exitcode(os.waitpid(child, 0)[1]) == 0
