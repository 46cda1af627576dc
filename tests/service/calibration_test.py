"""Calibrations of a served radio: begun, followed, cancelled and resumed over HTTP, by the engine of the command."""
import json
import os
import signal
import subprocess

import pytest

from description_test import problems_of
from served import LEAKING, MEASURED, RADIOCTL, Measured, Served, wait_for

I_TABLE = 'Channel.1.Tx.Rf.Lo.Cancellation.Frequency.To.Voltage.Mixer.I'
# One that does not come to its end, and still hears who cancels it.
ENDLESS = {'channel': 1, 'real_time': True, 'settle_time_ms': 60000}


@pytest.fixture
def radio(tmp_path):
    with Served(tmp_path, board=LEAKING) as served:
        yield served


def begin(served, **settings):
    status, state, headers = served.ask('POST', '/api/calibrations', {'channel': 1, **settings})
    assert status == 201, state
    assert headers['Location'] == f'/api/calibrations/{state["calibration"]}'
    return state['calibration']


def ended(served, number):
    """What came of it, once it is over."""
    wait_for(lambda: served.ask('GET', '/api/calibrations')[1]['going_on'] is None)
    return served.ask('GET', f'/api/calibrations/{number}')[1]


def cancel(served, number):
    assert served.ask('DELETE', f'/api/calibrations/{number}')[0] == 202
    return ended(served, number)


def in_folder(served, name):
    return os.path.join(served.folder, name)


def rows(file):
    with open(file, encoding='utf-8') as stream:
        return [line for line in stream if not line.startswith('#')]


def test_calibration_goes_to_its_verdict_and_stores_its_tables(radio):
    assert radio.ask('GET', '/api/calibrations')[1] == {'going_on': None, 'calibrations': []}
    number = begin(radio)
    state = ended(radio, number)
    assert (state['calibration'], state['channel'], state['state']) == (1, 1, 'complete')
    assert state['settings']['frequencies_khz'] == [17900000, 18000000, 18100000]
    assert state['settings']['temperatures_c'] == [-10, 50]
    # For each temperature all carriers.
    assert [(one['degrees'], one['khz']) for one in state['points']] == [
        (degrees, khz) for degrees in (-10, 50) for khz in (17900000, 18000000, 18100000)]
    assert {one['state'] for one in state['points']} == {'good'}
    outcome = state['outcome']
    assert (outcome['verdict'], outcome['is_good'], outcome['good'], outcome['wanted_points']) == ('pass', True, 6, 6)
    assert [(one['name'], one['held']) for one in outcome['limits']] == [('leakage_at_nodes', True)]
    assert outcome['tables'] == in_folder(radio, 'board.channel-1.csv')
    assert len(rows(outcome['tables'])) == 7
    assert (state['progress']['done'], state['progress']['total'], state['progress']['unit']) == (6, 6, 'points')


def test_radio_goes_on_with_what_was_found(radio):
    radio.ask('PUT', '/api/temperature', {'degrees': 25})
    radio.ask('PUT', '/api/channels/1/tx', {'khz': 18000000})
    # 20 log 1/20, and nothing corrects it: there are no tables.
    assert radio.ask('GET', '/api/channels/1')[1]['leakage_dbc'] == -26.02
    assert I_TABLE not in [one['table'] for one in radio.ask('GET', '/api/tables')[1]['tables']
                           if one['nodes'] != [0]]
    ended(radio, begin(radio))
    channel = radio.ask('GET', '/api/channels/1')[1]
    assert (channel['tx_khz'], channel['degrees']) == (18000000, 25)
    assert channel['leakage_dbc'] < -40
    assert radio.ask('GET', '/api/tables/' + I_TABLE)[1]['axis1'] != []


