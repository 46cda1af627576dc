"""Temperature logs replayed."""

import numpy as np
import pytest

from frequencyhandler import ArgumentError, InputError, thermal

BOARD = "iq-compensation-18ghz.toml"


def test_log_of_arrays_is_as_good_as_a_file(boards):
    log = thermal.read_log(boards / "logs" / "day-cycle.csv")
    of_file = thermal.replay(boards / BOARD, boards / "logs" / "day-cycle.csv")
    of_arrays = thermal.replay(boards / BOARD, log)
    assert of_file.is_good and of_arrays.is_good
    assert np.array_equal(of_file.moments, of_arrays.moments)
    assert of_file.samples == log[0].size


def test_moments_have_what_was_written_and_how_clean_it_is(boards):
    result = thermal.replay(boards / BOARD, ([0, 60, 120], [-5, 10, 10]))
    moments = result.moments
    first = moments[moments["channel"] == result.channels[0].channel]
    assert first["degrees"].tolist() == [-5, 10]
    assert first["seconds"].tolist() == [0, 60]
    assert (first["written"] & 0b1111 == 0b1111).all()
    assert (first["image_dbc"] < first["image_without_dbc"]).all()
    gain = next(driver for driver in result.channels[0].drivers if driver.correction == "gain")
    assert first["values"][-1][thermal.CORRECTIONS.index("gain")] == gain.value
    assert gain.writes == 2


def test_verdict_is_that_of_the_limits(boards):
    result = thermal.replay(boards / BOARD, boards / "logs" / "cold-start.csv")
    assert result.verdict.kind == "PASS" and result.verdict
    assert {limit.name for limit in result.verdict.limits} == {"image", "carrier_leakage"}


@pytest.mark.parametrize("log, words", [
    (([], []), "at least one"),
    (([0, 0], [1, 2]), "after the one before it"),
    (([0, 1], [1]), "as many of each"),
    (([0], [300]), "from -100 to 200"),
    (([-1], [20]), "from 0 to"),
])
def test_what_is_no_log_is_refused(boards, log, words):
    log = tuple(np.array(part, dtype=np.int64) for part in log)
    with pytest.raises(ArgumentError, match=words):
        thermal.replay(boards / BOARD, log)


def test_board_without_compensation_is_refused(board_file, boards):
    with pytest.raises(InputError):
        thermal.replay(board_file, boards / "logs" / "day-cycle.csv")


def test_carriers_are_those_that_were_asked_for(boards):
    result = thermal.replay(boards / BOARD, ([0], [20]), carriers={1: "18.0 GHz"}, keep=False)
    assert result.channels[0].carrier_khz == 18000000
    assert result.moments is None
