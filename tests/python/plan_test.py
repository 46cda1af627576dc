"""Carriers explained and audited."""

import csv
import io
import os
import subprocess
import sys
import threading

import numpy as np
import pytest

from frequencyhandler import ArgumentError, Board, InputError, plan


def radioctl(*arguments):
    done = subprocess.run([os.environ["RADIOCTL"], *map(str, arguments)], capture_output=True, text=True,
                          env={name: value for name, value in os.environ.items() if name != "LD_PRELOAD"})
    return done.stdout


def test_explanation_is_that_of_the_program(boards):
    file = boards / "microwave-if-8ghz.toml"
    told = plan.explain(file, "tx", 1, "7.75 GHz")
    assert told.is_good and told.error_hz == 0 and told.produced_hz == 7750000000
    shown = radioctl("plan", "explain", file, "--channel", 1, "--tx", 7750000)
    for step in told.steps:
        assert step.formula in shown


def test_array_has_what_the_program_writes_as_csv(boards):
    file = boards / "microwave-hz-cs-offset-18ghz.toml"
    result = plan.audit(file)
    rows = list(csv.DictReader(radioctl("plan", "audit", file, "--csv", "-").splitlines()))
    assert result.count == len(rows) == result.carriers.size
    words = {"dsp_offset_khz": "DSP offset", "if_pll_khz": "IF PLL", "rf_pll": "RF PLL", "charge_pump": "charge pump",
             "mixer_i": "mixer I", "mixer_q": "mixer Q"}
    for row, carrier in zip(rows, result.carriers):
        assert (int(row["channel"]), row["direction"], int(row["carrier_khz"])) == (
            carrier["channel"], carrier["direction"], carrier["carrier_khz"])
        assert result.rows[carrier["row"]].raster == row["raster"]
        assert float(row["produced_hz"]) == carrier["produced_hz"] and float(row["error_hz"]) == carrier["error_hz"]
        for column, name in words.items():
            word = plan.WORDS.index(name)
            written = bool(carrier["written"] & (1 << word))
            assert row[column] == (str(carrier["words"][word]) if written else "")


def test_words_and_bits_have_names(boards):
    carriers = plan.audit(boards / "microwave-if-8ghz.toml").carriers
    first = carriers[0]
    bit = plan.WORDS.index("RF PLL")
    assert first["written"] & (1 << bit)
    assert first["words"][bit] > 0
    assert set(np.unique(carriers["direction"])) == {"tx", "rx"}
    assert not carriers["findings"].any()
    assert (carriers["error_hz"] == 0).all()


def test_finding_is_in_its_row_and_in_the_bits(boards):
    file = boards / "microwave-if-8ghz.toml"
    file.write_text(file.read_text().replace("rf_pll = [3800000, 4200000]", "rf_pll = [3900000, 4200000]"))
    result = plan.audit(file)
    kind = plan.FINDINGS.index("rf-pll-out-of-range")
    outside = int(np.count_nonzero(result.carriers["findings"] & (1 << kind)))
    assert outside == result.outside > 0
    assert not result.is_good
    assert {group.kind for row in result.rows for group in row.findings} == {"rf-pll-out-of-range"}


def test_nothing_is_kept_where_that_is_not_wanted(boards):
    result = plan.audit(boards / "microwave-if-8ghz.toml", keep=False)
    assert result.carriers is None and result.count > 40000


def test_cancelled_audit_gives_what_it_has(boards):
    told = []
    stop = threading.Event()

    def progress(state):
        told.append(state)
        stop.set()

    file = boards / "microwave-if-8ghz.toml"
    file.write_text(file.read_text().replace("step = 10\n", "step = 1\n"))
    result = plan.audit(file, progress=progress, cancel=stop)
    assert not result.complete
    assert 0 < result.count == result.carriers.size < 415000
    assert told[0].unit == "carriers" and told[0].done % 1024 == 0


def test_what_progress_raises_ends_the_audit(boards):
    def progress(state):
        raise ZeroDivisionError

    with pytest.raises(ZeroDivisionError):
        plan.audit(boards / "microwave-if-8ghz.toml", progress=progress)


def test_bar_is_shown_on_standard_error(boards, capsys):
    plan.audit(boards / "microwave-if-8ghz.toml", progress=True)
    assert "carriers" in capsys.readouterr().err


def test_bar_is_drawn_by_tqdm_where_it_is_installed(boards, capsys):
    pytest.importorskip("tqdm")
    plan.audit(boards / "microwave-if-8ghz.toml", progress=True)
    assert " carriers/s]" in capsys.readouterr().err


def test_line_is_shown_without_tqdm(boards, capsys, monkeypatch):
    monkeypatch.setitem(sys.modules, "tqdm", None)
    count = plan.audit(boards / "microwave-if-8ghz.toml", progress=True).count
    said = capsys.readouterr().err
    assert said.endswith(f"\r100 % of {count} carriers\n") and "|" not in said


def test_nothing_is_shown_where_standard_error_is_closed(boards, monkeypatch):
    closed = io.StringIO()
    closed.close()
    monkeypatch.setattr(sys, "stderr", closed)
    assert plan.audit(boards / "microwave-if-8ghz.toml", progress=True).is_good


def test_other_threads_go_on_meanwhile(boards):
    counted = [0]
    stop = threading.Event()

    def count():
        while not stop.is_set():
            counted[0] += 1

    thread = threading.Thread(target=count)
    thread.start()
    before = counted[0]
    plan.audit(boards / "microwave-if-8ghz.toml")
    stop.set()
    thread.join()
    assert counted[0] > before


def test_board_without_rasters_is_refused(board_file):
    with pytest.raises(InputError, match="no carriers to audit"):
        plan.audit(Board.load(board_file))


def test_channel_that_there_is_none_of(board_file):
    with pytest.raises(ArgumentError) as caught:
        plan.explain(board_file, "tx", 9, 7442000)
    assert caught.value.expected == "one of 1, 2"
