"""Calibrations, whole, ended and gone on with."""

import shutil
import threading
import time

import pytest

from frequencyhandler import ArgumentError, Board, ChoiceError, InputError, calibrate, qualify

SMALL = dict(method="search", band=("17.7275 GHz", "17.81 GHz"), step="27.5 MHz", temperatures=[25])


def test_search_finds_corrections_because_modelled_time_passes(leaking, tmp_path):
    result = calibrate(leaking, 1, journal=tmp_path / "j", tables=tmp_path / "t.csv", accept_fail=True, **SMALL)
    assert result.complete and len(result.points) == result.wanted == 4
    assert all(point.after_dbc < -70 < -30 < point.before_dbc for point in result.points)
    assert result.array["carrier_khz"].tolist() == [17727500, 17755000, 17782500, 17810000]
    assert result.qualification.is_good
    assert all(len(point.probes) == 4 * point.iterations for point in result.points)


def test_fit_holds_the_limits_and_stores_the_tables(leaking, tmp_path):
    result = calibrate(leaking, 1, journal=tmp_path / "j", tables=tmp_path / "t.csv")
    assert result.is_good and result.verdict.kind == "PASS"
    assert result.tables == str(tmp_path / "t.csv") and (tmp_path / "t.csv").exists()
    assert result.claim_dbc < -74
    assert "PASS" in repr(result)


def test_board_that_was_loaded_before_keeps_its_tables(leaking):
    name = "Channel.1.Tx.Rf.Lo.Cancellation.Frequency.To.Voltage.Mixer.I"
    before = leaking.tables[name]
    found = calibrate(leaking, 1, accept_fail=True, **SMALL)
    assert found.tables == before.file
    after = Board.load(leaking.file).tables[name]
    assert after.axis1.tolist() == [17727500, 17755000, 17782500, 17810000] and before.axis1.size > 4
    assert leaking.tables[name].axis1.tolist() == before.axis1.tolist()
    assert leaking.tables[name].values.tolist() == before.values.tolist()


def test_cancelled_calibration_is_not_good(leaking, tmp_path):
    part = calibrate(leaking, 1, journal=tmp_path / "j", tables=tmp_path / "t.csv", cancel=lambda: True)
    assert not part.complete and not part.is_good


def test_calibration_whose_tables_cannot_be_stored_is_not_good(leaking, tmp_path):
    (tmp_path / "away").mkdir()

    def take_away(point):
        shutil.rmtree(tmp_path / "away", ignore_errors=True)

    lost = calibrate(leaking, 1, journal=tmp_path / "j", tables=tmp_path / "away" / "t.csv", on_point=take_away)
    assert lost.trouble is not None and lost.tables is None and not lost.is_good


def test_cancelled_calibration_goes_on_where_it_was(leaking, tmp_path):
    stop = threading.Event()
    files = dict(journal=tmp_path / "j", tables=tmp_path / "t.csv")
    seen = []

    def on_point(point):
        seen.append(point)
        if len(seen) == 2:
            stop.set()
            time.sleep(0.5)  # the next probe asks, since it was not asked for as long

    def cancel():
        return stop.is_set()

    slow = dict(SMALL, band=("17.7275 GHz", "18.6 GHz"))
    part = calibrate(leaking, 1, on_point=on_point, cancel=cancel, accept_fail=True, **files, **slow)
    assert not part.complete and 2 <= len(seen) < part.wanted
    assert part.tables is None and part.journal == str(tmp_path / "j")
    assert not part.is_good
    with pytest.raises(ChoiceError) as caught:
        calibrate(leaking, 1, **files, **slow)
    assert str(caught.value) == (f'{tmp_path / "j"}: of a calibration that is not finished; beginning="resume" goes on with it, '
                                 'beginning="restart" keeps it as a backup and begins anew')
    whole = calibrate(leaking, 1, beginning="resume", accept_fail=True, **files, **slow)
    assert whole.complete and whole.known_probes > 0
    again = calibrate(leaking, 1, accept_fail=True, journal=tmp_path / "j2", tables=tmp_path / "t2.csv", **slow)
    assert [(one.i, one.q) for one in again.points] == [(one.i, one.q) for one in whole.points]


def test_what_a_listener_raises_ends_it_and_the_journal_stays(leaking, tmp_path):
    def on_point(point):
        raise ZeroDivisionError

    with pytest.raises(ZeroDivisionError):
        calibrate(leaking, 1, on_point=on_point, journal=tmp_path / "j", tables=tmp_path / "t.csv", **SMALL)
    assert (tmp_path / "j").exists() and not (tmp_path / "t.csv").exists()


def test_progress_is_told_with_its_unit(leaking, tmp_path):
    told = []
    calibrate(leaking, 1, journal=tmp_path / "j", tables=tmp_path / "t.csv", progress=told.append)
    assert told[-1].unit == "probes" and 0 < told[-1].done <= told[-1].total


def test_files_of_the_board_are_not_overwritten(boards, leaking):
    table = boards / "lo-leakage-18ghz.channel-1.csv"
    before = table.read_bytes()
    with pytest.raises(ArgumentError, match="expected a file of its own"):
        calibrate(leaking, 1, journal=table, beginning="restart", **SMALL)
    assert table.read_bytes() == before


@pytest.mark.parametrize("wrong, words", [
    (dict(method="fit", step="27.5 MHz"), "not together with the method fit"),
    (dict(SMALL, probes=100), "not together with the method search"),
    (dict(temperatures=[25, 25]), "each temperature once"),
    (dict(temperatures=[300]), "from -100 to 200"),
    (dict(band=(18000000, 17000000)), "lowest value first"),
    (dict(shrink=1.5), "between 0 and 1"),
    (dict(beginning="offline"), "expected a journal"),
    (dict(probes=1), "from 60 to"),
    (dict(serial=""), "1 to 200 characters"),
])
def test_what_cannot_be_asked_for_is_said(leaking, tmp_path, wrong, words):
    with pytest.raises(ArgumentError, match=words):
        calibrate(leaking, 1, **dict(dict(journal=None), **wrong))


def test_channel_without_a_modelled_leakage_is_refused(board_file):
    with pytest.raises(InputError, match="leakage"):
        calibrate(Board.load(board_file), 1)


def test_chain_is_qualified(leaking):
    found = qualify(leaking, 1)
    assert found.detector == "channel.1.tx.rf.detector.v"
    assert found.result.is_good and found.result.settle_time_ms == 5
    assert found.result.slope == pytest.approx(25, abs=1)


def test_qualification_tells_its_readings_and_is_cancelled(leaking):
    told = []
    found = qualify(leaking, 1, progress=told.append)
    assert told[-1] == (found.result.taken, found.result.taken, "readings", "")
    told.clear()
    stopped = qualify(leaking, 1, real_time=True, progress=told.append, cancel=lambda: bool(told) and told[-1].done >= 2)
    assert stopped.result.interrupted and not stopped.result.is_good
    assert 0 < stopped.result.taken < 32
    assert {one.total for one in told[:-1]} == {38} and [one.done for one in told] == sorted(one.done for one in told)
