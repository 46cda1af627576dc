"""The examples do what they say."""

import os
import signal
import subprocess
import sys
import time
from pathlib import Path

import pytest

EXAMPLES = Path(__file__).parents[2] / "examples"


def run(*arguments, **options):
    return subprocess.run([sys.executable, *map(str, arguments)], capture_output=True, text=True, **options)


def test_bring_up_shows_what_reached_the_hardware(boards):
    done = run(EXAMPLES / "bring_up.py", boards / "rf-module-7ghz.toml")
    assert (done.returncode, done.stderr) == (0, "")
    assert "tx 1, 7442000 kHz\n  channel.1.tx.rf.frequency = 7442000\n" in done.stdout


def test_bring_up_of_every_board(boards):
    for board in sorted(boards.glob("*.toml")):
        done = run(EXAMPLES / "bring_up.py", board)
        assert done.returncode == 0, (board, done.stdout, done.stderr)


def test_bring_up_names_a_board_that_it_cannot_read(tmp_path):
    done = run(EXAMPLES / "bring_up.py", tmp_path / "none.toml")
    assert done.returncode == 2
    assert done.stderr.startswith(f"bring_up: {tmp_path}/none.toml: ")


@pytest.fixture
def units(boards):
    """Two units of one design, whose serial numbers differ."""
    text = (boards / "lo-leakage-18ghz.toml").read_text()
    files = []
    for serial in ("unit-1", "unit-2"):
        file = boards / f"{serial}.toml"
        file.write_text("\n".join(line for line in text.splitlines() if not line.startswith("serial")) + "\n")
        files.append(file)
    return files


def test_batch_is_calibrated_and_drawn(units, tmp_path):
    done = run(EXAMPLES / "calibrate_batch.py", "--out", tmp_path / "out", *units)
    assert (done.returncode, done.stderr) == (0, "")
    assert done.stdout.count("PASS: ") == 2
    assert (tmp_path / "out" / "batch.png").read_bytes().startswith(b"\x89PNG")
    assert (tmp_path / "out" / "unit-1.csv").exists()


def test_interrupted_batch_ends_and_goes_on(units, tmp_path):
    command = [sys.executable, EXAMPLES / "calibrate_batch.py", "--jobs", "1", "--out", tmp_path / "out", *units]
    process = subprocess.Popen(command, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True, start_new_session=True)
    deadline = time.monotonic() + 60
    while not list(tmp_path.glob("out/*.journal")) and time.monotonic() < deadline:
        time.sleep(0.002)
    os.killpg(process.pid, signal.SIGINT)
    said, complained = process.communicate(timeout=60)
    assert process.returncode == 128 + signal.SIGINT
    assert complained == "calibrate_batch: interrupted; the same command goes on\n"
    assert [path.name for path in tmp_path.glob("out/*.journal")] == ["unit-1.journal"]
    done = run(*command[1:])
    assert done.stdout.count("PASS: ") == 2, done.stderr


def test_acceptance_test_passes(boards):
    done = run("-m", "pytest", "-q", "-p", "no:cacheprovider", "-p", "frequencyhandler.pytest_plugin", "--radio-board",
               boards / "rf-module-7ghz.toml", EXAMPLES / "test_acceptance.py")
    assert done.returncode == 0, done.stdout
    assert "6 passed, 1 skipped" in done.stdout or "7 passed" in done.stdout


def test_acceptance_test_skips_mocks_on_hardware_with_a_reason(boards, tmp_path):
    (tmp_path / "tx").write_text("0\n")
    with open(boards / "rf-module-7ghz.toml", "a") as file:
        file.write(f'[hardware."channel.1.tx.rf.frequency"]\nwrite = "{tmp_path}/tx"\n')
    done = run("-m", "pytest", "-q", "-rs", "-p", "no:cacheprovider", "-p", "frequencyhandler.pytest_plugin", "--radio-hardware",
               "--radio-board", boards / "rf-module-7ghz.toml", EXAMPLES / "test_acceptance.py",
               env=dict(os.environ, XDG_STATE_HOME=str(tmp_path)))
    assert done.returncode == 0, done.stdout
    assert "--radio-hardware drives the real one" in done.stdout
    assert (tmp_path / "tx").read_text() == "7582000\n"


