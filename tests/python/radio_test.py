"""A radio that is up, and one that is not any more."""

import copy
import os
import pickle
import subprocess
import sys
import threading

import numpy as np
import pytest

from frequencyhandler import (ArgumentError, ArgumentTypeError, Board, BusyError, ClosedError, CommandFailed, InputError, Radio,
                              UnknownName, _engine, events, plan)


def test_tune_gives_what_was_written(radio):
    outcome = radio.tune("tx", 1, "7.442 GHz")
    assert outcome.writes == (("channel.1.tx.rf.frequency", 7442000),)
    assert outcome["channel.1.tx.rf.frequency"] == 7442000
    assert outcome.ok and outcome.code == 0
    assert outcome.notifications[0].carrier_khz == 7442000
    assert radio.frequency("tx", 1) == 7442000


@pytest.mark.parametrize("carrier", [7442000, "7442000", "7442000 kHz", "7442 MHz", "7.442GHz"])
def test_carrier_is_khz_or_a_text_with_a_unit(radio, carrier):
    assert radio.tune("tx", 1, carrier)["channel.1.tx.rf.frequency"] == 7442000


def test_refused_write_is_no_failure_of_the_tune_but_is_said(radio):
    radio.faults.inject("driver-write", "channel.1.tx.rf.frequency", 0x8001)
    outcome = radio.tune("tx", 1, 7442000)
    assert outcome.ok
    assert outcome.writes == ()
    assert outcome.failed_writes == (("channel.1.tx.rf.frequency", 7442000, 0x8001),)
    assert outcome.traces == (
        "Write to driver failed for channel.1.Tx.rf.frequency (EDriverResult = 0x8001)",)


def test_drivers_are_read_and_written(radio):
    driver = radio.drivers["channel.1.tx.rf.frequency"]
    driver.write(7000000)
    assert driver.value == driver.read() == 7000000
    assert driver.writes == 1
    assert not driver.is_real
    assert repr(driver) == "<Driver 'channel.1.tx.rf.frequency': 7000000>"


def test_failing_driver_raises_with_its_code(radio):
    driver = radio.drivers["channel.1.tx.rf.frequency"]
    with radio.faults.injected("driver-read", driver.name, 0x8005):
        with pytest.raises(CommandFailed) as caught:
            driver.read()
    assert caught.value.outcome.code == 0x8005
    assert len(radio.faults) == 0


def test_faults_are_listed_with_their_turns(radio):
    radio.faults.inject("driver-write", times=2)
    assert radio.faults[0] == ("driver-write", "", 0x8000, 2)
    radio.tune("tx", 1, 7442000)
    assert radio.faults[0].times == 1
    radio.faults.clear()
    assert list(radio.faults) == []


def test_fault_of_a_block_leaves_the_others_as_they_were(radio):
    driver = "channel.1.tx.rf.frequency"
    radio.faults.inject("driver-write", driver, 0x8001, times=3)
    radio.faults.inject("driver-write", driver, 0x8002)
    before = list(radio.faults)
    with radio.faults.injected("driver-write"):
        assert len(radio.faults) == 3
    assert list(radio.faults) == before
    with radio.faults.injected("driver-write", driver, 0x8002):
        pass
    assert list(radio.faults) == before
    with radio.faults.injected("driver-write", driver, 0x8003):
        radio.faults.clear()
        radio.faults.inject("driver-read", driver)
    assert list(radio.faults) == [("driver-read", driver, 0x8000, None)]


def test_misspelt_name_is_told_what_was_perhaps_meant(radio):
    with pytest.raises(KeyError) as caught:
        radio.drivers["channel.1.tx.rf.frequncy"]
    assert isinstance(caught.value, UnknownName) and caught.value.expected == "channel.1.tx.rf.frequency"
    assert str(caught.value) == ("unknown driver 'channel.1.tx.rf.frequncy' (did you mean "
                                 '"channel.1.tx.rf.frequency"?)')
    with pytest.raises(UnknownName) as caught:
        radio.variables["x"]
    assert (str(caught.value), caught.value.expected) == ("unknown variable 'x'", None)
    assert pickle.loads(pickle.dumps(caught.value)).args == caught.value.args
    assert radio.drivers.get("x") is None and "x" not in radio.drivers


