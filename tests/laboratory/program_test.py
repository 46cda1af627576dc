"""The laboratory as its user meets it: the same bytes whatever was at work, and nothing lost that was kept."""
import json
import os
import signal
import subprocess
import time

import pytest

from support import RADIOCTL, events, radioctl, trials_of, write_laboratory

# So many transmitters take long enough for a process to be met in its middle.
LONG = 1000


@pytest.fixture
def here(tmp_path):
    return write_laboratory(tmp_path)


@pytest.fixture(scope='module')
def alone(tmp_path_factory):
    """What one process finds: a folder with results, page and events."""
    folder = write_laboratory(tmp_path_factory.mktemp('alone'))
    ran = radioctl(folder, 'laboratory', 'lab.toml', '--jobs', 1, '--html', 'lab.html', '--json')
    assert ran.returncode == 0, ran.stderr
    (folder / 'events').write_text(ran.stdout)
    return folder


def test_page_shows_names_as_they_are(alone):
    page = (alone / 'lab.html').read_text(encoding='utf-8')
    assert 'fine &amp; slow' in page
    assert '&amp;amp;' not in page


def shards(folder, count, *numbers):
    for number in numbers or range(1, count + 1):
        ran = radioctl(folder, 'laboratory', 'lab.toml', '--shard', f'{number}/{count}', '--jobs', 2)
        assert ran.returncode == 0, ran.stderr


def parts(folder, count):
    return [f'lab.{number}-of-{count}.results' for number in range(1, count + 1)]


def children_of(process):
    listed = subprocess.run(['ps', '-o', 'pid=', '--ppid', str(process.pid)], text=True, capture_output=True, check=False)
    return [int(pid) for pid in listed.stdout.split()]


def started(folder, *options):
    """A laboratory that takes long, once it has kept some results."""
    process = subprocess.Popen([RADIOCTL, 'laboratory', 'lab.toml', *options], cwd=folder, text=True,
                               stdout=subprocess.PIPE, stderr=subprocess.PIPE)
    running = folder / 'lab.results.running'
    for _ in range(6000):
        if running.exists() and running.read_text().count('\n') > 3:
            return process
        assert process.poll() is None, process.stderr.read()
        time.sleep(0.01)
    raise AssertionError('nothing was kept within a minute')


def test_results_have_each_transmitter_with_each_set_of_settings(alone):
    lines = (alone / 'lab.results').read_text().splitlines()
    heading = json.loads(lines[0])
    assert (heading['transmitters'], heading['seed'], heading['shard']) == (12, 1, {'number': 1, 'of': 1})
    assert [one['name'] for one in heading['settings']] == ['coarse', 'fine & slow']
    trials = trials_of((alone / 'lab.results').read_text())
    assert [(one['transmitter'], one['settings']) for one in trials] == [(n, s) for n in range(12) for s in range(2)]
    # From 2000 to 60 and to 3 it takes 13 and 23 iterations of four probes, at six points; the ranges are cut to whole numbers.
    assert {one['settings']: one['probes'] % 24 for one in trials} == {0: 0, 1: 0}
    assert all(one['probes'] >= 13 * 24 for one in trials if one['settings'] == 0)
    assert all(one['probes'] >= 23 * 24 for one in trials if one['settings'] == 1)
    # 5 ms each.
    assert all(abs(one['seconds'] - 0.005 * one['probes']) < 1e-9 for one in trials)
    assert not (alone / 'lab.results.running').exists()


def test_quantiles_are_those_of_the_results(alone):
    told = [one for one in map(json.loads, (alone / 'events').read_text().splitlines()) if one['event'] == 'tried']
    trials = trials_of((alone / 'lab.results').read_text())
    for number, one in enumerate(told):
        worst = sorted(trial['worst_dbc'] for trial in trials if trial['settings'] == number)
        # Of twelve values the 6th, the 11th and the last.
        assert one['worst_dbc'] == {'p50': round(worst[5], 2), 'p90': round(worst[10], 2), 'p99': round(worst[11], 2),
                                    'max': round(worst[11], 2)}
        assert one['failures'] == sum(trial['end'] != 'held' for trial in trials if trial['settings'] == number)


def test_quickest_of_those_that_hold_is_recommended(alone):
    (one,) = [one for one in map(json.loads, (alone / 'events').read_text().splitlines()) if one['event'] == 'recommended']
    assert one['good_enough'] is True
    assert one['reason'].startswith('0 of 12 transmitters (0.00 %) fail, where 50.00 % may, and nine of ten are done in ')


