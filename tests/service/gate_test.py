"""Who may ask, and where the service is reached."""
import http.client
import os
import ssl
import subprocess

import pytest

from served import Served

TOKEN = 'a-token-of-24-characters'


@pytest.fixture(scope='module')
def radio(tmp_path_factory):
    with Served(tmp_path_factory.mktemp('open'), '--name', 'Radio.Example') as served:
        yield served


@pytest.fixture(scope='module')
def keys(tmp_path_factory):
    folder = tmp_path_factory.mktemp('keys')
    subprocess.run(['openssl', 'req', '-x509', '-newkey', 'ec', '-pkeyopt', 'ec_paramgen_curve:prime256v1', '-nodes', '-days', '2',
                    '-subj', '/CN=localhost', '-addext', 'subjectAltName=IP:127.0.0.1', '-keyout', folder / 'key.pem',
                    '-out', folder / 'certificate.pem'], check=True, capture_output=True)
    (folder / 'token').write_text(TOKEN + '\n')
    (folder / 'token').chmod(0o600)
    return folder


def options(keys):
    return ['--token', str(keys / 'token'), '--certificate', str(keys / 'certificate.pem'), '--key', str(keys / 'key.pem')]


def refusal(tmp_path, *arguments, listen='127.0.0.1:0'):
    """The one line with which it refuses to start, before the radio boots."""
    served = Served(tmp_path, *arguments, listen=listen)
    assert served.process.wait(30) == 3
    errors = served.process.stderr.read()
    assert served.lines == [] and errors.count('\n') == 1, errors
    return errors


def asked_as(radio, host, **headers):
    return radio.ask('GET', '/api/radio', headers={'Host': host, **headers})


def test_host_has_to_be_the_service(radio):
    for host in (f'127.0.0.1:{radio.port}', f'localhost:{radio.port}', f'LOCALHOST:{radio.port}', 'radio.example',
                 'RADIO.example:443'):
        assert asked_as(radio, host)[0] == 200, host
    for host in ('evil.example', f'evil.example:{radio.port}', '127.0.0.1', 'localhost', '127.0.0.1:1', '',
                 f'127.0.0.1:{radio.port}.evil.example', f'[::1]:{radio.port}', 'radio.example.evil.example'):
        status, problem, _ = asked_as(radio, host)
        assert (status, problem['type']) == (403, 'urn:radioctl:forbidden'), host


def test_host_has_to_be_there_once(radio):
    for hosts in ('', f'Host: 127.0.0.1:{radio.port}\r\nHost: evil.example\r\n'):
        with radio.connect() as connection:
            connection.sendall(f'GET /api/radio HTTP/1.1\r\n{hosts}\r\n'.encode())
            assert connection.recv(1000).startswith(b'HTTP/1.1 403 ')


def test_pages_of_others_are_refused(radio):
    here = f'127.0.0.1:{radio.port}'
    assert asked_as(radio, here, Origin=f'http://{here}')[0] == 200
    for origin in ('http://evil.example', 'null', f'http://localhost:{radio.port}', 'http://127.0.0.1', ''):
        assert asked_as(radio, here, Origin=origin)[0] == 403, origin


def test_second_origin_is_not_passed_over(radio):
    here = f'127.0.0.1:{radio.port}'
    with radio.connect() as connection:
        connection.sendall(f'GET /api/radio HTTP/1.1\r\nHost: {here}\r\nOrigin: http://{here}\r\n'
                           'Origin: http://evil.example\r\n\r\n'.encode())
        assert connection.recv(1000).startswith(b'HTTP/1.1 403 ')


def test_change_from_a_page_of_others_is_not_carried_out(radio):
    status, _, _ = radio.ask('PUT', '/api/temperature', {'degrees': 33}, {'Origin': 'http://evil.example'})
    assert status == 403
    assert radio.ask('GET', '/api/temperature')[1]['degrees'] is None


def test_beyond_the_loopback_token_and_certificate_are_needed(tmp_path, keys):
    for arguments in ([], options(keys)[:2], options(keys)[2:]):
        assert 'can be reached by others, expected --token, --certificate' in refusal(
            tmp_path, *arguments, listen='0.0.0.0:0')
    assert 'can be reached by others' in refusal(tmp_path, listen='[::]:0')