def test_misspelt_property_is_not_taken(radio):
    for what, name in ((radio, "temprature"), (radio.drivers["channel.1.tx.rf.frequency"], "valu"), (radio.faults, "times"),
                       (radio.expect, "write"), (radio.events(), "kind")):
        with pytest.raises(AttributeError):
            setattr(what, name, 25)


def test_outcome_is_asked_by_names_of_drivers(radio):
    outcome = radio.tune("tx", 1, 7442000)
    assert "channel.1.tx.rf.frequency" in outcome and "channel.2.tx.rf.frequency" not in outcome
    assert ("channel.1.tx.rf.frequency", 7442000) in outcome and ("channel.1.tx.rf.frequency", 1) not in outcome
    assert np.array([1, 2]) not in outcome and 7442000 not in outcome
    with pytest.raises(KeyError):
        outcome[np.array([1, 2])]
    other = pickle.loads(pickle.dumps(outcome))
    assert (other.command, other.events, other.code) == (outcome.command, outcome.events, 0)


def test_what_is_shown_of_a_radio_in_use_does_not_want_it(radio):
    driver, faults = radio.drivers["channel.1.tx.rf.frequency"], radio.faults
    ready, ends = threading.Event(), threading.Event()

    def sweep():
        ready.set()
        radio.sweep("rx", 1, 7000000, 7999999, 1)

    said = set()
    work = threading.Thread(target=sweep)
    work.start()
    while work.is_alive():
        said |= {repr(driver), repr(faults)}
        ends.wait(0.01)
    assert "<Driver 'channel.1.tx.rf.frequency' of a radio in use>" in said
    assert "<Faults of a radio in use>" in said


def test_values_are_shown_with_nothing_that_a_terminal_obeys(radio):
    class Loud:
        def __repr__(self):
            return "\x1b[31mred\nline\x9b"

    with pytest.raises(ArgumentTypeError) as caught:
        radio.wait(Loud())
    assert str(caught.value) == "seconds: \\x1b[31mred\\nline\\x9b, expected a number of seconds"


def test_temperature_is_none_until_it_is_told(radio):
    assert radio.temperature is None
    radio.temperature = -5
    assert radio.temperature == -5


def test_phases_of_the_start_up_and_after(radio):
    assert [phase.number for phase in radio.phases] == [11, 5, 20]
    radio.phase("frame-format")
    radio.phase(11)
    assert [phase.number for phase in radio.phases] == [11, 5, 20, 20, 11]
    assert all(phase.succeeded for phase in radio.phases)


def test_variables_are_read_and_set(boards):
    with Radio(boards / "microwave-if-8ghz.toml") as radio:
        name = next(iter(radio.variables))
        values = radio.variables[name]
        outcome = radio.variables.set(name, [value + 1 for value in values])
        assert radio.variables[name] == tuple(value + 1 for value in values)
        assert "phase" in outcome.note


def test_one_radio_at_a_time_in_a_process(board_file):
    with Radio(board_file):
        with pytest.raises(BusyError, match="one radio at a time in a process"):
            Radio(board_file)
        with pytest.raises(BusyError):
            plan.explain(board_file, "tx", 1, 7442000)
    with Radio(board_file):
        pass


def test_recorder_before_the_process_is_an_exception_and_no_crash():
    before = [os.environ["LD_PRELOAD"]] if "LD_PRELOAD" in os.environ else []
    done = subprocess.run([sys.executable, "-c", "import frequencyhandler"], capture_output=True, text=True,
                          env=dict(os.environ, LD_PRELOAD=":".join([*before, os.environ["RADIO_RECORDER"]])))
    assert done.returncode == 1
    assert done.stderr.splitlines()[-1] == ("ImportError: a recorder or another platform was loaded before the interpreter, "
                                            "expected a process without it (LD_PRELOAD)")


