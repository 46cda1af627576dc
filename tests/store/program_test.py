"""The store as its user meets it, on SQLite."""
import csv
import io
import json
import os
import pathlib
import resource
import sqlite3
import subprocess
import xml.etree.ElementTree

import jsonschema
import pytest

from support import RADIOCTL, accept, bench, environment, event, events, exported, made_up, radioctl, write_runs

STORE = 'sqlite:units.sqlite'


@pytest.fixture
def here(tmp_path):
    return bench(tmp_path)


def waiting(folder):
    return sorted(path.name for path in folder.glob('*.run'))


def test_run_is_kept_with_what_it_was_and_what_it_expected(here):
    ran = accept(here, STORE, '--station', 'bench-1', '--operator', 'ada')
    assert ran.returncode == 0
    assert ran.stdout.splitlines()[-1].startswith('Stored as run ')
    (run,) = exported(here, STORE).values()
    assert [run[name] for name in ('kind', 'serial', 'board', 'station', 'operator', 'mode', 'verdict', 'exit_code')] == \
        ['acceptance', '8H-0001', 'Test radio', 'bench-1', 'ada', 'simulation', 'pass', 0]
    assert [(one['name'], one['held']) for one in run['measurements']] == \
        [('boot', True), ('expect frequency tx 1 7442000', True)]
    assert run['settings'] == {'script': 'script'}
    assert run['files']['script'] == (here / 'script').read_text()
    assert waiting(here) == []


def test_run_that_failed_is_kept_as_one_that_failed(here):
    (here / 'script').write_text('expect frequency tx 1 7\n')
    assert accept(here, STORE).returncode == 1
    (run,) = exported(here, STORE).values()
    assert (run['verdict'], run['exit_code'], run['measurements'][1]['held']) == ('fail', 1, False)


def test_same_serial_again_is_another_run_of_the_unit(here):
    accept(here, STORE)
    accept(here, STORE)
    assert len(exported(here, STORE)) == 2
    shown = radioctl(here, 'store', 'list', '--store', STORE, '--json')
    assert event(shown, 'listed')['runs'] == 2


def test_serial_on_the_command_line_goes_before_that_of_the_board(here):
    accept(here, STORE, '--serial', '8H-0099')
    assert [run['serial'] for run in exported(here, STORE).values()] == ['8H-0099']


def test_fingerprint_changes_with_the_file_of_the_board(here):
    accept(here, STORE)
    accept(here, STORE)
    (here / 'board.toml').write_text((here / 'board.toml').read_text() + '# changed\n')
    accept(here, STORE)
    prints = [run['fingerprint'] for run in exported(here, STORE).values()]
    assert len(prints) == 3 and len(set(prints)) == 2


def test_nothing_is_kept_unless_somebody_says_so(here):
    assert radioctl(here, 'run', 'board.toml', 'script').returncode == 0
    assert not (here / 'xdg_data_home').exists()
    listed = radioctl(here, 'store', 'list')
    assert listed.returncode == 3
    assert listed.stderr == f'radioctl: sqlite:{here}/xdg_data_home/radioctl/store.sqlite: there is no store yet\n'


def test_default_is_a_file_in_the_users_data_folder(here):
    accept(here, 'default')
    assert (here / 'xdg_data_home/radioctl/store.sqlite').is_file()
    assert event(radioctl(here, 'store', 'list', '--json'), 'listed')['runs'] == 1


def settings(folder, text):
    (folder / 'xdg_config_home/radioctl').mkdir(parents=True, exist_ok=True)
    (folder / 'xdg_config_home/radioctl/settings.toml').write_text(text)


def test_settings_file_says_where_and_by_whom_and_options_win(here):
    settings(here, f'[store]\nurl = "sqlite:{here}/line.sqlite"\nstation = "bench-7"\noperator = "grace"\n')
    radioctl(here, 'run', 'board.toml', 'script')
    radioctl(here, 'run', 'board.toml', 'script', '--station', 'bench-8')
    radioctl(here, 'run', 'board.toml', 'script', '--store', 'none')
    kept = exported(here, f'sqlite:{here}/line.sqlite').values()
    assert sorted((run['station'], run['operator']) for run in kept) == [('bench-7', 'grace'), ('bench-8', 'grace')]


