"""Events, as an iterator and as calls."""

import pytest

from frequencyhandler import ArgumentTypeError, Radio, events


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
    with pytest.raises(ArgumentTypeError):
        radio.events("write")