def test_everything_says_that_it_is_closed(board_file):
    with Radio(board_file) as radio:
        driver = radio.drivers["channel.1.tx.rf.frequency"]
        faults, variables, expect, drivers = radio.faults, radio.variables, radio.expect, radio.drivers
    radio.close()
    for use in (lambda: radio.tune("tx", 1, 7442000), driver.read, lambda: driver.write(1), lambda: driver.value,
                lambda: len(faults), lambda: faults.inject("driver-write"), lambda: drivers["x"],
                lambda: variables["x"], lambda: expect.result("ok"), lambda: radio.temperature,
                lambda: radio.frequency("tx", 1), lambda: radio.phase(11), lambda: radio.leakage(9),
                lambda: radio.tune("tx", 9, 1), lambda: radio.execute("tuna"), lambda: radio.frequency("tx", 9),
                lambda: radio.events(), lambda: radio.on_event(print), lambda: radio.phases, lambda: list(drivers),
                lambda: list(variables), lambda: variables.set("x", 1), lambda: radio.wait(-1), lambda: radio.expect,
                lambda: radio.sweep("up", 9, 0, 0, 0), lambda: setattr(radio, "temperature", "x"), radio.__enter__):
        with pytest.raises(ClosedError, match="is closed"):
            use()
    assert repr(radio).endswith(", closed>")
    assert "closed" in repr(driver) and "closed" in repr(faults) and "closed" in repr(drivers)


def test_what_belongs_to_its_process_says_so_where_it_is_to_leave_it(radio):
    for what in (radio, radio.drivers, radio.drivers["channel.1.tx.rf.frequency"], radio.variables, radio.faults, radio.expect,
                 radio.events(), radio.on_event(print)):
        for leave in (pickle.dumps, copy.copy, copy.deepcopy):
            with pytest.raises(TypeError, match=f"^{type(what).__name__}: belongs to its process") as caught:
                leave(what)
            assert "its board" in caught.value.expected


def test_board_with_errors_is_refused_with_its_place(board_file):
    board_file.write_text(board_file.read_text().replace("channel.1.tx.rf.frequency", "channel.1.tx.rf.frequenzy"))
    with pytest.raises(InputError) as caught:
        Radio(board_file)
    assert caught.value.file == str(board_file) and "channel.1.tx.rf.frequency" in caught.value.text
    Radio(board_file, must_boot=False).close()


@pytest.mark.parametrize("kind", ["Board", "Radio", "Events", "Recording", "Cursor"])
def test_objects_of_the_engine_are_not_made_without_anything_in_them(kind):
    made = getattr(_engine, kind)
    for make in (made, lambda: made.__new__(made), lambda: object.__new__(made)):
        with pytest.raises(TypeError):
            make()


def test_start_up_that_fails_raises_unless_that_is_wanted(board_file):
    with open(board_file, "a") as file:
        file.write('\n[interfaces]\n"IDriverLayer" = "absent"\n')
    with pytest.raises(InputError, match='interface "IDriverLayer" is absent') as caught:
        Radio(board_file)
    assert (caught.value.file, caught.value.line) == (str(board_file), 29)
    with Radio(board_file, must_boot=False) as radio:
        assert not radio.boot.ok
        radio.expect.result("failed")
        assert not radio.phases[-1].succeeded


def test_carrier_whose_unit_was_forgotten_is_told_how(radio):
    with pytest.raises(ArgumentError) as caught:
        radio.tune("tx", 1, "7.442")
    assert str(caught.value) == 'carrier: "7.442" has a fraction of a kHz, expected whole kHz, or a unit, as in "7.442 GHz"'
    assert caught.value.expected == 'whole kHz, or a unit, as in "7.442 GHz"'


def test_command_with_a_word_missing_tells_its_form(radio):
    with pytest.raises(ArgumentError) as caught:
        radio.execute("tune tx 1")
    assert caught.value.expected == "tune tx|rx CHANNEL FREQUENCY [kHz|MHz|GHz] [force]"


@pytest.mark.parametrize("carrier", [" 7.442 GHz", "7.442  GHz", "7.442\tGHz ", "7.442GHz", "7442000"])
def test_blanks_around_a_carrier_do_not_matter(radio, carrier):
    assert radio.tune("tx", 1, carrier)["channel.1.tx.rf.frequency"] == 7442000


def test_radio_in_use_by_another_thread_turns_away(radio):
    turned_away = []

    def drive(what, *arguments):
        try:
            what(*arguments)
        except BusyError as error:
            turned_away.append(error)

    for _ in range(20):  # either may have been turned away; a thread need not get its turn during the first sweep
        sweep = threading.Thread(target=drive, args=(radio.sweep, "rx", 1, 7000000, 7020000, 1))
        sweep.start()
        while sweep.is_alive() and not turned_away:
            drive(radio.tune, "tx", 1, 7442000)
        sweep.join()
        if turned_away:
            break
    assert radio.tune("tx", 1, 7442000).ok  # nothing is in the way afterwards
    assert turned_away
    assert all("in the middle of something" in str(error) for error in turned_away)