def test_points_are_those_of_the_command(radio, tmp_path):
    events = radio.follow()
    begin(radio, beginning='fresh')
    told = [event for _, event in events.until('calibrated')]
    events.close()
    beside = tmp_path / 'beside'
    beside.mkdir()
    (beside / 'board.toml').write_text(LEAKING)
    lines = subprocess.run([RADIOCTL, 'calibrate', 'board.toml', '--channel', '1', '--json'], cwd=beside, text=True,
                           capture_output=True, check=True).stdout.splitlines()
    expected = [json.loads(line) for line in lines]
    of_command = [event for event in expected if event['event'] == 'point']
    assert len(of_command) == 6
    assert [event for event in told if event['event'] == 'point'] == [{**event, 'run': 1} for event in of_command]
    for kind, own in (('calibration', {'file', 'date'}), ('qualified', set()),
                      ('calibrated', {'tables', 'journal', 'page', 'elapsed_seconds', 'exit_code'})):
        mine = next(event for event in told if event['event'] == kind)
        for name, value in next(event for event in expected if event['event'] == kind).items():
            assert name in own or mine[name] == value, (kind, name)
    assert rows(in_folder(radio, 'board.channel-1.csv')) == rows(beside / 'board.channel-1.csv')


def test_what_was_set_before_is_there_afterwards(radio):
    radio.ask('PUT', '/api/temperature', {'degrees': 31})
    radio.ask('PUT', '/api/channels/1/tx', {'khz': 18000000})
    radio.ask('PUT', '/api/channels/1/rx', {'khz': 17000000})
    radio.ask('PUT', '/api/variables/gain', {'values': [9]})
    fault = {'operation': 'driver-read', 'object': 'channel.1.rx.rf.lo.config', 'code': 0x8001, 'times': 3}
    radio.ask('POST', '/api/faults', fault)
    ended(radio, begin(radio))
    channel = radio.ask('GET', '/api/channels/1')[1]
    assert (channel['tx_khz'], channel['rx_khz'], channel['degrees']) == (18000000, 17000000, 31)
    assert radio.ask('GET', '/api/variables/gain')[1]['values'] == [9]
    assert radio.ask('GET', '/api/faults')[1]['faults'] == [fault]


def test_others_look_and_change_nothing_while_it_goes_on(radio):
    number = begin(radio, **ENDLESS)
    wait_for(lambda: radio.ask('GET', f'/api/calibrations/{number}')[1]['state'] == 'running')
    for method, path, body in (('PUT', '/api/channels/1/tx', {'khz': 18000000}), ('PUT', '/api/temperature', {'degrees': 20}),
                               ('PUT', '/api/drivers/channel.1.tx.rf.mixer.i', {'value': 1}),
                               ('POST', '/api/drivers/channel.1.tx.rf.mixer.i/reading', None),
                               ('PUT', '/api/variables/gain', {'values': [1]}), ('POST', '/api/phases/init', None),
                               ('POST', '/api/faults', {'operation': 'driver-read', 'code': 1}),
                               ('DELETE', '/api/faults', None), ('POST', '/api/calibrations', {'channel': 1})):
        status, problem, _ = radio.ask(method, path, body)
        assert (status, problem['type'], problem['calibration']) == (409, 'urn:radioctl:calibrating', number), path
        assert problem['detail'] == ('calibration 1 of channel 1 has the radio, expected to wait for its end or to '
                                     'cancel it')
    for path in ('radio', 'channels', 'channels/1', 'temperature', 'drivers', 'variables', 'tables', 'faults', 'phases', 'limits',
                 'calibrations'):
        assert radio.ask('GET', '/api/' + path)[0] == 200, path
    # It is that of the calibration that is looked at.
    assert radio.ask('GET', '/api/channels/1')[1]['tx_khz'] == 17900000
    assert radio.ask('GET', '/api/temperature')[1]['degrees'] == -10
    assert 'radio_calibration_running 1\n' in radio.ask('GET', '/metrics')[1]
    assert cancel(radio, number)['state'] == 'cancelled'
    assert radio.ask('PUT', '/api/temperature', {'degrees': 20})[0] == 200


