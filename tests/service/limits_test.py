"""What a client may take of the service; whatever it does, the others are served."""
import contextlib
import re
import resource
import select
import socket
import time

import pytest

from served import Served


@pytest.fixture
def radio(tmp_path):
    with Served(tmp_path) as served:
        yield served
        assert served.ask('GET', '/api/radio')[0] == 200
        assert served.process.poll() is None


def head(radio, request, more=''):
    return f'{request} HTTP/1.1\r\nHost: 127.0.0.1:{radio.port}\r\n{more}'.encode()


def answer_to(radio, *pieces):
    """What comes until the service hangs up."""
    text = b''
    with radio.connect() as connection:
        try:
            for piece in pieces:
                connection.sendall(piece)
            connection.shutdown(socket.SHUT_WR)
        except OSError:
            pass # it has said enough
        try:
            while True:
                more = connection.recv(65536)
                if not more:
                    return text
                text += more
        except ConnectionError:
            return text


def test_body_of_64_kib_is_taken_and_a_larger_one_refused(radio):
    body = b' ' * (65536 - 14) + b'{"degrees":20}'
    assert radio.ask('PUT', '/api/temperature', body)[0] == 200
    status, problem, _ = radio.ask('PUT', '/api/temperature', b' ' + body)
    assert (status, problem['type']) == (413, 'urn:radioctl:too-large')


def test_body_without_an_end_is_refused(radio):
    chunk = b'2000\r\n' + b' ' * 8192 + b'\r\n'
    start = head(radio, 'PUT /api/temperature', 'Content-Type: application/json\r\nTransfer-Encoding: chunked\r\n\r\n')
    assert answer_to(radio, start, *[chunk] * 9).startswith(b'HTTP/1.1 413 ')


def test_header_that_is_too_large_is_refused(radio):
    for more in ('X-Long: ' + 'x' * 9000 + '\r\n\r\n', 'X: y\r\n' * 2000 + '\r\n'):
        assert answer_to(radio, head(radio, 'GET /api/radio', more)).startswith(b'HTTP/1.1 431 ')
    assert answer_to(radio, b'GET /' + b'x' * 9000).startswith(b'HTTP/1.1 431 ')


def test_what_is_no_request_is_refused(radio):
    for text in (b'\x16\x03\x01\x02\x00\x01\x00\r\n\r\n', b'GET\r\n\r\n', b'GET / HTTP/9.9\r\n\r\n', b'\r\n\r\n\r\n\r\n', b'G\x00T / HTTP/1.1\r\n\r\n',
                 head(radio, 'PUT /api/temperature', 'Content-Length: x\r\n\r\n'),
                 head(radio, 'PUT /api/temperature', 'Content-Length: 99999999999999999999999\r\n\r\n')):
        answer = answer_to(radio, text)
        assert answer.startswith((b'HTTP/1.1 400 ', b'HTTP/1.1 413 ')) or answer == b'', (text, answer)


def test_torn_request_changes_nothing(radio):
    whole = head(radio, 'PUT /api/temperature', 'Content-Type: application/json\r\nContent-Length: 14\r\n\r\n') + b'{"degrees":20}'
    for end in range(1, len(whole), 7):
        answer_to(radio, whole[:end])
    assert radio.ask('GET', '/api/temperature')[1]['degrees'] is None
    assert answer_to(radio, whole).startswith(b'HTTP/1.1 200 ')


def test_request_in_drops_is_one(radio):
    whole = head(radio, 'PUT /api/temperature', 'Content-Type: application/json\r\nContent-Length: 14\r\n\r\n') + b'{"degrees":21}'
    assert answer_to(radio, *[whole[at:at + 1] for at in range(len(whole))]).startswith(b'HTTP/1.1 200 ')


def test_requests_behind_each_other_are_answered_in_their_order(radio):
    requests = head(radio, 'GET /api/radio', '\r\n') + head(radio, 'GET /api/none', '\r\n') + head(
        radio, 'GET /api/limits', 'Connection: close\r\n\r\n')
    text = answer_to(radio, requests)
    assert re.findall(rb'HTTP/1\.1 (\d+) ', text) == [b'200', b'404', b'200']


