"""Tables looked at, compared and explained."""

import numpy as np
import pytest

from frequencyhandler import ChoiceError, InputError, tables

I_TABLE = "Channel.1.Tx.Rf.Lo.Cancellation.Frequency.To.Voltage.Mixer.I"


def test_flipped_sign_is_found_in_memory_and_placed(leaking):
    assert tables.lint(leaking) == ()
    table = leaking.tables[I_TABLE]
    values = table.values.copy()
    values[3, 3] = -values[3, 3]
    leaking.tables[I_TABLE] = table.axis1, table.axis2, values
    found = tables.lint(leaking)
    assert len(found) >= 1
    assert str(int(table.axis1[3])) in found[0].text


def test_csv_files_are_looked_at(boards):
    assert tables.lint(boards / "lo-leakage-18ghz.channel-1.csv") == ()
    with pytest.raises(InputError) as caught:
        tables.lint(boards / "logs" / "day-cycle.csv")
    assert caught.value.file.endswith("day-cycle.csv")


def test_difference_has_the_nodes_that_moved(leaking):
    changed = leaking.copy()
    table = changed.tables[I_TABLE]
    values = table.values.copy()
    values[0, 0] += 10
    changed.tables[I_TABLE] = table.axis1, table.axis2, values
    difference = tables.diff(leaking, changed, channel=1)
    assert difference
    nodes = difference.channels[0].nodes
    moved = nodes[nodes["i_before"] != nodes["i_after"]]
    assert moved.size == difference.channels[0].moved == 1
    assert moved["carrier_khz"][0] == table.axis1[0]
    assert np.isfinite(moved["dbc_after"][0])
    assert not tables.diff(leaking, leaking)


def test_channel_that_has_to_be_chosen_is_said(leaking, boards, tmp_path):
    text = (boards / "lo-leakage-18ghz.channel-1.csv").read_text()
    file = tmp_path / "anonymous.csv"
    file.write_text("".join(line + "\n" for line in text.splitlines() if not line.startswith("# channel")))
    with pytest.raises(ChoiceError) as caught:
        tables.diff(leaking, file)
    assert caught.value.choice == "channel"
    assert ", or channel=... with one of those of " in str(caught.value) and str(caught.value).endswith(": 1, 2")


def test_written_correction_is_explained(leaking):
    reason = tables.why(leaking, 1, "17.74 GHz", 20)
    assert [branch.branch for branch in reason.branches] == ["I", "Q"]
    for branch in reason.branches:
        assert sum(weight for *_, weight in branch.nodes) == pytest.approx(1)
        assert branch.written == branch.computed == round(
            sum(value * weight for _, _, value, weight in branch.nodes))
    assert reason.level_dbc < reason.level_without_dbc
    assert reason.disagreements == ()