def test_cancelled_calibration_is_resumed_and_nothing_is_measured_again(radio, tmp_path):
    number = begin(radio, real_time=True, settle_time_ms=5, qualify=False)
    wait_for(lambda: radio.ask('GET', f'/api/calibrations/{number}')[1]['progress']['points'] >= 2)
    state = cancel(radio, number)
    assert (state['state'], state['outcome']['interrupted'], state['outcome']['tables']) == ('cancelled', True, None)
    assert 2 <= len(state['points']) < 6
    measured = state['outcome']['probes']
    assert os.path.exists(in_folder(radio, 'board.channel-1.journal'))
    status, problem, _ = radio.ask('POST', '/api/calibrations', {'channel': 1})
    assert (status, problem['choice']) == (409, 'resume or restart')
    assert problem['detail'].endswith('of a calibration that is not finished; "beginning": "resume" goes on with it, '
                                      '"restart" keeps it as a backup and begins anew')
    again = ended(radio, begin(radio, beginning='resume', qualify=False))
    assert (again['state'], again['outcome']['known_probes']) == ('complete', measured)
    assert again['settings']['settle_time_ms'] == 5
    assert len(again['points']) == 6
    assert radio.ask('DELETE', f'/api/calibrations/{again["calibration"]}')[0] == 200
    assert again['points'][:len(state['points'])] == state['points']


def test_points_are_given_from_one_on(radio):
    state = ended(radio, begin(radio))
    assert radio.ask('GET', '/api/calibrations/1?from=4')[1]['points'] == state['points'][4:]
    assert radio.ask('GET', '/api/calibrations/1?from=x')[0] == 400


def test_restart_keeps_the_journal_as_a_backup(radio):
    cancel(radio, begin(radio, **ENDLESS, qualify=False))
    state = ended(radio, begin(radio, beginning='restart'))
    assert state['state'] == 'complete'
    if state['put_away']:
        assert os.path.exists(state['put_away'])


@pytest.mark.parametrize('settings,wrong', [
    ({'channel': 2}, '"channel": the board has no channel 2'),
    ({'channel': 'one'}, '"channel": expected a whole number from 0 to 2147483647'),
    ({'channel': 1, 'method': 'guess'}, '"method": expected "fit" or "search"'),
    ({'channel': 1, 'probes': 100}, '"probes": not together with the method search, expected "method": "fit" with it'),
    ({'channel': 1, 'method': 'fit', 'step_khz': 9}, '"step_khz": not together with the method fit, expected "method": "search" with it'),
    ({'channel': 1, 'band_khz': [3, 2]}, '"band_khz": expected the lowest value first and a higher one behind it'),
    ({'channel': 1, 'band_khz': [3]}, '"band_khz": expected a list of 2 whole numbers'),
    ({'channel': 1, 'i_range': [2, 2]}, '"i_range": expected the lowest value first and a higher one behind it'),
    ({'channel': 1, 'temperatures_c': [5, 5]}, '"temperatures_c": 5 is there twice, expected each temperature once'),
    ({'channel': 1, 'temperatures_c': [201]}, '"temperatures_c": expected a whole number from -100 to 200'),
    ({'channel': 1, 'shrink_factor': 1}, '"shrink_factor": expected a number between 0 and 1, such as 0.75'),
    ({'channel': 1, 'beginning': 'offline'}, '"beginning": expected one of fresh, resume, restart'),
    ({'channel': 1, 'station': 'a\nb'}, '"station": "a\\x0ab", expected 1 to 100 printable characters'),
    ({'channel': 1, 'qualify': 1}, '"qualify": expected true or false'),
])
def test_settings_that_make_no_sense_are_refused(radio, settings, wrong):
    status, problem, _ = radio.ask('POST', '/api/calibrations', settings)
    assert (status, problem['type'], problem['detail']) == (400, 'urn:radioctl:bad-request', wrong)
    assert radio.ask('GET', '/api/calibrations')[1]['calibrations'] == []
    assert not os.path.exists(in_folder(radio, 'board.channel-1.journal'))


