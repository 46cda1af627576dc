"""An acceptance test of a radio by pytest.

    pytest -p frequencyhandler.pytest_plugin --radio-board boards/rf-module-7ghz.toml examples/test_acceptance.py

With --radio-hardware the same tests drive the real radio; those that have hardware fail are skipped then.
"""

import pytest

from frequencyhandler import plan


def test_board_has_nothing_that_does_not_fit(board):
    assert board.check() == ()


def test_radio_boots(radio):
    radio.expect.result("ok")
    assert [phase.number for phase in radio.phases] == [11, 5, 20]


@pytest.mark.parametrize("carrier", ["7.428 GHz", "7.442 GHz", "7.582 GHz"])
def test_carrier_reaches_hardware_and_observers(radio, carrier):
    outcome = radio.tune("tx", 1, carrier)
    assert outcome.writes and not outcome.failed_writes
    radio.expect.frequency("tx", 1, carrier)
    radio.expect.notified("tx", 1, carrier)
    radio.expect.no_trace()


def test_refused_carrier_is_traced_and_told_all_the_same(radio, mocked_hardware):
    mocked_hardware.refuse("channel.1.tx.rf.frequency", 0x8001, times=1)
    radio.tune("tx", 1, 7442000)
    radio.expect.trace("Write to driver failed")
    radio.expect.notified("tx", 1, 7442000)
    assert mocked_hardware.refused == (("channel.1.tx.rf.frequency", 7442000, 0x8001),)
    radio.tune("tx", 1, 7442000)
    assert mocked_hardware.writes == (("channel.1.tx.rf.frequency", 7442000),)


def test_each_carrier_is_as_good_as_the_plan_says(board):
    if not board.rasters:
        pytest.skip("the board has no raster")
    result = plan.audit(board)
    assert result.is_good, [group.text for row in result.rows for group in row.findings]
