"""What a served radio does, and what is told of it."""
import http.client
import json
import os
import re
import signal
import socket
import subprocess

import pytest

from served import BOARD, RADIOCTL, Served, wait_for

TX = 'channel.1.tx.rf.frequency'


@pytest.fixture
def radio(tmp_path):
    with Served(tmp_path) as served:
        yield served


def amplifier(served):
    with open(os.path.join(served.folder, 'amplifier'), encoding='utf-8') as file:
        return file.read()


def test_tune_writes_the_hardware_and_tells_the_observers(radio):
    status, result, _ = radio.ask('PUT', '/api/channels/1/tx', {'khz': 7472000})
    assert status == 200
    assert result == {'code': 0, 'ok': True, 'note': '', 'value': None, 'warnings': [],
                      'writes': [{'driver': TX, 'value': 7472000}], 'failures': [], 'trace': [],
                      'notified': [{'direction': 'tx', 'channel': 1, 'khz': 7472000}]}
    channel = radio.ask('GET', '/api/channels/1')[1]
    assert (channel['tx_khz'], channel['rx_khz']) == (7472000, None)
    assert channel['last_result'] == result
    assert radio.ask('GET', '/api/drivers/' + TX)[1] == {'driver': TX, 'value': 7472000, 'writes': 1, 'hardware': False}


def test_channel_knows_its_rasters(radio):
    assert radio.ask('GET', '/api/channels/1')[1]['rasters'] == [
        {'raster': 'Test', 'direction': 'tx', 'first_khz': 7472000, 'step_khz': 28000, 'count': 2},
        {'raster': 'Test', 'direction': 'rx', 'first_khz': 7542000, 'step_khz': 28000, 'count': 2}]


def test_write_that_fails_is_told_with_code_and_trace(radio):
    radio.ask('POST', '/api/faults', {'operation': 'driver-write', 'object': TX, 'code': 0x8001})
    status, result, _ = radio.ask('PUT', '/api/channels/1/tx', {'khz': 7472000})
    # The library keeps and tells a carrier also when the hardware refused it, and answers 0.
    assert (status, result['code'], result['writes']) == (200, 0, [])
    assert result['failures'] == [{'operation': 'driver-write', 'object': TX, 'value': 7472000, 'code': 0x8001}]
    assert [(one['level'], one['text']) for one in result['trace']] == [
        ('error', 'Write to driver failed for channel.1.Tx.rf.frequency (EDriverResult = 0x8001)')]


def test_failure_is_passed_on_with_its_code(radio):
    radio.ask('POST', '/api/faults', {'operation': 'driver-write', 'object': 'amplifier', 'code': 0x8123})
    status, problem, _ = radio.ask('PUT', '/api/drivers/amplifier', {'value': 1})
    assert (status, problem['type'], problem['detail']) == (502, 'urn:radioctl:radio-failed', 'code 0x8123')
    assert problem['result']['code'] == 0x8123


def test_what_the_board_does_not_allow_is_done_by_force_alone(radio):
    status, problem, _ = radio.ask('PUT', '/api/channels/1/tx', {'khz': 7})
    assert (status, problem['type']) == (409, 'urn:radioctl:refused')
    assert problem['detail'].startswith('7 kHz is outside the rasters of the board for tx 1')
    assert problem['result']['writes'] == []
    assert radio.ask('GET', '/api/channels/1')[1]['tx_khz'] is None
    status, result, _ = radio.ask('PUT', '/api/channels/1/tx', {'khz': 7, 'force': True})
    assert (status, result['writes']) == (200, [{'driver': TX, 'value': 7}])
    assert result['warnings'][0].startswith('7 kHz is outside the rasters')


def test_temperature_outside_the_limits_is_refused(radio):
    assert radio.ask('PUT', '/api/temperature', {'degrees': 86})[0] == 409
    assert radio.ask('PUT', '/api/temperature', {'degrees': 85})[0] == 200
    assert radio.ask('GET', '/api/temperature')[1]['degrees'] == 85
    assert radio.ask('GET', '/api/temperature')[1]['allowed'] == [-40, 85]


def test_variables_tables_and_limits_are_those_of_the_board(radio):
    assert radio.ask('PUT', '/api/variables/list', {'values': [7]})[0] == 200
    assert radio.ask('GET', '/api/variables')[1] == {'variables': [
        {'variable': 'gain', 'values': [3]}, {'variable': 'list', 'values': [7, 2]}]}
    assert radio.ask('GET', '/api/tables')[1] == {'tables': [{'table': 'Curve', 'nodes': [2]}]}
    assert radio.ask('GET', '/api/tables/Curve')[1] == {'table': 'Curve', 'axis1': [0, 10], 'axis2': [], 'values': [5, 6]}
    assert radio.ask('GET', '/api/limits')[1]['degrees'] == [-40, 85]
    assert radio.ask('GET', '/api/limits')[1]['if_pll_khz'] is None