def test_channel_that_cannot_be_calibrated_is_refused(tmp_path):
    with Served(tmp_path) as served:
        status, problem, _ = served.ask('POST', '/api/calibrations', {'channel': 1})
        assert (status, problem['type']) == (409, 'urn:radioctl:refused')
        assert problem['detail'] == in_folder(served, 'board.toml') + ': channel 1 has no transmitter to calibrate, expected a [[leakage]]'


def test_nothing_to_resume_is_said(radio):
    status, problem, _ = radio.ask('POST', '/api/calibrations', {'channel': 1, 'beginning': 'resume'})
    assert (status, problem['detail']) == (409, in_folder(radio, 'board.channel-1.journal') + ': is not there: nothing to resume')


def test_missed_limit_is_a_verdict_and_holds_the_tables_back(tmp_path):
    with Served(tmp_path, board=LEAKING.replace('leakage_at_nodes = -40', 'leakage_at_nodes = -200')) as served:
        outcome = ended(served, begin(served))['outcome']
        assert (outcome['verdict'], outcome['is_good'], outcome['tables'], outcome['held_back_by_fail']) == ('fail', False, None, True)
        assert 'radio_calibration_good{channel="1"} 0\n' in served.ask('GET', '/metrics')[1]
        outcome = ended(served, begin(served, beginning='restart', accept_fail=True))['outcome']
        assert (outcome['verdict'], outcome['tables']) == ('fail', in_folder(served, 'board.channel-1.csv'))


def test_fault_is_there_for_a_calibration(radio):
    radio.ask('POST', '/api/faults', {'operation': 'driver-read', 'object': 'channel.1.tx.rf.detector.v', 'code': 0x8001})
    state = ended(radio, begin(radio))
    assert state['state'] == 'refused'
    assert state['outcome']['refusal']
    assert state['points'] == []


def test_fit_has_its_tables_tried(radio):
    events = radio.follow()
    number = begin(radio, method='fit', probes=200)
    tried = [event for _, event in events.until('calibrated') if event['event'] == 'tried']
    events.close()
    state = ended(radio, number)
    assert (state['settings']['method'], state['settings']['probes']) == ('fit', 200)
    assert (state['progress']['total'], state['progress']['unit']) == (200, 'probes')
    assert state['outcome']['fit']['verifications'] == len(tried) > 0


def test_metrics_tell_of_calibrations(radio):
    ended(radio, begin(radio))
    cancel(radio, begin(radio, **ENDLESS, beginning='restart'))
    text = radio.ask('GET', '/metrics')[1]
    for line in ('radio_calibration_running 0', 'radio_calibrations_total{state="cancelled"} 1',
                 'radio_calibrations_total{state="complete"} 1', 'radio_calibration_good{channel="1"} 0'):
        assert line + '\n' in text


def test_four_are_remembered(radio):
    for _ in range(5):
        ended(radio, begin(radio, beginning='restart', max_iterations=1, qualify=False))
    assert [one['calibration'] for one in radio.ask('GET', '/api/calibrations')[1]['calibrations']] == [2, 3, 4, 5]
    assert radio.ask('GET', '/api/calibrations/1')[0] == 404


def test_carriers_are_kept_when_the_service_ends_meanwhile(tmp_path):
    kept = str(tmp_path / 'state.json')
    with Served(tmp_path, '--state', kept, board=LEAKING) as served:
        served.ask('PUT', '/api/channels/1/tx', {'khz': 18000000})
        begin(served, **ENDLESS)
        assert served.stop() == 0
    with Served(tmp_path, '--state', kept, board=LEAKING) as served:
        assert served.ask('GET', '/api/channels/1')[1]['tx_khz'] == 18000000


# One temperature, which is there; every probe takes some time.
SLOW = {'temperatures_c': [25], 'settle_time_ms': 10, 'qualify': False}


