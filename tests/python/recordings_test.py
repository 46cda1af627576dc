"""Recordings, read record by record, compared, described and lived again."""

import os
import shutil
from pathlib import Path

import pytest

from frequencyhandler import ArgumentError, Board, ClosedError, InputError, Interrupted, Radio, RadioError, recordings


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


def test_recording_is_gone_through_by_several_at_a_time(recording):
    read = recordings.read(recording)
    records = [record.sequence for record in read]
    assert [(one.sequence, other.sequence) for one, other in zip(read, read)] == list(zip(records, records))
    half = iter(read)
    first = [next(half).sequence, next(half).sequence]
    assert [record.sequence for record in read] == records
    assert first + [record.sequence for record in half] == records


def test_losses_are_counted_once(recording):
    read = recordings.read(KEPT.with_name("minimal-cancel.rec"))
    for _ in range(3):
        list(zip(read, read))
    assert read.losses == recordings.Losses(0, 0)


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
    assert (same.not_compared, same.passed_over, same.difference) == (0, 0, None)
    assert not none.is_same and none.outcome == "unusable" and none.reason
    assert none.difference is None and len({same, none}) == 2


def test_replayed_recording_goes_by_the_name_that_was_given(recording, monkeypatch):
    monkeypatch.delenv("LD_PRELOAD", raising=False)
    other = os.fsencode(recording.parent) + b"/\xff.rec"
    shutil.copy(recording, other)
    assert os.fsencode(recordings.replay(other, radioctl=Path(os.environ["RADIOCTL"]))[0].file) == other


@pytest.fixture
def instead_of_radioctl(tmp_path):
    """A program that does as a test wants."""
    def make(*lines):
        file = tmp_path / "instead"
        file.write_text("#!/bin/sh\n" + "\n".join(lines) + "\n")
        file.chmod(0o755)
        return file
    return make


ANSWER = ('{"schema":1,"event":"replayed_recording","file":"x","outcome":"different","calls":3,"recorded_calls":7,'
          '"not_compared":1,"passed_over":2,"now":"driver-write"}')


def test_where_a_replay_goes_another_way_is_the_difference(recording, instead_of_radioctl):
    given, = recordings.replay(recording, radioctl=instead_of_radioctl(f"echo '{ANSWER}'"))
    assert (given.file, given.outcome, given.calls, given.recorded_calls) == (str(recording), "different", 3, 7)
    assert (given.not_compared, given.passed_over, given.difference) == (1, 2, {"now": "driver-write"})


@pytest.mark.parametrize("answer", ["hello", "[]", "{}", "1", '{"event": "replayed_recording"}'])
def test_answer_that_is_none_is_said(recording, instead_of_radioctl, answer):
    with pytest.raises(RadioError, match="an answer that is none"):
        recordings.replay(recording, radioctl=instead_of_radioctl(f"echo '{answer}'"))


def test_program_that_gives_up_has_its_say(recording, instead_of_radioctl):
    with pytest.raises(RadioError, match="radioctl replay: not today"):
        recordings.replay(recording, radioctl=instead_of_radioctl("echo not today >&2"))


def test_replay_tells_how_far_it_is(recording, instead_of_radioctl):
    told = []
    program = instead_of_radioctl(f"printf '%s' '{ANSWER[:40]}'", "sleep 0.2", f"echo '{ANSWER[40:]}'", f"printf '%s' '{ANSWER}'")
    assert len(recordings.replay(recording, recording, radioctl=program, progress=told.append)) == 2
    assert told == [(1, 2, "recordings", ""), (2, 2, "recordings", "")]
    with pytest.raises(ZeroDivisionError):
        recordings.replay(recording, radioctl=program, progress=lambda state: 1 / 0)
    with pytest.raises(LookupError):
        recordings.replay(recording, radioctl=program, progress=lambda state: [][0])


def test_cancelled_replay_has_what_was_done(recording, instead_of_radioctl):
    done = []
    program = instead_of_radioctl(f"echo '{ANSWER}'", "exec sleep 100")
    given = recordings.replay(recording, recording, radioctl=program, progress=done.append, cancel=lambda: bool(done))
    assert [one.calls for one in given] == [3]


def test_interrupted_replay_has_what_was_done(recording, instead_of_radioctl):
    program = instead_of_radioctl(f"echo '{ANSWER}'", "sleep 1", "kill -INT $PPID", "exec sleep 100")
    with pytest.raises(Interrupted, match="the replay was interrupted") as caught:
        recordings.replay(recording, recording, radioctl=program)
    assert [one.calls for one in caught.value.result] == [3]


def test_replay_without_its_program_says_so(recording):
    with pytest.raises(ArgumentError, match="expected the program"):
        recordings.replay(recording, radioctl="no-such-program")
    with pytest.raises(ArgumentError, match="at least one recording"):
        recordings.replay()


