"""A radio whose drivers are real: files, which the kernel's drivers are as well."""

import subprocess
import sys
import threading
import time

import pytest

from frequencyhandler import ArgumentTypeError, CommandFailed, InputError, Radio, RadioError, events, plan


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


@pytest.fixture
def with_sensor(bench, tmp_path):
    (tmp_path / "degrees").write_text("25000\n")
    with open(bench, "a") as file:
        file.write(f'[sensor]\nread = "{tmp_path}/degrees"\nscale = 0.001\ninterval = 100\n')
    return bench


def until(what):
    """Whether it comes to that within ten seconds."""
    end = time.monotonic() + 10
    while not what() and time.monotonic() < end:
        time.sleep(0.02)
    return what()


def test_temperature_is_that_of_the_sensor_now(with_sensor, tmp_path):
    with Radio(with_sensor, hardware=True) as radio:
        told = radio.events(events.Sensed)
        assert radio.temperature == 25
        (tmp_path / "degrees").write_text("40000\n")
        assert until(lambda: radio.temperature == 40)
        assert [one.degrees for one in told] == [40]


def test_iterator_tells_what_became_of_the_hardware_meanwhile(with_sensor, tmp_path):
    with Radio(with_sensor, hardware=True) as radio:
        told, seen = radio.events(events.Sensed), []
        (tmp_path / "degrees").write_text("41000\n")
        assert until(lambda: seen.extend(told) or seen)
        assert [one.degrees for one in seen] == [41]


def test_what_could_not_be_written_in_the_end_is_said(bench, tmp_path):
    radio = Radio(bench, hardware=True)
    told = radio.events(events.HardwareNews)
    (tmp_path / "amplifier").unlink()
    (tmp_path / "amplifier").mkdir()
    with pytest.raises(RadioError, match="amplifier=0"):
        radio.close()
    assert radio.is_closed
    assert [(news.kind, news.what) for news in told] == [("failed", "amplifier")]
    radio.close()


def test_board_without_hardware_is_said(boards):
    with pytest.raises(InputError, match="hardware"):
        Radio(boards / "rf-module-7ghz.toml", hardware=True)


def test_device_that_another_program_drives_is_not_taken(bench):
    take = f"from frequencyhandler import *\nRadio({str(bench)!r}, hardware=True).close()"

    def other_program():
        return subprocess.run([sys.executable, "-c", take], capture_output=True, text=True)

    with Radio(bench, hardware=True):
        done = other_program()
        assert done.returncode == 1 and "InputError" in done.stderr.splitlines()[-1]
    assert other_program().returncode == 0


def test_outcome_says_what_the_hardware_refused(bench, tmp_path):
    with Radio(bench, hardware=True) as radio:
        (tmp_path / "tx").unlink()
        (tmp_path / "tx").mkdir()
        outcome = radio.tune("tx", 1, 7442000)
        assert outcome.ok and len(outcome.failed_writes) == 1
        code = outcome.failed_writes[0].code
        assert code & 0x8000
        assert repr(outcome).endswith(
            f"; no writes, refused channel.1.tx.rf.frequency=7442000 (0x{code & 0xFFFFFFFF:04x})>"), repr(outcome)


def with_raster(bench, first, last, step):
    with open(bench, "a") as file:
        file.write('[[raster]]\nname = "carriers"\nchannels = [1]\ndirection = "tx"\n'
                   f"first = {first}\nlast = {last}\nstep = {step}\n")
    return bench


@pytest.fixture
def audited(bench):
    """With three carriers, of which the hardware refuses the first."""
    return with_raster(bench, 7427000, 7429000, 1000)


def test_audit_on_hardware_finds_what_that_refuses_and_leaves_it(audited, tmp_path):
    (tmp_path / "amplifier").write_text("1\n")
    result = plan.audit(audited, hardware=True)
    assert (result.complete, result.count, result.outside, result.lost_device) == (True, 3, 1, None)
    failed = 1 << plan.FINDINGS.index("failed")
    assert [bool(findings & failed) for findings in result.carriers["findings"]] == [True, False, False]
    assert (tmp_path / "tx").read_text().strip() in ("7428000000", "7429000000")  # nothing else was ever allowed there
    assert (tmp_path / "amplifier").read_text().strip() == "0"


def test_audit_without_hardware_leaves_that_alone(audited, tmp_path):
    (tmp_path / "amplifier").write_text("1\n")
    assert plan.audit(audited).outside == 0
    assert ((tmp_path / "tx").read_text(), (tmp_path / "amplifier").read_text()) == ("0\n", "1\n")
    with pytest.raises(ArgumentTypeError, match="^hardware: 1, expected True or False$"):
        plan.audit(audited, hardware=1)


def test_audit_says_what_could_not_be_written_in_the_end(bench, tmp_path):
    stop = threading.Event()

    def break_it(state):
        if not stop.is_set():
            stop.set()
            (tmp_path / "amplifier").unlink()
            (tmp_path / "amplifier").mkdir()

    with pytest.raises(RadioError, match="what was to be written in the end failed$"):
        plan.audit(with_raster(bench, 7428000, 7582000, 1), hardware=True, progress=break_it, cancel=stop)


def test_audit_of_a_board_without_hardware_is_refused(boards):
    with pytest.raises(InputError, match="no hardware"):
        plan.audit(boards / "microwave-if-8ghz.toml", hardware=True)