@pytest.mark.parametrize('count', [3, 7, 20])
def test_shards_merged_are_one_machine_byte_for_byte(here, alone, count):
    shards(here, count)
    ran = radioctl(here, 'laboratory', 'merge', *reversed(parts(here, count)), '--out', 'whole.results', '--html', 'lab.html',
                   '--json')
    assert ran.returncode == 0, ran.stderr
    assert (here / 'whole.results').read_bytes() == (alone / 'lab.results').read_bytes()
    assert (here / 'lab.html').read_bytes() == (alone / 'lab.html').read_bytes()
    kept = {'tried', 'recommended', 'laboratory'}
    before = [json.loads(line) for line in (alone / 'events').read_text().splitlines()]
    assert [one for one in events(ran) if one['event'] in kept] == [one for one in before if one['event'] in kept]


def test_processes_do_not_matter(here, alone):
    assert radioctl(here, 'laboratory', 'lab.toml', '--jobs', 5, '--html', 'lab.html').returncode == 0
    assert (here / 'lab.results').read_bytes() == (alone / 'lab.results').read_bytes()
    assert (here / 'lab.html').read_bytes() == (alone / 'lab.html').read_bytes()


def test_shard_that_was_lost_is_named_and_run_again_gives_the_same(here, alone):
    shards(here, 7)
    (here / 'lab.4-of-7.results').unlink()
    left = [part for part in parts(here, 7) if (here / part).exists()]
    ran = radioctl(here, 'laboratory', 'merge', *left, '--out', 'whole.results')
    assert (ran.returncode, ran.stderr) == \
        (3, 'radioctl: lab.1-of-7.results: one of 7 shards, of which 1 shard is missing: 4\n')
    assert not (here / 'whole.results').exists()
    shards(here, 7, 4)
    assert radioctl(here, 'laboratory', 'merge', *parts(here, 7), '--out', 'whole.results').returncode == 0
    assert (here / 'whole.results').read_bytes() == (alone / 'lab.results').read_bytes()


def test_merge_refuses_what_does_not_belong_together_by_name(here):
    shards(here, 2)
    one, two = parts(here, 2)
    ran = radioctl(here, 'laboratory', 'merge', one, two, one)
    assert (ran.returncode, ran.stderr) == (3, f'radioctl: {one}: shard 1 of 2, which {one} is, too; expected each once\n')
    write_laboratory(here, seed=2, name='other.toml')
    assert radioctl(here, 'laboratory', 'other.toml', '--shard', '2/2').returncode == 0
    ran = radioctl(here, 'laboratory', 'merge', one, 'other.2-of-2.results')
    assert ran.returncode == 3
    assert ran.stderr.startswith('radioctl: other.2-of-2.results: of another laboratory file, or of another board')
    (here / two).write_text((here / two).read_text().replace('"probes"', '"probe"', 1))
    ran = radioctl(here, 'laboratory', 'merge', one, two)
    assert (ran.returncode, ran.stderr) == \
        (3, f"radioctl: {two}:2: probes is missing, expected a line of a laboratory's results\n")


def test_interrupt_ends_it_within_a_second_and_the_same_once_more_goes_on(tmp_path):
    here = write_laboratory(tmp_path, count=LONG)
    process = started(here, '--jobs', '2')
    workers = children_of(process)
    begun = time.monotonic()
    process.send_signal(signal.SIGINT)
    output, _ = process.communicate(timeout=60)
    assert time.monotonic() - begun < 5  # a second, on a machine that has nothing else to do
    assert process.returncode == 130
    assert 'Interrupted; the same once more goes on.' in output
    assert not [pid for pid in workers if os.path.exists(f'/proc/{pid}')]
    kept = (here / 'lab.results.running').read_text().splitlines()[1:]
    ran = radioctl(here, 'laboratory', 'lab.toml', '--json')
    assert ran.returncode == 0, ran.stderr
    (end,) = [one for one in events(ran) if one['event'] == 'laboratory_end']
    assert (end['known'], end['made']) == (len(kept), 2 * LONG - len(kept))
    assert set(kept) <= set((here / 'lab.results').read_text().splitlines())