def test_who_waits_to_be_told_to_go_on_is_told(radio):
    with radio.connect() as connection:
        connection.sendall(head(radio, 'PUT /api/temperature',
                                'Content-Type: application/json\r\nContent-Length: 14\r\nExpect: 100-continue\r\n\r\n'))
        assert connection.recv(1000) == b'HTTP/1.1 100 Continue\r\n\r\n'
        connection.sendall(b'{"degrees":20}')
        assert connection.recv(1000).startswith(b'HTTP/1.1 200 ')


@contextlib.contextmanager
def thousand_connections(radio):
    hard = resource.getrlimit(resource.RLIMIT_NOFILE)[1]
    before = resource.getrlimit(resource.RLIMIT_NOFILE)
    resource.setrlimit(resource.RLIMIT_NOFILE, (min(4096, hard), hard))
    try:
        with contextlib.ExitStack() as connections:
            yield [connections.enter_context(radio.connect()) for _ in range(1000)]
    finally:
        resource.setrlimit(resource.RLIMIT_NOFILE, before)


def test_thousand_connections_leave_room_for_one_more(radio):
    with thousand_connections(radio):
        assert radio.ask('GET', '/api/radio')[0] == 200


def hung_up(connections):
    """Those of them that the service has hung up on, without an answer."""
    ready, over = select.poll(), set()
    for connection in connections:
        ready.register(connection, select.POLLIN)
    by_number = {connection.fileno(): connection for connection in connections}
    for number, _ in ready.poll(0):
        try:
            assert by_number[number].recv(1000) == b''
        except ConnectionError:
            pass
        over.add(by_number[number])
    return over


def test_thousand_that_send_drop_by_drop_keep_nobody_waiting_and_are_hung_up_on(radio):
    """Half of them headers without an end, half of them bodies: each byte comes in time, the whole does not."""
    header = head(radio, 'PUT /api/temperature', 'X: ')
    body = head(radio, 'PUT /api/temperature', 'Content-Type: application/json\r\nContent-Length: 60000\r\n\r\n')
    with thousand_connections(radio) as connections:
        for number, connection in enumerate(connections):
            connection.sendall(body if number % 2 else header)
        left, degrees = set(connections), 20
        deadline = time.monotonic() + 120
        while left and time.monotonic() < deadline:
            degrees = 20 + (degrees + 1) % 20
            assert radio.ask('PUT', '/api/temperature', {'degrees': degrees})[0] == 200
            assert radio.ask('GET', '/api/temperature')[1]['degrees'] == degrees
            left -= hung_up(left)
            for connection in list(left):
                try:
                    connection.sendall(b' ')
                except ConnectionError:
                    left.discard(connection)
            time.sleep(1)
        assert not left


def test_more_connections_than_it_takes_are_hung_up_on_and_it_recovers(tmp_path):
    with Served(tmp_path, descriptors=256) as served:
        connections = [served.connect() for _ in range(300)]
        time.sleep(0.5)
        for connection in connections:
            connection.close()
        deadline = time.monotonic() + 30
        while True:
            try:
                assert served.ask('GET', '/api/radio')[0] == 200
                break
            except ConnectionError:
                assert time.monotonic() < deadline
                time.sleep(0.1)


def test_header_that_does_not_end_is_not_waited_for_for_ever(radio):
    with radio.connect() as connection:
        connection.settimeout(90)
        connection.sendall(b'GET /api/radio HTTP/1.1\r\n')
        start = time.monotonic()
        text = b''
        try:
            while time.monotonic() - start < 60:
                connection.settimeout(1)
                try:
                    more = connection.recv(100)
                    if not more:
                        break
                    text += more
                except TimeoutError:
                    connection.sendall(b'X: y\r\n')
        except ConnectionError:
            pass
        assert time.monotonic() - start < 60
        assert text == b''