def test_described_board_does_what_was_recorded():
    description = recordings.describe(KEPT)
    assert (description.channels, description.drivers, description.variables, description.tables) == (2, 4, 0, 0)
    assert description.unknown == ()
    board = description.load()
    assert board.check() == () and [channel.type for channel in board.channels] == ["rf-module", "rf-module"]
    commands = [line for line in description.script.splitlines() if line and not line.startswith("#")]
    assert "tune tx 1 7442000 kHz" in commands and sum(line.startswith("expect") for line in commands) > 5
    with Radio(board) as radio:
        for command in commands:
            radio.execute(command, check=False)  # expectations hold or raise
        assert radio.frequency("tx", 1) == 7442000


def test_description_says_what_the_recording_does_not():
    description = recordings.describe(KEPT.with_name("minimal-loaded.rec"))
    assert description.unknown == (
        "the type of channel 1, which was concluded",
        "which answers are those of Channel.1.Tx.Rf.Lo.Cancellation.Frequency.To.Voltage.Mixer.I",
        "which answers are those of Channel.1.Tx.Rf.Lo.Cancellation.Frequency.To.Voltage.Mixer.Q")
    assert "2 tables; not known: the type of channel 1, which was concluded, " in repr(description)


def test_description_is_saved_as_board_and_script(tmp_path):
    description = recordings.describe(KEPT)
    description.save(tmp_path / "board.toml")
    assert [path.name for path in tmp_path.iterdir()] == ["board.toml"]
    description.save(tmp_path / "board.toml", tmp_path / "radio.script")
    assert (tmp_path / "board.toml").read_text() == description.board
    assert (tmp_path / "radio.script").read_text() == description.script
    assert Board.load(tmp_path / "board.toml").check() == ()


def test_neither_is_saved_where_one_cannot_be(tmp_path):
    board = tmp_path / "board.toml"
    board.write_text("as it was")
    description = recordings.describe(KEPT)
    with pytest.raises(InputError, match="cannot be written"):
        description.save(board, tmp_path / "nowhere" / "radio.script")
    with pytest.raises(InputError, match="cannot be written"):
        description.save(tmp_path / "nowhere" / "board.toml", tmp_path / "radio.script")
    assert board.read_text() == "as it was" and list(tmp_path.iterdir()) == [board]


def test_nothing_is_saved_over_the_recording_or_over_each_other(recording, tmp_path):
    before = recording.read_bytes()
    description = recordings.describe(recording)
    for places in [(recording,), (tmp_path / "b", recording), (tmp_path / "b", tmp_path / "b")]:
        with pytest.raises(ArgumentError, match="expected a file of its own"):
            description.save(*places)
    assert recording.read_bytes() == before and list(tmp_path.iterdir()) == [recording]


def test_recording_without_channels_is_not_described():
    with pytest.raises(InputError, match="no channel is in it") as caught:
        recordings.describe(KEPT.with_name("minimal-phases.rec"))
    assert caught.value.expected == "one that was built or initialised"


def test_recording_does_not_differ_from_itself():
    difference = recordings.diff(KEPT, KEPT)
    assert not difference and difference.counts == recordings.Counts(23, 0, 0, 0)
    assert (difference.header, difference.objects, difference.operations) == ({}, (), ())


def test_difference_is_told_call_by_call():
    difference = recordings.diff(KEPT.with_name("minimal-cancel.rec"), KEPT.with_name("minimal-throw.rec"))
    assert difference and difference.counts == recordings.Counts(6, 2, 0, 0)
    first, second = difference.operations
    assert first.before.kind == first.after.kind == "tune-tx"
    assert (first.before.numbers[0], second.before.numbers[0]) == (7442000, 7442001)
    write, other = first.calls[0]
    assert (write.kind, write.object, write.outcome) == ("driver-write", "channel.1.tx.rf.frequency", "cancelled")
    assert (other.kind, other.object, other.outcome) == ("driver-write", "channel.1.tx.rf.frequency", "threw")
    assert first.calls[1][0] is None and first.calls[1][1].kind == "trace-level"


def test_difference_is_of_what_is_wanted():
    before, after = KEPT, KEPT.with_name("ka-band-28ghz.rec")
    few = recordings.diff(before, after, limit=1)
    assert len(few.operations) == 1 and few.counts == recordings.Counts(2, 7, 14, 2)
    assert {one.before.channel for one in recordings.diff(before, after, channel=2).operations} == {2}
    only = [one.name for one in few.objects if one.kind == "driver" and one.only_in == "before"]
    assert only == ["channel.1.rx.rf.frequency", "channel.1.tx.rf.frequency", "channel.2.rx.rf.frequency",
                    "channel.2.tx.rf.frequency"]


@pytest.mark.parametrize("wanted", [{"driver": "nope"}, {"channel": 77}])
def test_nothing_compared_is_no_equality(wanted):
    with pytest.raises(InputError, match="nothing was compared") as caught:
        recordings.diff(KEPT, KEPT, **wanted)
    assert caught.value.file == str(KEPT)
    assert caught.value.expected == "operations that were asked for in one of them"


def test_machines_differ_in_the_header_and_in_nothing_else():
    difference = recordings.diff(KEPT, KEPT.with_name("rf-module-7ghz.armhf.rec"))
    assert not difference and difference.header["machine"] == ("x86_64", "arm")
