"""The description of the interface, held against the interface: every path, method and status of the one is one of the other."""
import pytest

from served import LEAKING, MEASURED, Measured, Served, wait_for

TX = 'channel.1.tx.rf.frequency'

# For each path, method and status that the description has, what provokes it: what stands in the braces, the body, how it is
# said to be, and what is done before.
OFF_RASTER = {'khz': 1}
READ_FAULT = ('POST', '/api/faults', {'operation': 'driver-read', 'code': 0x8001, 'times': 1})
WRITE_FAULT = ('POST', '/api/faults', {'operation': 'driver-write', 'code': 0x8001, 'times': 1})
LOOKUP_FAULT = ('POST', '/api/faults', {'operation': 'driver-lookup', 'code': 0x8001})
# Calibrations that do not come to their end by themselves; {run} in an address is the number of one.
ENDLESS = {'channel': 1, 'beginning': 'restart', 'qualify': False, 'real_time': True, 'settle_time_ms': 60000}
ATTENDED = {'channel': 1, 'beginning': 'restart', 'qualify': False, 'attended': True, 'temperatures_c': [10, 30]}
MIXER = 'channel.1.tx.rf.mixer.i'
CASES = {
    '/': {'get': {200: {}}},
    '/openapi.json': {'get': {200: {}}},
    '/api/radio': {'get': {200: {}}},
    '/api/channels': {'get': {200: {}}},
    '/api/channels/{channel}': {'get': {200: {'at': ['1']}, 400: {'at': ['%']}, 404: {'at': ['2']}}},
    '/api/channels/{channel}/{direction}': {'put': {
        200: {'at': ['1', 'tx'], 'body': {'khz': 7472000}},
        400: {'at': ['1', 'tx'], 'body': {'khz': -1}},
        404: {'at': ['1', 'both'], 'body': {'khz': 1}},
        409: {'at': ['1', 'tx'], 'body': OFF_RASTER},
        415: {'at': ['1', 'tx'], 'body': {'khz': 1}, 'kind': 'text/plain'},
    }},
    '/api/temperature': {
        'get': {200: {}},
        'put': {200: {'body': {'degrees': 20}}, 400: {'body': {'degrees': 'warm'}}, 409: {'body': {'degrees': 86}},
                415: {'body': {'degrees': 20}, 'kind': None}},
    },
    '/api/drivers': {'get': {200: {}}},
    '/api/drivers/{driver}': {
        'get': {200: {'at': [TX]}, 400: {'at': ['%zz']}, 404: {'at': ['none']}},
        'put': {200: {'at': ['amplifier'], 'body': {'value': 1}}, 400: {'at': ['amplifier'], 'body': {}},
                404: {'at': ['none'], 'body': {'value': 1}}, 409: {'at': ['amplifier'], 'body': {'value': 2}},
                415: {'at': ['amplifier'], 'body': {'value': 1}, 'kind': 'application/xml'},
                502: {'at': ['amplifier'], 'body': {'value': 1}, 'before': WRITE_FAULT}},
    },
    '/api/drivers/{driver}/reading': {'post': {
        200: {'at': [TX]}, 400: {'at': ['%1']}, 404: {'at': ['none']},
        409: {'at': [MIXER], 'during': ENDLESS}, 502: {'at': [TX], 'before': READ_FAULT}}},
    '/api/variables': {'get': {200: {}}},
    '/api/variables/{variable}': {
        'get': {200: {'at': ['gain']}, 400: {'at': ['%%%']}, 404: {'at': ['none']}},
        'put': {200: {'at': ['gain'], 'body': {'values': [4]}}, 400: {'at': ['gain'], 'body': {'values': [1, 2]}},
                404: {'at': ['none'], 'body': {'values': [1]}}, 409: {'at': ['gain'], 'body': {'values': [4]}, 'during': ENDLESS},
                415: {'at': ['gain'], 'body': {'values': [1]}, 'kind': None}},
    },
    '/api/tables': {'get': {200: {}}},
    '/api/tables/{table}': {'get': {200: {'at': ['Curve']}, 400: {'at': ['%g0']}, 404: {'at': ['none']}}},
    '/api/faults': {
        'get': {200: {}},
        'post': {201: {'body': {'operation': 'driver-write', 'object': TX, 'code': 0x8001, 'times': 2}},
                 400: {'body': {'operation': 'nothing', 'code': 1}}, 409: {'hardware': True, 'body': {}},
                 415: {'body': {'operation': 'driver-write', 'code': 1}, 'kind': None},
                 502: {'body': {'operation': 'driver-read', 'object': 'amplifier', 'code': 0x8001}, 'full': True}},
        'delete': {200: {}, 400: {'query': '?object=x'}, 409: {'hardware': True}},
    },
    '/api/phases': {'get': {200: {}}},
    '/api/phases/{phase}': {'post': {200: {'at': ['init']}, 400: {'at': ['%']}, 404: {'at': ['last']},
                                     409: {'at': ['init'], 'during': ENDLESS},
                                     502: {'at': ['init'], 'before': LOOKUP_FAULT}}},
    '/api/limits': {'get': {200: {}}},
    '/api/calibrations': {
        'get': {200: {'during': ENDLESS}},
        'post': {201: {'leaking': True, 'body': ENDLESS}, 400: {'body': {}}, 409: {'body': {'channel': 1}},
                 415: {'body': {'channel': 1}, 'kind': 'text/plain'}},
    },
    '/api/calibrations/{calibration}': {
        'get': {200: {'at': ['{run}'], 'over': ENDLESS}, 400: {'at': ['1'], 'query': '?from=-1'}, 404: {'at': ['0']}},
        'delete': {200: {'at': ['{run}'], 'over': ENDLESS}, 202: {'at': ['{run}'], 'during': ENDLESS}, 400: {'at': ['%']},
                   404: {'at': ['none']}},
    },
    '/api/calibrations/{calibration}/temperature': {'put': {
        200: {'at': ['{run}'], 'body': {'degrees': 11}, 'during': ATTENDED, 'measured': True}, 400: {'at': ['1'], 'body': {'degrees': 201}},
        404: {'at': ['0'], 'body': {}}, 409: {'at': ['{run}'], 'body': {}, 'during': ENDLESS},
        415: {'at': ['1'], 'body': {}, 'kind': None}}},
    '/metrics': {'get': {200: {}}},
}