def test_faults_come_and_go(radio):
    fault = {'operation': 'driver-write', 'object': TX, 'code': 0x8001, 'times': 2}
    assert radio.ask('POST', '/api/faults', fault)[0] == 201
    assert radio.ask('POST', '/api/faults', {'operation': 'rau-tx', 'code': 1})[0] == 201
    assert radio.ask('GET', '/api/faults')[1] == {'faults': [
        fault, {'operation': 'rau-tx', 'object': '', 'code': 1, 'times': None}]}
    assert radio.ask('DELETE', '/api/faults?operation=driver-write&object=channel%2E1.tx.rf.frequency')[0] == 200
    assert len(radio.ask('GET', '/api/faults')[1]['faults']) == 1
    assert radio.ask('DELETE', '/api/faults')[1]['note'] == '1 fault cleared'
    assert radio.ask('GET', '/api/faults')[1] == {'faults': []}


def test_phase_is_run_again_and_says_how_it_went(radio):
    phases = radio.ask('GET', '/api/phases')[1]['phases']
    assert [phase['phase'] for phase in phases] == [11, 5, 20]
    assert all(module['ok'] for phase in phases for module in phase['modules'])
    radio.ask('POST', '/api/faults', {'operation': 'driver-lookup', 'code': 0x8001})
    status, problem, _ = radio.ask('POST', '/api/phases/init')
    assert (status, problem['result']['code']) == (502, 0x8000)
    assert not radio.ask('GET', '/api/phases')[1]['phases'][0]['modules'][-1]['ok']


def test_every_change_is_logged_with_who_and_when(radio):
    radio.ask('PUT', '/api/channels/1/tx', {'khz': 7})
    radio.ask('GET', '/api/channels')
    radio.ask('PUT', '/api/temperature', b'\x1b[31m{')
    assert radio.stop() == 0
    logged = [line for line in radio.lines if ' /api/' in line]
    assert len(logged) == 2
    assert re.fullmatch(r'\d{4}-\d\d-\d\dT\d\d:\d\d:\d\dZ  127\.0\.0\.1:\d+  PUT /api/channels/1/tx \{"khz": 7\}  409',
                        logged[0])
    assert r'\x1b[31m{  400' in logged[1]


def test_json_has_every_event_on_standard_output(tmp_path):
    with Served(tmp_path, '--json') as served:
        served.ask('PUT', '/api/temperature', {'degrees': 20})
        assert served.stop() == 0
        events = [json.loads(line) for line in served.lines]
        assert all(event['schema'] == 1 for event in events)
        names = [event['event'] for event in events]
        assert names[:2] == ['mode', 'board']
        assert 'serving' in names and 'phase' in names
        assert names[-4:] == ['command', 'result', 'change', 'ended']
        assert events[-1]['signal'] == signal.SIGTERM
        assert events[-1]['exit_code'] == 0


@pytest.mark.parametrize('number', [signal.SIGTERM, signal.SIGINT, signal.SIGHUP])
def test_signal_carries_out_on_exit(tmp_path, number):
    with Served(tmp_path, '--hardware') as served:
        assert served.ask('GET', '/api/radio')[1]['mode'] == 'hardware'
        assert served.ask('PUT', '/api/drivers/amplifier', {'value': 1})[0] == 200
        assert amplifier(served) == '1\n'
        assert served.stop(number) == 0
        assert amplifier(served) == '0\n'


def test_hardware_has_no_faults_and_is_held_by_one(tmp_path):
    with Served(tmp_path, '--hardware') as served:
        status, problem, _ = served.ask('POST', '/api/faults', {'operation': 'driver-write', 'code': 1})
        assert (status, problem['type']) == (409, 'urn:radioctl:simulation-only')
        other = Served(tmp_path, '--hardware')
        assert other.port is None
        assert other.process.wait(30) == 3


def test_exit_value_that_cannot_be_written_makes_it_fail(tmp_path):
    with Served(tmp_path, '--hardware', board=BOARD.replace('FOLDER/amplifier', '/dev/full')) as served:
        assert served.stop() == 1


