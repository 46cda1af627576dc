"""Units that were once measured as transmitters of a laboratory: from the store, from journals and from recordings."""
import json
import os

import pytest

from support import BOARD, events, radioctl, trials_of, write_laboratory

RECORDER = os.environ['RADIO_RECORDER']

LABORATORY = '''board = "board.toml"
channel = 1
seed = 1
units = "month.units"

[[settings]]
name = "coarse"
min_delta = 60
qualify = false

[[settings]]
name = "fine"
min_delta = 3
qualify = false
'''

# How much the units of the line leak, in dBc, at 25 degrees and 18 GHz.
LEVELS = {'A1': -26.0, 'A2': -29.0}


def calibrate(folder, unit, level=None):
    """Calibrates a unit that leaks so much, recorded; its run goes into the store beside it."""
    board = folder / f'{unit}.toml'
    board.write_text(BOARD.replace('level = -26.0206', f'level = {level or LEVELS[unit]}'))
    recorder = {'LD_PRELOAD': RECORDER, 'RADIO_RECORDING': f'{unit}.rec', 'RADIO_RECORDING_SIZE': '16M',
                'RADIO_RECORDING_UNIT': unit}
    ran = radioctl(folder, 'calibrate', board.name, '--channel', 1, '--serial', unit, '--station', 'bench 1', '--journal',
                   f'{unit}.journal', '--out', f'{unit}.csv', '--store', 'sqlite:runs.db', '--no-qualify', '--accept-fail',
                   '--restart', env={**os.environ, **recorder})
    assert ran.returncode == 0, ran.stderr


@pytest.fixture(scope='module')
def line(tmp_path_factory):
    """Two units, measured."""
    folder = tmp_path_factory.mktemp('line')
    write_laboratory(folder)
    for unit in LEVELS:
        calibrate(folder, unit)
    return folder


def units(folder, *words):
    return radioctl(folder, 'laboratory', 'units', 'board.toml', '--channel', 1, '--out', 'month.units', *words)


def units_in(folder):
    return [json.loads(text) for text in (folder / 'month.units').read_text().splitlines()[1:]]


def leaks(unit):
    (path,) = unit['paths']
    return path['level']


@pytest.mark.parametrize('sources', [['--store', 'sqlite:runs.db'], ['A1.journal', 'A2.journal'], ['A1.rec', 'A2.rec']],
                         ids=['store', 'journals', 'recordings'])
def test_units_leak_as_they_were_measured(line, sources):
    ran = units(line, *sources)
    assert ran.returncode == 0, ran.stderr
    assert ran.stdout.splitlines()[-1] == '2 units in month.units'
    found = units_in(line)
    assert [unit['unit'] for unit in found] == ['A1', 'A2']
    assert [leaks(unit) for unit in found] == [pytest.approx(level, abs=0.05) for level in LEVELS.values()]
    assert [unit['places'] for unit in found] == [6, 6]
    assert all(unit['detector']['slope'] == pytest.approx(25, abs=0.1) for unit in found)


def test_new_settings_are_tried_on_the_units_of_the_store(line):
    assert units(line, '--store', 'sqlite:runs.db').returncode == 0
    (line / 'last.toml').write_text(LABORATORY)
    ran = radioctl(line, 'laboratory', 'last.toml', '--restart')
    assert ran.returncode in (0, 1), ran.stderr
    trials = trials_of((line / 'last.results').read_text())
    assert [(trial['unit'], trial['settings']) for trial in trials] == [('A1', 0), ('A1', 1), ('A2', 0), ('A2', 1)]
    # The most is at 50 degrees and 18.1 GHz: 25 * 0.01 dB and 0.1 * 2 dB more than at 25 degrees and 18 GHz.
    assert [trial['uncorrected_dbc'] for trial in trials[::2]] == [pytest.approx(-25.55, abs=0.1), pytest.approx(-28.55, abs=0.1)]


def test_unit_that_was_measured_twice_is_taken_as_it_was_last(tmp_path):
    write_laboratory(tmp_path)
    calibrate(tmp_path, 'A1')
    calibrate(tmp_path, 'A1', level=-32)
    assert units(tmp_path, '--store', 'sqlite:runs.db').returncode == 0
    (unit,) = units_in(tmp_path)
    assert leaks(unit) == pytest.approx(-32, abs=0.05)


def test_runs_of_the_store_are_chosen_by_unit_station_and_day(line):
    for words, names in ((['--serial', 'A2'], ['A2']), (['--station', 'bench 1'], ['A1', 'A2']), (['--from', '2020-01-01'], ['A1', 'A2'])):
        assert units(line, '--store', 'sqlite:runs.db', *words).returncode == 0
        assert [unit['unit'] for unit in units_in(line)] == names
    for words in (['--serial', 'A3'], ['--station', 'bench 2'], ['--to', '2020-01-01']):
        ran = units(line, '--store', 'sqlite:runs.db', *words)
        assert (ran.returncode, ran.stderr) == \
            (3, 'radioctl: month.units: there is no unit to write, expected one that can be fitted\n')


def test_what_tells_nothing_is_passed_over_with_the_reason(line):
    (line / 'empty.rec').write_bytes((line / 'A1.rec').read_bytes()[:100])
    ran = units(line, 'A1.journal', 'empty.rec', 'nothing.journal', '--json')
    assert ran.returncode == 0, ran.stderr
    told = events(ran)
    assert [event['source'] for event in told if event['event'] == 'unit_passed_over'] == ['empty.rec', 'nothing.journal']
    (end,) = [event for event in told if event['event'] == 'units_end']
    assert (end['file'], end['units'], end['passed_over']) == ('month.units', 1, 2)


@pytest.mark.parametrize('words, message', [
    ([], 'FILE or --store is required: where units come from'),
    (['A1.journal', '--serial', 'A1'], '--serial chooses runs of a store, expected --store with it'),
    (['month.units'], '--out: month.units is what the units come from, expected another file'),
    (['--store', 'sqlite:runs.db', '--from', 'May'], '--from: "May", expected a day such as 2026-03-01')])
def test_command_lines_that_make_no_units_are_wrong(line, words, message):
    (line / 'month.units').touch()
    ran = units(line, *words)
    assert ran.returncode == 2
    assert message in ran.stderr


def test_channel_without_leakage_and_store_that_is_not_there_are_told(line):
    ran = radioctl(line, 'laboratory', 'units', 'board.toml', '--channel', 7, '--out', 'none.units', 'A1.journal')
    assert (ran.returncode, ran.stderr) == \
        (3, 'radioctl: board.toml: expected a [[leakage]] of channel 7, which says what all units have alike\n')
    ran = units(line, '--store', 'sqlite:away.db')
    assert ran.returncode == 3
    assert 'away.db' in ran.stderr