@pytest.fixture(scope='module')
def radio(tmp_path_factory):
    with Served(tmp_path_factory.mktemp('simulated')) as served:
        yield served


@pytest.fixture(scope='module')
def bench(tmp_path_factory):
    with Served(tmp_path_factory.mktemp('bench'), '--hardware') as served:
        yield served


@pytest.fixture(scope='module')
def leaking(tmp_path_factory):
    with Served(tmp_path_factory.mktemp('leaking'), board=LEAKING) as served:
        yield served


@pytest.fixture(scope='module')
def measured(tmp_path_factory):
    with Measured(tmp_path_factory.mktemp('measured'), board=MEASURED) as served:
        yield served


@pytest.fixture(scope='module')
def description(radio):
    return radio.ask('GET', '/openapi.json')[1]


def responses(description):
    """(path, method, status) for all that are said; the status as a number."""
    return {(path, method, int(status))
            for path, item in description['paths'].items() if path != '/api/events'
            for method, operation in item.items()
            for status in operation['responses'] if status != 'default'}


def problems_of(value, schema, description, where='answer'):
    """What of a value is not as its schema says."""
    if '$ref' in schema:
        schema = description['components']['schemas'][schema['$ref'].rsplit('/', 1)[1]]
    if 'oneOf' in schema:
        alternatives = [problems_of(value, one, description, where) for one in schema['oneOf']]
        return [] if [] in alternatives else alternatives[0]
    kinds = {'object': dict, 'array': list, 'string': str, 'integer': int, 'number': (int, float), 'boolean': bool,
             'null': type(None)}
    wanted = schema.get('type', [])
    wanted = wanted if isinstance(wanted, list) else [wanted]
    if wanted and not any(isinstance(value, kinds[kind]) and (kind == 'boolean' or not isinstance(value, bool))
                          for kind in wanted):
        return [f'{where}: {value!r} is no {wanted}']
    found = []
    if 'enum' in schema and value not in schema['enum']:
        found.append(f'{where}: {value!r} is none of {schema["enum"]}')
    if isinstance(value, dict):
        known = schema.get('properties', {})
        found += [f'{where}: no {name}' for name in schema.get('required', []) if name not in value]
        if schema.get('additionalProperties', True) is False:
            found += [f'{where}: {name} is unknown' for name in value if name not in known]
        for name in value.keys() & known.keys():
            found += problems_of(value[name], known[name], description, f'{where}.{name}')
    if isinstance(value, list) and 'items' in schema:
        for at, element in enumerate(value):
            found += problems_of(element, schema['items'], description, f'{where}[{at}]')
    return found


