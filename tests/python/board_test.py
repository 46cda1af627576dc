"""Boards, read and changed in memory."""

import copy
import pickle
import subprocess
import sys

import numpy as np
import pytest

from frequencyhandler import ArgumentError, ArgumentTypeError, Board, InputError, Radio, Table, UnknownName, tables

I_TABLE = "Channel.1.Tx.Rf.Lo.Cancellation.Frequency.To.Voltage.Mixer.I"
Q_TABLE = I_TABLE[:-1] + "Q"


def test_wrong_file_says_file_line_and_what_was_expected(tmp_path):
    file = tmp_path / "wrong.toml"
    file.write_text('name = "x"\nchannels = 3\n')
    with pytest.raises(InputError) as caught:
        Board.load(file)
    assert caught.value.file == str(file)
    assert caught.value.line == 2
    assert caught.value.expected
    assert str(caught.value) == f"{file}:2: {caught.value.text}"


def test_channels_limits_and_rasters_are_those_of_the_file(leaking):
    assert [(one.number, one.type, one.has_leakage) for one in leaking.channels] == [
        (1, "microwave-hz", True), (2, "microwave-hz", True)]
    assert leaking.limits.temperature == (-33, 55)
    assert leaking.limits.leakage_dbc == -74.0
    assert leaking.limits.if_pll_khz is None
    assert leaking.rasters[0].rows[0] == ("tx", 17727500, 27500, 35)


def test_check_finds_what_the_board_lacks(boards):
    file = boards / "rf-module-7ghz.toml"
    file.write_text(file.read_text().replace("channel.1.tx.rf.frequency", "channel.1.tx.rf.frequenzy"))
    found = Board.load(file).check()
    assert any(finding.severity in ("error", "warning") and "channel.1.tx.rf.frequency" in finding.text
               for finding in found)
    assert all(finding.file == str(file) for finding in found)


def test_tables_are_arrays_of_int32(leaking):
    table = leaking.tables[I_TABLE]
    assert table.values.dtype == np.int32
    assert table.values.shape == (table.axis1.size, table.axis2.size)
    assert table.column == "i"
    assert table.file.endswith("lo-leakage-18ghz.channel-1.csv")


def test_changed_table_is_what_the_next_radio_writes(leaking):
    table = leaking.tables[I_TABLE]
    leaking.tables[I_TABLE] = table.axis1, table.axis2, np.full_like(table.values, 77)
    with Radio(leaking) as radio:
        radio.temperature = 25
        assert radio.tune("tx", 1, "17.7275 GHz")["channel.1.tx.rf.mixer.i"] == 77


def test_radio_that_is_up_keeps_its_tables(leaking):
    with Radio(leaking) as radio:
        radio.temperature = 25
        before = radio.tune("tx", 1, "17.7275 GHz")["channel.1.tx.rf.mixer.i"]
        table = leaking.tables[I_TABLE]
        leaking.tables[I_TABLE] = Table(table.axis1, table.axis2, table.values + 100)
        radio.tune("tx", 1, "17.755 GHz")
        assert radio.tune("tx", 1, "17.7275 GHz")["channel.1.tx.rf.mixer.i"] == before


def test_value_that_would_be_lost_is_refused_by_the_array(leaking):
    leaking.tables.add("one", ([1, 2], None, [3, 4]))
    for name in (I_TABLE, "one"):
        table = leaking.tables[name]
        for array in (table.axis1, table.axis2, table.values):
            if array is not None:
                with pytest.raises(ValueError, match="read-only"):
                    array[...] = 7
    copied = leaking.tables["one"].values.copy()
    copied[0] = 7
    leaking.tables["one"] = [1, 2], None, copied
    assert leaking.tables["one"].values.tolist() == [7, 4]


def test_replaced_table_is_none_of_its_file(leaking):
    table = leaking.tables[I_TABLE]
    leaking.tables[I_TABLE] = table
    assert (leaking.tables[I_TABLE].file, leaking.tables[I_TABLE].column) == (table.file, "i")  # as it was
    leaking.tables[I_TABLE] = table.axis1, table.axis2, table.values + 10
    for board in (leaking, leaking.copy(), pickle.loads(pickle.dumps(leaking))):
        assert (board.tables[I_TABLE].file, board.tables[I_TABLE].column) == (None, None)
        assert board.tables[Q_TABLE].column == "q"
        branches = tables.why(board, 1, "17.7275 GHz", 25).branches
        assert [(one.file, one.column) for one in branches] == [(None, None), (table.file, "q")]
    assert Board.load(leaking.file).tables[I_TABLE].file == table.file


def test_copy_has_tables_of_its_own(leaking):
    other = leaking.copy()
    other.tables.add("new", ([1, 2], None, [3, 4]))
    assert "new" in other.tables
    assert "new" not in leaking.tables
    assert other.tables["new"].axis2 is None


