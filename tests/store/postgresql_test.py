"""The store on a real PostgreSQL, which the tests start for themselves."""
import threading

import pytest

import kill_servers
from support import Server, accept, bench, event, events, exported, made_up, radioctl, write_runs


@pytest.fixture(scope='module')
def server():
    one = Server()
    try:
        yield one.start()
    finally:
        one.remove()


@pytest.fixture
def url(server, request):
    name = f'units_{abs(hash(request.node.name))}'
    assert server.sql(f'CREATE DATABASE {name}').returncode == 0
    return server.url(name)


@pytest.fixture
def here(tmp_path):
    return bench(tmp_path)


def test_runs_go_in_and_come_out_as_with_sqlite(here, url):
    runs = [made_up(serial='Ä "quoted"', files={'tables': 'a,b\n1,2\n'}), made_up(serial='B', operator='ada', channel=None)]
    runs[1]['measurements'][0].update(value=-1.0000000000000002e-7, held=None, channel=None)
    assert radioctl(here, 'store', 'import', write_runs(here / 'runs.json', *runs), '--store', url).returncode == 0
    assert accept(here, url).returncode == 0
    out = exported(here, url)
    assert len(out) == 3
    for run in runs:
        assert out[run['id']] == run
    again = event(radioctl(here, 'store', 'import', 'runs.json', '--store', url, '--json'), 'imported')
    assert (again['added'], again['known']) == (0, 2)
    assert radioctl(here, 'store', 'tables', 'Ä "quoted"', '--store', url).stdout == 'a,b\n1,2\n'
    assert radioctl(here, 'store', 'check', '--store', url).returncode == 0


def test_more_runs_than_are_in_memory_at_a_time_are_all_listed_once(here, url):
    runs = [made_up(serial=f'S{n}', measurements=0) for n in range(600)]
    radioctl(here, 'store', 'import', write_runs(here / 'runs.json', *runs), '--store', url)
    assert set(exported(here, url)) == {run['id'] for run in runs}


def test_report_is_that_of_sqlite_with_the_same_runs(here, url):
    runs = [made_up(serial=f'S{n // 2:03}', measurements=4, station=f'bench-{n % 3}', begun=f'2026-03-01T09:{n // 60:02}:{n % 60:02}Z')
            for n in range(600)]
    for n, run in enumerate(runs):
        for one in run['measurements']:
            one['value'] += n % 7 / 8
    write_runs(here / 'runs.json', *runs)
    told = []
    for store in (url, 'sqlite:units.sqlite'):
        assert radioctl(here, 'store', 'import', 'runs.json', '--store', store).returncode == 0
        ran = radioctl(here, 'store', 'report', '--all', '--json', '--store', store)
        assert ran.returncode == 0, ran.stderr
        assert event(ran, 'reported')['runs'] == 600
        told.append([one for one in events(ran) if one['event'] != 'reported'])
    assert told[0] == told[1]
    assert [one['values'] for one in told[0] if one['event'] == 'report_measurement'] == [600] * 4


def test_character_that_postgresql_does_not_take_is_replaced(here, url):
    run = made_up(files={'journal': 'a\0b'})
    assert radioctl(here, 'store', 'import', write_runs(here / 'runs.json', run), '--store', url).returncode == 0
    assert exported(here, url)[run['id']]['files'] == {'journal': 'a\ufffdb'}


def test_store_of_every_older_form_is_brought_forward_with_its_runs(here, server, url):
    run = made_up()
    radioctl(here, 'store', 'import', write_runs(here / 'runs.json', run), '--store', url)
    database = url.split('@/')[1].split('?')[0]
    assert server.sql('DROP INDEX runs_by_time; DROP INDEX runs_of_unit; UPDATE schema_version SET version = 1', database).returncode == 0
    accept(here, url)
    assert event(radioctl(here, 'store', 'check', '--store', url, '--json'), 'checked_store')['form'] == 2
    assert exported(here, url)[run['id']] == run


def test_stations_that_find_no_store_make_one_between_them(here, url):
    threads = [threading.Thread(target=accept, args=(here, url)) for _ in range(8)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    radioctl(here, 'store', 'push', '--store', url)
    assert len(exported(here, url)) == 8
    assert radioctl(here, 'store', 'check', '--store', url).returncode == 0


def test_station_may_add_and_neither_change_nor_delete(here, server, url):
    database = url.split('@/')[1].split('?')[0]
    assert server.sql(f'CREATE USER "the station" LOGIN', database).returncode == 0
    assert radioctl(here, 'store', 'import', '/dev/null', '--store', url).returncode == 0
    station = server.url(database, 'the%20station')
    refused = accept(here, station, '--json')
    assert event(refused, 'kept')['stored'] is False and 'permission denied' in event(refused, 'kept')['why']
    assert radioctl(here, 'store', 'grant', 'the station', '--store', url).returncode == 0
    kept = event(accept(here, station, '--json'), 'kept')
    assert (kept['stored'], kept['pushed']) == (True, 1)
    assert len(exported(here, station)) == 2
    for statement in ("UPDATE runs SET verdict = 'pass'", 'DELETE FROM runs', 'DELETE FROM measurements', 'UPDATE measurements SET value = 0',
                      'DELETE FROM run_files', 'TRUNCATE runs CASCADE', 'DROP TABLE runs', 'UPDATE schema_version SET version = 99'):
        denied = server.sql(statement, database, 'the%20station')
        assert denied.returncode != 0 and ('permission denied' in denied.stderr or 'must be owner' in denied.stderr), statement
    assert radioctl(here, 'store', 'grant', 'x', '--store', 'sqlite:units.sqlite').returncode == 3


def test_password_of_an_address_is_neither_shown_nor_written(here):
    ran = accept(here, 'postgresql://ada:secret@/units?host=/nowhere&password=secret')
    assert ran.returncode == 0
    assert 'secret' not in ran.stdout + ran.stderr
    (file,) = here.glob('*.run')
    assert 'secret' not in file.read_text()
    assert '"store":"postgresql://ada@/units?host=/nowhere"' in file.read_text()


def test_run_waits_for_a_server_that_is_away_and_is_pushed_once(here):
    server = Server()
    try:
        kept = event(accept(here, server.url(), '--json'), 'kept')
        assert kept['stored'] is False
        server.start()
        assert event(radioctl(here, 'store', 'push', '--store', server.url(), '--json'), 'pushed')['stored'] == 1
        assert list(exported(here, server.url())) == [kept['run']]
    finally:
        server.remove()


def test_locked_table_is_waited_for_and_then_the_run_waits(here, server, url):
    radioctl(here, 'store', 'import', '/dev/null', '--store', url)
    database = url.split('@/')[1].split('?')[0]
    lock = threading.Thread(target=server.sql, args=('BEGIN; LOCK TABLE runs; SELECT pg_sleep(14)', database))
    lock.start()
    while server.sql("SELECT count(*) FROM pg_locks WHERE mode = 'AccessExclusiveLock' AND relation = 'runs'::regclass", database).stdout.strip() != '1':
        pass
    kept = event(accept(here, url, '--json'), 'kept')
    lock.join()
    assert kept['stored'] is False and 'lock timeout' in kept['why']
    assert event(radioctl(here, 'store', 'push', '--store', url, '--json'), 'pushed')['stored'] == 1


def test_stations_that_add_while_the_server_is_killed_lose_nothing():
    reported, _, there = kill_servers.torment(kills=5, stations=8)
    assert len(reported) >= 8 and len(there) >= len(reported)
