"""Events, as an iterator and as calls."""

import os
import signal
import threading

import numpy as np
import pytest

from frequencyhandler import ArgumentTypeError, BusyError, Interrupted, Radio, RadioError, events


def test_iterator_gives_each_event_once_and_goes_on(radio):
    told = radio.events()
    radio.tune("tx", 1, 7442000)
    assert list(told) == [("channel.1.tx.rf.frequency", 7442000), ("tx", 1, 7442000, False)]
    assert list(told) == []
    radio.tune("rx", 1, 7300000)
    assert next(told) == ("channel.1.rx.rf.frequency", 7300000)


def test_only_the_kinds_that_were_asked_for(radio):
    told = radio.events(events.Notified)
    radio.tune("tx", 1, 7442000)
    assert [type(item) for item in told] == [events.Notified]


def test_callback_is_told_in_order_and_may_drive_the_radio(radio):
    seen = []

    def follow(happened):
        seen.append(happened)
        if happened.direction == "tx":
            radio.tune("rx", 1, happened.carrier_khz - 161000)

    with_callback = radio.on_event(follow, events.Notified)
    radio.tune("tx", 1, 7442000)
    assert [(one.direction, one.carrier_khz) for one in seen] == [("tx", 7442000), ("rx", 7281000)]
    with_callback.cancel()
    with_callback.cancel()
    radio.tune("tx", 1, 7442000)
    assert len(seen) == 2


def test_what_a_callback_raises_the_command_raises_and_the_others_are_told(radio):
    def fail(happened):
        raise ZeroDivisionError(happened)

    radio.on_event(fail, events.Write)
    told = radio.events(events.Write)
    with pytest.raises(ZeroDivisionError):
        radio.tune("tx", 1, 7442000)
    assert len(list(told)) == 1
    assert radio.frequency("tx", 1) == 7442000


def test_events_are_told_in_their_order_where_a_function_drives_the_radio(radio):
    def follow(happened):
        if happened.direction == "tx":
            radio.tune("rx", 1, happened.carrier_khz - 161000)

    radio.on_event(follow, events.Notified)
    told, seen = radio.events(events.Notified), []
    radio.on_event(seen.append, events.Notified)
    radio.sweep("tx", 1, 7442000, 7443000, 1000)
    ways = [("tx", 7442000), ("tx", 7443000), ("rx", 7281000), ("rx", 7282000)]
    assert [(one.direction, one.carrier_khz) for one in seen] == ways
    assert [(one.direction, one.carrier_khz) for one in told] == ways


def test_functions_that_drive_the_radio_in_a_circle_are_ended(radio):
    tuned = []

    def again(happened):
        tuned.append(happened)
        radio.tune("tx", 1, 7442000)

    circle = radio.on_event(again)
    with pytest.raises(RadioError, match="have driven the radio 1000 times"):
        radio.tune("tx", 1, 7442000)
    assert 1000 < len(tuned) < 3000
    circle.cancel()
    assert len(radio.tune("tx", 1, 7442000)) == 1


def test_recursion_of_a_function_is_not_kept_for_later(radio):
    def sink(happened):
        raise RecursionError

    seen = []
    radio.on_event(sink)
    radio.on_event(seen.append)
    with pytest.raises(RecursionError):
        radio.tune("tx", 1, 7442000)
    assert seen == []


def interrupt_when_driven(radio):
    while True:
        try:
            radio.frequency("tx", 1)
        except BusyError:
            os.kill(os.getpid(), signal.SIGINT)
            return


def test_interrupt_goes_before_what_a_function_raises(radio):
    def fail(happened):
        raise ZeroDivisionError

    radio.on_event(fail, events.Write)
    threading.Thread(target=interrupt_when_driven, args=(radio,)).start()
    with pytest.raises(Interrupted, match="^sweep tx 1 7000000 7999999 1 0 was interrupted") as caught:
        radio.sweep("tx", 1, 7000000, 7999999, 1)
    assert 0 < len(caught.value.result) < 1000000
    assert isinstance(caught.value.__context__, ZeroDivisionError)


def test_iterator_that_nobody_has_any_more_gathers_nothing(radio):
    for _ in range(10):
        radio.events()
    assert not radio._listeners.are_there()
    kept = radio.events()
    assert radio._listeners.are_there()
    kept.close()
    assert not radio._listeners.are_there()


def test_subscription_says_what_it_is_of(radio):
    of_writes, of_all = radio.on_event(print, events.Write, events.Trace), radio.on_event(print)
    of_all.cancel()
    assert repr(of_writes) == "<Subscription of Write or Trace>"
    assert repr(of_all) == "<Subscription of all events, cancelled>"


def test_events_outlast_the_radio(board_file):
    with Radio(board_file) as radio:
        told = radio.events()
        radio.tune("tx", 1, 7442000)
    assert len(list(told)) == 2
    assert "closed" in repr(told)


def test_all_calls_are_told_to_who_asks_for_them(boards):
    with Radio(boards / "lo-leakage-18ghz.toml", calls=True) as radio:
        radio.temperature = 25
        called = {item.operation for item in radio.tune("tx", 1, 17727500).events if isinstance(item, events.Call)}
    assert "table-bilinear" in called


def test_kinds_are_classes(radio):
    for kind in ("write", int, object, (events.Write, events.Trace), np.array([1, 2]), [events.Write]):
        with pytest.raises(ArgumentTypeError, match="classes of events"):
            radio.events(kind)
        with pytest.raises(ArgumentTypeError, match="classes of events"):
            radio.on_event(print, kind)