def test_killed_program_loses_only_what_was_not_reported_and_comes_to_the_same(tmp_path):
    (tmp_path / 'killed').mkdir()
    here = write_laboratory(tmp_path / 'killed', count=LONG)
    process = started(here, '--jobs', '3')
    workers = children_of(process)
    process.kill()
    process.communicate()
    for _ in range(500):
        if not [pid for pid in workers if os.path.exists(f'/proc/{pid}')]:
            break
        time.sleep(0.01)
    else:
        raise AssertionError('processes outlived the program')
    kept = (here / 'lab.results.running').read_text()
    # As if it had been in the middle of a line.
    (here / 'lab.results.running').write_text(kept + '{"transmitter":3,')
    ran = radioctl(here, 'laboratory', 'lab.toml', '--json')
    assert ran.returncode == 0, ran.stderr
    (end,) = [one for one in events(ran) if one['event'] == 'laboratory_end']
    assert end['known'] == kept.count('\n') - 1
    (tmp_path / 'whole').mkdir()
    whole = write_laboratory(tmp_path / 'whole', count=LONG)
    assert radioctl(whole, 'laboratory', 'lab.toml').returncode == 0
    assert (here / 'lab.results').read_bytes() == (whole / 'lab.results').read_bytes()


def test_killed_process_is_replaced(tmp_path):
    here = write_laboratory(tmp_path, count=LONG)
    process = started(here, '--jobs', '2')
    os.kill(children_of(process)[0], signal.SIGKILL)
    output, errors = process.communicate(timeout=300)
    assert (process.returncode, errors) == (0, '')
    assert f'{2 * LONG} calibrations' in output
    assert len(trials_of((here / 'lab.results').read_text())) == 2 * LONG


def test_results_that_are_there_are_shown_and_those_of_another_laboratory_are_in_the_way(here):
    assert radioctl(here, 'laboratory', 'lab.toml').returncode == 0
    before = (here / 'lab.results').read_bytes()
    (end,) = [one for one in events(radioctl(here, 'laboratory', 'lab.toml', '--json')) if one['event'] == 'laboratory_end']
    assert end['made'] == 0
    write_laboratory(here, seed=2)
    ran = radioctl(here, 'laboratory', 'lab.toml')
    assert ran.returncode == 3
    assert ran.stderr.startswith('radioctl: lab.results: of another laboratory file, board, shard or version')
    assert ran.stderr.endswith('; --restart begins anew\n')
    ran = radioctl(here, 'laboratory', 'lab.toml', '--restart')
    assert ran.returncode == 0
    assert (here / 'lab.results.~1~').read_bytes() == before
    assert (here / 'lab.results').read_bytes() != before


def test_too_many_failures_with_all_settings_are_said_by_the_exit_code(here):
    text = (here / 'lab.toml').read_text().replace('leakage = -50', 'leakage = -110')
    (here / 'lab.toml').write_text(text)
    ran = radioctl(here, 'laboratory', 'lab.toml')
    assert ran.returncode == 1
    assert 'None is good enough; the best: ' in ran.stdout
    assert '12 of 12 (100.00 %' in ran.stdout


@pytest.mark.parametrize('words, code, message', [
    ([], 2, 'FILE is required'),
    (['lab.toml', '--shard', '4/3'], 2, '--shard: "4/3", expected the number of a shard'),
    (['lab.toml', '--shard', '1/2', '--html', 'page.html'], 2, '--html: not together with --shard'),
    (['lab.toml', '--jobs', '0'], 2, '"0"'),
    (['lab.toml', '--out', 'board.toml'], 2, '--out: board.toml is what the laboratory reads'),
    (['lab.toml', 'merge', 'lab.results'], 2, 'FILE in front of merge'),
    (['none.toml'], 3, 'none.toml: '),
    (['board.toml'], 3, 'board.toml:1: name: unknown key'),
    (['merge', 'none.results'], 3, 'none.results: '),
    (['merge', 'lab.toml'], 3, 'lab.toml:1: no JSON object'),
])
def test_what_cannot_be_used_is_told_before_anything_is_calibrated(here, words, code, message):
    ran = radioctl(here, 'laboratory', *words)
    assert ran.returncode == code
    assert message in ran.stderr
    assert not list(here.glob('*.results*'))


def test_example_is_one_that_can_be_carried_out(tmp_path):
    text = (open(os.path.join(os.environ['RADIO_EXAMPLES'], 'laboratory', 'line.toml'), encoding='utf-8').read()
            .replace('../../boards', os.environ['RADIO_BOARDS']).replace('count = 500', 'count = 1'))
    (tmp_path / 'line.toml').write_text(text)
    ran = radioctl(tmp_path, 'laboratory', 'line.toml', '--json')
    assert ran.returncode in (0, 1), ran.stderr
    assert [one['settings'] for one in events(ran) if one['event'] == 'tried'] == \
        ['fit', 'fit, few probes', 'search', 'search, twice as dense']