def test_commands_of_the_language_and_their_lists(radio):
    assert radio.execute("observe tx 1").ok
    listing = radio.execute("show drivers").listing
    assert "channel.1.tx.rf.frequency" in [row[0] for row in listing.rows]
    with pytest.raises(ArgumentError, match="unknown command"):
        radio.execute("tuna tx 1 7442000")


@pytest.mark.parametrize("word, said", [("quit", "close()"), ("exit", "close()"), ("help", "a command"), ("help tune", "a command")])
def test_what_is_for_a_prompt_is_refused_and_nothing_is_over(radio, word, said):
    with pytest.raises(ArgumentError) as caught:
        radio.execute(word)
    assert said in caught.value.expected
    assert len(radio.execute("repeat 3 tune tx 1 7442000")) == 3
    assert len(radio.sweep("tx", 1, 7442000, 7443000, 1000)) == 2


def test_sweep_and_wait(radio):
    outcome = radio.sweep("tx", 1, "7.42 GHz", "7.43 GHz", "5 MHz")
    assert [value for _, value in outcome] == [7420000, 7425000, 7430000]
    assert radio.wait(1.5).ok


@pytest.mark.parametrize("seconds", [np.int64(2), np.float32(0.5), np.float64(1)])
def test_times_are_numbers_of_numpy_as_well(radio, seconds):
    assert radio.wait(seconds).ok
    with pytest.raises(TimeoutError):
        radio.events().wait(seconds * 0)


def test_radio_that_has_never_come_up_is_closed_and_says_what_it_is():
    radio = Radio.__new__(Radio)
    assert radio.is_closed and repr(radio) == "<Radio '', closed>"


def test_driver_that_was_not_written_is_an_unknown_name_of_an_outcome(radio):
    outcome = radio.tune("tx", 1, 7442000)
    with pytest.raises(UnknownName) as caught:
        outcome["channel.1.tx.rf.frequenzy"]
    assert isinstance(caught.value, KeyError) and caught.value.expected == "channel.1.tx.rf.frequency"
    with pytest.raises(UnknownName):
        outcome[1]


def test_events_of_an_outcome_are_the_same_for_every_thread(radio):
    for _ in range(50):
        outcome = radio.tune("tx", 1, 7442000)
        seen = []
        threads = [threading.Thread(target=lambda: seen.append(outcome.events)) for _ in range(4)]
        for thread in threads:
            thread.start()
        for thread in threads:
            thread.join()
        assert len(seen) == 4 and {len(one) for one in seen} == {2}


def test_everything_of_a_closed_radio_says_so(board_file):
    with Radio(board_file) as radio:
        subscription = radio.on_event(print, events.Write)
        assert repr(subscription) == "<Subscription of Write>"
        drivers, variables = radio.drivers, radio.variables
        assert (len(drivers), len(variables)) == (4, 0)
    assert repr(subscription) == "<Subscription of Write of a closed radio>"
    for mapping in (drivers, variables):
        with pytest.raises(ClosedError):
            len(mapping)
    assert repr(drivers) == f"<4 drivers of <Radio {str(board_file)!r}, closed>>"


IN_A_SUBINTERPRETER = """
try:
    import _interpreters as interpreters
except ImportError:
    import _xxsubinterpreters as interpreters
interpreters.run_string(interpreters.create(), '''
try:
    import frequencyhandler
except ImportError as error:
    print(error, flush=True)
''')
"""


def test_subinterpreter_is_refused():
    done = subprocess.run([sys.executable, "-c", IN_A_SUBINTERPRETER], capture_output=True, text=True, timeout=60)
    assert done.stdout == ("this is a subinterpreter, expected the main interpreter of the process: there is one radio in "
                           "it\n"), done.stderr


def test_error_has_what_was_meant_where_it_only_asks(radio):
    with pytest.raises(ArgumentError) as caught:
        radio.faults.inject("driver-write", "channel.1.tx.rf.frequenzy")
    assert str(caught.value).endswith('(did you mean "channel.1.tx.rf.frequency"?)')
    assert caught.value.expected == "channel.1.tx.rf.frequency"
    with pytest.raises(ArgumentError) as caught:
        radio.leakage(1)
    assert caught.value.expected == "a [[leakage]]"
