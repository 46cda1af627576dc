"""The events of a served radio, as those see them who follow."""
import json
import os
import socket

import pytest

from served import Served, wait_for


@pytest.fixture
def radio(tmp_path):
    with Served(tmp_path) as served:
        yield served


def tune_often(radio, count):
    """By requests behind each other, which are answered before it goes on."""
    body = '{"khz":7472000}'
    request = (f'PUT /api/channels/1/tx HTTP/1.1\r\nHost: 127.0.0.1:{radio.port}\r\nContent-Type: application/json\r\n'
               f'Content-Length: {len(body)}\r\n\r\n{body}').encode()
    with radio.connect() as connection:
        for _ in range(count // 100):
            connection.sendall(request * 100)
            text = b''
            while text.count(b'HTTP/1.1 200 ') < 100 or not text.endswith(b'}]}'):
                text += connection.recv(1 << 20)


def number(name):
    return int(name.split('-')[1])


def test_events_of_a_tune_come_in_their_order_with_the_schema(radio):
    follower = radio.follow()
    assert follower.head[0] == 'HTTP/1.1 200 OK'
    assert 'Content-Type: text/event-stream' in follower.head
    radio.ask('PUT', '/api/channels/1/tx', {'khz': 7472000})
    events = follower.until('change')
    assert [event['event'] for _, event in events] == ['command', 'call', 'notified', 'result', 'change']
    assert {event['schema'] for _, event in events} == {1}
    assert events[0][1]['text'] == 'tune tx 1 7472000'
    assert events[1][1]['destination'] == 'channel.1.tx.rf.frequency'
    assert (events[-1][1]['request'], events[-1][1]['status']) == ('PUT /api/channels/1/tx', 200)
    numbers = [number(name) for name, _ in events]
    assert numbers == list(range(numbers[0], numbers[0] + 5))


def test_who_comes_back_goes_on_behind_the_last_event(radio):
    follower = radio.follow()
    radio.ask('PUT', '/api/temperature', {'degrees': 20})
    last, _ = follower.until('change')[-1]
    follower.close()
    radio.ask('PUT', '/api/temperature', {'degrees': 21})
    radio.ask('PUT', '/api/temperature', {'degrees': 22})
    again = radio.follow(last)
    events = again.until('change') + again.until('change')
    assert [event['body'] for _, event in events if event['event'] == 'change'] == ['{"degrees": 21}', '{"degrees": 22}']
    assert number(events[0][0]) == number(last) + 1


def test_last_event_of_the_radio_is_where_to_go_on(radio):
    last = radio.ask('GET', '/api/radio')[1]['last_event']
    radio.ask('PUT', '/api/temperature', {'degrees': 20})
    name, event = radio.follow(last).next()
    assert number(name) == number(last) + 1
    assert event['event'] == 'command'


@pytest.mark.parametrize('last', ['1-1', 'x', '99999999999999999999-5', '-'])
def test_who_missed_events_is_told_and_given_all_that_are_there(radio, last):
    follower = radio.follow(last)
    _, gap = follower.next()
    assert (gap['kind'], gap['event'], gap['schema']) == ('gap', 'gap', 1)
    assert number(gap['after']) == 0
    name, event = follower.next()
    assert (number(name), event['event']) == (1, 'mode')


def test_events_that_are_gone_are_told_as_a_gap(radio):
    first = radio.ask('GET', '/api/radio')[1]['last_event']
    tune_often(radio, 4500) # some 5 events each, of which 20,000 are kept
    _, gap = radio.follow(first).next()
    assert gap['event'] == 'gap'
    last = radio.ask('GET', '/api/radio')[1]['last_event']
    assert 19000 < number(last) - number(gap['after']) <= 20000


def test_many_followers_see_the_same(radio):
    followers = [radio.follow() for _ in range(50)]
    for degrees in range(20, 40):
        radio.ask('PUT', '/api/temperature', {'degrees': degrees})
    seen = []
    for follower in followers:
        events = []
        while len([1 for _, event in events if event['event'] == 'change']) < 20:
            events += follower.until('change')
        seen.append(events)
    assert all(events == seen[0] for events in seen)
    assert [event['body'] for _, event in seen[0] if event['event'] == 'change'] == [
        json.dumps({'degrees': degrees}) for degrees in range(20, 40)]


def connections(radio):
    folder = f'/proc/{radio.process.pid}/fd'
    return len([name for name in os.listdir(folder) if os.readlink(os.path.join(folder, name)).startswith('socket:')])


def test_follower_that_does_not_read_is_dropped_and_the_others_go_on(radio):
    lazy = socket.socket()
    lazy.setsockopt(socket.SOL_SOCKET, socket.SO_RCVBUF, 4096) # the kernel keeps little for it
    lazy.settimeout(60)
    lazy.connect(('127.0.0.1', radio.port))
    lazy.sendall(f'GET /api/events HTTP/1.1\r\nHost: 127.0.0.1:{radio.port}\r\n\r\n'.encode())
    eager = radio.follow()
    wait_for(lambda: connections(radio) >= 3) # both, and what listens
    with_both = connections(radio)
    told = 0
    for _ in range(40):
        tune_often(radio, 100)
        changes = 0
        while changes < 100:
            _, event = eager.next()
            told += len(json.dumps(event))
            changes += event['event'] == 'change'
    wait_for(lambda: connections(radio) == with_both - 1, 60)
    taken = 0
    try:
        while more := lazy.recv(1 << 20):
            taken += len(more)
    except ConnectionError:
        pass
    assert taken < told / 2
    radio.ask('PUT', '/api/temperature', {'degrees': 20})
    assert eager.until('change')[-1][1]['body'] == '{"degrees": 20}'