def test_real_hardware_is_not_driven_for_a_mock_that_is_skipped(boards, tmp_path):
    (tmp_path / "tx").write_text("0\n")
    with open(boards / "rf-module-7ghz.toml", "a") as file:
        file.write(f'[hardware."channel.1.tx.rf.frequency"]\nwrite = "{tmp_path}/tx"\non_exit = 7428000\n')
    (tmp_path / "test_it.py").write_text("def test_both(radio, mocked_hardware):\n    pass\n\n"
                                         "def test_mock(mocked_hardware):\n    pass\n")
    done = run("-m", "pytest", "-q", "-p", "no:cacheprovider", "-p", "frequencyhandler.pytest_plugin", "--radio-hardware", "--radio-board",
               boards / "rf-module-7ghz.toml", tmp_path / "test_it.py", env=dict(os.environ, XDG_STATE_HOME=str(tmp_path)))
    assert "2 skipped" in done.stdout and (tmp_path / "tx").read_text() == "0\n"


def test_mocked_hardware_is_of_use_without_the_radio_by_name(boards, tmp_path):
    (tmp_path / "test_it.py").write_text(
        "def test_it(mocked_hardware):\n"
        "    mocked_hardware.radio.tune('tx', 1, 7442000)\n"
        "    assert mocked_hardware.writes == (('channel.1.tx.rf.frequency', 7442000),)\n"
        "    mocked_hardware.forget()\n"
        "    assert mocked_hardware.writes == mocked_hardware.refused == ()\n")
    done = run("-m", "pytest", "-q", "-p", "no:cacheprovider", "-p", "frequencyhandler.pytest_plugin", "--radio-board",
               boards / "rf-module-7ghz.toml", tmp_path / "test_it.py")
    assert "1 passed" in done.stdout, done.stdout


def test_fixtures_want_to_know_the_board(tmp_path):
    (tmp_path / "test_it.py").write_text("def test_it(radio):\n    pass\n")
    done = run("-m", "pytest", "-q", "-p", "no:cacheprovider", "-p", "frequencyhandler.pytest_plugin", tmp_path / "test_it.py")
    assert done.returncode == 1
    assert "which board? Expected --radio-board FILE" in done.stdout


def test_batch_refuses_two_units_of_one_name_before_it_begins(units, tmp_path):
    (tmp_path / "other").mkdir()
    twin = tmp_path / "other" / "unit-1.toml"
    twin.write_text(units[0].read_text())
    done = run(EXAMPLES / "calibrate_batch.py", "--jobs", "1", "--out", tmp_path / "out", units[0], twin)
    assert done.returncode == 2
    assert f"{units[0]} and {twin} would have the same journal and tables" in done.stderr
    assert not (tmp_path / "out").exists()


def test_plugin_leaves_the_options_of_other_projects_alone(tmp_path):
    (tmp_path / "conftest.py").write_text("def pytest_addoption(parser):\n"
                                          "    parser.addoption('--board')\n"
                                          "    parser.addoption('--hardware')\n")
    (tmp_path / "test_it.py").write_text("def test_it(request):\n"
                                         "    assert request.config.getoption('--board') == 'mine'\n")
    done = run("-m", "pytest", "-q", "-p", "no:cacheprovider", "-p", "frequencyhandler.pytest_plugin", "--rootdir", tmp_path,
               "--board", "mine", tmp_path / "test_it.py")
    assert "1 passed" in done.stdout, done.stdout + done.stderr


def test_failed_expectation_is_shown_at_the_line_of_the_test(boards, tmp_path):
    (tmp_path / "test_it.py").write_text("def test_it(radio):\n"
                                         "    radio.tune('tx', 1, 7442000)\n"
                                         "    radio.expect.writes({'channel.1.tx.rf.frequency': 7442001})\n"
                                         "def test_other(radio):\n"
                                         "    radio.execute('expect writes 1')\n")
    done = run("-m", "pytest", "-q", "-p", "no:cacheprovider", "-p", "frequencyhandler.pytest_plugin", "--radio-board",
               boards / "rf-module-7ghz.toml", tmp_path / "test_it.py")
    assert "2 failed" in done.stdout, done.stdout
    assert "! channel.1.tx.rf.frequency   7442001  7442000\n" in done.stdout
    assert "test_it.py:3: ExpectationFailed" in done.stdout and "test_it.py:5: ExpectationFailed" in done.stdout
    assert "expectations.py" not in done.stdout and "frequencyhandler/radio.py" not in done.stdout


def test_radio_that_did_not_come_up_has_words_for_itself(boards, tmp_path):
    (tmp_path / "test_it.py").write_text("from frequencyhandler import Radio\n"
                                         "def test_it(board_file):\n"
                                         "    Radio(board_file, hardware=True)\n")
    done = run("-m", "pytest", "-q", "-p", "no:cacheprovider", "-p", "frequencyhandler.pytest_plugin", "--radio-board",
               boards / "rf-module-7ghz.toml", tmp_path / "test_it.py")
    assert "InputError" in done.stdout and "raised in repr()" not in done.stdout, done.stdout
