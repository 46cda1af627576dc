"""Recordings, read record by record."""

import os
import shutil
from pathlib import Path

import pytest

from frequencyhandler import ArgumentError, ClosedError, InputError, recordings


KEPT = Path(__file__).parents[1] / "recording" / "kept" / "rf-module-7ghz.rec"


@pytest.fixture
def recording(tmp_path):
    """What passed while radioctl carried out the script of a board; may be changed."""
    file = tmp_path / "radio.rec"
    shutil.copy(KEPT, file)
    return file


def test_records_are_those_that_the_program_shows(recording):
    with recordings.read(recording) as read:
        tunes = [record for record in read if record.kind in ("tune-tx", "tune-rx")]
        assert [(record.kind, record.channel, record.numbers[0]) for record in tunes[:3]] == [
            ("tune-tx", 1, 7442000), ("tune-rx", 1, 7603000), ("tune-tx", 2, 7477000)]
        assert all(record.incoming for record in tunes)
        assert any(record.kind == "driver-write" and record.object == "channel.1.tx.rf.frequency" for record in read)
        assert read.losses == recordings.Losses(0, 0)
        assert read.header.word_bits == 64 and read.header.program
        assert {one.kind for one in read.objects}


def test_recording_can_be_gone_through_again(recording):
    read = recordings.read(recording)
    assert [record.sequence for record in read] == [record.sequence for record in read]


def test_closed_recording_says_so(recording):
    with recordings.read(recording) as read:
        records = iter(read)
        next(records)
    with pytest.raises(ClosedError, match="is closed"):
        next(records)
    with pytest.raises(ClosedError):
        read.header
    assert repr(read).endswith(", closed>")


def test_what_no_recorder_writes_is_refused_with_its_place(recording):
    recording.write_bytes(recording.read_bytes()[:100])
    with pytest.raises(InputError) as caught:
        recordings.read(recording)
    assert caught.value.file == str(recording)


def test_library_does_again_what_it_did(recording, monkeypatch, tmp_path):
    monkeypatch.delenv("LD_PRELOAD", raising=False)
    (tmp_path / "none.rec").write_bytes(b"none")
    same, none = recordings.replay(recording, tmp_path / "none.rec", radioctl=os.environ["RADIOCTL"])
    assert same.is_same and same.outcome == "identical" and same.calls == same.recorded_calls > 0
    assert not none.is_same and none.outcome == "unusable" and none.reason


def test_replay_without_its_program_says_so(recording):
    with pytest.raises(ArgumentError, match="expected the program"):
        recordings.replay(recording, radioctl="no-such-program")
    with pytest.raises(ArgumentError, match="at least one recording"):
        recordings.replay()