def filled(path, values):
    for value in values:
        begin = path.index('{')
        path = path[:begin] + value + path[path.index('}', begin) + 1:]
    return path


def begun(served, settings):
    """The number of a calibration that goes on, and waits for what it waits for."""
    status, answer, _ = served.ask('POST', '/api/calibrations', settings)
    assert status == 201, answer
    number = answer['calibration']
    wait_for(lambda: (lambda now: now['awaiting'] or now['state'] == 'running' and not settings.get('attended'))(
        served.ask('GET', f'/api/calibrations/{number}')[1]))
    return number


def cancel(served):
    number = served.ask('GET', '/api/calibrations')[1]['going_on']
    if number:
        served.ask('DELETE', f'/api/calibrations/{number}')
        wait_for(lambda: served.ask('GET', '/api/calibrations')[1]['going_on'] is None)


def test_every_status_that_is_said_can_be_provoked_and_no_other_is(description):
    cases = {(path, method, status) for path, item in CASES.items() for method, statuses in item.items()
             for status in statuses}
    assert responses(description) == cases


@pytest.mark.parametrize('path,method,status', [
    (path, method, status) for path, item in CASES.items() for method, statuses in item.items() for status in statuses])
def test_answer_is_as_it_is_described(radio, bench, leaking, measured, description, path, method, status):
    case = CASES[path][method][status]
    calibration = case.get('during') or case.get('over')
    served = bench if case.get('hardware') else measured if case.get('measured') else leaking if calibration or case.get('leaking') else radio
    served.ask('DELETE', '/api/faults')
    served.ask('POST', '/api/phases/init')
    if 'before' in case:
        assert served.ask(*case['before'])[0] == 201
    if case.get('full'):
        for _ in range(1000):
            assert served.ask('POST', '/api/faults', case['body'])[0] == 201
    run = begun(served, calibration) if calibration else None
    if 'over' in case:
        cancel(served)
    at = [str(run) if one == '{run}' else one for one in case.get('at', [])]
    address = filled(path, at) + case.get('query', '')
    found, answer, _ = served.ask(method.upper(), address, case.get('body'), kind=case.get('kind', 'application/json'))
    assert found == status, answer
    said = description['paths'][path][method]['responses'][str(status)]['content']
    assert list(said) == [served.content_type]
    assert problems_of(answer, said[served.content_type]['schema'], description) == []
    if status >= 400:
        assert answer['status'] == status
    cancel(served)
    served.ask('DELETE', '/api/faults')


def test_schemas_find_what_is_wrong(description):
    schema = {'$ref': '#/components/schemas/Driver'}
    assert problems_of({'driver': 'a', 'value': 1, 'writes': 0, 'hardware': False}, schema, description) == []
    assert problems_of({'driver': 1, 'value': 1, 'writes': 0, 'hardware': 0, 'more': 1}, schema, description) != []


def test_methods_that_are_not_described_are_not_there(radio, description):
    for path, item in description['paths'].items():
        address = filled(path, ['1'] * path.count('{'))
        for method in ('GET', 'PUT', 'POST', 'DELETE', 'PATCH', 'OPTIONS', 'TRACE'):
            if method.lower() in item:
                continue
            status, answer, headers = radio.ask(method, address)
            assert status == 405, (method, address)
            expected = [one.upper() for one in item] + (['HEAD'] if 'get' in item else [])
            assert sorted(headers['Allow'].split(', ')) == sorted(expected)
            assert answer['type'] == 'urn:radioctl:method-not-allowed'


def test_paths_that_are_not_described_are_not_there(radio):
    for path in ('/api', '/api/', '/api/channels/', '/api/channels/1/tx/', '/api/drivers/a/b', '/openapi.json/', '//', '/api/nothing',
                 '/../etc/passwd', '/api/channels/1/tx?x/y'):
        status, answer, _ = radio.ask('GET', path)
        assert status == (405 if '?' in path else 404), path
        assert answer['title']


def test_head_is_answered_as_get_without_its_content(radio):
    for path in ('/openapi.json', '/api/channels', '/api/none'):
        expected, _, headers = radio.ask('GET', path)
        status, content, short = radio.ask('HEAD', path)
        assert (status, content) == (expected, None)
        assert short['Content-Length'] == headers['Content-Length'] != '0'
