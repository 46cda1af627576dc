"""A radio that is served, for tests: the program, requests to it, and those who follow its events."""
import http.client
import json
import os
import re
import resource
import signal
import socket
import subprocess
import threading
import time

RADIOCTL = os.environ['RADIOCTL']

BOARD = '''name = "Served radio"
serial = "S1"

[[channel]]
number = 1
type = "rf-module"

[drivers]
"channel.1.tx.rf.frequency" = {}
"channel.1.rx.rf.frequency" = {}
"amplifier" = {}

[variables]
"gain" = 3
"list" = [1, 2]

[tables]
"Curve" = { axis = [0, 10], values = [5, 6] }

[hardware."amplifier"]
write = "FOLDER/amplifier"
range = [0, 1]
on_exit = 0

[[raster]]
name = "Test"
channels = [1]
centre = 7500000
spacing = 28000
count = 2
tx = -56000
rx = 14000

[limits]
temperature = [-40, 85]
'''

# A radio whose LO leaks with 1/20 of the signal, in phase with I, at 18 GHz and 25 degrees: I = -500 takes that away. A
# calibration of it has six points.
LEAKING = '''name = "Leaking radio"
serial = "L1"

[[channel]]
number = 1
type = "microwave-hz"

[[leakage]]
channel = 1
reference = 18000000
paths = [{ level = -26.0206, phase = 0.0, level_per_degree = 0.01, level_per_ghz = 2.0 }]
i = { driver = "channel.1.tx.rf.mixer.i", gain = 1.0e-4, range = [-1000, 1000] }
q = { driver = "channel.1.tx.rf.mixer.q", gain = 1.0e-4, range = [-1000, 1000] }
detector = { driver = "channel.1.tx.rf.detector.v", slope = 25.0, zero = -95.0, floor = -85.0, range = [0, 4095] }
'''

CALIBRATED = '''
[[calibration]]
channel = 1
band = [17900000, 18100000]
step = 100000
method = "search"
temperatures = [-10, 50]
i_range = [-1000, 1000]
q_range = [-1000, 1000]
min_delta = 60

[drivers]
"channel.1.tx.rf.lo.frequency" = {}
"channel.1.tx.rf.lo.frequency.in.hz" = {}
"channel.1.tx.rf.lo.config" = {}
"channel.1.rx.rf.lo.frequency" = {}
"channel.1.rx.rf.lo.frequency.in.hz" = {}
"channel.1.rx.rf.lo.config" = {}
"channel.1.tx.rf.mixer.i" = {}
"channel.1.tx.rf.mixer.q" = {}
"channel.1.tx.rf.detector.v" = {}

[variables]
"TxIfBb" = 0
"RxIfBb" = 0
"gain" = 3
"channel.1.tx.mixer.multiplicationfactor" = 2
"channel.1.tx.rf.spectruminverted" = 0
"channel.1.tx.baseband.spectruminverted" = 0
"channel.1.rx.mixer.multiplicationfactor" = 2
"channel.1.rx.rf.spectruminverted" = 0
"channel.1.rx.baseband.spectruminverted" = 0

[tables."Channel.1.Tx.Rf.Lo.Cancellation.Frequency.To.Voltage.Mixer.I"]
file = "board.channel-1.csv"
column = "i"

[tables."Channel.1.Tx.Rf.Lo.Cancellation.Frequency.To.Voltage.Mixer.Q"]
file = "board.channel-1.csv"
column = "q"

[limits]
leakage_at_nodes = -40
temperature = [-20, 60]
'''

LEAKING += CALIBRATED

# The same as files, of which nothing is modelled. It has no limit in dBc, which nobody would know.
MEASURED = '''name = "Measured radio"

[[channel]]
number = 1
type = "microwave-hz"
''' + CALIBRATED.replace('leakage_at_nodes = -40\n', '') + '''
[hardware."channel.1.tx.rf.lo.frequency.in.hz"]
write = "FOLDER/lo"

[hardware."channel.1.tx.rf.mixer.i"]
write = "FOLDER/i"
range = [-1000, 1000]
on_exit = 7

[hardware."channel.1.tx.rf.mixer.q"]
write = "FOLDER/q"
range = [-1000, 1000]
on_exit = 8

[hardware."channel.1.tx.rf.detector.v"]
read = "FOLDER/detector"
'''

SENSOR = '''
[sensor]
read = "FOLDER/temperature"
interval = 20
'''


def prepare(descriptors):
    """In the process that becomes the program: so many descriptors, and no signal ignored."""
    signal.signal(signal.SIGINT, signal.SIG_DFL)
    if descriptors:
        resource.setrlimit(resource.RLIMIT_NOFILE, (descriptors, descriptors))