@pytest.mark.parametrize('text, complaint', [
    ('[store]\nurl = "mysql://x"\n', ':2: store.url: "mysql://x", expected sqlite:FILE, postgresql://USER@HOST/DATABASE or default'),
    ('[store]\nstaton = "x"\n', ':2: store.staton: unknown key (did you mean "station"?), expected one of url, station, operator'),
    ('[store]\nstation = 7\n', ':2: store.station: expected a string of printable text, found 7'),
    ('[stor]\n', ':1: stor: unknown key (did you mean "store"?), expected one of store'),
])
def test_settings_that_cannot_be_used_are_named_before_anything_is_done(here, text, complaint):
    settings(here, text)
    ran = radioctl(here, 'run', 'board.toml', 'script')
    assert ran.returncode == 3
    assert ran.stdout == ''
    assert ran.stderr == f'radioctl: {here}/xdg_config_home/radioctl/settings.toml{complaint}\n'


def test_address_that_is_none_is_a_wrong_command_line(here):
    ran = accept(here, 'oracle:x')
    assert ran.returncode == 2
    assert '"oracle:x", expected sqlite:FILE, postgresql://USER@HOST/DATABASE or default' in ran.stderr


def test_audit_thermal_and_calibration_are_kept_with_their_measurements(here):
    boards = pathlib.Path(os.environ['RADIO_BOARDS'])
    for name in ('microwave-if-8ghz.toml', 'iq-compensation-18ghz.toml', 'lo-leakage-18ghz.toml', 'lo-leakage-18ghz.channel-1.csv',
                 'lo-leakage-18ghz.channel-2.csv'):
        (here / name).write_bytes((boards / name).read_bytes())
    assert radioctl(here, 'plan', 'audit', 'microwave-if-8ghz.toml', '--store', STORE).returncode == 0
    thermal = radioctl(here, 'thermal', 'iq-compensation-18ghz.toml', boards / 'logs/day-cycle.csv', '--store', STORE, '--json')
    assert event(thermal, 'kept')['stored'] is True
    calibrated = radioctl(here, 'calibrate', 'lo-leakage-18ghz.toml', '--channel', '1', '--store', STORE, '--serial', 'C-1', '--json')
    assert event(calibrated, 'kept')['stored'] is True, calibrated.stderr
    runs = {run['kind']: run for run in exported(here, STORE).values()}
    assert sorted(runs) == ['audit', 'calibration', 'thermal']
    assert runs['audit']['measurements'][0] == {'name': 'carriers_outside', 'unit': None, 'channel': None, 'khz': None,
                                                'degrees': None, 'value': 0.0, 'lowest': None, 'highest': 0.0, 'held': True}
    assert {'complaints', 'worst_image', 'worst_leakage'} <= {one['name'] for one in runs['thermal']['measurements']}
    calibration = runs['calibration']
    assert (calibration['serial'], calibration['channel']) == ('C-1', 1)
    assert {'leakage_after', 'leakage_before', 'correction_i', 'correction_q', 'probes'} <= \
        {one['name'] for one in calibration['measurements']}
    assert sorted(calibration['files']) == ['journal', 'tables']
    assert calibration['files']['tables'] == (here / 'lo-leakage-18ghz.channel-1.csv').read_text()
    tables = radioctl(here, 'store', 'tables', 'C-1', '--store', STORE)
    assert tables.stdout == calibration['files']['tables']