@pytest.mark.parametrize('number', [signal.SIGTERM, signal.SIGINT])
def test_signal_leaves_the_hardware_as_the_board_says_and_the_journal_whole(tmp_path, number):
    with Measured(tmp_path) as served:
        begin(served, **SLOW)
        # Some lines in front, and one for each probe.
        wait_for(lambda: served.content('board.channel-1.journal').count('\n') > 10)
        assert served.stop(number) == 0
        assert (served.content('i'), served.content('q')) == ('7\n', '8\n')
        assert any('calibration 1 of channel 1 is over: cancelled' in line for line in served.lines)
    with Measured(tmp_path) as served:
        # What was measured before is gone on with; every reading is 500, so that no point is found.
        state = ended(served, begin(served, **SLOW, beginning='resume'))
        assert state['outcome']['known_probes'] > 0
        assert [one['remark'] for one in state['points']] == ['every reading is 500: the detector is stuck'] * 3


def test_bench_is_not_taken_beyond_its_limits_unless_that_is_meant(tmp_path):
    with Measured(tmp_path) as served:
        hot = {'temperatures_c': [61], 'qualify': False}
        status, problem, _ = served.ask('POST', '/api/calibrations', {'channel': 1, **hot})
        assert (status, problem['type']) == (409, 'urn:radioctl:refused')
        assert problem['detail'].endswith('; "force": true calibrates all the same')
        wide = {'channel': 1, 'temperatures_c': [25], 'i_range': [-1000, 1001], 'force': True}
        status, problem, _ = served.ask('POST', '/api/calibrations', wide)
        assert (status, problem['choice']) == (409, 'i-range')
        number = begin(served, **hot, force=True)
        wait_for(lambda: served.ask('GET', f'/api/calibrations/{number}')[1]['awaiting'])
        awaiting = served.ask('GET', f'/api/calibrations/{number}')[1]['awaiting']
        assert awaiting == {'degrees': 61, 'now': 25, 'by_hand': False, 'by_word': False}
        status, problem, _ = served.ask('PUT', f'/api/calibrations/{number}/temperature', {})
        assert (status, problem['type']) == (409, 'urn:radioctl:not-now')
        cancel(served, number)


def test_person_tells_the_temperatures_where_no_sensor_does(tmp_path):
    with Measured(tmp_path, board=MEASURED) as served:
        two = {'temperatures_c': [10, 30], 'settle_time_ms': 0, 'qualify': False, 'max_iterations': 1}
        status, problem, _ = served.ask('POST', '/api/calibrations', {'channel': 1, **two})
        assert (status, problem['choice']) == (409, 'temperatures')
        number = begin(served, **two, attended=True)
        for wanted, body, told in ((10, {}, 10), (30, {'degrees': 29}, 29)):
            wait_for(lambda: (served.ask('GET', f'/api/calibrations/{number}')[1]['awaiting'] or {}).get('degrees') == wanted)
            assert served.ask('PUT', f'/api/calibrations/{number}/temperature', body)[0] == 200
            wait_for(lambda: served.ask('GET', f'/api/calibrations/{number}')[1]['awaiting'] is None
                     or served.ask('GET', '/api/temperature')[1]['degrees'] == told)
        assert len(ended(served, number)['points']) == 6


def described(served, state):
    """What of a calibration's state is not as the description says."""
    description = served.ask('GET', '/openapi.json')[1]
    return problems_of(state, {'$ref': '#/components/schemas/Calibration'}, description)


def test_what_comes_of_a_calibration_is_as_it_is_described(radio):
    for settings in ({}, {'method': 'fit', 'probes': 100, 'beginning': 'restart'}):
        state = ended(radio, begin(radio, **settings))
        assert state['points']
        assert described(radio, state) == []


def test_what_comes_of_hardware_is_as_it_is_described(tmp_path):
    with Measured(tmp_path) as served:
        state = ended(served, begin(served, temperatures_c=[25], settle_time_ms=0, qualify=False, max_iterations=2))
        # Three searches of two iterations that see one reading are no calibration.
        assert (state['state'], state['outcome']['failed'], state['begun']['temperature']) == ('complete', 3, 'sensor')
        assert described(served, state) == []
        refused = ended(served, begin(served, temperatures_c=[25], beginning='restart'))
        assert (refused['state'], refused['outcome']['journal']) == ('refused', None)
        assert described(served, refused) == []