@pytest.mark.parametrize("table, kind", [
    (([2, 1], None, [0, 0]), ArgumentError),
    (([1, 1], None, [0, 0]), ArgumentError),
    (([1, 2], None, [0, 0, 0]), ArgumentError),
    (([1, 2], [1], [0, 0]), ArgumentError),
    (([], None, []), ArgumentTypeError),
    (([1, 2], None, [0, 2**31]), ArgumentError),
    (([1, 2], None, [0.5, 1.0]), ArgumentTypeError),
    (([1, 2], None, [[1], [2, 3]]), ArgumentError),
    ("table", ArgumentTypeError),
    (([1, 2], None), ArgumentTypeError),
])
def test_what_is_no_table_is_refused_and_nothing_changed(leaking, table, kind):
    with pytest.raises(kind) as caught:
        leaking.tables.add("new", table)
    assert "expected" in str(caught.value)
    assert "new" not in leaking.tables


def test_repr_says_what_it_is(leaking):
    assert repr(leaking).startswith("<Board '") and "2 channels" in repr(leaking)
    assert repr(leaking.tables).startswith("<4 tables of ")
    assert repr(Table(np.array([1, 5], np.int32), None, np.array([-3, 4], np.int32))) == (
        "<Table of 2 values from -3 to 4, axis 1 from 1 to 5>")
    leaking.tables[I_TABLE] = [17000000, 18000000], [-5, 0, 25], [[1, 2, 3], [4, 5, 6]]
    assert leaking.tables[Q_TABLE].file in repr(leaking.tables[Q_TABLE])
    assert repr(leaking.tables[I_TABLE]) == (
        "<Table of 2 x 3 values from 1 to 6, axis 1 from 17000000 to 18000000, axis 2 from -5 to 25>")


def test_table_that_is_yet_to_be_calibrated_says_so(boards):
    (boards / "lo-leakage-18ghz.channel-1.csv").unlink()
    table = Board.load(boards / "lo-leakage-18ghz.toml").tables[I_TABLE]
    assert not table.is_there and repr(table).startswith("<Table, nothing calibrated yet of '")


def test_misspelt_table_is_not_added(leaking):
    table = leaking.tables[I_TABLE]
    with pytest.raises(UnknownName) as caught:
        leaking.tables[I_TABLE + "x"] = table
    assert caught.value.expected == I_TABLE
    with pytest.raises(UnknownName):
        leaking.tables["x"]
    with pytest.raises(ArgumentError, match="expected another name"):
        leaking.tables.add(I_TABLE, table)
    with pytest.raises(TypeError):
        del leaking.tables[I_TABLE]
    assert len(leaking.tables) == 4


def test_table_with_places_that_have_no_value_is_refused(leaking):
    table = leaking.tables[I_TABLE]
    with pytest.raises(ArgumentError, match="an array with a mask"):
        leaking.tables[I_TABLE] = table.axis1, table.axis2, np.ma.masked_array(table.values, mask=table.values != 0)
    leaking.tables[I_TABLE] = table.axis1, table.axis2, np.ma.masked_array(table.values)


def test_misspelt_property_of_a_board_is_not_taken(leaking):
    with pytest.raises(AttributeError):
        leaking.nam = "x"


def test_pickled_board_has_its_tables_in_another_process(leaking, tmp_path):
    table = leaking.tables[I_TABLE]
    leaking.tables[I_TABLE] = table.axis1, table.axis2, np.full_like(table.values, 77)
    leaking.tables.add("new", ([1, 2], None, [3, 4]))
    (tmp_path / "board").write_bytes(pickle.dumps(leaking))
    there = ("import pickle, sys; board = pickle.load(open(sys.argv[1], 'rb')); "
             "print(board.file, len(board.tables), set(board.tables[sys.argv[2]].values.ravel().tolist()), *board.tables['new'].values)")
    done = subprocess.run([sys.executable, "-c", there, tmp_path / "board", I_TABLE], capture_output=True, text=True)
    assert done.stdout == f"{leaking.file} 5 {{77}} 3 4\n", done.stderr


def test_pickled_board_whose_file_is_gone_says_so(boards):
    pickled = pickle.dumps(Board.load(boards / "rf-module-7ghz.toml"))
    (boards / "rf-module-7ghz.toml").unlink()
    with pytest.raises(InputError, match="rf-module-7ghz.toml: cannot be read"):
        pickle.loads(pickled)


@pytest.mark.parametrize("copied", [copy.copy, copy.deepcopy, Board.copy])
def test_copied_board_is_another(leaking, copied):
    other = copied(leaking)
    other.tables.add("new", ([1, 2], None, [3, 4]))
    assert other.file == leaking.file and "new" not in leaking.tables


def test_what_is_expected_is_what_the_package_says_and_not_what_was_given(tmp_path, leaking):
    with pytest.raises(ArgumentError) as caught:
        leaking.tables.add(I_TABLE, "expected nothing")
    assert caught.value.expected == "another name, or tables[name] = ..."
    file = tmp_path / "b.toml"
    file.write_text('name = "x"\n"expected nothing" = 3\n')
    with pytest.raises(InputError) as caught:
        Board.load(file)
    assert "nothing" not in (caught.value.expected or "")
    assert pickle.loads(pickle.dumps(caught.value)).expected == caught.value.expected
    with Radio(leaking) as radio:
        with pytest.raises(ArgumentError) as caught:
            radio.execute(["tune", "expected no, expected up", "1", "7442000"])
        assert caught.value.expected == "tx or rx"