def test_export_as_json_is_as_its_schema_says_and_comes_in_again_as_it_was(here):
    accept(here, STORE)
    runs = [made_up(serial='Ä "quoted", \t', files={'tables': 'a,b\n1,2\n'}), made_up(operator='ada', channel=None)]
    runs[1]['measurements'][0].update(value=None, held=None, channel=None)
    imported = radioctl(here, 'store', 'import', write_runs(here / 'runs.json', *runs), '--store', STORE, '--json')
    assert (event(imported, 'imported')['added'], event(imported, 'imported')['known']) == (2, 0)
    schema = json.loads(pathlib.Path(os.environ['RADIO_DOCS'], 'store.schema.json').read_text())
    out = exported(here, STORE)
    for run in out.values():
        jsonschema.validate(run, schema)
    for run in runs:
        assert out[run['id']] == run
    with pytest.raises(jsonschema.ValidationError):
        jsonschema.validate({**runs[0], 'verdict': 'good'}, schema)
    again = radioctl(here, 'store', 'import', 'runs.json', '--store', STORE, '--json')
    assert (event(again, 'imported')['added'], event(again, 'imported')['known']) == (0, 2)


@pytest.mark.parametrize('change, complaint', [
    ({'serial': ''}, 'serial: is empty, expected a text'),
    ({'verdict': 'good'}, 'verdict: expected one of pass, fail, none'),
    ({'begun': 'today'}, 'begun: expected a time in UTC such as 2026-03-01T09:30:00Z'),
    ({'id': 'x'}, 'id: expected a UUID in small letters'),
    ({'settings': 7}, 'settings: expected an object, found number'),
    ({'measurements': [{'name': 'x', 'value': 'high'}]}, 'measurements[0].value: expected a number or null, found string'),
    ({'run_schema': 2}, 'run_schema: expected 1'),
])
def test_line_that_is_no_run_is_named_and_those_before_it_are_added(here, change, complaint):
    write_runs(here / 'runs.json', made_up(), {**made_up(), **change})
    ran = radioctl(here, 'store', 'import', 'runs.json', '--store', STORE)
    assert ran.returncode == 3
    assert ran.stderr == f'radioctl: {here}/runs.json:2: {complaint}\n'.replace(f'{here}/', '')
    assert len(exported(here, STORE)) == 1


def test_export_as_csv_has_a_line_for_each_measurement(here):
    run = made_up(serial='a,"b"', measurements=2)
    radioctl(here, 'store', 'import', write_runs(here / 'runs.json', run), '--store', STORE)
    rows = list(csv.DictReader(io.StringIO(radioctl(here, 'store', 'export', '--format', 'csv', '--store', STORE).stdout)))
    assert [(row['serial'], row['measurement'], row['khz'], row['value'], row['highest'], row['lowest'], row['held']) for row in rows] == \
        [('a,"b"', 'leakage_after', '18000000', '-70.25', '-60.0', '', 'yes'),
         ('a,"b"', 'leakage_after', '18000001', '-71.25', '-60.0', '', 'yes')]


def test_export_as_junit_has_a_case_for_each_measurement(here):
    run = made_up(verdict='fail', measurements=2)
    run['measurements'][1].update(held=False, value=-50.5)
    radioctl(here, 'store', 'import', write_runs(here / 'runs.json', run, made_up(verdict='fail', measurements=1)), '--store', STORE)
    radioctl(here, 'store', 'export', '--format', 'junit', '--store', STORE, '--out', 'units.xml')
    suites = {suite.get('id'): suite for suite in xml.etree.ElementTree.parse(here / 'units.xml').getroot()}
    suite = suites[run['id']]
    assert (suite.get('tests'), suite.get('failures')) == ('2', '1')
    assert [case.get('name') for case in suite] == ['leakage_after at channel 1, 18000000 kHz, 25 degrees',
                                                    'leakage_after at channel 1, 18000001 kHz, 25 degrees']
    assert [failure.get('message') for failure in suite.iter('failure')] == ['-50.50 dBc, at most -60']
    (other,) = [suite for id_, suite in suites.items() if id_ != run['id']]
    assert [case.get('name') for case in other if case.find('failure') is not None] == ['verdict']


