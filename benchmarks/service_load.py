#!/usr/bin/env python3
"""service_load.py RADIOCTL BOARD [--seconds N] [--clients N] [--rate N]

Serves BOARD, has clients follow its events and others tune it, and says what came of it: whether an event was lost or came out of
order, how the memory of the service went, and how long a tune takes over HTTP and inside. Ends with 1 where an event was lost,
out of order or not the same for all, a tune was not answered, or memory grew by more than a tenth after its first half, if the
service had by then told more events than it keeps: until then it grows by these.
"""
import argparse
import asyncio
import json
import re
import statistics
import subprocess
import sys
import tempfile
import time

# As many as the service keeps for those who come back.
MOST_EVENTS = 20000


class Follower:
    def __init__(self):
        self.first = self.last = None
        self.events = 0
        self.problems = []

    def take(self, text):
        """Whole lines of an event stream."""
        for line in text.split(b'\n'):
            if line.startswith(b'event: gap'):
                self.problems.append('a gap')
            if not line.startswith(b'id: '):
                continue
            number = int(line.rsplit(b'-', 1)[1])
            if self.last is not None and number != self.last + 1:
                self.problems.append(f'{number} behind {self.last}')
            self.first = number if self.first is None else self.first
            self.last = number
            self.events += 1

    async def follow(self, port, ready):
        reader, writer = await asyncio.open_connection('127.0.0.1', port, limit=1 << 24)
        writer.write(f'GET /api/events HTTP/1.1\r\nHost: 127.0.0.1:{port}\r\n\r\n'.encode())
        await reader.readuntil(b'\r\n\r\n')
        ready.release()
        rest = b''
        while True:
            more = await reader.read(1 << 20)
            if not more:
                return
            whole, _, rest = (rest + more).rpartition(b'\n')
            self.take(whole)


async def tune(port, carriers, rate, seconds, times, bad):
    reader, writer = await asyncio.open_connection('127.0.0.1', port)
    begin = time.monotonic()
    for number in range(int(rate * seconds)):
        await asyncio.sleep(max(0.0, begin + number / rate - time.monotonic()))
        body = json.dumps({'khz': carriers[number % len(carriers)]})
        before = time.perf_counter()
        writer.write((f'PUT /api/channels/1/tx HTTP/1.1\r\nHost: 127.0.0.1:{port}\r\nContent-Type: application/json\r\n'
                      f'Content-Length: {len(body)}\r\n\r\n{body}').encode())
        head = await reader.readuntil(b'\r\n\r\n')
        await reader.readexactly(int(re.search(rb'Content-Length: (\d+)', head, re.I)[1]))
        times.append(time.perf_counter() - before)
        if not head.startswith(b'HTTP/1.1 200'):
            bad.append(head.split(b'\r\n')[0].decode())


def memory(process):
    with open(f'/proc/{process.pid}/status', encoding='ascii') as file:
        return int(re.search(r'VmRSS:\s+(\d+) kB', file.read())[1])


async def watch(process, samples):
    while True:
        samples.append(memory(process))
        await asyncio.sleep(1)


def inside(radioctl, board, carriers):
    """Seconds that a tune takes in a script, its events written: those of many less those of none, by their number."""
    count = 5000
    took = {}
    for lines in (0, count):
        with tempfile.NamedTemporaryFile('w', suffix='.script') as script:
            script.writelines(f'tune tx 1 {carriers[n % len(carriers)]}\n' for n in range(lines))
            script.flush()
            before = time.perf_counter()
            subprocess.run([radioctl, 'run', '--json', board, script.name], stdout=subprocess.DEVNULL, check=True)
            took[lines] = time.perf_counter() - before
    return (took[count] - took[0]) / count


async def load(options, process, port):
    carriers = [7442000, 7470000]
    ready = asyncio.Semaphore(0)
    followers = [Follower() for _ in range(options.clients)]
    following = [asyncio.create_task(one.follow(port, ready)) for one in followers]
    for _ in followers:
        await ready.acquire()
    times, bad, samples = [], [], []
    watching = asyncio.create_task(watch(process, samples))
    await tune(port, carriers, options.rate, options.seconds, times, bad)
    await asyncio.sleep(2)
    watching.cancel()
    for task in following:
        task.cancel()
    problems = [f'follower {number}: {problem}' for number, one in enumerate(followers) for problem in one.problems]
    if len({(one.first, one.last, one.events) for one in followers}) > 1:
        problems.append('followers saw different events')
    problems += [f'a tune was answered with {line}' for line in bad[:3]]
    middle, end = samples[len(samples) // 2], samples[-1]
    is_full = followers[0].events / 2 > MOST_EVENTS
    if not is_full:
        print(f'memory is not judged: less than {MOST_EVENTS} events, as many as are kept, were told in the first half')
    if is_full and end > middle * 1.1:
        problems.append(f'memory grew from {middle} to {end} kB')
    within = inside(options.radioctl, options.board, carriers)
    median = statistics.median(times)
    print(f'{len(followers)} followers, {len(times)} tunes in {options.seconds} s, {followers[0].events} events to each')
    print(f'memory: {samples[0]} kB at the beginning, {middle} kB in the middle, {end} kB at the end')
    print(f'a tune: {median * 1e3:.2f} ms over HTTP (99 of 100 within {sorted(times)[len(times) * 99 // 100] * 1e3:.2f} ms), '
          f'{within * 1e3:.3f} ms inside: {median / within:.0f} times')
    for problem in problems[:20]:
        print('PROBLEM: ' + problem)
    return bool(problems)


def main():
    parser = argparse.ArgumentParser(description=__doc__.split('\n', maxsplit=1)[0])
    parser.add_argument('radioctl')
    parser.add_argument('board')
    parser.add_argument('--seconds', type=int, default=600)
    parser.add_argument('--clients', type=int, default=200)
    parser.add_argument('--rate', type=float, default=50)
    options = parser.parse_args()
    with subprocess.Popen([options.radioctl, 'serve', options.board, '--listen', '127.0.0.1:0', '--json'],
                          stdout=subprocess.PIPE, text=True) as process:
        port = None
        for line in process.stdout:
            event = json.loads(line)
            if event['event'] == 'serving':
                port = int(re.search(r':(\d+)/$', event['address'])[1])
                break
        # Nobody keeps it from going on by not reading what it says.
        drain = subprocess.Popen(['cat'], stdin=process.stdout, stdout=subprocess.DEVNULL)
        try:
            return asyncio.run(load(options, process, port))
        finally:
            process.terminate()
            process.wait()
            drain.wait()


if __name__ == '__main__':
    sys.exit(main())