class Served:
    """A running `radioctl serve`; stopped at the end of a with statement."""

    def __init__(self, folder, *options, board=BOARD, listen='127.0.0.1:0', descriptors=None,
                 environment=None):
        self.folder = str(folder)
        path = os.path.join(self.folder, 'board.toml')
        with open(path, 'w', encoding='utf-8') as file:
            file.write(board.replace('FOLDER', self.folder))
        amplifier = os.path.join(self.folder, 'amplifier')
        if not os.path.exists(amplifier):
            with open(amplifier, 'w', encoding='utf-8') as file:
                file.write('1\n')
        variables = dict(os.environ, XDG_STATE_HOME=self.folder, **(environment or {}))
        self.process = subprocess.Popen([RADIOCTL, 'serve', path, '--listen', listen, *options],
                                        stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True, env=variables,
                                        preexec_fn=lambda: prepare(descriptors))
        self.lines = []
        self.port = None
        for line in self.process.stdout:
            self.lines.append(line.rstrip('\n'))
            found = re.search(r'(https?)://(.+):(\d+)/', line)
            if found:
                self.scheme, self.host, self.port = found[1], found[2], int(found[3])
                break
        # What it says is read, so that it is never kept waiting.
        self.reader = threading.Thread(target=lambda: self.lines.extend(line.rstrip('\n') for line in self.process.stdout))
        self.reader.start()

    def __enter__(self):
        assert self.port, self.lines + [self.process.stderr.read()]
        return self

    def __exit__(self, *_):
        if self.process.poll() is None:
            self.stop()

    def stop(self, number=signal.SIGTERM):
        """Gives the exit code; what was shown is in lines and errors then."""
        self.process.send_signal(number)
        self.process.wait(60)
        self.reader.join()
        self.errors = self.process.stderr.read()
        return self.process.returncode

    def connect(self):
        return socket.create_connection(('127.0.0.1', self.port), timeout=30)

    def ask(self, method, path, body=None, headers=None, kind='application/json'):
        """The status, what came as JSON, and the headers."""
        connection = http.client.HTTPConnection('127.0.0.1', self.port, timeout=60)
        sent = dict(headers or {})
        if body is not None:
            if not isinstance(body, (str, bytes)):
                body = json.dumps(body)
            if kind:
                sent['Content-Type'] = kind
        try:
            connection.request(method, path, body, sent)
            answer = connection.getresponse()
            content = answer.read()
        except OSError as error:
            try:
                code = self.process.wait(10)
            except subprocess.TimeoutExpired:
                raise error from None
            raise AssertionError(f'the program ended with {code}: {self.process.stderr.read()}') from error
        connection.close()
        self.content_type = answer.getheader('Content-Type')
        is_json = 'json' in self.content_type
        return answer.status, (json.loads(content) if is_json else content.decode()) if content else None, answer.headers

    def follow(self, last=None):
        return Follower(self, last)


class Measured(Served):
    """A radio that is files."""

    def __init__(self, folder, *options, board=MEASURED + SENSOR):
        for name, content in (('lo', 0), ('i', 0), ('q', 0), ('detector', 500), ('temperature', 25)):
            if not os.path.exists(os.path.join(folder, name)):
                self.put(folder, name, content)
        super().__init__(folder, '--hardware', *options, board=board)

    @staticmethod
    def put(folder, name, content):
        with open(os.path.join(folder, name), 'w', encoding='utf-8') as file:
            file.write(f'{content}\n')

    def content(self, name):
        with open(os.path.join(self.folder, name), encoding='utf-8') as file:
            return file.read()


class Follower:
    """One who follows the events."""

    def __init__(self, served, last=None):
        self.socket = served.connect()
        name = f'Last-Event-ID: {last}\r\n' if last else ''
        self.socket.sendall(f'GET /api/events HTTP/1.1\r\nHost: 127.0.0.1:{served.port}\r\n{name}\r\n'.encode())
        self.file = self.socket.makefile('r', encoding='utf-8', newline='\n')
        self.head = []
        for line in self.file:
            if line in ('\r\n', '\n'):
                break
            self.head.append(line.strip())

    def next(self):
        """The next event: its name, and its content with "kind" for one that has a type of its own."""
        name, kind = None, None
        for line in self.file:
            if line.startswith('id: '):
                name = line[4:].rstrip('\n')
            elif line.startswith('event: '):
                kind = line[7:].rstrip('\n')
            elif line.startswith('data: '):
                event = json.loads(line[6:])
                if kind:
                    event['kind'] = kind
                return name, event
        return None, None

    def until(self, kind):
        """The events as far as the next one of that name."""
        events = []
        while True:
            name, event = self.next()
            assert event is not None, events
            events.append((name, event))
            if event['event'] == kind:
                return events

    def close(self):
        self.file.close()
        self.socket.close()


def wait_for(condition, seconds=30):
    """Until `condition` gives something; that."""
    end = time.monotonic() + seconds
    while time.monotonic() < end:
        found = condition()
        if found:
            return found
        time.sleep(0.05)
    raise AssertionError('it did not come about')