def test_list_chooses_and_goes_by_time(here):
    runs = [made_up(serial='A', begun='2026-03-02T00:00:00Z'), made_up(serial='B', begun='2026-03-01T00:00:00Z', verdict='fail'),
            made_up(serial='C', begun='2026-03-03T23:59:59Z', station='bench-2'), made_up(serial='D', begun='2026-03-04T00:00:00Z', kind='audit')]
    radioctl(here, 'store', 'import', write_runs(here / 'runs.json', *runs), '--store', STORE)

    def serials(*options):
        ran = radioctl(here, 'store', 'list', '--json', '--store', STORE, *options)
        return [one['serial'] for one in events(ran) if one['event'] == 'run']

    assert serials() == ['B', 'A', 'C', 'D']
    assert serials('--from', '2026-03-02', '--to', '2026-03-03') == ['A', 'C']
    assert serials('--station', 'bench-2') == ['C']
    assert serials('--kind', 'audit') == ['D']
    assert serials('--verdict', 'fail') == ['B']
    assert serials('--serial', 'A', '--board', 'Made up') == ['A']
    assert radioctl(here, 'store', 'list', '--store', STORE, '--from', 'May').returncode == 2


def test_show_tells_the_last_run_of_a_unit_or_one_by_the_beginning_of_its_id(here):
    old, new = made_up(begun='2026-03-01T00:00:00Z', measurements=1), made_up(begun='2026-03-02T00:00:00Z', measurements=2)
    radioctl(here, 'store', 'import', write_runs(here / 'runs.json', new, old), '--store', STORE)
    shown = radioctl(here, 'store', 'show', 'A-1', '--store', STORE, '--json')
    assert event(shown, 'shown')['run'] == new['id']
    assert [one['id'] for one in events(shown) if one['event'] == 'run'] == [old['id'], new['id']]
    assert event(radioctl(here, 'store', 'show', old['id'][:8], '--store', STORE, '--json'), 'shown')['measurements'] == old['measurements']
    text = radioctl(here, 'store', 'show', 'A-1', '--store', STORE).stdout
    assert '  leakage_after' in text and '-70.25' in text and 'channel 1, 18000000 kHz, 25 degrees' in text
    missing = radioctl(here, 'store', 'show', 'nobody', '--store', STORE)
    assert missing.returncode == 3
    assert 'has no run of a unit "nobody", and no single run whose id begins so' in missing.stderr


def test_compare_sets_what_two_runs_measured_side_by_side(here):
    one, two = made_up(serial='A', measurements=2), made_up(serial='B', measurements=1)
    two['measurements'][0]['value'] = -75.25
    radioctl(here, 'store', 'import', write_runs(here / 'runs.json', one, two), '--store', STORE)
    pairs = [pair for pair in events(radioctl(here, 'store', 'compare', 'A', 'B', '--store', STORE, '--json'))
             if pair['event'] == 'compared_measurement']
    assert [(pair['khz'], pair['change'], pair['after'] is None) for pair in pairs] == \
        [(18000000, -5.0, False), (18000001, None, True)]


def test_tables_are_those_of_the_last_calibration_that_stored_some(here):
    runs = [made_up(begun='2026-03-01T00:00:00Z', files={'tables': 'old\n'}), made_up(begun='2026-03-02T00:00:00Z', files={'tables': 'new\n'}),
            made_up(begun='2026-03-03T00:00:00Z', verdict='fail')]
    radioctl(here, 'store', 'import', write_runs(here / 'runs.json', *runs), '--store', STORE)
    assert radioctl(here, 'store', 'tables', 'A-1', '--store', STORE).stdout == 'new\n'
    assert radioctl(here, 'store', 'tables', 'A-1', '--store', STORE, '--out', 'tables.csv').returncode == 0
    assert (here / 'tables.csv').read_text() == 'new\n'
    assert radioctl(here, 'store', 'tables', runs[0]['id'], '--store', STORE).stdout == 'old\n'