def test_carriers_come_back_after_a_restart(tmp_path):
    state = str(tmp_path / 'state.json')
    with Served(tmp_path, '--state', state) as served:
        served.ask('PUT', '/api/channels/1/tx', {'khz': 7472000})
        with open(state, encoding='utf-8') as file:
            assert json.load(file) == {'version': 1, 'name': 'Served radio', 'serial': 'S1', 'tx': {'1': 7472000}, 'rx': {}}
        served.stop(signal.SIGKILL)
    with Served(tmp_path, '--state', state) as served:
        channel = served.ask('GET', '/api/channels/1')[1]
        assert channel['tx_khz'] == 7472000
        assert channel['last_result']['writes'] == [{'driver': TX, 'value': 7472000}]


def test_carrier_that_is_refused_is_not_kept(tmp_path):
    state = str(tmp_path / 'state.json')
    with Served(tmp_path, '--state', state) as served:
        served.ask('PUT', '/api/channels/1/tx', {'khz': 7})
        assert not os.path.exists(state)


def test_carrier_that_does_not_come_back_is_told_and_stays_kept_until_there_is_another(tmp_path):
    state = tmp_path / 'state.json'
    kept = {'version': 1, 'name': 'Served radio', 'serial': 'S1', 'tx': {'1': 7}, 'rx': {'1': 7542000}}
    state.write_text(json.dumps(kept))
    with Served(tmp_path, '--json', '--state', str(state)) as served:
        channel = served.ask('GET', '/api/channels/1')[1]
        assert (channel['tx_khz'], channel['rx_khz']) == (None, 7542000)
        assert json.loads(state.read_text()) == kept
        told = [event['text'] for event in map(json.loads, served.lines) if event['event'] == 'warning']
        assert told[-1] == 'tx 1 does not come back at 7 kHz, which is refused; it is kept until there is another carrier'
        served.ask('PUT', '/api/channels/1/rx', {'khz': 7570000})
        assert json.loads(state.read_text()) == {**kept, 'rx': {'1': 7570000}}
        served.ask('PUT', '/api/channels/1/tx', {'khz': 7472000})
        assert json.loads(state.read_text()) == {**kept, 'tx': {'1': 7472000}, 'rx': {'1': 7570000}}


@pytest.mark.parametrize('text,problem', [
    ('', 'expected a JSON object'),
    ('{"version":2}', '"version": expected a whole number from 1 to 1'),
    ('{"version":1,"name":"Other","serial":"","tx":{},"rx":{}}', 'is that of another radio, "Other"'),
    ('{"version":1,"name":"Served radio","serial":"S1","tx":{"2":1}}', 'channel "2": the board has none such'),
    ('{"version":1,"name":"Served radio","serial":"S1","tx":{"1":0}}', '"1": expected a whole number from 1'),
])
def test_state_of_another_kind_is_refused_before_the_radio_boots(tmp_path, text, problem):
    state = tmp_path / 'state.json'
    state.write_text(text)
    served = Served(tmp_path, '--state', str(state))
    assert served.process.wait(30) == 3
    errors = served.process.stderr.read()
    assert f'{state}: {problem}' in errors
    assert errors.count('\n') == 1
    assert served.lines == []


def test_state_that_cannot_be_kept_is_warned_of(tmp_path):
    folder = tmp_path / 'states'
    folder.mkdir()
    with Served(tmp_path, '--state', str(folder / 'state.json')) as served:
        folder.rmdir()
        status, result, _ = served.ask('PUT', '/api/channels/1/tx', {'khz': 7472000})
        assert (status, result['ok']) == (200, True)
        assert result['warnings'][-1].startswith('the carriers are not kept: ')


def test_radio_that_does_not_boot_is_not_served(tmp_path):
    served = Served(tmp_path, board=BOARD.replace('"channel.1.tx.rf.frequency" = {}\n', ''))
    assert served.port is None
    assert served.process.wait(30) == 4
    assert 'the radio did not boot' in served.process.stderr.read()


def test_sensor_tells_the_temperature(tmp_path):
    (tmp_path / 'sensor').write_text('21000\n')
    board = BOARD + f'\n[sensor]\nread = "{tmp_path}/sensor"\nscale = 0.001\ninterval = 100\n'
    with Served(tmp_path, '--hardware', board=board) as served:
        assert served.ask('GET', '/api/temperature')[1]['degrees'] == 21
        (tmp_path / 'sensor').write_text('22000\n')
        wait_for(lambda: served.ask('GET', '/api/temperature')[1]['degrees'] == 22)
        assert served.ask('PUT', '/api/temperature', {'degrees': 30})[0] == 409


