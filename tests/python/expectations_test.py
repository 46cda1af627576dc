"""Expectations hold, or raise with what was found."""

import pickle

import pytest

from frequencyhandler import ExpectationFailed, Radio


def test_what_holds_says_nothing(radio):
    radio.expect.result("ok")
    radio.tune("tx", 1, 7442000)
    radio.expect.driver("channel.1.tx.rf.frequency", 7442000)
    radio.expect.frequency("tx", 1, "7.442 GHz")
    radio.expect.notified("tx", 1, 7442000)
    radio.expect.writes(1)
    radio.expect.writes({"channel.1.tx.rf.frequency": 7442000})
    radio.expect.writes([("channel.1.tx.rf.frequency", 7442000)])
    radio.expect.writes([["channel.1.tx.rf.frequency", 7442000]])
    radio.expect.no_trace()
    radio.expect.result(0)


def test_writes_that_differ_are_shown_side_by_side(radio):
    radio.tune("tx", 1, 7442000)
    with pytest.raises(ExpectationFailed) as caught:
        radio.expect.writes([("channel.1.tx.rf.frequency", 7442001), ("channel.1.rx.rf.frequency", 1)])
    assert caught.value.writes == (("channel.1.tx.rf.frequency", 7442001, 7442000),
                                   ("channel.1.rx.rf.frequency", 1, None))
    assert str(caught.value) == (
        "expect writes: what was written differs\n"
        "  driver                     expected    found\n"
        "! channel.1.tx.rf.frequency   7442001  7442000\n"
        "! channel.1.rx.rf.frequency         1        -")


def test_each_says_what_was_expected_and_found(radio):
    radio.tune("tx", 1, 7442000)
    for expectation, found in [
        (lambda: radio.expect.driver("channel.1.tx.rf.frequency", 1), "7442000"),
        (lambda: radio.expect.frequency("tx", 1, 1), "7442000 kHz"),
        (lambda: radio.expect.notified("rx", 1, 7442000), "no notification"),
        (lambda: radio.expect.result("failed"), "ok"),
        (lambda: radio.expect.result(0x8001), "ok"),
        (lambda: radio.expect.trace("Write to driver failed"), "no trace message"),
        (lambda: radio.expect.writes(2), "1 write: channel.1.tx.rf.frequency=7442000"),
    ]:
        with pytest.raises(ExpectationFailed) as caught:
            expectation()
        assert caught.value.found == found
        assert isinstance(caught.value, AssertionError)


def test_leakage_is_expected_below_a_level(leaking):
    with Radio(leaking) as radio:
        radio.temperature = 25
        radio.tune("tx", 1, "17.7275 GHz")
        radio.expect.leakage(1, below=-50)
        with pytest.raises(ExpectationFailed, match="dBc"):
            radio.expect.leakage(1, below=-119)


def test_exceptions_cross_to_other_processes(radio):
    radio.tune("tx", 1, 7442000)
    with pytest.raises(ExpectationFailed) as caught:
        radio.expect.writes(2)
    copy = pickle.loads(pickle.dumps(caught.value))
    assert (type(copy), str(copy), copy.found) == (ExpectationFailed, str(caught.value), caught.value.found)


def test_expectations_say_of_which_radio(radio):
    assert repr(radio.expect) == f"<Expectations of {radio!r}>"