def test_unit_with_tables_of_two_channels_has_to_be_asked_for_one(here):
    runs = [made_up(channel=1, files={'tables': 'one\n'}), made_up(channel=2, files={'tables': 'two\n'})]
    radioctl(here, 'store', 'import', write_runs(here / 'runs.json', *runs), '--store', STORE)
    assert radioctl(here, 'store', 'tables', 'A-1', '--store', STORE).returncode == 2
    assert radioctl(here, 'store', 'tables', 'A-1', '--channel', '2', '--store', STORE).stdout == 'two\n'


def test_check_names_a_run_that_is_not_whole(here):
    run = made_up(measurements=3)
    radioctl(here, 'store', 'import', write_runs(here / 'runs.json', run), '--store', STORE)
    assert radioctl(here, 'store', 'check', '--store', STORE).returncode == 0
    with sqlite3.connect(here / 'units.sqlite') as database:
        database.execute('DELETE FROM measurements WHERE place = 2')
    database.close()
    checked = radioctl(here, 'store', 'check', '--store', STORE)
    assert checked.returncode == 1
    assert f'error: run {run["id"]} has 2 measurements, and was stored with 3\n' in checked.stdout


def test_store_of_every_older_form_is_brought_forward_with_its_runs(here):
    run = made_up()
    radioctl(here, 'store', 'import', write_runs(here / 'runs.json', run), '--store', STORE)
    # Form 1 is form 2 without its indexes.
    with sqlite3.connect(here / 'units.sqlite') as database:
        database.executescript('DROP INDEX runs_by_time; DROP INDEX runs_of_unit; UPDATE schema_version SET version = 1;')
    database.close()
    assert event(radioctl(here, 'store', 'check', '--store', STORE, '--json'), 'checked_store')['form'] == 1
    assert exported(here, STORE)[run['id']] == run
    accept(here, STORE)
    assert event(radioctl(here, 'store', 'check', '--store', STORE, '--json'), 'checked_store')['form'] == 2
    assert len(exported(here, STORE)) == 2


def test_newer_form_is_left_alone_and_the_run_waits(here):
    radioctl(here, 'store', 'import', '/dev/null', '--store', STORE)
    with sqlite3.connect(here / 'units.sqlite') as database:
        database.execute('UPDATE schema_version SET version = 99')
    database.close()
    ran = accept(here, STORE)
    assert ran.returncode == 0
    assert 'has form 99, and this radioctl knows up to 2; a newer one is needed; it waits in ' in ran.stderr
    assert len(waiting(here)) == 1


def test_run_waits_for_a_store_that_is_away_and_the_next_run_takes_it_along(here):
    (here / 'gone').write_text('no folder')
    ran = accept(here, 'sqlite:gone/units.sqlite', '--json')
    assert ran.returncode == 0
    kept = event(ran, 'kept')
    assert kept['stored'] is False and kept['waits_in'] == waiting(here)[0]
    (here / 'gone').unlink()
    later = event(accept(here, 'sqlite:gone/units.sqlite', '--json'), 'kept')
    assert (later['stored'], later['pushed']) == (True, 1)
    assert waiting(here) == []
    assert kept['run'] in exported(here, 'sqlite:gone/units.sqlite')


def test_run_waits_in_the_state_folder_when_the_boards_cannot_be_written(here):
    # A file cannot have others in it, whoever asks.
    folder = here / 'bench'
    folder.mkdir()
    bench(folder)
    (here / 'gone').write_text('no folder')
    os.chmod(folder, 0o555)
    as_user = [] if os.getuid() else ['setpriv', '--reuid=nobody', '--regid=nogroup', '--clear-groups']
    os.chmod(here, 0o777)
    for parent in here.parents:
        if parent != pathlib.Path('/tmp') and str(parent).startswith('/tmp'):
            os.chmod(parent, 0o755)
    (here / 'state').mkdir(mode=0o777)
    os.chmod(here / 'state', 0o777)
    ran = subprocess.run([*as_user, RADIOCTL, 'run', 'board.toml', 'script', '--store', f'sqlite:{here}/gone/units.sqlite', '--json'], cwd=folder,
                         env={**environment(here), 'XDG_STATE_HOME': str(here / 'state')}, text=True, capture_output=True, check=False)
    if as_user and ran.returncode == 127 or 'Permission denied' in ran.stderr and not ran.stdout:
        pytest.skip('the program cannot be run as another user here')
    assert event(ran, 'kept')['waits_in'].startswith(str(here / 'state/radioctl/spool'))