def test_token_is_asked_for_and_traffic_is_encrypted(tmp_path, keys):
    with Served(tmp_path, *options(keys), listen='0.0.0.0:0') as served:
        context = ssl.create_default_context(cafile=str(keys / 'certificate.pem'))

        def ask(method, path, token=None, body=None):
            connection = http.client.HTTPSConnection('127.0.0.1', served.port, context=context, timeout=30)
            headers = {'Content-Type': 'application/json', **({'Authorization': token} if token else {})}
            connection.request(method, path, body, headers)
            answer = connection.getresponse()
            return answer.status, answer.read(), answer.headers

        assert served.scheme == 'https'
        for wrong in (None, 'Bearer ', 'Bearer x', f'Basic {TOKEN}', f'Bearer {TOKEN}x', f'Bearer {TOKEN[:-1]}', TOKEN):
            status, content, headers = ask('GET', '/api/radio', wrong)
            assert (status, headers['WWW-Authenticate']) == (401, 'Bearer'), wrong
            assert b'urn:radioctl:unauthorised' in content
            assert ask('PUT', '/api/temperature', wrong, '{"degrees":20}')[0] == 401
        assert ask('PUT', '/api/temperature', f'Bearer {TOKEN}', '{"degrees":20}')[0] == 200
        assert b'"degrees":20' in ask('GET', '/api/temperature', f'bearer {TOKEN}')[1]
        # Nobody is answered who does not encrypt.
        plain = http.client.HTTPConnection('127.0.0.1', served.port, timeout=30)
        plain.request('GET', '/api/radio')
        with pytest.raises((http.client.HTTPException, ConnectionError)):
            plain.getresponse()
        assert ask('GET', '/api/radio', f'Bearer {TOKEN}')[0] == 200


def test_events_come_encrypted_too(tmp_path, keys):
    with Served(tmp_path, *options(keys)) as served:
        context = ssl.create_default_context(cafile=str(keys / 'certificate.pem'))
        with context.wrap_socket(served.connect(), server_hostname='127.0.0.1') as connection:
            connection.sendall(f'GET /api/events HTTP/1.1\r\nHost: 127.0.0.1:{served.port}\r\nLast-Event-ID: x\r\n'
                               f'Authorization: Bearer {TOKEN}\r\n\r\n'.encode())
            text = b''
            while b'"event":"serving"' not in text:
                text += connection.recv(65536)
        assert served.stop() == 0


def test_token_that_is_no_secret_is_refused(tmp_path, keys):
    token = tmp_path / 'token'
    for text, mode, problem in (('short\n', 0o600, 'expected one line of 16 to 4096 visible characters'),
                                ('two words that are long\n', 0o600, 'expected one line of 16 to 4096'),
                                ('x' * 5000, 0o600, 'expected one line of 16 to 4096'),
                                (TOKEN, 0o604, 'can be read by everybody')):
        token.write_text(text)
        token.chmod(mode)
        assert problem in refusal(tmp_path, '--token', str(token))
    assert 'No such file' in refusal(tmp_path, '--token', str(tmp_path / 'none'))


def test_certificate_that_cannot_be_used_is_refused(tmp_path, keys):
    certificate, key = options(keys)[3], options(keys)[5]
    assert 'expected --certificate and --key both' in refusal(tmp_path, '--certificate', certificate)
    assert 'expected a certificate in PEM' in refusal(tmp_path, '--certificate', os.devnull, '--key', key)
    assert "expected the certificate's key in PEM" in refusal(tmp_path, '--certificate', certificate, '--key', certificate)


@pytest.mark.parametrize('listen', ['', ':80', '127.0.0.1', '127.0.0.1:', '127.0.0.1:65536', 'localhost:80', '1.2.3:80', '127.0.0.1:x'])
def test_address_that_is_none_is_refused(tmp_path, listen):
    assert 'is no address, expected one such as 127.0.0.1:8080' in refusal(tmp_path, listen=listen)


def test_address_of_another_is_refused(tmp_path, radio):
    assert 'cannot be taken: Address already in use' in refusal(tmp_path, listen=f'127.0.0.1:{radio.port}')