def test_standard_output_that_nobody_reads_ends_it(tmp_path):
    with Served(tmp_path):
        board = str(tmp_path / 'board.toml')
    with subprocess.Popen([RADIOCTL, 'serve', board, '--listen', '127.0.0.1:0'], stdout=subprocess.PIPE,
                          stderr=subprocess.PIPE, text=True) as process:
        process.stdout.readline()
        port = int(re.search(r':(\d+)/', process.stdout.readline())[1])
        process.stdout.close()
        connection = http.client.HTTPConnection('127.0.0.1', port, timeout=30)
        connection.request('PUT', '/api/temperature', '{"degrees":20}', {'Content-Type': 'application/json'})
        assert process.wait(30) == 3
        assert 'standard output' in process.stderr.read()


def test_help_has_its_options():
    text = subprocess.run([RADIOCTL, 'serve', '--help'], capture_output=True, text=True, check=True).stdout
    for option in ('--hardware', '--listen', '--token', '--certificate', '--key', '--name', '--state', '--trace', '--json'):
        assert option in text
    assert '  4    the radio did not boot' in text


def test_metrics_follow_the_radio(radio):
    radio.ask('PUT', '/api/channels/1/tx', {'khz': 7472000})
    radio.ask('PUT', '/api/temperature', {'degrees': 20})
    radio.ask('POST', '/api/faults', {'operation': 'driver-write', 'object': TX, 'code': 0x8001})
    radio.ask('PUT', '/api/channels/1/tx', {'khz': 7500000})
    radio.ask('PUT', '/api/channels/1/tx', {'khz': 7472000})
    lines = radio.ask('GET', '/metrics')[1].splitlines()
    for line in ('radio_info{name="Served radio",serial="S1",mode="simulation"} 1',
                 'radio_carrier_hertz{channel="1",direction="tx"} 7472000000',
                 'radio_temperature_celsius 20', f'radio_driver_writes_total{{driver="{TX}"}} 1',
                 f'radio_failures_total{{operation="driver-write",object="{TX}",code="0x8001"}} 2',
                 'radio_faults 1', 'radio_requests_total{status="200"} 4', 'radio_requests_total{status="201"} 1'):
        assert line in lines
    names = [line.split()[2] for line in lines if line.startswith('# TYPE ')]
    assert len(names) == len(set(names))
    for line in lines:
        if line.startswith('# TYPE '):
            assert (line.split()[3] == 'counter') == line.split()[2].endswith('_total')
        elif not line.startswith('#'):
            assert re.fullmatch(r'[a-z_]+(\{[a-z]+="[^"]*"(,[a-z]+="[^"]*")*\})? -?[0-9.e+-]+', line), line


def test_service_manager_is_told_how_it_is(tmp_path):
    for address in (str(tmp_path / 'notify'), '\0radioctl-test-' + tmp_path.name):
        with socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM) as manager:
            manager.bind(address)
            manager.settimeout(30)
            with Served(tmp_path, environment={'NOTIFY_SOCKET': address.replace('\0', '@'), 'WATCHDOG_USEC': '300000'}) as served:
                assert manager.recv(1000).decode() == f'READY=1\nSTATUS=serving Served radio at http://127.0.0.1:{served.port}/'
                for _ in range(3):
                    assert manager.recv(1000) == b'WATCHDOG=1'
                assert served.stop() == 0
                told = [b'WATCHDOG=1']
                while told[-1] == b'WATCHDOG=1':
                    told.append(manager.recv(1000))
                assert told[-1] == b'STOPPING=1'


def test_watchdog_of_another_process_is_not_answered(tmp_path):
    address = str(tmp_path / 'notify')
    with socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM) as manager:
        manager.bind(address)
        manager.settimeout(30)
        with Served(tmp_path, environment={'NOTIFY_SOCKET': address, 'WATCHDOG_USEC': '1000', 'WATCHDOG_PID': '1'}) as served:
            assert manager.recv(1000).startswith(b'READY=1')
            assert served.stop() == 0
            assert manager.recv(1000) == b'STOPPING=1'


def test_unit_is_hardened(tmp_path):
    with open(os.environ['RADIO_UNIT'], encoding='utf-8') as file:
        text = file.read()
    unit = tmp_path / 'radioctl@.service'
    unit.write_text(text)
    shown = subprocess.run(['systemd-analyze', 'security', '--offline=true', '--threshold=15', str(unit)],
                           capture_output=True, text=True, check=False)
    assert shown.returncode == 0, shown.stdout + shown.stderr
    assert re.search(r'^ExecStart=radioctl serve ', text, re.MULTILINE)