def test_push_takes_each_run_once_and_leaves_those_of_another_store(here):
    (here / 'gone').write_text('no folder')
    first = event(accept(here, 'sqlite:gone/units.sqlite', '--json'), 'kept')['run']
    copy = (here / f'{first}.run').read_text()
    pushed = event(radioctl(here, 'store', 'push', '--store', STORE, '--json'), 'pushed')
    assert (pushed['stored'], pushed['others']) == (0, 1)
    pushed = event(radioctl(here, 'store', 'push', '--all', '--store', STORE, '--json'), 'pushed')
    assert (pushed['stored'], pushed['known']) == (1, 0)
    # As when the program was killed between the database and the file.
    (here / f'{first}.run').write_text(copy)
    pushed = event(radioctl(here, 'store', 'push', '--all', '--store', STORE, '--json'), 'pushed')
    assert (pushed['stored'], pushed['known']) == (0, 1)
    assert list(exported(here, STORE)) == [first] and waiting(here) == []


def test_file_that_waits_and_is_damaged_is_named_and_left(here):
    name = f'{made_up()["id"]}.run'
    (here / name).write_text('{"run_schema":1')
    ran = radioctl(here, 'store', 'push', '--store', STORE)
    assert ran.returncode == 3
    assert f'{name}:1: is no JSON, expected a run' in ran.stderr
    assert waiting(here) == [name]


def test_locked_database_is_waited_for_and_then_the_run_waits(here):
    radioctl(here, 'store', 'import', '/dev/null', '--store', STORE)
    database = sqlite3.connect(here / 'units.sqlite', isolation_level=None)
    database.execute('BEGIN EXCLUSIVE')
    ran = accept(here, STORE, '--json')
    database.execute('ROLLBACK')
    database.close()
    assert event(ran, 'kept')['stored'] is False and 'locked' in event(ran, 'kept')['why']
    assert event(radioctl(here, 'store', 'push', '--store', STORE, '--json'), 'pushed')['stored'] == 1


def test_full_disk_leaves_what_was_stored_and_the_run_is_whole_or_not_there(here):
    """No file may become larger than it is, as on a disk that is full."""
    accept(here, STORE)
    before = exported(here, STORE)
    for limit in range(4096, 200000, 8192):
        write_runs(here / 'more.json', made_up(measurements=400))
        size = (here / 'units.sqlite').stat().st_size
        if limit < size:
            continue
        ran = subprocess.run([RADIOCTL, 'store', 'import', 'more.json', '--store', STORE], cwd=here, env=environment(here), text=True,
                             capture_output=True, check=False, preexec_fn=lambda most=limit: resource.setrlimit(resource.RLIMIT_FSIZE, (most, most)))
        now = exported(here, STORE)
        stored = ran.returncode == 0
        assert len(now) == len(before) + stored, ran.stderr
        assert all(now[run] == before[run] for run in before)
        assert radioctl(here, 'store', 'check', '--store', STORE).returncode == 0
        before = now
        if stored:
            return
        assert 'full' in ran.stderr or 'disk I/O error' in ran.stderr
    raise AssertionError('no run was stored in the end')


def test_table_of_commands_in_the_documentation_names_every_command(here):
    page = pathlib.Path(os.environ['RADIO_DOCS'], 'store.md').read_text()
    help_ = radioctl(here, 'store', '--help').stdout
    for command in ('list', 'show', 'tables', 'compare', 'report', 'export', 'import', 'check', 'push', 'grant'):
        assert f'| `store {command}' in page and f'\n  {command} ' in help_
